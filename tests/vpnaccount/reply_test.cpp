// SPDX-License-Identifier: MIT
// parseRepData: every check of the reply in order, its message, and the
// parsed document released on every path.
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "alloc_probe.hpp"
#include "qvs_utils.h"
#include "test_support.hpp"

using qvstest::CaptureFd;
using vpntest::AllocProbe;

namespace {

struct Parsed {
    int result;
    std::string out;
    char addr[64], port[64], user[64], pwd[64], timeout[64];
    long live;  // cJSON allocations left behind
};

void parse(Parsed &p, const std::string &text) {
    for (char *b : {p.addr, p.port, p.user, p.pwd, p.timeout}) std::strcpy(b, "untouched");
    AllocProbe::install();
    CaptureFd cap(1);
    p.result = parseRepData(text.c_str(), p.addr, p.port, p.user, p.pwd, p.timeout);
    p.out = cap.text();
    p.live = AllocProbe::live;
    AllocProbe::uninstall();
}

bool outputs_untouched(const Parsed &p) {
    for (const char *b : {p.addr, p.port, p.user, p.pwd, p.timeout})
        if (std::strcmp(b, "untouched") != 0) return false;
    return true;
}

std::string data_json(const std::string &addr, const std::string &port, const std::string &user,
                      const std::string &pwd, const std::string &timeout) {
    std::string d = "{";
    auto add = [&](const char *k, const std::string &v) {
        if (v == "<absent>") return;
        if (d.size() > 1) d += ",";
        d += std::string("\"") + k + "\":" + v;
    };
    add("vpn_addr", addr);
    add("vpn_port", port);
    add("vpn_user", user);
    add("vpn_pwd", pwd);
    add("account_timeout", timeout);
    return d + "}";
}

std::string reply_json(const std::string &cmd, const std::string &status, const std::string &data) {
    std::string r = "{";
    bool first = true;
    auto add = [&](const char *k, const std::string &v) {
        if (v == "<absent>") return;
        if (!first) r += ",";
        first = false;
        r += std::string("\"") + k + "\":" + v;
    };
    add("CmdType", cmd);
    add("Status", status);
    add("data", data);
    return "{\"return_Parameter\":" + r + "}}";
}

const std::string kData = data_json("\"203.0.113.7\"", "\"1701\"", "\"alice\"", "\"s3cret\"", "\"3600\"");
const std::string kGood = reply_json("\"GET_VPN_ACCOUNT\"", "\"0\"", kData);

void expect_refused(const std::string &text, const std::string &message) {
    Parsed p;
    parse(p, text);
    EXPECT_EQ(p.result, -1) << text;
    EXPECT_EQ(p.out, "Enter parseRepData buf:" + text + " \n" + message) << text;
    EXPECT_TRUE(outputs_untouched(p)) << text;
    EXPECT_EQ(p.live, 0) << "parsed document released: " << text;
}

}  // namespace

TEST(ParseRepData, GoodReplyFillsTheFiveValuesInOrder) {
    Parsed p;
    parse(p, kGood);
    ASSERT_EQ(p.result, 0) << p.out;
    EXPECT_STREQ(p.addr, "203.0.113.7");
    EXPECT_STREQ(p.port, "1701");
    EXPECT_STREQ(p.user, "alice");
    EXPECT_STREQ(p.pwd, "s3cret");
    EXPECT_STREQ(p.timeout, "3600");
    EXPECT_EQ(p.out, "Enter parseRepData buf:" + kGood + " \n"
                     "replay->vpn_addr:203.0.113.7 replay->vpn_port:1701 replay->account:alice "
                     "replay->pwd:s3cret replay->account_time:3600 \n");
    EXPECT_EQ(p.live, 0) << "the parsed document is deleted after the copy";
}

