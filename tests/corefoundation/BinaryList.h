// tests/corefoundation/BinaryList.h
//
// Makes binary property lists of objects that are given as bytes, sound or not.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

inline void AppendNumber(std::string& bytes, std::uint64_t number, int size)
{
    for (int shift = (size - 1) * 8; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<char>(number >> static_cast<unsigned>(shift)));
}

/// A marker with a count.
inline std::string Marker(unsigned kind, std::size_t count)
{
    std::string bytes(1, static_cast<char>((kind << 4U) | (count < 15 ? count : 15)));
    if (count >= 15) {
        bytes.push_back(0x12);
        AppendNumber(bytes, count, 4);
    }
    return bytes;
}

/// References take 2 bytes.
inline std::string References(const std::vector<int>& indices)
{
    std::string bytes;
    for (const int index : indices)
        AppendNumber(bytes, static_cast<std::size_t>(index), 2);
    return bytes;
}

inline std::string String(const std::string& ascii)
{
    return Marker(0x5, ascii.size()) + ascii;
}

inline std::string Array(const std::vector<int>& items)
{
    return Marker(0xA, items.size()) + References(items);
}

inline std::string Dictionary(const std::vector<int>& keys, const std::vector<int>& values)
{
    return Marker(0xD, keys.size()) + References(keys) + References(values);
}

/// Offsets take 4 bytes.
inline std::string BinaryList(const std::vector<std::string>& objects, std::size_t root)
{
    std::string bytes = "bplist00";
    std::string offsets;
    for (const std::string& object : objects) {
        AppendNumber(offsets, bytes.size(), 4);
        bytes += object;
    }
    const std::size_t table = bytes.size();
    bytes += offsets;
    bytes.append(6, '\0');
    bytes.push_back(4);
    bytes.push_back(2);
    AppendNumber(bytes, objects.size(), 8);
    AppendNumber(bytes, root, 8);
    AppendNumber(bytes, table, 8);
    return bytes;
}
