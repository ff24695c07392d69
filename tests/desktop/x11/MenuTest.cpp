// tests/desktop/x11/MenuTest.cpp
//
// The menu of a pop-up button on the screen: chosen from as people do, closed by whatever takes the
// user elsewhere, and never left behind. Nothing is grabbed, so what happens outside of our windows
// is known only by what it does to them.
#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>

#include "tests/support/Desk.h"

namespace {

using testing::AllOf;
using testing::Ge;
using testing::Le;

constexpr std::uint32_t kUpKey = 0xFF52, kDownKey = 0xFF54;
constexpr int kWheelUp = 4, kWheelDown = 5;
constexpr int kRowHeight = 22, kBorder = 4; // of a menu, in points
constexpr int kMostRows = 20;

/// The window of tests/data/windows/Popup.nib on a screen.
class CPopup {
public:
    explicit CPopup(CScreen& screen, const char* nib = "Popup")
        : m_screen(screen), m_window(BuildWindow(Bundle(), nib, "Popup"))
    {
        static constexpr EventTypeSpec kType = {kEventClassCommand, kEventCommandProcess};
        const auto count = [](EventHandlerCallRef, EventRef, void* picked) -> OSStatus {
            ++*static_cast<int*>(picked);
            return noErr;
        };
        (void)InstallWindowEventHandler(m_window, count, 1, &kType, &m_picked, nullptr);
        m_screen.MoveTo(0, 0); // nothing is hovered
        ShowWindow(m_window);
        SelectWindow(m_window);
        m_shown = ActiveOn(m_screen, m_window);
    }
    ~CPopup()
    {
        if (IsValidWindowPtr(m_window))
            DisposeWindow(m_window);
        (void)ServeUntil([this] { return !m_screen.PlaceOf(m_shown.id); });
    }
    CPopup(const CPopup&) = delete;
    CPopup& operator=(const CPopup&) = delete;

    WindowRef Window() const { return m_window; }
    ScreenWindow Shown() const { return *m_screen.PlaceOf(m_shown.id); }
    ControlRef Control(OSType signature = 'POPU') const
    {
        const ControlID id = {signature, 0};
        ControlRef control = nullptr;
        EXPECT_EQ(GetControlByID(m_window, &id, &control), noErr);
        return control;
    }
    SInt32 Value(OSType signature = 'POPU') const { return GetControl32BitValue(Control(signature)); }
    int Picked() const { return m_picked; }

    /// The menu's window: ours, and no business of the window manager's.
    std::optional<ScreenWindow> Menu() const
    {
        for (const ScreenWindow& window : m_screen.Find("")) {
            if (m_screen.BytesOf(window.id, "WM_CLASS").find("Corvane") != std::string::npos &&
                !m_screen.HasProperty(window.id, "WM_STATE") && window.id != m_shown.id)
                return window;
        }
        return std::nullopt;
    }
    bool HasMenu(bool wanted = true) const
    {
        return ServeUntil([&] { return Menu().has_value() == wanted; });
    }
    /// Clicks on the button; the menu stays.
    ScreenWindow Open() const
    {
        ClickOn(m_screen, Control());
        EXPECT_TRUE(HasMenu());
        return Menu().value_or(ScreenWindow());
    }
    /// The middle of a row of the menu, counted from 1.
    ScreenSpot Row(int row) const
    {
        const ScreenWindow menu = Menu().value();
        return {menu.x + menu.width / 2, menu.y + kBorder + (row - 1) * kRowHeight + kRowHeight / 2};
    }
    void MoveToRow(int row) const
    {
        const ScreenSpot spot = Row(row);
        m_screen.MoveTo(spot.x, spot.y);
    }
    void ClickOnRow(int row) const
    {
        const ScreenSpot spot = Row(row);
        m_screen.Click(spot.x, spot.y);
    }
    bool Becomes(SInt32 value) const
    {
        return ServeUntil([&] { return Value() == value; });
    }
    /// What the button shows.
    ScreenImage Look() const
    {
        const ScreenSpot middle = MiddleOn(m_screen, Control());
        return m_screen.Look(middle.x - 60, middle.y - 10, 120, 20);
    }
    /// Has the window stand elsewhere, by its content's top left.
    void MoveBy(int right, int down) const
    {
        const ScreenWindow before = Shown();
        m_screen.MoveWindow(m_shown.id, before.x + right, before.y + down);
        EXPECT_TRUE(ServeUntil([&] { return Shown().x != before.x || Shown().y != before.y; }));
    }

private:
    static CFBundleRef Bundle()
    {
        static const CDataBundle& bundle = *new CDataBundle("windows");
        static const bool done = AddLongMenu(bundle.Path() + "/Contents/Resources/");
        EXPECT_TRUE(done);
        return bundle.Get();
    }
    // The same window with a menu of more items than are shown at a time.
    static bool AddLongMenu(const std::string& resources)
    {
        std::string text = ReadFile(resources + "Popup.nib/objects.xib");
        const std::string last = "<string name=\"title\">Horizontal</string>\n                </object>";
        const std::size_t place = text.find(last);
        std::string items;
        for (int item = 4; item <= 3 * kMostRows; ++item)
            items += "<object class=\"IBCarbonMenuItem\" id=\"" + std::to_string(100 + item) +
                     "\"><string name=\"title\">Item " + std::to_string(item) + "</string></object>";
        text.insert(place + last.size(), items);
        const std::string count = "<array count=\"3\" name=\"items\">";
        text.replace(text.find(count), count.size(),
                     "<array count=\"" + std::to_string(3 * kMostRows) + "\" name=\"items\">");
        std::filesystem::create_directory(resources + "Long.nib");
        WriteFile(resources + "Long.nib/objects.xib", text);
        return place != std::string::npos;
    }

