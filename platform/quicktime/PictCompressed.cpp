// platform/quicktime/PictCompressed.cpp
//
// Placement, then an image description, then the file. Raw pixels are read here, image files by
// the decoder that was given.
#include "platform/quicktime/PictCompressed.h"

#include <cmath>

#include "platform/quicktime/PictBitmap.h"

namespace {

constexpr std::size_t kDescriptionSize = 86;
constexpr std::uint32_t kRawCodec = 0x72617720; // 'raw '

/// Translation and scaling; anything else is not supported.
struct Placement {
    bool isSupported = false;
    double scaleX = 1;
    double scaleY = 1;
    double moveX = 0;
    double moveY = 0;

    PictRect Of(const PictRect& rect) const
    {
        const auto place = [](double scale, double move, int value) {
            return static_cast<int>(std::clamp(std::floor(scale * value + move + 0.5), -1e6, 1e6));
        };
        return {place(scaleY, moveY, rect.top), place(scaleX, moveX, rect.left), place(scaleY, moveY, rect.bottom),
                place(scaleX, moveX, rect.right)};
    }
};

Placement ReadMatrix(CByteReader& reader)
{
    std::int32_t numbers[9];
    for (std::int32_t& number : numbers)
        number = reader.S32();
    const auto fixed = [&](std::size_t index) {
        return numbers[index] / 65536.0;
    };
    Placement placement;
    placement.scaleX = fixed(0);
    placement.scaleY = fixed(4);
    placement.moveX = fixed(6);
    placement.moveY = fixed(7);
    placement.isSupported = numbers[1] == 0 && numbers[3] == 0 && numbers[0] > 0 && numbers[4] > 0;
    return placement;
}

/// Skips a matte: a description with its own length, then as many bytes as `size` says.
void SkipMatte(CByteReader& reader, std::size_t size)
{
    if (size == 0)
        return;
    const std::size_t description = reader.U32();
    if (description < 4)
        return reader.Fail();
    reader.Skip(description - 4);
    reader.Skip(size);
}

struct ImageData {
    std::uint32_t codec = 0;
    int width = 0;
    int height = 0;
    unsigned depth = 0;
    Bytes bytes;
};

ImageData ReadImage(CByteReader& reader)
{
    ImageData image;
    const std::size_t length = reader.U32();
    if (length < kDescriptionSize) {
        reader.Fail();
        return image;
    }
    image.codec = reader.U32();
    reader.Skip(8 + 2 + 2 + 4 + 4 + 4); // reserved, version, vendor, quality
    image.width = reader.U16();
    image.height = reader.U16();
    reader.Skip(4 + 4); // resolution
    const std::size_t size = reader.U32();
    reader.Skip(2 + 32); // frames, name
    image.depth = reader.U16();
    reader.Skip(2);                         // colour table
    reader.Skip(length - kDescriptionSize); // what is appended
    image.bytes = reader.TakeRest();
    if (size != 0 && size < image.bytes.size)
        image.bytes.size = size;
    return image;
}

std::optional<Raster> DecodeRaw(const ImageData& image)
{
    const std::size_t pixelSize = image.depth / 8;
    if ((image.depth != 24 && image.depth != 32) || !IsSizeAllowed(image.width, image.height))
        return std::nullopt;
    Raster pixels;
    pixels.width = image.width;
    pixels.height = image.height;
    const std::size_t count = static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height);
    if (image.bytes.size / pixelSize < count)
        return std::nullopt;
    pixels.argb.resize(count);
    const std::uint8_t* from = image.bytes.data + (pixelSize - 3);
    for (std::uint32_t& pixel : pixels.argb) {
        pixel = 0xFF000000U | static_cast<std::uint32_t>(from[0]) << 16U | static_cast<std::uint32_t>(from[1]) << 8U |
                from[2];
        from += pixelSize;
    }
    return pixels;
}

class CRasterPainter {
public:
    CRasterPainter(const Raster& pixels, int mode, const PictInks& inks) : m_pixels(pixels), m_mode(mode), m_inks(inks)
    {
    }
    bool SelectRow(int y)
    {
        if (y < 0 || y >= m_pixels.height)
            return false;
        m_row = m_pixels.Row(y);
        return true;
    }
    void Paint(int x, std::uint32_t& pixel) const
    {
        if (x >= 0 && x < m_pixels.width)
            pixel = CombineColour(m_mode, m_row[x], pixel, m_inks);
    }

private:
    const Raster& m_pixels;
    int m_mode;
    PictInks m_inks;
    const std::uint32_t* m_row = nullptr;
};

} // namespace

CompressedResult DrawCompressed(Bytes data, CPictCanvas& canvas, const PictInks& inks, ImageDecoder decodeImage)
{
    CByteReader reader(data);
    CompressedResult result;
    if (reader.U16() != 0) // version
        return result;
    const Placement placement = ReadMatrix(reader);
    const std::size_t matteSize = reader.U32();
    reader.Skip(8); // matte rectangle
    const int mode = reader.U16();
    PictRect source = ReadRect(reader);
    reader.Skip(4); // accuracy
    const std::size_t maskSize = reader.U32();
    SkipMatte(reader, matteSize);
    std::optional<CPictRegion> mask;
    if (maskSize != 0) {
        CByteReader maskReader(reader.Take(maskSize));
        mask = CPictRegion::Read(maskReader);
    }
    const ImageData image = ReadImage(reader);
    if (source.IsEmpty())
        source = {0, 0, image.height, image.width};
    result.destination = placement.Of(source);
    if (reader.Failed() || !placement.isSupported || (maskSize != 0 && !mask))
        return result;
    const std::optional<Raster> pixels =
        image.codec == kRawCodec ? DecodeRaw(image) : decodeImage(image.bytes, std::min(canvas.WorkLeft(), kMaxPixels));
    if (!pixels || !canvas.Spend(pixels->argb.size()))
        return result;
    CRasterPainter painter(*pixels, mode, inks);
    canvas.DrawImage(painter, source, result.destination, mask ? &*mask : nullptr);
    result.isDrawn = true;
    return result;
}

void DrawUncompressed(Bytes data, CPictCanvas& canvas, const PictInks& inks)
{
    CByteReader reader(data);
    if (reader.U16() != 0) // version
        return;
    const Placement placement = ReadMatrix(reader);
    const std::size_t matteSize = reader.U32();
    reader.Skip(8); // matte rectangle
    SkipMatte(reader, matteSize);
    const unsigned opcode = reader.U16();
    if (reader.Failed() || !placement.isSupported || !CPictBitmap::IsOpcode(opcode))
        return;
    auto bitmap = CPictBitmap::Read(reader, opcode);
    if (!bitmap)
        return;
    bitmap->SetDestination(placement.Of(bitmap->Destination()));
    bitmap->Draw(canvas, inks);
}
