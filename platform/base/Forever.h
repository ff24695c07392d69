// platform/base/Forever.h
//
// What the layer keeps for as long as the process lives.
#pragma once

#include <new>

/// A global that is never destroyed and lies in memory of its own: where T's constructor takes no
/// memory, the first use cannot fail.
template <typename T>
class CForever {
public:
    CForever() noexcept(noexcept(T())) { ::new (static_cast<void*>(m_memory)) T; }
    CForever(const CForever&) = delete;
    CForever& operator=(const CForever&) = delete;

    T& operator*() noexcept { return *std::launder(reinterpret_cast<T*>(m_memory)); }
    T* operator->() noexcept { return &**this; }

private:
    alignas(T) unsigned char m_memory[sizeof(T)];
};
