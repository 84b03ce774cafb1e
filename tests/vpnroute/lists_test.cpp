// SPDX-License-Identifier: MIT
// VPN route lists: the list files, the dnsmasq ipset file, results and log
// lines (behaviour that needs no kernel support).
#include <cstring>
#include <string>
#include <sys/mount.h>
#include <linux/capability.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "qvs_utils.h"
#include "test_support.hpp"
#include "vpn_env.hpp"

using qvstest::CaptureFd;
using qvstest::exists;
using qvstest::read_file;
using qvstest::write_file;
using namespace vpntest;

namespace {

class VpnLists : public ::testing::Test {
protected:
    void SetUp() override { prepare_dirs(); }
};

// ---- add -----------------------------------------------------------------

TEST_F(VpnLists, AddIpAppendsLinesInOrder) {
    EXPECT_EQ(qvvpn_add_route_ip(3, "10.1.2.3"), 0);
    EXPECT_EQ(qvvpn_add_route_ip(3, "192.168.5.0/24"), 0);
    EXPECT_EQ(read_file(ip_file(3)), "10.1.2.3\n192.168.5.0/24\n");
}

TEST_F(VpnLists, AddIpThatIsASubstringOfALineReturnsItsNumberAndAddsNothing) {
    write_file(ip_file(3), "172.16.0.0/12\n10.0.0.12\n");
    EXPECT_EQ(qvvpn_add_route_ip(3, "10.0.0.1"), 2);
    EXPECT_EQ(qvvpn_add_route_ip(3, "10.0.0.12"), 2);
    EXPECT_EQ(read_file(ip_file(3)), "172.16.0.0/12\n10.0.0.12\n");
}

TEST_F(VpnLists, LineSearchReadsLongLinesInPiecesOf1023) {
    // A 1100-character line is read as two pieces, so the entry after it is
    // found as "line" 3; a needle spanning the piece boundary is not found.
    std::string longline(1100, 'x');
    longline.replace(1020, 6, "abcdef");
    write_file(ip_file(3), longline + "\n10.9.9.9\n");
    EXPECT_EQ(qvvpn_add_route_ip(3, "10.9.9.9"), 3);
    EXPECT_EQ(qvvpn_add_route_ip(3, "abcdef"), 0);
    EXPECT_EQ(read_file(ip_file(3)), longline + "\n10.9.9.9\nabcdef\n");
}

TEST_F(VpnLists, AddIpFailsWhenTheListCannotBeOpened) {
    ASSERT_EQ(::mkdir(ip_file(3).c_str(), 0755), 0);  // a directory in its place
    CaptureFd err(2);
    EXPECT_EQ(qvvpn_add_route_ip(3, "10.1.2.3"), -1);
    EXPECT_TRUE(logged(err.text(), "qvvpn_add_route_ip", "open file /userconfig/config/qvvpn/VPN_IP_3 failed.\n"));
}

TEST_F(VpnLists, AddWithNullTextFails) {
    EXPECT_EQ(qvvpn_add_route_ip(3, nullptr), -1);
    EXPECT_EQ(qvvpn_add_route_domain(3, nullptr), -1);
    EXPECT_EQ(qvvpn_add_route_mac(3, nullptr), -1);
    EXPECT_EQ(qvvpn_del_route_ip(3, nullptr), -1);
    EXPECT_EQ(qvvpn_del_route_domain(3, nullptr), -1);
    EXPECT_EQ(qvvpn_del_route_mac(3, nullptr), -1);
    EXPECT_EQ(qvvpn_set_route_all(3, 0, nullptr), -1);
    EXPECT_FALSE(exists(ip_file(3)));
}

TEST_F(VpnLists, NegativeAndLargeIndexesAreWrittenWithPercentD) {
    EXPECT_EQ(qvvpn_add_route_ip(-1, "10.1.1.1"), 0);
    EXPECT_EQ(qvvpn_add_route_ip(2147483647, "10.1.1.2"), 0);
    EXPECT_EQ(read_file(kDir + "/VPN_IP_-1"), "10.1.1.1\n");
    EXPECT_EQ(read_file(kDir + "/VPN_IP_2147483647"), "10.1.1.2\n");
}

TEST_F(VpnLists, AddMacIsStoredLowerCasedAndTheCallersTextChanges) {
    char mac[] = "AABBCCDDEEFF";
    EXPECT_EQ(qvvpn_add_route_mac(3, mac), 0);
    EXPECT_STREQ(mac, "aabbccddeeff");
    char colon[] = "00:1A:2B:3C:4D:5E";
    EXPECT_EQ(qvvpn_add_route_mac(3, colon), 0);
    EXPECT_STREQ(colon, "00:1a:2b:3c:4d:5e");
    char dashed[] = "AA-BB-CC-DD-EE-01";
    EXPECT_EQ(qvvpn_add_route_mac(3, dashed), 0);
    EXPECT_EQ(read_file(mac_file(3)), "aabbccddeeff\n00:1a:2b:3c:4d:5e\naa-bb-cc-dd-ee-01\n");
}

TEST_F(VpnLists, AddMacFoundByLowerCasedSubstring) {
    write_file(mac_file(3), "aabbccddeeff\n");
    char mac[] = "CCDDEE";
    EXPECT_EQ(qvvpn_add_route_mac(3, mac), 1);
    EXPECT_EQ(read_file(mac_file(3)), "aabbccddeeff\n");
}

TEST_F(VpnLists, AddDomainWritesTheDnsmasqFile) {
    EXPECT_EQ(qvvpn_add_route_domain(3, "example.com"), 0);
    EXPECT_EQ(qvvpn_add_route_domain(3, "video.example.org"), 0);
    EXPECT_EQ(read_file(domain_file(3)), "example.com\nvideo.example.org\n");
    EXPECT_EQ(read_file(dnsmasq_file(3)), "example.com vpn_domain3 1\nvideo.example.org vpn_domain3 1\n");
    EXPECT_EQ(mode_of(kDnsmasqDir), 0755);
}

TEST_F(VpnLists, AddExistingDomainReturnsItsLineAndStillRewritesTheDnsmasqFile) {
    write_file(domain_file(3), "a.example\nb.example\n");
    EXPECT_FALSE(exists(dnsmasq_file(3)));
    EXPECT_EQ(qvvpn_add_route_domain(3, "b.example"), 2);
    EXPECT_EQ(read_file(domain_file(3)), "a.example\nb.example\n");
    EXPECT_EQ(read_file(dnsmasq_file(3)), "a.example vpn_domain3 1\nb.example vpn_domain3 1\n");
}

TEST_F(VpnLists, DnsmasqFileSplitsLongDomainLinesInto63CharacterPieces) {
    // Each 63-character piece loses its last character as if it were the
    // line end; empty lines are skipped.
    std::string d(70, 'a');
    for (int i = 0; i < 70; ++i) d[i] = static_cast<char>('a' + i % 26);
    write_file(domain_file(3), d + "\n\n" + "x.example\n");
    EXPECT_EQ(qvvpn_reload_route_mode(3, 1), 0);
    EXPECT_EQ(read_file(dnsmasq_file(3)),
              d.substr(0, 62) + " vpn_domain3 1\n" + d.substr(63) + " vpn_domain3 1\n" + "x.example vpn_domain3 1\n");
}

TEST_F(VpnLists, DnsmasqFileDropsTheLastCharacterOfAnUnterminatedLine) {
    write_file(domain_file(3), "a.example\nb.example");
    EXPECT_EQ(qvvpn_reload_route_mode(3, 1), 0);
    EXPECT_EQ(read_file(dnsmasq_file(3)), "a.example vpn_domain3 1\nb.exampl vpn_domain3 1\n");
}

TEST_F(VpnLists, NoDomainListMeansNoDnsmasqFile) {
    EXPECT_EQ(qvvpn_reload_route_mode(3, 1), 0);
    EXPECT_FALSE(exists(dnsmasq_file(3)));
    EXPECT_TRUE(is_dir(kDnsmasqDir));
}

TEST_F(VpnLists, DnsmasqDirectoryThatCannotBeCreatedIsLoggedAndIgnored) {
    ASSERT_EQ(::mount("none", "/etc/dnsmasq", "none", MS_REMOUNT | MS_RDONLY, nullptr), 0);
    CaptureFd err(2);
    EXPECT_EQ(qvvpn_add_route_domain(3, "example.com"), 0);
    EXPECT_TRUE(logged(err.text(), "update_dnsmasq_ipset_conf", "creat dnsmasq ipset dir error.\n"));
    EXPECT_EQ(read_file(domain_file(3)), "example.com\n");
}

TEST_F(VpnLists, DnsmasqFileThatCannotBeOpenedIsLoggedWithoutFullStop) {
    ASSERT_EQ(::mkdir(kDnsmasqDir.c_str(), 0755), 0);
    ASSERT_EQ(::mkdir(dnsmasq_file(3).c_str(), 0755), 0);
    CaptureFd err(2);
    EXPECT_EQ(qvvpn_add_route_domain(3, "example.com"), 0);
    std::string text = err.text();
    EXPECT_TRUE(logged(text, "update_dnsmasq_ipset_conf", "open file /etc/dnsmasq/ipset/vpn_domain3 failed\n"));
    EXPECT_FALSE(logged(text, "update_dnsmasq_ipset_conf", "failed.\n"));
}

TEST_F(VpnLists, UnreadableDomainListIsLoggedWithoutFullStop) {
    // Without its capabilities, root is held to the file's mode 0000.
    write_file(domain_file(3), "a.example\n");
    ASSERT_EQ(::chmod(domain_file(3).c_str(), 0), 0);
    journal_clear();
    pid_t pid = ::fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        __user_cap_header_struct head{_LINUX_CAPABILITY_VERSION_3, 0};
        __user_cap_data_struct data[2] = {};
        if (::syscall(SYS_capset, &head, data) != 0) ::_exit(3);
        if (std::fopen(domain_file(3).c_str(), "r") != nullptr) ::_exit(4);
        ::_exit(qvvpn_reload_route_mode(3, 1) == 0 ? 0 : 1);
    }
    int st = 0;
    ASSERT_EQ(::waitpid(pid, &st, 0), pid);
    ASSERT_TRUE(WIFEXITED(st));
    EXPECT_EQ(WEXITSTATUS(st), 0);
    EXPECT_TRUE(journal_logged("update_dnsmasq_ipset_conf", "open file /userconfig/config/qvvpn/VPN_DOMAIN_3 failed\n"));
    EXPECT_FALSE(exists(dnsmasq_file(3)));
}

