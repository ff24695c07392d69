// platform/corefoundation/PropertyListCheck.h
//
// Looks at a property list before libplist does. libplist follows nesting by recursion, writes the
// shared parts of a binary list out at every place that refers to them, and takes cut off or
// garbled text for a list. What passes here is a list, complete, and of bounded cost.
#pragma once

#include <cstddef>
#include <string_view>

/// Levels below the root.
constexpr int kMostPropertyListDepth = 512;
/// Bytes of a list.
constexpr std::size_t kMostPropertyListBytes = std::size_t{16} << 20U;
/// Nodes of a binary list, keys included, with shared ones counted wherever they are referred to.
constexpr std::size_t kMostPropertyListNodes = std::size_t{1} << 20U;
/// Keys of one dictionary; with several dictionaries the sum of the squares counts, for libplist
/// searches a dictionary for every key that it adds.
constexpr std::size_t kMostPropertyListKeys = std::size_t{1} << 17U;

/// Answers whether the bytes are a whole binary list, version 00: every object inside the data, no
/// object within itself, keys that are strings, whole numbers of 64 bits, dates within 68 years of
/// 2001 (which is all that libplist can tell), and the bounds above kept.
bool IsSoundBinaryPropertyList(std::string_view bytes);

/// Answers whether the text, UTF-8 without a byte-order mark, is a whole XML list: well-formed,
/// every element of the right kind in the right place, and the bounds above kept. Whole numbers
/// with a leading zero are refused: libplist takes them for octal ones.
bool IsSoundXmlPropertyList(std::string_view text);
