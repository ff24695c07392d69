// tests/support/Desk.cpp
#include "tests/support/Desk.h"

#include <poll.h>

#include <chrono>

namespace {

std::string TitleOf(WindowRef window)
{
    CFStringRef title = nullptr;
    if (CopyWindowTitleAsCFString(window, &title) != noErr)
        throw std::runtime_error("no such window");
    std::string text = TextOf(title);
    CFRelease(title);
    return text;
}

} // namespace

CScreen& TheScreen()
{
    static CScreen screen;
    return screen;
}

bool ServeUntil(const std::function<bool()>& condition, double seconds)
{
    constexpr int kLookAgain = 10; // milliseconds: the condition may be the server's or another program's doing
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    for (;;) {
        const bool served = CVPump() == noErr;
        if (condition())
            return true;
        if (std::chrono::steady_clock::now() > end)
            return false;
        pollfd wait = {served ? CVGetDescriptor() : -1, POLLIN, 0};
        (void)poll(&wait, 1, kLookAgain);
    }
}

ScreenWindow ShownOn(const CScreen& screen, WindowRef window)
{
    const std::string title = TitleOf(window);
    ScreenWindow shown;
    const bool found = ServeUntil([&] {
        for (const ScreenWindow& candidate : screen.Find(title)) {
            if (screen.PropertyOf(candidate.id, "WM_STATE") != 0) // the manager has placed and shown it
                shown = candidate;
        }
        return shown.id != 0;
    });
    if (!found)
        throw std::runtime_error("not shown: " + title);
    return shown;
}

ScreenWindow ActiveOn(const CScreen& screen, WindowRef window)
{
    const ScreenWindow shown = ShownOn(screen, window);
    if (!ServeUntil([&] { return screen.Focus() == shown.id && IsWindowActive(window); }))
        throw std::runtime_error("not active: " + TitleOf(window));
    return shown;
}

ScreenSpot MiddleOn(const CScreen& screen, ControlRef control)
{
    WindowRef const window = GetControlOwner(control);
    const ScreenWindow shown = ShownOn(screen, window);
    Rect content = {};
    (void)GetWindowBounds(window, kWindowContentRgn, &content); // it holds a control, so it is one
    const double scale = static_cast<double>(shown.width) / (content.right - content.left);
    const Point middle = MiddleOf(control);
    return {shown.x + static_cast<int>(middle.h * scale), shown.y + static_cast<int>(middle.v * scale)};
}

void ClickOn(const CScreen& screen, ControlRef control, int button)
{
    const ScreenSpot spot = MiddleOn(screen, control);
    screen.Click(spot.x, spot.y, button);
}

void TypeOn(const CScreen& screen, const std::string& ascii)
{
    for (const char character : ascii)
        screen.Tap(static_cast<unsigned char>(character));
}
