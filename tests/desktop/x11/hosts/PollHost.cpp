// tests/desktop/x11/hosts/PollHost.cpp
//
// A program with a loop of its own, which watches one descriptor and waits for nothing else.
#include <poll.h>

#include "tests/desktop/x11/hosts/Host.h"

int main(int, char** words)
{
    bool runs = true;
    CHost host(words[1], [&runs] { runs = false; });
    EventLoopTimerRef timer = nullptr; // all that a loop can offer which an alert does not return to
    (void)InstallEventLoopTimer(
        GetMainEventLoop(), 0.02, 0.02, [](EventLoopTimerRef, void* self) { static_cast<CHost*>(self)->Tick(); }, &host,
        &timer);
    int idle = 0;
    while (runs) {
        pollfd wait = {CVGetDescriptor(), POLLIN, 0};
        if (poll(&wait, 1, -1) < 0 || CVPump() != noErr)
            return 1;
        // A descriptor that is readable with nothing to do would keep the host busy.
        idle = poll(&wait, 1, 0) > 0 ? idle + 1 : 0;
        if (idle > 1000)
            return 2;
    }
    return 0;
}
