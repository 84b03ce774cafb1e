// SPDX-License-Identifier: MIT
// Application filter lists: the one-line list files, the command lines sent
// to the filter module and what the simulated module holds afterwards.
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

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

const std::string kDir = "/userconfig/config/appfilter";
const std::string kIp1 = kDir + "/appfilter_ip1";
const std::string kDomain1 = kDir + "/appfilter_domain1";
const std::string kMac1 = kDir + "/appfilter_mac1";

std::string add(int n, int type, const std::string &item) {
    return "echo ADD_DATA index:" + std::to_string(n) + " type:" + std::to_string(type) + " list:" + item +
           " > /proc/appfilter/rule";
}
std::string clr(int n, int type) {
    return "echo CLR_DATA index:" + std::to_string(n) + " type:" + std::to_string(type) + " > /proc/appfilter/rule";
}

std::vector<std::string> cmds() {
    bool by_dosystem = false;
    std::vector<std::string> lines = command_lines("libqv_dosystem", &by_dosystem);
    EXPECT_TRUE(by_dosystem) << "every command goes through libqv_dosystem";
    return lines;
}

std::string file(const std::string &path) { return qvstest::read_file(path); }
bool dir_exists() { return qvstest::exists(kDir); }

class AppFilter : public ::testing::Test {
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
    // Stores a list and fills the module through the library.
    static void seed(int (*fn)(int, char *), int n, const std::string &list) {
        Text t(list);
        ASSERT_EQ(fn(n, t.get()), 0);
        clear_journal();
    }
};

// ---- adding -------------------------------------------------------------

TEST_F(AppFilter, AddToAMissingFileCreatesIt) {
    make_dir();
    ASSERT_FALSE(qvstest::exists(kIp1));
    Text list("10.0.0.1,10.0.0.2");
    EXPECT_EQ(appfilter_add_route_iplist(1, list.get()), 0);
    EXPECT_EQ(file(kIp1), "10.0.0.1,10.0.0.2");
    EXPECT_THAT(cmds(), ElementsAre(clr(1, 1), add(1, 1, "10.0.0.1"), add(1, 1, "10.0.0.2")));
    EXPECT_EQ(held("appfilter", 1, 1), "10.0.0.1,10.0.0.2");
    EXPECT_EQ(list.str(), "10.0.0.1");  // split in place
}

TEST_F(AppFilter, AddAppendsToTheStoredLine) {
    make_dir();
    seed(appfilter_add_route_domainlist, 2, "a.com");
    Text list(",b.com,,c.com,");
    EXPECT_EQ(appfilter_add_route_domainlist(2, list.get()), 0);
    EXPECT_EQ(file(kDir + "/appfilter_domain2"), "a.com,b.com,c.com");
    EXPECT_THAT(cmds(), ElementsAre(clr(2, 2), add(2, 2, "a.com"), add(2, 2, "b.com"), add(2, 2, "c.com")));
    EXPECT_EQ(held("appfilter", 2, 2), "a.com,b.com,c.com");
}

TEST_F(AppFilter, AnEmptyListRewritesAndReplaysTheStoredOne) {
    make_dir();
    seed(appfilter_add_route_iplist, 0, "10.0.0.1");
    Text list(",,");
    EXPECT_EQ(appfilter_add_route_iplist(0, list.get()), 0);
    EXPECT_EQ(file(kDir + "/appfilter_ip0"), "10.0.0.1");
    EXPECT_THAT(cmds(), ElementsAre(clr(0, 1), add(0, 1, "10.0.0.1")));
}

TEST_F(AppFilter, AddMacKeepsItemsAsGiven) {
    make_dir();
    Text list("AA-BB-CC-DD-EE-FF,11:22:33:44:55:66");
    EXPECT_EQ(appfilter_add_route_maclist(1, list.get()), 0);
    EXPECT_EQ(file(kMac1), "AA-BB-CC-DD-EE-FF,11:22:33:44:55:66");
    EXPECT_THAT(cmds(), ElementsAre(clr(1, 3), add(1, 3, "AA-BB-CC-DD-EE-FF"), add(1, 3, "11:22:33:44:55:66")));
    EXPECT_EQ(held("appfilter", 1, 3), "AA-BB-CC-DD-EE-FF,11:22:33:44:55:66");
}

