// SPDX-License-Identifier: MIT
// createSocketToGetAccount against a real server on loopback inside the
// test's own network namespace: the exact frame sent, the reply taken back,
// the designations, and a server that misbehaves.
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <pthread.h>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "cJSON.h"
#include "peer.hpp"
#include "qvs_utils.h"
#include "test_support.hpp"

using qvstest::CaptureFd;
using namespace vpntest;

namespace {

constexpr std::size_t kReplyBuf = 3000;

struct Call {
    int result;
    std::string out;
    std::string reply;  // up to the first NUL of the reply buffer
    char raw[kReplyBuf];
};

void call(Call &c, const char *tunnel, const char *user, const char *proxy) {
    std::memset(c.raw, '#', sizeof c.raw);
    c.raw[sizeof c.raw - 1] = '\0';
    CaptureFd cap(1);
    c.result = createSocketToGetAccount(tunnel, user, proxy, c.raw);
    c.out = cap.text();
    c.reply = c.raw;
}

bool untouched(const Call &c) {
    for (std::size_t i = 0; i + 1 < sizeof c.raw; ++i)
        if (c.raw[i] != '#') return false;
    return true;
}

std::string stamp_now() {
    std::time_t t = std::time(nullptr);
    struct tm tm;
    localtime_r(&t, &tm);
    char b[32];
    std::strftime(b, sizeof b, "%Y%m%d%H%M%S", &tm);
    return b;
}

const std::string kGoodReply =
    "{\"return_Parameter\":{\"CmdType\":\"GET_VPN_ACCOUNT\",\"Status\":\"0\",\"data\":{"
    "\"vpn_addr\":\"203.0.113.7\",\"vpn_port\":\"1701\",\"vpn_user\":\"alice\",\"vpn_pwd\":\"s3cret\","
    "\"account_timeout\":\"3600\"}}}";

// Lets the sandbox resolve names from /etc/hosts only; DNS, if tried, goes
// to loopback where nobody answers.
void hosts(const std::string &lines) {
    qvstest::write_file("/etc/hosts", "127.0.0.1 localhost\n" + lines);
    qvstest::write_file("/etc/resolv.conf", "nameserver 127.0.0.1\n");
}

bool contains(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

}  // namespace

TEST(CreateSocketToGetAccount, MissingOrEmptyArgumentsAreRefused) {
    Peer peer("127.0.0.1", 0, PeerMode::ReplyAfterRequest, frame(kGoodReply));
    const std::string d = peer.designation();
    char reply[8] = "keep";
    CaptureFd cap(1);
    EXPECT_EQ(createSocketToGetAccount(nullptr, "u", d.c_str(), reply), -1);
    EXPECT_EQ(createSocketToGetAccount("t", nullptr, d.c_str(), reply), -1);
    EXPECT_EQ(createSocketToGetAccount("t", "u", nullptr, reply), -1);
    EXPECT_EQ(createSocketToGetAccount("t", "u", d.c_str(), nullptr), -1);
    EXPECT_EQ(createSocketToGetAccount("", "u", d.c_str(), reply), -1);
    EXPECT_EQ(createSocketToGetAccount("t", "", d.c_str(), reply), -1);
    EXPECT_EQ(createSocketToGetAccount("t", "u", "", reply), -1);
    EXPECT_EQ(cap.text(), "");
    EXPECT_STREQ(reply, "keep");
    peer.release();
    EXPECT_EQ(peer.accepted(), 0);
}

TEST(CreateSocketToGetAccount, SendsTheExactFrameAndReturnsTheReplyText) {
    ASSERT_TRUE(make_bridge("02:11:22:33:44:55"));
    Peer peer("127.0.0.1", 0, PeerMode::ReplyAfterRequest, frame(kGoodReply));
    const std::string d = peer.designation();
    Call c;
    std::string before = stamp_now();
    call(c, "vpn1", "user42", d.c_str());
    std::string after = stamp_now();
    ASSERT_EQ(c.result, 1) << c.out;
    EXPECT_EQ(c.reply, kGoodReply);

    // The frame: 4-byte big-endian length, then the formatted request.
    std::string got = peer.received();
    ASSERT_GT(got.size(), 4u);
    std::string json = got.substr(4);
    EXPECT_EQ(got.substr(0, 4), frame(json).substr(0, 4));
    cJSON *req = cJSON_Parse(json.c_str());
    ASSERT_NE(req, nullptr) << json;
    std::string time = cJSON_GetStringValue(cJSON_GetObjectItem(req, "time"));
    // "Message" decodes (by openssl) to the formatted inner object.
    std::string inner_sent = openssl_base64_decode(cJSON_GetStringValue(cJSON_GetObjectItem(req, "Message")));
    cJSON_Delete(req);
    EXPECT_EQ(inner_sent, inner_text("vpn1", "user42"));
    cJSON *inner_obj = cJSON_Parse(inner_sent.c_str());
    ASSERT_NE(inner_obj, nullptr);
    EXPECT_STREQ(cJSON_GetStringValue(cJSON_GetObjectItem(inner_obj, "CmdType")), "GET_VPN_ACCOUNT");
    EXPECT_STREQ(cJSON_GetStringValue(cJSON_GetObjectItem(inner_obj, "tunnelName")), "vpn1");
    EXPECT_STREQ(cJSON_GetStringValue(cJSON_GetObjectItem(inner_obj, "userId")), "user42");
    cJSON_Delete(inner_obj);
    EXPECT_GE(time, before);
    EXPECT_LE(time, after);
    const std::string inner = inner_text("vpn1", "user42");
    const std::string message = openssl_base64(inner);
    const std::string md5 = openssl_md5_upper(time + message + "021122334455");
    const std::string expected = "{\n\t\"RPCMethod\":\t\"Post\",\n\t\"Plugin_Name\":\t\"\",\n\t\"MD5\":\t\"" + md5 +
                                 "\",\n\t\"time\":\t\"" + time + "\",\n\t\"mac\":\t\"021122334455\",\n\t\"Message\":\t\"" +
                                 message + "\"\n}";
    EXPECT_EQ(got, frame(expected));

    // Every step is reported on standard output, in order.
    const std::string port = std::to_string(peer.port());
    const std::string expected_out =
        "cd createSocketToGetAccount() tunnel:vpn1 userId:user42 proxy:" + d + " \n"
        "Enter constructReqData() tunnel:vpn1 userId:user42 \n"
        "Message:" + inner + " \n"
        "cd get_macAddr() \n"
        "get mac:021122334455 \n"
        "get base64 encryptedStr:" + message + " \n"
        "Md5EncryptedBuf=:" + time + message + "021122334455 \n"
        "get MD5:" + md5 + " Message:" + message + " \n"
        "get tmp_data:" + expected + " data_len:" + std::to_string(expected.size()) + " \n"
        "create Socket success ! \n"
        "Client-connect server:127.0.0.1 port:" + port + " success! \n"
        "will send data:" + expected + " \n"
        "write data success! \n"
        "Client-read() OK ! revData: \n"  // the length prefix starts with a 0 byte
        "Recv data:" + kGoodReply + " \n";
    EXPECT_EQ(c.out, expected_out);
}

TEST(CreateSocketToGetAccount, ReplyFeedsParseRepData) {
    Peer peer("127.0.0.1", 0, PeerMode::ReplyAfterRequest, frame(kGoodReply));
    Call c;
    call(c, "vpn1", "user42", peer.designation().c_str());
    ASSERT_EQ(c.result, 1);
    char addr[64], port[16], user[32], pwd[32], timeout[16];
    CaptureFd cap(1);
    ASSERT_EQ(parseRepData(c.raw, addr, port, user, pwd, timeout), 0);
    EXPECT_STREQ(addr, "203.0.113.7");
    EXPECT_STREQ(port, "1701");
    EXPECT_STREQ(user, "alice");
    EXPECT_STREQ(pwd, "s3cret");
    EXPECT_STREQ(timeout, "3600");
}

TEST(CreateSocketToGetAccount, HostNameIsLookedUpThroughEtcHosts) {
    hosts("127.0.0.9 provision.gateway.test\n");
    Peer peer("127.0.0.9", 0, PeerMode::ReplyAfterRequest, frame(kGoodReply));
    const std::string d = "provision.gateway.test:" + std::to_string(peer.port());
    Call c;
    call(c, "vpn1", "user42", d.c_str());
    EXPECT_EQ(c.result, 1) << c.out;
    EXPECT_EQ(c.reply, kGoodReply);
    EXPECT_TRUE(contains(c.out, "Client-connect server:provision.gateway.test port:" + std::to_string(peer.port()) +
                                    " success! \n"));
    EXPECT_GT(peer.received().size(), 4u);
}

TEST(CreateSocketToGetAccount, UnknownHostNameFails) {
    hosts("");
    Call c;
    call(c, "vpn1", "user42", "no-such-server.gateway.test:80");
    EXPECT_EQ(c.result, 0);
    EXPECT_TRUE(untouched(c));
    EXPECT_TRUE(contains(c.out, "server addr or ip is error! \n"));
    EXPECT_FALSE(contains(c.out, "create Socket"));
}

TEST(CreateSocketToGetAccount, DottedQuadConnectsToItsAddressAndPort) {
    ASSERT_EQ(sh("ip addr add 10.0.0.1/32 dev lo"), 0);
    Peer peer("10.0.0.1", 80, PeerMode::ReplyAfterRequest, frame(kGoodReply));
    Call c;
    call(c, "vpn1", "user42", "10.0.0.1:80");
    EXPECT_EQ(c.result, 1) << c.out;
    EXPECT_EQ(c.reply, kGoodReply);
    EXPECT_TRUE(contains(c.out, "Client-connect server:10.0.0.1 port:80 success! \n"));
}

TEST(CreateSocketToGetAccount, PortTextIsReadUpToItsFirstNonDigit) {
    // 10.0.0.1:80:90 goes to port 80; nobody listens on 90.
    ASSERT_EQ(sh("ip addr add 10.0.0.1/32 dev lo"), 0);
    Peer peer("10.0.0.1", 80, PeerMode::ReplyAfterRequest, frame(kGoodReply));
    Call c;
    call(c, "vpn1", "user42", "10.0.0.1:80:90");
    EXPECT_EQ(c.result, 1) << c.out;
    EXPECT_EQ(c.reply, kGoodReply);
    EXPECT_TRUE(contains(c.out, "proxy:10.0.0.1:80:90 \n"));
    EXPECT_TRUE(contains(c.out, "Client-connect server:10.0.0.1 port:80 success! \n"));
    EXPECT_EQ(peer.accepted(), 1);
}

TEST(CreateSocketToGetAccount, EmptyHostOrPortFails) {
    for (const char *d : {":80", "127.0.0.1:", "127.0.0.1", ":", "::80"}) {
        Call c;
        call(c, "vpn1", "user42", d);
        EXPECT_EQ(c.result, 0) << d;
        EXPECT_TRUE(untouched(c)) << d;
        EXPECT_TRUE(contains(c.out, "get server or port fail is NULL \n")) << d;
        EXPECT_FALSE(contains(c.out, "create Socket")) << d;
    }
}

TEST(CreateSocketToGetAccount, DesignationIsCutAt63Characters) {
    Peer peer("127.0.0.1", 0, PeerMode::ReplyAfterRequest, frame(kGoodReply));
    // Host and port within the first 63 characters: still reached.
    std::string d = peer.designation() + ":" + std::string(100, '9');
    Call c;
    call(c, "vpn1", "user42", d.c_str());
    EXPECT_EQ(c.result, 1) << c.out;
    // A host of 63 characters or more leaves no port in the copy.
    std::string long_host = std::string(70, 'h') + ":80";
    Call c2;
    call(c2, "vpn1", "user42", long_host.c_str());
    EXPECT_EQ(c2.result, 0);
    EXPECT_TRUE(contains(c2.out, "get server or port fail is NULL \n"));
}

TEST(CreateSocketToGetAccount, RefusedConnectionFails) {
    Call c;
    call(c, "vpn1", "user42", "127.0.0.1:1");
    EXPECT_EQ(c.result, 0);
    EXPECT_TRUE(untouched(c));
    EXPECT_TRUE(contains(c.out, "create Socket success ! \nClient-connect error! \n"));
    EXPECT_FALSE(contains(c.out, "will send data"));
}

TEST(CreateSocketToGetAccount, ServerThatClosesAtOnceGivesZero) {
    Peer peer("127.0.0.1", 0, PeerMode::CloseAtOnce);
    Call c;
    call(c, "vpn1", "user42", peer.designation().c_str());
    EXPECT_EQ(c.result, 0) << c.out;
    EXPECT_TRUE(untouched(c));
    EXPECT_TRUE(contains(c.out, "Client-connect server:127.0.0.1"));
    EXPECT_FALSE(contains(c.out, "Client-read() OK"));
    EXPECT_EQ(peer.accepted(), 1);
}

TEST(CreateSocketToGetAccount, ReplySplitOverTwoSegmentsIsCutAtTheFirstRead) {
    const std::string first = kGoodReply.substr(0, 40);
    const std::string second = kGoodReply.substr(40);
    // The length prefix announces the whole reply; only one read is made.
    std::string head = frame(kGoodReply).substr(0, 4) + first;
    Peer peer("127.0.0.1", 0, PeerMode::SplitReply, head, second);
    Call c;
    call(c, "vpn1", "user42", peer.designation().c_str());
    peer.release();  // the second segment goes out only after the call returned
    EXPECT_EQ(c.result, 1) << c.out;
    EXPECT_EQ(c.reply, first);
    EXPECT_TRUE(contains(c.out, "Recv data:" + first + " \n"));
}

TEST(CreateSocketToGetAccount, ReplyFillingAll2048BytesIsCopiedWithinWhatWasReceived) {
    std::string text(2044, 'x');
    text[0] = '{';
    text[2043] = '}';
    Peer peer("127.0.0.1", 0, PeerMode::ReplyAfterRequest, frame(text));
    Call c;
    call(c, "vpn1", "user42", peer.designation().c_str());
    ASSERT_EQ(c.result, 1) << c.out.substr(0, 200);
    EXPECT_EQ(c.reply, text);
    EXPECT_EQ(c.raw[2044], '\0');
    EXPECT_EQ(c.raw[2045], '#') << "nothing written past the text and its NUL";
    EXPECT_TRUE(contains(c.out, "Recv data:" + text + " \n"));
}

TEST(CreateSocketToGetAccount, LongerReplyIsReadUpTo2048Bytes) {
    std::string text(3000, 'y');
    Peer peer("127.0.0.1", 0, PeerMode::ReplyAfterRequest, frame(text));
    Call c;
    call(c, "vpn1", "user42", peer.designation().c_str());
    ASSERT_EQ(c.result, 1);
    EXPECT_EQ(c.reply, text.substr(0, 2044));
    EXPECT_EQ(c.raw[2045], '#');
}

TEST(CreateSocketToGetAccount, ReplyTextEndsAtItsFirstNul) {
    std::string text = std::string("abc") + '\0' + "def";
    Peer peer("127.0.0.1", 0, PeerMode::ReplyAfterRequest, frame(text));
    Call c;
    call(c, "vpn1", "user42", peer.designation().c_str());
    ASSERT_EQ(c.result, 1);
    EXPECT_EQ(c.reply, "abc");
    EXPECT_EQ(c.raw[4], '#');
}

TEST(CreateSocketToGetAccount, LengthPrefixIsNeitherCheckedNorUsed) {
    // A prefix announcing 5 bytes for a longer text, and one with printable bytes.
    std::string wrong = std::string("\0\0\0\5", 4) + "hello world";
    Peer peer("127.0.0.1", 0, PeerMode::ReplyAfterRequest, wrong);
    Call c;
    call(c, "vpn1", "user42", peer.designation().c_str());
    ASSERT_EQ(c.result, 1);
    EXPECT_EQ(c.reply, "hello world");
    Peer peer2("127.0.0.1", 0, PeerMode::ReplyAfterRequest, "ABCDtext");
    Call c2;
    call(c2, "vpn1", "user42", peer2.designation().c_str());
    ASSERT_EQ(c2.result, 1);
    EXPECT_EQ(c2.reply, "text");
    EXPECT_TRUE(contains(c2.out, "Client-read() OK ! revData:ABCDtext \nRecv data:text \n"));
}

TEST(CreateSocketToGetAccount, ReplyNoLongerThanItsPrefixGivesAnEmptyText) {
    Peer peer("127.0.0.1", 0, PeerMode::ReplyAfterRequest, std::string("\0\0", 2));
    Call c;
    call(c, "vpn1", "user42", peer.designation().c_str());
    EXPECT_EQ(c.result, 1);
    EXPECT_EQ(c.reply, "");
    EXPECT_EQ(c.raw[1], '#');
}

namespace {
std::atomic<int> g_signals{0};
void on_signal(int) { ++g_signals; }
}  // namespace

TEST(CreateSocketToGetAccount, WaitInterruptedBySignalsGoesOn) {
    struct sigaction sa;
    std::memset(&sa, 0, sizeof sa);
    sa.sa_handler = on_signal;  // no SA_RESTART: the wait sees EINTR
    sigaction(SIGUSR1, &sa, nullptr);
    Peer peer("127.0.0.1", 0, PeerMode::ReplyAfterRequest, frame(kGoodReply), "", 2000);
    pthread_t self = pthread_self();
    std::atomic<bool> done{false};
    // Signals only once the request is out, while the client waits for the
    // reply (which comes 2 s after the request).
    std::thread kicker([&] {
        if (!peer.wait_request()) return;
        for (int i = 0; i < 4 && !done; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
            if (!done) pthread_kill(self, SIGUSR1);
        }
    });
    Call c;
    call(c, "vpn1", "user42", peer.designation().c_str());
    done = true;
    kicker.join();
    EXPECT_GT(g_signals.load(), 0);
    EXPECT_EQ(c.result, 1) << c.out;
    EXPECT_EQ(c.reply, kGoodReply);
}

TEST(CreateSocketToGetAccount, OverLongRequestIsRefusedBeforeAnyConnection) {
    Peer peer("127.0.0.1", 0, PeerMode::ReplyAfterRequest, frame(kGoodReply));
    const std::string tunnel(800, 't');
    Call c;
    call(c, tunnel.c_str(), "user42", peer.designation().c_str());
    peer.release();
    EXPECT_EQ(c.result, 0);
    EXPECT_TRUE(untouched(c));
    EXPECT_TRUE(contains(c.out, "Message too long:"));
    EXPECT_TRUE(contains(c.out, "constructReqData() fail ! tunnel:" + tunnel + " userId:user42 \n"));
    EXPECT_FALSE(contains(c.out, "create Socket"));
    EXPECT_EQ(peer.accepted(), 0);
}
