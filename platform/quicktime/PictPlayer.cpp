// platform/quicktime/PictPlayer.cpp
//
// One operation after the other. What is not drawn is skipped by its length.
#include "platform/quicktime/PictPlayer.h"

#include <utility>

#include "platform/quicktime/PictCompressed.h"
#include "platform/quicktime/PictOpcodes.h"

namespace {

enum Opcode {
    kNop = 0x00,
    kClip = 0x01,
    kBackPattern = 0x02,
    kPenSize = 0x07,
    kPenMode = 0x08,
    kPenPattern = 0x09,
    kFillPattern = 0x0A,
    kOvalSize = 0x0B,
    kOldForeground = 0x0E,
    kOldBackground = 0x0F,
    kBackPixelPattern = 0x12,
    kPenPixelPattern = 0x13,
    kFillPixelPattern = 0x14,
    kForeground = 0x1A,
    kBackground = 0x1B,
    kOperandColour = 0x1F,
    kLine = 0x20,
    kLineFrom = 0x21,
    kShortLine = 0x22,
    kShortLineFrom = 0x23,
    kFirstShape = 0x30,
    kLastShape = 0x8F,
    kEnd = 0xFF,
    kCompressed = 0x8200,
    kUncompressed = 0x8201
};

constexpr int kStandInPenHeight = 0xAE; // such a pen's width is the size of a stand-in
constexpr int kCopyPattern = 8;
constexpr int kXorPattern = 10;
constexpr std::size_t kPolygonHead = 10;

std::uint32_t ReadColour(CByteReader& reader)
{
    std::uint32_t colour = 0xFF;
    for (int component = 0; component < 3; ++component)
        colour = (colour << 8U) | (reader.U16() >> 8U);
    return colour;
}

/// The eight colours of the first Macintoshes, as colour screens show them.
std::uint32_t ReadOldColour(CByteReader& reader)
{
    constexpr struct {
        std::uint32_t code;
        std::uint32_t colour;
    } kColours[] = {
        {30, kWhite},      {33, kBlack},      {69, 0xFFFCF305},  {137, 0xFFF20884},
        {205, 0xFFDD0806}, {273, 0xFF02ABEA}, {341, 0xFF008011}, {409, 0xFF0000D4},
    };
    const std::uint32_t code = reader.U32();
    for (const auto& known : kColours) {
        if (known.code == code)
            return known.colour;
    }
    return kBlack;
}

void ReadPattern(CByteReader& reader, PictPattern& pattern)
{
    pattern.tile = {};
    for (std::uint8_t& row : pattern.bits)
        row = reader.U8();
}

} // namespace

CPictPlayer::CPictPlayer(const PictHeader& header, ImageDecoder decodeImage)
    : m_header(header),
      m_decodeImage(decodeImage),
      m_canvas(header.source, header.frame.Width(), header.frame.Height()),
      m_reader(header.picture)
{
    m_reader.Skip(header.operations);
}

bool CPictPlayer::Play()
{
    const std::size_t smallest = m_header.isVersion2 ? 2 : 1;
    while (m_reader.Remaining() >= smallest && m_canvas.WorkLeft() > 0) {
        const unsigned opcode = ReadOpcode();
        if (m_reader.Failed())
            break;
        if (opcode == kEnd)
            return true;
        PlayOperation(opcode);
        if (opcode != kNop && opcode != kCompressed)
            m_standIn.reset();
    }
    return m_canvas.IsDrawn();
}

unsigned CPictPlayer::ReadOpcode()
{
    if (!m_header.isVersion2)
        return m_reader.U8();
    if (m_reader.Position() % 2 != 0)
        m_reader.Skip(1);
    return m_reader.U16();
}

