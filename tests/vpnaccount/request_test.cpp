// SPDX-License-Identifier: MIT
// get_macAddr, md5ToAscii and constructReqData: the MAC of a real bridge,
// the signature checked against openssl, the exact printed request.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "alloc_probe.hpp"
#include "cJSON.h"
#include "peer.hpp"
#include "qvs_utils.h"
#include "test_support.hpp"

using qvstest::CaptureFd;
using namespace vpntest;

namespace {

std::string stamp_now() {
    std::time_t t = std::time(nullptr);
    struct tm tm;
    localtime_r(&t, &tm);
    char b[32];
    std::strftime(b, sizeof b, "%Y%m%d%H%M%S", &tm);
    return b;
}

std::string member(cJSON *obj, const char *key) {
    const char *v = cJSON_GetStringValue(cJSON_GetObjectItemCaseSensitive(obj, key));
    return v != nullptr ? v : "<missing>";
}

std::string printed(cJSON *obj) {
    char *t = cJSON_Print(obj);
    std::string s = t != nullptr ? t : "";
    cJSON_free(t);
    return s;
}

// The formatted request text the members must print as, in this order.
std::string outer_text(const std::string &md5, const std::string &time, const std::string &mac,
                       const std::string &message) {
    return "{\n\t\"RPCMethod\":\t\"Post\",\n\t\"Plugin_Name\":\t\"\",\n\t\"MD5\":\t\"" + md5 + "\",\n\t\"time\":\t\"" +
           time + "\",\n\t\"mac\":\t\"" + mac + "\",\n\t\"Message\":\t\"" + message + "\"\n}";
}

struct Built {
    int result;
    std::string out, text, md5, time, mac, message, before, after;
    int members;
};

Built build(const std::string &tunnel, const std::string &user) {
    Built b;
    cJSON *req = cJSON_CreateObject();
    b.before = stamp_now();
    {
        CaptureFd cap(1);
        b.result = constructReqData(tunnel.c_str(), user.c_str(), req);
        b.out = cap.text();
    }
    b.after = stamp_now();
    b.text = printed(req);
    b.md5 = member(req, "MD5");
    b.time = member(req, "time");
    b.mac = member(req, "mac");
    b.message = member(req, "Message");
    b.members = cJSON_GetArraySize(req);
    cJSON_Delete(req);
    return b;
}

}  // namespace

TEST(GetMacAddr, WritesTheBridgeAddressAsTwelveUpperCaseHexDigits) {
    ASSERT_TRUE(make_bridge("02:ab:cd:ef:01:9f"));
    char mac[16];
    std::memset(mac, '#', sizeof mac);
    CaptureFd cap(1);
    int r = get_macAddr(mac);
    std::string out = cap.text();
    EXPECT_EQ(r, 0);
    EXPECT_STREQ(mac, "02ABCDEF019F");
    EXPECT_EQ(mac[13], '#') << "nothing beyond the 13 bytes";
    EXPECT_EQ(out, "cd get_macAddr() \n");
}

TEST(GetMacAddr, WithoutTheBridgeLeavesTheOutputAsItWas) {
    char mac[16] = "unchanged";
    CaptureFd cap(1);
    int r = get_macAddr(mac);
    std::string out = cap.text();
    EXPECT_EQ(r, -1);
    EXPECT_STREQ(mac, "unchanged");
    EXPECT_EQ(out, "cd get_macAddr() \n");
}

TEST(GetMacAddr, NoSocketPrintsAndLeavesTheOutput) {
    ASSERT_TRUE(make_bridge("02:11:22:33:44:55"));
    int r = 0;
    std::string out = run_without_descriptors(
        [] {
            char mac[16] = "unchanged";
            int res = get_macAddr(mac);
            return std::strcmp(mac, "unchanged") == 0 ? res : 50;
        },
        &r);
    EXPECT_EQ(r, -1);
    EXPECT_EQ(out, "cd get_macAddr() \ncould not open socket\n");
}

TEST(GetMacAddr, NullOutputIsRefusedQuietly) {
    CaptureFd cap(1);
    EXPECT_EQ(get_macAddr(nullptr), -1);
    EXPECT_EQ(cap.text(), "");
}

