// platform/hitoolbox/windows/Focus.h
//
// Which control has the keyboard. With the lock held.
#pragma once

#include "platform/hitoolbox/windows/Window.h"

namespace Focus {

/// Whether the Tab key stops at a control now.
bool CanHave(const CControl& control) noexcept;
/// Gives a control of the window the keyboard; null takes it away.
void Give(CWindow& window, CControl* control) noexcept;
/// Gives the keyboard to the next control in the order of the tree, or the one before; around the
/// end. Edit text that is reached so has all its text selected.
/// @return false when there is none.
bool Advance(CWindow& window, bool backwards);

} // namespace Focus

/// The target that stands for the focused control of the active window.
CTarget& UserFocusTarget();
