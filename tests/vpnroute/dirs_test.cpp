// SPDX-License-Identifier: MIT
// VPN route lists: the list directory step, a read-only persistent
// partition, and caller text that is refused.
#include <cstring>
#include <functional>
#include <string>
#include <sys/mount.h>
#include <sys/stat.h>
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

struct Call {
    const char *name;
    std::function<int()> fn;
};

char g_mac[32];
char g_list[64];
char g_out[256];

// Every function with the directory step, except the add functions and
// qvvpn_set_route_all: on a fresh directory they return 0 at once.
std::vector<Call> returning_calls() {
    return {
        {"qvvpn_del_route_ip", [] { return qvvpn_del_route_ip(3, "10.1.1.1"); }},
        {"qvvpn_del_route_domain", [] { return qvvpn_del_route_domain(3, "a.example"); }},
        {"qvvpn_del_route_mac", [] { std::strcpy(g_mac, "aabbccddeeff"); return qvvpn_del_route_mac(3, g_mac); }},
        {"qvvpn_flush_route_ip", [] { return qvvpn_flush_route_ip(3); }},
        {"qvvpn_flush_route_domain", [] { return qvvpn_flush_route_domain(3); }},
        {"qvvpn_flush_route_mac", [] { return qvvpn_flush_route_mac(3); }},
        {"qvvpn_reload_route", [] { return qvvpn_reload_route(3); }},
        {"qvvpn_reload_route_mode", [] { return qvvpn_reload_route_mode(3, 0); }},
        {"qvvpn_get_route_all", [] { std::strcpy(g_out, "untouched"); return qvvpn_get_route_all(3, 0, g_out, sizeof g_out); }},
        {"qvvpn_get_statistics", [] { std::strcpy(g_out, "untouched"); return qvvpn_get_statistics(3, 0, g_out, sizeof g_out); }},
    };
}

std::vector<Call> continuing_calls() {
    return {
        {"qvvpn_add_route_ip", [] { return qvvpn_add_route_ip(3, "10.1.1.1"); }},
        {"qvvpn_add_route_domain", [] { return qvvpn_add_route_domain(3, "a.example"); }},
        {"qvvpn_add_route_mac", [] { std::strcpy(g_mac, "aabbccddeeff"); return qvvpn_add_route_mac(3, g_mac); }},
        {"qvvpn_set_route_all", [] { std::strcpy(g_list, "10.1.1.1%10.2.2.2"); return qvvpn_set_route_all(3, 0, g_list); }},
    };
}

// Everything under the list directory, as "name=content" lines.
std::string dir_listing() {
    return qvstest::run("cd " + kDir + " 2>/dev/null && for f in *; do [ -e \"$f\" ] && printf '%s=%s;' \"$f\" \"$(cat \"$f\")\"; done");
}

TEST(VpnDirectory, MissingDirectoryIsCreatedAndTheCallReturnsZeroAtOnce) {
    prepare_dirs(false);
    for (const Call &c : returning_calls()) {
        ASSERT_FALSE(exists(kDir));
        journal_clear();
        EXPECT_EQ(c.fn(), 0) << c.name;
        EXPECT_EQ(all_commands(), std::vector<std::string>{}) << c.name;
        EXPECT_TRUE(is_dir(kDir)) << c.name;
        EXPECT_EQ(mode_of(kDir), 0755) << c.name;
        EXPECT_EQ(dir_listing(), "") << c.name << ": the fresh directory stays empty";
        EXPECT_FALSE(exists("/var/vpn_ipset_save")) << c.name;
        EXPECT_FALSE(exists(kDnsmasqDir)) << c.name;
        ASSERT_EQ(::rmdir(kDir.c_str()), 0) << c.name;
    }
    EXPECT_STREQ(g_out, "untouched");
}

TEST(VpnDirectory, AddAndSetAllCreateTheDirectoryAndGoOn) {
    prepare_dirs(false);
    const char *expect[] = {"VPN_IP_3=10.1.1.1;", "VPN_DOMAIN_3=a.example;", "VPN_MAC_3=aabbccddeeff;",
                            "VPN_IP_3=10.1.1.1\n10.2.2.2;"};
    int i = 0;
    for (const Call &c : continuing_calls()) {
        ASSERT_FALSE(exists(kDir));
        EXPECT_EQ(c.fn(), 0) << c.name;
        EXPECT_EQ(mode_of(kDir), 0755) << c.name;
        EXPECT_EQ(dir_listing(), expect[i++]) << c.name;
        qvstest::run("rm -rf " + kDir);
    }
}

TEST(VpnDirectory, DirectoryThatCannotBeCreatedFailsEveryCall) {
    // No /userconfig/config: the list directory cannot be made.
    ASSERT_TRUE(qvstest::in_sandbox());
    std::vector<Call> calls = returning_calls();
    for (Call &c : continuing_calls()) calls.push_back(c);
    for (const Call &c : calls) {
        journal_clear();
        CaptureFd err(2);
        EXPECT_EQ(c.fn(), -1) << c.name;
        EXPECT_TRUE(logged(err.text(), c.name, "creat vpn route dir error.\n")) << c.name;
        EXPECT_TRUE(journal_logged(c.name, "creat vpn route dir error.\n")) << c.name;
        EXPECT_EQ(all_commands(), std::vector<std::string>{}) << c.name;
    }
    EXPECT_FALSE(exists("/userconfig/config"));
    EXPECT_EQ(qvvpn_get_pkgCount(3), 0u);  // has no directory step
}

