// CoreGraphics/CGGeometry.h
//
// Points, sizes and rectangles with fractions. y grows downwards, as views have it.
#ifndef COREGRAPHICS_CGGEOMETRY_H
#define COREGRAPHICS_CGGEOMETRY_H

#ifdef __LP64__
typedef double CGFloat;
#else
typedef float CGFloat;
#endif

typedef struct CGPoint {
    CGFloat x;
    CGFloat y;
} CGPoint;
typedef struct CGSize {
    CGFloat width;
    CGFloat height;
} CGSize;
typedef struct CGRect {
    CGPoint origin;
    CGSize size;
} CGRect;

#endif
