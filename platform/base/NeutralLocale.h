// platform/base/NeutralLocale.h
//
// Numbers are read and written with a point, whatever locale the host has set.
#pragma once

#include <locale.h>

/// The calling thread's locale is "C" for a scope; other threads keep theirs.
class CNeutralLocale {
public:
    CNeutralLocale() noexcept : m_old(uselocale(Neutral())) {}
    ~CNeutralLocale() { uselocale(m_old); }
    CNeutralLocale(const CNeutralLocale&) = delete;
    CNeutralLocale& operator=(const CNeutralLocale&) = delete;

private:
    // Made once and never freed, like all of the layer; null changes nothing.
    static locale_t Neutral() noexcept
    {
        static const locale_t neutral = newlocale(LC_ALL_MASK, "C", nullptr);
        return neutral;
    }

    locale_t m_old;
};
