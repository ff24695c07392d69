// platform/hitoolbox/windows/Views.cpp
//
// The calls of HIView.h.
#include <algorithm>
#include <cmath>

#include "platform/hitoolbox/windows/Behaviour.h"
#include "platform/hitoolbox/windows/ControlCalls.h"

namespace {

template <typename Work>
OSStatus WithImageView(HIViewRef view, Work&& work)
{
    return WithControl<OSStatus>(view, controlHandleInvalidErr, [&](CControl& control) -> OSStatus {
        return control.controlClass == ControlClass::ImageView ? static_cast<OSStatus>(work(control))
                                                               : static_cast<OSStatus>(errDataNotSupported);
    });
}

// The place of a child among its siblings, from the front.
HIViewRef NextBehind(const CControl& control)
{
    if (!control.parent)
        return nullptr;
    const auto& siblings = control.parent->children;
    const auto place = std::find_if(siblings.begin(), siblings.end(),
                                    [&control](const CRef<CControl>& one) { return one.Get() == &control; });
    return place == siblings.begin() ? nullptr : (*(place - 1))->Ref();
}

bool Fits(CGFloat place) noexcept
{
    return place >= -32768 && place <= 32767; // false for what is no number, too
}

} // namespace

OSStatus HIImageViewCreate(CGImageRef inImage, HIViewRef* outView)
{
    if (outView)
        *outView = nullptr;
    if (!outView || (inImage && !IsOfType(inImage, TypeId::Image)))
        return paramErr;
    return Guarded<OSStatus>(memFullErr, [&] {
        const CToolboxLock lock;
        const CRef<CControl> view = NewControl(ControlClass::ImageView, Rect());
        view->image = CRef<CGImage>::Share(inImage);
        view->visible = false;
        *outView = view->Ref();
        return noErr;
    });
}

OSStatus HIImageViewSetImage(HIViewRef inView, CGImageRef inImage)
{
    return WithImageView(inView, [&](CControl& view) -> OSStatus {
        if (inImage && !IsOfType(inImage, TypeId::Image))
            return paramErr;
        view.image = CRef<CGImage>::Share(inImage);
        view.Touch();
        return noErr;
    });
}

CGImageRef HIImageViewCopyImage(HIViewRef inView)
{
    return WithControl<CGImageRef>(inView, nullptr, [](CControl& view) { return CRef<CGImage>(view.image).Detach(); });
}

OSStatus HIImageViewSetAlpha(HIViewRef inView, CGFloat inAlpha)
{
    return WithImageView(inView, [&](CControl& view) -> OSStatus {
        if (std::isnan(inAlpha))
            return paramErr;
        view.alpha = std::clamp<double>(inAlpha, 0, 1);
        view.Touch();
        return noErr;
    });
}

CGFloat HIImageViewGetAlpha(HIViewRef inView)
{
    CGFloat alpha = 0;
    (void)WithImageView(inView, [&alpha](CControl& view) { // what is no image view leaves 0
        alpha = static_cast<CGFloat>(view.alpha);
        return noErr;
    });
    return alpha;
}

OSStatus HIViewNewTrackingArea(HIViewRef inView, HIShapeRef inShape, HIViewTrackingAreaID inID,
                               HIViewTrackingAreaRef* outRef)
{
    if (outRef)
        *outRef = nullptr;
    if (inShape)
        return paramErr;
    return WithControl<OSStatus>(inView, controlHandleInvalidErr, [&](CControl& view) {
        const auto area = CRef<CTrackingArea>::Adopt(new CTrackingArea(inID));
        view.areas.reserve(view.areas.size() + 1);
        Handles().Register(*area);
        view.areas.push_back(area);
        if (outRef)
            *outRef = RefOf<HIViewTrackingAreaRef>(*area);
        return noErr;
    });
}

OSStatus HIViewGetTrackingAreaID(HIViewTrackingAreaRef inArea, HIViewTrackingAreaID* outID)
{
    const CToolboxLock lock;
    const CTrackingArea* const area = Find<CTrackingArea>(inArea);
    if (!area || !outID)
        return paramErr;
    *outID = area->id;
    return noErr;
}

