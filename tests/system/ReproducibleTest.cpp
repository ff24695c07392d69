// tests/system/ReproducibleTest.cpp
//
// The same sources and date give the same bytes, in whatever folder they are built.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/Support.h"

namespace {

// Copies the sources to a folder and builds them there; answers the build's folder.
std::string BuildIn(const std::string& folder)
{
    for (const char* const part :
         {"CMakeLists.txt", "cmake", "docs", "frame", "prefs", "ui", "platform", "resources", "tools"})
        std::filesystem::copy(std::string(CV_SOURCE_DIR "/") + part, folder + "/" + part,
                              std::filesystem::copy_options::recursive);
    const std::map<std::string, std::string> environment = {{"SOURCE_DATE_EPOCH", "1299801600"}}; // Mar 11 2011
    const ProgramResult configured =
        RunProgram({CV_CMAKE, "-S", folder, "-B", folder + "/build", "-G", "Ninja", "-DCMAKE_BUILD_TYPE=RelWithDebInfo",
                    "-DCMAKE_CXX_COMPILER=" CV_CXX, "-DCV_TESTS=OFF", "-DCV_EXAMPLES=OFF"},
                   environment);
    EXPECT_EQ(configured.code, 0) << configured.out << configured.err;
    const ProgramResult built =
        RunProgram({CV_CMAKE, "--build", folder + "/build", "-j2", "--target", "all"}, environment);
    EXPECT_EQ(built.code, 0) << built.out;
    return folder + "/build";
}

} // namespace

TEST(Reproducible, TwoBuildsInTwoFoldersHaveTheSameBytes)
{
    const CTemporaryFolder folder;
    std::filesystem::create_directories(folder / "one");
    std::filesystem::create_directories(folder / "another one/and deeper");
    const std::string first = BuildIn(folder / "one");
    const std::string second = BuildIn(folder / "another one/and deeper");
    ASSERT_FALSE(HasFailure());
    for (const char* const product : {"/Quillets.bundle/Contents/MacOS/Quillets", "/libcvplatform.so.1", "/quillets"})
        EXPECT_TRUE(ReadFile(first + product) == ReadFile(second + product)) << product << " differs";
    const ProgramResult identity = RunProgram({first + "/quillets", "identity"});
    EXPECT_NE(identity.out.find("Version 1.3 Build 110311\n"), std::string::npos) << identity.out << identity.err;
}
