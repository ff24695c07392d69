// tests/support/PreferencesSupport.cpp
//
// Helpers for tests of the preference store.
#include "tests/support/PreferencesSupport.h"

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <stdexcept>

#include <CVPlatform/CVPlatform.h>

namespace {

constexpr uid_t kOrdinaryUser = 54321;

std::string PathOf(const std::string& domain, CFStringRef user)
{
    const CFStringRef name = MakeString(domain);
    const CFStringRef path = CVPreferencesCopyPath(name, user, kCFPreferencesCurrentHost);
    const std::string text = TextOf(path);
    CFRelease(name);
    CFRelease(path);
    return text;
}

void GiveAway(const std::string& folder)
{
    if (lchown(folder.c_str(), kOrdinaryUser, kOrdinaryUser) != 0)
        throw std::runtime_error("cannot give " + folder + " away");
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (lchown(entry.path().c_str(), kOrdinaryUser, kOrdinaryUser) != 0)
            throw std::runtime_error("cannot give " + entry.path().string() + " away");
    }
}

} // namespace

CPreferencesTest::CPreferencesTest()
    : m_dirs("XDG_CONFIG_DIRS", (m_folder / "machine").c_str()),
      m_config("XDG_CONFIG_HOME", (m_folder / "home/.config").c_str()),
      m_home("HOME", (m_folder / "home").c_str())
{
    std::filesystem::create_directories(m_folder / "machine");
    std::filesystem::create_directories(m_folder / "home/.config");
}

std::string CPreferencesTest::MachineFile(const std::string& domain)
{
    return PathOf(domain, kCFPreferencesAnyUser);
}

std::string CPreferencesTest::UserFile(const std::string& domain)
{
    return PathOf(domain, kCFPreferencesCurrentUser);
}

int CPreferencesTest::RunAsUser(const std::function<int()>& work)
{
    const bool root = geteuid() == 0;
    std::vector<std::string> closed;
    if (root) {
        (void)chmod(OwnFolder().c_str(), 0755);
        (void)chmod(m_folder.Path().c_str(), 0755);
        GiveAway(m_folder / "home");
    } else {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_folder / "machine")) {
            if (entry.is_directory())
                closed.push_back(entry.path().string());
        }
        closed.push_back(m_folder / "machine");
        for (const std::string& folder : closed)
            (void)chmod(folder.c_str(), 0555);
    }
    const int code = RunInChild([&] {
        if (root && (setgroups(0, nullptr) != 0 || setgid(kOrdinaryUser) != 0 || setuid(kOrdinaryUser) != 0))
            throw std::runtime_error("cannot become an ordinary user");
        return work();
    });
    for (const std::string& folder : closed)
        (void)chmod(folder.c_str(), 0755);
    return code;
}

bool SetKey(const std::string& section, const std::string& key, const std::string& value)
{
    CBaseProductManager manager;
    return manager.SetRegistryKey(section.c_str(), key.c_str(), value.c_str());
}

std::string GetKey(const std::string& section, const std::string& key)
{
    CBaseProductManager manager;
    std::vector<char> buffer(2 * 1024 * 1024);
    const bool found =
        manager.GetRegistryKey(section.c_str(), key.c_str(), buffer.data(), static_cast<int>(buffer.size()));
    return found ? buffer.data() : "(none)";
}

std::vector<std::string> NamesIn(const std::string& folder)
{
    std::vector<std::string> names;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(folder, ignored))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

unsigned ModeOf(const std::string& path)
{
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0)
        throw std::runtime_error("no " + path);
    return status.st_mode & 07777U;
}

void WriteXml(const std::string& path, const std::string& body)
{
    WriteFile(path, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n" + body +
                        "\n</dict>\n</plist>\n");
}

void ReplaceFile(const std::string& path, const std::string& bytes)
{
    WriteFile(path + ".new", bytes);
    if (std::rename((path + ".new").c_str(), path.c_str()) != 0)
        throw std::runtime_error("cannot replace " + path);
}
