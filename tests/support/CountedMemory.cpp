// tests/support/CountedMemory.cpp
#include "tests/support/CountedMemory.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if !CV_SANITIZED

extern "C" void* __libc_memalign(std::size_t alignment, std::size_t size);
extern "C" void __libc_free(void* memory);

namespace {

std::atomic<long> g_bytes{0};
std::atomic<long> g_blocks{0};

// Stands in front of every block.
struct alignas(16) Header {
    std::size_t size;
    std::size_t offset; // from the start of what the C library gave
};

Header& HeaderOf(void* block)
{
    return static_cast<Header*>(block)[-1];
}

void* Allocate(std::size_t alignment, std::size_t size)
{
    const std::size_t offset = std::max(alignment, sizeof(Header));
    char* const start =
        size < PTRDIFF_MAX - offset ? static_cast<char*>(__libc_memalign(offset, size + offset)) : nullptr;
    if (!start) {
        errno = ENOMEM;
        return nullptr;
    }
    void* const block = start + offset;
    HeaderOf(block) = {size, offset};
    g_bytes += static_cast<long>(size);
    ++g_blocks;
    return block;
}

} // namespace

// The names by which the C library lets a program take its allocator's place.
#pragma GCC visibility push(default)
extern "C" {

void* malloc(std::size_t size)
{
    return Allocate(0, size);
}

void free(void* block)
{
    if (!block)
        return;
    const Header header = HeaderOf(block);
    g_bytes -= static_cast<long>(header.size);
    --g_blocks;
    __libc_free(static_cast<char*>(block) - header.offset);
}

void* calloc(std::size_t count, std::size_t each)
{
    std::size_t size = 0;
    void* const block = __builtin_mul_overflow(count, each, &size) ? nullptr : Allocate(0, size);
    return block ? std::memset(block, 0, size) : nullptr;
}

void* realloc(void* block, std::size_t size)
{
    void* const moved = Allocate(0, size);
    if (!moved || !block)
        return moved;
    std::memcpy(moved, block, std::min(size, HeaderOf(block).size));
    free(block);
    return moved;
}

void* memalign(std::size_t alignment, std::size_t size)
{
    return Allocate(alignment, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size)
{
    return Allocate(alignment, size);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size)
{
    *block = Allocate(alignment, size);
    return *block ? 0 : ENOMEM;
}

std::size_t malloc_usable_size(void* block)
{
    return block ? HeaderOf(block).size : 0;
}

} // extern "C"
#pragma GCC visibility pop

CountedMemory MemoryInUse()
{
    return {g_bytes, g_blocks};
}

#else

CountedMemory MemoryInUse()
{
    return {0, 0};
}

#endif
