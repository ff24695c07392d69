// bench/windows/FloorWindow.cpp
//
// The floor: a bare xcb window with nothing in it but the dialog's texts, laid out by Pango and
// drawn by cairo whenever the server asks for it.
#include <cairo-xcb.h>
#include <pango/pangocairo.h>
#include <poll.h>
#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "bench/windows/Peer.h"

namespace {

xcb_connection_t* g_connection;
xcb_screen_t* g_screen;
xcb_window_t g_window;

xcb_visualtype_t* RootVisual()
{
    for (auto depths = xcb_screen_allowed_depths_iterator(g_screen); depths.rem > 0; xcb_depth_next(&depths))
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem > 0; xcb_visualtype_next(&visuals))
            if (visuals.data->visual_id == g_screen->root_visual)
                return visuals.data;
    return nullptr;
}

void DrawText(cairo_t* cairo, PangoLayout* layout, const PeerPlace& place, const char* font, const char* text)
{
    PangoFontDescription* const description = pango_font_description_from_string(font);
    pango_layout_set_font_description(layout, description);
    pango_font_description_free(description);
    pango_layout_set_text(layout, text, -1);
    cairo_move_to(cairo, place.x, place.y);
    pango_cairo_show_layout(cairo, layout);
}

void Draw()
{
    cairo_surface_t* const surface =
        cairo_xcb_surface_create(g_connection, g_window, RootVisual(), kPeerWidth, kPeerHeight);
    cairo_t* const cairo = cairo_create(surface);
    PangoLayout* const layout = pango_cairo_create_layout(cairo);
    cairo_set_source_rgb(cairo, 0.96, 0.96, 0.96);
    cairo_paint(cairo);
    cairo_set_source_rgb(cairo, 0.1, 0.1, 0.1);
    DrawText(cairo, layout, kTitlePlace, "Sans Bold 10", kPeerTitle);
    DrawText(cairo, layout, kVersionPlace, "Sans 8.6", kPeerVersion);
    DrawText(cairo, layout, kNoticePlace, "Sans 8.6", kPeerNotice);
    DrawText(cairo, layout, kOptionsPlace, "Sans Bold 8.6", kPeerOptions);
    DrawText(cairo, layout, kKnobsPlace, "Sans 10", kPeerKnobs);
    DrawText(cairo, layout, kHelpPlace, "Sans 10", kPeerHelp);
    DrawText(cairo, layout, kCancelPlace, "Sans 10", kPeerCancel);
    DrawText(cairo, layout, kOkPlace, "Sans 10", kPeerOk);
    g_object_unref(layout);
    cairo_destroy(cairo);
    cairo_surface_finish(surface);
    cairo_surface_destroy(surface);
    xcb_flush(g_connection);
}

double Now()
{
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

} // namespace

void OpenDialog()
{
    if (!g_connection) {
        g_connection = xcb_connect(nullptr, nullptr);
        g_screen = xcb_setup_roots_iterator(xcb_get_setup(g_connection)).data;
    }
    g_window = xcb_generate_id(g_connection);
    const std::uint32_t values[] = {g_screen->white_pixel, XCB_EVENT_MASK_EXPOSURE};
    xcb_create_window(g_connection, XCB_COPY_FROM_PARENT, g_window, g_screen->root, 0, 0, kPeerWidth, kPeerHeight, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK,
                      values);
    xcb_change_property(g_connection, XCB_PROP_MODE_REPLACE, g_window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8,
                        static_cast<std::uint32_t>(std::strlen(kPeerTitle)), kPeerTitle);
    xcb_map_window(g_connection, g_window);
    xcb_flush(g_connection);
}

void CloseDialog()
{
    xcb_destroy_window(g_connection, g_window);
    xcb_flush(g_connection);
}

void RunLoop(double seconds)
{
    const double end = Now() + seconds;
    for (double left = seconds; left > 0; left = end - Now()) {
        while (xcb_generic_event_t* const event = xcb_poll_for_event(g_connection)) {
            const bool exposed = (event->response_type & 0x7F) == XCB_EXPOSE &&
                                 reinterpret_cast<const xcb_expose_event_t*>(event)->count == 0;
            std::free(event);
            if (exposed)
                Draw();
        }
        pollfd waited = {xcb_get_file_descriptor(g_connection), POLLIN, 0};
        (void)poll(&waited, 1, static_cast<int>(left * 1000) + 1);
    }
}
