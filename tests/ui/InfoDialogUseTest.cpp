// tests/ui/InfoDialogUseTest.cpp
//
// The information dialog as people use it: built twice, for windows in memory and for windows on a
// virtual screen with a window manager, by real input.
#include "tests/ui/InfoDialogFixture.h"

namespace {

TEST_F(InfoDialog, HidingTheOptionOpensThePlainWindowModelessAndClearsTheBit)
{
    CTestManager manager;
    const WindowRef window = Use(manager, true);
    ASSERT_TRUE(window);
    WindowRef parent = nullptr;
    EXPECT_EQ(ModalityOf(window, parent), static_cast<WindowModality>(kWindowModalityNone));
    EXPECT_FALSE(ControlOf(window, 'KNOB'));
    EXPECT_TRUE(IsWindowVisible(window));
    EXPECT_TRUE(IsWindowActive(window));
    EXPECT_EQ(manager.infoDialogOptions & 1U, 0U);
    Hands::Click(ControlOf(window, 'CLOS', 1));
    EXPECT_TRUE(Ended(1));
}

TEST_F(InfoDialog, WithAParentTheKnobWindowIsModalToItAndSetsTheBit)
{
    CTestManager manager;
    const WindowRef parent = MakeParent();
    const WindowRef window = Use(manager, false, parent);
    ASSERT_TRUE(window);
    WindowRef unavailable = nullptr;
    EXPECT_EQ(ModalityOf(window, unavailable), static_cast<WindowModality>(kWindowModalityWindowModal));
    EXPECT_EQ(unavailable, parent);
    EXPECT_TRUE(ControlOf(window, 'KNOB'));
    EXPECT_EQ(manager.infoDialogOptions & 1U, 1U);
    Hands::Click(ControlOf(window, 'CLOS', 0));
    EXPECT_TRUE(Ended(1));
    EXPECT_TRUE(IsValidWindowPtr(parent));
    DisposeWindow(parent);
}

TEST_F(InfoDialog, CancelDropsAChangeOfTheBox)
{
    CTestManager manager;
    const WindowRef window = UseAndClearTheBox(manager);
    ASSERT_TRUE(window);
    Hands::Click(ControlOf(window, 'CLOS', 1));
    EXPECT_TRUE(Ended(1));
    EXPECT_FALSE(IsValidWindowPtr(window));
    EXPECT_TRUE(manager.KnobsDragVertical());
    EXPECT_TRUE(manager.stored.empty());
    EXPECT_EQ(manager.infoDialogWindow, nullptr);
}

TEST_F(InfoDialog, OkStoresAChangeOfTheBox)
{
    CTestManager manager;
    const WindowRef window = UseAndClearTheBox(manager);
    ASSERT_TRUE(window);
    Hands::Click(ControlOf(window, 'CLOS', 0));
    EXPECT_TRUE(Ended(1));
    EXPECT_FALSE(manager.KnobsDragVertical());
    EXPECT_EQ(manager.stored, std::vector<std::string>{"Common/Knobs Drag Vertical=no"});
    EXPECT_EQ(manager.infoDialogWindow, nullptr);
}

TEST_F(InfoDialog, OkWithoutTheBoxStoresNothing)
{
    CTestManager manager;
    ASSERT_TRUE(Use(manager, true));
    Hands::Tap(kReturnKey);
    EXPECT_TRUE(Ended(1));
    EXPECT_TRUE(manager.stored.empty());
}

TEST_F(InfoDialog, HelpOpensTopic300AndTheDialogStays)
{
    CTestManager manager;
    const WindowRef window = Use(manager);
    ASSERT_TRUE(window);
    Hands::Click(ControlOf(window, 'HELP'));
    EXPECT_TRUE(Hands::Until([&] { return !manager.helpTopics.empty(); }));
    EXPECT_EQ(manager.helpTopics, std::vector<unsigned>{300});
    EXPECT_EQ(manager.helpWindow, window);
    EXPECT_TRUE(IsWindowVisible(window));
    EXPECT_EQ(g_ends, 0);
    Hands::Click(ControlOf(window, 'CLOS', 0));
    EXPECT_TRUE(Ended(1));
}

TEST_F(InfoDialog, ReturnIsOkAndEscapeIsCancel)
{
    CTestManager manager;
    ASSERT_TRUE(Use(manager));
    Hands::Tap(kReturnKey);
    EXPECT_TRUE(Ended(1));
    EXPECT_EQ(manager.stored.size(), 1U);
    ASSERT_TRUE(Use(manager));
    Hands::Tap(kEscapeKey);
    EXPECT_TRUE(Ended(2));
    EXPECT_EQ(manager.stored.size(), 1U);
    EXPECT_EQ(manager.infoDialogWindow, nullptr);
}

TEST_F(InfoDialog, OtherWaysOfClosingSendOneEndAndLeaveTheFieldAlone)
{
    CTestManager manager;
    const WindowRef parent = MakeParent();
    const std::pair<const char*, std::function<void(WindowRef)>> ways[] = {
        {"close box", Hands::Close},
        {"host", DisposeWindow},
        {"parent",
         [parent](WindowRef) {
             DisposeWindow(parent);
         }},
    };
    for (const auto& [name, close] : ways) {
        g_ends = 0;
        const WindowRef window = Use(manager, false, parent);
        ASSERT_TRUE(window) << name;
        close(window);
        EXPECT_TRUE(Ended(1)) << name;
        EXPECT_FALSE(IsValidWindowPtr(window)) << name;
        EXPECT_EQ(manager.infoDialogWindow, window) << name;
        EXPECT_TRUE(manager.stored.empty()) << name;
    }
}

TEST_F(InfoDialog, TwoCallsOpenTwoDialogsThatEndByThemselves)
{
    CTestManager manager;
    const WindowRef first = Use(manager);
    ASSERT_TRUE(first);
    (void)SetWindowTitleWithCFString(first, CFSTR("First")); // windows are found on a screen by their titles
    const WindowRef second = Use(manager, true);
    ASSERT_TRUE(second);
    EXPECT_NE(first, second);
    EXPECT_EQ(manager.infoDialogWindow, second);
    Hands::BringUp(first);
    Hands::Tap(kEscapeKey);
    EXPECT_TRUE(Ended(1));
    EXPECT_FALSE(IsValidWindowPtr(first));
    EXPECT_TRUE(IsValidWindowPtr(second));
    Hands::BringUp(second);
    Hands::Tap(kReturnKey);
    EXPECT_TRUE(Ended(2));
    EXPECT_FALSE(IsValidWindowPtr(second));
}

TEST_F(InfoDialog, PointerBrightensAndDimsTheLogo)
{
    CTestManager manager;
    const WindowRef window = Use(manager);
    ASSERT_TRUE(window);
    const ControlRef logo = ControlOf(window, 'LOGO');
    const CGImageRef image = HIImageViewCopyImage(logo);
    EXPECT_TRUE(image);
    CGImageRelease(image);
    const auto alphaIs = [logo](float alpha) {
        return [logo, alpha] {
            return static_cast<float>(HIImageViewGetAlpha(logo)) == alpha;
        };
    };
    EXPECT_TRUE(alphaIs(1.0f)());
    Hands::Hover(logo);
    Hands::Settle();
    EXPECT_TRUE(alphaIs(1.0f)());
    Hands::HoverGround(window);
    EXPECT_TRUE(Hands::Until(alphaIs(0.7f)));
    Hands::Hover(logo);
    EXPECT_TRUE(Hands::Until(alphaIs(1.0f)));
    DisposeWindow(window);
}

TEST_F(InfoDialog, ClickOnTheLogoOpensTheSiteAndTheDialogStays)
{
    CTestManager manager;
    const WindowRef window = Use(manager);
    ASSERT_TRUE(window);
    Hands::Click(ControlOf(window, 'LOGO'));
    EXPECT_TRUE(Hands::Until([&] { return manager.visits > 0; }));
    Hands::Settle();
    EXPECT_EQ(manager.visits, 1);
    EXPECT_TRUE(IsWindowVisible(window));
    EXPECT_EQ(g_ends, 0);
    DisposeWindow(window);
}

// The object of the bundle itself, as plug-ins have it.
TEST_F(InfoDialog, UnloadingTheBundleEndsAnOpenDialog)
{
    if (CV_SANITIZED)
        GTEST_SKIP() << "the references left behind on purpose have no name once the code is gone";
    {
        const CLoadedBundle loaded;
        ASSERT_TRUE(loaded);
        loaded.Manager()->InfoDialog(nullptr, false);
        EXPECT_EQ(CountWindows(), m_before + 1);
        Hands::Await(FrontNonFloatingWindow());
    }
    EXPECT_TRUE(Ended(1));
}

TEST_F(InfoDialog, BuiltBundleStoresTheOptionForEveryPlugIn)
{
    // Stays loaded: the references left behind on purpose have no name once the code is gone.
    static const CLoadedBundle& loaded = *new CLoadedBundle;
    ASSERT_TRUE(loaded);
    IProductManager& manager = *loaded.Manager();
    manager.SetDragVertical(false);
    manager.InfoDialog(nullptr, false);
    const WindowRef window = FrontNonFloatingWindow();
    ASSERT_TRUE(window);
    Hands::Await(window);
    const ControlRef box = ControlOf(window, 'KNOB');
    Hands::Click(box);
    EXPECT_TRUE(Hands::Until([box] { return GetControl32BitValue(box) == 1; }));
    Hands::Click(ControlOf(window, 'CLOS', 0));
    EXPECT_TRUE(Ended(1));
    EXPECT_TRUE(manager.KnobsDragVertical());
    char value[8] = "";
    EXPECT_TRUE(manager.GetRegistryKey("Common", "Knobs Drag Vertical", value, sizeof value));
    EXPECT_STREQ(value, "yes");
}

TEST_F(InfoDialog, ProcessThatEndsTellsItsHostOfTheDialogsEnd)
{
    const ProgramResult result = RunProgram({CV_DIALOG_PROGRAM});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out, "shown\nleaving\nended\n");
}

} // namespace
