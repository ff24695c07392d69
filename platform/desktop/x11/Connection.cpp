// platform/desktop/x11/Connection.cpp
//
// Opens the connection with as few waits as it takes: all questions of a kind are asked at once.
#include "platform/desktop/x11/Connection.h"

#include <algorithm>
#include <cerrno>
#include <ctime>

#include "platform/desktop/x11/Xkb.h"
#include <xcb/xcbext.h>

namespace {

constexpr const char* kAtomNames[] = {
    "WM_PROTOCOLS",
    "WM_DELETE_WINDOW",
    "WM_CLIENT_LEADER",
    "WM_STATE",
    "_NET_WM_NAME",
    "_NET_WM_PING",
    "_NET_WM_PID",
    "_NET_WM_ICON",
    "_NET_WM_WINDOW_TYPE",
    "_NET_WM_WINDOW_TYPE_DIALOG",
    "_NET_WM_WINDOW_TYPE_POPUP_MENU",
    "_NET_WM_STATE",
    "_NET_WM_STATE_MODAL",
    "_NET_ACTIVE_WINDOW",
    "_NET_WM_USER_TIME",
    "_NET_SUPPORTING_WM_CHECK",
    "_MOTIF_WM_HINTS",
    "MANAGER",
    "_XSETTINGS_SETTINGS",
    "_XSETTINGS_S",
    "UTF8_STRING",
    "TEXT",
    "text/plain;charset=utf-8",
    "text/plain",
    "TARGETS",
    "TIMESTAMP",
    "INCR",
    "CLIPBOARD",
    "CORVANE_CLIPBOARD",
    "CORVANE_SELECTION",
    "CORVANE_TIME",
};
static_assert(std::size(kAtomNames) == static_cast<std::size_t>(Atom::Count));

const sigset_t& PipeSignal()
{
    static const sigset_t signals = [] {
        sigset_t set;
        sigemptyset(&set);
        sigaddset(&set, SIGPIPE);
        return set;
    }();
    return signals;
}

} // namespace

CQuietPipe::CQuietPipe()
{
    sigset_t pending;
    sigpending(&pending);
    m_waiting = sigismember(&pending, SIGPIPE) == 1;
    pthread_sigmask(SIG_BLOCK, &PipeSignal(), &m_before);
}

CQuietPipe::~CQuietPipe()
{
    const timespec now = {};
    while (!m_waiting && sigtimedwait(&PipeSignal(), nullptr, &now) < 0 && errno == EINTR) {
    }
    pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
}

std::unique_ptr<CConnection> CConnection::Open()
{
    const CQuietPipe quiet;
    int number = 0;
    std::unique_ptr<CConnection> connection(new CConnection(xcb_connect(nullptr, &number)));
    connection->m_screenNumber = number;
    return !connection->IsDead() && connection->FindVisual() && connection->Prepare() ? std::move(connection) : nullptr;
}

CConnection::~CConnection()
{
    xcb_disconnect(m_connection);
}

bool CConnection::FindVisual()
{
    const xcb_setup_t* const setup = xcb_get_setup(m_connection);
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(setup);
    for (int number = m_screenNumber; number > 0 && screens.rem > 1; --number)
        xcb_screen_next(&screens);
    m_screen = screens.data;
    constexpr bool kLittleEndian = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;
    if (!m_screen || (setup->image_byte_order == XCB_IMAGE_ORDER_LSB_FIRST) != kLittleEndian)
        return false;
    // The pixels are those of a 24-bit true-colour visual; any screen of today has one.
    for (auto depths = xcb_screen_allowed_depths_iterator(m_screen); depths.rem > 0; xcb_depth_next(&depths)) {
        if (depths.data->depth != 24)
            continue;
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem > 0; xcb_visualtype_next(&visuals)) {
            const xcb_visualtype_t& visual = *visuals.data;
            const bool fits = visual._class == XCB_VISUAL_CLASS_TRUE_COLOR && visual.red_mask == 0xFF0000 &&
                              visual.green_mask == 0xFF00 && visual.blue_mask == 0xFF;
            if (fits && (m_visual == 0 || visual.visual_id == m_screen->root_visual)) {
                m_visual = visual.visual_id;
                m_depth = depths.data->depth;
            }
        }
    }
    return m_visual != 0;
}

