// tests/desktop/x11/PictureTest.cpp
//
// What stands on the screen, pixel for pixel what a picture of the window shows: at every scale, light
// and dark, after changes and behind other windows. Each in a process of its own, for a process
// has one display.
#include <gmock/gmock.h>
#include <poll.h>
#include <signal.h>

#include <filesystem>
#include <map>
#include <sstream>

#include "tests/support/Desk.h"

namespace {

ScreenOptions Roomy()
{
    ScreenOptions options;
    options.width = 1600;
    options.height = 1200;
    return options;
}

ScreenImage PictureOf(WindowRef window, double scale, bool dark)
{
    const CTemporaryFolder folder;
    const std::string file = folder / "window.png";
    EXPECT_EQ(CVSaveWindowPicture(window, file.c_str(), scale, dark), noErr);
    return ReadPicture(file);
}

/// Serves until the window on the screen is the picture; says how it differs where it never is.
void ExpectShows(const CScreen& screen, WindowRef window, double scale, bool dark)
{
    const ScreenWindow shown = ActiveOn(screen, window);
    screen.MoveTo(0, 0); // nothing is hovered
    std::size_t differing = 0;
    ScreenImage seen, drawn;
    const bool alike = ServeUntil(
        [&] {
            seen = screen.Look(*screen.PlaceOf(shown.id));
            drawn = PictureOf(window, scale, dark);
            differing = 0;
            if (seen.width != drawn.width || seen.height != drawn.height || drawn.pixels.empty())
                return false;
            for (std::size_t pixel = 0; pixel < seen.pixels.size(); ++pixel)
                differing += seen.pixels[pixel] != drawn.pixels[pixel] ? 1 : 0;
            return differing == 0;
        },
        10.0);
    EXPECT_TRUE(alike) << differing << " pixels differ; " << seen.width << "x" << seen.height << " on the screen, "
                       << drawn.width << "x" << drawn.height << " in the picture";
}

/// Runs a test on a screen and with the dialog of its own.
template <typename Prepare, typename Work>
void OnScreen(Prepare prepare, Work work)
{
    EXPECT_EQ(RunInChild([&] {
                  CScreen screen(Roomy());
                  prepare(screen);
                  const CDialog dialog(Stand::OnScreen);
                  work(screen, dialog);
                  return 0;
              }),
              0);
}
void Nothing(const CScreen&)
{
}

/// Publishes settings as desktops do. @source XSETTINGS 0.5
class CSettings {
public:
    explicit CSettings(const CScreen& screen) : m_screen(screen), m_owner(xcb_generate_id(screen.Connection()))
    {
        xcb_create_window(screen.Connection(), XCB_COPY_FROM_PARENT, m_owner, screen.Root(), -1, -1, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    }

    void Number(const std::string& name, std::int32_t value) { m_entries[name] = Entry(0, name) + Word(value); }
    void Text(const std::string& name, const std::string& value)
    {
        m_entries[name] = Entry(1, name) + Word(static_cast<std::int32_t>(value.size())) + Padded(value);
    }
    void Publish()
    {
        std::string bytes = std::string(4, '\0') + Word(++m_serial) + Word(static_cast<std::int32_t>(m_entries.size()));
        for (const auto& [name, entry] : m_entries)
            bytes += entry;
        m_screen.SetProperty(m_owner, "_XSETTINGS_SETTINGS", "_XSETTINGS_SETTINGS", 8, bytes);
        if (m_serial > 1)
            return;
        xcb_set_selection_owner(m_screen.Connection(), m_owner, m_screen.Atom("_XSETTINGS_S0"), XCB_CURRENT_TIME);
        xcb_client_message_event_t message = {};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = m_screen.Root();
        message.type = m_screen.Atom("MANAGER");
        message.data.data32[1] = m_screen.Atom("_XSETTINGS_S0");
        message.data.data32[2] = m_owner;
        xcb_send_event(m_screen.Connection(), 0, m_screen.Root(), XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                       reinterpret_cast<const char*>(&message));
        m_screen.Sync();
    }

private:
    static std::string Word(std::int32_t value) { return std::string(reinterpret_cast<const char*>(&value), 4); }
    static std::string Padded(const std::string& text) { return text + std::string((4 - text.size() % 4) % 4, '\0'); }
    static std::string Entry(char type, const std::string& name)
    {
        const auto size = static_cast<std::uint16_t>(name.size());
        return std::string{type, '\0'} + std::string(reinterpret_cast<const char*>(&size), 2) + Padded(name) + Word(0);
    }

    const CScreen& m_screen;
    const xcb_window_t m_owner;
    std::map<std::string, std::string> m_entries;
    std::int32_t m_serial = 0;
};

constexpr std::int32_t kDpiUnits = 1024;

TEST(Picture, IsOnTheScreenAtEveryScale)
{
    constexpr struct {
        const char* resources;
        double scale;
    } kScales[] = {{"Xft.dpi:\t96\n", 1}, {"Xft.dpi:\t120\n", 1.25}, {"*dpi: 1\nXft.dpi: 192\n", 2}};
    for (const auto& [resources, scale] : kScales) {
        SCOPED_TRACE(scale);
        OnScreen([resources = resources](const CScreen& screen) { screen.SetResources(resources); },
                 [scale = scale](const CScreen& screen, const CDialog& dialog) {
                     ExpectShows(screen, dialog.Window(), scale, false);
                 });
    }
}

TEST(Picture, FollowsTheScaleOfTheDesktopsSettings)
{
    OnScreen(
        [](const CScreen& screen) {
            screen.SetResources("Xft.dpi:\t144\n"); // the settings outweigh them
            CSettings settings(screen);
            settings.Number("Xft/DPI", 120 * kDpiUnits);
            settings.Publish();
        },
        [](const CScreen& screen, const CDialog& dialog) { ExpectShows(screen, dialog.Window(), 1.25, false); });
    OnScreen(
        [](const CScreen& screen) {
            CSettings settings(screen);
            settings.Number("Gdk/WindowScalingFactor", 2);
            settings.Number("Gdk/UnscaledDPI", 96 * kDpiUnits);
            settings.Number("Xft/DPI", 192 * kDpiUnits);
            settings.Publish();
        },
        [](const CScreen& screen, const CDialog& dialog) { ExpectShows(screen, dialog.Window(), 2, false); });
}

TEST(Picture, FollowsChangesOfTheDesktopsSettings)
{
    OnScreen(Nothing, [](const CScreen& screen, const CDialog& dialog) {
        ExpectShows(screen, dialog.Window(), 1, false);
        CSettings settings(screen); // which start after the window
        settings.Text("Net/ThemeName", "Adwaita-dark");
        settings.Publish();
        ExpectShows(screen, dialog.Window(), 1, true);
        settings.Number("Xft/DPI", 192 * kDpiUnits);
        settings.Text("Net/ThemeName", "Adwaita");
        settings.Publish();
        ExpectShows(screen, dialog.Window(), 2, false);
        const ScreenImage before = PictureOf(dialog.Window(), 2, false);
        settings.Text("Gtk/FontName", "DejaVu Serif Bold 12");
        settings.Publish();
        EXPECT_TRUE(ServeUntil([&] { return PictureOf(dialog.Window(), 2, false).pixels != before.pixels; }));
        ExpectShows(screen, dialog.Window(), 2, false);
        screen.SetProperty(screen.OwnerOf("_XSETTINGS_S0"), "_XSETTINGS_SETTINGS", "_XSETTINGS_SETTINGS", 8, "broken");
        settings.Text("Net/ThemeName", "Another-Dark");
        settings.Publish();
        ExpectShows(screen, dialog.Window(), 2, true);
    });
}

TEST(Picture, FollowsTheDesktopsPortal)
{
    const CTemporaryFolder folder;
    const std::string address = "unix:path=" + (folder / "bus");
    WriteFile(folder / "bus.conf",
              "<busconfig><type>session</type><listen>" + address +
                  "</listen><auth>EXTERNAL</auth><policy context='default'>"
                  "<allow send_destination='*'/><allow own='*'/><allow eavesdrop='true'/></policy></busconfig>");
    const CEnvironment bus("DBUS_SESSION_BUS_ADDRESS", address.c_str());
    CProgram daemon({"dbus-daemon", "--config-file=" + (folder / "bus.conf"), "--nofork"});
    ASSERT_TRUE(WaitFor([&] { return FileExists(folder / "bus"); })) << daemon.Log();
    CProgram portal({CV_SETTINGS_PORTAL});
    ASSERT_TRUE(WaitFor([&] { return !portal.Log().empty(); })) << daemon.Log();
    OnScreen(
        [](const CScreen& screen) {
            CSettings settings(screen);
            settings.Text("Net/ThemeName", "Light"); // the portal outweighs it
            settings.Publish();
        },
        [&](const CScreen& screen, const CDialog& dialog) {
            ExpectShows(screen, dialog.Window(), 1, true);
            portal.Signal(SIGUSR1);
            ExpectShows(screen, dialog.Window(), 1, false);
        });
}

TEST(Picture, FollowsWhatControlsShow)
{
    OnScreen(Nothing, [](const CScreen& screen, const CDialog& dialog) {
        ExpectShows(screen, dialog.Window(), 1, false);
        SetControl32BitValue(dialog.Control('KNOB'), 1);
        dialog.SetText('EDIT', 0, "\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D, long enough to reach the end of the field");
        ExpectShows(screen, dialog.Window(), 1, false);
    });
}

TEST(Picture, ChangeBeforeTheWindowIsSeenIsSeenWithIt)
{
    OnScreen(Nothing, [](const CScreen& screen, const CDialog& dialog) {
        (void)ActiveOn(screen, dialog.Window());
        HideWindow(dialog.Window());
        ASSERT_TRUE(ServeUntil([&] { return screen.Find("Dialog").empty(); }));
        ASSERT_TRUE(ServeUntil([&] { return screen.WordsOf(screen.Root(), "_NET_CLIENT_LIST").empty(); }));
        ShowWindow(dialog.Window());
        // It stands on the screen, and we have not heard of it.
        ASSERT_TRUE(WaitFor([&] { return !screen.Find("Dialog").empty(); }));
        SetControl32BitValue(dialog.Control('KNOB'), 1);
        ExpectShows(screen, dialog.Window(), 1, false);
    });
}

TEST(Picture, DialogOpenedAgainShowsWhatItIsNow)
{
    OnScreen(Nothing, [](const CScreen& screen, const CDialog& dialog) {
        dialog.SetText('EDIT', 0, "before");
        ExpectShows(screen, dialog.Window(), 1, false);
        DisposeWindow(dialog.Window());
        ASSERT_TRUE(ServeUntil([&] { return screen.Find("Dialog").empty(); }));
        const CDialog again(Stand::OnScreen);
        SetControl32BitValue(again.Control('KNOB'), 1);
        ExpectShows(screen, again.Window(), 1, false);
    });
}

TEST(Picture, IsWholeAgainBehindOtherWindows)
{
    OnScreen(Nothing, [](const CScreen& screen, const CDialog& dialog) {
        ExpectShows(screen, dialog.Window(), 1, false);
        const ScreenWindow shown = ShownOn(screen, dialog.Window());
        const xcb_window_t cover = screen.MakeWindow(shown.x + 50, shown.y + 50, 200, 100, "Cover");
        ASSERT_TRUE(ServeUntil([&] { return screen.Focus() == cover; }));
        screen.DestroyWindow(cover);
        SelectWindow(dialog.Window());
        ExpectShows(screen, dialog.Window(), 1, false);
    });
}

TEST(Picture, MachineWithoutFontsHasADialogThatWorks)
{
    const CTemporaryFolder folder;
    WriteFile(folder / "fonts.conf",
              "<?xml version='1.0'?><fontconfig><cachedir>" + (folder / "cache") + "</cachedir></fontconfig>");
    const CEnvironment fonts("FONTCONFIG_FILE", (folder / "fonts.conf").c_str());
    OnScreen(Nothing, [](const CScreen& screen, const CDialog& dialog) {
        ExpectShows(screen, dialog.Window(), 1, false);
        CCommands commands;
        ClickOn(screen, dialog.Control('HELP'));
        EXPECT_TRUE(ServeUntil([&] { return commands.Take() == "help"; }));
        ASSERT_EQ(SetKeyboardFocus(dialog.Window(), dialog.Control('EDIT'), kControlEditTextPart), noErr);
        TypeOn(screen, "abc");
        EXPECT_TRUE(ServeUntil([&] { return dialog.Text('EDIT') == "abc"; }));
        ExpectShows(screen, dialog.Window(), 1, false);
    });
}

/// How often threads of this process gave the processor away so far, each time to be woken again.
long SwitchesOfAllThreads()
{
    long switches = 0;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
        std::istringstream status(ReadFile(thread.path() / "status"));
        for (std::string line; std::getline(status, line);) {
            constexpr std::string_view kField = "voluntary_ctxt_switches:";
            if (line.compare(0, kField.size(), kField) == 0)
                switches += std::stol(line.substr(kField.size()));
        }
    }
    return switches;
}

// The caret of a field that has the keyboard is steady: one that blinks wakes the machine twice a second.
TEST(Picture, UntouchedWindowWakesNobody)
{
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "the checker's own thread wakes now and then";
#endif
    OnScreen(Nothing, [](const CScreen& screen, const CDialog& dialog) {
        ExpectShows(screen, dialog.Window(), 1, false);
        ASSERT_EQ(SetKeyboardFocus(dialog.Window(), dialog.Control('EDIT'), kControlEditTextPart), noErr);
        ExpectShows(screen, dialog.Window(), 1, false);
        EXPECT_LT(CVGetNextDeadline(), 0);
        pollfd wait = {CVGetDescriptor(), POLLIN, 0};
        int wakeups = 0;
        for (; wakeups < 100 && poll(&wait, 1, 1500) > 0; ++wakeups) // what is still on its way, then silence
            EXPECT_EQ(CVPump(), noErr);
        EXPECT_LT(wakeups, 10);
        // Nor do threads of libraries wake: none of the process runs while it waits.
        const long switches = SwitchesOfAllThreads();
        EXPECT_EQ(RunCurrentEventLoop(2.0), eventLoopTimedOutErr);
        EXPECT_LT(SwitchesOfAllThreads() - switches, 5);
    });
}

} // namespace
