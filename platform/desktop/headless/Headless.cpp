// platform/desktop/headless/Headless.cpp
//
// Surfaces without pixels, input out of a queue. The keyboard goes to the surface that was shown or
// selected last, as window managers have it.
#include "platform/desktop/headless/Headless.h"

#include <algorithm>
#include <chrono>

#include "platform/base/Clock.h"
#include "platform/base/Forever.h"

CHeadlessDesktop& HeadlessDesktop()
{
    static CForever<CHeadlessDesktop> desktop;
    return *desktop;
}

CHeadlessDesktop::Surface* CHeadlessDesktop::Find(SurfaceId surface)
{
    const auto found = m_surfaces.find(surface);
    return found == m_surfaces.end() ? nullptr : &found->second;
}

void CHeadlessDesktop::SetSink(IInputSink& sink)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_sink = &sink;
}

SurfaceId CHeadlessDesktop::CreateSurface(const SurfaceRequest& request)
{
    constexpr int kMaximumSide = 16384;
    const auto fits = [](int side) {
        return side >= 1 && side <= kMaximumSide;
    };
    if (!fits(request.frame.width) || !fits(request.frame.height))
        return 0;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_surfaces[++m_lastId].request = request;
    return m_lastId;
}

void CHeadlessDesktop::DestroySurface(SurfaceId surface)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_surfaces.erase(surface) != 0)
        LoseFocus(surface);
}

void CHeadlessDesktop::ShowSurface(SurfaceId surface)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    Surface* const found = Find(surface);
    if (!found || found->shown)
        return;
    found->shown = true;
    if (found->request.placement != Placement::Menu)
        GiveFocus(surface);
}

void CHeadlessDesktop::HideSurface(SurfaceId surface)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    Surface* const found = Find(surface);
    if (!found || !found->shown)
        return;
    found->shown = false;
    LoseFocus(surface);
}

void CHeadlessDesktop::SelectSurface(SurfaceId surface)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const Surface* const found = Find(surface);
    if (found && found->shown)
        GiveFocus(surface);
}

PointerInput CHeadlessDesktop::OverMenu(const PointerInput& input) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    PointerInput routed = input;
    for (const auto& [id, surface] : m_surfaces) {
        const PixelRect& frame = surface.request.frame;
        if (surface.request.placement != Placement::Menu || surface.request.owner != input.surface || !surface.shown ||
            input.x < frame.x || input.x >= frame.x + frame.width || input.y < frame.y ||
            input.y >= frame.y + frame.height)
            continue;
        routed.surface = id;
        routed.x -= frame.x;
        routed.y -= frame.y;
    }
    return routed;
}

void CHeadlessDesktop::GiveFocus(SurfaceId surface)
{
    m_stack.erase(std::remove(m_stack.begin(), m_stack.end(), surface), m_stack.end());
    m_stack.push_back(surface);
    if (m_focus == surface)
        return;
    const SurfaceId before = m_focus;
    m_focus = surface;
    m_posted.emplace_back([before, surface](IInputSink& sink) {
        if (before != 0)
            sink.FocusLost(before);
        sink.FocusGained(surface);
    });
    m_changed.notify_all();
}

void CHeadlessDesktop::LoseFocus(SurfaceId surface)
{
    m_stack.erase(std::remove(m_stack.begin(), m_stack.end(), surface), m_stack.end());
    if (m_focus != surface)
        return;
    if (!m_stack.empty()) {
        GiveFocus(m_stack.back());
        return;
    }
    m_focus = 0;
    m_posted.emplace_back([surface](IInputSink& sink) { sink.FocusLost(surface); });
    m_changed.notify_all();
}

void CHeadlessDesktop::SetTitle(SurfaceId surface, std::string_view title)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (Surface* const found = Find(surface))
        found->request.title = title;
}

void CHeadlessDesktop::SetOwner(SurfaceId surface, SurfaceId owner, ForeignWindowId foreignOwner, bool modal)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (Surface* const found = Find(surface)) {
        found->request.owner = owner;
        found->request.foreignOwner = foreignOwner;
        found->request.modal = modal;
    }
}

