// platform/drawing/cairo/Fonts.cpp
//
// One font map and a few kept layouts per scale; nothing is shared with the host's own Pango.
#include "platform/drawing/cairo/Fonts.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include <pango/pangofc-fontmap.h>

namespace {

constexpr double kPixelsPerInch = 96; ///< At scale 1, where a point of ours is one pixel.
constexpr double kTypographicPointsPerInch = 72;
constexpr const char* kBullet = "\u2022";

/// Size of each font as a part of the user's.
struct FontKind {
    double size;
    PangoWeight weight;
};
constexpr FontKind kFontKinds[] = {
    {1, PANGO_WEIGHT_NORMAL},  {1, PANGO_WEIGHT_BOLD},      {0.86, PANGO_WEIGHT_NORMAL},
    {0.86, PANGO_WEIGHT_BOLD}, {0.76, PANGO_WEIGHT_NORMAL}, {0.93, PANGO_WEIGHT_NORMAL},
};

std::size_t CountCharacters(std::string_view utf8)
{
    return static_cast<std::size_t>(
        std::count_if(utf8.begin(), utf8.end(), [](char byte) { return (byte & 0xC0) != 0x80; }));
}

std::string Conceal(std::string_view utf8)
{
    std::string bullets;
    for (std::size_t count = CountCharacters(utf8); count > 0; --count)
        bullets += kBullet;
    return bullets;
}

constexpr std::size_t kBulletBytes = 3;

/// Byte offset in the text that is shown, of one in the text that is meant.
std::size_t ShownOffset(const TextLayout& layout, std::size_t offset)
{
    offset = std::min(offset, layout.text.size());
    return layout.concealed ? CountCharacters(layout.text.substr(0, offset)) * kBulletBytes : offset;
}

std::size_t MeantOffset(const TextLayout& layout, std::size_t offset)
{
    if (!layout.concealed)
        return std::min(offset, layout.text.size());
    std::size_t position = 0;
    for (std::size_t count = offset / kBulletBytes; count > 0 && position < layout.text.size(); --count)
        do
            ++position;
        while (position < layout.text.size() && (layout.text[position] & 0xC0) == 0x80);
    return position;
}

/// A line alone starts where its direction says; Pango then needs a width to justify in.
PangoAlignment AlignmentOf(Justification justification, PangoLayout* lines)
{
    if (justification == Justification::Centre)
        return PANGO_ALIGN_CENTER;
    if (justification == Justification::ByScript)
        return PANGO_ALIGN_LEFT;
    // Pango swaps left and right for a text from right to left.
    const bool rightToLeft = pango_layout_get_direction(lines, 0) == PANGO_DIRECTION_RTL;
    return (justification == Justification::Left) == rightToLeft ? PANGO_ALIGN_RIGHT : PANGO_ALIGN_LEFT;
}

/// Pango's own list also has names that stand for any font, and would make an object of each family.
bool HasFonts(PangoFontMap* map)
{
    // Reading the configuration is under way in a thread of Pango's; this waits for it.
    FcConfig* const config = pango_fc_font_map_get_config(PANGO_FC_FONT_MAP(map));
    for (const FcSetName name : {FcSetSystem, FcSetApplication}) {
        const FcFontSet* const fonts = FcConfigGetFonts(config, name);
        if (fonts && fonts->nfont > 0)
            return true;
    }
    return false;
}

} // namespace

CFonts::CFonts(double scale, const std::string& family, double points)
    : m_scale(scale), m_map(pango_cairo_font_map_new())
{
    pango_cairo_font_map_set_resolution(PANGO_CAIRO_FONT_MAP(m_map.get()), kPixelsPerInch * scale);
    m_context.reset(pango_font_map_create_context(m_map.get()));
    cairo_font_options_t* const options = cairo_font_options_create();
    cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY); // right on every background and at every angle
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_SLIGHT);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_ON);
    pango_cairo_context_set_font_options(m_context.get(), options);
    cairo_font_options_destroy(options);
    SetFont(family, points);
}

void CFonts::SetFont(const std::string& family, double points)
{
    m_family = family;
    m_points = points;
}

