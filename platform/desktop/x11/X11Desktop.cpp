// platform/desktop/x11/X11Desktop.cpp
//
// Surfaces and events. Nothing here waits for the server; answers and errors arrive as events do.
// A request that fails (a window that is gone by now) costs nothing: its error is an event that
// nobody looks at.
#include "platform/desktop/x11/X11Desktop.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

#include "platform/base/Clock.h"
#include "platform/base/Guard.h"
#include "platform/drawing/cairo/Fonts.h"

namespace {

constexpr std::uint32_t kSurfaceEvents =
    XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_FOCUS_CHANGE | XCB_EVENT_MASK_KEY_PRESS |
    XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_POINTER_MOTION |
    XCB_EVENT_MASK_ENTER_WINDOW | XCB_EVENT_MASK_LEAVE_WINDOW;
constexpr std::uint32_t kRootEvents = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
constexpr int kLargestSide = 16384;
constexpr double kClockDrift = 5; ///< Seconds after which the server's clock is taken anew.

PixelRect United(const PixelRect& one, const PixelRect& other)
{
    if (one.width <= 0 || one.height <= 0)
        return other;
    const int left = std::min(one.x, other.x), top = std::min(one.y, other.y);
    return {left, top, std::max(one.x + one.width, other.x + other.width) - left,
            std::max(one.y + one.height, other.y + other.height) - top};
}

template <typename Event>
const Event& As(const xcb_generic_event_t& event)
{
    return reinterpret_cast<const Event&>(event);
}

/// Sets a flag for a scope, however that is left.
class CTaking {
public:
    explicit CTaking(bool& flag) : m_flag(flag), m_before(flag) { m_flag = true; }
    ~CTaking() { m_flag = m_before; }
    CTaking(const CTaking&) = delete;
    CTaking& operator=(const CTaking&) = delete;

private:
    bool& m_flag;
    const bool m_before;
};

} // namespace

CX11Desktop::CX11Desktop(std::unique_ptr<CConnection> connection)
    : m_connection(std::move(connection)),
      m_loop([this] { Serve(); }),
      m_keyboard(*m_connection),
      m_selections(*m_connection)
{
    const CQuietPipe quiet;
    constexpr std::uint32_t kEvents[] = {kRootEvents};
    xcb_change_window_attributes(m_connection->Get(), m_connection->Screen().root, XCB_CW_EVENT_MASK, kEvents);
    ReadPreferences();
    m_loop.Watch(xcb_get_file_descriptor(m_connection->Get()));
    m_loop.Wake(); // waiting for answers may have brought events along
    m_portal = new CPortal([this](CPortal::Preference preference) { TakePreference(preference); });
}

CX11Desktop::Surface* CX11Desktop::Find(SurfaceId surface)
{
    const auto found = m_surfaces.find(surface);
    return found == m_surfaces.end() ? nullptr : &found->second;
}

CX11Desktop::Surface* CX11Desktop::FindWindow(xcb_window_t window)
{
    const auto found = m_windows.find(window);
    return found == m_windows.end() ? nullptr : Find(found->second);
}

