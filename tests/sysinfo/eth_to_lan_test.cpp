// SPDX-License-Identifier: MIT
// An Ethernet port joins the LAN bridge: a real "ethN" (one end of a veth
// pair) and a real "br0" in the sandbox; the 200 ms pauses are taken on the
// suite's test clock, so no test waits for them.
#include <dlfcn.h>
#include <net/if.h>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "sysinfo_fixture.hpp"
#include "test_clock.h"

using namespace sysinfotest;

namespace {

constexpr long long kPauseNs = 200LL * 1000 * 1000;
constexpr time_t kPinned = 1767225600;  // 2026-01-01 00:00:00 UTC

// When each platform step was taken, on the test clock: nanoseconds since
// the pinned second.
std::vector<std::pair<std::string, long long>> g_steps;

void note(const std::string &step) {
    const timespec now = test_clock_now();
    g_steps.emplace_back(step, (static_cast<long long>(now.tv_sec) - kPinned) * 1000000000LL + now.tv_nsec);
}

template <typename F>
F next_definition(const char *name) {
    return reinterpret_cast<F>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

// The test program's own definitions of the three platform entry points the
// library uses here: they note the test clock's time and hand the call on
// to the platform, so a test sees which pause stood between which steps.
extern "C" {

int qvs_system(const char *cmd) {
    static const auto real = next_definition<int (*)(const char *)>("qvs_system");
    note(std::string("cmd ") + (cmd != nullptr ? cmd : ""));
    return real(cmd);
}

int libqv_netApi_remDev(const char *devName) {
    static const auto real = next_definition<int (*)(const char *)>("libqv_netApi_remDev");
    note(std::string("remDev ") + (devName != nullptr ? devName : ""));
    return real(devName);
}

int libqv_netApi_addDev(const char *baseName, const char *devName, int type, int vid, int arg1, int arg2, int arg3,
                        int arg4) {
    static const auto real =
        next_definition<int (*)(const char *, const char *, int, int, int, int, int, int)>("libqv_netApi_addDev");
    note(std::string("addDev ") + (devName != nullptr ? devName : ""));
    return real(baseName, devName, type, vid, arg1, arg2, arg3, arg4);
}

}  // extern "C"

namespace {

class EthToLan : public SysinfoTest {
protected:
    void SetUp() override {
        SysinfoTest::SetUp();
        if (HasFatalFailure()) return;
        sh("ip link add br0 type bridge && ip link set br0 up");
        sh("ip link add eth1 type veth peer name lanpeer1 && ip link set eth1 up && ip link set lanpeer1 up");
        test_clock_pin(kPinned);
        g_steps.clear();
        ASSERT_EQ(qvsim_journal_clear(), 0);
    }
    void TearDown() override {
        test_clock_release();
        SysinfoTest::TearDown();
    }
    static void sh(const std::string &cmd) { ASSERT_EQ(std::system(cmd.c_str()), 0) << cmd; }

    static std::string sysfs(const std::string &dev, const char *name) {
        std::string v = qvstest::read_file("/sys/class/net/" + dev + "/" + name);
        while (!v.empty() && v.back() == '\n') v.pop_back();
        return v;
    }
    static unsigned long flags(const std::string &dev) { return std::strtoul(sysfs(dev, "flags").c_str(), nullptr, 16); }
    static bool exists(const std::string &dev) { return qvstest::exists("/sys/class/net/" + dev); }
    static std::string master(const std::string &dev) {
        std::string link = qvstest::run("readlink /sys/class/net/" + dev + "/master");
        while (!link.empty() && link.back() == '\n') link.pop_back();
        return link.substr(link.rfind('/') + 1);
    }

    // The command lines and device calls, in order, for ifname and vid.
    static Lines sequence(const std::string &ifname, const std::string &vlan, const std::string &vid) {
        return Lines{"device|libqv_netApi_remDev|" + vlan,
                     "cmd|qvs_system|ifconfig " + ifname + " mtu 2000",
                     "device|libqv_netApi_addDev|" + ifname + "|" + vlan + "|3|" + vid + "|0|0|0|0",
                     "cmd|qvs_system|ifconfig " + ifname + " promisc",
                     "cmd|qvs_system|ifconfig " + vlan + " up",
                     "cmd|qvs_system|brctl addif br0 " + vlan};
    }
    static void expect_four_pauses() {
        EXPECT_EQ(test_clock_sleeps(), 4ul);
        for (unsigned long i = 0; i < 4; ++i) EXPECT_EQ(test_clock_sleep_ns(i), kPauseNs) << "pause " << i;
        EXPECT_EQ(test_clock_slept_ns(), 4 * kPauseNs);
    }
    static void expect_nothing_done() {
        EXPECT_EQ(effects(), Lines{});
        EXPECT_EQ(test_clock_sleeps(), 0ul);
    }
};

TEST_F(EthToLan, ThePortsVlanJoinsTheBridge) {
    ASSERT_FALSE(exists("eth1.5"));
    EXPECT_EQ(qvsUtil_setEthToLan("eth1", 5), 0);
    EXPECT_EQ(effects(), sequence("eth1", "eth1.5", "5"));
    expect_four_pauses();
    EXPECT_EQ(logs(), Lines{});

    // The sub-interface: a real 802.1Q VLAN where the kernel has it, else the
    // platform's MAC VLAN stand-in; either way a device on top of eth1.
    ASSERT_TRUE(exists("eth1.5"));
    char kind[64] = {};
    ASSERT_EQ(qvsim_device_get("netdev.eth1.5", kind, sizeof kind), 0);
    const std::string k = kind;
    EXPECT_TRUE(k == "eth1 3 5 vlan" || k == "eth1 3 5 macvlan") << k;
    const std::string details = qvstest::run("ip -d link show eth1.5");
    EXPECT_NE(details.find(k.substr(k.rfind(' ') + 1) + " "), std::string::npos) << details;
    EXPECT_EQ(sysfs("eth1.5", "iflink"), sysfs("eth1", "ifindex"));
    if (k == "eth1 3 5 vlan") {
        EXPECT_NE(details.find("vlan protocol 802.1Q id 5"), std::string::npos) << details;
    }

    // Brought up and a member of br0.
    EXPECT_NE(flags("eth1.5") & IFF_UP, 0ul);
    EXPECT_EQ(master("eth1.5"), "br0");
    EXPECT_TRUE(qvstest::exists("/sys/class/net/br0/brif/eth1.5"));
    // The port: MTU 2000 and promiscuous; the VLAN device takes the MTU too.
    EXPECT_EQ(sysfs("eth1", "mtu"), "2000");
    EXPECT_NE(flags("eth1") & IFF_PROMISC, 0ul);
    EXPECT_EQ(sysfs("eth1.5", "mtu"), "2000");
    // The port itself stays out of the bridge.
    EXPECT_FALSE(qvstest::exists("/sys/class/net/eth1/master"));
}

TEST_F(EthToLan, APauseFollowsTheRemovalTheAddThePromiscAndTheUp) {
    EXPECT_EQ(qvsUtil_setEthToLan("eth1", 7), 0);
    // Six steps in this order; four pauses of 200 ms among them, so the call
    // takes at least 800 ms on the gateway (none here: the clock is pinned
    // and moved by the pauses).
    EXPECT_EQ(effects(), sequence("eth1", "eth1.7", "7"));
    expect_four_pauses();
    const timespec now = test_clock_now();
    EXPECT_EQ(now.tv_sec, kPinned);
    EXPECT_EQ(now.tv_nsec, 4 * kPauseNs);
    // Where the pauses stand: after the removal, after the add, after the
    // promisc and after the up.
    using Step = std::pair<std::string, long long>;
    EXPECT_EQ(g_steps, (std::vector<Step>{{"remDev eth1.7", 0},
                                          {"cmd ifconfig eth1 mtu 2000", kPauseNs},
                                          {"addDev eth1.7", kPauseNs},
                                          {"cmd ifconfig eth1 promisc", 2 * kPauseNs},
                                          {"cmd ifconfig eth1.7 up", 3 * kPauseNs},
                                          {"cmd brctl addif br0 eth1.7", 4 * kPauseNs}}));
}

TEST_F(EthToLan, ASecondCallReplacesTheVlanDevice) {
    EXPECT_EQ(qvsUtil_setEthToLan("eth1", 5), 0);
    const std::string first = sysfs("eth1.5", "ifindex");
    ASSERT_EQ(qvsim_journal_clear(), 0);
    test_clock_pin(kPinned);
    EXPECT_EQ(qvsUtil_setEthToLan("eth1", 5), 0);
    EXPECT_EQ(effects(), sequence("eth1", "eth1.5", "5"));
    expect_four_pauses();
    ASSERT_TRUE(exists("eth1.5"));
    EXPECT_NE(sysfs("eth1.5", "ifindex"), first);  // removed and made again
    EXPECT_EQ(master("eth1.5"), "br0");
    EXPECT_NE(flags("eth1.5") & IFF_UP, 0ul);
}

TEST_F(EthToLan, TwoVlansOfOnePort) {
    EXPECT_EQ(qvsUtil_setEthToLan("eth1", 5), 0);
    EXPECT_EQ(qvsUtil_setEthToLan("eth1", 46), 0);
    EXPECT_EQ(master("eth1.5"), "br0");
    EXPECT_EQ(master("eth1.46"), "br0");
}

TEST_F(EthToLan, ANameNotBeginningWithEthRunsNothing) {
    EXPECT_EQ(qvsUtil_setEthToLan("wan0", 5), -1);
    EXPECT_EQ(qvsUtil_setEthToLan("et", 5), -1);
    EXPECT_EQ(qvsUtil_setEthToLan("", 5), -1);
    EXPECT_EQ(qvsUtil_setEthToLan("Eth1", 5), -1);
    EXPECT_EQ(qvsUtil_setEthToLan(nullptr, 5), -1);
    expect_nothing_done();
    EXPECT_EQ(logs(), Lines{});
}

TEST_F(EthToLan, JustEthIsAccepted) {
    EXPECT_EQ(qvsUtil_setEthToLan("eth", 9), 0);
    EXPECT_EQ(effects(), sequence("eth", "eth.9", "9"));
    expect_four_pauses();
    EXPECT_FALSE(exists("eth.9"));  // no such port: the platform refuses the add
}

TEST_F(EthToLan, AMissingPortStillRunsEveryStep) {
    EXPECT_EQ(qvsUtil_setEthToLan("eth2", 5), 0);
    EXPECT_EQ(effects(), sequence("eth2", "eth2.5", "5"));
    expect_four_pauses();
    EXPECT_FALSE(exists("eth2.5"));
    EXPECT_EQ(sysfs("eth1", "mtu"), "1500");
}

TEST_F(EthToLan, FailingDeviceCallsAreNotChecked) {
    fault("device libqv_netApi_remDev");
    fault("device libqv_netApi_addDev");
    EXPECT_EQ(qvsUtil_setEthToLan("eth1", 5), 0);
    EXPECT_EQ(effects(), sequence("eth1", "eth1.5", "5"));
    expect_four_pauses();
    EXPECT_FALSE(exists("eth1.5"));
    EXPECT_EQ(sysfs("eth1", "mtu"), "2000");
    EXPECT_NE(flags("eth1") & IFF_PROMISC, 0ul);
}

TEST_F(EthToLan, TheVlanNameIsCutTo15Characters) {
    EXPECT_EQ(qvsUtil_setEthToLan("eth1234567890", 4094), 0);
    EXPECT_EQ(effects(), sequence("eth1234567890", "eth1234567890.4", "4094"));
    expect_four_pauses();
}

TEST_F(EthToLan, ANegativeVid) {
    EXPECT_EQ(qvsUtil_setEthToLan("eth1", -1), 0);
    EXPECT_EQ(effects(), sequence("eth1", "eth1.-1", "-1"));
    EXPECT_FALSE(exists("eth1.-1"));
}

TEST_F(EthToLan, ShellCharactersAreRefused) {
    for (const char *name : {"eth1;reboot", "eth1 && reboot", "eth1|x", "eth1`x`", "eth1$(x)", "eth1>x", "eth1\nx",
                             "eth1'x", "eth1\"x", "eth1#x", "eth1\\x", "eth1<x"}) {
        ASSERT_EQ(qvsim_journal_clear(), 0);
        EXPECT_EQ(qvsUtil_setEthToLan(name, 5), -1) << name;
        EXPECT_EQ(effects(), Lines{}) << name;
        EXPECT_EQ(logs(), Lines{"qvsUtil_setEthToLan|1|refused unsafe text [" + std::string(name) + "]\n"}) << name;
    }
    EXPECT_EQ(test_clock_sleeps(), 0ul);
}

TEST_F(EthToLan, ANameTooLongForTheCommandLineIsRefused) {
    // "ifconfig <name> mtu 2000" must fit 127 characters.
    const std::string fits = "eth" + std::string(106, 'x');
    const std::string too_long = fits + "x";
    EXPECT_EQ(qvsUtil_setEthToLan(too_long.c_str(), 5), -1);
    expect_nothing_done();
    EXPECT_EQ(logs(), Lines{"qvsUtil_setEthToLan|1|refused text too long for its command line [" + too_long + "]\n"});
    ASSERT_EQ(qvsim_journal_clear(), 0);
    EXPECT_EQ(qvsUtil_setEthToLan(fits.c_str(), 5), 0);
    const Lines done = effects();
    ASSERT_EQ(done.size(), 6u);
    EXPECT_EQ(done[1], "cmd|qvs_system|ifconfig " + fits + " mtu 2000");
    EXPECT_EQ(done[1].size(), std::string("cmd|qvs_system|").size() + 127);
}

}  // namespace
