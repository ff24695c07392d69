// tests/ui/InfoDialogFixture.cpp
#include "tests/ui/InfoDialogFixture.h"

int g_ends = 0;

namespace {

OSStatus CountEnd(EventHandlerCallRef, EventRef, void*)
{
    ++g_ends;
    return eventNotHandledErr;
}

} // namespace

int CountWindows()
{
    int count = 0;
    for (WindowRef window = GetWindowList(); window; window = GetNextWindow(window))
        ++count;
    return count;
}

ControlRef ControlOf(WindowRef window, OSType signature, SInt32 id)
{
    return CBaseProductManager::GetControl(window, CBaseProductManager::MakeControlId(signature, id));
}

void InfoDialog::SetUp()
{
    static const EventTypeSpec kEnd = {'cvev', 'iend'};
    ASSERT_EQ(InstallApplicationEventHandler(CountEnd, 1, &kEnd, nullptr, &m_handler), noErr);
    g_ends = 0;
    m_before = CountWindows();
}

void InfoDialog::TearDown()
{
    EXPECT_EQ(CountWindows(), m_before) << "a window was left behind";
    (void)RemoveEventHandler(m_handler);
}

WindowRef InfoDialog::Open(CTestManager& manager, bool hideKnobOption, WindowRef parent)
{
    static_cast<IProductManager&>(manager).InfoDialog(parent, hideKnobOption);
    Pump();
    return __atomic_load_n(&manager.infoDialogWindow, __ATOMIC_ACQUIRE); // other threads may open dialogs too
}

WindowRef InfoDialog::Use(CTestManager& manager, bool hideKnobOption, WindowRef parent)
{
    const WindowRef window = Open(manager, hideKnobOption, parent);
    if (window)
        Hands::Await(window);
    return window;
}

WindowRef InfoDialog::UseAndClearTheBox(CTestManager& manager)
{
    manager.SetDragVertical(true);
    manager.stored.clear();
    const WindowRef window = Use(manager);
    if (!window)
        return nullptr;
    const ControlRef box = ControlOf(window, 'KNOB');
    EXPECT_EQ(GetControl32BitValue(box), 1);
    Hands::Click(box);
    EXPECT_TRUE(Hands::Until([box] { return GetControl32BitValue(box) == 0; }));
    return window;
}

WindowRef InfoDialog::MakeParent()
{
    const Rect bounds = {100, 100, 400, 500};
    WindowRef parent = nullptr;
    EXPECT_EQ(CreateNewWindow(kDocumentWindowClass, kWindowStandardHandlerAttribute, &bounds, &parent), noErr);
    CFStringRef title = CFSTR("Parent");
    (void)SetWindowTitleWithCFString(parent, title);
    ShowWindow(parent);
    Pump();
    return parent;
}

WindowModality InfoDialog::ModalityOf(WindowRef window, WindowRef& parent)
{
    WindowModality modality = 99;
    EXPECT_EQ(GetWindowModality(window, &modality, &parent), noErr);
    return modality;
}

bool InfoDialog::Ended(int times)
{
    const bool came = Hands::Until([times] { return g_ends >= times; });
    Hands::Settle();
    return came && g_ends == times;
}
