// SPDX-License-Identifier: MIT
// Command lines that would not fit their buffers are never run: the longest
// caller text that fits runs; one character more is refused with a level-1
// line before anything is written, except by the module deletes, which
// still delete from the file and leave out the module line (logged). No
// file appears anywhere else.
#include <sys/stat.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "hardening_env.hpp"
#include "qvs_utils.h"

using namespace hardtest;

namespace {

struct Row {
    const char *name;
    int (*call)(char *text);
    std::string prefix;  // the command line up to the text
    std::string suffix;  // the command line after the text
    std::size_t size;    // its buffer
    std::string file;    // the list file the call works on
    bool deletes;        // the text must be stored first (a delete)
    // A delete that still deletes the stored line when its module line
    // would not fit (the module's list deletes); others refuse.
    bool deletes_from_file = false;
};

int vpn_add_ip(char *t) { return qvvpn_add_route_ip(1, t); }
int vpn_del_ip(char *t) { return qvvpn_del_route_ip(1, t); }
int route_add_ip(char *t) { return approute_add_route_ip(1, t); }
int route_add_domain(char *t) { return approute_add_route_domain(1, t); }
int route_add_mac(char *t) { return approute_add_route_mac(1, t); }
int route_add_iplist(char *t) { return approute_add_route_iplist(1, t); }
int route_add_domainlist(char *t) { return approute_add_route_domainlist(1, t); }
int route_del_ip(char *t) { return approute_del_route_ip(1, t); }
int route_del_domain(char *t) { return approute_del_route_domain(1, t); }
int route_del_mac(char *t) { return approute_del_route_mac(1, t); }
int route_del_iplist(char *t) { return approute_del_route_iplist(1, t); }
int route_del_domainlist(char *t) { return approute_del_route_domainlist(1, t); }
int route_del_maclist(char *t) { return approute_del_route_maclist(1, t); }
int route_set_ip(char *t) { return approute_set_route_all(1, 0, t); }
int route_set_domain(char *t) { return approute_set_route_all(1, 1, t); }
int filter_add_ip(char *t) { return appfilter_add_route_iplist(1, t); }
int filter_add_domain(char *t) { return appfilter_add_route_domainlist(1, t); }
int filter_add_mac(char *t) { return appfilter_add_route_maclist(1, t); }

const std::string kRouteRule = " > /proc/approute/rule";
const std::string kFilterRule = " > /proc/appfilter/rule";

const std::vector<Row> &rows() {
    static const std::vector<Row> r = {
        {"qvvpn_add_route_ip", vpn_add_ip, "ipset add vpn_ip1 ", " 2> /dev/null", 128, kVpnDir + "/VPN_IP_1", false},
        {"qvvpn_del_route_ip", vpn_del_ip, "ipset del vpn_ip1 ", " 2> /dev/null", 128, kVpnDir + "/VPN_IP_1", true},
        {"approute_add_route_ip", route_add_ip, "echo ADD_DATA index:1 type:1 list:", kRouteRule, 1024,
         kRouteDir + "/approute_ip1", false},
        {"approute_add_route_domain", route_add_domain, "echo ADD_DATA index:1 type:2 list:", kRouteRule, 1024,
         kRouteDir + "/approute_domain1", false},
        {"approute_add_route_mac", route_add_mac, "echo ADD_DATA index:1 type:3 list:", kRouteRule, 1024,
         kRouteDir + "/approute_mac1", false},
        {"approute_add_route_iplist", route_add_iplist, "echo ADD_DATA index:1 type:1 list:", kRouteRule, 1024,
         kRouteDir + "/approute_ip1", false},
        {"approute_add_route_domainlist", route_add_domainlist, "echo ADD_DATA index:1 type:2 list:", kRouteRule, 1024,
         kRouteDir + "/approute_domain1", false},
        {"approute_del_route_ip", route_del_ip, "echo DEL_DATA index:1 type:1 list:", kRouteRule, 128,
         kRouteDir + "/approute_ip1", true, true},
        {"approute_del_route_domain", route_del_domain, "echo DEL_DATA index:1 type:2 list:", kRouteRule, 128,
         kRouteDir + "/approute_domain1", true, true},
        {"approute_del_route_mac", route_del_mac, "echo DEL_DATA index:1 type:3 list:", kRouteRule, 128,
         kRouteDir + "/approute_mac1", true, true},
        {"approute_del_route_iplist", route_del_iplist, "echo DEL_DATA index:1 type:1 list:", kRouteRule, 128,
         kRouteDir + "/approute_ip1", true, true},
        {"approute_del_route_domainlist", route_del_domainlist, "echo DEL_DATA index:1 type:2 list:", kRouteRule, 128,
         kRouteDir + "/approute_domain1", true, true},
        {"approute_del_route_maclist", route_del_maclist, "echo DEL_DATA index:1 type:3 list:", kRouteRule, 128,
         kRouteDir + "/approute_mac1", true, true},
        {"approute_set_route_all", route_set_ip, "echo ADD_DATA index:1 type:1 list:", kRouteRule, 1024,
         kRouteDir + "/approute_ip1", false},
        {"approute_set_route_all", route_set_domain, "echo ADD_DATA index:1 type:2 list:", kRouteRule, 1024,
         kRouteDir + "/approute_domain1", false},
        {"appfilter_add_route_iplist", filter_add_ip, "echo ADD_DATA index:1 type:1 list:", kFilterRule, 128,
         kFilterDir + "/appfilter_ip1", false},
        {"appfilter_add_route_domainlist", filter_add_domain, "echo ADD_DATA index:1 type:2 list:", kFilterRule, 128,
         kFilterDir + "/appfilter_domain1", false},
        {"appfilter_add_route_maclist", filter_add_mac, "echo ADD_DATA index:1 type:3 list:", kFilterRule, 128,
         kFilterDir + "/appfilter_mac1", false},
    };
    return r;
}

// Plain text of len characters with no refused character and no comma.
std::string plain(std::size_t len) {
    std::string out;
    for (std::size_t i = 0; i < len; ++i) out += static_cast<char>('0' + i % 10);
    return out;
}

class CommandLength : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(qvstest::in_sandbox());
        ASSERT_EQ(qvsim_reset(), 0);
        ::mkdir("/userconfig/config", 0755);
        for (const std::string &d : {kVpnDir, kRouteDir, kFilterDir}) ::mkdir(d.c_str(), 0755);
        root_ = dir_names("/");
    }
    void expect_no_stray_files(const Row &row) {
        EXPECT_EQ(dir_names("/"), root_) << "a file appeared at the root";
        for (const std::string &f : files_under("/userconfig"))
            EXPECT_EQ(f, row.file) << "a file appeared outside the list file";
    }
    std::set<std::string> root_;
};