SurfaceId CX11Desktop::CreateSurface(const SurfaceRequest& request)
{
    const CQuietPipe quiet;
    const PixelRect& frame = request.frame;
    if (!IsAlive() || frame.width < 1 || frame.height < 1 || frame.width > kLargestSide || frame.height > kLargestSide)
        return 0;
    Surface surface;
    surface.id = ++m_lastId;
    surface.window = xcb_generate_id(m_connection->Get());
    surface.request = request;
    surface.width = frame.width;
    surface.height = frame.height;
    // The gravity keeps what is there when the window grows, so that nothing flickers meanwhile.
    const std::uint32_t values[] = {XCB_BACK_PIXMAP_NONE,
                                    0,
                                    XCB_GRAVITY_NORTH_WEST,
                                    request.placement == Placement::Menu ? 1U : 0U, // no manager's business
                                    kSurfaceEvents,
                                    m_connection->Colormap()};
    xcb_create_window(m_connection->Get(), m_connection->Depth(), surface.window, m_connection->Screen().root,
                      static_cast<std::int16_t>(std::clamp(frame.x, -kLargestSide, kLargestSide)),
                      static_cast<std::int16_t>(std::clamp(frame.y, -kLargestSide, kLargestSide)),
                      static_cast<std::uint16_t>(frame.width), static_cast<std::uint16_t>(frame.height), 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, m_connection->Visual(),
                      XCB_CW_BACK_PIXMAP | XCB_CW_BORDER_PIXEL | XCB_CW_BIT_GRAVITY | XCB_CW_OVERRIDE_REDIRECT |
                          XCB_CW_EVENT_MASK | XCB_CW_COLORMAP,
                      values);
    const SurfaceId id = surface.id;
    m_windows[surface.window] = id;
    Surface& kept = m_surfaces[id] = std::move(surface);
    SetIdentity(kept);
    SetTitle(id, request.title);
    SetOwner(id, request.owner, request.foreignOwner, request.modal);
    return id;
}

void CX11Desktop::DestroySurface(SurfaceId id)
{
    const CQuietPipe quiet;
    Surface* const surface = Find(id);
    if (!surface)
        return;
    DropBackground(*surface);
    xcb_destroy_window(m_connection->Get(), surface->window);
    m_windows.erase(surface->window);
    m_surfaces.erase(id);
    Flush();
}

void CX11Desktop::ShowSurface(SurfaceId id)
{
    const CQuietPipe quiet;
    Surface* const surface = Find(id);
    if (!surface || surface->asked)
        return;
    surface->asked = true;
    if (surface->mapping || surface->withdrawing)
        Flush(); // it comes by itself; what we wait for may have been read with the picture's sending
    else
        Map(*surface);
}

void CX11Desktop::Map(Surface& surface)
{
    surface.mapping = true;
    SetStates(surface);
    xcb_map_window(m_connection->Get(), surface.window);
    Flush(); // the host may not come round for a while
}

void CX11Desktop::HideSurface(SurfaceId id)
{
    const CQuietPipe quiet;
    Surface* const surface = Find(id);
    if (!surface || !surface->asked)
        return;
    surface->asked = surface->selectWhenMapped = false;
    if (!surface->mapping && !surface->withdrawing) // a manager may miss what goes while it comes
        Withdraw(*surface);
}

void CX11Desktop::Withdraw(Surface& surface)
{
    // @source ICCCM 4.1.4: shown again only when the manager has let go of it, which it notes.
    surface.withdrawing = m_hasManager;
    SelectEvents(surface, kSurfaceEvents | XCB_EVENT_MASK_PROPERTY_CHANGE);
    xcb_unmap_window(m_connection->Get(), surface.window);
    xcb_unmap_notify_event_t withdrawn = {};
    withdrawn.response_type = XCB_UNMAP_NOTIFY;
    withdrawn.event = m_connection->Screen().root;
    withdrawn.window = surface.window;
    xcb_send_event(m_connection->Get(), 0, withdrawn.event,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&withdrawn));
    Flush();
}

void CX11Desktop::EndWithdrawal(Surface& surface)
{
    if (!std::exchange(surface.withdrawing, false))
        return;
    SelectEvents(surface, kSurfaceEvents);
    if (surface.asked)
        Map(surface);
}

void CX11Desktop::SelectEvents(const Surface& surface, std::uint32_t events)
{
    const std::uint32_t values[] = {events};
    xcb_change_window_attributes(m_connection->Get(), surface.window, XCB_CW_EVENT_MASK, values);
}

