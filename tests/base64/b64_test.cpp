// SPDX-License-Identifier: MIT
// The lenient codec: 32-bit sizes, the writable alphabet, no failures.
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "qvs_utils.h"
#include "test_support.hpp"

namespace {

const char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

struct Encoded {
    unsigned result;
    std::string text;
    std::vector<unsigned char> raw;
};

Encoded encode(const std::string &in) {
    Encoded e;
    e.raw.assign(b64e_size(static_cast<unsigned>(in.size())) + 8, '#');
    e.result = b64_encode(reinterpret_cast<const unsigned char *>(in.data()), static_cast<unsigned>(in.size()),
                          e.raw.data());
    e.text = reinterpret_cast<const char *>(e.raw.data());
    return e;
}

struct Decoded {
    unsigned result;
    std::string bytes;
    std::vector<unsigned char> raw;
};

Decoded decode(const std::string &in) {
    Decoded d;
    d.raw.assign(b64d_size(static_cast<unsigned>(in.size())) + 8, '#');
    d.result = b64_decode(reinterpret_cast<const unsigned char *>(in.data()), static_cast<unsigned>(in.size()),
                          d.raw.data());
    d.bytes.assign(reinterpret_cast<const char *>(d.raw.data()), d.result);
    return d;
}

}  // namespace

TEST(B64Chr, IsTheExportedWritableAlphabetWithNul) {
    EXPECT_EQ(sizeof(b64_chr), 65u);
    EXPECT_EQ(std::memcmp(b64_chr, kAlphabet, 65), 0);
    EXPECT_EQ(b64_chr[64], '\0');
}

TEST(B64Chr, ChangingItChangesWhatB64EncodeWrites) {
    char saved[65];
    std::memcpy(saved, b64_chr, sizeof saved);
    b64_chr[25] = '*';  // 'Z'
    b64_chr[38] = '-';  // 'm'
    Encoded e = encode("foo");
    std::memcpy(b64_chr, saved, sizeof saved);
    EXPECT_EQ(e.text, "*-9v");
    EXPECT_EQ(encode("foo").text, "Zm9v");
    // The padding is not taken from the table.
    b64_chr[0] = '!';
    Encoded p = encode(std::string("\0", 1));
    std::memcpy(b64_chr, saved, sizeof saved);
    EXPECT_EQ(p.text, "!!==");
}

TEST(B64Int, GivesTheSixBitValueOfEachAlphabetCharacter) {
    for (unsigned i = 0; i < 64; ++i) EXPECT_EQ(b64_int(static_cast<unsigned char>(kAlphabet[i])), i) << kAlphabet[i];
    EXPECT_EQ(b64_int('+'), 62u);
    EXPECT_EQ(b64_int('/'), 63u);
    EXPECT_EQ(b64_int('='), 64u);
    EXPECT_EQ(b64_int('0'), 52u);
    EXPECT_EQ(b64_int('9'), 61u);
    EXPECT_EQ(b64_int('A'), 0u);
    EXPECT_EQ(b64_int('Z'), 25u);
    EXPECT_EQ(b64_int('a'), 26u);
    EXPECT_EQ(b64_int('z'), 51u);
}

TEST(B64Int, AnyOtherCodeGivesZero) {
    const std::string alphabet = std::string(kAlphabet) + "=";
    for (unsigned c = 0; c < 256; ++c) {
        if (alphabet.find(static_cast<char>(c)) == std::string::npos) {
            EXPECT_EQ(b64_int(c), 0u) << c;
        }
    }
    EXPECT_EQ(b64_int(0x100u + 'A'), 0u);
    EXPECT_EQ(b64_int(0xFFFFFFFFu), 0u);
}

TEST(B64eSize, IsFourPerStartedGroupOfThree) {
    EXPECT_EQ(b64e_size(0), 0u);
    EXPECT_EQ(b64e_size(1), 4u);
    EXPECT_EQ(b64e_size(2), 4u);
    EXPECT_EQ(b64e_size(3), 4u);
    EXPECT_EQ(b64e_size(4), 8u);
    EXPECT_EQ(b64e_size(6), 8u);
    EXPECT_EQ(b64e_size(7), 12u);
    EXPECT_EQ(b64e_size(765), 1020u);
    EXPECT_EQ(b64e_size(766), 1024u);
}

TEST(B64eSize, WrapsAtTwoToTheThirtySecond) {
    // 32-bit on every platform: the count of groups is exact, four times it wraps.
    EXPECT_EQ(sizeof(b64e_size(0)), 4u);
    EXPECT_EQ(b64e_size(0x3FFFFFFFu), 0x55555554u);  // no wrap yet
    EXPECT_EQ(b64e_size(0xC0000000u), 0u);          // 4 * 2^30
    EXPECT_EQ(b64e_size(0xC0000001u), 4u);
    EXPECT_EQ(b64e_size(0xFFFFFFFEu), 0x55555554u);
    EXPECT_EQ(b64e_size(0xFFFFFFFFu), 0x55555554u);
}

