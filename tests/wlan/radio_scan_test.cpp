// SPDX-License-Identifier: MIT
// Neighbour scans: the three requests, polling for the driver's answer, the
// retrying statistics and the supported standards. The suite's test clock
// is pinned, so the one-second polls and three-second pauses are counted,
// not waited for.
#include <chrono>
#include <cstring>
#include <regex>

#include "test_clock.h"
#include "wlan_fixture.hpp"

using namespace wlantest;

namespace {

constexpr int kRadio = 390;
constexpr int kNeighbour = 392;
constexpr long long kSecond = 1000000000LL;
const char kState[] = "X_QV_DiagnosticsState";

class Scan : public WlanTest {
protected:
    std::chrono::steady_clock::time_point started_;

    void SetUp() override {
        WlanTest::SetUp();
        ASSERT_EQ(qvsim_journal_reads(1), 0);
        test_clock_pin(1700000000);
        started_ = std::chrono::steady_clock::now();
    }
    void TearDown() override {
        test_clock_release();
        WlanTest::TearDown();
    }

    static void driver(const char *mode) { ASSERT_EQ(qvsim_device_set("wifi.scan", mode), 0); }
    static void results(int n) { ASSERT_EQ(qvsim_device_set("wifi.scan_results", std::to_string(n).c_str()), 0); }
    static void busy(int n) { ASSERT_EQ(qvsim_device_set("wifi.scan_errors", std::to_string(n).c_str()), 0); }

    static std::string state_set(int radio, const char *value) {
        return set_line(kRadio, inst(radio), kState, kStr, value);
    }
    static std::string state_get(int radio, int result) {
        return "get|390|" + inst(radio) + "|" + kState + "|" + std::to_string(result);
    }
    static std::string stats(int radio) { return "stats|392|" + inst(radio) + "|6000"; }
    // The journal without log, attach and detach lines.
    static Lines store_effects() {
        Lines out;
        for (const auto &e : effects())
            if (e.rfind("attach", 0) != 0 && e.rfind("detach", 0) != 0) out.push_back(e);
        return out;
    }
    static Lines repeat(const Lines &lines, int n) {
        Lines out;
        for (int i = 0; i < n; ++i) out.insert(out.end(), lines.begin(), lines.end());
        return out;
    }
    // The lengths of the sleeps taken, in seconds.
    static std::vector<long long> sleeps() {
        std::vector<long long> out;
        for (unsigned long i = 0; i < test_clock_sleeps(); ++i) out.push_back(test_clock_sleep_ns(i) / kSecond);
        return out;
    }
    static std::vector<long long> seconds(std::initializer_list<std::pair<int, long long>> runs) {
        std::vector<long long> out;
        for (const auto &r : runs) out.insert(out.end(), static_cast<std::size_t>(r.first), r.second);
        return out;
    }
    // util_printf lines: "[file:function:N]message" with the process path
    // before the bracket dropped and the source line replaced by N.
    static Lines printed(const std::string &err) {
        Lines out;
        static const std::regex line_no(":[0-9]+\\]");
        for (const auto &l : qvstest::split(err, '\n')) {
            auto at = l.find("[qvs_utils.cpp:");
            if (at == std::string::npos) continue;
            out.push_back(std::regex_replace(l.substr(at), line_no, ":N]", std::regex_constants::format_first_only));
        }
        return out;
    }
    // Real time spent since SetUp: the pinned clock makes every sleep free.
    double wall_seconds() const {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - started_).count();
    }
};

// ---- requests -----------------------------------------------------------------

TEST_F(Scan, RequestWritesRequestedOnTheRadio) {
    EXPECT_EQ(qvs_wlan_start_scan(h, 1), 0);
    EXPECT_EQ(get(kRadio, "1", kState), "Requested");  // pending by default
    EXPECT_EQ(store_effects(), (Lines{"lookup|390|1|found", state_set(1, "Requested")}));
    EXPECT_EQ(count_kind("save"), 0);
    EXPECT_EQ(logs(), Lines{});
}

TEST_F(Scan, ForcedAndPartialRequests) {
    EXPECT_EQ(qvs_wlan_start_scan_force(h, 2), 0);
    EXPECT_EQ(qvs_wlan_start_scan_partial(h, 1), 0);
    EXPECT_EQ(get(kRadio, "2", kState), "Request_Force");
    EXPECT_EQ(get(kRadio, "1", kState), "Request_partial");
    EXPECT_EQ(store_effects(), (Lines{"lookup|390|2|found", state_set(2, "Request_Force"), "lookup|390|1|found",
                                      state_set(1, "Request_partial")}));
}