void CHeadlessDesktop::ResizeSurface(SurfaceId surface, int width, int height)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (Surface* const found = Find(surface)) {
        found->request.frame.width = width;
        found->request.frame.height = height;
    }
}

void CHeadlessDesktop::SetCursor(SurfaceId surface, CursorShape shape)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (Surface* const found = Find(surface))
        found->cursor = shape;
}

bool CHeadlessDesktop::Present(SurfaceId surface, const PixelBuffer&, const PixelRect&)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return Find(surface) != nullptr; // nobody looks
}

double CHeadlessDesktop::ScaleOf(SurfaceId) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_scale;
}

void CHeadlessDesktop::SetScale(double scale)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_scale = scale;
    for (const auto& one : m_surfaces) {
        const SurfaceId surface = one.first;
        m_posted.emplace_back([surface](IInputSink& sink) { sink.ScaleChanged(surface); });
    }
    m_changed.notify_all();
}

void CHeadlessDesktop::OfferText(TextExchange where, std::string_view text)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_texts[static_cast<int>(where)] = text;
}

std::string CHeadlessDesktop::OfferedText(TextExchange where) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_texts[static_cast<int>(where)];
}

void CHeadlessDesktop::RequestText(TextExchange where, std::uint32_t request)
{
    Post([request, text = OfferedText(where)](IInputSink& sink) { sink.TextReceived(request, text); });
}

void CHeadlessDesktop::Post(Input input)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_posted.push_back(std::move(input));
    m_changed.notify_all();
}

void CHeadlessDesktop::PostToFocus(std::function<void(IInputSink&, SurfaceId)> input)
{
    Post([this, input = std::move(input)](IInputSink& sink) {
        SurfaceId focus = 0;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            focus = m_focus;
        }
        if (focus != 0)
            input(sink, focus);
    });
}

bool CHeadlessDesktop::Describe(SurfaceId surface, SurfaceRequest& request, bool& shown, CursorShape& cursor) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_surfaces.find(surface);
    if (found == m_surfaces.end())
        return false;
    request = found->second.request;
    shown = found->second.shown;
    cursor = found->second.cursor;
    return true;
}

bool CHeadlessDesktop::IsDue() const
{
    return m_deadline >= 0 && Clock::Now() >= m_deadline;
}

int CHeadlessDesktop::PumpInput(double seconds)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    const double end = seconds < 0 ? -1 : Clock::Now() + seconds;
    while (m_posted.empty() && !m_woken && !IsDue()) {
        const double now = Clock::Now();
        if (end >= 0 && now >= end)
            return 0;
        const double until = m_deadline >= 0 && (end < 0 || m_deadline < end) ? m_deadline : end;
        if (until < 0)
            m_changed.wait(lock);
        else if (Clock::IsDriven())
            Clock::Advance(until - now);
        else
            m_changed.wait_for(lock, std::chrono::duration<double>(std::min(until - now, 3600.0)));
    }
    IInputSink* const sink = m_sink;
    int delivered = 0;
    // What is posted meanwhile waits for the next time, so that a pump always ends.
    for (std::size_t left = m_posted.size(); left > 0 && !m_posted.empty(); --left) {
        const Input input = std::move(m_posted.front());
        m_posted.pop_front();
        lock.unlock();
        if (sink)
            input(*sink);
        ++delivered;
        lock.lock();
    }
    const bool woken = m_woken;
    const bool due = IsDue();
    m_woken = false;
    if (due)
        m_deadline = -1;
    lock.unlock();
    if (sink && due)
        sink->DeadlineReached();
    if (sink && woken)
        sink->Woken();
    return delivered + (due ? 1 : 0) + (woken ? 1 : 0);
}

void CHeadlessDesktop::SetDeadline(double seconds)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_deadline = seconds < 0 ? -1 : Clock::Now() + seconds;
}

void CHeadlessDesktop::Wake() noexcept
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_woken = true;
    m_changed.notify_all();
}
