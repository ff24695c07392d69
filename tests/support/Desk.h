// tests/support/Desk.h
//
// Windows of ours on a screen of the test process's own, used by real input.
#pragma once

#include "tests/support/Screen.h"
#include "tests/support/Toolbox.h"

/// The process's screen, with a window manager; started at the first call, before which no window
/// may have been made, and ended with the process.
CScreen& TheScreen();

/// Serves our windows until `condition` holds, at most `seconds`.
bool ServeUntil(const std::function<bool()>& condition, double seconds = 30.0);

/// Serves our windows until one is shown and the window manager has placed it; finds it by its title.
/// Throws when it does not appear.
ScreenWindow ShownOn(const CScreen& screen, WindowRef window);
/// Serves our windows until a shown one has the keyboard. Throws when it does not get it.
ScreenWindow ActiveOn(const CScreen& screen, WindowRef window);

/// Where a control's middle is on the screen.
struct ScreenSpot {
    int x, y;
};
ScreenSpot MiddleOn(const CScreen& screen, ControlRef control);
/// Clicks on a control's middle; what comes of it is served later.
void ClickOn(const CScreen& screen, ControlRef control, int button = 1);

/// Presses the keys that type a text of the keyboard's first layout.
void TypeOn(const CScreen& screen, const std::string& ascii);
