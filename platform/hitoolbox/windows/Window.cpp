// platform/hitoolbox/windows/Window.cpp
//
// Windows: their life, order and modality.
#include "platform/hitoolbox/windows/Window.h"

#include <algorithm>

#include "platform/base/Forever.h"
#include "platform/base/Guard.h"
#include "platform/desktop/Desktop.h"
#include "platform/hitoolbox/events/Loop.h"
#include "platform/hitoolbox/windows/Focus.h"
#include "platform/hitoolbox/windows/Input.h"
#include "platform/hitoolbox/windows/Notify.h"
#include "platform/hitoolbox/windows/Screen.h"
#include "platform/hitoolbox/windows/Surfaces.h"
#include <CVPlatform/CVPlatform.h>

namespace {

WindowRef g_active = nullptr;

bool IsFloating(const CWindow& window) noexcept
{
    return window.windowClass == kFloatingWindowClass || window.windowClass == kUtilityWindowClass;
}

WindowModality ModalityOfClass(WindowClass windowClass) noexcept
{
    const bool modal = windowClass >= kAlertWindowClass && windowClass <= kMovableModalWindowClass;
    return modal ? kWindowModalityAppModal : kWindowModalityNone;
}

// Whether `window` is `other`, or modal to it, or modal to one that is.
bool BelongsTo(const CWindow& window, const CWindow& other) noexcept
{
    const CWindow* one = &window;
    while (one && one != &other)
        one = Find<CWindow>(one->unavailable);
    return one != nullptr;
}

/// Runs `work` on a window; `failure` for what is none.
template <typename Result, typename Work>
Result WithWindow(WindowRef reference, Result failure, Work&& work)
{
    return Guarded<Result>(failure, [&]() -> Result {
        const CToolboxLock lock;
        CWindow* const window = Find<CWindow>(reference);
        return window ? static_cast<Result>(work(*window)) : failure;
    });
}

void TearDown(CWindow& window)
{
    // Leaf by leaf, lest a deep tree be destroyed by recursion or the end of a window need memory.
    for (CControl* parent = window.root.Get(); parent;) {
        CControl* control = parent;
        for (; !control->children.empty(); control = control->children.back().Get())
            parent = control;
        const auto held = CRef<CControl>::Share(control);
        Retire(*control);
        control->window = nullptr;
        control->parent = nullptr;
        if (control == window.root.Get())
            break;
        parent->children.pop_back();
        parent = window.root.Get();
    }
    window.byId.clear();
    auto& stack = Windows::Stack();
    stack.erase(std::remove(stack.begin(), stack.end(), &window), stack.end());
    if (g_active == window.Ref())
        g_active = nullptr;
    window.visible = false;
    Surfaces::Abandon(window);
    window.RemoveAllHandlers();
    Handles().Forget(window);
}

// Answers the controls that have handlers to be told.
std::vector<CRef<CControl>> ControlsToTell(CControl& top)
{
    std::vector<CRef<CControl>> told;
    for (CControl* const control : Flatten(top)) {
        if (control->Handlers())
            told.push_back(CRef<CControl>::Share(control));
    }
    return told;
}

std::vector<WindowRef> WindowsModalTo(WindowRef parent)
{
    const CToolboxLock lock;
    std::vector<WindowRef> children;
    for (const CWindow* const window : Windows::Stack()) {
        if (window->unavailable == parent)
            children.push_back(window->Ref());
    }
    return children;
}

} // namespace

CWindow::CWindow(WindowClass classId, WindowAttributes windowAttributes, const Rect& contentBounds)
    : CTarget(kKind),
      windowClass(classId),
      attributes(windowAttributes),
      title(__CFString::Create("")),
      content(contentBounds),
      modality(ModalityOfClass(classId)),
      root(CRef<CControl>::Adopt(new CControl(ControlClass::Root)))
{
    root->bounds = {0, 0, static_cast<short>(Height()), static_cast<short>(Width())};
    root->window = this;
}

CControl* CWindow::Focus() const noexcept
{
    CControl* const control = ::Find<CControl>(focus);
    return control && control->window == this && control->IsShown() && control->IsUsable() ? control : nullptr;
}

bool CWindow::IsActive() const noexcept
{
    return visible && g_active == Ref();
}

