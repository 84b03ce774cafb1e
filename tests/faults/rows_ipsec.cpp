// SPDX-License-Identifier: MIT
// Fault rows of the IPsec client: the SA status refresh, reading an SA list
// with an established tunnel so that both the reset and the parsed states
// are written ("ipsec_write_ca_info" and "ipsec_generate_client_ca" use no
// store).
#include <sys/stat.h>

#include <cstdlib>
#include <string>

#include "fault_table.hpp"
#include "libqv.h"
#include "qvs_utils.h"
#include "test_support.hpp"

namespace {

const std::string kBin = "/tmp/qvs-faults-bin";

// A swanctl that lists instance 1 as connected; first on the search path.
void prepare() {
    ::mkdir(kBin.c_str(), 0755);
    qvstest::write_file(kBin + "/swanctl",
                        "#!/bin/sh\n"
                        "echo 'conn1: #1, ESTABLISHED, IKEv2, 1a2b3c4d5e6f7081_i* 8192a3b4c5d6e7f8_r'\n"
                        "echo '  child1: #1, reqid 1, INSTALLED, TUNNEL, ESP:AES_CBC-128/HMAC_SHA2_256_128'\n");
    ::chmod((kBin + "/swanctl").c_str(), 0755);
    const char *path = std::getenv("PATH");
    const std::string p = path != nullptr ? path : "/usr/sbin:/usr/bin:/sbin:/bin";
    if (p.rfind(kBin + ":", 0) != 0) ::setenv("PATH", (kBin + ":" + p).c_str(), 1);
}

}  // namespace

FAULT_FAMILY(ipsec) {
    return {"ipsec",
            prepare,
            {
                {"ipsec_update_status", [] { (void)ipsec_update_status(); }, {QVS_OID_IPSEC_CONFIG},
                 {"ConnectionStatus"}},
            }};
}
