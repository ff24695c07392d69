// tests/support/Screen.cpp
#include "tests/support/Screen.h"

#include <cairo.h>
#include <fcntl.h>
#include <unistd.h>
#include <xcb/xtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>

namespace {

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};
template <typename Reply>
using Owned = std::unique_ptr<Reply, Free>;

constexpr std::uint32_t kShiftKey = 0xFFE1;
constexpr std::uint32_t kMostBytes = 1U << 26;

// The server chooses a free display and tells which by writing it to a descriptor.
std::string StartServer(const ScreenOptions& options, std::optional<CProgram>& server)
{
    int ends[2];
    if (pipe(ends) != 0)
        throw std::runtime_error("no pipe");
    (void)fcntl(ends[0], F_SETFD, FD_CLOEXEC);
    const std::string size = std::to_string(options.width) + "x" + std::to_string(options.height) + "x24";
    std::vector<std::string> words = {"Xvfb", "-displayfd", std::to_string(ends[1]), "-screen", "0", size, "-nolisten",
                                      "tcp",  "-noreset"};
    words.insert(words.end(), options.server.begin(), options.server.end());
    server.emplace(words);
    close(ends[1]);
    std::string number;
    char digit = 0;
    while (read(ends[0], &digit, 1) == 1 && digit != '\n') // to the end, or the server's writing fails
        number += digit;
    close(ends[0]);
    if (digit != '\n')
        throw std::runtime_error("Xvfb did not start: " + server->Log());
    return ":" + number;
}

} // namespace

ScreenImage ReadPicture(const std::string& path)
{
    ScreenImage image;
    cairo_surface_t* const surface = cairo_image_surface_create_from_png(path.c_str());
    if (cairo_surface_status(surface) == CAIRO_STATUS_SUCCESS) {
        image.width = cairo_image_surface_get_width(surface);
        image.height = cairo_image_surface_get_height(surface);
        const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(surface));
        const auto row = static_cast<std::size_t>(image.width);
        image.pixels.resize(row * static_cast<std::size_t>(image.height));
        for (std::size_t y = 0; y < static_cast<std::size_t>(image.height); ++y)
            std::memcpy(image.pixels.data() + y * row, cairo_image_surface_get_data(surface) + y * stride,
                        row * sizeof image.pixels[0]);
        for (std::uint32_t& pixel : image.pixels)
            pixel &= 0xFFFFFFU;
    }
    cairo_surface_destroy(surface);
    return image;
}

CScreen::CScreen(const ScreenOptions& options) : m_width(options.width), m_height(options.height)
{
    m_display = StartServer(options, m_server);
    setenv("DISPLAY", m_display.c_str(), 1);
    m_connection = xcb_connect(m_display.c_str(), nullptr);
    if (xcb_connection_has_error(m_connection))
        throw std::runtime_error("no connection to " + m_display + ": " + m_server->Log());
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
    m_leader = xcb_generate_id(m_connection);
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, m_leader, m_root, -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    if (!options.manager)
        return;
    m_manager.emplace(std::vector<std::string>{"openbox", "--sm-disable"});
    if (!WaitFor([this] { return ManagerServes(); }))
        throw std::runtime_error("the window manager did not start: " + m_manager->Log());
}

// A manager that has announced itself may still overlook what is shown; one that answers does not.
bool CScreen::ManagerServes() const
{
    if (PropertyOf(m_root, "_NET_SUPPORTING_WM_CHECK") == 0)
        return false;
    SendToRoot(m_leader, "_NET_REQUEST_FRAME_EXTENTS", 0);
    return HasProperty(m_leader, "_NET_FRAME_EXTENTS");
}

CScreen::~CScreen()
{
    m_manager.reset();
    xcb_disconnect(m_connection);
}

xcb_atom_t CScreen::Atom(const std::string& name) const
{
    const Owned<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        m_connection, xcb_intern_atom(m_connection, 0, static_cast<std::uint16_t>(name.size()), name.data()), nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

void CScreen::Visit(xcb_window_t window, const std::string& title, std::vector<ScreenWindow>& found) const
{
    const Owned<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(m_connection, xcb_get_window_attributes(m_connection, window), nullptr));
    const Owned<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, window), nullptr));
    if (!attributes || !tree || attributes->map_state != XCB_MAP_STATE_VIEWABLE)
        return;
    if ((BytesOf(window, "_NET_WM_NAME") + BytesOf(window, "WM_NAME")).find(title) != std::string::npos) {
        if (const auto place = PlaceOf(window))
            found.push_back(*place);
    }
    const xcb_window_t* const children = xcb_query_tree_children(tree.get());
    for (int child = 0; child < xcb_query_tree_children_length(tree.get()); ++child)
        Visit(children[child], title, found);
}

std::vector<ScreenWindow> CScreen::Find(const std::string& title) const
{
    std::vector<ScreenWindow> found;
    Visit(m_root, title, found);
    return found;
}

std::optional<ScreenWindow> CScreen::WaitForWindow(const std::string& title) const
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

