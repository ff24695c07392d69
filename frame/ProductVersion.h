// frame/ProductVersion.h
//
// The product's version record.
#ifndef FRAME_PRODUCTVERSION_H
#define FRAME_PRODUCTVERSION_H

#include <stdint.h>

extern "C" {

/// The version of the product.
struct CVProductVersion {
    int32_t major;
    int32_t minor;
    int32_t build;      ///< yymmdd of the day on which the component was compiled.
    const char* notice; ///< Copyright line, UTF-8.
};

/// The one record; complete before any plug-in can see it, and only read from then on.
__attribute__((visibility("default"))) extern CVProductVersion g_VersionInf;

/// Answers the build number of the component's compile date, yymmdd.
__attribute__((visibility("default"))) uint32_t g_CVGetCurrentBuildNumber();

} // extern "C"

#endif
