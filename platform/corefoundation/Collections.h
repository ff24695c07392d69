// platform/corefoundation/Collections.h
//
// Arrays and dictionaries.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "platform/corefoundation/Object.h"
#include <CoreFoundation/CFCollections.h>

struct __CFArray final : CObject {
    /// Makes an array of Core Foundation objects and takes their references over.
    static CRef<const __CFArray> AdoptObjects(std::vector<const void*> objects);

    explicit __CFArray(const CFArrayCallBacks& with) : callBacks(with) {}
    ~__CFArray() override;

    TypeId Type() const noexcept override { return TypeId::Array; }
    bool EqualTo(const CObject& other) const override;
    CFHashCode Hash() const override { return values.size(); }
    std::string Describe() const override;

    std::vector<const void*> values;
    const CFArrayCallBacks callBacks;
};

struct __CFDictionary final : CObject {
    __CFDictionary(const CFDictionaryKeyCallBacks& withKeys, const CFDictionaryValueCallBacks& withValues,
                   bool canChange, std::size_t capacity);
    ~__CFDictionary() override;

    TypeId Type() const noexcept override { return TypeId::Dictionary; }
    bool EqualTo(const CObject& other) const override;
    CFHashCode Hash() const override { return pairs.size(); }
    std::string Describe() const override;

    /// Answers the value of `key` through `value`; false when it is absent.
    bool Find(const void* key, const void*& value) const;
    /// Adds or, where `replace` says so, replaces a pair; both are retained as the callbacks say.
    void Set(const void* key, const void* value, bool replace);
    /// Adds a pair of Core Foundation objects and takes their references over; a known key loses.
    void AdoptPair(const void* key, const void* value);

    const CFDictionaryKeyCallBacks keyCallBacks;
    const CFDictionaryValueCallBacks valueCallBacks;
    const bool isMutable;
    std::vector<std::pair<const void*, const void*>> pairs; ///< In the order in which they were added.

private:
    /// A place in `pairs`, from 1, and its key's hash; place 0 for an empty slot.
    struct Slot {
        std::uint32_t place = 0;
        std::uint32_t hash = 0;
    };

    std::uint32_t HashOf(const void* key) const;
    /// Answers the slot of a key, or the empty one where it would stand. There are slots.
    std::size_t FindSlot(const void* key, std::uint32_t hash) const;
    std::size_t NextEmptySlot(std::uint32_t hash) const noexcept;
    void Append(const void* key, const void* value, std::uint32_t hash);
    void MakeRoom(std::size_t count);

    std::vector<Slot> m_slots; // open-addressed, at most half of them taken; their number a power of two
};
