// SPDX-License-Identifier: MIT
// The strict codec: bounded output, size-type overflow rules (32-bit on
// armhf), and the streaming decoder with its context.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "qvs_utils.h"
#include "test_support.hpp"

// Under the address sanitizer an impossible allocation must give NULL, as
// the C library's malloc does, rather than stop the program.
extern "C" const char *__asan_default_options() { return "allocator_may_return_null=1"; }

namespace {

struct Enc {
    std::string text;   // what was written, up to the capacity
    bool terminated;    // a NUL followed within the capacity
    char raw[32];
};

Enc encode(const std::string &in, std::size_t cap) {
    Enc e;
    std::memset(e.raw, '#', sizeof e.raw);
    base64_encode(in.data(), in.size(), e.raw, cap);
    std::size_t n = 0;
    while (n < cap && e.raw[n] != '\0') ++n;
    e.text.assign(e.raw, n);
    e.terminated = n < cap && e.raw[n] == '\0';
    return e;
}

struct Dec {
    bool ok;
    std::size_t len;
    std::string bytes;
    char raw[64];
};

Dec decode(base64_decode_context *ctx, const std::string &in, std::size_t cap = 48) {
    Dec d;
    std::memset(d.raw, '#', sizeof d.raw);
    d.len = cap;
    d.ok = base64_decode_ctx(ctx, in.data(), in.size(), d.raw, &d.len);
    d.bytes.assign(d.raw, d.len <= sizeof d.raw ? d.len : 0);
    return d;
}

}  // namespace

TEST(Base64Encode, CutsAtTheCapacityEvenInsideAQuartet) {
    Enc e = encode("foo", 2);
    EXPECT_EQ(e.text, "Zm");
    EXPECT_FALSE(e.terminated);
    EXPECT_EQ(e.raw[2], '#');
}

TEST(Base64Encode, TerminatesWhenRoomIsLeft) {
    Enc e = encode("foo", 5);
    EXPECT_EQ(e.text, "Zm9v");
    EXPECT_TRUE(e.terminated);
    EXPECT_EQ(e.raw[5], '#');
    Enc exact = encode("foo", 4);
    EXPECT_EQ(exact.text, "Zm9v");
    EXPECT_FALSE(exact.terminated);
    EXPECT_EQ(exact.raw[4], '#');
}

TEST(Base64Encode, PadsTheLastGroupAndCutsThePaddingToo) {
    EXPECT_EQ(encode("f", 10).text, "Zg==");
    EXPECT_EQ(encode("fo", 10).text, "Zm8=");
    EXPECT_EQ(encode("foobar", 10).text, "Zm9vYmFy");
    EXPECT_EQ(encode("fooba", 10).text, "Zm9vYmE=");
    Enc cut = encode("f", 3);
    EXPECT_EQ(cut.text, "Zg=");
    EXPECT_FALSE(cut.terminated);
    EXPECT_EQ(encode("\xff\xfe\xfd\xfc", 10).text, "//79/A==");
}

TEST(Base64Encode, ZeroCapacityWritesNothing) {
    Enc e = encode("foo", 0);
    EXPECT_EQ(e.raw[0], '#');
    Enc empty = encode("", 1);
    EXPECT_TRUE(empty.terminated);
    EXPECT_EQ(empty.text, "");
    EXPECT_EQ(empty.raw[1], '#');
}

TEST(Base64Encode, UsesItsOwnAlphabetNotTheWritableTable) {
    char saved[65];
    std::memcpy(saved, b64_chr, sizeof saved);
    b64_chr[25] = '*';
    Enc e = encode("foo", 5);
    std::memcpy(b64_chr, saved, sizeof saved);
    EXPECT_EQ(e.text, "Zm9v");
}

TEST(Base64EncodeAlloc, ReturnsTheLengthAndATerminatedBlock) {
    char *out = nullptr;
    EXPECT_EQ(base64_encode_alloc("foobar", 6, &out), 8u);
    ASSERT_NE(out, nullptr);
    EXPECT_STREQ(out, "Zm9vYmFy");
    EXPECT_GE(malloc_usable_size(out), 9u);
    std::free(out);
    EXPECT_EQ(base64_encode_alloc("f", 1, &out), 4u);
    ASSERT_NE(out, nullptr);
    EXPECT_STREQ(out, "Zg==");
    std::free(out);
}

