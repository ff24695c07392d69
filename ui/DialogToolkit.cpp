// ui/DialogToolkit.cpp
//
// The utilities through which every window of the component is filled and wired.
#include "frame/BaseProductManager.h"

OSStatus CBaseProductManager::AttachDialogEvents(WindowRef, EventHandlerProcPtr, EventHandlerParams*)
{
    return paramErr;
}
