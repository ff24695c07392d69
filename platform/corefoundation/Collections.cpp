// platform/corefoundation/Collections.cpp
//
// Arrays and dictionaries.
#include "platform/corefoundation/Collections.h"

#include "platform/base/Guard.h"
#include "platform/corefoundation/String.h"

namespace {

const void* RetainObject(CFAllocatorRef, const void* value)
{
    return CFRetain(value);
}

void ReleaseObject(CFAllocatorRef, const void* value)
{
    CFRelease(value);
}

// The callbacks of arrays and dictionaries have these three in common.
template <typename CallBacks>
const void* Retained(const CallBacks& callBacks, const void* value)
{
    return callBacks.retain ? callBacks.retain(nullptr, value) : value;
}

template <typename CallBacks>
void Released(const CallBacks& callBacks, const void* value)
{
    if (callBacks.release)
        callBacks.release(nullptr, value);
}

template <typename CallBacks>
std::string Described(const CallBacks& callBacks, const void* value)
{
    if (callBacks.copyDescription) {
        const auto text = CRef<const __CFString>::Adopt(callBacks.copyDescription(value));
        return std::string(Utf8Of(text.Get()));
    }
    char address[24] = "";
    snprintf(address, sizeof address, "%p", value);
    return address;
}

template <typename CallBacks>
bool AreEqual(const CallBacks& callBacks, const void* value1, const void* value2)
{
    return value1 == value2 || (callBacks.equal && callBacks.equal(value1, value2));
}

// An object that is null could be neither retained nor described.
template <typename CallBacks>
bool Accepts(const CallBacks& callBacks, const void* value)
{
    return value || callBacks.retain != RetainObject;
}

template <typename CallBacks>
CallBacks CallBacksOrNone(const CallBacks* callBacks)
{
    return callBacks ? *callBacks : CallBacks();
}

__CFDictionary* CreateDictionary(CFIndex capacity, const CFDictionaryKeyCallBacks* keyCallBacks,
                                 const CFDictionaryValueCallBacks* valueCallBacks, bool isMutable)
{
    return new __CFDictionary(CallBacksOrNone(keyCallBacks), CallBacksOrNone(valueCallBacks), isMutable,
                              static_cast<std::size_t>(capacity));
}

} // namespace

const CFArrayCallBacks kCFTypeArrayCallBacks = {0, RetainObject, ReleaseObject, CFCopyDescription, CFEqual};
const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks = {0,       RetainObject, ReleaseObject, CFCopyDescription,
                                                                CFEqual, CFHash};
const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks = {0, RetainObject, ReleaseObject, CFCopyDescription,
                                                                    CFEqual};

CRef<const __CFArray> __CFArray::AdoptObjects(std::vector<const void*> objects)
{
    __CFArray* const array = new __CFArray(kCFTypeArrayCallBacks);
    array->values = std::move(objects);
    return CRef<const __CFArray>::Adopt(array);
}

__CFArray::~__CFArray()
{
    for (const void* value : values)
        Released(callBacks, value);
}

bool __CFArray::EqualTo(const CObject& other) const
{
    const auto& array = static_cast<const __CFArray&>(other);
    if (values.size() != array.values.size())
        return false;
    for (std::size_t index = 0; index < values.size(); ++index) {
        if (!AreEqual(callBacks, values[index], array.values[index]))
            return false;
    }
    return true;
}

std::string __CFArray::Describe() const
{
    std::string text = "(";
    for (const void* value : values)
        text += (text.size() > 1 ? ", " : "") + Described(callBacks, value);
    return text + ")";
}

__CFDictionary::__CFDictionary(const CFDictionaryKeyCallBacks& withKeys, const CFDictionaryValueCallBacks& withValues,
                               bool canChange, std::size_t capacity)
    : keyCallBacks(withKeys), valueCallBacks(withValues), isMutable(canChange)
{
    MakeRoom(capacity);
}

__CFDictionary::~__CFDictionary()
{
    for (const auto& [key, value] : pairs) {
        Released(keyCallBacks, key);
        Released(valueCallBacks, value);
    }
}

