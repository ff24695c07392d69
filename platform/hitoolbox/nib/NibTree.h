// platform/hitoolbox/nib/NibTree.h
//
// Splits the XML of an `objects.xib` into a tree. The files are not always well-formed (raw control bytes,
// references to characters that XML forbids), so this reads bytes with lengths and takes what it finds.
// What the elements mean is left to NibReader.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/hitoolbox/nib/NibReader.h"

enum class NibElement : std::uint8_t { Object, Reference, Array, Dictionary, Code, Value, Other };

/// Values are all that hold plain text; a four-character code is one too.
constexpr bool IsPlain(NibElement element)
{
    return element == NibElement::Value || element == NibElement::Code;
}

/// An element. The texts are those of the file, which has to outlive the tree, with their escapes.
struct NibNode {
    NibElement element = NibElement::Other;
    std::uint32_t id = 0;       ///< of an object its `id`, of a reference its `idRef`; 0 for none
    std::uint32_t first = 0;    ///< its first child's index; 0 for none
    std::uint32_t next = 0;     ///< its next sibling's index; 0 for none
    std::string_view key;       ///< attribute `name`
    std::string_view className; ///< attribute `class`
    std::string_view text;      ///< all of a value's content
    std::size_t offset = 0;     ///< where the element begins in the file
};

/// The elements in the order of the file: parents before their children. The root stands at 0.
using NibTree = std::vector<NibNode>;

/// Answers the tree; nothing, and what is wrong, when the bytes cannot be split into elements.
std::optional<NibTree> ReadNibTree(std::string_view bytes, NibProblem& problem);

/// Answers a text of the file with its references resolved. Any number is taken; what is no character gives
/// U+FFFD, and an ampersand that begins no reference stands for itself.
std::string UnescapeNibText(std::string_view text);

/// Describes what is wrong at `offset`; what is not printable ASCII in `message` becomes question marks.
NibProblem NibProblemAt(std::string_view bytes, std::size_t offset, std::string message);