TEST(B64dSize, IsThreeQuartersTakenModuloTwoToTheThirtySecond) {
    EXPECT_EQ(b64d_size(0), 0u);
    EXPECT_EQ(b64d_size(1), 0u);
    EXPECT_EQ(b64d_size(4), 3u);
    EXPECT_EQ(b64d_size(5), 3u);
    EXPECT_EQ(b64d_size(8), 6u);
    EXPECT_EQ(b64d_size(0x55555555u), 0xFFFFFFFFu >> 2);  // 3n = 0xFFFFFFFF, no wrap
    EXPECT_EQ(b64d_size(0x55555556u), 0u);                 // 3n = 2^32 + 2
    EXPECT_EQ(b64d_size(0x60000000u), 0x08000000u);        // 3n = 2^32 + 2^29
    EXPECT_EQ(b64d_size(0xFFFFFFFFu), 0x3FFFFFFFu);        // 3n mod 2^32 = 0xFFFFFFFD
}

TEST(B64Encode, EncodesOneTwoAndThreeBytes) {
    for (auto [in, out] : {std::pair<const char *, const char *>{"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}}) {
        Encoded e = encode(in);
        EXPECT_EQ(e.result, 4u) << in;
        EXPECT_EQ(e.text, out) << in;
        EXPECT_EQ(e.raw[4], '\0');
        EXPECT_EQ(e.raw[5], '#') << "nothing past the NUL";
    }
}

TEST(B64Encode, EmptyInputWritesOnlyTheNul) {
    unsigned char out[4] = {'#', '#', '#', '#'};
    EXPECT_EQ(b64_encode(reinterpret_cast<const unsigned char *>(""), 0, out), 0u);
    EXPECT_EQ(out[0], '\0');
    EXPECT_EQ(out[1], '#');
}

TEST(B64Encode, LongerInputsAndEveryByteValue) {
    EXPECT_EQ(encode("foob").text, "Zm9vYg==");
    EXPECT_EQ(encode("fooba").text, "Zm9vYmE=");
    EXPECT_EQ(encode("foobar").text, "Zm9vYmFy");
    EXPECT_EQ(encode("foobar").result, 8u);
    EXPECT_EQ(encode("\xff\xfe\xfd").text, "//79");
    EXPECT_EQ(encode(std::string("\0\0\0", 3)).text, "AAAA");
    std::string all;
    for (int i = 0; i < 256; ++i) all.push_back(static_cast<char>(i));
    Encoded e = encode(all);
    EXPECT_EQ(e.result, b64e_size(256));
    EXPECT_EQ(e.text.size(), 344u);
    qvstest::write_file("/tmp/all-bytes", all);
    EXPECT_EQ(e.text + "\n", qvstest::run("openssl base64 -A -in /tmp/all-bytes; echo")) << "as openssl encodes them";
    EXPECT_EQ(decode(e.text).bytes, all);
}

TEST(B64Decode, DecodesWholeQuartets) {
    Decoded d = decode("Zm9v");
    EXPECT_EQ(d.result, 3u);
    EXPECT_EQ(d.bytes, "foo");
    EXPECT_EQ(d.raw[3], '#') << "no NUL is written";
    EXPECT_EQ(decode("Zm9vYmFy").bytes, "foobar");
    EXPECT_EQ(decode("Zm8=").bytes, "fo");
}

TEST(B64Decode, PaddingInTheThirdPlaceGivesOneByteWhateverTheFourth) {
    Decoded d = decode("Zg==");
    EXPECT_EQ(d.result, 1u);
    EXPECT_EQ(d.bytes, "f");
    Decoded x = decode("Zg=x");
    EXPECT_EQ(x.result, 1u);
    EXPECT_EQ(x.bytes, "f");
}

TEST(B64Decode, TrailingPartialGroupIsDropped) {
    Decoded d = decode("Zm9vYg");
    EXPECT_EQ(d.result, 3u);
    EXPECT_EQ(d.bytes, "foo");
    EXPECT_EQ(decode("Zm9vY").result, 3u);
    EXPECT_EQ(decode("Zm9vYmF").result, 3u);
    EXPECT_EQ(decode("Zm9").result, 0u);
    EXPECT_EQ(decode("Z").result, 0u);
}

TEST(B64Decode, EmptyInputWritesNothing) {
    unsigned char out[2] = {'#', '#'};
    EXPECT_EQ(b64_decode(reinterpret_cast<const unsigned char *>(""), 0, out), 0u);
    EXPECT_EQ(out[0], '#');
}

TEST(B64Decode, CharactersOutsideTheAlphabetCountAsZero) {
    // Z!9v: 25, 0, 61, 47.
    Decoded d = decode("Z!9v");
    ASSERT_EQ(d.result, 3u);
    EXPECT_EQ(d.bytes, std::string("d\x0fo", 3));
    EXPECT_EQ(decode("Z" "A" "9v").bytes, d.bytes);
    EXPECT_EQ(decode("\n\n\n\n").bytes, std::string(3, '\0'));
}

TEST(B64Decode, PaddingInTheFirstTwoPlacesCountsAsSixtyFour) {
    // ==Zm: c0 = c1 = 64, c2 = 25, c3 = 38.
    Decoded d = decode("==Zm");
    ASSERT_EQ(d.result, 3u);
    EXPECT_EQ(d.bytes, std::string("\x00\x06\x66", 3));
    // Z=9v: c1 = 64 gives ((64 >> 4) & 3) = 0 and (64 << 4) = 0 in the low 8 bits.
    Decoded e = decode("Z=9v");
    ASSERT_EQ(e.result, 3u);
    EXPECT_EQ(e.bytes, std::string("\x64\x0f\x6f", 3));
}

TEST(B64Decode, GoesOnAfterAPaddedQuartet) {
    Decoded d = decode("Zg==Zm9vZm8=");
    EXPECT_EQ(d.result, 6u);
    EXPECT_EQ(d.bytes, "ffoofo");
}