TEST_F(Scan, RequestReturnsTheStoresWriteResult) {
    fault("write X_QV_DiagnosticsState");
    EXPECT_EQ(qvs_wlan_start_scan(h, 1), -1);
    EXPECT_EQ(qvs_wlan_start_scan_force(h, 1), -1);
    EXPECT_EQ(qvs_wlan_start_scan_partial(h, 1), -1);
    EXPECT_EQ(count_kind("set"), 0);
    EXPECT_EQ(get(kRadio, "1", kState), "None");
}

TEST_F(Scan, RequestWithoutAParameterListLooksNothingUp) {
    fault("paramlist");
    EXPECT_EQ(qvs_wlan_start_scan(h, 1), -1);
    EXPECT_EQ(qvs_wlan_start_scan_force(h, 2), -1);
    EXPECT_EQ(qvs_wlan_start_scan_partial(h, 2), -1);
    EXPECT_EQ(store_effects(), Lines{});
}

TEST_F(Scan, RequestForAMissingRadio) {
    EXPECT_EQ(qvs_wlan_start_scan(h, 3), -1);
    EXPECT_EQ(qvs_wlan_start_scan(h, 0), -1);
    fault("object 390 2");
    EXPECT_EQ(qvs_wlan_start_scan_force(h, 2), -1);
    EXPECT_EQ(qvs_wlan_start_scan_partial(h, 2), -1);
    EXPECT_EQ(store_effects(), (Lines{"lookup|390|3|missing", "lookup|390|0|missing", "lookup|390|2|missing",
                                      "lookup|390|2|missing"}));
}

TEST_F(Scan, RequestWithAZeroHandle) {
    EXPECT_EQ(qvs_wlan_start_scan(0, 1), -1);
    EXPECT_EQ(count_kind("set"), 0);
}

// ---- polling ------------------------------------------------------------------

TEST_F(Scan, CompleteAtTheFirstPollGivesTheNeighbourCount) {
    driver("complete");
    results(7);
    ASSERT_EQ(qvs_wlan_start_scan(h, 2), 0);
    ASSERT_EQ(qvsim_journal_clear(), 0);
    EXPECT_EQ(qvs_wlan_get_scan_result(h, 2), 7);
    EXPECT_EQ(store_effects(), (Lines{state_get(2, 0), stats(2)}));
    EXPECT_EQ(get(kRadio, "2", kState), "Complete");  // not rewritten
    EXPECT_EQ(sleeps(), std::vector<long long>{1});  // each poll sleeps first
}

TEST_F(Scan, CompleteWithNoNeighbours) {
    driver("complete");
    ASSERT_EQ(qvs_wlan_start_scan(h, 1), 0);
    EXPECT_EQ(qvs_wlan_get_scan_result(h, 1), 0);
}

TEST_F(Scan, CompleteWithoutANeighbourTableGivesTheStatsResult) {
    driver("complete");
    ASSERT_EQ(qvsim_delete_instance(kNeighbour, "1"), 0);
    ASSERT_EQ(qvs_wlan_start_scan(h, 1), 0);
    ASSERT_EQ(qvsim_journal_clear(), 0);
    EXPECT_EQ(qvs_wlan_get_scan_result(h, 1), -1);
    EXPECT_EQ(store_effects(), (Lines{state_get(1, 0), stats(1)}));  // returned at once: no "Error" written
    EXPECT_EQ(get(kRadio, "1", kState), "Complete");
}

TEST_F(Scan, ErrorStopsPollingAndIsWrittenBack) {
    driver("error");
    ASSERT_EQ(qvs_wlan_start_scan(h, 1), 0);
    ASSERT_EQ(qvsim_journal_clear(), 0);
    EXPECT_EQ(qvs_wlan_get_scan_result(h, 1), -1);
    EXPECT_EQ(store_effects(), (Lines{state_get(1, 0), state_set(1, "Error")}));
    EXPECT_EQ(sleeps(), std::vector<long long>{1});
}