void CPictPlayer::PlayOperation(unsigned opcode)
{
    if (opcode >= kFirstShape && opcode <= kLastShape)
        return PlayShape(opcode);
    if (CPictBitmap::IsOpcode(opcode))
        return PlayBitmap(opcode);
    switch (opcode) {
    case kClip:
        m_canvas.SetClip(CPictRegion::Read(m_reader));
        break;
    case kBackPattern:
        return ReadPattern(m_reader, m_backPattern);
    case kPenPattern:
        return ReadPattern(m_reader, m_penPattern);
    case kFillPattern:
        return ReadPattern(m_reader, m_fillPattern);
    case kBackPixelPattern:
        return ReadPixelPattern(m_backPattern);
    case kPenPixelPattern:
        return ReadPixelPattern(m_penPattern);
    case kFillPixelPattern:
        return ReadPixelPattern(m_fillPattern);
    case kPenSize:
        return SetPenSize();
    case kPenMode:
        m_penMode = m_reader.U16();
        break;
    case kOvalSize:
        m_ovalSize = ReadPoint(m_reader);
        break;
    case kOldForeground:
        m_inks.foreground = ReadOldColour(m_reader);
        break;
    case kOldBackground:
        m_inks.background = ReadOldColour(m_reader);
        break;
    case kForeground:
        m_inks.foreground = ReadColour(m_reader);
        break;
    case kBackground:
        m_inks.background = ReadColour(m_reader);
        break;
    case kOperandColour:
        m_inks.operand = ReadColour(m_reader);
        break;
    case kLine:
    case kShortLine:
        m_pen = ReadPoint(m_reader);
        [[fallthrough]];
    case kLineFrom:
    case kShortLineFrom:
        if (opcode == kLine || opcode == kLineFrom)
            return DrawLine(ReadPoint(m_reader));
        else {
            const int dh = static_cast<std::int8_t>(m_reader.U8());
            const int dv = static_cast<std::int8_t>(m_reader.U8());
            return DrawLine({m_pen.v + dv, m_pen.h + dh});
        }
    case kCompressed:
        return PlayCompressed();
    case kUncompressed: {
        const Bytes data = m_reader.Take(m_reader.U32());
        return DrawUncompressed(data, m_canvas, m_inks);
    }
    default:
        SkipOperation(m_reader, opcode);
        break;
    }
}

void CPictPlayer::ReadPixelPattern(PictPattern& pattern)
{
    enum { kTile = 1, kColour = 2 };
    const unsigned type = m_reader.U16();
    ReadPattern(m_reader, pattern);
    if (type == kTile) {
        pattern.tile = CPictBitmap::ReadTile(m_reader);
    } else if (type == kColour) {
        pattern.tile.width = pattern.tile.height = 1;
        pattern.tile.argb = {ReadColour(m_reader)};
    } else {
        m_reader.Fail();
    }
}

void CPictPlayer::SetPenSize()
{
    const PictPoint size = ReadPoint(m_reader);
    if (size.v == kStandInPenHeight && m_hasCompressed)
        return m_reader.Skip(static_cast<std::uint16_t>(size.h));
    // A pen that has a size keeps at least one pixel, however much the picture shrinks.
    const CPictMap& map = m_canvas.Map();
    m_penWidth = size.h > 0 ? std::max(1, map.X(size.h) - map.X(0)) : 0;
    m_penHeight = size.v > 0 ? std::max(1, map.Y(size.v) - map.Y(0)) : 0;
}

void CPictPlayer::DrawLine(PictPoint to)
{
    if (m_reader.Failed())
        return;
    const CPictMap& map = m_canvas.Map();
    const ShapePtr line =
        MakeLineShape({map.Y(m_pen.v), map.X(m_pen.h)}, {map.Y(to.v), map.X(to.h)}, m_penWidth, m_penHeight);
    FillWith(*line, m_penPattern, m_penMode);
    m_pen = to;
}

void CPictPlayer::PlayShape(unsigned opcode)
{
    enum Kind { kRect = 3, kRoundRect, kOval, kArc, kPolygon, kRegion };
    const Verb verb = static_cast<Verb>(opcode & 7U);
    const bool isSame = (opcode & 8U) != 0;
    const CPictMap& map = m_canvas.Map();
    const auto readRect = [&](PictRect& last) {
        if (!isSame)
            last = ReadRect(m_reader);
        return map.Of(last);
    };
    switch (opcode >> 4U) {
    case kRect: {
        const PictRect rect = readRect(m_rect);
        return DrawShape(verb, MakeRectShape(rect), MakeRectShape(InsetByPen(rect)));
    }
    case kRoundRect: {
        const PictRect rect = readRect(m_roundRect);
        const int width = map.X(m_ovalSize.h) - map.X(0);
        const int height = map.Y(m_ovalSize.v) - map.Y(0);
        return DrawShape(verb, MakeRoundRectShape(rect, width, height),
                         MakeRoundRectShape(InsetByPen(rect), width - 2 * m_penWidth, height - 2 * m_penHeight));
    }
    case kOval: {
        const PictRect rect = readRect(m_oval);
        return DrawShape(verb, MakeOvalShape(rect), MakeOvalShape(InsetByPen(rect)));
    }
    case kArc: {
        const PictRect rect = readRect(m_arc);
        const int start = m_reader.S16();
        const int angle = m_reader.S16();
        ShapePtr ring = MakeOvalShape(rect);
        if (verb == Verb::Frame)
            ring = MakeDifference(std::move(ring), MakeOvalShape(InsetByPen(rect)));
        return DrawShape(verb, MakeIntersection(std::move(ring), MakeSliceShape(rect, start, angle)), nullptr);
    }
    case kPolygon:
        return PlayPolygon(verb, isSame);
    default:
        return PlayRegion(verb, isSame);
    }
}

