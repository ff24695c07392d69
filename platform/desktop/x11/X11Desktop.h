// platform/desktop/x11/X11Desktop.h
//
// The desktop on an X server: surfaces are its windows, input its events. What window managers
// want to know of a window stands in Hints.cpp, what the user prefers in Preferences.cpp.
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <unordered_map>

#include "platform/desktop/IDesktop.h"
#include "platform/desktop/x11/Connection.h"
#include "platform/desktop/x11/Keyboard.h"
#include "platform/desktop/x11/MainLoop.h"
#include "platform/desktop/x11/Portal.h"
#include "platform/desktop/x11/Selections.h"
#include "platform/desktop/x11/XSettings.h"

class CX11Desktop final : public IDesktop {
public:
    explicit CX11Desktop(std::unique_ptr<CConnection> connection);

    void SetSink(IInputSink& sink) override { m_sink = &sink; }
    bool IsAlive() const override { return !m_dead && !m_connection->IsDead(); }
    SurfaceId CreateSurface(const SurfaceRequest& request) override;
    void DestroySurface(SurfaceId surface) override;
    void ShowSurface(SurfaceId surface) override;
    void HideSurface(SurfaceId surface) override;
    void SelectSurface(SurfaceId surface) override;
    void SetTitle(SurfaceId surface, std::string_view title) override;
    void SetOwner(SurfaceId surface, SurfaceId owner, ForeignWindowId foreignOwner, bool modal) override;
    void ResizeSurface(SurfaceId surface, int width, int height) override;
    void SetCursor(SurfaceId surface, CursorShape shape) override;
    bool Present(SurfaceId surface, const PixelBuffer& picture, const PixelRect& damage) override;
    double ScaleOf(SurfaceId) const override { return m_scale; } // one for the whole display
    Appearance CurrentAppearance() const override { return m_appearance; }
    void OfferText(TextExchange where, std::string_view text) override;
    void RequestText(TextExchange where, std::uint32_t request) override;
    int PumpInput(double seconds) override;
    bool TakeTurn(double seconds) override { return m_loop.TakeTurn(seconds); }
    void LeaveTurn() noexcept override { m_loop.LeaveTurn(); }
    void SetDeadline(double seconds) override;
    void Wake() noexcept override { m_loop.Wake(); }
    int Descriptor() override { return m_loop.Descriptor(); }

private:
    struct Surface {
        SurfaceId id = 0;
        xcb_window_t window = 0;
        SurfaceRequest request;
        xcb_window_t transientFor = 0;
        int ownerX = 0, ownerY = 0; ///< Where its owner stood when it was placed.
        int width = 0, height = 0;
        bool asked = false;       ///< To be shown.
        bool mapping = false;     ///< On its way to the screen.
        bool mapped = false;      ///< Is on the screen, as the server says.
        bool withdrawing = false; ///< Hidden, and the manager has not let go of it yet.
        bool selectWhenMapped = false;
        CursorShape cursor = CursorShape::Arrow;
        xcb_pixmap_t background = XCB_NONE; ///< Its picture while it is not on the screen, which the server paints.
        PixelRect exposed = {};             ///< Gathered until the last of a series.

        bool IsMenuOf(SurfaceId owner) const { return request.placement == Placement::Menu && request.owner == owner; }
    };

    Surface* Find(SurfaceId surface);
    Surface* FindWindow(xcb_window_t window);

    // Hints.cpp
    void SetIdentity(const Surface& surface);
    void SetSizeHints(const Surface& surface);
    void SetStates(const Surface& surface);
    void Place(Surface& surface);
    /// Answers the window that a window manager knows of those around `window`, and watches for the
    /// end of `window`; 0 when it is not there. Waits for the server.
    xcb_window_t Adopt(xcb_window_t window);
    void Activate(const Surface& surface, xcb_timestamp_t time);
    void AskTime();

