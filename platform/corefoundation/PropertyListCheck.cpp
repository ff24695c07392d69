// platform/corefoundation/PropertyListCheck.cpp
//
// The check of foreign property lists: linear in their size, without recursion.
#include "platform/corefoundation/PropertyListCheck.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "platform/base/Text.h"

namespace {

constexpr std::size_t kTrailerSize = 32;
constexpr std::string_view kMagic = "bplist00";
constexpr double kMostDateSeconds = std::numeric_limits<std::int32_t>::max();
constexpr std::uint64_t kMostKeyWork = std::uint64_t{kMostPropertyListKeys} * kMostPropertyListKeys;
// Strings and data that are shared are copied to every place; so much may come on top.
constexpr std::uint64_t kMostSharedBytes = std::uint64_t{64} << 20U;
// libplist moves the rest of a text for every entity in it; so many bytes may be moved.
constexpr std::uint64_t kMostEntityWork = std::uint64_t{1} << 33U;

std::uint64_t KeyWork(std::size_t keys)
{
    return std::uint64_t{keys} * keys; // at most 2^48: a list has no more keys than bytes
}

// Sums stop here, far above every bound.
constexpr std::uint64_t kTooMuch = std::uint64_t{1} << 62U;

// The kinds of objects that the walk has to know, as their markers' upper halves have them.
constexpr unsigned kAsciiString = 0x5;
constexpr unsigned kUtf16String = 0x6;
constexpr unsigned kDictionary = 0xD;

class CBinaryCheck {
public:
    explicit CBinaryCheck(std::string_view bytes) : m_bytes(bytes) {}

    bool IsSound() { return ReadTrailer() && Walk() && IsBounded(); }

private:
    // What the bytes at an object's offset say.
    struct Object {
        unsigned kind = 0;
        std::size_t start = 0; // of the content, behind the marker and the count
        std::size_t count = 0; // items, bytes or UTF-16 units
        std::size_t size = 0;  // bytes of the content
        std::size_t references = 0;
    };
    enum class Mark : std::uint8_t { Unseen, Open, Done };
    struct Cost {
        Mark mark = Mark::Unseen;
        bool isString = false;
        std::uint16_t height = 0;
        std::uint32_t nodes = 0; // stays at the bound once it is passed
        std::uint64_t bytes = 0;
        std::uint64_t keyWork = 0;
    };
    struct Step {
        std::size_t index;
        Object object;
        std::size_t next;
    };

    std::uint64_t Number(std::size_t at, std::size_t size) const
    {
        std::uint64_t number = 0;
        for (std::size_t index = 0; index < size; ++index)
            number = (number << 8U) | static_cast<unsigned char>(m_bytes[at + index]);
        return number;
    }

    bool ReadTrailer()
    {
        if (m_bytes.size() < kMagic.size() + kTrailerSize || m_bytes.size() > kMostPropertyListBytes ||
            m_bytes.substr(0, kMagic.size()) != kMagic)
            return false;
        const std::size_t trailer = m_bytes.size() - kTrailerSize;
        m_offsetSize = static_cast<unsigned char>(m_bytes[trailer + 6]);
        m_referenceSize = static_cast<unsigned char>(m_bytes[trailer + 7]);
        const std::uint64_t count = Number(trailer + 8, 8);
        const std::uint64_t root = Number(trailer + 16, 8);
        const std::uint64_t table = Number(trailer + 24, 8);
        const auto isSize = [](std::size_t size) {
            return size >= 1 && size <= 8;
        };
        if (!isSize(m_offsetSize) || !isSize(m_referenceSize) || table < kMagic.size() || table > trailer ||
            count > (trailer - table) / m_offsetSize || root >= count)
            return false;
        m_table = static_cast<std::size_t>(table);
        m_root = static_cast<std::size_t>(root);
        m_costs.resize(static_cast<std::size_t>(count));
        // Objects that do not overlap have no more bytes than there are.
        m_budget = m_table;
        return true;
    }

