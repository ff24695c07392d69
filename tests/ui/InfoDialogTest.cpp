// tests/ui/InfoDialogTest.cpp
//
// The information dialog on the headless desktop, used by mouse and keyboard. The object under test
// is one of our own, linked in, with its help, web site and settings recorded; its bundle is the
// built one or a copy with something missing.
#include <gtest/gtest.h>

#include <atomic>
#include <regex>
#include <thread>

#include "frame/ProductManager.h"
#include "tests/support/Toolbox.h"

namespace {

constexpr OSType kEventClassComponent = 'cvev';

class CTestManager : public CProductManager {
public:
    using CBaseProductManager::bundle;
    using CBaseProductManager::infoDialogOptions;
    using CBaseProductManager::infoDialogWindow;

    explicit CTestManager(const std::string& bundlePath = BuiltBundle())
    {
        bundle = OpenBundle(bundlePath.c_str());
        SetProductName("A Product");
    }
    ~CTestManager() override
    {
        if (bundle)
            CFRelease(bundle);
        bundle = nullptr;
    }

    void OpenHelp(WindowRef parent, unsigned int topic) override
    {
        helpWindow = parent;
        helpTopics.push_back(topic);
    }
    void GoToSite() override { ++visits; }
    bool SetRegistryKey(const char* section, const char* key, const char* value) override
    {
        stored.push_back(std::string(section) + "/" + key + "=" + value);
        return true;
    }
    const char* TranslateCommon(EffectLangItemType type, const char* key, const char* text) override
    {
        if (onTranslate)
            onTranslate();
        return CProductManager::TranslateCommon(type, key, text);
    }

    WindowRef helpWindow = nullptr;
    std::vector<unsigned> helpTopics;
    int visits = 0;
    std::vector<std::string> stored;
    std::function<void()> onTranslate;
};

int g_ends = 0;

OSStatus CountEnd(EventHandlerCallRef, EventRef, void*)
{
    ++g_ends;
    return eventNotHandledErr;
}

int CountWindows()
{
    int count = 0;
    for (WindowRef window = GetWindowList(); window; window = GetNextWindow(window))
        ++count;
    return count;
}

ControlRef ControlOf(WindowRef window, OSType signature, SInt32 id = 0)
{
    return CBaseProductManager::GetControl(window, CBaseProductManager::MakeControlId(signature, id));
}

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

class InfoDialog : public testing::Test {
protected:
    static void SetUpTestSuite() { UseHeadlessDesktop(); }
    void SetUp() override
    {
        static const EventTypeSpec kEnd = {kEventClassComponent, 'iend'};
        ASSERT_EQ(InstallApplicationEventHandler(CountEnd, 1, &kEnd, nullptr, &m_handler), noErr);
        g_ends = 0;
        m_before = CountWindows();
    }
    void TearDown() override
    {
        EXPECT_EQ(CountWindows(), m_before) << "a window was left behind";
        (void)RemoveEventHandler(m_handler);
    }

    // Opens the dialog and answers its window.
    static WindowRef Open(CTestManager& manager, bool hideKnobOption = false, WindowRef parent = nullptr)
    {
        static_cast<IProductManager&>(manager).InfoDialog(parent, hideKnobOption);
        Pump();
        return manager.infoDialogWindow;
    }
    static WindowRef MakeParent()
    {
        const Rect bounds = {100, 100, 400, 500};
        WindowRef parent = nullptr;
        EXPECT_EQ(CreateNewWindow(kDocumentWindowClass, kWindowStandardHandlerAttribute, &bounds, &parent), noErr);
        ShowWindow(parent);
        Pump();
        return parent;
    }
    static WindowModality ModalityOf(WindowRef window, WindowRef& parent)
    {
        WindowModality modality = 99;
        EXPECT_EQ(GetWindowModality(window, &modality, &parent), noErr);
        return modality;
    }

