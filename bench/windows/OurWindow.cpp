// bench/windows/OurWindow.cpp
//
// The dialog from its nib, by the Mac's names, with texts from code.
#include <Carbon/Carbon.h>

#include <cstring>

#include "bench/windows/Peer.h"

namespace {

WindowRef g_window;

CFStringRef String(const char* text)
{
    return CFStringCreateWithCString(nullptr, text, kCFStringEncodingUTF8);
}

void SetText(OSType signature, SInt32 id, const char* text, bool isTitle)
{
    const ControlID wanted = {signature, id};
    ControlRef control = nullptr;
    if (GetControlByID(g_window, &wanted, &control) != noErr)
        return;
    CFStringRef string = String(text);
    if (isTitle)
        (void)SetControlTitleWithCFString(control, string);
    else
        (void)SetControlData(control, kControlEntireControl, kControlStaticTextCFStringTag, sizeof string, &string);
    CFRelease(string);
}

} // namespace

void OpenDialog()
{
    static const char kBundle[] = CV_BUILD_DIR "/Quillets.bundle";
    static const CFURLRef url = CFURLCreateFromFileSystemRepresentation(
        nullptr, reinterpret_cast<const UInt8*>(kBundle), sizeof kBundle - 1, true);
    static const CFBundleRef bundle = CFBundleCreate(nullptr, url);
    IBNibRef nib = nullptr;
    (void)CreateNibReferenceWithCFBundle(bundle, CFSTR("InfoKnob"), &nib);
    if (CreateWindowFromNib(nib, CFSTR("InfoDialog"), &g_window) != noErr)
        return;
    DisposeNibReference(nib);
    CFStringRef title = String(kPeerTitle);
    (void)SetWindowTitleWithCFString(g_window, title);
    CFRelease(title);
    SetText('NAME', 0, kPeerTitle, false);
    SetText('VERS', 0, kPeerVersion, false);
    SetText('CPRT', 0, kPeerNotice, false);
    SetText('OPTS', 0, kPeerOptions, false);
    SetText('KNOB', 0, kPeerKnobs, true);
    SetText('HELP', 0, kPeerHelp, true);
    SetText('CLOS', 1, kPeerCancel, true);
    SetText('CLOS', 0, kPeerOk, true);
    ShowWindow(g_window);
    SelectWindow(g_window);
}

void CloseDialog()
{
    DisposeWindow(g_window);
}
