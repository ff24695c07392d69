// tests/system/ThreadsTest.cpp
//
// Plug-ins call from whatever thread they are on, all at once. The thread sanitizer watches.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "tests/support/Owner.h"

namespace {

constexpr int kThreads = 8;
constexpr int kRounds = 100;

template <typename Work>
void OnAllThreads(const Work& work)
{
    std::atomic<int> waiting{kThreads};
    std::vector<std::thread> threads;
    for (int index = 0; index < kThreads; ++index)
        threads.emplace_back([&] {
            --waiting;
            while (waiting.load() > 0) // all begin together
                std::this_thread::yield();
            for (int round = 0; round < kRounds; ++round)
                work();
        });
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace

TEST(Threads, FactoryInitAndAccessorsAtOnce)
{
    const CLoadedBundle bundle;
    ASSERT_TRUE(bundle);
    IProductManager* const manager = bundle.Manager();
    OnAllThreads([&] {
        EXPECT_EQ(bundle.Manager(), manager);
        EXPECT_EQ(manager->Init(nullptr, "Quillets/VST"), 1);
        EXPECT_STREQ(manager->GetProductName(), "Corvane Audio Quillets for Mac");
        EXPECT_EQ(manager->GetProductVersion()->major, 1);
        EXPECT_STREQ(manager->TranslateCommon(kEffectLangButton, "OK", nullptr), "OK");
        char path[1024] = "";
        EXPECT_TRUE(manager->GetResourcesBundlePath(path, sizeof path));
        EXPECT_TRUE(Own(manager->TranslateCommonCFString(kEffectLangButton, "OK", nullptr)));
        manager->SetInfoDialogOptions(1, false);
        EXPECT_EQ(manager->AddRef(), 2U);
        EXPECT_EQ(manager->Release(), 1U);
    });
}

TEST(Threads, LoadAndUnloadAtOnce)
{
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "the checker does not know the loader's lock, which orders the rounds";
#endif
    OnAllThreads([] {
        const CLoadedBundle bundle;
        ASSERT_TRUE(bundle);
        char path[1024] = "";
        EXPECT_TRUE(bundle.Manager()->GetResourcesBundlePath(path, sizeof path));
        EXPECT_STREQ(bundle.Manager()->GetProductName(), "Corvane Audio Quillets for Mac");
    });
}
