// tests/resources/HelpPagesTest.cpp
//
// The help pages as they ship: valid, complete, the same in every language, and without a link or a
// map entry that leads nowhere.
#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <regex>
#include <set>

#include "tests/support/Support.h"

namespace {

using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

const char* const kLanguages[] = {"en", "de"};

std::string HelpFolder(const std::string& language)
{
    return BuiltBundle() + "/Contents/Resources/" + language + ".lproj/Quillets/VST";
}

// The names of the files of one language's help folder.
std::set<std::string> Files(const std::string& language)
{
    std::set<std::string> names;
    for (const auto& file : std::filesystem::directory_iterator(HelpFolder(language)))
        names.insert(file.path().filename().string());
    return names;
}

std::vector<std::string> Pages()
{
    std::vector<std::string> pages;
    for (const char* language : kLanguages) {
        for (const std::string& name : Files(language)) {
            if (name.size() > 5 && name.substr(name.size() - 5) == ".html")
                pages.push_back(HelpFolder(language) + "/" + name);
        }
    }
    return pages;
}

// Every stretch of `text` that stands between `before` and the next `after`.
std::vector<std::string> Between(const std::string& text, const std::string& before, const std::string& after)
{
    std::vector<std::string> found;
    for (std::size_t at = text.find(before); at != std::string::npos; at = text.find(before, at)) {
        at += before.size();
        found.push_back(text.substr(at, text.find(after, at) - at));
    }
    return found;
}

std::vector<std::string> Links(const std::string& page)
{
    return Between(page, " href=\"", "\"");
}

std::map<std::string, std::string> ContextMap(const std::string& language)
{
    const std::string bytes = ReadFile(HelpFolder(language) + "/ContextMap.xml");
    const CFDataRef data =
        CFDataCreate(nullptr, reinterpret_cast<const UInt8*>(bytes.data()), static_cast<CFIndex>(bytes.size()));
    const auto list =
        static_cast<CFDictionaryRef>(CFPropertyListCreateFromXMLData(nullptr, data, kCFPropertyListImmutable, nullptr));
    std::vector<const void*> keys(static_cast<std::size_t>(CFDictionaryGetCount(list)));
    std::vector<const void*> values(keys.size());
    CFDictionaryGetKeysAndValues(list, keys.data(), values.data());
    std::map<std::string, std::string> map;
    for (std::size_t index = 0; index < keys.size(); ++index)
        map[TextOf(static_cast<CFStringRef>(keys[index]))] = TextOf(static_cast<CFStringRef>(values[index]));
    CFRelease(list);
    CFRelease(data);
    return map;
}

TEST(HelpPages, AreTheSameInEveryLanguage)
{
    EXPECT_EQ(Files("en"), Files("de"));
    EXPECT_EQ(ContextMap("en"), ContextMap("de"));
    EXPECT_THAT(Files("en"), Contains("index.html"));
    // An unlocalised index or map would come before those of every language.
    EXPECT_FALSE(FileExists(BuiltBundle() + "/Contents/Resources/Quillets/VST/index.html"));
    EXPECT_FALSE(FileExists(BuiltBundle() + "/Contents/Resources/Quillets/VST/ContextMap.xml"));
}

TEST(HelpPages, AreThereForEveryEntryOfTheMap)
{
    EXPECT_EQ(ContextMap("en")["300"], "knobs.html");
    for (const char* language : kLanguages) {
        for (const auto& [topic, page] : ContextMap(language)) {
            EXPECT_EQ(std::to_string(std::stoi(topic)), topic);
            EXPECT_THAT(Files(language), Contains(page)) << topic;
        }
    }
}

TEST(HelpPages, AreAllReachedByTheMap)
{
    std::set<std::string> mapped = {"ContextMap.xml"};
    for (const auto& [topic, page] : ContextMap("en"))
        mapped.insert(page);
    EXPECT_EQ(mapped, Files("en"));
}

TEST(HelpPages, AreValidHtml)
{
    for (const std::string& page : Pages()) {
        const ProgramResult result = RunProgram({"tidy", "-q", "-e", page});
        EXPECT_EQ(result.code, 0) << result.err; // 1 for warnings, 2 for errors
        EXPECT_EQ(ReadFile(page).substr(0, 15), "<!DOCTYPE html>");
    }
}

TEST(HelpPages, LinkOnlyToWhatIsThere)
{
    for (const std::string& page : Pages()) {
        const std::string text = ReadFile(page);
        for (const std::string& link : Links(text)) {
            ASSERT_THAT(link, Not(HasSubstr(":"))) << page << " leaves the machine";
            const std::string name = link.substr(0, link.find('#'));
            const std::string target =
                name.empty() ? page : (std::filesystem::path(page).parent_path() / name).string();
            ASSERT_TRUE(FileExists(target)) << page << ": " << link;
            if (link.find('#') != std::string::npos) {
                EXPECT_THAT(ReadFile(target), HasSubstr("id=\"" + link.substr(link.find('#') + 1) + "\""))
                    << page << ": " << link;
            }
        }
    }
}

TEST(HelpPages, AreReachedFromTheIndex)
{
    for (const char* language : kLanguages) {
        const auto links = Links(ReadFile(HelpFolder(language) + "/index.html"));
        for (const std::string& name : Files(language)) {
            if (name != "index.html" && name != "ContextMap.xml") {
                EXPECT_THAT(links, Contains(name)) << language;
            }
        }
    }
}

TEST(HelpPages, SayTheirLanguageTheirTitleAndTheWayBack)
{
    for (const char* language : kLanguages) {
        std::set<std::string> titles;
        for (const std::string& name : Files(language)) {
            if (name == "ContextMap.xml")
                continue;
            const std::string text = ReadFile(HelpFolder(language) + "/" + name);
            EXPECT_THAT(text, HasSubstr("<html lang=\"" + std::string(language) + "\">")) << name;
            EXPECT_THAT(text, HasSubstr("<meta charset=\"utf-8\">")) << name;
            EXPECT_THAT(text, HasSubstr("width=device-width")) << name;
            EXPECT_THAT(Between(text, "<h1>", "</h1>"), testing::SizeIs(1)) << name;
            if (name != "index.html") {
                EXPECT_THAT(text, HasSubstr("<a href=\"index.html\">")) << name;
            }
            const auto title = Between(text, "<title>", "</title>");
            ASSERT_THAT(title, testing::SizeIs(1)) << name;
            EXPECT_TRUE(titles.insert(title.front()).second) << "two pages are called " << title.front();
        }
    }
}

TEST(HelpPages, BringNoScriptAndNothingFromElsewhere)
{
    for (const std::string& page : Pages()) {
        const std::string text = ReadFile(page);
        for (const char* word :
             {"<script", "javascript:", "http://", "https://", " onclick", " onload", "<iframe", " src="})
            EXPECT_THAT(text, Not(HasSubstr(word))) << page;
    }
}

TEST(HelpPages, HaveALightAndADarkLook)
{
    const std::string style = ReadFile(BuiltBundle() + "/Contents/Resources/Quillets/VST/style.css");
    EXPECT_THAT(style, AllOf(HasSubstr("prefers-color-scheme: dark"), HasSubstr("color-scheme: light dark"),
                             Not(HasSubstr("@import")), Not(HasSubstr("url("))));
    EXPECT_EQ(std::count(style.begin(), style.end(), '{'), std::count(style.begin(), style.end(), '}'));
    // Every colour of the light look has one of the dark look.
    const auto names = Between(style, " --", ": #");
    for (const std::string& name : names)
        EXPECT_EQ(std::count(names.begin(), names.end(), name), 2) << name;
}

TEST(HelpPages, NameTheFoldersThatTheStoreUses)
{
    const std::string found = RunProgram({CV_BUILD_DIR "/quillets", "doctor"},
                                         {{"XDG_CONFIG_DIRS", ""}, {"XDG_CONFIG_HOME", ""}, {"HOME", "/home/someone"}})
                                  .out;
    const auto folderOf = [&found](const std::string& scope) {
        std::smatch match;
        return std::regex_search(found, match, std::regex(" " + scope + " +(/\\S+)")) ? match[1].str() : "none";
    };
    const std::string user = folderOf("user");
    ASSERT_EQ(user.substr(0, 14), "/home/someone/");
    for (const char* language : kLanguages) {
        const std::string page = ReadFile(HelpFolder(language) + "/preferences.html");
        EXPECT_THAT(page, HasSubstr("<code>" + folderOf("machine") + "/</code>"));
        EXPECT_THAT(page, HasSubstr("<code>~" + user.substr(13) + "/</code>"));
    }
}

} // namespace