TEST_F(Scan, AScanThatNeverCompletesIsMarkedFailedAfterTenPolls) {
    ASSERT_EQ(qvs_wlan_start_scan(h, 1), 0);
    ASSERT_EQ(qvsim_journal_clear(), 0);
    EXPECT_EQ(qvs_wlan_get_scan_result(h, 1), -1);
    Lines want = repeat({state_get(1, 0)}, 10);
    want.push_back(state_set(1, "Error"));
    EXPECT_EQ(store_effects(), want);
    EXPECT_EQ(get(kRadio, "1", kState), "Error");
    EXPECT_EQ(sleeps(), seconds({{10, 1}}));
    EXPECT_EQ(test_clock_now().tv_sec, 1700000010);
    EXPECT_LT(wall_seconds(), 5.0);  // ten seconds on the pinned clock only
}

TEST_F(Scan, AnyOtherStateKeepsPolling) {
    set(kRadio, "2", kState, "InProgress");
    EXPECT_EQ(qvs_wlan_get_scan_result(h, 2), -1);
    EXPECT_EQ(count_kind("get"), 10);
    EXPECT_EQ(get(kRadio, "2", kState), "Error");
    set(kRadio, "2", kState, "");
    EXPECT_EQ(qvs_wlan_get_scan_result(h, 2), -1);
    EXPECT_EQ(count_kind("get"), 20);
    set(kRadio, "2", kState, "complete");  // the driver's words are case-sensitive
    EXPECT_EQ(qvs_wlan_get_scan_result(h, 2), -1);
    EXPECT_EQ(count_kind("stats"), 0);
}

TEST_F(Scan, AStateReadThatKeepsFailingGivesTheReadCode) {
    fault("read X_QV_DiagnosticsState");
    EXPECT_EQ(qvs_wlan_get_scan_result(h, 1), -5);
    Lines want = repeat({state_get(1, -5)}, 10);
    want.push_back(state_set(1, "Error"));
    EXPECT_EQ(store_effects(), want);
    EXPECT_EQ(get(kRadio, "1", kState), "Error");
    EXPECT_EQ(sleeps(), seconds({{10, 1}}));
}

TEST_F(Scan, TheLastFailingPollDecides) {
    // Three polls read the pending request, then every read fails.
    ASSERT_EQ(qvs_wlan_start_scan(h, 1), 0);
    fault("read X_QV_DiagnosticsState after 3");
    ASSERT_EQ(qvsim_journal_clear(), 0);
    EXPECT_EQ(qvs_wlan_get_scan_result(h, 1), -5);
    Lines want = repeat({state_get(1, 0)}, 3);
    Lines failing = repeat({state_get(1, -5)}, 7);
    want.insert(want.end(), failing.begin(), failing.end());
    want.push_back(state_set(1, "Error"));
    EXPECT_EQ(store_effects(), want);
}

TEST_F(Scan, ErrorAfterFailedReadsGivesMinusOne) {
    set(kRadio, "1", kState, "Error");
    fault("read X_QV_DiagnosticsState after 0");
    EXPECT_EQ(qvs_wlan_get_scan_result(h, 1), -5);
    qvsim_fault_clear();
    set(kRadio, "1", kState, "Error");
    fault("read X_QV_DiagnosticsState after 1");
    EXPECT_EQ(qvs_wlan_get_scan_result(h, 1), -1);  // the first poll read "Error"
    EXPECT_EQ(count_kind("get"), 11);
}

TEST_F(Scan, AMissingRadioGivesTheStoresCodeAndWritesNothing) {
    fault("object 390");
    EXPECT_EQ(qvs_wlan_get_scan_result(h, 1), -2);
    EXPECT_EQ(count_kind("get"), 10);
    EXPECT_EQ(count_kind("set"), 0);  // the "Error" write finds no radio either
    EXPECT_EQ(qvs_wlan_get_scan_result(h, 5), -2);
    EXPECT_EQ(count_kind("stats"), 0);
}

TEST_F(Scan, AFailingErrorWriteDoesNotChangeTheResult) {
    fault("write X_QV_DiagnosticsState");
    set(kRadio, "1", kState, "Requested");
    EXPECT_EQ(qvs_wlan_get_scan_result(h, 1), -1);
    EXPECT_EQ(get(kRadio, "1", kState), "Requested");
}

TEST_F(Scan, PollingWithAZeroHandle) {
    EXPECT_EQ(qvs_wlan_get_scan_result(0, 1), -1);
    EXPECT_EQ(count_kind("get"), 10);
    EXPECT_EQ(count_kind("set"), 0);
    EXPECT_EQ(get(kRadio, "1", kState), "None");
}

// ---- neighbour statistics -------------------------------------------------------

