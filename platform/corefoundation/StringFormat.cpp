// platform/corefoundation/StringFormat.cpp
//
// Formatting: printf's conversions, `%@` for an object, and positions. The format is parsed first,
// for positions decide in which order the arguments have to be fetched.
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "platform/base/Guard.h"
#include "platform/base/NeutralLocale.h"
#include "platform/base/Text.h"
#include "platform/corefoundation/String.h"

namespace {

constexpr std::size_t kMostArguments = 64;
constexpr int kMostWidth = 4096; // also for precisions; a format must not exhaust memory

enum class Kind { Unused, Int, Long, LongLong, Size, PtrDiff, IntMax, Double, LongDouble, Text, Object, Pointer };

struct Value {
    Kind kind = Kind::Unused;
    std::intmax_t integer = 0;
    double number = 0;
    long double longNumber = 0;
    const void* pointer = nullptr;
};

struct Field {
    std::string_view literal; // text in front of the conversion
    std::string flags;
    int width = -1;
    int precision = -1;
    std::size_t widthArgument = 0; // 1-based; 0 for none
    std::size_t precisionArgument = 0;
    std::string length;
    char conversion = 0; // 0 for none: the literal at the end
    std::size_t argument = 0;
};

class CParser {
public:
    explicit CParser(std::string_view format) : m_format(format) {}

    bool Parse(std::vector<Field>& fields, std::vector<Kind>& kinds)
    {
        m_kinds = &kinds;
        while (m_at < m_format.size()) {
            Field field;
            const std::size_t percent = m_format.find('%', m_at);
            field.literal = m_format.substr(m_at, percent == std::string_view::npos ? percent : percent - m_at);
            m_at += field.literal.size();
            if (m_at < m_format.size()) {
                ++m_at;
                if (!ParseConversion(field))
                    return false;
            }
            fields.push_back(field);
        }
        // Whoever skips a position leaves its type unknown, and all behind it out of reach.
        for (const Kind kind : kinds) {
            if (kind == Kind::Unused)
                return false;
        }
        return true;
    }

private:
    bool ParseConversion(Field& field)
    {
        const std::size_t start = m_at;
        std::size_t position = 0;
        if (!ParseNumber(position) || !Accept('$')) {
            position = 0;
            m_at = start;
        }
        while (m_at < m_format.size() && std::string_view("-+ #0'").find(m_format[m_at]) != std::string_view::npos)
            field.flags.push_back(m_format[m_at++]);
        if (!ParseCount(field.width, field.widthArgument))
            return false;
        if (Accept('.')) {
            field.precision = 0;
            if (!ParseCount(field.precision, field.precisionArgument))
                return false;
        }
        while (m_at < m_format.size() && std::string_view("hlzjtqL").find(m_format[m_at]) != std::string_view::npos)
            field.length.push_back(m_format[m_at++]);
        if (m_at == m_format.size())
            return false;
        field.conversion = m_format[m_at++];
        if (field.conversion == '%')
            return m_at == start + 1;
        const Kind kind = KindOf(field);
        return kind != Kind::Unused && Claim(position, kind, field.argument);
    }

    // A width or precision: a number, `*` or `*2$`.
    bool ParseCount(int& count, std::size_t& argument)
    {
        std::size_t number = 0;
        if (Accept('*')) {
            const std::size_t start = m_at;
            if (!ParseNumber(number) || !Accept('$')) {
                number = 0;
                m_at = start;
            }
            return Claim(number, Kind::Int, argument);
        }
        if (ParseNumber(number)) {
            if (number > static_cast<std::size_t>(kMostWidth))
                return false;
            count = static_cast<int>(number);
        }
        return true;
    }

    bool ParseNumber(std::size_t& number)
    {
        const std::size_t start = m_at;
        number = 0;
        while (m_at < m_format.size() && m_format[m_at] >= '0' && m_format[m_at] <= '9' && number <= 100000)
            number = number * 10 + static_cast<std::size_t>(m_format[m_at++] - '0');
        return m_at > start && m_format[start] != '0';
    }

    bool Accept(char expected)
    {
        if (m_at >= m_format.size() || m_format[m_at] != expected)
            return false;
        ++m_at;
        return true;
    }

