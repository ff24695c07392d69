// platform/corefoundation/PropertyListBinary.cpp
//
// Layout: "bplist00", the objects, a table of their offsets, and a trailer of 32 bytes that tells
// the widths of an offset and of a reference, the number of objects, the root and the table's
// place. All numbers have their uppermost byte first.
#include "platform/corefoundation/PropertyListBinary.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <unordered_map>

#include "platform/base/Text.h"
#include "platform/corefoundation/Collections.h"
#include "platform/corefoundation/String.h"
#include "platform/corefoundation/Value.h"

namespace {

constexpr std::string_view kMagic = "bplist00";
constexpr std::size_t kTrailerSize = 32;
constexpr int kMostLevels = 512;
constexpr std::uint64_t kMostExpanded = 4'000'000;

// The upper half of an object's first byte.
enum Kind : unsigned {
    kSimple = 0x0,
    kInteger = 0x1,
    kReal = 0x2,
    kDate = 0x3,
    kData = 0x4,
    kAscii = 0x5,
    kUtf16 = 0x6,
    kUtf8 = 0x7,
    kUid = 0x8,
    kArray = 0xA,
    kDictionary = 0xD
};
constexpr unsigned char kFalse = 0x08;
constexpr unsigned char kTrue = 0x09;

std::uint64_t NumberOf(std::string_view bytes) noexcept
{
    std::uint64_t value = 0;
    for (const char byte : bytes)
        value = (value << 8U) | static_cast<unsigned char>(byte);
    return value;
}

template <typename Float, typename Bits>
double FloatOf(std::string_view bytes) noexcept
{
    const Bits bits = static_cast<Bits>(NumberOf(bytes));
    Float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return static_cast<double>(value);
}

template <typename T>
CRef<const CObject> Made(T* object)
{
    return CRef<const CObject>::Adopt(object);
}

class CReader {
public:
    explicit CReader(std::string_view bytes) : m_bytes(bytes) {}

    CRef<const CObject> ReadRoot()
    {
        if (!IsBinaryPropertyList(m_bytes) || m_bytes.size() < kMagic.size() + kTrailerSize)
            return {};
        const std::string_view trailer = m_bytes.substr(m_bytes.size() - kTrailerSize);
        m_offsetSize = static_cast<unsigned char>(trailer[6]);
        m_referenceSize = static_cast<unsigned char>(trailer[7]);
        const std::uint64_t count = NumberOf(trailer.substr(8, 8));
        const std::uint64_t root = NumberOf(trailer.substr(16, 8));
        const std::uint64_t table = NumberOf(trailer.substr(24, 8));
        const std::uint64_t end = m_bytes.size() - kTrailerSize;
        if (m_offsetSize < 1 || m_offsetSize > 8 || m_referenceSize < 1 || m_referenceSize > 8 || table > end ||
            table < kMagic.size() || count > (end - table) / m_offsetSize || root >= count)
            return {};
        m_table = m_bytes.substr(static_cast<std::size_t>(table));
        m_bytes = m_bytes.substr(0, static_cast<std::size_t>(table));
        m_slots.resize(static_cast<std::size_t>(count));
        const Slot* const slot = Make(root, 0);
        return slot ? slot->object : CRef<const CObject>();
    }

private:
    struct Slot {
        CRef<const CObject> object;
        std::uint64_t expanded = 0; // objects in it if each reference were followed
        bool underWay = false;
    };

    // Where an object's content lies: `count` elements from `at` on.
    struct Extent {
        std::size_t at;
        std::uint64_t count;
    };

    bool Holds(std::size_t at, std::uint64_t count, std::uint64_t width) const
    {
        return at <= m_bytes.size() && count <= (m_bytes.size() - at) / width;
    }

    // The count stands in the first byte's lower half; 15 says that a whole number follows.
    std::optional<Extent> ExtentOf(std::size_t at, unsigned low) const
    {
        if (low != 0xF)
            return Extent{at + 1, low};
        if (!Holds(at, 2, 1))
            return std::nullopt;
        const unsigned marker = static_cast<unsigned char>(m_bytes[at + 1]);
        const std::size_t width = std::size_t(1) << (marker & 0xFU);
        if (marker >> 4U != kInteger || (marker & 0xFU) > 3 || !Holds(at + 2, width, 1))
            return std::nullopt;
        return Extent{at + 2 + width, NumberOf(m_bytes.substr(at + 2, width))};
    }