OSStatus HIViewFindByID(HIViewRef inStartView, HIViewID inID, HIViewRef* outView)
{
    if (!outView)
        return paramErr;
    *outView = nullptr;
    return WithControl<OSStatus>(inStartView, controlHandleInvalidErr, [&](CControl& start) -> OSStatus {
        const bool none = inID.signature == 0 && inID.id == 0;
        for (const CControl* const view : none ? std::vector<CControl*>() : Flatten(start)) {
            if (view->id.signature == inID.signature && view->id.id == inID.id) {
                *outView = view->Ref();
                return noErr;
            }
        }
        return errUnknownControl;
    });
}

HIViewRef HIViewGetRoot(WindowRef inWindow)
{
    HIViewRef root = nullptr;
    (void)GetRootControl(inWindow, &root); // what is no window leaves null
    return root;
}

WindowRef HIViewGetWindow(HIViewRef inView)
{
    return GetControlOwner(inView);
}

HIViewRef HIViewGetSuperview(HIViewRef inView)
{
    return WithControl<HIViewRef>(inView, nullptr,
                                  [](CControl& view) { return view.parent ? view.parent->Ref() : nullptr; });
}

HIViewRef HIViewGetFirstSubview(HIViewRef inView)
{
    return WithControl<HIViewRef>(
        inView, nullptr, [](CControl& view) { return view.children.empty() ? nullptr : view.children.back()->Ref(); });
}

HIViewRef HIViewGetNextView(HIViewRef inView)
{
    return WithControl<HIViewRef>(inView, nullptr, [](CControl& view) { return NextBehind(view); });
}

OSStatus HIViewAddSubview(HIViewRef inParent, HIViewRef inNewChild)
{
    return Embed(inNewChild, inParent, true);
}

OSStatus HIViewSetVisible(HIViewRef inView, Boolean inVisible)
{
    return WithControl<OSStatus>(inView, controlHandleInvalidErr, [inVisible](CControl& view) {
        view.visible = inVisible != 0;
        view.Touch();
        return noErr;
    });
}

OSStatus HIViewSetFrame(HIViewRef inView, const HIRect* inRect)
{
    return WithControl<OSStatus>(inView, controlHandleInvalidErr, [inRect](CControl& view) -> OSStatus {
        if (!inRect || view.controlClass == ControlClass::Root)
            return paramErr;
        const CGFloat left = inRect->origin.x + (view.parent ? view.parent->bounds.left : 0);
        const CGFloat top = inRect->origin.y + (view.parent ? view.parent->bounds.top : 0);
        const CGFloat right = left + inRect->size.width;
        const CGFloat bottom = top + inRect->size.height;
        if (!Fits(left) || !Fits(top) || !Fits(right) || !Fits(bottom) || right < left || bottom < top)
            return paramErr;
        const auto rounded = [](CGFloat place) {
            return static_cast<short>(std::lround(place));
        };
        view.MoveBy(rounded(left) - view.bounds.left, rounded(top) - view.bounds.top);
        view.bounds.right = rounded(right);
        view.bounds.bottom = rounded(bottom);
        view.Touch();
        return noErr;
    });
}

OSStatus HIViewGetFrame(HIViewRef inView, HIRect* outRect)
{
    return WithControl<OSStatus>(inView, controlHandleInvalidErr, [outRect](CControl& view) -> OSStatus {
        if (!outRect)
            return paramErr;
        const Rect& bounds = view.bounds;
        outRect->origin.x = static_cast<CGFloat>(bounds.left - (view.parent ? view.parent->bounds.left : 0));
        outRect->origin.y = static_cast<CGFloat>(bounds.top - (view.parent ? view.parent->bounds.top : 0));
        outRect->size.width = static_cast<CGFloat>(bounds.right - bounds.left);
        outRect->size.height = static_cast<CGFloat>(bounds.bottom - bounds.top);
        return noErr;
    });
}

OSStatus HIViewSimulateClick(HIViewRef inView, HIViewPartCode inPartToClick, UInt32 inModifiers,
                             HIViewPartCode* outPartClicked)
{
    if (outPartClicked)
        *outPartClicked = kControlNoPart;
    return Guarded<OSStatus>(memFullErr, [&]() -> OSStatus {
        {
            const CToolboxLock lock;
            if (!Find<CControl>(inView))
                return controlHandleInvalidErr;
        }
        const ControlPartCode part = Click(inView, inPartToClick, inModifiers, Simulated::Yes);
        if (outPartClicked)
            *outPartClicked = part;
        return noErr;
    });
}

EventTargetRef HIObjectGetEventTarget(HIObjectRef inObject)
{
    return GetControlEventTarget(reinterpret_cast<ControlRef>(inObject));
}
