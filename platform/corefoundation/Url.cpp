// platform/corefoundation/Url.cpp
//
// URLs after RFC 3986, and file URLs: their paths, and reading what they name.
#include "platform/corefoundation/Url.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "platform/base/Guard.h"
#include "platform/base/RegularFile.h"
#include "platform/base/Text.h"
#include "platform/corefoundation/Value.h"

namespace {

constexpr std::string_view kFilePrefix = "file://localhost";
constexpr std::uint64_t kMostResourceBytes = std::uint64_t{1} << 30U;

bool IsAlpha(char byte)
{
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
}

bool IsDigit(char byte)
{
    return byte >= '0' && byte <= '9';
}

bool IsUnreserved(char byte)
{
    return IsAlpha(byte) || IsDigit(byte) || byte == '-' || byte == '.' || byte == '_' || byte == '~';
}

// Schemes and hosts are the same in either case.
bool IsSameWord(std::string_view text, std::string_view lowerCase)
{
    return std::equal(text.begin(), text.end(), lowerCase.begin(), lowerCase.end(), [](char byte, char lower) {
        return (byte >= 'A' && byte <= 'Z' ? byte - 'A' + 'a' : byte) == lower;
    });
}

int HexValue(char byte)
{
    if (IsDigit(byte))
        return byte - '0';
    if (byte >= 'a' && byte <= 'f')
        return byte - 'a' + 10;
    return byte >= 'A' && byte <= 'F' ? byte - 'A' + 10 : -1;
}

bool IsEscape(std::string_view text, std::size_t at)
{
    return text.size() - at >= 3 && HexValue(text[at + 1]) >= 0 && HexValue(text[at + 2]) >= 0;
}

// Whether every character may stand in a URL, and those with a meaning of their own stand right.
bool IsUrl(std::string_view text)
{
    const UrlParts parts = SplitUrl(text);
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char byte = text[at];
        if (byte == '\0')
            return false;
        if (byte == '%') {
            if (!IsEscape(text, at))
                return false;
        } else if (byte == '[' || byte == ']') {
            const bool inAuthority = parts.authority && text.data() + at >= parts.authority->data() &&
                                     text.data() + at < parts.authority->data() + parts.authority->size();
            if (!inAuthority)
                return false;
        } else if (!IsUnreserved(byte) && !std::strchr("!$&'()*+,;=:@/?#", byte)) {
            return false;
        }
    }
    if (parts.fragment && parts.fragment->find('#') != std::string_view::npos)
        return false;
    if (!parts.scheme) {
        // A colon in the first segment would make what is in front of it a scheme.
        const std::string_view segment = parts.path.substr(0, parts.path.find('/'));
        return parts.authority || segment.find(':') == std::string_view::npos;
    }
    return true;
}

std::string Escape(std::string_view bytes)
{
    static constexpr char kDigits[] = "0123456789ABCDEF";
    const auto isPlain = [](char byte) {
        return byte != '\0' && (IsUnreserved(byte) || byte == '/');
    };
    std::string text;
    text.reserve(bytes.size());
    for (auto from = bytes.begin();;) {
        const auto end = std::find_if_not(from, bytes.end(), isPlain);
        text.append(from, end);
        if (end == bytes.end())
            return text;
        const auto code = static_cast<unsigned char>(*end);
        text.append({'%', kDigits[code >> 4U], kDigits[code & 0xFU]});
        from = end + 1;
    }
}

std::optional<std::string> Unescape(std::string_view text)
{
    if (text.find('\0') != std::string_view::npos)
        return std::nullopt;
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t from = 0;;) {
        const std::size_t at = std::min(text.find('%', from), text.size());
        bytes.append(text, from, at - from);
        if (at == text.size())
            return bytes;
        const int code = IsEscape(text, at) ? HexValue(text[at + 1]) * 16 + HexValue(text[at + 2]) : 0;
        if (code == 0)
            return std::nullopt; // an escaped NUL is no better than a broken escape
        bytes.push_back(static_cast<char>(code));
        from = at + 3;
    }
}

CRef<const __CFURL> MakeUrl(const std::string& text, CRef<const __CFURL> base)
{
    auto string = __CFString::Create(text);
    if (!string)
        return {};
    return CRef<const __CFURL>::Adopt(new __CFURL(std::move(string), std::move(base)));
}

