// platform/desktop/IDesktop.h
//
// The one seam between our window code and a screen. platform/hitoolbox/ decides what a window
// looks like and what a click means; a desktop only shows pixels and reports input.
//
// Units: a surface is measured in whole pixels; a window's points are `scale` times as many. Times
// are seconds of the event clock (platform/base/Clock.h). Texts are UTF-8.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// Whole pixels, origin at the top left, y downwards.
struct PixelRect {
    int x, y, width, height;
};
/// `height` rows of `stride` bytes, top row first; each pixel 0xAARRGGBB in native byte order,
/// colour premultiplied by alpha.
struct PixelBuffer {
    const std::uint8_t* bytes;
    std::size_t stride;
    int width, height;
};
/// Names one surface; never reused while the desktop lives. 0 names none.
using SurfaceId = std::uint32_t;
/// Names a window of another program or toolkit, on X11 its window id. 0 names none.
using ForeignWindowId = std::uint64_t;

enum class Appearance { Light, Dark };
enum class CursorShape { Arrow, Text, Hand };
/// Selection: what the user marked last, pasted with the middle button where the system has it.
enum class TextExchange { Clipboard, Selection };
/// Where a surface is to stand; a window manager may place it elsewhere.
enum class Placement {
    Frame,          ///< Where its frame says.
    CentredOnOwner, ///< Over the middle of its owner; without one as CentredOnScreen.
    CentredOnScreen,
    AlertOnScreen, ///< Centred, a fifth of the free height from the top.
    /// A list over its owner: the frame counts from the owner's top left and is kept on the screen.
    /// It has no decoration and never gets the keyboard; pointer input over it is its own, even while
    /// a button is held that went down elsewhere. It is lost when its owner moves, or when another
    /// program takes the keyboard for itself.
    Menu
};

/// What a new surface is to be.
struct SurfaceRequest {
    PixelRect frame = {}; ///< Content area, root-relative, without decoration; sides 1 to 16384.
    Placement placement = Placement::Frame;
    SurfaceId owner = 0;              ///< Surface that it stays above, or 0.
    ForeignWindowId foreignOwner = 0; ///< Foreign window that it stays above, or 0.
    bool modal = false;               ///< The owner takes no input meanwhile; without owner: all of ours.
    int clear = 0; ///< Menu: height above the frame that it does not cover; without room below it stands above that.
    bool resizable = false;
    bool closable = true;
    std::string title;
};

/// Bits of `modifiers`.
enum Modifier : unsigned { kModifierShift = 1U, kModifierControl = 2U, kModifierAlt = 4U, kModifierSuper = 8U };

enum class PointerButton { Left, Middle, Right };

struct PointerInput {
    SurfaceId surface = 0;
    double x = 0, y = 0; ///< Pixels from the surface's top left; outside it while a button is held.
    PointerButton button = PointerButton::Left; ///< Presses and releases only.
    unsigned modifiers = 0;
    double time = 0;
};

/// Key symbols are numbered as X11's (keysyms): printable ASCII keys have their ASCII code, and
enum Key : std::uint32_t {
    kKeyBackspace = 0xFF08,
    kKeyTab = 0xFF09,
    kKeyReturn = 0xFF0D,
    kKeyEscape = 0xFF1B,
    kKeyHome = 0xFF50,
    kKeyLeft = 0xFF51,
    kKeyUp = 0xFF52,
    kKeyRight = 0xFF53,
    kKeyDown = 0xFF54,
    kKeyPageUp = 0xFF55,
    kKeyPageDown = 0xFF56,
    kKeyEnd = 0xFF57,
    kKeyInsert = 0xFF63,
    kKeyKeypadEnter = 0xFF8D,
    kKeyBackTab = 0xFE20,
    kKeyDelete = 0xFFFF
};

struct KeyInput {
    SurfaceId surface = 0;
    std::uint32_t symbol = 0; ///< Keysym with the modifiers applied; for shortcuts in a non-Latin
                              ///< layout that of the key's Latin letter.
    std::string_view text;    ///< What the key types, already composed; empty for none.
    unsigned modifiers = 0;
    double time = 0;
};

/// Receives what happens. Called on the event-loop thread only, while the desktop is pumped or by
/// the main loop that it hangs in; may call every operation of the desktop, PumpInput too.
class IInputSink {
public:
    virtual void PointerEntered(const PointerInput& input) = 0;
    virtual void PointerMoved(const PointerInput& input) = 0;
    virtual void PointerLeft(SurfaceId surface) = 0;
    virtual void PointerPressed(const PointerInput& input) = 0;
    virtual void PointerReleased(const PointerInput& input) = 0;
    /// @param x, y  steps to the right and downwards; fractions for smooth wheels.
    virtual void Scrolled(const PointerInput& input, double x, double y) = 0;

    virtual void KeyPressed(const KeyInput& input) = 0;
    /// Text that an input method confirms.
    virtual void TextEntered(SurfaceId surface, std::string_view text) = 0;

    virtual void FocusGained(SurfaceId surface) = 0;
    virtual void FocusLost(SurfaceId surface) = 0;
    /// The user asks for the surface to be closed; it stays until it is destroyed.
    virtual void CloseRequested(SurfaceId surface) = 0;
    /// The surface has another size now, in pixels; its content is to be presented anew.
    virtual void Resized(SurfaceId surface, int width, int height) = 0;
    /// A part is to be presented anew.
    virtual void Exposed(SurfaceId surface, const PixelRect& part) = 0;
    /// The surface is gone or lost its foreign owner for good, or is a menu that has to go; still to be
    /// destroyed by its holder.
    virtual void SurfaceLost(SurfaceId surface) = 0;