OSStatus CWindow::HandleByDefault(const CEvent& event)
{
    const bool closes = event.eventClass == kEventClassWindow && event.kind == kEventWindowClose &&
                        (attributes & kWindowStandardHandlerAttribute) != 0;
    if (!closes)
        return eventNotHandledErr;
    WindowRef reference = nullptr;
    {
        const CToolboxLock lock;
        reference = Ref();
    }
    DisposeWindow(reference);
    return noErr;
}

std::vector<CWindow*>& Windows::Stack() noexcept
{
    static CForever<std::vector<CWindow*>> stack;
    return *stack;
}

CWindow* Windows::BlockerOf(const CWindow& window) noexcept
{
    CWindow* blocker = nullptr;
    const CWindow* blocked = &window;
    const auto& stack = Stack();
    // An application-modal window leaves only itself and what is modal to it.
    const auto modal = std::find_if(stack.rbegin(), stack.rend(), [](const CWindow* one) {
        return one->visible &&
               (one->modality == kWindowModalityAppModal || one->modality == kWindowModalitySystemModal);
    });
    if (modal != stack.rend() && !BelongsTo(window, **modal))
        blocked = blocker = *modal;
    for (bool found = true; found;) {
        const auto child = std::find_if(stack.rbegin(), stack.rend(), [blocked](const CWindow* one) {
            return one->visible && one->modality == kWindowModalityWindowModal && one->unavailable == blocked->Ref();
        });
        found = child != stack.rend();
        if (found)
            blocked = blocker = *child;
    }
    return blocker;
}

void Windows::Select(CWindow& window)
{
    CWindow* const blocker = BlockerOf(window);
    CWindow& selected = blocker ? *blocker : window;
    if (selected.foreign != 0)
        return;
    auto& stack = Stack();
    stack.erase(std::remove(stack.begin(), stack.end(), &selected), stack.end());
    stack.push_back(&selected);
    if (!selected.visible)
        return;
    SetActive(selected.Ref());
    selected.selected = true;
    Surfaces::Changed(selected);
}

void Windows::SetActive(WindowRef window) noexcept
{
    if (g_active == window)
        return;
    for (const WindowRef reference : {g_active, window}) {
        if (CWindow* const changed = Find<CWindow>(reference))
            Surfaces::Touched(*changed);
    }
    g_active = window;
}

WindowRef Windows::Active() noexcept
{
    return g_active;
}

bool Windows::EnsureDesktop()
{
    Loop::ClaimIfFree();
    if (const IDesktop* const open = Desktop::Current())
        return open->IsAlive();
    if (!Loop::IsCurrent())
        return false;
    Loop::SetAfterWork(Surfaces::SyncAndPaint);
    const bool seen = !Desktop::IsHeadless(); // in memory nobody looks, and texts measure the same everywhere
    if (seen && !Screen::OpenDrawing())
        return false; // a desktop that opened without would stay empty for good
    IDesktop* const desktop = Desktop::Open(InputSink());
    if (desktop && seen)
        Screen::ShowOn(*desktop);
    return desktop != nullptr;
}

CRef<CWindow> Windows::Make(WindowClass classId, WindowAttributes attributes, const Rect& content)
{
    auto window = CRef<CWindow>::Adopt(new CWindow(classId, attributes, content));
    const CToolboxLock lock;
    Stack().reserve(Stack().size() + 1);
    Handles().Register(*window);
    try {
        Handles().Register(*window->root);
    } catch (...) {
        Handles().Forget(*window);
        throw;
    }
    Stack().push_back(window.Get());
    return window;
}

OSStatus CreateNewWindow(WindowClass windowClass, WindowAttributes attributes, const Rect* contentBounds,
                         WindowRef* outWindow)
{
    if (outWindow)
        *outWindow = nullptr;
    constexpr int kMaximumSide = 16384;
    const auto fits = [](int side) {
        return side >= 1 && side <= kMaximumSide;
    };
    if (!outWindow || !contentBounds || !fits(contentBounds->right - contentBounds->left) ||
        !fits(contentBounds->bottom - contentBounds->top))
        return paramErr;
    return Guarded<OSStatus>(memFullErr, [&]() -> OSStatus {
        if (!Windows::EnsureDesktop())
            return kCVNoDesktopErr;
        *outWindow = Windows::Make(windowClass, attributes, *contentBounds)->Ref();
        return noErr;
    });
}