    // Every object is read once, however often it is referred to.
    bool Walk()
    {
        std::vector<Step> steps;
        if (!Enter(m_root, steps))
            return false;
        while (!steps.empty()) {
            Step& step = steps.back();
            Cost& cost = m_costs[step.index];
            if (step.next == step.object.references) {
                cost.mark = Mark::Done;
                if (cost.height > kMostPropertyListDepth)
                    return false;
                const Cost done = cost;
                steps.pop_back();
                if (!steps.empty())
                    Add(m_costs[steps.back().index], done);
                continue;
            }
            const std::uint64_t child = Number(step.object.start + step.next * m_referenceSize, m_referenceSize);
            const bool isKey = step.object.kind == kDictionary && step.next < step.object.count;
            ++step.next;
            if (child >= m_costs.size())
                return false;
            const auto index = static_cast<std::size_t>(child);
            if (m_costs[index].mark == Mark::Open)
                return false; // it holds itself
            const bool known = m_costs[index].mark == Mark::Done;
            if (!known && !Enter(index, steps)) // `step` is no longer valid
                return false;
            if (isKey && !m_costs[index].isString)
                return false;
            if (known)
                Add(cost, m_costs[index]);
        }
        return true;
    }

    bool Enter(std::size_t index, std::vector<Step>& steps)
    {
        Object object;
        const std::uint64_t offset = Number(m_table + index * m_offsetSize, m_offsetSize);
        if (offset < kMagic.size() || offset >= m_table || !ReadObject(static_cast<std::size_t>(offset), object))
            return false;
        if (object.size + 1 > m_budget)
            return false;
        m_budget -= object.size + 1;
        Cost& cost = m_costs[index];
        cost.mark = Mark::Open;
        cost.isString = object.kind == kAsciiString || object.kind == kUtf16String;
        cost.nodes = 1;
        cost.bytes = object.references == 0 ? object.size : 0;
        cost.keyWork = object.kind == kDictionary ? KeyWork(object.count) : 0;
        steps.push_back({index, object, 0});
        return true;
    }

    static void Add(Cost& parent, const Cost& child)
    {
        parent.height = std::max(parent.height, static_cast<std::uint16_t>(child.height + 1));
        parent.nodes =
            static_cast<std::uint32_t>(std::min<std::size_t>(parent.nodes + child.nodes, kMostPropertyListNodes + 1));
        parent.bytes = std::min(parent.bytes + child.bytes, kTooMuch);
        parent.keyWork = std::min(parent.keyWork + child.keyWork, kTooMuch);
    }

    bool IsBounded() const
    {
        const Cost& root = m_costs[m_root];
        return root.nodes <= kMostPropertyListNodes && root.keyWork <= kMostKeyWork &&
               root.bytes <= kMostSharedBytes + m_bytes.size();
    }

    bool ReadObject(std::size_t at, Object& object) const
    {
        const auto marker = static_cast<unsigned char>(m_bytes[at]);
        object.kind = marker >> 4U;
        object.start = at + 1;
        const std::size_t low = marker & 0xFU;
        switch (object.kind) {
        case 0x0:
            return low == 0x8 || low == 0x9; // false and true
        case 0x1:
            return low <= 4 && Fits(object, std::size_t{1} << low, 1) && IsInteger(object);
        case 0x2:
            return (low == 2 || low == 3) && Fits(object, std::size_t{1} << low, 1);
        case 0x3:
            return low == 3 && Fits(object, 8, 1) && IsDate(object);
        case 0x8:
            return (low == 0 || low == 1 || low == 3) && Fits(object, low + 1, 1);
        case 0x4: // data
            return ReadCount(low, object) && Fits(object, object.count, 1);
        case kAsciiString:
            return ReadCount(low, object) && Fits(object, object.count, 1) && IsAscii(object);
        case kUtf16String:
            return ReadCount(low, object) && Fits(object, object.count, 2) && IsUtf16(object);
        case 0xA: // array
        case 0xC: // set
            object.references = 1;
            break;
        case kDictionary: // all keys, then all values
            object.references = 2;
            break;
        default:
            return false;
        }
        if (!ReadCount(low, object) || !Fits(object, object.count, object.references * m_referenceSize))
            return false;
        object.references *= object.count;
        return true;
    }

