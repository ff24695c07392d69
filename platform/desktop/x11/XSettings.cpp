// platform/desktop/x11/XSettings.cpp
//
// A cursor over the bytes that never leaves them.
#include "platform/desktop/x11/XSettings.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

namespace {

constexpr double kUsualDpi = 96;
constexpr double kDpiUnits = 1024; ///< Xft/DPI counts 1024ths.

class CReader {
public:
    explicit CReader(std::string_view bytes) : m_bytes(bytes) {}

    bool Failed() const { return m_failed; }
    void UseBigEndian(bool big) { m_big = big; }

    std::uint32_t Number(std::size_t size)
    {
        const std::string_view bytes = Take(size);
        std::uint32_t number = 0;
        for (std::size_t index = 0; index < bytes.size(); ++index)
            number = number << 8 | static_cast<std::uint8_t>(bytes[m_big ? index : bytes.size() - 1 - index]);
        return number;
    }
    /// Texts are filled up to a multiple of four.
    std::string Text(std::size_t size)
    {
        const std::string text(Take(size));
        (void)Take((4 - size % 4) % 4);
        return text;
    }
    std::string_view Take(std::size_t size)
    {
        if (m_failed || size > m_bytes.size()) {
            m_failed = true;
            return {};
        }
        const std::string_view taken = m_bytes.substr(0, size);
        m_bytes.remove_prefix(size);
        return taken;
    }

private:
    std::string_view m_bytes;
    bool m_big = false;
    bool m_failed = false;
};

enum EntryType : std::uint32_t { kNumber = 0, kText = 1, kColour = 2 };

} // namespace

std::optional<XSettings> ReadXSettings(std::string_view bytes)
{
    CReader reader(bytes);
    const std::uint32_t order = reader.Number(1);
    (void)reader.Take(3);
    if (order > 1)
        return std::nullopt;
    reader.UseBigEndian(order == 1);
    (void)reader.Number(4); // serial
    XSettings settings;
    for (std::uint32_t count = reader.Number(4); count > 0 && !reader.Failed(); --count) {
        const std::uint32_t type = reader.Number(1);
        (void)reader.Take(1);
        const std::string name = reader.Text(reader.Number(2));
        (void)reader.Number(4); // serial of the last change
        if (type == kNumber)
            settings.numbers[name] = static_cast<std::int32_t>(reader.Number(4));
        else if (type == kText)
            settings.texts[name] = reader.Text(reader.Number(4));
        else if (type == kColour)
            (void)reader.Take(8);
        else
            return std::nullopt;
    }
    if (reader.Failed())
        return std::nullopt;
    return settings;
}

std::optional<double> FindResource(std::string_view resources, std::string_view name)
{
    while (!resources.empty()) {
        const std::size_t end = std::min(resources.find('\n'), resources.size());
        const std::string_view line = resources.substr(0, end);
        resources.remove_prefix(std::min(end + 1, resources.size()));
        const std::size_t colon = line.find(':');
        if (colon == std::string_view::npos || line.substr(0, colon) != name)
            continue;
        const std::string value(line.substr(colon + 1));
        char* rest = nullptr;
        const double number = std::strtod(value.c_str(), &rest);
        if (rest != value.c_str())
            return number;
    }
    return std::nullopt;
}

double ScaleFrom(const XSettings& settings, std::string_view resources)
{
    const auto number = [&](const char* name) {
        const auto found = settings.numbers.find(name);
        return found == settings.numbers.end() ? 0.0 : static_cast<double>(found->second);
    };
    const double dpi = number("Xft/DPI") / kDpiUnits;
    double scale = dpi > 0 ? dpi / kUsualDpi : FindResource(resources, "Xft.dpi").value_or(kUsualDpi) / kUsualDpi;
    // Desktops that scale by whole numbers state the factor, and the density without it.
    const double factor = number("Gdk/WindowScalingFactor"), unscaled = number("Gdk/UnscaledDPI") / kDpiUnits;
    if (factor >= 1 && unscaled > 0)
        scale = factor * unscaled / kUsualDpi;
    else if (factor > 1)
        scale = std::max(scale, factor);
    return scale > 0 ? std::clamp(scale, 0.5, 8.0) : 1; // also for what is no number
}

bool IsDarkTheme(const XSettings& settings)
{
    const auto found = settings.texts.find("Net/ThemeName");
    if (found == settings.texts.end())
        return false;
    std::string name = found->second;
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return name.find("dark") != std::string::npos;
}
