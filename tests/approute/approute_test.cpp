// SPDX-License-Identifier: MIT
// Application route lists: list files, command lines sent to the route
// module and what the simulated module holds afterwards.
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qvs_utils.h"
#include "steering_journal.hpp"

using steertest::command_lines;
using steertest::held;
using steertest::logs;
using steertest::Text;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

const std::string kDir = "/userconfig/config/approute";
const std::string kIp1 = kDir + "/approute_ip1";
const std::string kDomain1 = kDir + "/approute_domain1";
const std::string kMac1 = kDir + "/approute_mac1";

std::string add(int n, int type, const std::string &list) {
    return "echo ADD_DATA index:" + std::to_string(n) + " type:" + std::to_string(type) + " list:" + list +
           " > /proc/approute/rule";
}
std::string del(int n, int type, const std::string &list) {
    return "echo DEL_DATA index:" + std::to_string(n) + " type:" + std::to_string(type) + " list:" + list +
           " > /proc/approute/rule";
}
std::string clr(int n, int type) {
    return "echo CLR_DATA index:" + std::to_string(n) + " type:" + std::to_string(type) + " > /proc/approute/rule";
}

std::vector<std::string> cmds() {
    bool by_qv_do_cmd = false;
    std::vector<std::string> lines = command_lines("qv_do_cmd", &by_qv_do_cmd);
    EXPECT_TRUE(by_qv_do_cmd) << "every command goes through qv_do_cmd";
    return lines;
}

std::string file(const std::string &path) { return qvstest::read_file(path); }
bool dir_exists() { return qvstest::exists(kDir); }

class AppRoute : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(qvstest::in_sandbox());
        ASSERT_EQ(qvsim_reset(), 0);
        // The gateway always has /userconfig/config; the list directory is
        // made by the library (its parent never is).
        ASSERT_EQ(::mkdir("/userconfig/config", 0755), 0);
    }
    static void make_dir() { ASSERT_EQ(::mkdir(kDir.c_str(), 0755), 0); }
    static void clear_journal() { qvsim_journal_clear(); }
    // Puts items into the file and the module through the library.
    static void seed(int (*fn)(int, char *), int n, const std::vector<std::string> &items) {
        for (const std::string &i : items) {
            Text t(i);
            ASSERT_EQ(fn(n, t.get()), 0) << i;
        }
        clear_journal();
    }
};

// ---- single items -------------------------------------------------------

TEST_F(AppRoute, AddIpAppendsTheLineAndSendsIt) {
    make_dir();
    Text ip("10.0.0.1");
    EXPECT_EQ(approute_add_route_ip(1, ip.get()), 0);
    EXPECT_EQ(file(kIp1), "10.0.0.1\n");
    EXPECT_THAT(cmds(), ElementsAre(add(1, 1, "10.0.0.1")));
    EXPECT_EQ(held("approute", 1, 1), "10.0.0.1");
    Text ip2("10.0.0.2");
    EXPECT_EQ(approute_add_route_ip(1, ip2.get()), 0);
    EXPECT_EQ(file(kIp1), "10.0.0.1\n10.0.0.2\n");
    EXPECT_EQ(held("approute", 1, 1), "10.0.0.1,10.0.0.2");
}

TEST_F(AppRoute, AddIpContainedInAStoredLineReturnsItsNumber) {
    make_dir();
    qvstest::write_file(kIp1, "192.168.1.1\n10.0.0.12\n");
    Text ip("10.0.0.1");
    EXPECT_EQ(approute_add_route_ip(1, ip.get()), 2);
    EXPECT_EQ(file(kIp1), "192.168.1.1\n10.0.0.12\n");
    EXPECT_THAT(cmds(), IsEmpty());
}

TEST_F(AppRoute, AddDomainAppendsOrReturnsTheLine) {
    make_dir();
    Text d("example.com");
    EXPECT_EQ(approute_add_route_domain(3, d.get()), 0);
    EXPECT_EQ(file(kDir + "/approute_domain3"), "example.com\n");
    EXPECT_THAT(cmds(), ElementsAre(add(3, 2, "example.com")));
    EXPECT_EQ(held("approute", 3, 2), "example.com");
    clear_journal();
    Text again("example.com");
    EXPECT_EQ(approute_add_route_domain(3, again.get()), 1);
    EXPECT_THAT(cmds(), IsEmpty());
    // Case counts for domains (a plain substring search).
    Text upper("EXAMPLE.COM");
    EXPECT_EQ(approute_add_route_domain(3, upper.get()), 0);
    EXPECT_EQ(file(kDir + "/approute_domain3"), "example.com\nEXAMPLE.COM\n");
}

TEST_F(AppRoute, AddMacStoresAsGivenAndSendsLowerCaseColons) {
    make_dir();
    Text mac("AA-BB-CC-DD-EE-FF");
    EXPECT_EQ(approute_add_route_mac(1, mac.get()), 0);
    EXPECT_EQ(file(kMac1), "AA-BB-CC-DD-EE-FF\n");
    EXPECT_THAT(cmds(), ElementsAre(add(1, 3, "aa:bb:cc:dd:ee:ff")));
    EXPECT_EQ(held("approute", 1, 3), "aa:bb:cc:dd:ee:ff");
    EXPECT_EQ(mac.str(), "aa:bb:cc:dd:ee:ff");  // changed in place
    clear_journal();
    // A later add in another spelling finds the line, case ignored.
    Text lower("aa-bb-cc-dd-ee-ff");
    EXPECT_EQ(approute_add_route_mac(1, lower.get()), 1);
    EXPECT_EQ(lower.str(), "aa-bb-cc-dd-ee-ff");
    EXPECT_EQ(file(kMac1), "AA-BB-CC-DD-EE-FF\n");
    EXPECT_THAT(cmds(), IsEmpty());
}

TEST_F(AppRoute, MacSearchIsAPrefixTest) {
    make_dir();
    qvstest::write_file(kMac1, "11:22:33:44:55:66\naa:bb:cc:dd:ee:ff\n");
    Text prefix("AA:BB");
    EXPECT_EQ(approute_add_route_mac(1, prefix.get()), 2);
    // Inside a line is not enough for a MAC.
    Text inner("cc:dd");
    EXPECT_EQ(approute_add_route_mac(1, inner.get()), 0);
    EXPECT_EQ(file(kMac1), "11:22:33:44:55:66\naa:bb:cc:dd:ee:ff\ncc:dd\n");
    clear_journal();
    Text del_prefix("aa:bb");
    EXPECT_EQ(approute_del_route_mac(1, del_prefix.get()), 0);
    EXPECT_EQ(file(kMac1), "11:22:33:44:55:66\ncc:dd\n");
    EXPECT_THAT(cmds(), ElementsAre(del(1, 3, "aa:bb")));
}

