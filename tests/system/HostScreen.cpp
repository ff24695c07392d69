// tests/system/HostScreen.cpp
#include "tests/system/HostScreen.h"

#include <cairo.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xtest.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <thread>

namespace {

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};
template <typename Reply>
using Owned = std::unique_ptr<Reply, Free>;

std::string TextOf(xcb_connection_t* connection, xcb_window_t window, xcb_atom_t property)
{
    const Owned<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        connection, xcb_get_property(connection, 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, 256), nullptr));
    if (!reply)
        return "";
    return {static_cast<const char*>(xcb_get_property_value(reply.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
}

} // namespace

CProgram::CProgram(const std::vector<std::string>& words, const std::string& log) : m_log(log)
{
    std::vector<char*> arguments;
    for (const std::string& word : words)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    posix_spawn_file_actions_adddup2(&actions, 1, 2);
    const int error = posix_spawnp(&m_process, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
        throw std::runtime_error("cannot start " + words.front());
}

CProgram::~CProgram()
{
    (void)End();
}

bool CProgram::IsRunning()
{
    int status = 0;
    if (!m_status && waitpid(m_process, &status, WNOHANG) == m_process)
        m_status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return !m_status;
}

int CProgram::End()
{
    if (!IsRunning())
        return *m_status;
    kill(m_process, SIGTERM);
    if (!WaitFor([this] { return !IsRunning(); }, 10.0)) {
        kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
        m_status = -1;
    }
    return *m_status;
}

bool WaitFor(const std::function<bool()>& condition, double seconds)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

CHostScreen::CHostScreen()
{
    // The server chooses a free display and tells which by writing it to a descriptor.
    int ends[2];
    if (pipe(ends) != 0)
        throw std::runtime_error("no pipe");
    m_server.emplace(std::vector<std::string>{"Xvfb", "-displayfd", std::to_string(ends[1]), "-screen", "0",
                                              "1024x768x24", "-nolisten", "tcp"},
                     m_folder / "Xvfb.log");
    close(ends[1]);
    char number[16] = "";
    const ssize_t length = read(ends[0], number, sizeof number - 1);
    close(ends[0]);
    if (length <= 0)
        throw std::runtime_error("Xvfb did not start: " + m_server->Log());
    const std::string display = ":" + std::string(number, strcspn(number, "\n"));
    const std::string sound = "quillet-" + std::to_string(getpid());
    setenv("DISPLAY", display.c_str(), 1);
    setenv("JACK_DEFAULT_SERVER", sound.c_str(), 1);
    setenv("JACK_NO_AUDIO_RESERVATION", "1", 1);
    setenv("NO_AT_BRIDGE", "1", 1);

    m_connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(m_connection))
        throw std::runtime_error("no connection to " + display);
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
    m_manager.emplace(std::vector<std::string>{"openbox", "--sm-disable"}, m_folder / "openbox.log");
    m_sound.emplace(
        std::vector<std::string>{"jackd", "--no-realtime", "-n", sound, "-d", "dummy", "-r", "48000", "-p", "1024"},
        m_folder / "jackd.log");
    const bool ready = WaitFor([this] { return PropertyOf(m_root, "_NET_SUPPORTING_WM_CHECK") != 0; }) && WaitFor([] {
                           return RunProgram({"jack_wait", "-c"}).out.find("not") == std::string::npos;
                       });
    if (!ready)
        throw std::runtime_error("the window manager or the sound server did not start");
}

CHostScreen::~CHostScreen()
{
    m_sound.reset();
    m_manager.reset();
    xcb_disconnect(m_connection);
}

xcb_atom_t CHostScreen::Atom(const char* name) const
{
    const Owned<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        m_connection, xcb_intern_atom(m_connection, 0, static_cast<std::uint16_t>(strlen(name)), name), nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

void CHostScreen::Visit(xcb_window_t window, const std::string& title, std::vector<ScreenWindow>& found) const
{
    const Owned<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(m_connection, xcb_get_window_attributes(m_connection, window), nullptr));
    const Owned<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, window), nullptr));
    if (!attributes || !tree || attributes->map_state != XCB_MAP_STATE_VIEWABLE)
        return;
    const std::string name = TextOf(m_connection, window, Atom("_NET_WM_NAME"));
    if ((name + TextOf(m_connection, window, XCB_ATOM_WM_NAME)).find(title) != std::string::npos) {
        const Owned<xcb_get_geometry_reply_t> size(
            xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, window), nullptr));
        const Owned<xcb_translate_coordinates_reply_t> place(xcb_translate_coordinates_reply(
            m_connection, xcb_translate_coordinates(m_connection, window, m_root, 0, 0), nullptr));
        if (size && place)
            found.push_back({window, place->dst_x, place->dst_y, size->width, size->height});
    }
    const xcb_window_t* const children = xcb_query_tree_children(tree.get());
    for (int child = 0; child < xcb_query_tree_children_length(tree.get()); ++child)
        Visit(children[child], title, found);
}

