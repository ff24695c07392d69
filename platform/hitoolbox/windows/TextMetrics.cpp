// platform/hitoolbox/windows/TextMetrics.cpp
//
// Metrics of a font whose characters all have one width, for when nobody draws.
#include "platform/hitoolbox/windows/TextMetrics.h"

#include <algorithm>
#include <atomic>
#include <cmath>

#include "platform/base/Forever.h"
#include "platform/base/Text.h"

namespace {

constexpr double kAdvance = 7;
constexpr double kLineHeight = 16;

/// Lines end at line feeds, and at blanks where the text is wrapped.
class CFixedMetrics final : public ITextMetrics {
public:
    TextSize Measure(const TextLayout& layout) const override
    {
        TextSize size = {0, 0};
        Walk(layout, [&size](std::size_t, double x, double y) {
            size.width = std::max(size.width, x);
            size.height = y + kLineHeight;
            return true;
        });
        return size;
    }

    CaretPlace PlaceOf(const TextLayout& layout, std::size_t offset) const override
    {
        CaretPlace place = {0, 0, kLineHeight};
        Walk(layout, [&](std::size_t at, double x, double y) {
            if (at > offset)
                return false;
            place.x = x;
            place.y = y;
            return true;
        });
        return place;
    }

    std::size_t OffsetAt(const TextLayout& layout, double x, double y) const override
    {
        double best = -1;
        std::size_t offset = 0;
        const double line = std::max(0.0, std::floor(y / kLineHeight) * kLineHeight);
        Walk(layout, [&](std::size_t at, double left, double top) {
            // The line counts first, so that a click beside the text stays on its line.
            const double distance = std::fabs(top - line) * 1e6 + std::fabs(left - x);
            if (best < 0 || distance < best) {
                best = distance;
                offset = at;
            }
            return true;
        });
        return offset;
    }

private:
    // Calls `visit` for each border between characters, with its offset and place, until it answers false.
    template <typename Visit>
    static void Walk(const TextLayout& layout, Visit&& visit)
    {
        double x = 0;
        double y = 0;
        std::size_t at = 0;
        while (visit(at, x, y) && at < layout.text.size()) {
            const char32_t character = NextCodePoint(layout.text, at);
            const bool full = layout.wrapped && layout.width > 0 && x + 2 * kAdvance > layout.width;
            if (character == '\n' || (full && character == ' ')) {
                x = 0;
                y += kLineHeight;
            } else {
                x += kAdvance;
            }
        }
    }
};

std::atomic<const ITextMetrics*> g_metrics{nullptr};

} // namespace

const ITextMetrics& Metrics() noexcept
{
    static CForever<CFixedMetrics> fixed;
    const ITextMetrics* const metrics = g_metrics.load();
    return metrics ? *metrics : *fixed;
}

void SetMetrics(const ITextMetrics* metrics) noexcept
{
    g_metrics.store(metrics);
}
