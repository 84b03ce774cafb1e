// SPDX-License-Identifier: MIT
// VPN route lists: qvvpn_* per tunnel index.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "qvs_utils.h"
#include "list_commands.hpp"
#include "qvsctl.hpp"

namespace {

// (n, type, out, size) listings; the buffer size defaults to 4096 bytes.
template <int (*F)(int, unsigned, char *, int)>
int run_listing(char **argv, int argc_given, const char *name) {
    int n = 0;
    unsigned type = 0;
    long long size = 4096;
    if (!qvsctl::parse_index(argv[0], n) || !qvsctl::parse_type(argv[1], type)) return qvsctl::kBadArgs;
    if (argc_given > 2 && !qvsctl::parse_int(argv[2], 1, 16 * 1024 * 1024, size)) return qvsctl::kBadArgs;
    char *out = static_cast<char *>(std::calloc(static_cast<size_t>(size), 1));
    if (out == nullptr) return qvsctl::kBadArgs;
    qvsctl::print_result(F(n, type, out, static_cast<int>(size)));
    qvsctl::print_text(name, out);
    std::free(out);
    return qvsctl::kRan;
}

int argc_of(char **argv) {
    int c = 0;
    while (argv[c] != nullptr) ++c;
    return c;
}

int run_get_all(char **argv) { return run_listing<qvvpn_get_route_all>(argv, argc_of(argv), "list"); }
int run_stats(char **argv) { return run_listing<qvvpn_get_statistics>(argv, argc_of(argv), "statistics"); }

int run_pkg(char **argv) {
    int n = 0;
    if (!qvsctl::parse_index(argv[0], n)) return qvsctl::kBadArgs;
    qvsctl::print_result(static_cast<long long>(qvvpn_get_pkgCount(n)));
    return qvsctl::kRan;
}

const qvsctl::Command kCommands[] = {
    {"qvvpn_add_route_ip", "<n> <ip>", "add an IP or network to tunnel n's list and set", 2, 2, qvsctl::run_index_text<qvvpn_add_route_ip>},
    {"qvvpn_del_route_ip", "<n> <ip>", "delete the first IP line containing the text", 2, 2, qvsctl::run_index_text<qvvpn_del_route_ip>},
    {"qvvpn_flush_route_ip", "<n>", "empty the IP list and set", 1, 1, qvsctl::run_index<qvvpn_flush_route_ip>},
    {"qvvpn_add_route_domain", "<n> <domain>", "add a domain, rewrite the dnsmasq file, signal dnsmasq", 2, 2, qvsctl::run_index_text<qvvpn_add_route_domain>},
    {"qvvpn_del_route_domain", "<n> <domain>", "delete a domain, empty the domain set, signal dnsmasq", 2, 2, qvsctl::run_index_text<qvvpn_del_route_domain>},
    {"qvvpn_flush_route_domain", "<n>", "empty the domain list, set and dnsmasq file", 1, 1, qvsctl::run_index<qvvpn_flush_route_domain>},
    {"qvvpn_add_route_mac", "<n> <mac>", "add a MAC (lower-cased) to the list and set", 2, 2, qvsctl::run_index_text_shown<qvvpn_add_route_mac, qvsctl::kShowMac>},
    {"qvvpn_del_route_mac", "<n> <mac>", "delete a MAC from the list and set", 2, 2, qvsctl::run_index_text_shown<qvvpn_del_route_mac, qvsctl::kShowMac>},
    {"qvvpn_flush_route_mac", "<n>", "empty the MAC list and set", 1, 1, qvsctl::run_index<qvvpn_flush_route_mac>},
    {"qvvpn_reload_route", "<n>", "refill tunnel n's sets and dnsmasq file from the list files", 1, 1, qvsctl::run_index<qvvpn_reload_route>},
    {"qvvpn_reload_route_mode", "<n> <type 0|1|2>", "reload one list", 2, 2, qvsctl::run_typed<qvvpn_reload_route_mode>},
    {"qvvpn_set_route_all", "<n> <type> <item%item...>", "replace a whole list", 3, 3, qvsctl::run_typed_list<qvvpn_set_route_all>},
    {"qvvpn_get_route_all", "<n> <type> [size]", "the list's items joined by %", 2, 3, run_get_all},
    {"qvvpn_get_statistics", "<n> <type> [size]", "entry@packets per list entry, joined by %", 2, 3, run_stats},
    {"qvvpn_get_pkgCount", "<n>", "packet sum of tunnel n's chain listing file", 1, 1, run_pkg},
};

}  // namespace

QVSCTL_FAMILY(g_vpnroute, "vpnroute", "VPN route lists (IP, domain, MAC per tunnel)", kCommands);
