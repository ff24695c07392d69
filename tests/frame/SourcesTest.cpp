// tests/frame/SourcesTest.cpp
//
// The component also has to compile on a Mac, where no header of the layer is, and a C++ library of
// 1998: its sources may include nothing else.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <string>

namespace {

const std::set<std::string> kAllowed = {
    "ApplicationServices/ApplicationServices.h",
    "Carbon/Carbon.h",
    "CoreFoundation/CoreFoundation.h",
    "QuickTime/QuickTime.h",
    "mach-o/dyld.h",
    "math.h",
    "new",
    "stdint.h",
    "stdio.h",
    "stdlib.h",
    "string.h",
};

bool IsOwnHeader(const std::string& name)
{
    return name.rfind("frame/", 0) == 0 || name.rfind("prefs/", 0) == 0 || name.rfind("ui/", 0) == 0;
}

template <typename Visit>
void ForEachSource(Visit visit)
{
    for (const char* folder : {"frame", "prefs", "ui"}) {
        for (const auto& entry : std::filesystem::directory_iterator(std::string(CV_SOURCE_DIR "/") + folder))
            visit(entry.path());
    }
}

TEST(Sources, IncludeOnlyWhatAMacHas)
{
    static const std::regex kInclude("^ *# *include *[<\"]([^>\"]+)[>\"].*");
    int seen = 0;
    ForEachSource([&](const std::filesystem::path& path) {
        std::ifstream file(path);
        for (std::string line; std::getline(file, line);) {
            std::smatch match;
            if (!std::regex_match(line, match, kInclude))
                continue;
            ++seen;
            EXPECT_TRUE(kAllowed.count(match[1]) == 1 || IsOwnHeader(match[1])) << path << ": " << line;
        }
    });
    EXPECT_GT(seen, 20);
}

TEST(Sources, DoNotAskForTheSystem)
{
    static const std::regex kSystem(
        "__linux__|__APPLE__|__gnu_linux__|platform/|std::(unique_ptr|shared_ptr|move|mutex|"
        "thread|atomic|string_view|to_string)|thread_local");
    ForEachSource([](const std::filesystem::path& path) {
        std::ifstream file(path);
        for (std::string line; std::getline(file, line);)
            EXPECT_FALSE(std::regex_search(line.substr(0, line.find("//")), kSystem)) << path << ": " << line;
    });
}

} // namespace
