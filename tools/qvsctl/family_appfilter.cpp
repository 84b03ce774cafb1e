// SPDX-License-Identifier: MIT
// Application filter lists: appfilter_* and the module update per rule index.
#include <cstdio>
#include <cstdlib>

#include "qvs_utils.h"
#include "list_commands.hpp"
#include "qvsctl.hpp"

namespace {







int run_get_list(char **argv) {
    int n = 0;
    long long type = 0, size = 81920;
    if (!qvsctl::parse_index(argv[0], n) || !qvsctl::parse_int(argv[1], -2147483648LL, 2147483647LL, type))
        return qvsctl::kBadArgs;
    if (argv[2] != nullptr && !qvsctl::parse_int(argv[2], 1, 1 << 20, size)) return qvsctl::kBadArgs;
    char *out = static_cast<char *>(std::calloc(static_cast<std::size_t>(size), 1));
    if (out == nullptr) return qvsctl::kBadArgs;
    qvsctl::print_result(appfilter_get_route_list(n, static_cast<int>(type), out, static_cast<int>(size)));
    qvsctl::print_text("list", out);
    std::free(out);
    return qvsctl::kRan;
}

const qvsctl::Command kCommands[] = {
    {"update_data_list_to_appfilter_module", "<n> <type 0|1|2>",
     "send the stored list to the filter module (clear, then one add per item)", 2, 2,
     qvsctl::run_typed<update_data_list_to_appfilter_module>},
    {"appfilter_add_route_iplist", "<n> <ip,ip,...>", "add the new IPs to rule n, update the module", 2, 2,
     qvsctl::run_index_text_shown<appfilter_add_route_iplist>},
    {"appfilter_add_route_domainlist", "<n> <domain,domain,...>", "add the new domains, update the module", 2, 2,
     qvsctl::run_index_text_shown<appfilter_add_route_domainlist>},
    {"appfilter_add_route_maclist", "<n> <mac,mac,...>", "add the new MACs (as given), update the module", 2, 2,
     qvsctl::run_index_text_shown<appfilter_add_route_maclist>},
    {"appfilter_del_route_iplist", "<n> <ip,ip,...>", "remove the IPs, update the module", 2, 2,
     qvsctl::run_index_text_shown<appfilter_del_route_iplist>},
    {"appfilter_del_route_domainlist", "<n> <domain,domain,...>", "remove the domains, update the module", 2, 2,
     qvsctl::run_index_text_shown<appfilter_del_route_domainlist>},
    {"appfilter_del_route_maclist", "<n> <mac,mac,...>", "remove the MACs, update the module", 2, 2,
     qvsctl::run_index_text_shown<appfilter_del_route_maclist>},
    {"appfilter_flush_route_ip", "<n>", "empty the IP list of rule n", 1, 1, qvsctl::run_index<appfilter_flush_route_ip>},
    {"appfilter_flush_route_domain", "<n>", "empty the domain list of rule n", 1, 1,
     qvsctl::run_index<appfilter_flush_route_domain>},
    {"appfilter_flush_route_mac", "<n>", "empty the MAC list of rule n", 1, 1, qvsctl::run_index<appfilter_flush_route_mac>},
    {"appfilter_add_route_list", "<n> <type 0|1|2> <list>", "the add function of the type", 3, 3,
     qvsctl::run_typed_list<appfilter_add_route_list>},
    {"appfilter_del_route_list", "<n> <type 0|1|2> <list>", "the delete function of the type", 3, 3,
     qvsctl::run_typed_list<appfilter_del_route_list>},
    {"appfilter_flush_route_list", "<n> <type 0|1|2>", "the flush function of the type", 2, 2,
     qvsctl::run_typed<appfilter_flush_route_list>},
    {"appfilter_get_route_list", "<n> <type> [size]", "the stored line (size default 81920)", 2, 3, run_get_list},
};

}  // namespace

QVSCTL_FAMILY(g_appfilter, "appfilter", "application filter lists (filter module)", kCommands);