TEST(Md5ToAscii, WritesThirtyTwoUpperCaseDigitsAndNul) {
    const unsigned char d[16] = {0x00, 0x01, 0x0a, 0x0f, 0x10, 0x7f, 0x80, 0x9c,
                                 0xab, 0xcd, 0xef, 0xf0, 0xfe, 0xff, 0x42, 0x5a};
    char out[40];
    std::memset(out, '#', sizeof out);
    md5ToAscii(d, out);
    EXPECT_STREQ(out, "00010A0F107F809CABCDEFF0FEFF425A");
    EXPECT_EQ(out[33], '#');
}

TEST(Md5ToAscii, NullArgumentsWriteNothing) {
    char out[4] = "abc";
    md5ToAscii(nullptr, out);
    EXPECT_STREQ(out, "abc");
    const unsigned char d[16] = {0x12};
    md5ToAscii(d, nullptr);  // nowhere to write: returns without touching anything
    EXPECT_EQ(d[0], 0x12);
}

TEST(Md5ToAscii, RendersTheDigestOfTheEmptyText) {
    const unsigned char d[16] = {0xd4, 0x1d, 0x8c, 0xd9, 0x8f, 0x00, 0xb2, 0x04,
                                 0xe9, 0x80, 0x09, 0x98, 0xec, 0xf8, 0x42, 0x7e};
    char out[33];
    md5ToAscii(d, out);
    EXPECT_EQ(std::string(out), openssl_md5_upper(""));
}

TEST(ConstructReqData, NullArgumentsAreRefusedWithoutOutput) {
    cJSON *req = cJSON_CreateObject();
    CaptureFd cap(1);
    EXPECT_EQ(constructReqData(nullptr, "u", req), -1);
    EXPECT_EQ(constructReqData("t", nullptr, req), -1);
    EXPECT_EQ(constructReqData("t", "u", nullptr), -1);
    EXPECT_EQ(cap.text(), "");
    EXPECT_EQ(cJSON_GetArraySize(req), 0);
    cJSON_Delete(req);
}

TEST(ConstructReqData, BuildsTheSignedRequestWithMembersInOrder) {
    ASSERT_TRUE(make_bridge("02:11:22:33:44:55"));
    Built b = build("vpn1", "user42");
    ASSERT_EQ(b.result, 0);
    const std::string inner = inner_text("vpn1", "user42");
    const std::string message = openssl_base64(inner);
    EXPECT_EQ(b.message, message);
    EXPECT_EQ(b.mac, "021122334455");
    ASSERT_EQ(b.time.size(), 14u);
    EXPECT_GE(b.time, b.before);
    EXPECT_LE(b.time, b.after);
    const std::string signed_text = b.time + message + "021122334455";
    EXPECT_EQ(b.md5, openssl_md5_upper(signed_text));
    EXPECT_EQ(b.text, outer_text(b.md5, b.time, "021122334455", message));
    EXPECT_EQ(b.out, "Enter constructReqData() tunnel:vpn1 userId:user42 \n"
                     "Message:" + inner + " \n"
                     "cd get_macAddr() \n"
                     "get mac:021122334455 \n"
                     "get base64 encryptedStr:" + message + " \n"
                     "Md5EncryptedBuf=:" + signed_text + " \n"
                     "get MD5:" + b.md5 + " Message:" + message + " \n");
}

