// tools/quillets/Picture.cpp
//
// `quillets picture`: what the image importer makes of a file.
#include <QuickTime/QuickTime.h>

#include <cstdio>
#include <memory>

#include "tools/quillets/Command.h"
#include <CVPlatform/CVPlatform.h>

namespace {

struct ReleaseImage {
    void operator()(CGImageRef image) const { CGImageRelease(image); }
};
using ImagePtr = std::unique_ptr<CGImage, ReleaseImage>;

ImagePtr Import(const std::string& path, std::string& problem)
{
    FSRef file = {};
    FSSpec spec = {};
    ComponentInstance importer = nullptr;
    CGImageRef image = nullptr;
    if (FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), &file, nullptr) != noErr ||
        FSGetCatalogInfo(&file, kFSCatInfoNone, nullptr, nullptr, &spec, nullptr) != noErr ||
        GetGraphicsImporterForFile(&spec, &importer) != noErr) {
        problem = path + ": there is no file that can be read";
        return nullptr;
    }
    if (GraphicsImportCreateCGImage(importer, &image, kGraphicsImportCreateCGImageUsingCurrentSettings) != noErr)
        problem = path + ": no picture, or a damaged or too large one";
    (void)CloseComponent(importer);
    return ImagePtr(image);
}

int Run(const Arguments& arguments)
{
    std::string file;
    std::string png;
    for (std::size_t at = 0; at < arguments.words.size(); ++at) {
        const std::string_view word = arguments.words[at];
        if (word == "--png") {
            if (++at == arguments.words.size() || arguments.words[at].empty())
                return UsageError("picture", "--png needs a path");
            png = arguments.words[at];
        } else if (word.substr(0, 2) == "--") {
            return UsageError("picture", "unknown option " + std::string(word));
        } else if (!file.empty()) {
            return UsageError("picture", "unexpected argument " + std::string(word));
        } else {
            file = word;
        }
    }
    if (file.empty())
        return UsageError("picture", "which file?");

    std::string problem;
    const ImagePtr image = Import(file, problem);
    if (!image)
        return Failure(problem);
    if (!png.empty() && !CVWriteImageAsPNG(image.get(), png.c_str()))
        return Failure(png + ": cannot be written");
    std::printf("%zu x %zu pixels, %zu bits, %s\n", CGImageGetWidth(image.get()), CGImageGetHeight(image.get()),
                CGImageGetBitsPerPixel(image.get()),
                CGImageGetAlphaInfo(image.get()) == kCGImageAlphaPremultipliedFirst ? "with alpha" : "opaque");
    return kExitOk;
}

} // namespace

const Command kPictureCommand = {"picture", "show what the image importer makes of a picture file",
                                 "Usage: quillets picture FILE [--png OUT.png]\n"
                                 "\n"
                                 "Imports a picture as the component imports its logo, by the file's content, and\n"
                                 "prints the image's size, its depth and whether it has alpha.\n"
                                 "\n"
                                 "  --png OUT.png  write the image there\n"
                                 "\n"
                                 "Exit status: 0 imported, 1 no picture or a damaged one, 2 wrong arguments.\n",
                                 Run};
