// tests/system/PackagesTest.cpp
//
// The Debian packages: made, held against the policy, and installed and used in a fresh system. The
// last needs a Debian mirror and says so where there is none.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>

#include <cstdio>
#include <filesystem>
#include <sstream>

#include "tests/support/Support.h"

namespace {

// One folder for all of these tests, each of which may run in a process of its own; what is there
// already need not be compiled again. One at a time.
const std::string kBuild = CV_BUILD_DIR "/packages";

class Packages : public testing::Test {
protected:
    void SetUp() override
    {
        std::filesystem::create_directories(kBuild);
        m_lock = std::fopen((kBuild + "/test.lock").c_str(), "we");
        ASSERT_NE(m_lock, nullptr);
        ASSERT_EQ(flock(fileno(m_lock), LOCK_EX), 0);
        for (const std::string& old : Made())
            std::filesystem::remove(old);
        ASSERT_NO_FATAL_FAILURE(Succeed(
            {CV_CMAKE, "-S", CV_SOURCE_DIR, "-B", kBuild, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=RelWithDebInfo",
             "-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O2 -DNDEBUG", // what is for debuggers is stripped anyway
             "-DCMAKE_INSTALL_PREFIX=/usr", "-DCMAKE_CXX_COMPILER=" CV_CXX, "-DCV_TESTS=OFF", "-DCV_EXAMPLES=OFF"}));
        ASSERT_NO_FATAL_FAILURE(Succeed({CV_CMAKE, "--build", kBuild, "-j2"}));
        ASSERT_NO_FATAL_FAILURE(Succeed({"sh", "-c", "cd '" + kBuild + "' && exec cpack -G DEB"}));
        m_packages = Made();
        ASSERT_EQ(m_packages.size(), 3U);
    }
    void TearDown() override
    {
        if (m_lock)
            std::fclose(m_lock);
    }

    static void Succeed(const std::vector<std::string>& words)
    {
        const ProgramResult result = RunProgram(words);
        ASSERT_EQ(result.code, 0) << result.out << result.err;
    }
    static std::vector<std::string> Made()
    {
        std::vector<std::string> packages;
        for (const auto& entry : std::filesystem::directory_iterator(kBuild)) {
            if (entry.path().extension() == ".deb")
                packages.push_back(entry.path().string());
        }
        return packages;
    }
    std::string Field(const std::string& package, const std::string& field) const
    {
        for (const std::string& path : m_packages) {
            if (path.find("/" + package + "_") != std::string::npos)
                return RunProgram({"dpkg-deb", "--field", path, field}).out;
        }
        return "no such package";
    }

    std::vector<std::string> m_packages;

private:
    std::FILE* m_lock = nullptr;
};

TEST_F(Packages, PassLintian)
{
    std::vector<std::string> words = {"lintian", "--fail-on", "error,warning", "--allow-root"};
    words.insert(words.end(), m_packages.begin(), m_packages.end());
    const ProgramResult result = RunProgram(words);
    EXPECT_EQ(result.code, 0) << result.out << result.err;
}

TEST_F(Packages, DependOnWhatTheyNeed)
{
    const std::string runtime = Field("corvane-product", "Depends");
    for (const char* const library : {"libc6 ", "libplist3", "libstdc++6"})
        EXPECT_NE(runtime.find(library), std::string::npos) << runtime;
    for (const char* const package : {"corvane-product-dev", "corvane-product-tools"})
        EXPECT_NE(Field(package, "Depends").find("corvane-product (= "), std::string::npos) << package;
}

TEST_F(Packages, WorkInAFreshSystemAndLeaveOnlyPreferences)
{
    const ProgramResult mirror = RunProgram({"mmdebstrap", "--simulate", "--variant=apt", "bookworm", "/dev/null"});
    if (mirror.code != 0)
        GTEST_SKIP() << "no Debian mirror to make a fresh system from, or no right to: " << mirror.err;
    std::string copy = "--customize-hook=copy-in ";
    for (const std::string& package : m_packages)
        copy += package + " ";
    const ProgramResult result = RunProgram(
        {"mmdebstrap", "--quiet", "--variant=apt", "--include=g++,pkg-config", "--aptopt=Acquire::Retries \"3\"",
         "--dpkgopt=force-unsafe-io", // it is thrown away
         copy + CV_SOURCE_DIR "/tests/system/InRoot.sh " CV_SOURCE_DIR "/examples/host/Host.cpp /root",
         "--customize-hook=chroot \"$1\" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root sh /root/InRoot.sh",
         "bookworm", "/dev/null"});
    EXPECT_EQ(result.code, 0) << result.out << result.err;
    const std::string said = result.out + result.err; // what a hook prints comes on either
    EXPECT_NE(said.find("Corvane Audio Quillets for Mac 1.3 "), std::string::npos) << said;
    EXPECT_NE(said.find("/lib/x86_64-linux-gnu/libcvplatform.so.1"), std::string::npos) << said;
    EXPECT_NE(said.find("\nthe machine has /etc/xdg/corvane/"), std::string::npos) << said;
    EXPECT_NE(said.find("\nthe user has /home/musician/.config/corvane/"), std::string::npos) << said;
    EXPECT_NE(said.find("\ntaken: \n"), std::string::npos) << said;
    std::istringstream left(said.substr(said.find("\nleft: ") + 7));
    std::string line;
    std::getline(left, line);
    left.str(line);
    for (std::string file; left >> file;)
        EXPECT_THAT(file, testing::AnyOf(testing::StartsWith("/etc/xdg/corvane/ByHost/"),
                                         testing::StartsWith("/home/musician/.config/corvane/ByHost/")));
}

} // namespace
