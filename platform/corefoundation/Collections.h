// platform/corefoundation/Collections.h
//
// Arrays and dictionaries.
#pragma once

#include <unordered_map>
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

    struct KeyHash {
        CFHashCode operator()(const void* key) const
        {
            return callBacks->hash ? callBacks->hash(key) : reinterpret_cast<CFHashCode>(key) >> 4U;
        }
        const CFDictionaryKeyCallBacks* callBacks;
    };
    struct KeyEqual {
        bool operator()(const void* key1, const void* key2) const
        {
            return key1 == key2 || (callBacks->equal && callBacks->equal(key1, key2));
        }
        const CFDictionaryKeyCallBacks* callBacks;
    };

    const CFDictionaryKeyCallBacks keyCallBacks;
    const CFDictionaryValueCallBacks valueCallBacks;
    const bool isMutable;
    std::unordered_map<const void*, const void*, KeyHash, KeyEqual> pairs;
};