void CX11Desktop::SelectSurface(SurfaceId id)
{
    const CQuietPipe quiet;
    Surface* const surface = Find(id);
    if (!surface)
        return;
    surface->selectWhenMapped = !surface->mapped || surface->withdrawing; // a manager does not know it before
    if (surface->selectWhenMapped)
        return;
    m_toActivate = id;
    AskTime();
    Flush();
}

void CX11Desktop::ResizeSurface(SurfaceId id, int width, int height)
{
    const CQuietPipe quiet;
    Surface* const surface = Find(id);
    if (!surface || width < 1 || height < 1 || width > kLargestSide || height > kLargestSide)
        return;
    surface->width = width;
    surface->height = height;
    DropBackground(*surface);
    SetSizeHints(*surface);
    const std::uint32_t size[] = {static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)};
    xcb_configure_window(m_connection->Get(), surface->window, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                         size);
    Flush();
}

xcb_cursor_t CX11Desktop::CursorOf(CursorShape shape)
{
    if (shape == CursorShape::Arrow)
        return XCB_NONE; // that of what is around the window
    xcb_cursor_t& cursor = m_cursors[static_cast<std::size_t>(shape)];
    if (cursor == XCB_NONE) {
        constexpr const char* kFont = "cursor";
        constexpr std::uint16_t kTextGlyph = 152, kHandGlyph = 60, kFull = 0xFFFF;
        const std::uint16_t glyph = shape == CursorShape::Text ? kTextGlyph : kHandGlyph;
        const xcb_font_t font = xcb_generate_id(m_connection->Get());
        cursor = xcb_generate_id(m_connection->Get());
        xcb_open_font(m_connection->Get(), font, static_cast<std::uint16_t>(std::strlen(kFont)), kFont);
        xcb_create_glyph_cursor(m_connection->Get(), cursor, font, font, glyph, static_cast<std::uint16_t>(glyph + 1),
                                0, 0, 0, kFull, kFull, kFull);
        xcb_close_font(m_connection->Get(), font);
    }
    return cursor;
}

void CX11Desktop::SetCursor(SurfaceId id, CursorShape shape)
{
    const CQuietPipe quiet;
    Surface* const surface = Find(id);
    if (!surface || surface->cursor == shape)
        return;
    surface->cursor = shape;
    const std::uint32_t cursor[] = {CursorOf(shape)};
    xcb_change_window_attributes(m_connection->Get(), surface->window, XCB_CW_CURSOR, cursor);
    Flush();
}

void CX11Desktop::OfferText(TextExchange where, std::string_view text)
{
    const CQuietPipe quiet;
    if (!IsAlive())
        return;
    m_selections.Offer(where, text, m_lastTime);
    Flush();
}

void CX11Desktop::RequestText(TextExchange where, std::uint32_t request)
{
    const CQuietPipe quiet;
    m_selections.Request(where, request, m_lastTime);
    if (!IsAlive())
        m_selections.Abandon();
    Rearm();
}

int CX11Desktop::PumpInput(double seconds)
{
    const int before = m_delivered;
    m_loop.Run(seconds, [&] { return m_delivered != before || m_dead; });
    const int delivered = m_delivered - before;
    return delivered == 0 && m_dead ? -1 : delivered;
}

void CX11Desktop::SetDeadline(double seconds)
{
    const CQuietPipe quiet;
    m_deadline = seconds < 0 ? -1 : Clock::Now() + seconds;
    Rearm();
}

void CX11Desktop::Rearm()
{
    const double expiry = m_selections.Expire(Clock::Now());
    if (m_selections.HasTexts())
        Wake(); // to deliver them: whoever rearms may be no place for that
    Flush();
    const bool soonest = expiry >= 0 && (m_deadline < 0 || expiry < m_deadline);
    m_loop.SetTimer(soonest ? expiry : m_deadline);
}

void CX11Desktop::Serve()
{
    const CQuietPipe quiet;
    if (m_loop.TakeWake() && m_sink) {
        ++m_delivered;
        m_sink->Woken();
    }
    ServeTimers();
    TakeEvents();
    TakeMotion();
    Deliver();
    Rearm();
    if (m_connection->IsDead())
        Die();
}