OSStatus CVCreateForeignWindow(unsigned long long nativeWindow, WindowRef* outWindow)
{
    if (outWindow)
        *outWindow = nullptr;
    if (!outWindow || nativeWindow == 0)
        return paramErr;
    return Guarded<OSStatus>(memFullErr, [&]() -> OSStatus {
        const CRef<CWindow> window = Windows::Make(kDocumentWindowClass, kWindowNoAttributes, Rect{0, 0, 1, 1});
        const CToolboxLock lock;
        window->foreign = nativeWindow;
        window->visible = true;
        auto& stack = Windows::Stack();
        stack.erase(std::remove(stack.begin(), stack.end(), window.Get()), stack.end());
        *outWindow = window->Ref();
        return noErr;
    });
}

void DisposeWindow(WindowRef reference)
{
    const auto window = WithWindow<CRef<CWindow>>(reference, {}, [](CWindow& found) {
        const bool first = !found.disposing;
        found.disposing = true;
        return first ? CRef<CWindow>::Share(&found) : CRef<CWindow>();
    });
    if (!window)
        return;
    Guarded(0, [&] {
        Notify(*window, reference, kEventWindowDispose);
        for (const WindowRef child : WindowsModalTo(reference))
            DisposeWindow(child);
        std::vector<CRef<CControl>> told;
        {
            const CToolboxLock lock;
            told = ControlsToTell(*window->root);
        }
        for (const CRef<CControl>& control : told) {
            ControlRef ref = nullptr;
            {
                const CToolboxLock lock;
                ref = control->Ref();
            }
            Notify(*control, ref, kEventControlDispose, kEventTargetDontPropagate | kEventTargetSendToAllHandlers);
        }
        return 0;
    });
    Guarded(0, [&] {
        const CToolboxLock lock;
        TearDown(*window);
        return 0;
    });
    Surfaces::Sync();
}

namespace {

void SetShown(WindowRef reference, bool shown)
{
    const auto window = WithWindow<CRef<CWindow>>(reference, {}, [shown](CWindow& found) {
        if (found.visible == shown || found.foreign != 0 || found.disposing)
            return CRef<CWindow>();
        found.visible = shown;
        if (!shown && g_active == found.Ref())
            Windows::SetActive(nullptr);
        Surfaces::Changed(found);
        return CRef<CWindow>::Share(&found);
    });
    if (!window)
        return;
    Surfaces::Sync();
    Guarded(0, [&] {
        Notify(*window, reference, shown ? kEventWindowShown : kEventWindowHidden);
        return 0;
    });
}

} // namespace

void ShowWindow(WindowRef window)
{
    SetShown(window, true);
}

void HideWindow(WindowRef window)
{
    SetShown(window, false);
}

void SelectWindow(WindowRef window)
{
    (void)WithWindow(window, 0, [](CWindow& found) {
        Windows::Select(found);
        return 0;
    });
    Surfaces::Sync();
}

Boolean IsWindowVisible(WindowRef window)
{
    return WithWindow<Boolean>(window, false, [](CWindow& found) { return found.visible; });
}

Boolean IsWindowActive(WindowRef window)
{
    return WithWindow<Boolean>(window, false, [](CWindow& found) { return found.IsActive(); });
}

Boolean IsValidWindowPtr(WindowRef possibleWindow)
{
    return WithWindow<Boolean>(possibleWindow, false, [](CWindow&) { return true; });
}

WindowRef GetWindowList(void)
{
    const CToolboxLock lock;
    return Windows::Stack().empty() ? nullptr : Windows::Stack().back()->Ref();
}

WindowRef GetNextWindow(WindowRef window)
{
    return WithWindow<WindowRef>(window, nullptr, [](CWindow& found) {
        const auto& stack = Windows::Stack();
        const auto place = std::find(stack.begin(), stack.end(), &found);
        return place == stack.begin() || place == stack.end() ? nullptr : (*(place - 1))->Ref();
    });
}

WindowRef FrontNonFloatingWindow(void)
{
    const CToolboxLock lock;
    const auto& stack = Windows::Stack();
    const auto front = std::find_if(stack.rbegin(), stack.rend(),
                                    [](const CWindow* window) { return window->visible && !IsFloating(*window); });
    return front == stack.rend() ? nullptr : (*front)->Ref();
}

