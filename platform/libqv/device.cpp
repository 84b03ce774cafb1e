// SPDX-License-Identifier: MIT
// Device calls of the simulated gateway: switch ports and VLANs, network
// devices, QoS host entries and system facts. State lives in the store's
// device table (qvsim_device_get); each call is journaled as
// "device <call> <arguments...>" and fails when a "device <call>" fault is set.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>

#include "libqv.h"
#include "sim.hpp"

using namespace qvsim;

namespace {

std::string num(long long v) { return std::to_string(v); }

std::string mac_text(const uint8_t *m) {
    if (m == nullptr) return "(null)";
    char b[18];
    std::snprintf(b, sizeof b, "%02x:%02x:%02x:%02x:%02x:%02x", m[0], m[1], m[2], m[3], m[4], m[5]);
    return b;
}

bool failing(const char *call) { return db() == nullptr || fault_active("device", call); }

// Interface names handed to "ip": short and plain, never shell text.
bool plain_ifname(const char *name) {
    if (name == nullptr || *name == '\0' || std::strlen(name) > 15) return false;
    for (const char *p = name; *p != '\0'; ++p)
        if (!((*p >= 'a' && *p <= 'z') || (*p >= 'A' && *p <= 'Z') || (*p >= '0' && *p <= '9') || *p == '.' ||
              *p == '_' || *p == '-'))
            return false;
    return true;
}

// Real interfaces are made only where the caller runs in a network namespace
// of its own (the test sandbox), never in the host's.
bool own_netns() {
    const char *sandbox = std::getenv("QVS_SANDBOX");
    if (sandbox != nullptr && *sandbox != '\0') return true;
    char self[64] = {}, init[64] = {};
    if (::readlink("/proc/self/ns/net", self, sizeof self - 1) <= 0) return false;
    if (::readlink("/proc/1/ns/net", init, sizeof init - 1) <= 0) return false;
    return std::strcmp(self, init) != 0;
}

// Runs "ip" with arguments (no shell); true on exit status 0.
bool run_ip(const char *const argv[]) {
    pid_t pid = ::fork();
    if (pid < 0) return false;
    if (pid == 0) {
        int devnull = ::open("/dev/null", O_RDWR);
        if (devnull >= 0) {
            ::dup2(devnull, 1);
            ::dup2(devnull, 2);
        }
        ::execvp("ip", const_cast<char *const *>(argv));
        ::_exit(127);
    }
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0) {
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace

extern "C" {

int libqv_switchApi_ethPortName2PhyPortNum(const char *portName) {
    qvsim::ApiLock api_lock;
    journal("device", "libqv_switchApi_ethPortName2PhyPortNum", portName != nullptr ? portName : "(null)");
    if (failing("libqv_switchApi_ethPortName2PhyPortNum") || portName == nullptr) return -1;
    if (std::strncmp(portName, "eth", 3) != 0 || portName[3] == '\0') return -1;
    int n = 0;
    for (const char *p = portName + 3; *p != '\0'; ++p) {
        if (*p < '0' || *p > '9' || n > 99) return -1;
        n = n * 10 + (*p - '0');
    }
    return n;
}

int FC_libqv_switchApi_portSetAdmin(int phyPort, int admin) {
    qvsim::ApiLock api_lock;
    journal("device", "FC_libqv_switchApi_portSetAdmin", num(phyPort), num(admin));
    if (failing("FC_libqv_switchApi_portSetAdmin") || phyPort < 0) return -1;
    return device_put("port." + num(phyPort) + ".admin", admin ? "1" : "0") ? 0 : -1;
}

int libqv_switchApi_setVlanCfgMain(const QVS_SWITCH_VLAN_CFG *cfg) {
    qvsim::ApiLock api_lock;
    if (cfg == nullptr) {
        journal("device", "libqv_switchApi_setVlanCfgMain", "(null)");
        return -1;
    }
    journal("device", "libqv_switchApi_setVlanCfgMain", num(cfg->defaultTCI), num(cfg->vlanType));
    if (failing("libqv_switchApi_setVlanCfgMain")) return -1;
    return device_put("switch.vlan", num(cfg->defaultTCI) + " " + num(cfg->vlanType)) ? 0 : -1;
}

int libqv_netApi_addDev(const char *baseName, const char *devName, int type, int vid, int arg1, int arg2, int arg3,
                        int arg4) {
    qvsim::ApiLock api_lock;
    journal("device", "libqv_netApi_addDev", baseName != nullptr ? baseName : "(null)",
            devName != nullptr ? devName : "(null)", num(type), num(vid), num(arg1), num(arg2), num(arg3), num(arg4));
    if (failing("libqv_netApi_addDev") || !plain_ifname(baseName) || !plain_ifname(devName) || vid < 0 ||
        vid > 4094)
        return -1;
    std::string key = std::string("netdev.") + devName, old;
    if (device_get(key, old)) return -1;
    const char *kind = "recorded";
    if (own_netns()) {
        std::string id = num(vid);
        const char *const vlan[] = {"ip", "link", "add", "link", baseName, "name", devName,
                                    "type", "vlan", "id", id.c_str(), nullptr};
        // A kernel without 802.1Q support gets a MAC VLAN on the same base
        // instead: still a real sub-interface of the base device.
        const char *const macvlan[] = {"ip", "link", "add", "link", baseName, "name", devName,
                                       "type", "macvlan", nullptr};
        if (run_ip(vlan))
            kind = "vlan";
        else if (run_ip(macvlan))
            kind = "macvlan";
        else
            return -1;
    }
    return device_put(key, std::string(baseName) + " " + num(type) + " " + num(vid) + " " + kind) ? 0 : -1;
}

int libqv_netApi_remDev(const char *devName) {
    qvsim::ApiLock api_lock;
    journal("device", "libqv_netApi_remDev", devName != nullptr ? devName : "(null)");
    if (failing("libqv_netApi_remDev") || !plain_ifname(devName)) return -1;
    std::string key = std::string("netdev.") + devName, old;
    bool known = device_get(key, old);
    bool removed = false;
    if (own_netns()) {
        const char *const argv[] = {"ip", "link", "del", devName, nullptr};
        removed = run_ip(argv);
    }
    if (known) device_del(key);
    return known || removed ? 0 : -1;
}

int libqv_netApi_setVlanMode(int vlanMode, int vlan, int vlanType, int phyIndex) {
    qvsim::ApiLock api_lock;
    journal("device", "libqv_netApi_setVlanMode", num(vlanMode), num(vlan), num(vlanType), num(phyIndex));
    if (failing("libqv_netApi_setVlanMode")) return -1;
    return device_put("vlanmode", num(vlanMode) + " " + num(vlan) + " " + num(vlanType) + " " + num(phyIndex)) ? 0
                                                                                                              : -1;
}

int libqv_qos_hostEntryAdd(int hostIndex, const uint8_t *mac, int enable, uint32_t upLimit, uint32_t downLimit,
                           uint32_t *bucket, uint32_t *counter) {
    qvsim::ApiLock api_lock;
    journal("device", "libqv_qos_hostEntryAdd", num(hostIndex), mac_text(mac), num(enable), num(upLimit),
            num(downLimit));
    if (failing("libqv_qos_hostEntryAdd") || mac == nullptr || bucket == nullptr || counter == nullptr) return -1;
    Tx tx(db());
    if (!tx.ok()) return -1;
    std::string key = "qos." + num(hostIndex), old;
    unsigned long b = 0, c = 0;
    if (device_get(key, old)) {
        char m[32] = {};
        std::sscanf(old.c_str(), "%31s %lu %lu", m, &b, &c);
    } else {
        // The lowest bucket and counter numbers that no other entry holds.
        std::set<unsigned long> buckets, counters;
        for (auto &p : device_all("qos.")) {
            char m[32] = {};
            unsigned long ob = 0, oc = 0;
            if (std::sscanf(p.second.c_str(), "%31s %lu %lu", m, &ob, &oc) == 3) {
                buckets.insert(ob);
                counters.insert(oc);
            }
        }
        b = 1;
        while (buckets.count(b)) ++b;
        c = 1;
        while (counters.count(c)) ++c;
    }
    if (!device_put(key, mac_text(mac) + " " + num(static_cast<long long>(b)) + " " +
                             num(static_cast<long long>(c)) + " " + num(upLimit) + " " + num(downLimit)) ||
        !tx.commit())
        return -1;
    *bucket = static_cast<uint32_t>(b);
    *counter = static_cast<uint32_t>(c);
    return 0;
}

int libqv_qos_hostEntryDel(int hostIndex, const uint8_t *mac, uint32_t *bucket, uint32_t *counter) {
    qvsim::ApiLock api_lock;
    journal("device", "libqv_qos_hostEntryDel", num(hostIndex), mac_text(mac), bucket ? num(*bucket) : "(null)",
            counter ? num(*counter) : "(null)");
    if (failing("libqv_qos_hostEntryDel") || bucket == nullptr || counter == nullptr) return -1;
    std::string key = "qos." + num(hostIndex), old;
    bool known = device_get(key, old);
    if (known) device_del(key);
    *bucket = 0;
    *counter = 0;
    return known ? 0 : -1;
}

static int fact_text(const char *call, const char *key, char *out) {
    qvsim::ApiLock api_lock;
    journal("device", call);
    if (failing(call) || out == nullptr) return -1;
    std::string v;
    if (!device_get(key, v)) return -1;
    std::snprintf(out, 32, "%s", v.c_str());
    return 0;
}

int libqv_sys_getArea(char *area) { return fact_text("libqv_sys_getArea", "area", area); }

int libqv_sys_getProvince(char *province) { return fact_text("libqv_sys_getProvince", "province", province); }

int libqv_sys_getCpuUsage(uint32_t *percent) {
    qvsim::ApiLock api_lock;
    journal("device", "libqv_sys_getCpuUsage");
    if (failing("libqv_sys_getCpuUsage") || percent == nullptr) return -1;
    std::string v;
    if (!device_get("cpu_usage", v)) return -1;
    *percent = static_cast<uint32_t>(std::strtoul(v.c_str(), nullptr, 10));
    return 0;
}

}  // extern "C"
