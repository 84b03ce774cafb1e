// SPDX-License-Identifier: MIT
// IPsec family: ipsec_write_ca_info, ipsec_generate_client_ca,
// ipsec_update_status.
#include "qvs_utils.h"
#include "qvsctl.hpp"

namespace {

int run_write_ca_info(char **argv) {
    qvsctl::print_result(ipsec_write_ca_info(argv[0], argv[1]));
    return qvsctl::kRan;
}

int run_generate(char **) {
    qvsctl::print_result(ipsec_generate_client_ca());
    return qvsctl::kRan;
}

int run_update_status(char **) {
    qvsctl::print_result(ipsec_update_status());
    return qvsctl::kRan;
}

const qvsctl::Command kCommands[] = {
    {"ipsec_write_ca_info", "<country> <organisation>",
     "write the client certificate's subject \"C=..., O=..., CN=Client\" to /tmp/ca.info", 2, 2,
     run_write_ca_info},
    {"ipsec_generate_client_ca", "",
     "make the client key and certificate from /tmp/ca.{key,cert}.pem, move the CA files to "
     "/userconfig/config/ipsec",
     0, 0, run_generate},
    {"ipsec_update_status", "",
     "refresh ConnectionStatus of IPsec configurations 1-10 from `swanctl --list-sas`", 0, 0, run_update_status},
};

}  // namespace

QVSCTL_FAMILY(g_ipsec, "ipsec", "IPsec client certificate and SA status", kCommands);
