// CoreFoundation/CFBundle.h
//
// Bundles: folders that hold code and its resources.
#ifndef COREFOUNDATION_CFBUNDLE_H
#define COREFOUNDATION_CFBUNDLE_H

#include <CoreFoundation/CFBase.h>

CV_BEGIN_DECLS

CFTypeID CFBundleGetTypeID(void) CV_LINK(CFBundleGetTypeID);
/// Answers the bundle of a folder, the caller's to release; null unless a folder is there. Its
/// contents are not checked. One folder has one object: a second call retains it once more.
CFBundleRef CFBundleCreate(CFAllocatorRef allocator, CFURLRef bundleURL) CV_LINK(CFBundleCreate);
/// Answers the bundle of the program: the folder that holds `Contents/MacOS/program`, or else the
/// folder that holds the program. Not retained; null where the program cannot be found.
CFBundleRef CFBundleGetMainBundle(void) CV_LINK(CFBundleGetMainBundle);
/// Answers the folder's absolute directory URL, the caller's. A bundle whose code is loaded is
/// followed when somebody moves it.
CFURLRef CFBundleCopyBundleURL(CFBundleRef bundle) CV_LINK(CFBundleCopyBundleURL);
/// Answers the URL of `Contents/Resources`, the caller's; null when it is not there.
CFURLRef CFBundleCopyResourcesDirectoryURL(CFBundleRef bundle) CV_LINK(CFBundleCopyResourcesDirectoryURL);
/// Looks for `resourceName.resourceType` in `Contents/Resources`, then in the language folders:
/// those of the user's languages in their order, then English, then Base.
/// @param resourceType  may be null: the name is then complete.
/// @param subDirName    a folder to look in, of one or more levels; may be null.
/// @return the URL, the caller's; null when it is not there.
CFURLRef CFBundleCopyResourceURL(CFBundleRef bundle, CFStringRef resourceName, CFStringRef resourceType,
                                 CFStringRef subDirName) CV_LINK(CFBundleCopyResourceURL);
/// Answers `Contents/MacOS/` and the executable that Info.plist names, or else the bundle folder's
/// name without its extension; null when it is not there.
CFURLRef CFBundleCopyExecutableURL(CFBundleRef bundle) CV_LINK(CFBundleCopyExecutableURL);
/// Answers Info.plist's dictionary, which the bundle keeps; null when there is none.
CFDictionaryRef CFBundleGetInfoDictionary(CFBundleRef bundle) CV_LINK(CFBundleGetInfoDictionary);
/// Loads the bundle's code, if it is not loaded already.
/// @return whether it is loaded.
Boolean CFBundleLoadExecutable(CFBundleRef bundle) CV_LINK(CFBundleLoadExecutable);
/// Gives the code loaded by CFBundleLoadExecutable back; what it exports is then out of bounds.
void CFBundleUnloadExecutable(CFBundleRef bundle) CV_LINK(CFBundleUnloadExecutable);
/// Answers the address of an exported function; loads the code where necessary. Null if absent.
void* CFBundleGetFunctionPointerForName(CFBundleRef bundle, CFStringRef functionName)
    CV_LINK(CFBundleGetFunctionPointerForName);

CV_END_DECLS

#endif