// ---- delete --------------------------------------------------------------

TEST_F(VpnLists, DelIpRemovesTheFirstLineContainingTheText) {
    write_file(ip_file(3), "10.0.0.12\n10.0.0.1\n192.168.1.0/24\n");
    EXPECT_EQ(qvvpn_del_route_ip(3, "10.0.0.1"), 0);
    EXPECT_EQ(read_file(ip_file(3)), "10.0.0.1\n192.168.1.0/24\n");
    EXPECT_EQ(qvvpn_del_route_ip(3, "192.168.1.0/24"), 0);
    EXPECT_EQ(read_file(ip_file(3)), "10.0.0.1\n");
}

TEST_F(VpnLists, DelIpNotFoundReturnsZeroAndChangesNothing) {
    write_file(ip_file(3), "10.0.0.1\n");
    EXPECT_EQ(qvvpn_del_route_ip(3, "10.9.9.9"), 0);
    EXPECT_EQ(read_file(ip_file(3)), "10.0.0.1\n");
    EXPECT_EQ(qvvpn_del_route_ip(4, "10.9.9.9"), 0);  // no list file at all
    EXPECT_FALSE(exists(ip_file(4)));
}

TEST_F(VpnLists, DelMacLowerCasesTheCallersText) {
    write_file(mac_file(3), "aabbccddeeff\n00:11:22:33:44:55\n");
    char mac[] = "AABBCCDDEEFF";
    EXPECT_EQ(qvvpn_del_route_mac(3, mac), 0);
    EXPECT_STREQ(mac, "aabbccddeeff");
    EXPECT_EQ(read_file(mac_file(3)), "00:11:22:33:44:55\n");
    char colon[] = "00:11:22:33:44:55";
    EXPECT_EQ(qvvpn_del_route_mac(3, colon), 0);
    EXPECT_EQ(read_file(mac_file(3)), "");
}

