// tests/examples/PanelTest.cpp
//
// What the pointer does to the example plug-in's knobs and buttons, both ways of dragging.
#include "examples/quillet/Panel.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace quillet;

class Panel : public testing::Test {
protected:
    void Press(Place place) { m_panel.PointerPressed(place, false); }
    void MoveTo(double x, double y, bool fine = false) { m_panel.PointerMoved({x, y}, fine); }
    void Click(Place place)
    {
        MoveTo(place.x, place.y);
        Press(place);
        m_panel.PointerReleased(place);
    }

    DragKind m_users = DragKind::Circular;
    std::vector<float> m_gains;
    std::vector<Button> m_pressed;
    CPanel m_panel{{[this](int knob, float value) {
                        EXPECT_EQ(knob, 0);
                        m_gains.push_back(value);
                    },
                    [this](Button button) { m_pressed.push_back(button); },
                    [this] {
                        return m_users;
                    }}};
    const Place m_gain = m_panel.PlaceOf(0);
};

TEST_F(Panel, VerticalDragUpwardsRaisesTheValue)
{
    m_users = DragKind::Vertical;
    Press(m_gain);
    MoveTo(m_gain.x, m_gain.y - kVerticalTravel / 4);
    ASSERT_FALSE(m_gains.empty());
    EXPECT_NEAR(m_gains.back(), 12.0F, 0.001F);
    MoveTo(m_gain.x + 500, m_gain.y - kVerticalTravel / 4);
    EXPECT_NEAR(m_panel.Value(0), 12.0F, 0.001F); // sideways counts for nothing
}

TEST_F(Panel, VerticalDragThatOvershootsHasToComeBackFirst)
{
    m_users = DragKind::Vertical;
    Press(m_gain);
    MoveTo(m_gain.x, m_gain.y - kVerticalTravel);
    EXPECT_EQ(m_panel.Value(0), 24.0F);
    MoveTo(m_gain.x, m_gain.y - kVerticalTravel / 2);
    EXPECT_NEAR(m_panel.Value(0), 24.0F, 0.001F);
    MoveTo(m_gain.x, m_gain.y);
    EXPECT_NEAR(m_panel.Value(0), 0.0F, 0.001F);
}

TEST_F(Panel, CircularDragFollowsTheAngleWithoutAJump)
{
    Press({m_gain.x + 20, m_gain.y});
    EXPECT_EQ(m_panel.Value(0), 0.0F);
    MoveTo(m_gain.x, m_gain.y + 20); // a quarter of a circle clockwise
    EXPECT_NEAR(m_panel.Value(0), 48.0F * 90.0F / 270.0F, 0.001F);
    MoveTo(m_gain.x, m_gain.y); // the middle has no angle
    EXPECT_NEAR(m_panel.Value(0), 16.0F, 0.001F);
}

TEST_F(Panel, CircularDragOverTheLowestPointGoesOn)
{
    Press({m_gain.x - 1, m_gain.y + 20});
    MoveTo(m_gain.x + 1, m_gain.y + 20); // a little anticlockwise, over the seam of the angles
    EXPECT_LT(m_panel.Value(0), 0.0F);
    EXPECT_GT(m_panel.Value(0), -2.0F);
}

TEST_F(Panel, FineDragGoesATenth)
{
    m_users = DragKind::Vertical;
    Press(m_gain);
    MoveTo(m_gain.x, m_gain.y - kVerticalTravel / 4, true);
    EXPECT_NEAR(m_panel.Value(0), 1.2F, 0.001F);
}

TEST_F(Panel, EveryDragAsksForTheUsersWay)
{
    Press(m_gain);
    m_panel.PointerReleased(m_gain);
    m_users = DragKind::Vertical;
    Press(m_gain);
    MoveTo(m_gain.x, m_gain.y - 20);
    EXPECT_GT(m_panel.Value(0), 0.0F);
}

TEST_F(Panel, DoubleClickSetsTheInitialValue)
{
    m_panel.SetValue(0, 7.0F);
    m_panel.PointerPressed(m_gain, true);
    EXPECT_EQ(m_gains, std::vector<float>{0.0F});
}

TEST_F(Panel, WheelMovesTheKnobBelowThePointer)
{
    m_panel.Scrolled(m_gain, 1, false);
    EXPECT_NEAR(m_panel.Value(0), 0.96F, 0.001F);
    m_panel.Scrolled({0, 0}, 1, false);
    EXPECT_EQ(m_gains.size(), 1U);
}

TEST_F(Panel, HostsEchoDoesNotPullAHeldKnob)
{
    m_users = DragKind::Vertical;
    Press(m_gain);
    MoveTo(m_gain.x, m_gain.y - 20);
    const float held = m_panel.Value(0);
    m_panel.SetValue(0, -10.0F);
    EXPECT_EQ(m_panel.Value(0), held);
    m_panel.PointerReleased(m_gain);
    m_panel.SetValue(0, -10.0F);
    EXPECT_EQ(m_panel.Value(0), -10.0F);
}

TEST_F(Panel, HostsValueIsNotToldBackToIt)
{
    m_panel.SetValue(0, 5.0F);
    EXPECT_TRUE(m_gains.empty());
    EXPECT_EQ(m_panel.Value(0), 5.0F);
}

TEST_F(Panel, ButtonsAreThereOnlyWithTheServices)
{
    for (const Button button : {Button::Logo, Button::Info, Button::Help})
        Click(CPanel::PlaceOf(button));
    EXPECT_TRUE(m_pressed.empty());
    m_panel.OfferServices(true);
    for (const Button button : {Button::Logo, Button::Info, Button::Help})
        Click(CPanel::PlaceOf(button));
    EXPECT_EQ(m_pressed, (std::vector<Button>{Button::Logo, Button::Info, Button::Help}));
}

TEST_F(Panel, ButtonLetGoElsewhereIsNotPressed)
{
    m_panel.OfferServices(true);
    Press(CPanel::PlaceOf(Button::Info));
    m_panel.PointerReleased(CPanel::PlaceOf(Button::Help));
    EXPECT_TRUE(m_pressed.empty());
}

TEST_F(Panel, DrawsItselfAndIsFreshThen)
{
    cairo_surface_t* const surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, CPanel::kWidth, CPanel::kHeight);
    cairo_t* const cairo = cairo_create(surface);
    EXPECT_TRUE(m_panel.IsStale());
    m_panel.Draw(cairo);
    EXPECT_EQ(cairo_status(cairo), CAIRO_STATUS_SUCCESS);
    EXPECT_FALSE(m_panel.IsStale());
    MoveTo(0, 0);
    EXPECT_FALSE(m_panel.IsStale()); // nothing there lights up
    MoveTo(m_gain.x, m_gain.y);
    EXPECT_TRUE(m_panel.IsStale());
    cairo_destroy(cairo);
    cairo_surface_destroy(surface);
}

} // namespace
