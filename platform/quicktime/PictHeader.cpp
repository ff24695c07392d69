// platform/quicktime/PictHeader.cpp
//
// Files have 512 bytes of anything in front of the picture; data from a resource have not.
#include "platform/quicktime/PictHeader.h"

namespace {

constexpr std::size_t kStarts[] = {512, 0};
constexpr std::size_t kVersionOffset = 10;
constexpr std::uint16_t kVersion1 = 0x1101;
constexpr std::uint32_t kVersion2 = 0x001102FF;
constexpr std::uint16_t kHeaderOp = 0x0C00;
constexpr std::uint16_t kExtendedHeader = 0xFFFE;

PictSignature SignatureAt(Bytes picture)
{
    const Bytes version = picture.From(kVersionOffset);
    CByteReader reader(version);
    if (reader.U32() == kVersion2)
        return PictSignature::Strong;
    CByteReader again(version);
    return again.U16() == kVersion1 ? PictSignature::Weak : PictSignature::None;
}

/// Reads the version-2 header, if it is there; answers the operations' coordinates.
PictRect ReadSourceRect(CByteReader& reader, const PictRect& frame)
{
    CByteReader header = reader;
    if (header.U16() != kHeaderOp)
        return frame;
    const bool isExtended = header.U16() == kExtendedHeader;
    header.Skip(2 + 4 + 4); // reserved, resolution
    const PictRect source = ReadRect(header);
    header.Skip(4);
    if (header.Failed())
        return frame;
    reader = header;
    return isExtended && !source.IsEmpty() ? source : frame;
}

} // namespace

PictSignature FindPictSignature(Bytes file)
{
    PictSignature best = PictSignature::None;
    for (const std::size_t start : kStarts) {
        const PictSignature signature = SignatureAt(file.From(start));
        best = signature > best ? signature : best;
    }
    return best;
}

std::optional<PictHeader> ReadPictHeader(Bytes file)
{
    for (const std::size_t start : kStarts) {
        PictHeader header;
        header.picture = file.From(start);
        const PictSignature signature = SignatureAt(header.picture);
        if (signature == PictSignature::None)
            continue;
        header.isVersion2 = signature == PictSignature::Strong;
        CByteReader reader(header.picture);
        reader.Skip(2); // the size, which means nothing
        header.frame = ReadRect(reader);
        reader.Skip(header.isVersion2 ? 4 : 2);
        header.source = header.isVersion2 ? ReadSourceRect(reader, header.frame) : header.frame;
        header.operations = reader.Position();
        if (!header.frame.IsEmpty())
            return header;
    }
    return std::nullopt;
}
