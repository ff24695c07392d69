// platform/base/Sha256.cpp
//
// SHA-256 after FIPS 180-4.
#include "platform/base/Sha256.h"

#include <cstddef>
#include <cstdint>

namespace {

constexpr std::uint32_t kRounds[64] = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

std::uint32_t Rotated(std::uint32_t value, unsigned bits)
{
    return (value >> bits) | (value << (32 - bits));
}

void MixBlock(std::uint32_t (&state)[8], const std::string& text, std::size_t at)
{
    std::uint32_t words[64];
    for (std::size_t word = 0; word < 16; ++word) {
        words[word] = 0;
        for (std::size_t byte = 0; byte < 4; ++byte)
            words[word] = (words[word] << 8U) | static_cast<unsigned char>(text[at + word * 4 + byte]);
    }
    for (std::size_t word = 16; word < 64; ++word) {
        const std::uint32_t early = words[word - 15];
        const std::uint32_t late = words[word - 2];
        words[word] = words[word - 16] + (Rotated(early, 7) ^ Rotated(early, 18) ^ (early >> 3U)) + words[word - 7] +
                      (Rotated(late, 17) ^ Rotated(late, 19) ^ (late >> 10U));
    }
    std::uint32_t v[8];
    for (std::size_t index = 0; index < 8; ++index)
        v[index] = state[index];
    for (std::size_t round = 0; round < 64; ++round) {
        const std::uint32_t choice = (v[4] & v[5]) ^ (~v[4] & v[6]);
        const std::uint32_t majority = (v[0] & v[1]) ^ (v[0] & v[2]) ^ (v[1] & v[2]);
        const std::uint32_t first =
            v[7] + (Rotated(v[4], 6) ^ Rotated(v[4], 11) ^ Rotated(v[4], 25)) + choice + kRounds[round] + words[round];
        const std::uint32_t second = (Rotated(v[0], 2) ^ Rotated(v[0], 13) ^ Rotated(v[0], 22)) + majority;
        for (std::size_t index = 7; index > 0; --index)
            v[index] = v[index - 1];
        v[4] += first;
        v[0] = first + second;
    }
    for (std::size_t index = 0; index < 8; ++index)
        state[index] += v[index];
}

} // namespace

std::string Sha256Hex(std::string_view bytes)
{
    std::uint32_t state[8] = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                              0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
    std::string text(bytes);
    const std::uint64_t bits = std::uint64_t(text.size()) * 8;
    text.push_back('\x80');
    while (text.size() % 64 != 56)
        text.push_back('\0');
    for (unsigned byte = 8; byte-- > 0;)
        text.push_back(static_cast<char>((bits >> (8 * byte)) & 0xFFU));
    for (std::size_t at = 0; at < text.size(); at += 64)
        MixBlock(state, text, at);

    std::string digits;
    for (const std::uint32_t word : state) {
        for (unsigned digit = 8; digit-- > 0;)
            digits.push_back("0123456789abcdef"[(word >> (4 * digit)) & 0xFU]);
    }
    return digits;
}
