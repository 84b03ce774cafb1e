// SPDX-License-Identifier: MIT
// An Ethernet port made a tagged member of the LAN bridge "br0": its VLAN
// sub-interface is created afresh, brought up and added to the bridge.
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "core/command.hpp"
#include "core/store.hpp"

namespace qvs::sysinfo {

namespace {

constexpr std::size_t kVlanNameSize = 16;
constexpr std::size_t kCmdSize = 128;
// The device calls and commands are not waited for: these pauses are the
// only thing that orders them.
constexpr useconds_t kSettle = 200 * 1000;
// libqv_netApi_addDev's device type for a VLAN sub-interface.
constexpr int kVlanDevType = 3;

// The longest command line that carries the port's name.
#define QVS_MTU_FORMAT "ifconfig %s mtu 2000"

}  // namespace

}  // namespace qvs::sysinfo

using namespace qvs;
using namespace qvs::sysinfo;

extern "C" {

int qvsUtil_setEthToLan(const char *ifname, int vid) {
    if (ifname == nullptr || std::strncmp(ifname, "eth", 3) != 0) return kFail;
    if (QVS_REFUSE_UNSAFE(ifname)) return kFail;
    if (refuse_long_text(__func__, __LINE__, ifname, formatted_length(QVS_MTU_FORMAT, ifname), kCmdSize))
        return kFail;

    char vlan[kVlanNameSize] = {};
    std::snprintf(vlan, sizeof vlan, "%s.%d", ifname, vid);

    CommandBuffer<kCmdSize> cmd;
    ::libqv_netApi_remDev(vlan);
    ::usleep(kSettle);
    cmd.format(QVS_MTU_FORMAT, ifname);
    ::qvs_system(cmd.c_str());
    ::libqv_netApi_addDev(ifname, vlan, kVlanDevType, vid, 0, 0, 0, 0);
    ::usleep(kSettle);
    cmd.format("ifconfig %s promisc", ifname);
    ::qvs_system(cmd.c_str());
    ::usleep(kSettle);
    cmd.format("ifconfig %s up", vlan);
    ::qvs_system(cmd.c_str());
    ::usleep(kSettle);
    cmd.format("brctl addif br0 %s", vlan);
    ::qvs_system(cmd.c_str());
    return kOk;
}

}  // extern "C"
