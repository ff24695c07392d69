// platform/quicktime/Importer.cpp
//
// Chooses the reader by the content: QuickDraw pictures are read here, everything else by the image
// module, which is not loaded for the former.
#include "platform/quicktime/Importer.h"

#include <cstring>

#include "platform/quicktime/ImageModule.h"
#include "platform/quicktime/Pict.h"

namespace {

std::optional<Raster> DecodeByModule(Bytes file, std::uint64_t mostPixels)
{
    const ImageModuleCalls* const module = LoadImageModule();
    Raster pixels;
    return module && module->decode(file, mostPixels, pixels) ? std::optional<Raster>(std::move(pixels)) : std::nullopt;
}

// Formats whose first bytes are certain; what else these files hold may look like a picture.
bool HasOtherSignature(Bytes file)
{
    constexpr struct {
        const char* bytes;
        std::size_t size;
    } kSignatures[] = {{"\x89PNG\r\n\x1A\n", 8},
                       {"\xFF\xD8\xFF", 3},
                       {"GIF8", 4},
                       {"BM", 2},
                       {"II*\0", 4},
                       {"MM\0*", 4},
                       {"RIFF", 4},
                       {"icns", 4}};
    for (const auto& signature : kSignatures) {
        if (file.size >= signature.size && std::memcmp(file.data, signature.bytes, signature.size) == 0)
            return true;
    }
    return false;
}

} // namespace

std::optional<Raster> ImportPicture(Bytes file)
{
    const PictSignature signature = FindPictSignature(file);
    const bool isPicture =
        signature == PictSignature::Strong || (signature == PictSignature::Weak && !HasOtherSignature(file));
    return isPicture ? DecodePict(file, DecodeByModule) : DecodeByModule(file, kMaxPixels);
}
