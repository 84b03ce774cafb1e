/* SPDX-License-Identifier: MIT */
/*
 * libqvs_utils, traffic steering lists: VPN routes, application routes and
 * application filters.
 *
 * Callers include <qvs_utils.h>, which includes every family's header;
 * this one also compiles on its own.
 */
#ifndef QVS_UTILS_STEERING_H
#define QVS_UTILS_STEERING_H

#include "api.h"

#ifdef __cplusplus
extern "C" {
#endif

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
 * the line of 10.0.0.12. IP, domain and MAC text (and the lists of
 * qvvpn_set_route_all, every type) holding shell characters or a line end is
 * refused with -1; so is IP text whose "ipset add|del vpn_ip<n> <ip> 2>
 * /dev/null" line would pass 127 characters. */

/** Adds an IP address or network. 0 added (and put into vpn_ip<n>); the
 * 1-based number of an existing line containing the text (nothing added);
 * -1 on directory or file failure or refused text.
 * @param n tunnel index
 * @param ip IP address or network text
 * @par Touches
 * "/userconfig/config/qvvpn/VPN_IP_<n>", an "ipset add" command line.
 * @par Thread safety
 * MT-Safe: changes to a list file are serialised by the list's lock file,
 * between threads and processes alike. */
QVS_API int qvvpn_add_route_ip(int n, const char *ip);
/** Deletes the first line containing the text, and the member from the set.
 * 0 (also when not found); -1 on directory failure or refused text.
 * @param n tunnel index
 * @param ip IP address or network text
 * @par Touches
 * the VPN_IP_<n> list file (line deleted by a synced rewrite), an "ipset del" command line.
 * @par Thread safety
 * MT-Safe: changes to a list file are serialised by the list's lock file,
 * between threads and processes alike. */
QVS_API int qvvpn_del_route_ip(int n, const char *ip);
/** Empties the IP list and the set. 0; -1 when the file cannot be truncated
 * or the directory cannot be created.
 * @param n tunnel index
 * @par Touches
 * the VPN_IP_<n> list file, an "ipset flush" command line.
 * @par Thread safety
 * MT-Safe: changes to a list file are serialised by the list's lock file,
 * between threads and processes alike. */
QVS_API int qvvpn_flush_route_ip(int n);
/** Adds a domain (when no line contains it yet) and always rewrites the
 * dnsmasq ipset file and signals dnsmasq. 0 when new, else the line number
 * found; -1 on directory or file failure.
 * @param n tunnel index
 * @param domain domain name
 * @par Touches
 * the VPN_DOMAIN_<n> list file, "/etc/dnsmasq/ipset/vpn_domain<n>", "ps" and a SIGUSR1 to dnsmasq.
 * @par Thread safety
 * MT-Safe: changes to a domain list file, and the dnsmasq file rebuilt from
 * it, are serialised by the list's lock file, between threads and processes
 * alike. */
QVS_API int qvvpn_add_route_domain(int n, const char *domain);
/** Deletes the first line containing the domain; in every case empties the
 * domain set and rewrites the dnsmasq file. 0; -1 on directory failure.
 * @param n tunnel index
 * @param domain domain name
 * @par Touches
 * the VPN_DOMAIN_<n> list file, the vpn_domain<n> set, the dnsmasq ipset file and dnsmasq.
 * @par Thread safety
 * MT-Safe: changes to a domain list file, and the dnsmasq file rebuilt from
 * it, are serialised by the list's lock file, between threads and processes
 * alike. */
QVS_API int qvvpn_del_route_domain(int n, const char *domain);
/** Empties the domain list, the set and the dnsmasq file. 0 or -1.
 * @param n tunnel index
 * @par Touches
 * the VPN_DOMAIN_<n> list file, the set and the dnsmasq ipset file.
 * @par Thread safety
 * MT-Safe: changes to a domain list file, and the dnsmasq file rebuilt from
 * it, are serialised by the list's lock file, between threads and processes
 * alike. */
QVS_API int qvvpn_flush_route_domain(int n);
/** Adds a MAC (aa:bb:cc:dd:ee:ff or twelve hex digits); mac is lower-cased
 * in place. Results as qvvpn_add_route_ip.
 * @param n tunnel index
 * @param mac MAC text (writable: lower-cased in place)
 * @par Touches
 * the VPN_MAC_<n> list file, an "ipset add" command line.
 * @par Thread safety
 * MT-Safe: changes to a list file are serialised by the list's lock file,
 * between threads and processes alike. */
QVS_API int qvvpn_add_route_mac(int n, char *mac);
/** Deletes a MAC (lower-cased in place). Results as qvvpn_del_route_ip.
 * @param n tunnel index
 * @param mac MAC text (writable: lower-cased in place)
 * @par Touches
 * the VPN_MAC_<n> list file, an "ipset del" command line.
 * @par Thread safety
 * MT-Safe: changes to a list file are serialised by the list's lock file,
 * between threads and processes alike. */
QVS_API int qvvpn_del_route_mac(int n, char *mac);
/** Empties the MAC list and the set. 0 or -1.
 * @param n tunnel index
 * @par Touches
 * the VPN_MAC_<n> list file, an "ipset flush" command line.
 * @par Thread safety
 * MT-Safe: changes to a list file are serialised by the list's lock file,
 * between threads and processes alike. */
QVS_API int qvvpn_flush_route_mac(int n);
/** Refills vpn_ip<n> and vpn_mac<n> from the files and regenerates the
 * dnsmasq file (the domain set keeps its members). 0; -1 on directory
 * failure.
 * @param n tunnel index
 * @par Touches
 * reads the list files; "/var/vpn_ipset_save" and "ipset" command lines; the dnsmasq ipset file.
 * @par Thread safety
 * MT-Safe: each list's reload is serialised with its changes by the list's
 * lock file, and "/var/vpn_ipset_save", one file for every tunnel, by a lock
 * file of its own until "ipset restore" has read it. */
QVS_API int qvvpn_reload_route(int n);
/** The part of qvvpn_reload_route for one list type (others: nothing). 0;
 * -1 on directory failure.
 * @param n tunnel index
 * @param type list type: 0 IP, 1 domain, 2 MAC
 * @par Touches
 * as qvvpn_reload_route() for that list.
 * @par Thread safety
 * MT-Safe: each list's reload is serialised with its changes by the list's
 * lock file, and "/var/vpn_ipset_save", one file for every tunnel, by a lock
 * file of its own until "ipset restore" has read it. */
QVS_API int qvvpn_reload_route_mode(int n, unsigned int type);
/** Replaces a whole list with the items of list joined by '%' (split in
 * place; empty items vanish), then reloads that list. 0; -1 on bad type,
 * directory or file failure, or refused text.
 * @param n tunnel index
 * @param type list type: 0 IP, 1 domain, 2 MAC
 * @param list items joined by '%' (writable: split in place)
 * @par Touches
 * the list file (rewritten) and its set or dnsmasq file.
 * @par Thread safety
 * MT-Safe: the rewrite and the reload are serialised by the list's lock
 * file, and "/var/vpn_ipset_save", one file for every tunnel, by a lock file
 * of its own until "ipset restore" has read it. */
QVS_API int qvvpn_set_route_all(int n, unsigned int type, char *list);
/** Writes the list's items joined by '%' into out (size bytes; each line cut
 * at its first blank; an item that does not fit is skipped). Number of
 * items written; -1 on bad type or unreadable file.
 * @param n tunnel index
 * @param type list type: 0 IP, 1 domain, 2 MAC
 * @param out caller's buffer
 * @param size bytes of out
 * @par Touches
 * reads the list file.
 * @par Thread safety
 * MT-Safe: reads the list file as it stands (a rewrite replaces it whole). */
QVS_API int qvvpn_get_route_all(int n, unsigned int type, char *out, int size);
/** Per list entry the packets counted for the set members it contains, as
 * "<entry>@<count>" joined by '%' into out (size bytes; stops at the first
 * piece that does not fit). At most 2048 entries. 0; -1 on bad type,
 * directory failure, unreadable list file or no memory.
 * @param n tunnel index
 * @param type list type: 0 IP, 1 domain, 2 MAC
 * @param out caller's buffer
 * @param size bytes of out
 * @par Touches
 * reads the list file; "ipset list" command lines through a pipe.
 * @par Thread safety
 * MT-Safe: reads the list file as it stands (a rewrite replaces it whole). */
QVS_API int qvvpn_get_statistics(int n, unsigned int type, char *out, int size);
/** Packet sum read from a file named "iptables -t mangle -nvL QV_VPN<n>
 * 2>/dev/null" (two blanks before "2>"), which normally does not exist:
 * then 0.
 * @param n tunnel index
 * @par Touches
 * reads the file named above; runs nothing.
 * @par Thread safety
 * MT-Safe. */
QVS_API unsigned int qvvpn_get_pkgCount(int n);

/* ==== Steering: application route lists =================================== */
/*
 * Per rule index n, three list files under "/userconfig/config/approute"
 * ("approute_ip<n>", "approute_domain<n>", "approute_mac<n>"), one entry per
 * line, mirrored into the route module through "/proc/approute/rule".
 * List types: 0 = IP, 1 = domain, 2 = MAC (the module numbers them 1, 2, 3).
 * List texts join items with ','. Text arguments may be changed in place
 * (MACs lower-cased and '-' turned into ':', lists split at ','), so they
 * must be writable. A null text, or text that could change a shell command
 * line (see above, line ends included), is refused with -1 before anything
 * is written or run; so is text whose ADD_DATA line (1024-byte buffer) or
 * DEL_DATA line (128-byte buffer) would not fit (the dispatchers still
 * return 0). The directory is created (0755) when it is missing.
 */

/** @name approute_add_route_ip, approute_add_route_domain, approute_add_route_mac
 * @{ */
/** Adds one entry to the file and the module. 0 added; the 1-based number of
 * a line that already holds it (IP, domain: contains it; MAC: begins with it,
 * case ignored), nothing changed; -1 directory or file failure.
 * @par Arguments
 * n, the rule index; the entry text (writable: changed in place as described for the section).
 * @par Touches
 * the list file under "/userconfig/config/approute" and "/proc/approute/rule" (an "echo" command line).
 * @par Thread safety
 * MT-Safe: changes to a list file are serialised by the list's lock file,
 * between threads and processes alike. */
QVS_API int approute_add_route_ip(int n, char *ip);
QVS_API int approute_add_route_domain(int n, char *domain);
QVS_API int approute_add_route_mac(int n, char *mac);
/** @} */

/** @name approute_del_route_ip, approute_del_route_domain, approute_del_route_mac
 * @{ */
/** Deletes the first line holding the entry and sends it to the module as
 * deleted. 0 (also when absent); -1 when the directory cannot be created.
 * @par Arguments
 * n, the rule index; the entry text (writable).
 * @par Touches
 * the list file (line deleted by a synced rewrite) and "/proc/approute/rule".
 * @par Thread safety
 * MT-Safe: changes to a list file are serialised by the list's lock file,
 * between threads and processes alike. */
QVS_API int approute_del_route_ip(int n, char *ip);
QVS_API int approute_del_route_domain(int n, char *domain);
QVS_API int approute_del_route_mac(int n, char *mac);
/** @} */

/** @name approute_flush_route_ip, approute_flush_route_domain, approute_flush_route_mac
 * @{ */
/** Empties the list file and the module's list. 0; -1 directory or file failure.
 * @par Argument
 * n, the rule index.
 * @par Touches
 * the list file and "/proc/approute/rule".
 * @par Thread safety
 * MT-Safe: changes to a list file are serialised by the list's lock file,
 * between threads and processes alike. */
QVS_API int approute_flush_route_ip(int n);
QVS_API int approute_flush_route_domain(int n);
QVS_API int approute_flush_route_mac(int n);
/** @} */

/** @name approute_add_route_iplist, approute_add_route_domainlist, approute_add_route_maclist
 * @{ */
/** Sends the whole comma-joined list to the module, then appends each item
 * that no line holds yet (domains: an item found in a line replaces that
 * line, moving it to the end). 0; -1 directory or file failure.
 * @par Arguments
 * n, the rule index; list, the items joined by ',' (writable: split in place).
 * @par Touches
 * the list file and "/proc/approute/rule".
 * @par Thread safety
 * MT-Safe: changes to a list file are serialised by the list's lock file,
 * between threads and processes alike. */
QVS_API int approute_add_route_iplist(int n, char *list);
QVS_API int approute_add_route_domainlist(int n, char *list);
QVS_API int approute_add_route_maclist(int n, char *list);
/** @} */

/** @name approute_del_route_iplist, approute_del_route_domainlist, approute_del_route_maclist
 * @{ */
/** Sends the list to the module as deleted, then deletes each item's line.
 * 0; -1 when the directory cannot be created.
 * @par Arguments
 * n, the rule index; list, the items joined by ',' (writable: split in place).
 * @par Touches
 * the list file and "/proc/approute/rule".
 * @par Thread safety
 * MT-Safe: changes to a list file are serialised by the list's lock file,
 * between threads and processes alike. */
QVS_API int approute_del_route_iplist(int n, char *list);
QVS_API int approute_del_route_domainlist(int n, char *list);
QVS_API int approute_del_route_maclist(int n, char *list);
/** @} */

/** @name approute_add_route_list, approute_del_route_list
 * @{ */
/** The list functions of type 0, 1 or 2; always 0 (also for another type).
 * @par Arguments
 * n, the rule index; type, the list type; list, the items joined by ',' (writable).
 * @par Touches
 * as the function chosen.
 * @par Thread safety
 * MT-Safe: changes to a list file are serialised by the list's lock file,
 * between threads and processes alike. */
QVS_API int approute_add_route_list(int n, unsigned int type, char *list);
QVS_API int approute_del_route_list(int n, unsigned int type, char *list);
/** @} */

/** Replaces a whole list in the module (clear, then the list) and in the
 * file. No line end allowed in the list. 0; -1 bad type, directory or file
 * failure.
 * @param n rule index
 * @param type list type: 0 IP, 1 domain, 2 MAC
 * @param list items joined by ',' (writable: split in place)
 * @par Touches
 * the list file (rewritten) and "/proc/approute/rule".
 * @par Thread safety
 * MT-Safe: changes to a list file are serialised by the list's lock file,
 * between threads and processes alike. */
QVS_API int approute_set_route_all(int n, unsigned int type, char *list);

/** Refills the module's three lists of rule n from the files (after a
 * restart). 0; -1 when the directory cannot be created.
 * @param n rule index
 * @par Touches
 * reads the three list files; writes "/proc/approute/rule".
 * @par Thread safety
 * MT-Safe: a reload is serialised with the changes of each list by the list's
 * lock file. */
QVS_API int approute_reload_route(int n);

/** Writes the list's entries (each cut at its first blank) joined by ','
 * into out (size bytes, emptied first; entries that do not fit are
 * skipped). Number of entries written; -1 bad type, null out, size < 1 or
 * unreadable file; 0 with out untouched when the directory was missing.
 * @param n rule index
 * @param type list type: 0 IP, 1 domain, 2 MAC
 * @param out caller's buffer
 * @param size bytes of out
 * @par Touches
 * reads the list file.
 * @par Thread safety
 * MT-Safe: reads the list file as it stands (a rewrite replaces it whole). */
QVS_API int approute_get_route_all(int n, unsigned int type, char *out, int size);

/** Number of lines of the list file; 0 when the directory or the file is
 * missing (nothing is created) or the type is not 0, 1 or 2.
 * @param n rule index
 * @param type list type: 0 IP, 1 domain, 2 MAC
 * @par Touches
 * reads the list file.
 * @par Thread safety
 * MT-Safe: reads the list file as it stands (a rewrite replaces it whole). */
QVS_API int approute_get_route_count(int n, int type);

/* ==== Steering: application filter lists ================================== */
/*
 * Per rule index n, one file per list type under
 * "/userconfig/config/appfilter" ("appfilter_ip<n>", "appfilter_domain<n>",
 * "appfilter_mac<n>"), each a single line of items joined by ',' (at most
 * 81919 characters), mirrored into the filter module through
 * "/proc/appfilter/rule": every change clears the module's list and adds
 * each item again. List types: 0 = IP, 1 = domain, 2 = MAC. List arguments
 * are split in place at ','; a null list, or one that could change a shell
 * command line (see above, line ends included), is refused with -1 before
 * anything is written or run, and so is an added list holding an item whose
 * ADD_DATA line would pass 127 characters; a stored item too long for it is
 * skipped when the list is sent. The directory is created (0755) by the add,
 * delete and flush functions when it is missing.
 */

/** Sends the stored list of rule n and type to the module (clear, then one
 * add per item). 0; -1 when the list file cannot be opened or no memory.
 * @param n rule index
 * @param type list type: 0 IP, 1 domain, 2 MAC
 * @par Touches
 * reads the list file under "/userconfig/config/appfilter"; writes "/proc/appfilter/rule".
 * @par Thread safety
 * MT-Safe: a reload is serialised with the changes of each list by the list's
 * lock file. */
QVS_API int update_data_list_to_appfilter_module(int n, unsigned int type);

/** @name appfilter_add_route_iplist, appfilter_add_route_domainlist, appfilter_add_route_maclist
 * @{ */
/** Adds the items that the stored line does not contain yet (a substring
 * test), then updates the module. 0; -1 directory or file failure.
 * @par Arguments
 * n, the rule index; list, the items joined by ',' (writable: split in place).
 * @par Touches
 * the list file under "/userconfig/config/appfilter" and "/proc/appfilter/rule".
 * @par Thread safety
 * MT-Safe: changes to a list file are serialised by the list's lock file,
 * between threads and processes alike. */
QVS_API int appfilter_add_route_iplist(int n, char *list);
QVS_API int appfilter_add_route_domainlist(int n, char *list);
QVS_API int appfilter_add_route_maclist(int n, char *list);
/** @} */

/** @name appfilter_del_route_iplist, appfilter_del_route_domainlist, appfilter_del_route_maclist
 * @{ */
/** Removes each item's first occurrence (a substring) with its separating
 * comma, then updates the module. 0 (also when there is no file, then
 * nothing is sent); -1 directory or file failure.
 * @par Arguments
 * n, the rule index; list, the items joined by ',' (writable: split in place).
 * @par Touches
 * the list file and "/proc/appfilter/rule".
 * @par Thread safety
 * MT-Safe: changes to a list file are serialised by the list's lock file,
 * between threads and processes alike. */
QVS_API int appfilter_del_route_iplist(int n, char *list);
QVS_API int appfilter_del_route_domainlist(int n, char *list);
QVS_API int appfilter_del_route_maclist(int n, char *list);
/** @} */

/** @name appfilter_flush_route_ip, appfilter_flush_route_domain, appfilter_flush_route_mac
 * @{ */
/** Empties the list file and the module's list. 0; -1 directory or file failure.
 * @par Argument
 * n, the rule index.
 * @par Touches
 * the list file and "/proc/appfilter/rule".
 * @par Thread safety
 * MT-Safe: changes to a list file are serialised by the list's lock file,
 * between threads and processes alike. */
QVS_API int appfilter_flush_route_ip(int n);
QVS_API int appfilter_flush_route_domain(int n);
QVS_API int appfilter_flush_route_mac(int n);
/** @} */

/** @name appfilter_add_route_list, appfilter_del_route_list, appfilter_flush_route_list
 * @{ */
/** The function of type 0, 1 or 2 and its result; 0 for another type.
 * @par Arguments
 * n, the rule index; type, the list type; list (where taken), the items joined by ',' (writable).
 * @par Touches
 * as the function chosen.
 * @par Thread safety
 * MT-Safe: changes to a list file are serialised by the list's lock file,
 * between threads and processes alike. */
QVS_API int appfilter_add_route_list(int n, unsigned int type, char *list);
QVS_API int appfilter_del_route_list(int n, unsigned int type, char *list);
QVS_API int appfilter_flush_route_list(int n, unsigned int type);
/** @} */

/** Copies the stored line (at most size - 1 characters, terminated) into
 * out. 0 (out untouched when the file is missing or empty, or the type is
 * not 0, 1 or 2: clear out first); -1 when the directory is not writable
 * (it is not created), out is null or size < 1.
 * @param n rule index
 * @param type list type: 0 IP, 1 domain, 2 MAC
 * @param out caller's buffer (clear it first)
 * @param size bytes of out
 * @par Touches
 * reads the list file.
 * @par Thread safety
 * MT-Safe: reads the list file as it stands (a rewrite replaces it whole). */
QVS_API int appfilter_get_route_list(int n, int type, char *out, int size);

#ifdef __cplusplus
}
#endif

#endif /* QVS_UTILS_STEERING_H */
