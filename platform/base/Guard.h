// platform/base/Guard.h
//
// The border between our C++ and the C calls that we offer: no exception crosses it.
#pragma once

/// Runs `work` and answers its result; `failure` when memory or another resource runs out.
template <typename Result, typename Work>
Result Guarded(Result failure, Work&& work) noexcept
{
    try {
        return work();
    } catch (...) {
        return failure;
    }
}
