// SPDX-License-Identifier: MIT
// Application route lists: approute_* per rule index.
#include <cstdio>
#include <cstdlib>

#include "qvs_utils.h"
#include "list_commands.hpp"
#include "qvsctl.hpp"

namespace {






int run_get_all(char **argv) {
    int n = 0;
    unsigned type = 0;
    long long size = 1024;
    if (!qvsctl::parse_index(argv[0], n) || !qvsctl::parse_type(argv[1], type)) return qvsctl::kBadArgs;
    if (argv[2] != nullptr && !qvsctl::parse_int(argv[2], 1, 1 << 20, size)) return qvsctl::kBadArgs;
    char *out = static_cast<char *>(std::calloc(static_cast<std::size_t>(size), 1));
    if (out == nullptr) return qvsctl::kBadArgs;
    qvsctl::print_result(approute_get_route_all(n, type, out, static_cast<int>(size)));
    qvsctl::print_text("list", out);
    std::free(out);
    return qvsctl::kRan;
}

int run_get_count(char **argv) {
    int n = 0;
    long long type = 0;
    if (!qvsctl::parse_index(argv[0], n) || !qvsctl::parse_int(argv[1], -2147483648LL, 2147483647LL, type))
        return qvsctl::kBadArgs;
    qvsctl::print_result(approute_get_route_count(n, static_cast<int>(type)));
    return qvsctl::kRan;
}

const qvsctl::Command kCommands[] = {
    {"approute_add_route_ip", "<n> <ip>", "add one IP to rule n (file and route module)", 2, 2,
     qvsctl::run_index_text_shown<approute_add_route_ip>},
    {"approute_add_route_domain", "<n> <domain>", "add one domain to rule n", 2, 2,
     qvsctl::run_index_text_shown<approute_add_route_domain>},
    {"approute_add_route_mac", "<n> <mac>", "add one MAC to rule n (stored as given, sent lower-case with ':')", 2,
     2, qvsctl::run_index_text_shown<approute_add_route_mac>},
    {"approute_del_route_ip", "<n> <ip>", "delete the line holding the IP", 2, 2, qvsctl::run_index_text_shown<approute_del_route_ip>},
    {"approute_del_route_domain", "<n> <domain>", "delete the line holding the domain", 2, 2,
     qvsctl::run_index_text_shown<approute_del_route_domain>},
    {"approute_del_route_mac", "<n> <mac>", "delete the line beginning with the MAC (case ignored)", 2, 2,
     qvsctl::run_index_text_shown<approute_del_route_mac>},
    {"approute_flush_route_ip", "<n>", "empty the IP list of rule n", 1, 1, qvsctl::run_index<approute_flush_route_ip>},
    {"approute_flush_route_domain", "<n>", "empty the domain list of rule n", 1, 1,
     qvsctl::run_index<approute_flush_route_domain>},
    {"approute_flush_route_mac", "<n>", "empty the MAC list of rule n", 1, 1, qvsctl::run_index<approute_flush_route_mac>},
    {"approute_add_route_iplist", "<n> <ip,ip,...>", "send the list, then store the new items", 2, 2,
     qvsctl::run_index_text_shown<approute_add_route_iplist>},
    {"approute_add_route_domainlist", "<n> <domain,domain,...>",
     "send the list, then store each item (a stored one moves to the end)", 2, 2,
     qvsctl::run_index_text_shown<approute_add_route_domainlist>},
    {"approute_add_route_maclist", "<n> <mac,mac,...>", "send the list lower-cased, then store the new items", 2, 2,
     qvsctl::run_index_text_shown<approute_add_route_maclist>},
    {"approute_del_route_iplist", "<n> <ip,ip,...>", "send the list as deleted, then delete each line", 2, 2,
     qvsctl::run_index_text_shown<approute_del_route_iplist>},
    {"approute_del_route_domainlist", "<n> <domain,domain,...>", "send the list as deleted, then delete each line",
     2, 2, qvsctl::run_index_text_shown<approute_del_route_domainlist>},
    {"approute_del_route_maclist", "<n> <mac,mac,...>", "lower-case and send the list as deleted, delete each line",
     2, 2, qvsctl::run_index_text_shown<approute_del_route_maclist>},
    {"approute_add_route_list", "<n> <type 0|1|2> <list>", "the add-list function of the type (always 0)", 3, 3,
     qvsctl::run_typed_list<approute_add_route_list>},
    {"approute_del_route_list", "<n> <type 0|1|2> <list>", "the delete-list function of the type (always 0)", 3, 3,
     qvsctl::run_typed_list<approute_del_route_list>},
    {"approute_set_route_all", "<n> <type 0|1|2> <list>", "replace a whole list in module and file", 3, 3,
     qvsctl::run_typed_list<approute_set_route_all>},
    {"approute_reload_route", "<n>", "refill the module's three lists of rule n from the files", 1, 1,
     qvsctl::run_index<approute_reload_route>},
    {"approute_get_route_all", "<n> <type 0|1|2> [size]", "the stored list joined by ',' (size default 1024)", 2, 3,
     run_get_all},
    {"approute_get_route_count", "<n> <type>", "number of lines of the list file", 2, 2, run_get_count},
};

}  // namespace

QVSCTL_FAMILY(g_approute, "approute", "application route lists (route module)", kCommands);
