// SPDX-License-Identifier: MIT
// Injection rows of the steering lists: VPN routes, application routes and
// application filters (every entry point that takes list text).
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "injection_table.hpp"
#include "qvs_utils.h"
#include "test_support.hpp"

namespace {

void prepare(bool prefilled) {
    for (const char *d : {"/userconfig/config/qvvpn", "/userconfig/config/approute", "/userconfig/config/appfilter"})
        ::mkdir(d, 0755);
    const char *lines[] = {
        "/userconfig/config/qvvpn/VPN_IP_1",          "/userconfig/config/qvvpn/VPN_DOMAIN_1",
        "/userconfig/config/qvvpn/VPN_MAC_1",         "/userconfig/config/approute/approute_ip1",
        "/userconfig/config/approute/approute_domain1", "/userconfig/config/approute/approute_mac1",
    };
    for (const char *p : lines) {
        if (prefilled)
            qvstest::write_file(p, "10.0.0.1\na.example\naa:bb:cc:dd:ee:ff\n");
        else
            ::unlink(p);
    }
    for (const char *p : {"/userconfig/config/appfilter/appfilter_ip1", "/userconfig/config/appfilter/appfilter_domain1",
                          "/userconfig/config/appfilter/appfilter_mac1"}) {
        if (prefilled)
            qvstest::write_file(p, "10.0.0.1,a.example,aa:bb:cc:dd:ee:ff");
        else
            ::unlink(p);
    }
}

}  // namespace

INJECTION_FAMILY(steering) {
    return {"steering",
            prepare,
            {
                {"qvvpn_add_route_ip", "qvvpn_add_route_ip", [](char *t) { return qvvpn_add_route_ip(1, t); }, -1},
                {"qvvpn_del_route_ip", "qvvpn_del_route_ip", [](char *t) { return qvvpn_del_route_ip(1, t); }, -1},
                {"qvvpn_add_route_domain", "qvvpn_add_route_domain",
                 [](char *t) { return qvvpn_add_route_domain(1, t); }, -1},
                {"qvvpn_del_route_domain", "qvvpn_del_route_domain",
                 [](char *t) { return qvvpn_del_route_domain(1, t); }, -1},
                {"qvvpn_add_route_mac", "qvvpn_add_route_mac", [](char *t) { return qvvpn_add_route_mac(1, t); }, -1},
                {"qvvpn_del_route_mac", "qvvpn_del_route_mac", [](char *t) { return qvvpn_del_route_mac(1, t); }, -1},
                {"qvvpn_set_route_all ip", "qvvpn_set_route_all", [](char *t) { return qvvpn_set_route_all(1, 0, t); },
                 -1},
                {"qvvpn_set_route_all domain", "qvvpn_set_route_all",
                 [](char *t) { return qvvpn_set_route_all(1, 1, t); }, -1},
                {"qvvpn_set_route_all mac", "qvvpn_set_route_all", [](char *t) { return qvvpn_set_route_all(1, 2, t); },
                 -1},

                {"approute_add_route_ip", "approute_add_route_ip", [](char *t) { return approute_add_route_ip(1, t); },
                 -1},
                {"approute_add_route_domain", "approute_add_route_domain",
                 [](char *t) { return approute_add_route_domain(1, t); }, -1},
                {"approute_add_route_mac", "approute_add_route_mac",
                 [](char *t) { return approute_add_route_mac(1, t); }, -1},
                {"approute_del_route_ip", "approute_del_route_ip", [](char *t) { return approute_del_route_ip(1, t); },
                 -1},
                {"approute_del_route_domain", "approute_del_route_domain",
                 [](char *t) { return approute_del_route_domain(1, t); }, -1},
                {"approute_del_route_mac", "approute_del_route_mac",
                 [](char *t) { return approute_del_route_mac(1, t); }, -1},
                {"approute_add_route_iplist", "approute_add_route_iplist",
                 [](char *t) { return approute_add_route_iplist(1, t); }, -1, "", true},
                {"approute_add_route_domainlist", "approute_add_route_domainlist",
                 [](char *t) { return approute_add_route_domainlist(1, t); }, -1, "", true},
                {"approute_add_route_maclist", "approute_add_route_maclist",
                 [](char *t) { return approute_add_route_maclist(1, t); }, -1, "", true},
                {"approute_del_route_iplist", "approute_del_route_iplist",
                 [](char *t) { return approute_del_route_iplist(1, t); }, -1, "", true},
                {"approute_del_route_domainlist", "approute_del_route_domainlist",
                 [](char *t) { return approute_del_route_domainlist(1, t); }, -1, "", true},
                {"approute_del_route_maclist", "approute_del_route_maclist",
                 [](char *t) { return approute_del_route_maclist(1, t); }, -1, "", true},
                // The dispatchers return 0 in every case; their callee refuses.
                {"approute_add_route_list", "approute_add_route_domainlist",
                 [](char *t) { return approute_add_route_list(1, 1, t); }, 0, "", true},
                {"approute_del_route_list", "approute_del_route_maclist",
                 [](char *t) { return approute_del_route_list(1, 2, t); }, 0, "", true},
                {"approute_set_route_all ip", "approute_set_route_all",
                 [](char *t) { return approute_set_route_all(1, 0, t); }, -1},
                {"approute_set_route_all mac", "approute_set_route_all",
                 [](char *t) { return approute_set_route_all(1, 2, t); }, -1},

                {"appfilter_add_route_iplist", "appfilter_add_route_iplist",
                 [](char *t) { return appfilter_add_route_iplist(1, t); }, -1},
                {"appfilter_add_route_domainlist", "appfilter_add_route_domainlist",
                 [](char *t) { return appfilter_add_route_domainlist(1, t); }, -1},
                {"appfilter_add_route_maclist", "appfilter_add_route_maclist",
                 [](char *t) { return appfilter_add_route_maclist(1, t); }, -1},
                {"appfilter_del_route_iplist", "appfilter_del_route_iplist",
                 [](char *t) { return appfilter_del_route_iplist(1, t); }, -1},
                {"appfilter_del_route_domainlist", "appfilter_del_route_domainlist",
                 [](char *t) { return appfilter_del_route_domainlist(1, t); }, -1},
                {"appfilter_del_route_maclist", "appfilter_del_route_maclist",
                 [](char *t) { return appfilter_del_route_maclist(1, t); }, -1},
                {"appfilter_add_route_list", "appfilter_add_route_domainlist",
                 [](char *t) { return appfilter_add_route_list(1, 1, t); }, -1},
                {"appfilter_del_route_list", "appfilter_del_route_maclist",
                 [](char *t) { return appfilter_del_route_list(1, 2, t); }, -1},
            }};
}