    // Null means malformed, here and below.
    const Slot* Make(std::uint64_t index, int level)
    {
        if (index >= m_slots.size() || level > kMostLevels)
            return nullptr;
        Slot& slot = m_slots[static_cast<std::size_t>(index)];
        if (slot.object)
            return &slot;
        if (slot.underWay)
            return nullptr;
        slot.underWay = true;
        slot.expanded = 1;
        const std::uint64_t offset =
            NumberOf(m_table.substr(static_cast<std::size_t>(index) * m_offsetSize, m_offsetSize));
        if (offset < kMagic.size() || offset >= m_bytes.size())
            return nullptr;
        slot.object = Decode(static_cast<std::size_t>(offset), slot, level);
        return slot.object && slot.expanded <= kMostExpanded ? &slot : nullptr;
    }

    const Slot* MakeReferred(std::size_t at, Slot& holder, int level)
    {
        const Slot* const item = Make(NumberOf(m_bytes.substr(at, m_referenceSize)), level + 1);
        if (item)
            holder.expanded += item->expanded;
        return item && holder.expanded <= kMostExpanded ? item : nullptr;
    }

    CRef<const CObject> Decode(std::size_t at, Slot& slot, int level)
    {
        const unsigned marker = static_cast<unsigned char>(m_bytes[at]);
        const unsigned low = marker & 0xFU;
        switch (marker >> 4U) {
        case kSimple:
            if (marker != kTrue && marker != kFalse)
                return {};
            return CRef<const CObject>::Share(marker == kTrue ? kCFBooleanTrue : kCFBooleanFalse);
        case kInteger:
            return DecodeInteger(at, low);
        case kReal:
        case kDate:
            return DecodeReal(at, marker);
        case kUid:
            return Holds(at, low + 2U, 1) ? Made(new OpaqueLeaf(m_bytes.substr(at, low + 2U))) : CRef<const CObject>();
        default:
            break;
        }
        const auto extent = ExtentOf(at, low);
        if (!extent)
            return {};
        switch (marker >> 4U) {
        case kData:
        case kAscii:
        case kUtf8:
        case kUtf16:
            return DecodeBytes(marker >> 4U, at, *extent);
        case kArray:
            return DecodeArray(*extent, slot, level);
        case kDictionary:
            return DecodeDictionary(*extent, slot, level);
        default:
            return {};
        }
    }

    CRef<const CObject> DecodeInteger(std::size_t at, unsigned low)
    {
        const std::size_t width = std::size_t(1) << low;
        if (low > 4 || !Holds(at + 1, width, 1))
            return {};
        const std::string_view bytes = m_bytes.substr(at + 1, width);
        const std::uint64_t value = NumberOf(bytes.substr(width > 8 ? 8 : 0));
        if (width > 8) { // a number beyond 64 bits with a sign, unless it is only written so
            const std::uint64_t upper = NumberOf(bytes.substr(0, 8));
            const bool negative = value >> 63U != 0;
            if (upper != (negative ? ~std::uint64_t(0) : 0))
                return Made(new OpaqueLeaf(m_bytes.substr(at, width + 1)));
        }
        return Made(new __CFNumber(static_cast<std::int64_t>(value))); // shorter ones have no sign
    }

    CRef<const CObject> DecodeReal(std::size_t at, unsigned marker)
    {
        const std::size_t width = std::size_t(1) << (marker & 0xFU);
        if ((width != 4 && width != 8) || !Holds(at + 1, width, 1))
            return {};
        const std::string_view bytes = m_bytes.substr(at + 1, width);
        const double value = width == 4 ? FloatOf<float, std::uint32_t>(bytes) : FloatOf<double, std::uint64_t>(bytes);
        if (marker >> 4U == kDate)
            return width == 8 ? Made(new __CFDate(value)) : CRef<const CObject>();
        return Made(new __CFNumber(value));
    }

    CRef<const CObject> DecodeBytes(unsigned kind, std::size_t at, const Extent& extent)
    {
        const std::size_t width = kind == kUtf16 ? 2 : 1;
        if (!Holds(extent.at, extent.count, width))
            return {};
        const std::string_view bytes = m_bytes.substr(extent.at, static_cast<std::size_t>(extent.count) * width);
        if (kind == kData)
            return Made(new __CFData(std::vector<UInt8>(bytes.begin(), bytes.end())));
        CRef<const __CFString> text;
        if (kind == kUtf16) {
            std::vector<std::uint16_t> units(bytes.size() / 2);
            for (std::size_t unit = 0; unit < units.size(); ++unit)
                units[unit] = static_cast<std::uint16_t>(NumberOf(bytes.substr(unit * 2, 2)));
            const auto utf8 = Utf8OfUtf16(units.data(), units.size());
            if (utf8)
                text = __CFString::Create(*utf8);
        } else {
            text = __CFString::Create(bytes);
        }
        return text ? Made(text.Detach()) : Made(new OpaqueLeaf(m_bytes.substr(at, extent.at + bytes.size() - at)));
    }