bool CConnection::Prepare()
{
    xcb_prefetch_maximum_request_length(m_connection);
    xcb_prefetch_extension_data(m_connection, &xcb_xkb_id);
    const std::string settings = "_XSETTINGS_S" + std::to_string(m_screenNumber);
    std::vector<xcb_intern_atom_cookie_t> cookies;
    for (const char* const name : kAtomNames) {
        const std::string_view text = name == std::string_view("_XSETTINGS_S") ? settings : std::string_view(name);
        cookies.push_back(xcb_intern_atom(m_connection, 0, static_cast<std::uint16_t>(text.size()), text.data()));
    }
    m_leader = xcb_generate_id(m_connection);
    constexpr std::uint32_t kEvents[] = {XCB_EVENT_MASK_PROPERTY_CHANGE};
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, m_leader, m_screen->root, -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, kEvents);
    m_colormap = m_screen->default_colormap;
    if (m_visual != m_screen->root_visual) {
        m_colormap = xcb_generate_id(m_connection);
        xcb_create_colormap(m_connection, XCB_COLORMAP_ALLOC_NONE, m_colormap, m_screen->root, m_visual);
    }
    const xcb_pixmap_t sample = xcb_generate_id(m_connection); // only tells the context its depth
    xcb_create_pixmap(m_connection, m_depth, sample, m_screen->root, 1, 1);
    m_gc = xcb_generate_id(m_connection);
    constexpr std::uint32_t kQuiet[] = {0};
    xcb_create_gc(m_connection, m_gc, sample, XCB_GC_GRAPHICS_EXPOSURES, kQuiet);
    xcb_free_pixmap(m_connection, sample);

    for (std::size_t index = 0; index < cookies.size(); ++index) {
        const CReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(m_connection, cookies[index], nullptr));
        if (!reply)
            return false;
        m_atoms[index] = reply->atom;
    }
    m_longestRequest = std::size_t{4} * xcb_get_maximum_request_length(m_connection);
    return m_longestRequest > 0;
}

void CConnection::SetText(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, std::string_view bytes)
{
    const std::size_t most = m_longestRequest - 64;
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, window, property, type, 8,
                        static_cast<std::uint32_t>(std::min(bytes.size(), most)), bytes.data());
}

void CConnection::SetWords(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                           const std::vector<std::uint32_t>& words)
{
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, window, property, type, 32,
                        static_cast<std::uint32_t>(words.size()), words.data());
}

void CConnection::SendToRoot(xcb_window_t window, Atom type, const std::uint32_t (&words)[5])
{
    xcb_client_message_event_t message = {};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = (*this)[type];
    std::copy(std::begin(words), std::end(words), std::begin(message.data.data32));
    xcb_send_event(m_connection, 0, m_screen->root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&message));
}

void CConnection::Await(unsigned sequence, Done done)
{
    m_answers.push_back({sequence, std::move(done)});
}

void CConnection::TakeAnswers(const xcb_generic_event_t* next)
{
    while (!m_answers.empty()) { // in the order of asking, which is that of answering
        if (next && static_cast<std::int32_t>(next->full_sequence - m_answers.front().sequence) < 0)
            return;
        void* reply = nullptr;
        xcb_generic_error_t* error = nullptr;
        if (xcb_poll_for_reply(m_connection, m_answers.front().sequence, &reply, &error) == 0)
            return;
        const CReply<void> owner(reply);
        const CReply<xcb_generic_error_t> ownedError(error);
        const Done done = std::move(m_answers.front().done);
        m_answers.pop_front();
        done(reply);
    }
}

xcb_get_property_cookie_t CConnection::AskProperty(xcb_window_t window, xcb_atom_t property, bool remove,
                                                   std::size_t longest) const
{
    return xcb_get_property(m_connection, remove ? 1 : 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0,
                            static_cast<std::uint32_t>(longest / 4));
}

std::string CConnection::BytesOf(const xcb_get_property_reply_t* reply)
{
    if (!reply || reply->type == XCB_NONE)
        return {};
    const int length = xcb_get_property_value_length(reply);
    return std::string(static_cast<const char*>(xcb_get_property_value(reply)), static_cast<std::size_t>(length));
}