TEST_F(CommandLength, TheLongestTextThatFitsRuns) {
    for (const Row &row : rows()) {
        const std::size_t len = row.size - 1 - row.prefix.size() - row.suffix.size();
        const std::string text = plain(len);
        SCOPED_TRACE(std::string(row.name) + " at " + std::to_string(len));
        if (row.deletes) qvstest::write_file(row.file, text + "\n");
        qvsim_journal_clear();
        Text t(text);
        EXPECT_EQ(row.call(t.get()), 0);
        const std::string line = row.prefix + text + row.suffix;
        ASSERT_EQ(line.size(), row.size - 1);
        bool ran = false;
        for (const std::string &c : commands()) ran = ran || c == line;
        EXPECT_TRUE(ran) << line;
        EXPECT_FALSE(logged(row.name, "refused text too long"));
        expect_no_stray_files(row);
        ::unlink(row.file.c_str());
    }
}

TEST_F(CommandLength, OneCharacterMoreIsRefusedBeforeAnythingIsDone) {
    int tested = 0;
    for (const Row &row : rows()) {
        if (row.deletes_from_file) continue;  // the next test
        const std::size_t len = row.size - row.prefix.size() - row.suffix.size();
        const std::string text = plain(len);
        SCOPED_TRACE(std::string(row.name) + " at " + std::to_string(len));
        const std::string old = row.deletes ? text + "\n" : "10.9.9.9\n";
        qvstest::write_file(row.file, old);
        qvsim_journal_clear();
        Text t(text);
        EXPECT_EQ(row.call(t.get()), -1);
        EXPECT_EQ(commands(), std::vector<std::string>{});
        EXPECT_TRUE(logged(row.name, "refused text too long for its command line [" + text + "]"));
        EXPECT_EQ(qvstest::read_file(row.file), old);
        expect_no_stray_files(row);
        ::unlink(row.file.c_str());
        ++tested;
    }
    EXPECT_EQ(tested, 12);
}

