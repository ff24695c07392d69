// platform/corefoundation/Url.h
//
// The URL object, and paths to and from file URLs for the rest of the layer.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/corefoundation/Object.h"
#include "platform/corefoundation/String.h"
#include <CoreFoundation/CFURL.h>

/// The pieces of a URL's text (RFC 3986, 3). What is absent is nullopt; the path never is.
struct UrlParts {
    std::optional<std::string_view> scheme;
    std::optional<std::string_view> authority;
    std::string_view path;
    std::optional<std::string_view> query;
    std::optional<std::string_view> fragment;
};

/// Splits a text that is known to be a URL; the pieces point into it.
UrlParts SplitUrl(std::string_view text) noexcept;

struct __CFURL final : CObject {
    __CFURL(CRef<const __CFString> text, CRef<const __CFURL> baseUrl)
        : string(std::move(text)), base(std::move(baseUrl))
    {
    }

    TypeId Type() const noexcept override { return TypeId::Url; }
    bool EqualTo(const CObject& other) const override;
    CFHashCode Hash() const override { return string->Hash(); }
    std::string Describe() const override { return std::string(string->Utf8()); }

    const CRef<const __CFString> string;
    const CRef<const __CFURL> base;
};

/// Makes the file URL of an absolute path, given as bytes; empty for another path.
CRef<const __CFURL> UrlOfPath(std::string_view path, bool isDirectory);

/// Answers the absolute path of a file URL, as bytes, without a slash at its end; nullopt for
/// another URL or a path that holds a NUL.
std::optional<std::string> PathOfUrl(CFURLRef url);
