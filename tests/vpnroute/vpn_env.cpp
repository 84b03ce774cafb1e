// SPDX-License-Identifier: MIT
#include "vpn_env.hpp"

#include <arpa/inet.h>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

#include "qvsim.h"
#include "test_support.hpp"

namespace vpntest {

using qvstest::read_file;
using qvstest::run;

std::string ip_file(int n) { return kDir + "/VPN_IP_" + std::to_string(n); }
std::string domain_file(int n) { return kDir + "/VPN_DOMAIN_" + std::to_string(n); }
std::string mac_file(int n) { return kDir + "/VPN_MAC_" + std::to_string(n); }
std::string dnsmasq_file(int n) { return kDnsmasqDir + "/vpn_domain" + std::to_string(n); }

void prepare_dirs(bool with_list_dir) {
    ASSERT_TRUE(qvstest::in_sandbox()) << "these tests only run inside qvs-sandbox";
    ::mkdir("/userconfig/config", 0755);
    if (with_list_dir) ::mkdir(kDir.c_str(), 0755);
}

bool is_dir(const std::string &path) {
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

int mode_of(const std::string &path) {
    struct stat st;
    if (::stat(path.c_str(), &st) != 0) return -1;
    return static_cast<int>(st.st_mode & 07777);
}

bool logged(const std::string &text, const std::string &func, const std::string &message) {
    // "[qvs_utils.cpp:<func>:<line>][1] <message>"
    const std::string head = "[qvs_utils.cpp:" + func + ":";
    for (std::size_t p = text.find(head); p != std::string::npos; p = text.find(head, p + 1)) {
        std::size_t q = p + head.size();
        while (q < text.size() && text[q] >= '0' && text[q] <= '9') ++q;
        if (text.compare(q, 5, "][1] ") == 0 && text.compare(q + 5, message.size(), message) == 0) return true;
    }
    return false;
}

void journal_clear() { qvsim_journal_clear(); }

static std::vector<std::vector<std::string>> journal_lines() { return qvstest::journal_fields(); }

std::vector<std::string> commands_run() {
    std::vector<std::string> out;
    for (const auto &f : journal_lines())
        if (f.size() >= 3 && f[0] == "cmd" && f[1] == "qv_do_cmd") out.push_back(f[2]);
    return out;
}

std::vector<std::string> all_commands() {
    std::vector<std::string> out;
    for (const auto &f : journal_lines())
        if (f.size() >= 3 && f[0] == "cmd") out.push_back(f[1] + "\t" + f[2]);
    return out;
}

bool journal_logged(const std::string &func, const std::string &message) {
    for (const auto &f : journal_lines())
        if (f.size() >= 6 && f[0] == "log" && f[1] == "qvs_utils.cpp" && f[2] == func && f[4] == "1" &&
            f[5].compare(0, message.size(), message) == 0)
            return true;
    return false;
}

std::vector<std::string> split(const std::string &text, char sep) {
    std::vector<std::string> out;
    std::string cur;
    for (char c : text) {
        if (c == sep) {
            out.push_back(cur);
            cur.clear();
        } else {
            cur += c;
        }
    }
    if (!cur.empty()) out.push_back(cur);
    return out;
}

bool kernel_has_hash_mac() {
    int st = 0;
    run("/usr/sbin/ipset create qvs_probe_mac hash:mac 2>/dev/null", &st);
    if (st != 0) return false;
    run("/usr/sbin/ipset destroy qvs_probe_mac");
    return true;
}

static void sh(const std::string &cmd) {
    int st = 0;
    std::string out = run(cmd + " 2>&1", &st);
    ASSERT_EQ(st, 0) << cmd << "\n" << out;
}

void create_tunnel(int n) {
    std::string s = std::to_string(n);
    sh("ipset create vpn_ip" + s + " hash:net counters");
    sh("ipset create vpn_domain" + s + " hash:ip comment counters");
    bool real_mac = kernel_has_hash_mac();
    if (!real_mac) {
        ::mkdir("/opt/qvstest", 0755);
        ::mkdir("/opt/qvstest/bin", 0755);
        ::unlink("/opt/qvstest/bin/ipset");
        ASSERT_EQ(::symlink(VPNTEST_MACSET_STANDIN, "/opt/qvstest/bin/ipset"), 0);
        std::string path = std::getenv("PATH") != nullptr ? std::getenv("PATH") : "/usr/sbin:/usr/bin:/sbin:/bin";
        if (path.rfind("/opt/qvstest/bin:", 0) != 0) ::setenv("PATH", ("/opt/qvstest/bin:" + path).c_str(), 1);
    }
    sh("iptables -t mangle -N QV_VPN" + s);
    sh("iptables -t mangle -A PREROUTING -j QV_VPN" + s);
    sh("ipset create vpn_mac" + s + " hash:mac counters");
    sh("iptables -t mangle -A QV_VPN" + s + " -m set --match-set vpn_ip" + s + " src");
    sh("iptables -t mangle -A QV_VPN" + s + " -m set --match-set vpn_domain" + s + " src");
    if (real_mac) sh("iptables -t mangle -A QV_VPN" + s + " -m set --match-set vpn_mac" + s + " src");
}

std::set<std::string> members(const std::string &set) {
    std::set<std::string> out;
    std::string text = run("ipset list " + set + " 2>/dev/null");
    bool in_members = false;
    for (const std::string &line : split(text, '\n')) {
        if (line == "Members:") {
            in_members = true;
            continue;
        }
        if (!in_members || line.empty()) continue;
        std::string m = line.substr(0, line.find(' '));
        std::size_t c = line.find("comment \"");
        if (c != std::string::npos) {
            std::size_t b = c + 9;
            m += " " + line.substr(b, line.find('"', b) - b);
        }
        out.insert(m);
    }
    return out;
}

void add_resolved(int n, const std::string &address, const std::string &domain) {
    sh("ipset add vpn_domain" + std::to_string(n) + " " + address + " comment \"" + domain + "\"");
}

void create_peer() {
    sh("ip netns add peer");
    sh("ip link add vA type veth peer name vB netns peer");
    sh("ip addr add 10.200.0.1/24 dev vA");
    sh("ip link set vA up");
    sh("ip -n peer link set lo up");
    sh("ip -n peer link set vB up");
}

void send_from_peer(const std::string &mac, const std::string &src_ip, int count) {
    sh("ip -n peer link set vB address " + mac);
    run("ip -n peer addr add " + src_ip + "/24 dev vB 2>/dev/null");
    std::string va_mac = run("cat /sys/class/net/vA/address");
    if (!va_mac.empty() && va_mac.back() == '\n') va_mac.pop_back();
    sh("ip -n peer neigh replace 10.200.0.1 lladdr " + va_mac + " dev vB nud permanent");
    pid_t pid = ::fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        int ns = ::open("/run/netns/peer", O_RDONLY);
        if (ns < 0 || ::setns(ns, CLONE_NEWNET) != 0) ::_exit(2);
        int s = ::socket(AF_INET, SOCK_DGRAM, 0);
        sockaddr_in src{};
        src.sin_family = AF_INET;
        ::inet_pton(AF_INET, src_ip.c_str(), &src.sin_addr);
        if (s < 0 || ::bind(s, reinterpret_cast<sockaddr *>(&src), sizeof src) != 0) ::_exit(3);
        sockaddr_in dst{};
        dst.sin_family = AF_INET;
        dst.sin_port = htons(9);
        ::inet_pton(AF_INET, "10.200.0.1", &dst.sin_addr);
        for (int i = 0; i < count; ++i)
            if (::sendto(s, "x", 1, 0, reinterpret_cast<sockaddr *>(&dst), sizeof dst) != 1) ::_exit(4);
        ::_exit(0);
    }
    int st = 0;
    ::waitpid(pid, &st, 0);
    ASSERT_TRUE(WIFEXITED(st) && WEXITSTATUS(st) == 0) << "sender failed: " << st;
    // Received frames are processed in softirq context; let them land.
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
}

int start_dnsmasq(const std::string &log_path) {
    pid_t pid = ::fork();
    if (pid == 0) {
        std::string log = "--log-facility=" + log_path;
        ::execl("/usr/sbin/dnsmasq", "dnsmasq", "-k", "--port=5353", "--listen-address=127.0.0.1",
                "--bind-interfaces", "--no-resolv", "--no-hosts", "--pid-file=", log.c_str(), "--user=root",
                "--group=root", static_cast<char *>(nullptr));
        ::_exit(127);
    }
    if (pid < 0 || !wait_for_text(log_path, "started", 5000)) return -1;
    return pid;
}

void stop_process(int pid) {
    if (pid <= 0) return;
    ::kill(pid, SIGTERM);
    int st = 0;
    ::waitpid(pid, &st, 0);
}

void FakeDnsmasq::start() {
    int fds[2];
    ASSERT_EQ(::pipe(fds), 0);
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    pid = ::fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        ::close(fds[0]);
        ::close(ready[0]);
        sigset_t set;
        sigemptyset(&set);
        sigaddset(&set, SIGUSR1);
        sigprocmask(SIG_BLOCK, &set, nullptr);
        ::prctl(PR_SET_NAME, "dnsmasq", 0, 0, 0);
        (void)!::write(ready[1], "r", 1);
        siginfo_t info{};
        if (sigwaitinfo(&set, &info) != SIGUSR1) ::_exit(1);
        char msg[96];
        // The value as int, then the whole union as a pointer-wide number:
        // every byte of it must have been set by the sender.
        int len = std::snprintf(msg, sizeof msg, "%d %d %d %llu", info.si_signo, info.si_code,
                                info.si_value.sival_int,
                                static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(info.si_value.sival_ptr)));
        (void)!::write(fds[1], msg, static_cast<size_t>(len));
        ::_exit(0);
    }
    ::close(fds[1]);
    ::close(ready[1]);
    char c;
    ASSERT_EQ(::read(ready[0], &c, 1), 1);
    ::close(ready[0]);
    rd = fds[0];
}

std::string FakeDnsmasq::report(int timeout_ms) {
    pollfd p{rd, POLLIN, 0};
    if (::poll(&p, 1, timeout_ms) != 1) return "";
    char buf[96] = {};
    ssize_t n = ::read(rd, buf, sizeof buf - 1);
    return n > 0 ? std::string(buf, static_cast<size_t>(n)) : std::string();
}

FakeDnsmasq::~FakeDnsmasq() {
    if (pid > 0) {
        ::kill(pid, SIGKILL);
        ::waitpid(pid, nullptr, 0);
    }
    if (rd >= 0) ::close(rd);
}

bool wait_for_text(const std::string &path, const std::string &text, int timeout_ms) {
    for (int waited = 0; waited <= timeout_ms; waited += 20) {
        if (read_file(path).find(text) != std::string::npos) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return false;
}

}  // namespace vpntest
