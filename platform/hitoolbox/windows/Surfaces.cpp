// platform/hitoolbox/windows/Surfaces.cpp
//
// Compares what a window wants with what its surface shows and tells the desktop the difference.
#include "platform/hitoolbox/windows/Surfaces.h"

#include <atomic>
#include <cmath>

#include "platform/base/Forever.h"
#include "platform/base/Guard.h"
#include "platform/desktop/Desktop.h"
#include "platform/hitoolbox/events/Loop.h"
#include "platform/hitoolbox/windows/Menu.h"

namespace {

std::atomic<IPainter*> g_painter{nullptr};

struct State {
    std::vector<WindowRef> pending;   // windows whose surfaces are to be told something
    std::vector<WindowRef> dirty;     // windows to be drawn
    std::vector<SurfaceId> abandoned; // surfaces without a window
    std::unordered_map<SurfaceId, WindowRef> windows;
};

State& TheState() noexcept
{
    static CForever<State> state;
    return *state;
}

int Pixels(int points, double scale) noexcept
{
    return std::max(1, static_cast<int>(std::lround(points * scale)));
}

SurfaceId OwnerOf(const CWindow& window, ForeignWindowId& foreign, bool& modal) noexcept
{
    const CWindow* const parent = Find<CWindow>(window.unavailable ? window.unavailable : window.owner);
    modal = window.modality != kWindowModalityNone;
    foreign = parent ? parent->foreign : 0;
    return parent ? parent->surface : 0;
}

/// What is to be done to one surface, noted with the lock held and done without it.
struct Work {
    WindowRef window = nullptr;
    SurfaceId surface = 0;
    bool create = false, show = false, hide = false, select = false, title = false, owner = false, size = false;
    SurfaceRequest request;
    double scale = 1;
};

Work NoteWork(CWindow& window, double newScale)
{
    Work work;
    work.window = window.Ref();
    work.surface = window.surface;
    work.create = window.visible && window.surface == 0;
    work.show = window.visible && !window.onScreen;
    work.hide = !window.visible && window.onScreen;
    work.select = window.visible && window.selected;
    work.title = window.titleChanged && !work.create;
    work.owner = window.ownerChanged && !work.create;
    work.size = window.sizeChanged && !work.create;
    work.scale = work.create ? newScale : window.scale;
    SurfaceRequest& request = work.request;
    request.frame = {static_cast<int>(std::lround(window.content.left * work.scale)),
                     static_cast<int>(std::lround(window.content.top * work.scale)), Pixels(window.Width(), work.scale),
                     Pixels(window.Height(), work.scale)};
    request.placement = window.placement;
    request.owner = OwnerOf(window, request.foreignOwner, request.modal);
    request.resizable = (window.attributes & kWindowResizableAttribute) != 0;
    request.closable = (window.attributes & kWindowCloseBoxAttribute) != 0;
    request.title = std::string(Utf8Of(window.title.Get()));
    window.titleChanged = window.ownerChanged = window.sizeChanged = window.selected = false;
    if (window.surface != 0 || work.create)
        window.onScreen = window.visible;
    return work;
}

void Paint(IDesktop&, WindowRef reference)
{
    IPainter* const painter = g_painter.load();
    SurfaceId surface = 0;
    double scale = 1;
    int width = 0;
    int height = 0;
    bool damaged = false;
    {
        const CToolboxLock lock;
        CWindow* const window = Find<CWindow>(reference);
        if (!window || !painter || window->surface == 0 || !window->visible)
            return;
        surface = window->surface;
        scale = window->scale;
        width = Pixels(window->Width(), scale);
        height = Pixels(window->Height(), scale);
        damaged = window->damaged;
        window->dirty = window->damaged = false;
    }
    if (damaged)
        painter->Invalidate(surface);
    if (const auto view = LookAt(reference))
        painter->Paint(surface, *view, scale, width, height);
}

void Perform(IDesktop& desktop, Work& work)
{
    if (work.create) {
        work.surface = desktop.CreateSurface(work.request);
        const CToolboxLock lock;
        CWindow* const window = Find<CWindow>(work.window);
        if (window && work.surface != 0) {
            window->surface = work.surface;
            window->scale = work.scale;
            TheState().windows[work.surface] = work.window;
        } else if (window) {
            window->onScreen = false; // refused: tried again at the next change
        } else if (work.surface != 0) {
            TheState().abandoned.push_back(work.surface);
        }
    }
    if (work.surface == 0)
        return;
    if (work.owner)
        desktop.SetOwner(work.surface, work.request.owner, work.request.foreignOwner, work.request.modal);
    if (work.title)
        desktop.SetTitle(work.surface, work.request.title);
    if (work.size)
        desktop.ResizeSurface(work.surface, work.request.frame.width, work.request.frame.height);
    if (work.show) {
        Paint(desktop, work.window); // so that the first thing on the screen is the picture
        desktop.ShowSurface(work.surface);
    }
    if (work.hide)
        desktop.HideSurface(work.surface);
    if (work.select)
        desktop.SelectSurface(work.surface);
}

void DestroyAbandoned(IDesktop& desktop)
{
    std::vector<SurfaceId> abandoned;
    {
        const CToolboxLock lock;
        abandoned.swap(TheState().abandoned);
    }
    for (const SurfaceId surface : abandoned) {
        if (IPainter* const painter = g_painter.load())
            painter->Forget(surface);
        desktop.DestroySurface(surface);
    }
}

void SyncAll(IDesktop& desktop)
{
    const double newScale = desktop.ScaleOf(0);
    std::vector<WindowRef> pending;
    {
        const CToolboxLock lock;
        pending.swap(TheState().pending); // what other threads add meanwhile waits for the next time
    }
    for (const WindowRef reference : pending) {
        Work work;
        {
            const CToolboxLock lock;
            CWindow* const window = Find<CWindow>(reference);
            if (!window)
                continue;
            window->pending = false;
            work = NoteWork(*window, newScale);
        }
        Perform(desktop, work);
    }
    DestroyAbandoned(desktop);
}

} // namespace

