// The small, lenient Base64 codec (b64_*): 32-bit sizes, no bounds, no
// failures. Its alphabet is the exported, writable table b64_chr, so a
// process that changes the table changes what b64_encode writes.
#include <cstdint>

#include "qvs_utils.h"

extern "C" {

char b64_chr[65] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

unsigned int b64_int(unsigned int ch) {
    if (ch == '+') return 62;
    if (ch == '/') return 63;
    if (ch == '=') return 64;
    if (ch >= '0' && ch <= '9') return ch - '0' + 52;
    if (ch >= 'A' && ch <= 'Z') return ch - 'A';
    if (ch >= 'a' && ch <= 'z') return ch - 'a' + 26;
    return 0;
}

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
    std::uint32_t i = 0;
    std::uint32_t j = 0;
    for (; len - i >= 3u; i += 3u) {
        unsigned a = in[i], b = in[i + 1], c = in[i + 2];
        out[j++] = static_cast<unsigned char>(b64_chr[a >> 2]);
        out[j++] = static_cast<unsigned char>(b64_chr[((a << 4) & 0x30u) | (b >> 4)]);
        out[j++] = static_cast<unsigned char>(b64_chr[((b << 2) & 0x3Cu) | (c >> 6)]);
        out[j++] = static_cast<unsigned char>(b64_chr[c & 0x3Fu]);
    }
    if (len - i == 1u) {
        unsigned a = in[i];
        out[j++] = static_cast<unsigned char>(b64_chr[a >> 2]);
        out[j++] = static_cast<unsigned char>(b64_chr[(a << 4) & 0x30u]);
        out[j++] = '=';
        out[j++] = '=';
    } else if (len - i == 2u) {
        unsigned a = in[i], b = in[i + 1];
        out[j++] = static_cast<unsigned char>(b64_chr[a >> 2]);
        out[j++] = static_cast<unsigned char>(b64_chr[((a << 4) & 0x30u) | (b >> 4)]);
        out[j++] = static_cast<unsigned char>(b64_chr[(b << 2) & 0x3Cu]);
        out[j++] = '=';
    }
    out[j] = '\0';
    return j;
}

unsigned int b64_decode(const unsigned char *in, unsigned int len, unsigned char *out) {
    if (len == 0u) return 0;
    std::uint32_t j = 0;
    unsigned c[4];
    // Whole quartets only: a trailing group of 1 to 3 characters is dropped.
    for (std::uint32_t i = 0; len - i >= 4u; i += 4u) {
        for (int k = 0; k < 4; ++k) c[k] = b64_int(in[i + static_cast<std::uint32_t>(k)]);
        out[j++] = static_cast<unsigned char>((c[0] << 2) | ((c[1] >> 4) & 3u));
        if (c[2] != 64u) {
            out[j++] = static_cast<unsigned char>(((c[2] >> 2) & 15u) + (c[1] << 4));
            if (c[3] != 64u) out[j++] = static_cast<unsigned char>(c[3] + (c[2] << 6));
        }
    }
    return j;
}

}  // extern "C"
