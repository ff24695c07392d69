// CoreGraphics/CGImage.h
//
// Images: immutable pictures, which are Core Foundation objects. Every call works on every thread.
#ifndef COREGRAPHICS_CGIMAGE_H
#define COREGRAPHICS_CGIMAGE_H

#include <CoreFoundation/CFBase.h>

CV_BEGIN_DECLS

typedef struct CGImage* CGImageRef;

/// How an image's pixels carry alpha; the two kinds that the layer makes.
typedef enum CGImageAlphaInfo {
    kCGImageAlphaNone = 0,               ///< Answered for what is no image only.
    kCGImageAlphaPremultipliedFirst = 2, ///< Alpha in the high byte, colours multiplied by it.
    kCGImageAlphaNoneSkipFirst = 6       ///< Every pixel is opaque.
} CGImageAlphaInfo;

/// Answers the number by which CFGetTypeID tells images.
CFTypeID CGImageGetTypeID(void) CV_LINK(CGImageGetTypeID);
/// Adds one reference and answers its argument; null is fine.
CGImageRef CGImageRetain(CGImageRef image) CV_LINK(CGImageRetain);
/// Gives one reference back; null is fine.
void CGImageRelease(CGImageRef image) CV_LINK(CGImageRelease);
/// Answers the width in pixels; 0 for null or what is no image.
size_t CGImageGetWidth(CGImageRef image) CV_LINK(CGImageGetWidth);
/// Answers the height in pixels; 0 for null or what is no image.
size_t CGImageGetHeight(CGImageRef image) CV_LINK(CGImageGetHeight);
/// Answers the bits that a pixel takes, 32; 0 for null or what is no image.
size_t CGImageGetBitsPerPixel(CGImageRef image) CV_LINK(CGImageGetBitsPerPixel);
/// Answers how the pixels carry alpha; looks at all of them.
CGImageAlphaInfo CGImageGetAlphaInfo(CGImageRef image) CV_LINK(CGImageGetAlphaInfo);

CV_END_DECLS

#endif