TEST(ParseRepData, ValuesAreCopiedAsSentWithEscapesResolved) {
    std::string text = reply_json("\"GET_VPN_ACCOUNT\"", "\"0\"",
                                  data_json("\"vpn.example.test\"", "\"0500\"", "\"a \\\"b\\\"\"", "\"p\\u00e9w\"",
                                            "\"-1\""));
    Parsed p;
    parse(p, text);
    ASSERT_EQ(p.result, 0);
    EXPECT_STREQ(p.addr, "vpn.example.test");
    EXPECT_STREQ(p.port, "0500");
    EXPECT_STREQ(p.user, "a \"b\"");
    EXPECT_STREQ(p.pwd, "p\xc3\xa9w");
    EXPECT_STREQ(p.timeout, "-1");
}

TEST(ParseRepData, ExtraMembersAndWhitespaceAreIgnored) {
    std::string text = "  {\n \"other\": [1,2],\n \"return_Parameter\": {\"x\": null, \"CmdType\": \"GET_VPN_ACCOUNT\",\n"
                       " \"Status\": \"0\", \"data\": " + kData + "}}\n";
    Parsed p;
    parse(p, text);
    EXPECT_EQ(p.result, 0);
    EXPECT_STREQ(p.user, "alice");
}

TEST(ParseRepData, MemberNamesMatchWhateverTheirCase) {
    // cJSON's member lookup does not tell upper from lower case.
    std::string text = "{\"RETURN_PARAMETER\":{\"cmdtype\":\"GET_VPN_ACCOUNT\",\"status\":\"0\",\"DATA\":"
                       "{\"VPN_ADDR\":\"a\",\"Vpn_Port\":\"1\",\"vpn_USER\":\"u\",\"VPN_PWD\":\"p\","
                       "\"Account_Timeout\":\"9\"}}}";
    Parsed p;
    parse(p, text);
    EXPECT_EQ(p.result, 0);
    EXPECT_STREQ(p.timeout, "9");
}

TEST(ParseRepData, MalformedJsonIsRefused) {
    for (const char *t : {"", "{", "not json", "{\"return_Parameter\":}", "{\"a\":1,}"})
        expect_refused(t, std::string("cJSON_Parse buf:") + t + " fail! \n");
}

TEST(ParseRepData, MissingReturnParameterIsRefused) {
    expect_refused("{}", "no Array return_Parameter \n");
    expect_refused("[1,2]", "no Array return_Parameter \n");
    expect_refused("{\"return_parameters\":{}}", "no Array return_Parameter \n");
}

TEST(ParseRepData, CmdTypeMustBeTheStringGetVpnAccount) {
    const std::string m = "cmdType is NULL or cmdType not GET_VPN_ACCOUNT \n";
    expect_refused(reply_json("<absent>", "\"0\"", kData), m);
    expect_refused(reply_json("\"SET_VPN_ACCOUNT\"", "\"0\"", kData), m);
    expect_refused(reply_json("\"get_vpn_account\"", "\"0\"", kData), m);
    expect_refused(reply_json("\"\"", "\"0\"", kData), m);
    expect_refused(reply_json("7", "\"0\"", kData), m);
    expect_refused(reply_json("null", "\"0\"", kData), m);
    // A return_Parameter that is not an object has no members at all.
    expect_refused("{\"return_Parameter\":\"GET_VPN_ACCOUNT\"}", m);
}

TEST(ParseRepData, StatusMustBeTheStringZero) {
    const std::string m = "Status is NULL or Status is not 0 \n";
    expect_refused(reply_json("\"GET_VPN_ACCOUNT\"", "\"1\"", kData), m);
    expect_refused(reply_json("\"GET_VPN_ACCOUNT\"", "0", kData), m);
    expect_refused(reply_json("\"GET_VPN_ACCOUNT\"", "<absent>", kData), m);
    expect_refused(reply_json("\"GET_VPN_ACCOUNT\"", "\"00\"", kData), m);
    expect_refused(reply_json("\"GET_VPN_ACCOUNT\"", "\"\"", kData), m);
    expect_refused(reply_json("\"GET_VPN_ACCOUNT\"", "false", kData), m);
}

