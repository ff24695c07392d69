// platform/corefoundation/PropertyListBinary.h
//
// The binary form of property lists, both ways, for the preference store. It stands beside
// PropertyList.cpp because libplist loses what the store may not lose: text with a NUL, dates to
// the full double, whole numbers beyond 64 bits with a sign. Foreign bytes are bounded here in
// depth and in what shared references would expand to.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/corefoundation/Object.h"

/// A leaf that Core Foundation has no class for (a reference of a keyed archive, a whole number
/// beyond 64 bits, text that is no Unicode): kept as its bytes, so that it survives a rewrite.
struct OpaqueLeaf final : CObject {
    explicit OpaqueLeaf(std::string_view encoded) : bytes(encoded) {}

    TypeId Type() const noexcept override { return TypeId::Opaque; }
    bool EqualTo(const CObject& other) const override { return bytes == static_cast<const OpaqueLeaf&>(other).bytes; }
    std::string Describe() const override { return "<" + std::to_string(bytes.size()) + " bytes of another kind>"; }

    const std::string bytes; ///< Marker and content, as in the file.
};

/// Answers whether `bytes` begin as a binary property list does.
bool IsBinaryPropertyList(std::string_view bytes) noexcept;

/// Reads a binary property list; an object that is referred to twice is made once.
/// @return the root; empty for malformed bytes, more than 512 levels, a cycle, or references that
///         would expand to more than four million objects.
CRef<const CObject> ReadBinaryPropertyList(std::string_view bytes);

/// Writes a binary property list; the same content gives the same bytes.
/// @return nullopt for an object that no property list holds or for more than 512 levels.
std::optional<std::string> WriteBinaryPropertyList(const CObject& root);
