// platform/hitoolbox/windows/Control.h
//
// The record of a control: what it is, what it shows, where it hangs in its window's tree. What
// clicks and keys do to it is left to Behaviour, what it looks like to Look.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/corefoundation/String.h"
#include "platform/coregraphics/Image.h"
#include "platform/hitoolbox/events/Target.h"
#include "platform/hitoolbox/windows/WindowView.h"
#include <HIToolbox/HIView.h>

class CEditText;
class CWindow;

/// Watches the pointer over a control.
class CTrackingArea final : public CRecord {
public:
    static constexpr RecordKind kKind = RecordKind::TrackingArea;
    explicit CTrackingArea(HIViewTrackingAreaID areaId) noexcept : CRecord(kKind), id(areaId) {}

    const HIViewTrackingAreaID id;
    bool inside = false; // the pointer is, as far as the control was told
};

/// With the lock held, as everything here.
class CControl final : public CTarget {
public:
    static constexpr RecordKind kKind = RecordKind::Control;

    explicit CControl(ControlClass kind);
    ~CControl() override;

    CRef<CTarget> Outwards() override;
    ControlRef Ref() const noexcept { return RefOf<ControlRef>(*this); }

    /// Whether it and all around it are shown.
    bool IsShown() const noexcept;
    /// Whether it and all around it are enabled.
    bool IsUsable() const noexcept;
    /// Whether `other` is this control or holds it.
    bool IsIn(const CControl& other) const noexcept;
    bool IsEditText() const noexcept { return edit != nullptr; }
    void SetValue(SInt32 newValue) noexcept;
    /// Moves it and all in it.
    void MoveBy(int right, int down) noexcept;
    /// Has its window drawn anew.
    void Touch() noexcept;

    const ControlClass controlClass;
    ControlID id = {0, 0};
    UInt32 command = 0;
    Rect bounds = {}; // from the top left of the window's content
    CRef<const __CFString> title;
    CRef<const __CFString> text; // of a static text
    bool visible = true;
    bool enabled = true;
    SInt32 value = 0, minimum = 0, maximum = 0;
    ControlPartCode hilite = kControlNoPart;
    bool autoToggle = false;

    TextFont font = TextFont::System;
    Justification justification = Justification::ByScript;
    std::optional<RGBColor> textColor;

    CRef<CGImage> image;
    double alpha = 1;
    bool scaleToFit = false;
    bool opaque = true;
    AlertIcon icon = AlertIcon::None;
    std::vector<std::string> items;
    bool indeterminate = false;
    int tickMarks = 0;

    std::unique_ptr<CEditText> edit;
    std::vector<CRef<CTrackingArea>> areas;

    CWindow* window = nullptr;
    CControl* parent = nullptr;
    std::vector<CRef<CControl>> children; // back to front
};

/// Answers a control and all in it, each before what it holds, back to front.
std::vector<CControl*> Flatten(CControl& top);
/// Puts a control that hangs nowhere into another one, in front. Throws std::bad_alloc.
void Attach(CControl& control, CControl& parent);
/// Takes a control, with all in it, out of its parent and window.
/// @return the reference that the parent held.
CRef<CControl> Detach(CControl& control) noexcept;
/// Makes the references of a control and its handlers and areas stale.
void Retire(CControl& control) noexcept;
/// Makes a control, registered and hanging nowhere. Throws std::bad_alloc.
CRef<CControl> NewControl(ControlClass kind, const Rect& bounds);

/// What sets a class of controls apart.
struct ControlTraits {
    OSType kind;          ///< As GetControlKind answers it.
    ControlPartCode part; ///< What a click hits; 0 where it takes no clicks by itself.
    bool takesFocus;      ///< The Tab key stops there.
};
const ControlTraits& TraitsOf(ControlClass kind) noexcept;
