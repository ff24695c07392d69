// tests/ui/DialogToolkitMemoryTest.cpp
//
// Windows come and go with plug-ins for as long as a host runs. What thousands of them, of information
// dialogs and of visits to the web site leave behind is known to the byte: what the component keeps by
// design, and nothing else.
#include "tests/support/Owner.h"
#include "tests/ui/DialogMemory.h"

#if !CV_SANITIZED // the sanitizers count for themselves

namespace {

using Toolkit = CBaseProductManager;

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
    const CountedMemory before = MemoryInUse();
    for (int window = 0; window < kWindows; ++window) {
        const std::string text(static_cast<std::size_t>(window % 40), 'x');
        expected += kSetters * BytesOfString(text);
        ASSERT_NO_FATAL_FAILURE(UseWindow(nib, text));
    }
    const CountedMemory after = MemoryInUse();
    EXPECT_EQ(after.bytes - before.bytes, expected);
    EXPECT_EQ(after.blocks - before.blocks, long{kSetters} * kWindows);
    DisposeNibReference(nib);
}

TEST_F(InfoDialog, LeavesItsEightTextsAndTheEventOfItsEndAndNothingElse)
{
    CTestManager manager;
    CountedMemory texts = {0, 0};
    (void)LeftByDialogs(manager, 200, texts); // fills what is kept for reuse
    const CountedMemory left = LeftByDialogs(manager, 1000, texts);
    EXPECT_EQ(left.bytes, 0);
    EXPECT_EQ(left.blocks, 0);
    EXPECT_EQ(texts.blocks, 8);
    RecordProperty("BytesOfTexts", static_cast<int>(texts.bytes));
    const CountedMemory before = MemoryInUse();
    EventRef end = nullptr;
    ASSERT_EQ(CreateEvent(nullptr, 'cvev', 'iend', 0, kEventAttributeNone, &end), noErr);
    RecordProperty("BytesOfEvent", static_cast<int>(MemoryInUse().bytes - before.bytes));
    ReleaseEvent(end);
}

OSStatus LaunchNothing(CFURLRef, CFURLRef, void*)
{
    return noErr;
}

TEST(SiteVisit, LeavesItsAddressAndNothingElse)
{
    CVSetLaunchHandler(LaunchNothing, nullptr);
    CProductManager manager;
    IProductManager& product = manager;
    product.GoToSite();
    constexpr int kVisits = 1000;
    const CountedMemory before = MemoryInUse();
    for (int visit = 0; visit < kVisits; ++visit)
        product.GoToSite();
    const CountedMemory after = MemoryInUse();
    CVSetLaunchHandler(nullptr, nullptr);
    const long each = (after.bytes - before.bytes) / kVisits;
    const CFStringRef text = CFSTR("scheme:any"); // a constant, as the site's is
    const CountedMemory empty = MemoryInUse();
    const auto address = Own(CFURLCreateWithString(nullptr, text, nullptr));
    EXPECT_EQ(each, MemoryInUse().bytes - empty.bytes);
    EXPECT_EQ(after.blocks - before.blocks, kVisits);
    RecordProperty("BytesOfAddress", static_cast<int>(each));
}

} // namespace

#endif
