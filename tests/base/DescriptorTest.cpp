// tests/base/DescriptorTest.cpp
//
// What a process may still open, under limits that leave less and less.
#include "platform/base/Descriptor.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace {

constexpr int kWanted = 10;

/// Lets the process have so many descriptors until the end of the scope, numbered from 0.
class CLimit {
public:
    explicit CLimit(int descriptors)
    {
        EXPECT_EQ(getrlimit(RLIMIT_NOFILE, &m_before), 0);
        const rlimit limit = {static_cast<rlim_t>(descriptors), m_before.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    }
    ~CLimit() { (void)setrlimit(RLIMIT_NOFILE, &m_before); }
    CLimit(const CLimit&) = delete;
    CLimit& operator=(const CLimit&) = delete;

private:
    rlimit m_before = {};
};

/// Takes what is free below the highest descriptor that the process has: those after it are free.
class CNoGaps {
public:
    CNoGaps()
    {
        int highest = 0;
        for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
            highest = std::max(highest, std::stoi(entry.path().filename()));
        do
            m_taken.emplace_back(fcntl(0, F_DUPFD_CLOEXEC, 0));
        while (m_taken.back() && m_taken.back().Get() < highest);
        m_first = m_taken.back().Get();
        m_taken.pop_back();
    }
    /// The lowest free one; below 0 where that could not be told.
    int First() const { return m_first; }

private:
    std::vector<CDescriptor> m_taken;
    int m_first = -1;
};

TEST(Descriptor, AsManyAsTheLimitLeavesAreSpare)
{
    const CNoGaps taken;
    ASSERT_GT(taken.First(), 0);
    EXPECT_TRUE(HasSpareDescriptors(kWanted));
    {
        const CLimit limit(taken.First() + kWanted);
        EXPECT_TRUE(HasSpareDescriptors(kWanted));
    }
    const CLimit limit(taken.First() + kWanted - 1);
    EXPECT_FALSE(HasSpareDescriptors(kWanted));
    EXPECT_EQ(CDescriptor(fcntl(0, F_DUPFD_CLOEXEC, 0)).Get(), taken.First()) << "what was tried does not stay open";
}

TEST(Descriptor, OneTakenAtTheTopLeavesTheOthersSpare)
{
    const CNoGaps taken;
    ASSERT_GT(taken.First(), 0);
    const CLimit limit(taken.First() + kWanted + 1);
    const CDescriptor top(fcntl(0, F_DUPFD_CLOEXEC, taken.First() + kWanted));
    ASSERT_EQ(top.Get(), taken.First() + kWanted);
    EXPECT_TRUE(HasSpareDescriptors(kWanted));
    EXPECT_FALSE(HasSpareDescriptors(kWanted + 1));
}

TEST(Descriptor, NoneIsSpareUnderALimitOfNone)
{
    const CLimit limit(0);
    EXPECT_FALSE(HasSpareDescriptors(1));
    EXPECT_FALSE(HasSpareDescriptors(kWanted));
}

} // namespace
