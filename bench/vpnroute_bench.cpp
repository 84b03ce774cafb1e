// SPDX-License-Identifier: MIT
// qvvpn_get_statistics at its limits: 2048 list rows against an
// "ipset list" output of 65536 members, next to the time it takes merely to
// read that output through the same pipe. Runs inside qvs-sandbox (real
// ipset set, real list file).
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/stat.h>

#include "qvs_utils.h"

namespace {

constexpr int kTunnel = 1;
constexpr int kMembers = 65536;
constexpr int kRows = 2048;

std::string member(int i) {
    return "10." + std::to_string(i >> 16 & 255) + "." + std::to_string(i >> 8 & 255) + "." + std::to_string(i & 255);
}

bool setup_ip(bool domain) {
    const char *set = domain ? "vpn_domain1" : "vpn_ip1";
    std::string create = std::string("ipset create ") + set +
                         (domain ? " hash:ip comment" : " hash:net") + " counters hashsize 65536 maxelem 65536";
    if (std::system(create.c_str()) != 0) return false;
    std::FILE *f = std::fopen("/tmp/bench_restore", "w");
    if (f == nullptr) return false;
    for (int i = 0; i < kMembers; ++i) {
        if (domain)
            std::fprintf(f, "add %s %s packets %d bytes %d comment \"site%d.example\"\n", set, member(i).c_str(),
                         i % 97 + 1, (i % 97 + 1) * 60, i);
        else
            std::fprintf(f, "add %s %s packets %d bytes %d\n", set, member(i).c_str(), i % 97 + 1, (i % 97 + 1) * 60);
    }
    std::fclose(f);
    if (std::system("ipset restore -f /tmp/bench_restore") != 0) return false;
    ::mkdir("/userconfig/config", 0755);
    ::mkdir("/userconfig/config/qvvpn", 0755);
    const char *path = domain ? "/userconfig/config/qvvpn/VPN_DOMAIN_1" : "/userconfig/config/qvvpn/VPN_IP_1";
    f = std::fopen(path, "w");
    if (f == nullptr) return false;
    // Every 32nd member is a list entry.
    for (int r = 0; r < kRows; ++r) {
        if (domain)
            std::fprintf(f, "www.site%d.example\n", r * 32);
        else
            std::fprintf(f, "%s\n", member(r * 32).c_str());
    }
    std::fclose(f);
    return true;
}

// The sets and lists, made once per run (inside qvs-sandbox only).
bool ready(benchmark::State &state) {
    static int status = 0;  // 0 not yet, 1 ready, -1 failed
    if (status == 0) {
        if (std::getenv("QVS_SANDBOX") == nullptr) {
            std::fprintf(stderr, "bench_vpnroute: run me inside qvs-sandbox (scripts/bench.sh)\n");
            status = -1;
        } else {
            status = setup_ip(false) && setup_ip(true) ? 1 : -1;
        }
    }
    if (status != 1) state.SkipWithError("the sets and lists could not be set up");
    return status == 1;
}

// Reading the output alone: popen the same command, read every line.
void read_output(benchmark::State &state, const char *set) {
    if (!ready(state)) return;
    std::string cmd = std::string("ipset list ") + set + " 2> /dev/null | grep packets";
    long lines = 0;
    for (auto _ : state) {
        std::FILE *p = ::popen(cmd.c_str(), "r");
        char line[512];
        lines = 0;
        while (std::fgets(line, sizeof line, p) != nullptr) ++lines;
        ::pclose(p);
        benchmark::DoNotOptimize(lines);
    }
    state.counters["lines"] = static_cast<double>(lines);
}

void statistics(benchmark::State &state, unsigned type) {
    if (!ready(state)) return;
    std::size_t size = 1 << 20;
    char *out = static_cast<char *>(std::malloc(size));
    for (auto _ : state) {
        int r = qvvpn_get_statistics(kTunnel, type, out, static_cast<int>(size));
        if (r != 0) state.SkipWithError("qvvpn_get_statistics failed");
        benchmark::DoNotOptimize(out);
    }
    // The first row must have counted its member's packets.
    int count = 0;
    const char *at = std::strchr(out, '@');
    if (at != nullptr) count = std::atoi(at + 1);
    state.counters["first_row_packets"] = count;
    state.counters["out_bytes"] = static_cast<double>(std::strlen(out));
    std::free(out);
}

void BM_ReadIpsetOutput_Ip(benchmark::State &s) { read_output(s, "vpn_ip1"); }
void BM_GetStatistics_Ip(benchmark::State &s) { statistics(s, 0); }
void BM_ReadIpsetOutput_Domain(benchmark::State &s) { read_output(s, "vpn_domain1"); }
void BM_GetStatistics_Domain(benchmark::State &s) { statistics(s, 1); }

BENCHMARK(BM_ReadIpsetOutput_Ip)->Unit(benchmark::kMillisecond)->MinTime(1.0)->UseRealTime();
BENCHMARK(BM_GetStatistics_Ip)->Unit(benchmark::kMillisecond)->MinTime(1.0)->UseRealTime();
BENCHMARK(BM_ReadIpsetOutput_Domain)->Unit(benchmark::kMillisecond)->MinTime(1.0)->UseRealTime();
BENCHMARK(BM_GetStatistics_Domain)->Unit(benchmark::kMillisecond)->MinTime(1.0)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