    // Preferences.cpp
    void ReadPreferences();
    void AskSettings();
    void TakeSettings(const std::string& bytes);
    void TakePreference(CPortal::Preference preference);
    void Apply();

    void Map(Surface& surface);
    void Withdraw(Surface& surface);
    void EndWithdrawal(Surface& surface);
    void SelectEvents(const Surface& surface, std::uint32_t events);

    void Serve();
    void TakeEvents();
    /// Sends what was asked for, and wakes the loop where that has read what nobody is taking.
    void Flush();
    void ServeTimers();
    void TakeEvent(const xcb_generic_event_t& event);
    void TakeButton(const xcb_button_press_event_t& event, bool pressed);
    void TakeKey(const xcb_key_press_event_t& event);
    void TakeMotion();
    void TakeCrossing(const xcb_enter_notify_event_t& event, bool entered);
    void TakeFocus(const xcb_focus_in_event_t& event, bool gained);
    void TakeExpose(const xcb_expose_event_t& event);
    void TakeConfigure(const xcb_configure_notify_event_t& event);
    void TakeMap(const xcb_map_notify_event_t& event);
    void TakeUnmap(const xcb_unmap_notify_event_t& event);
    void TakeDestroy(const xcb_destroy_notify_event_t& event);
    /// Tells that the surfaces are lost of which that holds.
    void LoseWhere(const std::function<bool(const Surface&)>& isLost);
    void TakeMessage(const xcb_client_message_event_t& event);
    void TakeProperty(const xcb_property_notify_event_t& event);
    void TakeState(const xcb_property_notify_event_t& event);
    void NoteUserTime(const Surface& surface, xcb_timestamp_t time);
    void Deliver();
    void Die();
    void Rearm();

    /// Answers a pointer event's place, in the menu that is open there if there is one.
    template <typename Event>
    PointerInput PointerOf(SurfaceId surface, const Event& event);
    PointerInput PointerAt(SurfaceId surface, double x, double y, std::uint16_t state, xcb_timestamp_t time);
    /// The server's time as one of the event clock.
    double TimeOf(xcb_timestamp_t time);

    // Presenting.cpp
    void Upload(xcb_drawable_t target, const PixelBuffer& picture, const PixelRect& part);
    /// Answers a new pixmap with a picture.
    xcb_pixmap_t UploadWhole(const Surface& surface, const PixelBuffer& picture);
    /// Whoever draws the window is asked for its picture from now on.
    void DropBackground(Surface& surface);

    xcb_cursor_t CursorOf(CursorShape shape);

    const std::unique_ptr<CConnection> m_connection;
    bool m_taking = false; ///< What comes is being taken.
    IInputSink* m_sink = nullptr;
    CMainLoop m_loop;
    CKeyboard m_keyboard;
    CSelections m_selections;
    std::unordered_map<SurfaceId, Surface> m_surfaces;
    std::unordered_map<xcb_window_t, SurfaceId> m_windows;
    SurfaceId m_lastId = 0;
    xcb_cursor_t m_cursors[3] = {};
    std::atomic<bool> m_dead{false};
    bool m_announced = false; ///< The sink knows that the display is gone.
    int m_delivered = 0;      ///< Inputs so far; wraps.
    double m_deadline = -1;
    double m_serverClock = 0; ///< Event clock minus server's time; 0 before the first event.
    xcb_timestamp_t m_lastTime = XCB_CURRENT_TIME;
    SurfaceId m_toActivate = 0;
    bool m_hasManager = false;
    bool m_motionWaits = false;
    xcb_motion_notify_event_t m_motion = {};

    // The user's preferences.
    XSettings m_settings;
    std::string m_resources;
    xcb_window_t m_settingsOwner = 0;
    CPortal::Preference m_preference = CPortal::Preference::None;
    double m_scale = 1;
    Appearance m_appearance = Appearance::Light;
    CPortal* m_portal = nullptr;
};