PangoLayout* CFonts::LayoutFor(std::string_view shown, TextFont font) const
{
    constexpr std::size_t kMostLayouts = 24, kLongest = 512; // bytes; what is longer has one place of its own
    if (shown.size() > kLongest) {
        if (!m_long)
            m_long.reset(pango_layout_new(m_context.get()));
        if (shown != pango_layout_get_text(m_long.get()))
            pango_layout_set_text(m_long.get(), shown.data(), static_cast<int>(shown.size()));
        return m_long.get();
    }
    const auto known = std::find_if(m_layouts.begin(), m_layouts.end(), [&](const Known& candidate) {
        return candidate.font == font && shown == pango_layout_get_text(candidate.layout.get());
    });
    if (known != m_layouts.end()) {
        m_layouts.splice(m_layouts.begin(), m_layouts, known);
        return m_layouts.front().layout.get();
    }
    if (m_layouts.size() < kMostLayouts)
        m_layouts.push_front({CObjectOf<PangoLayout>(pango_layout_new(m_context.get())), font});
    else
        m_layouts.splice(m_layouts.begin(), m_layouts, std::prev(m_layouts.end()));
    m_layouts.front().font = font;
    pango_layout_set_text(m_layouts.front().layout.get(), shown.data(), static_cast<int>(shown.size()));
    return m_layouts.front().layout.get();
}

PangoLayout* CFonts::LayOut(const TextLayout& layout) const
{
    static const bool hasFonts = HasFonts(m_map.get()); // without any, Pango ends the process or draws anywhere
    if (!hasFonts)
        return nullptr;
    const std::string bullets = layout.concealed ? Conceal(layout.text) : std::string();
    const std::string_view shown = layout.concealed ? std::string_view(bullets) : layout.text;
    PangoLayout* const lines = LayoutFor(shown, layout.font);
    const FontKind& kind = kFontKinds[static_cast<std::size_t>(layout.font)];
    PangoFontDescription* const font = pango_font_description_new();
    pango_font_description_set_family_static(font, m_family.c_str());
    pango_font_description_set_weight(font, kind.weight);
    pango_font_description_set_absolute_size(
        font, std::round(m_points * kind.size * kPixelsPerInch / kTypographicPointsPerInch * m_scale * PANGO_SCALE));
    pango_layout_set_font_description(lines, font);
    pango_font_description_free(font);

    // What is as it was before costs nothing: Pango keeps the lines.
    pango_layout_set_attributes(lines, nullptr);
    // Pango wraps whatever has a width; a line alone is justified by hand, where it is placed.
    const bool wrapped = layout.wrapped && layout.width > 0;
    pango_layout_set_width(lines, wrapped ? static_cast<int>(std::ceil(layout.width * m_scale)) * PANGO_SCALE : -1);
    pango_layout_set_height(lines, -1);
    pango_layout_set_ellipsize(lines, PANGO_ELLIPSIZE_NONE);
    pango_layout_set_wrap(lines, PANGO_WRAP_WORD_CHAR);
    pango_layout_set_single_paragraph_mode(lines, !layout.wrapped);
    pango_layout_set_alignment(lines, AlignmentOf(layout.justification, lines));
    return lines;
}

double CFonts::ShiftOf(const TextLayout& layout, PangoLayout* lines) const
{
    if (layout.width <= 0 || layout.wrapped)
        return 0;
    PangoRectangle extent;
    pango_layout_get_extents(lines, nullptr, &extent);
    const double room = layout.width * m_scale - static_cast<double>(extent.width) / PANGO_SCALE;
    if (room <= 0)
        return 0;
    const bool rightToLeft = pango_layout_get_direction(lines, 0) == PANGO_DIRECTION_RTL;
    switch (layout.justification) {
    case Justification::Centre:
        return std::floor(room / 2);
    case Justification::Right:
        return std::floor(room);
    case Justification::Left:
        return 0;
    case Justification::ByScript:
        break;
    }
    return rightToLeft ? std::floor(room) : 0;
}

