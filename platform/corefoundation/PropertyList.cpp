// platform/corefoundation/PropertyList.cpp
//
// Property lists through libplist, into objects of our own and back.
#include <plist/plist.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string_view>
#include <vector>

#include "platform/base/Guard.h"
#include "platform/base/NeutralLocale.h"
#include "platform/corefoundation/Collections.h"
#include "platform/corefoundation/PropertyListCheck.h"
#include "platform/corefoundation/String.h"
#include "platform/corefoundation/Value.h"
#include <CoreFoundation/CFPropertyList.h>

namespace {

constexpr double kMicrosecond = 1e-6;

struct PlistFree {
    void operator()(void* node) const { plist_free(node); }
};
using PlistOwner = std::unique_ptr<void, PlistFree>;

struct MemoryFree {
    void operator()(void* memory) const { free(memory); }
};
template <typename T>
using MemoryOwner = std::unique_ptr<T, MemoryFree>;

// Objects travel here as plain references that the receiver owns; null means malformed.
CFTypeRef CreateObject(plist_t node, int depth);

CFTypeRef CreateText(plist_t node)
{
    std::uint64_t size = 0;
    const char* const text = plist_get_string_ptr(node, &size);
    return text ? __CFString::Create({text, static_cast<std::size_t>(size)}).Detach() : nullptr;
}

CFTypeRef CreateArray(plist_t node, int depth)
{
    auto array = CRef<__CFArray>::Adopt(new __CFArray(kCFTypeArrayCallBacks));
    array->values.reserve(plist_array_get_size(node));
    plist_array_iter step = nullptr;
    plist_array_new_iter(node, &step);
    const MemoryOwner<void> iterator(step);
    for (;;) {
        plist_t item = nullptr;
        plist_array_next_item(node, step, &item);
        if (!item)
            return array.Detach();
        const CFTypeRef object = CreateObject(item, depth + 1);
        if (!object)
            return nullptr;
        array->values.push_back(object);
    }
}

CFTypeRef CreateDictionary(plist_t node, int depth)
{
    auto dictionary = CRef<__CFDictionary>::Adopt(new __CFDictionary(
        kCFTypeDictionaryKeyCallBacks, kCFTypeDictionaryValueCallBacks, false, plist_dict_get_size(node)));
    plist_dict_iter step = nullptr;
    plist_dict_new_iter(node, &step);
    const MemoryOwner<void> iterator(step);
    for (;;) {
        char* name = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(node, step, &name, &item);
        const MemoryOwner<char> nameOwner(name);
        if (!item)
            return dictionary.Detach();
        auto key = __CFString::Create(name ? name : "");
        if (!key)
            return nullptr;
        const CFTypeRef object = CreateObject(item, depth + 1);
        if (!object)
            return nullptr;
        dictionary->AdoptPair(key.Detach(), object);
    }
}

CFTypeRef CreateObject(plist_t node, int depth)
{
    if (depth > kMostPropertyListDepth)
        return nullptr;
    switch (plist_get_node_type(node)) {
    case PLIST_STRING:
        return CreateText(node);
    case PLIST_BOOLEAN: {
        std::uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return value ? kCFBooleanTrue : kCFBooleanFalse;
    }
    case PLIST_UINT: {
        std::uint64_t value = 0;
        plist_get_uint_val(node, &value);
        return new __CFNumber(static_cast<std::int64_t>(value)); // negative ones come this way too
    }
    case PLIST_REAL: {
        double value = 0;
        plist_get_real_val(node, &value);
        return new __CFNumber(value);
    }
    case PLIST_DATE: {
        std::int32_t seconds = 0;
        std::int32_t microseconds = 0;
        plist_get_date_val(node, &seconds, &microseconds); // counted from 2001, both away from it
        return new __CFDate(seconds + (seconds < 0 ? -microseconds : microseconds) * kMicrosecond);
    }
    case PLIST_DATA: {
        std::uint64_t size = 0;
        const char* const bytes = plist_get_data_ptr(node, &size);
        return new __CFData(std::vector<UInt8>(bytes, bytes + size));
    }
    case PLIST_ARRAY:
        return CreateArray(node, depth);
    case PLIST_DICT:
        return CreateDictionary(node, depth);
    case PLIST_UID: {
        // The form that XML gives these references of keyed archives.
        std::uint64_t value = 0;
        plist_get_uid_val(node, &value);
        auto dictionary = CRef<__CFDictionary>::Adopt(
            new __CFDictionary(kCFTypeDictionaryKeyCallBacks, kCFTypeDictionaryValueCallBacks, false, 1));
        const auto number = CRef<__CFNumber>::Adopt(new __CFNumber(static_cast<std::int64_t>(value)));
        dictionary->Set(CFSTR("CF$UID"), number.Get(), false);
        return dictionary.Detach();
    }
    default:
        return nullptr;
    }
}

// The way back; null for an object that no property list can hold.
plist_t CreateNode(CFTypeRef object, int depth)
{
    if (!object || depth > kMostPropertyListDepth)
        return nullptr;
    switch (ObjectOf(object)->Type()) {
    case TypeId::String: {
        const std::string_view text = static_cast<CFStringRef>(object)->Utf8();
        return text.find('\0') == text.npos ? plist_new_string(text.data()) : nullptr;
    }
    case TypeId::Truth:
        return plist_new_bool(static_cast<CFBooleanRef>(object)->value);
    case TypeId::Number: {
        const auto* const number = static_cast<CFNumberRef>(object);
        return number->isFloat ? plist_new_real(number->number)
                               : plist_new_uint(static_cast<std::uint64_t>(number->integer));
    }
    case TypeId::Date: {
        const double time = static_cast<CFDateRef>(object)->time;
        const double whole = std::floor(time);
        if (!(std::abs(whole) < std::numeric_limits<std::int32_t>::max()))
            return nullptr;
        return plist_new_date(static_cast<std::int32_t>(whole),
                              static_cast<std::int32_t>((time - whole) / kMicrosecond));
    }
    case TypeId::Data: {
        const auto& bytes = static_cast<CFDataRef>(object)->bytes;
        return plist_new_data(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }
    case TypeId::Array: {
        PlistOwner array(plist_new_array());
        for (const void* value : static_cast<CFArrayRef>(object)->values) {
            const plist_t item = CreateNode(value, depth + 1);
            if (!item)
                return nullptr;
            plist_array_append_item(array.get(), item);
        }
        return array.release();
    }
    case TypeId::Dictionary: {
        PlistOwner dictionary(plist_new_dict());
        for (const auto& [key, value] : static_cast<CFDictionaryRef>(object)->pairs) {
            if (!IsOfType(key, TypeId::String) || Utf8Of(static_cast<CFStringRef>(key)).find('\0') != std::string::npos)
                return nullptr;
            const plist_t item = CreateNode(value, depth + 1);
            if (!item)
                return nullptr;
            plist_dict_set_item(dictionary.get(), static_cast<CFStringRef>(key)->Utf8().data(), item);
        }
        return dictionary.release();
    }
    default:
        return nullptr;
    }
}

CFPropertyListRef ParseList(CFDataRef data)
{
    if (!data)
        return nullptr;
    std::string_view bytes(reinterpret_cast<const char*>(data->bytes.data()), data->bytes.size());
    const bool isBinary = bytes.substr(0, 6) == "bplist";
    if (!isBinary && bytes.substr(0, 3) == "\xEF\xBB\xBF")
        bytes.remove_prefix(3); // a byte-order mark
    if (!(isBinary ? IsSoundBinaryPropertyList(bytes) : IsSoundXmlPropertyList(bytes)))
        return nullptr;
    const auto size = static_cast<std::uint32_t>(bytes.size()); // the check bounds it
    const CNeutralLocale neutral;
    plist_t root = nullptr;
    if (isBinary)
        plist_from_bin(bytes.data(), size, &root);
    else
        plist_from_xml(bytes.data(), size, &root);
    const PlistOwner owner(root);
    return root ? CreateObject(root, 0) : nullptr;
}

} // namespace

CFPropertyListRef CFPropertyListCreateFromXMLData(CFAllocatorRef, CFDataRef xmlData, CFOptionFlags,
                                                  CFStringRef* errorString)
{
    const CFPropertyListRef list = Guarded<CFPropertyListRef>(nullptr, [&] { return ParseList(xmlData); });
    if (errorString)
        *errorString = list ? nullptr : CFSTR("The data is no valid property list.");
    return list;
}

CFDataRef CFPropertyListCreateXMLData(CFAllocatorRef, CFPropertyListRef propertyList)
{
    return Guarded<CFDataRef>(nullptr, [&]() -> CFDataRef {
        const PlistOwner root(CreateNode(propertyList, 0));
        if (!root)
            return nullptr;
        const CNeutralLocale neutral;
        char* text = nullptr;
        std::uint32_t size = 0;
        plist_to_xml(root.get(), &text, &size);
        const MemoryOwner<char> owner(text);
        // What is written can be read again, or else is not written.
        const bool isReadable = text && IsSoundXmlPropertyList({text, size});
        return isReadable ? new __CFData(std::vector<UInt8>(text, text + size)) : nullptr;
    });
}