TEST(VpnDirectory, ReadOnlyPersistentPartitionKeepsTheLists) {
    prepare_dirs();
    write_file(ip_file(3), "10.1.1.1\n");
    write_file(domain_file(3), "a.example\n");
    write_file(mac_file(3), "aabbccddeeff\n");
    ASSERT_EQ(::mount("none", "/userconfig", "none", MS_REMOUNT | MS_RDONLY, nullptr), 0);
    CaptureFd err(2);
    EXPECT_EQ(qvvpn_flush_route_ip(3), -1);
    EXPECT_EQ(qvvpn_flush_route_domain(3), -1);
    EXPECT_EQ(qvvpn_flush_route_mac(3), -1);
    EXPECT_EQ(qvvpn_add_route_ip(3, "10.2.2.2"), -1);
    char list[] = "10.5.5.5";
    EXPECT_EQ(qvvpn_set_route_all(3, 0, list), -1);
    EXPECT_TRUE(logged(err.text(), "qvvpn_flush_route_ip", "creat vpn route dir error.\n"));
    EXPECT_EQ(read_file(ip_file(3)), "10.1.1.1\n");
    EXPECT_EQ(read_file(domain_file(3)), "a.example\n");
    EXPECT_EQ(read_file(mac_file(3)), "aabbccddeeff\n");
}

// ---- refused caller text ----------------------------------------------------

TEST(VpnRefusal, UnsafeIpAndMacTextIsRefusedBeforeAnythingHappens) {
    prepare_dirs(false);  // a created directory would show that something ran
    journal_clear();
    const char *bad[] = {"10.0.0.1;reboot", "10.0.0.1 && touch /tmp/pwned", "$(touch /tmp/pwned)",
                         "`touch /tmp/pwned`", "10.0.0.1|sh", "1.1.1.1\ntouch /tmp/pwned", "a>/tmp/pwned",
                         "x'y", "x\"y", "#c", "a\\b", "(x)", "a<b"};
    for (const char *text : bad) {
        CaptureFd err(2);
        EXPECT_EQ(qvvpn_add_route_ip(3, text), -1) << text;
        EXPECT_EQ(qvvpn_del_route_ip(3, text), -1) << text;
        char mac[64];
        std::snprintf(mac, sizeof mac, "%s", text);
        EXPECT_EQ(qvvpn_add_route_mac(3, mac), -1) << text;
        EXPECT_STREQ(mac, text) << "refused text is not lower-cased either";
        EXPECT_EQ(qvvpn_del_route_mac(3, mac), -1) << text;
        char list[128];
        std::snprintf(list, sizeof list, "10.9.9.9%%%s", text);
        EXPECT_EQ(qvvpn_set_route_all(3, 0, list), -1) << text;
        std::snprintf(list, sizeof list, "aabbccddeeff%%%s", text);
        EXPECT_EQ(qvvpn_set_route_all(3, 2, list), -1) << text;
        EXPECT_TRUE(logged(err.text(), "qvvpn_add_route_ip", "refused unsafe text")) << text;
    }
    EXPECT_FALSE(exists(kDir));
    EXPECT_FALSE(exists("/tmp/pwned"));
    EXPECT_EQ(all_commands(), std::vector<std::string>{});
    EXPECT_TRUE(journal_logged("qvvpn_set_route_all", "refused unsafe text [10.9.9.9%10.0.0.1;reboot]"));
    EXPECT_TRUE(journal_logged("qvvpn_del_route_mac", "refused unsafe text [$(touch /tmp/pwned)]"));
}

TEST(VpnRefusal, UnsafeTextLeavesExistingListsAlone) {
    prepare_dirs();
    write_file(ip_file(3), "10.0.0.1\n");
    write_file(mac_file(3), "aabbccddeeff\n");
    journal_clear();
    // Substring matches would have found line 1 of each list.
    EXPECT_EQ(qvvpn_del_route_ip(3, "10.0.0.1;true"), -1);
    char mac[] = "aabbccddeeff|true";
    EXPECT_EQ(qvvpn_del_route_mac(3, mac), -1);
    char list[] = "1.1.1.1%2.2.2.2;true";
    EXPECT_EQ(qvvpn_set_route_all(3, 0, list), -1);
    EXPECT_EQ(read_file(ip_file(3)), "10.0.0.1\n");
    EXPECT_EQ(read_file(mac_file(3)), "aabbccddeeff\n");
    EXPECT_EQ(all_commands(), std::vector<std::string>{});
}

TEST(VpnRefusal, DomainTextWithARefusedCharacterIsRefused) {
    prepare_dirs();
    EXPECT_EQ(qvvpn_add_route_domain(3, "a.example;x"), -1);
    char list[] = "b.example%c$d";
    EXPECT_EQ(qvvpn_set_route_all(4, 1, list), -1);
    EXPECT_EQ(qvvpn_del_route_domain(3, "a.example\n"), -1);
    EXPECT_FALSE(exists(domain_file(3)));
    EXPECT_FALSE(exists(dnsmasq_file(3)));
    EXPECT_FALSE(exists(domain_file(4)));
}

TEST(VpnRefusal, UnsafeMacLinesInAListFileAreLeftOutOfTheSet) {
    prepare_dirs();
    write_file(mac_file(3), "aa:bb:cc:dd:ee:01;touch /tmp/pwned\naa:bb:cc:dd:ee:02\n");
    journal_clear();
    CaptureFd err(2);
    EXPECT_EQ(qvvpn_reload_route_mode(3, 2), 0);
    EXPECT_EQ(commands_run(), (std::vector<std::string>{"ipset flush vpn_mac3 2> /dev/null",
                                                        "ipset add vpn_mac3 aa:bb:cc:dd:ee:02\n 2> /dev/null"}));
    EXPECT_TRUE(logged(err.text(), "qvvpn_reload_route_mode", "refused unsafe text [aa:bb:cc:dd:ee:01;touch /tmp/pw]"));  // cut at 31
    EXPECT_FALSE(exists("/tmp/pwned"));
}

}  // namespace
