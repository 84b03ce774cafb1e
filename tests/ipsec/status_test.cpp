// SPDX-License-Identifier: MIT
// ipsec_update_status against SA lists given by a swanctl stand-in: every
// state word, the carried-over instance number, its 8-bit wrap, the reset of
// instances 1 to 10, the no-notify writes, the capture file, the store
// faults. The same cases run against live daemons in daemon_test.cpp where a
// daemon can produce them.
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ipsec_env.hpp"
#include "qvs_utils.h"
#include "qvsim.h"
#include "test_support.hpp"

using namespace ipsectest;
using Statuses = std::map<int, std::string>;
using Writes = std::vector<std::pair<std::string, std::string>>;

namespace {

// How the daemon prints an IKE SA with one installed child SA.
const std::string kConn3Up =
    "conn3: #5, ESTABLISHED, IKEv2, 8c2a3bd1d0c4a2f5_i* 1e9c7a55b07f3d21_r\n"
    "  local  'gateway' @ 10.77.0.1[4500]\n"
    "  remote 'server' @ 10.77.0.3[4500]\n"
    "  AES_CBC-128/HMAC_SHA2_256_128/PRF_HMAC_SHA2_256/MODP_2048\n"
    "  established 2s ago, rekeying in 13650s\n"
    "  child3: #7, reqid 1, INSTALLED, TUNNEL-in-UDP, ESP:AES_CBC-128/HMAC_SHA2_256_128\n"
    "    installed 2s ago, rekeying in 3318s, expires in 3960s\n"
    "    in  c1e3a0d2,      0 bytes,     0 packets\n"
    "    out 0a7f19c4,      0 bytes,     0 packets\n"
    "    local  10.3.1.0/24\n"
    "    remote 10.3.2.0/24\n";

class IpsecStatus : public ::testing::Test {
protected:
    void SetUp() override {
        prepare();
        // Instance 1 enabled, 2 disabled (default model); 3 enabled, 5 disabled.
        add_config(3, true);
        add_config(5, false);
        for (int i : {1, 2, 3, 5}) set_status(i, "Stale");
        use_swanctl_standin();
        journal_clear();
    }

