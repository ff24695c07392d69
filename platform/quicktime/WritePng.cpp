// platform/quicktime/WritePng.cpp
//
// Images into PNG files, for tools and for tests.
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/base/Guard.h"
#include "platform/coregraphics/Image.h"
#include "platform/quicktime/ImageModule.h"
#include <CVPlatform/CVPlatform.h>

namespace {

bool WriteAll(FILE* file, const std::string& bytes)
{
    if (!file)
        return false;
    const bool isWritten = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    return std::fclose(file) == 0 && isWritten;
}

// Nobody ever reads half a picture: a sibling is written and takes the file's place.
bool ReplaceFile(const std::string& path, const std::string& bytes)
{
    std::string sibling = path + ".XXXXXX";
    const int descriptor = mkstemp(sibling.data());
    if (descriptor < 0)
        return false;
    const mode_t mask = umask(0);
    umask(mask);
    const bool isReadable = fchmod(descriptor, 0666 & ~mask) == 0;
    const bool isWritten = WriteAll(fdopen(descriptor, "wb"), bytes) && isReadable;
    if (isWritten && std::rename(sibling.c_str(), path.c_str()) == 0)
        return true;
    unlink(sibling.c_str());
    return false;
}

bool WriteFile(const std::string& path, const std::string& bytes)
{
    struct stat status = {};
    const bool isDevice = stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
    return isDevice ? WriteAll(std::fopen(path.c_str(), "wb"), bytes) : ReplaceFile(path, bytes);
}

} // namespace

Boolean CVWriteImageAsPNG(CGImageRef image, const char* path)
{
    if (!IsOfType(image, TypeId::Image) || !path)
        return false;
    return Guarded<Boolean>(false, [&]() -> Boolean {
        const ImageModuleCalls* const module = LoadImageModule();
        const bool hasAlpha = CGImageGetAlphaInfo(image) == kCGImageAlphaPremultipliedFirst;
        std::string bytes;
        return module &&
               module->encodePng(image->Pixels(), static_cast<int>(image->Width()), static_cast<int>(image->Height()),
                                 hasAlpha, bytes) &&
               WriteFile(path, bytes);
    });
}
