// platform/corefoundation/Value.h
//
// The objects that hold one value: data, numbers, booleans and dates.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/corefoundation/Object.h"
#include <CoreFoundation/CFCollections.h>

struct __CFData final : CObject {
    explicit __CFData(std::vector<UInt8> content) : bytes(std::move(content)) {}

    TypeId Type() const noexcept override { return TypeId::Data; }
    bool EqualTo(const CObject& other) const override;
    CFHashCode Hash() const override;
    std::string Describe() const override;

    const std::vector<UInt8> bytes;
};

/// A whole number or a floating one, as it was made.
struct __CFNumber final : CObject {
    explicit __CFNumber(std::int64_t value) : isFloat(false), integer(value), number(static_cast<double>(value)) {}
    explicit __CFNumber(double value) : isFloat(true), integer(0), number(value) {}

    TypeId Type() const noexcept override { return TypeId::Number; }
    bool EqualTo(const CObject& other) const override;
    CFHashCode Hash() const override;
    std::string Describe() const override;

    const bool isFloat;
    const std::int64_t integer; // 0 when isFloat
    const double number;
};

struct __CFBoolean final : CObject {
    constexpr explicit __CFBoolean(bool truth) : CObject(Lifetime::Constant), value(truth) {}

    TypeId Type() const noexcept override { return TypeId::Truth; }
    CFHashCode Hash() const override { return value ? 1 : 0; }
    std::string Describe() const override { return value ? "true" : "false"; }

    const bool value;
};

struct __CFDate final : CObject {
    explicit __CFDate(CFAbsoluteTime at) : time(at) {}

    TypeId Type() const noexcept override { return TypeId::Date; }
    bool EqualTo(const CObject& other) const override;
    CFHashCode Hash() const override;
    std::string Describe() const override;

    const CFAbsoluteTime time;
};