void CPictPlayer::PlayPolygon(Verb verb, bool isSame)
{
    if (!isSame) {
        const std::size_t size = m_reader.U16();
        if (size < kPolygonHead)
            return m_reader.Fail();
        m_reader.Skip(8); // bounds
        CByteReader points(m_reader.Take(size - kPolygonHead));
        m_polygon.clear();
        while (points.Remaining() >= 4)
            m_polygon.push_back(ReadPoint(points));
    }
    if (verb == Verb::Frame) {
        for (std::size_t index = 0; index < m_polygon.size(); ++index) {
            if (index > 0)
                DrawLine(m_polygon[index]);
            m_pen = m_polygon[index];
        }
        return;
    }
    std::vector<PictPoint> pixels;
    pixels.reserve(m_polygon.size());
    for (const PictPoint& point : m_polygon)
        pixels.push_back({m_canvas.Map().Y(point.v), m_canvas.Map().X(point.h)});
    DrawShape(verb, MakePolygonShape(pixels), nullptr);
}

void CPictPlayer::PlayRegion(Verb verb, bool isSame)
{
    if (!isSame)
        m_region = CPictRegion::Read(m_reader);
    if (m_region && verb != Verb::Frame) // an outline of any form is not worth its code
        DrawShape(verb, m_region->MakeShape(m_canvas.Map()), nullptr);
}

void CPictPlayer::DrawShape(Verb verb, ShapePtr shape, ShapePtr inner)
{
    if (m_reader.Failed())
        return;
    switch (verb) {
    case Verb::Frame:
        if (inner)
            shape = MakeDifference(std::move(shape), std::move(inner));
        return FillWith(*shape, m_penPattern, m_penMode);
    case Verb::Paint:
        return FillWith(*shape, m_penPattern, m_penMode);
    case Verb::Erase:
        return FillWith(*shape, m_backPattern, kCopyPattern);
    case Verb::Invert:
        return FillWith(*shape, PictPattern::Solid(0xFF), kXorPattern);
    case Verb::Fill:
        return FillWith(*shape, m_fillPattern, kCopyPattern);
    }
}

void CPictPlayer::FillWith(CPictShape& shape, const PictPattern& pattern, int mode)
{
    const Raster& tile = pattern.tile;
    if (!tile.argb.empty()) {
        const int tileMode = mode < 2 * kCopyPattern ? mode & ~kCopyPattern : mode;
        m_canvas.Fill(shape, nullptr, [&](std::uint32_t* pixels, int y, int left, int right) {
            const std::uint32_t* const row = tile.Row(y % tile.height);
            for (int x = left; x < right; ++x)
                pixels[x] = CombineColour(tileMode, row[x % tile.width], pixels[x], m_inks);
        });
        return;
    }
    m_canvas.Fill(shape, nullptr, [&](std::uint32_t* pixels, int y, int left, int right) {
        const unsigned bits = pattern.bits[static_cast<unsigned>(y) % 8];
        const auto bitAt = [bits](int x) {
            return ((bits >> (7 - static_cast<unsigned>(x) % 8)) & 1U) != 0;
        };
        if (mode == kCopyPattern) { // nearly always
            for (int x = left; x < right; ++x)
                pixels[x] = bitAt(x) ? m_inks.foreground : m_inks.background;
            return;
        }
        for (int x = left; x < right; ++x)
            pixels[x] = CombineBit(mode, bitAt(x), pixels[x], m_inks);
    });
}

void CPictPlayer::PlayBitmap(unsigned opcode)
{
    auto bitmap = CPictBitmap::Read(m_reader, opcode);
    if (bitmap && !(m_standIn && *m_standIn == bitmap->Destination()))
        bitmap->Draw(m_canvas, m_inks);
}

void CPictPlayer::PlayCompressed()
{
    const Bytes data = m_reader.Take(m_reader.U32());
    m_hasCompressed = true;
    m_standIn.reset();
    const CompressedResult result = DrawCompressed(data, m_canvas, m_inks, m_decodeImage);
    if (result.isDrawn)
        m_standIn = result.destination;
}