bool __CFDictionary::EqualTo(const CObject& other) const
{
    const auto& dictionary = static_cast<const __CFDictionary&>(other);
    if (pairs.size() != dictionary.pairs.size())
        return false;
    for (const auto& [key, value] : pairs) {
        const void* theirs = nullptr;
        if (!dictionary.Find(key, theirs) || !AreEqual(valueCallBacks, value, theirs))
            return false;
    }
    return true;
}

std::string __CFDictionary::Describe() const
{
    std::string text = "{";
    for (const auto& [key, value] : pairs)
        text += (text.size() > 1 ? "; " : "") + Described(keyCallBacks, key) + " = " + Described(valueCallBacks, value);
    return text + "}";
}

std::uint32_t __CFDictionary::HashOf(const void* key) const
{
    const CFHashCode hash = keyCallBacks.hash ? keyCallBacks.hash(key) : reinterpret_cast<CFHashCode>(key) >> 4U;
    constexpr std::uint64_t kGoldenRatio = 0x9E3779B97F4A7C15; // spreads what differs in few bits
    return static_cast<std::uint32_t>((std::uint64_t{hash} * kGoldenRatio) >> 32U);
}

std::size_t __CFDictionary::FindSlot(const void* key, std::uint32_t hash) const
{
    std::size_t at = hash & (m_slots.size() - 1);
    for (; m_slots[at].place != 0; at = (at + 1) & (m_slots.size() - 1)) {
        if (m_slots[at].hash == hash && AreEqual(keyCallBacks, key, pairs[m_slots[at].place - 1].first))
            break;
    }
    return at;
}

std::size_t __CFDictionary::NextEmptySlot(std::uint32_t hash) const noexcept
{
    std::size_t at = hash & (m_slots.size() - 1);
    while (m_slots[at].place != 0)
        at = (at + 1) & (m_slots.size() - 1);
    return at;
}

void __CFDictionary::MakeRoom(std::size_t count)
{
    if (2 * count <= m_slots.size())
        return;
    std::size_t size = 8;
    while (size < 2 * count)
        size *= 2;
    pairs.reserve(size / 2);
    std::vector<Slot> old(size);
    old.swap(m_slots);
    for (const Slot& slot : old) {
        if (slot.place != 0)
            m_slots[NextEmptySlot(slot.hash)] = slot;
    }
}

void __CFDictionary::Append(const void* key, const void* value, std::uint32_t hash)
{
    MakeRoom(pairs.size() + 1);
    pairs.emplace_back(key, value);
    m_slots[NextEmptySlot(hash)] = {static_cast<std::uint32_t>(pairs.size()), hash};
}

bool __CFDictionary::Find(const void* key, const void*& value) const
{
    if (m_slots.empty() || !Accepts(keyCallBacks, key))
        return false;
    const Slot slot = m_slots[FindSlot(key, HashOf(key))];
    if (slot.place == 0)
        return false;
    value = pairs[slot.place - 1].second;
    return true;
}

void __CFDictionary::Set(const void* key, const void* value, bool replace)
{
    if (!Accepts(keyCallBacks, key) || !Accepts(valueCallBacks, value))
        return;
    const std::uint32_t hash = HashOf(key);
    const std::uint32_t known = m_slots.empty() ? 0 : m_slots[FindSlot(key, hash)].place;
    if (known != 0 && !replace)
        return;
    const void* const keptValue = Retained(valueCallBacks, value);
    if (known != 0) {
        Released(valueCallBacks, std::exchange(pairs[known - 1].second, keptValue));
        return;
    }
    const void* const keptKey = Retained(keyCallBacks, key);
    try {
        Append(keptKey, keptValue, hash);
    } catch (...) {
        Released(keyCallBacks, keptKey);
        Released(valueCallBacks, keptValue);
        throw;
    }
}

