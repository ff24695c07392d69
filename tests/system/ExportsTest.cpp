// tests/system/ExportsTest.cpp
//
// What both libraries export, held against lists. A name more is a promise that somebody may come
// to rely on; a name less breaks those who do. With CV_UPDATE_DATA set in the environment the lists
// are written anew, for a change that means it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>

#include "tests/support/Support.h"

namespace {

// The names as sorted lines; for the layer with their versions.
std::string ExportsOf(const std::string& library)
{
    const ProgramResult result =
        RunProgram({"nm", "-D", "--defined-only", "--format=posix", library}, {{"LC_ALL", "C"}});
    EXPECT_EQ(result.code, 0) << result.err;
    std::istringstream lines(result.out);
    std::vector<std::string> names;
    for (std::string line; std::getline(lines, line);) {
        const std::string name = line.substr(0, line.find(' '));
        if (name.rfind("CVPLATFORM_", 0) != 0) // the version itself
            names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    std::string text;
    for (const std::string& name : names)
        text += name + "\n";
    return text;
}

void Compare(const std::string& library, const std::string& list)
{
    const std::string exports = ExportsOf(library);
    if (std::getenv("CV_UPDATE_DATA"))
        WriteFile(DataFile(list), exports);
    EXPECT_EQ(exports, ReadFile(DataFile(list)))
        << "The exported names have changed. If that is meant, run this test with CV_UPDATE_DATA=1 in the\n"
           "environment, which writes tests/data/"
        << list << " anew, and look at the difference.";
}

} // namespace

TEST(Exports, OfTheBundleAreTheListedOnes)
{
    if (CV_SANITIZED)
        GTEST_SKIP() << "sanitizers add names of their own";
    // The Mac's integers of 32 bits are longs where longs have 32 bits, and so the names say.
    Compare(BuiltBundle() + "/Contents/MacOS/Quillets",
            sizeof(void*) == 4 ? "exports-bundle-32.txt" : "exports-bundle.txt");
}

TEST(Exports, OfTheLayerAreTheListedOnes)
{
    Compare(CV_BUILD_DIR "/libcvplatform.so.1", "exports-layer.txt");
}

TEST(Exports, OfTheLayerAllHaveItsPrefixAndVersion)
{
    std::istringstream lines(ExportsOf(CV_BUILD_DIR "/libcvplatform.so.1"));
    int count = 0;
    for (std::string name; std::getline(lines, name); ++count) {
        EXPECT_EQ(name.rfind("cv_", 0), 0U) << name;
        EXPECT_NE(name.find("@@CVPLATFORM_1"), std::string::npos) << name;
    }
    EXPECT_GT(count, 50);
}