TEST_F(CommandLength, OneCharacterMoreStillDeletesFromTheFileWithoutItsModuleLine) {
    int tested = 0;
    for (const Row &row : rows()) {
        if (!row.deletes_from_file) continue;  // the test above
        const std::size_t len = row.size - row.prefix.size() - row.suffix.size();
        const std::string text = plain(len);
        SCOPED_TRACE(std::string(row.name) + " at " + std::to_string(len));
        qvstest::write_file(row.file, "10.9.9.9\n" + text + "\n");
        qvsim_journal_clear();
        Text t(text);
        EXPECT_EQ(row.call(t.get()), 0);
        // Only the line is deleted (by the library, no command): no module
        // line, cut or whole.
        EXPECT_EQ(commands(), std::vector<std::string>{});
        EXPECT_TRUE(logged(row.name, "refused text too long for its command line [" + text + "]"));
        EXPECT_EQ(qvstest::read_file(row.file), "10.9.9.9\n");
        expect_no_stray_files(row);
        ::unlink(row.file.c_str());
        ++tested;
    }
    EXPECT_EQ(tested, 6);
}

TEST_F(CommandLength, ARefusedItemOfAFilterListStopsTheWholeList) {
    const std::string item = plain(71);
    Text t("10.0.0.1," + item + ",10.0.0.2");
    EXPECT_EQ(appfilter_add_route_iplist(1, t.get()), -1);
    EXPECT_FALSE(qvstest::exists(kFilterDir + "/appfilter_ip1"));
    EXPECT_EQ(commands(), std::vector<std::string>{});
}

TEST_F(CommandLength, AVpnMacAlwaysFitsItsCommand) {
    // The ipset member is the colon form, at most 31 characters.
    std::string mac = "aa:" + plain(200);
    Text t(mac);
    EXPECT_EQ(qvvpn_add_route_mac(1, t.get()), 0);
    const std::vector<std::string> c = commands();
    ASSERT_EQ(c.size(), 1u);
    EXPECT_EQ(c[0], "ipset add vpn_mac1 " + mac.substr(0, 31) + " 2> /dev/null");
}

TEST_F(CommandLength, AFilterReplaySkipsAStoredItemThatWouldNotFitAndGoesOn) {
    const std::string too_long = plain(71);
    qvstest::write_file(kFilterDir + "/appfilter_domain2", "a.example," + too_long + ",b.example");
    qvsim_journal_clear();
    EXPECT_EQ(update_data_list_to_appfilter_module(2, 1), 0);
    EXPECT_EQ(commands(), (std::vector<std::string>{"echo CLR_DATA index:2 type:2" + kFilterRule,
                                                    "echo ADD_DATA index:2 type:2 list:a.example" + kFilterRule,
                                                    "echo ADD_DATA index:2 type:2 list:b.example" + kFilterRule}));
    EXPECT_TRUE(logged("update_data_list_to_appfilter_module", "refused text too long for its command line"));
    EXPECT_EQ(dir_names("/"), root_);
}

TEST_F(CommandLength, AStoredDomainTooLongToDeleteStillMovesToTheEnd) {
    // The replacement rule deletes a stored line through DEL_DATA; a stored
    // line too long for that command is still deleted from the file (its
    // module line left out, logged) and the item goes to the end.
    const std::string stored = plain(80) + ".example";
    const std::string path = kRouteDir + "/approute_domain1";
    qvstest::write_file(path, stored + "\nb.example\n");
    qvsim_journal_clear();
    Text item(stored);
    EXPECT_EQ(approute_add_route_domainlist(1, item.get()), 0);
    EXPECT_EQ(qvstest::read_file(path), "b.example\n" + stored + "\n");
    EXPECT_TRUE(logged("approute_del_route_domain", "refused text too long for its command line [" + stored + "]"));
    EXPECT_EQ(commands(), (std::vector<std::string>{"echo ADD_DATA index:1 type:2 list:" + stored + kRouteRule,
                                                    "echo ADD_DATA index:1 type:2 list:" + stored + kRouteRule}));
    EXPECT_EQ(dir_names("/"), root_);
}

}  // namespace