    bool Claim(std::size_t position, Kind kind, std::size_t& argument)
    {
        // printf leaves it open what happens when both ways are mixed; here that is malformed.
        if ((position == 0 ? m_positioned : m_sequential))
            return false;
        (position == 0 ? m_sequential : m_positioned) = true;
        argument = position == 0 ? ++m_last : position;
        if (argument > kMostArguments)
            return false;
        if (m_kinds->size() < argument)
            m_kinds->resize(argument, Kind::Unused);
        Kind& known = (*m_kinds)[argument - 1];
        if (known != Kind::Unused && known != kind)
            return false;
        known = kind;
        return true;
    }

    static Kind KindOf(const Field& field)
    {
        const std::string& length = field.length;
        const bool plain = length.empty();
        switch (field.conversion) {
        case 'd':
        case 'i':
        case 'u':
        case 'x':
        case 'X':
        case 'o':
            if (plain || length == "h" || length == "hh")
                return Kind::Int;
            if (length == "l")
                return Kind::Long;
            if (length == "ll" || length == "q")
                return Kind::LongLong;
            if (length == "z")
                return Kind::Size;
            if (length == "t")
                return Kind::PtrDiff;
            return length == "j" ? Kind::IntMax : Kind::Unused;
        case 'c':
            return plain ? Kind::Int : Kind::Unused;
        case 'f':
        case 'F':
        case 'e':
        case 'E':
        case 'g':
        case 'G':
        case 'a':
        case 'A':
            return plain || length == "l" ? Kind::Double : length == "L" ? Kind::LongDouble : Kind::Unused;
        case 's':
            return plain ? Kind::Text : Kind::Unused;
        case '@':
            return plain ? Kind::Object : Kind::Unused;
        case 'p':
            return plain ? Kind::Pointer : Kind::Unused;
        default:
            return Kind::Unused; // %n, too, which writes
        }
    }

