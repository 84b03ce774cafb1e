// SPDX-License-Identifier: MIT
// Zero-configuration state of EPON and GPON gateways: every result code, the
// phase files and their time-outs, the refresh call and store attachment.
#include <cstdio>
#include <ctime>
#include <string>
#include <sys/stat.h>
#include <vector>

#include <gtest/gtest.h>

#include "qvs_utils.h"
#include "qvsim.h"
#include "sim_journal.hpp"
#include "test_clock.h"
#include "test_support.hpp"

using qvstest::CaptureFd;
using qvstest::exists;
using qvstest::read_file;
using qvstest::write_file;

namespace {

constexpr std::time_t kT0 = 1790000000;  // a fixed "now" for pinned-clock cases

// The two uplinks as the tests see them.
struct Uplink {
    const char *name;
    int (*call)();
    int oid;
    int refresh;
    const char *registered;
    const char *starting;
    std::vector<std::string> known_failures;
};

const Uplink kEpon{"EPON", getzeroconfigeponstate, 211, 300, "Registered and certified", "Initializing",
                   {"Unregistered and unauthorized", "NoSignal", "Disabled", "Registered but unauthorized"}};
const Uplink kGpon{"GPON", getzeroconfiggponstate, 209, 3000, "Authentication Success", "Init State",
                   {"Loid Wrong", "Loid OK, but password wrong", "Loid Conflict", "Optical Los", "Deactived by OLT"}};

std::string inst(int i, int j) { return "1," + std::to_string(i) + "," + std::to_string(j); }

void set_state(const Uplink &up, const std::string &text) {
    ASSERT_EQ(qvsim_set(up.oid, "1", "RegistrationState", text.c_str()), 0) << text;
}

// One WAN connection (174 = IP, 196 = PPP) at "1,i,j".
void add_conn(int oid, int i, int j, const std::string &services, bool up) {
    std::string in = inst(i, j);
    if (!qvsim_exists(oid, in.c_str())) {
        ASSERT_EQ(qvsim_add_instance(oid, in.c_str()), 0) << oid << " " << in;
    }
    ASSERT_EQ(qvsim_set(oid, in.c_str(), "X_QV_ServiceList", services.c_str()), 0);
    ASSERT_EQ(qvsim_set(oid, in.c_str(), "ConnectionUp", up ? "1" : "0"), 0);
}

void remove_all_conns() {
    for (int oid : {174, 196})
        for (int i = 1; i <= 16; ++i)
            for (int j = 1; j <= 9; ++j) {
                std::string in = inst(i, j);
                if (qvsim_exists(oid, in.c_str())) {
                    ASSERT_EQ(qvsim_delete_instance(oid, in.c_str()), 0);
                }
            }
}

void set_rms(int attempts, int flag, int status, int result) {
    ASSERT_EQ(qvsim_set(288, "", "X_QV_RegisterTimes", std::to_string(attempts).c_str()), 0);
    ASSERT_EQ(qvsim_set(288, "", "X_QV_RegisterFlag", std::to_string(flag).c_str()), 0);
    ASSERT_EQ(qvsim_set(288, "", "X_QV_RegisterStatus", std::to_string(status).c_str()), 0);
    ASSERT_EQ(qvsim_set(288, "", "X_QV_ServiceResult", std::to_string(result).c_str()), 0);
}

std::string stamp(std::time_t t) { return std::to_string(static_cast<long long>(t)) + "\n"; }

class PonTest : public testing::TestWithParam<const Uplink *> {
protected:
    void SetUp() override {
        ASSERT_TRUE(qvstest::in_sandbox());
        ASSERT_EQ(qvsim_reset(), 0);
        remove_all_conns();
        set_rms(0, 0, 2, 0);
        test_clock_pin(kT0);
        simjournal::clear();
    }
    void TearDown() override { test_clock_release(); }

    const Uplink &up() const { return *GetParam(); }

    // Registered OLT and an up TR-069 connection: the management phases.
    void reach_management() {
        set_state(up(), up().registered);
        add_conn(174, 1, 1, "TR069", true);
        simjournal::clear();
    }

