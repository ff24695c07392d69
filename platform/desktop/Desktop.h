// platform/desktop/Desktop.h
//
// Which desktop the process has: the headless one where somebody asks for it, else that of the
// module beside the layer's library. Opened when the first window needs it.
#pragma once

#include "platform/desktop/IDesktop.h"

namespace Desktop {

/// Answers the process's desktop, opening it at the first call; null where there is none. A failed
/// opening is tried again at the next call. Event-loop thread.
IDesktop* Open(IInputSink& sink);
/// Answers the open desktop, or null. Any thread.
IDesktop* Current() noexcept;
/// Answers what an event loop waits on: the open desktop, or else an idle one that has no surfaces.
/// Any thread.
IDesktop& ForLoop() noexcept;
/// Makes the headless desktop the one to open.
/// @return false when another one is open already.
bool ChooseHeadless() noexcept;
/// Whether the headless desktop is chosen, by ChooseHeadless or by CV_DESKTOP=headless.
bool IsHeadless() noexcept;

} // namespace Desktop
