// SPDX-License-Identifier: MIT
// Caller text with a line end is refused at every exported steering entry
// point (the application-route list variants remove one trailing line end
// of the whole list first, as their echo helpers do), and domain text can no
// longer add lines to dnsmasq's configuration.
#include <sys/stat.h>

#include <cctype>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "hardening_env.hpp"
#include "qvs_utils.h"

using namespace hardtest;

namespace {

class CallerText : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(qvstest::in_sandbox());
        ASSERT_EQ(qvsim_reset(), 0);
        ::mkdir("/userconfig/config", 0755);
        for (const std::string &d : {kVpnDir, kRouteDir, kFilterDir}) ::mkdir(d.c_str(), 0755);
        qvsim_journal_clear();
    }
};

struct Entry {
    const char *name;
    int (*call)(char *text);
    bool drops_one_trailing_line_end = false;  // the application-route list variants
};

const std::vector<Entry> &entries() {
    static const std::vector<Entry> e = {
        {"approute_add_route_ip", [](char *t) { return approute_add_route_ip(1, t); }},
        {"approute_add_route_domain", [](char *t) { return approute_add_route_domain(1, t); }},
        {"approute_add_route_mac", [](char *t) { return approute_add_route_mac(1, t); }},
        {"approute_del_route_ip", [](char *t) { return approute_del_route_ip(1, t); }},
        {"approute_del_route_domain", [](char *t) { return approute_del_route_domain(1, t); }},
        {"approute_del_route_mac", [](char *t) { return approute_del_route_mac(1, t); }},
        {"approute_add_route_iplist", [](char *t) { return approute_add_route_iplist(1, t); }, true},
        {"approute_add_route_domainlist", [](char *t) { return approute_add_route_domainlist(1, t); }, true},
        {"approute_add_route_maclist", [](char *t) { return approute_add_route_maclist(1, t); }, true},
        {"approute_del_route_iplist", [](char *t) { return approute_del_route_iplist(1, t); }, true},
        {"approute_del_route_domainlist", [](char *t) { return approute_del_route_domainlist(1, t); }, true},
        {"approute_del_route_maclist", [](char *t) { return approute_del_route_maclist(1, t); }, true},
        {"approute_set_route_all", [](char *t) { return approute_set_route_all(1, 0, t); }},
        {"qvvpn_add_route_ip", [](char *t) { return qvvpn_add_route_ip(1, t); }},
        {"qvvpn_del_route_ip", [](char *t) { return qvvpn_del_route_ip(1, t); }},
        {"qvvpn_add_route_domain", [](char *t) { return qvvpn_add_route_domain(1, t); }},
        {"qvvpn_del_route_domain", [](char *t) { return qvvpn_del_route_domain(1, t); }},
        {"qvvpn_add_route_mac", [](char *t) { return qvvpn_add_route_mac(1, t); }},
        {"qvvpn_del_route_mac", [](char *t) { return qvvpn_del_route_mac(1, t); }},
        {"qvvpn_set_route_all", [](char *t) { return qvvpn_set_route_all(1, 1, t); }},
        {"appfilter_add_route_iplist", [](char *t) { return appfilter_add_route_iplist(1, t); }},
        {"appfilter_add_route_domainlist", [](char *t) { return appfilter_add_route_domainlist(1, t); }},
        {"appfilter_del_route_domainlist", [](char *t) { return appfilter_del_route_domainlist(1, t); }},
    };
    return e;
}

TEST_F(CallerText, ALineEndAnywhereIsRefusedAtEveryEntryPoint) {
    for (const Entry &e : entries()) {
        // Where one trailing line end is removed, a second one is refused.
        const std::string trailing = e.drops_one_trailing_line_end ? "10.0.0.1\n\n" : "10.0.0.1\n";
        for (const std::string &text : {trailing, std::string("10.0.0.1\r"), std::string("\n10.0.0.1"),
                                       std::string("a\nb"), std::string("aa:bb\r\n")}) {
            SCOPED_TRACE(std::string(e.name) + " [" + text + "]");
            qvsim_journal_clear();
            Text t(text);
            EXPECT_EQ(e.call(t.get()), -1);
            EXPECT_TRUE(logged(e.name, "refused unsafe text [" + text + "]"));
            EXPECT_EQ(commands(), std::vector<std::string>{});
        }
    }
    for (const std::string &dir : {kVpnDir, kRouteDir, kFilterDir})
        EXPECT_EQ(dir_names(dir), std::set<std::string>{}) << dir;
}

