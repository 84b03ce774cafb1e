// SPDX-License-Identifier: MIT
#include "ipsec_env.hpp"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <thread>

#include <gtest/gtest.h>

#include "qvsim.h"
#include "test_support.hpp"

namespace ipsectest {

using qvstest::read_file;
using qvstest::run;
using qvstest::write_file;

namespace {

constexpr int kIpsecOid = 533;
const std::string kStandinDir = "/opt/qvstest/bin";
// The connections the gateway's daemon knows, each towards its own server
// address (so that each gets an IKE SA of its own).
const int kConns[] = {1, 3, 200, 255};

std::string server_addr(int n) {
    int last = 2;
    for (int c : kConns) {
        if (c == n) break;
        ++last;
    }
    return "10.77.0." + std::to_string(last);
}

void sleep_ms(int ms) { std::this_thread::sleep_for(std::chrono::milliseconds(ms)); }

}  // namespace

void prepare() {
    ASSERT_TRUE(qvstest::in_sandbox()) << "these tests only run inside qvs-sandbox";
    ASSERT_EQ(qvsim_reset(), 0);
    ::mkdir("/userconfig/config", 0755);
}

std::string sh(const std::string &cmd) {
    int st = 0;
    std::string out = run(cmd + " 2>&1", &st);
    EXPECT_EQ(st, 0) << cmd << "\n" << out;
    return out;
}

void make_ca(const std::string &subject, const std::string &key_path, const std::string &cert_path) {
    sh("ipsec pki --gen --outform pem > " + key_path);
    sh("ipsec pki --self --ca --lifetime 3650 --in " + key_path + " --dn \"" + subject + "\" --outform pem > " +
       cert_path);
}

void issue_cert(const std::string &ca_key, const std::string &ca_cert, const std::string &subject,
                const std::string &san, const std::string &key_path, const std::string &cert_path) {
    sh("ipsec pki --gen --outform pem > " + key_path);
    sh("ipsec pki --pub --in " + key_path + " | ipsec pki --issue --cacert " + ca_cert + " --cakey " + ca_key +
       " --dn \"" + subject + "\" --san " + san + " --outform pem > " + cert_path);
}

// --- the store ---------------------------------------------------------------

void add_config(int n, bool enabled) {
    const std::string inst = std::to_string(n);
    if (qvsim_exists(kIpsecOid, inst.c_str()) != 1) {
        ASSERT_EQ(qvsim_add_instance(kIpsecOid, inst.c_str()), 0);
    }
    ASSERT_EQ(qvsim_set(kIpsecOid, inst.c_str(), "Enable", enabled ? "1" : "0"), 0);
}

std::string status_of(int n) {
    char buf[64] = {};
    if (qvsim_get(kIpsecOid, std::to_string(n).c_str(), "ConnectionStatus", buf, sizeof buf) != 0) return "<none>";
    return buf;
}

void set_status(int n, const std::string &status) {
    ASSERT_EQ(qvsim_set(kIpsecOid, std::to_string(n).c_str(), "ConnectionStatus", status.c_str()), 0);
}

std::map<int, std::string> statuses() {
    std::map<int, std::string> out;
    for (int i = 1; i <= 10; ++i)
        if (qvsim_exists(kIpsecOid, std::to_string(i).c_str()) == 1) out[i] = status_of(i);
    return out;
}

std::vector<std::pair<std::string, std::string>> status_writes(bool *all_without_notify) {
    std::vector<std::pair<std::string, std::string>> out;
    bool quiet = true;
    std::string last_nnotify;
    for (const auto &f : qvstest::journal_fields()) {
        if (f.size() >= 3 && f[0] == "nnotify") {
            last_nnotify = f[1] + " " + f[2];
            continue;
        }
        if (f.size() >= 6 && f[0] == "set") {
            if (f[1] != "533" || f[3] != "ConnectionStatus" || f[4] != "0xc0000000" ||
                last_nnotify != "533 " + f[2])
                quiet = false;
            if (f[3] == "ConnectionStatus") out.emplace_back(f[2], f[5]);
        }
        last_nnotify.clear();
    }
    if (all_without_notify != nullptr) *all_without_notify = quiet;
    return out;
}

// --- the journal -------------------------------------------------------------

void journal_clear() { qvsim_journal_clear(); }

std::vector<std::string> commands_run() {
    std::vector<std::string> out;
    for (const auto &f : qvstest::journal_fields())
        if (f.size() >= 3 && f[0] == "cmd" && f[1] == "qv_do_cmd") out.push_back(f[2]);
    return out;
}

bool journal_logged(const std::string &func, const std::string &message) {
    for (const auto &f : qvstest::journal_fields())
        if (f.size() >= 6 && f[0] == "log" && f[1] == "qvs_utils.cpp" && f[2] == func && f[4] == "1" &&
            f[5].compare(0, message.size(), message) == 0)
            return true;
    return false;
}

bool balanced() { return qvsim_journal_count("attach") == qvsim_journal_count("detach"); }

int count(const char *kind) { return qvsim_journal_count(kind); }

// --- the swanctl stand-in ------------------------------------------------------

void use_swanctl_standin() {
    sh("mkdir -p " + kStandinDir);
    ::unlink((kStandinDir + "/swanctl").c_str());
    ASSERT_EQ(::symlink(IPSECTEST_SWANCTL_STANDIN, (kStandinDir + "/swanctl").c_str()), 0);
    const char *path = std::getenv("PATH");
    std::string p = path != nullptr ? path : "/usr/sbin:/usr/bin:/sbin:/bin";
    if (p.rfind(kStandinDir + ":", 0) != 0) ::setenv("PATH", (kStandinDir + ":" + p).c_str(), 1);
}

void standin_list(const std::string &text) {
    write_file("/tmp/sa-list.txt", text);
    ::setenv("QVS_TEST_SA_LIST", "/tmp/sa-list.txt", 1);
}

// --- two IKE daemons -------------------------------------------------------------

IkePair::~IkePair() { stop(); }

int IkePair::start_daemon(const std::string &cmd) {
    const std::string conf = cmd.find("ipsa") != std::string::npos ? dir_ + "/a/strongswan.conf"
                                                                    : dir_ + "/b/strongswan.conf";
    const std::string out = cmd.find("ipsa") != std::string::npos ? dir_ + "/a/out" : dir_ + "/b/out";
    pid_t pid = ::fork();
    if (pid == 0) {
        int fd = ::open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (fd >= 0) {
            ::dup2(fd, 1);
            ::dup2(fd, 2);
            ::close(fd);
        }
        ::setenv("STRONGSWAN_CONF", conf.c_str(), 1);
        ::execl("/bin/sh", "sh", "-c", cmd.c_str(), static_cast<char *>(nullptr));
        ::_exit(127);
    }
    return pid;
}

void IkePair::start() {
    const std::string a = dir_ + "/a", b = dir_ + "/b";
    for (const std::string &d : {a, b})
        for (const char *sub : {"", "/x509", "/x509ca", "/private"}) sh("mkdir -p " + d + sub);

    // Certificates: one test CA; the gateway and the server.
    make_ca("C=CN, O=IKE Test, CN=IKE Test CA", dir_ + "/ca.key.pem", a + "/x509ca/ca.cert.pem");
    sh("cp " + a + "/x509ca/ca.cert.pem " + b + "/x509ca/ca.cert.pem");
    issue_cert(dir_ + "/ca.key.pem", a + "/x509ca/ca.cert.pem", "C=CN, O=IKE Test, CN=gateway", "gateway",
               a + "/private/gateway.key.pem", a + "/x509/gateway.cert.pem");
    issue_cert(dir_ + "/ca.key.pem", a + "/x509ca/ca.cert.pem", "C=CN, O=IKE Test, CN=server", "server",
               b + "/private/server.key.pem", b + "/x509/server.cert.pem");

    // Network: ipsa (10.77.0.1) - veth - ipsb (one server address per
    // connection); each side holds an address inside its traffic selectors.
    sh("ip netns add ipsa");
    sh("ip netns add ipsb");
    sh("ip link add va netns ipsa type veth peer name vb netns ipsb");
    sh("ip -n ipsa addr add 10.77.0.1/24 dev va");
    for (int n : kConns) {
        sh("ip -n ipsb addr add " + server_addr(n) + "/24 dev vb");
        sh("ip -n ipsa addr add 10." + std::to_string(n) + ".1.1/32 dev lo");
        sh("ip -n ipsb addr add 10." + std::to_string(n) + ".2.1/32 dev lo");
    }
    for (const char *ns : {"ipsa", "ipsb"}) sh(std::string("ip -n ") + ns + " link set lo up");
    sh("ip -n ipsa link set va up");
    sh("ip -n ipsb link set vb up");

    // Daemon settings: only the plugins needed, a log file each. The SAs go
    // to the kernel's ESP where it has one (the booted ARM target), to
    // userspace IPsec otherwise.
    kernel_esp_ = kernel_has_esp();
    const std::string plugins =
        std::string("random nonce aes sha1 sha2 hmac kdf gmp pem pkcs1 pubkey x509 revocation constraints ") +
        (kernel_esp_ ? "" : "kernel-libipsec ") + "kernel-netlink socket-default vici";
    auto daemon_conf = [&](const std::string &d, const std::string &vici) {
        write_file(d + "/strongswan.conf", "charon {\n  load_modular = no\n  load = " + plugins +
                                               "\n  filelog {\n    log {\n      path = " + d +
                                               "/charon.log\n      default = 1\n      ike = 2\n      chd = 2\n"
                                               "    }\n  }\n  plugins {\n    vici {\n      socket = " +
                                               vici + "\n    }\n  }\n}\n");
    };
    daemon_conf(a, "unix:///var/run/charon.vici");
    daemon_conf(b, "unix://" + b + "/charon.vici");

    std::string conns_a = "connections {\n";
    std::string children_b;
    for (int n : kConns) {
        const std::string s = std::to_string(n);
        conns_a += "  conn" + s + " {\n    local_addrs = 10.77.0.1\n    remote_addrs = " + server_addr(n) +
                   "\n    proposals = aes128-sha256-modp2048\n"
                   "    local {\n      auth = pubkey\n      certs = gateway.cert.pem\n      id = gateway\n    }\n"
                   "    remote {\n      auth = pubkey\n      id = server\n    }\n"
                   "    children {\n      child" + s + " {\n        local_ts = 10." + s + ".1.0/24\n"
                   "        remote_ts = 10." + s + ".2.0/24\n        esp_proposals = aes128-sha256\n      }\n"
                   "    }\n  }\n";
        children_b += "      child" + s + " {\n        local_ts = 10." + s + ".2.0/24\n        remote_ts = 10." + s +
                      ".1.0/24\n        esp_proposals = aes128-sha256\n      }\n";
    }
    conns_a += "}\n";
    write_file(a + "/swanctl.conf", conns_a);
    write_file(b + "/swanctl.conf",
               "connections {\n  gateways {\n    proposals = aes128-sha256-modp2048\n"
               "    local {\n      auth = pubkey\n      certs = server.cert.pem\n      id = server\n    }\n"
               "    remote {\n      auth = pubkey\n      id = gateway\n    }\n    children {\n" +
                   children_b + "    }\n  }\n}\n");

    // The gateway's daemon shares this mount namespace (its pid file and vici
    // socket are the default ones under /var/run); the server's gets a
    // /var/run of its own.
    pid_a_ = start_daemon("exec ip netns exec ipsa /usr/lib/ipsec/charon");
    pid_b_ = start_daemon("exec ip netns exec ipsb unshare --mount sh -c "
                          "'mount -t tmpfs qvs-ike-run /var/run && exec /usr/lib/ipsec/charon'");
    ASSERT_GT(pid_a_, 0);
    ASSERT_GT(pid_b_, 0);
    const std::string uri_b = " --uri unix://" + b + "/charon.vici";
    bool ready = false;
    for (int waited = 0; waited < 10000 && !ready; waited += 50) {
        int st_a = 1, st_b = 1;
        run("/usr/sbin/swanctl --stats >/dev/null 2>&1", &st_a);
        run("/usr/sbin/swanctl --stats" + uri_b + " >/dev/null 2>&1", &st_b);
        ready = st_a == 0 && st_b == 0;
        if (!ready) sleep_ms(50);
    }
    ASSERT_TRUE(ready) << "daemons did not come up:\n"
                       << read_file(a + "/out") << read_file(a + "/charon.log") << read_file(b + "/out")
                       << read_file(b + "/charon.log");
    sh("/usr/sbin/swanctl --load-all --file " + a + "/swanctl.conf");
    sh("/usr/sbin/swanctl --load-all --file " + b + "/swanctl.conf" + uri_b);
}

void IkePair::stop() {
    for (int *pid : {&pid_a_, &pid_b_}) {
        if (*pid <= 0) continue;
        ::kill(*pid, SIGTERM);
        int st = 0;
        bool gone = false;
        for (int waited = 0; waited < 5000; waited += 20) {
            if (::waitpid(*pid, &st, WNOHANG) == *pid) {
                gone = true;
                break;
            }
            sleep_ms(20);
        }
        if (!gone) {
            ::kill(*pid, SIGKILL);
            ::waitpid(*pid, &st, 0);
        }
        *pid = -1;
    }
}

std::string IkePair::gateway(const std::string &args, int *status) {
    return run("/usr/sbin/swanctl " + args + " 2>/dev/null", status);
}

std::string IkePair::list_sas() { return gateway("--list-sas"); }

std::string IkePair::kernel_sas() { return run("ip -n ipsa xfrm state 2>&1"); }

bool kernel_has_esp() {
    // One ESP state in a namespace of its own, gone with it: refused where
    // the kernel has no ESP (or no IPsec netlink interface).
    int st = 1;
    run("ip netns add qvs_esp_probe 2>/dev/null && ip -n qvs_esp_probe xfrm state add src 10.77.0.1 dst 10.77.0.2 "
        "proto esp spi 0x100 mode tunnel enc 'cbc(aes)' 0x00112233445566778899aabbccddeeff "
        "auth 'hmac(sha256)' 0x00112233445566778899aabbccddeeff00112233445566778899aabbccddeeff >/dev/null 2>&1",
        &st);
    run("ip netns del qvs_esp_probe 2>/dev/null");
    return st == 0;
}

bool IkePair::bring_up(int n) {
    const std::string s = std::to_string(n);
    int st = 1;
    std::string out = gateway("--initiate --ike conn" + s + " --child child" + s + " --timeout 10", &st);
    EXPECT_EQ(st, 0) << out << read_file(dir_ + "/a/charon.log");
    return st == 0;
}

void IkePair::tear_down(int n) {
    int st = 1;
    std::string out = gateway("--terminate --ike conn" + std::to_string(n) + " --timeout 10", &st);
    EXPECT_EQ(st, 0) << out;
}

void IkePair::cut_link() { sh("ip -n ipsb link set vb down"); }

}  // namespace ipsectest
