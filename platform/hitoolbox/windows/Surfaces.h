// platform/hitoolbox/windows/Surfaces.h
//
// Keeps the screen in step with the windows' records. Records change on any thread and at once; the
// screen follows on the event-loop thread.
#pragma once

#include "platform/hitoolbox/windows/Window.h"

namespace Surfaces {

/// Notes that a window is to be shown, hidden, selected, titled or owned anew. With the lock held.
void Changed(CWindow& window);
/// Notes that a window looks different. With the lock held.
void Touched(CWindow& window) noexcept;
/// Notes that a surface's window is gone. With the lock held.
void Abandon(CWindow& window);
/// Brings the screen up to date, but for drawing; on another thread has the loop do so. Without
/// the lock.
void Sync();
/// Does the same, and draws what is to be drawn. Event-loop thread, without the lock.
void SyncAndPaint();
/// Answers the window of a surface; null for none. With the lock held.
CWindow* WindowOf(SurfaceId surface) noexcept;

} // namespace Surfaces
