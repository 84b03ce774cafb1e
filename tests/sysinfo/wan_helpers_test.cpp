// SPDX-License-Identifier: MIT
// WAN helpers through the caller's store handle: the PVC index for a new
// connection and the binding of LAN interfaces to bridged OTHER connections.
#include "sysinfo_fixture.hpp"

using namespace sysinfotest;

namespace {

constexpr int kWanDev = 170;
constexpr int kConnDev = 173;
constexpr int kIp = 174;
constexpr int kPpp = 196;

const std::string kEth3 = "InternetGatewayDevice.LANDevice.1.LANEthernetInterfaceConfig.3";
const std::string kWlan = "InternetGatewayDevice.LANDevice.1.WLANConfiguration.";
const std::string kSsid = "InternetGatewayDevice.WiFi.SSID.";

class WanHelpers : public SysinfoTest {
protected:
    std::uint32_t h = 0;

    void SetUp() override {
        SysinfoTest::SetUp();
        if (HasFatalFailure()) return;
        // No WAN connections at all, then the one WAN device.
        if (qvsim_exists(kWanDev, "1")) {
            ASSERT_EQ(qvsim_delete_instance(kWanDev, "1"), 0);
        }
        for (int d = 1; d <= 16; ++d) ASSERT_FALSE(qvsim_exists(kConnDev, ("1," + inst(d)).c_str()));
        ensure(kWanDev, "1");
        h = qvs_xmlShmInit();
        ASSERT_NE(h, 0u);
        ASSERT_EQ(qvsim_journal_clear(), 0);
    }
    void TearDown() override {
        if (h != 0) qvs_xmlShmDeInit(&h);
        SysinfoTest::TearDown();
    }