    /// Answers a RequestText; empty when nobody had text.
    virtual void TextReceived(std::uint32_t request, std::string_view text) = 0;
    /// The surface's scale is another now.
    virtual void ScaleChanged(SurfaceId surface) = 0;
    /// Light and dark, or the user's font, changed: everything is to be presented anew.
    virtual void AppearanceChanged() = 0;

    /// The time set by SetDeadline has come.
    virtual void DeadlineReached() = 0;
    /// Wake was called, once or several times.
    virtual void Woken() = 0;

protected:
    ~IInputSink() = default;
};

/// Every operation: event-loop thread only, unless it says otherwise; where several threads might be
/// that, the one whose turn it is. None but PumpInput calls the sink before it returns. An operation on a surface that
/// is not ours changes nothing.
class IDesktop {
public:
    virtual ~IDesktop() = default;

    /// Sets who receives what happens outside PumpInput too, when a main loop of the process serves
    /// the desktop. Called once, before anything else; `sink` outlives the desktop.
    virtual void SetSink(IInputSink& sink) = 0;

    /// Answers whether it can still show anything: a display may go, and does not come back.
    virtual bool IsAlive() const = 0;

    /// Creates a hidden surface.
    /// @return the surface, the caller's to destroy; 0 if refused, with nothing left behind.
    virtual SurfaceId CreateSurface(const SurfaceRequest& request) = 0;
    virtual void DestroySurface(SurfaceId surface) = 0;
    virtual void ShowSurface(SurfaceId surface) = 0;
    virtual void HideSurface(SurfaceId surface) = 0;
    /// Raises the surface and asks for the keyboard.
    virtual void SelectSurface(SurfaceId surface) = 0;
    virtual void SetTitle(SurfaceId surface, std::string_view title) = 0;
    /// Changes whom it stays above and whether modally, with the meanings of SurfaceRequest.
    virtual void SetOwner(SurfaceId surface, SurfaceId owner, ForeignWindowId foreignOwner, bool modal) = 0;
    /// Sets the content's size in pixels.
    virtual void ResizeSurface(SurfaceId surface, int width, int height) = 0;
    virtual void SetCursor(SurfaceId surface, CursorShape shape) = 0;

    /// Shows `picture` at the surface's top left, cut to its size.
    /// @param picture  borrowed: read before this returns, never kept.
    /// @param damage   the part that differs from what was presented before.
    /// @return false if `surface` is not ours; the screen is then unchanged.
    virtual bool Present(SurfaceId surface, const PixelBuffer& picture, const PixelRect& damage) = 0;

    /// Answers the pixels per point of a surface, or of a new one for 0.
    virtual double ScaleOf(SurfaceId surface) const = 0;
    virtual Appearance CurrentAppearance() const = 0;

    /// Offers text to other programs; an empty one withdraws what was offered.
    virtual void OfferText(TextExchange where, std::string_view text) = 0;
    /// Asks for text; the sink's TextReceived answers later, exactly once, with the same number.
    virtual void RequestText(TextExchange where, std::uint32_t request) = 0;

    /// Delivers waiting input to the sink, which may create and destroy surfaces and pump meanwhile.
    /// Serves the process's main loop while it waits, where the desktop hangs in one.
    /// @param seconds  longest wait for the first input; 0 polls, below 0 waits without limit.
    /// @return inputs delivered (wake-ups and deadlines count); 0 after the wait; -1 if the display
    ///         is gone for good.
    virtual int PumpInput(double seconds) = 0;
    /// Has the calling thread alone serve the desktop until LeaveTurn, although another one may run the
    /// process's main loop and serve it from there. Turns nest.
    /// @param seconds  longest wait for a thread that serves it now; below 0 without limit.
    /// @return false if that still does.
    virtual bool TakeTurn(double seconds) = 0;
    virtual void LeaveTurn() noexcept = 0;
    /// Has the sink's DeadlineReached called once, `seconds` from now; a new deadline replaces the
    /// old one, below 0 means none.
    virtual void SetDeadline(double seconds) = 0;
    /// Has the sink's Woken called on the event-loop thread. Any thread.
    virtual void Wake() noexcept = 0;
    /// Answers a descriptor that is readable whenever PumpInput(0) has something to do, deadlines
    /// included; -1 if there is none. For hosts with a loop of their own.
    virtual int Descriptor() = 0;
};

/// A turn for the length of a scope, where it can be had.
class CTurn {
public:
    CTurn(IDesktop& desktop, double seconds) : m_desktop(desktop), m_taken(desktop.TakeTurn(seconds)) {}
    ~CTurn()
    {
        if (m_taken)
            m_desktop.LeaveTurn();
    }
    CTurn(const CTurn&) = delete;
    CTurn& operator=(const CTurn&) = delete;
    explicit operator bool() const noexcept { return m_taken; }

private:
    IDesktop& m_desktop;
    const bool m_taken;
};

/// How a desktop's module is entered: answers a desktop that is never destroyed, or null when there
/// is no display. Its linker name is kOpenDesktopSymbol.
using OpenDesktopProc = IDesktop* (*)() noexcept;
constexpr const char* kOpenDesktopSymbol = "cv_OpenDesktop";
