// platform/quicktime/Completeness.cpp
//
// Walks over the pieces of a file without looking into them: PNG chunks (ISO/IEC 15948, 5), JPEG
// segments (ITU-T T.81, B.1), the rows that a BMP header claims.
#include "platform/quicktime/Completeness.h"

#include <cstring>

namespace {

constexpr std::uint8_t kPngSignature[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr std::uint8_t kBmpSignature[] = {'B', 'M'};
constexpr std::uint8_t kJpegSignature[] = {0xFF, 0xD8, 0xFF};
constexpr std::uint32_t kPngEndChunk = 0x49454E44; // 'IEND'

template <std::size_t size>
bool BeginsWith(Bytes file, const std::uint8_t (&signature)[size])
{
    return file.size >= size && std::memcmp(file.data, signature, size) == 0;
}

bool IsCompletePng(CByteReader reader)
{
    reader.Skip(sizeof kPngSignature);
    while (!reader.Failed()) {
        const std::size_t length = reader.U32();
        const std::uint32_t type = reader.U32();
        reader.Skip(length);
        reader.Skip(4); // checksum
        if (type == kPngEndChunk)
            return !reader.Failed();
    }
    return false;
}

bool IsCompleteJpeg(CByteReader reader)
{
    enum { kStuffed = 0x00, kFirstRestart = 0xD0, kStart = 0xD8, kEnd = 0xD9, kScan = 0xDA, kFill = 0xFF };
    bool isScan = false; // inside coded data, where only markers count
    while (!reader.Failed()) {
        if (reader.U8() != kFill) {
            if (!isScan)
                return false;
            continue;
        }
        unsigned marker = kFill;
        while (marker == kFill && !reader.Failed())
            marker = reader.U8();
        if (marker == kEnd)
            return !reader.Failed();
        if (marker == kStuffed || (marker >= kFirstRestart && marker <= kStart))
            continue;
        const std::size_t length = reader.U16();
        if (length < 2)
            return false;
        reader.Skip(length - 2);
        isScan = marker == kScan;
    }
    return false;
}

std::uint32_t LittleEndian(CByteReader& reader)
{
    const std::uint32_t big = reader.U32();
    return big >> 24U | (big >> 8U & 0xFF00U) | (big << 8U & 0xFF0000U) | big << 24U;
}

bool IsCompleteBmp(Bytes file)
{
    CByteReader reader(file);
    reader.Skip(10); // signature, size, reserved
    const std::uint64_t pixels = LittleEndian(reader);
    if (LittleEndian(reader) < 40)
        return true; // an older header, which the decoder may know
    const auto width = static_cast<std::int32_t>(LittleEndian(reader));
    const auto height = static_cast<std::int32_t>(LittleEndian(reader)); // negative: top row first
    const std::uint64_t depth = LittleEndian(reader) >> 16U;
    const std::uint32_t compression = LittleEndian(reader);
    if (reader.Failed() || width <= 0)
        return false;
    if (compression != 0 && compression != 3)
        return true; // packed rows have an end of their own
    const auto tall = static_cast<std::int64_t>(height);
    const auto rows = static_cast<std::uint64_t>(tall < 0 ? -tall : tall);
    const std::uint64_t rowSize = (static_cast<std::uint64_t>(width) * depth + 31) / 32 * 4;
    if (rowSize > file.size || rows > file.size || pixels > file.size)
        return false;
    return rowSize * rows <= file.size - pixels;
}

} // namespace

bool IsCompleteImageFile(Bytes file)
{
    if (BeginsWith(file, kPngSignature))
        return IsCompletePng(CByteReader(file));
    if (BeginsWith(file, kJpegSignature))
        return IsCompleteJpeg(CByteReader(file));
    if (BeginsWith(file, kBmpSignature))
        return IsCompleteBmp(file);
    return true;
}