std::optional<ScreenWindow> CScreen::PlaceOf(xcb_window_t window) const
{
    const auto askedSize = xcb_get_geometry(m_connection, window);
    const auto askedPlace = xcb_translate_coordinates(m_connection, window, m_root, 0, 0);
    const Owned<xcb_get_geometry_reply_t> size(xcb_get_geometry_reply(m_connection, askedSize, nullptr));
    const Owned<xcb_translate_coordinates_reply_t> place(
        xcb_translate_coordinates_reply(m_connection, askedPlace, nullptr));
    if (!size || !place)
        return std::nullopt;
    return ScreenWindow{window, place->dst_x, place->dst_y, size->width, size->height};
}

bool CScreen::IsInside(xcb_window_t inner, xcb_window_t outer) const
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

xcb_window_t CScreen::Focus() const
{
    const Owned<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    return reply ? reply->focus : 0;
}

std::string CScreen::BytesOf(xcb_window_t window, const std::string& property) const
{
    const auto asked =
        xcb_get_property(m_connection, 0, window, Atom(property), XCB_GET_PROPERTY_TYPE_ANY, 0, kMostBytes / 4);
    const Owned<xcb_get_property_reply_t> reply(xcb_get_property_reply(m_connection, asked, nullptr));
    if (!reply)
        return "";
    return {static_cast<const char*>(xcb_get_property_value(reply.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
}

std::vector<std::uint32_t> CScreen::WordsOf(xcb_window_t window, const std::string& property) const
{
    const std::string bytes = BytesOf(window, property);
    std::vector<std::uint32_t> words(bytes.size() / sizeof(std::uint32_t));
    if (!words.empty())
        std::memcpy(words.data(), bytes.data(), words.size() * sizeof words.front());
    return words;
}

std::uint32_t CScreen::PropertyOf(xcb_window_t window, const std::string& property) const
{
    const std::vector<std::uint32_t> words = WordsOf(window, property);
    return words.empty() ? 0 : words.front();
}

std::vector<std::string> CScreen::AtomsOf(xcb_window_t window, const std::string& property) const
{
    std::vector<std::string> names;
    for (const std::uint32_t atom : WordsOf(window, property)) {
        const Owned<xcb_get_atom_name_reply_t> reply(
            xcb_get_atom_name_reply(m_connection, xcb_get_atom_name(m_connection, atom), nullptr));
        names.emplace_back(reply ? std::string(xcb_get_atom_name_name(reply.get()), reply->name_len) : std::string());
    }
    return names;
}

bool CScreen::HasProperty(xcb_window_t window, const std::string& property) const
{
    const auto asked = xcb_get_property(m_connection, 0, window, Atom(property), XCB_GET_PROPERTY_TYPE_ANY, 0, 0);
    const Owned<xcb_get_property_reply_t> reply(xcb_get_property_reply(m_connection, asked, nullptr));
    return reply && reply->type != XCB_NONE;
}

xcb_window_t CScreen::OwnerOf(const std::string& selection) const
{
    const Owned<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(m_connection, xcb_get_selection_owner(m_connection, Atom(selection)), nullptr));
    return reply ? reply->owner : 0;
}

bool CScreen::HasState(xcb_window_t window, const char* state) const
{
    for (const std::string& name : AtomsOf(window, "_NET_WM_STATE")) {
        if (name == state)
            return true;
    }
    return false;
}

void CScreen::SetProperty(xcb_window_t window, const std::string& property, const std::string& type, int format,
                          const std::string& bytes) const
{
    xcb_change_property(
        m_connection, XCB_PROP_MODE_REPLACE, window, Atom(property), Atom(type), static_cast<std::uint8_t>(format),
        static_cast<std::uint32_t>(bytes.size() / (static_cast<std::size_t>(format) / 8)), bytes.data());
    Sync();
}

void CScreen::SetResources(const std::string& resources) const
{
    SetProperty(m_root, "RESOURCE_MANAGER", "STRING", 8, resources);
}

void CScreen::MoveTo(int x, int y) const
{
    xcb_test_fake_input(m_connection, XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, m_root, static_cast<std::int16_t>(x),
                        static_cast<std::int16_t>(y), 0);
    xcb_flush(m_connection);
}

void CScreen::Press(bool down, int button) const
{
    xcb_test_fake_input(m_connection, static_cast<std::uint8_t>(down ? XCB_BUTTON_PRESS : XCB_BUTTON_RELEASE),
                        static_cast<std::uint8_t>(button), XCB_CURRENT_TIME, m_root, 0, 0, 0);
    xcb_flush(m_connection);
}

void CScreen::Click(int x, int y, int button) const
{
    MoveTo(x, y);
    Press(true, button);
    Press(false, button);
}

void CScreen::Drag(int fromX, int fromY, int toX, int toY) const
{
    constexpr int kSteps = 10;
    MoveTo(fromX, fromY);
    Press(true);
    for (int step = 1; step <= kSteps; ++step)
        MoveTo(fromX + (toX - fromX) * step / kSteps, fromY + (toY - fromY) * step / kSteps);
    Press(false);
}

xcb_keycode_t CScreen::CodeOf(std::uint32_t symbol, bool& shifted) const
{
    const xcb_setup_t* const setup = xcb_get_setup(m_connection);
    const xcb_keycode_t first = setup->min_keycode;
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - first + 1);
    const Owned<xcb_get_keyboard_mapping_reply_t> reply(
        xcb_get_keyboard_mapping_reply(m_connection, xcb_get_keyboard_mapping(m_connection, first, count), nullptr));
    if (!reply)
        throw std::runtime_error("no keyboard");
    const xcb_keysym_t* const symbols = xcb_get_keyboard_mapping_keysyms(reply.get());
    for (int level = 0; level < 2; ++level) {
        for (int key = 0; key < count; ++key) {
            if (symbols[key * reply->keysyms_per_keycode + level] == symbol) {
                shifted = level == 1;
                return static_cast<xcb_keycode_t>(first + key);
            }
        }
    }
    throw std::runtime_error("no key has the symbol " + std::to_string(symbol));
}

void CScreen::SendKey(xcb_keycode_t code, bool down) const
{
    xcb_test_fake_input(m_connection, static_cast<std::uint8_t>(down ? XCB_KEY_PRESS : XCB_KEY_RELEASE), code,
                        XCB_CURRENT_TIME, m_root, 0, 0, 0);
    xcb_flush(m_connection);
}

void CScreen::Key(std::uint32_t symbol, bool down) const
{
    bool shifted = false;
    SendKey(CodeOf(symbol, shifted), down);
}

void CScreen::Tap(std::uint32_t symbol, const std::vector<std::uint32_t>& held) const
{
    bool shifted = false;
    const xcb_keycode_t code = CodeOf(symbol, shifted);
    std::vector<std::uint32_t> all = held;
    if (shifted)
        all.push_back(kShiftKey);
    for (const std::uint32_t modifier : all)
        Key(modifier, true);
    SendKey(code, true);
    SendKey(code, false);
    for (const std::uint32_t modifier : all)
        Key(modifier, false);
}

xcb_window_t CScreen::MakeWindow(int x, int y, int width, int height, const std::string& title) const
{
    const xcb_window_t window = xcb_generate_id(m_connection);
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, window, m_root, static_cast<std::int16_t>(x),
                      static_cast<std::int16_t>(y), static_cast<std::uint16_t>(width),
                      static_cast<std::uint16_t>(height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0,
                      nullptr);
    SetProperty(window, "WM_NAME", "STRING", 8, title);
    xcb_map_window(m_connection, window);
    Sync();
    if (m_manager) // which puts it into its frame first
        (void)WaitFor([&] { return HasProperty(window, "WM_STATE"); });
    return window;
}

void CScreen::DestroyWindow(xcb_window_t window) const
{
    xcb_destroy_window(m_connection, window);
    Sync();
}

void CScreen::MoveWindow(xcb_window_t window, int x, int y) const
{
    const std::int32_t place[] = {x, y};
    xcb_configure_window(m_connection, window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, place);
    xcb_flush(m_connection);
}

void CScreen::Close(xcb_window_t window) const
{
    constexpr std::uint32_t kPager = 2; // who asks
    SendToRoot(window, "_NET_CLOSE_WINDOW", kPager);
}

void CScreen::SendToRoot(xcb_window_t window, const std::string& type, std::uint32_t source) const
{
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = Atom(type);
    message.data.data32[1] = source;
    xcb_send_event(m_connection, 0, m_root, XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&message));
    xcb_flush(m_connection);
}

