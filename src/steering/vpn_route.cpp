// SPDX-License-Identifier: MIT
// VPN route lists: per tunnel an IP, a domain and a MAC list kept as text
// files under /userconfig/config/qvvpn and mirrored into the tunnel's ipset
// sets (and, for domains, into dnsmasq's ipset file).
#include <cstdio>
#include <cstring>

#include "core/command.hpp"
#include "core/durable_file.hpp"
#include "core/list_lock.hpp"
#include "core/log.hpp"
#include "qvs_utils.h"
#include "steering/list_file.hpp"
#include "steering/vpn_common.hpp"

using qvs::File;
using qvs::steering::append_list_line;
using qvs::steering::delete_list_line;
using qvs::steering::find_line_in_file;
using qvs::steering::join_list_lines;
using qvs::steering::str_tolower;
using qvs::steering::write_list_file;
using namespace qvs::vpn;

namespace {

void ipset_del(const char *set, int n, const char *member) {
    qvs::CommandBuffer<kCmdSize> cmd;
    cmd.format("ipset del %s%d %s 2> /dev/null", set, n, member);
    ::qv_do_cmd(cmd.c_str());
}

// IP text reaches "ipset add|del vpn_ip<n> <ip> 2> /dev/null" (the two
// lines have the same length): refused when that line would not fit.
bool ip_too_long(const char *func, int n, const char *ip) {
    return qvs::refuse_long_text(func, __LINE__, ip,
                                 qvs::formatted_length("ipset add %s%d %s 2> /dev/null", kIpSet, n, ip), kCmdSize);
}

// The domain set is flushed under the list file's prefix on reload: a set of
// that name does not exist, so the addresses dnsmasq resolved stay.
void flush_domain_prefix(int n) {
    qvs::CommandBuffer<kCmdSize> cmd;
    cmd.format("ipset flush %s%d 2> /dev/null", kDomainFilePrefix, n);
    ::qv_do_cmd(cmd.c_str());
}

void reload_ip(const char *func, int n) {
    vpn_ipset_flush(n, kTypeIp);
    // Every tunnel's reload shares the restore file: held until ipset has read it.
    qvs::ListLock save_lock(func, "vpn_ipset_save");
    if (!save_lock) return;
    // Replaced by rename: ipset never reads another tunnel's half-written file.
    qvs::FileRewrite save(kRestoreFile, qvs::Durability::kVolatile);
    if (!save) return;
    char path[kPathSize];
    list_path(path, kIpFilePrefix, n);
    File list(path, "r");
    if (!list) {
        save.commit();  // left empty, as a truncating open would leave it
        return;
    }
    char line[kListLineSize];
    std::memset(line, 0, sizeof line);
    while (std::fgets(line, sizeof line, list.get()) != nullptr)
        std::fprintf(save.get(), "add %s%d %s", kIpSet, n, line);
    list.close();
    // A restore file cut short would load part of the list: not run.
    if (!save.commit()) {
        QVS_LOG_AS(func, qvs::kLogError, "open file %s failed.\n", kRestoreFile);
        return;
    }
    qvs::CommandBuffer<kCmdSize> cmd;
    cmd.format("ipset restore -f %s -exist", kRestoreFile);
    ::qv_do_cmd(cmd.c_str());
}

void reload_domain(int n) {
    flush_domain_prefix(n);
    update_dnsmasq_ipset_conf(n);
}

void reload_mac(const char *func, int n) {
    vpn_ipset_flush(n, kTypeMac);
    char path[kPathSize];
    list_path(path, kMacFilePrefix, n);
    File list(path, "r");
    if (!list) return;
    char line[kListLineSize];
    std::memset(line, 0, sizeof line);
    while (std::fgets(line, sizeof line, list.get()) != nullptr) {
        char mac[kMacTextSize];
        std::memset(mac, 0, sizeof mac);
        mac_to_colon_form(line, mac);
        // A line that would change the command is left out of the set.
        if (qvs::steering::refuse_unsafe_line(func, __LINE__, mac)) continue;
        vpn_ipset_add(n, 1, mac);
    }
}

int reload_mode(const char *func, int n, unsigned type) {
    switch (type) {
    case kTypeIp: reload_ip(func, n); break;
    case kTypeDomain: reload_domain(n); break;
    case kTypeMac: reload_mac(func, n); break;
    default: break;
    }
    return 0;
}

}  // namespace

