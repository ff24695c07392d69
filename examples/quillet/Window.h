// Window.h
//
// A window of X11 that shows a panel inside a window of the host, on a connection of its own.
#pragma once

#include <cairo.h>
#include <xcb/xcb.h>

#include <cstdint>
#include <memory>

#include "Panel.h"

namespace quillet {

/// Thread: the host's user-interface thread.
class CWindow {
public:
    /// Opens the window and shows it. `panel` outlives it.
    /// @param parent  the host's window.
    /// @param scale   pixels per point.
    /// @return null where there is no display or it refuses.
    static std::unique_ptr<CWindow> Open(xcb_window_t parent, double scale, CPanel& panel);
    ~CWindow();
    CWindow(const CWindow&) = delete;
    CWindow& operator=(const CWindow&) = delete;

    xcb_window_t Id() const { return m_window; }
    int Width() const;
    int Height() const;
    /// Hands waiting input to the panel and draws it where it is stale. Never waits.
    /// @return false when the display or the window is gone for good.
    bool Serve();

private:
    CWindow(xcb_connection_t* connection, double scale, CPanel& panel);
    bool Create(xcb_window_t parent);
    void Describe();
    void Handle(const xcb_generic_event_t& event);
    void HandleButton(const xcb_button_press_event_t& press);
    Place InPoints(int x, int y) const { return {x / m_scale, y / m_scale}; }
    void Draw();

    xcb_connection_t* m_connection;
    double m_scale;
    CPanel& m_panel;
    xcb_window_t m_window = 0;
    cairo_surface_t* m_surface = nullptr;
    bool m_exposed = false;
    bool m_gone = false;
    xcb_timestamp_t m_lastPress = 0;
    Place m_lastPlace{};
};

} // namespace quillet