TEST(ConstructReqData, MessageDecodesToTheFormattedInnerObject) {
    Built b = build("tunnel \"A\"", "id\\7");
    ASSERT_EQ(b.result, 0);
    std::vector<unsigned char> raw(b64d_size(static_cast<unsigned>(b.message.size())) + 1);
    unsigned n = b64_decode(reinterpret_cast<const unsigned char *>(b.message.data()),
                            static_cast<unsigned>(b.message.size()), raw.data());
    std::string decoded(reinterpret_cast<char *>(raw.data()), n);
    // cJSON's formatted printer: tabs, line breaks, escaped quotes and backslashes.
    EXPECT_EQ(decoded, inner_text("tunnel \\\"A\\\"", "id\\\\7"));
    cJSON *inner = cJSON_Parse(decoded.c_str());
    ASSERT_NE(inner, nullptr);
    EXPECT_EQ(member(inner, "CmdType"), "GET_VPN_ACCOUNT");
    EXPECT_EQ(member(inner, "tunnelName"), "tunnel \"A\"");
    EXPECT_EQ(member(inner, "userId"), "id\\7");
    EXPECT_STREQ(inner->child->string, "CmdType");
    EXPECT_STREQ(inner->child->next->string, "tunnelName");
    EXPECT_STREQ(inner->child->next->next->string, "userId");
    cJSON_Delete(inner);
}

static std::string utc_stamp_plus(std::time_t t, long seconds) {
    t += seconds;
    struct tm tm;
    gmtime_r(&t, &tm);
    char b[32];
    std::strftime(b, sizeof b, "%Y%m%d%H%M%S", &tm);
    return b;
}

TEST(ConstructReqData, TimeStampIsLocalTime) {
    // Eight hours east of UTC, without a zone file.
    setenv("TZ", "CST-8", 1);
    tzset();
    std::time_t before = std::time(nullptr);
    Built b = build("t", "u");
    std::time_t after = std::time(nullptr);
    ASSERT_EQ(b.result, 0);
    EXPECT_GE(b.time, utc_stamp_plus(before, 8 * 3600));
    EXPECT_LE(b.time, utc_stamp_plus(after, 8 * 3600));
}

TEST(ConstructReqData, UnreadableMacGivesEmptyMacAndSignsTimeAndMessageOnly) {
    Built b = build("vpn1", "user42");
    ASSERT_EQ(b.result, 0);
    EXPECT_EQ(b.mac, "");
    EXPECT_EQ(b.md5, openssl_md5_upper(b.time + b.message));
    EXPECT_NE(b.out.find("get mac: \n"), std::string::npos);
    EXPECT_EQ(b.text, outer_text(b.md5, b.time, "", b.message));
}

TEST(ConstructReqData, TwoRequestsInTheSameSecondCarryTheSameTimeAndMd5) {
    ASSERT_TRUE(make_bridge("02:11:22:33:44:55"));
    for (int attempt = 0; attempt < 5; ++attempt) {
        Built a = build("vpn1", "user42");
        Built b = build("vpn1", "user42");
        ASSERT_EQ(a.result, 0);
        ASSERT_EQ(b.result, 0);
        if (a.time != b.time) continue;  // a second boundary fell between them
        EXPECT_EQ(a.md5, b.md5);
        EXPECT_EQ(a.text, b.text);
        return;
    }
    FAIL() << "no two requests within one second";
}

// Tunnel name that makes the formatted inner text exactly `len` bytes.
static std::string tunnel_for_inner_length(std::size_t len) {
    std::size_t base = inner_text("", "u").size();
    return std::string(len - base, 't');
}

TEST(ConstructReqData, InnerTextOf747BytesIsSignedWhole) {
    ASSERT_TRUE(make_bridge("02:11:22:33:44:55"));
    std::string tunnel = tunnel_for_inner_length(747);
    ASSERT_EQ(inner_text(tunnel, "u").size(), 747u);
    Built b = build(tunnel, "u");
    ASSERT_EQ(b.result, 0);
    EXPECT_EQ(b.message.size(), 996u);
    EXPECT_EQ(b.message, openssl_base64(inner_text(tunnel, "u")));
    std::string signed_text = b.time + b.message + b.mac;
    EXPECT_EQ(signed_text.size(), 1022u);
    EXPECT_EQ(b.md5, openssl_md5_upper(signed_text));
}

