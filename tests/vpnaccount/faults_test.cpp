// SPDX-License-Identifier: MIT
// createSocketToGetAccount when things go wrong on the client's side: no
// file descriptors left, refused allocations, a write that fails.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <set>
#include <string>
#include <sys/socket.h>

#include <gtest/gtest.h>

#include "alloc_probe.hpp"
#include "cJSON.h"
#include "peer.hpp"
#include "qvs_utils.h"
#include "test_support.hpp"

using qvstest::CaptureFd;
using namespace vpntest;

namespace {
// When set, the next send() made by this thread fails as on a connection
// the peer has reset. This program's send() stands in for the C library's
// (the library resolves it here first); every other call goes through.
thread_local bool t_fail_next_send = false;
}  // namespace

extern "C" ssize_t send(int fd, const void *buf, size_t n, int flags) {
    if (t_fail_next_send) {
        t_fail_next_send = false;
        errno = EPIPE;
        return -1;
    }
    return sendto(fd, buf, n, flags, nullptr, 0);
}

namespace {

const std::string kGoodReply =
    "{\"return_Parameter\":{\"CmdType\":\"GET_VPN_ACCOUNT\",\"Status\":\"0\",\"data\":{"
    "\"vpn_addr\":\"198.51.100.1\",\"vpn_port\":\"500\",\"vpn_user\":\"bob\",\"vpn_pwd\":\"pw\","
    "\"account_timeout\":\"60\"}}}";

bool contains(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

struct Call {
    int result;
    std::string out, reply;
};

Call call(const std::string &proxy) {
    Call c;
    char reply[2100];
    std::strcpy(reply, "untouched");
    CaptureFd cap(1);
    c.result = createSocketToGetAccount("vpn1", "user42", proxy.c_str(), reply);
    c.out = cap.text();
    c.reply = reply;
    return c;
}

}  // namespace

TEST(CreateSocketToGetAccountFaults, NoDescriptorLeftForTheSocket) {
    ASSERT_TRUE(make_bridge("02:11:22:33:44:55"));
    int r = 0;
    std::string out = run_without_descriptors(
        [] {
            char reply[2100] = "untouched";
            int res = createSocketToGetAccount("vpn1", "user42", "127.0.0.1:1", reply);
            return std::strcmp(reply, "untouched") == 0 ? res : 50;
        },
        &r);
    EXPECT_EQ(r, 0);
    // Neither the MAC nor the connection could have a socket.
    EXPECT_TRUE(contains(out, "cd get_macAddr() \ncould not open socket\nget mac: \n")) << out;
    EXPECT_TRUE(contains(out, "create Socket error! \n")) << out;
    EXPECT_FALSE(contains(out, "Client-connect"));
}

TEST(CreateSocketToGetAccountFaults, FailedWriteGivesZero) {
    Peer peer("127.0.0.1", 0, PeerMode::ReplyAtOnce, frame(kGoodReply));
    t_fail_next_send = true;
    Call c = call(peer.designation());
    t_fail_next_send = false;
    EXPECT_EQ(c.result, 0);
    EXPECT_EQ(c.reply, "untouched");
    EXPECT_TRUE(contains(c.out, "will send data:"));
    EXPECT_TRUE(contains(c.out, "write data error! \n"));
    EXPECT_FALSE(contains(c.out, "write data success"));
    EXPECT_FALSE(contains(c.out, "Client-read() OK"));
    EXPECT_EQ(peer.received(), "") << "nothing reached the server";
}

TEST(CreateSocketToGetAccountFaults, OuterObjectThatCannotBeCreatedGivesMinusOne) {
    AllocProbe::install(1);
    Call c = call("127.0.0.1:1");
    AllocProbe::uninstall();
    EXPECT_EQ(c.result, -1);
    EXPECT_EQ(c.out, "cd createSocketToGetAccount() tunnel:vpn1 userId:user42 proxy:127.0.0.1:1 \n"
                     "createSocketToGetAccount cJSON_CreateObject fail !! \n");
    EXPECT_EQ(c.reply, "untouched");
}

TEST(CreateSocketToGetAccountFaults, WithoutAFrameNothingIsSentButTheReplyIsStillRead) {
    ASSERT_TRUE(make_bridge("02:11:22:33:44:55"));
    // The frame is the JSON text's length + 5 bytes; learn that length first.
    std::size_t n;
    {
        Peer peer("127.0.0.1", 0, PeerMode::ReplyAfterRequest, frame(kGoodReply));
        Call c = call(peer.designation());
        ASSERT_EQ(c.result, 1);
        n = peer.received().size() - 4;
    }
    Peer peer("127.0.0.1", 0, PeerMode::ReplyAtOnce, frame(kGoodReply));
    AllocProbe::install(0, n + 5);
    Call c = call(peer.designation());
    long live = AllocProbe::live;
    AllocProbe::uninstall();
    EXPECT_EQ(c.result, 1) << c.out;
    EXPECT_EQ(c.reply, kGoodReply);
    EXPECT_FALSE(contains(c.out, "will send data"));
    EXPECT_FALSE(contains(c.out, "write data"));
    EXPECT_TRUE(contains(c.out, "Recv data:" + kGoodReply + " \n"));
    EXPECT_EQ(peer.received(), "");
    EXPECT_EQ(live, 0);
}

TEST(CreateSocketToGetAccountFaults, EveryRefusedAllocationEndsCleanlyWithoutLeaks) {
    ASSERT_TRUE(make_bridge("02:11:22:33:44:55"));
    long total;
    {
        Peer peer("127.0.0.1", 0, PeerMode::ReplyAtOnce, frame(kGoodReply));
        AllocProbe::install();
        Call c = call(peer.designation());
        total = AllocProbe::count;
        EXPECT_EQ(AllocProbe::live, 0);
        AllocProbe::uninstall();
        ASSERT_EQ(c.result, 1);
    }
    ASSERT_GT(total, 10);
    std::set<std::string> seen;
    int sent_nothing = 0;
    for (long k = 1; k <= total; ++k) {
        Peer peer("127.0.0.1", 0, PeerMode::ReplyAtOnce, frame(kGoodReply));
        AllocProbe::install(k);
        Call c = call(peer.designation());
        long live = AllocProbe::live;
        AllocProbe::uninstall();
        peer.release();
        EXPECT_EQ(live, 0) << "allocation " << k << " refused";
        if (k == 1) {
            EXPECT_EQ(c.result, -1);
            EXPECT_TRUE(contains(c.out, "createSocketToGetAccount cJSON_CreateObject fail !! \n"));
        } else if (contains(c.out, "constructReqData() fail ! tunnel:vpn1 userId:user42 \n")) {
            EXPECT_EQ(c.result, 0) << k;
            seen.insert("request");
        } else if (contains(c.out, "error tmp_data is NULL ! \n")) {
            EXPECT_EQ(c.result, 0) << k;
            seen.insert("print");
        } else {
            // Only the frame is left: nothing is sent, the reply still read.
            EXPECT_EQ(c.result, 1) << k << c.out;
            EXPECT_EQ(c.reply, kGoodReply);
            EXPECT_EQ(peer.received(), "");
            ++sent_nothing;
        }
        if (c.result != 1) {
            EXPECT_EQ(c.reply, "untouched") << k;
        }
    }
    EXPECT_EQ(seen.size(), 2u);
    EXPECT_EQ(sent_nothing, 1);
}
