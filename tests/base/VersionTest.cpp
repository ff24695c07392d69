// tests/base/VersionTest.cpp
//
// The layer knows which version it is and where its file lies.
#include <CVPlatform/CVPlatform.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/Support.h"

TEST(Version, NamesTheFileThatIsLoaded)
{
    EXPECT_STREQ(CVGetVersion(), "1.3.0");
    ASSERT_NE(CVGetLibraryPath(), nullptr);
    EXPECT_EQ(CVGetLibraryPath()[0], '/');
    EXPECT_TRUE(FileExists(CVGetLibraryPath()));
    EXPECT_NE(std::string(CVGetLibraryPath()).find("libcvplatform.so.1"), std::string::npos);
}
