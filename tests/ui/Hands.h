// tests/ui/Hands.h
//
// Using a window, the same in memory and on a screen: a test program links one of HeadlessHands.cpp
// and ScreenHands.cpp. What is done here arrives some time later; Until waits for it.
#pragma once

#include <Carbon/Carbon.h>

#include <functional>

namespace Hands {

/// Gets the desktop ready; once, before the first window.
void Begin();
/// Waits until a window stands where people see it and has the keyboard. Throws when it does not.
void Await(WindowRef window);
/// Brings a window to the front as the user does who chooses it from a list.
void BringUp(WindowRef window);
void Click(ControlRef control);
void Hover(ControlRef control);
/// Moves the pointer to where a window has no control.
void HoverGround(WindowRef window);
void Tap(UInt32 symbol);
/// Closes a window as its close box does.
void Close(WindowRef window);
/// Serves the windows until `condition` holds; false where it does not come to.
bool Until(const std::function<bool()>& condition);
/// Serves the windows until all that was done has arrived.
void Settle();

} // namespace Hands