TEST(Base64EncodeAlloc, EmptyInputGivesAnEmptyText) {
    char *out = reinterpret_cast<char *>(1);
    EXPECT_EQ(base64_encode_alloc("", 0, &out), 0u);
    ASSERT_NE(out, nullptr) << "0 with a block: not an overflow";
    EXPECT_STREQ(out, "");
    std::free(out);
}

TEST(Base64EncodeAlloc, SizeOverflowInTheSizeTypeGivesZeroAndNull) {
    // ((n + 2) / 3) * 4 + 1 computed in size_t wraps below n. The input is
    // never read on this path.
    const char dummy[4] = "abc";
    for (std::size_t n : {SIZE_MAX, SIZE_MAX - 1, SIZE_MAX - 2, SIZE_MAX - 10, SIZE_MAX / 4 * 3 + 4}) {
        std::size_t encoded = ((n + 2) / 3) * 4;
        ASSERT_GT(n, encoded + 1) << "the size type wraps for " << n;
        char *out = reinterpret_cast<char *>(1);
        EXPECT_EQ(base64_encode_alloc(dummy, n, &out), 0u) << n;
        EXPECT_EQ(out, nullptr) << n;
    }
}

TEST(Base64EncodeAlloc, OverflowBoundaryIsThatOfThisPlatformsSizeType) {
    char *out = reinterpret_cast<char *>(1);
    const char dummy[4] = "abc";
    if constexpr (sizeof(std::size_t) == 4) {
        // 32-bit: 0xC0000000 bytes would need 2^32 characters, which wraps to 0.
        EXPECT_EQ(base64_encode_alloc(dummy, 0xC0000000u, &out), 0u);
        EXPECT_EQ(out, nullptr);
        // 0xBFFFFFFD needs 0xFFFFFFFC characters: no wrap, but no memory either.
        out = reinterpret_cast<char *>(1);
        EXPECT_EQ(base64_encode_alloc(dummy, 0xBFFFFFFDu, &out), SIZE_MAX);
        EXPECT_EQ(out, nullptr);
    } else {
        // 64-bit: the same lengths are far from wrapping, and so is 2^62.
        const std::size_t n = std::size_t{1} << 62;
        EXPECT_EQ(base64_encode_alloc(dummy, n, &out), SIZE_MAX) << "no wrap, no memory";
        EXPECT_EQ(out, nullptr);
        out = reinterpret_cast<char *>(1);
        EXPECT_EQ(base64_encode_alloc(dummy, SIZE_MAX / 4 * 3 + 4, &out), 0u);
        EXPECT_EQ(out, nullptr);
    }
}

TEST(Base64EncodeAlloc, ShortMemoryGivesAllOnesAndNull) {
    // Half the address space and more: no wrap in the size type, no memory.
    const char dummy[4] = "abc";
    const std::size_t n = SIZE_MAX / 2 + 1;
    ASSERT_LE(n, ((n + 2) / 3) * 4 + 1);
    char *out = reinterpret_cast<char *>(1);
    EXPECT_EQ(base64_encode_alloc(dummy, n, &out), SIZE_MAX);
    EXPECT_EQ(out, nullptr);
}

TEST(IsBase64, TrueExactlyForTheSixtyFourAlphabetCharacters) {
    const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    int count = 0;
    for (int c = 0; c < 256; ++c) {
        bool in = alphabet.find(static_cast<char>(c)) != std::string::npos;
        EXPECT_EQ(isbase64(static_cast<char>(c)), in) << c;
        count += isbase64(static_cast<char>(c)) ? 1 : 0;
    }
    EXPECT_EQ(count, 64);
    EXPECT_FALSE(isbase64('='));
    EXPECT_FALSE(isbase64('\n'));
    EXPECT_FALSE(isbase64(static_cast<char>(0xC1)));  // 'A' + 128
}

