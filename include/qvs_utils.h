/*
 * libqvs_utils: the shared utility library of the home gateway.
 *
 * Every function is called synchronously by another gateway process, does
 * its work through the platform's configuration store, Linux tools and small
 * state files, and returns an integer. Output buffers belong to the caller;
 * their required sizes are given with each function.
 *
 * Store handles are the platform's 32-bit store handles (0: none attached).
 *
 * Hardening: text from a caller that would end up on a shell command line is
 * checked first; text holding any of ; & | ` $ < > ( ) \ ' " # or a line end
 * is refused with -1 (and a level-1 log line) before anything is written or
 * run.
 */
#ifndef QVS_UTILS_H
#define QVS_UTILS_H

#include <stddef.h>
#include <stdint.h>
#include <time.h>

#if defined(__GNUC__)
#define QVS_API __attribute__((visibility("default")))
#else
#define QVS_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ==== Logging and diagnostics ============================================ */

/* Path of the running executable ("/proc/self/exe", at most 127 bytes),
 * newly allocated (free() it), or NULL when it cannot be read. */
QVS_API char *util_getPidname(void);

/* Writes "<exe path>[file:function:line]" then the formatted message and a
 * newline to standard error. Returns the result of writing the newline. */
QVS_API int util_printf(const char *file, const char *function, int line,
                        const char *format, ...) __attribute__((format(printf, 4, 5)));

/* Weak flag kept for the platform's direct-write mode; the library never
 * reads it. */
extern QVS_API int allow_direct_write_xmlShm;

/* ==== Process PID records ================================================ */

/* ==== WLAN: SSID index map ================================================ */

/* ==== WLAN: same-SSID merge and guest clean-up ============================ */

/* ==== WLAN: adding and deleting SSIDs ===================================== */

/* ==== Time: timer rules in UTC ============================================ */

/* ==== Time: local time, summer time, time stamps ========================== */

/* ==== PON zero-configuration state ======================================== */

/* ==== Alarms ============================================================== */

/* ==== Steering: VPN route lists =========================================== */

/* Per tunnel index n three lists are kept as text files, one entry per line,
 * under "/userconfig/config/qvvpn" ("VPN_IP_<n>", "VPN_DOMAIN_<n>",
 * "VPN_MAC_<n>") and mirrored into the ipset sets "vpn_ip<n>",
 * "vpn_domain<n>" (filled by dnsmasq from "/etc/dnsmasq/ipset/vpn_domain<n>")
 * and "vpn_mac<n>". List types: 0 IP, 1 domain, 2 MAC.
 * Every function but qvvpn_get_pkgCount first makes sure the list directory
 * exists: when it cannot be created the result is -1; when it had to be
 * created, the add functions and qvvpn_set_route_all go on, all others
 * return 0 at once.
 * Entries are found by substring: adding 10.0.0.1 next to 10.0.0.12 finds
 * the line of 10.0.0.12. IP and MAC text (and IP/MAC lists of
 * qvvpn_set_route_all) holding shell characters is refused with -1. */

/* Adds an IP address or network. 0 added (and put into vpn_ip<n>); the
 * 1-based number of an existing line containing the text (nothing added);
 * -1 on directory or file failure or refused text. */
QVS_API int qvvpn_add_route_ip(int n, const char *ip);
/* Deletes the first line containing the text, and the member from the set.
 * 0 (also when not found); -1 on directory failure or refused text. */
QVS_API int qvvpn_del_route_ip(int n, const char *ip);
/* Empties the IP list and the set. 0; -1 when the file cannot be truncated
 * or the directory cannot be created. */
QVS_API int qvvpn_flush_route_ip(int n);
/* Adds a domain (when no line contains it yet) and always rewrites the
 * dnsmasq ipset file and signals dnsmasq. 0 when new, else the line number
 * found; -1 on directory or file failure. */
QVS_API int qvvpn_add_route_domain(int n, const char *domain);
/* Deletes the first line containing the domain; in every case empties the
 * domain set and rewrites the dnsmasq file. 0; -1 on directory failure. */
QVS_API int qvvpn_del_route_domain(int n, const char *domain);
/* Empties the domain list, the set and the dnsmasq file. 0 or -1. */
QVS_API int qvvpn_flush_route_domain(int n);
/* Adds a MAC (aa:bb:cc:dd:ee:ff or twelve hex digits); mac is lower-cased
 * in place. Results as qvvpn_add_route_ip. */
QVS_API int qvvpn_add_route_mac(int n, char *mac);
/* Deletes a MAC (lower-cased in place). Results as qvvpn_del_route_ip. */
QVS_API int qvvpn_del_route_mac(int n, char *mac);
/* Empties the MAC list and the set. 0 or -1. */
QVS_API int qvvpn_flush_route_mac(int n);
/* Refills vpn_ip<n> and vpn_mac<n> from the files and regenerates the
 * dnsmasq file (the domain set keeps its members). 0; -1 on directory
 * failure. */
QVS_API int qvvpn_reload_route(int n);
/* The part of qvvpn_reload_route for one list type (others: nothing). 0;
 * -1 on directory failure. */
QVS_API int qvvpn_reload_route_mode(int n, unsigned int type);
/* Replaces a whole list with the items of list joined by '%' (split in
 * place; empty items vanish), then reloads that list. 0; -1 on bad type,
 * directory or file failure, or refused text. */
QVS_API int qvvpn_set_route_all(int n, unsigned int type, char *list);
/* Writes the list's items joined by '%' into out (size bytes; each line cut
 * at its first blank; an item that does not fit is skipped). Number of
 * items written; -1 on bad type or unreadable file. */
QVS_API int qvvpn_get_route_all(int n, unsigned int type, char *out, int size);
/* Per list entry the packets counted for the set members it contains, as
 * "<entry>@<count>" joined by '%' into out (size bytes; stops at the first
 * piece that does not fit). At most 2048 entries. 0; -1 on bad type,
 * directory failure, unreadable list file or no memory. */
QVS_API int qvvpn_get_statistics(int n, unsigned int type, char *out, int size);
/* Packet sum read from a file named "iptables -t mangle -nvL QV_VPN<n>
 * 2>/dev/null" (two blanks before "2>"), which normally does not exist:
 * then 0. */
QVS_API unsigned int qvvpn_get_pkgCount(int n);

/* ==== Steering: application route lists =================================== */

/* ==== Steering: application filter lists ================================== */

/* ==== VPN account retrieval =============================================== */

/* ==== Base64 codecs ======================================================= */

/* ==== String helpers ====================================================== */

#ifdef __cplusplus
}
#endif

#endif /* QVS_UTILS_H */
