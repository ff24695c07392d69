// tests/base/DescriptorTest.cpp
//
// What a process may still open, under limits that leave less and less.
#include "platform/base/Descriptor.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include "tests/support/Shortage.h"

namespace {

int FirstFree()
{
    return CDescriptor(fcntl(0, F_DUPFD_CLOEXEC, 0)).Get();
}

TEST(Descriptor, AsManyAsTheLimitLeavesAreSpare)
{
    EXPECT_TRUE(HasSpareDescriptors(10));
    const CShortage shortage(10);
    const int first = FirstFree();
    EXPECT_TRUE(HasSpareDescriptors(10));
    EXPECT_FALSE(HasSpareDescriptors(11));
    EXPECT_EQ(FirstFree(), first) << "what was tried does not stay open";
}

TEST(Descriptor, OneTakenAmongTheHighestLeavesTheOthersSpare)
{
    const CDescriptor taken(fcntl(0, F_DUPFD_CLOEXEC, 40));
    ASSERT_TRUE(taken);
    const CShortage shortage(60);
    EXPECT_TRUE(HasSpareDescriptors(60));
    EXPECT_FALSE(HasSpareDescriptors(61));
}

TEST(Descriptor, NoneIsSpareUnderALimitOfNone)
{
    const CShortage shortage(0);
    EXPECT_FALSE(HasSpareDescriptors(1));
    EXPECT_FALSE(HasSpareDescriptors(10));
}

} // namespace
