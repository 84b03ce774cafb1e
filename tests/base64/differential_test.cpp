// SPDX-License-Identifier: MIT
// Both codecs against straightforward reference codecs written here from
// their rules: 100,000 random inputs per codec (lengths 0 to 4099, garbage,
// padding and whitespace injected), comparing results, lengths, decoding
// contexts and every byte of the caller's buffers, including the bytes
// that must stay untouched past what was written.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "qvs_utils.h"

namespace {

// QVS_DIFFERENTIAL_ROUNDS lowers the count for slow runs (make valgrind,
// where 100,000 rounds per codec take hours under memcheck).
int rounds() {
    static const int n = [] {
        const char *env = std::getenv("QVS_DIFFERENTIAL_ROUNDS");
        const int v = env != nullptr ? std::atoi(env) : 0;
        return v > 0 ? v : 100000;
    }();
    return n;
}
constexpr std::size_t kMaxLen = 4099;
constexpr unsigned char kFill = 0xA5;
const char kStd[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// ---- references ----------------------------------------------------------

// The lenient character values: letters, digits, '+', '/', '=' as 64,
// anything else 0.
unsigned ref_b64_int(unsigned char c) {
    if (c >= 'A' && c <= 'Z') return c - 'A';
    if (c >= 'a' && c <= 'z') return 26u + (c - 'a');
    if (c >= '0' && c <= '9') return 52u + (c - '0');
    if (c == '+') return 62;
    if (c == '/') return 63;
    if (c == '=') return 64;
    return 0;
}

// Encodes from the given alphabet with '=' padding.
std::string ref_encode(const std::vector<unsigned char> &in, const char *alphabet) {
    std::string s;
    s.reserve((in.size() + 2) / 3 * 4);
    std::size_t i = 0;
    while (i < in.size()) {
        std::size_t left = in.size() - i;
        unsigned a = in[i];
        unsigned b = left > 1 ? in[i + 1] : 0u;
        unsigned c = left > 2 ? in[i + 2] : 0u;
        s += alphabet[a >> 2];
        s += alphabet[((a & 3u) << 4) | (b >> 4)];
        s += left > 1 ? alphabet[((b & 15u) << 2) | (c >> 6)] : '=';
        s += left > 2 ? alphabet[c & 63u] : '=';
        i += left > 3 ? 3 : left;
    }
    return s;
}

std::vector<unsigned char> ref_b64_decode(const std::string &in) {
    std::vector<unsigned char> out;
    out.reserve(in.size() / 4 * 3);
    for (std::size_t i = 0; i + 4 <= in.size(); i += 4) {
        unsigned c0 = ref_b64_int(static_cast<unsigned char>(in[i]));
        unsigned c1 = ref_b64_int(static_cast<unsigned char>(in[i + 1]));
        unsigned c2 = ref_b64_int(static_cast<unsigned char>(in[i + 2]));
        unsigned c3 = ref_b64_int(static_cast<unsigned char>(in[i + 3]));
        out.push_back(static_cast<unsigned char>(((c0 << 2) | ((c1 >> 4) & 3u)) & 0xFFu));
        if (c2 == 64) continue;
        out.push_back(static_cast<unsigned char>((((c2 >> 2) & 15u) + (c1 << 4)) & 0xFFu));
        if (c3 == 64) continue;
        out.push_back(static_cast<unsigned char>((c3 + (c2 << 6)) & 0xFFu));
    }
    return out;
}

// The strict values: the position in the alphabet, or -1.
struct StrictValues {
    int v[256];
    StrictValues() {
        for (int &x : v) x = -1;
        for (int k = 0; k < 64; ++k) v[static_cast<unsigned char>(kStd[k])] = k;
    }
};
const StrictValues kValues;

int ref_value(char c) { return kValues.v[static_cast<unsigned char>(c)]; }

// A caller's output buffer as the strict decoder sees it: writes land while
// capacity is left; an undo moves the position back but leaves the bytes.
struct RefSink {
    std::vector<unsigned char> buf;
    std::size_t base = 0;
    std::size_t cap = 0;
    std::size_t pos = 0;
    void put(unsigned v) {
        if (pos < cap) buf[base + pos] = static_cast<unsigned char>(v & 0xFFu);
        if (pos < cap) ++pos;
    }
};

bool ref_quartet(const char *q, std::size_t n, RefSink &o) {
    if (n < 2) return false;
    int a = ref_value(q[0]);
    int b = ref_value(q[1]);
    if (a < 0 || b < 0) return false;
    o.put(static_cast<unsigned>((a << 2) | (b >> 4)));
    if (n == 2) return false;
    if (q[2] == '=') return n == 4 && q[3] == '=';
    int c = ref_value(q[2]);
    if (c < 0) return false;
    o.put(static_cast<unsigned>(((b & 15) << 4) | (c >> 2)));
    if (n == 3) return false;
    if (q[3] == '=') return n == 4;
    int d = ref_value(q[3]);
    if (d < 0) return false;
    o.put(static_cast<unsigned>(((c & 3) << 6) | d));
    return true;
}

struct RefCtx {
    unsigned i = 0;
    char buf[4] = {0, 0, 0, 0};
};

// One call of the strict decoder: whole quartets straight from the input,
// line feeds skipped with a context, quartets gathered across calls in the
// context, a flush on empty input with a context.
bool ref_decode(RefCtx *ctx, const std::string &in, RefSink &o) {
    std::size_t p = 0;
    const std::size_t n = in.size();
    const bool flush = ctx != nullptr && n == 0;
    for (;;) {
        std::size_t mark = o.pos;
        if ((ctx == nullptr || ctx->i == 0) && !flush) {
            for (;;) {
                mark = o.pos;
                if (!ref_quartet(in.data() + p, n - p, o)) break;
                p += 4;
            }
        }
        if (p == n && !flush) return true;
        if (p < n && in[p] == '\n' && ctx != nullptr) {
            ++p;
            continue;
        }
        o.pos = mark;
        if (ctx == nullptr) {
            ref_quartet(in.data() + p, n - p, o);
            return false;
        }
        if (ctx->i == 4) ctx->i = 0;
        const char *q = ctx->buf;
        std::size_t count = 0;
        if (ctx->i == 0 && n - p >= 4 && in.substr(p, 4).find('\n') == std::string::npos) {
            q = in.data() + p;
            count = 4;
            p += 4;
        } else {
            while (p < n && ctx->i < 4) {
                char c = in[p++];
                if (c != '\n') ctx->buf[ctx->i++] = c;
            }
            count = ctx->i;
        }
        if (count == 0 || (count < 4 && !flush)) return true;
        if (!ref_quartet(q, count, o)) return false;
    }
}

// ---- random inputs -------------------------------------------------------

struct Rng {
    std::mt19937 gen{20261123u};
    std::size_t below(std::size_t n) { return std::uniform_int_distribution<std::size_t>(0, n - 1)(gen); }
    unsigned char byte() { return static_cast<unsigned char>(below(256)); }
};

void fill_random(Rng &r, std::vector<unsigned char> &v) {
    for (std::size_t k = 0; k < v.size(); k += 4) {
        std::uint32_t w = r.gen();
        for (std::size_t b = 0; b < 4 && k + b < v.size(); ++b) v[k + b] = static_cast<unsigned char>(w >> (8 * b));
    }
}

std::vector<unsigned char> random_bytes(Rng &r) {
    std::vector<unsigned char> v(r.below(kMaxLen + 1));
    fill_random(r, v);
    return v;
}

// True when every byte from `from` on still holds the fill pattern.
bool untouched(const std::vector<unsigned char> &v, std::size_t from) {
    for (std::size_t k = from; k < v.size(); ++k)
        if (v[k] != kFill) return false;
    return true;
}

// Valid Base64 of random bytes, then (mostly) damaged: garbage bytes,
// padding, line feeds and other whitespace at random places, random cuts.
std::string random_text(Rng &r) {
    std::vector<unsigned char> raw(r.below(kMaxLen * 3 / 4 + 1));
    fill_random(r, raw);
    std::string s = ref_encode(raw, kStd);
    static const char kWhite[] = "\n\n\n \r\t";
    std::size_t damage = r.below(4) == 0 ? 0 : r.below(8);
    for (std::size_t k = 0; k < damage && !s.empty(); ++k) {
        std::size_t at = r.below(s.size());
        switch (r.below(6)) {
        case 0: s[at] = static_cast<char>(r.byte()); break;
        case 1: s[at] = '='; break;
        case 2: s.insert(at, 1, kWhite[r.below(sizeof kWhite - 1)]); break;
        case 3: s.insert(at, 1, '\n'); break;
        case 4: s.insert(at, "=="); break;
        default: s.resize(at); break;
        }
    }
    if (s.size() > kMaxLen) s.resize(kMaxLen);
    return s;
}

std::vector<unsigned char> filled(std::size_t n) { return std::vector<unsigned char>(n, kFill); }

}  // namespace

TEST(Base64Differential, LenientCodecMatchesTheReferenceOnRandomInputs) {
    Rng r;
    char saved[65];
    std::memcpy(saved, b64_chr, sizeof saved);
    char alphabet[65];
    for (int round = 0; round < rounds(); ++round) {
        // Now and then the program changes the exported alphabet: the next
        // encoding must follow it.
        if (r.below(50) == 0) {
            for (int k = 0; k < 64; ++k) b64_chr[k] = static_cast<char>(r.byte());
        } else if (r.below(50) == 0) {
            std::memcpy(b64_chr, saved, sizeof saved);
        }
        std::memcpy(alphabet, b64_chr, sizeof alphabet);

        std::vector<unsigned char> raw = random_bytes(r);
        const auto len = static_cast<unsigned>(raw.size());
        std::string want = ref_encode(raw, alphabet);
        std::vector<unsigned char> out = filled(b64e_size(len) + 1 + 8);
        unsigned got = b64_encode(raw.data(), len, out.data());
        ASSERT_EQ(got, want.size()) << "round " << round << ", " << len << " bytes";
        ASSERT_EQ(std::memcmp(out.data(), want.data(), want.size()), 0) << "round " << round;
        ASSERT_EQ(out[want.size()], 0) << "round " << round;
        ASSERT_TRUE(untouched(out, want.size() + 1)) << "round " << round;

        // Decoding: random text, or (one round in four) random bytes.
        std::string text;
        if (r.below(4) == 0) {
            std::vector<unsigned char> junk = random_bytes(r);
            text.assign(junk.begin(), junk.end());
        } else {
            text = random_text(r);
        }
        std::vector<unsigned char> expect = ref_b64_decode(text);
        const auto tlen = static_cast<unsigned>(text.size());
        std::vector<unsigned char> dec = filled(b64d_size(tlen) + 8);
        unsigned n = b64_decode(reinterpret_cast<const unsigned char *>(text.data()), tlen, dec.data());
        ASSERT_EQ(n, expect.size()) << "round " << round << ", " << tlen << " characters";
        ASSERT_TRUE(std::equal(expect.begin(), expect.end(), dec.begin())) << "round " << round;
        ASSERT_TRUE(untouched(dec, expect.size())) << "round " << round;
    }
    std::memcpy(b64_chr, saved, sizeof saved);
}

TEST(Base64Differential, StrictEncoderMatchesTheReferenceAtEveryCapacity) {
    Rng r;
    for (int round = 0; round < rounds(); ++round) {
        std::vector<unsigned char> raw = random_bytes(r);
        std::string full = ref_encode(raw, kStd);
        // Capacities around the exact size, and anywhere below it.
        std::size_t cap = 0;
        switch (r.below(4)) {
        case 0: cap = full.size() + 1; break;
        case 1: cap = full.size() + r.below(8); break;
        case 2: cap = full.size() > 8 ? full.size() - r.below(8) : r.below(9); break;
        default: cap = r.below(full.size() + 2); break;
        }
        std::vector<unsigned char> out = filled(cap + 8);
        base64_encode(reinterpret_cast<const char *>(raw.data()), raw.size(), reinterpret_cast<char *>(out.data()),
                      cap);
        std::size_t written = full.size() < cap ? full.size() : cap;
        ASSERT_EQ(std::memcmp(out.data(), full.data(), written), 0) << "round " << round << ", capacity " << cap;
        std::size_t k = written;
        if (cap > full.size()) {
            ASSERT_EQ(out[k], 0) << "round " << round;
            ++k;
        }
        ASSERT_TRUE(untouched(out, k)) << "round " << round << ", capacity " << cap;

        if (round % 16 == 0) {
            char *alloc = nullptr;
            std::size_t len = base64_encode_alloc(reinterpret_cast<const char *>(raw.data()), raw.size(), &alloc);
            ASSERT_NE(alloc, nullptr);
            ASSERT_EQ(len, full.size());
            ASSERT_EQ(std::string(alloc), full);
            std::free(alloc);
        }
    }
}

TEST(Base64Differential, StrictDecoderMatchesTheReferenceInPiecesAndWhole) {
    Rng r;
    for (int round = 0; round < rounds(); ++round) {
        std::string text = random_text(r);
        // A capacity that is usually enough, sometimes short.
        std::size_t need = 3 * (text.size() / 4) + 2;
        std::size_t cap = r.below(5) == 0 ? r.below(need + 1) : need;

        // Without a context, in one call.
        {
            std::vector<unsigned char> out = filled(cap + 8);
            RefSink ref{filled(cap + 8), 0, cap, 0};
            bool want = ref_decode(nullptr, text, ref);
            std::size_t len = cap;
            bool got = base64_decode_ctx(nullptr, text.data(), text.size(), reinterpret_cast<char *>(out.data()), &len);
            ASSERT_EQ(got, want) << "round " << round << " without a context";
            ASSERT_EQ(len, ref.pos) << "round " << round << " without a context";
            ASSERT_EQ(out, ref.buf) << "round " << round << " without a context";
        }

        // With a context, fed in 1 to 6 pieces as a streaming caller would,
        // then (mostly) flushed.
        {
            std::vector<unsigned char> out = filled(cap + 8);
            RefSink ref{filled(cap + 8), 0, cap, 0};
            base64_decode_context ctx;
            base64_decode_ctx_init(&ctx);
            RefCtx rctx;
            std::size_t pieces = 1 + r.below(6);
            std::size_t at = 0;
            std::size_t used = 0;
            for (std::size_t k = 0; k <= pieces; ++k) {
                std::string piece;
                if (k < pieces) {
                    std::size_t take = k + 1 == pieces ? text.size() - at : r.below(text.size() - at + 1);
                    piece = text.substr(at, take);
                    at += take;
                } else if (r.below(4) == 0) {
                    break;  // no flush call
                }
                ref.base = used;
                ref.cap = cap - used;
                ref.pos = 0;
                bool want = ref_decode(&rctx, piece, ref);
                std::size_t len = cap - used;
                bool got = base64_decode_ctx(&ctx, piece.data(), piece.size(),
                                             reinterpret_cast<char *>(out.data() + used), &len);
                ASSERT_EQ(got, want) << "round " << round << ", call " << k;
                ASSERT_EQ(len, ref.pos) << "round " << round << ", call " << k;
                ASSERT_EQ(ctx.i, rctx.i) << "round " << round << ", call " << k;
                ASSERT_EQ(std::memcmp(ctx.buf, rctx.buf, ctx.i < 4 ? ctx.i : 4), 0) << "round " << round;
                ASSERT_EQ(out, ref.buf) << "round " << round << ", call " << k;
                used += len;
                if (!got) break;
            }
        }

        // The allocating decoder shares the path.
        if (round % 16 == 0) {
            base64_decode_context ctx;
            base64_decode_ctx_init(&ctx);
            RefCtx rctx;
            std::size_t size = 3 * (text.size() / 4) + 2;
            RefSink ref{filled(size), 0, size, 0};
            bool want = ref_decode(&rctx, text, ref);
            char *out = nullptr;
            std::size_t len = 0;
            bool got = base64_decode_alloc_ctx(&ctx, text.data(), text.size(), &out, &len);
            ASSERT_EQ(got, want) << "round " << round;
            if (want) {
                ASSERT_NE(out, nullptr);
                ASSERT_EQ(len, ref.pos);
                ASSERT_EQ(std::memcmp(out, ref.buf.data(), len), 0) << "round " << round;
            } else {
                ASSERT_EQ(out, nullptr);
            }
            std::free(out);
        }
    }
}