std::vector<ScreenWindow> CHostScreen::Find(const std::string& title) const
{
    std::vector<ScreenWindow> found;
    Visit(m_root, title, found);
    return found;
}

std::optional<ScreenWindow> CHostScreen::WaitForWindow(const std::string& title) const
{
    constexpr int kSteadyLooks = 10;
    std::optional<ScreenWindow> window;
    int steady = 0;
    (void)WaitFor([&] {
        const std::vector<ScreenWindow> found = Find(title);
        const bool stands = !found.empty() && window && window->x == found.back().x && window->y == found.back().y;
        steady = stands ? steady + 1 : 0;
        window = found.empty() ? std::nullopt : std::optional<ScreenWindow>(found.back());
        return steady >= kSteadyLooks;
    });
    return window;
}

xcb_window_t CHostScreen::PropertyOf(xcb_window_t window, const char* property) const
{
    const std::string bytes = TextOf(m_connection, window, Atom(property));
    xcb_window_t value = 0;
    if (bytes.size() >= sizeof value)
        std::memcpy(&value, bytes.data(), sizeof value);
    return value;
}

bool CHostScreen::HasState(xcb_window_t window, const char* state) const
{
    const std::string states = TextOf(m_connection, window, Atom("_NET_WM_STATE"));
    const xcb_atom_t wanted = Atom(state);
    for (std::size_t at = 0; at + sizeof wanted <= states.size(); at += sizeof wanted) {
        if (std::memcmp(states.data() + at, &wanted, sizeof wanted) == 0)
            return true;
    }
    return false;
}

bool CHostScreen::IsInside(xcb_window_t inner, xcb_window_t outer) const
{
    while (inner != outer) {
        const Owned<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, inner), nullptr));
        if (!tree || tree->parent == XCB_WINDOW_NONE)
            return false;
        inner = tree->parent;
    }
    return true;
}

void CHostScreen::MoveTo(int x, int y) const
{
    xcb_test_fake_input(m_connection, XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, m_root, static_cast<std::int16_t>(x),
                        static_cast<std::int16_t>(y), 0);
    xcb_flush(m_connection);
}

void CHostScreen::Press(bool down) const
{
    xcb_test_fake_input(m_connection, static_cast<std::uint8_t>(down ? XCB_BUTTON_PRESS : XCB_BUTTON_RELEASE),
                        XCB_BUTTON_INDEX_1, XCB_CURRENT_TIME, m_root, 0, 0, 0);
    xcb_flush(m_connection);
}

void CHostScreen::Click(int x, int y) const
{
    MoveTo(x, y);
    Press(true);
    Press(false);
}

void CHostScreen::Drag(int fromX, int fromY, int toX, int toY) const
{
    constexpr int kSteps = 10;
    MoveTo(fromX, fromY);
    Press(true);
    for (int step = 1; step <= kSteps; ++step)
        MoveTo(fromX + (toX - fromX) * step / kSteps, fromY + (toY - fromY) * step / kSteps);
    Press(false);
}

void CHostScreen::MoveWindow(xcb_window_t window, int x, int y) const
{
    const std::int32_t place[] = {x, y};
    xcb_configure_window(m_connection, window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, place);
    xcb_flush(m_connection);
}

void CHostScreen::Close(xcb_window_t window) const
{
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = Atom("_NET_CLOSE_WINDOW");
    message.data.data32[1] = 2; // from a pager
    xcb_send_event(m_connection, 0, m_root, XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&message));
    xcb_flush(m_connection);
}

unsigned CHostScreen::PixelAt(int x, int y) const
{
    const Owned<xcb_get_image_reply_t> image(
        xcb_get_image_reply(m_connection,
                            xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_root, static_cast<std::int16_t>(x),
                                          static_cast<std::int16_t>(y), 1, 1, ~0U),
                            nullptr));
    std::uint32_t pixel = 0;
    if (image)
        std::memcpy(&pixel, xcb_get_image_data(image.get()), sizeof pixel);
    return pixel & 0xFFFFFFU;
}

void CHostScreen::Save(const std::string& path) const
{
    constexpr int kWidth = 1024;
    constexpr int kHeight = 768;
    const Owned<xcb_get_image_reply_t> image(xcb_get_image_reply(
        m_connection, xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_root, 0, 0, kWidth, kHeight, ~0U),
        nullptr));
    if (!image)
        return;
    cairo_surface_t* const surface = cairo_image_surface_create_for_data(
        xcb_get_image_data(image.get()), CAIRO_FORMAT_RGB24, kWidth, kHeight, kWidth * 4);
    cairo_surface_write_to_png(surface, path.c_str());
    cairo_surface_destroy(surface);
}
