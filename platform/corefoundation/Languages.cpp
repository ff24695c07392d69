// platform/corefoundation/Languages.cpp
//
// From the user's locale to the names of language folders.
#include "platform/corefoundation/Languages.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <mutex>
#include <string_view>

namespace {

// Bundles from before ISO codes name their folders in English.
constexpr struct {
    std::string_view code;
    std::string_view name;
} kLegacyNames[] = {
    {"en", "English"}, {"de", "German"},   {"fr", "French"}, {"it", "Italian"},
    {"es", "Spanish"}, {"ja", "Japanese"}, {"nl", "Dutch"},
};

std::string_view Environment(const char* name)
{
    const char* const value = std::getenv(name);
    return value ? value : "";
}

// The locale's settings in their order of precedence; a list of languages counts only where there
// is a locale at all.
std::string WantedLanguages()
{
    std::string_view locale = Environment("LC_ALL");
    if (locale.empty())
        locale = Environment("LC_MESSAGES");
    if (locale.empty())
        locale = Environment("LANG");
    const std::string_view bare = locale.substr(0, locale.find_first_of(".@"));
    if (bare.empty() || bare == "C" || bare == "POSIX")
        return "";
    const std::string_view list = Environment("LANGUAGE");
    return std::string(list.empty() ? locale : list);
}

class CFolderList {
public:
    void AddLanguage(std::string_view locale)
    {
        // language_TERRITORY.codeset@modifier
        locale = locale.substr(0, locale.find_first_of(".@"));
        if (locale.empty() || locale.find('/') != std::string_view::npos)
            return;
        const std::string_view code = locale.substr(0, locale.find_first_of("_-"));
        if (code.size() < locale.size()) {
            const std::string territory(locale.substr(code.size() + 1));
            Add(std::string(code) + "_" + territory);
            Add(std::string(code) + "-" + territory);
        }
        Add(std::string(code));
        for (const auto& legacy : kLegacyNames) {
            if (legacy.code == code)
                Add(std::string(legacy.name));
        }
    }

    void Add(const std::string& name)
    {
        const std::string folder = name + ".lproj";
        if (std::find(m_folders.begin(), m_folders.end(), folder) == m_folders.end())
            m_folders.push_back(folder);
    }

    std::vector<std::string> Take() { return std::move(m_folders); }

private:
    std::vector<std::string> m_folders;
};

std::vector<std::string> FoldersFor(std::string_view wanted)
{
    CFolderList folders;
    for (std::size_t at = 0; at < wanted.size();) {
        const std::size_t end = std::min(wanted.find(':', at), wanted.size());
        folders.AddLanguage(wanted.substr(at, end - at));
        at = end + 1;
    }
    folders.AddLanguage("en");
    folders.Add("Base");
    return folders.Take();
}

} // namespace

const std::vector<std::string>& LanguageFolders()
{
    // One list for each setting that the process ever has; there are few.
    static auto& mutex = *new std::mutex;
    static auto& lists = *new std::map<std::string, std::vector<std::string>>;
    std::string wanted = WantedLanguages();
    const std::lock_guard<std::mutex> lock(mutex);
    const auto known = lists.find(wanted);
    if (known != lists.end())
        return known->second;
    auto folders = FoldersFor(wanted);
    return lists.emplace(std::move(wanted), std::move(folders)).first->second;
}
