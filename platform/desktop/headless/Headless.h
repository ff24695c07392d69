// platform/desktop/headless/Headless.h
//
// A desktop in memory. Input is what somebody posts; it is delivered in that order, each time the
// desktop is pumped. With a driven clock a wait ends at once and moves the clock instead.
#pragma once

#include <condition_variable>
#include <functional>
#include <list>
#include <map>
#include <mutex>
#include <vector>

#include "platform/desktop/IDesktop.h"

class CHeadlessDesktop final : public IDesktop {
public:
    void SetSink(IInputSink& sink) override;
    bool IsAlive() const override { return true; }
    SurfaceId CreateSurface(const SurfaceRequest& request) override;
    void DestroySurface(SurfaceId surface) override;
    void ShowSurface(SurfaceId surface) override;
    void HideSurface(SurfaceId surface) override;
    void SelectSurface(SurfaceId surface) override;
    void SetTitle(SurfaceId surface, std::string_view title) override;
    void SetOwner(SurfaceId surface, SurfaceId owner, ForeignWindowId foreignOwner, bool modal) override;
    void ResizeSurface(SurfaceId surface, int width, int height) override;
    void SetCursor(SurfaceId surface, CursorShape shape) override;
    bool Present(SurfaceId surface, const PixelBuffer& picture, const PixelRect& damage) override;
    double ScaleOf(SurfaceId surface) const override;
    Appearance CurrentAppearance() const override { return Appearance::Light; }
    void OfferText(TextExchange where, std::string_view text) override;
    void RequestText(TextExchange where, std::uint32_t request) override;
    int PumpInput(double seconds) override;
    bool TakeTurn(double) override { return true; } // it hangs in no main loop: only who pumps serves it
    void LeaveTurn() noexcept override {}
    void SetDeadline(double seconds) override;
    void Wake() noexcept override;
    int Descriptor() override { return -1; }

    /// Answers the input as that of the menu that is open over its place, if there is one. Any thread.
    PointerInput OverMenu(const PointerInput& input) const;

    // Posting, from any thread. What names a surface that is gone by then is dropped.
    using Input = std::function<void(IInputSink&)>;
    void Post(Input input);
    /// Posts an input for whichever surface has the keyboard by then.
    void PostToFocus(std::function<void(IInputSink&, SurfaceId)> input);

    // What a test wants to know or to change. Any thread.
    /// Answers what a surface was asked to be, with its present title, owner and size.
    bool Describe(SurfaceId surface, SurfaceRequest& request, bool& shown, CursorShape& cursor) const;
    std::string OfferedText(TextExchange where) const;
    void SetScale(double scale);

private:
    struct Surface {
        SurfaceRequest request;
        bool shown = false;
        CursorShape cursor = CursorShape::Arrow;
    };
    Surface* Find(SurfaceId surface);
    void GiveFocus(SurfaceId surface);
    void LoseFocus(SurfaceId surface);
    bool IsDue() const;

    mutable std::mutex m_mutex; // guards everything; never held while the sink is called
    std::condition_variable m_changed;
    IInputSink* m_sink = nullptr;
    std::map<SurfaceId, Surface> m_surfaces;
    std::vector<SurfaceId> m_stack; // the shown ones, the front one last
    SurfaceId m_lastId = 0;
    SurfaceId m_focus = 0;
    std::list<Input> m_posted; // takes no memory while it is empty
    std::string m_texts[2];
    double m_deadline = -1;
    double m_scale = 1;
    bool m_woken = false;
};

/// Answers the one that windows use, never destroyed.
CHeadlessDesktop& HeadlessDesktop();