void CX11Desktop::TakeEvents()
{
    const CTaking taking(m_taking);
    while (!m_dead) {
        const CReply<xcb_generic_event_t> event(xcb_poll_for_event(m_connection->Get()));
        m_connection->TakeAnswers(event.get());
        if (!event)
            break;
        const bool motion = (event->response_type & 0x7F) == XCB_MOTION_NOTIFY;
        if (motion && (!m_motionWaits || m_motion.event == As<xcb_motion_notify_event_t>(*event).event)) {
            m_motion = As<xcb_motion_notify_event_t>(*event);
            m_motionWaits = true; // only the last of several counts
            continue;
        }
        TakeMotion();
        TakeEvent(*event);
    }
    m_connection->NoteTaken();
}

void CX11Desktop::Flush()
{
    m_connection->Flush();
    if (!m_taking && m_connection->HasUntaken())
        Wake();
}

void CX11Desktop::ServeTimers()
{
    if (m_deadline < 0 || Clock::Now() < m_deadline || !m_sink)
        return;
    m_deadline = -1;
    ++m_delivered;
    m_sink->DeadlineReached();
}

void CX11Desktop::Deliver()
{
    for (auto& [request, text] : m_selections.TakeTexts()) {
        ++m_delivered;
        if (m_sink)
            m_sink->TextReceived(request, text);
    }
}

void CX11Desktop::Die()
{
    if (m_announced)
        return;
    m_dead = m_announced = true;
    m_loop.Unwatch(xcb_get_file_descriptor(m_connection->Get()));
    m_selections.Abandon();
    Deliver();
    std::vector<SurfaceId> lost;
    for (const auto& entry : m_surfaces)
        lost.push_back(entry.first);
    for (const SurfaceId surface : lost)
        if (m_sink && Find(surface))
            m_sink->SurfaceLost(surface);
}

void CX11Desktop::TakeEvent(const xcb_generic_event_t& event)
{
    if (m_keyboard.TakeEvent(event) || m_selections.TakeEvent(event))
        return;
    switch (event.response_type & 0x7F) {
    case XCB_KEY_PRESS:
        return TakeKey(As<xcb_key_press_event_t>(event));
    case XCB_BUTTON_PRESS:
        return TakeButton(As<xcb_button_press_event_t>(event), true);
    case XCB_BUTTON_RELEASE:
        return TakeButton(As<xcb_button_press_event_t>(event), false);
    case XCB_ENTER_NOTIFY:
        return TakeCrossing(As<xcb_enter_notify_event_t>(event), true);
    case XCB_LEAVE_NOTIFY:
        return TakeCrossing(As<xcb_enter_notify_event_t>(event), false);
    case XCB_FOCUS_IN:
        return TakeFocus(As<xcb_focus_in_event_t>(event), true);
    case XCB_FOCUS_OUT:
        return TakeFocus(As<xcb_focus_in_event_t>(event), false);
    case XCB_EXPOSE:
        return TakeExpose(As<xcb_expose_event_t>(event));
    case XCB_CONFIGURE_NOTIFY:
        return TakeConfigure(As<xcb_configure_notify_event_t>(event));
    case XCB_MAP_NOTIFY:
        return TakeMap(As<xcb_map_notify_event_t>(event));
    case XCB_UNMAP_NOTIFY:
        return TakeUnmap(As<xcb_unmap_notify_event_t>(event));
    case XCB_DESTROY_NOTIFY:
        return TakeDestroy(As<xcb_destroy_notify_event_t>(event));
    case XCB_CLIENT_MESSAGE:
        return TakeMessage(As<xcb_client_message_event_t>(event));
    case XCB_PROPERTY_NOTIFY:
        return TakeProperty(As<xcb_property_notify_event_t>(event));
    default:
        return; // errors of requests about windows that are gone, and what we never asked for
    }
}

