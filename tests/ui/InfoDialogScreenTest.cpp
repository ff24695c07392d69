// tests/ui/InfoDialogScreenTest.cpp
//
// What only a screen can show of the information dialog: a foreign parent, what is left in the
// server, and in this process, when a thousand dialogs have come and gone.
#include <malloc.h>
#include <xcb/res.h>

#include <filesystem>
#include <map>

#include "tests/support/Desk.h"
#include "tests/ui/InfoDialogFixture.h"

namespace {

using Counts = std::map<xcb_atom_t, std::uint32_t>;

// What the server keeps for the program that has made a window: how many things of each kind.
Counts ResourcesOf(xcb_window_t owner)
{
    Counts counts;
    xcb_connection_t* const connection = TheScreen().Connection();
    xcb_res_query_client_resources_reply_t* const reply =
        xcb_res_query_client_resources_reply(connection, xcb_res_query_client_resources(connection, owner), nullptr);
    if (!reply)
        throw std::runtime_error("the server does not count");
    for (auto types = xcb_res_query_client_resources_types_iterator(reply); types.rem > 0; xcb_res_type_next(&types))
        counts[types.data->resource_type] = types.data->count;
    free(reply);
    return counts;
}

std::ptrdiff_t CountDescriptors()
{
    const std::filesystem::directory_iterator entries("/proc/self/fd");
    return std::distance(begin(entries), end(entries));
}

std::size_t MemoryInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

TEST_F(InfoDialog, IsDisposedOfWithAForeignParent)
{
    CTestManager manager;
    const xcb_window_t foreign = TheScreen().MakeWindow(50, 60, 300, 200, "A host");
    TheScreen().Sync();
    WindowRef parent = nullptr;
    ASSERT_EQ(CVCreateForeignWindow(foreign, &parent), noErr);
    const WindowRef window = Open(manager, false, parent);
    ASSERT_TRUE(window);
    EXPECT_EQ(TheScreen().PropertyOf(ShownOn(TheScreen(), window).id, "WM_TRANSIENT_FOR"), foreign);
    TheScreen().DestroyWindow(foreign);
    EXPECT_TRUE(Ended(1));
    EXPECT_FALSE(IsValidWindowPtr(window));
    DisposeWindow(parent);
}

TEST_F(InfoDialog, ThousandDialogsLeaveNothingBehind)
{
    constexpr int kWarmUp = 20, kDialogs = 1000;
    // Each dialog leaves the strings of its nine texts behind, on purpose; none takes more than this.
    constexpr std::size_t kTexts = 9 * 128;
    CTestManager manager;
    manager.SetInfoDialogOptions(0x1, false);
    const auto openAndClose = [&manager] {
        const WindowRef window = Open(manager);
        DisposeWindow(window);
        Pump();
    };
    const WindowRef first = Use(manager);
    ASSERT_TRUE(first);
    const xcb_window_t leader = TheScreen().PropertyOf(ShownOn(TheScreen(), first).id, "WM_CLIENT_LEADER");
    ASSERT_NE(leader, 0U);
    DisposeWindow(first);
    for (int count = 1; count < kWarmUp; ++count)
        openAndClose();
    Hands::Settle();
    const Counts resources = ResourcesOf(leader);
    const std::ptrdiff_t descriptors = CountDescriptors();
    const std::size_t memory = MemoryInUse();
    for (int count = 0; count < kDialogs; ++count)
        openAndClose();
    EXPECT_TRUE(Ended(kWarmUp + kDialogs)) << g_ends;
    EXPECT_EQ(ResourcesOf(leader), resources);
    EXPECT_EQ(CountDescriptors(), descriptors);
    if (!CV_SANITIZED) {
        EXPECT_LT(MemoryInUse(), memory + kDialogs * kTexts);
    }
}

} // namespace