// The tunnel's three lists, its sets and its dnsmasq file: one writer at a
// time, held for the whole call.
#define LOCK_TUNNEL(n) \
    qvs::ListLock tunnel_lock(__func__, "qvvpn", (n)); \
    if (!tunnel_lock) return -1

extern "C" {

int qvvpn_add_route_ip(int n, const char *ip) {
    if (ip == nullptr || QVS_REFUSE_UNSAFE(ip) || ip_too_long(__func__, n, ip)) return -1;
    LOCK_TUNNEL(n);
    if (dir_step(__func__) == DirStep::kFailed) return -1;
    char path[kPathSize];
    list_path(path, kIpFilePrefix, n);
    int found = find_line_in_file(path, ip);
    if (found > 0) return found;
    if (append_list_line(__func__, path, ip) != 0) return -1;
    vpn_ipset_add(n, 0, ip);
    return 0;
}

int qvvpn_del_route_ip(int n, const char *ip) {
    if (ip == nullptr || QVS_REFUSE_UNSAFE(ip) || ip_too_long(__func__, n, ip)) return -1;
    LOCK_TUNNEL(n);
    DirStep d = dir_step(__func__);
    if (d == DirStep::kFailed) return -1;
    if (d == DirStep::kCreated) return 0;
    char path[kPathSize];
    list_path(path, kIpFilePrefix, n);
    int k = find_line_in_file(path, ip);
    if (k > 0 && delete_list_line(__func__, k, path)) ipset_del(kIpSet, n, ip);
    return 0;
}

int qvvpn_flush_route_ip(int n) {
    LOCK_TUNNEL(n);
    DirStep d = dir_step(__func__);
    if (d == DirStep::kFailed) return -1;
    if (d == DirStep::kCreated) return 0;
    char path[kPathSize];
    list_path(path, kIpFilePrefix, n);
    if (write_list_file(__func__, path, "") != 0) return -1;
    vpn_ipset_flush(n, kTypeIp);
    return 0;
}

int qvvpn_add_route_domain(int n, const char *domain) {
    // Domains reach dnsmasq's configuration, one per line.
    if (domain == nullptr || QVS_REFUSE_UNSAFE(domain)) return -1;
    LOCK_TUNNEL(n);
    if (dir_step(__func__) == DirStep::kFailed) return -1;
    char path[kPathSize];
    list_path(path, kDomainFilePrefix, n);
    int found = find_line_in_file(path, domain);
    if (found == 0 && append_list_line(__func__, path, domain) != 0) return -1;
    update_dnsmasq_ipset_conf(n);
    return found;
}

int qvvpn_del_route_domain(int n, const char *domain) {
    if (domain == nullptr || QVS_REFUSE_UNSAFE(domain)) return -1;
    LOCK_TUNNEL(n);
    DirStep d = dir_step(__func__);
    if (d == DirStep::kFailed) return -1;
    if (d == DirStep::kCreated) return 0;
    char path[kPathSize];
    list_path(path, kDomainFilePrefix, n);
    int found = 0;
    {
        File f(path, "r");
        if (!f) return 0;
        char line[kSearchLineSize];
        std::memset(line, 0, sizeof line);
        char scratch[256];
        int number = 0;
        while (std::fgets(line, sizeof line, f.get()) != nullptr) {
            ++number;
            std::memset(scratch, 0, sizeof scratch);
            std::sscanf(line, "%*s %255s", scratch);
            if (std::strstr(line, domain) != nullptr) {
                found = number;
                break;
            }
        }
    }
    if (found > 0 && !delete_list_line(__func__, found, path)) return 0;
    vpn_ipset_flush(n, kTypeDomain);
    update_dnsmasq_ipset_conf(n);
    return 0;
}

int qvvpn_flush_route_domain(int n) {
    LOCK_TUNNEL(n);
    DirStep d = dir_step(__func__);
    if (d == DirStep::kFailed) return -1;
    if (d == DirStep::kCreated) return 0;
    char path[kPathSize];
    list_path(path, kDomainFilePrefix, n);
    if (write_list_file(__func__, path, "") != 0) return -1;
    vpn_ipset_flush(n, kTypeDomain);
    update_dnsmasq_ipset_conf(n);
    return 0;
}

int qvvpn_add_route_mac(int n, char *mac) {
    if (mac == nullptr || QVS_REFUSE_UNSAFE(mac)) return -1;
    LOCK_TUNNEL(n);
    if (dir_step(__func__) == DirStep::kFailed) return -1;
    str_tolower(mac);
    char path[kPathSize];
    list_path(path, kMacFilePrefix, n);
    int found = find_line_in_file(path, mac);
    if (found > 0) return found;
    if (append_list_line(__func__, path, mac) != 0) return -1;
    char colon[kMacTextSize];
    std::memset(colon, 0, sizeof colon);
    mac_to_colon_form(mac, colon);
    vpn_ipset_add(n, 1, colon);
    return 0;
}

int qvvpn_del_route_mac(int n, char *mac) {
    if (mac == nullptr || QVS_REFUSE_UNSAFE(mac)) return -1;
    LOCK_TUNNEL(n);
    DirStep d = dir_step(__func__);
    if (d == DirStep::kFailed) return -1;
    if (d == DirStep::kCreated) return 0;
    str_tolower(mac);
    char path[kPathSize];
    list_path(path, kMacFilePrefix, n);
    int k = find_line_in_file(path, mac);
    if (k > 0 && delete_list_line(__func__, k, path)) {
        char colon[kMacTextSize];
        std::memset(colon, 0, sizeof colon);
        mac_to_colon_form(mac, colon);
        ipset_del(kMacSet, n, colon);
    }
    return 0;
}

int qvvpn_flush_route_mac(int n) {
    LOCK_TUNNEL(n);
    DirStep d = dir_step(__func__);
    if (d == DirStep::kFailed) return -1;
    if (d == DirStep::kCreated) return 0;
    char path[kPathSize];
    list_path(path, kMacFilePrefix, n);
    if (write_list_file(__func__, path, "") != 0) return -1;
    vpn_ipset_flush(n, kTypeMac);
    return 0;
}

int qvvpn_reload_route(int n) {
    LOCK_TUNNEL(n);
    DirStep d = dir_step(__func__);
    if (d == DirStep::kFailed) return -1;
    if (d == DirStep::kCreated) return 0;
    reload_ip(__func__, n);
    reload_domain(n);
    reload_mac(__func__, n);
    return 0;
}

int qvvpn_reload_route_mode(int n, unsigned int type) {
    LOCK_TUNNEL(n);
    DirStep d = dir_step(__func__);
    if (d == DirStep::kFailed) return -1;
    if (d == DirStep::kCreated) return 0;
    return reload_mode(__func__, n, type);
}

int qvvpn_set_route_all(int n, unsigned int type, char *list) {
    // IP and MAC items end up in ipset's restore file and on command lines,
    // domains in dnsmasq's configuration: the same guard for every type.
    if (list == nullptr || QVS_REFUSE_UNSAFE(list)) return -1;
    LOCK_TUNNEL(n);
    if (dir_step(__func__) == DirStep::kFailed) return -1;
    const char *prefix = file_prefix_of(type);
    if (prefix == nullptr) return -1;
    char path[kPathSize];
    list_path(path, prefix, n);
    {
        qvs::steering::FileRewrite f(path);
        if (!f) return -1;
        char *save = nullptr;
        for (char *item = strtok_r(list, "%", &save); item != nullptr; item = strtok_r(nullptr, "%", &save))
            std::fprintf(f.get(), "%s\n", item);
        if (qvs::steering::commit_list_file(nullptr, f, path) != 0) return -1;  // quietly, as the open
    }
    reload_mode(__func__, n, type);
    return 0;
}

int qvvpn_get_route_all(int n, unsigned int type, char *out, int size) {
    LOCK_TUNNEL(n);
    DirStep d = dir_step(__func__);
    if (d == DirStep::kFailed) return -1;
    if (d == DirStep::kCreated) return 0;
    const char *prefix = file_prefix_of(type);
    if (prefix == nullptr || out == nullptr || size < 1) return -1;
    char path[kPathSize];
    list_path(path, prefix, n);
    // Each line is cut at its first blank (space or tab) and at its line end.
    return join_list_lines(path, '%', qvs::steering::kListingCut, out, size);
}

}  // extern "C"
