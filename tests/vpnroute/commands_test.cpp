// SPDX-License-Identifier: MIT
// VPN route lists: the exact command lines handed to the platform's command
// runner (from its journal), including those cut at 127 characters.
#include <cctype>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "qvs_utils.h"
#include "test_support.hpp"
#include "vpn_env.hpp"

using qvstest::exists;
using qvstest::read_file;
using qvstest::write_file;
using namespace vpntest;
using Lines = std::vector<std::string>;

namespace {

const std::string kIp3 = "/userconfig/config/qvvpn/VPN_IP_3";
const std::string kMac3 = "/userconfig/config/qvvpn/VPN_MAC_3";
const std::string kDomain3 = "/userconfig/config/qvvpn/VPN_DOMAIN_3";

class VpnCommands : public ::testing::Test {
protected:
    void SetUp() override {
        prepare_dirs();
        journal_clear();
    }
};

TEST_F(VpnCommands, AddIp) {
    EXPECT_EQ(qvvpn_add_route_ip(3, "10.1.2.3"), 0);
    EXPECT_EQ(commands_run(), Lines{"ipset add vpn_ip3 10.1.2.3 2> /dev/null"});
    journal_clear();
    EXPECT_EQ(qvvpn_add_route_ip(3, "10.1.2"), 1);
    EXPECT_EQ(commands_run(), Lines{});
}

TEST_F(VpnCommands, DelIp) {
    write_file(kIp3, "10.0.0.12\n10.0.0.1\n");
    EXPECT_EQ(qvvpn_del_route_ip(3, "10.0.0.1"), 0);
    EXPECT_EQ(commands_run(), (Lines{"ipset del vpn_ip3 10.0.0.1 2> /dev/null"}));
    journal_clear();
    EXPECT_EQ(qvvpn_del_route_ip(3, "10.7.7.7"), 0);
    EXPECT_EQ(commands_run(), Lines{});
}

TEST_F(VpnCommands, FlushEachList) {
    EXPECT_EQ(qvvpn_flush_route_ip(3), 0);
    EXPECT_EQ(qvvpn_flush_route_mac(3), 0);
    EXPECT_EQ(qvvpn_flush_route_domain(3), 0);
    EXPECT_EQ(commands_run(), (Lines{"ipset flush vpn_ip3 2> /dev/null", "ipset flush vpn_mac3 2> /dev/null",
                                     "ipset flush vpn_domain3 2> /dev/null"}));
}

TEST_F(VpnCommands, AddMacInColonFormAndTheEmptyMemberOfADashedMac) {
    char plain[] = "AABBCCDDEEFF";
    EXPECT_EQ(qvvpn_add_route_mac(3, plain), 0);
    char colon[] = "00:1A:2B:3C:4D:5E";
    EXPECT_EQ(qvvpn_add_route_mac(3, colon), 0);
    char dashed[] = "AA-BB-CC-DD-EE-FF";
    EXPECT_EQ(qvvpn_add_route_mac(3, dashed), 0);
    EXPECT_EQ(commands_run(), (Lines{"ipset add vpn_mac3 aa:bb:cc:dd:ee:ff 2> /dev/null",
                                     "ipset add vpn_mac3 00:1a:2b:3c:4d:5e 2> /dev/null",
                                     "ipset add vpn_mac3  2> /dev/null"}));
    EXPECT_EQ(read_file(kMac3), "aabbccddeeff\n00:1a:2b:3c:4d:5e\naa-bb-cc-dd-ee-ff\n");
}

// The C library's own reading of "%02hhx" six times, as the colon form
// follows it wherever the dashed form is not concerned.
std::string sscanf_member(const char *text) {
    unsigned char b[6] = {};
    if (std::sscanf(text, "%02hhx%02hhx%02hhx%02hhx%02hhx%02hhx", &b[0], &b[1], &b[2], &b[3], &b[4], &b[5]) != 6)
        return "";
    char out[32];
    std::snprintf(out, sizeof out, "%02hhx:%02hhx:%02hhx:%02hhx:%02hhx:%02hhx", b[0], b[1], b[2], b[3], b[4], b[5]);
    return out;
}

TEST_F(VpnCommands, TheColonFormReadsAsSscanfDoes) {
    const char *texts[] = {"AA BB CC DD EE FF", " aabbccddeeff", "aa\tbb\vcc dd  ee ff", "a b c d e f",
                           "1 2 3 4 5 6",       "+a+b+c+d+e+f",  "0x0x0x0x0x0x",        "aabbccddee",
                           "aa bb cc dd ee",    "aabbccddeefff0", "zzbbccddeeff",       "aab bccddeeff"};
    Lines expected;
    int tunnel = 10;
    for (const char *t : texts) {
        SCOPED_TRACE(t);
        std::string copy = t;
        for (char &c : copy) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        expected.push_back("ipset add vpn_mac" + std::to_string(tunnel) + " " + sscanf_member(copy.c_str()) +
                           " 2> /dev/null");
        std::vector<char> arg(t, t + std::strlen(t) + 1);
        EXPECT_EQ(qvvpn_add_route_mac(tunnel++, arg.data()), 0);
    }
    EXPECT_EQ(commands_run(), expected);
    // Blanks before a field are skipped, as by sscanf.
    EXPECT_EQ(expected[0], "ipset add vpn_mac10 aa:bb:cc:dd:ee:ff 2> /dev/null");
    EXPECT_EQ(expected[1], "ipset add vpn_mac11 aa:bb:cc:dd:ee:ff 2> /dev/null");
    // The dashed form keeps its empty member, although sscanf reads "-b" as a number.
    EXPECT_NE(sscanf_member("aa-bb-cc-dd-ee-ff"), "");
}

TEST_F(VpnCommands, AddMacWithFewerThanSixBytesGivesAnEmptyMember) {
    char odd[] = "ABCDEF012345";
    EXPECT_EQ(qvvpn_add_route_mac(3, odd), 0);
    char too_short[] = "abcdef";
    EXPECT_EQ(qvvpn_add_route_mac(3, too_short), 1);  // substring of line 1
    char five[] = "0102030405";
    EXPECT_EQ(qvvpn_add_route_mac(3, five), 0);
    EXPECT_EQ(commands_run(), (Lines{"ipset add vpn_mac3 ab:cd:ef:01:23:45 2> /dev/null",
                                     "ipset add vpn_mac3  2> /dev/null"}));
}

TEST_F(VpnCommands, DelMac) {
    write_file(kMac3, "00:11:22:33:44:55\naabbccddeeff\n");
    char mac[] = "AABBCCDDEEFF";
    EXPECT_EQ(qvvpn_del_route_mac(3, mac), 0);
    EXPECT_EQ(commands_run(), (Lines{"ipset del vpn_mac3 aa:bb:cc:dd:ee:ff 2> /dev/null"}));
    journal_clear();
    char gone[] = "AABBCCDDEEFF";
    EXPECT_EQ(qvvpn_del_route_mac(3, gone), 0);
    EXPECT_EQ(commands_run(), Lines{});
}

TEST_F(VpnCommands, DomainChangesRunNoIpsetAddOnlyTheFlushOfTheDomainSet) {
    EXPECT_EQ(qvvpn_add_route_domain(3, "a.example"), 0);
    EXPECT_EQ(qvvpn_add_route_domain(3, "b.example"), 0);
    EXPECT_EQ(commands_run(), Lines{});
    EXPECT_EQ(qvvpn_del_route_domain(3, "b.example"), 0);
    EXPECT_EQ(commands_run(), (Lines{"ipset flush vpn_domain3 2> /dev/null"}));
    journal_clear();
    EXPECT_EQ(qvvpn_del_route_domain(3, "zzz"), 0);
    EXPECT_EQ(commands_run(), Lines{"ipset flush vpn_domain3 2> /dev/null"});
}

TEST_F(VpnCommands, ReloadRunsItsStepsInOrderAndFlushesTheDomainFilePrefix) {
    write_file(kIp3, "10.1.2.0/24\n");
    write_file(kDomain3, "a.example\n");
    write_file(kMac3, "aabbccddeeff\n02:00:00:00:00:01\nAA-BB\n");
    EXPECT_EQ(qvvpn_reload_route(3), 0);
    // A colon-form line keeps its line end on the command line.
    EXPECT_EQ(commands_run(),
              (Lines{"ipset flush vpn_ip3 2> /dev/null", "ipset restore -f /var/vpn_ipset_save -exist",
                     "ipset flush VPN_DOMAIN_3 2> /dev/null", "ipset flush vpn_mac3 2> /dev/null",
                     "ipset add vpn_mac3 aa:bb:cc:dd:ee:ff 2> /dev/null",
                     "ipset add vpn_mac3 02:00:00:00:00:01\n 2> /dev/null", "ipset add vpn_mac3  2> /dev/null"}));
    EXPECT_EQ(read_file("/var/vpn_ipset_save"), "add vpn_ip3 10.1.2.0/24\n");
    EXPECT_EQ(read_file(dnsmasq_file(3)), "a.example vpn_domain3 1\n");
}

TEST_F(VpnCommands, ReloadWithoutListFilesRunsOnlyTheFlushes) {
    EXPECT_EQ(qvvpn_reload_route(3), 0);
    EXPECT_EQ(commands_run(), (Lines{"ipset flush vpn_ip3 2> /dev/null", "ipset flush VPN_DOMAIN_3 2> /dev/null",
                                     "ipset flush vpn_mac3 2> /dev/null"}));
}

TEST_F(VpnCommands, ReloadModeRunsOnlyItsPart) {
    write_file(kIp3, "10.1.2.0/24\n");
    write_file(kMac3, "aabbccddeeff\n");
    EXPECT_EQ(qvvpn_reload_route_mode(3, 0), 0);
    EXPECT_EQ(commands_run(), (Lines{"ipset flush vpn_ip3 2> /dev/null", "ipset restore -f /var/vpn_ipset_save -exist"}));
    journal_clear();
    EXPECT_EQ(qvvpn_reload_route_mode(3, 1), 0);
    EXPECT_EQ(commands_run(), Lines{"ipset flush VPN_DOMAIN_3 2> /dev/null"});
    journal_clear();
    EXPECT_EQ(qvvpn_reload_route_mode(3, 2), 0);
    EXPECT_EQ(commands_run(), (Lines{"ipset flush vpn_mac3 2> /dev/null", "ipset add vpn_mac3 aa:bb:cc:dd:ee:ff 2> /dev/null"}));
    journal_clear();
    EXPECT_EQ(qvvpn_reload_route_mode(3, 9), 0);
    EXPECT_EQ(commands_run(), Lines{});
}

TEST_F(VpnCommands, SetRouteAllReloadsTheListItWrote) {
    char ips[] = "10.1.1.1%10.2.2.2";
    EXPECT_EQ(qvvpn_set_route_all(3, 0, ips), 0);
    EXPECT_EQ(commands_run(), (Lines{"ipset flush vpn_ip3 2> /dev/null", "ipset restore -f /var/vpn_ipset_save -exist"}));
    EXPECT_EQ(read_file("/var/vpn_ipset_save"), "add vpn_ip3 10.1.1.1\nadd vpn_ip3 10.2.2.2\n");
    journal_clear();
    char macs[] = "0200000000AB";
    EXPECT_EQ(qvvpn_set_route_all(3, 2, macs), 0);
    EXPECT_EQ(commands_run(), (Lines{"ipset flush vpn_mac3 2> /dev/null", "ipset add vpn_mac3 02:00:00:00:00:ab 2> /dev/null"}));
}

TEST_F(VpnCommands, IpTextTooLongForItsCommandIsRefused) {
    std::string ip(120, '1');
    EXPECT_EQ(qvvpn_add_route_ip(3, ip.c_str()), -1);
    EXPECT_EQ(commands_run(), Lines{});
    EXPECT_FALSE(exists(kIp3));
    EXPECT_TRUE(journal_logged("qvvpn_add_route_ip", "refused text too long for its command line [" + ip + "]"));
    write_file(kIp3, ip + "\n");
    journal_clear();
    EXPECT_EQ(qvvpn_del_route_ip(3, ip.c_str()), -1);
    EXPECT_EQ(commands_run(), Lines{});
    EXPECT_EQ(read_file(kIp3), ip + "\n");
    EXPECT_TRUE(journal_logged("qvvpn_del_route_ip", "refused text too long for its command line [" + ip + "]"));
}

TEST_F(VpnCommands, TheSmallestIndexNamesFileAndSetWithPercentD) {
    write_file(kDir + "/VPN_IP_-2147483648", "10.1.1.1\n");
    EXPECT_EQ(qvvpn_del_route_ip(-2147483648, "10.1.1.1"), 0);
    EXPECT_EQ(commands_run(), (Lines{"ipset del vpn_ip-2147483648 10.1.1.1 2> /dev/null"}));
    EXPECT_EQ(read_file(kDir + "/VPN_IP_-2147483648"), "");
}

TEST_F(VpnCommands, ListingsAndStatisticsRunNoCommandThroughTheRunner) {
    write_file(kIp3, "10.1.1.1\n");
    char out[64] = {};
    EXPECT_EQ(qvvpn_get_route_all(3, 0, out, sizeof out), 1);
    EXPECT_EQ(qvvpn_get_statistics(3, 0, out, sizeof out), 0);
    EXPECT_EQ(qvvpn_get_pkgCount(3), 0u);
    EXPECT_EQ(all_commands(), Lines{});
}

}  // namespace