TEST_F(VpnLists, DelDomainRemovesItsLineAndRewritesTheDnsmasqFile) {
    write_file(domain_file(3), "a.example\nb.example\nc.example\n");
    EXPECT_EQ(qvvpn_del_route_domain(3, "b.example"), 0);
    EXPECT_EQ(read_file(domain_file(3)), "a.example\nc.example\n");
    EXPECT_EQ(read_file(dnsmasq_file(3)), "a.example vpn_domain3 1\nc.example vpn_domain3 1\n");
}

TEST_F(VpnLists, DelDomainNotInTheListStillRewritesTheDnsmasqFile) {
    write_file(domain_file(3), "a.example\n");
    EXPECT_EQ(qvvpn_del_route_domain(3, "z.example"), 0);
    EXPECT_EQ(read_file(domain_file(3)), "a.example\n");
    EXPECT_EQ(read_file(dnsmasq_file(3)), "a.example vpn_domain3 1\n");
}

TEST_F(VpnLists, DelDomainWithoutAListFileDoesNothing) {
    EXPECT_EQ(qvvpn_del_route_domain(3, "a.example"), 0);
    EXPECT_FALSE(exists(domain_file(3)));
    EXPECT_FALSE(exists(dnsmasq_file(3)));
}

TEST_F(VpnLists, DelDomainReadsLongLinesInPieces) {
    // The domain search uses 1023-character pieces too: the match in the
    // second piece of the first line deletes line "2" of the count, which
    // sed takes as the second real line.
    std::string longline(1030, 'q');
    longline.replace(1025, 3, "k.x");
    write_file(domain_file(3), longline + "\nb.example\nc.example\n");
    EXPECT_EQ(qvvpn_del_route_domain(3, "k.x"), 0);
    EXPECT_EQ(read_file(domain_file(3)), longline + "\nc.example\n");
}

