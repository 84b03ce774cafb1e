// A popen that fails: the dnsmasq search reports it on standard output and
// sends no signal; the statistics count nothing. popen is made to fail by putting a file that cannot be
// executed over /bin/sh. Host builds only: under qemu-user a failed exec in
// posix_spawn's child is not reported back, so popen never fails there.
#include <regex>
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
    ASSERT_EQ(::mount("/tmp/not-a-shell", "/bin/sh", nullptr, MS_BIND, nullptr), 0);
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
    ASSERT_EQ(::mount("/tmp/not-a-shell", "/bin/sh", nullptr, MS_BIND, nullptr), 0);
    int r = qvvpn_get_statistics(3, 0, out, sizeof out);
    ASSERT_EQ(::umount("/bin/sh"), 0);
    EXPECT_EQ(r, 0);
    EXPECT_STREQ(out, "10.1.1.1@0%10.2.2.2@0");
}

}  // namespace