double CX11Desktop::TimeOf(xcb_timestamp_t time)
{
    const double now = Clock::Now(), server = time / 1000.0;
    // The least difference seen is the truest: what comes late was waiting somewhere.
    if (m_serverClock == 0 || now - server < m_serverClock || now - server > m_serverClock + kClockDrift)
        m_serverClock = now - server;
    return m_serverClock + server;
}

PointerInput CX11Desktop::PointerAt(SurfaceId surface, double x, double y, std::uint16_t state, xcb_timestamp_t time)
{
    PointerInput input;
    input.surface = surface;
    input.x = x;
    input.y = y;
    input.modifiers = CKeyboard::ModifiersOf(state);
    input.time = TimeOf(time);
    return input;
}

template <typename Event>
PointerInput CX11Desktop::PointerOf(SurfaceId surface, const Event& event)
{
    // While a button is held the server sends everything to the window where it went down.
    for (const auto& [id, other] : m_surfaces) {
        const PixelRect& frame = other.request.frame;
        const int x = event.root_x - frame.x, y = event.root_y - frame.y;
        if (other.request.placement == Placement::Menu && other.asked && x >= 0 && x < frame.width && y >= 0 &&
            y < frame.height)
            return PointerAt(id, x, y, event.state, event.time);
    }
    return PointerAt(surface, event.event_x, event.event_y, event.state, event.time);
}

void CX11Desktop::NoteUserTime(const Surface& surface, xcb_timestamp_t time)
{
    m_lastTime = time;
    m_connection->SetWords(surface.window, (*m_connection)[Atom::NetWmUserTime], XCB_ATOM_CARDINAL, {time});
}

void CX11Desktop::TakeButton(const xcb_button_press_event_t& event, bool pressed)
{
    const Surface* const surface = FindWindow(event.event);
    if (!surface || !m_sink)
        return;
    PointerInput input = PointerOf(surface->id, event);
    constexpr xcb_button_t kUp = 4, kDown = 5, kLeft = 6, kRight = 7;
    if (pressed)
        NoteUserTime(*surface, event.time);
    if (event.detail >= kUp && event.detail <= kRight) { // a wheel's step is a press and a release
        if (!pressed)
            return;
        ++m_delivered;
        const double across = event.detail == kLeft ? -1 : event.detail == kRight ? 1 : 0;
        const double down = event.detail == kUp ? -1 : event.detail == kDown ? 1 : 0;
        return m_sink->Scrolled(input, across, down);
    }
    if (event.detail < XCB_BUTTON_INDEX_1 || event.detail > XCB_BUTTON_INDEX_3)
        return;
    constexpr PointerButton kButtons[] = {PointerButton::Left, PointerButton::Middle, PointerButton::Right};
    input.button = kButtons[event.detail - XCB_BUTTON_INDEX_1];
    ++m_delivered;
    if (pressed)
        m_sink->PointerPressed(input);
    else
        m_sink->PointerReleased(input);
}

void CX11Desktop::TakeKey(const xcb_key_press_event_t& event)
{
    const Surface* const surface = FindWindow(event.event);
    if (!surface || !m_sink)
        return;
    NoteUserTime(*surface, event.time);
    const KeyMeaning meaning = m_keyboard.Press(event.detail, event.state);
    if (meaning.waited)
        Wake(); // waiting may have brought events along
    if (meaning.swallowed || (meaning.symbol == 0 && meaning.text.empty()))
        return;
    KeyInput input;
    input.surface = surface->id;
    input.symbol = meaning.symbol;
    input.text = meaning.text;
    input.modifiers = CKeyboard::ModifiersOf(event.state);
    input.time = TimeOf(event.time);
    ++m_delivered;
    m_sink->KeyPressed(input);
}

