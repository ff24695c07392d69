// ui/InfoDialog.cpp
//
// The information dialog.
#include "frame/BaseProductManager.h"

void CBaseProductManager::InfoDialog(WindowRef, bool)
{
}

void CBaseProductManager::SetInfoDialogOptions(unsigned int mask, bool clear)
{
    const CCriticalScope scope(*this);
    infoDialogOptions = clear ? infoDialogOptions & ~mask : infoDialogOptions | mask;
}

WindowRef CBaseProductManager::CreateInfoDialog()
{
    return nullptr;
}

void CBaseProductManager::ShowInfoDialog(WindowRef, bool)
{
}

void CBaseProductManager::GoToSite()
{
}

void CBaseProductManager::InitLogoControl(ControlRef)
{
}

OSStatus CBaseProductManager::AttachLogoEvents(ControlRef, EventHandlerParams*)
{
    return paramErr;
}
