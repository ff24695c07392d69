// platform/hitoolbox/windows/ControlCalls.h
//
// What the calls on controls and those on views share.
#pragma once

#include "platform/base/Guard.h"
#include "platform/hitoolbox/windows/Window.h"

/// Runs `work` on a control with the lock held; `failure` for what is none or when memory runs out.
template <typename Result, typename Work>
Result WithControl(ControlRef reference, Result failure, Work&& work)
{
    return Guarded<Result>(failure, [&]() -> Result {
        const CToolboxLock lock;
        CControl* const control = Find<CControl>(reference);
        return control ? static_cast<Result>(work(*control)) : failure;
    });
}

/// Sets a control's identifier and its place in the index. With the lock held.
void SetIdentifier(CControl& control, const ControlID& id);

/// Puts a control into another one, in front; where it `moves`, its place counts from the new
/// parent as it did from the old one. Takes the lock.
OSStatus Embed(ControlRef control, ControlRef container, bool moves);