    CRef<const CObject> DecodeArray(const Extent& extent, Slot& slot, int level)
    {
        if (!Holds(extent.at, extent.count, m_referenceSize))
            return {};
        auto array = CRef<__CFArray>::Adopt(new __CFArray(kCFTypeArrayCallBacks));
        array->values.reserve(static_cast<std::size_t>(extent.count));
        for (std::size_t item = 0; item < extent.count; ++item) {
            const Slot* const value = MakeReferred(extent.at + item * m_referenceSize, slot, level);
            if (!value)
                return {};
            value->object->Retain();
            array->values.push_back(value->object.Get());
        }
        return Made(array.Detach());
    }

    CRef<const CObject> DecodeDictionary(const Extent& extent, Slot& slot, int level)
    {
        if (!Holds(extent.at, extent.count, 2 * m_referenceSize))
            return {};
        const auto count = static_cast<std::size_t>(extent.count);
        auto dictionary = CRef<__CFDictionary>::Adopt(
            new __CFDictionary(kCFTypeDictionaryKeyCallBacks, kCFTypeDictionaryValueCallBacks, false, count));
        for (std::size_t item = 0; item < count; ++item) {
            const Slot* const key = MakeReferred(extent.at + item * m_referenceSize, slot, level);
            const Slot* const value =
                key ? MakeReferred(extent.at + (count + item) * m_referenceSize, slot, level) : nullptr;
            if (!value || key->object->Type() != TypeId::String)
                return {};
            dictionary->Set(key->object.Get(), value->object.Get(), false);
        }
        return Made(dictionary.Detach());
    }

    std::string_view m_bytes; // the magic and the objects
    std::string_view m_table;
    std::size_t m_offsetSize = 0;
    std::size_t m_referenceSize = 0;
    std::vector<Slot> m_slots;
};

class CWriter {
public:
    std::optional<std::string> Write(const CObject& root)
    {
        if (!Place(root, 0))
            return std::nullopt;
        m_referenceSize = WidthOf(m_objects.size());
        std::vector<std::size_t> offsets;
        offsets.reserve(m_objects.size());
        m_bytes = kMagic;
        for (const Placed& placed : m_objects) {
            offsets.push_back(m_bytes.size());
            Encode(placed);
        }
        const std::size_t table = m_bytes.size();
        const std::size_t offsetSize = WidthOf(table);
        for (const std::size_t offset : offsets)
            PutNumber(offset, offsetSize);
        PutNumber(0, 6);
        PutNumber(offsetSize, 1);
        PutNumber(m_referenceSize, 1);
        PutNumber(m_objects.size(), 8);
        PutNumber(0, 8);
        PutNumber(table, 8);
        return std::move(m_bytes);
    }

private:
    struct Placed {
        const CObject* object;
        std::vector<std::size_t> children; // of a dictionary the keys, then the values
    };

    static std::size_t WidthOf(std::uint64_t value)
    {
        return value < 0x100 ? 1 : value < 0x10000 ? 2 : value < 0x100000000 ? 4 : 8;
    }

    // Gives the object and all in it their numbers; lists that are referred to twice are written
    // once, or a list of shared lists would grow without bound.
    std::optional<std::size_t> Place(const CObject& object, int level)
    {
        if (level > kMostLevels)
            return std::nullopt;
        const TypeId type = object.Type();
        const bool isList = type == TypeId::Array || type == TypeId::Dictionary;
        if (isList) {
            const auto known = m_lists.find(&object);
            if (known != m_lists.end())
                return known->second;
        } else if (type != TypeId::String && type != TypeId::Data && type != TypeId::Number && type != TypeId::Truth &&
                   type != TypeId::Date && type != TypeId::Opaque) {
            return std::nullopt;
        }
        const std::size_t number = m_objects.size();
        m_objects.push_back({&object, {}});
        if (isList) {
            auto children = type == TypeId::Array ? PlaceItems(static_cast<const __CFArray&>(object), level)
                                                  : PlacePairs(static_cast<const __CFDictionary&>(object), level);
            if (!children)
                return std::nullopt;
            m_objects[number].children = std::move(*children);
            m_lists.emplace(&object, number);
        }
        return number;
    }

    std::optional<std::vector<std::size_t>> PlaceItems(const __CFArray& array, int level)
    {
        std::vector<std::size_t> numbers;
        if (array.callBacks.retain != kCFTypeArrayCallBacks.retain)
            return std::nullopt; // its values need not be objects
        for (const void* value : array.values) {
            const auto number = Place(*ObjectOf(value), level + 1);
            if (!number)
                return std::nullopt;
            numbers.push_back(*number);
        }
        return numbers;
    }

