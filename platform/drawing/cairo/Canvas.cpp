// platform/drawing/cairo/Canvas.cpp
//
// All drawing happens in pixels: edges are rounded to them here, so that lines are crisp at every
// scale, and text is laid out at its final size.
#include "platform/drawing/cairo/Canvas.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <new>

#include <unistd.h>

namespace {

constexpr double kQuarterTurn = 1.57079632679489661923;

struct RgbaParts {
    double red, green, blue, alpha;
};

RgbaParts PartsOf(Colour colour)
{
    const auto part = [&](int shift) {
        return ((colour.rgba >> shift) & 0xFFU) / 255.0;
    };
    return {part(24), part(16), part(8), part(0)};
}

PangoAttribute* ForBytes(PangoAttribute* attribute, std::size_t start, std::size_t end)
{
    attribute->start_index = static_cast<guint>(start);
    attribute->end_index = static_cast<guint>(end);
    return attribute;
}

guint16 Wide(std::uint32_t byte)
{
    return static_cast<guint16>((byte & 0xFFU) * 0x101U);
}

void MarkSelection(PangoLayout* lines, const TextStyle& style, std::size_t start, std::size_t end)
{
    const std::uint32_t text = style.selectedColour.rgba, back = style.selectionColour.rgba;
    PangoAttrList* const marks = pango_attr_list_new();
    pango_attr_list_insert(
        marks, ForBytes(pango_attr_foreground_new(Wide(text >> 24), Wide(text >> 16), Wide(text >> 8)), start, end));
    pango_attr_list_insert(
        marks, ForBytes(pango_attr_background_new(Wide(back >> 24), Wide(back >> 16), Wide(back >> 8)), start, end));
    pango_layout_set_attributes(lines, marks);
    pango_attr_list_unref(marks);
}

} // namespace

std::unique_ptr<CCairoCanvas> CCairoCanvas::Create(int width, int height, const CFonts& fonts)
{
    cairo_surface_t* const surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height);
    if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) {
        cairo_surface_destroy(surface);
        return nullptr;
    }
    return std::unique_ptr<CCairoCanvas>(new CCairoCanvas(surface, fonts));
}

CCairoCanvas::CCairoCanvas(cairo_surface_t* surface, const CFonts& fonts)
    : m_surface(surface), m_cairo(cairo_create(surface)), m_fonts(fonts)
{
}

CCairoCanvas::~CCairoCanvas()
{
    cairo_destroy(m_cairo);
    cairo_surface_destroy(m_surface);
}

PixelBuffer CCairoCanvas::Pixels()
{
    cairo_surface_flush(m_surface);
    return {cairo_image_surface_get_data(m_surface),
            static_cast<std::size_t>(cairo_image_surface_get_stride(m_surface)),
            cairo_image_surface_get_width(m_surface), cairo_image_surface_get_height(m_surface)};
}

bool CCairoCanvas::SavePng(const std::string& path)
{
    cairo_surface_flush(m_surface);
    const std::string sibling = path + "." + std::to_string(getpid()) + ".part";
    if (cairo_surface_write_to_png(m_surface, sibling.c_str()) == CAIRO_STATUS_SUCCESS &&
        std::rename(sibling.c_str(), path.c_str()) == 0)
        return true;
    (void)std::remove(sibling.c_str()); // it may not have come to be
    return false;
}

CanvasRect CCairoCanvas::Snapped(const CanvasRect& area) const
{
    const double scale = Scale();
    const double left = std::round(area.x * scale), top = std::round(area.y * scale);
    const double right = std::round((area.x + area.width) * scale);
    const double bottom = std::round((area.y + area.height) * scale);
    return {left, top, area.width > 0 ? std::max(right - left, 1.0) : 0,
            area.height > 0 ? std::max(bottom - top, 1.0) : 0};
}

