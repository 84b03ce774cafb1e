// SPDX-License-Identifier: MIT
// Word-at-a-time helpers shared by the two Base64 codecs: portable scalar
// code (no vector instructions), byte order taken from the compiler. The
// standard-alphabet encoder hands whole blocks to the vector loop first
// where there is one (codec_vector.hpp).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "codec_vector.hpp"

namespace qvs::codec {

inline constexpr bool kLittleEndian = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;

// 64-bit shifts cost two or three instructions each on a 32-bit CPU, so
// there the encoders take 12 bytes as three 32-bit words instead.
inline constexpr bool kWideWords = sizeof(void *) >= 8;

// The size-optimised (armhf) build would otherwise call these per word.
#define QVS_CODEC_WORD [[gnu::always_inline]] inline

// Four input bytes, first byte highest.
QVS_CODEC_WORD std::uint32_t load32(const unsigned char *p) {
    std::uint32_t w;
    std::memcpy(&w, p, sizeof w);
    if constexpr (kLittleEndian) w = __builtin_bswap32(w);
    return w;
}

// Six input bytes as the top 48 bits of a 64-bit value, first byte highest;
// reads 8 bytes, so 8 must be readable.
QVS_CODEC_WORD std::uint64_t load48(const unsigned char *p) {
    std::uint64_t w;
    std::memcpy(&w, p, sizeof w);
    if constexpr (kLittleEndian) w = __builtin_bswap64(w);
    return w;
}

// Eight output characters, first character at the lowest address.
QVS_CODEC_WORD void store8(unsigned char *p, std::uint64_t first_lowest) {
    if constexpr (!kLittleEndian) first_lowest = __builtin_bswap64(first_lowest);
    std::memcpy(p, &first_lowest, sizeof first_lowest);
}

// Four output bytes, first at the lowest address.
QVS_CODEC_WORD void store4(unsigned char *p, std::uint32_t first_lowest) {
    if constexpr (!kLittleEndian) first_lowest = __builtin_bswap32(first_lowest);
    std::memcpy(p, &first_lowest, sizeof first_lowest);
}

// One group of three bytes as a 24-bit value, first byte highest.
QVS_CODEC_WORD std::uint32_t load_group(const unsigned char *p) {
    return static_cast<std::uint32_t>(p[0]) << 16 | static_cast<std::uint32_t>(p[1]) << 8 | p[2];
}

// A group's four characters in `chr`, first character in the low byte.
QVS_CODEC_WORD std::uint32_t group_chars(std::uint32_t g, const unsigned char *chr) {
    return static_cast<std::uint32_t>(chr[g >> 18]) | static_cast<std::uint32_t>(chr[(g >> 12) & 63u]) << 8 |
           static_cast<std::uint32_t>(chr[(g >> 6) & 63u]) << 16 | static_cast<std::uint32_t>(chr[g & 63u]) << 24;
}

// Encodes `groups` whole groups of three bytes with the 64-character
// alphabet `chr`, 4 characters per group (no NUL). Two groups per step while
// 8 input bytes are readable (four per 12 bytes on a 32-bit target), then one
// at a time. Returns the characters written.
inline std::size_t encode_groups(const unsigned char *__restrict in, std::size_t groups,
                                 unsigned char *__restrict out, const unsigned char *__restrict chr) {
    const unsigned char *const start = out;
    if constexpr (!kWideWords) {
        // Four groups (three words, exactly 12 bytes read) per step.
        for (; groups >= 4; groups -= 4) {
            std::uint32_t a = load32(in), b = load32(in + 4), c = load32(in + 8);
            store4(out, group_chars(a >> 8, chr));
            store4(out + 4, group_chars((a << 16 | b >> 16) & 0xFFFFFFu, chr));
            store4(out + 8, group_chars((b << 8 | c >> 24) & 0xFFFFFFu, chr));
            store4(out + 12, group_chars(c & 0xFFFFFFu, chr));
            in += 12;
            out += 16;
        }
    } else {
        // 6 bytes per step, but 8 are read: stop while a full step plus 2
        // more bytes of this call's groups remain.
        for (; groups >= 3; groups -= 2) {
            std::uint64_t w = load48(in);
            std::uint64_t v = static_cast<std::uint64_t>(chr[(w >> 58) & 63u]) |
                              static_cast<std::uint64_t>(chr[(w >> 52) & 63u]) << 8 |
                              static_cast<std::uint64_t>(chr[(w >> 46) & 63u]) << 16 |
                              static_cast<std::uint64_t>(chr[(w >> 40) & 63u]) << 24 |
                              static_cast<std::uint64_t>(chr[(w >> 34) & 63u]) << 32 |
                              static_cast<std::uint64_t>(chr[(w >> 28) & 63u]) << 40 |
                              static_cast<std::uint64_t>(chr[(w >> 22) & 63u]) << 48 |
                              static_cast<std::uint64_t>(chr[(w >> 16) & 63u]) << 56;
            store8(out, v);
            in += 6;
            out += 8;
        }
    }
    for (; groups > 0; --groups) {
        store4(out, group_chars(load_group(in), chr));
        in += 3;
        out += 4;
    }
    return static_cast<std::size_t>(out - start);
}

// Every 12-bit value as its two characters of the standard alphabet, first
// character in the low byte: one lookup per two characters.
[[gnu::visibility("hidden")]] extern const std::array<std::uint16_t, 4096> kStdPairs;

// A group's four characters through the pair table, first in the low byte.
QVS_CODEC_WORD std::uint32_t group_chars_std(std::uint32_t g, const std::uint16_t *pairs) {
    return static_cast<std::uint32_t>(pairs[g >> 12]) | static_cast<std::uint32_t>(pairs[g & 4095u]) << 16;
}

// The standard alphabet, NUL-terminated.
inline constexpr char kStdAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// As encode_groups, with the standard alphabet's pair table.
inline std::size_t encode_groups_std(const unsigned char *__restrict in, std::size_t groups,
                                     unsigned char *__restrict out) {
    const unsigned char *const start = out;
    const std::uint16_t *const pairs = kStdPairs.data();
#ifdef QVS_CODEC_VECTOR_BLOCKS
    // Blocks of four groups; each reads 16 bytes, so two groups must follow.
    if (groups >= 6) {
        std::size_t blocks = encode_blocks_std(in, (groups - 2) / 4, out);
        in += 12 * blocks;
        out += 16 * blocks;
        groups -= 4 * blocks;
    }
#endif
    if constexpr (!kWideWords) {
        // Four groups (three words, exactly 12 bytes read) per step, the
        // pair indices taken straight from the words.
        for (; groups >= 4; groups -= 4) {
            std::uint32_t a = load32(in), b = load32(in + 4), c = load32(in + 8);
            store4(out, pairs[a >> 20] | static_cast<std::uint32_t>(pairs[(a >> 8) & 4095u]) << 16);
            store4(out + 4, pairs[(a & 0xFFu) << 4 | b >> 28] |
                                static_cast<std::uint32_t>(pairs[(b >> 16) & 4095u]) << 16);
            store4(out + 8, pairs[(b >> 4) & 4095u] |
                                static_cast<std::uint32_t>(pairs[(b & 0xFu) << 8 | c >> 24]) << 16);
            store4(out + 12, pairs[(c >> 12) & 4095u] | static_cast<std::uint32_t>(pairs[c & 4095u]) << 16);
            in += 12;
            out += 16;
        }
    } else {
        for (; groups >= 5; groups -= 4) {
            std::uint64_t w = load48(in);
            std::uint64_t x = load48(in + 6);
            std::uint64_t v = static_cast<std::uint64_t>(pairs[(w >> 52) & 4095u]) |
                              static_cast<std::uint64_t>(pairs[(w >> 40) & 4095u]) << 16 |
                              static_cast<std::uint64_t>(pairs[(w >> 28) & 4095u]) << 32 |
                              static_cast<std::uint64_t>(pairs[(w >> 16) & 4095u]) << 48;
            std::uint64_t u = static_cast<std::uint64_t>(pairs[(x >> 52) & 4095u]) |
                              static_cast<std::uint64_t>(pairs[(x >> 40) & 4095u]) << 16 |
                              static_cast<std::uint64_t>(pairs[(x >> 28) & 4095u]) << 32 |
                              static_cast<std::uint64_t>(pairs[(x >> 16) & 4095u]) << 48;
            store8(out, v);
            store8(out + 8, u);
            in += 12;
            out += 16;
        }
    }
    for (; groups > 0; --groups) {
        store4(out, group_chars_std(load_group(in), pairs));
        in += 3;
        out += 4;
    }
    return static_cast<std::size_t>(out - start);
}

}  // namespace qvs::codec
