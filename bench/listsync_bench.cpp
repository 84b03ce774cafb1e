// SPDX-License-Identifier: MIT
// The cost of locked, durable list writes on a real disk filesystem (fsync
// costs nothing on tmpfs): "/userconfig" must be a directory on a disk when
// this runs (scripts/bench.sh binds one there). Prints the mean time per
// call of 100 single adds, 100 single deletes and one 1000-item list add.
// With a phase name as argument it runs only that phase, silently, so that
// strace can count the syncs of exactly those calls.
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "qvs_utils.h"

namespace {

double now_ms() {
    struct timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<double>(ts.tv_sec) * 1e3 + static_cast<double>(ts.tv_nsec) / 1e6;
}

std::string ip(int i) {
    char b[32];
    std::snprintf(b, sizeof b, "10.%d.%d.%d", 20 + i / 62500, i / 250 % 250, i % 250 + 1);
    return b;
}

void fresh() {
    ::mkdir("/userconfig/config", 0755);
    approute_flush_route_ip(1);
    qvvpn_flush_route_ip(1);
}

// Each phase: number of calls made.
int approute_adds() {
    for (int i = 0; i < 100; ++i) {
        std::string t = ip(i);
        approute_add_route_ip(1, t.data());
    }
    return 100;
}
int approute_dels() {
    for (int i = 0; i < 100; ++i) {
        std::string t = ip(i);
        approute_del_route_ip(1, t.data());
    }
    return 100;
}
int vpn_adds() {
    for (int i = 0; i < 100; ++i) qvvpn_add_route_ip(1, ip(i).c_str());
    return 100;
}
int vpn_dels() {
    for (int i = 0; i < 100; ++i) qvvpn_del_route_ip(1, ip(i).c_str());
    return 100;
}
int approute_list_add() {
    std::string list;
    for (int i = 0; i < 1000; ++i) list += (i == 0 ? "" : ",") + ip(1000 + i);
    approute_add_route_iplist(1, list.data());
    return 1;
}

struct Phase {
    const char *name;
    int (*run)();
    bool fresh_first;
};
constexpr Phase kPhases[] = {
    {"approute_add_route_ip", approute_adds, true},
    {"approute_del_route_ip", approute_dels, false},
    {"approute_add_route_iplist", approute_list_add, true},
    {"qvvpn_add_route_ip", vpn_adds, true},
    {"qvvpn_del_route_ip", vpn_dels, false},
};

}  // namespace

int main(int argc, char **argv) {
    if (argc == 3 && std::strcmp(argv[1], "--phase") == 0) {
        // The phases before it set the list up, unmeasured and untraced.
        for (const Phase &p : kPhases) {
            if (p.fresh_first) fresh();
            if (std::strcmp(p.name, argv[2]) == 0) {
                // The marker strace sees where the measured calls begin.
                char cwd[256];
                if (::getcwd(cwd, sizeof cwd) == nullptr) return 1;
                std::printf("%d\n", p.run());
                return 0;
            }
            p.run();
        }
        return 2;
    }
    std::printf("%-28s %6s %12s\n", "call", "calls", "ms per call");
    for (const Phase &p : kPhases) {
        if (p.fresh_first) fresh();
        const double t0 = now_ms();
        const int calls = p.run();
        std::printf("%-28s %6d %12.3f\n", p.name, calls, (now_ms() - t0) / calls);
    }
    return 0;
}
