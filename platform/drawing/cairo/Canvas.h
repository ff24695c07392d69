// platform/drawing/cairo/Canvas.h
//
// The canvas on a cairo image in memory, for windows and for pictures in files alike.
#pragma once

#include <cairo.h>

#include "platform/drawing/ICanvas.h"
#include "platform/drawing/cairo/Fonts.h"

class CCairoCanvas final : public ICanvas {
public:
    /// Makes a canvas; null when there is no memory for it.
    static std::unique_ptr<CCairoCanvas> Create(int width, int height, const CFonts& fonts);
    ~CCairoCanvas() override;
    CCairoCanvas(const CCairoCanvas&) = delete;
    CCairoCanvas& operator=(const CCairoCanvas&) = delete;

    double Scale() const override { return m_fonts.Scale(); }
    const ITextMetrics& Metrics() const override { return m_fonts; }
    PixelBuffer Pixels() override;
    bool SavePng(const std::string& path) override;
    void PushClip(const CanvasRect& area) override;
    void PopClip() override;
    void Clear(Colour colour) override;
    void Fill(const CanvasRect& area, double radius, Colour colour) override;
    void FillGraded(const CanvasRect& area, double radius, Colour top, Colour bottom) override;
    void Stroke(const CanvasRect& area, double radius, double width, Colour colour) override;
    void FillShape(const std::vector<CanvasPoint>& corners, Colour colour) override;
    void StrokeLine(const std::vector<CanvasPoint>& points, double width, Colour colour) override;
    void DrawText(const TextLayout& layout, const TextStyle& style, double x, double y) override;
    void DrawPicture(const PixelBuffer& picture, const CanvasRect& area, double alpha) override;

private:
    CCairoCanvas(cairo_surface_t* surface, const CFonts& fonts);

    void SetColour(Colour colour);
    /// Adds a rectangle in pixels to the path.
    void AddRounded(const CanvasRect& pixels, double radius);
    /// Points to pixels, each edge on the nearest one; what is not empty stays so.
    CanvasRect Snapped(const CanvasRect& area) const;
    void DrawBoxes(const TextLayout& layout, const TextStyle& style, double x, double y);

    cairo_surface_t* const m_surface;
    cairo_t* const m_cairo;
    const CFonts& m_fonts;
};
