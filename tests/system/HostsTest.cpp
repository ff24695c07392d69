// tests/system/HostsTest.cpp
//
// The example plug-in in host programs that are not ours: its window opens in theirs, the dialog
// comes up over it, what is chosen there holds for the next drag, and the host lives on. With
// CV_PICTURES set, pictures of the screen are written into that folder.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/system/HostScreen.h"

namespace {

constexpr const char* kPlugin = "https://corvane.example/plugins/quillet";
constexpr const char* kPluginTitle = "Corvane Quillet";
constexpr const char* kDialogTitle = "Corvane Audio Quillets for Mac";

// Places in the plug-in's window (examples/quillet/Panel.cpp) and in the dialog (InfoKnob.nib).
struct Spot {
    int x, y;
};
constexpr Spot kLogo = {32, 28};
constexpr Spot kGainKnob = {102, 112};
constexpr Spot kPlainGround = {6, 130};
constexpr int kPanelWidth = 340;
constexpr int kPanelHeight = 210;

class Hosts : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override
    {
        const std::string plugins = m_folder / "lv2";
        std::filesystem::create_directories(plugins);
        std::filesystem::create_directory_symlink(CV_BUILD_DIR "/quillet.lv2", plugins + "/quillet.lv2");
        setenv("LV2_PATH", (plugins + ":/usr/lib/lv2:/usr/lib/x86_64-linux-gnu/lv2").c_str(), 1);
        OpenHost();
    }
    void TearDown() override { EXPECT_TRUE(m_host->IsRunning()) << m_host->Log(); }

    void OpenHost()
    {
        m_host.emplace(std::vector<std::string>{GetParam(), "--dump", kPlugin}, m_folder / "host.log");
        // The innermost window of that name is the plug-in's own: a host that refused the interface
        // shows controls of its own making instead.
        ASSERT_TRUE(WaitFor([this] {
            for (const ScreenWindow& window : m_screen.Find(kPluginTitle)) {
                if (window.width == kPanelWidth && window.height == kPanelHeight && IsDrawn(window))
                    m_panel = window;
            }
            return m_panel.id != 0;
        })) << m_host->Log();
    }
    void CloseHost()
    {
        (void)m_host->End();
        m_panel = ScreenWindow();
    }

    bool IsDrawn(const ScreenWindow& window) const
    {
        const unsigned pixel = m_screen.PixelAt(window.x + kPlainGround.x, window.y + kPlainGround.y);
        return pixel > 0x151515 && pixel < 0x303540;
    }
    ScreenWindow OpenDialog()
    {
        m_screen.Click(m_panel.x + kLogo.x, m_panel.y + kLogo.y);
        const auto dialog = m_screen.WaitForWindow(kDialogTitle);
        EXPECT_TRUE(dialog.has_value()) << m_host->Log();
        return dialog.value_or(ScreenWindow());
    }
    bool WaitForDialogsEnd() const
    {
        return WaitFor([this] { return m_screen.Find(kDialogTitle).empty(); });
    }
    // Drags the gain knob straight upwards; answers what the host was told, in decibels.
    bool GainFollowsVerticalDrag()
    {
        const std::string before = m_host->Log();
        m_screen.Drag(m_panel.x + kGainKnob.x, m_panel.y + kGainKnob.y, m_panel.x + kGainKnob.x,
                      m_panel.y + kGainKnob.y - 50);
        return WaitFor([&] { return m_host->Log().find("12.0", before.size()) != std::string::npos; }, 5.0);
    }
    void Save(const std::string& name) const
    {
        if (const char* const folder = getenv("CV_PICTURES"))
            m_screen.Save(std::string(folder) + "/" + GetParam() + "-" + name + ".png");
    }

    CTemporaryFolder m_folder;
    CHostScreen m_screen;
    std::optional<CProgram> m_host;
    ScreenWindow m_panel;
};

TEST_P(Hosts, ShowThePluginsOwnWindow)
{
    Save("panel");
    EXPECT_TRUE(m_screen.IsInside(m_panel.id, m_screen.Find(kPluginTitle).front().id));
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Jalv, Hosts, testing::Values("jalv.gtk3", "jalv.qt5"), [](const auto& instance) {
    return std::string(instance.param) == "jalv.gtk3" ? std::string("Gtk") : std::string("Qt");
});
