// tests/ui/DialogMemory.cpp
#include "tests/ui/DialogMemory.h"

#include "tests/support/Owner.h"

namespace {

CountedMemory operator-(const CountedMemory& left, const CountedMemory& right)
{
    return {left.bytes - right.bytes, left.blocks - right.blocks};
}

CountedMemory operator+(const CountedMemory& left, const CountedMemory& right)
{
    return {left.bytes + right.bytes, left.blocks + right.blocks};
}

CountedMemory MemoryOf(const std::string& text)
{
    const CountedMemory before = MemoryInUse();
    const auto string = Own(CFStringCreateWithCString(nullptr, text.c_str(), kCFStringEncodingUTF8));
    return MemoryInUse() - before;
}

// Of the texts that the dialog has given its controls.
CountedMemory MemoryOfTexts(WindowRef window)
{
    CountedMemory all = {0, 0};
    for (const OSType name : {'NAME', 'VERS', 'CPRT', 'OPTS'}) {
        CFStringRef text = nullptr;
        EXPECT_EQ(GetControlData(ControlOf(window, name), kControlEntireControl, kControlStaticTextCFStringTag,
                                 sizeof text, &text, nullptr),
                  noErr);
        all = all + MemoryOf(TextOf(Own(text).get()));
    }
    static constexpr ControlID kTitled[] = {{'KNOB', 0}, {'CLOS', 0}, {'CLOS', 1}, {'HELP', 0}};
    for (const ControlID& control : kTitled) {
        CFStringRef title = nullptr;
        EXPECT_EQ(CopyControlTitleAsCFString(ControlOf(window, control.signature, control.id), &title), noErr);
        all = all + MemoryOf(TextOf(Own(title).get()));
    }
    return all;
}

OSStatus GiveBack(EventHandlerCallRef, EventRef end)
{
    EXPECT_EQ(GetEventRetainCount(end), 1U);
    ReleaseEvent(end); // the sender keeps none, and the event lives until it has gone round
    return eventNotHandledErr;
}

} // namespace

long BytesOfString(const std::string& text)
{
    return MemoryOf(text).bytes;
}

CountedMemory LeftByDialogs(CTestManager& manager, int dialogs, CountedMemory& ofTexts)
{
    const CListener listener(GetApplicationEventTarget(), {{'cvev', 'iend'}}, GiveBack);
    CountedMemory expected = {0, 0};
    const CountedMemory before = MemoryInUse();
    for (int dialog = 0; dialog < dialogs; ++dialog) {
        manager.SetInfoDialogOptions(1, false);
        static_cast<IProductManager&>(manager).InfoDialog(nullptr, false);
        const WindowRef window = manager.infoDialogWindow;
        Pump();
        ofTexts = MemoryOfTexts(window);
        expected = expected + ofTexts;
        DisposeWindow(window);
        Pump();
    }
    return MemoryInUse() - before - expected;
}
