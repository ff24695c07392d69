// tests/hitoolbox/ChoiceTest.cpp
//
// Controls that choose one of several things, used by mouse and keys as people do: the menu of a
// pop-up button, and radio groups. The menu lies over the check box below its button, which shows
// whether it is open: a click there is the menu's or the box's.
#include <gtest/gtest.h>

#include "tests/support/Toolbox.h"

namespace {

constexpr UInt32 kUpKey = 0xFF52;
constexpr UInt32 kDownKey = 0xFF54;

class Choice : public testing::Test {
protected:
    Choice() : m_bundle("windows")
    {
        UseHeadlessDesktop();
        m_window = BuildWindow(m_bundle.Get(), "Popup", "Popup");
        ShowWindow(m_window);
        SelectWindow(m_window);
        Pump();
        static const EventTypeSpec kType = {kEventClassCommand, kEventCommandProcess};
        const auto count = [](EventHandlerCallRef, EventRef, void* picked) -> OSStatus {
            ++*static_cast<int*>(picked);
            return noErr;
        };
        (void)InstallWindowEventHandler(m_window, count, 1, &kType, &m_picked, nullptr);
    }
    ~Choice() override { DisposeWindow(m_window); }

    ControlRef Control(OSType signature) const
    {
        const ControlID id = {signature, 0};
        ControlRef control = nullptr;
        EXPECT_EQ(GetControlByID(m_window, &id, &control), noErr);
        return control;
    }
    SInt32 Value(OSType signature = 'POPU') const { return GetControl32BitValue(Control(signature)); }
    // Rows are 22 points high, from 8 points below the button.
    static double RowAt(int item) { return 48 + (item - 0.5) * 22; }
    // A click at the box below is the box's only where no menu is open.
    bool IsOpen() const
    {
        const SInt32 box = Value('BELO');
        ClickAt(m_window, 60, RowAt(1));
        return Value('BELO') == box;
    }

    const CDataBundle m_bundle;
    WindowRef m_window = nullptr;
    int m_picked = 0;
};

class Menu : public Choice {};

class RadioGroup : public Choice {
protected:
    // The titles of the buttons that are on.
    std::string Chosen() const
    {
        std::string titles;
        for (ControlRef button = HIViewGetFirstSubview(Control('GROU')); button; button = HIViewGetNextView(button)) {
            CFStringRef title = nullptr;
            (void)CopyControlTitleAsCFString(button, &title);
            titles += GetControl32BitValue(button) != 0 ? TextOf(title) : "";
            CFRelease(title);
        }
        return titles;
    }
};

TEST_F(Menu, StaysOpenAfterAClickAndTakesTheNextOne)
{
    ClickOn(Control('POPU'));
    EXPECT_EQ(m_picked, 0);
    MoveTo(m_window, 60, RowAt(3));
    ClickAt(m_window, 60, RowAt(3));
    EXPECT_EQ(Value(), 3);
    EXPECT_EQ(m_picked, 1);
    EXPECT_FALSE(IsOpen());
}

TEST_F(Menu, ChoosesByPressingDraggingAndReleasing)
{
    PressAt(m_window, 60, 30);
    MoveTo(m_window, 60, RowAt(1));
    MoveTo(m_window, 60, RowAt(2));
    ReleaseAt(m_window, 60, RowAt(2));
    EXPECT_EQ(Value(), 2);
    EXPECT_EQ(m_picked, 1);
    EXPECT_EQ(Value('BELO'), 0);
}

TEST_F(Menu, ChoosesByKeys)
{
    ASSERT_EQ(SetKeyboardFocus(m_window, Control('POPU'), kControlIndicatorPart), noErr);
    PressKey(' ');
    PressKey(kDownKey);
    PressKey(kDownKey);
    EXPECT_EQ(Value(), 1); // until it is chosen
    PressKey(kDownKey);    // there are no more
    PressKey(kReturnKey);
    EXPECT_EQ(Value(), 3);
    PressKey(' ');
    PressKey(kUpKey);
    PressKey(' ');
    EXPECT_EQ(Value(), 2);
    EXPECT_EQ(m_picked, 2);
}

TEST_F(Menu, EscapeAndAClickElsewhereChangeNothing)
{
    ClickOn(Control('POPU'));
    MoveTo(m_window, 60, RowAt(3));
    PressKey(kEscapeKey);
    EXPECT_FALSE(IsOpen());
    ClickOn(Control('POPU'));
    ClickOn(Control('BESI')); // closes the menu and does nothing else
    EXPECT_EQ(Value('BESI'), 0);
    ClickOn(Control('BESI'));
    EXPECT_EQ(Value('BESI'), 1);
    EXPECT_EQ(Value(), 1);
    EXPECT_EQ(m_picked, 0);
}

TEST_F(Menu, ClosesWhereItsButtonGoes)
{
    ClickOn(Control('POPU'));
    HideControl(Control('POPU'));
    EXPECT_FALSE(IsOpen());
    ShowControl(Control('POPU'));
    ClickOn(Control('POPU'));
    const WindowRef other = BuildWindow(m_bundle.Get(), "Popup", "Popup");
    ShowWindow(other);
    SelectWindow(other); // takes the keyboard
    Pump();
    DisposeWindow(other);
    SelectWindow(m_window);
    Pump();
    EXPECT_FALSE(IsOpen());
    ClickOn(Control('POPU'));
    DisposeWindow(m_window);
    Pump();
}

TEST_F(Menu, OpensForNoDisabledButton)
{
    DisableControl(Control('POPU'));
    ClickOn(Control('POPU'));
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(Value(), 1);
}

TEST_F(RadioGroup, TellsTheButtonChosenAsItsValue)
{
    EXPECT_EQ(Chosen(), "b1");
    EXPECT_EQ(Value('GROU'), 3); // row 1 of column 2
    ClickAt(m_window, 30, 150);  // row 2 of column 1
    EXPECT_EQ(Chosen(), "a2");
    EXPECT_EQ(Value('GROU'), 2);
    EXPECT_EQ(m_picked, 1); // the group's own command, once
    ClickAt(m_window, 30, 150);
    EXPECT_EQ(Chosen(), "a2");
}

TEST_F(RadioGroup, ShowsTheValueThatItIsGiven)
{
    SetControl32BitValue(Control('GROU'), 4);
    EXPECT_EQ(Chosen(), "b2");
    SetControl32BitValue(Control('GROU'), 99);
    EXPECT_EQ(Value('GROU'), 4);
    EXPECT_EQ(m_picked, 0);
    DisableControl(Control('GROU'));
    ClickAt(m_window, 30, 130);
    EXPECT_EQ(Chosen(), "b2");
}

} // namespace
