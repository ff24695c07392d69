// tests/system/HostsTest.cpp
//
// The example plug-in in host programs that are not ours: its window opens in theirs, the dialog
// comes up over it, what is chosen there holds for the next drag, and the host lives on. With
// CV_PICTURES set, pictures of the screen are written into that folder.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/launchservices/Viewers.h"
#include "tests/system/Host.h"
#include "tests/system/HostScreen.h"

namespace {

constexpr const char* kPlugin = "https://corvane.example/plugins/quillet";
constexpr const char* kPluginVendor = "Corvane Audio";
constexpr const char* kPluginTitle = "Corvane Quillet";
constexpr const char* kDialogTitle = "Corvane Audio Quillets for Mac";

// Places in the plug-in's window (examples/quillet/Panel.cpp) and in the dialog (InfoKnob.nib).
struct Spot {
    int x, y;
};
constexpr Spot kLogo = {32, 28};
constexpr Spot kInfoButton = {231, 28};
constexpr Spot kHelpButton = {297, 28};
constexpr Spot kGainKnob = {102, 112};
constexpr Spot kPlainGround = {6, 130};
constexpr Spot kArcAtSixDecibels = {125, 85};       // on the gain's ring, half of the way to 12 dB
constexpr Spot kArcAtFourteenDecibels = {137, 106}; // just beyond 12 dB
constexpr Spot kKnobOption = {27, 178};
constexpr Spot kOkButton = {430, 217};
constexpr Spot kCancelButton = {318, 217};
constexpr int kPanelWidth = 340;
constexpr int kPanelHeight = 210;
constexpr int kSteadyLooks = 10;

class Hosts : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override
    {
        setenv("XDG_DATA_DIRS", "/usr/share", 1); // where toolkits have their pictures
        const std::string plugins = m_folder / "lv2";
        std::filesystem::create_directories(plugins);
        std::filesystem::create_directory_symlink(CV_BUILD_DIR "/quillet.lv2", plugins + "/quillet.lv2");
        setenv("LV2_PATH", (plugins + ":/usr/lib/lv2:/usr/lib/x86_64-linux-gnu/lv2").c_str(), 1);
        OpenHost();
    }
    void TearDown() override { EXPECT_TRUE(Program().IsRunning()) << Program().Log(); }

    void OpenHost()
    {
        m_host.reset(); // first, for two would share settings
        m_host = StartHost(GetParam(), m_screen, m_folder.Path(), kPlugin, kPluginVendor, kPluginTitle);
        OpenPanel();
    }
    void OpenPanel()
    {
        m_panel = ScreenWindow();
        m_steady = 0;
        ASSERT_TRUE(WaitFor([this] {
            if (m_screen.Find(kPluginTitle).empty())
                m_host->ShowPlugin();
            return FindPanel();
        })) << Program().Log();
    }
    CProgram& Program() { return m_host->Program(); }
    // The innermost window of that name is the plug-in's own: a host that refused the interface shows
    // controls of its own making instead. Answers whether it is there, drawn, and has stood where it
    // stands since the last question: hosts and the window manager move it after it is shown.
    bool FindPanel()
    {
        const ScreenWindow before = m_panel;
        m_panel = ScreenWindow();
        for (const ScreenWindow& window : m_screen.Find(kPluginTitle)) {
            if (window.width == kPanelWidth && window.height == kPanelHeight && IsDrawn(window))
                m_panel = window;
        }
        const bool stands = m_panel.x == before.x && m_panel.y == before.y;
        m_steady = m_panel.id != 0 && stands ? m_steady + 1 : 0;
        return m_steady >= kSteadyLooks;
    }
    bool IsDrawn(const ScreenWindow& window) const
    {
        const unsigned pixel = m_screen.PixelAt(window.x + kPlainGround.x, window.y + kPlainGround.y);
        return pixel > 0x151515 && pixel < 0x303540;
    }
    ScreenWindow OpenDialog(const Spot& button = kLogo)
    {
        Click(m_panel, button);
        const auto dialog = m_screen.WaitForWindow(kDialogTitle);
        EXPECT_TRUE(dialog.has_value()) << Program().Log();
        return dialog.value_or(ScreenWindow());
    }
    bool WaitForDialogsEnd() const
    {
        return WaitFor([this] { return m_screen.Find(kDialogTitle).empty(); });
    }
    void Click(const ScreenWindow& window, const Spot& spot) const
    {
        m_screen.Click(window.x + spot.x, window.y + spot.y);
    }
    bool HasMapped(const std::string& file)
    {
        return ReadFile("/proc/" + std::to_string(Program().Id()) + "/maps").find(file) != std::string::npos;
    }
    // Drags the gain knob a quarter of its way straight upwards.
    void DragUpwards() const
    {
        const int x = m_panel.x + kGainKnob.x;
        const int y = m_panel.y + kGainKnob.y;
        m_screen.Drag(x, y, x, y - 50);
    }
    bool IsLit(const Spot& spot) const
    {
        const unsigned pixel = m_screen.PixelAt(m_panel.x + spot.x, m_panel.y + spot.y);
        return (pixel >> 16) > 0xC0 && (pixel & 0xFF) < 0x80; // the ring's orange
    }
    // Answers whether the gain comes to stand at 12 dB.
    bool GainRises() const
    {
        return WaitFor([this] { return IsLit(kArcAtSixDecibels); }, 20.0) && !IsLit(kArcAtFourteenDecibels);
    }
    void Save(const std::string& name) const
    {
        if (const char* const folder = getenv("CV_PICTURES"))
            m_screen.Save(std::string(folder) + "/" + GetParam() + "-" + name + ".png");
    }