std::string WithSlash(std::string path, bool isDirectory)
{
    while (!isDirectory && path.size() > 1 && path.back() == '/')
        path.pop_back();
    if (isDirectory && (path.empty() || path.back() != '/'))
        path.push_back('/');
    return path;
}

std::string RemoveDotSegments(std::string_view path)
{
    std::string out;
    while (!path.empty()) {
        if (path.substr(0, 3) == "../") {
            path.remove_prefix(3);
        } else if (path.substr(0, 2) == "./") {
            path.remove_prefix(2);
        } else if (path.substr(0, 3) == "/./" || path == "/.") {
            path = path.size() > 2 ? path.substr(2) : std::string_view("/");
        } else if (path.substr(0, 4) == "/../" || path == "/..") {
            path = path.size() > 3 ? path.substr(3) : std::string_view("/");
            out.erase(out.find_last_of('/') == std::string::npos ? 0 : out.find_last_of('/'));
        } else if (path == "." || path == "..") {
            path = {};
        } else {
            const std::size_t end = path.find('/', 1);
            out += path.substr(0, end);
            path = end == std::string_view::npos ? std::string_view() : path.substr(end);
        }
    }
    return out;
}

std::string JoinUrl(const UrlParts& parts, std::string_view path)
{
    std::string text;
    if (parts.scheme)
        text.append(*parts.scheme).push_back(':');
    if (parts.authority)
        text.append("//").append(*parts.authority);
    text.append(path);
    if (parts.query)
        text.append("?").append(*parts.query);
    if (parts.fragment)
        text.append("#").append(*parts.fragment);
    return text;
}

// RFC 3986, 5.2.2.
std::string Resolve(const __CFURL& url)
{
    const UrlParts own = SplitUrl(url.string->Utf8());
    if (!url.base || own.scheme)
        return std::string(url.string->Utf8());
    const std::string baseText = Resolve(*url.base);
    const UrlParts base = SplitUrl(baseText);
    UrlParts target = own;
    target.scheme = base.scheme;
    if (own.authority)
        return JoinUrl(target, RemoveDotSegments(own.path));
    target.authority = base.authority;
    if (own.path.empty()) {
        if (!own.query)
            target.query = base.query;
        return JoinUrl(target, base.path);
    }
    std::string path;
    if (own.path.front() != '/') {
        path = base.path.substr(0, base.path.rfind('/') + 1);
        if (path.empty() && base.authority)
            path = "/";
    }
    path += own.path;
    // A file's path is kept as it stands: a folder on the way may be a symbolic link, and then
    // ".." leads elsewhere than the text says.
    return JoinUrl(target, base.scheme && IsSameWord(*base.scheme, "file") ? path : RemoveDotSegments(path));
}

std::optional<std::string> FilePathOfText(std::string_view text, bool needScheme)
{
    const UrlParts parts = SplitUrl(text);
    const bool isFile = parts.scheme ? IsSameWord(*parts.scheme, "file") : !needScheme;
    const bool isLocal = !parts.authority || parts.authority->empty() || IsSameWord(*parts.authority, "localhost");
    if (!isFile || !isLocal)
        return std::nullopt;
    auto path = Unescape(parts.path);
    if (!path || path->empty())
        return std::nullopt;
    return WithSlash(std::move(*path), false);
}

std::optional<std::string> CopyWorkingFolder()
{
    char* const folder = getcwd(nullptr, 0);
    if (!folder)
        return std::nullopt;
    std::string path(folder);
    free(folder);
    return path;
}

SInt32 ErrorOfErrno(int error)
{
    switch (error) {
    case 0:
        return 0;
    case ENOENT:
    case ENOTDIR:
        return kCFURLResourceNotFoundError;
    case EACCES:
    case EPERM:
        return kCFURLResourceAccessViolationError;
    default:
        return kCFURLUnknownError;
    }
}

} // namespace