TEST(Base64DecodeCtxInit, StartsAnEmptyContext) {
    base64_decode_context ctx;
    ctx.i = 3;
    base64_decode_ctx_init(&ctx);
    EXPECT_EQ(ctx.i, 0u);
}

TEST(Base64DecodeCtx, WithoutContextDecodesWholeQuartets) {
    Dec d = decode(nullptr, "Zm9vYmFy");
    EXPECT_TRUE(d.ok);
    EXPECT_EQ(d.len, 6u);
    EXPECT_EQ(d.bytes, "foobar");
    EXPECT_EQ(d.raw[6], '#') << "no NUL";
    Dec p = decode(nullptr, "Zm9vYg==");
    EXPECT_TRUE(p.ok);
    EXPECT_EQ(p.bytes, "foob");
    Dec p2 = decode(nullptr, "Zm9vYmE=");
    EXPECT_TRUE(p2.ok);
    EXPECT_EQ(p2.bytes, "fooba");
    Dec empty = decode(nullptr, "");
    EXPECT_TRUE(empty.ok);
    EXPECT_EQ(empty.len, 0u);
}

TEST(Base64DecodeCtx, WithoutContextALineFeedFailsAfterWhatCameBefore) {
    Dec d = decode(nullptr, "Zm9v\nYmFy");
    EXPECT_FALSE(d.ok);
    EXPECT_EQ(d.len, 3u);
    EXPECT_EQ(d.bytes, "foo");
}

TEST(Base64DecodeCtx, WithoutContextPaddingOnlyInTheLastQuartet) {
    Dec d = decode(nullptr, "Zg==Zg==");
    EXPECT_FALSE(d.ok);
    EXPECT_EQ(d.len, 1u) << "the failing quartet's byte up to the fault stays";
    EXPECT_EQ(d.bytes, "f");
}

TEST(Base64DecodeCtx, WithoutContextABadOrShortTailFails) {
    Dec short_tail = decode(nullptr, "Zm9vYg");
    EXPECT_FALSE(short_tail.ok);
    EXPECT_EQ(short_tail.bytes, "foob");
    Dec three = decode(nullptr, "Zm9vYmF");
    EXPECT_FALSE(three.ok);
    EXPECT_EQ(three.bytes, "fooba") << "two bytes of the short quartet are written";
    Dec one = decode(nullptr, "Zm9vY");
    EXPECT_FALSE(one.ok);
    EXPECT_EQ(one.bytes, "foo");
    Dec bad = decode(nullptr, "Zm!v");
    EXPECT_FALSE(bad.ok);
    EXPECT_EQ(bad.bytes, "f");
    Dec bad_first = decode(nullptr, "!m9v");
    EXPECT_FALSE(bad_first.ok);
    EXPECT_EQ(bad_first.len, 0u);
    Dec third_pad_fourth_not = decode(nullptr, "Zg=x");
    EXPECT_FALSE(third_pad_fourth_not.ok);
    EXPECT_EQ(third_pad_fourth_not.bytes, "f");
    Dec pad_short = decode(nullptr, "Zg=");
    EXPECT_FALSE(pad_short.ok);
    Dec bad_fourth = decode(nullptr, "Zm9!");
    EXPECT_FALSE(bad_fourth.ok);
    EXPECT_EQ(bad_fourth.bytes, "fo");
    Dec pad_then_more = decode(nullptr, "Zm8=Zm8=");
    EXPECT_FALSE(pad_then_more.ok);
    EXPECT_EQ(pad_then_more.bytes, "fo");
}

TEST(Base64DecodeCtx, WithContextLineFeedsAreSkipped) {
    base64_decode_context ctx;
    base64_decode_ctx_init(&ctx);
    Dec d = decode(&ctx, "Zm9v\nYmFy");
    EXPECT_TRUE(d.ok);
    EXPECT_EQ(d.bytes, "foobar");
    base64_decode_ctx_init(&ctx);
    Dec spread = decode(&ctx, "\nZ\nm\n9\nv\n\nYm\nFy\n");
    EXPECT_TRUE(spread.ok);
    EXPECT_EQ(spread.bytes, "foobar");
    base64_decode_ctx_init(&ctx);
    Dec only = decode(&ctx, "\n\n\n");
    EXPECT_TRUE(only.ok);
    EXPECT_EQ(only.len, 0u);
    EXPECT_EQ(ctx.i, 0u);
}

