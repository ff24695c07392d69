// tests/ui/DialogToolkitMemoryTest.cpp
//
// Windows come and go with plug-ins for as long as a host runs. What thousands of them, of information
// dialogs and of visits to the web site leave behind is known to the byte: what the component keeps by
// design, and nothing else.
#include <algorithm>
#include <cstddef>

#include "frame/BaseProductManager.h"
#include "tests/support/CountedMemory.h"
#include "tests/support/Owner.h"
#include "tests/ui/InfoDialogFixture.h"

#if !CV_SANITIZED // the sanitizers count for themselves

namespace {

using Toolkit = CBaseProductManager;

long BytesOfString(const std::string& text)
{
    const long before = MemoryInUse().bytes;
    const auto string = Own(CFStringCreateWithCString(nullptr, text.c_str(), kCFStringEncodingUTF8));
    return MemoryInUse().bytes - before;
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

// What the dialog has set with the toolkit's setters, and would be held of it.
long BytesOfTexts(WindowRef window)
{
    long bytes = 0;
    for (const OSType text : {'NAME', 'VERS', 'CPRT', 'OPTS'}) {
        CFStringRef string = nullptr;
        EXPECT_EQ(GetControlData(ControlOf(window, text), kControlEntireControl, kControlStaticTextCFStringTag,
                                 sizeof string, &string, nullptr),
                  noErr);
        bytes += BytesOfString(TextOf(Own(string).get()));
    }
    static constexpr ControlID kTitles[] = {{'KNOB', 0}, {'CLOS', 0}, {'CLOS', 1}, {'HELP', 0}};
    for (const ControlID& title : kTitles) {
        CFStringRef string = nullptr;
        EXPECT_EQ(CopyControlTitleAsCFString(Toolkit::GetControl(window, title), &string), noErr);
        bytes += BytesOfString(TextOf(Own(string).get()));
    }
    return bytes;
}

TEST_F(InfoDialog, LeavesItsEightTextsAndTheEventOfItsEndAndNothingElse)
{
    CTestManager manager;
    // Whoever is told of the end holds the reference that is left; this host gives it back.
    std::vector<EventRef> ends;
    ends.reserve(1);
    const CListener listener(GetApplicationEventTarget(), {{'cvev', 'iend'}}, [&](EventHandlerCallRef, EventRef end) {
        ends.push_back(end);
        return OSStatus(eventNotHandledErr);
    });
    const auto openAndClose = [&] {
        const WindowRef window = Open(manager);
        const long bytes = window ? BytesOfTexts(window) : 0;
        DisposeWindow(window);
        Pump();
        EXPECT_EQ(ends.size(), 1U);
        for (const EventRef end : ends) {
            EXPECT_EQ(GetEventRetainCount(end), 1U);
            ReleaseEvent(end);
        }
        ends.clear();
        return bytes;
    };
    for (int dialog = 0; dialog < 200; ++dialog) // fills what is kept for reuse
        (void)openAndClose();

    constexpr int kTexts = 8;
    constexpr int kDialogs = 1000;
    long expected = 0;
    const CountedMemory before = MemoryInUse();
    for (int dialog = 0; dialog < kDialogs; ++dialog)
        expected += openAndClose();
    const CountedMemory after = MemoryInUse();
    EXPECT_EQ(after.bytes - before.bytes, expected);
    EXPECT_EQ(after.blocks - before.blocks, long{kTexts} * kDialogs);
    RecordProperty("BytesOfTexts", static_cast<int>(expected / kDialogs));
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