    static std::string conn(int oid, int dev, int n) {
        ensure(kConnDev, "1," + inst(dev));
        std::string c = "1," + inst(dev) + "," + inst(n);
        ensure(oid, c);
        return c;
    }
    static void pvc(int oid, int dev, int n, unsigned index) { set(oid, conn(oid, dev, n), "X_QV_PVCIndex", std::to_string(index)); }
    static void bridged(int oid, int dev, int n, const std::string &lan, const char *type = "IP_Bridged",
                        const char *service = "OTHER", const char *enable = "1") {
        const std::string c = conn(oid, dev, n);
        set(oid, c, "Enable", enable);
        set(oid, c, "ConnectionType", type);
        set(oid, c, "X_QV_ServiceList", service);
        set(oid, c, "X_QV_LanInterface", lan);
    }
    // Reads only: no store change, no attach of its own.
    static void expect_read_only() {
        EXPECT_EQ(count("attach"), 0);
        EXPECT_EQ(count("detach"), 0);
        EXPECT_EQ(count("set"), 0);
        EXPECT_EQ(count("save"), 0);
        EXPECT_EQ(count("log"), 0);
    }
};

// ---- Qvs_getpvcIndex --------------------------------------------------------

TEST_F(WanHelpers, NoWanDeviceGivesOne) {
    pvc(kIp, 1, 1, 1);
    ASSERT_EQ(qvsim_delete_instance(kWanDev, "1"), 0);
    EXPECT_EQ(Qvs_getpvcIndex(h), 1);
    expect_read_only();
}

TEST_F(WanHelpers, AMissingWanDeviceObjectGivesOne) {
    pvc(kIp, 1, 1, 1);
    pvc(kIp, 1, 2, 2);
    fault("object 170");
    EXPECT_EQ(Qvs_getpvcIndex(h), 1);
}

TEST_F(WanHelpers, NoConnectionAtAllGivesOne) {
    EXPECT_EQ(Qvs_getpvcIndex(h), 1);
    expect_read_only();
}

TEST_F(WanHelpers, ConnectionsWithoutIndexGiveOne) {
    pvc(kIp, 1, 1, 0);
    pvc(kPpp, 2, 1, 0);
    EXPECT_EQ(Qvs_getpvcIndex(h), 1);
}

TEST_F(WanHelpers, OneTwoThreeInUseGiveFour) {
    pvc(kIp, 1, 1, 1);
    pvc(kPpp, 2, 1, 2);
    pvc(kIp, 3, 1, 3);
    EXPECT_EQ(Qvs_getpvcIndex(h), 4);
    expect_read_only();
}

TEST_F(WanHelpers, OneAndThreeGiveTwo) {
    pvc(kIp, 1, 1, 1);
    pvc(kPpp, 1, 1, 3);
    EXPECT_EQ(Qvs_getpvcIndex(h), 2);
}

TEST_F(WanHelpers, TwentyFiveAloneGivesOne) {
    pvc(kIp, 1, 1, 25);
    EXPECT_EQ(Qvs_getpvcIndex(h), 1);
}

TEST_F(WanHelpers, OneToNineteenPlusTwentyFiveGiveTwenty) {
    // Spread over devices with gaps, PPP and IP connections.
    for (unsigned i = 1; i <= 19; ++i) pvc(i % 2 ? kPpp : kIp, 1 + static_cast<int>(i) % 5 * 3, 1 + static_cast<int>(i) / 5, i);
    pvc(kIp, 16, 8, 25);
    EXPECT_EQ(Qvs_getpvcIndex(h), 20);
}

TEST_F(WanHelpers, OneToNineteenGiveTwenty) {
    for (unsigned i = 1; i <= 19; ++i) pvc(kIp, 1 + static_cast<int>(i - 1) / 8, 1 + static_cast<int>(i - 1) % 8, i);
    EXPECT_EQ(Qvs_getpvcIndex(h), 20);
}

TEST_F(WanHelpers, TwentyIsNotAFlagOnlyAMaximum) {
    pvc(kIp, 1, 1, 1);
    pvc(kIp, 1, 2, 20);
    EXPECT_EQ(Qvs_getpvcIndex(h), 2);
    pvc(kIp, 1, 2, 2);
    pvc(kIp, 1, 3, 20);
    EXPECT_EQ(Qvs_getpvcIndex(h), 3);
}

TEST_F(WanHelpers, AHighIndexOpensTheGapsBelowIt) {
    pvc(kPpp, 4, 7, 1);
    pvc(kIp, 9, 2, 2);
    pvc(kIp, 12, 8, 30);
    EXPECT_EQ(Qvs_getpvcIndex(h), 3);
}

TEST_F(WanHelpers, TheHighestIndexInUseIsFollowed) {
    pvc(kIp, 2, 1, 7);
    pvc(kIp, 2, 2, 1);
    pvc(kIp, 2, 3, 2);
    EXPECT_EQ(Qvs_getpvcIndex(h), 3);
    for (unsigned i = 3; i <= 6; ++i) pvc(kPpp, 5, static_cast<int>(i), i);
    EXPECT_EQ(Qvs_getpvcIndex(h), 8);
}

TEST_F(WanHelpers, DuplicateIndicesCountOnce) {
    pvc(kIp, 1, 1, 1);
    pvc(kPpp, 1, 1, 1);
    pvc(kIp, 2, 1, 2);
    EXPECT_EQ(Qvs_getpvcIndex(h), 3);
}

TEST_F(WanHelpers, TheLastConnectionOfTheLastDeviceCounts) {
    pvc(kIp, 1, 1, 1);
    pvc(kPpp, 16, 8, 2);
    pvc(kIp, 16, 8, 3);
    EXPECT_EQ(Qvs_getpvcIndex(h), 4);
}

TEST_F(WanHelpers, ConnectionsOfAnUnreadableConnectionDeviceAreSkipped) {
    pvc(kIp, 1, 1, 1);
    pvc(kIp, 2, 1, 2);
    pvc(kIp, 3, 1, 3);
    fault("object 173 1,2");
    EXPECT_EQ(Qvs_getpvcIndex(h), 2);
}

TEST_F(WanHelpers, AZeroHandleGivesOne) {
    pvc(kIp, 1, 1, 1);
    EXPECT_EQ(Qvs_getpvcIndex(0), 1);
    expect_read_only();
}

TEST_F(WanHelpers, TheDefaultGatewayUsesOneToThree) {
    ASSERT_EQ(qvsim_reset(), 0);
    std::uint32_t fresh = qvs_xmlShmInit();
    ASSERT_NE(fresh, 0u);
    EXPECT_EQ(Qvs_getpvcIndex(fresh), 4);
    qvs_xmlShmDeInit(&fresh);
}

// ---- isIntfBindByOtherBridgeWan ---------------------------------------------

TEST_F(WanHelpers, AnEthernetPortBoundToABridgedOtherConnection) {
    bridged(kIp, 3, 1, "InternetGatewayDevice.LANDevice.1.LANEthernetInterfaceConfig.2," + kEth3);
    EXPECT_EQ(isIntfBindByOtherBridgeWan(h, kEth3.c_str()), 1);
    EXPECT_EQ(isIntfBindByOtherBridgeWan(h, "InternetGatewayDevice.LANDevice.1.LANEthernetInterfaceConfig.2"), 1);
    EXPECT_EQ(isIntfBindByOtherBridgeWan(h, "InternetGatewayDevice.LANDevice.1.LANEthernetInterfaceConfig.4"), 0);
    expect_read_only();
}

TEST_F(WanHelpers, APppBridgedConnectionCounts) {
    bridged(kPpp, 2, 4, kEth3, "PPPoE_Bridged");
    EXPECT_EQ(isIntfBindByOtherBridgeWan(h, kEth3.c_str()), 1);
}

TEST_F(WanHelpers, ADisabledConnectionDoesNotBind) {
    bridged(kIp, 1, 1, kEth3, "IP_Bridged", "OTHER", "0");
    EXPECT_EQ(isIntfBindByOtherBridgeWan(h, kEth3.c_str()), 0);
}

TEST_F(WanHelpers, ARoutedConnectionDoesNotBind) {
    bridged(kIp, 1, 1, kEth3, "IP_Routed");
    bridged(kPpp, 1, 1, kEth3, "PPPoE_Routed");
    EXPECT_EQ(isIntfBindByOtherBridgeWan(h, kEth3.c_str()), 0);
}

TEST_F(WanHelpers, AnotherServiceDoesNotBind) {
    bridged(kIp, 1, 1, kEth3, "IP_Bridged", "INTERNET");
    bridged(kIp, 1, 2, kEth3, "IP_Bridged", "TR069_INTERNET");
    EXPECT_EQ(isIntfBindByOtherBridgeWan(h, kEth3.c_str()), 0);
}

TEST_F(WanHelpers, AServiceListContainingOtherBinds) {
    bridged(kIp, 1, 1, kEth3, "IP_Bridged", "INTERNET_OTHER");
    EXPECT_EQ(isIntfBindByOtherBridgeWan(h, kEth3.c_str()), 1);
}

TEST_F(WanHelpers, AnEmptyBindingListDoesNotBind) {
    bridged(kIp, 1, 1, "");
    EXPECT_EQ(isIntfBindByOtherBridgeWan(h, kEth3.c_str()), 0);
    EXPECT_EQ(isIntfBindByOtherBridgeWan(h, ""), 0);
}

TEST_F(WanHelpers, AnEmptyPathMatchesAnyNonEmptyBinding) {
    bridged(kIp, 1, 1, kEth3);
    EXPECT_EQ(isIntfBindByOtherBridgeWan(h, ""), 1);
}

TEST_F(WanHelpers, AWlanPathIsMatchedThroughItsSsidName) {
    bridged(kIp, 5, 2, kEth3 + "," + kSsid + "3");
    EXPECT_EQ(isIntfBindByOtherBridgeWan(h, (kWlan + "3").c_str()), 1);
    EXPECT_EQ(isIntfBindByOtherBridgeWan(h, (kWlan + "4").c_str()), 0);
    EXPECT_EQ(isIntfBindByOtherBridgeWan(h, (kSsid + "3").c_str()), 1);
}

TEST_F(WanHelpers, ABindingThatNamesTheWlanPathItselfDoesNotMatch) {
    bridged(kIp, 1, 1, kWlan + "3");
    EXPECT_EQ(isIntfBindByOtherBridgeWan(h, (kWlan + "3").c_str()), 0);
    // Its own text, searched as a plain path, is found.
    EXPECT_EQ(isIntfBindByOtherBridgeWan(h, "InternetGatewayDevice.LANDevice.1.WLANConfig"), 1);
}

TEST_F(WanHelpers, AWlanPathOfAnotherShapeLooksForSsidZero) {
    bridged(kIp, 1, 1, kSsid + "0");
    EXPECT_EQ(isIntfBindByOtherBridgeWan(h, "InternetGatewayDevice.LANDevice.2.WLANConfiguration.5"), 1);
    EXPECT_EQ(isIntfBindByOtherBridgeWan(h, (kWlan + "5").c_str()), 0);
}

TEST_F(WanHelpers, TheKeyIsASubstringNotAWholeListPiece) {
    bridged(kIp, 1, 1, kSsid + "12");
    EXPECT_EQ(isIntfBindByOtherBridgeWan(h, (kWlan + "1").c_str()), 1);
    EXPECT_EQ(isIntfBindByOtherBridgeWan(h, (kWlan + "2").c_str()), 0);
}

TEST_F(WanHelpers, TheLastConnectionOfTheLastDeviceIsSearched) {
    bridged(kIp, 16, 8, kEth3);
    EXPECT_EQ(isIntfBindByOtherBridgeWan(h, kEth3.c_str()), 1);
}

TEST_F(WanHelpers, OtherConnectionsDoNotHideTheBoundOne) {
    bridged(kPpp, 1, 1, kEth3, "PPPoE_Routed", "INTERNET");
    bridged(kIp, 1, 1, kEth3, "IP_Bridged", "OTHER", "0");
    bridged(kIp, 1, 2, "InternetGatewayDevice.LANDevice.1.LANEthernetInterfaceConfig.1");
    bridged(kIp, 7, 3, kEth3);
    EXPECT_EQ(isIntfBindByOtherBridgeWan(h, kEth3.c_str()), 1);
}

TEST_F(WanHelpers, AWanDeviceIsNotNeededForTheBindingSearch) {
    // The search visits connection devices only; a fault on the WAN device
    // itself changes nothing.
    bridged(kIp, 2, 1, kEth3);
    fault("object 170");
    EXPECT_EQ(isIntfBindByOtherBridgeWan(h, kEth3.c_str()), 1);
    fault("object 173 1,2");
    EXPECT_EQ(isIntfBindByOtherBridgeWan(h, kEth3.c_str()), 0);
}

TEST_F(WanHelpers, AZeroHandleOrNoPathGivesZero) {
    bridged(kIp, 1, 1, kEth3);
    EXPECT_EQ(isIntfBindByOtherBridgeWan(0, kEth3.c_str()), 0);
    EXPECT_EQ(isIntfBindByOtherBridgeWan(h, nullptr), 0);
    expect_read_only();
}

TEST_F(WanHelpers, ALongPathIsCutTo255Characters) {
    const std::string path = kEth3 + std::string(300 - kEth3.size(), 'x');
    bridged(kIp, 1, 1, path.substr(0, 255));
    EXPECT_EQ(isIntfBindByOtherBridgeWan(h, path.c_str()), 1);
    bridged(kIp, 1, 1, path.substr(0, 254));
    EXPECT_EQ(isIntfBindByOtherBridgeWan(h, path.c_str()), 0);
}

TEST_F(WanHelpers, TheDefaultGatewaysOtherConnection) {
    // The default model: LAN 4 is bound to the bridged OTHER connection
    // (device 3); LAN 1-3 and SSIDs 1 and 9 to the routed INTERNET one.
    ASSERT_EQ(qvsim_reset(), 0);
    std::uint32_t fresh = qvs_xmlShmInit();
    ASSERT_NE(fresh, 0u);
    EXPECT_EQ(isIntfBindByOtherBridgeWan(fresh, "InternetGatewayDevice.LANDevice.1.LANEthernetInterfaceConfig.4"), 1);
    EXPECT_EQ(isIntfBindByOtherBridgeWan(fresh, kEth3.c_str()), 0);
    EXPECT_EQ(isIntfBindByOtherBridgeWan(fresh, (kWlan + "1").c_str()), 0);
    qvs_xmlShmDeInit(&fresh);
}

}  // namespace