    std::string_view m_format;
    std::size_t m_at = 0;
    std::size_t m_last = 0;
    bool m_sequential = false;
    bool m_positioned = false;
    std::vector<Kind>* m_kinds = nullptr;
};

std::vector<Value> FetchArguments(const std::vector<Kind>& kinds, va_list arguments)
{
    std::vector<Value> values(kinds.size());
    for (std::size_t index = 0; index < kinds.size(); ++index) {
        Value& value = values[index];
        value.kind = kinds[index];
        switch (value.kind) {
        case Kind::Int:
            value.integer = va_arg(arguments, int);
            break;
        case Kind::Long:
            value.integer = va_arg(arguments, long);
            break;
        case Kind::LongLong:
            value.integer = va_arg(arguments, long long);
            break;
        case Kind::Size:
            value.integer = static_cast<std::intmax_t>(va_arg(arguments, std::size_t));
            break;
        case Kind::PtrDiff:
            value.integer = va_arg(arguments, std::ptrdiff_t);
            break;
        case Kind::IntMax:
            value.integer = va_arg(arguments, std::intmax_t);
            break;
        case Kind::Double:
            value.number = va_arg(arguments, double);
            break;
        case Kind::LongDouble:
            value.longNumber = va_arg(arguments, long double);
            break;
        case Kind::Text:
        case Kind::Object:
        case Kind::Pointer:
            value.pointer = va_arg(arguments, const void*);
            break;
        case Kind::Unused:
            break;
        }
    }
    return values;
}

template <typename Argument>
void AppendPrinted(std::string& text, const std::string& conversion, Argument argument)
{
    char buffer[256];
// The conversion is put together above from checked parts.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    const int size = snprintf(buffer, sizeof buffer, conversion.c_str(), argument);
    if (size < 0)
        return;
    if (static_cast<std::size_t>(size) < sizeof buffer) {
        text.append(buffer, static_cast<std::size_t>(size));
        return;
    }
    std::string large(static_cast<std::size_t>(size) + 1, '\0');
    snprintf(large.data(), large.size(), conversion.c_str(), argument);
#pragma GCC diagnostic pop
    text.append(large, 0, static_cast<std::size_t>(size));
}

// Text may not be cut inside a character, so precision and width count characters here.
void AppendText(std::string& text, const Field& field, std::string_view piece)
{
    std::size_t end = 0;
    int characters = 0;
    while (end < piece.size() && (field.precision < 0 || characters < field.precision)) {
        (void)NextCodePoint(piece, end);
        ++characters;
    }
    const std::size_t padding = field.width > characters ? static_cast<std::size_t>(field.width - characters) : 0;
    const bool left = field.flags.find('-') != std::string::npos;
    text.append(left ? 0 : padding, ' ');
    text.append(piece.substr(0, end));
    text.append(left ? padding : 0, ' ');
}

std::string ReadText(const char* bytes, int precision)
{
    if (!bytes)
        return "(null)";
    // With a precision the bytes need no NUL; a character takes at most 4 of them.
    const std::size_t most =
        precision < 0 ? std::numeric_limits<std::size_t>::max() : static_cast<std::size_t>(precision) * 4;
    std::size_t size = 0;
    while (size < most && bytes[size] != '\0' && (precision < 0 || size < static_cast<std::size_t>(precision)))
        ++size;
    const std::string_view text(bytes, size);
    return CountUtf16Units(text) ? std::string(text) : Utf8OfMacRoman(text);
}

void AppendField(std::string& text, Field field, const std::vector<Value>& values)
{
    text += field.literal;
    if (field.conversion == 0)
        return;
    if (field.conversion == '%') {
        text += '%';
        return;
    }
    const auto count = [&values](std::size_t argument) {
        const std::intmax_t wanted = values[argument - 1].integer;
        return static_cast<int>(wanted > kMostWidth ? kMostWidth : wanted < -kMostWidth ? -kMostWidth : wanted);
    };
    if (field.widthArgument != 0) {
        field.width = count(field.widthArgument);
        if (field.width < 0) {
            field.flags += '-';
            field.width = -field.width;
        }
    }
    if (field.precisionArgument != 0)
        field.precision = count(field.precisionArgument);

    std::string conversion = "%" + field.flags;
    if (field.width >= 0)
        conversion += std::to_string(field.width);
    if (field.precision >= 0)
        conversion += "." + std::to_string(field.precision);
    const Value& value = values[field.argument - 1];
    switch (value.kind) {
    case Kind::Double:
        AppendPrinted(text, conversion + field.conversion, value.number);
        break;
    case Kind::LongDouble:
        AppendPrinted(text, conversion + "L" + field.conversion, value.longNumber);
        break;
    case Kind::Text:
        AppendText(text, field, ReadText(static_cast<const char*>(value.pointer), field.precision));
        break;
    case Kind::Object:
        AppendText(text, field, value.pointer ? ObjectOf(value.pointer)->Describe() : "(null)");
        break;
    case Kind::Pointer:
        AppendPrinted(text, conversion + "p", value.pointer);
        break;
    default:
        if (field.conversion == 'c') {
            const char byte = static_cast<char>(value.integer);
            AppendText(text, field, Utf8OfMacRoman(std::string_view(&byte, 1)));
        } else {
            // All integers were widened to the widest; the length still decides how they are cut.
            std::intmax_t integer = value.integer;
            const bool isSigned = field.conversion == 'd' || field.conversion == 'i';
            if (field.length == "hh")
                integer = isSigned ? static_cast<signed char>(integer) : static_cast<unsigned char>(integer);
            else if (field.length == "h")
                integer = isSigned ? static_cast<short>(integer) : static_cast<unsigned short>(integer);
            else if (value.kind == Kind::Int && !isSigned)
                integer = static_cast<unsigned int>(integer);
            else if (value.kind == Kind::Long && !isSigned)
                integer = static_cast<std::intmax_t>(static_cast<unsigned long>(integer));
            AppendPrinted(text, conversion + "j" + field.conversion, integer);
        }
        break;
    }
}

} // namespace

CFStringRef CFStringCreateWithFormat(CFAllocatorRef alloc, CFDictionaryRef formatOptions, CFStringRef format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const CFStringRef string = CFStringCreateWithFormatAndArguments(alloc, formatOptions, format, arguments);
    va_end(arguments);
    return string;
}

CFStringRef CFStringCreateWithFormatAndArguments(CFAllocatorRef, CFDictionaryRef, CFStringRef format, va_list arguments)
{
    if (!format)
        return nullptr;
    return Guarded<CFStringRef>(nullptr, [&]() -> CFStringRef {
        std::vector<Field> fields;
        std::vector<Kind> kinds;
        if (!CParser(format->Utf8()).Parse(fields, kinds))
            return nullptr;
        const std::vector<Value> values = FetchArguments(kinds, arguments);
        const CNeutralLocale neutral;
        std::string text;
        for (const Field& field : fields)
            AppendField(text, field, values);
        return __CFString::Create(text).Detach();
    });
}