// ---- flush ---------------------------------------------------------------

TEST_F(VpnLists, FlushTruncatesEachList) {
    write_file(ip_file(3), "10.0.0.1\n");
    write_file(domain_file(3), "a.example\n");
    write_file(mac_file(3), "aabbccddeeff\n");
    EXPECT_EQ(qvvpn_flush_route_ip(3), 0);
    EXPECT_EQ(qvvpn_flush_route_domain(3), 0);
    EXPECT_EQ(qvvpn_flush_route_mac(3), 0);
    EXPECT_TRUE(exists(ip_file(3)));
    EXPECT_EQ(read_file(ip_file(3)), "");
    EXPECT_EQ(read_file(domain_file(3)), "");
    EXPECT_EQ(read_file(mac_file(3)), "");
    EXPECT_TRUE(exists(dnsmasq_file(3)));
    EXPECT_EQ(read_file(dnsmasq_file(3)), "");
}

TEST_F(VpnLists, FlushOfAMissingListCreatesItEmpty) {
    EXPECT_EQ(qvvpn_flush_route_mac(5), 0);
    EXPECT_TRUE(exists(mac_file(5)));
    EXPECT_EQ(read_file(mac_file(5)), "");
}

TEST_F(VpnLists, FlushFailsWhenTheListCannotBeTruncated) {
    struct Case {
        int (*fn)(int);
        const char *name;
        std::string path;
    };
    Case cases[] = {{qvvpn_flush_route_ip, "qvvpn_flush_route_ip", ip_file(3)},
                    {qvvpn_flush_route_domain, "qvvpn_flush_route_domain", domain_file(3)},
                    {qvvpn_flush_route_mac, "qvvpn_flush_route_mac", mac_file(3)}};
    for (const Case &c : cases) {
        ASSERT_EQ(::mkdir(c.path.c_str(), 0755), 0);
        CaptureFd err(2);
        EXPECT_EQ(c.fn(3), -1) << c.name;
        EXPECT_TRUE(logged(err.text(), c.name, "open file " + c.path + " failed.\n")) << c.name;
    }
}

