// platform/drawing/cairo/Drawing.cpp
//
// The way into the drawing from outside its module.
#include <new>

#include "platform/drawing/cairo/Canvas.h"

namespace {

class CDrawing final : public IDrawing {
public:
    std::unique_ptr<ICanvas> CreateCanvas(int width, int height, double scale) override
    {
        return CCairoCanvas::Create(width, height, CUserFont::Get().At(scale));
    }
    const ITextMetrics& MetricsAt(double scale) override { return CUserFont::Get().At(scale); }
    unsigned FontGeneration() const override { return CUserFont::Get().Generation(); }
};

} // namespace

extern "C" __attribute__((visibility("default"))) IDrawing* cv_OpenDrawing() noexcept
{
    static IDrawing* const drawing = new (std::nothrow) CDrawing;
    return drawing;
}