TEST(ParseRepData, MissingDataIsRefused) {
    expect_refused(reply_json("\"GET_VPN_ACCOUNT\"", "\"0\"", "<absent>"), "no array data \n");
}

TEST(ParseRepData, DataThatIsNotAnObjectHasNoAddress) {
    expect_refused(reply_json("\"GET_VPN_ACCOUNT\"", "\"0\"", "[\"203.0.113.7\"]"),
                   "no vpn_addr or vpn_addr is null\n");
    expect_refused(reply_json("\"GET_VPN_ACCOUNT\"", "\"0\"", "\"text\""), "no vpn_addr or vpn_addr is null\n");
}

TEST(ParseRepData, EachOfTheFiveValuesMustBeANonEmptyString) {
    struct Row {
        int index;
        const char *message;
    };
    const Row rows[] = {{0, "no vpn_addr or vpn_addr is null\n"},
                        {1, "no vpn_port or vpn_port is null\n"},
                        {2, "no account or account is null\n"},
                        {3, "no pwd or pwd is null\n"},
                        {4, "no account_time or account_time is null\n"}};
    const std::string good[5] = {"\"203.0.113.7\"", "\"1701\"", "\"alice\"", "\"s3cret\"", "\"3600\""};
    for (const Row &row : rows) {
        for (const char *bad : {"<absent>", "\"\"", "1701", "null", "true", "{}", "[\"x\"]"}) {
            std::string v[5] = {good[0], good[1], good[2], good[3], good[4]};
            v[row.index] = bad;
            expect_refused(reply_json("\"GET_VPN_ACCOUNT\"", "\"0\"", data_json(v[0], v[1], v[2], v[3], v[4])),
                           row.message);
        }
    }
}

TEST(ParseRepData, FirstMissAmongSeveralIsReported) {
    // The checks go in order and stop at the first miss.
    expect_refused(reply_json("\"GET_VPN_ACCOUNT\"", "\"1\"", data_json("\"\"", "\"\"", "\"\"", "\"\"", "\"\"")),
                   "Status is NULL or Status is not 0 \n");
    expect_refused(reply_json("\"GET_VPN_ACCOUNT\"", "\"0\"",
                              data_json("\"a\"", "\"1\"", "\"u\"", "\"\"", "\"\"")),
                   "no pwd or pwd is null\n");
}

TEST(ParseRepData, NullArgumentsAreRefusedWithoutOutput) {
    char a[8], b[8], c[8], d[8], e[8];
    CaptureFd cap(1);
    EXPECT_EQ(parseRepData(nullptr, a, b, c, d, e), -1);
    EXPECT_EQ(parseRepData(kGood.c_str(), nullptr, b, c, d, e), -1);
    EXPECT_EQ(parseRepData(kGood.c_str(), a, nullptr, c, d, e), -1);
    EXPECT_EQ(parseRepData(kGood.c_str(), a, b, nullptr, d, e), -1);
    EXPECT_EQ(parseRepData(kGood.c_str(), a, b, c, nullptr, e), -1);
    EXPECT_EQ(parseRepData(kGood.c_str(), a, b, c, d, nullptr), -1);
    EXPECT_EQ(cap.text(), "");
}

TEST(ParseRepData, RefusedAllocationsFailCleanly) {
    // The holder first, then the parse: each refusal gives -1 and leaves nothing.
    for (long k = 1; k <= 40; ++k) {
        char a[64] = "untouched", b[64], c[64], d[64], e[64];
        AllocProbe::install(k);
        int r;
        {
            CaptureFd cap(1);
            r = parseRepData(kGood.c_str(), a, b, c, d, e);
        }
        long live = AllocProbe::live;
        long count = AllocProbe::count;
        AllocProbe::uninstall();
        EXPECT_EQ(live, 0) << k;
        if (k <= count) {
            EXPECT_EQ(r, -1) << k;
            EXPECT_STREQ(a, "untouched") << k;
        } else {
            EXPECT_EQ(r, 0) << k;
            EXPECT_STREQ(a, "203.0.113.7");
            break;
        }
    }
}
