// SPDX-License-Identifier: MIT
// Volatile files at fixed names that a fixed shell command line writes
// ("/tmp/flashsize", "/var/ipsec.status", the zero-configuration phase
// clocks): four callers at once, as processes (and, where the clock allows,
// as threads), never see each other's half-written or removed file. Every
// call gives what it gives alone.
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "../ipsec/ipsec_env.hpp"
#include "callers.hpp"
#include "gateway_test.hpp"
#include "qvs_utils.h"
#include "qvsim.h"
#include "test_clock.h"
#include "test_support.hpp"

using lockstest::kRounds;
using lockstest::kWorkers;
using lockstest::run_all;

namespace {

class StateFiles : public qvstest::GatewayTest {
protected:
    // No call waited out a busy lock or missed its file.
    void expect_no_log_lines() {
        for (const std::string &l : logs()) ADD_FAILURE() << "logged: " << l;
    }
};

// ---- getFLASHOccupy --------------------------------------------------------

void mount_tmpfs(const char *dir, const char *size) {
    ASSERT_EQ(std::system((std::string("mkdir -p ") + dir + " && mount -t tmpfs -o size=" + size + " qvstest " + dir +
                           " && dd if=/dev/zero of=" + dir + "/fill bs=1024 count=1000 2>/dev/null")
                              .c_str()),
              0)
        << dir;
}

// What df counts as used on a mount point, in 1K blocks (size less available).
long long used_blocks(const char *mount) {
    struct statvfs st {};
    EXPECT_EQ(::statvfs(mount, &st), 0) << mount;
    const auto frsize = static_cast<long long>(st.f_frsize);
    return (static_cast<long long>(st.f_blocks) - static_cast<long long>(st.f_bavail)) * frsize / 1024;
}

class FlashListing : public StateFiles, public ::testing::WithParamInterface<bool> {};

TEST_P(FlashListing, EveryCallerReadsTheWholeListingAndGetsTheRightPercentage) {
    mount_tmpfs("/userconfig/config", "8m");
    mount_tmpfs("/opt/sgw/apps", "64m");
    const long long used = used_blocks("/userconfig/config") + used_blocks("/opt/sgw/apps");
    const int expected = static_cast<int>((used + 50922) * 100 / 262144);
    int alone = -999;
    ASSERT_EQ(getFLASHOccupy(&alone), 0);
    ASSERT_EQ(alone, expected);

    EXPECT_EQ(run_all(GetParam(),
                      [expected](int) {
                          int problems = 0;
                          for (int r = 0; r < 4 * kRounds; ++r) {
                              int percent = -999;
                              if (getFLASHOccupy(&percent) != 0 || percent != expected) ++problems;
                          }
                          return problems;
                      }),
              0);
    EXPECT_FALSE(qvstest::exists("/tmp/flashsize"));
    expect_no_log_lines();
    for (const char *dir : {"/opt/sgw/apps", "/userconfig/config"}) ::umount(dir);
}

INSTANTIATE_TEST_SUITE_P(Callers, FlashListing, ::testing::Bool(),
                         [](const ::testing::TestParamInfo<bool> &i) {
                             return std::string(i.param ? "Processes" : "Threads");
                         });

// ---- ipsec_update_status ---------------------------------------------------

// An IKE SA line, a long listing, and its child SA last: a refresh that read
// part of the list would leave instance 3 short of "Connected".
std::string long_sa_list() {
    std::string text = "conn3: #5, ESTABLISHED, IKEv2, 8c2a3bd1d0c4a2f5_i* 1e9c7a55b07f3d21_r\n";
    for (int i = 0; i < 2000; ++i) text += "    in  c1e3a0d2,      0 bytes,     0 packets, line " + std::to_string(i) + "\n";
    text += "  child3: #7, reqid 1, INSTALLED, TUNNEL, ESP:AES_CBC-128/HMAC_SHA2_256_128\n";
    return text;
}

TEST_F(StateFiles, StatusRefreshesAtOnceEachReadTheWholeListAndEndRight) {
    ipsectest::add_config(3, true);
    ipsectest::add_config(5, false);
    ipsectest::use_swanctl_standin();
    ipsectest::standin_list(long_sa_list());
    const std::map<int, std::string> right = {
        {1, "Disconnected"}, {2, "Unconfigured"}, {3, "Connected"}, {5, "Unconfigured"}};

    ipsectest::journal_clear();
    ASSERT_EQ(ipsec_update_status(), 0);
    ASSERT_EQ(ipsectest::statuses(), right);
    const auto alone = ipsectest::status_writes();
    ASSERT_EQ(alone.back(), (std::pair<std::string, std::string>{"3", "Connected"}));

    ipsectest::journal_clear();
    EXPECT_EQ(run_all(true,
                      [](int) {
                          int problems = 0;
                          for (int r = 0; r < kRounds; ++r)
                              if (ipsec_update_status() != 0) ++problems;
                          return problems;
                      }),
              0);
    EXPECT_EQ(ipsectest::statuses(), right);
    // Whole refreshes one after the other: the status writes are the one
    // refresh's writes, once per call, never interleaved.
    std::vector<std::pair<std::string, std::string>> serial;
    for (int c = 0; c < kWorkers * kRounds; ++c) serial.insert(serial.end(), alone.begin(), alone.end());
    EXPECT_EQ(ipsectest::status_writes(), serial);
    EXPECT_TRUE(ipsectest::balanced());
    EXPECT_FALSE(qvstest::exists(ipsectest::kStatusFile));
    expect_no_log_lines();
}

// ---- the zero-configuration phase clocks -----------------------------------

constexpr long long kT0 = 1790000000;
// Callers' clocks stand kStep seconds apart: 100 s is within every phase's
// time-out, 200 s and more past it.
constexpr long long kStep = 100;
constexpr int kCallsPerRound = 3;

struct Phase {
    const char *name;
    const char *file;
    long timeout;
    int waiting, timed_out;
    // Puts both uplinks' store into this phase.
    void (*enter)();
};

void set(int oid, const char *inst, const char *param, const std::string &value) {
    ASSERT_EQ(qvsim_set(oid, inst, param, value.c_str()), 0) << oid << " " << param;
}

void registered() {
    set(211, "1", "RegistrationState", "Registered and certified");
    set(209, "1", "RegistrationState", "Authentication Success");
}

void rms(int flag, int status) {
    set(288, "", "X_QV_RegisterTimes", "0");
    set(288, "", "X_QV_RegisterFlag", std::to_string(flag));
    set(288, "", "X_QV_RegisterStatus", std::to_string(status));
    set(288, "", "X_QV_ServiceResult", "0");
}

// The TR-069 connection: down (none up) or up, the only WAN connection.
void tr069(bool up) {
    for (int oid : {174, 196})
        for (int i = 1; i <= 15; ++i)
            for (int j = 1; j <= 8; ++j) {
                const std::string in = "1," + std::to_string(i) + "," + std::to_string(j);
                if (qvsim_exists(oid, in.c_str()) == 1) {
                    ASSERT_EQ(qvsim_delete_instance(oid, in.c_str()), 0);
                }
            }
    ASSERT_EQ(qvsim_add_instance(174, "1,1,1"), 0);
    set(174, "1,1,1", "X_QV_ServiceList", "TR069");
    set(174, "1,1,1", "ConnectionUp", up ? "1" : "0");
}

const Phase kPhases[] = {
    {"Olt", "/tmp/oltretime", 180, 2, 3,
     [] {
         set(211, "1", "RegistrationState", "NoSignal");
         set(209, "1", "RegistrationState", "Loid Wrong");
     }},
    {"Wan", "/tmp/getwantime", 120, 5, 6,
     [] {
         registered();
         tr069(false);
     }},
    {"Rms", "/tmp/registerrms", 120, 8, 9,
     [] {
         registered();
         tr069(true);
         rms(1, 0);
     }},
    {"Service", "/tmp/servicetime", 120, 14, 13,
     [] {
         registered();
         tr069(true);
         rms(0, 0);
     }},
};

// The stamp a phase clock holds; -1 when it holds none.
long long stamp(const char *file) {
    const std::string text = qvstest::read_file(file);
    char *end = nullptr;
    const long long t = std::strtoll(text.c_str(), &end, 10);
    return end == text.c_str() || *end != '\n' ? -1 : t;
}

// One caller in its own process, its clock w steps past kT0: a few calls
// (EPON and GPON in turn), then each result must be what the clock's stamp
// gives for its time. Number of problems.
int phase_caller(const Phase &p, int w) {
    const long long now = kT0 + w * kStep;
    test_clock_pin(now);
    test_clock_real_pauses(1);  // a wait for another caller's lock is real
    std::vector<int> results;
    for (int c = 0; c < kCallsPerRound; ++c)
        results.push_back((c + w) % 2 == 0 ? getzeroconfigeponstate() : getzeroconfiggponstate());
    const long long t = stamp(p.file);
    int problems = (t - kT0) % kStep == 0 && t >= kT0 && t < kT0 + kWorkers * kStep ? 0 : 1;
    const int right = now - t > p.timeout ? p.timed_out : p.waiting;
    for (int r : results)
        if (r != right) {
            std::fprintf(stderr, "caller %d at +%llds: %d, the stamp +%llds gives %d\n", w, now - kT0, r, t - kT0,
                         right);
            ++problems;
        }
    return problems;
}

void PrintTo(const Phase &p, std::ostream *os) { *os << p.name << " (" << p.file << ")"; }

class PhaseClocks : public StateFiles, public ::testing::WithParamInterface<Phase> {};

TEST_P(PhaseClocks, CallersAtOnceReadOneStampAndAgreeWithIt) {
    const Phase &p = GetParam();
    p.enter();
    for (int round = 0; round < kRounds; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        ::unlink(p.file);
        EXPECT_EQ(run_all(true, [&p](int w) { return phase_caller(p, w); }), 0);
        EXPECT_NE(stamp(p.file), -1);
    }
    // Stamped once per round: the first caller found the clock missing, all
    // others found its stamp.
    EXPECT_EQ(qvsim_journal_count("cmd"), kRounds);
    expect_no_log_lines();
}

INSTANTIATE_TEST_SUITE_P(Phases, PhaseClocks, ::testing::ValuesIn(kPhases),
                         [](const ::testing::TestParamInfo<Phase> &i) { return std::string(i.param.name); });

}  // namespace
