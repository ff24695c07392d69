// HIToolbox/IBCarbonRuntime.h
//
// Windows built from the descriptions that Interface Builder writes (Carbon nib folders).
#ifndef HITOOLBOX_IBCARBONRUNTIME_H
#define HITOOLBOX_IBCARBONRUNTIME_H

#include <CoreFoundation/CFBase.h>
#include <HIToolbox/HITypes.h>

CV_BEGIN_DECLS

typedef struct OpaqueIBNibRef* IBNibRef;

enum {
    kIBCarbonRuntimeCantFindNibFile = -10960,
    kIBCarbonRuntimeObjectNotOfRequestedType = -10961,
    kIBCarbonRuntimeCantFindObject = -10962
};

/// Opens `inNibName`.nib of a bundle, one of the user's languages before the unlocalised one.
/// @param outNibRef  receives the reference, the caller's to dispose of, or null.
/// @return noErr; kIBCarbonRuntimeCantFindNibFile when it is not there or cannot be read; paramErr;
///         memFullErr.
OSStatus CreateNibReferenceWithCFBundle(CFBundleRef inBundle, CFStringRef inNibName, IBNibRef* outNibRef)
    CV_LINK(CreateNibReferenceWithCFBundle);
/// As above, in the program's own bundle.
OSStatus CreateNibReference(CFStringRef inNibName, IBNibRef* outNibRef) CV_LINK(CreateNibReference);
/// Builds a window, hidden, with its controls. It outlives the nib reference.
/// @param outWindow  receives the window, the caller's to dispose of, or null.
/// @return noErr; kIBCarbonRuntimeCantFindObject for an unknown name;
///         kIBCarbonRuntimeObjectNotOfRequestedType when the name is no window's; paramErr;
///         memFullErr; kCVNoDesktopErr where no window can be shown.
OSStatus CreateWindowFromNib(IBNibRef inNibRef, CFStringRef inName, WindowRef* outWindow) CV_LINK(CreateWindowFromNib);
void DisposeNibReference(IBNibRef inNibRef) CV_LINK(DisposeNibReference);

CV_END_DECLS

#endif