// ---- set / get all ------------------------------------------------------

TEST_F(VpnLists, SetRouteAllSplitsAtPercentAndEmptyItemsVanish) {
    char list[] = "10.1.1.1%%10.2.2.0/24";
    EXPECT_EQ(qvvpn_set_route_all(3, 0, list), 0);
    EXPECT_EQ(read_file(ip_file(3)), "10.1.1.1\n10.2.2.0/24\n");
    char list2[] = "%a.example%b.example%";
    EXPECT_EQ(qvvpn_set_route_all(3, 1, list2), 0);
    EXPECT_EQ(read_file(domain_file(3)), "a.example\nb.example\n");
    EXPECT_EQ(read_file(dnsmasq_file(3)), "a.example vpn_domain3 1\nb.example vpn_domain3 1\n");
    char list3[] = "AABBCCDDEEFF%00:11:22:33:44:55";
    EXPECT_EQ(qvvpn_set_route_all(3, 2, list3), 0);
    EXPECT_EQ(read_file(mac_file(3)), "AABBCCDDEEFF\n00:11:22:33:44:55\n");
}

TEST_F(VpnLists, SetRouteAllReplacesTheWholeList) {
    write_file(ip_file(3), "10.9.9.9\n10.8.8.8\n");
    char list[] = "10.1.1.1";
    EXPECT_EQ(qvvpn_set_route_all(3, 0, list), 0);
    EXPECT_EQ(read_file(ip_file(3)), "10.1.1.1\n");
    char empty[] = "";
    EXPECT_EQ(qvvpn_set_route_all(3, 0, empty), 0);
    EXPECT_EQ(read_file(ip_file(3)), "");
}

TEST_F(VpnLists, SetRouteAllRejectsAnUnknownType) {
    char list[] = "10.1.1.1";
    EXPECT_EQ(qvvpn_set_route_all(3, 3, list), -1);
    EXPECT_EQ(qvvpn_set_route_all(3, 0xffffffffu, list), -1);
    EXPECT_FALSE(exists(ip_file(3)));
}

TEST_F(VpnLists, SetRouteAllFailsQuietlyWhenTheFileCannotBeOpened) {
    ASSERT_EQ(::mkdir(mac_file(3).c_str(), 0755), 0);
    char list[] = "aabbccddeeff";
    CaptureFd err(2);
    EXPECT_EQ(qvvpn_set_route_all(3, 2, list), -1);
    EXPECT_EQ(err.text(), "");
}

TEST_F(VpnLists, GetRouteAllJoinsItemsWithPercent) {
    write_file(ip_file(3), "10.1.2.3\n192.168.5.0/24 extra words\n");
    char out[64];
    std::memset(out, 'z', sizeof out);
    EXPECT_EQ(qvvpn_get_route_all(3, 0, out, sizeof out), 2);
    EXPECT_STREQ(out, "10.1.2.3%192.168.5.0/24");
}

TEST_F(VpnLists, SetThenGetRouteAllGiveTheSameText) {
    char list[] = "a.example%b.example%c.example";
    ASSERT_EQ(qvvpn_set_route_all(4, 1, list), 0);
    char out[128] = {};
    EXPECT_EQ(qvvpn_get_route_all(4, 1, out, sizeof out), 3);
    EXPECT_STREQ(out, "a.example%b.example%c.example");
}

