// SPDX-License-Identifier: MIT
// The tunnel's domain list handed to dnsmasq: one "<domain> vpn_domain<n> 1"
// line per entry under /etc/dnsmasq/ipset, then SIGUSR1 (value 4) to dnsmasq.
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

#include "core/command.hpp"
#include "core/durable_file.hpp"
#include "core/log.hpp"
#include "steering/vpn_common.hpp"

namespace qvs::vpn {

namespace {

// Finds dnsmasq through "ps" and queues SIGUSR1 with the value 4 to it. When
// no dnsmasq line is printed the id read is 0; sigqueue then finds no such
// process and nothing happens.
void send_reload_sig_to_dnsmasq() {
    char line[kPidLineSize];
    std::memset(line, 0, sizeof line);
    {
        Pipe ps("ps | grep dnsmasq | grep -v grep");
        if (!ps) {
            std::printf("[%s:%d]popen failed!\n", __func__, __LINE__);
            std::fflush(stdout);
            return;
        }
        if (std::fgets(line, sizeof line, ps.get()) == nullptr) line[0] = '\0';
    }
    pid_t pid = static_cast<pid_t>(std::strtol(line, nullptr, 10));
    // Zeroed whole: on 64-bit hosts the union is wider than its int.
    union sigval value;
    std::memset(&value, 0, sizeof value);
    value.sival_int = 4;
    ::sigqueue(pid, SIGUSR1, value);
}

}  // namespace

int update_dnsmasq_ipset_conf(int n) {
    if (steering::list_dir_step(kDnsmasqDir, __func__, "creat dnsmasq ipset dir error.\n") == DirStep::kFailed)
        return -1;
    char list[kPathSize];
    list_path(list, kDomainFilePrefix, n);
    char conf[kPathSize];
    std::memset(conf, 0, sizeof conf);
    std::snprintf(conf, sizeof conf, "%s/%s%d", kDnsmasqDir, kDomainSet, n);
    if (::access(list, F_OK) != 0) return 0;

    File in(list, "r");
    if (!in) {
        QVS_LOG(kLogError, "open file %s failed\n", list);
        return -1;
    }
    // dnsmasq reads it: replaced by rename, never seen half-written.
    FileRewrite out(conf, Durability::kVolatile);
    if (!out) {
        QVS_LOG(kLogError, "open file %s failed\n", conf);
        return -1;
    }
    char piece[kDomainPieceSize];
    std::memset(piece, 0, sizeof piece);
    while (std::fgets(piece, sizeof piece, in.get()) != nullptr) {
        std::size_t len = std::strlen(piece);
        if (len < 2) continue;
        piece[len - 1] = '\0';
        std::fprintf(out.get(), "%s %s%d %d\n", piece, kDomainSet, n, 1);
    }
    in.close();
    // A configuration cut short is never handed to dnsmasq.
    if (!out.commit()) {
        QVS_LOG(kLogError, "open file %s failed\n", conf);
        return -1;
    }
    send_reload_sig_to_dnsmasq();
    return 0;
}

}  // namespace qvs::vpn
