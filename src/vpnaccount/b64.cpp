// SPDX-License-Identifier: MIT
// The small, lenient Base64 codec (b64_*): 32-bit sizes, no bounds, no
// failures. Its alphabet is the exported, writable table b64_chr, so a
// process that changes the table changes what b64_encode writes.
#include <array>
#include <cstdint>
#include <cstring>

#include "codec_vector.hpp"
#include "codec_words.hpp"
#include "qvs_utils.h"

namespace {

// The lenient values of b64_int as a table: '=' is 64, anything outside
// the alphabet 0.
constexpr unsigned lenient_value(unsigned ch) {
    if (ch == '+') return 62;
    if (ch == '/') return 63;
    if (ch == '=') return 64;
    if (ch >= '0' && ch <= '9') return ch - '0' + 52;
    if (ch >= 'A' && ch <= 'Z') return ch - 'A';
    if (ch >= 'a' && ch <= 'z') return ch - 'a' + 26;
    return 0;
}

// Flag set in the combined word when the third or fourth character is '='.
constexpr std::uint32_t kPadFlag = 1u << 24;

// Per quartet position, each character's value already placed in the three
// output bytes (first byte in the low 8 bits) so that OR-ing the four
// entries gives the bytes. In the first two positions '=' (64) adds nothing
// to the low 8 bits of the bytes it feeds, the same as value 0; in the last
// two it sets the padding flag instead.
constexpr std::array<std::array<std::uint32_t, 256>, 4> make_lenient() {
    std::array<std::array<std::uint32_t, 256>, 4> t{};
    for (unsigned c = 0; c < 256; ++c) {
        unsigned v = lenient_value(c);
        unsigned low = v & 63u;
        t[0][c] = low << 2;
        t[1][c] = (low >> 4) | (low & 15u) << 12;
        t[2][c] = v == 64u ? kPadFlag : (v >> 2) << 8 | (v & 3u) << 22;
        t[3][c] = v == 64u ? kPadFlag : v << 16;
    }
    return t;
}

constexpr auto kLenient = make_lenient();

// One quartet by the formulas, each byte cut to its low 8 bits; '=' in the
// third position ends the quartet after one byte, in the fourth after two.
std::uint32_t decode_quartet(const unsigned char *in, unsigned char *out, std::uint32_t j) {
    unsigned c0 = lenient_value(in[0]), c1 = lenient_value(in[1]);
    unsigned c2 = lenient_value(in[2]), c3 = lenient_value(in[3]);
    out[j++] = static_cast<unsigned char>((c0 << 2) | ((c1 >> 4) & 3u));
    if (c2 != 64u) {
        out[j++] = static_cast<unsigned char>(((c2 >> 2) & 15u) + (c1 << 4));
        if (c3 != 64u) out[j++] = static_cast<unsigned char>(c3 + (c2 << 6));
    }
    return j;
}

}  // namespace