OSStatus SetWindowModality(WindowRef inWindow, WindowModality inModalKind, WindowRef inUnavailableWindow)
{
    const auto status = WithWindow<OSStatus>(inWindow, errInvalidWindowPtr, [&](CWindow& window) -> OSStatus {
        if (inModalKind > kWindowModalityWindowModal)
            return paramErr;
        const bool hasParent = inModalKind == kWindowModalityWindowModal;
        if (hasParent) {
            const CWindow* const parent = Find<CWindow>(inUnavailableWindow);
            if (!parent)
                return errInvalidWindowPtr;
            if (BelongsTo(*parent, window))
                return paramErr;
        }
        window.modality = inModalKind;
        window.unavailable = hasParent ? inUnavailableWindow : nullptr;
        window.ownerChanged = true;
        Surfaces::Changed(window);
        return noErr;
    });
    Surfaces::Sync();
    return status;
}

OSStatus GetWindowModality(WindowRef inWindow, WindowModality* outModalKind, WindowRef* outUnavailableWindow)
{
    return WithWindow<OSStatus>(inWindow, errInvalidWindowPtr, [&](CWindow& window) {
        if (outModalKind)
            *outModalKind = window.modality;
        if (outUnavailableWindow)
            *outUnavailableWindow = Find<CWindow>(window.unavailable) ? window.unavailable : nullptr;
        return noErr;
    });
}

OSStatus SetWindowTitleWithCFString(WindowRef inWindow, CFStringRef inString)
{
    const auto status = WithWindow<OSStatus>(inWindow, errInvalidWindowPtr, [&](CWindow& window) -> OSStatus {
        if (!inString)
            return paramErr;
        window.title = CRef<const __CFString>::Share(inString);
        window.titleChanged = true;
        Surfaces::Changed(window);
        return noErr;
    });
    Surfaces::Sync();
    return status;
}

OSStatus CopyWindowTitleAsCFString(WindowRef inWindow, CFStringRef* outString)
{
    if (!outString)
        return paramErr;
    *outString = nullptr;
    return WithWindow<OSStatus>(inWindow, errInvalidWindowPtr, [&](CWindow& window) {
        *outString = CRef<const __CFString>(window.title).Detach();
        return noErr;
    });
}

OSStatus GetWindowClass(WindowRef window, WindowClass* outClass)
{
    return WithWindow<OSStatus>(window, errInvalidWindowPtr, [&](CWindow& found) -> OSStatus {
        if (!outClass)
            return paramErr;
        *outClass = found.windowClass;
        return noErr;
    });
}

OSStatus GetWindowAttributes(WindowRef window, WindowAttributes* outAttributes)
{
    return WithWindow<OSStatus>(window, errInvalidWindowPtr, [&](CWindow& found) -> OSStatus {
        if (!outAttributes)
            return paramErr;
        *outAttributes = found.attributes;
        return noErr;
    });
}

OSStatus GetWindowBounds(WindowRef window, WindowRegionCode regionCode, Rect* globalBounds)
{
    return WithWindow<OSStatus>(window, errInvalidWindowPtr, [&](CWindow& found) -> OSStatus {
        if (!globalBounds || regionCode != kWindowContentRgn)
            return paramErr;
        *globalBounds = found.content;
        return noErr;
    });
}

EventTargetRef GetWindowEventTarget(WindowRef inWindow)
{
    return WithWindow<EventTargetRef>(inWindow, nullptr, [](CWindow& window) { return window.TargetRef(); });
}

EventTargetRef GetUserFocusEventTarget(void)
{
    return Guarded<EventTargetRef>(nullptr, [] {
        const CToolboxLock lock;
        return UserFocusTarget().TargetRef();
    });
}

OSStatus ProcessHICommand(const HICommand* inCommand)
{
    if (!inCommand)
        return paramErr;
    return Guarded<OSStatus>(memFullErr, [&] {
        const CRef<CEvent> event = CEvent::Create(kEventClassCommand, kEventCommandProcess);
        event->Set(kEventParamDirectObject, typeHICommand, *inCommand);
        CTarget* target = nullptr;
        {
            const CToolboxLock lock;
            target = &UserFocusTarget();
        }
        const OSStatus answer = SendEvent(*event, *target);
        const CToolboxLock lock;
        ReleaseLocked(*event);
        return answer;
    });
}