TEST_F(Scan, StatsReturnTheFirstSuccessfulScan) {
    driver("complete");
    results(12);
    qvstest::CaptureFd err(2);
    EXPECT_EQ(qvs_stats_wlan_neighbor(h, 2, 3), 12);
    EXPECT_EQ(printed(err.text()), Lines{});
    EXPECT_EQ(store_effects(), (Lines{"lookup|390|2|found", state_set(2, "Requested"), state_get(2, 0), stats(2)}));
    EXPECT_EQ(sleeps(), seconds({{1, 1}}));
}

TEST_F(Scan, StatsRetryUntilTheDriverAnswers) {
    driver("complete");
    results(4);
    busy(2);
    qvstest::CaptureFd err(2);
    EXPECT_EQ(qvs_stats_wlan_neighbor(h, 1, 3), 4);
    EXPECT_EQ(printed(err.text()),
              (Lines{"[qvs_utils.cpp:qvs_stats_wlan_neighbor:N]qvs_wlan_start_scan() Failed, retry0",
                     "[qvs_utils.cpp:qvs_stats_wlan_neighbor:N]qvs_wlan_start_scan() Failed, retry1"}));
    const Lines attempt_failed{"lookup|390|1|found", state_set(1, "Requested"), state_get(1, 0), state_set(1, "Error")};
    Lines want = repeat(attempt_failed, 2);
    for (const auto &l : Lines{"lookup|390|1|found", state_set(1, "Requested"), state_get(1, 0), stats(1)})
        want.push_back(l);
    EXPECT_EQ(store_effects(), want);
    EXPECT_EQ(sleeps(), (std::vector<long long>{1, 3, 1, 3, 1}));
}

TEST_F(Scan, StatsWithRetryZeroMakeOneAttempt) {
    qvstest::CaptureFd err(2);
    EXPECT_EQ(qvs_stats_wlan_neighbor(h, 1, 0), -1);
    EXPECT_EQ(printed(err.text()),
              (Lines{"[qvs_utils.cpp:qvs_stats_wlan_neighbor:N]qvs_wlan_start_scan() Failed, retry0",
                     "[qvs_utils.cpp:qvs_stats_wlan_neighbor:N]qvs_stats_wlan_neighbor() Failed"}));
    EXPECT_EQ(count_kind("get"), 10);
    EXPECT_EQ(sleeps(), seconds({{10, 1}}));  // no pause after the last attempt
    EXPECT_EQ(get(kRadio, "1", kState), "Error");
}

TEST_F(Scan, StatsWithRetryTwoMakeThreeAttemptsThreeSecondsApart) {
    qvstest::CaptureFd err(2);
    EXPECT_EQ(qvs_stats_wlan_neighbor(h, 2, 2), -1);
    EXPECT_EQ(printed(err.text()),
              (Lines{"[qvs_utils.cpp:qvs_stats_wlan_neighbor:N]qvs_wlan_start_scan() Failed, retry0",
                     "[qvs_utils.cpp:qvs_stats_wlan_neighbor:N]qvs_wlan_start_scan() Failed, retry1",
                     "[qvs_utils.cpp:qvs_stats_wlan_neighbor:N]qvs_wlan_start_scan() Failed, retry2",
                     "[qvs_utils.cpp:qvs_stats_wlan_neighbor:N]qvs_stats_wlan_neighbor() Failed"}));
    EXPECT_EQ(count_kind("set"), 6);  // three requests, three "Error" writes
    EXPECT_EQ(count_kind("get"), 30);
    auto want = seconds({{10, 1}, {1, 3}, {10, 1}, {1, 3}, {10, 1}});
    EXPECT_EQ(sleeps(), want);
    EXPECT_EQ(test_clock_slept_ns(), 36 * kSecond);
    EXPECT_LT(wall_seconds(), 10.0);  // 36 seconds on the pinned clock only
}

TEST_F(Scan, StatsReturnTheLastFailure) {
    fault("read X_QV_DiagnosticsState");
    qvstest::CaptureFd err(2);
    EXPECT_EQ(qvs_stats_wlan_neighbor(h, 1, 1), -5);
    EXPECT_EQ(printed(err.text()).back(), "[qvs_utils.cpp:qvs_stats_wlan_neighbor:N]qvs_stats_wlan_neighbor() Failed");
    EXPECT_EQ(sleeps().size(), 21u);
}

