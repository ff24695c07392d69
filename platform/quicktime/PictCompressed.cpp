// platform/quicktime/PictCompressed.cpp
//
// Placement, then an image description, then the image. Plain pixels and runs of pixels are read
// here, image files by the decoder that was given.
#include "platform/quicktime/PictCompressed.h"

#include <cmath>

#include "platform/quicktime/PictBitmap.h"

namespace {

constexpr std::size_t kDescriptionSize = 86;
constexpr std::uint32_t kRawCodec = 0x72617720; // 'raw '
constexpr std::uint32_t kRunCodec = 0x726C6520; // 'rle ', the one form of pixels with alpha

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

/// Answers the raster for an image of whole pixels of 24 or 32 bits, all transparent.
std::optional<Raster> RasterFor(const ImageData& image, std::uint64_t mostPixels)
{
    const std::size_t count = static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height);
    if ((image.depth != 24 && image.depth != 32) || !IsSizeAllowed(image.width, image.height) || count > mostPixels)
        return std::nullopt;
    return Raster{image.width, image.height, std::vector<std::uint32_t>(count)};
}

std::optional<Raster> DecodeRaw(const ImageData& image, std::uint64_t mostPixels)
{
    const std::size_t pixelSize = image.depth / 8;
    std::optional<Raster> pixels = RasterFor(image, mostPixels);
    if (!pixels || image.bytes.size / pixelSize < pixels->argb.size())
        return std::nullopt;
    const std::uint8_t* from = image.bytes.data + (pixelSize - 3);
    for (std::uint32_t& pixel : pixels->argb) {
        pixel = PremultipliedPixel(0xFF, from[0], from[1], from[2]);
        from += pixelSize;
    }
    return pixels;
}

/// Reads a pixel of 3 bytes, or of 4 with alpha before a colour that is not premultiplied.
std::uint32_t ReadPixel(CByteReader& reader, unsigned depth)
{
    const std::uint32_t alpha = depth == 32 ? reader.U8() : 0xFF;
    const Bytes rgb = reader.Take(3);
    if (rgb.size == 0)
        return 0;
    return PremultipliedPixel(alpha, rgb.data[0], rgb.data[1], rgb.data[2]);
}

/// Reads a row of runs from `x` on: counts of pixels that follow, negative for one pixel repeated,
/// 0 before another step to the right, -1 at the end.
/// @return false for what is cut off or leaves the row.
bool ReadRunRow(CByteReader& reader, unsigned depth, std::uint32_t* row, int x, int width)
{
    while (x >= 0 && !reader.Failed()) {
        const int count = static_cast<std::int8_t>(reader.U8());
        if (count == -1)
            return true;
        if (count == 0) {
            x += reader.U8() - 1;
            continue;
        }
        const int pixels = std::abs(count);
        if (pixels > width - x)
            break;
        std::uint32_t pixel = 0;
        for (int done = 0; done < pixels; ++done) {
            if (count > 0 || done == 0)
                pixel = ReadPixel(reader, depth);
            row[x++] = pixel;
        }
    }
    return false;
}

/// Reads runs of pixels: the size of all in 4 bytes, flags in 2, of which one says that the first
/// row and the number of rows follow, then the rows, each behind a step to the right in a byte, one
/// more than the pixels; 0 ends the image. What no run covers is transparent.
std::optional<Raster> DecodeRuns(const ImageData& image, std::uint64_t mostPixels)
{
    constexpr unsigned kHasRows = 8;
    std::optional<Raster> pixels = RasterFor(image, mostPixels);
    if (!pixels)
        return std::nullopt;
    CByteReader reader(image.bytes);
    reader.Skip(4);
    int top = 0, rows = image.height;
    if ((reader.U16() & kHasRows) != 0) {
        top = reader.U16();
        reader.Skip(2);
        rows = reader.U16();
        reader.Skip(2);
    }
    const int bottom = std::min(top + rows, image.height);
    for (int y = top; y < bottom; ++y) {
        const int step = reader.U8();
        if (step == 0 && !reader.Failed())
            break;
        const std::size_t first = static_cast<std::size_t>(y) * static_cast<std::size_t>(image.width);
        if (!ReadRunRow(reader, image.depth, &pixels->argb[first], step - 1, image.width))
            return std::nullopt;
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
    const std::uint64_t mostPixels = std::min(canvas.WorkLeft(), kMaxPixels);
    std::optional<Raster> pixels = image.codec == kRawCodec   ? DecodeRaw(image, mostPixels)
                                   : image.codec == kRunCodec ? DecodeRuns(image, mostPixels)
                                                              : decodeImage(image.bytes, mostPixels);
    if (!pixels || !canvas.Spend(pixels->argb.size()))
        return result;
    result.isDrawn = true;
    if (!mask && IsCopy(mode) && canvas.Adopt(*pixels, source, result.destination))
        return result;
    CRasterPainter painter(*pixels, mode, inks);
    canvas.DrawImage(painter, source, result.destination, mask ? &*mask : nullptr);
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
