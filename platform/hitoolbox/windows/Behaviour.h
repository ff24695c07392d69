// platform/hitoolbox/windows/Behaviour.h
//
// What clicks and keys do to controls other than edit text.
#pragma once

#include "platform/hitoolbox/windows/Window.h"

enum class Simulated { No, Yes };

/// Whether a click on a control means anything, now or when it is enabled. With the lock held.
bool TakesClicks(const CControl& control) noexcept;
/// Sets a slider's value by a place in its window, in points. With the lock held.
void SlideTo(CControl& slider, double x, double y) noexcept;
/// Answers whether a slider, separator or progress bar stands upright. With the lock held.
bool IsVertical(const CControl& control) noexcept;

/// Does what a click does: changes the value, then sends the hit and the command. Without the lock.
/// @param part  0 for the control's own part.
/// @return the part; 0 where the control takes no click now.
ControlPartCode Click(ControlRef control, ControlPartCode part, UInt32 modifiers, Simulated simulated);
/// Gives a pop-up button the item that was chosen from its menu and sends the hit. Without the lock.
void ChooseItem(ControlRef control, SInt32 item, UInt32 modifiers);
/// Moves the value of what has steps (slider, pop-up button, radio buttons) and sends the hit.
/// Without the lock.
/// @return false where the control has no steps.
bool Step(ControlRef control, int steps, UInt32 modifiers);
