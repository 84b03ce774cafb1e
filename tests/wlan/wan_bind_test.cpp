// SPDX-License-Identifier: MIT
// Which WAN connection interface an SSID is bound to (attaches by itself).
#include <cstring>

#include "wlan_fixture.hpp"

using namespace wlantest;

namespace {

constexpr int kWanDev = 170;
constexpr int kConnDev = 173;
constexpr int kIp = 174;
constexpr int kPpp = 196;

const std::string kSsidPath = "InternetGatewayDevice.WiFi.SSID.";

class WanBind : public WlanTest {
protected:
    void SetUp() override {
        WlanTest::SetUp();
        if (HasFatalFailure()) return;
        // Start from no WAN connections at all, then one WAN device.
        for (int i = 1; i <= 16; ++i) {
            for (int j = 1; j <= 8; ++j) {
                std::string c = "1," + inst(i) + "," + inst(j);
                if (qvsim_exists(kPpp, c.c_str())) {
                    ASSERT_EQ(qvsim_delete_instance(kPpp, c.c_str()), 0);
                }
                if (qvsim_exists(kIp, c.c_str())) {
                    ASSERT_EQ(qvsim_delete_instance(kIp, c.c_str()), 0);
                }
            }
            std::string d = "1," + inst(i);
            if (qvsim_exists(kConnDev, d.c_str())) {
                ASSERT_EQ(qvsim_delete_instance(kConnDev, d.c_str()), 0);
            }
        }
        ensure(kWanDev, "1");
        qvsim_journal_clear();
    }
    static void conn(int oid, int dev, int n, const std::string &lan, const std::string &ifname) {
        ensure(kConnDev, "1," + inst(dev));
        std::string c = "1," + inst(dev) + "," + inst(n);
        ensure(oid, c);
        set(oid, c, "X_QV_LanInterface", lan);
        set(oid, c, "X_QV_IfName", ifname);
    }
    static void expect_attach_balanced() {
        EXPECT_EQ(count_kind("attach"), 1);
        EXPECT_EQ(count_kind("detach"), 1);
        EXPECT_EQ(count_kind("set"), 0);
        EXPECT_EQ(count_kind("save"), 0);
    }
};

TEST_F(WanBind, FindsTheIpConnectionBindingTheSsid) {
    conn(kIp, 1, 1, "InternetGatewayDevice.LANDevice.1.LANEthernetInterfaceConfig.1," + kSsidPath + "3", "nas0_0");
    char ifname[32];
    std::memset(ifname, 'x', sizeof ifname);
    EXPECT_EQ(qvs_wlan_get_bind_ifname_by_ssididx(3, ifname), 0);
    EXPECT_STREQ(ifname, "nas0_0");
    expect_attach_balanced();
    EXPECT_EQ(logs(), Lines{});
}

TEST_F(WanBind, FindsThePppConnectionBindingTheSsid) {
    conn(kPpp, 1, 2, kSsidPath + "9", "ppp0");
    char ifname[32] = {};
    EXPECT_EQ(qvs_wlan_get_bind_ifname_by_ssididx(9, ifname), 0);
    EXPECT_STREQ(ifname, "ppp0");
    expect_attach_balanced();
}

TEST_F(WanBind, PppWinsOverIpOfTheSameConnectionDevice) {
    conn(kIp, 1, 1, kSsidPath + "1", "nas0_0");
    conn(kPpp, 1, 3, kSsidPath + "1", "ppp1");
    char ifname[32] = {};
    EXPECT_EQ(qvs_wlan_get_bind_ifname_by_ssididx(1, ifname), 0);
    EXPECT_STREQ(ifname, "ppp1");
}

TEST_F(WanBind, TheFirstConnectionDeviceWins) {
    conn(kIp, 2, 1, kSsidPath + "2", "nas1_0");
    conn(kPpp, 3, 1, kSsidPath + "2", "ppp2");
    char ifname[32] = {};
    EXPECT_EQ(qvs_wlan_get_bind_ifname_by_ssididx(2, ifname), 0);
    EXPECT_STREQ(ifname, "nas1_0");
}

TEST_F(WanBind, TheLastConnectionOfTheLastDeviceIsSearched) {
    conn(kIp, 16, 8, kSsidPath + "16", "nas15_7");
    char ifname[32] = {};
    EXPECT_EQ(qvs_wlan_get_bind_ifname_by_ssididx(16, ifname), 0);
    EXPECT_STREQ(ifname, "nas15_7");
}

TEST_F(WanBind, PiecesAreComparedWholeNotByPrefix) {
    conn(kPpp, 1, 1, kSsidPath + "10", "ppp0");
    conn(kIp, 1, 1, kSsidPath + "1x," + kSsidPath + "11", "nas0_0");
    char ifname[32];
    std::memset(ifname, 'x', sizeof ifname);
    EXPECT_EQ(qvs_wlan_get_bind_ifname_by_ssididx(1, ifname), -1105);
    EXPECT_EQ(ifname[0], '\0');  // the first byte is cleared
    expect_attach_balanced();
}

TEST_F(WanBind, NoConnectionsGiveMinus1105) {
    char ifname[32] = {};
    EXPECT_EQ(qvs_wlan_get_bind_ifname_by_ssididx(1, ifname), -1105);
    expect_attach_balanced();
}

TEST_F(WanBind, AMissingWanDeviceGivesMinus1105) {
    conn(kIp, 1, 1, kSsidPath + "1", "nas0_0");
    fault("object 170");
    char ifname[32] = {};
    EXPECT_EQ(qvs_wlan_get_bind_ifname_by_ssididx(1, ifname), -1105);
    EXPECT_STREQ(ifname, "");
    expect_attach_balanced();
}

TEST_F(WanBind, AMissingConnectionDeviceIsSkipped) {
    conn(kIp, 1, 1, kSsidPath + "4", "nas0_0");
    conn(kIp, 2, 1, kSsidPath + "4", "nas1_0");
    fault("object 173 1,1");
    char ifname[32] = {};
    EXPECT_EQ(qvs_wlan_get_bind_ifname_by_ssididx(4, ifname), 0);
    EXPECT_STREQ(ifname, "nas1_0");
}

TEST_F(WanBind, ANullBufferGivesZero) {
    conn(kIp, 1, 1, kSsidPath + "1", "nas0_0");
    EXPECT_EQ(qvs_wlan_get_bind_ifname_by_ssididx(1, nullptr), 0);
    EXPECT_EQ(qvs_wlan_get_bind_ifname_by_ssididx(5, nullptr), 0);
    EXPECT_EQ(count_kind("attach"), 2);
    EXPECT_EQ(count_kind("detach"), 2);
}

TEST_F(WanBind, AttachFailureGivesMinus1001) {
    conn(kIp, 1, 1, kSsidPath + "1", "nas0_0");
    fault("attach");
    char ifname[32] = "keep";
    EXPECT_EQ(qvs_wlan_get_bind_ifname_by_ssididx(1, ifname), -1001);
    EXPECT_STREQ(ifname, "keep");
    EXPECT_EQ(count_kind("detach"), 0);
    EXPECT_EQ(count_kind("set"), 0);
    EXPECT_EQ(logs(), Lines{log_line("qvs_wlan_get_bind_ifname_by_ssididx", 1, "XMLSHMINIT fail\\n")});
}

TEST_F(WanBind, ALongBoundInterfaceListIsSearchedToItsEnd) {
    std::string lan;
    for (int i = 0; i < 15; ++i) lan += "InternetGatewayDevice.LANDevice.1.LANEthernetInterfaceConfig.1,";
    lan += std::string(46, 'a') + "," + kSsidPath + "7";
    ASSERT_EQ(lan.size(), 1025u);  // the longest list the store keeps
    conn(kPpp, 1, 1, lan, "ppp7");
    char ifname[32] = {};
    EXPECT_EQ(qvs_wlan_get_bind_ifname_by_ssididx(7, ifname), 0);
    EXPECT_STREQ(ifname, "ppp7");
}

}  // namespace
