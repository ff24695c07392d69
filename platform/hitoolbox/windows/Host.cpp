// platform/hitoolbox/windows/Host.cpp
//
// What hosts and tests on Linux do with windows beyond the Mac's calls.
#include <cmath>
#include <string>

#include "platform/base/Clock.h"
#include "platform/base/Guard.h"
#include "platform/base/Text.h"
#include "platform/desktop/Desktop.h"
#include "platform/desktop/headless/Headless.h"
#include "platform/hitoolbox/events/Loop.h"
#include "platform/hitoolbox/windows/Window.h"
#include <CVPlatform/CVPlatform.h>

namespace {

bool HasHeadless() noexcept
{
    return Desktop::Current() && Desktop::IsHeadless();
}

// The surface of a shown window and the scale of its pixels.
SurfaceId SurfaceOf(WindowRef reference, double& scale)
{
    const CToolboxLock lock;
    const CWindow* const window = Find<CWindow>(reference);
    if (!window || !window->visible)
        return 0;
    scale = window->scale;
    return window->surface;
}

void Deliver(IInputSink& sink, UInt32 action, const PointerInput& input)
{
    switch (action) {
    case kCVPointerMove:
        sink.PointerMoved(input);
        break;
    case kCVPointerPress:
        sink.PointerPressed(input);
        break;
    case kCVPointerRelease:
        sink.PointerReleased(input);
        break;
    default:
        sink.PointerLeft(input.surface);
        break;
    }
}

template <typename Work>
OSStatus OnHeadless(Work&& work)
{
    return Guarded<OSStatus>(memFullErr, [&]() -> OSStatus {
        if (!HasHeadless())
            return kCVNoDesktopErr;
        return work(HeadlessDesktop());
    });
}

} // namespace

OSStatus CVUseHeadlessDesktop(Boolean driveClock)
{
    if (!Desktop::ChooseHeadless())
        return kCVNoDesktopErr;
    if (driveClock)
        Clock::Drive();
    return noErr;
}

OSStatus CVPostPointer(WindowRef window, UInt32 action, double x, double y, UInt32 button, UInt32 modifiers)
{
    return OnHeadless([&](CHeadlessDesktop& desktop) -> OSStatus {
        double scale = 1;
        PointerInput input;
        input.surface = SurfaceOf(window, scale);
        if (input.surface == 0 || action > kCVPointerLeave || button > kCVButtonRight || !std::isfinite(x) ||
            !std::isfinite(y))
            return paramErr;
        input.x = x * scale;
        input.y = y * scale;
        input.button = static_cast<PointerButton>(button);
        input.modifiers = modifiers;
        desktop.Post([input, action, &desktop](IInputSink& sink) mutable {
            input.time = Clock::Now();
            Deliver(sink, action, desktop.OverMenu(input));
        });
        return noErr;
    });
}

OSStatus CVPostScroll(WindowRef window, double x, double y, double right, double down)
{
    return OnHeadless([&](CHeadlessDesktop& desktop) -> OSStatus {
        double scale = 1;
        PointerInput input;
        input.surface = SurfaceOf(window, scale);
        if (input.surface == 0)
            return paramErr;
        input.x = x * scale;
        input.y = y * scale;
        desktop.Post(
            [input, right, down, &desktop](IInputSink& sink) { sink.Scrolled(desktop.OverMenu(input), right, down); });
        return noErr;
    });
}

OSStatus CVPostKey(UInt32 symbol, const char* text, UInt32 modifiers)
{
    return OnHeadless([&](CHeadlessDesktop& desktop) -> OSStatus {
        std::string typed = text ? text : "";
        if (!CountUtf16Units(typed))
            return paramErr;
        desktop.PostToFocus([symbol, modifiers, typed = std::move(typed)](IInputSink& sink, SurfaceId surface) {
            KeyInput input;
            input.surface = surface;
            input.symbol = symbol;
            input.text = typed;
            input.modifiers = modifiers;
            input.time = Clock::Now();
            sink.KeyPressed(input);
        });
        return noErr;
    });
}

OSStatus CVPostText(const char* text)
{
    return OnHeadless([&](CHeadlessDesktop& desktop) -> OSStatus {
        std::string entered = text ? text : "";
        if (!CountUtf16Units(entered))
            return paramErr;
        desktop.PostToFocus([entered = std::move(entered)](IInputSink& sink, SurfaceId surface) {
            sink.TextEntered(surface, entered);
        });
        return noErr;
    });
}

OSStatus CVPostCloseRequest(WindowRef window)
{
    return OnHeadless([&](CHeadlessDesktop& desktop) -> OSStatus {
        double scale = 1;
        const SurfaceId surface = SurfaceOf(window, scale);
        if (surface == 0)
            return paramErr;
        desktop.Post([surface](IInputSink& sink) { sink.CloseRequested(surface); });
        return noErr;
    });
}

OSStatus CVPostSurfaceLost(WindowRef window)
{
    return OnHeadless([&](CHeadlessDesktop& desktop) -> OSStatus {
        double scale = 1;
        const SurfaceId surface = SurfaceOf(window, scale);
        if (surface == 0)
            return paramErr;
        desktop.Post([surface](IInputSink& sink) { sink.SurfaceLost(surface); });
        return noErr;
    });
}

OSStatus CVSetClipboardText(const char* text)
{
    return OnHeadless([&](CHeadlessDesktop& desktop) -> OSStatus {
        const std::string_view offered = text ? text : "";
        if (!CountUtf16Units(offered))
            return paramErr;
        desktop.OfferText(TextExchange::Clipboard, offered);
        return noErr;
    });
}

CFStringRef CVCopyClipboardText(void)
{
    return Guarded<CFStringRef>(nullptr, []() -> CFStringRef {
        if (!HasHeadless())
            return nullptr;
        return __CFString::Create(HeadlessDesktop().OfferedText(TextExchange::Clipboard)).Detach();
    });
}

void CVAdvanceTime(double seconds)
{
    if (seconds > 0 && std::isfinite(seconds))
        Clock::Advance(seconds);
    Loop::Wake();
}

OSStatus CVPump(void)
{
    return Guarded<OSStatus>(memFullErr, []() -> OSStatus {
        // Handlers and threads that post without end must not keep the host here.
        constexpr int kRounds = 32;
        for (int round = 0; round < kRounds; ++round) {
            const int dispatched = Loop::DispatchQueued();
            const int handled = Loop::Pump(0);
            if (handled < 0)
                return kCVNoDesktopErr;
            if (handled == 0 && dispatched == 0)
                break;
        }
        return noErr;
    });
}
