// SPDX-License-Identifier: MIT
// Shared helpers of the VPN route list suites: paths, list files, the
// tunnel's kernel side (ipset sets, mangle chain, a peer namespace that
// sends traffic) and a dnsmasq process.
#pragma once

#include <set>
#include <string>
#include <vector>

namespace vpntest {

inline const std::string kDir = "/userconfig/config/qvvpn";
inline const std::string kDnsmasqDir = "/etc/dnsmasq/ipset";

std::string ip_file(int n);
std::string domain_file(int n);
std::string mac_file(int n);
std::string dnsmasq_file(int n);

// /userconfig/config exists; with_list_dir also creates the list directory.
void prepare_dirs(bool with_list_dir = true);
bool is_dir(const std::string &path);
int mode_of(const std::string &path);

// The platform logger's lines that carry the given function and text.
// (The simulated logger prints "[file:function:line][level] message".)
bool logged(const std::string &stderr_text, const std::string &func, const std::string &message);

// --- kernel side -------------------------------------------------------
// Creates the sets and chain as the tunnel's set-up would: vpn_ip<n>
// hash:net, vpn_domain<n> hash:ip with comments, vpn_mac<n> hash:mac, all
// with counters, and mangle chain QV_VPN<n> (jumped to from PREROUTING)
// with one counting rule per set matching the source. Where the kernel has
// no hash:mac type, the MAC set is the stand-in script's (see
// macset-standin.sh), put first on PATH.
void create_tunnel(int n);
bool kernel_has_hash_mac();
// Members of a set, one per element: the member text ("10.1.2.0/24",
// "aa:bb:cc:dd:ee:ff"), or for the domain set "address comment".
std::set<std::string> members(const std::string &set);
// Adds an element as dnsmasq would for a resolved domain.
void add_resolved(int n, const std::string &address, const std::string &domain);
// Peer namespace "peer" behind veth vA (10.200.0.1/24, here) - vB (there).
void create_peer();
// Gives vB the MAC and address, then sends count UDP datagrams from that
// address to 10.200.0.1.
void send_from_peer(const std::string &mac, const std::string &src_ip, int count);

// --- dnsmasq -------------------------------------------------------------
// Starts dnsmasq in the foreground (listening on 127.0.0.1:5353, logging to
// log_path); returns its pid once it has logged that it started.
int start_dnsmasq(const std::string &log_path);
void stop_process(int pid);

// A process that ps lists as "dnsmasq" and that reports the first SIGUSR1's
// signal number, si_code, value and the value's whole union read as a
// pointer-wide number ("10 -1 4 4") through a pipe.
struct FakeDnsmasq {
    int pid = -1;
    int rd = -1;
    void start();
    // What was reported, or "" when nothing came within timeout_ms.
    std::string report(int timeout_ms = 5000);
    ~FakeDnsmasq();
};
// Waits up to timeout_ms for text to appear in the file.
bool wait_for_text(const std::string &path, const std::string &text, int timeout_ms);

// --- the platform journal ----------------------------------------------------
void journal_clear();
// The lines given to qv_do_cmd since the last clear, unescaped.
std::vector<std::string> commands_run();
// Every "cmd" line of any runner since the last clear (runner, tab, line).
std::vector<std::string> all_commands();
// True when the journal holds a level-1 log line of func whose message
// starts with message.
bool journal_logged(const std::string &func, const std::string &message);

// Splits text at every sep.
std::vector<std::string> split(const std::string &text, char sep);

}  // namespace vpntest
