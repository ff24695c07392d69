// tests/system/PreferencesCrashTest.cpp
//
// Writers killed at random instants, many writers at once, and several copies of the layer in one
// process: what was reported as written is there, and nobody's key is lost. QUILLETS_FULL makes the
// numbers those that the store has to bear; the everyday run takes less.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <random>
#include <set>
#include <thread>

#include "tests/support/PreferencesSupport.h"

namespace {

#ifdef QUILLETS_FULL
constexpr int kKillRounds = 500;
constexpr int kProcesses = 8;
constexpr int kThreads = 4;
constexpr int kKeys = 100;
#else
constexpr int kKillRounds = 40;
constexpr int kProcesses = 4;
constexpr int kThreads = 3;
constexpr int kKeys = 12;
#endif

class PreferencesCrash : public CPreferencesTest {};

bool SetNumber(const std::string& key, int number)
{
    return SetKey("Crash", key, std::to_string(number));
}

int GetNumber(const std::string& key)
{
    const std::string text = GetKey("Crash", key);
    return text == "(none)" ? 0 : std::stoi(text);
}

TEST_F(PreferencesCrash, WhatWasReportedAsWrittenIsThereAfterAKill)
{
    constexpr int kWriters = 2;
    constexpr int kOwnKeys = 3;
    using Numbers = std::atomic<int>[kWriters][kOwnKeys];
    void* const memory = mmap(nullptr, sizeof(Numbers), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    auto& reported = *static_cast<Numbers*>(memory);
    ASSERT_TRUE(SetKey("Crash", "kept", "kept"));
    std::mt19937 random(20110311);
    for (int round = 0; round < kKillRounds; ++round) {
        pid_t children[kWriters];
        for (int writer = 0; writer < kWriters; ++writer) {
            children[writer] = fork();
            if (children[writer] != 0)
                continue;
            for (int number = 0;; ++number) {
                std::atomic<int>& own = reported[writer][number % kOwnKeys];
                const int next = own + 1;
                if (SetNumber("key " + std::to_string(writer) + std::to_string(number % kOwnKeys), next))
                    own = next;
            }
        }
        // Every other round the first write has time to end, however slow the machine.
        const int before = reported[0][0];
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (round % 2 == 0 && reported[0][0] == before && std::chrono::steady_clock::now() < limit)
            usleep(500);
        for (const pid_t child : children) {
            usleep(static_cast<useconds_t>(random() % 12000));
            kill(child, SIGKILL);
        }
        for (const pid_t child : children)
            ASSERT_EQ(waitpid(child, nullptr, 0), child);
        for (int writer = 0; writer < kWriters; ++writer) {
            for (int key = 0; key < kOwnKeys; ++key) {
                const int there = GetNumber("key " + std::to_string(writer) + std::to_string(key));
                const int told = reported[writer][key];
                ASSERT_TRUE(there == told || there == told + 1)
                    << "round " << round << ": " << there << " for " << told;
                reported[writer][key] = there;
            }
        }
        ASSERT_EQ(GetKey("Crash", "kept"), "kept") << "round " << round;
    }
    ASSERT_TRUE(SetKey("Crash", "kept", "to the end"));
    EXPECT_EQ(NamesIn(std::filesystem::path(MachineFile("com.corvane.crash")).parent_path()).size(), 2U)
        << "the file and its lock; nothing was put aside";
    EXPECT_GT(reported[0][0].load(), kKillRounds / 20);
    munmap(memory, sizeof(Numbers));
}

// Writes keys of its own from several threads; answers how many writes failed.
template <typename Write>
int WriteFromThreads(const std::string& prefix, Write write)
{
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&, thread] {
            for (int key = 0; key < kKeys; ++key) {
                const std::string name = prefix + std::to_string(thread) + "-" + std::to_string(key);
                if (!write(name))
                    ++failures;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    return failures;
}

int CountKeys()
{
    (void)GetKey("Crash", "");
    int count = 0;
    // On a machine that is loaded enough a write waits in vain for the machine-wide lock and goes to
    // the user's scope, as it should.
    for (const CFStringRef user : {kCFPreferencesAnyUser, kCFPreferencesCurrentUser}) {
        (void)CFPreferencesSynchronize(CFSTR("com.corvane.crash"), user, kCFPreferencesCurrentHost);
        const CFArrayRef keys = CFPreferencesCopyKeyList(CFSTR("com.corvane.crash"), user, kCFPreferencesCurrentHost);
        count += static_cast<int>(CFArrayGetCount(keys));
        CFRelease(keys);
    }
    return count;
}

TEST_F(PreferencesCrash, ManyProcessesAndThreadsLoseNoKey)
{
    std::vector<pid_t> children;
    for (int process = 0; process < kProcesses; ++process) {
        children.push_back(fork());
        if (children.back() == 0)
            _exit(WriteFromThreads(std::to_string(process) + "-",
                                   [](const std::string& name) { return SetKey("Crash", name, name); }));
    }
    for (const pid_t child : children) {
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(CountKeys(), kProcesses * kThreads * kKeys);
    for (int process = 0; process < kProcesses; ++process)
        EXPECT_EQ(GetKey("Crash", std::to_string(process) + "-0-0"), std::to_string(process) + "-0-0");
}

// A copy of the layer of its own, as a second plug-in brings one.
class CLayerCopy {
public:
    explicit CLayerCopy(const std::string& path)
    {
        std::filesystem::copy_file(CV_BUILD_DIR "/libcvplatform.so.1", path);
        m_code = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (!m_code)
            throw std::runtime_error(dlerror());
        Find("cv_CFStringCreateWithCString", m_makeString);
        Find("cv_CFRelease", m_release);
        Find("cv_CFPreferencesSetValue", m_setValue);
        Find("cv_CFPreferencesSynchronize", m_synchronize);
        m_user = *static_cast<CFStringRef*>(dlsym(m_code, "cv_kCFPreferencesAnyUser"));
        m_host = *static_cast<CFStringRef*>(dlsym(m_code, "cv_kCFPreferencesCurrentHost"));
    }
    void* Address() const { return reinterpret_cast<void*>(m_setValue); }
    bool Set(const std::string& name) const
    {
        const CFStringRef domain = m_makeString(nullptr, "com.corvane.crash", kCFStringEncodingUTF8);
        const CFStringRef key = m_makeString(nullptr, name.c_str(), kCFStringEncodingUTF8);
        m_setValue(key, key, domain, m_user, m_host);
        const bool isStored = m_synchronize(domain, m_user, m_host) != 0;
        m_release(key);
        m_release(domain);
        return isStored;
    }

private:
    template <typename Function>
    void Find(const char* name, Function*& function)
    {
        function = reinterpret_cast<Function*>(dlsym(m_code, name));
        if (!function)
            throw std::runtime_error(name);
    }
    void* m_code;
    decltype(CFStringCreateWithCString)* m_makeString = nullptr;
    decltype(CFRelease)* m_release = nullptr;
    decltype(CFPreferencesSetValue)* m_setValue = nullptr;
    decltype(CFPreferencesSynchronize)* m_synchronize = nullptr;
    CFStringRef m_user;
    CFStringRef m_host;
};

TEST_F(PreferencesCrash, SeveralCopiesOfTheLayerInOneProcessLoseNoKey)
{
    constexpr int kCopies = 4;
    std::vector<CLayerCopy> copies;
    std::set<void*> addresses;
    for (int copy = 0; copy < kCopies; ++copy) {
        copies.emplace_back(m_folder / ("copy-" + std::to_string(copy) + ".so"));
        addresses.insert(copies.back().Address());
    }
    ASSERT_EQ(addresses.size(), copies.size()) << "really separate";
    std::atomic<int> failures{0};
    std::vector<std::thread> writers;
    for (int copy = 0; copy < kCopies; ++copy) {
        writers.emplace_back([&, copy] {
            failures += WriteFromThreads(std::to_string(copy) + "-", [&, copy](const std::string& name) {
                return copies[static_cast<std::size_t>(copy)].Set(name);
            });
        });
    }
    for (std::thread& writer : writers)
        writer.join();
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(CountKeys(), kCopies * kThreads * kKeys);
}

TEST_F(PreferencesCrash, ThreadsReadWhileOthersWrite)
{
    std::atomic<bool> done{false};
    std::atomic<int> wrong{0};
    ASSERT_TRUE(SetNumber("number", 0));
    std::thread reader([&] {
        int last = 0;
        while (!done) {
            const int now = GetNumber("number");
            wrong += now < last ? 1 : 0;
            last = now;
        }
    });
    for (int number = 1; number <= kKeys * 5; ++number) {
        EXPECT_TRUE(SetNumber("number", number));
        EXPECT_EQ(GetNumber("number"), number);
    }
    done = true;
    reader.join();
    EXPECT_EQ(wrong, 0) << "no value comes back once it was replaced";
}

} // namespace