TEST_F(CallerText, ListVariantsSendAndStoreTheListWithoutOneTrailingLineEnd) {
    int tested = 0;
    for (const Entry &e : entries()) {
        if (!e.drops_one_trailing_line_end) continue;
        SCOPED_TRACE(e.name);
        const bool deletes = std::string(e.name).find("_del_") != std::string::npos;
        const bool mac = std::string(e.name).find("mac") != std::string::npos;
        const std::string a = mac ? "aa:bb:cc:dd:ee:01" : "10.0.0.1", b = mac ? "aa:bb:cc:dd:ee:02" : "10.0.0.2";
        const std::string file = kRouteDir + (mac                                               ? "/approute_mac1"
                                              : std::string(e.name).find("domain") != std::string::npos ? "/approute_domain1"
                                                                                                          : "/approute_ip1");
        const int ktype = mac ? 3 : std::string(e.name).find("domain") != std::string::npos ? 2 : 1;
        qvstest::write_file(file, deletes ? a + "\n" + b + "\n" : "");
        qvsim_journal_clear();
        Text t(a + "," + b + "\n");
        EXPECT_EQ(e.call(t.get()), 0);
        EXPECT_EQ(qvstest::read_file(file), deletes ? "" : a + "\n" + b + "\n");
        const std::vector<std::string> c = commands();
        ASSERT_FALSE(c.empty());
        EXPECT_EQ(c[0], std::string("echo ") + (deletes ? "DEL" : "ADD") + "_DATA index:1 type:" +
                            std::to_string(ktype) + " list:" + a + "," + b + " > /proc/approute/rule");
        EXPECT_FALSE(logged(e.name, "refused"));
        ::unlink(file.c_str());
        ++tested;
    }
    EXPECT_EQ(tested, 6);
}

TEST_F(CallerText, ATrailingLineEndNoLongerAddsAnEmptyItem) {
    Text t("10.0.0.1\n");
    EXPECT_EQ(approute_add_route_ip(1, t.get()), -1);
    EXPECT_EQ(approute_get_route_count(1, 0), 0);
    Text u("10.0.0.1");
    EXPECT_EQ(approute_add_route_ip(1, u.get()), 0);
    EXPECT_EQ(qvstest::read_file(kRouteDir + "/approute_ip1"), "10.0.0.1\n");
    EXPECT_EQ(approute_get_route_count(1, 0), 1);
}

TEST_F(CallerText, StoredLinesKeepTheirLineEndsInsideTheLibrary) {
    // The domain replacement passes a stored line (line end included) to the
    // delete: it still works as before.
    qvstest::write_file(kRouteDir + "/approute_domain1", "a.example\nb.example\n");
    Text t("a.example");
    EXPECT_EQ(approute_add_route_domainlist(1, t.get()), 0);
    EXPECT_EQ(qvstest::read_file(kRouteDir + "/approute_domain1"), "b.example\na.example\n");
    EXPECT_EQ(commands(), (std::vector<std::string>{
                              "echo ADD_DATA index:1 type:2 list:a.example > /proc/approute/rule",
                              "echo DEL_DATA index:1 type:2 list:a.example > /proc/approute/rule",
                              "echo ADD_DATA index:1 type:2 list:a.example > /proc/approute/rule",
                          }));
}

