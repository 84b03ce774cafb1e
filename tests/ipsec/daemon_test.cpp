// SPDX-License-Identifier: MIT
// ipsec_update_status against live IKE daemons: the gateway's charon (whose
// SA list the library reads through the real swanctl) and a VPN server's
// charon, in two network namespaces of this sandbox joined by a veth pair.
// Each test starts both daemons and stops them.
#include <chrono>
#include <map>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "ipsec_env.hpp"
#include "qvs_utils.h"
#include "qvsim.h"
#include "test_support.hpp"

using namespace ipsectest;
using Statuses = std::map<int, std::string>;
using Writes = std::vector<std::pair<std::string, std::string>>;

namespace {

class IpsecDaemons : public ::testing::Test {
protected:
    void SetUp() override {
        prepare();
        // Instance 1 enabled and 2 disabled (default model); 3 enabled.
        add_config(3, true);
        ASSERT_NO_FATAL_FAILURE(ike_.start());
        journal_clear();
    }
    void TearDown() override { ike_.stop(); }

    Statuses refresh() {
        journal_clear();
        EXPECT_EQ(ipsec_update_status(), 0);
        EXPECT_TRUE(balanced());
        EXPECT_FALSE(qvstest::exists(kStatusFile));
        return statuses();
    }

    // Waits (up to 5 s) until the gateway's SA list holds text.
    bool wait_for_sa(const std::string &text) {
        for (int waited = 0; waited < 5000; waited += 20) {
            if (ike_.list_sas().find(text) != std::string::npos) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return false;
    }

    IkePair ike_;
};

const Statuses kReset = {{1, "Disconnected"}, {2, "Unconfigured"}, {3, "Disconnected"}};

Statuses with(Statuses base, const Statuses &changes) {
    for (const auto &[k, v] : changes) base[k] = v;
    return base;
}

TEST_F(IpsecDaemons, NoSaLeavesTheResetWords) {
    EXPECT_EQ(ike_.list_sas(), "");
    EXPECT_EQ(refresh(), kReset);
}

TEST_F(IpsecDaemons, TunnelUpIsConnectedAndTornDownIsReset) {
    ASSERT_TRUE(ike_.bring_up(1));
    const std::string sas = ike_.list_sas();
    ASSERT_NE(sas.find("conn1: #"), std::string::npos) << sas;
    ASSERT_NE(sas.find("child1: #"), std::string::npos) << sas;
    ASSERT_NE(sas.find("INSTALLED"), std::string::npos) << sas;
    // With the kernel's ESP, the child SA is the kernel's: both directions.
    if (ike_.kernel_esp()) {
        const std::string states = ike_.kernel_sas();
        EXPECT_NE(states.find("src 10.77.0.1 dst 10.77.0.2"), std::string::npos) << states;
        EXPECT_NE(states.find("src 10.77.0.2 dst 10.77.0.1"), std::string::npos) << states;
        EXPECT_NE(states.find("proto esp"), std::string::npos) << states;
    }

    EXPECT_EQ(refresh(), with(kReset, {{1, "Connected"}}));
    bool quiet = false;
    Writes w = status_writes(&quiet);
    EXPECT_TRUE(quiet);
    ASSERT_EQ(w.size(), 5u);
    EXPECT_EQ(w[3], (std::pair<std::string, std::string>{"1", "PhaseII_Connecting"}));
    EXPECT_EQ(w[4], (std::pair<std::string, std::string>{"1", "Connected"}));
    EXPECT_EQ(commands_run(), std::vector<std::string>{"swanctl --list-sas > /var/ipsec.status"});

    ike_.tear_down(1);
    EXPECT_EQ(ike_.list_sas(), "");
    if (ike_.kernel_esp()) {
        EXPECT_EQ(ike_.kernel_sas(), "");
    }
    EXPECT_EQ(refresh(), kReset);
}

TEST_F(IpsecDaemons, Conn3EstablishedWithChild3InstalledIsConnected) {
    ASSERT_TRUE(ike_.bring_up(3));
    EXPECT_EQ(refresh(), with(kReset, {{3, "Connected"}}));
    ASSERT_TRUE(ike_.bring_up(1));
    EXPECT_EQ(refresh(), with(kReset, {{1, "Connected"}, {3, "Connected"}}));
}

TEST_F(IpsecDaemons, IkeSaWithoutChildIsPhaseTwoConnecting) {
    ASSERT_TRUE(ike_.bring_up(1));
    int st = 1;
    ike_.gateway("--terminate --child child1 --timeout 10", &st);
    ASSERT_EQ(st, 0);
    const std::string sas = ike_.list_sas();
    ASSERT_NE(sas.find("ESTABLISHED"), std::string::npos) << sas;
    ASSERT_EQ(sas.find("child1"), std::string::npos) << sas;
    EXPECT_EQ(refresh(), with(kReset, {{1, "PhaseII_Connecting"}}));
}

TEST_F(IpsecDaemons, UnansweredIkeSaIsPhaseOneConnecting) {
    ike_.cut_link();
    // The initiation waits for an answer that does not come: leave it running.
    qvstest::run("/usr/sbin/swanctl --initiate --ike conn3 --child child3 >/dev/null 2>&1 &");
    ASSERT_TRUE(wait_for_sa("CONNECTING")) << ike_.list_sas();
    EXPECT_EQ(refresh(), with(kReset, {{3, "PhaseI_Connecting"}}));
}

TEST_F(IpsecDaemons, Conn200AndConn255ChangeNoInstance) {
    // Instances 200 and 255 exist here, yet conn200 (-56) and conn255 (-1)
    // reach neither.
    add_config(200, true);
    add_config(255, true);
    set_status(200, "Stale");
    set_status(255, "Stale");
    ASSERT_TRUE(ike_.bring_up(200));
    ASSERT_TRUE(ike_.bring_up(255));
    EXPECT_EQ(refresh(), kReset);
    EXPECT_EQ(status_writes().size(), 3u);
    EXPECT_EQ(status_of(200), "Stale");
    EXPECT_EQ(status_of(255), "Stale");
}

TEST_F(IpsecDaemons, Conn255ChildLinesReachNoInstance) {
    // conn1 without a child SA, conn255 with an installed one. Whatever the
    // daemon's listing order, conn255's child line must not carry over to
    // instance 1 (it would make it "Connected").
    ASSERT_TRUE(ike_.bring_up(255));
    ASSERT_TRUE(ike_.bring_up(1));
    int st = 1;
    ike_.gateway("--terminate --child child1 --timeout 10", &st);
    ASSERT_EQ(st, 0);
    const std::string sas = ike_.list_sas();
    ASSERT_NE(sas.find("child255: #"), std::string::npos) << sas;
    ASSERT_EQ(sas.find("child1: #"), std::string::npos) << sas;
    EXPECT_EQ(refresh(), with(kReset, {{1, "PhaseII_Connecting"}}));
}

TEST_F(IpsecDaemons, CapturedListsGiveTheSameWordsThroughTheStandIn) {
    // The real daemon's list, captured, then read again through the stand-in.
    ASSERT_TRUE(ike_.bring_up(3));
    const std::string captured = ike_.list_sas();
    ike_.tear_down(3);
    use_swanctl_standin();
    standin_list(captured);
    EXPECT_EQ(refresh(), with(kReset, {{3, "Connected"}}));
    // The same list as a child SA being deleted (a state too short-lived to
    // catch live).
    std::string deleting = captured;
    deleting.replace(deleting.find("INSTALLED"), 9, "DELETING");
    standin_list(deleting);
    EXPECT_EQ(refresh(), with(kReset, {{3, "Disconnecting"}}));
}

}  // namespace
