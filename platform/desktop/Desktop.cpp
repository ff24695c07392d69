// platform/desktop/Desktop.cpp
//
// Choosing and opening the desktop. The X11 one is a module of its own, so that a process that
// never shows a window never loads what it stands on.
#include "platform/desktop/Desktop.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

#include "platform/base/Forever.h"
#include "platform/desktop/Module.h"
#include "platform/desktop/headless/Headless.h"

namespace {

std::atomic<IDesktop*> g_desktop{nullptr};
std::atomic<bool> g_headless{false};

IDesktop* OpenModule()
{
    const auto open = reinterpret_cast<OpenDesktopProc>(Module::Find(kOpenDesktopSymbol));
    return open ? open() : nullptr;
}

} // namespace

IDesktop* Desktop::Open(IInputSink& sink)
{
    if (IDesktop* const open = Current())
        return open;
    IDesktop* const desktop = IsHeadless() ? &HeadlessDesktop() : OpenModule();
    if (!desktop)
        return nullptr;
    desktop->SetSink(sink);
    ForLoop().Wake(); // whoever waits goes on with the new one
    g_desktop.store(desktop);
    desktop->Wake();
    return desktop;
}

IDesktop* Desktop::Current() noexcept
{
    return g_desktop.load();
}

IDesktop& Desktop::ForLoop() noexcept
{
    static CForever<CHeadlessDesktop> idle;
    IDesktop* const open = Current();
    return open ? *open : *idle;
}

bool Desktop::ChooseHeadless() noexcept
{
    if (Current())
        return IsHeadless();
    g_headless.store(true);
    return true;
}

bool Desktop::IsHeadless() noexcept
{
    const char* const named = secure_getenv("CV_DESKTOP");
    return g_headless.load() || (!Current() && named && std::strcmp(named, "headless") == 0) ||
           (Current() && Current() == &HeadlessDesktop());
}
