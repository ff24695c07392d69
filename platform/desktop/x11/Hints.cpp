// platform/desktop/x11/Hints.cpp
//
// What a window manager is told of a window, so that it treats it as every other dialog.
// @source ICCCM 4 (client to window manager), EWMH 1.5.
#include <algorithm>
#include <cerrno>
#include <string>

#include <unistd.h>

#include "platform/desktop/x11/Icon.h"
#include "platform/desktop/x11/X11Desktop.h"

namespace {

/// Members of the property WM_NORMAL_HINTS.
enum SizeHint {
    kFlags,
    kX,
    kY,
    kWidth,
    kHeight,
    kMinWidth,
    kMinHeight,
    kMaxWidth,
    kMaxHeight,
    kGravity = 17,
    kSizeHints
};
constexpr std::uint32_t kProgramPosition = 1U << 2, kProgramSize = 1U << 3, kMinSize = 1U << 4, kMaxSize = 1U << 5,
                        kWinGravity = 1U << 9;
/// Members of the property _MOTIF_WM_HINTS.
constexpr std::uint32_t kMotifFunctions = 1, kMotifResize = 1U << 1, kMotifMove = 1U << 2, kMotifMinimize = 1U << 3,
                        kMotifMaximize = 1U << 4, kMotifClose = 1U << 5;

constexpr const char* kWindowClass = "Corvane";
constexpr int kDeepest = 64; ///< Windows around a foreign one that are looked through.

std::string HostName()
{
    char name[256] = {};
    return gethostname(name, sizeof name - 1) == 0 ? std::string(name) : std::string();
}

} // namespace

void CX11Desktop::SetIdentity(const Surface& surface)
{
    CConnection& display = *m_connection;
    const xcb_window_t window = surface.window;
    const std::string name = program_invocation_short_name;
    display.SetText(window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, name + '\0' + kWindowClass + '\0');
    display.SetText(window, XCB_ATOM_WM_CLIENT_MACHINE, XCB_ATOM_STRING, HostName());
    display.SetWords(window, display[Atom::WmClientLeader], XCB_ATOM_WINDOW, {display.Leader()});
    display.SetWords(window, display[Atom::NetWmPid], XCB_ATOM_CARDINAL, {static_cast<std::uint32_t>(getpid())});
    display.SetWords(window, display[Atom::WmProtocols], XCB_ATOM_ATOM,
                     {display[Atom::WmDeleteWindow], display[Atom::NetWmPing]});
    const bool isMenu = surface.request.placement == Placement::Menu;
    display.SetWords(window, display[Atom::NetWmWindowType], XCB_ATOM_ATOM,
                     {display[isMenu ? Atom::NetWmWindowTypePopupMenu : Atom::NetWmWindowTypeDialog]});
    display.SetWords(window, display[Atom::NetWmIcon], XCB_ATOM_CARDINAL, WindowIcon());
    constexpr std::uint32_t kInput = 1U << 0, kState = 1U << 1, kGroup = 1U << 6, kNormal = 1;
    display.SetWords(window, XCB_ATOM_WM_HINTS, XCB_ATOM_WM_HINTS,
                     {kInput | kState | kGroup, 1, kNormal, 0, 0, 0, 0, 0, display.Leader()});
    std::uint32_t functions = kMotifMove | kMotifMinimize;
    if (surface.request.resizable)
        functions |= kMotifResize | kMotifMaximize;
    if (surface.request.closable)
        functions |= kMotifClose;
    display.SetWords(window, display[Atom::MotifWmHints], display[Atom::MotifWmHints],
                     {kMotifFunctions, functions, 0, 0, 0});
}

void CX11Desktop::SetTitle(SurfaceId id, std::string_view title)
{
    const CQuietPipe quiet;
    Surface* const surface = Find(id);
    if (!surface)
        return;
    surface->request.title.assign(title);
    m_connection->SetText(surface->window, (*m_connection)[Atom::NetWmName], (*m_connection)[Atom::Utf8String], title);
    m_connection->SetText(surface->window, XCB_ATOM_WM_NAME, (*m_connection)[Atom::Utf8String], title);
    if (surface->asked)
        Flush();
}

void CX11Desktop::SetSizeHints(const Surface& surface)
{
    const SurfaceRequest& request = surface.request;
    const auto width = static_cast<std::uint32_t>(surface.width), height = static_cast<std::uint32_t>(surface.height);
    std::vector<std::uint32_t> hints(kSizeHints);
    hints[kFlags] = kProgramSize | kWinGravity;
    // On the screen alone a manager places a dialog best: it knows monitors and panels.
    if (request.placement == Placement::Frame || surface.transientFor != 0)
        hints[kFlags] |= kProgramPosition;
    hints[kX] = static_cast<std::uint32_t>(request.frame.x);
    hints[kY] = static_cast<std::uint32_t>(request.frame.y);
    hints[kWidth] = width;
    hints[kHeight] = height;
    hints[kGravity] = XCB_GRAVITY_STATIC; // the frame given is that of the content
    if (!request.resizable) {
        hints[kFlags] |= kMinSize | kMaxSize;
        hints[kMinWidth] = hints[kMaxWidth] = width;
        hints[kMinHeight] = hints[kMaxHeight] = height;
    }
    m_connection->SetWords(surface.window, XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS, hints);
}

