// tests/quicktime/PictMaker.h
//
// Makes QuickDraw pictures, whole or damaged on purpose, and looks at what becomes of them.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/quicktime/Pict.h"

/// Bytes in the order of the Macintosh.
class CBytes {
public:
    CBytes& U8(unsigned value)
    {
        m_bytes.push_back(static_cast<char>(value));
        return *this;
    }
    CBytes& U16(unsigned value) { return U8(value >> 8U & 0xFFU).U8(value & 0xFFU); }
    CBytes& U32(unsigned value) { return U16(value >> 16U).U16(value & 0xFFFFU); }
    CBytes& S16(int value) { return U16(static_cast<unsigned>(value) & 0xFFFFU); }
    CBytes& Rect(int top, int left, int bottom, int right) { return S16(top).S16(left).S16(bottom).S16(right); }
    CBytes& Raw(const std::string& bytes)
    {
        m_bytes += bytes;
        return *this;
    }
    CBytes& Zeros(std::size_t count)
    {
        m_bytes.append(count, '\0');
        return *this;
    }
    /// Skips to an even offset.
    CBytes& Align() { return Zeros(m_bytes.size() % 2); }
    std::size_t Size() const { return m_bytes.size(); }
    const std::string& Text() const { return m_bytes; }

private:
    std::string m_bytes;
};

struct FrameRect {
    int top, left, bottom, right;
};

/// Version 2 with a plain header; ends with the end mark unless told otherwise.
std::string PictureV2(const FrameRect& frame, const std::string& operations, bool withFileHeader = true,
                      bool withEnd = true);
std::string PictureV1(const FrameRect& frame, const std::string& operations, bool withFileHeader = true);
/// Version 2 with an extended header.
std::string PictureExtended(const FrameRect& frame, const FrameRect& source, unsigned resolution,
                            const std::string& operations);

/// PackBits of bytes or, with `element` 2, of pairs: runs where they are, else copies.
std::string Pack(const std::string& row, std::size_t element = 1);

/// One bitmap operation with its opcode, aligned. What is not set follows from the rest.
struct BitmapMaker {
    unsigned opcode = 0x98;
    bool isPixMap = true;
    unsigned depth = 8;
    unsigned packType = 0;
    unsigned components = 1;
    unsigned rowBytes = 0;
    int width = 0, height = 0;
    FrameRect bounds = {0, 0, 0, 0}; // 0: as wide and high as the bitmap
    FrameRect source = {0, 0, 0, 0};
    FrameRect destination = {0, 0, 0, 0};
    unsigned mode = 0;
    unsigned tableFlags = 0x8000;
    std::vector<std::uint32_t> colours; // 0xRRGGBB
    std::vector<unsigned> values;       // of the colours, where they differ from their place
    std::string mask;                   // a region
    std::vector<std::string> rows;      // unpacked, rowBytes each
    bool isPacked = true;
    std::size_t element = 1;
    int lengthSize = 0; // 0: as the rule has it

    std::string Make() const;
};

std::string RectRegion(int top, int left, int bottom, int right);

/// A decoder of image files for tests: "IMG", width, height and one colour, a byte each but for the
/// colour's four. Anything else is damaged.
std::optional<Raster> DecodeTestImage(Bytes file, std::uint64_t mostPixels);
std::string TestImage(int width, int height, std::uint32_t argb);

/// Plays a picture with DecodeTestImage.
std::optional<Raster> Play(const std::string& file);

/// The picture as text, a line a row, a letter a pixel: '.' white, '#' black, 'r' 'g' 'b' the pure
/// colours, ' ' transparent, '?' anything else; "null" for none.
std::string Drawing(const std::optional<Raster>& picture);
