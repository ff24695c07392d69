// platform/quicktime/PictPlayer.h
//
// Plays the operations of a picture on a canvas, in their order.
#pragma once

#include "platform/quicktime/PictBitmap.h"
#include "platform/quicktime/PictCanvas.h"
#include "platform/quicktime/PictHeader.h"

class CPictPlayer {
public:
    CPictPlayer(const PictHeader& header, ImageDecoder decodeImage);

    /// Plays until the picture ends, is cut off or damaged, or has used up its work.
    /// @return false when it ended without its end mark and nothing was drawn.
    bool Play();
    Raster Finish() { return m_canvas.Finish(); }

private:
    enum class Verb { Frame = 0, Paint = 1, Erase = 2, Invert = 3, Fill = 4 };

    unsigned ReadOpcode();
    void PlayOperation(unsigned opcode);
    void ReadPixelPattern(PictPattern& pattern);
    void SetPenSize();
    void DrawLine(PictPoint to);
    void PlayShape(unsigned opcode);
    void PlayPolygon(Verb verb, bool isSame);
    void PlayRegion(Verb verb, bool isSame);
    void PlayBitmap(unsigned opcode);
    void PlayCompressed();

    /// Draws with the verb's pattern and mode; `inner` is what a frame leaves out.
    void DrawShape(Verb verb, ShapePtr shape, ShapePtr inner);
    void FillWith(CPictShape& shape, const PictPattern& pattern, int mode);
    PictRect InsetByPen(const PictRect& device) const { return device.Inset(m_penWidth, m_penHeight); }

    PictHeader m_header;
    ImageDecoder m_decodeImage;
    CPictCanvas m_canvas;
    CByteReader m_reader;
    PictInks m_inks;
    PictPattern m_backPattern = PictPattern::Solid(0);
    PictPattern m_penPattern = PictPattern::Solid(0xFF);
    PictPattern m_fillPattern = PictPattern::Solid(0xFF);
    int m_penMode = 8;  // copy
    int m_penWidth = 1; // in pixels of the canvas, as the height
    int m_penHeight = 1;
    PictPoint m_pen;
    PictPoint m_ovalSize; // of round rectangles' corners
    PictRect m_rect;      // the last of each kind, for the operations that repeat it
    PictRect m_roundRect;
    PictRect m_oval;
    PictRect m_arc;
    std::vector<PictPoint> m_polygon;
    std::optional<CPictRegion> m_region;
    bool m_hasCompressed = false;
    std::optional<PictRect> m_standIn; // a bitmap that follows at once and lies here is one
};