void CScreen::Sync() const
{
    (void)Focus(); // any answer comes after what was asked before
}

ScreenImage CScreen::Look(int x, int y, int width, int height) const
{
    const auto asked = xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_root, static_cast<std::int16_t>(x),
                                     static_cast<std::int16_t>(y), static_cast<std::uint16_t>(width),
                                     static_cast<std::uint16_t>(height), ~0U);
    const Owned<xcb_get_image_reply_t> reply(xcb_get_image_reply(m_connection, asked, nullptr));
    ScreenImage image;
    if (!reply)
        return image; // beyond the screen's edge
    image.width = width;
    image.height = height;
    image.pixels.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    std::memcpy(image.pixels.data(), xcb_get_image_data(reply.get()), image.pixels.size() * sizeof image.pixels[0]);
    for (std::uint32_t& pixel : image.pixels)
        pixel &= 0xFFFFFFU;
    return image;
}

std::uint32_t CScreen::PixelAt(int x, int y) const
{
    const ScreenImage image = Look(x, y, 1, 1);
    return image.pixels.empty() ? 0 : image.pixels.front();
}

void CScreen::Save(const std::string& path) const
{
    ScreenImage image = Look(0, 0, m_width, m_height);
    if (image.pixels.empty())
        return;
    cairo_surface_t* const surface = cairo_image_surface_create_for_data(
        reinterpret_cast<unsigned char*>(image.pixels.data()), CAIRO_FORMAT_RGB24, m_width, m_height, m_width * 4);
    cairo_surface_write_to_png(surface, path.c_str());
    cairo_surface_destroy(surface);
}
