// tests/hitoolbox/PainterTest.cpp
//
// How much of a window is drawn and sent when it changes: no more than what changed.
#include <gmock/gmock.h>

#include "platform/hitoolbox/windows/Painter.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::NiceMock;
using testing::SizeIs;

constexpr int kWidth = 400, kHeight = 300;

class CCanvasStub final : public ICanvas {
public:
    CCanvasStub(int width, int height) : m_width(width), m_height(height) {}
    double Scale() const override { return 1; }
    const ITextMetrics& Metrics() const override { return ::Metrics(); }
    PixelBuffer Pixels() override { return {nullptr, 0, m_width, m_height}; }
    bool SavePng(const std::string&) override { return false; }
    void PushClip(const CanvasRect&) override {}
    void PopClip() override {}
    void Clear(Colour) override { ++clears; }
    void Fill(const CanvasRect&, double, Colour) override {}
    void FillGraded(const CanvasRect&, double, Colour, Colour) override {}
    void Stroke(const CanvasRect&, double, double, Colour) override {}
    void FillShape(const std::vector<CanvasPoint>&, Colour) override {}
    void StrokeLine(const std::vector<CanvasPoint>&, double, Colour) override {}
    void DrawText(const TextLayout&, const TextStyle&, double, double) override {}
    void DrawPicture(const PixelBuffer&, const CanvasRect&, double) override {}

    static inline int clears = 0; ///< One for each part that is drawn.

private:
    const int m_width, m_height;
};

class CDrawingStub final : public IDrawing {
public:
    std::unique_ptr<ICanvas> CreateCanvas(int width, int height, double) override
    {
        ++canvases;
        return std::make_unique<CCanvasStub>(width, height);
    }
    const ITextMetrics& MetricsAt(double) override { return Metrics(); }
    unsigned FontGeneration() const override { return fonts; }

    int canvases = 0;
    unsigned fonts = 0;
};

class CDesktopMock : public IDesktop {
public:
    MOCK_METHOD(void, SetSink, (IInputSink&), (override));
    MOCK_METHOD(bool, IsAlive, (), (const, override));
    MOCK_METHOD(SurfaceId, CreateSurface, (const SurfaceRequest&), (override));
    MOCK_METHOD(void, DestroySurface, (SurfaceId), (override));
    MOCK_METHOD(void, ShowSurface, (SurfaceId), (override));
    MOCK_METHOD(void, HideSurface, (SurfaceId), (override));
    MOCK_METHOD(void, SelectSurface, (SurfaceId), (override));
    MOCK_METHOD(void, SetTitle, (SurfaceId, std::string_view), (override));
    MOCK_METHOD(void, SetOwner, (SurfaceId, SurfaceId, ForeignWindowId, bool), (override));
    MOCK_METHOD(void, ResizeSurface, (SurfaceId, int, int), (override));
    MOCK_METHOD(void, SetCursor, (SurfaceId, CursorShape), (override));
    MOCK_METHOD(bool, Present, (SurfaceId, const PixelBuffer&, const PixelRect&), (override));
    MOCK_METHOD(double, ScaleOf, (SurfaceId), (const, override));
    MOCK_METHOD(Appearance, CurrentAppearance, (), (const, override));
    MOCK_METHOD(void, OfferText, (TextExchange, std::string_view), (override));
    MOCK_METHOD(void, RequestText, (TextExchange, std::uint32_t), (override));
    MOCK_METHOD(int, PumpInput, (double), (override));
    MOCK_METHOD(bool, TakeTurn, (double), (override));
    MOCK_METHOD(void, LeaveTurn, (), (noexcept, override));
    MOCK_METHOD(void, SetDeadline, (double), (override));
    MOCK_METHOD(void, Wake, (), (noexcept, override));
    MOCK_METHOD(int, Descriptor, (), (override));
};

ControlView Button(short top, const std::string& title)
{
    ControlView button;
    button.kind = ControlClass::PushButton;
    button.bounds = {top, 20, static_cast<short>(top + 20), 120};
    button.text = title;
    return button;
}

/// Three buttons, far from each other; Return presses the last.
WindowView Dialog()
{
    WindowView window;
    window.width = kWidth;
    window.height = kHeight;
    window.controls = {Button(20, "Help"), Button(120, "Cancel"), Button(220, "OK")};
    window.controls.back().isDefault = true;
    return window;
}

MATCHER_P(Rows, top, "reaches from about there, a button high")
{
    return arg.y > top - 20 && arg.y <= top && arg.height >= 20 && arg.height < 60 && arg.width < 150;
}
MATCHER(Whole, "is all of the window")
{
    return arg.x == 0 && arg.y == 0 && arg.width == kWidth && arg.height == kHeight;
}

