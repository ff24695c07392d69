// Carbon/Carbon.h
//
// Events, windows, controls, files and critical regions, with what ApplicationServices brings.
#ifndef CARBON_CARBON_H
#define CARBON_CARBON_H

#include <ApplicationServices/ApplicationServices.h>
#include <HIToolbox/HITypes.h>

#endif