void CCairoCanvas::PushClip(const CanvasRect& area)
{
    const double scale = Scale();
    const double left = std::floor(area.x * scale), top = std::floor(area.y * scale);
    cairo_save(m_cairo);
    cairo_rectangle(m_cairo, left, top, std::ceil((area.x + area.width) * scale) - left,
                    std::ceil((area.y + area.height) * scale) - top);
    cairo_clip(m_cairo);
}

void CCairoCanvas::PopClip()
{
    cairo_restore(m_cairo);
}

void CCairoCanvas::SetColour(Colour colour)
{
    const RgbaParts parts = PartsOf(colour);
    cairo_set_source_rgba(m_cairo, parts.red, parts.green, parts.blue, parts.alpha);
}

void CCairoCanvas::Clear(Colour colour)
{
    cairo_set_operator(m_cairo, CAIRO_OPERATOR_SOURCE);
    SetColour(colour);
    cairo_paint(m_cairo);
    cairo_set_operator(m_cairo, CAIRO_OPERATOR_OVER);
}

void CCairoCanvas::AddRounded(const CanvasRect& pixels, double radius)
{
    radius = std::min({radius, pixels.width / 2, pixels.height / 2});
    if (radius <= 0) {
        cairo_rectangle(m_cairo, pixels.x, pixels.y, pixels.width, pixels.height);
        return;
    }
    const double left = pixels.x + radius, right = pixels.x + pixels.width - radius;
    const double top = pixels.y + radius, bottom = pixels.y + pixels.height - radius;
    cairo_new_sub_path(m_cairo);
    cairo_arc(m_cairo, right, top, radius, -kQuarterTurn, 0);
    cairo_arc(m_cairo, right, bottom, radius, 0, kQuarterTurn);
    cairo_arc(m_cairo, left, bottom, radius, kQuarterTurn, 2 * kQuarterTurn);
    cairo_arc(m_cairo, left, top, radius, 2 * kQuarterTurn, 3 * kQuarterTurn);
    cairo_close_path(m_cairo);
}

void CCairoCanvas::Fill(const CanvasRect& area, double radius, Colour colour)
{
    AddRounded(Snapped(area), radius * Scale());
    SetColour(colour);
    cairo_fill(m_cairo);
}

void CCairoCanvas::FillGraded(const CanvasRect& area, double radius, Colour top, Colour bottom)
{
    const CanvasRect pixels = Snapped(area);
    const RgbaParts first = PartsOf(top), last = PartsOf(bottom);
    cairo_pattern_t* const grade = cairo_pattern_create_linear(0, pixels.y, 0, pixels.y + pixels.height);
    cairo_pattern_add_color_stop_rgba(grade, 0, first.red, first.green, first.blue, first.alpha);
    cairo_pattern_add_color_stop_rgba(grade, 1, last.red, last.green, last.blue, last.alpha);
    AddRounded(pixels, radius * Scale());
    cairo_set_source(m_cairo, grade);
    cairo_fill(m_cairo);
    cairo_pattern_destroy(grade);
}

void CCairoCanvas::Stroke(const CanvasRect& area, double radius, double width, Colour colour)
{
    const double line = std::max(1.0, std::round(width * Scale()));
    AddRounded(Snapped(area).Inset(line / 2), radius * Scale() - line / 2);
    SetColour(colour);
    cairo_set_line_width(m_cairo, line);
    cairo_stroke(m_cairo);
}

void CCairoCanvas::FillShape(const std::vector<CanvasPoint>& corners, Colour colour)
{
    for (const CanvasPoint& corner : corners)
        cairo_line_to(m_cairo, corner.x * Scale(), corner.y * Scale());
    SetColour(colour);
    cairo_fill(m_cairo);
}

void CCairoCanvas::StrokeLine(const std::vector<CanvasPoint>& points, double width, Colour colour)
{
    for (const CanvasPoint& point : points)
        cairo_line_to(m_cairo, point.x * Scale(), point.y * Scale());
    cairo_set_line_cap(m_cairo, CAIRO_LINE_CAP_ROUND);
    cairo_set_line_join(m_cairo, CAIRO_LINE_JOIN_ROUND);
    cairo_set_line_width(m_cairo, width * Scale());
    SetColour(colour);
    cairo_stroke(m_cairo);
}

