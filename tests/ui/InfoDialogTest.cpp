// tests/ui/InfoDialogTest.cpp
//
// What the information dialog shows, and what becomes of it when something is missing, called at odd
// times or from several threads; on the headless desktop. Its use stands in InfoDialogUseTest.cpp.
#include <gtest/gtest.h>

#include <atomic>
#include <new>
#include <regex>
#include <thread>

#include "tests/ui/InfoDialogFixture.h"

namespace {

bool g_recordFails = false;

} // namespace

// Stands before the library's own; only the dialog asks in this way.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    try {
        return g_recordFails ? nullptr : ::operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

namespace {

std::string TextShown(WindowRef window, OSType signature)
{
    CFStringRef text = nullptr;
    (void)GetControlData(ControlOf(window, signature), kControlEntireControl, kControlStaticTextCFStringTag,
                         sizeof text, &text, nullptr); // an absent one reads as (null)
    const std::string shown = TextOf(text);
    CFRelease(text);
    return shown;
}

std::string TitleOf(WindowRef window, OSType signature, SInt32 id = 0)
{
    CFStringRef text = nullptr;
    (void)CopyControlTitleAsCFString(ControlOf(window, signature, id), &text);
    const std::string title = TextOf(text);
    CFRelease(text);
    return title;
}

TEST_F(InfoDialog, OptionsChooseTheWindowAndOtherBitsNeverChange)
{
    CTestManager manager;
    manager.SetInfoDialogOptions(0xF0, false);
    manager.SetInfoDialogOptions(0x1, false);
    EXPECT_EQ(manager.infoDialogOptions, 0xF1U);
    const WindowRef knob = manager.CreateInfoDialog();
    ASSERT_TRUE(knob);
    EXPECT_TRUE(ControlOf(knob, 'KNOB'));
    EXPECT_FALSE(IsWindowVisible(knob));
    manager.SetInfoDialogOptions(0x1, true);
    EXPECT_EQ(manager.infoDialogOptions, 0xF0U);
    const WindowRef plain = manager.CreateInfoDialog();
    ASSERT_TRUE(plain);
    EXPECT_FALSE(ControlOf(plain, 'KNOB'));
    DisposeWindow(knob);
    DisposeWindow(plain);
}

TEST_F(InfoDialog, ShowsNameVersionNoticeAndTitles)
{
    CTestManager manager;
    const WindowRef window = Open(manager);
    ASSERT_TRUE(window);
    CFStringRef title = nullptr;
    ASSERT_EQ(CopyWindowTitleAsCFString(window, &title), noErr);
    EXPECT_EQ(TextOf(title), "A Product");
    CFRelease(title);
    EXPECT_EQ(TextShown(window, 'NAME'), "A Product");
    EXPECT_EQ(TextShown(window, 'VERS'), "Version 1.3 Build " + std::to_string(g_CVGetCurrentBuildNumber()));
    EXPECT_EQ(TextShown(window, 'CPRT'), g_VersionInf.notice);
    EXPECT_EQ(TextShown(window, 'OPTS'), "Options");
    EXPECT_EQ(TitleOf(window, 'KNOB'), "Up / Down mouse control of circular knobs");
    EXPECT_EQ(TitleOf(window, 'CLOS', 0), "OK");
    EXPECT_EQ(TitleOf(window, 'CLOS', 1), "Cancel");
    EXPECT_EQ(TitleOf(window, 'HELP'), "Help");
    DisposeWindow(window);
}

TEST_F(InfoDialog, ValueOtherThanOneCountsAsFalse)
{
    CTestManager manager;
    manager.SetDragVertical(true);
    const WindowRef window = Open(manager);
    ASSERT_TRUE(window);
    const ControlRef box = ControlOf(window, 'KNOB');
    SetControl32BitMaximum(box, 2);
    SetControl32BitValue(box, kControlCheckBoxMixedValue);
    ASSERT_EQ(GetControl32BitValue(box), 2);
    PressKey(kReturnKey);
    EXPECT_FALSE(manager.KnobsDragVertical());
}

TEST_F(InfoDialog, CallFromWithinItsConstructionDoesNothing)
{
    CTestManager manager;
    int nested = 0;
    manager.onTranslate = [&] {
        ++nested;
        static_cast<IProductManager&>(manager).InfoDialog(nullptr, false);
    };
    const WindowRef window = Open(manager);
    ASSERT_TRUE(window);
    EXPECT_GT(nested, 0);
    EXPECT_EQ(CountWindows(), m_before + 1);
    manager.onTranslate = nullptr;
    DisposeWindow(window);
    const WindowRef again = Open(manager);
    EXPECT_TRUE(again) << "the guard was given back";
    DisposeWindow(again);
}

TEST_F(InfoDialog, WithoutABundleNothingHappensAndTheOptionsStay)
{
    CTestManager manager("/no/such/folder");
    manager.SetInfoDialogOptions(0x1, false);
    EXPECT_EQ(manager.CreateInfoDialog(), nullptr);
    EXPECT_EQ(Open(manager, true), nullptr);
    EXPECT_EQ(manager.infoDialogOptions, 1U);
    EXPECT_EQ(g_ends, 0);
}

TEST_F(InfoDialog, DestructorDisposesOfAnOpenDialog)
{
    {
        CTestManager manager;
        ASSERT_TRUE(Open(manager));
    }
    Pump();
    EXPECT_EQ(g_ends, 1);
}

TEST_F(InfoDialog, DeadRecordsPassEventsOn)
{
    EventHandlerParams dead = {};
    EventRef event = nullptr;
    ASSERT_EQ(CreateEvent(nullptr, kEventClassWindow, kEventWindowDispose, 0, kEventAttributeNone, &event), noErr);
    EXPECT_EQ(CBaseProductManager::InfoDialogHandler(nullptr, event, &dead), eventNotHandledErr);
    EXPECT_EQ(CBaseProductManager::LogoControlHandler(nullptr, event, &dead), eventNotHandledErr);
    EXPECT_EQ(g_ends, 0);
    ReleaseEvent(event);
}

TEST_F(InfoDialog, HandlersPassOnWhatIsNotTheirs)
{
    CTestManager manager;
    EventHandlerParams params = {};
    params.owner = &manager;
    const struct {
        UInt32 eventClass, kind;
    } events[] = {{kEventClassControl, 99},                               // no kind of theirs
                  {kEventClassCommand, kEventCommandProcess},             // without a command
                  {kEventClassControl, kEventControlTrackingAreaExited}}; // a dialog without a logo
    for (const auto& each : events) {
        EventRef event = nullptr;
        ASSERT_EQ(CreateEvent(nullptr, each.eventClass, each.kind, 0, kEventAttributeNone, &event), noErr);
        EXPECT_EQ(CBaseProductManager::InfoDialogHandler(nullptr, event, &params), eventNotHandledErr) << each.kind;
        EXPECT_EQ(CBaseProductManager::LogoControlHandler(nullptr, event, &params), eventNotHandledErr) << each.kind;
        ReleaseEvent(event);
    }
    EXPECT_EQ(params.owner, &manager);
    EXPECT_EQ(manager.visits, 0);
    EXPECT_EQ(g_ends, 0);
}

TEST_F(InfoDialog, WithoutMemoryForItsRecordDoesNotStay)
{
    CTestManager manager;
    g_recordFails = true;
    EXPECT_EQ(Open(manager), nullptr);
    g_recordFails = false;
    EXPECT_EQ(CountWindows(), m_before);
    EXPECT_EQ(g_ends, 0) << "it never began";
    const WindowRef window = Open(manager);
    EXPECT_TRUE(window);
    DisposeWindow(window);
}

TEST_F(InfoDialog, WithoutItsHandlerDoesNotStay)
{
    CTestManager manager;
    manager.attachStatus = paramErr;
    EXPECT_EQ(Open(manager), nullptr);
    EXPECT_EQ(CountWindows(), m_before);
    EXPECT_EQ(g_ends, 0) << "it never began";
}

TEST_F(InfoDialog, UnknownCommandsTravelOn)
{
    CTestManager manager;
    const WindowRef window = Open(manager);
    ASSERT_TRUE(window);
    EventRef event = nullptr;
    HICommand command = {};
    command.commandID = 'what';
    ASSERT_EQ(CreateEvent(nullptr, kEventClassCommand, kEventCommandProcess, 0, kEventAttributeNone, &event), noErr);
    ASSERT_EQ(SetEventParameter(event, kEventParamDirectObject, typeHICommand, sizeof command, &command), noErr);
    EXPECT_EQ(SendEventToEventTarget(event, GetControlEventTarget(ControlOf(window, 'LOGO'))), eventNotHandledErr);
    ReleaseEvent(event);
    EXPECT_TRUE(IsValidWindowPtr(window));
    EXPECT_EQ(manager.visits, 0);
    DisposeWindow(window);
}

// A copy of the built bundle in which something is changed.
class InfoDialogPieces : public InfoDialog {
protected:
    void SetUp() override
    {
        InfoDialog::SetUp();
        std::filesystem::copy(BuiltBundle(), m_folder / "Quillets.bundle", std::filesystem::copy_options::recursive);
    }
    std::string Bundle() const { return m_folder / "Quillets.bundle"; }
    std::string Resource(const std::string& name) const { return Bundle() + "/Contents/Resources/" + name; }