void __CFDictionary::AdoptPair(const void* key, const void* value)
{
    auto ownedKey = CRef<const CObject>::Adopt(ObjectOf(key));
    auto ownedValue = CRef<const CObject>::Adopt(ObjectOf(value));
    const std::uint32_t hash = HashOf(key);
    if (!m_slots.empty() && m_slots[FindSlot(key, hash)].place != 0)
        return;
    Append(key, value, hash);
    (void)ownedKey.Detach(); // they are the dictionary's now
    (void)ownedValue.Detach();
}

CFTypeID CFArrayGetTypeID(void)
{
    return static_cast<CFTypeID>(TypeId::Array);
}

CFArrayRef CFArrayCreate(CFAllocatorRef, const void** values, CFIndex numValues, const CFArrayCallBacks* callBacks)
{
    if (numValues < 0 || (!values && numValues > 0))
        return nullptr;
    return Guarded<CFArrayRef>(nullptr, [&]() -> CFArrayRef {
        auto array = CRef<__CFArray>::Adopt(new __CFArray(CallBacksOrNone(callBacks)));
        array->values.reserve(static_cast<std::size_t>(numValues));
        for (CFIndex index = 0; index < numValues; ++index) {
            if (!Accepts(array->callBacks, values[index]))
                return nullptr;
            array->values.push_back(Retained(array->callBacks, values[index]));
        }
        return array.Detach();
    });
}

CFIndex CFArrayGetCount(CFArrayRef theArray)
{
    return theArray ? static_cast<CFIndex>(theArray->values.size()) : 0;
}

const void* CFArrayGetValueAtIndex(CFArrayRef theArray, CFIndex idx)
{
    const bool inside = theArray && idx >= 0 && static_cast<std::size_t>(idx) < theArray->values.size();
    return inside ? theArray->values[static_cast<std::size_t>(idx)] : nullptr;
}

CFTypeID CFDictionaryGetTypeID(void)
{
    return static_cast<CFTypeID>(TypeId::Dictionary);
}

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef, const void** keys, const void** values, CFIndex numValues,
                                   const CFDictionaryKeyCallBacks* keyCallBacks,
                                   const CFDictionaryValueCallBacks* valueCallBacks)
{
    if (numValues < 0 || ((!keys || !values) && numValues > 0))
        return nullptr;
    return Guarded<CFDictionaryRef>(nullptr, [&] {
        auto dictionary = CRef<__CFDictionary>::Adopt(CreateDictionary(numValues, keyCallBacks, valueCallBacks, false));
        for (CFIndex index = 0; index < numValues; ++index)
            dictionary->Set(keys[index], values[index], false);
        return dictionary.Detach();
    });
}

CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef, CFIndex capacity,
                                                 const CFDictionaryKeyCallBacks* keyCallBacks,
                                                 const CFDictionaryValueCallBacks* valueCallBacks)
{
    if (capacity < 0)
        return nullptr;
    return Guarded<CFMutableDictionaryRef>(nullptr,
                                           [&] { return CreateDictionary(0, keyCallBacks, valueCallBacks, true); });
}

void CFDictionarySetValue(CFMutableDictionaryRef theDict, const void* key, const void* value)
{
    if (!theDict || !theDict->isMutable)
        return;
    (void)Guarded<bool>(false, [&] {
        theDict->Set(key, value, true);
        return true;
    });
}

CFIndex CFDictionaryGetCount(CFDictionaryRef theDict)
{
    return theDict ? static_cast<CFIndex>(theDict->pairs.size()) : 0;
}

Boolean CFDictionaryContainsKey(CFDictionaryRef theDict, const void* key)
{
    const void* value = nullptr;
    return theDict && theDict->Find(key, value);
}

const void* CFDictionaryGetValue(CFDictionaryRef theDict, const void* key)
{
    const void* value = nullptr;
    return theDict && theDict->Find(key, value) ? value : nullptr;
}

void CFDictionaryGetKeysAndValues(CFDictionaryRef theDict, const void** keys, const void** values)
{
    if (!theDict)
        return;
    std::size_t index = 0;
    for (const auto& [key, value] : theDict->pairs) {
        if (keys)
            keys[index] = key;
        if (values)
            values[index] = value;
        ++index;
    }
}