UrlParts SplitUrl(std::string_view text) noexcept
{
    UrlParts parts;
    if (const std::size_t hash = text.find('#'); hash != std::string_view::npos) {
        parts.fragment = text.substr(hash + 1);
        text = text.substr(0, hash);
    }
    if (const std::size_t mark = text.find('?'); mark != std::string_view::npos) {
        parts.query = text.substr(mark + 1);
        text = text.substr(0, mark);
    }
    if (const std::size_t colon = text.find(':'); colon != std::string_view::npos && colon > 0 && IsAlpha(text[0])) {
        std::size_t at = 1;
        while (at < colon &&
               (IsAlpha(text[at]) || IsDigit(text[at]) || text[at] == '+' || text[at] == '-' || text[at] == '.'))
            ++at;
        if (at == colon) {
            parts.scheme = text.substr(0, colon);
            text = text.substr(colon + 1);
        }
    }
    if (text.substr(0, 2) == "//") {
        const std::size_t end = text.find('/', 2);
        parts.authority = text.substr(2, end == std::string_view::npos ? end : end - 2);
        text = end == std::string_view::npos ? text.substr(text.size()) : text.substr(end);
    }
    parts.path = text;
    return parts;
}

bool __CFURL::EqualTo(const CObject& other) const
{
    const auto& url = static_cast<const __CFURL&>(other);
    return string->Utf8() == url.string->Utf8() && CFEqual(base.Get(), url.base.Get());
}

CRef<const __CFURL> UrlOfPath(std::string_view path, bool isDirectory)
{
    if (path.empty() || path.front() != '/' || path.find('\0') != std::string_view::npos)
        return {};
    return MakeUrl(std::string(kFilePrefix) + Escape(WithSlash(std::string(path), isDirectory)), {});
}

std::optional<std::string> PathOfUrl(CFURLRef url)
{
    if (!url)
        return std::nullopt;
    return FilePathOfText(Resolve(*url), true);
}

CFTypeID CFURLGetTypeID(void)
{
    return static_cast<CFTypeID>(TypeId::Url);
}

CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef, const UInt8* buffer, CFIndex bufLen,
                                                 Boolean isDirectory)
{
    if (!buffer || bufLen <= 0)
        return nullptr;
    return Guarded<CFURLRef>(nullptr, [&]() -> CFURLRef {
        const std::string_view path(reinterpret_cast<const char*>(buffer), static_cast<std::size_t>(bufLen));
        if (path.front() == '/')
            return UrlOfPath(path, isDirectory).Detach();
        const auto folder = CopyWorkingFolder();
        auto base = folder ? UrlOfPath(*folder, true) : CRef<const __CFURL>();
        if (!base || path.find('\0') != std::string_view::npos)
            return nullptr;
        return MakeUrl(Escape(WithSlash(std::string(path), isDirectory)), std::move(base)).Detach();
    });
}

CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef allocator, CFStringRef filePath, CFURLPathStyle,
                                       Boolean isDirectory)
{
    const std::string_view path = Utf8Of(filePath);
    return CFURLCreateFromFileSystemRepresentation(allocator, reinterpret_cast<const UInt8*>(path.data()),
                                                   static_cast<CFIndex>(path.size()), isDirectory);
}

CFURLRef CFURLCreateWithString(CFAllocatorRef, CFStringRef URLString, CFURLRef baseURL)
{
    if (!URLString || !IsUrl(URLString->Utf8()))
        return nullptr;
    const bool isAbsolute = SplitUrl(URLString->Utf8()).scheme.has_value();
    if (URLString->Utf8().empty() && !baseURL)
        return nullptr;
    return Guarded<CFURLRef>(nullptr, [&] {
        return new __CFURL(CRef<const __CFString>::Share(URLString),
                           CRef<const __CFURL>::Share(isAbsolute ? nullptr : baseURL));
    });
}

CFURLRef CFURLCreateCopyDeletingLastPathComponent(CFAllocatorRef, CFURLRef url)
{
    if (!url)
        return nullptr;
    return Guarded<CFURLRef>(nullptr, [&]() -> CFURLRef {
        UrlParts parts = SplitUrl(url->string->Utf8());
        std::string_view path = parts.path;
        if (path.empty() || (parts.scheme && path.front() != '/'))
            return nullptr;
        parts.query.reset();
        parts.fragment.reset();
        while (path.size() > 1 && path.back() == '/')
            path.remove_suffix(1);
        const std::size_t slash = path.rfind('/');
        const std::string_view last = path.substr(slash == std::string_view::npos ? 0 : slash + 1);
        std::string folder;
        if (path == "/")
            folder = "/"; // the root holds itself
        else if (last == ".." || last == ".")
            folder = std::string(path) + "/../";
        else if (slash == std::string_view::npos)
            folder = "./";
        else
            folder = path.substr(0, slash + 1);
        return MakeUrl(JoinUrl(parts, folder), url->base).Detach();
    });
}

CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef, CFURLRef url, CFStringRef pathComponent,
                                               Boolean isDirectory)
{
    const std::string_view component = Utf8Of(pathComponent);
    if (!url || component.empty() || component.find('\0') != std::string_view::npos)
        return nullptr;
    return Guarded<CFURLRef>(nullptr, [&]() -> CFURLRef {
        UrlParts parts = SplitUrl(url->string->Utf8());
        if (parts.scheme && !parts.path.empty() && parts.path.front() != '/')
            return nullptr;
        parts.query.reset();
        parts.fragment.reset();
        const std::string path =
            WithSlash(std::string(parts.path), true) + Escape(WithSlash(std::string(component), isDirectory));
        return MakeUrl(JoinUrl(parts, path), url->base).Detach();
    });
}

Boolean CFURLGetFileSystemRepresentation(CFURLRef url, Boolean resolveAgainstBase, UInt8* buffer, CFIndex maxBufLen)
{
    if (!url || !buffer || maxBufLen <= 0)
        return false;
    return Guarded<Boolean>(false, [&]() -> Boolean {
        const auto path = resolveAgainstBase ? PathOfUrl(url) : FilePathOfText(url->string->Utf8(), !url->base);
        if (!path || path->size() >= static_cast<std::size_t>(maxBufLen))
            return false;
        std::memcpy(buffer, path->c_str(), path->size() + 1);
        return true;
    });
}

CFStringRef CFURLCopyFileSystemPath(CFURLRef anURL, CFURLPathStyle)
{
    if (!anURL)
        return nullptr;
    return Guarded<CFStringRef>(nullptr, [&]() -> CFStringRef {
        const auto path = FilePathOfText(anURL->string->Utf8(), !anURL->base);
        return path ? __CFString::Create(*path).Detach() : nullptr;
    });
}

CFStringRef CFURLGetString(CFURLRef anURL)
{
    return anURL ? anURL->string.Get() : nullptr;
}

CFURLRef CFURLGetBaseURL(CFURLRef anURL)
{
    return anURL ? anURL->base.Get() : nullptr;
}

CFURLRef CFURLCopyAbsoluteURL(CFURLRef relativeURL)
{
    if (!relativeURL)
        return nullptr;
    return Guarded<CFURLRef>(nullptr, [&]() -> CFURLRef {
        if (!relativeURL->base)
            return CRef<const __CFURL>::Share(relativeURL).Detach();
        return MakeUrl(Resolve(*relativeURL), {}).Detach();
    });
}

CFStringRef CFURLCopyScheme(CFURLRef anURL)
{
    if (!anURL)
        return nullptr;
    return Guarded<CFStringRef>(nullptr, [&]() -> CFStringRef {
        const std::string text = Resolve(*anURL);
        const auto scheme = SplitUrl(text).scheme;
        return scheme ? __CFString::Create(*scheme).Detach() : nullptr;
    });
}

Boolean CFURLHasDirectoryPath(CFURLRef anURL)
{
    if (!anURL)
        return false;
    const std::string_view path = SplitUrl(anURL->string->Utf8()).path;
    return !path.empty() && path.back() == '/';
}

Boolean CFURLCreateDataAndPropertiesFromResource(CFAllocatorRef, CFURLRef url, CFDataRef* resourceData,
                                                 CFDictionaryRef* properties, CFArrayRef, SInt32* errorCode)
{
    if (resourceData)
        *resourceData = nullptr;
    if (properties)
        *properties = nullptr;
    const SInt32 error = Guarded<SInt32>(kCFURLUnknownError, [&]() -> SInt32 {
        if (!url)
            return kCFURLImproperArgumentsError;
        const auto path = PathOfUrl(url);
        if (!path)
            return kCFURLUnknownSchemeError;
        std::vector<UInt8> bytes;
        const SInt32 failure = ErrorOfErrno(ReadRegularFile(*path, kMostResourceBytes, bytes));
        if (failure == 0 && resourceData)
            *resourceData = new __CFData(std::move(bytes));
        return failure;
    });
    if (errorCode)
        *errorCode = error;
    return error == 0;
}
