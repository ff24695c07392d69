// tests/system/DocumentsTest.cpp
//
// What the documents list has to be all that there is.
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

#include "tests/support/Support.h"

TEST(Documents, MapOfTheMacsCallsNamesEveryCallAndNoOther)
{
    const std::string map = ReadFile(CV_SOURCE_DIR "/docs/mac-calls.md");
    std::string headers;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(CV_SOURCE_DIR "/platform/include")) {
        if (entry.is_regular_file() && entry.path().filename() != "CVLink.h")
            headers += ReadFile(entry.path().string());
    }
    const std::regex declared("CV_LINK\\((\\w+)\\)");
    int calls = 0;
    for (std::sregex_iterator call(headers.begin(), headers.end(), declared), end; call != end; ++call, ++calls)
        EXPECT_NE(map.find("`" + (*call)[1].str() + "`"), std::string::npos) << (*call)[1] << " is not in the map";
    EXPECT_GT(calls, 100);

    const std::regex listed("`(_?[A-Za-z]\\w+)`(?= |$)");
    const std::string tables = std::regex_replace(map, std::regex("\n[^|][^\n]*"), "\n");
    const std::regex cell("\n\\|([^|]*)\\|");
    for (std::sregex_iterator row(tables.begin(), tables.end(), cell), end; row != end; ++row) {
        const std::string names = (*row)[1];
        for (std::sregex_iterator name(names.begin(), names.end(), listed); name != end; ++name)
            EXPECT_NE(headers.find("CV_LINK(" + (*name)[1].str() + ")"), std::string::npos)
                << (*name)[1] << " is not declared";
    }
}
