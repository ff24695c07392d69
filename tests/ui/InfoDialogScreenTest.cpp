// tests/ui/InfoDialogScreenTest.cpp
//
// What only a screen can show of the information dialog: a foreign parent, what is left in the
// server, and in this process, when a thousand dialogs have come and gone.
#include <xcb/res.h>

#include <filesystem>
#include <map>

#include "tests/support/Desk.h"
#include "tests/ui/DialogMemory.h"

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
    constexpr int kWarmUp = 50, kDialogs = 1000;
    constexpr long kSlack = 16 * 1024; // caches of libraries may grow; a block for each dialog is more
    CTestManager manager;
    manager.SetInfoDialogOptions(0x1, false);
    const WindowRef first = Use(manager);
    ASSERT_TRUE(first);
    const xcb_window_t leader = TheScreen().PropertyOf(ShownOn(TheScreen(), first).id, "WM_CLIENT_LEADER");
    ASSERT_NE(leader, 0U);
    DisposeWindow(first);
    CountedMemory texts = {0, 0};
    (void)LeftByDialogs(manager, kWarmUp, texts);
    Hands::Settle();
    const Counts resources = ResourcesOf(leader);
    const std::ptrdiff_t descriptors = CountDescriptors();
    const CountedMemory left = LeftByDialogs(manager, kDialogs, texts);
    EXPECT_TRUE(Ended(1 + kWarmUp + kDialogs)) << g_ends;
    EXPECT_EQ(ResourcesOf(leader), resources);
    EXPECT_EQ(CountDescriptors(), descriptors);
    EXPECT_LT(left.bytes, kSlack);
    EXPECT_LT(left.blocks, kDialogs / 4);
}

} // namespace
