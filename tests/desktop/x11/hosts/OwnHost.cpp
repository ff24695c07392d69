// tests/desktop/x11/hosts/OwnHost.cpp
//
// A program that runs the toolbox's own loop.
#include "tests/desktop/x11/hosts/Host.h"

int main(int, char** words)
{
    CHost host(words[1], QuitApplicationEventLoop);
    EventLoopTimerRef timer = nullptr;
    (void)InstallEventLoopTimer(
        GetMainEventLoop(), 0.02, 0.02, [](EventLoopTimerRef, void* self) { static_cast<CHost*>(self)->Tick(); }, &host,
        &timer);
    RunApplicationEventLoop();
    return 0;
}