TEST_F(AppFilter, AddingASubstringOfAStoredItemChangesNothingButRefillsTheModule) {
    make_dir();
    seed(appfilter_add_route_iplist, 1, "10.0.0.12");
    Text list("10.0.0.1");
    EXPECT_EQ(appfilter_add_route_iplist(1, list.get()), 0);
    EXPECT_EQ(file(kIp1), "10.0.0.12");
    EXPECT_THAT(cmds(), ElementsAre(clr(1, 1), add(1, 1, "10.0.0.12")));
    EXPECT_EQ(held("appfilter", 1, 1), "10.0.0.12");
}

TEST_F(AppFilter, AddCreatesAMissingDirectoryAndGoesOn) {
    ASSERT_FALSE(dir_exists());
    Text list("a.com");
    EXPECT_EQ(appfilter_add_route_domainlist(1, list.get()), 0);
    struct stat st {};
    ASSERT_EQ(stat(kDir.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0755u);
    EXPECT_EQ(file(kDomain1), "a.com");
    EXPECT_THAT(cmds(), ElementsAre(clr(1, 2), add(1, 2, "a.com")));
}

TEST_F(AppFilter, AddFailsWhenTheFileCannotBeWritten) {
    make_dir();
    seed(appfilter_add_route_iplist, 1, "10.0.0.1");
    qvstest::run("rm " + kIp1 + " && mkdir " + kIp1);
    Text list("10.0.0.2");
    EXPECT_EQ(appfilter_add_route_iplist(1, list.get()), -1);
    EXPECT_THAT(cmds(), IsEmpty());
    EXPECT_EQ(held("appfilter", 1, 1), "10.0.0.1");  // the module keeps its list
    auto l = logs();
    ASSERT_EQ(l.size(), 1u);
    EXPECT_EQ(l[0].func, "appfilter_add_route_iplist");
    EXPECT_EQ(l[0].level, 1);
    EXPECT_EQ(l[0].message, "open file " + kIp1 + " failed.\n");
}

TEST_F(AppFilter, ReadOnlyUserconfigFailsAndKeepsTheFile) {
    make_dir();
    seed(appfilter_add_route_iplist, 1, "10.0.0.1,10.0.0.2");
    ASSERT_TRUE(steertest::userconfig_read_only());
    Text a("10.0.0.3"), d("10.0.0.1");
    EXPECT_EQ(appfilter_add_route_iplist(1, a.get()), -1);
    EXPECT_EQ(appfilter_del_route_iplist(1, d.get()), -1);
    EXPECT_EQ(appfilter_flush_route_ip(1), -1);
    char out[64] = "untouched";
    EXPECT_EQ(appfilter_get_route_list(1, 0, out, sizeof out), -1);
    EXPECT_STREQ(out, "untouched");
    EXPECT_EQ(file(kIp1), "10.0.0.1,10.0.0.2");
    EXPECT_THAT(cmds(), IsEmpty());
    EXPECT_EQ(held("appfilter", 1, 1), "10.0.0.1,10.0.0.2");
    auto l = logs();
    ASSERT_EQ(l.size(), 3u);
    const char *funcs[] = {"appfilter_add_route_iplist", "appfilter_del_route_iplist", "appfilter_flush_route_ip"};
    for (std::size_t i = 0; i < l.size(); ++i) {
        EXPECT_EQ(l[i].func, funcs[i]);
        EXPECT_EQ(l[i].level, 1);
        EXPECT_EQ(l[i].message, "creat appfilter dir error.\n");
    }
    // Replaying the stored list needs no writable directory.
    EXPECT_EQ(update_data_list_to_appfilter_module(1, 0), 0);
    EXPECT_THAT(cmds(), ElementsAre(clr(1, 1), add(1, 1, "10.0.0.1"), add(1, 1, "10.0.0.2")));
}

TEST_F(AppFilter, WithoutUserconfigConfigEveryDirectoryStepFails) {
    // The directory is made with one mkdir: a missing parent is not created.
    ASSERT_EQ(::rmdir("/userconfig/config"), 0);
    Text a("10.0.0.3"), d("10.0.0.1"), m("aa:bb:cc:dd:ee:ff");
    EXPECT_EQ(appfilter_add_route_iplist(1, a.get()), -1);
    EXPECT_EQ(appfilter_del_route_iplist(1, d.get()), -1);
    EXPECT_EQ(appfilter_flush_route_domain(1), -1);
    EXPECT_EQ(appfilter_add_route_list(1, 2, m.get()), -1);
    EXPECT_FALSE(qvstest::exists("/userconfig/config"));
    EXPECT_THAT(cmds(), IsEmpty());
    EXPECT_EQ(held("appfilter", 1, 1), "");
    auto l = logs();
    ASSERT_EQ(l.size(), 4u);
    const char *funcs[] = {"appfilter_add_route_iplist", "appfilter_del_route_iplist", "appfilter_flush_route_domain",
                           "appfilter_add_route_maclist"};  // the dispatcher hands over to it
    for (std::size_t i = 0; i < l.size(); ++i) {
        EXPECT_EQ(l[i].func, funcs[i]);
        EXPECT_EQ(l[i].level, 1);
        EXPECT_EQ(l[i].message, "creat appfilter dir error.\n");
    }
}

TEST_F(AppFilter, TheListStopsGrowingAt81919Characters) {
    make_dir();
    const std::string big(81900, 'x');
    qvstest::write_file(kDomain1, big);
    Text list("abcdefghijklmnopq,zz");  // 81900 + 17 fits; then 81918 + 2 does not
    qvstest::CaptureFd out(1);
    EXPECT_EQ(appfilter_add_route_domainlist(1, list.get()), 0);
    out.text();
    const std::string stored = file(kDomain1);
    EXPECT_EQ(stored.size(), 81918u);
    EXPECT_EQ(stored, big + ",abcdefghijklmnopq");
    // The stored 81900-character item would not fit its ADD_DATA line: the
    // replay skips it (logged) and sends the rest.
    EXPECT_THAT(cmds(), ElementsAre(clr(1, 2), add(1, 2, "abcdefghijklmnopq")));
    EXPECT_EQ(held("appfilter", 1, 2), "abcdefghijklmnopq");
    ASSERT_EQ(logs().size(), 1u);
    EXPECT_EQ(logs()[0].func, "update_data_list_to_appfilter_module");
    // (The platform logger keeps the start of so long a message.)
    EXPECT_EQ(logs()[0].message.rfind("refused text too long for its command line [xxxxxxxx", 0), 0u);
}

TEST_F(AppFilter, TheBoundIsInclusive) {
    make_dir();
    const std::string big(81910, 'x');
    qvstest::write_file(kIp1, big);
    Text exact("12345678");  // 81910 + 8 = 81918: appended, 81919 characters with its comma
    qvstest::CaptureFd out(1);
    EXPECT_EQ(appfilter_add_route_iplist(1, exact.get()), 0);
    EXPECT_EQ(file(kIp1), big + ",12345678");
    clear_journal();
    qvstest::write_file(kIp1, big);
    Text over("123456789");  // 81919: dropped without a message
    EXPECT_EQ(appfilter_add_route_iplist(1, over.get()), 0);
    out.text();
    EXPECT_EQ(file(kIp1), big);
    // Only the replay's refusal of the stored long item is logged.
    for (const auto &l : logs()) EXPECT_EQ(l.func, "update_data_list_to_appfilter_module");
}

TEST_F(AppFilter, OnlyTheFirstLineOfTheFileIsRead) {
    make_dir();
    qvstest::write_file(kIp1, "10.0.0.1\n10.0.0.2");
    Text list("10.0.0.3");
    EXPECT_EQ(appfilter_add_route_iplist(1, list.get()), 0);
    // The first line keeps its line end; the new item follows it.
    EXPECT_EQ(file(kIp1), "10.0.0.1\n,10.0.0.3");
    // Replayed, the first line is the one item "10.0.0.1\n", whose line end
    // would break the command line: it is not sent.
    EXPECT_THAT(cmds(), ElementsAre(clr(1, 1)));
    EXPECT_EQ(logs().size(), 1u);
}

TEST_F(AppFilter, AnItemWhoseAddLineWouldPass127CharactersIsRefused) {
    make_dir();
    const std::string item = "www." + std::string(100, 'a') + ".example.com";
    const std::string full = add(1, 2, item);
    ASSERT_GT(full.size(), 127u);
    Text list("short.com," + item);
    qvstest::CaptureFd out(1);
    EXPECT_EQ(appfilter_add_route_domainlist(1, list.get()), -1);
    EXPECT_EQ(out.text(), "");
    EXPECT_FALSE(qvstest::exists(kDomain1));
    EXPECT_THAT(cmds(), IsEmpty());
    EXPECT_EQ(held("appfilter", 1, 2), "");
    ASSERT_EQ(logs().size(), 1u);
    EXPECT_EQ(logs()[0].func, "appfilter_add_route_domainlist");
    // The log line names the item that does not fit.
    EXPECT_EQ(logs()[0].message, "refused text too long for its command line [" + item + "]\n");
}

// ---- deleting -----------------------------------------------------------

TEST_F(AppFilter, RemovingTheOnlyItemLeavesAnEmptyFile) {
    make_dir();
    seed(appfilter_add_route_iplist, 1, "10.0.0.1");
    Text list("10.0.0.1");
    EXPECT_EQ(appfilter_del_route_iplist(1, list.get()), 0);
    EXPECT_TRUE(qvstest::exists(kIp1));
    EXPECT_EQ(file(kIp1), "");
    EXPECT_THAT(cmds(), ElementsAre(clr(1, 1)));
    EXPECT_EQ(held("appfilter", 1, 1), "");
}

TEST_F(AppFilter, RemovingTheLastItemCutsTheCommaBeforeIt) {
    make_dir();
    seed(appfilter_add_route_iplist, 1, "10.0.0.1,10.0.0.2,10.0.0.3");
    Text list("10.0.0.3");
    EXPECT_EQ(appfilter_del_route_iplist(1, list.get()), 0);
    EXPECT_EQ(file(kIp1), "10.0.0.1,10.0.0.2");
    EXPECT_THAT(cmds(), ElementsAre(clr(1, 1), add(1, 1, "10.0.0.1"), add(1, 1, "10.0.0.2")));
    EXPECT_EQ(held("appfilter", 1, 1), "10.0.0.1,10.0.0.2");
}

TEST_F(AppFilter, RemovingAMiddleItemRemovesTheCommaAfterIt) {
    make_dir();
    seed(appfilter_add_route_domainlist, 1, "a.com,b.com,c.com");
    Text list("b.com");
    EXPECT_EQ(appfilter_del_route_domainlist(1, list.get()), 0);
    EXPECT_EQ(file(kDomain1), "a.com,c.com");
    EXPECT_EQ(held("appfilter", 1, 2), "a.com,c.com");
}

TEST_F(AppFilter, RemovingTheFirstItem) {
    make_dir();
    seed(appfilter_add_route_maclist, 1, "aa:bb:cc:dd:ee:01,aa:bb:cc:dd:ee:02");
    Text list("aa:bb:cc:dd:ee:01");
    EXPECT_EQ(appfilter_del_route_maclist(1, list.get()), 0);
    EXPECT_EQ(file(kMac1), "aa:bb:cc:dd:ee:02");
    EXPECT_THAT(cmds(), ElementsAre(clr(1, 3), add(1, 3, "aa:bb:cc:dd:ee:02")));
}

TEST_F(AppFilter, RemovingSeveralItemsAndAnAbsentOne) {
    make_dir();
    seed(appfilter_add_route_iplist, 1, "1.1.1.1,2.2.2.2,3.3.3.3,4.4.4.4");
    Text list("4.4.4.4,9.9.9.9,1.1.1.1");
    EXPECT_EQ(appfilter_del_route_iplist(1, list.get()), 0);
    EXPECT_EQ(file(kIp1), "2.2.2.2,3.3.3.3");
    EXPECT_EQ(held("appfilter", 1, 1), "2.2.2.2,3.3.3.3");
}

TEST_F(AppFilter, RemovingBySubstringCutsIntoALongerItem) {
    make_dir();
    qvstest::write_file(kIp1, "10.0.0.12,10.0.0.1");
    Text list("10.0.0.1");
    EXPECT_EQ(appfilter_del_route_iplist(1, list.get()), 0);
    // The first occurrence is inside 10.0.0.12: it and the character after
    // it go, the separating comma stays.
    EXPECT_EQ(file(kIp1), ",10.0.0.1");
    EXPECT_THAT(cmds(), ElementsAre(clr(1, 1), add(1, 1, "10.0.0.1")));
    EXPECT_EQ(held("appfilter", 1, 1), "10.0.0.1");
}

TEST_F(AppFilter, DeleteFromAMissingFileSendsNothing) {
    make_dir();
    Text list("10.0.0.1");
    EXPECT_EQ(appfilter_del_route_iplist(1, list.get()), 0);
    EXPECT_FALSE(qvstest::exists(kIp1));
    EXPECT_THAT(cmds(), IsEmpty());
    EXPECT_THAT(logs(), IsEmpty());
}

TEST_F(AppFilter, DeleteCreatesAMissingDirectory) {
    Text list("a.com");
    EXPECT_EQ(appfilter_del_route_domainlist(1, list.get()), 0);
    EXPECT_TRUE(dir_exists());
    EXPECT_FALSE(qvstest::exists(kDomain1));
    EXPECT_THAT(cmds(), IsEmpty());
}

TEST_F(AppFilter, DeleteFailsWhenTheFileCannotBeWritten) {
    make_dir();
    qvstest::run("mkdir " + kMac1);  // opens for reading, not for writing
    Text list("aa:bb:cc:dd:ee:ff");
    EXPECT_EQ(appfilter_del_route_maclist(1, list.get()), -1);
    EXPECT_THAT(cmds(), IsEmpty());
    auto l = logs();
    ASSERT_EQ(l.size(), 1u);
    EXPECT_EQ(l[0].func, "appfilter_del_route_maclist");
    EXPECT_EQ(l[0].message, "open file " + kMac1 + " failed.\n");
}

// ---- flushing -----------------------------------------------------------

TEST_F(AppFilter, FlushSendsExactlyOneClear) {
    make_dir();
    seed(appfilter_add_route_iplist, 1, "10.0.0.1,10.0.0.2");
    seed(appfilter_add_route_domainlist, 1, "a.com");
    seed(appfilter_add_route_maclist, 1, "aa:bb:cc:dd:ee:ff");
    EXPECT_EQ(appfilter_flush_route_ip(1), 0);
    EXPECT_THAT(cmds(), ElementsAre(clr(1, 1)));
    clear_journal();
    EXPECT_EQ(appfilter_flush_route_domain(1), 0);
    EXPECT_THAT(cmds(), ElementsAre(clr(1, 2)));
    clear_journal();
    EXPECT_EQ(appfilter_flush_route_mac(1), 0);
    EXPECT_THAT(cmds(), ElementsAre(clr(1, 3)));
    for (const std::string &p : {kIp1, kDomain1, kMac1}) {
        EXPECT_TRUE(qvstest::exists(p));
        EXPECT_EQ(file(p), "");
    }
    for (int t = 1; t <= 3; ++t) EXPECT_EQ(held("appfilter", 1, t), "");
}

TEST_F(AppFilter, FlushCreatesAMissingDirectoryAndFile) {
    EXPECT_EQ(appfilter_flush_route_mac(4), 0);
    EXPECT_TRUE(qvstest::exists(kDir + "/appfilter_mac4"));
    EXPECT_THAT(cmds(), ElementsAre(clr(4, 3)));
}

TEST_F(AppFilter, FlushFailsWhenTheFileCannotBeWritten) {
    make_dir();
    qvstest::run("mkdir " + kDomain1);
    EXPECT_EQ(appfilter_flush_route_domain(1), -1);
    EXPECT_THAT(cmds(), IsEmpty());
    auto l = logs();
    ASSERT_EQ(l.size(), 1u);
    EXPECT_EQ(l[0].func, "appfilter_flush_route_domain");
    EXPECT_EQ(l[0].message, "open file " + kDomain1 + " failed.\n");
}

// ---- dispatchers --------------------------------------------------------

TEST_F(AppFilter, DispatchersCallTheFunctionOfTheType) {
    make_dir();
    Text ip("1.1.1.1"), dom("a.com"), mac("aa:bb:cc:dd:ee:ff");
    EXPECT_EQ(appfilter_add_route_list(1, 0, ip.get()), 0);
    EXPECT_EQ(appfilter_add_route_list(1, 1, dom.get()), 0);
    EXPECT_EQ(appfilter_add_route_list(1, 2, mac.get()), 0);
    EXPECT_EQ(file(kIp1), "1.1.1.1");
    EXPECT_EQ(file(kDomain1), "a.com");
    EXPECT_EQ(file(kMac1), "aa:bb:cc:dd:ee:ff");
    Text ip2("1.1.1.1"), dom2("a.com"), mac2("aa:bb:cc:dd:ee:ff");
    EXPECT_EQ(appfilter_del_route_list(1, 0, ip2.get()), 0);
    EXPECT_EQ(appfilter_del_route_list(1, 1, dom2.get()), 0);
    EXPECT_EQ(appfilter_del_route_list(1, 2, mac2.get()), 0);
    for (const std::string &p : {kIp1, kDomain1, kMac1}) EXPECT_EQ(file(p), "");
    seed(appfilter_add_route_iplist, 1, "1.1.1.1");
    EXPECT_EQ(appfilter_flush_route_list(1, 0), 0);
    EXPECT_EQ(appfilter_flush_route_list(1, 1), 0);
    EXPECT_EQ(appfilter_flush_route_list(1, 2), 0);
    EXPECT_THAT(cmds(), ElementsAre(clr(1, 1), clr(1, 2), clr(1, 3)));
}

TEST_F(AppFilter, DispatchersPassTheResultOn) {
    make_dir();
    qvstest::run("mkdir " + kIp1);
    Text ip("1.1.1.1");
    EXPECT_EQ(appfilter_add_route_list(1, 0, ip.get()), -1);
    Text ip2("1.1.1.1");
    EXPECT_EQ(appfilter_del_route_list(1, 0, ip2.get()), -1);
    EXPECT_EQ(appfilter_flush_route_list(1, 0), -1);
    Text bad("a;b");
    EXPECT_EQ(appfilter_add_route_list(1, 1, bad.get()), -1);
}

TEST_F(AppFilter, UnknownTypeDoesNothing) {
    Text list("1.1.1.1");
    EXPECT_EQ(appfilter_add_route_list(1, 3, list.get()), 0);
    EXPECT_EQ(appfilter_del_route_list(1, 3, list.get()), 0);
    EXPECT_EQ(appfilter_flush_route_list(1, 3), 0);
    EXPECT_EQ(list.str(), "1.1.1.1");
    EXPECT_FALSE(dir_exists());
    EXPECT_THAT(cmds(), IsEmpty());
}

// ---- module update and listing ------------------------------------------

TEST_F(AppFilter, UpdateReplaysTheStoredListAfterARestart) {
    make_dir();
    seed(appfilter_add_route_iplist, 3, "10.0.0.1,10.0.0.2");
    ASSERT_EQ(qvsim_reset(), 0);  // the gateway restarts: the module is empty
    EXPECT_EQ(held("appfilter", 3, 1), "");
    EXPECT_EQ(update_data_list_to_appfilter_module(3, 0), 0);
    EXPECT_THAT(cmds(), ElementsAre(clr(3, 1), add(3, 1, "10.0.0.1"), add(3, 1, "10.0.0.2")));
    EXPECT_EQ(held("appfilter", 3, 1), "10.0.0.1,10.0.0.2");
}

TEST_F(AppFilter, UpdateSkipsEmptyItems) {
    make_dir();
    qvstest::write_file(kMac1, ",aa,,bb,");
    EXPECT_EQ(update_data_list_to_appfilter_module(1, 2), 0);
    EXPECT_THAT(cmds(), ElementsAre(clr(1, 3), add(1, 3, "aa"), add(1, 3, "bb")));
}

TEST_F(AppFilter, UpdateOfAnEmptyListOnlyClears) {
    make_dir();
    qvstest::write_file(kDomain1, "");
    EXPECT_EQ(update_data_list_to_appfilter_module(1, 1), 0);
    EXPECT_THAT(cmds(), ElementsAre(clr(1, 2)));
}

TEST_F(AppFilter, UpdateFailsWithoutTheFile) {
    EXPECT_EQ(update_data_list_to_appfilter_module(1, 0), -1);
    EXPECT_EQ(update_data_list_to_appfilter_module(1, 3), -1);
    EXPECT_THAT(cmds(), IsEmpty());
    EXPECT_FALSE(dir_exists());
    auto l = logs();
    ASSERT_EQ(l.size(), 2u);
    EXPECT_EQ(l[0].func, "update_data_list_to_appfilter_module");
    EXPECT_EQ(l[0].level, 1);
    EXPECT_EQ(l[0].message, "open file " + kIp1 + " failed\n");
    EXPECT_EQ(l[1].message, "open file  failed\n");  // no path for another type
}

TEST_F(AppFilter, UpdateSkipsStoredItemsThatWouldRunCommands) {
    make_dir();
    qvstest::write_file(kIp1, "10.0.0.1,10.0.0.2;reboot,$(id),10.0.0.3");
    EXPECT_EQ(update_data_list_to_appfilter_module(1, 0), 0);
    EXPECT_THAT(cmds(), ElementsAre(clr(1, 1), add(1, 1, "10.0.0.1"), add(1, 1, "10.0.0.3")));
    EXPECT_EQ(logs().size(), 2u);
}

TEST_F(AppFilter, GetRouteListCopiesTheStoredLine) {
    make_dir();
    seed(appfilter_add_route_domainlist, 1, "a.com,b.com");
    char out[64];
    std::memset(out, 'x', sizeof out);
    EXPECT_EQ(appfilter_get_route_list(1, 1, out, sizeof out), 0);
    EXPECT_STREQ(out, "a.com,b.com");
    char small[5];
    EXPECT_EQ(appfilter_get_route_list(1, 1, small, sizeof small), 0);
    EXPECT_STREQ(small, "a.co");
    EXPECT_THAT(cmds(), IsEmpty());
}

TEST_F(AppFilter, GetRouteListLeavesOutUntouchedWithoutAFile) {
    make_dir();
    char out[16] = "untouched";
    EXPECT_EQ(appfilter_get_route_list(1, 0, out, sizeof out), 0);
    EXPECT_STREQ(out, "untouched");
    qvstest::write_file(kDir + "/appfilter_ip1", "x");
    EXPECT_EQ(appfilter_get_route_list(1, 3, out, sizeof out), 0);
    EXPECT_EQ(appfilter_get_route_list(1, -1, out, sizeof out), 0);
    EXPECT_STREQ(out, "untouched");
    qvstest::write_file(kMac1, "");  // an empty file reads nothing either
    EXPECT_EQ(appfilter_get_route_list(1, 2, out, sizeof out), 0);
    EXPECT_STREQ(out, "untouched");
    EXPECT_EQ(appfilter_get_route_list(1, 0, nullptr, 16), -1);
    EXPECT_EQ(appfilter_get_route_list(1, 0, out, 0), -1);
    EXPECT_EQ(appfilter_get_route_list(1, 0, out, -5), -1);
}

TEST_F(AppFilter, GetRouteListNeedsTheDirectoryAndDoesNotCreateIt) {
    char out[16] = "untouched";
    EXPECT_EQ(appfilter_get_route_list(1, 0, out, sizeof out), -1);
    EXPECT_STREQ(out, "untouched");
    EXPECT_FALSE(dir_exists());
    EXPECT_THAT(logs(), IsEmpty());
}

// ---- refused text and small stacks --------------------------------------

TEST_F(AppFilter, TextThatWouldRunCommandsIsRefused) {
    int (*fns[])(int, char *) = {appfilter_add_route_iplist, appfilter_add_route_domainlist,
                                 appfilter_add_route_maclist, appfilter_del_route_iplist,
                                 appfilter_del_route_domainlist, appfilter_del_route_maclist};
    const char *bad[] = {"10.0.0.1;reboot", "a.com,b.com && reboot", "$(reboot)", "`reboot`", "a|b",
                         "a > /tmp/x", "a\nreboot", "a.com\n", "a'b", "a\"b", "a#b", "a\\b", "(a)"};
    std::size_t refusals = 0;
    for (auto fn : fns) {
        for (const char *b : bad) {
            Text t(b);
            EXPECT_EQ(fn(1, t.get()), -1) << b;
            EXPECT_EQ(t.str(), b);
            ++refusals;
        }
        EXPECT_EQ(fn(1, nullptr), -1);
    }
    EXPECT_FALSE(dir_exists());
    EXPECT_THAT(cmds(), IsEmpty());
    auto l = logs();
    EXPECT_EQ(l.size(), refusals);
    for (const auto &entry : l) EXPECT_EQ(entry.level, 1);
}

// Callers run on small stacks: the 81920-byte list must not live there.
struct SmallStackCall {
    int result = -2;
    static void *run(void *arg) {
        auto *self = static_cast<SmallStackCall *>(arg);
        char list[] = "10.0.0.1,10.0.0.2";
        int a = appfilter_add_route_iplist(1, list);
        char del[] = "10.0.0.1";
        int d = appfilter_del_route_iplist(1, del);
        int u = update_data_list_to_appfilter_module(1, 0);
        self->result = a == 0 && d == 0 && u == 0 ? 0 : -1;
        return nullptr;
    }
};

TEST_F(AppFilter, WorksOnASmallThreadStack) {
    make_dir();
    pthread_attr_t attr;
    pthread_attr_init(&attr);
    const std::size_t stack = 64 * 1024;
    ASSERT_EQ(pthread_attr_setstacksize(&attr, stack), 0);
    SmallStackCall call;
    pthread_t t;
    ASSERT_EQ(pthread_create(&t, &attr, SmallStackCall::run, &call), 0);
    pthread_join(t, nullptr);
    pthread_attr_destroy(&attr);
    EXPECT_EQ(call.result, 0);
    EXPECT_EQ(file(kIp1), "10.0.0.2");
    EXPECT_EQ(held("appfilter", 1, 1), "10.0.0.2");
}

}  // namespace
