// tests/system/PackagesTest.cpp
//
// The Debian packages: made, held against the policy, and installed and used in a fresh system. The
// last needs a Debian mirror and says so where there is none.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/Support.h"

namespace {

class Packages : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        s_folder = new CTemporaryFolder;
        Expect(RunProgram({CV_CMAKE, "-S", CV_SOURCE_DIR, "-B", Build(), "-G", "Ninja",
                           "-DCMAKE_BUILD_TYPE=RelWithDebInfo", "-DCMAKE_INSTALL_PREFIX=/usr",
                           "-DCMAKE_CXX_COMPILER=" CV_CXX, "-DCV_TESTS=OFF", "-DCV_EXAMPLES=OFF"}));
        Expect(RunProgram({CV_CMAKE, "--build", Build(), "-j2"}));
        Expect(RunProgram({"sh", "-c", "cd '" + Build() + "' && exec cpack -G DEB"}));
        for (const auto& entry : std::filesystem::directory_iterator(Build())) {
            if (entry.path().extension() == ".deb")
                s_packages.push_back(entry.path().string());
        }
    }
    static void TearDownTestSuite()
    {
        delete s_folder;
        s_folder = nullptr;
    }
    void SetUp() override { ASSERT_EQ(s_packages.size(), 3U); }

    static void Expect(const ProgramResult& result) { EXPECT_EQ(result.code, 0) << result.out << result.err; }
    static std::string Build() { return *s_folder / "build"; }
    static std::string Field(const std::string& package, const std::string& field)
    {
        for (const std::string& path : s_packages) {
            if (path.find("/" + package + "_") != std::string::npos)
                return RunProgram({"dpkg-deb", "--field", path, field}).out;
        }
        return "no such package";
    }

    static CTemporaryFolder* s_folder;
    static std::vector<std::string> s_packages;
};

CTemporaryFolder* Packages::s_folder = nullptr;
std::vector<std::string> Packages::s_packages;

TEST_F(Packages, PassLintianWithoutErrors)
{
    std::vector<std::string> words = {"lintian", "--fail-on", "error", "--allow-root"};
    words.insert(words.end(), s_packages.begin(), s_packages.end());
    const ProgramResult result = RunProgram(words);
    EXPECT_EQ(result.code, 0) << result.out << result.err;
    EXPECT_EQ(("\n" + result.out).find("\nE: "), std::string::npos) << result.out;
}

TEST_F(Packages, DependOnWhatTheyNeed)
{
    const std::string runtime = Field("corvane-product", "Depends");
    for (const char* const library : {"libc6 ", "libplist3", "libstdc++6"})
        EXPECT_NE(runtime.find(library), std::string::npos) << runtime;
    for (const char* const package : {"corvane-product-dev", "corvane-product-tools"})
        EXPECT_NE(Field(package, "Depends").find("corvane-product (= "), std::string::npos) << package;
}

TEST_F(Packages, WorkInAFreshSystemAndLeaveIt)
{
    if (RunProgram({"mmdebstrap", "--simulate", "--variant=apt", "bookworm", "/dev/null"}).code != 0)
        GTEST_SKIP() << "no Debian mirror to make a fresh system from, or no right to";
    std::string copy = "--customize-hook=copy-in ";
    for (const std::string& package : s_packages)
        copy += package + " ";
    const ProgramResult result =
        RunProgram({"mmdebstrap", "--quiet", "--variant=apt",
                    copy + CV_SOURCE_DIR "/tests/system/InRoot.sh " CV_SOURCE_DIR "/examples/host/Host.cpp /root",
                    "--customize-hook=chroot \"$1\" sh /root/InRoot.sh", "bookworm", "/dev/null"});
    EXPECT_EQ(result.code, 0) << result.out << result.err;
    const std::string said = result.out + result.err; // what a hook prints comes on either
    EXPECT_NE(said.find("Corvane Audio Quillets for Mac 1.3 "), std::string::npos) << said;
    EXPECT_NE(said.find("/lib/x86_64-linux-gnu/libcvplatform.so.1"), std::string::npos) << said;
    EXPECT_NE(said.find("all gone"), std::string::npos) << said;
}

} // namespace
