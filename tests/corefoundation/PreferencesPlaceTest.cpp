// tests/corefoundation/PreferencesPlaceTest.cpp
//
// A process with raised privileges takes no folder from its caller's environment.
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "tests/support/Support.h"

namespace {

const std::map<std::string, std::string> kCallers = {
    {"HOME", "/callers/home"}, {"XDG_CONFIG_HOME", "/callers/config"}, {"XDG_CONFIG_DIRS", "/callers/machine"}};

TEST(PreferencesPlace, FoldersComeFromTheEnvironment)
{
    const ProgramResult result = RunProgram({CV_PROBE}, kCallers);
    EXPECT_EQ(result.out, "/callers/config/corvane/some.domain.plist\n/callers/machine/corvane/some.domain.plist\n");
}

TEST(PreferencesPlace, RaisedPrivilegesTrustNoVariable)
{
    if (CV_SANITIZED)
        GTEST_SKIP() << "the leak checker cannot look into a program that changes its user";
    const passwd* const other = getpwnam("nobody");
    if (geteuid() != 0 || !other)
        GTEST_SKIP() << "only root can make a program that runs as another user";
    const std::string home = other->pw_dir;
    const CTemporaryFolder folder;
    const std::string probe = folder / "probe";
    std::filesystem::copy(CV_PROBE, probe);
    ASSERT_EQ(chown(probe.c_str(), other->pw_uid, other->pw_gid), 0);
    ASSERT_EQ(chmod(probe.c_str(), S_ISUID | 0755), 0);
    const ProgramResult result = RunProgram({probe}, kCallers);
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out, home + "/.config/corvane/some.domain.plist\n/etc/xdg/corvane/some.domain.plist\n");
}

} // namespace