TEST_F(VpnLists, GetRouteAllWithABufferTooSmallForTheFirstItemGivesNothing) {
    write_file(ip_file(3), "10.1.2.3\n");
    char out[10];
    std::memset(out, 'z', sizeof out);
    // 8 characters + 2 is not below 10.
    EXPECT_EQ(qvvpn_get_route_all(3, 0, out, sizeof out), 0);
    EXPECT_STREQ(out, "");
    char out11[11] = {};
    EXPECT_EQ(qvvpn_get_route_all(3, 0, out11, sizeof out11), 1);
    EXPECT_STREQ(out11, "10.1.2.3");
}

TEST_F(VpnLists, GetRouteAllSkipsItemsThatDoNotFitButTakesLaterShorterOnes) {
    write_file(mac_file(3), "aa:bb:cc:dd:ee:ff\n0011223344556677889900\naabbccddeeff\n");
    char out[32] = {};
    EXPECT_EQ(qvvpn_get_route_all(3, 2, out, sizeof out), 2);
    EXPECT_STREQ(out, "aa:bb:cc:dd:ee:ff%aabbccddeeff");
}

TEST_F(VpnLists, GetRouteAllAppendsEmptyLinesAsEmptyItems) {
    write_file(domain_file(3), "\na.example\n\n b\n");
    char out[64] = {};
    EXPECT_EQ(qvvpn_get_route_all(3, 1, out, sizeof out), 4);
    EXPECT_STREQ(out, "%a.example%%");
}

TEST_F(VpnLists, GetRouteAllFailures) {
    char out[64] = {};
    EXPECT_EQ(qvvpn_get_route_all(3, 0, out, sizeof out), -1);  // no file
    write_file(ip_file(3), "10.1.1.1\n");
    EXPECT_EQ(qvvpn_get_route_all(3, 7, out, sizeof out), -1);  // bad type
    EXPECT_EQ(qvvpn_get_route_all(3, 0, nullptr, 64), -1);
    EXPECT_EQ(qvvpn_get_route_all(3, 0, out, 0), -1);
}

TEST_F(VpnLists, GetRouteAllReadsLongLinesInPiecesOf511) {
    std::string longline(600, 'a');
    write_file(ip_file(3), longline + "\n");
    std::string out(2048, '\0');
    EXPECT_EQ(qvvpn_get_route_all(3, 0, out.data(), static_cast<int>(out.size())), 2);
    EXPECT_EQ(std::string(out.c_str()), std::string(511, 'a') + "%" + std::string(89, 'a'));
}

// ---- reload file side -----------------------------------------------------

TEST_F(VpnLists, ReloadWritesTheRestoreFile) {
    write_file(ip_file(3), "10.1.2.0/24\n10.3.3.3\n");
    EXPECT_EQ(qvvpn_reload_route(3), 0);
    EXPECT_EQ(read_file("/var/vpn_ipset_save"), "add vpn_ip3 10.1.2.0/24\nadd vpn_ip3 10.3.3.3\n");
}

TEST_F(VpnLists, ReloadWithoutAnIpListLeavesAnEmptyRestoreFile) {
    write_file("/var/vpn_ipset_save", "add vpn_ip9 1.1.1.1\n");
    EXPECT_EQ(qvvpn_reload_route_mode(3, 0), 0);
    EXPECT_TRUE(exists("/var/vpn_ipset_save"));
    EXPECT_EQ(read_file("/var/vpn_ipset_save"), "");
}

TEST_F(VpnLists, ReloadModeOfAnUnknownTypeDoesNothing) {
    write_file(ip_file(3), "10.1.2.0/24\n");
    write_file(domain_file(3), "a.example\n");
    EXPECT_EQ(qvvpn_reload_route_mode(3, 3), 0);
    EXPECT_FALSE(exists("/var/vpn_ipset_save"));
    EXPECT_FALSE(exists(dnsmasq_file(3)));
}

// ---- statistics, file side --------------------------------------------------

TEST_F(VpnLists, StatisticsWithoutSetMembersGiveZeroCounts) {
    write_file(ip_file(3), "10.1.2.3 first\n192.168.5.0/24\n");
    char out[128] = {};
    EXPECT_EQ(qvvpn_get_statistics(3, 0, out, sizeof out), 0);
    EXPECT_STREQ(out, "10.1.2.3@0%192.168.5.0/24@0");
}

