// LaunchServices/LaunchServices.h
//
// Finding applications, and opening pages and addresses with them.
//
// An application is known by its desktop entry: its bundle identifier is the entry's id, its URL
// and its file reference are the entry's. Calls work on any thread, start programs without waiting
// for them and never show anything themselves. What a program makes of what it is given, and
// whether it fails, is not known here.
#ifndef LAUNCHSERVICES_LAUNCHSERVICES_H
#define LAUNCHSERVICES_LAUNCHSERVICES_H

#include <CarbonCore/Files.h>
#include <CoreFoundation/CFBase.h>

CV_BEGIN_DECLS

typedef OptionBits LSRolesMask;
typedef OptionBits LSLaunchFlags;
/// Parts of Apple events, of which the layer has none: always null.
typedef struct AEKeyDesc AEKeyDesc;
typedef struct AEDesc AppleEvent;

enum { kLSUnknownCreator = 0 };
enum { kLSRolesNone = 1, kLSRolesViewer = 2, kLSRolesEditor = 4 };
#define kLSRolesAll ((LSRolesMask)0xFFFFFFFF)
enum { kLSLaunchDefaults = 1, kLSLaunchAsync = 0x10000 };
enum {
    kLSUnknownErr = -10810,             ///< Out of memory or another resource.
    kLSApplicationNotFoundErr = -10814, ///< Nobody opens such a thing.
    kLSNoExecutableErr = -10827         ///< The application is there, but it cannot be started.
};

#pragma pack(push, 2)
/// What to open with.
typedef struct LSApplicationParameters {
    CFIndex version;             ///< 0
    LSLaunchFlags flags;         ///< Not used: every launch returns at once.
    const FSRef* application;    ///< Null, or one that names no application: the user's default.
    void* asyncLaunchRefCon;     ///< Not used.
    CFDictionaryRef environment; ///< Null.
    CFArrayRef argv;             ///< Null.
    AppleEvent* initialEvent;    ///< Null.
} LSApplicationParameters;
#pragma pack(pop)

/// Finds the application of a bundle identifier in the user's data folder and the machine's:
/// "com.example.Viewer" is `applications/com.example.Viewer.desktop`.
/// @param inCreator   not used: there are no creator codes here.
/// @param inBundleID  null finds nothing.
/// @param inName      not used.
/// @param outAppRef   receives the entry, or zeros; may be null.
/// @param outAppURL   receives the entry's URL, which the caller releases, or null; may be null.
/// @return noErr, or kLSApplicationNotFoundErr where there is none or its program is missing.
OSStatus LSFindApplicationForInfo(OSType inCreator, CFStringRef inBundleID, CFStringRef inName, FSRef* outAppRef,
                                  CFURLRef* outAppURL) CV_LINK(LSFindApplicationForInfo);
/// Finds the user's default application for a file, by its type, or for an address, by its scheme.
/// A file whose type nobody takes, or whose name tells none, goes to the viewer of HTML.
/// @param inRoleMask  not used: an application has one role.
/// @return as above; paramErr for what is no absolute URL.
OSStatus LSGetApplicationForURL(CFURLRef inURL, LSRolesMask inRoleMask, FSRef* outAppRef, CFURLRef* outAppURL)
    CV_LINK(LSGetApplicationForURL);
/// Answers the name that people know something by: an application's in the user's language, the
/// last part of the path of any other file.
/// @param outName  receives the name, which the caller releases, or null.
/// @return noErr; paramErr for null or what is no file URL.
OSStatus LSCopyDisplayNameForURL(CFURLRef inURL, CFStringRef* outName) CV_LINK(LSCopyDisplayNameForURL);

/// Opens URLs with one application: in one program where it takes several, else in one each. Files
/// are handed over as a path or as "file:///…", as the application asks for; whether they exist is
/// left to it.
/// @param inURLs         absolute URLs.
/// @param inRole         not used.
/// @param inAEParam      null.
/// @param inAppParams    null means the user's default for each URL.
/// @param outPSNs        receives `inMaxPSNCount` zeros: the programs are not ours to name; may be null.
/// @return noErr; paramErr for an array that is empty or holds something else, and for parameters of
///         another version or with what should be null; else one of the errors above.
OSStatus LSOpenURLsWithRole(CFArrayRef inURLs, LSRolesMask inRole, const AEKeyDesc* inAEParam,
                            const LSApplicationParameters* inAppParams, ProcessSerialNumber* outPSNs,
                            CFIndex inMaxPSNCount) CV_LINK(LSOpenURLsWithRole);
/// Opens a URL with the user's default application.
/// @param outLaunchedURL  receives the URL of the application, which the caller releases, or null
///                        where it is not known; may be null.
/// @return noErr; paramErr for null or a URL that is not absolute; else one of the errors above.
OSStatus LSOpenCFURLRef(CFURLRef inURL, CFURLRef* outLaunchedURL) CV_LINK(LSOpenCFURLRef);

CV_END_DECLS

#endif