TEST_F(AppRoute, NegativeRuleIndexIsPrintedAsIs) {
    make_dir();
    Text ip("10.0.0.1");
    EXPECT_EQ(approute_add_route_ip(-3, ip.get()), 0);
    EXPECT_EQ(file(kDir + "/approute_ip-3"), "10.0.0.1\n");
    EXPECT_THAT(cmds(), ElementsAre(add(-3, 1, "10.0.0.1")));
    EXPECT_EQ(held("approute", -3, 1), "10.0.0.1");
    EXPECT_EQ(approute_get_route_count(-3, 0), 1);
}

TEST_F(AppRoute, AddWithATrailingLineEndIsRefused) {
    make_dir();
    Text ip("10.9.9.9\n");
    EXPECT_EQ(approute_add_route_ip(2, ip.get()), -1);
    EXPECT_FALSE(qvstest::exists(kDir + "/approute_ip2"));
    EXPECT_THAT(cmds(), IsEmpty());
    EXPECT_EQ(approute_get_route_count(2, 0), 0);
}

TEST_F(AppRoute, AddCreatesAMissingDirectoryAndGoesOn) {
    ASSERT_FALSE(dir_exists());
    Text ip("10.0.0.1");
    EXPECT_EQ(approute_add_route_ip(1, ip.get()), 0);
    struct stat st {};
    ASSERT_EQ(stat(kDir.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0755u);
    EXPECT_EQ(file(kIp1), "10.0.0.1\n");
    EXPECT_THAT(cmds(), ElementsAre(add(1, 1, "10.0.0.1")));
}

TEST_F(AppRoute, AddFailsWhenTheFileCannotBeOpened) {
    make_dir();
    qvstest::run("mkdir " + kIp1);  // a directory where the list file belongs
    Text ip("10.0.0.1");
    EXPECT_EQ(approute_add_route_ip(1, ip.get()), -1);
    EXPECT_THAT(cmds(), IsEmpty());
    auto l = logs();
    ASSERT_EQ(l.size(), 1u);
    EXPECT_EQ(l[0].func, "approute_add_route_ip");
    EXPECT_EQ(l[0].level, 1);
    EXPECT_EQ(l[0].message, "open file " + kIp1 + " failed.\n");
}

// Every function with a directory step, called while the directory cannot
// be made: each gives -1, sends nothing and logs the one message at level 1
// under its own name; counting has no directory step and reports nothing.
void expect_every_directory_step_fails() {
    Text ip("10.0.0.2");
    EXPECT_EQ(approute_add_route_ip(1, ip.get()), -1);
    Text ip2("10.0.0.1");
    EXPECT_EQ(approute_del_route_ip(1, ip2.get()), -1);
    EXPECT_EQ(approute_flush_route_ip(1), -1);
    Text list("10.0.0.3,10.0.0.4");
    EXPECT_EQ(approute_add_route_iplist(1, list.get()), -1);
    Text dlist("10.0.0.1");
    EXPECT_EQ(approute_del_route_iplist(1, dlist.get()), -1);
    Text all("10.0.0.5");
    EXPECT_EQ(approute_set_route_all(1, 0, all.get()), -1);
    EXPECT_EQ(approute_reload_route(1), -1);
    char out[64] = "untouched";
    EXPECT_EQ(approute_get_route_all(1, 0, out, sizeof out), -1);
    EXPECT_STREQ(out, "untouched");
    // Counting needs no writable directory, it just reports nothing.
    EXPECT_EQ(approute_get_route_count(1, 0), 0);
    EXPECT_THAT(cmds(), IsEmpty());
    auto l = logs();
    ASSERT_EQ(l.size(), 8u);
    const char *funcs[] = {"approute_add_route_ip", "approute_del_route_ip", "approute_flush_route_ip",
                           "approute_add_route_iplist", "approute_del_route_iplist", "approute_set_route_all",
                           "approute_reload_route", "approute_get_route_all"};
    for (std::size_t i = 0; i < l.size(); ++i) {
        EXPECT_EQ(l[i].func, funcs[i]);
        EXPECT_EQ(l[i].level, 1);
        EXPECT_EQ(l[i].message, "creat vpn route dir error.\n");
    }
}

TEST_F(AppRoute, ReadOnlyUserconfigFailsAndKeepsTheFiles) {
    make_dir();
    seed(approute_add_route_ip, 1, {"10.0.0.1"});
    ASSERT_TRUE(steertest::userconfig_read_only());
    expect_every_directory_step_fails();
    EXPECT_EQ(file(kIp1), "10.0.0.1\n");
    EXPECT_EQ(held("approute", 1, 1), "10.0.0.1");
}

TEST_F(AppRoute, WithoutUserconfigConfigEveryDirectoryStepFails) {
    // The directory is made with one mkdir: a missing parent is not created.
    ASSERT_EQ(::rmdir("/userconfig/config"), 0);
    expect_every_directory_step_fails();
    EXPECT_FALSE(qvstest::exists("/userconfig/config"));
    EXPECT_EQ(held("approute", 1, 1), "");
}

TEST_F(AppRoute, DeleteIpRemovesTheLineAndSendsIt) {
    make_dir();
    seed(approute_add_route_ip, 1, {"10.0.0.1", "10.0.0.2", "10.0.0.3"});
    Text ip("10.0.0.2");
    EXPECT_EQ(approute_del_route_ip(1, ip.get()), 0);
    EXPECT_EQ(file(kIp1), "10.0.0.1\n10.0.0.3\n");
    EXPECT_THAT(cmds(), ElementsAre(del(1, 1, "10.0.0.2")));
    EXPECT_EQ(held("approute", 1, 1), "10.0.0.1,10.0.0.3");
}

TEST_F(AppRoute, DeleteOfAnAbsentItemDoesNothing) {
    make_dir();
    seed(approute_add_route_domain, 1, {"a.com"});
    Text d("b.com");
    EXPECT_EQ(approute_del_route_domain(1, d.get()), 0);
    EXPECT_EQ(file(kDomain1), "a.com\n");
    EXPECT_THAT(cmds(), IsEmpty());
    Text none("10.0.0.1");
    EXPECT_EQ(approute_del_route_ip(1, none.get()), 0);  // no file at all
    EXPECT_THAT(cmds(), IsEmpty());
}

TEST_F(AppRoute, DeleteBySubstringHitsTheLongerEntry) {
    make_dir();
    seed(approute_add_route_ip, 1, {"10.0.0.12"});
    Text ip("10.0.0.1");
    EXPECT_EQ(approute_del_route_ip(1, ip.get()), 0);
    EXPECT_EQ(file(kIp1), "");
    EXPECT_THAT(cmds(), ElementsAre(del(1, 1, "10.0.0.1")));
    // The module is told to drop 10.0.0.1, which it does not hold.
    EXPECT_EQ(held("approute", 1, 1), "10.0.0.12");
}

TEST_F(AppRoute, DeleteDomainWithATrailingLineEndIsRefused) {
    make_dir();
    seed(approute_add_route_domain, 1, {"a.com", "b.com"});
    Text d("b.com\n");
    EXPECT_EQ(approute_del_route_domain(1, d.get()), -1);
    EXPECT_EQ(file(kDomain1), "a.com\nb.com\n");
    EXPECT_THAT(cmds(), IsEmpty());
    EXPECT_EQ(held("approute", 1, 2), "a.com,b.com");
}

TEST_F(AppRoute, DeleteMacSendsDashesUnchanged) {
    make_dir();
    seed(approute_add_route_mac, 1, {"AA-BB-CC-DD-EE-FF", "11-22-33-44-55-66"});
    Text mac("AA-BB-CC-DD-EE-FF");
    EXPECT_EQ(approute_del_route_mac(1, mac.get()), 0);
    EXPECT_EQ(file(kMac1), "11-22-33-44-55-66\n");
    EXPECT_THAT(cmds(), ElementsAre(del(1, 3, "aa-bb-cc-dd-ee-ff")));
    EXPECT_EQ(mac.str(), "aa-bb-cc-dd-ee-ff");
    // The module holds the colon form, so the dashed delete misses it.
    EXPECT_EQ(held("approute", 1, 3), "aa:bb:cc:dd:ee:ff,11:22:33:44:55:66");
    clear_journal();
    Text colons("aa:bb:cc:dd:ee:ff");
    EXPECT_EQ(approute_del_route_mac(1, colons.get()), 0);  // no such line any more
    EXPECT_THAT(cmds(), IsEmpty());
}

TEST_F(AppRoute, DeleteOnAMissingDirectoryCreatesItAndReturns) {
    Text ip("10.0.0.1");
    EXPECT_EQ(approute_del_route_ip(1, ip.get()), 0);
    EXPECT_TRUE(dir_exists());
    EXPECT_FALSE(qvstest::exists(kIp1));
    EXPECT_THAT(cmds(), IsEmpty());
    qvstest::run("rmdir " + kDir);
    Text d("a.com");
    EXPECT_EQ(approute_del_route_domain(1, d.get()), 0);
    qvstest::run("rmdir " + kDir);
    Text m("aa:bb:cc:dd:ee:ff");
    EXPECT_EQ(approute_del_route_mac(1, m.get()), 0);
    EXPECT_TRUE(dir_exists());
    EXPECT_THAT(cmds(), IsEmpty());
}

TEST_F(AppRoute, FlushTruncatesAndClearsTheModule) {
    make_dir();
    seed(approute_add_route_ip, 1, {"10.0.0.1"});
    seed(approute_add_route_domain, 1, {"a.com"});
    seed(approute_add_route_mac, 1, {"aa:bb:cc:dd:ee:ff"});
    EXPECT_EQ(approute_flush_route_ip(1), 0);
    EXPECT_EQ(approute_flush_route_domain(1), 0);
    EXPECT_EQ(approute_flush_route_mac(1), 0);
    for (const std::string &p : {kIp1, kDomain1, kMac1}) {
        EXPECT_TRUE(qvstest::exists(p));
        EXPECT_EQ(file(p), "");
    }
    EXPECT_THAT(cmds(), ElementsAre(clr(1, 1), clr(1, 2), clr(1, 3)));
    for (int t = 1; t <= 3; ++t) EXPECT_EQ(held("approute", 1, t), "");
}

TEST_F(AppRoute, FlushOfAMissingFileCreatesItEmpty) {
    make_dir();
    EXPECT_EQ(approute_flush_route_domain(5), 0);
    EXPECT_TRUE(qvstest::exists(kDir + "/approute_domain5"));
    EXPECT_THAT(cmds(), ElementsAre(clr(5, 2)));
}

TEST_F(AppRoute, FlushOnAMissingDirectoryCreatesItAndReturns) {
    EXPECT_EQ(approute_flush_route_ip(1), 0);
    EXPECT_TRUE(dir_exists());
    EXPECT_FALSE(qvstest::exists(kIp1));
    EXPECT_THAT(cmds(), IsEmpty());
}

TEST_F(AppRoute, FlushFailsWhenTheFileCannotBeOpened) {
    make_dir();
    qvstest::run("mkdir " + kMac1);
    EXPECT_EQ(approute_flush_route_mac(1), -1);
    EXPECT_THAT(cmds(), IsEmpty());
    auto l = logs();
    ASSERT_EQ(l.size(), 1u);
    EXPECT_EQ(l[0].func, "approute_flush_route_mac");
    EXPECT_EQ(l[0].message, "open file " + kMac1 + " failed.\n");
}

// ---- lists --------------------------------------------------------------

TEST_F(AppRoute, AddIpListSendsTheWholeListThenAppendsNewItems) {
    make_dir();
    seed(approute_add_route_ip, 1, {"10.0.0.12"});
    Text list("10.0.0.1,,10.0.0.2,10.0.0.2");
    EXPECT_EQ(approute_add_route_iplist(1, list.get()), 0);
    EXPECT_THAT(cmds(), ElementsAre(add(1, 1, "10.0.0.1,,10.0.0.2,10.0.0.2")));
    // 10.0.0.1 is contained in 10.0.0.12: not stored again.
    EXPECT_EQ(file(kIp1), "10.0.0.12\n10.0.0.2\n");
    EXPECT_EQ(held("approute", 1, 1), "10.0.0.12,10.0.0.1,10.0.0.2");
    EXPECT_EQ(list.str(), "10.0.0.1");  // split in place
}

TEST_F(AppRoute, ListVariantsDropOneTrailingLineEnd) {
    make_dir();
    Text list("a.com,b.com\n");
    EXPECT_EQ(approute_add_route_domainlist(1, list.get()), 0);
    EXPECT_EQ(file(kDomain1), "a.com\nb.com\n");
    Text macs("AA-BB-CC-DD-EE-01\n");
    EXPECT_EQ(approute_add_route_maclist(1, macs.get()), 0);
    EXPECT_EQ(file(kMac1), "AA-BB-CC-DD-EE-01\n");
    Text gone("b.com\n");
    EXPECT_EQ(approute_del_route_domainlist(1, gone.get()), 0);
    EXPECT_EQ(file(kDomain1), "a.com\n");
    EXPECT_THAT(cmds(), ElementsAre(add(1, 2, "a.com,b.com"), add(1, 3, "aa:bb:cc:dd:ee:01"), del(1, 2, "b.com")));
    EXPECT_EQ(held("approute", 1, 2), "a.com");
    EXPECT_THAT(logs(), IsEmpty());
}

TEST_F(AppRoute, ListVariantsRefuseEveryOtherLineEnd) {
    make_dir();
    for (const char *bad : {"a.com,b.com\n\n", "a.com\n,b.com", "\na.com", "a.com,b.com\r\n", "a.com\r"}) {
        for (auto fn : {approute_add_route_iplist, approute_add_route_domainlist, approute_add_route_maclist,
                        approute_del_route_iplist, approute_del_route_domainlist, approute_del_route_maclist}) {
            Text t(bad);
            EXPECT_EQ(fn(1, t.get()), -1) << bad;
            EXPECT_EQ(t.str(), bad);  // a refused list is left as given
        }
    }
    EXPECT_THAT(cmds(), IsEmpty());
    EXPECT_EQ(qvstest::run("ls " + kDir), "");
}

TEST_F(AppRoute, AddMacListSendsALowerCaseCopyAndStoresAsGiven) {
    make_dir();
    seed(approute_add_route_mac, 1, {"aa:bb:cc:dd:ee:01"});
    Text list("AA-BB-CC-DD-EE-01,AA-BB-CC-DD-EE-02,Aa:Bb:Cc:Dd:Ee:03");
    EXPECT_EQ(approute_add_route_maclist(1, list.get()), 0);
    EXPECT_THAT(cmds(), ElementsAre(add(1, 3, "aa:bb:cc:dd:ee:01,aa:bb:cc:dd:ee:02,aa:bb:cc:dd:ee:03")));
    // The stored aa:bb:cc:dd:ee:01 does not begin with the dashed spelling.
    EXPECT_EQ(file(kMac1), "aa:bb:cc:dd:ee:01\nAA-BB-CC-DD-EE-01\nAA-BB-CC-DD-EE-02\nAa:Bb:Cc:Dd:Ee:03\n");
    EXPECT_EQ(held("approute", 1, 3), "aa:bb:cc:dd:ee:01,aa:bb:cc:dd:ee:02,aa:bb:cc:dd:ee:03");
    EXPECT_EQ(list.str(), "AA-BB-CC-DD-EE-01");  // the caller's list is not lower-cased
    clear_journal();
    Text again("aa-bb-cc-dd-ee-02");
    EXPECT_EQ(approute_add_route_maclist(1, again.get()), 0);
    EXPECT_EQ(file(kMac1), "aa:bb:cc:dd:ee:01\nAA-BB-CC-DD-EE-01\nAA-BB-CC-DD-EE-02\nAa:Bb:Cc:Dd:Ee:03\n");
}

TEST_F(AppRoute, AddMacListLongerThanItsCopyGoesOutInWholeLines) {
    make_dir();
    // 33 MACs of 17 characters joined by ',': 593 characters, more than the
    // 576 of the lower-cased copy. The first 32 (575 characters) fill one
    // line, the 33rd goes on a second.
    std::string list, first, last;
    for (int i = 0; i < 33; ++i) {
        char mac[18];
        std::snprintf(mac, sizeof mac, "AA-BB-CC-DD-EE-%02X", i);
        list += (i ? "," : "") + std::string(mac);
    }
    ASSERT_EQ(list.size(), 593u);
    for (char c : list.substr(0, 575)) first.push_back(c == '-' ? ':' : static_cast<char>(std::tolower(c)));
    for (char c : list.substr(576)) last.push_back(c == '-' ? ':' : static_cast<char>(std::tolower(c)));
    Text t(list);
    EXPECT_EQ(approute_add_route_maclist(1, t.get()), 0);
    EXPECT_THAT(cmds(), ElementsAre(add(1, 3, first), add(1, 3, last)));
    std::string expected;
    for (const std::string &m : steertest::split(list, ',')) expected += m + "\n";
    EXPECT_EQ(file(kMac1), expected);
    EXPECT_EQ(held("approute", 1, 3), first + "," + last);
}

TEST_F(AppRoute, AddDomainListMovesAStoredItemToTheEnd) {
    make_dir();
    seed(approute_add_route_domain, 1, {"a.com", "b.com"});
    Text list("a.com");
    EXPECT_EQ(approute_add_route_domainlist(1, list.get()), 0);
    EXPECT_EQ(file(kDomain1), "b.com\na.com\n");
    EXPECT_THAT(cmds(), ElementsAre(add(1, 2, "a.com"), del(1, 2, "a.com"), add(1, 2, "a.com")));
    EXPECT_EQ(held("approute", 1, 2), "b.com,a.com");
}

TEST_F(AppRoute, AddDomainListReplacesALongerEntryHoldingTheItem) {
    make_dir();
    seed(approute_add_route_domain, 1, {"www.a.com", "c.com"});
    Text list("a.com,new.org");
    EXPECT_EQ(approute_add_route_domainlist(1, list.get()), 0);
    EXPECT_EQ(file(kDomain1), "c.com\na.com\nnew.org\n");
    EXPECT_THAT(cmds(), ElementsAre(add(1, 2, "a.com,new.org"), del(1, 2, "www.a.com"),
                                    add(1, 2, "a.com")));
    EXPECT_EQ(held("approute", 1, 2), "c.com,a.com,new.org");
}

TEST_F(AppRoute, AddDomainListLeavesAnUnterminatedEqualLine) {
    make_dir();
    qvstest::write_file(kDomain1, "a.com\nb.com");  // last line without line end
    Text list("b.com");
    EXPECT_EQ(approute_add_route_domainlist(1, list.get()), 0);
    EXPECT_EQ(file(kDomain1), "a.com\nb.com");
    EXPECT_THAT(cmds(), ElementsAre(add(1, 2, "b.com")));
}

TEST_F(AppRoute, AddListStopsWhenTheFileCannotBeOpened) {
    make_dir();
    qvstest::run("mkdir " + kIp1);
    Text list("10.0.0.1,10.0.0.2");
    EXPECT_EQ(approute_add_route_iplist(1, list.get()), -1);
    // The module is ahead of the file.
    EXPECT_THAT(cmds(), ElementsAre(add(1, 1, "10.0.0.1,10.0.0.2")));
    EXPECT_EQ(held("approute", 1, 1), "10.0.0.1,10.0.0.2");
    auto l = logs();
    ASSERT_EQ(l.size(), 1u);
    EXPECT_EQ(l[0].func, "approute_add_route_iplist");
    EXPECT_EQ(l[0].message, "open file " + kIp1 + " failed.\n");
}

TEST_F(AppRoute, AddListOnAMissingDirectoryCreatesItAndGoesOn) {
    Text list("10.0.0.1,10.0.0.2");
    EXPECT_EQ(approute_add_route_iplist(1, list.get()), 0);
    EXPECT_EQ(file(kIp1), "10.0.0.1\n10.0.0.2\n");
    EXPECT_THAT(cmds(), ElementsAre(add(1, 1, "10.0.0.1,10.0.0.2")));
}

TEST_F(AppRoute, DeleteIpListSendsTheListThenDeletesEachLine) {
    make_dir();
    seed(approute_add_route_ip, 1, {"10.0.0.1", "10.0.0.2", "10.0.0.3"});
    Text list("10.0.0.1,10.0.0.3,10.0.0.9");
    EXPECT_EQ(approute_del_route_iplist(1, list.get()), 0);
    EXPECT_EQ(file(kIp1), "10.0.0.2\n");
    EXPECT_THAT(cmds(), ElementsAre(del(1, 1, "10.0.0.1,10.0.0.3,10.0.0.9")));
    EXPECT_EQ(held("approute", 1, 1), "10.0.0.2");
}

TEST_F(AppRoute, DeleteDomainList) {
    make_dir();
    seed(approute_add_route_domain, 2, {"a.com", "b.com"});
    Text list("b.com");
    EXPECT_EQ(approute_del_route_domainlist(2, list.get()), 0);
    EXPECT_EQ(file(kDir + "/approute_domain2"), "a.com\n");
    EXPECT_THAT(cmds(), ElementsAre(del(2, 2, "b.com")));
    EXPECT_EQ(held("approute", 2, 2), "a.com");
}

TEST_F(AppRoute, DeleteMacListLowerCasesTheList) {
    make_dir();
    seed(approute_add_route_mac, 1, {"AA:BB:CC:DD:EE:01", "aa:bb:cc:dd:ee:02"});
    Text list("AA:BB:CC:DD:EE:02,AA:BB:CC:DD:EE:01");
    EXPECT_EQ(approute_del_route_maclist(1, list.get()), 0);
    EXPECT_EQ(file(kMac1), "");
    EXPECT_THAT(cmds(), ElementsAre(del(1, 3, "aa:bb:cc:dd:ee:02,aa:bb:cc:dd:ee:01")));
    EXPECT_EQ(held("approute", 1, 3), "");
    EXPECT_EQ(list.str(), "aa:bb:cc:dd:ee:02");
}

TEST_F(AppRoute, ADeleteListLongerThanItsLineGoesOutInWholeLines) {
    make_dir();
    // 10 addresses, 149 characters: a DEL_DATA line of rule 1 holds 71
    // characters of list, so 4 + 4 + 2 items, cut only at commas.
    std::vector<std::string> items;
    std::string list;
    for (int i = 10; i < 20; ++i) {
        items.push_back("192.168.100." + std::to_string(i));
        list += (list.empty() ? "" : ",") + items.back();
    }
    seed(approute_add_route_ip, 1, items);
    const std::string prefix = "192.168.100.";
    auto run = [&](int from, int to) {
        std::string r;
        for (int i = from; i < to; ++i) r += (r.empty() ? "" : ",") + items[i];
        return r;
    };
    ASSERT_GT(del(1, 1, list).size(), 127u);
    Text t(list);
    qvstest::CaptureFd out(1);
    EXPECT_EQ(approute_del_route_iplist(1, t.get()), 0);
    EXPECT_EQ(out.text(), "");
    std::vector<std::string> expected = {del(1, 1, run(0, 4)), del(1, 1, run(4, 8)), del(1, 1, run(8, 10))};
    EXPECT_EQ(cmds(), expected);
    for (int i = 0; i < 3; ++i) EXPECT_LE(expected[i].size(), 127u);
    EXPECT_EQ(file(kIp1), "");
    EXPECT_EQ(held("approute", 1, 1), "");
    EXPECT_THAT(logs(), IsEmpty());
}

TEST_F(AppRoute, ALongAddListGoesOutInWholeLines) {
    make_dir();
    std::string list;
    std::vector<std::string> items;
    for (int i = 0; i < 80; ++i) {
        items.push_back("host" + std::to_string(i) + ".example.com");
        list += (i ? "," : "") + items.back();
    }
    ASSERT_GT(add(1, 2, list).size(), 1023u);
    Text t(list);
    qvstest::CaptureFd out(1);
    EXPECT_EQ(approute_add_route_domainlist(1, t.get()), 0);
    EXPECT_EQ(out.text(), "");
    // Two ADD_DATA lines, each at most 1023 characters, the first as full as
    // whole items allow, together every item once in order.
    const std::vector<std::string> c = cmds();
    ASSERT_EQ(c.size(), 2u);
    const std::string head = "echo ADD_DATA index:1 type:2 list:", tail = " > /proc/approute/rule";
    std::string joined;
    for (const std::string &line : c) {
        EXPECT_LE(line.size(), 1023u);
        ASSERT_EQ(line.rfind(head, 0), 0u);
        ASSERT_EQ(line.substr(line.size() - tail.size()), tail);
        joined += (joined.empty() ? "" : ",") + line.substr(head.size(), line.size() - head.size() - tail.size());
    }
    EXPECT_EQ(joined, list);
    const std::string second_first = steertest::split(c[1].substr(head.size()), ',')[0];
    EXPECT_GT(c[0].size() + 1 + second_first.size(), 1023u);
    std::string stored;
    for (const std::string &i : items) stored += i + "\n";
    EXPECT_EQ(file(kDomain1), stored);
    EXPECT_EQ(held("approute", 1, 2), list);
}

TEST_F(AppRoute, AnItemTooLongForADeleteLineIsStillDeletedFromTheFile) {
    make_dir();
    // Stored through the add (1024-byte line), too long for a DEL_DATA line.
    const std::string longer = std::string(90, 'd') + ".example";
    seed(approute_add_route_domain, 1, {"a.com", longer, "b.com"});
    Text t("a.com," + longer + ",b.com");
    EXPECT_EQ(approute_del_route_domainlist(1, t.get()), 0);
    EXPECT_EQ(file(kDomain1), "");
    EXPECT_THAT(cmds(), ElementsAre(del(1, 2, "a.com"), del(1, 2, "b.com")));
    auto l = logs();
    ASSERT_EQ(l.size(), 1u);
    EXPECT_EQ(l[0].func, "approute_del_route_domainlist");
    EXPECT_EQ(l[0].level, 1);
    EXPECT_EQ(l[0].message, "refused text too long for its command line [" + longer + "]\n");
    // The module still holds it until the next reload brings it in step.
    EXPECT_EQ(held("approute", 1, 2), longer);
    EXPECT_EQ(approute_reload_route(1), 0);
    EXPECT_EQ(held("approute", 1, 2), "");
}

TEST_F(AppRoute, TheSingleDeleteOfATooLongItemDeletesTheLine) {
    make_dir();
    const std::string longer = std::string(90, 'd') + ".example";
    seed(approute_add_route_domain, 1, {longer, "b.com"});
    Text t(longer);
    EXPECT_EQ(approute_del_route_domain(1, t.get()), 0);
    EXPECT_EQ(file(kDomain1), "b.com\n");
    EXPECT_THAT(cmds(), IsEmpty());
    ASSERT_EQ(logs().size(), 1u);
    EXPECT_EQ(logs()[0].func, "approute_del_route_domain");
}

TEST_F(AppRoute, AnAddItemTooLongForALineOfItsOwnIsRefused) {
    make_dir();
    const std::string huge(1000, 'h');
    Text t("a.com," + huge + ",b.com");
    EXPECT_EQ(approute_add_route_domainlist(1, t.get()), -1);
    EXPECT_EQ(t.str(), "a.com," + huge + ",b.com");
    EXPECT_THAT(cmds(), IsEmpty());
    EXPECT_FALSE(qvstest::exists(kDomain1));
    ASSERT_EQ(logs().size(), 1u);
    EXPECT_EQ(logs()[0].func, "approute_add_route_domainlist");
    EXPECT_EQ(logs()[0].message, "refused text too long for its command line [" + huge + "]\n");
}

TEST_F(AppRoute, AStoredDomainTooLongForADeleteLineStillMovesToTheEnd) {
    make_dir();
    const std::string longer = std::string(90, 'd') + ".example";
    seed(approute_add_route_domain, 1, {longer, "b.com"});
    Text t(longer);
    EXPECT_EQ(approute_add_route_domainlist(1, t.get()), 0);
    EXPECT_EQ(file(kDomain1), "b.com\n" + longer + "\n");
    EXPECT_THAT(cmds(), ElementsAre(add(1, 2, longer), add(1, 2, longer)));
    ASSERT_EQ(logs().size(), 1u);
    EXPECT_EQ(logs()[0].func, "approute_del_route_domain");
    EXPECT_EQ(held("approute", 1, 2), longer + ",b.com");
}

TEST_F(AppRoute, DeleteListOnAMissingDirectoryCreatesItAndReturns) {
    Text list("a,b");
    EXPECT_EQ(approute_del_route_iplist(1, list.get()), 0);
    EXPECT_TRUE(dir_exists());
    EXPECT_THAT(cmds(), IsEmpty());
    EXPECT_EQ(list.str(), "a,b");
}

TEST_F(AppRoute, DispatchersCallTheListFunctionOfTheType) {
    make_dir();
    Text ip("1.1.1.1"), dom("a.com"), mac("AA:BB:CC:DD:EE:FF");
    EXPECT_EQ(approute_add_route_list(1, 0, ip.get()), 0);
    EXPECT_EQ(approute_add_route_list(1, 1, dom.get()), 0);
    EXPECT_EQ(approute_add_route_list(1, 2, mac.get()), 0);
    EXPECT_EQ(file(kIp1), "1.1.1.1\n");
    EXPECT_EQ(file(kDomain1), "a.com\n");
    EXPECT_EQ(file(kMac1), "AA:BB:CC:DD:EE:FF\n");
    EXPECT_THAT(cmds(), ElementsAre(add(1, 1, "1.1.1.1"), add(1, 2, "a.com"), add(1, 3, "aa:bb:cc:dd:ee:ff")));
    clear_journal();
    Text ip2("1.1.1.1"), dom2("a.com"), mac2("AA:BB:CC:DD:EE:FF");
    EXPECT_EQ(approute_del_route_list(1, 0, ip2.get()), 0);
    EXPECT_EQ(approute_del_route_list(1, 1, dom2.get()), 0);
    EXPECT_EQ(approute_del_route_list(1, 2, mac2.get()), 0);
    EXPECT_THAT(cmds(), ElementsAre(del(1, 1, "1.1.1.1"), del(1, 2, "a.com"),
                                    del(1, 3, "aa:bb:cc:dd:ee:ff")));
    for (int t = 1; t <= 3; ++t) EXPECT_EQ(held("approute", 1, t), "");
}

TEST_F(AppRoute, DispatchersIgnoreAnUnknownTypeAndFailures) {
    Text list("1.1.1.1");
    EXPECT_EQ(approute_add_route_list(1, 3, list.get()), 0);
    EXPECT_EQ(approute_del_route_list(1, 3, list.get()), 0);
    EXPECT_FALSE(dir_exists());
    EXPECT_THAT(cmds(), IsEmpty());
    EXPECT_EQ(list.str(), "1.1.1.1");
    // A failing list function still gives 0.
    make_dir();
    qvstest::run("mkdir " + kIp1);
    EXPECT_EQ(approute_add_route_list(1, 0, list.get()), 0);
    EXPECT_EQ(logs().size(), 1u);
}

// ---- whole lists, reload, listing ----------------------------------------

TEST_F(AppRoute, SetRouteAllReplacesFileAndModule) {
    make_dir();
    seed(approute_add_route_ip, 1, {"9.9.9.9"});
    Text list("10.0.0.1,,10.0.0.2");
    EXPECT_EQ(approute_set_route_all(1, 0, list.get()), 0);
    EXPECT_THAT(cmds(), ElementsAre(clr(1, 1), add(1, 1, "10.0.0.1,,10.0.0.2")));
    EXPECT_EQ(file(kIp1), "10.0.0.1\n10.0.0.2\n");
    EXPECT_EQ(held("approute", 1, 1), "10.0.0.1,10.0.0.2");
    clear_journal();
    Text dom("a.com");
    EXPECT_EQ(approute_set_route_all(1, 1, dom.get()), 0);
    EXPECT_THAT(cmds(), ElementsAre(clr(1, 2), add(1, 2, "a.com")));
    EXPECT_EQ(file(kDomain1), "a.com\n");
}

TEST_F(AppRoute, SetRouteAllMacSendsLowerCaseWithoutRewritingDashes) {
    make_dir();
    Text list("AA-BB-CC-DD-EE-FF,11:22:33:44:55:6A");
    EXPECT_EQ(approute_set_route_all(2, 2, list.get()), 0);
    EXPECT_THAT(cmds(), ElementsAre(clr(2, 3), add(2, 3, "aa-bb-cc-dd-ee-ff,11:22:33:44:55:6a")));
    EXPECT_EQ(file(kDir + "/approute_mac2"), "AA-BB-CC-DD-EE-FF\n11:22:33:44:55:6A\n");
    EXPECT_EQ(held("approute", 2, 3), "aa-bb-cc-dd-ee-ff,11:22:33:44:55:6a");
}

TEST_F(AppRoute, SetRouteAllWithAnEmptyList) {
    make_dir();
    seed(approute_add_route_ip, 1, {"9.9.9.9"});
    Text list("");
    EXPECT_EQ(approute_set_route_all(1, 0, list.get()), 0);
    EXPECT_THAT(cmds(), ElementsAre(clr(1, 1), add(1, 1, "")));
    EXPECT_EQ(file(kIp1), "");
    EXPECT_EQ(held("approute", 1, 1), "");
}

TEST_F(AppRoute, SetRouteAllRefusesAnUnknownTypeBeforeAnyCommand) {
    Text list("10.0.0.1");
    EXPECT_EQ(approute_set_route_all(1, 3, list.get()), -1);
    EXPECT_THAT(cmds(), IsEmpty());
    EXPECT_TRUE(dir_exists());  // the directory step came first
    EXPECT_EQ(list.str(), "10.0.0.1");
}

TEST_F(AppRoute, SetRouteAllCreatesAMissingDirectoryAndGoesOn) {
    Text list("a.com,b.com");
    EXPECT_EQ(approute_set_route_all(1, 1, list.get()), 0);
    EXPECT_EQ(file(kDomain1), "a.com\nb.com\n");
    EXPECT_THAT(cmds(), ElementsAre(clr(1, 2), add(1, 2, "a.com,b.com")));
}

TEST_F(AppRoute, SetRouteAllFileFailureLeavesTheModuleAhead) {
    make_dir();
    qvstest::run("mkdir " + kIp1);
    Text list("10.0.0.1");
    EXPECT_EQ(approute_set_route_all(1, 0, list.get()), -1);
    EXPECT_THAT(cmds(), ElementsAre(clr(1, 1), add(1, 1, "10.0.0.1")));
    EXPECT_EQ(held("approute", 1, 1), "10.0.0.1");
    EXPECT_THAT(logs(), IsEmpty());
}

TEST_F(AppRoute, SetRouteAllSendsALongListInWholeLines) {
    make_dir();
    std::string list, stored;
    for (int i = 0; i < 100; ++i) {
        const std::string ip = "10.1." + std::to_string(i) + ".100";
        list += (i ? "," : "") + ip;
        stored += ip + "\n";
    }
    ASSERT_GT(add(1, 1, list).size(), 1023u);
    Text t(list);
    EXPECT_EQ(approute_set_route_all(1, 0, t.get()), 0);
    const std::vector<std::string> c = cmds();
    ASSERT_EQ(c.size(), 3u);
    EXPECT_EQ(c[0], clr(1, 1));
    for (const std::string &line : c) EXPECT_LE(line.size(), 1023u);
    EXPECT_EQ(file(kIp1), stored);
    EXPECT_EQ(held("approute", 1, 1), list);
}

TEST_F(AppRoute, SetRouteAllMacListLongerThanItsCopyGoesOutInWholeLines) {
    make_dir();
    std::string list;
    for (int i = 0; i < 40; ++i) {
        char mac[18];
        std::snprintf(mac, sizeof mac, "AA:BB:CC:DD:EE:%02X", i);
        list += (i ? "," : "") + std::string(mac);
    }
    std::string lower;
    for (char c : list) lower.push_back(static_cast<char>(std::tolower(c)));
    Text t(list);
    EXPECT_EQ(approute_set_route_all(1, 2, t.get()), 0);
    // 32 MACs (575 characters) fill the 576 of the copy; 8 more follow.
    EXPECT_THAT(cmds(), ElementsAre(clr(1, 3), add(1, 3, lower.substr(0, 575)), add(1, 3, lower.substr(576))));
    EXPECT_EQ(held("approute", 1, 3), lower);
}

TEST_F(AppRoute, ReloadReplaysTheFilesIntoTheModule) {
    make_dir();
    qvstest::write_file(kIp1, "10.0.0.1\n10.0.0.2\n");
    qvstest::write_file(kDomain1, "a.com\n");
    qvstest::write_file(kMac1, "AA-BB-CC-DD-EE-FF\n11:22:33:44:55:66\n");
    EXPECT_EQ(approute_reload_route(1), 0);
    EXPECT_THAT(cmds(), ElementsAre(clr(1, 1), add(1, 1, "10.0.0.1"), add(1, 1, "10.0.0.2"), clr(1, 2),
                                    add(1, 2, "a.com"), clr(1, 3), add(1, 3, "aa:bb:cc:dd:ee:ff"),
                                    add(1, 3, "11:22:33:44:55:66")));
    EXPECT_EQ(held("approute", 1, 1), "10.0.0.1,10.0.0.2");
    EXPECT_EQ(held("approute", 1, 2), "a.com");
    EXPECT_EQ(held("approute", 1, 3), "aa:bb:cc:dd:ee:ff,11:22:33:44:55:66");
    EXPECT_EQ(file(kMac1), "AA-BB-CC-DD-EE-FF\n11:22:33:44:55:66\n");
}

TEST_F(AppRoute, ReloadAfterARestartRestoresTheModule) {
    make_dir();
    seed(approute_add_route_ip, 4, {"10.0.0.1"});
    seed(approute_add_route_domain, 4, {"a.com", "b.com"});
    Text stale("x.com");
    ASSERT_EQ(approute_add_route_domain(4, stale.get()), 0);
    Text stale2("x.com");
    ASSERT_EQ(approute_del_route_domain(4, stale2.get()), 0);
    ASSERT_EQ(qvsim_reset(), 0);  // the gateway restarts: the module is empty
    EXPECT_EQ(held("approute", 4, 1), "");
    EXPECT_EQ(approute_reload_route(4), 0);
    EXPECT_EQ(held("approute", 4, 1), "10.0.0.1");
    EXPECT_EQ(held("approute", 4, 2), "a.com,b.com");
    EXPECT_EQ(held("approute", 4, 3), "");
}

TEST_F(AppRoute, ReloadClearsEvenWhenAFileIsMissing) {
    make_dir();
    qvstest::write_file(kDomain1, "a.com\n\n");
    EXPECT_EQ(approute_reload_route(1), 0);
    EXPECT_THAT(cmds(), ElementsAre(clr(1, 1), clr(1, 2), add(1, 2, "a.com"), add(1, 2, ""), clr(1, 3)));
}

TEST_F(AppRoute, ReloadReadsLinesIn511BytePieces) {
    make_dir();
    std::string long_line(600, 'a');
    qvstest::write_file(kDomain1, long_line + "\n");
    qvstest::CaptureFd out(1);
    EXPECT_EQ(approute_reload_route(1), 0);
    out.text();
    auto lines = cmds();
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[2], add(1, 2, std::string(511, 'a')));
    EXPECT_EQ(lines[3], add(1, 2, std::string(89, 'a')));
}

