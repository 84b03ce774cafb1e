// SPDX-License-Identifier: MIT
// The dnsmasq hand-over: "ps" finds dnsmasq, SIGUSR1 with the value 4 is
// queued to it; a missing dnsmasq or a failing popen breaks nothing.
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <regex>
#include <string>
#include <poll.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "busybox_first.hpp"
#include "qvs_utils.h"
#include "test_support.hpp"
#include "vpn_env.hpp"

using qvstest::CaptureFd;
using qvstest::read_file;
using qvstest::write_file;
using namespace vpntest;

namespace {

std::size_t count_of(const std::string &text, const std::string &what) {
    std::size_t n = 0;
    for (std::size_t p = text.find(what); p != std::string::npos; p = text.find(what, p + 1)) ++n;
    return n;
}

class VpnDnsmasq : public ::testing::Test {
protected:
    void SetUp() override { prepare_dirs(); }
};

TEST_F(VpnDnsmasq, RealDnsmasqHandlesTheSignalOfEveryDomainChange) {
    const std::string log = "/tmp/dnsmasq.log";
    int pid = start_dnsmasq(log);
    ASSERT_GT(pid, 0) << read_file(log);
    // dnsmasq answers SIGUSR1 by writing its statistics ("cache size ...").
    ASSERT_EQ(count_of(read_file(log), "cache size"), 0u);

    EXPECT_EQ(qvvpn_add_route_domain(3, "a.example"), 0);
    EXPECT_TRUE(wait_for_text(log, "cache size", 5000)) << read_file(log);
    EXPECT_EQ(read_file(dnsmasq_file(3)), "a.example vpn_domain3 1\n");

    auto expect_signals = [&](std::size_t n) {
        for (int i = 0; i < 250 && count_of(read_file(log), "cache size") < n; ++i) usleep(20000);
        EXPECT_EQ(count_of(read_file(log), "cache size"), n) << read_file(log);
    };
    EXPECT_EQ(qvvpn_add_route_domain(3, "a.example"), 1);  // existing: still signalled
    expect_signals(2);
    EXPECT_EQ(qvvpn_del_route_domain(3, "z.example"), 0);  // not in the list: still signalled
    expect_signals(3);
    EXPECT_EQ(qvvpn_reload_route(3), 0);
    expect_signals(4);
    EXPECT_EQ(qvvpn_flush_route_domain(3), 0);
    expect_signals(5);
    EXPECT_EQ(read_file(dnsmasq_file(3)), "");
    // IP and MAC changes leave dnsmasq alone.
    EXPECT_EQ(qvvpn_add_route_ip(3, "10.1.1.1"), 0);
    char mac[] = "020000000001";
    EXPECT_EQ(qvvpn_add_route_mac(3, mac), 0);
    usleep(200000);
    EXPECT_EQ(count_of(read_file(log), "cache size"), 5u);
    EXPECT_EQ(::kill(pid, 0), 0) << "dnsmasq survived every signal";
    stop_process(pid);
}

// The gateway's "ps" is busybox's: every process, "PID USER COMMAND", the
// PID first. Checked with busybox's ps in every userland.
TEST_F(VpnDnsmasq, BusyboxProcessListFindsDnsmasq) {
    qvstest::BusyboxFirst busybox({"ps"});
    ASSERT_TRUE(busybox.ok());
    ASSERT_NE(qvstest::run("ps --help 2>&1").find("BusyBox"), std::string::npos);
    const std::string log = "/tmp/dnsmasq.log";
    int pid = start_dnsmasq(log);
    ASSERT_GT(pid, 0) << read_file(log);
    const std::string line = qvstest::run("ps | grep dnsmasq | grep -v grep");
    EXPECT_EQ(std::atoi(line.c_str()), pid) << line;
    EXPECT_EQ(qvvpn_add_route_domain(3, "a.example"), 0);
    EXPECT_TRUE(wait_for_text(log, "cache size", 5000)) << read_file(log);
    stop_process(pid);
}

TEST_F(VpnDnsmasq, TheSignalIsSigusr1QueuedWithTheValueFour) {
    FakeDnsmasq fake;
    fake.start();
    std::string ps = qvstest::run("ps | grep dnsmasq | grep -v grep");
    ASSERT_NE(ps.find(std::to_string(fake.pid)), std::string::npos) << ps;
    EXPECT_EQ(qvvpn_add_route_domain(3, "a.example"), 0);
    EXPECT_EQ(fake.report(), std::to_string(SIGUSR1) + " " + std::to_string(SI_QUEUE) + " 4 4");
}

// The value's union is wider than its int on 64-bit hosts: the bytes beyond
// the int are zero, not whatever the stack held (the stack is dirtied first).
__attribute__((noinline)) void dirty_stack() {
    volatile unsigned char junk[4096];
    for (auto &b : junk) b = 0xA5;
}

TEST_F(VpnDnsmasq, TheWholeSignalValueIsSet) {
    for (int i = 0; i < 3; ++i) {
        FakeDnsmasq fake;
        fake.start();
        dirty_stack();
        EXPECT_EQ(qvvpn_add_route_domain(3, "a.example"), i == 0 ? 0 : 1);
        EXPECT_EQ(fake.report(), std::to_string(SIGUSR1) + " " + std::to_string(SI_QUEUE) + " 4 4");
    }
}

TEST_F(VpnDnsmasq, NoDnsmasqRunningIsHarmless) {
    // The id read is 0 and nothing receives the signal: this process (which
    // would die of SIGUSR1) carries on.
    ASSERT_EQ(qvstest::run("ps | grep dnsmasq | grep -v grep"), "");
    EXPECT_EQ(qvvpn_add_route_domain(3, "a.example"), 0);
    EXPECT_EQ(qvvpn_del_route_domain(3, "a.example"), 0);
    EXPECT_EQ(qvvpn_reload_route(3), 0);
    EXPECT_EQ(read_file(domain_file(3)), "");
    EXPECT_EQ(read_file(dnsmasq_file(3)), "");
}

}  // namespace
