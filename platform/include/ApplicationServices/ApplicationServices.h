// ApplicationServices/ApplicationServices.h
//
// Core Foundation, files, critical regions, images and Launch Services.
#ifndef APPLICATIONSERVICES_APPLICATIONSERVICES_H
#define APPLICATIONSERVICES_APPLICATIONSERVICES_H

#include <CarbonCore/Files.h>
#include <CarbonCore/MacTypes.h>
#include <CarbonCore/Multiprocessing.h>
#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CGGeometry.h>
#include <CoreGraphics/CGImage.h>
#include <LaunchServices/LaunchServices.h>

#endif
