// platform/corefoundation/String.h
//
// The string object: valid UTF-8 in one piece of memory with the object itself.
#pragma once

#include <string_view>

#include "platform/corefoundation/Object.h"
#include <CoreFoundation/CFString.h>

struct __CFString final : CObject {
    /// Makes a string; empty for bytes that are not valid UTF-8.
    static CRef<const __CFString> Create(std::string_view utf8, Lifetime lifetime = Lifetime::Counted);

    /// The text, with a NUL behind it.
    std::string_view Utf8() const noexcept { return {reinterpret_cast<const char*>(this + 1), m_size}; }
    CFIndex Utf16Length() const noexcept { return m_units; }

    TypeId Type() const noexcept override { return TypeId::String; }
    bool EqualTo(const CObject& other) const override;
    CFHashCode Hash() const override;
    std::string Describe() const override { return std::string(Utf8()); }

    void operator delete(void* memory) noexcept;

private:
    __CFString(std::string_view utf8, CFIndex units, Lifetime lifetime) noexcept;

    std::size_t m_size;
    CFIndex m_units;
};

/// Answers the text of a string reference; empty for null.
inline std::string_view Utf8Of(CFStringRef string) noexcept
{
    return string ? string->Utf8() : std::string_view();
}
