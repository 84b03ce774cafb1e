// SPDX-License-Identifier: MIT
// A popen that fails: the dnsmasq search reports it on standard output and
// sends no signal; the statistics count nothing. And statistics without
// memory for their table. popen is made to fail by putting a file that cannot be
// executed over /bin/sh. Host builds only: under qemu-user a failed exec in
// posix_spawn's child is not reported back, so popen never fails there.
#include <cstdlib>
#include <regex>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <string>
#include <sys/mount.h>

#include <gtest/gtest.h>

#include "qvs_utils.h"
#include "test_support.hpp"
#include "vpn_env.hpp"

using qvstest::CaptureFd;
using qvstest::read_file;
using qvstest::write_file;
using namespace vpntest;

namespace {

TEST(VpnDnsmasqHost, FailingPopenIsReportedOnStandardOutputAndNoSignalIsSent) {
    prepare_dirs();
    FakeDnsmasq fake;
    fake.start();
    // The shell cannot be started: every popen (and command) fails.
    write_file("/tmp/not-a-shell", "not a program\n");
    ASSERT_EQ(::mount("/tmp/not-a-shell", "/bin/sh", "none", MS_BIND, nullptr), 0);
    CaptureFd out(1);
    int r = qvvpn_add_route_domain(3, "a.example");
    std::string text = out.text();
    ASSERT_EQ(::umount("/bin/sh"), 0);
    EXPECT_EQ(r, 0);
    EXPECT_TRUE(std::regex_match(text, std::regex("\\[send_reload_sig_to_dnsmasq:[0-9]+\\]popen failed!\n"))) << text;
    EXPECT_EQ(read_file(dnsmasq_file(3)), "a.example vpn_domain3 1\n");
    EXPECT_EQ(fake.report(300), "") << "the fake dnsmasq reported a signal";
}

TEST(VpnDnsmasqHost, StatisticsWithAFailingPopenCountZero) {
    prepare_dirs();
    qvstest::run("ipset create vpn_ip3 hash:net counters && ipset add vpn_ip3 10.1.1.1 packets 5 bytes 300");
    write_file(ip_file(3), "10.1.1.1\n10.2.2.2\n");
    char out[64] = {};
    ASSERT_EQ(qvvpn_get_statistics(3, 0, out, sizeof out), 0);
    ASSERT_STREQ(out, "10.1.1.1@5%10.2.2.2@0");
    write_file("/tmp/not-a-shell", "not a program\n");
    ASSERT_EQ(::mount("/tmp/not-a-shell", "/bin/sh", "none", MS_BIND, nullptr), 0);
    int r = qvvpn_get_statistics(3, 0, out, sizeof out);
    ASSERT_EQ(::umount("/bin/sh"), 0);
    EXPECT_EQ(r, 0);
    EXPECT_STREQ(out, "10.1.1.1@0%10.2.2.2@0");
}

long vm_data_bytes() {
    std::string status = read_file("/proc/self/status");
    std::size_t p = status.find("VmData:");
    return p == std::string::npos ? -1 : std::atol(status.c_str() + p + 7) * 1024;
}

TEST(VpnStatisticsHost, NoMemoryForTheTableGivesMinusOne) {
    // In a child whose data limit leaves no room for the 2048-row table
    // (about 650 KB): the call fails with -1 instead of using the stack.
    prepare_dirs();
    write_file(ip_file(3), "10.1.1.1\n");
    pid_t pid = ::fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        long used = vm_data_bytes();
        if (used <= 0) ::_exit(3);
        rlimit lim{static_cast<rlim_t>(used + 256 * 1024), static_cast<rlim_t>(used + 256 * 1024)};
        if (::setrlimit(RLIMIT_DATA, &lim) != 0) ::_exit(4);
        char out[64] = {};
        int r = qvvpn_get_statistics(3, 0, out, sizeof out);
        ::_exit(r == -1 && out[0] == '\0' ? 0 : 1);
    }
    int st = 0;
    ASSERT_EQ(::waitpid(pid, &st, 0), pid);
    ASSERT_TRUE(WIFEXITED(st)) << st;
    EXPECT_EQ(WEXITSTATUS(st), 0);
    // With memory it works.
    char out[64] = {};
    EXPECT_EQ(qvvpn_get_statistics(3, 0, out, sizeof out), 0);
    EXPECT_STREQ(out, "10.1.1.1@0");
}

}  // namespace

// Under AddressSanitizer an allocation that fails must come back as NULL
// (as the C library's does) rather than end the process.
extern "C" const char *__asan_default_options() { return "allocator_may_return_null=1"; }
