// platform/drawing/cairo/Fonts.h
//
// Lays texts out with Pango in the user's font: what the canvas draws and what metrics measure.
#pragma once

#include <list>
#include <memory>
#include <string>
#include <utility>

#include <pango/pangocairo.h>

#include "platform/drawing/Text.h"

/// Gives back a GObject at the end of a scope.
struct CUnref {
    void operator()(void* object) const { g_object_unref(object); }
};
template <typename T>
using CObjectOf = std::unique_ptr<T, CUnref>;

/// The fonts at one scale. Layouts are in pixels; what is asked and answered is in points.
class CFonts final : public ITextMetrics {
public:
    /// @param family, points  the user's interface font, for example "Sans" and 10.
    CFonts(double scale, const std::string& family, double points);

    TextSize Measure(const TextLayout& layout) const override;
    CaretPlace PlaceOf(const TextLayout& layout, std::size_t offset) const override;
    std::size_t OffsetAt(const TextLayout& layout, double x, double y) const override;

    /// Lays a text out; valid until the next call. Null on a machine without any font.
    PangoLayout* LayOut(const TextLayout& layout) const;
    /// How far what LayOut answered, a line alone, is moved to the right to be justified; pixels.
    double ShiftOf(const TextLayout& layout, PangoLayout* lines) const;
    double Scale() const { return m_scale; }
    /// The bytes in the text that is shown, of a range in the text that is meant.
    static std::pair<std::size_t, std::size_t> ShownRange(const TextLayout& layout, std::size_t start, std::size_t end);
    /// Measures a text where there is no font: every character is a box.
    static TextSize MeasureBoxes(const TextLayout& layout);

    /// Takes another font, for layouts from now on.
    void SetFont(const std::string& family, double points);

    /// Side of a character's box where there is no font, in points.
    static constexpr double kBoxWidth = 7, kBoxHeight = 14;

private:
    /// A text that was laid out. Windows measure a text, draw it and draw it again, and the next
    /// window of its kind shows the same ones.
    struct Known {
        CObjectOf<PangoLayout> layout;
        TextFont font;
    };
    /// A layout that holds the text, the one of the last time if it is still there.
    PangoLayout* LayoutFor(std::string_view shown, TextFont font) const;

    const double m_scale;
    CObjectOf<PangoFontMap> m_map;
    CObjectOf<PangoContext> m_context;
    mutable std::list<Known> m_layouts; ///< The one used last in front.
    mutable CObjectOf<PangoLayout> m_long;
    std::string m_family;
    double m_points = 10;
};

/// The user's font for all scales: what the desktop found out, or a default.
class CUserFont {
public:
    static CUserFont& Get();

    /// Takes the user's font as the desktop describes it, "Family Style 11".
    /// @return true when it is another one than before.
    bool Set(const std::string& description);
    const CFonts& At(double scale);
    unsigned Generation() const { return m_generation; }

private:
    struct Entry {
        double scale;
        std::unique_ptr<CFonts> fonts;
    };
    std::list<Entry> m_entries; ///< Few; metrics that were handed out stay where they are.
    std::string m_family = "Sans";
    double m_points = 10;
    unsigned m_generation = 0;
};
