// platform/hitoolbox/windows/Screen.cpp
//
// The drawing stands in the desktop's module and is asked for only where something is to be seen.
#include "platform/hitoolbox/windows/Screen.h"

#include <cmath>

#include "platform/base/Guard.h"
#include "platform/corefoundation/String.h"
#include "platform/desktop/Desktop.h"
#include "platform/desktop/Module.h"
#include "platform/hitoolbox/events/Loop.h"
#include "platform/hitoolbox/events/Timers.h"
#include "platform/hitoolbox/windows/Painter.h"
#include "platform/hitoolbox/windows/Window.h"
#include <CVPlatform/CVPlatform.h>

IDrawing* Screen::OpenDrawing()
{
    static IDrawing* drawing = nullptr;
    if (!drawing) {
        const auto open = reinterpret_cast<OpenDrawingProc>(Module::Find(kOpenDrawingSymbol));
        drawing = open ? open() : nullptr;
    }
    return drawing;
}

void Screen::ShowOn(IDesktop& desktop)
{
    IDrawing* const drawing = OpenDrawing();
    if (!drawing)
        return;
    SetMetrics(&drawing->MetricsAt(desktop.ScaleOf(0)));
    SetPainter(new CPainter(desktop, *drawing)); // windows may be shown as long as the process lives
}

OSStatus CVSaveWindowPicture(WindowRef window, const char* path, double scale, Boolean dark)
{
    constexpr double kLeastScale = 0.25, kMostScale = 8;
    if (!path || !*path || !(scale >= kLeastScale && scale <= kMostScale))
        return paramErr;
    return Guarded<OSStatus>(memFullErr, [&]() -> OSStatus {
        const auto view = LookAt(window);
        if (!view)
            return errInvalidWindowPtr;
        IDrawing* const drawing = Screen::OpenDrawing();
        if (!drawing)
            return kCVNoDesktopErr;
        if (!SavePicture(*drawing, *view, scale, dark ? Appearance::Dark : Appearance::Light, path))
            return kCVNotWrittenErr;
        return noErr;
    });
}

int CVGetDescriptor(void)
{
    return Guarded(-1, [] { return Windows::EnsureDesktop() ? Desktop::Current()->Descriptor() : -1; });
}

double CVGetNextDeadline(void)
{
    return Guarded(-1.0, [] { return Timers::UntilNext(); });
}

CFStringRef CVCopyDesktopProblem(void)
{
    return Guarded<CFStringRef>(nullptr, []() -> CFStringRef {
        if (Windows::EnsureDesktop())
            return nullptr;
        if (Desktop::Current())
            return __CFString::Create("the display is gone").Detach();
        const std::string problem = Module::Problem();
        return __CFString::Create(problem.empty() ? std::string_view("no display that can be used") : problem).Detach();
    });
}