    int m_before = 0;
    EventHandlerRef m_handler = nullptr;
};

TEST_F(InfoDialog, HidingTheOptionOpensThePlainWindowModelessAndClearsTheBit)
{
    CTestManager manager;
    const WindowRef window = Open(manager, true);
    ASSERT_TRUE(window);
    WindowRef parent = nullptr;
    EXPECT_EQ(ModalityOf(window, parent), static_cast<WindowModality>(kWindowModalityNone));
    EXPECT_FALSE(ControlOf(window, 'KNOB'));
    EXPECT_TRUE(IsWindowVisible(window));
    EXPECT_TRUE(IsWindowActive(window));
    EXPECT_EQ(manager.infoDialogOptions & 1U, 0U);
    DisposeWindow(window);
}

TEST_F(InfoDialog, WithAParentTheKnobWindowIsModalToItAndSetsTheBit)
{
    CTestManager manager;
    const WindowRef parent = MakeParent();
    const WindowRef window = Open(manager, false, parent);
    ASSERT_TRUE(window);
    WindowRef unavailable = nullptr;
    EXPECT_EQ(ModalityOf(window, unavailable), static_cast<WindowModality>(kWindowModalityWindowModal));
    EXPECT_EQ(unavailable, parent);
    EXPECT_TRUE(ControlOf(window, 'KNOB'));
    EXPECT_EQ(manager.infoDialogOptions & 1U, 1U);
    DisposeWindow(window);
    DisposeWindow(parent);
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

TEST_F(InfoDialog, CancelDropsAChangeOfTheBox)
{
    CTestManager manager;
    manager.SetDragVertical(true);
    manager.stored.clear();
    const WindowRef window = Open(manager);
    ASSERT_TRUE(window);
    EXPECT_EQ(GetControl32BitValue(ControlOf(window, 'KNOB')), 1);
    ClickOn(ControlOf(window, 'KNOB'));
    EXPECT_EQ(GetControl32BitValue(ControlOf(window, 'KNOB')), 0);
    ClickOn(ControlOf(window, 'CLOS', 1));
    EXPECT_FALSE(IsValidWindowPtr(window));
    EXPECT_TRUE(manager.KnobsDragVertical());
    EXPECT_TRUE(manager.stored.empty());
    EXPECT_EQ(g_ends, 1);
    EXPECT_EQ(manager.infoDialogWindow, nullptr);
}

TEST_F(InfoDialog, OkStoresAChangeOfTheBox)
{
    CTestManager manager;
    manager.SetDragVertical(true);
    manager.stored.clear();
    const WindowRef window = Open(manager);
    ASSERT_TRUE(window);
    ClickOn(ControlOf(window, 'KNOB'));
    ClickOn(ControlOf(window, 'CLOS', 0));
    EXPECT_FALSE(manager.KnobsDragVertical());
    EXPECT_EQ(manager.stored, std::vector<std::string>{"Common/Knobs Drag Vertical=no"});
    EXPECT_EQ(g_ends, 1);
    EXPECT_EQ(manager.infoDialogWindow, nullptr);
}

TEST_F(InfoDialog, OkWithoutTheBoxStoresNothing)
{
    CTestManager manager;
    ASSERT_TRUE(Open(manager, true));
    PressKey(kReturnKey);
    EXPECT_TRUE(manager.stored.empty());
    EXPECT_EQ(g_ends, 1);
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

TEST_F(InfoDialog, HelpOpensTopic300AndTheDialogStays)
{
    CTestManager manager;
    const WindowRef window = Open(manager);
    ASSERT_TRUE(window);
    ClickOn(ControlOf(window, 'HELP'));
    EXPECT_EQ(manager.helpTopics, std::vector<unsigned>{300});
    EXPECT_EQ(manager.helpWindow, window);
    EXPECT_TRUE(IsWindowVisible(window));
    EXPECT_EQ(g_ends, 0);
    ClickOn(ControlOf(window, 'CLOS', 0));
    EXPECT_EQ(g_ends, 1);
}

TEST_F(InfoDialog, ReturnIsOkAndEscapeIsCancel)
{
    CTestManager manager;
    ASSERT_TRUE(Open(manager));
    PressKey(kReturnKey);
    EXPECT_EQ(manager.stored.size(), 1U);
    ASSERT_TRUE(Open(manager));
    PressKey(kEscapeKey);
    EXPECT_EQ(manager.stored.size(), 1U);
    EXPECT_EQ(g_ends, 2);
    EXPECT_EQ(manager.infoDialogWindow, nullptr);
}

TEST_F(InfoDialog, OtherWaysOfClosingSendOneEndAndLeaveTheFieldAlone)
{
    CTestManager manager;
    const WindowRef parent = MakeParent();
    const std::pair<const char*, std::function<void(WindowRef)>> ways[] = {
        {"close box",
         [](WindowRef window) {
             (void)CVPostCloseRequest(window);
         }},
        {"host",
         [](WindowRef window) {
             DisposeWindow(window);
         }},
        {"surface lost",
         [](WindowRef window) {
             (void)CVPostSurfaceLost(window);
         }},
        {"parent",
         [parent](WindowRef) {
             DisposeWindow(parent);
         }},
    };
    for (const auto& [name, close] : ways) {
        g_ends = 0;
        const WindowRef window = Open(manager, false, parent);
        ASSERT_TRUE(window) << name;
        close(window);
        Pump();
        EXPECT_FALSE(IsValidWindowPtr(window)) << name;
        EXPECT_EQ(g_ends, 1) << name;
        EXPECT_EQ(manager.infoDialogWindow, window) << name;
        EXPECT_TRUE(manager.stored.empty()) << name;
    }
}

TEST_F(InfoDialog, TwoCallsOpenTwoDialogsThatEndByThemselves)
{
    CTestManager manager;
    const WindowRef first = Open(manager);
    const WindowRef second = Open(manager, true);
    ASSERT_TRUE(first);
    ASSERT_TRUE(second);
    EXPECT_NE(first, second);
    EXPECT_EQ(manager.infoDialogWindow, second);
    SelectWindow(first);
    Pump();
    ClickOn(ControlOf(first, 'CLOS', 1));
    EXPECT_EQ(g_ends, 1);
    EXPECT_FALSE(IsValidWindowPtr(first));
    EXPECT_TRUE(IsValidWindowPtr(second));
    SelectWindow(second);
    Pump();
    ClickOn(ControlOf(second, 'CLOS', 0));
    EXPECT_EQ(g_ends, 2);
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

TEST_F(InfoDialog, PointerBrightensAndDimsTheLogo)
{
    CTestManager manager;
    const WindowRef window = Open(manager);
    ASSERT_TRUE(window);
    const ControlRef logo = ControlOf(window, 'LOGO');
    const CGImageRef image = HIImageViewCopyImage(logo);
    EXPECT_TRUE(image);
    CGImageRelease(image);
    EXPECT_FLOAT_EQ(static_cast<float>(HIImageViewGetAlpha(logo)), 1.0f);
    const Point middle = MiddleOf(logo);
    MoveTo(window, middle.h, middle.v);
    EXPECT_FLOAT_EQ(static_cast<float>(HIImageViewGetAlpha(logo)), 1.0f);
    MoveTo(window, 2, 2);
    EXPECT_FLOAT_EQ(static_cast<float>(HIImageViewGetAlpha(logo)), 0.7f);
    MoveTo(window, middle.h, middle.v);
    EXPECT_FLOAT_EQ(static_cast<float>(HIImageViewGetAlpha(logo)), 1.0f);
    DisposeWindow(window);
}

TEST_F(InfoDialog, ClickOnTheLogoOpensTheSiteAndTheDialogStays)
{
    CTestManager manager;
    const WindowRef window = Open(manager);
    ASSERT_TRUE(window);
    ClickOn(ControlOf(window, 'LOGO'));
    EXPECT_EQ(manager.visits, 1);
    EXPECT_TRUE(IsWindowVisible(window));
    EXPECT_EQ(g_ends, 0);
    DisposeWindow(window);
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

// The object of the bundle itself, as plug-ins have it.
TEST_F(InfoDialog, UnloadingTheBundleEndsAnOpenDialog)
{
    if (CV_SANITIZED)
        GTEST_SKIP() << "the references left behind on purpose have no name once the code is gone";
    {
        const CLoadedBundle loaded;
        ASSERT_TRUE(loaded);
        loaded.Manager()->InfoDialog(nullptr, false);
        Pump();
        EXPECT_EQ(CountWindows(), m_before + 1);
    }
    Pump();
    EXPECT_EQ(g_ends, 1);
}

TEST_F(InfoDialog, BuiltBundleStoresTheOptionForEveryPlugIn)
{
    // Stays loaded: the references left behind on purpose have no name once the code is gone.
    static const CLoadedBundle& loaded = *new CLoadedBundle;
    ASSERT_TRUE(loaded);
    IProductManager& manager = *loaded.Manager();
    manager.SetDragVertical(false);
    manager.InfoDialog(nullptr, false);
    Pump();
    const WindowRef window = FrontNonFloatingWindow();
    ASSERT_TRUE(window);
    ClickOn(ControlOf(window, 'KNOB'));
    ClickOn(ControlOf(window, 'CLOS', 0));
    EXPECT_TRUE(manager.KnobsDragVertical());
    char value[8] = "";
    EXPECT_TRUE(manager.GetRegistryKey("Common", "Knobs Drag Vertical", value, sizeof value));
    EXPECT_STREQ(value, "yes");
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
