// tests/frame/RecordLayouts.cpp
//
// What compiled plug-ins and hosts rely on: sizes and places in the records that cross a border, as
// they are at the component's 32-bit home. On 64 bits only what holds there too is looked at.
#include <Carbon/Carbon.h>
#include <stddef.h>

#include "frame/BaseProductManager.h"

namespace {

const bool kIs32 = sizeof(void*) == 4;

template <typename A, typename B>
struct Same {
    enum { value = 0 };
};
template <typename A>
struct Same<A, A> {
    enum { value = 1 };
};

// A size that is the same everywhere, and one of the 32-bit home.
#define CV_SIZE(type, bytes) static_assert(sizeof(type) == (bytes), #type)
#define CV_SIZE_32(type, bytes) static_assert(!kIs32 || sizeof(type) == (bytes), #type)
#define CV_PLACE(type, member, bytes) static_assert(offsetof(type, member) == (bytes), #type "." #member)
#define CV_PLACE_32(type, member, bytes) static_assert(!kIs32 || offsetof(type, member) == (bytes), #type "." #member)

CV_SIZE(bool, 1);
CV_SIZE(Boolean, 1);
CV_SIZE(UniChar, 2);
CV_SIZE(OSErr, 2);
CV_SIZE(OSStatus, 4);
CV_SIZE(UInt32, 4);
CV_SIZE(UInt64, 8);
CV_SIZE(EventTime, 8);
CV_SIZE_32(CFIndex, 4);
CV_SIZE_32(Size, 4);
CV_SIZE_32(CGFloat, 4);
CV_SIZE_32(CFStringRef, 4);
CV_SIZE_32(WindowRef, 4);
CV_SIZE_32(EventHandlerUPP, 4);
static_assert(Same<UInt32, unsigned long>::value == kIs32, "as out-parameters are typed");
static_assert(Same<SInt32, long>::value == kIs32, "as out-parameters are typed");

CV_SIZE(Point, 4);
CV_SIZE(Rect, 8);
CV_PLACE(Rect, right, 6);
CV_SIZE_32(CFRange, 8);
CV_SIZE_32(CGPoint, 8);
CV_SIZE_32(CGSize, 8);
CV_SIZE_32(CGRect, 16);
CV_SIZE(ProcessSerialNumber, 8);

CV_SIZE(EventTypeSpec, 8);
CV_PLACE(EventTypeSpec, eventKind, 4);
CV_SIZE_32(HICommand, 14);
CV_PLACE(HICommand, commandID, 4);
CV_PLACE(HICommand, menu.menuRef, 8);
CV_PLACE_32(HICommand, menu.menuItemIndex, 12);
CV_SIZE_32(HICommandExtended, 14);
CV_PLACE(HICommandExtended, source, 8);

CV_SIZE(ControlID, 8);
CV_PLACE(ControlID, id, 4);
static_assert(!kIs32 || alignof(ControlID) == 2, "records of Carbon are packed to two bytes");
CV_SIZE(ControlKind, 8);
CV_SIZE(ControlFontStyleRec, 24);
CV_PLACE(ControlFontStyleRec, foreColor, 12);
CV_PLACE(ControlFontStyleRec, backColor, 18);

CV_SIZE_32(AlertStdCFStringAlertParamRec, 32);
CV_PLACE_32(AlertStdCFStringAlertParamRec, defaultText, 6);
CV_PLACE_32(AlertStdCFStringAlertParamRec, otherText, 14);
CV_PLACE_32(AlertStdCFStringAlertParamRec, defaultButton, 18);
CV_PLACE_32(AlertStdCFStringAlertParamRec, flags, 24);
CV_PLACE_32(AlertStdCFStringAlertParamRec, icon, 28);

CV_SIZE(FSRef, 80);
CV_SIZE(FSSpec, 70);
CV_PLACE(FSSpec, parID, 2);
CV_PLACE(FSSpec, name, 6);
CV_SIZE(HFSUniStr255, 512);
CV_SIZE_32(LSApplicationParameters, 28);
CV_PLACE_32(LSApplicationParameters, initialEvent, 24);

CV_SIZE_32(EventHandlerParams, 20);
CV_PLACE_32(EventHandlerParams, window, 4);
CV_PLACE_32(EventHandlerParams, control, 8);
CV_PLACE_32(EventHandlerParams, timer, 12);
CV_PLACE_32(EventHandlerParams, flag, 16);
CV_SIZE_32(CVProductVersion, 16);
CV_PLACE(CVProductVersion, notice, kIs32 ? 12 : 16);
CV_SIZE(corvane::GUID, 16);
CV_SIZE(HRESULT, 4);
CV_SIZE_32(corvane::IUnknown, 4);
static_assert(E_FAIL < 0, "a failure in the COM style");

} // namespace
