// tests/ui/HeadlessHands.cpp
//
// Hands on the desktop in memory, where all arrives with the next pump.
#include <cstdlib>

#include "tests/support/Toolbox.h"
#include "tests/ui/Hands.h"

void Hands::Begin()
{
    UseHeadlessDesktop();
    setenv("CV_DESKTOP", "headless", 1); // for programs that are started
}

void Hands::Await(WindowRef window)
{
    Pump();
    if (!IsWindowVisible(window) || !IsWindowActive(window))
        throw std::runtime_error("not shown");
}

void Hands::BringUp(WindowRef window)
{
    SelectWindow(window);
    Pump();
}

void Hands::Click(ControlRef control)
{
    ClickOn(control);
}

void Hands::Hover(ControlRef control)
{
    const Point middle = MiddleOf(control);
    MoveTo(GetControlOwner(control), middle.h, middle.v);
}

void Hands::HoverGround(WindowRef window)
{
    MoveTo(window, 2, 2);
}

void Hands::Tap(UInt32 symbol)
{
    PressKey(symbol);
}

void Hands::Close(WindowRef window)
{
    (void)CVPostCloseRequest(window);
    Pump();
}

bool Hands::Until(const std::function<bool()>& condition)
{
    Pump();
    return condition();
}

void Hands::Settle()
{
    Pump();
}