TEST(Base64DecodeCtx, WithContextPaddingMayEndAnyQuartet) {
    base64_decode_context ctx;
    base64_decode_ctx_init(&ctx);
    Dec d = decode(&ctx, "Zg==Zg==");
    EXPECT_TRUE(d.ok);
    EXPECT_EQ(d.len, 2u);
    EXPECT_EQ(d.bytes, "ff");
    base64_decode_ctx_init(&ctx);
    Dec e = decode(&ctx, "Zm8=\nZg==\nZm9v");
    EXPECT_TRUE(e.ok);
    EXPECT_EQ(e.bytes, "foffoo");
}

TEST(Base64DecodeCtx, APartialQuartetWaitsInTheContext) {
    base64_decode_context ctx;
    base64_decode_ctx_init(&ctx);
    Dec first = decode(&ctx, "Zm9");
    EXPECT_TRUE(first.ok);
    EXPECT_EQ(first.len, 0u);
    EXPECT_EQ(ctx.i, 3u);
    EXPECT_EQ(std::string(ctx.buf, 3), "Zm9");
    Dec second = decode(&ctx, "vYmFy");
    EXPECT_TRUE(second.ok);
    EXPECT_EQ(second.bytes, "foobar");
    Dec flush = decode(&ctx, "");
    EXPECT_TRUE(flush.ok);
    EXPECT_EQ(flush.len, 0u);
}

TEST(Base64DecodeCtx, PiecesSplitAnywhereWithLineFeeds) {
    const std::string text = "Zm9v\nYmFy\nYmF6\nZg==\n";
    for (std::size_t cut1 = 0; cut1 <= text.size(); ++cut1) {
        for (std::size_t cut2 = cut1; cut2 <= text.size(); ++cut2) {
            base64_decode_context ctx;
            base64_decode_ctx_init(&ctx);
            std::string out;
            bool ok = true;
            for (auto piece : {text.substr(0, cut1), text.substr(cut1, cut2 - cut1), text.substr(cut2)}) {
                if (piece.empty()) continue;  // an empty piece would be a flush call
                Dec d = decode(&ctx, piece);
                ok = ok && d.ok;
                out += d.bytes;
            }
            Dec flush = decode(&ctx, "");
            EXPECT_TRUE(ok && flush.ok) << cut1 << "," << cut2;
            EXPECT_EQ(out, "foobarbazf") << cut1 << "," << cut2;
        }
    }
}

TEST(Base64DecodeCtx, FlushWithHeldCharactersFails) {
    base64_decode_context ctx;
    base64_decode_ctx_init(&ctx);
    ASSERT_TRUE(decode(&ctx, "Zm9").ok);
    Dec flush = decode(&ctx, "");
    EXPECT_FALSE(flush.ok);
    EXPECT_EQ(flush.len, 2u);
    EXPECT_EQ(flush.bytes, "fo");
    base64_decode_ctx_init(&ctx);
    ASSERT_TRUE(decode(&ctx, "Z").ok);
    Dec one = decode(&ctx, "");
    EXPECT_FALSE(one.ok);
    EXPECT_EQ(one.len, 0u);
    base64_decode_ctx_init(&ctx);
    ASSERT_TRUE(decode(&ctx, "Zg\n").ok);
    Dec two = decode(&ctx, "");
    EXPECT_FALSE(two.ok);
    EXPECT_EQ(two.bytes, "f");
}

TEST(Base64DecodeCtx, FlushWithAnEmptyContextSucceeds) {
    base64_decode_context ctx;
    base64_decode_ctx_init(&ctx);
    Dec flush = decode(&ctx, "");
    EXPECT_TRUE(flush.ok);
    EXPECT_EQ(flush.len, 0u);
    // Also right after a quartet gathered in the context was handed on.
    ASSERT_TRUE(decode(&ctx, "Zm").ok);
    Dec rest = decode(&ctx, "9v");
    EXPECT_TRUE(rest.ok);
    EXPECT_EQ(rest.bytes, "foo");
    EXPECT_EQ(ctx.i, 4u);
    Dec flush2 = decode(&ctx, "");
    EXPECT_TRUE(flush2.ok);
    EXPECT_EQ(flush2.len, 0u);
}

