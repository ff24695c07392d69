// tests/support/Shortage.h
//
// A process that may open few files more.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

/// Has the process open `left` more descriptors and no others, for a scope.
class CShortage {
public:
    explicit CShortage(int left)
    {
        EXPECT_EQ(getrlimit(RLIMIT_NOFILE, &m_before), 0);
        rlimit limit = m_before;
        limit.rlim_cur = 0;
        for (int free = 0; free < left || IsOpen(limit.rlim_cur); ++limit.rlim_cur)
            free += IsOpen(limit.rlim_cur) ? 0 : 1;
        EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    }
    ~CShortage() { EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &m_before), 0); }
    CShortage(const CShortage&) = delete;
    CShortage& operator=(const CShortage&) = delete;

private:
    static bool IsOpen(rlim_t descriptor) { return fcntl(static_cast<int>(descriptor), F_GETFD) >= 0; }

    rlimit m_before = {};
};