TEST_F(VpnLists, StatisticsOfAnEmptyListAreEmpty) {
    write_file(mac_file(3), "");
    char out[16];
    std::memset(out, 'z', sizeof out);
    EXPECT_EQ(qvvpn_get_statistics(3, 2, out, sizeof out), 0);
    EXPECT_STREQ(out, "");
}

TEST_F(VpnLists, StatisticsStopAtThePieceThatDoesNotFit) {
    write_file(ip_file(3), "10.1.1.1\n10.2.2.2\n10.3.3.3\n");
    // "10.1.1.1@0" is 10 characters, "%10.2.2.2@0" 11 more: 21 < 22.
    char out[22];
    EXPECT_EQ(qvvpn_get_statistics(3, 0, out, sizeof out), 0);
    EXPECT_STREQ(out, "10.1.1.1@0%10.2.2.2@0");
    char out21[21];
    EXPECT_EQ(qvvpn_get_statistics(3, 0, out21, sizeof out21), 0);
    EXPECT_STREQ(out21, "10.1.1.1@0");
    char out10[10];
    EXPECT_EQ(qvvpn_get_statistics(3, 0, out10, sizeof out10), 0);
    EXPECT_STREQ(out10, "");
}

TEST_F(VpnLists, StatisticsCountAtMost2048Rows) {
    std::string text;
    for (int i = 0; i < 2100; ++i) text += "r" + std::to_string(i) + "\n";
    write_file(domain_file(3), text);
    std::string out(65536, '\0');
    EXPECT_EQ(qvvpn_get_statistics(3, 1, out.data(), static_cast<int>(out.size())), 0);
    std::vector<std::string> pieces = split(out.c_str(), '%');
    ASSERT_EQ(pieces.size(), 2048u);
    EXPECT_EQ(pieces.front(), "r0@0");
    EXPECT_EQ(pieces.back(), "r2047@0");
}

TEST_F(VpnLists, StatisticsFailures) {
    char out[64] = {};
    EXPECT_EQ(qvvpn_get_statistics(3, 0, out, sizeof out), -1);  // no list file
    write_file(ip_file(3), "10.1.1.1\n");
    EXPECT_EQ(qvvpn_get_statistics(3, 3, out, sizeof out), -1);  // bad type
    EXPECT_EQ(qvvpn_get_statistics(3, 0, nullptr, 64), -1);
    EXPECT_EQ(qvvpn_get_statistics(3, 0, out, 0), -1);
}

// ---- packet count ---------------------------------------------------------

TEST_F(VpnLists, PkgCountIsZeroWhenNoFileOfThatNameExists) {
    EXPECT_EQ(qvvpn_get_pkgCount(3), 0u);
    EXPECT_EQ(qvvpn_get_pkgCount(-7), 0u);
}

TEST_F(VpnLists, PkgCountReadsAFileNamedLikeTheListingCommand) {
    // The name is relative: "iptables -t mangle -nvL QV_VPN3  2>" / "dev" / "null".
    ASSERT_EQ(::chdir("/tmp"), 0);
    ASSERT_EQ(::mkdir("iptables -t mangle -nvL QV_VPN3  2>", 0755), 0);
    ASSERT_EQ(::mkdir("iptables -t mangle -nvL QV_VPN3  2>/dev", 0755), 0);
    write_file("/tmp/iptables -t mangle -nvL QV_VPN3  2>/dev/null",
               "Chain QV_VPN3 (1 references)\n pkts bytes target prot opt in out source destination\n"
               "   12   800 RETURN all -- * * 0.0.0.0/0 0.0.0.0/0\n"
               "    30 4000 RETURN all -- * * 0.0.0.0/0 0.0.0.0/0\n"
               "garbage\n"
               "-2 0 x\n");
    EXPECT_EQ(qvvpn_get_pkgCount(3), 40u);
    EXPECT_EQ(qvvpn_get_pkgCount(4), 0u);
}

}  // namespace
