// platform/drawing/ICanvas.h
//
// What a window is drawn on: a picture in memory, addressed in points. How a control looks is
// decided elsewhere; a canvas knows shapes, texts and images, and keeps their edges on whole pixels.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/desktop/IDesktop.h"
#include "platform/drawing/Text.h"

/// Points, origin at the top left, y downwards.
struct CanvasPoint {
    double x, y;
};
struct CanvasRect {
    double x, y, width, height;

    CanvasRect Inset(double by) const { return {x + by, y + by, width - 2 * by, height - 2 * by}; }
    CanvasRect Moved(double right, double down) const { return {x + right, y + down, width, height}; }
    bool Meets(const CanvasRect& other) const
    {
        return x < other.x + other.width && other.x < x + width && y < other.y + other.height && other.y < y + height;
    }
};

/// A colour: 0xRRGGBBAA, not premultiplied.
struct Colour {
    std::uint32_t rgba = 0;

    Colour WithAlpha(double alpha) const
    {
        return {(rgba & 0xFFFFFF00U) | static_cast<std::uint32_t>(std::lround((rgba & 0xFFU) * alpha))};
    }
};

/// How a text is drawn.
struct TextStyle {
    Colour colour;
    double height = 0;      ///< What does not fit below this is left out and ends in an ellipsis; 0 shows all.
    bool ellipsised = true; ///< An unwrapped text too wide for its layout ends in an ellipsis; else it goes on.
    std::size_t selectionStart = 0, selectionEnd = 0; ///< Bytes; equal for none.
    Colour selectedColour, selectionColour;
};

class ICanvas {
public:
    virtual ~ICanvas() = default;

    virtual double Scale() const = 0; ///< Pixels per point.
    /// How its texts are laid out.
    virtual const ITextMetrics& Metrics() const = 0;
    /// The picture, valid until the canvas is drawn on or destroyed.
    virtual PixelBuffer Pixels() = 0;
    /// Writes the picture to a PNG file. A file that was there is only replaced by a whole one.
    virtual bool SavePng(const std::string& path) = 0;

    /// Restricts drawing to `area` widened to whole pixels, within the clip so far.
    virtual void PushClip(const CanvasRect& area) = 0;
    virtual void PopClip() = 0;

    /// Replaces what is there by a plain colour, transparency included.
    virtual void Clear(Colour colour) = 0;
    /// Fills a rectangle with round corners. Its edges are moved to the nearest pixels.
    virtual void Fill(const CanvasRect& area, double radius, Colour colour) = 0;
    /// Fills likewise, from one colour at the top to another at the bottom.
    virtual void FillGraded(const CanvasRect& area, double radius, Colour top, Colour bottom) = 0;
    /// Strokes along the inside of a rectangle's edge; a width below a pixel becomes one pixel.
    virtual void Stroke(const CanvasRect& area, double radius, double width, Colour colour) = 0;
    /// Fills a polygon.
    virtual void FillShape(const std::vector<CanvasPoint>& corners, Colour colour) = 0;
    /// Strokes a line through points, with round ends and corners.
    virtual void StrokeLine(const std::vector<CanvasPoint>& points, double width, Colour colour) = 0;

    /// Draws a text with its top left at a point.
    virtual void DrawText(const TextLayout& layout, const TextStyle& style, double x, double y) = 0;
    /// Draws a picture into a rectangle.
    virtual void DrawPicture(const PixelBuffer& picture, const CanvasRect& area, double alpha) = 0;
};

/// Makes canvases and knows the user's fonts. Event-loop thread.
class IDrawing {
public:
    /// Makes a canvas, all transparent.
    /// @param width, height  pixels, 1 to 16384.
    /// @return the canvas, or null when there is no memory for it.
    virtual std::unique_ptr<ICanvas> CreateCanvas(int width, int height, double scale) = 0;
    /// The metrics of texts as canvases of a scale draw them; never destroyed.
    virtual const ITextMetrics& MetricsAt(double scale) = 0;
    /// Counts the changes of the user's font; layouts of before are then of no use.
    virtual unsigned FontGeneration() const = 0;

protected:
    ~IDrawing() = default;
};

/// How the drawing of a module is entered: answers a drawing that is never destroyed, or null when
/// it cannot be had. Its linker name is kOpenDrawingSymbol. Needs no display.
using OpenDrawingProc = IDrawing* (*)() noexcept;
constexpr const char* kOpenDrawingSymbol = "cv_OpenDrawing";
