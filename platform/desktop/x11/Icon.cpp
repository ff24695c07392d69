// platform/desktop/x11/Icon.cpp
//
// A knob with its mark, drawn once.
#include "platform/desktop/x11/Icon.h"

#include <cstring>

#include "platform/drawing/ICanvas.h"
#include "platform/drawing/cairo/Canvas.h"

namespace {

void DrawKnob(ICanvas& canvas, double side)
{
    const CanvasRect tile = CanvasRect{0, 0, side, side}.Inset(side / 16);
    canvas.FillGraded(tile, side * 0.22, {0x4B8BF5FF}, {0x2259C4FF});
    canvas.Fill(tile.Inset(side * 0.16), side, {0xFFFFFFFF});
    canvas.StrokeLine({{side * 0.5, side * 0.5}, {side * 0.62, side * 0.36}}, side * 0.085, {0x2259C4FF});
}

std::vector<std::uint32_t> MakeIcon()
{
    std::vector<std::uint32_t> words;
    for (const int side : {16, 48}) {
        const auto canvas = CCairoCanvas::Create(side, side, CUserFont::Get().At(1));
        if (!canvas)
            continue;
        DrawKnob(*canvas, side);
        const PixelBuffer pixels = canvas->Pixels();
        words.push_back(static_cast<std::uint32_t>(side));
        words.push_back(static_cast<std::uint32_t>(side));
        for (int row = 0; row < side; ++row) {
            const std::uint8_t* const bytes = pixels.bytes + static_cast<std::size_t>(row) * pixels.stride;
            for (int column = 0; column < side; ++column) {
                std::uint32_t pixel = 0;
                std::memcpy(&pixel, bytes + static_cast<std::size_t>(column) * 4, sizeof pixel);
                words.push_back(pixel);
            }
        }
    }
    return words;
}

} // namespace

const std::vector<std::uint32_t>& WindowIcon()
{
    static const auto& icon = *new std::vector<std::uint32_t>(MakeIcon());
    return icon;
}
