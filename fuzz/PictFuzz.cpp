// fuzz/PictFuzz.cpp
//
// QuickDraw pictures of any bytes. Images inside are one pixel, so that the time goes into ours. The
// same bytes as a file of another format: whether they are all of it.
#include "fuzz/Fuzz.h"
#include "platform/quicktime/Completeness.h"
#include "platform/quicktime/Pict.h"
#include "platform/quicktime/PictHeader.h"

namespace {

std::optional<Raster> OnePixel(Bytes file, std::uint64_t mostPixels)
{
    Raster raster;
    if (file.size == 0 || mostPixels == 0)
        return std::nullopt;
    raster.width = raster.height = 1;
    raster.argb = {0x80402010};
    return raster;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const bool isDecoded = DecodePict({data, size}, OnePixel).has_value();
    Require(!isDecoded || FindPictSignature({data, size}) != PictSignature::None);
    (void)IsCompleteImageFile({data, size});
    return 0;
}