std::pair<std::size_t, std::size_t> CFonts::ShownRange(const TextLayout& layout, std::size_t start, std::size_t end)
{
    return {ShownOffset(layout, start), ShownOffset(layout, end)};
}

TextSize CFonts::MeasureBoxes(const TextLayout& layout)
{
    const double width = static_cast<double>(CountCharacters(layout.text)) * kBoxWidth;
    if (!layout.wrapped || layout.width <= 0 || width <= layout.width)
        return {width, kBoxHeight};
    const double perLine = std::max(1.0, std::floor(layout.width / kBoxWidth));
    return {layout.width, std::ceil(width / kBoxWidth / perLine) * kBoxHeight};
}

TextSize CFonts::Measure(const TextLayout& layout) const
{
    PangoLayout* const lines = LayOut(layout);
    if (!lines)
        return MeasureBoxes(layout);
    PangoRectangle extent;
    pango_layout_get_extents(lines, nullptr, &extent);
    return {std::ceil(static_cast<double>(extent.width) / PANGO_SCALE) / m_scale,
            std::ceil(static_cast<double>(extent.height) / PANGO_SCALE) / m_scale};
}

CaretPlace CFonts::PlaceOf(const TextLayout& layout, std::size_t offset) const
{
    PangoLayout* const lines = LayOut(layout);
    if (!lines)
        return {static_cast<double>(CountCharacters(layout.text.substr(0, offset))) * kBoxWidth, 0, kBoxHeight};
    PangoRectangle caret;
    pango_layout_get_cursor_pos(lines, static_cast<int>(ShownOffset(layout, offset)), &caret, nullptr);
    const double unit = PANGO_SCALE * m_scale;
    return {caret.x / unit + ShiftOf(layout, lines) / m_scale, caret.y / unit, caret.height / unit};
}

std::size_t CFonts::OffsetAt(const TextLayout& layout, double x, double y) const
{
    PangoLayout* const lines = LayOut(layout);
    if (!lines) {
        const double index = std::clamp(std::round(x / kBoxWidth), 0.0, static_cast<double>(layout.text.size()));
        TextLayout bullets = layout;
        bullets.concealed = true;
        return MeantOffset(bullets, static_cast<std::size_t>(index) * kBulletBytes);
    }
    const double shift = ShiftOf(layout, lines);
    const double unit = PANGO_SCALE;
    constexpr double kFarthest = 1 << 20; // pixels; what lies beyond does not fit Pango's units
    int index = 0, trailing = 0;
    (void)pango_layout_xy_to_index(
        lines, static_cast<int>(std::clamp(x * m_scale - shift, -kFarthest, kFarthest) * unit),
        static_cast<int>(std::clamp(y * m_scale, -kFarthest, kFarthest) * unit), &index, &trailing);
    const char* place = pango_layout_get_text(lines) + index;
    for (; trailing > 0; --trailing)
        place = g_utf8_next_char(place);
    return MeantOffset(layout, static_cast<std::size_t>(place - pango_layout_get_text(lines)));
}

CUserFont& CUserFont::Get()
{
    static auto& font = *new CUserFont;
    return font;
}

bool CUserFont::Set(const std::string& description)
{
    PangoFontDescription* const font = pango_font_description_from_string(description.c_str());
    const char* const family = pango_font_description_get_family(font);
    const double points = static_cast<double>(pango_font_description_get_size(font)) / PANGO_SCALE;
    const bool usable = family && points >= 5 && points <= 72 && !pango_font_description_get_size_is_absolute(font);
    const bool differs = usable && (m_family != family || std::abs(m_points - points) > 0.01);
    if (differs) {
        m_family = family;
        m_points = points;
        ++m_generation;
        for (Entry& entry : m_entries)
            entry.fonts->SetFont(m_family, m_points);
    }
    pango_font_description_free(font);
    return differs;
}

const CFonts& CUserFont::At(double scale)
{
    for (const Entry& entry : m_entries)
        if (std::abs(entry.scale - scale) < 1e-6)
            return *entry.fonts;
    m_entries.push_back({scale, std::make_unique<CFonts>(scale, m_family, m_points)});
    return *m_entries.back().fonts;
}
