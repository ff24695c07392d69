// tests/ui/DialogToolkitMemoryTest.cpp
//
// Windows come and go with plug-ins for as long as a host runs. All memory of this process is
// counted here as it was asked for, so that what ten thousand windows leave behind is known to the
// byte: the strings that the toolkit keeps by design, and nothing else.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstring>

#include "frame/BaseProductManager.h"
#include "tests/support/Owner.h"
#include "tests/support/Toolbox.h"

#if !CV_SANITIZED // the sanitizers count for themselves

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

namespace {

using Toolkit = CBaseProductManager;

long BytesOfString(const std::string& text)
{
    const long before = g_bytes;
    const auto string = Own(CFStringCreateWithCString(nullptr, text.c_str(), kCFStringEncodingUTF8));
    return g_bytes - before;
}

OSStatus PassOn(EventHandlerCallRef, EventRef, void*)
{
    return eventNotHandledErr;
}

// Builds a window, does with it all that the toolkit can, and disposes of it.
void UseWindow(IBNibRef nib, const std::string& text)
{
    WindowRef window = nullptr;
    ASSERT_EQ(CreateWindowFromNib(nib, CFSTR("Dialog"), &window), noErr);
    const ControlID edit = Toolkit::MakeControlId('EDIT', 0);
    const ControlID name = Toolkit::MakeControlId('NAME', 0);
    const ControlID button = Toolkit::MakeControlId('CLOS', 0);
    CBaseProductManager manager;
    ASSERT_EQ(manager.AttachDialogEvents(window, PassOn, nullptr), noErr);
    Toolkit::SetControlTitle(window, button, text.c_str());
    Toolkit::SetStaticControlText(window, name, text.c_str());
    Toolkit::SetEditBoxControlText(window, edit, text.c_str());
    Toolkit::ShowControl(window, name, false);
    Toolkit::ShowControl(window, name, true);
    ASSERT_EQ(HIViewNewTrackingArea(Toolkit::GetControl(window, name), nullptr, 1, nullptr), noErr);
    ShowWindow(window);
    SelectWindow(window);
    ClickOn(Toolkit::GetControl(window, edit));
    TypeKeys("ab");
    Toolkit::MakeEditTextControlReadOnly(window, edit);
    TypeKeys("c");
    char buffer[64] = "";
    Toolkit::GetEditBoxControlText(window, edit, buffer, sizeof buffer);
    ASSERT_NE(std::string(buffer).find("ab"), std::string::npos);
    DisposeWindow(window);
    Pump();
}

TEST(DialogToolkitMemory, TenThousandWindowsLeaveTheSettersStringsAndNothingElse)
{
    UseHeadlessDesktop();
    const CDataBundle bundle("windows");
    IBNibRef nib = nullptr;
    ASSERT_EQ(CreateNibReferenceWithCFBundle(bundle.Get(), CFSTR("Dialog"), &nib), noErr);
    for (int window = 0; window < 500; ++window) // fills what is kept for reuse
        ASSERT_NO_FATAL_FAILURE(UseWindow(nib, "warming up"));

    constexpr int kSetters = 3;
    constexpr int kWindows = 10000;
    long expected = 0;
    const long bytes = g_bytes;
    const long blocks = g_blocks;
    for (int window = 0; window < kWindows; ++window) {
        const std::string text(static_cast<std::size_t>(window % 40), 'x');
        expected += kSetters * BytesOfString(text);
        ASSERT_NO_FATAL_FAILURE(UseWindow(nib, text));
    }
    EXPECT_EQ(g_bytes - bytes, expected);
    EXPECT_EQ(g_blocks - blocks, long{kSetters} * kWindows);
    DisposeNibReference(nib);
}

} // namespace

#endif