void SetPainter(IPainter* painter) noexcept
{
    g_painter.store(painter);
}

IPainter* CurrentPainter() noexcept
{
    return g_painter.load();
}

void Surfaces::Changed(CWindow& window)
{
    if (window.pending || window.foreign != 0)
        return;
    TheState().pending.push_back(window.Ref());
    window.pending = true;
}

void Surfaces::Touched(CWindow& window) noexcept
{
    if (window.dirty || !window.visible || !g_painter.load())
        return;
    Guarded(0, [&] {
        TheState().dirty.push_back(window.Ref());
        window.dirty = true;
        return 0;
    });
    Loop::Wake();
}

void Surfaces::Abandon(CWindow& window)
{
    if (window.surface == 0)
        return;
    TheState().windows.erase(window.surface);
    TheState().abandoned.push_back(window.surface);
    window.surface = 0;
}

void Surfaces::Sync()
{
    IDesktop* const desktop = Desktop::Current();
    if (!desktop)
        return;
    if (!Loop::IsCurrent()) {
        Loop::Wake();
        return;
    }
    const CTurn turn(*desktop, 0);
    if (!turn) {
        Loop::Wake();
        return;
    }
    Guarded(0, [desktop] {
        SyncAll(*desktop);
        Menu::Update();
        return 0;
    });
}

void Surfaces::SyncAndPaint()
{
    Sync();
    IDesktop* const desktop = Desktop::Current();
    if (!desktop || !Loop::IsCurrent())
        return;
    const CTurn turn(*desktop, 0);
    if (!turn)
        return; // whose turn it is has been woken
    Guarded(0, [desktop] {
        std::vector<WindowRef> dirty;
        {
            const CToolboxLock lock;
            dirty.swap(TheState().dirty);
        }
        for (const WindowRef window : dirty)
            Paint(*desktop, window);
        return 0;
    });
}

CWindow* Surfaces::WindowOf(SurfaceId surface) noexcept
{
    const auto& windows = TheState().windows;
    const auto found = windows.find(surface);
    return found == windows.end() ? nullptr : Find<CWindow>(found->second);
}