TEST_F(Scan, StatsStopAtAFailedRequest) {
    fault("object 390 1");
    qvstest::CaptureFd err(2);
    EXPECT_EQ(qvs_stats_wlan_neighbor(h, 1, 5), -1);
    EXPECT_EQ(printed(err.text()), Lines{"[qvs_utils.cpp:qvs_stats_wlan_neighbor:N]qvs_stats_wlan_neighbor() Failed"});
    EXPECT_EQ(store_effects(), Lines{"lookup|390|1|missing"});
    EXPECT_EQ(sleeps(), std::vector<long long>{});
}

TEST_F(Scan, StatsStopWhenTheRequestWriteFails) {
    busy(1);
    driver("complete");
    fault("write X_QV_DiagnosticsState");
    qvstest::CaptureFd err(2);
    EXPECT_EQ(qvs_stats_wlan_neighbor(h, 1, 5), -1);
    EXPECT_EQ(printed(err.text()), Lines{"[qvs_utils.cpp:qvs_stats_wlan_neighbor:N]qvs_stats_wlan_neighbor() Failed"});
    EXPECT_EQ(count_kind("get"), 0);
}

TEST_F(Scan, StatsWithoutAParameterList) {
    fault("paramlist");
    qvstest::CaptureFd err(2);
    EXPECT_EQ(qvs_stats_wlan_neighbor_force(h, 2, 2), -1);
    EXPECT_EQ(printed(err.text()),
              Lines{"[qvs_utils.cpp:qvs_stats_wlan_neighbor_force:N]qvs_stats_wlan_neighbor_force() Failed"});
    EXPECT_EQ(store_effects(), Lines{});
}

TEST_F(Scan, StatsWithANegativeRetryMakeNoAttempt) {
    qvstest::CaptureFd err(2);
    EXPECT_EQ(qvs_stats_wlan_neighbor(h, 1, -1), -1);
    EXPECT_EQ(printed(err.text()), Lines{"[qvs_utils.cpp:qvs_stats_wlan_neighbor:N]qvs_stats_wlan_neighbor() Failed"});
    EXPECT_EQ(store_effects(), Lines{});
}

TEST_F(Scan, ForcedStatsRequestForceAndNameThemselves) {
    busy(1);
    driver("complete");
    results(2);
    qvstest::CaptureFd err(2);
    EXPECT_EQ(qvs_stats_wlan_neighbor_force(h, 2, 1), 2);
    EXPECT_EQ(printed(err.text()),
              Lines{"[qvs_utils.cpp:qvs_stats_wlan_neighbor_force:N]qvs_wlan_start_scan() Failed, retry0"});
    EXPECT_EQ(count_kind("set"), 3);
    const auto j = store_effects();
    EXPECT_EQ(j[1], state_set(2, "Request_Force"));
    EXPECT_EQ(j[5], state_set(2, "Request_Force"));
    EXPECT_EQ(sleeps(), (std::vector<long long>{1, 3, 1}));
}

TEST_F(Scan, ForcedStatsGiveUpLikeThePlainOnes) {
    driver("error");
    qvstest::CaptureFd err(2);
    EXPECT_EQ(qvs_stats_wlan_neighbor_force(h, 1, 1), -1);
    EXPECT_EQ(printed(err.text()),
              (Lines{"[qvs_utils.cpp:qvs_stats_wlan_neighbor_force:N]qvs_wlan_start_scan() Failed, retry0",
                     "[qvs_utils.cpp:qvs_stats_wlan_neighbor_force:N]qvs_wlan_start_scan() Failed, retry1",
                     "[qvs_utils.cpp:qvs_stats_wlan_neighbor_force:N]qvs_stats_wlan_neighbor_force() Failed"}));
    EXPECT_EQ(sleeps(), (std::vector<long long>{1, 3, 1}));
}

TEST_F(Scan, StatsPrintTheProcessPathFirst) {
    qvstest::CaptureFd err(2);
    EXPECT_EQ(qvs_stats_wlan_neighbor(h, 1, -1), -1);
    const std::string text = err.text();
    const auto at = text.find("[qvs_utils.cpp:qvs_stats_wlan_neighbor:");
    ASSERT_NE(at, std::string::npos);
    EXPECT_NE(text.substr(0, at).find("test_wlan_scan"), std::string::npos) << text;
    EXPECT_EQ(text.substr(text.size() - 1), "\n");
}

// ---- supported standards ------------------------------------------------------------

class Standards : public Scan {
protected:
    static void radio(int r, const char *standards) { set(kRadio, inst(r), "SupportedStandards", standards); }
};