class Painter : public testing::Test {
protected:
    Painter()
    {
        ON_CALL(m_desktop, CurrentAppearance).WillByDefault([this] { return m_appearance; });
        ON_CALL(m_desktop, Present).WillByDefault([this](SurfaceId, const PixelBuffer&, const PixelRect& part) {
            m_presented.push_back(part);
            return true;
        });
    }
    /// Answers what is sent to the screen; how many parts are drawn is m_drawn.
    std::vector<PixelRect> Paint(SurfaceId surface, const WindowView& window, double scale = 1)
    {
        m_presented.clear();
        CCanvasStub::clears = 0;
        m_painter.Paint(surface, window, scale, window.width, window.height);
        m_drawn = CCanvasStub::clears;
        return m_presented;
    }

    NiceMock<CDesktopMock> m_desktop;
    CDrawingStub m_drawing;
    CPainter m_painter{m_desktop, m_drawing};
    std::vector<PixelRect> m_presented;
    Appearance m_appearance = Appearance::Light;
    int m_drawn = 0;
};

TEST_F(Painter, UnchangedWindowIsNeitherDrawnNorSent)
{
    EXPECT_THAT(Paint(1, Dialog()), ElementsAre(Whole()));
    EXPECT_THAT(Paint(1, Dialog()), IsEmpty());
    EXPECT_EQ(m_drawn, 0);
}

TEST_F(Painter, ChangedControlsAreDrawnEachForItself)
{
    WindowView window = Dialog();
    (void)Paint(1, window);
    window.controls[0].pressed = true;
    window.controls[2].text = "Done";
    EXPECT_THAT(Paint(1, window), ElementsAre(Rows(20), Rows(220)));
}

TEST_F(Painter, ManyChangesAreDrawnInFewParts)
{
    WindowView window = Dialog();
    window.controls.assign(100, Button(20, "Help"));
    (void)Paint(1, window);
    for (ControlView& control : window.controls)
        control.hovered = true;
    EXPECT_THAT(Paint(1, window), SizeIs(8));
}

TEST_F(Painter, KeyboardComingChangesOnlyWhatTellsIt)
{
    WindowView window = Dialog();
    window.controls[0].focused = true;
    (void)Paint(1, window);
    window.active = true;
    EXPECT_THAT(Paint(1, window), ElementsAre(Rows(20), Rows(220))) << "the focus ring, the default button";
    window.active = false;
    EXPECT_THAT(Paint(1, window), ElementsAre(Rows(20), Rows(220)));
}

TEST_F(Painter, LookFontAndSizeChangeAll)
{
    WindowView window = Dialog();
    (void)Paint(1, window);
    m_appearance = Appearance::Dark;
    EXPECT_THAT(Paint(1, window), ElementsAre(Whole()));
    ++m_drawing.fonts;
    EXPECT_THAT(Paint(1, window), ElementsAre(Whole()));
    window.controls.pop_back();
    EXPECT_THAT(Paint(1, window), ElementsAre(Whole()));
    EXPECT_EQ(m_drawing.canvases, 1);
    window.width = kWidth - 1;
    EXPECT_THAT(Paint(1, window), SizeIs(1));
    EXPECT_EQ(m_drawing.canvases, 2);
}

TEST_F(Painter, UncoveredWindowIsSentButNotDrawn)
{
    (void)Paint(1, Dialog());
    m_painter.Invalidate(1);
    EXPECT_THAT(Paint(1, Dialog()), ElementsAre(Whole()));
    EXPECT_EQ(m_drawn, 0);
}

TEST_F(Painter, SameDialogOpenedAgainIsDrawnAlready)
{
    WindowView window = Dialog();
    (void)Paint(1, window);
    m_painter.Forget(1);
    window.controls[1].text = "Close";
    EXPECT_THAT(Paint(2, window), ElementsAre(Whole())) << "a new surface has nothing yet";
    EXPECT_EQ(m_drawn, 1);
    EXPECT_EQ(m_drawing.canvases, 1);
    EXPECT_THAT(Paint(3, window), ElementsAre(Whole()));
    EXPECT_EQ(m_drawing.canvases, 2) << "what is on the screen is nobody else's";
}

TEST_F(Painter, ClosedDialogOfBeforeIsNotMistakenForAnother)
{
    (void)Paint(1, Dialog());
    m_painter.Forget(1);
    (void)Paint(2, Dialog(), 2);
    EXPECT_EQ(m_drawn, 1) << "another scale";
    m_painter.Forget(2);
    m_appearance = Appearance::Dark;
    (void)Paint(3, Dialog(), 2);
    EXPECT_EQ(m_drawn, 1) << "another look";
}

TEST_F(Painter, LargePictureDoesNotOutliveItsWindow)
{
    WindowView window = Dialog();
    window.width = 2000;
    window.height = 1000;
    (void)Paint(1, window);
    m_painter.Forget(1);
    (void)Paint(2, window);
    EXPECT_EQ(m_drawing.canvases, 2);
}

} // namespace
