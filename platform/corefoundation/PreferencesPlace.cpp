// platform/corefoundation/PreferencesPlace.cpp
//
// Folders after the XDG Base Directory Specification.
#include "platform/corefoundation/PreferencesPlace.h"

#include <fcntl.h>
#include <pwd.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

#include "platform/base/Descriptor.h"
#include "platform/base/Sha256.h"

namespace {

constexpr std::size_t kMostEntryBytes = std::size_t{1} << 20U; // of a user in the password database
constexpr const char* kVariableNames[] = {"XDG_CONFIG_DIRS=", "XDG_CONFIG_HOME=", "HOME="};
constexpr std::string_view kMachineBase = "/etc/xdg";
constexpr std::string_view kMakerFolder = "/corvane";
constexpr std::string_view kHostFolder = "/ByHost";
constexpr std::string_view kExtension = ".plist";
// A file name has 255 bytes, and the file's companions (lock, temporary, put aside) append to it.
constexpr std::size_t kLongestDomain = 120;
constexpr std::size_t kLongestHost = 80;
constexpr std::size_t kKeptOfLong = 32;

// A process with raised privileges gets null here and so the defaults.
std::string_view Variable(const char* name)
{
    const char* const value = secure_getenv(name);
    return value ? std::string_view(value) : std::string_view();
}

// The XDG specification has relative paths ignored.
bool IsAbsolute(std::string_view path)
{
    return !path.empty() && path[0] == '/';
}

std::string WithoutSlash(std::string_view path)
{
    while (!path.empty() && path.back() == '/')
        path.remove_suffix(1);
    return std::string(path);
}

std::string FindMachineBase()
{
    std::string_view folders = Variable("XDG_CONFIG_DIRS");
    while (!folders.empty()) {
        const std::string_view folder = folders.substr(0, folders.find(':'));
        if (IsAbsolute(folder))
            return WithoutSlash(folder);
        folders.remove_prefix(folder.size() + (folder.size() < folders.size() ? 1 : 0));
    }
    return std::string(kMachineBase);
}

std::string FindHomeInPasswords()
{
    std::vector<char> buffer(1024);
    passwd entry = {};
    passwd* found = nullptr;
    while (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE &&
           buffer.size() < kMostEntryBytes)
        buffer.resize(buffer.size() * 2);
    return found && found->pw_dir && IsAbsolute(found->pw_dir) ? found->pw_dir : "";
}

std::optional<std::string> FindUserBase()
{
    const std::string_view folder = Variable("XDG_CONFIG_HOME");
    if (IsAbsolute(folder))
        return WithoutSlash(folder);
    const std::string_view home = Variable("HOME");
    const std::string found = IsAbsolute(home) ? std::string(home) : FindHomeInPasswords();
    if (found.empty())
        return std::nullopt;
    return WithoutSlash(found) + "/.config";
}

// Empty where the machine has no identity; nullopt where it cannot be read just now (no descriptor is
// free, say): another name then would be another file.
std::optional<std::string> ReadMachineId()
{
    const CDescriptor file(Uninterrupted([] { return open("/etc/machine-id", O_RDONLY | O_CLOEXEC | O_NONBLOCK); }));
    if (!file)
        return errno == ENOENT || errno == EACCES ? std::optional<std::string>("") : std::nullopt;
    char text[33] = "";
    std::size_t length = 0;
    while (length < 32) {
        const ssize_t count = Uninterrupted([&] { return read(file.Get(), text + length, 32 - length); });
        if (count < 0)
            return std::nullopt;
        if (count == 0)
            break;
        length += static_cast<std::size_t>(count);
    }
    return std::strspn(text, "0123456789abcdef") == 32 ? text : std::string();
}

// Two texts give two results: what is not harmless in a file name is written as its number.
std::string EscapedForName(std::string_view text)
{
    std::string name;
    for (const char byte : text) {
        const auto code = static_cast<unsigned char>(byte);
        if (code > 0x20 && code != 0x7F && byte != '/' && byte != '%' && byte != '~' &&
            !(name.empty() && byte == '.')) {
            name.push_back(byte);
            continue;
        }
        name.push_back('%');
        name.push_back("0123456789ABCDEF"[code >> 4U]);
        name.push_back("0123456789ABCDEF"[code & 0xFU]);
    }
    return name;
}

// What is too long keeps its beginning for people; the hash keeps it apart from others.
std::string NameOf(std::string_view text, std::size_t longest)
{
    std::string name = EscapedForName(text);
    if (name.size() <= longest)
        return name;
    std::size_t kept = kKeptOfLong;
    while (kept > 0 && (static_cast<unsigned char>(name[kept]) & 0xC0U) == 0x80U)
        --kept; // not in the middle of a character
    return name.substr(0, kept) + "~" + Sha256Hex(text);
}

std::optional<std::string> FindHostName()
{
    auto id = ReadMachineId();
    if (!id || !id->empty())
        return id;
    char host[256] = "";
    if (gethostname(host, sizeof host - 1) != 0 || !*host)
        return "localhost";
    return NameOf(host, kLongestHost);
}

// The machine's name in file names, found once; null where it cannot be found just now.
const std::string* HostName()
{
    static std::atomic<const std::string*> known{nullptr};
    const std::string* name = known.load(std::memory_order_acquire);
    if (name)
        return name;
    auto found = FindHostName();
    if (!found)
        return nullptr;
    const auto* const made = new std::string(std::move(*found));
    if (known.compare_exchange_strong(name, made, std::memory_order_acq_rel))
        return made;
    delete made;
    return name;
}

} // namespace

std::optional<PreferencesPlace> FindPreferencesPlace(std::string_view domain, PreferencesScope scope)
{
    const bool forAnyUser = scope.user == PreferencesUser::Any;
    const bool forThisHost = scope.host == PreferencesHost::Current;
    const std::optional<std::string> base = forAnyUser ? FindMachineBase() : FindUserBase();
    const std::string* const host = forThisHost ? HostName() : nullptr;
    if (!base || (forThisHost && !host))
        return std::nullopt;
    PreferencesPlace place;
    place.folder = *base + std::string(kMakerFolder);
    std::string name = NameOf(domain, kLongestDomain);
    if (forThisHost) {
        place.folder += kHostFolder;
        name += "." + *host;
    }
    place.file = place.folder + "/" + name + std::string(kExtension);
    place.fileMode = forAnyUser ? 0644 : 0600;
    place.folderMode = forAnyUser ? 0755 : 0700;
    return place;
}

CPreferencesEnvironment::CPreferencesEnvironment() noexcept : m_list(environ), m_known()
{
    static_assert(sizeof kVariableNames / sizeof *kVariableNames == kVariables, "one place for each");
    if (!m_list)
        return;
    for (; m_list[m_count]; ++m_count) {
        for (const char* name : kVariableNames) {
            if (std::strncmp(m_list[m_count], name, std::strlen(name)) == 0 && m_knownCount < kVariables)
                m_known[m_knownCount++] = {m_count, m_list[m_count]};
        }
    }
    if (m_count > 0)
        m_known[m_knownCount++] = {m_count - 1, m_list[m_count - 1]};
}

bool CPreferencesEnvironment::IsUnchanged() const noexcept
{
    if (environ != m_list)
        return false;
    for (std::size_t index = 0; index < m_knownCount; ++index) {
        if (m_list[m_known[index].at] != m_known[index].text)
            return false;
    }
    return !m_list || !m_list[m_count]; // a variable that is added comes last
}
