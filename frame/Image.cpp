// frame/Image.cpp
//
// Images out of the component's own bundle. The importer goes by a file's content, whatever its
// type says.
#include <QuickTime/QuickTime.h>

#include "frame/BaseProductManager.h"
#include "frame/Owned.h"

CGImageRef CBaseProductManager::LoadImageFromResourcesBundle(CFStringRef name, CFStringRef type)
{
    if (!bundle)
        return nullptr;
    const COwned<CFURLRef> url(CFBundleCopyResourceURL(bundle, name, type, nullptr));
    if (!url)
        return nullptr;
    // Each call is safe on what a failed one before it leaves, so that the last one decides.
    FSRef file = FSRef();
    FSSpec spec = FSSpec();
    ComponentInstance importer = nullptr;
    CGImageRef image = nullptr;
    (void)CFURLGetFSRef(url.Get(), &file);
    (void)FSGetCatalogInfo(&file, kFSCatInfoNone, nullptr, nullptr, &spec, nullptr);
    (void)GetGraphicsImporterForFile(&spec, &importer);
    (void)GraphicsImportCreateCGImage(importer, &image, kGraphicsImportCreateCGImageUsingCurrentSettings);
    return image; // the importer stays open, as ever: one for each file
}