    std::optional<std::vector<std::size_t>> PlacePairs(const __CFDictionary& dictionary, int level)
    {
        if (dictionary.keyCallBacks.retain != kCFTypeDictionaryKeyCallBacks.retain ||
            dictionary.valueCallBacks.retain != kCFTypeDictionaryValueCallBacks.retain)
            return std::nullopt;
        std::vector<std::pair<std::string_view, std::pair<const void*, const void*>>> pairs;
        pairs.reserve(dictionary.pairs.size());
        for (const auto& pair : dictionary.pairs) {
            if (!IsOfType(pair.first, TypeId::String))
                return std::nullopt;
            pairs.emplace_back(static_cast<CFStringRef>(pair.first)->Utf8(), pair);
        }
        std::sort(pairs.begin(), pairs.end());
        std::vector<std::size_t> numbers;
        numbers.reserve(2 * pairs.size());
        for (const bool keys : {true, false}) {
            for (const auto& pair : pairs) {
                const auto number = Place(*ObjectOf(keys ? pair.second.first : pair.second.second), level + 1);
                if (!number)
                    return std::nullopt;
                numbers.push_back(*number);
            }
        }
        return numbers;
    }

    void PutNumber(std::uint64_t value, std::size_t width)
    {
        for (std::size_t byte = width; byte-- > 0;)
            m_bytes.push_back(byte < 8 ? static_cast<char>((value >> (8 * byte)) & 0xFFU) : '\0');
    }

    void PutMarker(unsigned kind, unsigned low) { m_bytes.push_back(static_cast<char>((kind << 4U) | low)); }

    void PutWhole(std::uint64_t value, std::size_t width)
    {
        PutMarker(kInteger, width == 8 ? 3 : width == 4 ? 2 : width == 2 ? 1 : 0);
        PutNumber(value, width);
    }

    void PutCounted(unsigned kind, std::uint64_t count)
    {
        PutMarker(kind, count < 0xF ? static_cast<unsigned>(count) : 0xF);
        if (count >= 0xF)
            PutWhole(count, WidthOf(count));
    }

    void PutDouble(unsigned kind, double value)
    {
        std::uint64_t bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        PutMarker(kind, 3);
        PutNumber(bits, 8);
    }

    void PutText(const __CFString& text)
    {
        const std::string_view utf8 = text.Utf8();
        const auto units = static_cast<std::uint64_t>(text.Utf16Length());
        if (units == utf8.size()) { // ASCII
            PutCounted(kAscii, utf8.size());
            m_bytes += utf8;
            return;
        }
        PutCounted(kUtf16, units);
        for (std::size_t at = 0; at < utf8.size();) {
            const char32_t codePoint = NextCodePoint(utf8, at);
            if (codePoint >= 0x10000)
                PutNumber(0xD800 + ((codePoint - 0x10000) >> 10U), 2);
            PutNumber(codePoint < 0x10000 ? codePoint : 0xDC00 + (codePoint & 0x3FFU), 2);
        }
    }

    void Encode(const Placed& placed)
    {
        const CObject& object = *placed.object;
        switch (object.Type()) {
        case TypeId::String:
            PutText(static_cast<const __CFString&>(object));
            break;
        case TypeId::Truth:
            m_bytes.push_back(static_cast<char>(static_cast<const __CFBoolean&>(object).value ? kTrue : kFalse));
            break;
        case TypeId::Number: {
            const auto& number = static_cast<const __CFNumber&>(object);
            const auto whole = static_cast<std::uint64_t>(number.integer);
            if (number.isFloat)
                PutDouble(kReal, number.number);
            else
                PutWhole(whole, WidthOf(whole)); // a negative one takes all eight bytes
            break;
        }
        case TypeId::Date:
            PutDouble(kDate, static_cast<const __CFDate&>(object).time);
            break;
        case TypeId::Data: {
            const auto& bytes = static_cast<const __CFData&>(object).bytes;
            PutCounted(kData, bytes.size());
            m_bytes.append(bytes.begin(), bytes.end());
            break;
        }
        case TypeId::Opaque:
            m_bytes += static_cast<const OpaqueLeaf&>(object).bytes;
            break;
        default:
            PutCounted(object.Type() == TypeId::Array ? kArray : kDictionary,
                       placed.children.size() / (object.Type() == TypeId::Array ? 1 : 2));
            for (const std::size_t child : placed.children)
                PutNumber(child, m_referenceSize);
        }
    }

    std::vector<Placed> m_objects;
    std::unordered_map<const CObject*, std::size_t> m_lists;
    std::size_t m_referenceSize = 0;
    std::string m_bytes;
};

} // namespace

bool IsBinaryPropertyList(std::string_view bytes) noexcept
{
    return bytes.substr(0, 6) == kMagic.substr(0, 6); // the two digits are a version, and all read alike
}

CRef<const CObject> ReadBinaryPropertyList(std::string_view bytes)
{
    return CReader(bytes).ReadRoot();
}

std::optional<std::string> WriteBinaryPropertyList(const CObject& root)
{
    return CWriter().Write(root);
}