TEST(ConstructReqData, InnerTextOf748BytesHasItsSignatureInputCutAt1023) {
    ASSERT_TRUE(make_bridge("02:11:22:33:44:55"));
    std::string tunnel = tunnel_for_inner_length(748);
    Built b = build(tunnel, "u");
    ASSERT_EQ(b.result, 0);
    EXPECT_EQ(b.message.size(), 1000u);
    std::string whole = b.time + b.message + b.mac;
    EXPECT_EQ(b.md5, openssl_md5_upper(whole.substr(0, 1023)));
    EXPECT_NE(b.md5, openssl_md5_upper(whole));
    EXPECT_NE(b.out.find("Md5EncryptedBuf=:" + whole.substr(0, 1023) + " \n"), std::string::npos);
}

TEST(ConstructReqData, InnerTextOf765BytesStillFitsTheMessageBuffer) {
    ASSERT_TRUE(make_bridge("02:11:22:33:44:55"));
    std::string tunnel = tunnel_for_inner_length(765);
    Built b = build(tunnel, "u");
    ASSERT_EQ(b.result, 0);
    EXPECT_EQ(b.message.size(), 1020u);
    EXPECT_EQ(b.message, openssl_base64(inner_text(tunnel, "u")));
    EXPECT_EQ(b.md5, openssl_md5_upper((b.time + b.message + b.mac).substr(0, 1023)));
    EXPECT_EQ(b.members, 6);
}

TEST(ConstructReqData, InnerTextAbove765BytesIsRefusedAndTheObjectLeftAlone) {
    ASSERT_TRUE(make_bridge("02:11:22:33:44:55"));
    for (std::size_t len : {766u, 767u, 768u, 2000u}) {
        std::string tunnel = tunnel_for_inner_length(len);
        Built b = build(tunnel, "u");
        EXPECT_EQ(b.result, -1) << len;
        EXPECT_EQ(b.members, 0) << len;
        EXPECT_EQ(b.out, "Enter constructReqData() tunnel:" + tunnel + " userId:u \n"
                         "Message:" + inner_text(tunnel, "u") + " \n"
                         "constructReqData Message too long:" + std::to_string(len) + " (at most 765) ! \n");
    }
}

TEST(ConstructReqData, InnerObjectThatCannotBeCreatedFails) {
    cJSON *req = cJSON_CreateObject();
    AllocProbe::install(1);
    CaptureFd cap(1);
    int r = constructReqData("vpn1", "user42", req);
    std::string out = cap.text();
    AllocProbe::uninstall();
    EXPECT_EQ(r, -1);
    EXPECT_EQ(out, "Enter constructReqData() tunnel:vpn1 userId:user42 \n"
                   "constructReqData cJSON_CreateObject() fail !! \n");
    EXPECT_EQ(cJSON_GetArraySize(req), 0);
    cJSON_Delete(req);
}

TEST(ConstructReqData, EveryRefusedAllocationFailsCleanlyWithoutLeaks) {
    ASSERT_TRUE(make_bridge("02:11:22:33:44:55"));
    // How many allocations one request takes.
    AllocProbe::install();
    cJSON *req = cJSON_CreateObject();
    {
        CaptureFd cap(1);
        ASSERT_EQ(constructReqData("vpn1", "user42", req), 0);
    }
    cJSON_Delete(req);
    long total = AllocProbe::count;
    EXPECT_EQ(AllocProbe::live, 0);
    AllocProbe::uninstall();
    ASSERT_GT(total, 10);
    int failures = 0;
    for (long k = 2; k <= total; ++k) {  // allocation 1 is the caller's object
        AllocProbe::install(k);
        cJSON *obj = cJSON_CreateObject();
        ASSERT_NE(obj, nullptr);
        int r;
        {
            CaptureFd cap(1);
            r = constructReqData("vpn1", "user42", obj);
        }
        int members = cJSON_GetArraySize(obj);
        cJSON_Delete(obj);
        EXPECT_EQ(AllocProbe::live, 0) << "allocation " << k << " refused";
        AllocProbe::uninstall();
        if (r == 0) {
            EXPECT_EQ(members, 6) << k;
        } else {
            EXPECT_EQ(r, -1) << k;
            EXPECT_EQ(members, 0) << "a failed request leaves the object as it was, allocation " << k;
            ++failures;
        }
    }
    EXPECT_EQ(failures, total - 1) << "every allocation of a request is needed";
}
