// SPDX-License-Identifier: MIT
// The strict, bounded Base64 codec (base64_*): lengths in the platform's
// size type, output cut at the caller's capacity, and a decoder that can be
// fed in pieces (skipping line feeds) through a caller-owned context.
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "codec_vector.hpp"
#include "codec_words.hpp"
#include "qvs_utils.h"

namespace qvs::base64 {
namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::array<signed char, 256> make_table() {
    std::array<signed char, 256> t{};
    for (auto &v : t) v = -1;
    for (int i = 0; i < 64; ++i) t[static_cast<unsigned char>(kAlphabet[i])] = static_cast<signed char>(i);
    return t;
}

constexpr std::array<signed char, 256> kDecode = make_table();

// Flag set in a combined quartet word when any character is outside the
// alphabet ('=' included).
constexpr std::uint32_t kBad = 1u << 31;

// Per quartet position, each character's value placed in the three output
// bytes (first byte in the low 8 bits), or the flag.
constexpr std::array<std::array<std::uint32_t, 256>, 4> make_shifted() {
    std::array<std::array<std::uint32_t, 256>, 4> t{};
    for (unsigned c = 0; c < 256; ++c) {
        auto v = static_cast<std::uint32_t>(kDecode[c]);
        bool bad = kDecode[c] < 0;
        t[0][c] = bad ? kBad : v << 2;
        t[1][c] = bad ? kBad : (v >> 4) | (v & 15u) << 12;
        t[2][c] = bad ? kBad : (v >> 2) << 8 | (v & 3u) << 22;
        t[3][c] = bad ? kBad : v << 16;
    }
    return t;
}

constexpr auto kShifted = make_shifted();

inline unsigned char uc(char c) { return static_cast<unsigned char>(c); }
inline bool in_alphabet(char c) { return kDecode[uc(c)] >= 0; }
inline unsigned value(char c) { return static_cast<unsigned>(kDecode[uc(c)]); }

// Output cursor: bytes beyond the capacity are dropped, not refused.
struct Sink {
    char *out;
    size_t left;
    void put(unsigned byte) {
        if (left != 0) {
            *out++ = static_cast<char>(byte & 0xFFu);
            --left;
        }
    }
};

// One quartet from `in`, of which `n` characters are available (more than 4
// when decoding straight from the caller's input). Padding must end the
// available characters exactly. Bytes are written up to the fault.
bool decode_quartet(const char *in, size_t n, Sink &sink) {
    if (n < 2) return false;
    if (!in_alphabet(in[0]) || !in_alphabet(in[1])) return false;
    sink.put((value(in[0]) << 2) | (value(in[1]) >> 4));
    if (n == 2) return false;
    if (in[2] == '=') {
        if (n != 4) return false;
        return in[3] == '=';
    }
    if (!in_alphabet(in[2])) return false;
    sink.put(((value(in[1]) << 4) & 0xF0u) | (value(in[2]) >> 2));
    if (n == 3) return false;
    if (in[3] == '=') return n == 4;
    if (!in_alphabet(in[3])) return false;
    sink.put(((value(in[2]) << 6) & 0xC0u) | value(in[3]));
    return true;
}

// Decodes whole, valid, unpadded quartets straight from the input while
// another quartet follows and the output has room for their bytes. Stops,
// consuming nothing of it, at the first quartet that needs the careful
// path (a character outside the alphabet, '=', the last quartet, little
// room left), which then decodes it exactly as before.
void decode_run(const char *&in, size_t &inlen, Sink &sink) {
    const auto *p = reinterpret_cast<const unsigned char *>(in);
    size_t n = inlen;
    auto *out = reinterpret_cast<unsigned char *>(sink.out);
    size_t left = sink.left;
    const auto &t = kShifted;
#ifdef QVS_CODEC_VECTOR_BLOCKS
    // The same blocks of four quartets as the loop below, where the CPU can.
    if (n >= 20 && left >= 12) {
        size_t blocks = (n - 4) / 16 < left / 12 ? (n - 4) / 16 : left / 12;
        blocks = qvs::codec::decode_blocks_strict(p, blocks, out);
        p += 16 * blocks;
        n -= 16 * blocks;
        out += 12 * blocks;
        left -= 12 * blocks;
    }
#endif
    // Four quartets (12 bytes, three words) at a time while a fifth follows.
    while (n >= 20 && left >= 12) {
        std::uint32_t a = t[0][p[0]] | t[1][p[1]] | t[2][p[2]] | t[3][p[3]];
        std::uint32_t b = t[0][p[4]] | t[1][p[5]] | t[2][p[6]] | t[3][p[7]];
        std::uint32_t c = t[0][p[8]] | t[1][p[9]] | t[2][p[10]] | t[3][p[11]];
        std::uint32_t d = t[0][p[12]] | t[1][p[13]] | t[2][p[14]] | t[3][p[15]];
        if (((a | b | c | d) & kBad) != 0) break;
        qvs::codec::store4(out, a | b << 24);
        qvs::codec::store4(out + 4, b >> 8 | c << 16);
        qvs::codec::store4(out + 8, c >> 16 | d << 8);
        p += 16;
        n -= 16;
        out += 12;
        left -= 12;
    }
    // Pairs of quartets while a third follows.
    while (n >= 12 && left >= 6) {
        std::uint32_t a = t[0][p[0]] | t[1][p[1]] | t[2][p[2]] | t[3][p[3]];
        std::uint32_t b = t[0][p[4]] | t[1][p[5]] | t[2][p[6]] | t[3][p[7]];
        if (((a | b) & kBad) != 0) break;
        qvs::codec::store4(out, a | b << 24);
        out[4] = static_cast<unsigned char>(b >> 8);
        out[5] = static_cast<unsigned char>(b >> 16);
        p += 8;
        n -= 8;
        out += 6;
        left -= 6;
    }
    // Then single quartets while another follows.
    while (n >= 8 && left >= 3) {
        std::uint32_t a = t[0][p[0]] | t[1][p[1]] | t[2][p[2]] | t[3][p[3]];
        if ((a & kBad) != 0) break;
        out[0] = static_cast<unsigned char>(a);
        out[1] = static_cast<unsigned char>(a >> 8);
        out[2] = static_cast<unsigned char>(a >> 16);
        p += 4;
        n -= 4;
        out += 3;
        left -= 3;
    }
    in = reinterpret_cast<const char *>(p);
    inlen = n;
    sink.out = reinterpret_cast<char *>(out);
    sink.left = left;
}

// Gathers the next quartet for the context path. Returns where its
// characters are (the input itself, or the context's buffer) and sets
// `count` to how many there are; `in` advances past what was consumed.
const char *gather_quartet(base64_decode_context &ctx, const char *&in, const char *end, size_t &count) {
    if (ctx.i == 4) ctx.i = 0;
    if (ctx.i == 0) {
        const char *start = in;
        if (end - in >= 4 && std::memchr(start, '\n', 4) == nullptr) {
            in += 4;
            count = 4;
            return start;
        }
    }
    while (in < end && ctx.i < 4) {
        char c = *in++;
        if (c != '\n') ctx.buf[ctx.i++] = c;
    }
    count = ctx.i;
    return ctx.buf;
}

}  // namespace
}  // namespace qvs::base64

