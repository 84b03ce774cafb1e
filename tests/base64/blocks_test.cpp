// SPDX-License-Identifier: MIT
// The codecs' block loops (16 characters, four quartets, at a time)
// against the same input coded a group, a quartet or a character at a
// time, which only the careful per-quartet code handles: every length
// around the block boundaries, every byte value at places all over the
// blocks, capacities ending inside a block, misaligned input. Results, lengths, contexts and
// the bytes written must agree (without a context, the whole buffers).
#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "qvs_utils.h"

namespace {

constexpr unsigned char kFill = 0x5A;
const char kStd[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Random characters of the alphabet (any four are a valid quartet).
std::string alphabet_text(std::size_t n, unsigned seed) {
    std::mt19937 gen(seed);
    std::string s(n, 'A');
    for (auto &c : s) c = kStd[gen() % 64];
    return s;
}

// The text at a chosen misalignment inside a larger buffer, so that block
// loads start anywhere.
struct Placed {
    std::vector<char> storage;
    const char *text;
    std::size_t len;
    Placed(const std::string &s, std::size_t shift) : storage(s.size() + 16, '\0') {
        std::copy(s.begin(), s.end(), storage.begin() + static_cast<std::ptrdiff_t>(shift));
        text = storage.data() + shift;
        len = s.size();
    }
    const unsigned char *bytes() const { return reinterpret_cast<const unsigned char *>(text); }
};

struct Strict {
    bool ok;
    std::size_t len;
    std::vector<unsigned char> out;
};

// ---- lenient ---------------------------------------------------------------

std::vector<unsigned char> lenient_whole(const Placed &in) {
    std::vector<unsigned char> out(b64d_size(static_cast<unsigned>(in.len)) + 16, kFill);
    unsigned n = b64_decode(in.bytes(), static_cast<unsigned>(in.len), out.data());
    EXPECT_LE(n, b64d_size(static_cast<unsigned>(in.len)));
    out.resize(n);
    return out;
}

// Quartet by quartet: each call sees one quartet only.
std::vector<unsigned char> lenient_by_quartets(const Placed &in) {
    std::vector<unsigned char> out;
    for (std::size_t p = 0; p + 4 <= in.len; p += 4) {
        unsigned char q[3];
        unsigned n = b64_decode(in.bytes() + p, 4, q);
        out.insert(out.end(), q, q + n);
    }
    return out;
}

// Both, and nothing written past the decoded bytes.
void expect_lenient_agrees(const Placed &in, const std::string &what) {
    std::vector<unsigned char> buf(b64d_size(static_cast<unsigned>(in.len)) + 16, kFill);
    unsigned n = b64_decode(in.bytes(), static_cast<unsigned>(in.len), buf.data());
    std::vector<unsigned char> want = lenient_by_quartets(in);
    ASSERT_EQ(n, want.size()) << what;
    ASSERT_TRUE(std::equal(want.begin(), want.end(), buf.begin())) << what;
    for (std::size_t k = n; k < buf.size(); ++k) ASSERT_EQ(buf[k], kFill) << what << ", byte " << k;
}

// ---- strict, without a context -----------------------------------------

Strict strict_whole(const Placed &in, std::size_t cap) {
    Strict r{false, cap, std::vector<unsigned char>(cap + 16, kFill)};
    r.ok = base64_decode_ctx(nullptr, in.text, in.len, reinterpret_cast<char *>(r.out.data()), &r.len);
    return r;
}

// Plain quartets one call each; from the first quartet that is not four
// alphabet characters, the rest in one call, which then starts at a quartet
// that no block or word loop takes.
Strict strict_by_quartets(const Placed &in, std::size_t cap) {
    Strict r{true, 0, std::vector<unsigned char>(cap + 16, kFill)};
    std::size_t p = 0;
    auto plain = [&](std::size_t at) {
        for (std::size_t k = at; k < at + 4; ++k)
            if (!isbase64(in.text[k])) return false;
        return true;
    };
    while (in.len - p >= 4 && plain(p)) {
        std::size_t room = cap - r.len;
        EXPECT_TRUE(base64_decode_ctx(nullptr, in.text + p, 4, reinterpret_cast<char *>(r.out.data() + r.len), &room));
        r.len += room;
        p += 4;
    }
    if (p < in.len) {
        std::size_t room = cap - r.len;
        r.ok = base64_decode_ctx(nullptr, in.text + p, in.len - p, reinterpret_cast<char *>(r.out.data() + r.len),
                                 &room);
        r.len += room;
    }
    return r;
}

// ---- strict, with a context ----------------------------------------------

struct WithContext {
    Strict r;
    base64_decode_context ctx;
};

WithContext context_whole(const Placed &in, std::size_t cap) {
    WithContext w{{false, cap, std::vector<unsigned char>(cap + 16, kFill)}, {}};
    base64_decode_ctx_init(&w.ctx);
    w.r.ok = base64_decode_ctx(&w.ctx, in.text, in.len, reinterpret_cast<char *>(w.r.out.data()), &w.r.len);
    return w;
}

// One character per call: every quartet is gathered in the context.
WithContext context_by_characters(const Placed &in, std::size_t cap) {
    WithContext w{{true, 0, std::vector<unsigned char>(cap + 16, kFill)}, {}};
    base64_decode_ctx_init(&w.ctx);
    for (std::size_t p = 0; p < in.len && w.r.ok; ++p) {
        std::size_t room = cap - w.r.len;
        w.r.ok = base64_decode_ctx(&w.ctx, in.text + p, 1, reinterpret_cast<char *>(w.r.out.data() + w.r.len), &room);
        w.r.len += room;
    }
    return w;
}

void expect_strict_agrees(const Placed &in, std::size_t cap, const std::string &what) {
    Strict got = strict_whole(in, cap);
    Strict want = strict_by_quartets(in, cap);
    ASSERT_EQ(got.ok, want.ok) << what << ", without a context";
    ASSERT_EQ(got.len, want.len) << what << ", without a context";
    ASSERT_EQ(got.out, want.out) << what << ", without a context";

    WithContext cgot = context_whole(in, cap);
    WithContext cwant = context_by_characters(in, cap);
    ASSERT_EQ(cgot.r.ok, cwant.r.ok) << what << ", with a context";
    ASSERT_EQ(cgot.r.len, cwant.r.len) << what << ", with a context";
    // Only the bytes reported: a call that keeps a partial quartet in the
    // context has tried it as the last quartet first and left those bytes
    // past its length, which a call per character never does.
    ASSERT_EQ(std::memcmp(cgot.r.out.data(), cwant.r.out.data(), cgot.r.len), 0) << what << ", with a context";
    if (cgot.r.ok) {
        // 4 (a quartet handed on) and 0 say the same: nothing waits.
        ASSERT_EQ(cgot.ctx.i % 4, cwant.ctx.i % 4) << what;
        ASSERT_EQ(std::memcmp(cgot.ctx.buf, cwant.ctx.buf, cgot.ctx.i % 4), 0) << what;
    }
}

// The allocating decoder takes the same path as a call with that capacity.
void expect_alloc_agrees(const Placed &in, const std::string &what) {
    const std::size_t size = 3 * (in.len / 4) + 2;
    WithContext want = context_whole(in, size);
    base64_decode_context ctx;
    base64_decode_ctx_init(&ctx);
    char *out = nullptr;
    std::size_t len = 0;
    bool ok = base64_decode_alloc_ctx(&ctx, in.text, in.len, &out, &len);
    ASSERT_EQ(ok, want.r.ok) << what;
    if (ok) {
        ASSERT_NE(out, nullptr) << what;
        ASSERT_EQ(len, want.r.len) << what;
        ASSERT_EQ(std::memcmp(out, want.r.out.data(), len), 0) << what;
    } else {
        ASSERT_EQ(out, nullptr) << what;
    }
    std::free(out);
}

// Group by group: each call encodes three bytes, or the last one or two.
std::string encoded_by_groups(const Placed &in) {
    std::string s;
    for (std::size_t p = 0; p < in.len; p += 3) {
        char q[5];
        base64_encode(in.text + p, in.len - p < 3 ? in.len - p : 3, q, sizeof q);
        s.append(q, 4);
    }
    return s;
}

}  // namespace

TEST(Base64Blocks, EncodersAtEveryLengthAroundTheBlocksAndEveryCapacity) {
    // Up to six blocks of 12 bytes and a bit, at every alignment.
    for (std::size_t n = 0; n <= 80; ++n) {
        std::string raw(n, '\0');
        std::mt19937 gen(static_cast<unsigned>(1000 + n));
        for (auto &c : raw) c = static_cast<char>(gen());
        Placed in(raw, (n * 7) % 16);
        const std::string want = encoded_by_groups(in);
        ASSERT_EQ(want.size(), (n + 2) / 3 * 4);
        const std::string what = std::to_string(n) + " bytes";

        std::vector<unsigned char> out(want.size() + 16, kFill);
        ASSERT_EQ(b64_encode(in.bytes(), static_cast<unsigned>(n), out.data()), want.size()) << what;
        ASSERT_EQ(std::memcmp(out.data(), want.data(), want.size()), 0) << what;
        ASSERT_EQ(out[want.size()], 0) << what;
        for (std::size_t k = want.size() + 1; k < out.size(); ++k) ASSERT_EQ(out[k], kFill) << what;

        for (std::size_t cap = 0; cap <= want.size() + 2; ++cap) {
            std::vector<unsigned char> bounded(cap + 16, kFill);
            base64_encode(in.text, n, reinterpret_cast<char *>(bounded.data()), cap);
            const std::size_t written = cap < want.size() ? cap : want.size();
            ASSERT_EQ(std::memcmp(bounded.data(), want.data(), written), 0) << what << ", capacity " << cap;
            std::size_t k = written;
            if (cap > want.size()) {
                ASSERT_EQ(bounded[k], 0) << what << ", capacity " << cap;
                ++k;
            }
            for (; k < bounded.size(); ++k) ASSERT_EQ(bounded[k], kFill) << what << ", capacity " << cap;
        }

        char *alloc = nullptr;
        ASSERT_EQ(base64_encode_alloc(in.text, n, &alloc), want.size()) << what;
        ASSERT_NE(alloc, nullptr);
        EXPECT_EQ(std::string(alloc), want) << what;
        std::free(alloc);
    }
}

TEST(Base64Blocks, EveryLengthAroundTheBlocksAndEveryAlignment) {
    // Up to six blocks and a bit: every length ends at every place of a
    // block, with and without a quartet after the last whole block.
    for (std::size_t n = 0; n <= 100; ++n) {
        Placed in(alphabet_text(n, static_cast<unsigned>(n)), n % 16);
        const std::string what = std::to_string(n) + " characters";
        expect_lenient_agrees(in, what);
        expect_strict_agrees(in, 3 * (n / 4) + 2, what);
        expect_alloc_agrees(in, what);
        if (n % 4 == 0 && n > 0) {
            // A valid text: the lenient decoder gives every byte.
            EXPECT_EQ(lenient_whole(in).size(), 3 * n / 4) << what;
        }
    }
}

TEST(Base64Blocks, EveryByteValueAtPlacesAllOverTheBlocks) {
    // 68 characters: four blocks (the last has a quartet after it) and that
    // quartet. Every place of a block, in the first, second and fourth block.
    const std::string base = alphabet_text(68, 7);
    std::vector<std::size_t> places;
    for (std::size_t p = 0; p < 16; ++p) places.push_back(p);
    for (std::size_t p : {17, 22, 27, 31, 48, 50, 55, 63, 64, 66, 67}) places.push_back(p);
    for (std::size_t p : places) {
        for (int c = 0; c < 256; ++c) {
            std::string s = base;
            s[p] = static_cast<char>(c);
            Placed in(s, (p + static_cast<std::size_t>(c)) % 16);
            const std::string what = "byte " + std::to_string(c) + " at " + std::to_string(p);
            expect_lenient_agrees(in, what);
            expect_strict_agrees(in, 3 * (s.size() / 4) + 2, what);
        }
    }
}

TEST(Base64Blocks, PaddingAndLineFeedsInEveryQuartetOfTheBlocks) {
    const std::string base = alphabet_text(72, 11);
    for (std::size_t q = 0; q + 4 <= base.size(); q += 4) {
        for (const char *tail : {"==", "=A", "A=", "\n\n", "=\n"}) {
            std::string s = base;
            s[q + 2] = tail[0];
            s[q + 3] = tail[1];
            Placed in(s, q % 16);
            const std::string what = std::string("quartet ") + std::to_string(q / 4) + " ending in " + tail;
            expect_lenient_agrees(in, what);
            expect_strict_agrees(in, 3 * (s.size() / 4) + 2, what);
            expect_alloc_agrees(in, what);
        }
        // A line feed inserted before the quartet shifts every later block.
        std::string s = base;
        s.insert(q, 1, '\n');
        Placed in(s, 3);
        expect_strict_agrees(in, 3 * (s.size() / 4) + 2, "line feed before quartet " + std::to_string(q / 4));
    }
}

TEST(Base64Blocks, CapacityEndingAnywhereInTheBlocks) {
    // 68 characters give 51 bytes: every capacity from none to more than
    // enough, on a valid text and on one with a bad character late on.
    const std::string valid = alphabet_text(68, 23);
    std::string bad = valid;
    bad[61] = '*';
    for (const std::string &s : {valid, bad}) {
        Placed in(s, 5);
        const std::string kind = s == valid ? "valid" : "bad";
        for (std::size_t cap = 0; cap <= 54; ++cap)
            expect_strict_agrees(in, cap, kind + ", capacity " + std::to_string(cap));
    }
}
