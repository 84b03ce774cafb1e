// SPDX-License-Identifier: MIT
// VPN route lists against the kernel: real ipset sets and a mangle chain
// made as a tunnel's set-up makes them, traffic from a peer namespace over a
// veth pair, and the counters that "ipset list" prints.
#include <cstring>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "qvs_utils.h"
#include "test_support.hpp"
#include "vpn_env.hpp"

using qvstest::read_file;
using qvstest::run;
using qvstest::write_file;
using namespace vpntest;
using Set = std::set<std::string>;

namespace {

class VpnKernel : public ::testing::Test {
protected:
    void SetUp() override {
        prepare_dirs();
        create_tunnel(3);
    }
    static Set file_lines(const std::string &path) {
        Set out;
        for (const std::string &l : split(read_file(path), '\n')) out.insert(l);
        return out;
    }
};

TEST_F(VpnKernel, AddDeleteAndFlushIpKeepSetAndFileInStep) {
    EXPECT_EQ(qvvpn_add_route_ip(3, "10.1.2.0/24"), 0);
    EXPECT_EQ(qvvpn_add_route_ip(3, "10.0.0.12"), 0);
    EXPECT_EQ(qvvpn_add_route_ip(3, "192.168.7.7"), 0);
    EXPECT_EQ(members("vpn_ip3"), (Set{"10.1.2.0/24", "10.0.0.12", "192.168.7.7"}));
    EXPECT_EQ(members("vpn_ip3"), file_lines(ip_file(3)));

    // A substring of an existing entry adds nothing, in the file or the set.
    EXPECT_EQ(qvvpn_add_route_ip(3, "10.0.0.1"), 2);
    EXPECT_EQ(members("vpn_ip3"), file_lines(ip_file(3)));

    EXPECT_EQ(qvvpn_del_route_ip(3, "192.168.7.7"), 0);
    EXPECT_EQ(members("vpn_ip3"), (Set{"10.1.2.0/24", "10.0.0.12"}));
    EXPECT_EQ(members("vpn_ip3"), file_lines(ip_file(3)));

    EXPECT_EQ(qvvpn_flush_route_ip(3), 0);
    EXPECT_EQ(members("vpn_ip3"), Set{});
    EXPECT_EQ(read_file(ip_file(3)), "");
}

TEST_F(VpnKernel, DeletingASubstringRemovesTheLineButNotTheLongerMember) {
    // The line of 10.0.0.12 goes; "ipset del vpn_ip3 10.0.0.1" finds no such
    // member, so the set keeps 10.0.0.12 until the next reload.
    ASSERT_EQ(qvvpn_add_route_ip(3, "10.0.0.12"), 0);
    EXPECT_EQ(qvvpn_del_route_ip(3, "10.0.0.1"), 0);
    EXPECT_EQ(read_file(ip_file(3)), "");
    EXPECT_EQ(members("vpn_ip3"), Set{"10.0.0.12"});
    EXPECT_EQ(qvvpn_reload_route(3), 0);
    EXPECT_EQ(members("vpn_ip3"), Set{});
}

TEST_F(VpnKernel, MacsGoIntoTheSetInColonForm) {
    char plain[] = "AABBCCDDEEFF";
    EXPECT_EQ(qvvpn_add_route_mac(3, plain), 0);
    char colon[] = "02:00:00:00:00:0A";
    EXPECT_EQ(qvvpn_add_route_mac(3, colon), 0);
    EXPECT_EQ(read_file(mac_file(3)), "aabbccddeeff\n02:00:00:00:00:0a\n");
    EXPECT_EQ(members("vpn_mac3"), (Set{"AA:BB:CC:DD:EE:FF", "02:00:00:00:00:0A"}));

    // Dashes: stored lower-cased, but the ipset member is empty and the add fails.
    char dashed[] = "AA-BB-CC-DD-EE-01";
    EXPECT_EQ(qvvpn_add_route_mac(3, dashed), 0);
    EXPECT_EQ(read_file(mac_file(3)), "aabbccddeeff\n02:00:00:00:00:0a\naa-bb-cc-dd-ee-01\n");
    EXPECT_EQ(members("vpn_mac3"), (Set{"AA:BB:CC:DD:EE:FF", "02:00:00:00:00:0A"}));

    char del[] = "AABBCCDDEEFF";
    EXPECT_EQ(qvvpn_del_route_mac(3, del), 0);
    EXPECT_EQ(members("vpn_mac3"), Set{"02:00:00:00:00:0A"});
    EXPECT_EQ(read_file(mac_file(3)), "02:00:00:00:00:0a\naa-bb-cc-dd-ee-01\n");

    EXPECT_EQ(qvvpn_flush_route_mac(3), 0);
    EXPECT_EQ(members("vpn_mac3"), Set{});
}

TEST_F(VpnKernel, DeletingADomainEmptiesTheWholeDomainSet) {
    ASSERT_EQ(qvvpn_add_route_domain(3, "a.example"), 0);
    ASSERT_EQ(qvvpn_add_route_domain(3, "b.example"), 0);
    add_resolved(3, "10.200.0.5", "a.example");
    add_resolved(3, "10.200.0.6", "b.example");
    EXPECT_EQ(qvvpn_del_route_domain(3, "a.example"), 0);
    EXPECT_EQ(members("vpn_domain3"), Set{});
    EXPECT_EQ(read_file(domain_file(3)), "b.example\n");

    add_resolved(3, "10.200.0.6", "b.example");
    EXPECT_EQ(qvvpn_del_route_domain(3, "not-in-the.list"), 0);
    EXPECT_EQ(members("vpn_domain3"), Set{});
    EXPECT_EQ(read_file(domain_file(3)), "b.example\n");

    add_resolved(3, "10.200.0.6", "b.example");
    EXPECT_EQ(qvvpn_flush_route_domain(3), 0);
    EXPECT_EQ(members("vpn_domain3"), Set{});
}

TEST_F(VpnKernel, SetRouteAllRefillsTheSetFromTheNewList) {
    ASSERT_EQ(qvvpn_add_route_ip(3, "10.9.9.9"), 0);
    char ips[] = "10.1.1.1%%10.2.2.0/24";
    EXPECT_EQ(qvvpn_set_route_all(3, 0, ips), 0);
    EXPECT_EQ(members("vpn_ip3"), (Set{"10.1.1.1", "10.2.2.0/24"}));
    char macs[] = "02:00:00:00:00:01%0200000000AB";
    EXPECT_EQ(qvvpn_set_route_all(3, 2, macs), 0);
    EXPECT_EQ(members("vpn_mac3"), (Set{"02:00:00:00:00:01", "02:00:00:00:00:AB"}));
    add_resolved(3, "10.200.0.5", "a.example");
    char domains[] = "a.example%b.example";
    EXPECT_EQ(qvvpn_set_route_all(3, 1, domains), 0);
    EXPECT_EQ(members("vpn_domain3"), Set{"10.200.0.5 a.example"});
    EXPECT_EQ(read_file(dnsmasq_file(3)), "a.example vpn_domain3 1\nb.example vpn_domain3 1\n");
}

TEST_F(VpnKernel, ReloadAfterARebootRestoresTheSetsAndKeepsTheDomainSet) {
    ASSERT_EQ(qvvpn_add_route_ip(3, "10.1.2.0/24"), 0);
    ASSERT_EQ(qvvpn_add_route_ip(3, "10.3.3.3"), 0);
    char m1[] = "020000000001";
    char m2[] = "02:00:00:00:00:02";
    ASSERT_EQ(qvvpn_add_route_mac(3, m1), 0);
    ASSERT_EQ(qvvpn_add_route_mac(3, m2), 0);
    ASSERT_EQ(qvvpn_add_route_domain(3, "a.example"), 0);

    // Reboot: the sets come back empty, the files stay; dnsmasq has already
    // resolved a.example again before the reload runs.
    run("ipset flush vpn_ip3; ipset flush vpn_mac3; ipset flush vpn_domain3; rm -f " + dnsmasq_file(3));
    add_resolved(3, "10.200.0.5", "a.example");

    EXPECT_EQ(qvvpn_reload_route(3), 0);
    EXPECT_EQ(members("vpn_ip3"), (Set{"10.1.2.0/24", "10.3.3.3"}));
    EXPECT_EQ(members("vpn_mac3"), (Set{"02:00:00:00:00:01", "02:00:00:00:00:02"}));
    EXPECT_EQ(members("vpn_domain3"), Set{"10.200.0.5 a.example"});
    EXPECT_EQ(read_file(dnsmasq_file(3)), "a.example vpn_domain3 1\n");

    // A second reload changes nothing.
    EXPECT_EQ(qvvpn_reload_route(3), 0);
    EXPECT_EQ(members("vpn_ip3"), (Set{"10.1.2.0/24", "10.3.3.3"}));
    EXPECT_EQ(members("vpn_mac3"), (Set{"02:00:00:00:00:01", "02:00:00:00:00:02"}));
    EXPECT_EQ(members("vpn_domain3"), Set{"10.200.0.5 a.example"});
}

TEST_F(VpnKernel, ReloadDropsMembersThatAreNoLongerInTheFiles) {
    run("ipset add vpn_ip3 10.66.66.66; ipset add vpn_mac3 02:00:00:00:00:66");
    write_file(ip_file(3), "10.1.1.1\n");
    write_file(mac_file(3), "02:00:00:00:00:01\n");
    EXPECT_EQ(qvvpn_reload_route(3), 0);
    EXPECT_EQ(members("vpn_ip3"), Set{"10.1.1.1"});
    EXPECT_EQ(members("vpn_mac3"), Set{"02:00:00:00:00:01"});
}

TEST_F(VpnKernel, ReloadModeTouchesOnlyItsOwnList) {
    write_file(ip_file(3), "10.1.1.1\n");
    write_file(mac_file(3), "02:00:00:00:00:01\n");
    write_file(domain_file(3), "a.example\n");
    EXPECT_EQ(qvvpn_reload_route_mode(3, 0), 0);
    EXPECT_EQ(members("vpn_ip3"), Set{"10.1.1.1"});
    EXPECT_EQ(members("vpn_mac3"), Set{});
    EXPECT_FALSE(qvstest::exists(dnsmasq_file(3)));
    EXPECT_EQ(qvvpn_reload_route_mode(3, 2), 0);
    EXPECT_EQ(members("vpn_mac3"), Set{"02:00:00:00:00:01"});
    add_resolved(3, "10.200.0.5", "a.example");
    EXPECT_EQ(qvvpn_reload_route_mode(3, 1), 0);
    EXPECT_EQ(members("vpn_domain3"), Set{"10.200.0.5 a.example"});
    EXPECT_EQ(read_file(dnsmasq_file(3)), "a.example vpn_domain3 1\n");
}

TEST_F(VpnKernel, AnIpListWithAnEntryIpsetRejectsLeavesTheSetEmpty) {
    // ipset restore refuses the whole restore file at the line it cannot parse.
    write_file(ip_file(3), "10.1.1.1\nnot-an-address\n10.2.2.2\n");
    EXPECT_EQ(qvvpn_reload_route(3), 0);
    EXPECT_EQ(members("vpn_ip3"), Set{});
}

// ---- statistics from real traffic ------------------------------------------

TEST_F(VpnKernel, IpStatisticsCountPacketsPerEntryAndBySubstring) {
    create_peer();
    char ips[] = "10.200.0.2%10.200.0.21%10.200.0.32/28%10.200.0.99";
    ASSERT_EQ(qvvpn_set_route_all(3, 0, ips), 0);
    send_from_peer("02:00:00:00:00:01", "10.200.0.2", 3);
    send_from_peer("02:00:00:00:00:01", "10.200.0.21", 5);
    send_from_peer("02:00:00:00:00:01", "10.200.0.40", 7);
    send_from_peer("02:00:00:00:00:01", "10.200.0.50", 4);  // in no entry
    char out[256] = {};
    EXPECT_EQ(qvvpn_get_statistics(3, 0, out, sizeof out), 0);
    // 10.200.0.21 also contains the member 10.200.0.2, so it gains its 3.
    EXPECT_STREQ(out, "10.200.0.2@3%10.200.0.21@8%10.200.0.32/28@7%10.200.0.99@0");
}

TEST_F(VpnKernel, MacStatisticsMatchTheSetsUpperCaseMembers) {
    create_peer();
    // ipset prints MACs in upper case. Entries stored with letters in lower
    // case (as the add function stores them) or without colons never contain
    // the printed member; upper-case colon entries and digit-only MACs do.
    char listed[] = "02:00:00:00:00:0A%02:00:00:00:00:01";
    ASSERT_EQ(qvvpn_set_route_all(3, 2, listed), 0);
    char lower[] = "02:00:00:00:00:0B";
    ASSERT_EQ(qvvpn_add_route_mac(3, lower), 0);
    char plain[] = "020000000002";
    ASSERT_EQ(qvvpn_add_route_mac(3, plain), 0);
    send_from_peer("02:00:00:00:00:0a", "10.200.0.2", 4);
    send_from_peer("02:00:00:00:00:01", "10.200.0.2", 6);
    send_from_peer("02:00:00:00:00:0b", "10.200.0.2", 2);
    send_from_peer("02:00:00:00:00:02", "10.200.0.2", 9);
    send_from_peer("02:00:00:00:00:77", "10.200.0.2", 5);  // in no entry
    char out[256] = {};
    EXPECT_EQ(qvvpn_get_statistics(3, 2, out, sizeof out), 0);
    EXPECT_STREQ(out, "02:00:00:00:00:0A@4%02:00:00:00:00:01@6%02:00:00:00:00:0b@0%020000000002@0");
}

TEST_F(VpnKernel, DomainStatisticsCountByTheMembersComment) {
    create_peer();
    ASSERT_EQ(qvvpn_add_route_domain(3, "www.a.example"), 0);
    ASSERT_EQ(qvvpn_add_route_domain(3, "b.example"), 0);
    ASSERT_EQ(qvvpn_add_route_domain(3, "c.example"), 0);
    add_resolved(3, "10.200.0.5", "a.example");
    add_resolved(3, "10.200.0.6", "b.example");
    add_resolved(3, "10.200.0.7", "b.example");
    add_resolved(3, "10.200.0.8", "unlisted.example");
    send_from_peer("02:00:00:00:00:01", "10.200.0.5", 2);
    send_from_peer("02:00:00:00:00:01", "10.200.0.6", 3);
    send_from_peer("02:00:00:00:00:01", "10.200.0.7", 4);
    send_from_peer("02:00:00:00:00:01", "10.200.0.8", 5);
    char out[256] = {};
    EXPECT_EQ(qvvpn_get_statistics(3, 1, out, sizeof out), 0);
    // www.a.example contains the comment a.example; both b.example members add up.
    EXPECT_STREQ(out, "www.a.example@2%b.example@7%c.example@0");
}

TEST_F(VpnKernel, MembersLongerThan31CharactersCountUnderTheirFirst31) {
    // An IPv6 set: "2001:db8:1111:2222:3333:4444:5555:0/112" is 39 characters.
    run("ipset create vpn_ip6 hash:net family inet6 counters");
    run("ipset add vpn_ip6 2001:db8:1111:2222:3333:4444:5555:0/112 packets 9 bytes 900");
    write_file(ip_file(6), "2001:db8:1111:2222:3333:4444:5555:0/112\n2001:db8::/32\n");
    char out[256] = {};
    EXPECT_EQ(qvvpn_get_statistics(6, 0, out, sizeof out), 0);
    EXPECT_STREQ(out, "2001:db8:1111:2222:3333:4444:5555:0/112@9%2001:db8::/32@0");
}

TEST_F(VpnKernel, DomainMembersWithoutACommentCountForNoEntry) {
    write_file(domain_file(3), "a.example\n");
    run("ipset add vpn_domain3 10.200.0.9 packets 5 bytes 300");
    run("ipset add vpn_domain3 10.200.0.10 packets 7 bytes 300 comment \"\"");
    run("ipset add vpn_domain3 10.200.0.11 packets 0 bytes 0 comment \"a.example\"");
    run("ipset add vpn_domain3 10.200.0.12 packets 2 bytes 100 comment \"a.example\"");
    char out[64] = {};
    EXPECT_EQ(qvvpn_get_statistics(3, 1, out, sizeof out), 0);
    EXPECT_STREQ(out, "a.example@2");
}

TEST_F(VpnKernel, StatisticsWithoutTheSetGiveZeroCounts) {
    write_file(ip_file(4), "10.1.1.1\n");
    char out[64] = {};
    EXPECT_EQ(qvvpn_get_statistics(4, 0, out, sizeof out), 0);
    EXPECT_STREQ(out, "10.1.1.1@0");
}

TEST_F(VpnKernel, PkgCountDoesNotRunTheListing) {
    create_peer();
    run("iptables -t mangle -A QV_VPN3 -j RETURN");
    send_from_peer("02:00:00:00:00:01", "10.200.0.2", 3);
    std::string listing = run("iptables -t mangle -nvL QV_VPN3");
    EXPECT_NE(listing.find("    3 "), std::string::npos) << listing;
    EXPECT_EQ(qvvpn_get_pkgCount(3), 0u);
}

}  // namespace