TEST_F(Standards, EachOnceInTableOrderWhicheverRadioNamedIt) {
    radio(1, "b,g,n");
    radio(2, "a,n,ac");
    char out[64];
    std::memset(out, 'x', sizeof out);
    EXPECT_EQ(qvs_wlan_get_supported_standards_for_ct(h, out), 0);
    EXPECT_STREQ(out, "802.11a/802.11b/802.11g/802.11n/802.11ac");
    EXPECT_EQ(store_effects(), (Lines{"lookup|390|1|found", "lookup|390|2|found"}));
    EXPECT_EQ(logs(), Lines{});
}

TEST_F(Standards, AllSixFillFortyNineCharacters) {
    radio(1, "ax,ac,n");
    radio(2, "g,b,a");
    char out[50];
    std::memset(out, 'x', sizeof out);
    EXPECT_EQ(qvs_wlan_get_supported_standards_for_ct(h, out), 0);
    EXPECT_EQ(std::string(out), "802.11a/802.11b/802.11g/802.11n/802.11ac/802.11ax");
    EXPECT_EQ(std::strlen(out), 49u);
}

TEST_F(Standards, TheDefaultRadios) {
    char out[64] = {};
    EXPECT_EQ(qvs_wlan_get_supported_standards_for_ct(h, out), 0);
    EXPECT_STREQ(out, "802.11a/802.11b/802.11g/802.11n/802.11ac/802.11ax");
}

TEST_F(Standards, UnknownLettersContributeNothing) {
    radio(1, "ad,n");
    radio(2, "B,G,ax ,be");  // case-sensitive, whole tokens only
    char out[64] = {};
    EXPECT_EQ(qvs_wlan_get_supported_standards_for_ct(h, out), 0);
    EXPECT_STREQ(out, "802.11n");
}

TEST_F(Standards, EmptyTokensAreSkipped) {
    radio(1, ",,g,,");
    radio(2, "");
    char out[64] = {};
    EXPECT_EQ(qvs_wlan_get_supported_standards_for_ct(h, out), 0);
    EXPECT_STREQ(out, "802.11g");
}

TEST_F(Standards, NothingKnownLeavesTheBufferUnchanged) {
    radio(1, "ad");
    radio(2, "");
    char out[8] = "keep";
    EXPECT_EQ(qvs_wlan_get_supported_standards_for_ct(h, out), 0);
    EXPECT_STREQ(out, "keep");
}

TEST_F(Standards, OneRadioMissingIsLoggedAndSkipped) {
    radio(1, "a,ac");
    radio(2, "b,g");
    fault("object 390 1");
    char out[64] = {};
    EXPECT_EQ(qvs_wlan_get_supported_standards_for_ct(h, out), 0);
    EXPECT_STREQ(out, "802.11b/802.11g");
    EXPECT_EQ(logs(), Lines{log_line("__wlan_get_supported_standards", 1, "fail to get object ID 390\\r\\n")});
    EXPECT_EQ(store_effects(), (Lines{"lookup|390|1|missing", "lookup|390|2|found"}));
}

TEST_F(Standards, BothRadiosMissingLeaveTheBufferUnchanged) {
    fault("object 390");
    char out[8] = "keep";
    EXPECT_EQ(qvs_wlan_get_supported_standards_for_ct(h, out), 0);
    EXPECT_STREQ(out, "keep");
    EXPECT_EQ(logs(), (Lines{log_line("__wlan_get_supported_standards", 1, "fail to get object ID 390\\r\\n"),
                             log_line("__wlan_get_supported_standards", 1, "fail to get object ID 390\\r\\n")}));
}

TEST_F(Standards, NullBufferOrZeroHandle) {
    char out[8] = "keep";
    EXPECT_EQ(qvs_wlan_get_supported_standards_for_ct(h, nullptr), -1);
    EXPECT_EQ(qvs_wlan_get_supported_standards_for_ct(0, out), -1);
    EXPECT_STREQ(out, "keep");
    EXPECT_EQ(journal().size(), 0u);
}

TEST_F(Standards, AFullSupportedStandardsFieldIsReadWhole) {
    radio(1, "ax,ax,ax,ax,ax,ax,ax,ax,ax,ac,n");  // 31 characters, the field's limit
    radio(2, "");
    char out[64] = {};
    EXPECT_EQ(qvs_wlan_get_supported_standards_for_ct(h, out), 0);
    EXPECT_STREQ(out, "802.11n/802.11ac/802.11ax");
}

}  // namespace
