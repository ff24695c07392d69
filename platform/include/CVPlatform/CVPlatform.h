// CVPlatform/CVPlatform.h
//
// What a host or a tool on Linux needs of the layer and the Mac's API has no word for.
#ifndef CVPLATFORM_CVPLATFORM_H
#define CVPLATFORM_CVPLATFORM_H

#include <CVPlatform/CVLink.h>

CV_BEGIN_DECLS

/// Answers the layer's version as text, for example "1.3.0"; never freed.
const char* CVGetVersion(void) CV_LINK(CVGetVersion);
/// Answers the absolute path of the layer's own file, never freed; null where it is unknown.
const char* CVGetLibraryPath(void) CV_LINK(CVGetLibraryPath);

CV_END_DECLS

#endif