TEST_F(AppRoute, ReloadSkipsStoredLinesThatWouldRunCommands) {
    make_dir();
    qvstest::write_file(kIp1, "10.0.0.1\n10.0.0.2;reboot\n10.0.0.3\n");
    EXPECT_EQ(approute_reload_route(1), 0);
    EXPECT_THAT(cmds(), ElementsAre(clr(1, 1), add(1, 1, "10.0.0.1"), add(1, 1, "10.0.0.3"), clr(1, 2), clr(1, 3)));
    auto l = logs();
    ASSERT_EQ(l.size(), 1u);
    EXPECT_EQ(l[0].level, 1);
}

TEST_F(AppRoute, ReloadOnAMissingDirectoryCreatesItAndReturns) {
    EXPECT_EQ(approute_reload_route(1), 0);
    EXPECT_TRUE(dir_exists());
    EXPECT_THAT(cmds(), IsEmpty());
}

TEST_F(AppRoute, GetRouteAllJoinsWithCommas) {
    make_dir();
    qvstest::write_file(kIp1, "10.0.0.1 first\n10.0.0.2\n\n10.0.0.3\ttab\n10.0.0.4");
    char out[128];
    std::memset(out, 'x', sizeof out);
    EXPECT_EQ(approute_get_route_all(1, 0, out, sizeof out), 5);
    EXPECT_STREQ(out, "10.0.0.1,10.0.0.2,,10.0.0.3,10.0.0.4");
    EXPECT_THAT(cmds(), IsEmpty());
}

