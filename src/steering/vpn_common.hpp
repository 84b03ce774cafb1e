// SPDX-License-Identifier: MIT
// VPN route lists: names, the directory step and the small helpers that the
// list functions, the dnsmasq hand-over and the statistics share.
#pragma once

#include <cstddef>

#include "steering/list_file.hpp"

namespace qvs::vpn {

inline constexpr char kListDir[] = "/userconfig/config/qvvpn";
inline constexpr char kDnsmasqDir[] = "/etc/dnsmasq/ipset";
inline constexpr char kRestoreFile[] = "/var/vpn_ipset_save";

inline constexpr char kIpFilePrefix[] = "VPN_IP_";
inline constexpr char kDomainFilePrefix[] = "VPN_DOMAIN_";
inline constexpr char kMacFilePrefix[] = "VPN_MAC_";

inline constexpr char kIpSet[] = "vpn_ip";
inline constexpr char kDomainSet[] = "vpn_domain";
inline constexpr char kMacSet[] = "vpn_mac";
inline constexpr char kChainPrefix[] = "QV_VPN";

inline constexpr unsigned kTypeIp = 0;
inline constexpr unsigned kTypeDomain = 1;
inline constexpr unsigned kTypeMac = 2;

inline constexpr std::size_t kPathSize = 128;
inline constexpr std::size_t kCmdSize = 128;
inline constexpr std::size_t kSearchLineSize = 1024;
inline constexpr std::size_t kListLineSize = 512;
inline constexpr std::size_t kDomainPieceSize = 64;
inline constexpr std::size_t kMacTextSize = 32;
inline constexpr std::size_t kPidLineSize = 128;

using steering::DirStep;

// The directory step (list_dir_step) for the list directory; a failed
// creation logs "creat vpn route dir error.\n" under func.
DirStep dir_step(const char *func);

// "%s/%s%d" into a cleared 128-byte buffer (cut at 127 characters).
void list_path(char (&out)[kPathSize], const char *prefix, int n);

// File prefix of a list type; nullptr for an unknown type.
const char *file_prefix_of(unsigned type);

// "ipset add %s%d %s 2> /dev/null" with "vpn_mac" when isMac, else "vpn_ip".
void vpn_ipset_add(int n, int isMac, const char *member);
// "ipset flush %s%d 2> /dev/null" with "vpn_ip" (0), "vpn_domain" (1),
// "vpn_mac" (anything else).
void vpn_ipset_flush(int n, unsigned type);
// Colon form of a MAC text into out (32 bytes, cleared by the caller).
void mac_to_colon_form(const char *text, char *out);
// Rewrites the tunnel's dnsmasq ipset file from its domain list and signals
// dnsmasq. 0, or -1 when a directory or file fails.
int update_dnsmasq_ipset_conf(int n);

}  // namespace qvs::vpn
