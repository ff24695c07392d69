// frame/BaseProductManager.h
//
// The class that implements every operation of the product services and holds their state. Its
// members are defined in the folder that owns their subject: frame/, prefs/ and ui/.
#ifndef FRAME_BASEPRODUCTMANAGER_H
#define FRAME_BASEPRODUCTMANAGER_H

#include "frame/IProductManager.h"

class CBaseProductManager;

/// What a dialog hands its handlers as user data, so that they find their way back. The operation
/// that shows the dialog allocates it; from then on it belongs to the window's handler, which on
/// kEventWindowDispose clears all but `flag` and deletes it. A handler reads `owner` first: null
/// means that the dialog is gone, and the handler passes the event on untouched.
struct EventHandlerParams {
    CBaseProductManager* owner;
    WindowRef window;
    ControlRef control;      ///< The dialog's logo; null when it has none.
    EventLoopTimerRef timer; ///< Null when the dialog installs none.
    bool flag;               ///< An option of the dialog's own.
};

/// See IProductManager for the operations that plug-ins call.
class __attribute__((visibility("default"))) CBaseProductManager : public IProductManager {
public:
    /// Bytes in a text that crosses the interface, with its NUL.
    enum { kTextSize = 260 };

    CBaseProductManager();
    CBaseProductManager(const CBaseProductManager&) = delete;
    CBaseProductManager& operator=(const CBaseProductManager&) = delete;

    HRESULT QueryInterface(const corvane::GUID& iid, void** out) override;
    unsigned long AddRef() override;
    unsigned long Release() override;
    ~CBaseProductManager() override;
    int Init(void* hostContext, const char* helpFolder) override;
    void InfoDialog(WindowRef parent, bool hideKnobOption) override;
    void SetInfoDialogOptions(unsigned int mask, bool clear) override;
    bool KnobsDragVertical() override;
    void OpenHelp(WindowRef parent, unsigned int topic) override;
    void SetDragVertical(bool flag) override;
    const char* GetProductName() override;
    CVProductVersion* GetProductVersion() override;
    bool GetResourcesBundlePath(char* buffer, int size) override;
    WindowRef CreateInfoDialog() override;
    void ShowInfoDialog(WindowRef parent, bool hideKnobOption) override;
    void GoToSite() override;
    void InitLogoControl(ControlRef logo) override;
    OSStatus AttachDialogEvents(WindowRef window, EventHandlerProcPtr handler, EventHandlerParams* params) override;
    OSStatus AttachLogoEvents(ControlRef logo, EventHandlerParams* params) override;
    bool SetRegistryKey(const char* section, const char* key, const char* value) override;
    bool GetRegistryKey(const char* section, const char* key, char* buffer, int size) override;
    const char* TranslateCommon(EffectLangItemType type, const char* key, const char* text) override;
    CFStringRef TranslateCommonCFString(EffectLangItemType type, const char* key, const char* text) override;

    /// Enters the object's critical region, waiting without limit; its holder may enter again.
    void EnterCritical();
    /// Leaves it once.
    void LeaveCritical();
    /// Sets the display name; at most 259 bytes are kept. Null keeps the earlier one.
    void SetProductName(const char* name);
    /// Sends the component's event, class 'cvev', to the application's event target.
    static void SendCVEvent(UInt32 kind);

    /// Answers the version as one number, 1.0 for null; minor numbers from 20 on gain places.
    float GetVersion(CVProductVersion* version);
    /// Writes the line "Version 1.3 Build 110311" into `buffer` of `size` bytes, cut where it does
    /// not fit; null writes nothing.
    void FormatVersionString(char* buffer, int size, CVProductVersion* version);

    /// Answers the URL of the component's own bundle folder, the caller's; null if not found.
    static CFURLRef GetCurrentBundle();
    /// Answers the URL of the folder that holds the bundle, the caller's; null if not found.
    static CFURLRef GetCurrentBundlePath();
    /// Writes that folder's path into `buffer` of `size` bytes; false if it does not fit.
    static bool GetCurrentBundlePath(char* buffer, int size);
    /// Answers the bundle at `path`, the caller's; null for null or where no folder is.
    static CFBundleRef OpenBundle(const char* path);
    /// Answers the image in the resource file `name`.`type` of the object's bundle, the caller's;
    /// null when there is no bundle, no such file or no image in it.
    CGImageRef LoadImageFromResourcesBundle(CFStringRef name, CFStringRef type);

