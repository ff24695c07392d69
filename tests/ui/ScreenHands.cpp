// tests/ui/ScreenHands.cpp
//
// Hands on a virtual screen with a window manager: real input, which takes its way through both.
#include "tests/support/Desk.h"
#include "tests/ui/Hands.h"

void Hands::Begin()
{
    (void)TheScreen();
}

void Hands::Await(WindowRef window)
{
    (void)ActiveOn(TheScreen(), window);
}

void Hands::BringUp(WindowRef window)
{
    SelectWindow(window);
    Await(window);
}

void Hands::Click(ControlRef control)
{
    ClickOn(TheScreen(), control);
}

void Hands::Hover(ControlRef control)
{
    const ScreenSpot spot = MiddleOn(TheScreen(), control);
    TheScreen().MoveTo(spot.x, spot.y);
}

void Hands::HoverGround(WindowRef window)
{
    const ScreenWindow shown = ShownOn(TheScreen(), window);
    TheScreen().MoveTo(shown.x + 2, shown.y + 2);
}

void Hands::Tap(UInt32 symbol)
{
    TheScreen().Tap(symbol);
}

void Hands::Close(WindowRef window)
{
    TheScreen().Close(ShownOn(TheScreen(), window).id);
}

bool Hands::Until(const std::function<bool()>& condition)
{
    return ServeUntil(condition);
}

void Hands::Settle()
{
    constexpr double kLongEnough = 0.1; // for what ought not to come, which nothing can be asked about
    (void)ServeUntil([] { return false; }, kLongEnough);
}
