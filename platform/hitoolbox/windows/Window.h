// platform/hitoolbox/windows/Window.h
//
// The record of a window: its attributes, its controls, whom it blocks, and what the screen shows
// of it. Bringing the screen up to date is left to Surfaces.
#pragma once

#include <unordered_map>

#include "platform/desktop/IDesktop.h"
#include "platform/hitoolbox/windows/Control.h"
#include <HIToolbox/MacWindows.h>

/// With the lock held, as everything here unless it says otherwise.
class CWindow final : public CTarget {
public:
    static constexpr RecordKind kKind = RecordKind::Window;

    CWindow(WindowClass classId, WindowAttributes windowAttributes, const Rect& contentBounds);

    OSStatus HandleByDefault(const CEvent& event) override;
    WindowRef Ref() const noexcept { return RefOf<WindowRef>(*this); }

    int Width() const noexcept { return content.right - content.left; }
    int Height() const noexcept { return content.bottom - content.top; }
    CControl* FindById(const ControlID& id) const noexcept;
    /// Answers the control that has the keyboard and can use it, or null.
    CControl* Focus() const noexcept;
    bool IsActive() const noexcept;

    const WindowClass windowClass;
    const WindowAttributes attributes;
    CRef<const __CFString> title;
    Rect content;
    Placement placement = Placement::Frame;
    bool visible = false;
    bool disposing = false;
    WindowModality modality = kWindowModalityNone;
    WindowRef unavailable = nullptr; // of a window-modal one, its parent
    WindowRef owner = nullptr;       // what it stays above without blocking it
    ForeignWindowId foreign = 0;     // stands for another program's window and has nothing itself

    CRef<CControl> root;
    std::unordered_map<std::uint64_t, std::vector<CControl*>> byId;
    ControlRef focus = nullptr;
    ControlRef defaultButton = nullptr;
    ControlRef cancelButton = nullptr;
    ControlRef hovered = nullptr;

    // What the screen shows; the event-loop thread's.
    SurfaceId surface = 0;
    bool onScreen = false;
    double scale = 1;
    // What it is to be told.
    bool titleChanged = false, ownerChanged = false, sizeChanged = false, selected = false;
    bool pending = false, dirty = false, damaged = false;
};

namespace Windows {

/// All windows, the front one last; foreign ones are not among them.
std::vector<CWindow*>& Stack() noexcept;
/// Answers the window that takes a window's input away, the innermost one; null when none does.
CWindow* BlockerOf(const CWindow& window) noexcept;
/// Brings a window to the front and makes it the active one, or the window that blocks it.
void Select(CWindow& window);
/// Sets which window has the keyboard; null for none.
void SetActive(WindowRef window) noexcept;
WindowRef Active() noexcept;
/// Makes a hidden window. Throws std::bad_alloc. Takes the lock.
CRef<CWindow> Make(WindowClass classId, WindowAttributes attributes, const Rect& content);
/// Opens the desktop that windows need. Without the lock.
/// @return false where there is none.
bool EnsureDesktop();

} // namespace Windows
