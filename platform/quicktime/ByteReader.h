// platform/quicktime/ByteReader.h
//
// Reads big-endian numbers from a span of bytes. It never leaves the span: the first read beyond
// the end fails, and from then on every read answers 0.
#pragma once

#include <cstddef>
#include <cstdint>

/// Bytes that somebody else owns.
struct Bytes {
    const std::uint8_t* data = nullptr;
    std::size_t size = 0;

    Bytes From(std::size_t offset) const { return offset < size ? Bytes{data + offset, size - offset} : Bytes{}; }
};

class CByteReader {
public:
    explicit CByteReader(Bytes bytes) : m_bytes(bytes) {}

    bool Failed() const { return m_failed; }
    std::size_t Position() const { return m_position; }
    std::size_t Remaining() const { return m_bytes.size - m_position; }
    /// Makes this and all later reads fail.
    void Fail()
    {
        m_position = m_bytes.size;
        m_failed = true;
    }

    /// Answers the next `size` bytes; none when there are fewer.
    Bytes Take(std::size_t size)
    {
        if (size > Remaining()) {
            Fail();
            return {};
        }
        const Bytes taken = {m_bytes.data + m_position, size};
        m_position += size;
        return taken;
    }
    void Skip(std::size_t size) { (void)Take(size); }
    Bytes TakeRest() { return Take(Remaining()); }

    std::uint8_t U8() { return static_cast<std::uint8_t>(Number(1)); }
    std::uint16_t U16() { return static_cast<std::uint16_t>(Number(2)); }
    std::int16_t S16() { return static_cast<std::int16_t>(Number(2)); }
    std::uint32_t U32() { return Number(4); }
    std::int32_t S32() { return static_cast<std::int32_t>(Number(4)); }

private:
    std::uint32_t Number(std::size_t size)
    {
        const Bytes bytes = Take(size);
        std::uint32_t number = 0;
        for (std::size_t index = 0; index < bytes.size; ++index)
            number = (number << 8U) | bytes.data[index];
        return number;
    }

    Bytes m_bytes;
    std::size_t m_position = 0;
    bool m_failed = false;
};