extern "C" {

char b64_chr[65] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

unsigned int b64_int(unsigned int ch) { return lenient_value(ch); }

unsigned int b64e_size(unsigned int in_size) {
    // One quartet for every input position i with i mod 3 == 0, counted
    // without overflow; only the final multiplication by 4 wraps at 2^32.
    std::uint32_t groups = in_size / 3u + (in_size % 3u != 0u ? 1u : 0u);
    return static_cast<std::uint32_t>(groups * 4u);
}

unsigned int b64d_size(unsigned int in_size) {
    return static_cast<std::uint32_t>(static_cast<std::uint32_t>(3u * in_size) >> 2);
}

unsigned int b64_encode(const unsigned char *in, unsigned int len, unsigned char *out) {
    // The alphabet is read from b64_chr on every call: a local copy made now
    // follows any change the program made to the table before this call.
    unsigned char chr[64];
    std::memcpy(chr, b64_chr, sizeof chr);
    const std::uint32_t groups = len / 3u;
    // While the table holds the standard alphabet, its pair table (two
    // characters per lookup) gives the same characters.
    std::uint32_t j = std::memcmp(chr, qvs::codec::kStdAlphabet, sizeof chr) == 0
                          ? static_cast<std::uint32_t>(qvs::codec::encode_groups_std(in, groups, out))
                          : static_cast<std::uint32_t>(qvs::codec::encode_groups(in, groups, out, chr));
    std::uint32_t i = groups * 3u;
    if (len - i == 1u) {
        unsigned a = in[i];
        out[j++] = chr[a >> 2];
        out[j++] = chr[(a << 4) & 0x30u];
        out[j++] = '=';
        out[j++] = '=';
    } else if (len - i == 2u) {
        unsigned a = in[i], b = in[i + 1];
        out[j++] = chr[a >> 2];
        out[j++] = chr[((a << 4) & 0x30u) | (b >> 4)];
        out[j++] = chr[(b << 2) & 0x3Cu];
        out[j++] = '=';
    }
    out[j] = '\0';
    return j;
}

unsigned int b64_decode(const unsigned char *in, unsigned int len, unsigned char *out) {
    if (len == 0u) return 0;
    std::uint32_t i = 0;
    std::uint32_t j = 0;
    // Whole quartets only: a trailing group of 1 to 3 characters is dropped.
    // Unpadded quartets are stored as words whose bytes past the quartet's
    // three the next quartets overwrite, so this needs quartets to follow:
    // two for a pair stored as 8 bytes, one for a single stored as 4.
    const auto &t = kLenient;
#ifdef QVS_CODEC_VECTOR_BLOCKS
    // Blocks of four quartets while a fifth follows, as the loop below.
    if (len >= 20u) {
        std::uint32_t blocks = static_cast<std::uint32_t>(
            qvs::codec::decode_blocks_lenient(in, (len - 4u) / 16u, out));
        i = blocks * 16u;
        j = blocks * 12u;
    }
#endif
    // Four unpadded quartets are exactly three words.
    for (; len - i >= 20u; i += 16u) {
        const unsigned char *p = in + i;
        std::uint32_t a = t[0][p[0]] | t[1][p[1]] | t[2][p[2]] | t[3][p[3]];
        std::uint32_t b = t[0][p[4]] | t[1][p[5]] | t[2][p[6]] | t[3][p[7]];
        std::uint32_t c = t[0][p[8]] | t[1][p[9]] | t[2][p[10]] | t[3][p[11]];
        std::uint32_t d = t[0][p[12]] | t[1][p[13]] | t[2][p[14]] | t[3][p[15]];
        if (((a | b | c | d) & kPadFlag) != 0u) break;
        qvs::codec::store4(out + j, a | b << 24);
        qvs::codec::store4(out + j + 4, b >> 8 | c << 16);
        qvs::codec::store4(out + j + 8, c >> 16 | d << 8);
        j += 12;
    }
    for (; len - i >= 16u; i += 8u) {
        const unsigned char *p = in + i;
        std::uint32_t a = t[0][p[0]] | t[1][p[1]] | t[2][p[2]] | t[3][p[3]];
        std::uint32_t b = t[0][p[4]] | t[1][p[5]] | t[2][p[6]] | t[3][p[7]];
        if (((a | b) & kPadFlag) == 0u) {
            qvs::codec::store8(out + j, a | static_cast<std::uint64_t>(b) << 24);
            j += 6;
        } else {
            j = decode_quartet(p, out, j);
            j = decode_quartet(p + 4, out, j);
        }
    }
    for (; len - i >= 8u; i += 4u) {
        const unsigned char *p = in + i;
        std::uint32_t a = t[0][p[0]] | t[1][p[1]] | t[2][p[2]] | t[3][p[3]];
        if ((a & kPadFlag) == 0u) {
            qvs::codec::store4(out + j, a);
            j += 3;
        } else {
            j = decode_quartet(p, out, j);
        }
    }
    for (; len - i >= 4u; i += 4u) j = decode_quartet(in + i, out, j);
    return j;
}

}  // extern "C"