TEST(Base64DecodeCtx, WithContextBadInputFailsAfterWhatCameBefore) {
    base64_decode_context ctx;
    base64_decode_ctx_init(&ctx);
    Dec d = decode(&ctx, "Zm9vZm!v");
    EXPECT_FALSE(d.ok);
    EXPECT_EQ(d.bytes, "foof");
    base64_decode_ctx_init(&ctx);
    Dec g = decode(&ctx, "Zm\n!v");
    EXPECT_FALSE(g.ok);
    EXPECT_EQ(g.bytes, "f") << "the gathered quartet Zm!v gives its first byte before the fault";
    base64_decode_ctx_init(&ctx);
    Dec pad = decode(&ctx, "Zg=x");
    EXPECT_FALSE(pad.ok);
    EXPECT_EQ(pad.bytes, "f");
}

TEST(Base64DecodeCtx, BytesBeyondTheCapacityAreDroppedWithoutFailing) {
    Dec d = decode(nullptr, "Zm9v", 1);
    EXPECT_TRUE(d.ok);
    EXPECT_EQ(d.len, 1u);
    EXPECT_EQ(d.bytes, "f");
    EXPECT_EQ(d.raw[1], '#');
    Dec none = decode(nullptr, "Zm9vYmFy", 0);
    EXPECT_TRUE(none.ok);
    EXPECT_EQ(none.len, 0u);
    EXPECT_EQ(none.raw[0], '#');
    base64_decode_context ctx;
    base64_decode_ctx_init(&ctx);
    Dec c = decode(&ctx, "Zm9v\nYmFy", 4);
    EXPECT_TRUE(c.ok);
    EXPECT_EQ(c.bytes, "foob");
    EXPECT_EQ(c.raw[4], '#');
}

TEST(Base64DecodeAllocCtx, AllocatesThreeQuartersPlusTwo) {
    char *out = nullptr;
    std::size_t len = 0;
    EXPECT_TRUE(base64_decode_alloc_ctx(nullptr, "Zm9v", 4, &out, &len));
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(len, 3u);
    EXPECT_EQ(std::string(out, len), "foo");
    EXPECT_GE(malloc_usable_size(out), 5u);
    std::free(out);
}

TEST(Base64DecodeAllocCtx, WorksWithAContextAndWithoutALengthAddress) {
    base64_decode_context ctx;
    base64_decode_ctx_init(&ctx);
    char *out = nullptr;
    std::size_t len = 0;
    EXPECT_TRUE(base64_decode_alloc_ctx(&ctx, "Zm9v\nYmFy\n", 10, &out, &len));
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(std::string(out, len), "foobar");
    std::free(out);
    out = nullptr;
    EXPECT_TRUE(base64_decode_alloc_ctx(nullptr, "Zg==", 4, &out, nullptr));
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(out[0], 'f');
    std::free(out);
}

TEST(Base64DecodeAllocCtx, BadInputFreesAndGivesNull) {
    char *out = reinterpret_cast<char *>(1);
    std::size_t len = 77;
    EXPECT_FALSE(base64_decode_alloc_ctx(nullptr, "Zm9v\nYmFy", 9, &out, &len));
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(len, 77u) << "the length is not stored on failure";
}

TEST(Base64DecodeAllocCtx, ShortMemoryGivesTrueWithNull) {
    // 3 * (n / 4) + 2 for the largest n: more than any process can have.
    // The input is not read when there is no block.
    const char dummy[4] = "Zm9";
    char *out = reinterpret_cast<char *>(1);
    std::size_t len = 77;
    EXPECT_TRUE(base64_decode_alloc_ctx(nullptr, dummy, SIZE_MAX, &out, &len));
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(len, 77u);
}
