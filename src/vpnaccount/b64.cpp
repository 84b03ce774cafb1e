// The small, lenient Base64 codec (b64_*): 32-bit sizes, no bounds, no
// failures. Its alphabet is the exported, writable table b64_chr, so a
// process that changes the table changes what b64_encode writes.
#include <array>
#include <cstdint>
#include <cstring>

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

// Per quartet position, each character's value already shifted into its
// place in the 24-bit group. In the first two positions '=' (64) adds
// nothing to the low 8 bits of the bytes it feeds, the same as value 0;
// in the last two it sets the padding flag instead.
constexpr std::array<std::array<std::uint32_t, 256>, 4> make_lenient() {
    std::array<std::array<std::uint32_t, 256>, 4> t{};
    for (unsigned c = 0; c < 256; ++c) {
        unsigned v = lenient_value(c);
        t[0][c] = (v & 63u) << 18;
        t[1][c] = (v & 63u) << 12;
        t[2][c] = v == 64u ? kPadFlag : v << 6;
        t[3][c] = v == 64u ? kPadFlag : v;
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
    std::uint32_t j = static_cast<std::uint32_t>(qvs::codec::encode_groups(in, groups, out, chr));
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
    // While another quartet follows, an unpadded quartet is stored as one
    // 4-byte word whose fourth byte the next quartet overwrites.
    for (; len - i >= 8u; i += 4u) {
        std::uint32_t w = kLenient[0][in[i]] | kLenient[1][in[i + 1]] | kLenient[2][in[i + 2]] |
                          kLenient[3][in[i + 3]];
        if ((w & kPadFlag) == 0u) {
            qvs::codec::store4(out + j, (w >> 16) | (w & 0xFF00u) | ((w & 0xFFu) << 16));
            j += 3;
        } else {
            j = decode_quartet(in + i, out, j);
        }
    }
    for (; len - i >= 4u; i += 4u) j = decode_quartet(in + i, out, j);
    return j;
}

}  // extern "C"
