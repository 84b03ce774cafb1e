// Word-at-a-time helpers shared by the two Base64 codecs: portable scalar
// code (no vector instructions), byte order taken from the compiler.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace qvs::codec {

inline constexpr bool kLittleEndian = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;

// Six input bytes as the top 48 bits of a 64-bit value, first byte highest;
// reads 8 bytes, so 8 must be readable.
inline std::uint64_t load48(const unsigned char *p) {
    std::uint64_t w;
    std::memcpy(&w, p, sizeof w);
    if constexpr (kLittleEndian) w = __builtin_bswap64(w);
    return w;
}

// Eight output characters, first character at the lowest address.
inline void store8(unsigned char *p, std::uint64_t first_lowest) {
    if constexpr (!kLittleEndian) first_lowest = __builtin_bswap64(first_lowest);
    std::memcpy(p, &first_lowest, sizeof first_lowest);
}

// Four output bytes, first at the lowest address.
inline void store4(unsigned char *p, std::uint32_t first_lowest) {
    if constexpr (!kLittleEndian) first_lowest = __builtin_bswap32(first_lowest);
    std::memcpy(p, &first_lowest, sizeof first_lowest);
}

// Encodes `groups` whole groups of three bytes with the 64-character
// alphabet `chr`, 4 characters per group (no NUL). Two groups per step while
// 8 input bytes are readable, then one at a time. Returns the characters
// written.
inline std::size_t encode_groups(const unsigned char *__restrict in, std::size_t groups,
                                 unsigned char *__restrict out, const unsigned char *__restrict chr) {
    const unsigned char *const start = out;
    // 6 bytes per step, but 8 are read: stop while a full step plus 2 more
    // bytes of this call's groups remain.
    while (groups >= 3) {
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
        groups -= 2;
    }
    for (; groups > 0; --groups) {
        unsigned a = in[0], b = in[1], c = in[2];
        std::uint32_t v = static_cast<std::uint32_t>(chr[a >> 2]) |
                          static_cast<std::uint32_t>(chr[((a << 4) & 0x30u) | (b >> 4)]) << 8 |
                          static_cast<std::uint32_t>(chr[((b << 2) & 0x3Cu) | (c >> 6)]) << 16 |
                          static_cast<std::uint32_t>(chr[c & 0x3Fu]) << 24;
        store4(out, v);
        in += 3;
        out += 4;
    }
    return static_cast<std::size_t>(out - start);
}

}  // namespace qvs::codec
