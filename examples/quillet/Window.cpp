// Window.cpp
#include "Window.h"

#include <cairo-xcb.h>

#include <cmath>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace quillet {

namespace {

constexpr xcb_timestamp_t kDoubleClickMilliseconds = 400;
constexpr double kDoubleClickDistance = 4.0;
constexpr std::uint32_t kEvents = XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY |
                                  XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE |
                                  XCB_EVENT_MASK_POINTER_MOTION | XCB_EVENT_MASK_LEAVE_WINDOW;

// The window takes its parent's visual, so that it needs no colour map of its own.
xcb_visualtype_t* FindVisual(xcb_connection_t* connection, xcb_visualid_t wanted)
{
    auto screen = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; screen.rem; xcb_screen_next(&screen)) {
        auto depth = xcb_screen_allowed_depths_iterator(screen.data);
        for (; depth.rem; xcb_depth_next(&depth)) {
            auto visual = xcb_depth_visuals_iterator(depth.data);
            for (; visual.rem; xcb_visualtype_next(&visual)) {
                if (visual.data->visual_id == wanted)
                    return visual.data;
            }
        }
    }
    return nullptr;
}

bool IsFine(std::uint16_t state)
{
    return (state & XCB_MOD_MASK_SHIFT) != 0;
}

} // namespace

std::unique_ptr<CWindow> CWindow::Open(xcb_window_t parent, double scale, CPanel& panel)
{
    std::unique_ptr<CWindow> window(new CWindow(xcb_connect(nullptr, nullptr), scale, panel));
    return window->Create(parent) ? std::move(window) : nullptr;
}

CWindow::CWindow(xcb_connection_t* connection, double scale, CPanel& panel)
    : m_connection(connection), m_scale(scale), m_panel(panel)
{
}

CWindow::~CWindow()
{
    if (m_surface) {
        cairo_device_t* const device = cairo_device_reference(cairo_surface_get_device(m_surface));
        cairo_surface_finish(m_surface);
        cairo_surface_destroy(m_surface);
        cairo_device_finish(device); // Cairo knows devices by the connection's address, which the next one may get
        cairo_device_destroy(device);
    }
    if (m_window && !m_gone)
        xcb_destroy_window(m_connection, m_window);
    xcb_flush(m_connection);
    xcb_disconnect(m_connection);
}

int CWindow::Width() const
{
    return static_cast<int>(std::lround(CPanel::kWidth * m_scale));
}

int CWindow::Height() const
{
    return static_cast<int>(std::lround(CPanel::kHeight * m_scale));
}

bool CWindow::Create(xcb_window_t parent)
{
    if (xcb_connection_has_error(m_connection))
        return false;
    xcb_get_window_attributes_reply_t* const attributes =
        xcb_get_window_attributes_reply(m_connection, xcb_get_window_attributes(m_connection, parent), nullptr);
    if (!attributes)
        return false; // no such window
    xcb_visualtype_t* const visual = FindVisual(m_connection, attributes->visual);
    std::free(attributes);
    if (!visual)
        return false;

    m_window = xcb_generate_id(m_connection);
    const std::uint32_t values[] = {XCB_PIXMAP_NONE, kEvents};
    xcb_generic_error_t* const error = xcb_request_check(
        m_connection, xcb_create_window_checked(m_connection, XCB_COPY_FROM_PARENT, m_window, parent, 0, 0,
                                                static_cast<std::uint16_t>(Width()),
                                                static_cast<std::uint16_t>(Height()), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                                                visual->visual_id, XCB_CW_BACK_PIXMAP | XCB_CW_EVENT_MASK, values));
    if (error) {
        std::free(error);
        m_window = 0;
        return false;
    }
    Describe();
    m_surface = cairo_xcb_surface_create(m_connection, m_window, visual, Width(), Height());
    xcb_map_window(m_connection, m_window);
    xcb_flush(m_connection);
    return true;
}

// Name and size, where hosts and their toolkits look for them.
void CWindow::Describe()
{
    constexpr std::string_view kName = "Corvane Quillet";
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8,
                        static_cast<std::uint32_t>(kName.size()), kName.data());
    const auto width = static_cast<std::uint32_t>(Width());
    const auto height = static_cast<std::uint32_t>(Height());
    constexpr std::uint32_t kMinimumMaximumAndBaseSize = 1U << 4 | 1U << 5 | 1U << 8; // ICCCM 4.1.2.3
    const std::uint32_t hints[18] = {
        kMinimumMaximumAndBaseSize, 0, 0, 0, 0, width, height, width, height, 0, 0, 0, 0, 0, 0, width, height, 0};
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS,
                        32, 18, hints);
}

bool CWindow::Serve()
{
    while (xcb_generic_event_t* const event = m_gone ? nullptr : xcb_poll_for_event(m_connection)) {
        Handle(*event);
        std::free(event);
    }
    m_gone = m_gone || xcb_connection_has_error(m_connection);
    if (!m_gone && (m_exposed || m_panel.IsStale()))
        Draw();
    return !m_gone;
}

void CWindow::Handle(const xcb_generic_event_t& event)
{
    switch (event.response_type & 0x7F) {
    case XCB_EXPOSE:
        m_exposed = true;
        break;
    case XCB_DESTROY_NOTIFY:
        m_gone = true;
        break;
    case XCB_BUTTON_PRESS:
        HandleButton(reinterpret_cast<const xcb_button_press_event_t&>(event));
        break;
    case XCB_BUTTON_RELEASE: {
        const auto& release = reinterpret_cast<const xcb_button_release_event_t&>(event);
        if (release.detail == XCB_BUTTON_INDEX_1)
            m_panel.PointerReleased(InPoints(release.event_x, release.event_y));
        break;
    }
    case XCB_MOTION_NOTIFY: {
        const auto& motion = reinterpret_cast<const xcb_motion_notify_event_t&>(event);
        m_panel.PointerMoved(InPoints(motion.event_x, motion.event_y), IsFine(motion.state));
        break;
    }
    case XCB_LEAVE_NOTIFY:
        m_panel.PointerLeft();
        break;
    default:
        break;
    }
}

void CWindow::HandleButton(const xcb_button_press_event_t& press)
{
    const Place place = InPoints(press.event_x, press.event_y);
    switch (press.detail) {
    case XCB_BUTTON_INDEX_1: {
        const bool near = std::hypot(place.x - m_lastPlace.x, place.y - m_lastPlace.y) <= kDoubleClickDistance;
        const bool twice = m_lastPress != 0 && near && press.time - m_lastPress <= kDoubleClickMilliseconds;
        m_lastPress = twice ? 0 : press.time;
        m_lastPlace = place;
        m_panel.PointerPressed(place, twice);
        break;
    }
    case XCB_BUTTON_INDEX_4:
    case XCB_BUTTON_INDEX_5:
        m_panel.Scrolled(place, press.detail == XCB_BUTTON_INDEX_4 ? 1 : -1, IsFine(press.state));
        break;
    default:
        break;
    }
}

void CWindow::Draw()
{
    cairo_t* const cairo = cairo_create(m_surface);
    cairo_push_group(cairo); // off the screen, so that nothing flickers
    cairo_scale(cairo, m_scale, m_scale);
    m_panel.Draw(cairo);
    cairo_pop_group_to_source(cairo);
    cairo_paint(cairo);
    cairo_destroy(cairo);
    cairo_surface_flush(m_surface);
    xcb_flush(m_connection);
    m_exposed = false;
}

} // namespace quillet