void CCairoCanvas::DrawText(const TextLayout& layout, const TextStyle& style, double x, double y)
{
    PangoLayout* const lines = m_fonts.LayOut(layout);
    if (!lines) {
        DrawBoxes(layout, style, x, y);
        return;
    }
    double shift = m_fonts.ShiftOf(layout, lines);
    if (layout.width > 0 && style.ellipsised) {
        PangoRectangle extent;
        pango_layout_get_extents(lines, nullptr, &extent);
        const int width = static_cast<int>(std::ceil(layout.width * Scale())) * PANGO_SCALE;
        const int height = static_cast<int>(std::ceil(style.height * Scale())) * PANGO_SCALE;
        const bool tooHigh = layout.wrapped && style.height > 0 && extent.height > height;
        if (tooHigh || (!layout.wrapped && extent.width > width)) {
            pango_layout_set_width(lines, width);
            pango_layout_set_ellipsize(lines, PANGO_ELLIPSIZE_END);
            if (tooHigh)
                pango_layout_set_height(lines, height);
            shift = 0;
        }
    }
    if (style.selectionEnd > style.selectionStart) {
        const auto [start, end] = m_fonts.ShownRange(layout, style.selectionStart, style.selectionEnd);
        MarkSelection(lines, style, start, end);
    }
    SetColour(style.colour);
    cairo_move_to(m_cairo, std::round(x * Scale()) + shift, std::round(y * Scale()));
    pango_cairo_show_layout(m_cairo, lines);
    cairo_new_path(m_cairo);
}

void CCairoCanvas::DrawBoxes(const TextLayout& layout, const TextStyle& style, double x, double y)
{
    const TextSize size = CFonts::MeasureBoxes(layout);
    const double right = layout.width > 0 ? std::min(layout.width, size.width) : size.width;
    const int columns = static_cast<int>((right + 0.5) / CFonts::kBoxWidth);
    const int rows = static_cast<int>(size.height / CFonts::kBoxHeight);
    for (int box = 0; box < columns * rows; ++box)
        Stroke({x + box % columns * CFonts::kBoxWidth + 1, y + box / columns * CFonts::kBoxHeight + 3,
                CFonts::kBoxWidth - 2, CFonts::kBoxHeight - 6},
               1, 1, style.colour.WithAlpha(0.5));
}

void CCairoCanvas::DrawPicture(const PixelBuffer& picture, const CanvasRect& area, double alpha)
{
    if (picture.width <= 0 || picture.height <= 0 || area.width <= 0 || area.height <= 0)
        return;
    // cairo only reads a source; its interface has no word for that.
    cairo_surface_t* const source =
        cairo_image_surface_create_for_data(const_cast<unsigned char*>(picture.bytes), CAIRO_FORMAT_ARGB32,
                                            picture.width, picture.height, static_cast<int>(picture.stride));
    const CanvasRect pixels = Snapped(area);
    cairo_save(m_cairo);
    cairo_rectangle(m_cairo, pixels.x, pixels.y, pixels.width, pixels.height);
    cairo_clip(m_cairo);
    cairo_translate(m_cairo, pixels.x, pixels.y);
    cairo_scale(m_cairo, pixels.width / picture.width, pixels.height / picture.height);
    cairo_set_source_surface(m_cairo, source, 0, 0);
    cairo_pattern_set_filter(cairo_get_source(m_cairo), CAIRO_FILTER_GOOD);
    cairo_pattern_set_extend(cairo_get_source(m_cairo), CAIRO_EXTEND_PAD); // else the edges fade
    cairo_paint_with_alpha(m_cairo, alpha);
    cairo_restore(m_cairo);
    cairo_surface_destroy(source);
}
