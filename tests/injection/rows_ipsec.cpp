// SPDX-License-Identifier: MIT
// Injection rows of the IPsec client: the certificate subject's country and
// organisation are written into "/tmp/ca.info", whose line the certificate
// issue command carries as its "--dn" text.
#include <unistd.h>

#include "injection_table.hpp"
#include "qvs_utils.h"
#include "test_support.hpp"

namespace {

constexpr char kSubjectFile[] = "/tmp/ca.info";

// Empty: no subject yet; pre-filled: an earlier subject that a refused call
// must leave as it is.
void prepare(bool prefilled) {
    if (prefilled)
        qvstest::write_file(kSubjectFile, "C=CN, O=QV, CN=Client");
    else
        ::unlink(kSubjectFile);
}

}  // namespace

INJECTION_FAMILY(ipsec) {
    return {"ipsec",
            prepare,
            {
                {"ipsec_write_ca_info country", "ipsec_write_ca_info",
                 [](char *t) { return ipsec_write_ca_info(t, "QV"); }, -1},
                {"ipsec_write_ca_info organisation", "ipsec_write_ca_info",
                 [](char *t) { return ipsec_write_ca_info("CN", t); }, -1},
            }};
}