    CTemporaryFolder m_folder;
};

TEST_F(InfoDialogPieces, MissingDescriptionOpensNothingButTheBitIsSet)
{
    std::filesystem::remove_all(Resource("en.lproj/InfoKnob.nib"));
    CTestManager manager(Bundle());
    EXPECT_EQ(Open(manager), nullptr);
    EXPECT_EQ(manager.infoDialogOptions, 1U);
    EXPECT_EQ(g_ends, 0);
}

TEST_F(InfoDialogPieces, DamagedOrNamelessDescriptionOpensNothing)
{
    const std::string file = Resource("en.lproj/InfoKnob.nib/objects.xib");
    const std::string sound = ReadFile(file);
    const std::string renamed =
        std::regex_replace(sound, std::regex("<string>InfoDialog</string>"), "<string>Other</string>");
    ASSERT_NE(renamed, sound);
    for (const std::string& bytes : {sound.substr(0, sound.size() / 2), std::string(), renamed}) {
        WriteFile(file, bytes);
        CTestManager manager(Bundle());
        EXPECT_EQ(Open(manager), nullptr);
        EXPECT_EQ(manager.infoDialogOptions, 1U);
    }
}

TEST_F(InfoDialogPieces, EachMissingControlLeavesTheRestAtWork)
{
    const std::string file = Resource("en.lproj/InfoKnob.nib/objects.xib");
    const std::string sound = ReadFile(file);
    for (const char* signature : {"NAME", "VERS", "CPRT", "LOGO", "OPTS", "KNOB", "CLOS", "HELP"}) {
        const std::string changed =
            std::regex_replace(sound, std::regex(std::string(">") + signature + "</ostype>"), ">GONE</ostype>");
        ASSERT_NE(changed, sound) << signature;
        WriteFile(file, changed);
        g_ends = 0;
        CTestManager manager(Bundle());
        const WindowRef window = Open(manager);
        ASSERT_TRUE(window) << signature;
        PressKey(kReturnKey); // the buttons keep their commands
        EXPECT_EQ(g_ends, 1) << signature;
        EXPECT_EQ(manager.stored.empty(), std::string(signature) == "KNOB") << signature;
    }
}

TEST_F(InfoDialogPieces, MissingOrDamagedLogoLeavesAViewThatStillLinks)
{
    for (const bool damaged : {false, true}) {
        std::filesystem::remove(Resource("logo.pict"));
        if (damaged)
            WriteFile(Resource("logo.pict"), "no picture at all");
        CTestManager manager(Bundle());
        const WindowRef window = Open(manager);
        ASSERT_TRUE(window);
        const ControlRef logo = ControlOf(window, 'LOGO');
        EXPECT_EQ(HIImageViewCopyImage(logo), nullptr);
        MoveTo(window, MiddleOf(logo).h, MiddleOf(logo).v);
        MoveTo(window, 2, 2);
        EXPECT_FLOAT_EQ(static_cast<float>(HIImageViewGetAlpha(logo)), 0.7f);
        ClickOn(logo);
        EXPECT_EQ(manager.visits, 1);
        DisposeWindow(window);
    }
}

TEST_F(InfoDialog, CallsFromEightThreadsWhileDialogsOpenAndClose)
{
    CTestManager manager;
    std::atomic<bool> done{false};
    std::vector<std::thread> threads;
    for (unsigned index = 0; index < 8; ++index)
        threads.emplace_back([&manager, &done, index] {
            for (int round = 0; round < 20 || (!done && round < 2000); ++round) {
                manager.SetInfoDialogOptions(0x100U << index, round % 2 == 0);
                if (round % 10 == 0)
                    static_cast<IProductManager&>(manager).InfoDialog(nullptr, round % 20 == 0);
                std::this_thread::yield();
            }
        });
    for (int round = 0; round < 20; ++round)
        static_cast<void>(Open(manager));
    done = true;
    for (std::thread& thread : threads)
        thread.join();
    Pump();
    int closed = 0;
    while (WindowRef window = GetWindowList()) {
        DisposeWindow(window);
        ++closed;
    }
    EXPECT_GE(closed, 20);
    EXPECT_EQ(g_ends, closed);
}

} // namespace
