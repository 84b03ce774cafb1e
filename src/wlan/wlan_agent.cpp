// SPDX-License-Identifier: MIT
// The Wi-Fi agent's one-shot client, and the uplink Wi-Fi connection
// message handed to it.
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "core/store.hpp"

namespace qvs::wlan {

namespace {

constexpr char kAgentSocket[] = "/var/run/wlan_event_agent_socket";
constexpr std::size_t kPathBound = 107;        // path bytes copied into the address
constexpr socklen_t kAddressLength = 110;      // family and the whole path field

constexpr std::uint8_t kTypeUplinkConn = 2;    // uplink Wi-Fi connection information

// The 124-byte uplink connection message; every byte not written is zero.
#pragma pack(push, 1)
struct UplinkConnMsg {
    std::uint8_t type;
    std::uint8_t reserved[3];
    char ssid[33];
    char password[64];
    char security_mode[23];
};
#pragma pack(pop)
static_assert(sizeof(UplinkConnMsg) == 124, "the agent reads 124 bytes");
static_assert(offsetof(UplinkConnMsg, ssid) == 4 && offsetof(UplinkConnMsg, password) == 37 &&
                  offsetof(UplinkConnMsg, security_mode) == 101,
              "field offsets the agent expects");

// A socket closed on every path.
class Socket {
public:
    Socket(int domain, int type) : fd_(::socket(domain, type, 0)) {}
    ~Socket() {
        if (fd_ >= 0) ::close(fd_);
    }
    Socket(const Socket &) = delete;
    Socket &operator=(const Socket &) = delete;
    explicit operator bool() const { return fd_ >= 0; }
    int fd() const { return fd_; }

private:
    int fd_;
};

// Copies text into a field, cut to leave the terminating zero.
template <std::size_t N>
void put_text(char (&field)[N], const char *text) {
    std::strncpy(field, text, N - 1);
}

}  // namespace

}  // namespace qvs::wlan

using namespace qvs;
using namespace qvs::wlan;

extern "C" {

int communicate_to_wlan_agent(const void *msg, size_t length) {
    Socket sock(AF_UNIX, SOCK_STREAM);
    if (!sock) {
        std::perror("socket create failed");
        return kFail;
    }
    struct sockaddr_un address;
    std::memset(&address, 0, sizeof address);
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, kAgentSocket, kPathBound);

    const int connected = ::connect(sock.fd(), reinterpret_cast<const struct sockaddr *>(&address), kAddressLength);
    if (connected < 0) {
        std::perror("connect failed");
    } else {
        // One write of the whole message; a short one is reported, not
        // returned. No SIGPIPE for an agent that has gone away meanwhile.
        const ssize_t sent = ::send(sock.fd(), msg, length, MSG_NOSIGNAL);
        if (sent < 0 || static_cast<size_t>(sent) < length) std::perror("send failed");
    }
    return connected;  // no reply is read, nothing is retried
}

int qvs_set_uplink_wlan_conn_info(const char *ssid, const char *password, const char *security_mode) {
    if (ssid == nullptr || password == nullptr || security_mode == nullptr) {
        QVS_LOG(kLogError, "wlan info args invaild\n");
        return kFail;
    }
    QVS_LOG(kLogError, "ssid = %s, pwd=%s, securityMode = %s\n", ssid, password, security_mode);

    UplinkConnMsg msg;
    std::memset(&msg, 0, sizeof msg);
    msg.type = kTypeUplinkConn;
    put_text(msg.ssid, ssid);
    put_text(msg.password, password);
    put_text(msg.security_mode, security_mode);

    if (communicate_to_wlan_agent(&msg, sizeof msg) < 0) QVS_LOG(kLogError, "send msg to wlan_event_agent failed.\n");
    return kOk;  // a failed send is reported only in the log
}

}  // extern "C"