void CX11Desktop::SetOwner(SurfaceId id, SurfaceId owner, ForeignWindowId foreignOwner, bool modal)
{
    const CQuietPipe quiet;
    Surface* const surface = Find(id);
    if (!surface)
        return;
    const Surface* const above = Find(owner);
    SurfaceRequest& request = surface->request;
    request.owner = owner;
    request.modal = modal;
    request.foreignOwner = above ? 0 : foreignOwner;
    surface->transientFor = above ? above->window : 0;
    if (request.foreignOwner != 0)
        surface->transientFor = Adopt(static_cast<xcb_window_t>(request.foreignOwner));
    if (surface->transientFor != 0)
        m_connection->SetWords(surface->window, XCB_ATOM_WM_TRANSIENT_FOR, XCB_ATOM_WINDOW, {surface->transientFor});
    else
        xcb_delete_property(m_connection->Get(), surface->window, XCB_ATOM_WM_TRANSIENT_FOR);
    if (!surface->asked)
        Place(*surface);
    if (!surface->asked && !surface->mapping)
        return;
    // Of a window that it shows, or has been asked to show, a manager keeps the states itself.
    constexpr std::uint32_t kRemove = 0, kAdd = 1, kFromProgram = 1;
    m_connection->SendToRoot(surface->window, Atom::NetWmState,
                             {modal ? kAdd : kRemove, (*m_connection)[Atom::NetWmStateModal], 0, kFromProgram, 0});
    Flush();
}

void CX11Desktop::SetStates(const Surface& surface)
{
    if (surface.request.modal)
        m_connection->SetWords(surface.window, (*m_connection)[Atom::NetWmState], XCB_ATOM_ATOM,
                               {(*m_connection)[Atom::NetWmStateModal]});
    else
        xcb_delete_property(m_connection->Get(), surface.window, (*m_connection)[Atom::NetWmState]);
}

xcb_window_t CX11Desktop::Adopt(xcb_window_t foreign)
{
    xcb_connection_t* const display = m_connection->Get();
    constexpr std::uint32_t kEvents[] = {XCB_EVENT_MASK_STRUCTURE_NOTIFY};
    xcb_change_window_attributes(display, foreign, XCB_CW_EVENT_MASK, kEvents);
    xcb_window_t outermost = 0;
    xcb_window_t window = foreign;
    for (int depth = 0; depth < kDeepest; ++depth) {
        const auto tree = xcb_query_tree(display, window);
        const auto state = m_connection->AskProperty(window, (*m_connection)[Atom::WmState]);
        const CReply<xcb_query_tree_reply_t> around(xcb_query_tree_reply(display, tree, nullptr));
        const CReply<xcb_get_property_reply_t> managed(xcb_get_property_reply(display, state, nullptr));
        Wake(); // waiting may have brought events along
        if (!around || window == around->root)
            return outermost;
        outermost = window;
        if ((managed && managed->type != XCB_NONE) || around->parent == around->root)
            return outermost;
        window = around->parent;
    }
    return outermost;
}

void CX11Desktop::Place(Surface& surface)
{
    PixelRect& frame = surface.request.frame;
    xcb_connection_t* const display = m_connection->Get();
    const xcb_screen_t& screen = m_connection->Screen();
    frame.width = surface.width;
    frame.height = surface.height;
    PixelRect around = {0, 0, screen.width_in_pixels, screen.height_in_pixels};
    if (surface.transientFor != 0) {
        const auto askedSize = xcb_get_geometry(display, surface.transientFor);
        const auto askedPlace = xcb_translate_coordinates(display, surface.transientFor, screen.root, 0, 0);
        const CReply<xcb_get_geometry_reply_t> size(xcb_get_geometry_reply(display, askedSize, nullptr));
        const CReply<xcb_translate_coordinates_reply_t> place(
            xcb_translate_coordinates_reply(display, askedPlace, nullptr));
        Wake(); // waiting may have brought events along
        if (size && place)
            around = {place->dst_x, place->dst_y, size->width, size->height};
        surface.ownerX = around.x;
        surface.ownerY = around.y;
    }
    if (surface.transientFor != 0 || surface.request.placement != Placement::Frame) {
        const int share = surface.request.placement == Placement::AlertOnScreen && surface.transientFor == 0 ? 5 : 2;
        const bool isMenu = surface.request.placement == Placement::Menu;
        frame.x = around.x + (isMenu ? frame.x : (around.width - frame.width) / 2);
        frame.y = around.y + (isMenu ? frame.y : (around.height - frame.height) / share);
        const int above = frame.y - surface.request.clear - frame.height;
        if (isMenu && frame.y + frame.height > screen.height_in_pixels && above >= 0)
            frame.y = above;
        frame.x = std::clamp(frame.x, 0, std::max(0, screen.width_in_pixels - frame.width));
        frame.y = std::clamp(frame.y, 0, std::max(0, screen.height_in_pixels - frame.height));
        const std::uint32_t position[] = {static_cast<std::uint32_t>(frame.x), static_cast<std::uint32_t>(frame.y)};
        xcb_configure_window(display, surface.window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, position);
    }
    SetSizeHints(surface);
}

void CX11Desktop::AskTime()
{
    // A change of nothing, whose notice has the server's time: the only stamp that a manager trusts
    // as new, and to be had without waiting.
    xcb_change_property(m_connection->Get(), XCB_PROP_MODE_APPEND, m_connection->Leader(),
                        (*m_connection)[Atom::ServerTime], XCB_ATOM_INTEGER, 32, 0, nullptr);
}

void CX11Desktop::Activate(const Surface& surface, xcb_timestamp_t time)
{
    constexpr std::uint32_t kFromProgram = 1;
    constexpr std::uint32_t kAbove[] = {XCB_STACK_MODE_ABOVE};
    xcb_configure_window(m_connection->Get(), surface.window, XCB_CONFIG_WINDOW_STACK_MODE, kAbove);
    if (m_hasManager)
        m_connection->SendToRoot(surface.window, Atom::NetActiveWindow, {kFromProgram, time, 0, 0, 0});
    else
        xcb_set_input_focus(m_connection->Get(), XCB_INPUT_FOCUS_PARENT, surface.window, time);
}