TEST_F(AppRoute, GetRouteAllSkipsWhatDoesNotFit) {
    make_dir();
    qvstest::write_file(kDomain1, "long.example.com\na.com\nb.com\n");
    char out[13] = "xxxxxxxxxxxx";
    // 5 + 0 + 2 < 13, 5 + 5 + 2 < 13; the long one never fits.
    EXPECT_EQ(approute_get_route_all(1, 1, out, sizeof out), 2);
    EXPECT_STREQ(out, "a.com,b.com");
    char small[7] = "xxxxxx";
    EXPECT_EQ(approute_get_route_all(1, 1, small, sizeof small), 0);
    EXPECT_STREQ(small, "");
}

TEST_F(AppRoute, GetRouteAllResults) {
    char out[32] = "untouched";
    // Missing directory: created, 0, out untouched.
    EXPECT_EQ(approute_get_route_all(1, 0, out, sizeof out), 0);
    EXPECT_STREQ(out, "untouched");
    EXPECT_TRUE(dir_exists());
    EXPECT_EQ(approute_get_route_all(1, 3, out, sizeof out), -1);
    EXPECT_STREQ(out, "untouched");
    EXPECT_EQ(approute_get_route_all(1, 0, nullptr, 32), -1);
    EXPECT_EQ(approute_get_route_all(1, 0, out, 0), -1);
    EXPECT_EQ(approute_get_route_all(1, 0, out, -1), -1);
    EXPECT_STREQ(out, "untouched");
    // Missing file: -1 with out emptied.
    EXPECT_EQ(approute_get_route_all(1, 2, out, sizeof out), -1);
    EXPECT_STREQ(out, "");
    qvstest::write_file(kMac1, "AA-BB-CC-DD-EE-FF\n");
    EXPECT_EQ(approute_get_route_all(1, 2, out, sizeof out), 1);
    EXPECT_STREQ(out, "AA-BB-CC-DD-EE-FF");
}

