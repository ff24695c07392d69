// bench/windows/OurLoop.cpp
//
// Our own event loop, run for a while.
#include <Carbon/Carbon.h>

#include "bench/windows/Peer.h"

void RunLoop(double seconds)
{
    EventLoopTimerRef timer = nullptr;
    (void)InstallEventLoopTimer(
        GetMainEventLoop(), seconds, 0, [](EventLoopTimerRef, void*) { QuitApplicationEventLoop(); }, nullptr, &timer);
    RunApplicationEventLoop();
}
