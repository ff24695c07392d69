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
    template <std::size_t Size>
    friend class CConstantString;

    // The text follows the object in memory.
    constexpr __CFString(std::size_t size, CFIndex units, Lifetime lifetime) noexcept
        : CObject(lifetime), m_size(size), m_units(units)
    {
    }

    std::size_t m_size;
    CFIndex m_units;
};

/// A string constant that the layer exports, of ASCII text: complete at compile time, for a program
/// may copy the exported pointer before any initialiser of the layer has run.
template <std::size_t Size>
class CConstantString {
public:
    constexpr explicit CConstantString(const char (&ascii)[Size])
        : m_string(Size - 1, Size - 1, Lifetime::Constant), m_text()
    {
        for (std::size_t at = 0; at < Size; ++at)
            m_text[at] = ascii[at];
    }
    ~CConstantString() {} // it is never destroyed

    constexpr CFStringRef Get() const { return &m_string; }

private:
    union {
        __CFString m_string;
    };
    char m_text[Size];
};

/// Answers the text of a string reference; empty for null.
inline std::string_view Utf8Of(CFStringRef string) noexcept
{
    return string ? string->Utf8() : std::string_view();
}
