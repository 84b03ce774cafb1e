/* SPDX-License-Identifier: MIT */
/*
 * libqvs_utils, IPsec: the client certificate and the SA status.
 *
 * Callers include <qvs_utils.h>, which includes every family's header;
 * this one also compiles on its own.
 */
#ifndef QVS_UTILS_IPSEC_H
#define QVS_UTILS_IPSEC_H

#include "api.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ==== IPsec: client certificate and SA status ============================= */

/** Stores the subject of the client certificate: writes "C=<country>,
 * O=<organisation>, CN=Client" (no line end) to "/tmp/ca.info", replacing
 * what it held.
 * @param countryca       country, e.g. "CN"; must not be NULL or empty
 * @param organizationca  organisation; must not be NULL or empty
 * @return 0 when the file was written; -1 for a NULL or empty argument
 *         ("countryca is null" / "organizationca is null" on stderr, the old
 *         file left as it is), for text holding a shell special character or
 *         a line end (level-1 log line), or when the file cannot be opened
 *         ("open file /tmp/ca.info failed!") or written.
 * The subject is used by ipsec_generate_client_ca(), which cuts it at 62
 * characters.
 * @par Thread safety
 * MT-Unsafe race:ca_info: every call rewrites the one file "/tmp/ca.info", so
 * concurrent calls can leave a mix of both subjects. */
QVS_API int ipsec_write_ca_info(const char *countryca, const char *organizationca);

/** Makes the client key and has the operator's CA certify it. Needs the CA
 * key and certificate at "/tmp/ca.key.pem" and "/tmp/ca.cert.pem" (placed by
 * another process) and the subject in "/tmp/ca.info". Creates
 * "/userconfig/config/ipsec" (mode 0755) when missing, then runs through the
 * platform's command runner, in this order:
 *   ipsec pki --gen --outform pem > /userconfig/config/ipsec/client.key.pem
 *   ipsec pki --pub --in /userconfig/config/ipsec/client.key.pem | ipsec pki --issue --cacert
 *     /tmp/ca.cert.pem --cakey /tmp/ca.key.pem --dn "<subject>" --outform pem
 *     > /userconfig/config/ipsec/client.cert.pem
 *   mv /tmp/ca.key.pem /userconfig/config/ipsec/ca.key.pem
 *   mv /tmp/ca.cert.pem /userconfig/config/ipsec/ca.cert.pem
 * The subject is the first line of "/tmp/ca.info", at most 62 characters.
 * @return 0 once the four commands ran (their own failures are not seen: the
 *         CA files are moved all the same); -1 when a CA file is missing ("CA
 *         file not ready" on stderr), when "/tmp/ca.info" cannot be opened
 *         ("open file /tmp/ca.info failed!"), or when the subject holds a
 *         shell special character (level-1 log line, nothing run).
 * Since the CA files are moved away, a second call fails until new CA files
 * are placed.
 * @par Thread safety
 * MT-Unsafe race:ca_info race:ipsec_files: it reads "/tmp/ca.info", writes the
 * client key and certificate and moves the CA files, all at fixed paths, so
 * concurrent calls overwrite each other's files. */
QVS_API int ipsec_generate_client_ca(void);

/** Refreshes "ConnectionStatus" of the IPsec configuration instances
 * InternetGatewayDevice.X_CMCC_IPSecVPN.Config.1 to .10 (OID 533) from the
 * IKE daemon's SA list. Attaches to the store itself and detaches on every
 * path. Every existing instance is first set to "Disconnected" (enabled) or
 * "Unconfigured" (disabled); then "swanctl --list-sas > /var/ipsec.status"
 * is run and each line read: an IKE SA line of connection "conn<n>" selects
 * instance n (as a signed 8-bit number, so conn200 is -56 and conn255 none)
 * and gives "PhaseI_Connecting" (CONNECTING), "PhaseII_Connecting"
 * (ESTABLISHED) or "Disconnecting" (DELETING, DESTROYING); a following child
 * SA line whose name holds "child" gives "PhaseII_Connecting" (INSTALLING),
 * "Connected" (INSTALLED) or "Disconnecting". Writes do not notify the
 * store's listeners and are not saved; missing instances are skipped.
 * "/var/ipsec.status" is removed afterwards.
 * @return 0; -1 when the store cannot be attached, or when another refresh
 *         held the capture file for 10 s (nothing else done).
 * @par Thread safety
 * MT-Safe: every call writes, reads and removes the one file
 * "/var/ipsec.status", so whole refreshes are serialised between threads
 * and processes by a lock file ("ipsec_status" under /var/lock/qvs_utils);
 * a wait longer than 10 s gives -1 and a level-1 log line. */
QVS_API int ipsec_update_status(void);

#ifdef __cplusplus
}
#endif

#endif /* QVS_UTILS_IPSEC_H */