    // One call; attach and detach must balance on every path.
    int call() {
        int before_attach = simjournal::count("attach"), before_detach = simjournal::count("detach");
        int r = up().call();
        EXPECT_EQ(simjournal::count("attach") - before_attach, 1) << simjournal::text();
        EXPECT_EQ(simjournal::count("detach") - before_detach, 1) << simjournal::text();
        return r;
    }
};

std::string param_name(const testing::TestParamInfo<const Uplink *> &info) { return info.param->name; }

INSTANTIATE_TEST_SUITE_P(Uplinks, PonTest, testing::Values(&kEpon, &kGpon), param_name);

// ---- store and OLT object ---------------------------------------------------

TEST_P(PonTest, AttachFailureGivesZeroAndTouchesNothing) {
    ASSERT_EQ(qvsim_fault_add("attach"), 0);
    EXPECT_EQ(up().call(), 0);
    EXPECT_EQ(simjournal::count("attach"), 0);
    EXPECT_EQ(simjournal::count("attach-refused"), 1);
    EXPECT_EQ(simjournal::count("detach"), 0);
    EXPECT_EQ(simjournal::count("stats"), 0);
    EXPECT_TRUE(simjournal::commands().empty());
    std::string fn = up().call == getzeroconfigeponstate ? "getzeroconfigeponstate" : "getzeroconfiggponstate";
    EXPECT_EQ(simjournal::logs(fn), std::vector<std::string>{"1 XMLSHMINIT fail\n"});
}

TEST_P(PonTest, RefreshesTheOltObjectWithItsArgumentBeforeReading) {
    set_state(up(), up().starting);
    EXPECT_EQ(call(), 1);
    auto stats = simjournal::of_kind("stats");
    ASSERT_EQ(stats.size(), 1u) << simjournal::text();
    EXPECT_EQ(stats[0], (simjournal::Line{"stats", std::to_string(up().oid), "1", std::to_string(up().refresh)}));
}

TEST_P(PonTest, MissingOltObjectGivesZero) {
    ASSERT_EQ(qvsim_fault_add(("object " + std::to_string(up().oid)).c_str()), 0);
    EXPECT_EQ(call(), 0);
    EXPECT_EQ(simjournal::count("stats"), 1);
    EXPECT_TRUE(simjournal::commands().empty());
    EXPECT_FALSE(exists("/tmp/oltretime"));
}

TEST_P(PonTest, MissingOltInstanceOneGivesZero) {
    ASSERT_EQ(qvsim_fault_add(("object " + std::to_string(up().oid) + " 1").c_str()), 0);
    EXPECT_EQ(call(), 0);
}

// ---- OLT phase ----------------------------------------------------------------

TEST_P(PonTest, StartingTextGivesOneAndNoFile) {
    set_state(up(), up().starting);
    EXPECT_EQ(call(), 1);
    EXPECT_TRUE(simjournal::commands().empty());
    for (const char *f : {"/tmp/oltretime", "/tmp/getwantime", "/tmp/registerrms", "/tmp/servicetime"})
        EXPECT_FALSE(exists(f)) << f;
}

TEST_P(PonTest, KnownFailureFirstCallCreatesOltFileAndWaits) {
    for (const std::string &text : up().known_failures) {
        ::remove("/tmp/oltretime");
        simjournal::clear();
        set_state(up(), text);
        EXPECT_EQ(call(), 2) << text;
        EXPECT_EQ(simjournal::commands(), std::vector<std::string>{"echo 1790000000 > /tmp/oltretime"}) << text;
        EXPECT_EQ(read_file("/tmp/oltretime"), stamp(kT0)) << text;
    }
}

TEST_P(PonTest, KnownFailureAfter181SecondsGivesThree) {
    for (const std::string &text : up().known_failures) {
        test_clock_pin(kT0);
        ::remove("/tmp/oltretime");
        set_state(up(), text);
        EXPECT_EQ(call(), 2) << text;
        test_clock_advance(181);
        simjournal::clear();
        EXPECT_EQ(call(), 3) << text;
        EXPECT_TRUE(simjournal::commands().empty()) << text;
        EXPECT_EQ(read_file("/tmp/oltretime"), stamp(kT0)) << "the file is kept: " << text;
    }
}

TEST_P(PonTest, OltTimeOutIsStrictlyMoreThan180Seconds) {
    set_state(up(), up().known_failures[0]);
    EXPECT_EQ(call(), 2);
    test_clock_advance(180);
    EXPECT_EQ(call(), 2);
    test_clock_advance(1);
    EXPECT_EQ(call(), 3);
}

TEST_P(PonTest, UnknownTextWaitsThenGivesFour) {
    set_state(up(), "Something else");
    EXPECT_EQ(call(), 2);
    EXPECT_EQ(read_file("/tmp/oltretime"), stamp(kT0));
    test_clock_advance(181);
    EXPECT_EQ(call(), 4);
}

TEST_P(PonTest, EmptyStateTextCountsAsOtherState) {
    set_state(up(), "");
    EXPECT_EQ(call(), 2);
    test_clock_advance(181);
    EXPECT_EQ(call(), 4);
}

TEST_P(PonTest, TextsAreMatchedWholeAndExactly) {
    const std::string reg = up().registered;
    for (const std::string &near : {reg + " ", reg.substr(0, reg.size() - 1), std::string("x") + reg,
                                    std::string(up().starting) + " ", up().known_failures[0] + "!"}) {
        test_clock_pin(kT0);
        ::remove("/tmp/oltretime");
        set_state(up(), near);
        EXPECT_EQ(call(), 2) << near;
        test_clock_advance(181);
        EXPECT_EQ(call(), 4) << "'" << near << "' is neither registered, starting nor a known failure";
    }
}

TEST_P(PonTest, TheOtherUplinksTextsAreNotKnownHere) {
    const Uplink &other = GetParam() == &kEpon ? kGpon : kEpon;
    set_state(up(), other.registered);
    EXPECT_EQ(call(), 2);
    set_state(up(), other.starting);
    EXPECT_EQ(call(), 2) << "the other uplink's starting text is not starting here";
    test_clock_advance(181);
    for (const std::string &text : other.known_failures) {
        set_state(up(), text);
        EXPECT_EQ(call(), 4) << text;
    }
}

// Time stamps written relative to the real clock: the same branches without
// a pinned clock.
TEST_P(PonTest, RealClockOltFileAgedBeyondAndWithinTheTimeOut) {
    test_clock_release();
    set_state(up(), up().known_failures[0]);
    write_file("/tmp/oltretime", stamp(test_clock_real_now() - 181));
    EXPECT_EQ(call(), 3);
    write_file("/tmp/oltretime", stamp(test_clock_real_now() - 179));
    EXPECT_EQ(call(), 2);
    EXPECT_TRUE(simjournal::commands().empty());
}

TEST_P(PonTest, RealClockFirstCallStampsTheRealTime) {
    test_clock_release();
    set_state(up(), "NoSignal");
    std::time_t before = test_clock_real_now();
    EXPECT_EQ(call(), 2);
    std::time_t after = test_clock_real_now();
    long long v = std::stoll(read_file("/tmp/oltretime"));
    EXPECT_GE(v, before);
    EXPECT_LE(v, after);
    auto cmds = simjournal::commands();
    ASSERT_EQ(cmds.size(), 1u);
    EXPECT_EQ(cmds[0], "echo " + std::to_string(v) + " > /tmp/oltretime");
}

TEST_P(PonTest, EmptyPhaseFileCountsAsWaiting) {
    set_state(up(), up().known_failures[0]);
    write_file("/tmp/oltretime", "");
    EXPECT_EQ(call(), 2);
    EXPECT_TRUE(simjournal::commands().empty()) << "an existing file is not re-created";
    EXPECT_EQ(read_file("/tmp/oltretime"), "");
}

TEST_P(PonTest, UnreadablePhaseFileCountsAsWaiting) {
    set_state(up(), up().known_failures[0]);
    ASSERT_EQ(::mkdir("/tmp/oltretime", 0755), 0);  // exists, but no line can be read
    EXPECT_EQ(call(), 2);
    EXPECT_TRUE(simjournal::commands().empty());
}

TEST_P(PonTest, PhaseFileWithoutNumberCountsAsWaiting) {
    set_state(up(), up().known_failures[0]);
    write_file("/tmp/oltretime", "not a number\n");
    EXPECT_EQ(call(), 2);
    EXPECT_TRUE(simjournal::commands().empty());
}

TEST_P(PonTest, OnlyTheFirstLineOfThePhaseFileCounts) {
    set_state(up(), up().known_failures[0]);
    write_file("/tmp/oltretime", stamp(kT0 - 500) + stamp(kT0));
    EXPECT_EQ(call(), 3);
    write_file("/tmp/oltretime", stamp(kT0) + stamp(kT0 - 500));
    EXPECT_EQ(call(), 2);
}

TEST_P(PonTest, StampInTheFutureCountsAsWaiting) {
    set_state(up(), up().known_failures[0]);
    write_file("/tmp/oltretime", stamp(kT0 + 100000));
    EXPECT_EQ(call(), 2);
}

TEST_P(PonTest, HugeStampsDoNotOverflow) {
    set_state(up(), up().known_failures[0]);
    write_file("/tmp/oltretime", "-99999999999999999999999\n");
    EXPECT_EQ(call(), 3);
    write_file("/tmp/oltretime", "99999999999999999999999\n");
    EXPECT_EQ(call(), 2);
}

// ---- past 2038: the phase clocks with the clock pinned in 2040 and 2105 ---------

TEST_P(PonTest, PhaseClocksWithTheClockPinnedIn2040And2105) {
    for (const long long t : {2224713600LL /* 2040-07-01 */, 4275849600LL /* 2105-07-01 */}) {
        SCOPED_TRACE(t);
        const std::string text = std::to_string(t);
        test_clock_pin(t);
        ::remove("/tmp/oltretime");
        ::remove("/tmp/getwantime");
        set_state(up(), up().known_failures[0]);
        simjournal::clear();
        EXPECT_EQ(call(), 2);
        EXPECT_EQ(simjournal::commands(), std::vector<std::string>{"echo " + text + " > /tmp/oltretime"});
        EXPECT_EQ(read_file("/tmp/oltretime"), text + "\n");
        test_clock_advance(180);
        EXPECT_EQ(call(), 2);
        test_clock_advance(1);
        EXPECT_EQ(call(), 3);
        set_state(up(), up().registered);
        simjournal::clear();
        EXPECT_EQ(call(), 5);
        EXPECT_EQ(simjournal::commands(),
                  std::vector<std::string>{"echo " + std::to_string(t + 181) + " > /tmp/getwantime"});
        test_clock_advance(121);
        EXPECT_EQ(call(), 6);
    }
}

// ---- WAN phase ------------------------------------------------------------------

TEST_P(PonTest, RegisteredWithoutConnectionsWaitsForTheWan) {
    set_state(up(), up().registered);
    EXPECT_EQ(call(), 5);
    EXPECT_EQ(simjournal::commands(), std::vector<std::string>{"echo 1790000000 > /tmp/getwantime"});
    EXPECT_EQ(read_file("/tmp/getwantime"), stamp(kT0));
    EXPECT_FALSE(exists("/tmp/oltretime"));
}

TEST_P(PonTest, WanTimeOutIsStrictlyMoreThan120Seconds) {
    set_state(up(), up().registered);
    EXPECT_EQ(call(), 5);
    test_clock_advance(120);
    EXPECT_EQ(call(), 5);
    test_clock_advance(1);
    EXPECT_EQ(call(), 6);
    EXPECT_EQ(simjournal::commands().size(), 1u) << "created once";
}

TEST_P(PonTest, RealClockWanFileAgedBeyondAndWithinTheTimeOut) {
    test_clock_release();
    set_state(up(), up().registered);
    write_file("/tmp/getwantime", stamp(test_clock_real_now() - 121));
    EXPECT_EQ(call(), 6);
    write_file("/tmp/getwantime", stamp(test_clock_real_now() - 119));
    EXPECT_EQ(call(), 5);
}

TEST_P(PonTest, PppTr069ConnectionDownAndNoOtherWaits) {
    set_state(up(), up().registered);
    add_conn(196, 1, 1, "TR069", false);
    EXPECT_EQ(call(), 5);
    EXPECT_EQ(read_file("/tmp/getwantime"), stamp(kT0));
}

TEST_P(PonTest, UpIpTr069ConnectionLeadsToManagement) {
    set_state(up(), up().registered);
    add_conn(174, 1, 1, "TR069", true);
    set_rms(0, 0, 4, 0);
    EXPECT_EQ(call(), 11);
    EXPECT_FALSE(exists("/tmp/getwantime"));
}

TEST_P(PonTest, UpPppTr069ConnectionLeadsToManagement) {
    set_state(up(), up().registered);
    add_conn(196, 3, 2, "TR069", true);
    set_rms(0, 0, 4, 0);
    EXPECT_EQ(call(), 11);
}

TEST_P(PonTest, ServiceListOnlyHasToContainTr069) {
    set_state(up(), up().registered);
    add_conn(174, 2, 1, "INTERNET_TR069_VOIP", true);
    set_rms(0, 0, 4, 0);
    EXPECT_EQ(call(), 11);
}

TEST_P(PonTest, UpConnectionsWithoutTr069DoNotCount) {
    set_state(up(), up().registered);
    add_conn(174, 1, 1, "INTERNET", true);
    add_conn(196, 1, 1, "VOIP", true);
    add_conn(174, 1, 2, "tr069", true);  // the text is matched with its case
    EXPECT_EQ(call(), 5);
}

TEST_P(PonTest, FirstTr069ConnectionOfEachKindEndsTheInnerLoop) {
    set_state(up(), up().registered);
    add_conn(174, 1, 1, "INTERNET", true);
    add_conn(174, 1, 2, "TR069", false);  // first TR-069 one: down
    add_conn(174, 1, 3, "TR069", true);   // not looked at
    add_conn(196, 1, 1, "TR069", false);  // PPP of the same i: down
    add_conn(196, 1, 2, "TR069", true);   // not looked at
    EXPECT_EQ(call(), 5);
}

TEST_P(PonTest, PppIsLookedAtEvenWhenIpEndedTheLoopDown) {
    set_state(up(), up().registered);
    add_conn(174, 4, 1, "TR069", false);
    add_conn(196, 4, 5, "TR069", true);
    set_rms(0, 0, 5, 0);
    EXPECT_EQ(call(), 12);
}

TEST_P(PonTest, MissingConnectionsAreSkippedOver) {
    set_state(up(), up().registered);
    add_conn(174, 1, 8, "TR069", true);  // j = 1..7 do not exist
    set_rms(0, 0, 4, 0);
    EXPECT_EQ(call(), 11);
}

TEST_P(PonTest, ScanRunsThroughAllFifteenDevices) {
    set_state(up(), up().registered);
    add_conn(174, 1, 1, "TR069", false);
    add_conn(196, 15, 8, "TR069", true);  // the last one scanned
    set_rms(0, 0, 4, 0);
    EXPECT_EQ(call(), 11);
}

TEST_P(PonTest, ADownConnectionLaterDoesNotUndoAnEarlierUpOne) {
    set_state(up(), up().registered);
    add_conn(174, 1, 1, "TR069", true);
    add_conn(174, 2, 1, "TR069", false);
    add_conn(196, 9, 1, "TR069", false);
    set_rms(0, 0, 4, 0);
    EXPECT_EQ(call(), 11);
}

TEST_P(PonTest, UnreadableConnectionObjectsCountAsMissing) {
    set_state(up(), up().registered);
    add_conn(174, 1, 1, "TR069", true);
    add_conn(196, 2, 1, "TR069", true);
    ASSERT_EQ(qvsim_fault_add("object 174"), 0);
    set_rms(0, 0, 4, 0);
    EXPECT_EQ(call(), 11) << "the PPP connection is still found";
    ASSERT_EQ(qvsim_fault_add("object 196"), 0);
    EXPECT_EQ(call(), 5);
}

TEST_P(PonTest, ConnectionsBeyondTheScannedRangeAreIgnored) {
    set_state(up(), up().registered);
    add_conn(174, 16, 1, "TR069", true);
    add_conn(196, 1, 9, "TR069", true);
    EXPECT_EQ(call(), 5);
}

// ---- management and service phases ----------------------------------------------

TEST_P(PonTest, MissingRegistrationRecordGivesZero) {
    reach_management();
    ASSERT_EQ(qvsim_fault_add("object 288"), 0);
    EXPECT_EQ(call(), 0);
    EXPECT_TRUE(simjournal::commands().empty());
}

TEST_P(PonTest, MoreThanTenAttemptsGivesSevenWhateverElse) {
    reach_management();
    for (auto f : {std::vector<int>{0, 0, 0}, {1, 99, 0}, {97, 1, 1}, {0, 4, 0}, {0, 5, 2}, {0, 0, 99}, {1, 0, 0}}) {
        set_rms(11, f[0], f[1], f[2]);
        EXPECT_EQ(call(), 7) << f[0] << " " << f[1] << " " << f[2];
    }
    set_rms(65535, 0, 2, 0);
    EXPECT_EQ(call(), 7);
    EXPECT_TRUE(simjournal::commands().empty());
}

TEST_P(PonTest, TenAttemptsAreNotTooMany) {
    reach_management();
    set_rms(10, 0, 4, 0);
    EXPECT_EQ(call(), 11);
}

TEST_P(PonTest, RegistrationUnderWayWaitsThenTimesOut) {
    reach_management();
    set_rms(0, 1, 2, 0);
    EXPECT_EQ(call(), 8);
    EXPECT_EQ(simjournal::commands(), std::vector<std::string>{"echo 1790000000 > /tmp/registerrms"});
    EXPECT_EQ(read_file("/tmp/registerrms"), stamp(kT0));
    test_clock_advance(120);
    EXPECT_EQ(call(), 8);
    test_clock_advance(1);
    EXPECT_EQ(call(), 9);
}

TEST_P(PonTest, StatusNinetyNineIsAlsoUnderWay) {
    reach_management();
    set_rms(0, 0, 99, 0);
    EXPECT_EQ(call(), 8);
    test_clock_advance(121);
    EXPECT_EQ(call(), 9);
}

TEST_P(PonTest, RealClockRegistrationFileAged) {
    test_clock_release();
    reach_management();
    set_rms(0, 1, 0, 0);
    write_file("/tmp/registerrms", stamp(test_clock_real_now() - 121));
    EXPECT_EQ(call(), 9);
    write_file("/tmp/registerrms", stamp(test_clock_real_now() - 119));
    EXPECT_EQ(call(), 8);
}

TEST_P(PonTest, UnderWayComesBeforeIndicator97AndStatus1) {
    reach_management();
    set_rms(0, 1, 1, 0);
    EXPECT_EQ(call(), 8);
    set_rms(0, 97, 99, 0);
    EXPECT_EQ(call(), 8);
}

TEST_P(PonTest, Indicator97OrStatus1GivesTen) {
    reach_management();
    set_rms(0, 97, 0, 1);
    EXPECT_EQ(call(), 10);
    set_rms(0, 97, 4, 0);
    EXPECT_EQ(call(), 10) << "comes before status 4";
    set_rms(0, 0, 1, 0);
    EXPECT_EQ(call(), 10);
    set_rms(10, 2, 1, 99);
    EXPECT_EQ(call(), 10);
    EXPECT_TRUE(simjournal::commands().empty());
}

TEST_P(PonTest, StatusFourAndFive) {
    reach_management();
    set_rms(0, 0, 4, 1);
    EXPECT_EQ(call(), 11);
    set_rms(0, 0, 5, 99);
    EXPECT_EQ(call(), 12);
    EXPECT_TRUE(simjournal::commands().empty());
}

TEST_P(PonTest, ServiceResultZeroWaitsForTheService) {
    reach_management();
    set_rms(0, 0, 0, 0);
    CaptureFd out(1);
    EXPECT_EQ(call(), 14);
    EXPECT_EQ(out.text(), "");
    EXPECT_EQ(simjournal::commands(), std::vector<std::string>{"echo 1790000000 > /tmp/servicetime"});
    EXPECT_EQ(read_file("/tmp/servicetime"), stamp(kT0));
}

TEST_P(PonTest, ServiceTimeOutPrintsAndGivesThirteen) {
    reach_management();
    set_rms(0, 0, 0, 0);
    EXPECT_EQ(call(), 14);
    test_clock_advance(120);
    EXPECT_EQ(call(), 14);
    test_clock_advance(1);
    CaptureFd out(1);
    EXPECT_EQ(call(), 13);
    EXPECT_EQ(out.text(), "service is timeout\n");
}

TEST_P(PonTest, RealClockServiceFile121SecondsOld) {
    test_clock_release();
    reach_management();
    set_rms(0, 0, 0, 0);
    write_file("/tmp/servicetime", stamp(test_clock_real_now() - 121));
    CaptureFd out(1);
    EXPECT_EQ(call(), 13);
    EXPECT_EQ(out.text(), "service is timeout\n");
    write_file("/tmp/servicetime", stamp(test_clock_real_now() - 119));
    EXPECT_EQ(call(), 14);
}

TEST_P(PonTest, ServiceResultsOneTwoNinetyNine) {
    reach_management();
    set_rms(0, 0, 0, 1);
    EXPECT_EQ(call(), 15);
    set_rms(0, 0, 0, 2);
    EXPECT_EQ(call(), 16);
    set_rms(0, 0, 0, 99);
    EXPECT_EQ(call(), 17);
    EXPECT_TRUE(simjournal::commands().empty());
}

TEST_P(PonTest, UnlistedStatusesAndResultsAreUndetermined) {
    reach_management();
    for (auto f : {std::vector<int>{0, 2, 0}, {0, 3, 0}, {0, 6, 0}, {0, 98, 0}, {0, 255, 0}, {0, 0, 3},
                   {0, 0, 98}, {0, 0, 255}, {2, 2, 1}, {96, 3, 0}}) {
        set_rms(0, f[0], f[1], f[2]);
        EXPECT_EQ(call(), 0) << f[0] << " " << f[1] << " " << f[2];
    }
    EXPECT_TRUE(simjournal::commands().empty());
}

// ---- phase clocks -------------------------------------------------------------------

TEST_P(PonTest, PhaseFilesAreNeverDeletedAndAnOldStampTimesOutAtOnce) {
    set_state(up(), up().registered);
    EXPECT_EQ(call(), 5);  // WAN phase clock starts
    add_conn(174, 1, 1, "TR069", true);
    set_rms(0, 0, 4, 0);
    test_clock_advance(500);
    EXPECT_EQ(call(), 11);
    EXPECT_TRUE(exists("/tmp/getwantime"));
    ASSERT_EQ(qvsim_set(174, "1,1,1", "ConnectionUp", "0"), 0);  // the WAN goes down again
    EXPECT_EQ(call(), 6) << "the old stamp is found";
}

TEST_P(PonTest, EachPhaseHasItsOwnFile) {
    set_state(up(), up().known_failures[0]);
    EXPECT_EQ(call(), 2);
    test_clock_advance(10);
    set_state(up(), up().registered);
    EXPECT_EQ(call(), 5);
    test_clock_advance(10);
    add_conn(174, 1, 1, "TR069", true);
    set_rms(0, 1, 0, 0);
    EXPECT_EQ(call(), 8);
    test_clock_advance(10);
    set_rms(0, 0, 0, 0);
    EXPECT_EQ(call(), 14);
    EXPECT_EQ(read_file("/tmp/oltretime"), stamp(kT0));
    EXPECT_EQ(read_file("/tmp/getwantime"), stamp(kT0 + 10));
    EXPECT_EQ(read_file("/tmp/registerrms"), stamp(kT0 + 20));
    EXPECT_EQ(read_file("/tmp/servicetime"), stamp(kT0 + 30));
    EXPECT_EQ(simjournal::commands(),
              (std::vector<std::string>{"echo 1790000000 > /tmp/oltretime", "echo 1790000010 > /tmp/getwantime",
                                        "echo 1790000020 > /tmp/registerrms", "echo 1790000030 > /tmp/servicetime"}));
}

TEST_P(PonTest, NothingIsWrittenToTheStore) {
    reach_management();
    set_rms(0, 0, 0, 0);
    EXPECT_EQ(call(), 14);
    EXPECT_EQ(simjournal::count("set"), 0);
    EXPECT_EQ(simjournal::count("add"), 0);
    EXPECT_EQ(simjournal::count("save"), 0);
}

}  // namespace