void CX11Desktop::TakeMotion()
{
    if (!m_motionWaits)
        return;
    m_motionWaits = false;
    const Surface* const surface = FindWindow(m_motion.event);
    if (!surface || !m_sink)
        return;
    ++m_delivered;
    m_sink->PointerMoved(PointerOf(surface->id, m_motion));
}

void CX11Desktop::TakeCrossing(const xcb_enter_notify_event_t& event, bool entered)
{
    const Surface* const surface = FindWindow(event.event);
    if (!surface || !m_sink || event.detail == XCB_NOTIFY_DETAIL_INFERIOR)
        return;
    ++m_delivered;
    if (entered)
        m_sink->PointerEntered(PointerAt(surface->id, event.event_x, event.event_y, event.state, event.time));
    else
        m_sink->PointerLeft(surface->id);
}

void CX11Desktop::TakeFocus(const xcb_focus_in_event_t& event, bool gained)
{
    const Surface* const surface = FindWindow(event.event);
    // A grab gives the keyboard back, which is too late for a menu.
    const bool passing = event.mode == XCB_NOTIFY_MODE_GRAB || event.mode == XCB_NOTIFY_MODE_UNGRAB ||
                         event.detail == XCB_NOTIFY_DETAIL_POINTER || event.detail == XCB_NOTIFY_DETAIL_INFERIOR;
    if (surface && !gained && event.mode == XCB_NOTIFY_MODE_GRAB)
        LoseWhere([id = surface->id](const Surface& menu) { return menu.IsMenuOf(id); });
    if (!surface || !m_sink || passing)
        return;
    m_keyboard.Reset();
    ++m_delivered;
    if (gained)
        m_sink->FocusGained(surface->id);
    else
        m_sink->FocusLost(surface->id);
}

void CX11Desktop::TakeExpose(const xcb_expose_event_t& event)
{
    Surface* const surface = FindWindow(event.window);
    if (!surface || surface->background != XCB_NONE) // the server has painted it
        return;
    surface->exposed = United(surface->exposed, {event.x, event.y, event.width, event.height});
    if (event.count > 0 || !m_sink)
        return;
    const PixelRect part = std::exchange(surface->exposed, PixelRect{});
    ++m_delivered;
    m_sink->Exposed(surface->id, part);
}

void CX11Desktop::TakeConfigure(const xcb_configure_notify_event_t& event)
{
    Surface* const surface = FindWindow(event.window);
    if (!surface)
        return;
    // @source ICCCM 4.1.5: what the manager sends counts from the root, the server's from the frame.
    constexpr std::uint8_t kSent = 0x80;
    if ((event.response_type & kSent) != 0 || !m_hasManager)
        LoseWhere([&event, id = surface->id](const Surface& menu) {
            return menu.IsMenuOf(id) && (menu.ownerX != event.x || menu.ownerY != event.y);
        });
    if (surface->width == event.width && surface->height == event.height)
        return;
    surface->width = event.width;
    surface->height = event.height;
    DropBackground(*surface);
    ++m_delivered;
    if (m_sink)
        m_sink->Resized(surface->id, event.width, event.height);
}

void CX11Desktop::TakeMap(const xcb_map_notify_event_t& event)
{
    Surface* const surface = FindWindow(event.window);
    if (!surface)
        return;
    surface->mapped = true;
    surface->mapping = false;
    if (!surface->asked)
        Withdraw(*surface);
    else if (std::exchange(surface->selectWhenMapped, false))
        SelectSurface(surface->id);
}

void CX11Desktop::TakeUnmap(const xcb_unmap_notify_event_t& event)
{
    Surface* const surface = FindWindow(event.window);
    if (!surface)
        return;
    surface->mapped = false;
    DropBackground(*surface);
}

void CX11Desktop::TakeDestroy(const xcb_destroy_notify_event_t& event)
{
    if (event.window == m_settingsOwner) {
        m_settingsOwner = 0; // the next one announces itself
        return;
    }
    LoseWhere([&event](const Surface& surface) {
        return surface.window == event.window || surface.request.foreignOwner == event.window;
    });
}

