/* SPDX-License-Identifier: MIT */
/*
 * libqvs_utils, VPN account retrieval from the provisioning server.
 *
 * Callers include <qvs_utils.h>, which includes every family's header;
 * this one also compiles on its own.
 */
#ifndef QVS_UTILS_VPNACCOUNT_H
#define QVS_UTILS_VPNACCOUNT_H

#include "api.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ==== VPN account retrieval =============================================== */

/** cJSON's object type (from cJSON.h, whose functions this library exports). */
struct cJSON;

/** Writes the hardware address of "br0" as 12 upper-case hex digits and a NUL
 * to `mac` (at least 13 bytes). Prints "cd get_macAddr() " first. When the
 * address cannot be read, `mac` is left as it was. Returns 0 when written,
 * -1 otherwise (informational only; callers need not check it).
 * @param mac caller's buffer of at least 13 bytes
 * @par Touches
 * a socket ioctl (SIOCGIFHWADDR) on "br0"; standard output.
 * @par Thread safety
 * MT-Safe. */
QVS_API int get_macAddr(char *mac);

/** Writes the 16 digest bytes as 32 upper-case hex digits and a NUL to `out`
 * (at least 33 bytes).
 * @param digest the 16 digest bytes
 * @param out caller's buffer of at least 33 bytes
 * @par Touches
 * nothing but out.
 * @par Thread safety
 * MT-Safe. */
QVS_API void md5ToAscii(const unsigned char *digest, char *out);

/** Adds the six members of the signed account request to `req`, in order:
 * "RPCMethod" "Post", "Plugin_Name" "", "MD5", "time", "mac", "Message"
 * (Base64 of the formatted inner object {"CmdType", "tunnelName", "userId"}).
 * Progress is printed to standard output.
 * Returns 0 on success; -1 when an argument is NULL, when the inner object
 * cannot be created or printed, or when its formatted text is longer than
 * 765 bytes (its Base64 would not fit the 1024-byte message buffer: such a
 * request is refused, never cut; `req` is then left unchanged).
 * @param tunnelName tunnel name for the inner object
 * @param userId user identifier for the inner object
 * @param req cJSON object that receives the members
 * @par Touches
 * the hardware address of "br0", the clock, standard output.
 * @par Thread safety
 * MT-Safe env: the request's time stamp reads the process's time zone (TZ). */
QVS_API int constructReqData(const char *tunnelName, const char *userId, struct cJSON *req);

/** Sends the signed account request for `tunnelName`/`userId` over one TCP
 * connection to `proxy` ("host:port"; host a dotted quad or a host name; the
 * port text is everything after the first ':', read up to its first
 * non-digit; only the first 63 characters of `proxy` are used), frame =
 * 4-byte big-endian length + the formatted JSON text; waits up to 30 s for
 * one reply, reads it once (at most 2048 bytes) and copies its text after the
 * 4-byte length prefix, up to its first NUL or the received length, to
 * `reply` (the caller provides at least 2045 bytes). Progress is printed to
 * standard output.
 * Returns 1 on success; -1 when an argument is NULL or a text is empty, or
 * the request object cannot be created; 0 on any later failure (request not
 * built, bad designation, name lookup, socket, connect, write, time-out,
 * read error, or the peer closing without a reply); `reply` is then
 * untouched.
 * @param tunnelName tunnel name
 * @param userId user identifier
 * @param proxy server as "host:port"
 * @param reply caller's buffer of at least 2045 bytes
 * @par Touches
 * one TCP connection (name lookup, connect, write, read), standard output.
 * @par Thread safety
 * MT-Safe env: the host name is looked up with getaddrinfo(), and the
 * request's time stamp reads the process's time zone (TZ). */
QVS_API int createSocketToGetAccount(const char *tunnelName, const char *userId, const char *proxy,
                                     char *reply);

/** Parses a reply text {"return_Parameter": {"CmdType": "GET_VPN_ACCOUNT",
 * "Status": "0", "data": {"vpn_addr", "vpn_port", "vpn_user", "vpn_pwd",
 * "account_timeout"}}} (all strings, the five non-empty) and copies the five
 * values, unbounded, into the caller's buffers, which must each hold the
 * corresponding value and its NUL (a reply from createSocketToGetAccount
 * holds at most 2044 characters). Prints its progress to standard output.
 * Returns 0 on success; -1 on any failure (an argument NULL, not JSON, a
 * member missing, of the wrong type or value), with no buffer written.
 * @param buf the reply text
 * @param vpn_addr out: server address
 * @param vpn_port out: server port
 * @param vpn_user out: account name
 * @param vpn_pwd out: password
 * @param account_timeout out: account time-out
 * @par Touches
 * standard output and the caller's buffers.
 * @par Thread safety
 * MT-Safe: cJSON keeps the position of a parse error in one place for the
 * whole process (cJSON_GetErrorPtr()), which concurrent parses overwrite; this
 * function does not read it. */
QVS_API int parseRepData(const char *buf, char *vpn_addr, char *vpn_port, char *vpn_user, char *vpn_pwd,
                         char *account_timeout);

#ifdef __cplusplus
}
#endif

#endif /* QVS_UTILS_VPNACCOUNT_H */
