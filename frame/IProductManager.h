// frame/IProductManager.h
//
// What a plug-in includes to use the product services: the one object of the process, behind a
// COM-style interface. Everything else in this folder is the component's own.
//
// The usual order of calls:
//   1. Load the bundle (it configures the object while it loads).
//   2. GetLibProductManager() gives the object; it is the same for every plug-in in the process.
//   3. Use it. It is never deleted by its users; AddRef and Release do not count.
//   4. Unload the bundle when the last plug-in is gone; no call may be under way then.
//
// Texts are NUL-terminated UTF-8. No operation throws. Operations that open windows (InfoDialog,
// OpenHelp and those that work on windows and controls) belong to the thread that runs the host's
// main event loop; all others may be called from any thread.
//
// CFPlugInCOM.h has another IUnknown and another E_FAIL: ours stands in a namespace of its own, and
// including this file makes E_FAIL ours. Include it after that header.
#ifndef FRAME_IPRODUCTMANAGER_H
#define FRAME_IPRODUCTMANAGER_H

#include <Carbon/Carbon.h>

#include "frame/ProductVersion.h"

/// The result of an operation in the COM style: negative for failure.
typedef SInt32 HRESULT;
#undef E_FAIL
/// Unspecified failure.
static const HRESULT E_FAIL = static_cast<HRESULT>(0x80004005);

namespace corvane {

/// Names an interface; 16 bytes.
struct GUID {
    unsigned int data1;
    unsigned short data2;
    unsigned short data3;
    unsigned char data4[8];
};

/// The root of the interfaces: the COM style without reference counts.
class __attribute__((visibility("default"))) IUnknown {
public:
    /// Always answers E_FAIL and leaves `out` as it was: use the factory's pointer directly.
    virtual HRESULT QueryInterface(const GUID& iid, void** out) = 0;
    /// Always answers 2; nothing is counted.
    virtual unsigned long AddRef() = 0;
    /// Always answers 1; the object lives until the bundle is unloaded.
    virtual unsigned long Release() = 0;
    virtual ~IUnknown() {}
};

} // namespace corvane

struct EventHandlerParams;

/// The groups of interface texts that go through the translation hook.
enum EffectLangItemType : int {
    kEffectLangInfoDialog = 5, ///< Texts of the information dialog.
    kEffectLangButton = 8      ///< Titles of buttons.
};

/// The product services. The order of the operations is the binary interface.
class __attribute__((visibility("default"))) IProductManager : public corvane::IUnknown {
public:
    /// Configures the object: reads the knob preference, opens the bundle and takes the name of
    /// the help folder. The bundle has called it when it is loaded; another call reads anew.
    /// @param hostContext  not used.
    /// @param helpFolder   folder inside the bundle's resources, at most 259 bytes are kept; null
    ///                     keeps the earlier one.
    /// @return 1, always.
    virtual int Init(void* hostContext, const char* helpFolder) = 0;

    /// Opens the information dialog and returns at once. The end of the dialog is told to the
    /// application's event target: class 'cvev', kind 'iend'.
    /// @param parent          window that the dialog is modal to, or null.
    /// @param hideKnobOption  leaves the option for circular knobs out.
    virtual void InfoDialog(WindowRef parent, bool hideKnobOption) = 0;
    /// Clears or sets bits of the dialog's options. Bit 0x1: the dialog offers the knob option.
    virtual void SetInfoDialogOptions(unsigned int mask, bool clear) = 0;

    /// Answers whether knobs follow vertical drags.
    virtual bool KnobsDragVertical() = 0;

    /// Opens the help page of a topic, or the index where the topic has none.
    /// @param parent  not used.
    virtual void OpenHelp(WindowRef parent, unsigned int topic) = 0;

    /// Sets the knob flag and stores it for all plug-ins.
    virtual void SetDragVertical(bool flag) = 0;

    /// Answers the product's display name; the object's own, for as long as it lives.
    virtual const char* GetProductName() = 0;
    /// Answers the product's version record; the same for every caller.
    virtual CVProductVersion* GetProductVersion() = 0;

    /// Writes the path of the component's own bundle.
    /// @param size  bytes in `buffer`, with the NUL.
    /// @return false, with the buffer as it was, when it does not fit or cannot be found.
    virtual bool GetResourcesBundlePath(char* buffer, int size) = 0;

    /// Makes the dialog's window, hidden and unfilled; null on failure.
    virtual WindowRef CreateInfoDialog() = 0;
    /// Makes, fills and shows the dialog; InfoDialog guards this one, which hosts do not call.
    virtual void ShowInfoDialog(WindowRef parent, bool hideKnobOption) = 0;
    /// Opens the maker's web site.
    virtual void GoToSite() = 0;
    /// Puts the logo into its control and watches the pointer over it.
    virtual void InitLogoControl(ControlRef logo) = 0;
    /// Installs a dialog's handler on its window, for its end and for its commands.
    /// @return the status of the installation.
    virtual OSStatus AttachDialogEvents(WindowRef window, EventHandlerProcPtr handler, EventHandlerParams* params) = 0;
    /// Installs the logo's handler on its control.
    /// @return the status of the installation.
    virtual OSStatus AttachLogoEvents(ControlRef logo, EventHandlerParams* params) = 0;

    /// Stores a setting for all plug-ins, machine-wide where the user may, else for the user.
    /// @param section  reduced to lower-case letters, digits, '.', '_' and '-'.
    /// @param value    null, or what is not valid UTF-8, removes the key.
    /// @return whether it is on disk.
    virtual bool SetRegistryKey(const char* section, const char* key, const char* value) = 0;
    /// Reads a setting, machine-wide ones first.
    /// @param size  bytes in `buffer`, with the NUL.
    /// @return false, with the buffer as it was, when it is absent or does not fit.
    virtual bool GetRegistryKey(const char* section, const char* key, char* buffer, int size) = 0;

    /// Answers the interface text for `key`, `text` being its default wording; a derived class may
    /// translate it. This one answers `text`, or `key` where `text` is null.
    virtual const char* TranslateCommon(EffectLangItemType type, const char* key, const char* text) = 0;
    /// As TranslateCommon, as a string that the caller releases; null for invalid UTF-8.
    virtual CFStringRef TranslateCommonCFString(EffectLangItemType type, const char* key, const char* text) = 0;
};

extern "C" {

/// Answers the process's one object, configured; never null. Any thread.
__attribute__((visibility("default"))) IProductManager* GetLibProductManager();
/// Configures the object for this product; runs by itself when the bundle is loaded.
__attribute__((visibility("default"))) void DllMain();

/// The type of GetLibProductManager, for those who look it up by name.
typedef IProductManager* (*GetLibProductManagerProc)();

} // extern "C"

#endif
