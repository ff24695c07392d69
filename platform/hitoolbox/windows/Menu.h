// platform/hitoolbox/windows/Menu.h
//
// The menu of a pop-up button: a list on a surface of its own, below the button. While it is open
// it takes the input of all our windows; nothing is grabbed from other programs, so a click there
// closes it by what it does to the button's window: that loses the keyboard, or moves. Event-loop
// thread, without the lock.
#pragma once

#include "platform/desktop/IDesktop.h"
#include "platform/hitoolbox/windows/Control.h"

namespace Menu {

/// Opens the menu of a pop-up button whose window is on the screen.
/// @return false where there is nothing to choose from or no surface to be had.
bool Open(ControlRef button);
/// Closes the menu when its button cannot be used any more, and draws it where it changed.
void Update();

// Each answers whether a menu is open and so has taken the input.
bool TakeMove(const PointerInput& input);
bool TakePress(const PointerInput& input);
bool TakeRelease(const PointerInput& input, UInt32 modifiers);
bool TakeScroll(const PointerInput& input, double y);
bool TakeKey(const KeyInput& input, UInt32 modifiers);

/// Closes the menu if a surface, which lost the keyboard, is that of its button; 0 closes any.
void TakeFocusLoss(SurfaceId surface);
/// Closes the menu if a surface that is lost is its own.
void TakeLoss(SurfaceId surface);
/// Draws the menu anew if the surface is its own.
void TakeExposure(SurfaceId surface);

} // namespace Menu
