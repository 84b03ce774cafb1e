// SPDX-License-Identifier: MIT
// The list locks: a holder killed with SIGKILL releases its lock, a hung
// holder makes a waiting call fail after the bound (counted in pauses on
// the test clock, never waited for), the state files' locks included,
// while a list that changes hands starts the bound again; nested exported
// calls pass through.
#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "gateway_test.hpp"
#include "qvs_utils.h"
#include "test_clock.h"
#include "test_support.hpp"

using qvstest::read_file;
using qvstest::write_file;

namespace {

const std::string kLockDir = "/var/lock/qvs_utils";

// A process that holds a list's lock as the library takes it (flock on its
// lock file) and then waits; the pipe reports that it holds it.
class Holder {
public:
    explicit Holder(const std::string &name) {
        int fds[2];
        if (::pipe(fds) != 0) return;
        ::mkdir("/var/lock", 0755);
        ::mkdir(kLockDir.c_str(), 0755);
        pid_ = ::fork();
        if (pid_ == 0) {
            ::close(fds[0]);
            int fd = ::open((kLockDir + "/" + name + ".lock").c_str(), O_RDWR | O_CREAT, 0644);
            if (fd < 0 || ::flock(fd, LOCK_EX) != 0) ::_exit(1);
            char ok = 'h';
            if (::write(fds[1], &ok, 1) != 1) ::_exit(1);
            for (;;) ::pause();
        }
        ::close(fds[1]);
        char c = 0;
        held_ = ::read(fds[0], &c, 1) == 1 && c == 'h';
        ::close(fds[0]);
    }
    ~Holder() { kill(); }
    bool held() const { return held_; }
    void kill() {
        if (pid_ <= 0) return;
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
        pid_ = -1;
    }

private:
    pid_t pid_ = -1;
    bool held_ = false;
};

class ListLocks : public qvstest::GatewayTest {
protected:
    void SetUp() override {
        GatewayTest::SetUp();
        ::mkdir("/userconfig/config", 0755);
        ::mkdir("/userconfig/config/qvvpn", 0755);
        ::mkdir("/userconfig/config/approute", 0755);
        ::mkdir("/userconfig/config/appfilter", 0755);
        test_clock_pin(1700000000);
    }
    void TearDown() override {
        test_clock_release();
        GatewayTest::TearDown();
    }
    static bool logged(const std::string &func, const std::string &message) {
        for (const std::string &l : logs())
            if (l == func + "|1|" + message) return true;
        return false;
    }
};

TEST_F(ListLocks, AKilledHolderReleasesTheLockAndTheNextCallGoesAtOnce) {
    Holder h("qvvpn1");
    ASSERT_TRUE(h.held());
    h.kill();
    EXPECT_EQ(qvvpn_add_route_ip(1, "10.1.2.3"), 0);
    EXPECT_EQ(test_clock_sleeps(), 0u) << "the call waited for a dead holder";
    EXPECT_EQ(read_file("/userconfig/config/qvvpn/VPN_IP_1"), "10.1.2.3\n");
}

TEST_F(ListLocks, AHungHolderMakesTheCallFailAfterTenSecondsWithTheLogLine) {
    write_file("/userconfig/config/qvvpn/VPN_IP_1", "10.0.0.1\n");
    Holder h("qvvpn1");
    ASSERT_TRUE(h.held());
    const time_t wall = test_clock_real_now();
    EXPECT_EQ(qvvpn_del_route_ip(1, "10.0.0.1"), -1);
    EXPECT_LE(test_clock_real_now() - wall, 5) << "the bound was waited in real time";
    EXPECT_EQ(test_clock_sleeps(), 1000u);
    EXPECT_EQ(test_clock_slept_ns(), 10LL * 1000 * 1000 * 1000);
    EXPECT_TRUE(logged("qvvpn_del_route_ip", "list qvvpn1 busy, gave up after 10 s.\n"));
    EXPECT_EQ(read_file("/userconfig/config/qvvpn/VPN_IP_1"), "10.0.0.1\n");
    EXPECT_TRUE(qvstest::journal_joined({"log", "attach", "detach"}).empty()) << "a command ran without the lock";
}

// A stream of other callers on a slow machine: each time the list changes
// hands, its lock file's hand-over count moves. Here the holder stays, and
// the test moves the count at two points of the wait and lets the list go
// at a third; every move starts the bound again.
Holder *g_stream_holder = nullptr;

void bump_handovers() {
    int fd = ::open((kLockDir + "/qvvpn1.lock").c_str(), O_RDWR);
    std::uint32_t n = 0;
    if (::pread(fd, &n, sizeof n, 0) != static_cast<ssize_t>(sizeof n)) n = 0;
    ++n;
    if (::pwrite(fd, &n, sizeof n, 0) != static_cast<ssize_t>(sizeof n)) ADD_FAILURE() << "count not written";
    ::close(fd);
}

void stream_of_holders(unsigned long sleep) {
    if (sleep == 900 || sleep == 1800) bump_handovers();
    if (sleep == 2700) g_stream_holder->kill();
}

TEST_F(ListLocks, ACallerBehindAStreamOfHoldersWaitsItsTurnInsteadOfFailing) {
    Holder h("qvvpn1");
    ASSERT_TRUE(h.held());
    g_stream_holder = &h;
    test_clock_on_sleep(stream_of_holders);
    EXPECT_EQ(qvvpn_add_route_ip(1, "10.1.2.3"), 0);
    g_stream_holder = nullptr;
    EXPECT_EQ(test_clock_sleeps(), 2700u) << "the bound did not start again at each hand-over";
    EXPECT_EQ(read_file("/userconfig/config/qvvpn/VPN_IP_1"), "10.1.2.3\n");
    EXPECT_FALSE(logged("qvvpn_add_route_ip", "list qvvpn1 busy, gave up after 10 s.\n"));
}

TEST_F(ListLocks, EveryCallCountsOneHandOverInTheLockFile) {
    EXPECT_EQ(qvvpn_add_route_ip(3, "10.1.2.3"), 0);
    EXPECT_EQ(qvvpn_add_route_ip(3, "10.1.2.4"), 0);
    char list[] = "10.0.0.1,10.0.0.2";
    EXPECT_EQ(approute_add_route_list(3, 0, list), 0);  // nested calls take the list once
    const std::string vpn = read_file(kLockDir + "/qvvpn3.lock");
    const std::string route = read_file(kLockDir + "/approute3.lock");
    ASSERT_EQ(vpn.size(), sizeof(std::uint32_t));
    ASSERT_EQ(route.size(), sizeof(std::uint32_t));
    std::uint32_t n = 0;
    std::memcpy(&n, vpn.data(), sizeof n);
    EXPECT_EQ(n, 2u);
    std::memcpy(&n, route.data(), sizeof n);
    EXPECT_EQ(n, 1u);
}

TEST_F(ListLocks, EveryFamilyFailsWithItsFailureResultWhileTheListIsHeld) {
    Holder a("approute2");
    Holder f("appfilter2");
    ASSERT_TRUE(a.held() && f.held());
    char ip[] = "10.0.0.1";
    EXPECT_EQ(approute_add_route_ip(2, ip), -1);
    EXPECT_TRUE(logged("approute_add_route_ip", "list approute2 busy, gave up after 10 s.\n"));
    // The dispatchers return 0 in every case.
    char list[] = "10.0.0.1,10.0.0.2";
    EXPECT_EQ(approute_add_route_list(2, 0, list), 0);
    EXPECT_TRUE(logged("approute_add_route_list", "list approute2 busy, gave up after 10 s.\n"));
    EXPECT_EQ(approute_get_route_count(2, 0), 0);
    char list2[] = "10.0.0.1";
    EXPECT_EQ(appfilter_add_route_iplist(2, list2), -1);
    EXPECT_TRUE(logged("appfilter_add_route_iplist", "list appfilter2 busy, gave up after 10 s.\n"));
    EXPECT_EQ(update_data_list_to_appfilter_module(2, 0), -1);
    EXPECT_FALSE(qvstest::exists("/userconfig/config/approute/approute_ip2"));
    EXPECT_FALSE(qvstest::exists("/userconfig/config/appfilter/appfilter_ip2"));
    EXPECT_EQ(test_clock_sleeps(), 5u * 1000u);
}

TEST_F(ListLocks, ATunnelReloadWaitsForTheSharedRestoreFile) {
    write_file("/userconfig/config/qvvpn/VPN_IP_1", "10.0.0.1\n");
    Holder h("vpn_ipset_save");
    ASSERT_TRUE(h.held());
    EXPECT_EQ(qvvpn_reload_route_mode(1, 0), 0);  // a reload returns 0 in every case
    EXPECT_TRUE(logged("qvvpn_reload_route_mode", "list vpn_ipset_save busy, gave up after 10 s.\n"));
    EXPECT_FALSE(qvstest::exists("/var/vpn_ipset_save"));
    EXPECT_EQ(test_clock_sleeps(), 1000u);
}

TEST_F(ListLocks, AStateFileHeldPastTheBoundGivesEachCallItsFailureResult) {
    Holder flash("flashsize"), status("ipsec_status"), clock("oltretime");
    ASSERT_TRUE(flash.held() && status.held() && clock.held());
    int percent = -999;
    EXPECT_EQ(getFLASHOccupy(&percent), -1);
    EXPECT_EQ(percent, -999);
    EXPECT_TRUE(logged("getFLASHOccupy", "list flashsize busy, gave up after 10 s.\n"));
    EXPECT_FALSE(qvstest::exists("/tmp/flashsize"));
    EXPECT_EQ(ipsec_update_status(), -1);
    EXPECT_TRUE(logged("ipsec_update_status", "list ipsec_status busy, gave up after 10 s.\n"));
    // A phase clock that cannot be checked counts as unreadable: waiting.
    ASSERT_EQ(qvsim_set(211, "1", "RegistrationState", "NoSignal"), 0);
    EXPECT_EQ(getzeroconfigeponstate(), 2);
    EXPECT_TRUE(logged("getzeroconfigeponstate", "list oltretime busy, gave up after 10 s.\n"));
    EXPECT_FALSE(qvstest::exists("/tmp/oltretime"));
    EXPECT_EQ(test_clock_sleeps(), 3u * 1000u);
    // No command ran, no status was written.
    EXPECT_TRUE(qvstest::journal_joined({"log", "attach", "detach", "stats"}).empty());
}

TEST_F(ListLocks, NestedExportedCallsDoNotWait) {
    char list[] = "10.0.0.1,10.0.0.2";
    EXPECT_EQ(approute_add_route_list(1, 0, list), 0);  // takes approute1, then the iplist variant
    EXPECT_EQ(read_file("/userconfig/config/approute/approute_ip1"), "10.0.0.1\n10.0.0.2\n");
    char items[] = "10.0.0.3";
    EXPECT_EQ(appfilter_add_route_list(1, 0, items), 0);  // dispatcher, variant, module update
    EXPECT_EQ(read_file("/userconfig/config/appfilter/appfilter_ip1"), "10.0.0.3");
    char gone[] = "10.0.0.3";
    EXPECT_EQ(appfilter_del_route_list(1, 0, gone), 0);
    EXPECT_EQ(test_clock_sleeps(), 0u);
    // And the lock is free again afterwards.
    EXPECT_EQ(approute_get_route_count(1, 0), 2);
    EXPECT_EQ(test_clock_sleeps(), 0u);
}

TEST_F(ListLocks, LockFilesAreVolatileAndNeverUnderUserconfig) {
    EXPECT_EQ(qvvpn_add_route_ip(4, "10.1.2.3"), 0);
    EXPECT_TRUE(qvstest::exists(kLockDir + "/qvvpn4.lock"));
    const std::string found = qvstest::run("find /userconfig -name '*.lock'");
    EXPECT_EQ(found, "");
}

}  // namespace
