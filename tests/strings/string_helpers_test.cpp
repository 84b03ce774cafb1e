// SPDX-License-Identifier: MIT
// Text and byte helpers: qvsReplace, generateName, str_replace,
// qvs_is_hex_string, isValidMac.
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "qvs_utils.h"

namespace {

// ---- qvsReplace -----------------------------------------------------------

TEST(QvsReplace, ReplacesEveryOccurrence) {
    char text[] = "a,b,,c,";
    qvsReplace(text, ',', '_');
    EXPECT_STREQ(text, "a_b__c_");
}

TEST(QvsReplace, TextWithoutTheCharacterIsUnchanged) {
    char text[] = "INTERNET";
    qvsReplace(text, ',', '_');
    EXPECT_STREQ(text, "INTERNET");
}

TEST(QvsReplace, EmptyTextIsLeftAsItIs) {
    char text[4] = {'\0', 'x', 'y', '\0'};
    qvsReplace(text, 'x', 'z');
    EXPECT_EQ(std::memcmp(text, "\0xy\0", 4), 0);
}

TEST(QvsReplace, StopsAtTheTerminator) {
    char text[] = "ab\0ab";
    qvsReplace(text, 'a', 'c');
    EXPECT_EQ(std::memcmp(text, "cb\0ab", 6), 0);
    // The terminator itself is never matched.
    qvsReplace(text, '\0', 'q');
    EXPECT_EQ(std::memcmp(text, "cb\0ab", 6), 0);
}

TEST(QvsReplace, HighBytesMatchOnlyTheSameByte) {
    char text[] = "caf\xe9 \xe9t\xe9";
    qvsReplace(text, 'e', 'E');
    EXPECT_STREQ(text, "caf\xe9 \xe9t\xe9");
    qvsReplace(text, static_cast<char>(0xe9), 'e');
    EXPECT_STREQ(text, "cafe ete");
    char back[] = "x-y";
    qvsReplace(back, '-', static_cast<char>(0xa0));
    EXPECT_STREQ(back, "x\xa0y");
}

TEST(QvsReplace, NullTextIsIgnored) {
    qvsReplace(nullptr, 'a', 'b');
    SUCCEED() << "no crash";
}

// ---- generateName -----------------------------------------------------------

std::string gen(unsigned index, const char *name, const char *type, int vid, uint8_t mode) {
    char dst[QVS_GENERATE_NAME_SIZE + 8];
    std::memset(dst, 0, sizeof dst);
    EXPECT_EQ(generateName(index, name, type, vid, mode, dst), 0);
    return dst;
}

TEST(GenerateName, RoutedConnectionWithVlan) {
    EXPECT_EQ(gen(2, "INTERNET,TR069", "IP_Routed", 46, 2), "2_INTERNET_TR069_R_VID_46");
}

TEST(GenerateName, ModesZeroOneTwo) {
    EXPECT_EQ(gen(1, "TR069", "IP_Routed", 46, 0), "1_TR069_R_VID_");
    EXPECT_EQ(gen(1, "TR069", "IP_Routed", 46, 1), "1_TR069_R_VID_0");
    EXPECT_EQ(gen(1, "TR069", "IP_Routed", 46, 2), "1_TR069_R_VID_46");
    EXPECT_EQ(gen(7, "OTHER", "IP_Bridged", -3, 2), "7_OTHER_B_VID_-3");
    EXPECT_EQ(gen(0, "", "", 0, 2), "0__B_VID_0");
}

TEST(GenerateName, OtherModesLeaveTheDestinationUntouched) {
    for (unsigned mode : {3u, 4u, 127u, 255u}) {
        char dst[QVS_GENERATE_NAME_SIZE];
        std::memset(dst, '#', sizeof dst);
        EXPECT_EQ(generateName(2, "INTERNET", "IP_Routed", 46, static_cast<uint8_t>(mode), dst), 0);
        for (char c : dst) ASSERT_EQ(c, '#') << "mode " << mode;
    }
}

TEST(GenerateName, TypeLetterFromTheConnectionType) {
    EXPECT_EQ(gen(1, "X", "IP_Routed", 0, 1), "1_X_R_VID_0");
    EXPECT_EQ(gen(1, "X", "IP_Bridged", 0, 1), "1_X_B_VID_0");
    EXPECT_EQ(gen(1, "X", "PPPoE_Routed", 0, 1), "1_X_R_VID_0");
    EXPECT_EQ(gen(1, "X", "Routed", 0, 1), "1_X_R_VID_0");
    EXPECT_EQ(gen(1, "X", "IP_routed", 0, 1), "1_X_B_VID_0");  // case matters
    EXPECT_EQ(gen(1, "X", "", 0, 1), "1_X_B_VID_0");
}

TEST(GenerateName, LongNameIsCutTo47Characters) {
    std::string name = std::string(47, 'N') + "TAIL,MORE";
    EXPECT_EQ(gen(3, name.c_str(), "IP_Routed", 5, 2), "3_" + std::string(47, 'N') + "_R_VID_5");
    std::string exact(47, 'M');
    EXPECT_EQ(gen(3, exact.c_str(), "IP_Routed", 5, 2), "3_" + exact + "_R_VID_5");
}

TEST(GenerateName, CommasOnlyInTheKeptPartAreReplaced) {
    std::string name = std::string(45, 'a') + ",b,c";  // the second comma is cut off
    EXPECT_EQ(gen(1, name.c_str(), "IP_Routed", 1, 2), "1_" + std::string(45, 'a') + "_b_R_VID_1");
}

TEST(GenerateName, CallersNameIsNotChanged) {
    char name[] = "VOIP,INTERNET";
    char dst[QVS_GENERATE_NAME_SIZE] = {};
    generateName(4, name, "IP_Routed", 0, 0, dst);
    EXPECT_STREQ(name, "VOIP,INTERNET");
    EXPECT_STREQ(dst, "4_VOIP_INTERNET_R_VID_");
}

TEST(GenerateName, LongestResultFitsTheDocumentedSize) {
    std::string name(60, 'Z');
    char dst[QVS_GENERATE_NAME_SIZE + 16];
    std::memset(dst, '#', sizeof dst);
    EXPECT_EQ(generateName(2147483648u, name.c_str(), "IP_Routed", INT_MIN, 2, dst), 0);
    EXPECT_EQ(std::string(dst), "-2147483648_" + std::string(47, 'Z') + "_R_VID_-2147483648");
    EXPECT_EQ(std::strlen(dst), static_cast<size_t>(QVS_GENERATE_NAME_SIZE - 1));
    for (size_t i = QVS_GENERATE_NAME_SIZE; i < sizeof dst; ++i) EXPECT_EQ(dst[i], '#');
}

TEST(GenerateName, IndexIsPrintedAsSignedDecimal) {
    EXPECT_EQ(gen(4294967295u, "W", "IP_Routed", 1, 2), "-1_W_R_VID_1");
    EXPECT_EQ(gen(2147483647u, "W", "IP_Routed", 1, 2), "2147483647_W_R_VID_1");
}

TEST(GenerateName, MissingTextsCountAsEmpty) {
    EXPECT_EQ(gen(1, nullptr, nullptr, 9, 2), "1__B_VID_9");
    EXPECT_EQ(generateName(1, "X", "IP_Routed", 9, 2, nullptr), 0);
}

// ---- str_replace --------------------------------------------------------------

// The algorithm written out over std::string, for comparison.
std::string model(const std::string &text, size_t size, const std::string &from, const std::string &to) {
    std::string work;
    size_t limit = size - to.size() - 1;
    size_t i = 0;
    while (i < text.size()) {
        if (text.compare(i, from.size(), from) == 0) {
            work += to;
            i += from.size();
        } else {
            work += text[i++];
        }
        if (work.size() >= limit) break;
    }
    return work.substr(0, size - 1);
}

std::string replace_in(const std::string &text, size_t size, const char *from, const char *to) {
    std::vector<char> buf(std::max(size, text.size() + 1) + 16, '#');
    std::memcpy(buf.data(), text.c_str(), text.size() + 1);
    char *r = str_replace(buf.data(), size, from, to);
    EXPECT_EQ(r, buf.data());
    // Nothing at or past the buffer's size is written.
    for (size_t i = std::max(size, text.size() + 1); i < buf.size(); ++i) EXPECT_EQ(buf[i], '#') << i;
    return buf.data();
}

TEST(StrReplace, LongerReplacementFits) {
    EXPECT_EQ(replace_in("aab", 6, "ab", "xyz"), "axyz");
}

TEST(StrReplace, LimitZeroStillRunsTheFirstStep) {
    EXPECT_EQ(replace_in("aab", 4, "ab", "xyz"), "a");
    // A first step that is a replacement fills the buffer exactly.
    EXPECT_EQ(replace_in("abab", 4, "ab", "xyz"), "xyz");
}

TEST(StrReplace, ReplacesEveryOccurrence) {
    EXPECT_EQ(replace_in("a-b-c", 32, "-", "--"), "a--b--c");
    EXPECT_EQ(replace_in("INTERNET,TR069,VOIP", 64, ",", "_"), "INTERNET_TR069_VOIP");
    EXPECT_EQ(replace_in("aaaa", 16, "aa", "b"), "bb");
    EXPECT_EQ(replace_in("hello world", 32, "world", ""), "hello ");
    EXPECT_EQ(replace_in("aab", 16, "ab", "a"), "aa");  // no second pass
}

TEST(StrReplace, TextWithoutTheSubstringIsKept) {
    EXPECT_EQ(replace_in("192.168.1.1", 32, "::", "-"), "192.168.1.1");
}

TEST(StrReplace, EmptySubstringLeavesTheTextAlone) {
    char buf[8] = "abc";
    EXPECT_EQ(str_replace(buf, sizeof buf, "", "xyz"), buf);
    EXPECT_STREQ(buf, "abc");
}

TEST(StrReplace, OutputIsCutSoOneMoreReplacementFits) {
    // limit = 4 - 1 - 1 = 2: even text without any match is cut there.
    EXPECT_EQ(replace_in("abc", 4, "x", "y"), "ab");
    // limit = 8 - 3 - 1 = 4.
    EXPECT_EQ(replace_in("a.b.c.d", 8, ".", "..."), "a...");
}

TEST(StrReplace, BufferIsZeroPaddedAndEndsInZero) {
    char buf[12];
    std::memcpy(buf, "hello world", 12);
    str_replace(buf, sizeof buf, "world", "");
    EXPECT_EQ(std::memcmp(buf, "hello \0\0\0\0\0\0", 12), 0);
    char full[8];
    std::memcpy(full, "abcdefg", 8);
    str_replace(full, sizeof full, "z", "");
    EXPECT_EQ(std::memcmp(full, "abcdefg", 8), 0);
}

TEST(StrReplace, TooSmallBufferIsLeftUnchanged) {
    // size below strlen(to) + 1: no replacement could fit.
    char buf[8] = "ab";
    EXPECT_EQ(str_replace(buf, 3, "a", "xyz"), buf);
    EXPECT_STREQ(buf, "ab");
    EXPECT_EQ(str_replace(buf, 0, "a", ""), buf);
    EXPECT_STREQ(buf, "ab");
}

TEST(StrReplace, SizeOneKeepsNothing) {
    char buf[4] = "ab";
    EXPECT_EQ(str_replace(buf, 1, "a", ""), buf);
    EXPECT_EQ(buf[0], '\0');
    EXPECT_EQ(buf[1], 'b');  // past the given size: untouched
}

TEST(StrReplace, MissingArgumentsAreIgnored) {
    char buf[8] = "abc";
    EXPECT_EQ(str_replace(nullptr, 8, "a", "b"), nullptr);
    EXPECT_EQ(str_replace(buf, sizeof buf, nullptr, "b"), buf);
    EXPECT_EQ(str_replace(buf, sizeof buf, "a", nullptr), buf);
    EXPECT_STREQ(buf, "abc");
}

TEST(StrReplace, AgreesWithTheWrittenOutAlgorithmEverywhere) {
    const char *texts[] = {"", "a", "ab", "aab", "abab", "xaxbx", "the quick brown fox", "aaaaaaaaaaaaaaaa"};
    const char *froms[] = {"a", "ab", "x", "aa", "quick", "fox"};
    const char *tos[] = {"", "b", "xyz", "ABCDEFGH"};
    for (const char *t : texts)
        for (const char *f : froms)
            for (const char *to : tos)
                for (size_t size = std::strlen(to) + 1; size < 40; ++size)
                    ASSERT_EQ(replace_in(t, size, f, to), model(t, size, f, to))
                        << "text " << t << " from " << f << " to " << to << " size " << size;
}

// ---- qvs_is_hex_string ------------------------------------------------------

TEST(QvsIsHexString, EmptyTextIsHex) { EXPECT_EQ(qvs_is_hex_string(""), 1); }

TEST(QvsIsHexString, PrefixedNumberIsNotHex) { EXPECT_EQ(qvs_is_hex_string("0x1F"), 0); }

TEST(QvsIsHexString, DigitsAndBothLetterCases) {
    EXPECT_EQ(qvs_is_hex_string("0123456789abcdefABCDEF"), 1);
    EXPECT_EQ(qvs_is_hex_string("001a2b3c4d5e"), 1);
}

TEST(QvsIsHexString, FirstOtherCharacterGivesZero) {
    EXPECT_EQ(qvs_is_hex_string("12g4"), 0);
    EXPECT_EQ(qvs_is_hex_string("abc "), 0);
    EXPECT_EQ(qvs_is_hex_string(" abc"), 0);
    EXPECT_EQ(qvs_is_hex_string("00:11"), 0);
    EXPECT_EQ(qvs_is_hex_string("-1"), 0);
    EXPECT_EQ(qvs_is_hex_string("ab\xe9"), 0);
    EXPECT_EQ(qvs_is_hex_string("\xff"), 0);
}

TEST(QvsIsHexString, NullIsNotHex) { EXPECT_EQ(qvs_is_hex_string(nullptr), 0); }

// ---- isValidMac --------------------------------------------------------------

TEST(IsValidMac, LastBitSetIsValid) {
    const unsigned char mac[6] = {0, 0, 0, 0, 0, 1};
    EXPECT_EQ(isValidMac(mac), 1);
}

TEST(IsValidMac, BroadcastIsInvalid) {
    const unsigned char mac[6] = {0xff, 0xff, 0xff, 0xff, 0xff, 0xff};
    EXPECT_EQ(isValidMac(mac), 0);
}

TEST(IsValidMac, AllZerosIsInvalid) {
    const unsigned char mac[6] = {0, 0, 0, 0, 0, 0};
    EXPECT_EQ(isValidMac(mac), 0);
}

TEST(IsValidMac, MulticastAndOtherAddressesAreAccepted) {
    const unsigned char multicast[6] = {0x01, 0x00, 0x5e, 0x00, 0x00, 0x01};
    const unsigned char almost[6] = {0xff, 0xff, 0xff, 0xff, 0xff, 0xfe};
    const unsigned char first[6] = {0x80, 0, 0, 0, 0, 0};
    const unsigned char normal[6] = {0x00, 0x11, 0x22, 0x33, 0x44, 0x55};
    EXPECT_EQ(isValidMac(multicast), 1);
    EXPECT_EQ(isValidMac(almost), 1);
    EXPECT_EQ(isValidMac(first), 1);
    EXPECT_EQ(isValidMac(normal), 1);
}

TEST(IsValidMac, OnlySixBytesAreRead) {
    // Exactly six bytes on the heap: the sanitizers see any read past them.
    auto *mac = static_cast<unsigned char *>(std::malloc(6));
    std::memset(mac, 0xff, 6);
    EXPECT_EQ(isValidMac(mac), 0);
    mac[5] = 0;
    EXPECT_EQ(isValidMac(mac), 1);
    std::free(mac);
}

TEST(IsValidMac, NullIsInvalid) { EXPECT_EQ(isValidMac(nullptr), 0); }

}  // namespace