    // The dialog toolkit: event-loop thread only. Texts are UTF-8; a window or control that is not
    // there has an operation do nothing.

    /// Answers the record with these fields.
    static ControlID MakeControlId(UInt32 signature, SInt32 id);
    /// Answers a control of a window, null when there is no such one.
    static ControlRef GetControl(WindowRef window, const ControlID& id);
    /// Shows or hides a control.
    static void ShowControl(WindowRef window, const ControlID& id, bool show);
    /// Has an edit text refuse what the user types, pastes, cuts or deletes, for as long as it lives.
    /// Doing so again adds a second handler of the same effect.
    static void MakeEditTextControlReadOnly(WindowRef window, const ControlID& id);
    /// The handler that refuses: userCanceledErr for a proposed change, noErr for anything else.
    static OSStatus ReadOnlyEditTextHandler(EventHandlerCallRef call, EventRef event, void* userData);
    /// Set a control's title, a static text's or an edit text's text; a null `text` leaves it alone.
    /// Each call leaves one reference to its string behind; this is intended.
    static void SetControlTitle(WindowRef window, const ControlID& id, const char* text);
    static void SetStaticControlText(WindowRef window, const ControlID& id, const char* text);
    static void SetEditBoxControlText(WindowRef window, const ControlID& id, const char* text);
    /// Writes an edit text's text in Mac OS Roman into `buffer` of `bufferSize` bytes, its NUL
    /// included. What does not fit, or has a character that Mac OS Roman lacks, leaves `buffer`
    /// as it was, unreported.
    static void GetEditBoxControlText(WindowRef window, const ControlID& id, char* buffer, long bufferSize);
    /// Shows an alert with one OK button and returns when it is answered.
    /// @param alertType  kAlertStopAlert, kAlertNoteAlert, kAlertCautionAlert or kAlertPlainAlert.
    static void ShowPlainAlert(const char* error, const char* explanation, short alertType);
    /// Shows an alert with OK and Cancel (in spite of its name) and answers whether it was OK.
    static bool ShowYesNoAlert(const char* error, const char* explanation, short alertType);

    /// The handler of a dialog's logo: brightens it under the pointer, dims it when the pointer has
    /// left (passing both events on), and opens the web site when it is clicked.
    static OSStatus LogoControlHandler(EventHandlerCallRef call, EventRef event, void* userData);
    /// The handler of the dialog's window: OK, Cancel and Help, and the end of the window, which it
    /// tells the application before it frees the record.
    static OSStatus InfoDialogHandler(EventHandlerCallRef call, EventRef event, void* userData);

    /// Writes `input` in lower case, without the bytes that are not ASCII letters, digits, '.',
    /// '_' or '-', into `output` of kTextSize bytes, cut there; an empty input writes nothing.
    static void Normalize(char* output, const char* input);

protected:
    bool knobsDragVertical;
    CFBundleRef bundle;
    uint32_t infoDialogOptions;
    char productName[kTextSize];
    char helpFolder[kTextSize];
    WindowRef infoDialogWindow;
    MPCriticalRegionID criticalRegion;

private:
    // The flag is used from any thread, without the region.
    bool LoadDragFlag() const { return __atomic_load_n(&knobsDragVertical, __ATOMIC_RELAXED); }
    void StoreDragFlag(bool flag) { __atomic_store_n(&knobsDragVertical, flag, __ATOMIC_RELAXED); }

    OSStatus HandleDialogCommand(WindowRef window, UInt32 command);
};

/// Holds the object's critical region for a scope.
class CCriticalScope {
public:
    explicit CCriticalScope(CBaseProductManager& manager) : m_manager(manager) { m_manager.EnterCritical(); }
    ~CCriticalScope() { m_manager.LeaveCritical(); }
    CCriticalScope(const CCriticalScope&) = delete;
    CCriticalScope& operator=(const CCriticalScope&) = delete;

private:
    CBaseProductManager& m_manager;
};

#endif
