// tests/examples/UiTest.cpp
//
// The plug-in's interface in the least of hosts, which gives what no host of tests/system gives: the
// scale of its windows.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <lv2/atom/atom.h>
#include <lv2/options/options.h>
#include <lv2/ui/ui.h>
#include <lv2/urid/urid.h>

#include <cmath>
#include <limits>

#include "examples/quillet/Ports.h"
#include "tests/support/Screen.h"
#include "tests/support/Support.h"

namespace {

using namespace quillet;

constexpr const char* kDialogTitle = "Corvane Audio Quillets for Mac";
constexpr double kWidth = 340.0;
constexpr double kHeight = 210.0;
constexpr double kGroundX = 6.0;
constexpr double kGroundY = 130.0;
constexpr double kInfoX = 231.0;
constexpr double kInfoY = 28.0;

enum Key : LV2_URID { kScaleKey = 1, kFloatKey, kOtherKey };

LV2_URID Map(LV2_URID_Map_Handle, const char* uri)
{
    const std::string text = uri;
    return text == LV2_UI__scaleFactor ? kScaleKey : text == LV2_ATOM__Float ? kFloatKey : kOtherKey;
}

struct Size {
    int width = 0, height = 0;
};

int Resize(LV2UI_Feature_Handle size, int width, int height)
{
    *static_cast<Size*>(size) = {width, height};
    return 0;
}

void Write(LV2UI_Controller, std::uint32_t, std::uint32_t, std::uint32_t, const void*)
{
}

// A window with the plug-in's in it.
class CLeastHost {
public:
    CLeastHost(const CScreen& screen, const LV2_Options_Option& scale)
        : m_parent(screen.MakeWindow(0, 0, 900, 600, "Least host"))
    {
        const LV2_Options_Option options[] = {scale, {LV2_OPTIONS_INSTANCE, 0, 0, 0, 0, nullptr}};
        LV2_URID_Map map = {nullptr, Map};
        LV2UI_Resize resize = {&m_asked, Resize};
        const LV2_Feature features[] = {
            {LV2_UI__parent, reinterpret_cast<void*>(static_cast<std::uintptr_t>(m_parent))},
            {LV2_URID__map, &map},
            {LV2_UI__resize, &resize},
            {LV2_OPTIONS__options, const_cast<LV2_Options_Option*>(options)},
        };
        const LV2_Feature* const list[] = {&features[0], &features[1], &features[2], &features[3], nullptr};
        m_code = dlopen(CV_BUILD_DIR "/quillet.lv2/quillet_ui.so", RTLD_NOW | RTLD_LOCAL);
        m_ui = reinterpret_cast<LV2UI_DescriptorFunction>(dlsym(m_code, "lv2ui_descriptor"))(0);
        m_idle = static_cast<const LV2UI_Idle_Interface*>(m_ui->extension_data(LV2_UI__idleInterface));
        LV2UI_Widget widget = nullptr;
        m_handle = m_ui->instantiate(m_ui, kPluginUri, CV_BUILD_DIR "/quillet.lv2", Write, nullptr, &widget, list);
        m_window = static_cast<xcb_window_t>(reinterpret_cast<std::uintptr_t>(widget));
    }
    ~CLeastHost()
    {
        m_ui->cleanup(m_handle);
        dlclose(m_code);
    }
    CLeastHost(const CLeastHost&) = delete;
    CLeastHost& operator=(const CLeastHost&) = delete;

    const Size& AskedSize() const { return m_asked; }
    xcb_window_t Window() const { return m_window; }
    bool ServeUntil(const std::function<bool()>& condition)
    {
        return WaitFor([&] { return m_idle->idle(m_handle) == 0 && condition(); });
    }

private:
    xcb_window_t m_parent;
    Size m_asked;
    void* m_code = nullptr;
    const LV2UI_Descriptor* m_ui = nullptr;
    const LV2UI_Idle_Interface* m_idle = nullptr;
    LV2UI_Handle m_handle = nullptr;
    xcb_window_t m_window = 0;
};

LV2_Options_Option ScaleOption(const float& scale)
{
    return {LV2_OPTIONS_INSTANCE, 0, kScaleKey, sizeof scale, kFloatKey, &scale};
}

int Scaled(double points, double scale)
{
    return static_cast<int>(std::lround(points * scale));
}

class Ui : public testing::Test {
protected:
    // The services stay loaded, so that the leak checker finds the names of what leaks on purpose.
    static void SetUpTestSuite()
    {
        ASSERT_NE(dlopen(CV_BUILD_DIR "/quillet.lv2/Quillets.bundle/Contents/MacOS/Quillets", RTLD_NOW | RTLD_LOCAL),
                  nullptr);
    }

    void ExpectScale(CLeastHost& host, double scale)
    {
        EXPECT_EQ(host.AskedSize().width, Scaled(kWidth, scale));
        EXPECT_EQ(host.AskedSize().height, Scaled(kHeight, scale));
        ScreenWindow place;
        EXPECT_TRUE(host.ServeUntil([&] {
            place = m_screen.PlaceOf(host.Window()).value_or(ScreenWindow());
            const auto pixel = m_screen.PixelAt(place.x + Scaled(kGroundX, scale), place.y + Scaled(kGroundY, scale));
            return pixel > 0x151515 && pixel < 0x303540;
        })) << "nothing is drawn";
        EXPECT_EQ(place.width, Scaled(kWidth, scale));
        EXPECT_EQ(place.height, Scaled(kHeight, scale));
        m_screen.Click(place.x + Scaled(kInfoX, scale), place.y + Scaled(kInfoY, scale));
        EXPECT_TRUE(host.ServeUntil([this] { return !m_screen.Find(kDialogTitle).empty(); })) << "Info is elsewhere";
    }

    CScreen m_screen{{1024, 768, false, {}}};
};

TEST_F(Ui, DrawsAndListensAtTheScaleThatTheHostGives)
{
    for (const float scale : {1.0F, 1.5F, 2.0F}) {
        SCOPED_TRACE(scale);
        CLeastHost host(m_screen, ScaleOption(scale));
        ExpectScale(host, static_cast<double>(scale));
    }
}

TEST_F(Ui, SenselessScaleIsNone)
{
    constexpr double kWhole = 2.0;
    const LV2_Options_Option ofAnotherType = {LV2_OPTIONS_INSTANCE, 0, kScaleKey, sizeof kWhole, kOtherKey, &kWhole};
    CLeastHost another(m_screen, ofAnotherType);
    EXPECT_EQ(another.AskedSize().width, Scaled(kWidth, 1.0));
    for (const float scale : {0.0F, -2.0F, 1e9F, std::numeric_limits<float>::quiet_NaN()}) {
        SCOPED_TRACE(scale);
        CLeastHost host(m_screen, ScaleOption(scale));
        EXPECT_EQ(host.AskedSize().width, Scaled(kWidth, 1.0));
    }
}

} // namespace
