// ui/HelpViewer.cpp
//
// Opens the help page of a topic in the user's viewer.
#include "frame/BaseProductManager.h"

void CBaseProductManager::OpenHelp(WindowRef, unsigned int)
{
}