    CScreen& m_screen;
    WindowRef m_window;
    ScreenWindow m_shown;
    int m_picked = 0;
};

class Menus : public testing::Test {
protected:
    CScreen& m_screen = TheScreen();
    const CPopup m_popup{m_screen};
};

class LongMenus : public testing::Test {
protected:
    CScreen& m_screen = TheScreen();
    const CPopup m_popup{m_screen, "Long"};
};

TEST_F(Menus, PressDragAndReleaseChoose)
{
    const ScreenSpot button = MiddleOn(m_screen, m_popup.Control());
    m_screen.MoveTo(button.x, button.y);
    m_screen.Press(true);
    ASSERT_TRUE(m_popup.HasMenu());
    m_popup.MoveToRow(3);
    m_popup.MoveToRow(2);
    m_screen.Press(false);
    EXPECT_TRUE(m_popup.Becomes(2));
    EXPECT_TRUE(m_popup.HasMenu(false));
    EXPECT_EQ(m_popup.Picked(), 1);
    EXPECT_EQ(m_popup.Value('BELO'), 0);
}

TEST_F(Menus, ClickAndClickChooseAndTheButtonShowsIt)
{
    const ScreenImage before = m_popup.Look();
    (void)m_popup.Open();
    m_popup.ClickOnRow(3);
    EXPECT_TRUE(m_popup.Becomes(3));
    EXPECT_TRUE(m_popup.HasMenu(false));
    EXPECT_EQ(m_popup.Picked(), 1);
    m_screen.MoveTo(0, 0);
    EXPECT_TRUE(ServeUntil([&] { return m_popup.Look().pixels != before.pixels; }));
    const ScreenImage third = m_popup.Look();
    (void)m_popup.Open();
    m_popup.ClickOnRow(1);
    EXPECT_TRUE(m_popup.Becomes(1));
    m_screen.MoveTo(0, 0);
    EXPECT_TRUE(ServeUntil([&] { return m_popup.Look().pixels == before.pixels; }));
    EXPECT_NE(third.pixels, before.pixels);
}

TEST_F(Menus, KeysChooseAndEscapeLeaves)
{
    ASSERT_EQ(SetKeyboardFocus(m_popup.Window(), m_popup.Control(), kControlIndicatorPart), noErr);
    m_screen.Tap(' ');
    ASSERT_TRUE(m_popup.HasMenu());
    m_screen.Tap(kDownKey);
    m_screen.Tap(kDownKey);
    m_screen.Tap(kUpKey);
    m_screen.Tap(kReturnKey);
    EXPECT_TRUE(m_popup.Becomes(2));
    EXPECT_TRUE(m_popup.HasMenu(false));
    m_screen.Tap(' ');
    ASSERT_TRUE(m_popup.HasMenu());
    m_screen.Tap(kHomeKey);
    m_screen.Tap(kEscapeKey);
    EXPECT_TRUE(m_popup.HasMenu(false));
    EXPECT_EQ(m_popup.Value(), 2);
    EXPECT_EQ(m_popup.Picked(), 1);
}

TEST_F(Menus, ClickInItsWindowOnlyClosesIt)
{
    const ScreenWindow menu = m_popup.Open();
    ClickOn(m_screen, m_popup.Control('BESI'));
    EXPECT_TRUE(m_popup.HasMenu(false));
    EXPECT_FALSE(m_screen.PlaceOf(menu.id)) << "its window is still there, unseen";
    EXPECT_EQ(m_popup.Value('BESI'), 0);
    ClickOn(m_screen, m_popup.Control('BESI'));
    EXPECT_TRUE(ServeUntil([&] { return m_popup.Value('BESI') == 1; }));
    (void)m_popup.Open();
    ClickOn(m_screen, m_popup.Control());
    EXPECT_TRUE(m_popup.HasMenu(false)) << "the button opens it anew";
    EXPECT_EQ(m_popup.Picked(), 0);
}

TEST_F(Menus, OtherWindowClosesIt)
{
    const xcb_window_t other = m_screen.MakeWindow(700, 500, 200, 100, "Other");
    ASSERT_TRUE(ServeUntil([&] { return m_screen.PropertyOf(other, "WM_STATE") != 0; }));
    SelectWindow(m_popup.Window());
    (void)ActiveOn(m_screen, m_popup.Window());
    (void)m_popup.Open();
    const ScreenWindow place = *m_screen.PlaceOf(other);
    m_screen.Click(place.x + 20, place.y + 20);
    EXPECT_TRUE(m_popup.HasMenu(false));
    m_screen.DestroyWindow(other);
}

TEST_F(Menus, GrabbedKeyboardClosesIt)
{
    // As a window manager does for a menu of its own; the window itself stays the active one.
    (void)m_popup.Open();
    const auto asked = xcb_grab_keyboard(m_screen.Connection(), 0, m_screen.Root(), XCB_CURRENT_TIME,
                                         XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    free(xcb_grab_keyboard_reply(m_screen.Connection(), asked, nullptr));
    EXPECT_TRUE(m_popup.HasMenu(false));
    EXPECT_TRUE(IsWindowActive(m_popup.Window()));
    xcb_ungrab_keyboard(m_screen.Connection(), XCB_CURRENT_TIME);
    m_screen.Sync();
}

TEST_F(Menus, MovedWindowLeavesNoMenuWhereItWas)
{
    (void)m_popup.Open();
    m_popup.MoveBy(60, 40);
    EXPECT_TRUE(m_popup.HasMenu(false));
    const ScreenWindow menu = m_popup.Open();
    const ScreenSpot button = MiddleOn(m_screen, m_popup.Control());
    EXPECT_THAT(menu.x, AllOf(Ge(button.x - 60), Le(button.x)));
    EXPECT_THAT(menu.y, AllOf(Ge(button.y + 10), Le(button.y + 20)));
    m_screen.Tap(kEscapeKey);
    EXPECT_TRUE(m_popup.HasMenu(false));
}

TEST_F(Menus, DraggedTitleBarClosesIt)
{
    (void)m_popup.Open();
    const ScreenWindow shown = m_popup.Shown();
    m_screen.MoveTo(shown.x + 150, shown.y - 8);
    m_screen.Press(true);
    bool there = false;
    EXPECT_TRUE(ServeUntil([&] { // to and fro, until the manager has begun to move it
        there = !there;
        m_screen.MoveTo(shown.x + 150 + (there ? 40 : 20), shown.y + 30);
        return !m_popup.Menu();
    }));
    m_screen.Press(false);
}

TEST_F(Menus, StaysOnTheScreenAndOffItsButton)
{
    constexpr int kWidth = 1024, kHeight = 768;
    const ScreenWindow first = m_popup.Shown();
    const struct {
        int x, y; // the content's top left
    } kPlaces[] = {{-60, -10}, {kWidth - 100, 100}, {100, kHeight - 60}, {kWidth - 90, kHeight - 50}};
    for (const auto& [x, y] : kPlaces) {
        SCOPED_TRACE(testing::Message() << x << "," << y);
        const ScreenWindow before = m_popup.Shown();
        m_popup.MoveBy(x - before.x, y - before.y);
        const ScreenWindow menu = m_popup.Open();
        EXPECT_GE(menu.x, 0);
        EXPECT_GE(menu.y, 0);
        EXPECT_LE(menu.x + menu.width, kWidth);
        EXPECT_LE(menu.y + menu.height, kHeight);
        const ScreenSpot button = MiddleOn(m_screen, m_popup.Control());
        EXPECT_TRUE(menu.y > button.y || menu.y + menu.height <= button.y) << menu.y << " over the button " << button.y;
        m_popup.ClickOnRow(2);
        EXPECT_TRUE(m_popup.Becomes(2));
        EXPECT_TRUE(m_popup.HasMenu(false));
        SetControl32BitValue(m_popup.Control(), 1);
    }
    m_popup.MoveBy(first.x - m_popup.Shown().x, first.y - m_popup.Shown().y);
}

TEST_F(Menus, WheelStepsAClosedButton)
{
    ClickOn(m_screen, m_popup.Control(), kWheelDown);
    ClickOn(m_screen, m_popup.Control(), kWheelDown);
    EXPECT_TRUE(m_popup.Becomes(3));
    ClickOn(m_screen, m_popup.Control(), kWheelUp);
    EXPECT_TRUE(m_popup.Becomes(2));
    EXPECT_FALSE(m_popup.Menu());
}

TEST_F(LongMenus, WheelScrollsUnderThePointer)
{
    const ScreenWindow menu = m_popup.Open();
    EXPECT_EQ(menu.height, kMostRows * kRowHeight + 2 * kBorder);
    m_popup.MoveToRow(5);
    const ScreenSpot row = m_popup.Row(5);
    for (int step = 0; step < 3; ++step)
        m_screen.Click(row.x, row.y, kWheelDown);
    m_screen.Tap(kReturnKey); // takes what is highlighted: the pointer has not moved since
    EXPECT_TRUE(m_popup.Becomes(8)) << m_popup.Value();
    EXPECT_TRUE(m_popup.HasMenu(false));
    (void)m_popup.Open();
    for (int step = 0; step < 3 * kMostRows; ++step)
        m_screen.Click(row.x, row.y, kWheelDown);
    m_popup.ClickOnRow(kMostRows);
    EXPECT_TRUE(m_popup.Becomes(3 * kMostRows)) << m_popup.Value();
    EXPECT_TRUE(m_popup.HasMenu(false));
}

TEST_F(LongMenus, KeysScroll)
{
    (void)m_popup.Open();
    m_screen.Tap(kEndKey);
    m_screen.Tap(kReturnKey);
    EXPECT_TRUE(m_popup.Becomes(3 * kMostRows));
    EXPECT_TRUE(m_popup.HasMenu(false));
}

TEST_F(Menus, WindowThatGoesTakesItAlong)
{
    ScreenWindow menu = m_popup.Open();
    HideWindow(m_popup.Window());
    EXPECT_TRUE(ServeUntil([&] { return !m_screen.PlaceOf(menu.id); }));
    ShowWindow(m_popup.Window());
    SelectWindow(m_popup.Window());
    (void)ActiveOn(m_screen, m_popup.Window());
    menu = m_popup.Open();
    m_screen.Close(m_popup.Shown().id); // as the manager's button does
    EXPECT_TRUE(ServeUntil([&] { return !IsValidWindowPtr(m_popup.Window()); }));
    EXPECT_TRUE(ServeUntil([&] { return !m_screen.PlaceOf(menu.id); }));
}

TEST_F(Menus, AlertTakesItAway)
{
    const ScreenWindow menu = m_popup.Open();
    DialogRef alert = nullptr;
    ASSERT_EQ(CreateStandardAlert(kAlertNoteAlert, CFSTR("Alert"), nullptr, nullptr, &alert), noErr);
    ShowWindow(GetDialogWindow(alert));
    EXPECT_TRUE(ServeUntil([&] { return !m_screen.PlaceOf(menu.id); }));
    DisposeDialog(alert);
}

TEST_F(Menus, ForeignParentThatGoesTakesItAlong)
{
    const xcb_window_t host = m_screen.MakeWindow(200, 150, 600, 500, "Host");
    ASSERT_TRUE(ServeUntil([&] { return m_screen.PropertyOf(host, "WM_STATE") != 0; }));
    WindowRef parent = nullptr;
    ASSERT_EQ(CVCreateForeignWindow(host, &parent), noErr);
    HideWindow(m_popup.Window());
    ASSERT_EQ(SetWindowModality(m_popup.Window(), kWindowModalityWindowModal, parent), noErr);
    ShowWindow(m_popup.Window());
    SelectWindow(m_popup.Window());
    (void)ActiveOn(m_screen, m_popup.Window());
    const ScreenWindow menu = m_popup.Open();
    m_screen.DestroyWindow(host);
    EXPECT_TRUE(ServeUntil([&] { return !IsValidWindowPtr(m_popup.Window()); }));
    EXPECT_TRUE(ServeUntil([&] { return !m_screen.PlaceOf(menu.id); }));
    DisposeWindow(parent);
}

TEST_F(Menus, OneDestroyedByOthersIsForgotten)
{
    m_screen.DestroyWindow(m_popup.Open().id);
    ASSERT_TRUE(ServeUntil([&] { return !m_popup.Menu(); }));
    (void)ServeUntil([] { return true; });
    ClickOn(m_screen, m_popup.Control('BESI'));
    EXPECT_TRUE(ServeUntil([&] { return m_popup.Value('BESI') == 1; })) << "it still takes the input";
}

} // namespace
