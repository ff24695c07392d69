// platform/quicktime/Pict.cpp
//
// From bytes to pixels: header, operations, canvas.
#include "platform/quicktime/Pict.h"

#include "platform/quicktime/PictPlayer.h"

std::optional<Raster> DecodePict(Bytes file, ImageDecoder decodeImage)
{
    const std::optional<PictHeader> header = ReadPictHeader(file);
    if (!header || !IsSizeAllowed(header->frame.Width(), header->frame.Height()))
        return std::nullopt;
    CPictPlayer player(*header, decodeImage);
    return player.Play() ? std::optional<Raster>(player.Finish()) : std::nullopt;
}
