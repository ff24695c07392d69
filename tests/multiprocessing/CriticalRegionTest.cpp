// tests/multiprocessing/CriticalRegionTest.cpp
//
// Critical regions: who may enter, how long the others wait, and what a wrong ID is answered with.
#include <Carbon/Carbon.h>
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

class CRegion {
public:
    CRegion() { EXPECT_EQ(MPCreateCriticalRegion(&m_id), noErr); }
    ~CRegion() { (void)MPDeleteCriticalRegion(m_id); }
    CRegion(const CRegion&) = delete;
    CRegion& operator=(const CRegion&) = delete;
    operator MPCriticalRegionID() const { return m_id; }

private:
    MPCriticalRegionID m_id = nullptr;
};

// Enters on another thread, and leaves again where that succeeds.
OSStatus EnterElsewhere(MPCriticalRegionID region, Duration timeout)
{
    return std::async(std::launch::async,
                      [=] {
                          const OSStatus status = MPEnterCriticalRegion(region, timeout);
                          if (status == noErr) {
                              EXPECT_EQ(MPExitCriticalRegion(region), noErr);
                          }
                          return status;
                      })
        .get();
}

} // namespace

TEST(CriticalRegion, ItsHolderMayEnterAgain)
{
    const CRegion region;
    EXPECT_EQ(MPEnterCriticalRegion(region, kDurationForever), noErr);
    EXPECT_EQ(MPEnterCriticalRegion(region, kDurationImmediate), noErr);
    EXPECT_EQ(MPEnterCriticalRegion(region, 1), noErr);
    EXPECT_EQ(MPExitCriticalRegion(region), noErr);
    EXPECT_EQ(MPExitCriticalRegion(region), noErr);
    EXPECT_EQ(EnterElsewhere(region, kDurationImmediate), kMPTimeoutErr) << "left as often as entered, not before";
    EXPECT_EQ(MPExitCriticalRegion(region), noErr);
    EXPECT_EQ(EnterElsewhere(region, kDurationImmediate), noErr);
}

TEST(CriticalRegion, TimeoutsAreMillisecondsOrMicroseconds)
{
    const CRegion region;
    ASSERT_EQ(MPEnterCriticalRegion(region, kDurationForever), noErr);
    auto start = Clock::now();
    EXPECT_EQ(EnterElsewhere(region, 30 * kDurationMillisecond), kMPTimeoutErr);
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(30));
    start = Clock::now();
    EXPECT_EQ(EnterElsewhere(region, 20000 * kDurationMicrosecond), kMPTimeoutErr);
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(20));
    EXPECT_EQ(MPExitCriticalRegion(region), noErr);
}

TEST(CriticalRegion, ForeverWaitsUntilItIsLeft)
{
    const CRegion region;
    ASSERT_EQ(MPEnterCriticalRegion(region, kDurationForever), noErr);
    int value = 0;
    std::promise<void> started;
    std::thread waiter([&] {
        started.set_value();
        EXPECT_EQ(MPEnterCriticalRegion(region, kDurationForever), noErr);
        EXPECT_EQ(value, 1);
        EXPECT_EQ(MPExitCriticalRegion(region), noErr);
    });
    started.get_future().wait();
    value = 1;
    EXPECT_EQ(MPExitCriticalRegion(region), noErr);
    waiter.join();
}

TEST(CriticalRegion, KeepsThreadsApart)
{
    const CRegion region;
    int value = 0;
    std::vector<std::thread> threads;
    for (int index = 0; index < 8; ++index)
        threads.emplace_back([&] {
            for (int round = 0; round < 1000; ++round) {
                (void)MPEnterCriticalRegion(region, kDurationForever);
                ++value;
                (void)MPExitCriticalRegion(region);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(value, 8000);
}

TEST(CriticalRegion, OnlyItsHolderLeavesIt)
{
    const CRegion region;
    EXPECT_EQ(MPExitCriticalRegion(region), kMPInsufficientResourcesErr) << "nobody holds it";
    ASSERT_EQ(MPEnterCriticalRegion(region, kDurationForever), noErr);
    std::thread([&] { EXPECT_EQ(MPExitCriticalRegion(region), kMPInsufficientResourcesErr); }).join();
    EXPECT_EQ(EnterElsewhere(region, kDurationImmediate), kMPTimeoutErr) << "it is still held";
    EXPECT_EQ(MPExitCriticalRegion(region), noErr);
}

TEST(CriticalRegion, WrongIdsAreTold)
{
    EXPECT_EQ(MPCreateCriticalRegion(nullptr), paramErr);
    MPCriticalRegionID deleted = nullptr;
    ASSERT_EQ(MPCreateCriticalRegion(&deleted), noErr);
    ASSERT_NE(deleted, nullptr);
    EXPECT_EQ(MPDeleteCriticalRegion(deleted), noErr);
    for (const MPCriticalRegionID wrong :
         {static_cast<MPCriticalRegionID>(nullptr), deleted, reinterpret_cast<MPCriticalRegionID>(&deleted)}) {
        EXPECT_EQ(MPEnterCriticalRegion(wrong, kDurationForever), kMPInvalidIDErr);
        EXPECT_EQ(MPExitCriticalRegion(wrong), kMPInvalidIDErr);
        EXPECT_EQ(MPDeleteCriticalRegion(wrong), kMPInvalidIDErr);
    }
}

TEST(CriticalRegion, IdsAreNotUsedAgain)
{
    MPCriticalRegionID first = nullptr;
    ASSERT_EQ(MPCreateCriticalRegion(&first), noErr);
    EXPECT_EQ(MPDeleteCriticalRegion(first), noErr);
    const CRegion second;
    EXPECT_NE(static_cast<MPCriticalRegionID>(second), first);
}

TEST(CriticalRegion, DeletingAHeldOneHarmsNobody)
{
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "the checker reports what is done on purpose here";
#endif
    MPCriticalRegionID region = nullptr;
    ASSERT_EQ(MPCreateCriticalRegion(&region), noErr);
    ASSERT_EQ(MPEnterCriticalRegion(region, kDurationForever), noErr);
    std::promise<void> started;
    std::thread waiter([&] {
        started.set_value();
        const OSStatus status = MPEnterCriticalRegion(region, 50);
        EXPECT_TRUE(status == kMPTimeoutErr || status == kMPInvalidIDErr) << status;
    });
    started.get_future().wait();
    EXPECT_EQ(MPDeleteCriticalRegion(region), noErr);
    EXPECT_EQ(MPExitCriticalRegion(region), kMPInvalidIDErr);
    waiter.join();
}