using namespace qvs::base64;

extern "C" {

void base64_encode(const char *in, size_t inlen, char *out, size_t outlen) {
    // Every character is checked against the capacity, so the output can end
    // in the middle of a quartet.
    auto emit = [&](char c) {
        if (outlen == 0) return false;
        *out++ = c;
        --outlen;
        return true;
    };
    // Whole groups while there is room for all four characters.
    size_t groups = inlen / 3 < outlen / 4 ? inlen / 3 : outlen / 4;
    size_t written = qvs::codec::encode_groups_std(reinterpret_cast<const unsigned char *>(in), groups,
                                                   reinterpret_cast<unsigned char *>(out));
    in += groups * 3;
    inlen -= groups * 3;
    out += written;
    outlen -= written;
    while (inlen > 0) {
        unsigned a = uc(in[0]);
        unsigned b = inlen > 1 ? uc(in[1]) : 0u;
        unsigned c = inlen > 2 ? uc(in[2]) : 0u;
        if (!emit(kAlphabet[a >> 2])) return;
        if (!emit(kAlphabet[((a << 4) & 0x30u) | (b >> 4)])) return;
        if (!emit(inlen > 1 ? kAlphabet[((b << 2) & 0x3Cu) | (c >> 6)] : '=')) return;
        if (!emit(inlen > 2 ? kAlphabet[c & 0x3Fu] : '=')) return;
        if (inlen <= 3) {
            inlen = 0;
        } else {
            inlen -= 3;
            in += 3;
        }
    }
    if (outlen > 0) *out = '\0';
}

size_t base64_encode_alloc(const char *in, size_t inlen, char **out) {
    size_t encoded = ((inlen + 2) / 3) * 4;  // may wrap in the size type
    size_t capacity = encoded + 1;
    if (inlen > capacity) {
        *out = nullptr;
        return 0;
    }
    *out = static_cast<char *>(std::malloc(capacity));
    if (*out == nullptr) return static_cast<size_t>(-1);
    base64_encode(in, inlen, *out, capacity);
    return encoded;
}

bool isbase64(char ch) { return in_alphabet(ch); }

void base64_decode_ctx_init(struct base64_decode_context *ctx) { ctx->i = 0; }

bool base64_decode_ctx(struct base64_decode_context *ctx, const char *in, size_t inlen, char *out,
                       size_t *outlen) {
    Sink sink{out, *outlen};
    const bool with_ctx = ctx != nullptr;
    const bool flush = with_ctx && inlen == 0;
    for (;;) {
        Sink before = sink;
        // Fast path: whole quartets straight from the input.
        if ((!with_ctx || ctx->i == 0) && !flush) {
            for (;;) {
                decode_run(in, inlen, sink);
                before = sink;
                if (!decode_quartet(in, inlen, sink)) break;
                in += 4;
                inlen -= 4;
            }
        }
        if (inlen == 0 && !flush) break;
        if (inlen > 0 && *in == '\n' && with_ctx) {
            ++in;
            --inlen;
            continue;
        }
        // Undo the failed quartet's output before the slow path retries it.
        sink = before;
        if (!with_ctx) {
            // The rest of the input as one quartet, in place: a bad or short
            // tail fails here.
            decode_quartet(in, inlen, sink);
            break;
        }
        const char *end = in + inlen;
        size_t count = 0;
        const char *quartet = gather_quartet(*ctx, in, end, count);
        inlen = static_cast<size_t>(end - in);
        if (count == 0 || (count < 4 && !flush)) {
            // A partial quartet waits in the context for the next call.
            inlen = 0;
            break;
        }
        if (!decode_quartet(quartet, count, sink)) {
            inlen = count;  // not everything consumed: failure
            break;
        }
    }
    *outlen -= sink.left;
    return inlen == 0;
}

bool base64_decode_alloc_ctx(struct base64_decode_context *ctx, const char *in, size_t inlen, char **out,
                             size_t *outlen) {
    size_t needed = 3 * (inlen / 4) + 2;
    *out = static_cast<char *>(std::malloc(needed));
    if (*out == nullptr) return true;
    if (!base64_decode_ctx(ctx, in, inlen, *out, &needed)) {
        std::free(*out);
        *out = nullptr;
        return false;
    }
    if (outlen != nullptr) *outlen = needed;
    return true;
}

}  // extern "C"