    bool ReadCount(std::size_t low, Object& object) const
    {
        object.count = low;
        if (low != 0xF)
            return true;
        if (object.start >= m_table)
            return false;
        const auto marker = static_cast<unsigned char>(m_bytes[object.start]);
        const std::size_t size = std::size_t{1} << (marker & 0xFU);
        if ((marker & 0xF0U) != 0x10 || size > 8 || size > m_table - object.start - 1)
            return false;
        const std::uint64_t count = Number(object.start + 1, size);
        object.start += 1 + size;
        object.count = static_cast<std::size_t>(std::min<std::uint64_t>(count, m_bytes.size()));
        return count <= m_bytes.size();
    }

    bool Fits(Object& object, std::size_t count, std::size_t each) const
    {
        object.size = count * each; // neither is large
        return object.size <= m_table - object.start;
    }

    // A NUL would end the text early and lose the rest.
    bool IsAscii(const Object& object) const
    {
        return m_bytes.substr(object.start, object.size).find('\0') == std::string_view::npos;
    }

    // Surrogates come in pairs; libplist drops others.
    bool IsUtf16(const Object& object) const
    {
        bool wantsLow = false;
        for (std::size_t at = 0; at < object.size; at += 2) {
            const std::uint64_t unit = Number(object.start + at, 2);
            const bool isLow = (unit & 0xFC00U) == 0xDC00;
            if (unit == 0 || isLow != wantsLow)
                return false;
            wantsLow = (unit & 0xFC00U) == 0xD800;
        }
        return !wantsLow;
    }

    bool IsInteger(const Object& object) const
    {
        if (object.size != 16)
            return true;
        const std::uint64_t high = Number(object.start, 8);
        return high == 0 && Number(object.start + 8, 8) >> 63U == 0;
    }

    bool IsDate(const Object& object) const
    {
        const std::uint64_t bits = Number(object.start, 8);
        double seconds = 0;
        std::memcpy(&seconds, &bits, sizeof seconds);
        return std::abs(seconds) < kMostDateSeconds; // false for what is no number
    }

