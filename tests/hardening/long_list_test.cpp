// SPDX-License-Identifier: MIT
// Long lists in one call: 10, 100 and 1,000 items added, then 10, 100 and
// 1,000 deleted (half of them stored, half never added), on every list kind
// of the route and filter modules. Every command line fits its buffer, and afterwards the module
// holds exactly what the file holds, in the same order.
#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "hardening_env.hpp"
#include "qvs_utils.h"

using namespace hardtest;

namespace {

struct Kind {
    const char *name;
    const char *module;  // "approute" or "appfilter"
    int module_type;     // 1 IP, 2 domain, 3 MAC
    int (*add)(int, char *);
    int (*del)(int, char *);
    const char *file_prefix;  // under the module's list directory
};

const std::vector<Kind> &kinds() {
    static const std::vector<Kind> k = {
        {"route ip", "approute", 1, approute_add_route_iplist, approute_del_route_iplist, "/approute_ip"},
        {"route domain", "approute", 2, approute_add_route_domainlist, approute_del_route_domainlist,
         "/approute_domain"},
        {"route mac", "approute", 3, approute_add_route_maclist, approute_del_route_maclist, "/approute_mac"},
        {"filter ip", "appfilter", 1, appfilter_add_route_iplist, appfilter_del_route_iplist, "/appfilter_ip"},
        {"filter domain", "appfilter", 2, appfilter_add_route_domainlist, appfilter_del_route_domainlist,
         "/appfilter_domain"},
        {"filter mac", "appfilter", 3, appfilter_add_route_maclist, appfilter_del_route_maclist, "/appfilter_mac"},
    };
    return k;
}

// Item i of a kind, all of one length, so that no item holds another (the
// lists match by substring or by prefix).
std::string item(int type, int i) {
    char buf[64];
    if (type == 1)
        std::snprintf(buf, sizeof buf, "10.%03d.%03d.%03d", i / 65536, i / 256 % 256, i % 256);
    else if (type == 2)
        std::snprintf(buf, sizeof buf, "host%05d.example.com", i);
    else
        std::snprintf(buf, sizeof buf, "aa:bb:cc:%02x:%02x:%02x", i / 65536, i / 256 % 256, i % 256);
    return buf;
}

std::string join(const std::vector<std::string> &items) {
    std::string out;
    for (const std::string &i : items) out += (out.empty() ? "" : ",") + i;
    return out;
}

std::string held(const char *module, int n, int t) {
    char *s = qvsim_module_list(module, n, t);
    std::string out = s != nullptr ? s : "(null)";
    std::free(s);
    return out;
}

// The stored list as one comma-joined text: the route files hold one item
// per line, the filter files one comma-joined line.
std::string stored(const Kind &k, int n) {
    const std::string dir = std::string(k.module) == "approute" ? kRouteDir : kFilterDir;
    const std::string text = qvstest::read_file(dir + k.file_prefix + std::to_string(n));
    if (std::string(k.module) == "appfilter") return text;
    std::vector<std::string> lines;
    for (const std::string &l : qvstest::split(text, '\n'))
        if (!l.empty()) lines.push_back(l);
    return join(lines);
}

// Every command line since the last clear fits its buffer: 1024 bytes for
// the route module's ADD_DATA lines, 128 for every other.
void expect_every_line_fits() {
    for (const std::string &c : commands()) {
        if (c.rfind("echo ", 0) != 0) continue;  // the line deletes of the route files
        const bool route_add = c.rfind("echo ADD_DATA", 0) == 0 && c.find("/proc/approute/rule") != std::string::npos;
        EXPECT_LE(c.size(), route_add ? 1023u : 127u) << c;
        EXPECT_NE(c.find(" > /proc/app"), std::string::npos) << c;
    }
}

class LongLists : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(qvstest::in_sandbox());
        ASSERT_EQ(qvsim_reset(), 0);
        ::mkdir("/userconfig/config", 0755);
        for (const std::string &d : {kRouteDir, kFilterDir}) ::mkdir(d.c_str(), 0755);
    }

    // Adds count items in one call, then deletes count items in another:
    // every second stored item and as many that were never added.
    void run(const Kind &k, int count) {
        SCOPED_TRACE(std::string(k.name) + ", " + std::to_string(count) + " items");
        const int n = count;  // one rule index per case
        std::vector<std::string> all, kept, gone;
        for (int i = 0; i < count; ++i) {
            all.push_back(item(k.module_type, i));
            if (i % 2 == 0) {
                kept.push_back(all.back());
            } else {
                gone.push_back(all.back());
                gone.push_back(item(k.module_type, count + i));
            }
        }
        qvsim_journal_clear();
        Text added(join(all));
        ASSERT_EQ(k.add(n, added.get()), 0);
        expect_every_line_fits();
        EXPECT_EQ(stored(k, n), join(all));
        EXPECT_EQ(held(k.module, n, k.module_type), join(all));

        qvsim_journal_clear();
        Text deleted(join(gone));
        ASSERT_EQ(k.del(n, deleted.get()), 0);
        expect_every_line_fits();
        EXPECT_EQ(stored(k, n), join(kept));
        EXPECT_EQ(held(k.module, n, k.module_type), join(kept));
        EXPECT_TRUE(logs().empty());
    }
};

TEST_F(LongLists, TenItems) {
    for (const Kind &k : kinds()) run(k, 10);
}

TEST_F(LongLists, AHundredItems) {
    for (const Kind &k : kinds()) run(k, 100);
}

TEST_F(LongLists, AThousandItems) {
    for (const Kind &k : kinds()) run(k, 1000);
}

}  // namespace