    CTemporaryFolder m_folder;
    CHostScreen m_screen; // first, for its programs want the system's data
    CViewers m_viewers;
    std::unique_ptr<IHost> m_host;
    ScreenWindow m_panel;
    int m_steady = 0;
};

TEST_P(Hosts, ShowThePluginsOwnWindow)
{
    Save("panel");
    EXPECT_TRUE(m_screen.IsInside(m_panel.id, m_screen.Find(kPluginTitle).front().id));
}

TEST_P(Hosts, ShowTheDialogOverTheirWindow)
{
    const ScreenWindow dialog = OpenDialog(kInfoButton);
    ASSERT_NE(dialog.id, 0U);
    const xcb_window_t owner = m_screen.PropertyOf(dialog.id, "WM_TRANSIENT_FOR");
    EXPECT_NE(owner, 0U);
    EXPECT_TRUE(m_screen.IsInside(m_panel.id, owner));
    EXPECT_TRUE(WaitFor([&] { return m_screen.HasState(dialog.id, "_NET_WM_STATE_MODAL"); }));
    m_screen.MoveWindow(dialog.id, dialog.x + 150, dialog.y + 130); // so that both are seen
    ScreenWindow moved = dialog;
    EXPECT_TRUE(WaitFor([&] {
        moved = m_screen.WaitForWindow(kDialogTitle).value_or(dialog);
        return moved.y > dialog.y + 50;
    }));
    EXPECT_TRUE(WaitFor([this] { return IsDrawn(m_panel); })) << "the host draws on while the dialog is open";
    Save("dialog");
    Click(moved, kCancelButton);
    EXPECT_TRUE(WaitForDialogsEnd());
}

TEST_P(Hosts, TurnKnobsAsTheUserChose)
{
    DragUpwards(); // from the middle straight up: in a circle that is no turn
    const ScreenWindow dialog = OpenDialog();
    ASSERT_NE(dialog.id, 0U);
    EXPECT_FALSE(IsLit(kArcAtSixDecibels));
    Click(dialog, kKnobOption);
    EXPECT_TRUE(WaitFor([&] {
        const unsigned pixel = m_screen.PixelAt(dialog.x + kKnobOption.x - 5, dialog.y + kKnobOption.y - 4);
        return (pixel & 0xFF) > 0xA0 && (pixel >> 16) < 0x80; // the blue of a ticked box
    })) << "the option does not get its tick";
    Save("option");
    Click(dialog, kOkButton);
    ASSERT_TRUE(WaitForDialogsEnd());
    DragUpwards();
    EXPECT_TRUE(GainRises());
    Save("turned");

    OpenHost(); // another process of the host finds the choice on disk
    EXPECT_FALSE(IsLit(kArcAtSixDecibels));
    DragUpwards();
    EXPECT_TRUE(GainRises());
}

TEST_P(Hosts, CloseWithTheDialogOpenAndOpenAgain)
{
    for (int time = 0; time < 2; ++time) {
        const ScreenWindow dialog = OpenDialog();
        ASSERT_NE(dialog.id, 0U);
        m_screen.Close(m_screen.PropertyOf(dialog.id, "WM_TRANSIENT_FOR"));
        if (m_host->OutlivesWindow()) {
            ASSERT_TRUE(WaitForDialogsEnd());
            EXPECT_TRUE(WaitFor([this] { return !HasMapped("/quillet_ui.so") && !HasMapped("/MacOS/Quillets"); }));
            OpenPanel();
            continue;
        }
        ASSERT_TRUE(WaitFor([this] { return !Program().IsRunning(); })) << "the host hangs";
        EXPECT_EQ(Program().End(), 0) << Program().Log();
        EXPECT_TRUE(m_screen.Find(kDialogTitle).empty());
        OpenHost();
    }
}

TEST_P(Hosts, OpenThePageThatHelpNames)
{
    m_viewers.Install("viewer");
    m_viewers.MakeDefault("viewer", "text/html");
    Click(m_panel, kHelpButton);
    std::vector<Visit> visits;
    ASSERT_TRUE(WaitFor([&] { return !(visits = m_viewers.TakeVisits()).empty(); })) << Program().Log();
    ASSERT_EQ(visits.size(), 1U);
    ASSERT_EQ(visits[0].arguments.size(), 1U);
    EXPECT_THAT(visits[0].arguments[0], testing::MatchesRegex("file:///.*/Quillets\\.bundle/.*/knobs\\.html"));
}

} // namespace

INSTANTIATE_TEST_SUITE_P(, Hosts, testing::Values("jalv.gtk3", "jalv.qt5", "audacity"), [](const auto& instance) {
    const std::string program = instance.param;
    return program == "jalv.gtk3" ? "Gtk" : program == "jalv.qt5" ? "Qt" : "Audacity";
});
