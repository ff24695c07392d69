// platform/base/Sha256.h
//
// The hash SHA-256, for names that must differ where their texts do.
#pragma once

#include <string>
#include <string_view>

/// Answers the hash as 64 hexadecimal digits in lower case (FIPS 180-4).
std::string Sha256Hex(std::string_view bytes);