void CX11Desktop::LoseWhere(const std::function<bool(const Surface&)>& isLost)
{
    std::vector<SurfaceId> lost;
    for (const auto& [id, surface] : m_surfaces)
        if (isLost(surface))
            lost.push_back(id);
    for (const SurfaceId id : lost) {
        ++m_delivered;
        if (m_sink && Find(id))
            m_sink->SurfaceLost(id);
    }
}

void CX11Desktop::TakeMessage(const xcb_client_message_event_t& event)
{
    const CConnection& names = *m_connection;
    if (event.type == names[Atom::Manager] && event.data.data32[1] == names[Atom::XSettingsOwner])
        return AskSettings();
    const Surface* const surface = FindWindow(event.window);
    if (!surface || event.type != names[Atom::WmProtocols])
        return;
    if (event.data.data32[0] == names[Atom::NetWmPing]) {
        xcb_client_message_event_t answer = event;
        answer.window = names.Screen().root;
        xcb_send_event(names.Get(), 0, answer.window,
                       XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                       reinterpret_cast<const char*>(&answer));
    } else if (event.data.data32[0] == names[Atom::WmDeleteWindow] && surface->request.closable) {
        ++m_delivered;
        if (m_sink)
            m_sink->CloseRequested(surface->id);
    }
}

void CX11Desktop::TakeProperty(const xcb_property_notify_event_t& event)
{
    const CConnection& names = *m_connection;
    if (event.window == names.Leader() && event.atom == names[Atom::ServerTime]) {
        if (const Surface* const surface = Find(std::exchange(m_toActivate, 0)))
            Activate(*surface, event.time);
    } else if (event.window == m_settingsOwner && event.atom == names[Atom::XSettings]) {
        AskSettings();
    } else if (event.window == names.Screen().root && event.atom == XCB_ATOM_RESOURCE_MANAGER) {
        const auto cookie = names.AskProperty(event.window, XCB_ATOM_RESOURCE_MANAGER);
        m_connection->Await(cookie.sequence, [this](void* reply) {
            m_resources = CConnection::BytesOf(static_cast<const xcb_get_property_reply_t*>(reply));
            Apply();
        });
    } else if (event.atom == names[Atom::WmState]) {
        TakeState(event);
    } else if (event.window == names.Screen().root && event.atom == names[Atom::NetSupportingWmCheck]) {
        m_hasManager = event.state == XCB_PROPERTY_NEW_VALUE;
    }
}

void CX11Desktop::TakeState(const xcb_property_notify_event_t& event)
{
    Surface* const surface = FindWindow(event.window);
    if (!surface || !surface->withdrawing)
        return;
    if (event.state == XCB_PROPERTY_DELETE)
        return EndWithdrawal(*surface);
    const auto cookie = m_connection->AskProperty(event.window, event.atom);
    m_connection->Await(cookie.sequence, [this, window = event.window](void* reply) {
        const std::string state = CConnection::BytesOf(static_cast<const xcb_get_property_reply_t*>(reply));
        std::uint32_t word = 0; // withdrawn, also where it is gone by now
        std::memcpy(&word, state.data(), std::min(state.size(), sizeof word));
        Surface* const withdrawn = FindWindow(window);
        if (withdrawn && word == 0)
            EndWithdrawal(*withdrawn);
    });
    Flush();
}

namespace {

IDesktop* OpenDisplay()
{
    (void)CUserFont::Get().At(1); // reads the fonts' configuration in a thread, while we wait for the server
    auto connection = CConnection::Open();
    return connection ? new CX11Desktop(std::move(connection)) : nullptr;
}

} // namespace

extern "C" __attribute__((visibility("default"))) IDesktop* cv_OpenDesktop() noexcept
{
    return Guarded(static_cast<IDesktop*>(nullptr), OpenDisplay);
}