    // Runs a refresh over the SA list text and checks the general rules.
    Statuses refresh(const std::string &sa_list) {
        standin_list(sa_list);
        journal_clear();
        EXPECT_EQ(ipsec_update_status(), 0);
        EXPECT_TRUE(balanced());
        EXPECT_EQ(count("attach"), 1);
        EXPECT_EQ(commands_run(), std::vector<std::string>{"swanctl --list-sas > /var/ipsec.status"});
        EXPECT_FALSE(qvstest::exists(kStatusFile));
        EXPECT_EQ(count("save"), 0);
        return statuses();
    }
};

const Statuses kReset = {{1, "Disconnected"}, {2, "Unconfigured"}, {3, "Disconnected"}, {5, "Unconfigured"}};

Statuses with(Statuses base, const Statuses &changes) {
    for (const auto &[k, v] : changes) base[k] = v;
    return base;
}

TEST_F(IpsecStatus, EmptyListLeavesEveryInstanceAtItsResetWord) {
    EXPECT_EQ(refresh(""), kReset);
    bool quiet = false;
    EXPECT_EQ(status_writes(&quiet),
              (Writes{{"1", "Disconnected"}, {"2", "Unconfigured"}, {"3", "Disconnected"}, {"5", "Unconfigured"}}));
    EXPECT_TRUE(quiet) << "every status write goes without notification";
}

TEST_F(IpsecStatus, EstablishedIkeSaWithInstalledChildIsConnected) {
    EXPECT_EQ(refresh(kConn3Up), with(kReset, {{3, "Connected"}}));
    Writes w = status_writes();
    ASSERT_EQ(w.size(), 6u);
    EXPECT_EQ(w[4], (std::pair<std::string, std::string>{"3", "PhaseII_Connecting"}));
    EXPECT_EQ(w[5], (std::pair<std::string, std::string>{"3", "Connected"}));
}

struct Case {
    const char *name;
    std::string sa_list;
    Statuses changes;  // against the reset words
};

void PrintTo(const Case &c, std::ostream *os) { *os << c.name; }

const Case kCases[] = {
    {"CONNECTING", "conn1: #1, CONNECTING, IKEv2, 4c6e00e983bd2051_i* 0000000000000000_r\n"
                   "  local  '%any' @ 10.77.0.1[500]\n  remote '%any' @ 10.77.0.2[500]\n",
     {{1, "PhaseI_Connecting"}}},
    {"ESTABLISHED", "conn1: #1, ESTABLISHED, IKEv2, d60ca5416df8492e_i* aa1ee1fc601b29a4_r\n"
                    "  local  'gateway' @ 10.77.0.1[4500]\n  established 0s ago, rekeying in 14097s\n",
     {{1, "PhaseII_Connecting"}}},
    {"INSTALLING", "conn1: #1, ESTABLISHED, IKEv2, d60ca5416df8492e_i* aa1ee1fc601b29a4_r\n"
                   "  child1: #1, reqid 1, INSTALLING, TUNNEL-in-UDP, ESP:AES_CBC-128/HMAC_SHA2_256_128\n",
     {{1, "PhaseII_Connecting"}}},
    {"INSTALLED", "conn1: #1, ESTABLISHED, IKEv2, d60ca5416df8492e_i* aa1ee1fc601b29a4_r\n"
                  "  child1: #1, reqid 1, INSTALLED, TUNNEL-in-UDP, ESP:AES_CBC-128/HMAC_SHA2_256_128\n"
                  "    installed 0s ago, rekeying in 3254s, expires in 3960s\n",
     {{1, "Connected"}}},
    {"IkeDeleting", "conn3: #2, DELETING, IKEv2, d60ca5416df8492e_i* aa1ee1fc601b29a4_r\n", {{3, "Disconnecting"}}},
    {"IkeDestroying", "conn3: #2, DESTROYING, IKEv2, d60ca5416df8492e_i* aa1ee1fc601b29a4_r\n",
     {{3, "Disconnecting"}}},
    {"ChildDeleting", "conn1: #1, ESTABLISHED, IKEv2, d60ca5416df8492e_i* aa1ee1fc601b29a4_r\n"
                      "  child1: #1, reqid 1, DELETING, TUNNEL-in-UDP, ESP:AES_CBC-128/HMAC_SHA2_256_128\n",
     {{1, "Disconnecting"}}},
    {"ChildDestroying", "conn1: #1, ESTABLISHED, IKEv2, d60ca5416df8492e_i* aa1ee1fc601b29a4_r\n"
                        "  child1: #1, reqid 1, DESTROYING, TUNNEL-in-UDP, ESP:AES_CBC-128/HMAC_SHA2_256_128\n",
     {{1, "Disconnecting"}}},
    {"ChildLineBeforeAnyConnLine", "  child1: #1, reqid 1, INSTALLED, TUNNEL-in-UDP, ESP:AES_CBC-128\n"
                                   "  child3: #2, reqid 2, DELETING, TUNNEL\n",
     {}},
    {"Conn200IsInstanceMinus56AndNoInstance", "conn200: #1, ESTABLISHED, IKEv2, 1_i* 2_r\n"
                                              "  child200: #1, reqid 1, INSTALLED, TUNNEL\n",
     {}},
    {"Conn255IsMinusOneSoItsLinesAreSkipped", "conn1: #1, ESTABLISHED, IKEv2, 1_i* 2_r\n"
                                              "conn255: #2, ESTABLISHED, IKEv2, 3_i* 4_r\n"
                                              "  child255: #3, reqid 3, INSTALLED, TUNNEL\n",
     {{1, "PhaseII_Connecting"}}},
    {"ChildStateGoesToTheLastConnLine", "conn1: #1, ESTABLISHED, IKEv2, 1_i* 2_r\n"
                                        "conn3: #2, CONNECTING, IKEv2, 3_i* 0_r\n"
                                        "  child1: #1, reqid 1, INSTALLED, TUNNEL\n",
     {{1, "PhaseII_Connecting"}, {3, "Connected"}}},
    {"EarlierWordWinsOnAConnLine", "conn3: #2, ESTABLISHED, IKEv2, remote CONNECTING\n", {{3, "PhaseI_Connecting"}}},
    {"EarlierWordWinsOnAChildLine", "conn3: #2, ESTABLISHED, IKEv2\n  child3: #7, INSTALLED, then DELETING\n",
     {{3, "Connected"}}},
    {"ChildStateReplacesTheConnStateOnOneLine", "conn1-child: #1, ESTABLISHED, reqid 1, INSTALLED\n",
     {{1, "Connected"}}},
    {"ConnWordsLookOnlyAfterConn", "CONNECTING before conn3: #2, ESTABLISHED\n", {{3, "PhaseII_Connecting"}}},
    {"DisabledInstanceTakesTheStateToo", "conn2: #1, ESTABLISHED, IKEv2, 1_i* 2_r\n", {{2, "PhaseII_Connecting"}}},
    {"MissingInstanceIsSkipped", "conn7: #1, ESTABLISHED, IKEv2\n  child7: #1, INSTALLED\n", {}},
    {"ConnWithoutNumberIsInstanceZero", "connX: #1, ESTABLISHED, IKEv2\n  child: #1, INSTALLED\n", {}},
    {"LinesWithoutAStateWordChangeNothing", "conn1: #1, REKEYING, IKEv2\n  child1: #1, reqid 1, REKEYED\n", {}},
};

class IpsecStatusCases : public IpsecStatus, public ::testing::WithParamInterface<Case> {};

TEST_P(IpsecStatusCases, GivesTheStatusWords) {
    const Case &c = GetParam();
    EXPECT_EQ(refresh(c.sa_list), with(kReset, c.changes)) << c.sa_list;
    bool quiet = false;
    Writes w = status_writes(&quiet);
    EXPECT_TRUE(quiet);
    // Four reset writes, then one write per line that set a status on an
    // existing instance.
    ASSERT_GE(w.size(), 4u);
    for (std::size_t i = 4; i < w.size(); ++i) {
        EXPECT_NE(w[i].first, "-56");
        EXPECT_NE(w[i].first, "0");
    }
}

INSTANTIATE_TEST_SUITE_P(SaLists, IpsecStatusCases, ::testing::ValuesIn(kCases),
                         [](const ::testing::TestParamInfo<Case> &info) { return std::string(info.param.name); });

TEST_F(IpsecStatus, Conn200WritesNothingBeyondTheReset) {
    refresh("conn200: #1, ESTABLISHED, IKEv2\n  child200: #1, reqid 1, INSTALLED, TUNNEL\n");
    EXPECT_EQ(status_writes().size(), 4u);
}

TEST_F(IpsecStatus, Conn200AndConn255AreNotInstances200And255) {
    // Instances of those numbers exist here, yet the 8-bit instance numbers
    // (-56 and -1) never reach them.
    add_config(200, true);
    add_config(255, true);
    set_status(200, "Stale");
    set_status(255, "Stale");
    refresh("conn200: #1, ESTABLISHED, IKEv2\n  child200: #1, reqid 1, INSTALLED, TUNNEL\n"
            "conn255: #2, ESTABLISHED, IKEv2\n  child255: #2, reqid 2, INSTALLED, TUNNEL\n");
    EXPECT_EQ(status_of(200), "Stale");
    EXPECT_EQ(status_of(255), "Stale");
    EXPECT_EQ(status_writes().size(), 4u);
}

TEST_F(IpsecStatus, EveryInstanceFromOneToTenIsReset) {
    for (int i = 1; i <= 10; ++i) add_config(i, i % 2 == 1);
    for (int i = 1; i <= 10; ++i) set_status(i, "Stale");
    add_config(11, true);
    set_status(11, "Stale");
    Statuses got = refresh("");
    for (int i = 1; i <= 10; ++i) EXPECT_EQ(got[i], i % 2 == 1 ? "Disconnected" : "Unconfigured") << i;
    EXPECT_EQ(status_of(11), "Stale");
}

TEST_F(IpsecStatus, ConnectedTunnelThatVanishesReturnsToItsResetWord) {
    EXPECT_EQ(refresh(kConn3Up), with(kReset, {{3, "Connected"}}));
    EXPECT_EQ(refresh(""), kReset);
}

TEST_F(IpsecStatus, LongLinesAreReadInPiecesOf1023) {
    // The state word lies beyond the first 1023 characters: the rest is read
    // as a line of its own, which holds no "conn" and so keeps instance 3.
    std::string line = "conn3: #1, " + std::string(1100, 'x') + ", ESTABLISHED\n";
    EXPECT_EQ(refresh(line), kReset);
    std::string child = "conn3: #1, ESTABLISHED\n  child3: " + std::string(1100, 'y') + " INSTALLED\n";
    EXPECT_EQ(refresh(child), with(kReset, {{3, "PhaseII_Connecting"}}));
}

TEST_F(IpsecStatus, UnreadableCaptureIsLoggedAndStillZero) {
    ::setenv("QVS_TEST_SA_LIST", "remove-capture", 1);
    qvstest::CaptureFd err(2);
    EXPECT_EQ(ipsec_update_status(), 0);
    std::string text = err.text();
    EXPECT_NE(text.find("[qvs_utils.cpp:ipsec_update_status:"), std::string::npos) << text;
    EXPECT_NE(text.find("]open file /var/ipsec.status failed!\n"), std::string::npos) << text;
    EXPECT_TRUE(balanced());
    EXPECT_EQ(statuses(), kReset);
    EXPECT_FALSE(qvstest::exists(kStatusFile));
}

TEST_F(IpsecStatus, AttachRefusedDoesNothing) {
    qvsim_fault_add("attach");
    standin_list(kConn3Up);
    EXPECT_EQ(ipsec_update_status(), -1);
    qvsim_fault_clear();
    EXPECT_EQ(count("detach"), 0);
    EXPECT_EQ(count("set"), 0);
    EXPECT_TRUE(commands_run().empty());
    EXPECT_FALSE(qvstest::exists(kStatusFile));
    for (int i : {1, 2, 3, 5}) EXPECT_EQ(status_of(i), "Stale");
}

TEST_F(IpsecStatus, NoParameterListMeansNoWritesButTheRefreshGoesOn) {
    qvsim_fault_add("paramlist");
    EXPECT_EQ(refresh(kConn3Up), (Statuses{{1, "Stale"}, {2, "Stale"}, {3, "Stale"}, {5, "Stale"}}));
    qvsim_fault_clear();
    EXPECT_EQ(count("set"), 0);
}

TEST_F(IpsecStatus, MissingConfigurationObjectsAreSkipped) {
    qvsim_fault_add("object 533 3");
    Statuses got = refresh(kConn3Up);
    qvsim_fault_clear();
    EXPECT_EQ(got, with(kReset, {{3, "Stale"}}));
}

TEST_F(IpsecStatus, FailedWritesAreNotRetried) {
    qvsim_fault_add("write ConnectionStatus");
    EXPECT_EQ(refresh(kConn3Up), (Statuses{{1, "Stale"}, {2, "Stale"}, {3, "Stale"}, {5, "Stale"}}));
    qvsim_fault_clear();
}

}  // namespace