TEST_F(AppRoute, GetRouteCountCountsLines) {
    make_dir();
    qvstest::write_file(kIp1, "a\nb\n\nc");
    qvstest::write_file(kDomain1, std::string(1500, 'd') + "\n");
    EXPECT_EQ(approute_get_route_count(1, 0), 4);
    EXPECT_EQ(approute_get_route_count(1, 1), 2);  // a long line is read in two pieces
    EXPECT_EQ(approute_get_route_count(1, 2), 0);  // no file
    qvstest::write_file(kDir + "/approute_ip3", "x\n");
    EXPECT_EQ(approute_get_route_count(1, 3), 0);
    EXPECT_EQ(approute_get_route_count(1, -1), 0);
}

TEST_F(AppRoute, GetRouteCountDoesNotCreateTheDirectory) {
    EXPECT_EQ(approute_get_route_count(1, 0), 0);
    EXPECT_EQ(approute_get_route_count(1, 3), 0);
    EXPECT_FALSE(dir_exists());
    EXPECT_THAT(logs(), IsEmpty());
}

// ---- refused text -------------------------------------------------------

TEST_F(AppRoute, TextThatWouldRunCommandsIsRefused) {
    int (*item_fns[])(int, char *) = {
        approute_add_route_ip,       approute_add_route_domain,     approute_add_route_mac,
        approute_del_route_ip,       approute_del_route_domain,     approute_del_route_mac,
        approute_add_route_iplist,   approute_add_route_domainlist, approute_add_route_maclist,
        approute_del_route_iplist,   approute_del_route_domainlist, approute_del_route_maclist,
    };
    const char *bad[] = {"10.0.0.1;reboot", "a.com && reboot", "$(reboot)", "`reboot`", "a|b", "a > /tmp/x",
                         "a\nreboot", "a'b", "a\"b", "a#b", "a\\b", "(a)", "a\r"};
    std::size_t refusals = 0;
    for (auto fn : item_fns) {
        for (const char *b : bad) {
            Text t(b);
            EXPECT_EQ(fn(1, t.get()), -1) << b;
            EXPECT_EQ(t.str(), b);
            ++refusals;
        }
        EXPECT_EQ(fn(1, nullptr), -1);
    }
    for (unsigned type = 0; type < 3; ++type) {
        for (const char *b : bad) {
            Text t(b);
            EXPECT_EQ(approute_set_route_all(1, type, t.get()), -1) << b;
            ++refusals;
            EXPECT_EQ(approute_add_route_list(1, type, t.get()), 0);
            EXPECT_EQ(approute_del_route_list(1, type, t.get()), 0);
            refusals += 2;
        }
        // The whole list goes on the command line as it is: no line end.
        Text end("a.com\n");
        EXPECT_EQ(approute_set_route_all(1, type, end.get()), -1);
        ++refusals;
        EXPECT_EQ(approute_set_route_all(1, type, nullptr), -1);
    }
    EXPECT_FALSE(dir_exists());
    EXPECT_THAT(cmds(), IsEmpty());
    auto l = logs();
    EXPECT_EQ(l.size(), refusals);
    for (const auto &entry : l) EXPECT_EQ(entry.level, 1);
}

}  // namespace