    std::string_view m_bytes;
    std::size_t m_offsetSize = 0;
    std::size_t m_referenceSize = 0;
    std::size_t m_table = 0;
    std::size_t m_root = 0;
    std::size_t m_budget = 0;
    std::vector<Cost> m_costs;
};

bool IsSpace(char byte)
{
    return byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r';
}

bool IsDigit(char byte)
{
    return byte >= '0' && byte <= '9';
}

std::string_view Trimmed(std::string_view text)
{
    while (!text.empty() && IsSpace(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && IsSpace(text.back()))
        text.remove_suffix(1);
    return text;
}

bool TakeByte(std::string_view& text, char byte)
{
    if (text.empty() || text.front() != byte)
        return false;
    text.remove_prefix(1);
    return true;
}

bool TakePrefix(std::string_view& text, std::string_view prefix)
{
    // The first byte decides nearly always.
    if (text.empty() || text.front() != prefix.front() || text.substr(0, prefix.size()) != prefix)
        return false;
    text.remove_prefix(prefix.size());
    return true;
}

std::size_t TakeDigits(std::string_view& text)
{
    std::size_t count = 0;
    while (count < text.size() && IsDigit(text[count]))
        ++count;
    text.remove_prefix(count);
    return count;
}

// Reads digits of `base` up to the end; false for another character or more than `most`.
bool ReadNumber(std::string_view digits, unsigned base, std::uint64_t most, std::uint64_t& number)
{
    number = 0;
    for (const char byte : digits) {
        const char lower = static_cast<char>(byte | 0x20);
        const unsigned digit = IsDigit(byte)                  ? static_cast<unsigned>(byte - '0')
                               : lower >= 'a' && lower <= 'f' ? static_cast<unsigned>(lower - 'a') + 10
                                                              : base;
        if (digit >= base || number > (most - digit) / base)
            return false;
        number = number * base + digit;
    }
    return !digits.empty();
}

bool IsIntegerText(std::string_view text)
{
    text = Trimmed(text);
    const bool isNegative = TakeByte(text, '-');
    if (!isNegative)
        (void)TakeByte(text, '+');
    const unsigned base = TakePrefix(text, "0x") || TakePrefix(text, "0X") ? 16 : 10;
    constexpr auto kMost = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    std::uint64_t number = 0;
    const bool isOctal = base == 10 && text.size() > 1 && text.front() == '0';
    return !isOctal && ReadNumber(text, base, kMost + (isNegative ? 1 : 0), number);
}

bool IsRealText(std::string_view text)
{
    text = Trimmed(text);
    if (!TakeByte(text, '-'))
        (void)TakeByte(text, '+');
    if (text == "nan" || text == "inf" || text == "infinity")
        return true;
    std::size_t digits = TakeDigits(text);
    if (TakePrefix(text, "."))
        digits += TakeDigits(text);
    if (digits == 0)
        return false;
    if (TakePrefix(text, "e") || TakePrefix(text, "E")) {
        if (!TakeByte(text, '-'))
            (void)TakeByte(text, '+');
        if (TakeDigits(text) == 0)
            return false;
    }
    return text.empty();
}

// 2011-03-11T12:30:00Z
bool IsDateText(std::string_view text)
{
    constexpr std::string_view kShape = "0000-00-00T00:00:00Z";
    if (text.size() != kShape.size())
        return false;
    for (std::size_t at = 0; at < kShape.size(); ++at) {
        if (kShape[at] == '0' ? !IsDigit(text[at]) : text[at] != kShape[at])
            return false;
    }
    const auto within = [text](std::size_t at, std::size_t size, std::uint64_t low, std::uint64_t high) {
        std::uint64_t number = 0;
        return ReadNumber(text.substr(at, size), 10, high, number) && number >= low;
    };
    if (!within(0, 4, 1934, 2068) || !within(5, 2, 1, 12))
        return false;
    const auto pair = [text](std::size_t at) {
        return (text[at] - '0') * 10 + (text[at + 1] - '0');
    };
    constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const int month = pair(5);
    const int days = kDays[month - 1] + (month == 2 && pair(2) % 4 == 0 ? 1 : 0); // of all these years
    return within(8, 2, 1, static_cast<std::uint64_t>(days)) && within(11, 2, 0, 23) && within(14, 2, 0, 59) &&
           within(17, 2, 0, 59);
}

bool IsBase64Text(std::string_view text)
{
    std::size_t letters = 0;
    std::size_t padding = 0;
    for (const char byte : text) {
        if (IsSpace(byte))
            continue;
        const char lower = static_cast<char>(byte | 0x20);
        const bool isLetter = IsDigit(byte) || (lower >= 'a' && lower <= 'z') || byte == '+' || byte == '/';
        if (byte == '=')
            ++padding;
        else if (!isLetter || padding > 0)
            return false;
        ++letters;
    }
    return letters % 4 == 0 && padding <= 2;
}

// "lt" or "#xE9": what stands between & and ;
bool IsEntity(std::string_view name)
{
    for (const std::string_view known : {"lt", "gt", "amp", "apos", "quot"}) {
        if (name == known)
            return true;
    }
    if (!TakePrefix(name, "#"))
        return false;
    const unsigned base = TakePrefix(name, "x") ? 16 : 10;
    std::uint64_t code = 0;
    return ReadNumber(name, base, 0x10FFFF, code) && (code >= 0x20 || code == '\t' || code == '\n' || code == '\r') &&
           (code < 0xD800 || code > 0xDFFF);
}

// A name's letters as one number; names of more than eight letters are none of these either way.
constexpr std::uint64_t Packed(std::uint64_t letters, char next) noexcept
{
    return (letters << 8U) | static_cast<unsigned char>(next);
}

constexpr std::uint64_t Packed(std::string_view name) noexcept
{
    std::uint64_t letters = 0;
    for (const char letter : name)
        letters = Packed(letters, letter);
    return letters;
}

enum class Name : std::uint64_t {
    None,
    Plist = Packed("plist"),
    Dict = Packed("dict"),
    Array = Packed("array"),
    Key = Packed("key"),
    String = Packed("string"),
    Integer = Packed("integer"),
    Real = Packed("real"),
    True = Packed("true"),
    False = Packed("false"),
    Date = Packed("date"),
    Data = Packed("data")
};

class CXmlCheck {
public:
    explicit CXmlCheck(std::string_view text) : m_rest(text) {}

    bool IsSound()
    {
        if (m_rest.size() > kMostPropertyListBytes || m_rest.find('\0') != m_rest.npos || !CountUtf16Units(m_rest))
            return false;
        for (;;) {
            if (!SkipBetweenTags())
                return false;
            if (m_rest.empty())
                return m_isComplete;
            Tag tag;
            if (!ReadTag(tag) || !(tag.isEnd ? Close(tag) : Open(tag)))
                return false;
        }
    }

private:
    struct Tag {
        Name name = Name::None;
        bool isEnd = false;
        bool isEmpty = false;
    };
    struct Element {
        Name name;
        std::size_t children = 0;
    };

    bool SkipPast(std::string_view end)
    {
        const std::size_t at = m_rest.find(end);
        if (at == std::string_view::npos)
            return false;
        m_rest.remove_prefix(at + end.size());
        return true;
    }

    // Space, comments and, in front of the list, the declaration and the document type.
    bool SkipBetweenTags()
    {
        for (;;) {
            while (!m_rest.empty() && IsSpace(m_rest.front()))
                m_rest.remove_prefix(1);
            if (m_rest.size() < 2 || (m_rest[1] != '!' && m_rest[1] != '?'))
                return true; // nearly always
            const bool isProlog = m_open.empty() && !m_isComplete;
            if (TakePrefix(m_rest, "<!--")) {
                if (!SkipPast("-->"))
                    return false;
            } else if (isProlog && TakePrefix(m_rest, "<?")) {
                if (!SkipPast("?>"))
                    return false;
            } else if (isProlog && TakePrefix(m_rest, "<!DOCTYPE")) {
                const std::size_t end = m_rest.find_first_of("<>[");
                if (end == std::string_view::npos || m_rest[end] != '>')
                    return false; // a document type of its own, with entities maybe
                m_rest.remove_prefix(end + 1);
            } else {
                return true;
            }
        }
    }

    bool ReadTag(Tag& tag)
    {
        if (!TakeByte(m_rest, '<'))
            return false;
        tag.isEnd = TakeByte(m_rest, '/');
        std::size_t length = 0;
        std::uint64_t letters = 0;
        for (; length < m_rest.size() && m_rest[length] >= 'a' && m_rest[length] <= 'z'; ++length)
            letters = Packed(letters, m_rest[length]);
        m_rest.remove_prefix(length);
        tag.name = static_cast<Name>(letters);
        return TakeByte(m_rest, '>') || ReadRestOfTag(tag);
    }

    // Space, a slash, and the attributes of the list's own element.
    bool ReadRestOfTag(Tag& tag)
    {
        const std::size_t end = m_rest.find('>');
        std::string_view rest = m_rest.substr(0, end);
        if (end == std::string_view::npos || rest.find('<') != std::string_view::npos)
            return false;
        m_rest.remove_prefix(end + 1);
        tag.isEmpty = !tag.isEnd && !rest.empty() && rest.back() == '/';
        if (tag.isEmpty)
            rest.remove_suffix(1);
        const bool mayHaveAttributes = tag.name == Name::Plist && !tag.isEnd;
        return mayHaveAttributes ? rest.empty() || IsSpace(rest.front()) : Trimmed(rest).empty();
    }

    bool Close(const Tag& tag)
    {
        if (m_open.empty() || m_open.back().name != tag.name)
            return false;
        const Element element = m_open.back();
        m_open.pop_back();
        if (element.name == Name::Dict) {
            m_keyWork += KeyWork(element.children / 2);
            return element.children % 2 == 0 && m_keyWork <= kMostKeyWork;
        }
        m_isComplete = m_open.empty();
        return element.name == Name::Array || element.children == 1;
    }

    bool Open(const Tag& tag)
    {
        if (m_open.empty()) {
            m_open.push_back({tag.name});
            return tag.name == Name::Plist && !tag.isEmpty && !m_isComplete;
        }
        Element& parent = m_open.back();
        const bool wantsKey = parent.name == Name::Dict && parent.children % 2 == 0;
        if (wantsKey != (tag.name == Name::Key) || (parent.name == Name::Plist && parent.children == 1))
            return false;
        ++parent.children;
        // The list's own element is not counted.
        if (m_open.size() > static_cast<std::size_t>(kMostPropertyListDepth) + 1)
            return false;
        if (tag.name == Name::Dict || tag.name == Name::Array) {
            if (!tag.isEmpty)
                m_open.push_back({tag.name});
            return true;
        }
        return CheckLeaf(tag);
    }

    bool CheckLeaf(const Tag& tag)
    {
        if (tag.name == Name::String || tag.name == Name::Key)
            return tag.isEmpty || CheckText(tag.name);
        std::string_view text;
        if (!tag.isEmpty) {
            const std::size_t end = m_rest.find('<');
            if (end == std::string_view::npos)
                return false;
            text = m_rest.substr(0, end);
            m_rest.remove_prefix(end);
            if (!ReadEnd(tag.name))
                return false;
        }
        switch (tag.name) {
        case Name::True:
        case Name::False:
            return text.empty();
        case Name::Integer:
            return IsIntegerText(text);
        case Name::Real:
            return IsRealText(text);
        case Name::Date:
            return IsDateText(Trimmed(text));
        case Name::Data:
            return IsBase64Text(text);
        default:
            return false;
        }
    }

    // Text with entities, in pieces where there are CDATA sections.
    bool CheckText(Name name)
    {
        for (;;) {
            const std::size_t end = m_rest.find('<');
            if (end == std::string_view::npos || !AreEntitiesSound(m_rest.substr(0, end)))
                return false;
            m_rest.remove_prefix(end);
            if (m_rest.substr(0, 2) == "</")
                return ReadEnd(name);
            if (TakePrefix(m_rest, "<![CDATA[")) {
                if (!SkipPast("]]>"))
                    return false;
            } else if (!TakePrefix(m_rest, "<!--") || !SkipPast("-->")) {
                return false;
            }
        }
    }

    bool AreEntitiesSound(std::string_view text)
    {
        for (std::size_t at = text.find('&'); at != std::string_view::npos; at = text.find('&', at + 1)) {
            constexpr std::size_t kLongest = 12;
            const std::string_view name = text.substr(at + 1, kLongest);
            const std::size_t end = name.find(';');
            m_entityWork += text.size() - at;
            if (end == std::string_view::npos || !IsEntity(name.substr(0, end)) || m_entityWork > kMostEntityWork)
                return false;
        }
        return true;
    }

    bool ReadEnd(Name name)
    {
        Tag tag;
        return ReadTag(tag) && tag.isEnd && tag.name == name;
    }

    std::string_view m_rest;
    std::vector<Element> m_open;
    bool m_isComplete = false;
    std::uint64_t m_entityWork = 0;
    std::uint64_t m_keyWork = 0;
};

} // namespace

bool IsSoundBinaryPropertyList(std::string_view bytes)
{
    return CBinaryCheck(bytes).IsSound();
}

bool IsSoundXmlPropertyList(std::string_view text)
{
    return CXmlCheck(text).IsSound();
}