TEST_F(CallerText, DomainTextCannotAddDnsmasqLines) {
    const std::string hostile = "a.example\nb.example vpn_domain9 1";
    {
        Text t(hostile);
        EXPECT_EQ(qvvpn_add_route_domain(1, t.get()), -1);
    }
    EXPECT_TRUE(logged("qvvpn_add_route_domain", "refused unsafe text"));
    EXPECT_FALSE(qvstest::exists(kVpnDir + "/VPN_DOMAIN_1"));
    EXPECT_FALSE(qvstest::exists("/etc/dnsmasq/ipset/vpn_domain1"));
    {
        Text t("a.example%b.example vpn_domain9 1\nc.example");
        EXPECT_EQ(qvvpn_set_route_all(1, 1, t.get()), -1);
    }
    EXPECT_FALSE(qvstest::exists(kVpnDir + "/VPN_DOMAIN_1"));
    EXPECT_FALSE(qvstest::exists("/etc/dnsmasq/ipset/vpn_domain1"));
    EXPECT_EQ(commands(), std::vector<std::string>{});
}

TEST_F(CallerText, DomainListsRefuseEveryGuardedCharacter) {
    const std::string refused = ";&|`$<>()\\'\"#\n\r";
    for (char c : refused) {
        const std::string text = std::string("a") + c + "example";
        SCOPED_TRACE(text);
        for (const Entry &e : entries()) {
            if (std::string(e.name).find("domain") == std::string::npos && std::string(e.name) != "qvvpn_set_route_all")
                continue;
            qvsim_journal_clear();
            Text t(text);
            EXPECT_EQ(e.call(t.get()), -1) << e.name;
            EXPECT_EQ(commands(), std::vector<std::string>{}) << e.name;
        }
    }
    EXPECT_EQ(dir_names(kVpnDir), std::set<std::string>{});
    EXPECT_FALSE(qvstest::exists("/etc/dnsmasq/ipset/vpn_domain1"));
}

TEST_F(CallerText, PlainDomainsStillWork) {
    Text t("a.example");
    EXPECT_EQ(qvvpn_add_route_domain(1, t.get()), 0);
    EXPECT_EQ(qvstest::read_file("/etc/dnsmasq/ipset/vpn_domain1"), "a.example vpn_domain1 1\n");
    Text s("a.example%b.example");
    EXPECT_EQ(qvvpn_set_route_all(1, 1, s.get()), 0);
    EXPECT_EQ(qvstest::read_file(kVpnDir + "/VPN_DOMAIN_1"), "a.example\nb.example\n");
    EXPECT_EQ(qvstest::read_file("/etc/dnsmasq/ipset/vpn_domain1"),
              "a.example vpn_domain1 1\nb.example vpn_domain1 1\n");
    Text d("a.example");
    EXPECT_EQ(qvvpn_del_route_domain(1, d.get()), 0);
    EXPECT_EQ(qvstest::read_file(kVpnDir + "/VPN_DOMAIN_1"), "b.example\n");
}

TEST_F(CallerText, BothListingsCutEachLineAtItsFirstBlank) {
    // The VPN and route listings read lines alike: a blank is a space or a
    // tab (isblank); other white space stays in the item.
    std::string file;
    std::vector<std::string> items;
    for (const char c : std::string(" \t\v\f")) {
        file += std::string("10.0.0.") + std::to_string(items.size()) + c + "tail\n";
        items.push_back(std::string("10.0.0.") + std::to_string(items.size()) +
                        (std::isblank(static_cast<unsigned char>(c)) ? "" : std::string(1, c) + "tail"));
    }
    file += "\tleading\n";
    items.push_back("");
    file += "10.0.0.9 \tmore words\n";
    items.push_back("10.0.0.9");
    qvstest::write_file(kVpnDir + "/VPN_IP_1", file);
    qvstest::write_file(kRouteDir + "/approute_ip1", file);
    char vpn[512] = {}, route[512] = {};
    EXPECT_EQ(qvvpn_get_route_all(1, 0, vpn, sizeof vpn), static_cast<int>(items.size()));
    EXPECT_EQ(approute_get_route_all(1, 0, route, sizeof route), static_cast<int>(items.size()));
    std::string vpn_expected, route_expected;
    for (std::size_t i = 0; i < items.size(); ++i) {
        vpn_expected += (i ? "%" : "") + items[i];
        route_expected += (i ? "," : "") + items[i];
    }
    EXPECT_EQ(std::string(vpn), vpn_expected);
    EXPECT_EQ(std::string(route), route_expected);
}

}  // namespace
