// tests/quicktime/PictMaker.cpp
//
// The writer's side of the format.
#include "tests/quicktime/PictMaker.h"

#include <algorithm>

namespace {

std::string Start(const FrameRect& frame, bool withFileHeader)
{
    CBytes bytes;
    bytes.Zeros(withFileHeader ? 512 : 0).U16(0);
    return bytes.Rect(frame.top, frame.left, frame.bottom, frame.right).Text();
}

bool IsUnset(const FrameRect& rect)
{
    return rect.top == 0 && rect.left == 0 && rect.bottom == 0 && rect.right == 0;
}

} // namespace

std::string PictureV2(const FrameRect& frame, const std::string& operations, bool withFileHeader, bool withEnd)
{
    CBytes bytes;
    bytes.Raw(Start(frame, withFileHeader)).U32(0x001102FF).U16(0x0C00).U32(0xFFFFFFFF);
    for (const int side : {frame.left, frame.top, frame.right, frame.bottom})
        bytes.S16(side).U16(0);
    bytes.U32(0).Raw(operations);
    return withEnd ? bytes.Align().U16(0xFF).Text() : bytes.Text();
}

std::string PictureV1(const FrameRect& frame, const std::string& operations, bool withFileHeader)
{
    return CBytes().Raw(Start(frame, withFileHeader)).U16(0x1101).Raw(operations).U8(0xFF).Text();
}

std::string PictureExtended(const FrameRect& frame, const FrameRect& source, unsigned resolution,
                            const std::string& operations)
{
    CBytes bytes;
    bytes.Raw(Start(frame, true)).U32(0x001102FF).U16(0x0C00).U32(0xFFFE0000).U32(resolution).U32(resolution);
    bytes.Rect(source.top, source.left, source.bottom, source.right).U32(0).Raw(operations);
    return bytes.Align().U16(0xFF).Text();
}

std::string Pack(const std::string& row, std::size_t element)
{
    CBytes packed;
    const std::size_t count = row.size() / element;
    const auto at = [&](std::size_t index) {
        return row.substr(index * element, element);
    };
    for (std::size_t index = 0; index < count;) {
        std::size_t run = 1;
        while (index + run < count && run < 128 && at(index + run) == at(index))
            ++run;
        if (run > 1) {
            packed.U8(static_cast<unsigned>(257 - run)).Raw(at(index));
            index += run;
            continue;
        }
        std::size_t length = 1;
        while (index + length < count && length < 128 &&
               (index + length + 1 == count || at(index + length) != at(index + length + 1)))
            ++length;
        packed.U8(static_cast<unsigned>(length - 1)).Raw(row.substr(index * element, length * element));
        index += length;
    }
    return packed.Text();
}

std::string BitmapMaker::Make() const
{
    const auto put = [](CBytes& bytes, const FrameRect& rect) {
        bytes.Rect(rect.top, rect.left, rect.bottom, rect.right);
    };
    const FrameRect whole = {0, 0, height, width};
    const FrameRect edges = IsUnset(bounds) ? whole : bounds;
    CBytes bytes;
    bytes.U16(opcode);
    if (opcode >= 0x9A)
        bytes.U32(0xFF);
    bytes.U16(rowBytes | (isPixMap ? 0x8000U : 0U));
    put(bytes, edges);
    if (isPixMap) {
        bytes.U16(0).U16(packType).U32(0).U32(72U << 16U).U32(72U << 16U).U16(depth >= 16 ? 16 : 0).U16(depth);
        bytes.U16(components).U16(depth >= 16 ? depth / 4 : depth).U32(0).U32(0).U32(0);
    }
    if (isPixMap && opcode < 0x9A) {
        bytes.U32(0).U16(tableFlags).U16(static_cast<unsigned>(colours.size() - 1));
        for (std::size_t index = 0; index < colours.size(); ++index) {
            bytes.U16(values.empty() ? static_cast<unsigned>(index) : values[index]);
            for (const unsigned shift : {16U, 8U, 0U})
                bytes.U16((colours[index] >> shift & 0xFFU) * 0x101U);
        }
    }
    put(bytes, IsUnset(source) ? edges : source);
    put(bytes, IsUnset(destination) ? edges : destination);
    bytes.U16(mode).Raw(mask);
    const int size = lengthSize != 0 ? lengthSize : rowBytes > 250 ? 2 : 1;
    for (const std::string& row : rows) {
        if (!isPacked) {
            bytes.Raw(row);
            continue;
        }
        const std::string packed = Pack(row, element);
        const auto length = static_cast<unsigned>(packed.size());
        (size == 1 ? bytes.U8(length) : bytes.U16(length)).Raw(packed);
    }
    return bytes.Align().Text();
}

std::string RectRegion(int top, int left, int bottom, int right)
{
    return CBytes().U16(10).Rect(top, left, bottom, right).Text();
}

std::optional<Raster> DecodeTestImage(Bytes file, std::uint64_t mostPixels)
{
    CByteReader reader(file);
    const bool isImage = reader.U8() == 'I' && reader.U8() == 'M' && reader.U8() == 'G';
    Raster raster;
    raster.width = reader.U8();
    raster.height = reader.U8();
    const std::uint32_t colour = reader.U32();
    const auto count = static_cast<std::size_t>(raster.width) * static_cast<std::size_t>(raster.height);
    if (!isImage || reader.Failed() || count == 0 || count > mostPixels)
        return std::nullopt;
    raster.argb.assign(count, colour);
    return raster;
}

std::string TestImage(int width, int height, std::uint32_t argb)
{
    return CBytes().Raw("IMG").U8(static_cast<unsigned>(width)).U8(static_cast<unsigned>(height)).U32(argb).Text();
}

std::optional<Raster> Play(const std::string& file)
{
    // A copy of exactly this size, so that a sanitizer sees a read beyond it.
    const std::vector<std::uint8_t> bytes(file.begin(), file.end());
    return DecodePict({bytes.data(), bytes.size()}, DecodeTestImage);
}

std::string Drawing(const std::optional<Raster>& picture)
{
    if (!picture)
        return "null";
    std::string text;
    for (int y = 0; y < picture->height; ++y) {
        for (int x = 0; x < picture->width; ++x) {
            switch (picture->Row(y)[x]) {
            case 0xFFFFFFFF:
                text += '.';
                break;
            case 0xFF000000:
                text += '#';
                break;
            case 0xFFFF0000:
                text += 'r';
                break;
            case 0xFF00FF00:
                text += 'g';
                break;
            case 0xFF0000FF:
                text += 'b';
                break;
            case 0:
                text += ' ';
                break;
            default:
                text += '?';
                break;
            }
        }
        text += '\n';
    }
    return text;
}
