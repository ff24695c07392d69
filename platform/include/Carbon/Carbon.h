// Carbon/Carbon.h
//
// Events, windows, controls, files and critical regions, with what ApplicationServices brings.
#ifndef CARBON_CARBON_H
#define CARBON_CARBON_H

#include <ApplicationServices/ApplicationServices.h>
#include <HIToolbox/CarbonEvents.h>
#include <HIToolbox/Controls.h>
#include <HIToolbox/Dialogs.h>
#include <HIToolbox/HITypes.h>
#include <HIToolbox/HIView.h>
#include <HIToolbox/IBCarbonRuntime.h>
#include <HIToolbox/MacWindows.h>

#endif
