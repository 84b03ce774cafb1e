// SPDX-License-Identifier: MIT
// Four callers at once, as processes and as threads of one process, over
// every list kind of every family: each adds, deletes and lists its own
// items (and sets the whole list) while the others do the same. Afterwards
// the file, the listing and the kernel side (ipset members, the simulated
// modules' lists, the dnsmasq file) equal what a serial order gives. Two
// tunnels' reloads at once each end with exactly their own entries.
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cctype>
#include <cstdio>
#include <functional>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "../approute/steering_journal.hpp"
#include "../vpnroute/vpn_env.hpp"
#include "callers.hpp"
#include "gateway_test.hpp"
#include "qvs_utils.h"
#include "test_support.hpp"

using Set = std::set<std::string>;
using Items = std::vector<std::string>;

namespace {

using lockstest::kRounds;
using lockstest::kWorkers;
using lockstest::run_all;
constexpr int kIndex = 1;

Set nonempty(const std::vector<std::string> &v) {
    Set out;
    for (const std::string &s : v)
        if (!s.empty()) out.insert(s);
    return out;
}

// ipset prints MAC members in capitals; the lists hold them in lower case.
Set lower(const Set &in) {
    Set out;
    for (std::string s : in) {
        for (char &c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        out.insert(s);
    }
    return out;
}

Set file_lines(const std::string &path) { return nonempty(qvstest::split(qvstest::read_file(path), '\n')); }

// A writable copy for the functions that change their argument.
int call_with(const std::string &text, const std::function<int(char *)> &f) {
    std::vector<char> buf(text.begin(), text.end());
    buf.push_back('\0');
    return f(buf.data());
}

std::string join(const Items &items, char sep) {
    std::string out;
    for (const std::string &i : items) out += (out.empty() ? "" : std::string(1, sep)) + i;
    return out;
}

// One list kind of one family: how to change it, list it, and read its file
// and kernel side. Items of every kind have one fixed length, so no item is
// a substring of another.
struct Kind {
    const char *name;
    std::function<std::string(int w, int r, bool seeded)> item;
    std::function<int(const std::string &)> add, del;
    std::function<int(const Items &)> set_all;  // empty where the family has none
    std::function<Set()> listing, stored, kernel;
};

std::string ip_item(int w, int r, bool seeded) {
    char b[32];
    std::snprintf(b, sizeof b, "10.%03d.%03d.%03d", 100 + w, 100 + r, seeded ? 101 : 102);
    return b;
}
std::string mac_item(int w, int r, bool seeded) {
    char b[32];
    std::snprintf(b, sizeof b, "02:00:%02x:%02x:%02x:00", w, r, seeded ? 1 : 2);
    return b;
}
std::string domain_item(int w, int r, bool seeded) {
    char b[32];
    std::snprintf(b, sizeof b, "w%dr%02d%c.example", w, r, seeded ? 's' : 'n');
    return b;
}

Set vpn_listing(unsigned type) {
    std::vector<char> out(65536, '\0');
    qvvpn_get_route_all(kIndex, type, out.data(), static_cast<int>(out.size()));
    return nonempty(qvstest::split(out.data(), '%'));
}
Set approute_listing(unsigned type) {
    std::vector<char> out(65536, '\0');
    approute_get_route_all(kIndex, type, out.data(), static_cast<int>(out.size()));
    return nonempty(qvstest::split(out.data(), ','));
}
Set appfilter_listing(int type) {
    std::vector<char> out(65536, '\0');
    appfilter_get_route_list(kIndex, type, out.data(), static_cast<int>(out.size()));
    std::string text = out.data();
    if (!text.empty() && text.back() == '\n') text.pop_back();
    return nonempty(qvstest::split(text, ','));
}
Set module(const char *name, int type) { return nonempty(qvstest::split(steertest::held(name, kIndex, type + 1), ',')); }
Set dnsmasq_domains() {
    Set out;
    for (const std::string &l : file_lines(vpntest::dnsmasq_file(kIndex))) out.insert(l.substr(0, l.find(' ')));
    return out;
}

std::vector<Kind> kinds() {
    const std::string ar = "/userconfig/config/approute/approute_";
    const std::string af = "/userconfig/config/appfilter/appfilter_";
    auto af_file = [](const std::string &path) {
        std::string t = qvstest::read_file(path);
        return nonempty(qvstest::split(t, ','));
    };
    auto vpn_set = [](unsigned type, const Items &items) {
        return call_with(join(items, '%'), [type](char *l) { return qvvpn_set_route_all(kIndex, type, l); });
    };
    auto ar_set = [](unsigned type, const Items &items) {
        return call_with(join(items, ','), [type](char *l) { return approute_set_route_all(kIndex, type, l); });
    };
    return {
        {"vpn_ip", ip_item, [](const std::string &i) { return qvvpn_add_route_ip(kIndex, i.c_str()); },
         [](const std::string &i) { return qvvpn_del_route_ip(kIndex, i.c_str()); },
         [vpn_set](const Items &i) { return vpn_set(0, i); }, [] { return vpn_listing(0); },
         [] { return file_lines(vpntest::ip_file(kIndex)); }, [] { return vpntest::members("vpn_ip1"); }},
        {"vpn_domain", domain_item, [](const std::string &i) { return qvvpn_add_route_domain(kIndex, i.c_str()); },
         [](const std::string &i) { return qvvpn_del_route_domain(kIndex, i.c_str()); },
         [vpn_set](const Items &i) { return vpn_set(1, i); }, [] { return vpn_listing(1); },
         [] { return file_lines(vpntest::domain_file(kIndex)); }, dnsmasq_domains},
        {"vpn_mac", mac_item,
         [](const std::string &i) { return call_with(i, [](char *t) { return qvvpn_add_route_mac(kIndex, t); }); },
         [](const std::string &i) { return call_with(i, [](char *t) { return qvvpn_del_route_mac(kIndex, t); }); },
         [vpn_set](const Items &i) { return vpn_set(2, i); }, [] { return vpn_listing(2); },
         [] { return file_lines(vpntest::mac_file(kIndex)); }, [] { return lower(vpntest::members("vpn_mac1")); }},
        // The route lists: single items and the list variants take turns.
        {"approute_ip", ip_item,
         [](const std::string &i) { return call_with(i, [](char *t) { return approute_add_route_ip(kIndex, t); }); },
         [](const std::string &i) {
             return call_with(i, [](char *t) { return approute_del_route_iplist(kIndex, t); });
         },
         [ar_set](const Items &i) { return ar_set(0, i); }, [] { return approute_listing(0); },
         [ar] { return file_lines(ar + "ip1"); }, [] { return module("approute", 0); }},
        {"approute_domain", domain_item,
         [](const std::string &i) {
             return call_with(i, [](char *t) { return approute_add_route_domainlist(kIndex, t); });
         },
         [](const std::string &i) {
             return call_with(i, [](char *t) { return approute_del_route_domain(kIndex, t); });
         },
         [ar_set](const Items &i) { return ar_set(1, i); }, [] { return approute_listing(1); },
         [ar] { return file_lines(ar + "domain1"); }, [] { return module("approute", 1); }},
        {"approute_mac", mac_item,
         [](const std::string &i) {
             return call_with(i, [](char *t) { return approute_add_route_list(kIndex, 2, t); });
         },
         [](const std::string &i) { return call_with(i, [](char *t) { return approute_del_route_mac(kIndex, t); }); },
         [ar_set](const Items &i) { return ar_set(2, i); }, [] { return approute_listing(2); },
         [ar] { return file_lines(ar + "mac1"); }, [] { return module("approute", 2); }},
        // The filter lists have list variants only, and no set-all.
        {"appfilter_ip", ip_item,
         [](const std::string &i) {
             return call_with(i, [](char *t) { return appfilter_add_route_iplist(kIndex, t); });
         },
         [](const std::string &i) {
             return call_with(i, [](char *t) { return appfilter_del_route_iplist(kIndex, t); });
         },
         {}, [] { return appfilter_listing(0); }, [af, af_file] { return af_file(af + "ip1"); },
         [] { return module("appfilter", 0); }},
        {"appfilter_domain", domain_item,
         [](const std::string &i) {
             return call_with(i, [](char *t) { return appfilter_add_route_list(kIndex, 1, t); });
         },
         [](const std::string &i) {
             return call_with(i, [](char *t) { return appfilter_del_route_list(kIndex, 1, t); });
         },
         {}, [] { return appfilter_listing(1); }, [af, af_file] { return af_file(af + "domain1"); },
         [] { return module("appfilter", 1); }},
        {"appfilter_mac", mac_item,
         [](const std::string &i) {
             return call_with(i, [](char *t) { return appfilter_add_route_maclist(kIndex, t); });
         },
         [](const std::string &i) {
             return call_with(i, [](char *t) { return appfilter_del_route_maclist(kIndex, t); });
         },
         {}, [] { return appfilter_listing(2); }, [af, af_file] { return af_file(af + "mac1"); },
         [] { return module("appfilter", 2); }},
    };
}

// One caller: deletes its seeded items and adds new ones, one per round,
// and checks through the listing that its own items are exactly as it left
// them. Number of problems seen.
int worker(const Kind &k, int w) {
    int problems = 0;
    for (int r = 0; r < kRounds; ++r) {
        if (k.add(k.item(w, r, false)) < 0) ++problems;
        if (k.del(k.item(w, r, true)) < 0) ++problems;
        const Set seen = k.listing();
        for (int q = 0; q < kRounds; ++q) {
            if ((seen.count(k.item(w, q, false)) == 1) != (q <= r)) ++problems;
            if ((seen.count(k.item(w, q, true)) == 1) != (q > r)) ++problems;
        }
    }
    return problems;
}

// One caller setting the whole list to its own items, twice.
int set_all_worker(const Kind &k, int w) {
    Items mine;
    for (int r = 0; r < kRounds; ++r) mine.push_back(k.item(w, r, false));
    int problems = 0;
    for (int i = 0; i < 2; ++i)
        if (k.set_all(mine) != 0) ++problems;
    return problems;
}

struct Mode {
    bool processes;
    std::size_t kind;
};

void PrintTo(const Mode &m, std::ostream *os) {
    *os << (m.processes ? "processes, " : "threads, ") << kinds()[m.kind].name;
}

class Concurrent : public qvstest::GatewayTest, public ::testing::WithParamInterface<Mode> {
protected:
    void SetUp() override {
        GatewayTest::SetUp();
        vpntest::prepare_dirs();
        ::mkdir("/userconfig/config/approute", 0755);
        ::mkdir("/userconfig/config/appfilter", 0755);
        ::mkdir("/etc/dnsmasq/ipset", 0755);
        vpntest::create_tunnel(kIndex);
    }
};

TEST_P(Concurrent, EveryCallerKeepsItsOwnItemsAndTheKernelMatchesTheFile) {
    const Kind k = kinds()[GetParam().kind];
    SCOPED_TRACE(k.name);
    Set expected;
    for (int w = 0; w < kWorkers; ++w)
        for (int r = 0; r < kRounds; ++r) {
            ASSERT_GE(k.add(k.item(w, r, true)), 0);
            expected.insert(k.item(w, r, false));
        }
    EXPECT_EQ(run_all(GetParam().processes, [&k](int w) { return worker(k, w); }), 0);
    EXPECT_EQ(k.stored(), expected);
    EXPECT_EQ(k.listing(), expected);
    EXPECT_EQ(k.kernel(), expected);
    if (!k.set_all) return;
    // Whole-list replacements at once: one caller's list wins, whole.
    EXPECT_EQ(run_all(GetParam().processes, [&k](int w) { return set_all_worker(k, w); }), 0);
    const Set after = k.stored();
    bool one_callers = false;
    for (int w = 0; w < kWorkers; ++w) {
        Set mine;
        for (int r = 0; r < kRounds; ++r) mine.insert(k.item(w, r, false));
        one_callers = one_callers || after == mine;
    }
    EXPECT_TRUE(one_callers) << "the list is a mix of several callers' lists";
    EXPECT_EQ(k.listing(), after);
    EXPECT_EQ(k.kernel(), after);
}

std::vector<Mode> modes() {
    std::vector<Mode> out;
    for (bool p : {true, false})
        for (std::size_t i = 0; i < kinds().size(); ++i) out.push_back({p, i});
    return out;
}

INSTANTIATE_TEST_SUITE_P(Lists, Concurrent, ::testing::ValuesIn(modes()),
                         [](const ::testing::TestParamInfo<Mode> &i) {
                             return std::string(i.param.processes ? "Processes_" : "Threads_") +
                                    kinds()[i.param.kind].name;
                         });

class TwoTunnels : public qvstest::GatewayTest {};

TEST_F(TwoTunnels, ReloadsAtOnceEachEndWithExactlyTheirOwnEntries) {
    vpntest::prepare_dirs();
    vpntest::create_tunnel(1);
    vpntest::create_tunnel(2);
    Set own[3];
    for (int n : {1, 2}) {
        std::string text;
        for (int i = 0; i < 900; ++i) {
            char b[32];
            std::snprintf(b, sizeof b, "10.%d.%d.%d", n, i / 250, i % 250 + 1);
            text += std::string(b) + "\n";
            own[n].insert(b);
        }
        qvstest::write_file(vpntest::ip_file(n), text);
    }
    for (int round = 0; round < 3; ++round) {
        std::vector<pid_t> pids;
        for (int n : {1, 2}) {
            pid_t pid = ::fork();
            if (pid == 0) ::_exit(qvvpn_reload_route(n) == 0 ? 0 : 1);
            pids.push_back(pid);
        }
        for (pid_t pid : pids) {
            int status = 0;
            ASSERT_EQ(::waitpid(pid, &status, 0), pid);
            EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
        }
        EXPECT_EQ(vpntest::members("vpn_ip1"), own[1]) << "round " << round;
        EXPECT_EQ(vpntest::members("vpn_ip2"), own[2]) << "round " << round;
    }
}

}  // namespace
