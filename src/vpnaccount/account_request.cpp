// SPDX-License-Identifier: MIT
// VPN account retrieval: the signed JSON request, its one TCP exchange with
// the provisioning server, and the parsing of the server's reply. Progress
// goes to standard output: formats ending in a line feed through printf,
// the others through puts.
#include <arpa/inet.h>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/times.h>
#include <unistd.h>

#include <md5.h>

#include "cJSON.h"
#include "qvs_utils.h"

namespace qvs::vpnaccount {
namespace {

constexpr std::size_t kTimeSize = 16;
constexpr std::size_t kMacSize = 16;
constexpr std::size_t kMessageSize = 1024;
constexpr std::size_t kDigestInputSize = 1024;
constexpr std::size_t kDigestTextSize = 33;
constexpr std::size_t kProxySize = 64;
constexpr std::size_t kReceiveSize = 2048;
constexpr std::size_t kPrefixSize = 4;
constexpr int kReplyWaitSeconds = 30;

struct Member {
    const char *key;
    const char *value;
};

// Adds string members in order. If one cannot be added, the members added so
// far are taken out again and false is returned: the object is unchanged.
template <std::size_t N>
bool add_strings(cJSON *object, const Member (&members)[N]) {
    cJSON *added[N] = {};
    for (std::size_t i = 0; i < N; ++i) {
        cJSON *item = cJSON_CreateString(members[i].value);
        if (item == nullptr || !cJSON_AddItemToObject(object, members[i].key, item)) {
            cJSON_Delete(item);
            for (std::size_t k = 0; k < i; ++k) cJSON_Delete(cJSON_DetachItemViaPointer(object, added[k]));
            return false;
        }
        added[i] = item;
    }
    return true;
}

// The longest formatted inner text whose Base64 (4 characters per started
// group of 3 bytes) and NUL fit the message buffer: 765 bytes.
constexpr std::size_t kMaxInnerText = (kMessageSize - 1) / 4 * 3;
static_assert(kMaxInnerText == 765);

void local_time_stamp(char (&out)[kTimeSize]) {
    std::time_t now = std::time(nullptr);
    struct tm tm;
    std::memset(&tm, 0, sizeof tm);
    localtime_r(&now, &tm);
    // localtime's fields are within these ranges; the modulo only lets the
    // compiler see that 14 digits and the NUL always fit.
    auto field = [](int v, unsigned mod) { return static_cast<unsigned>(v) % mod; };
    std::snprintf(out, sizeof out, "%04u%02u%02u%02u%02u%02u", field(tm.tm_year + 1900, 10000u),
                  field(tm.tm_mon + 1, 100u), field(tm.tm_mday, 100u), field(tm.tm_hour, 100u),
                  field(tm.tm_min, 100u), field(tm.tm_sec, 100u));
}

// Leading decimal digits of the port text; the rest is ignored. The value
// is taken modulo 2^16, as a port number is 16 bits.
std::uint16_t port_number(const char *text) {
    std::uint32_t v = 0;
    for (; *text >= '0' && *text <= '9'; ++text) v = v * 10u + static_cast<std::uint32_t>(*text - '0');
    return static_cast<std::uint16_t>(v);
}

// A dotted quad first; otherwise the first IPv4 address a name lookup gives.
bool resolve(const char *host, struct in_addr &addr) {
    in_addr_t quad = inet_addr(host);
    if (quad != INADDR_NONE) {
        addr.s_addr = quad;
        return true;
    }
    struct addrinfo hints;
    std::memset(&hints, 0, sizeof hints);
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    struct addrinfo *answer = nullptr;
    if (getaddrinfo(host, nullptr, &hints, &answer) != 0 || answer == nullptr) return false;
    std::memcpy(&addr, &reinterpret_cast<struct sockaddr_in *>(answer->ai_addr)->sin_addr, sizeof addr);
    freeaddrinfo(answer);
    return true;
}

enum class Wait { Ready, TimedOut, NotReady, Error };

// Waits until the socket is readable, 30 s in all: a wait interrupted by a
// signal goes on with the time that is left (measured in the kernel's clock
// ticks since the wait began, which a change of the wall clock does not move).
Wait wait_readable(int fd) {
    const long long ticks_per_second = sysconf(_SC_CLK_TCK) > 0 ? sysconf(_SC_CLK_TCK) : 100;
    const unsigned long start = static_cast<unsigned long>(times(nullptr));
    const long long total_ms = kReplyWaitSeconds * 1000LL;
    long long left_ms = total_ms;
    for (;;) {
        struct pollfd p;
        p.fd = fd;
        p.events = POLLIN;
        p.revents = 0;
        int r = poll(&p, 1, static_cast<int>(left_ms));
        if (r > 0) return (p.revents & (POLLIN | POLLHUP | POLLERR)) != 0 ? Wait::Ready : Wait::NotReady;
        if (r == 0) return Wait::TimedOut;
        if (errno != EINTR) return Wait::Error;
        const unsigned long now = static_cast<unsigned long>(times(nullptr));
        const long long spent_ms = static_cast<long long>(now - start) * 1000LL / ticks_per_second;
        left_ms = total_ms - spent_ms;
        if (left_ms < 0) left_ms = 0;
    }
}

// What one exchange holds; released on every return path.
struct Exchange {
    cJSON *request = nullptr;
    char *frame = nullptr;
    int fd = -1;
    Exchange() = default;
    Exchange(const Exchange &) = delete;
    Exchange &operator=(const Exchange &) = delete;
    ~Exchange() {
        if (frame != nullptr) cJSON_free(frame);
        cJSON_Delete(request);
        if (fd >= 0) close(fd);
    }
};

// Holds the members found in a reply while it is checked.
struct ReplyFields {
    cJSON *root;
    cJSON *parameter;
    cJSON *data;
    const char *vpn_addr;
    const char *vpn_port;
    const char *vpn_user;
    const char *vpn_pwd;
    const char *account_timeout;
};

const char *non_empty_string(const cJSON *object, const char *key) {
    const char *v = cJSON_GetStringValue(cJSON_GetObjectItem(object, key));
    return v != nullptr && *v != '\0' ? v : nullptr;
}

bool string_equals(const cJSON *object, const char *key, const char *expected) {
    const char *v = cJSON_GetStringValue(cJSON_GetObjectItem(object, key));
    return v != nullptr && std::strcmp(v, expected) == 0;
}

bool check_reply(const char *buf, ReplyFields &f) {
    f.root = cJSON_Parse(buf);
    if (f.root == nullptr) {
        std::printf("cJSON_Parse buf:%s fail! \n", buf);
        return false;
    }
    f.parameter = cJSON_GetObjectItem(f.root, "return_Parameter");
    if (f.parameter == nullptr) {
        std::puts("no Array return_Parameter ");
        return false;
    }
    if (!string_equals(f.parameter, "CmdType", "GET_VPN_ACCOUNT")) {
        std::puts("cmdType is NULL or cmdType not GET_VPN_ACCOUNT ");
        return false;
    }
    if (!string_equals(f.parameter, "Status", "0")) {
        std::puts("Status is NULL or Status is not 0 ");
        return false;
    }
    f.data = cJSON_GetObjectItem(f.parameter, "data");
    if (f.data == nullptr) {
        std::puts("no array data ");
        return false;
    }
    if ((f.vpn_addr = non_empty_string(f.data, "vpn_addr")) == nullptr) {
        std::puts("no vpn_addr or vpn_addr is null");
        return false;
    }
    if ((f.vpn_port = non_empty_string(f.data, "vpn_port")) == nullptr) {
        std::puts("no vpn_port or vpn_port is null");
        return false;
    }
    if ((f.vpn_user = non_empty_string(f.data, "vpn_user")) == nullptr) {
        std::puts("no account or account is null");
        return false;
    }
    if ((f.vpn_pwd = non_empty_string(f.data, "vpn_pwd")) == nullptr) {
        std::puts("no pwd or pwd is null");
        return false;
    }
    if ((f.account_timeout = non_empty_string(f.data, "account_timeout")) == nullptr) {
        std::puts("no account_time or account_time is null");
        return false;
    }
    return true;
}

}  // namespace
}  // namespace qvs::vpnaccount

using namespace qvs::vpnaccount;

extern "C" {

int get_macAddr(char *mac) {
    if (mac == nullptr) return -1;
    std::puts("cd get_macAddr() ");
    int fd = socket(AF_INET, SOCK_DGRAM, 0);
    if (fd < 0) {
        std::puts("could not open socket");
        return -1;
    }
    struct ifreq ifr;
    std::memset(&ifr, 0, sizeof ifr);
    std::snprintf(ifr.ifr_name, sizeof ifr.ifr_name, "%s", "br0");
    int result = -1;
    if (ioctl(fd, SIOCGIFHWADDR, &ifr) == 0) {
        const unsigned char *a = reinterpret_cast<const unsigned char *>(ifr.ifr_hwaddr.sa_data);
        std::snprintf(mac, 13, "%2.2X%2.2X%2.2X%2.2X%2.2X%2.2X", a[0], a[1], a[2], a[3], a[4], a[5]);
        result = 0;
    }
    close(fd);
    return result;
}

void md5ToAscii(const unsigned char *digest, char *out) {
    if (digest == nullptr || out == nullptr) return;
    for (int i = 0; i < 16; ++i) std::snprintf(out + 2 * i, 3, "%02X", digest[i]);
    out[32] = '\0';
}

int constructReqData(const char *tunnelName, const char *userId, cJSON *req) {
    if (tunnelName == nullptr || userId == nullptr || req == nullptr) return -1;
    std::printf("Enter constructReqData() tunnel:%s userId:%s \n", tunnelName, userId);

    cJSON *inner = cJSON_CreateObject();
    const Member inner_members[] = {
        {"CmdType", "GET_VPN_ACCOUNT"}, {"tunnelName", tunnelName}, {"userId", userId}};
    if (inner == nullptr || !add_strings(inner, inner_members)) {
        std::puts("constructReqData cJSON_CreateObject() fail !! ");
        cJSON_Delete(inner);
        return -1;
    }
    char *text = cJSON_Print(inner);
    if (text == nullptr) {
        std::puts("constructReqData cJSON_Print() fail !! ");
        cJSON_Delete(inner);
        return -1;
    }
    std::printf("Message:%s \n", text);
    const std::size_t text_len = std::strlen(text);
    if (text_len > kMaxInnerText) {
        // Its Base64 would not fit the message buffer: refused, never cut.
        std::printf("constructReqData Message too long:%u (at most %u) ! \n", static_cast<unsigned>(text_len),
                    static_cast<unsigned>(kMaxInnerText));
        cJSON_free(text);
        cJSON_Delete(inner);
        return -1;
    }

    char stamp[kTimeSize];
    local_time_stamp(stamp);

    char mac[kMacSize];
    std::memset(mac, 0, sizeof mac);
    get_macAddr(mac);
    std::printf("get mac:%s \n", mac);

    char message[kMessageSize];
    std::memset(message, 0, sizeof message);
    b64_encode(reinterpret_cast<const unsigned char *>(text), static_cast<unsigned>(text_len),
               reinterpret_cast<unsigned char *>(message));
    std::printf("get base64 encryptedStr:%s \n", message);

    char digest_input[kDigestInputSize];
    std::memset(digest_input, 0, sizeof digest_input);
    // Cut at 1023 characters when the message is long: the signature then
    // covers the shortened text. The cut is meant, so no warning for it.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-truncation"
#endif
    std::snprintf(digest_input, sizeof digest_input, "%s%s%s", stamp, message, mac);
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
    std::printf("Md5EncryptedBuf=:%s \n", digest_input);

    MD5_CTX md5;
    unsigned char digest[16];
    MD5Init(&md5);
    MD5Update(&md5, reinterpret_cast<const std::uint8_t *>(digest_input), std::strlen(digest_input));
    MD5Final(digest, &md5);
    char signature[kDigestTextSize];
    std::memset(signature, 0, sizeof signature);
    md5ToAscii(digest, signature);

    const Member outer_members[] = {{"RPCMethod", "Post"}, {"Plugin_Name", ""}, {"MD5", signature},
                                    {"time", stamp},       {"mac", mac},        {"Message", message}};
    bool added = add_strings(req, outer_members);
    if (added) std::printf("get MD5:%s Message:%s \n", signature, message);
    cJSON_Delete(inner);
    cJSON_free(text);
    return added ? 0 : -1;
}

int createSocketToGetAccount(const char *tunnelName, const char *userId, const char *proxy, char *reply) {
    if (tunnelName == nullptr || userId == nullptr || proxy == nullptr || reply == nullptr) return -1;
    if (*tunnelName == '\0' || *userId == '\0' || *proxy == '\0') return -1;
    std::printf("cd createSocketToGetAccount() tunnel:%s userId:%s proxy:%s \n", tunnelName, userId, proxy);

    Exchange x;
    x.request = cJSON_CreateObject();
    if (x.request == nullptr) {
        std::puts("createSocketToGetAccount cJSON_CreateObject fail !! ");
        return -1;
    }
    if (constructReqData(tunnelName, userId, x.request) != 0) {
        std::printf("constructReqData() fail ! tunnel:%s userId:%s \n", tunnelName, userId);
        return 0;
    }
    char *text = cJSON_Print(x.request);
    if (text == nullptr) {
        std::puts("error tmp_data is NULL ! ");
        return 0;
    }
    const std::size_t n = std::strlen(text);
    std::printf("get tmp_data:%s data_len:%d \n", text, static_cast<int>(n));

    // Frame: N as a 32-bit big-endian number, the N bytes of text, a NUL
    // that is not sent. Without it the exchange goes on but sends nothing.
    x.frame = static_cast<char *>(cJSON_malloc(n + kPrefixSize + 1));
    if (x.frame != nullptr) {
        std::uint32_t be = htonl(static_cast<std::uint32_t>(n));
        std::memcpy(x.frame, &be, kPrefixSize);
        std::memcpy(x.frame + kPrefixSize, text, n + 1);
    }
    cJSON_free(text);

    char designation[kProxySize];
    std::memset(designation, 0, sizeof designation);
    std::snprintf(designation, sizeof designation, "%s", proxy);
    char *rest = nullptr;
    char *host = strtok_r(designation, ":", &rest);
    const char *port_text = rest;
    if (host == nullptr || *host == '\0' || port_text == nullptr || *port_text == '\0') {
        std::puts("get server or port fail is NULL ");
        return 0;
    }

    struct sockaddr_in server;
    std::memset(&server, 0, sizeof server);
    server.sin_family = AF_INET;
    server.sin_port = htons(port_number(port_text));
    if (!resolve(host, server.sin_addr)) {
        std::puts("server addr or ip is error! ");
        return 0;
    }

    x.fd = socket(AF_INET, SOCK_STREAM, 0);
    if (x.fd < 0) {
        std::puts("create Socket error! ");
        return 0;
    }
    std::puts("create Socket success ! ");
    if (connect(x.fd, reinterpret_cast<struct sockaddr *>(&server), sizeof server) != 0) {
        std::puts("Client-connect error! ");
        return 0;
    }
    std::printf("Client-connect server:%s port:%d success! \n", host, ntohs(server.sin_port));

    if (x.frame != nullptr) {
        std::printf("will send data:%s \n", x.frame + kPrefixSize);
        // One write, not repeated when short; a peer that has gone gives an
        // error here instead of a SIGPIPE.
        if (send(x.fd, x.frame, n + kPrefixSize, MSG_NOSIGNAL) < 0) {
            std::puts("write data error! ");
            return 0;
        }
        std::puts("write data success! ");
    }

    switch (wait_readable(x.fd)) {
    case Wait::Ready:
        break;
    case Wait::TimedOut:
        std::puts("select timeout ");
        return 0;
    case Wait::NotReady:
        std::puts("FD_ISSET fail");
        return 0;
    case Wait::Error:
        return 0;
    }

    char received[kReceiveSize];
    ssize_t got;
    for (;;) {
        std::memset(received, 0, sizeof received);
        got = recvfrom(x.fd, received, sizeof received, 0, nullptr, nullptr);
        if (got >= 0 || errno != EINTR) break;
    }
    if (got <= 0) return 0;  // read error, or closed without a reply

    // The buffer may be full without a NUL: everything is bounded by `got`.
    const int len = static_cast<int>(got);
    const int text_len = len > static_cast<int>(kPrefixSize) ? len - static_cast<int>(kPrefixSize) : 0;
    const char *reply_text = received + kPrefixSize;
    std::printf("Client-read() OK ! revData:%.*s \n", len, received);
    std::printf("Recv data:%.*s \n", text_len, reply_text);
    int k = 0;
    while (k < text_len && reply_text[k] != '\0') {
        reply[k] = reply_text[k];
        ++k;
    }
    reply[k] = '\0';
    return 1;
}

int parseRepData(const char *buf, char *vpn_addr, char *vpn_port, char *vpn_user, char *vpn_pwd,
                 char *account_timeout) {
    if (buf == nullptr || vpn_addr == nullptr || vpn_port == nullptr || vpn_user == nullptr ||
        vpn_pwd == nullptr || account_timeout == nullptr)
        return -1;
    auto *f = static_cast<ReplyFields *>(cJSON_malloc(sizeof(ReplyFields)));
    if (f == nullptr) return -1;
    std::memset(f, 0, sizeof *f);
    std::printf("Enter parseRepData buf:%s \n", buf);
    int result = -1;
    if (check_reply(buf, *f)) {
        std::printf("replay->vpn_addr:%s replay->vpn_port:%s replay->account:%s replay->pwd:%s "
                    "replay->account_time:%s \n",
                    f->vpn_addr, f->vpn_port, f->vpn_user, f->vpn_pwd, f->account_timeout);
        std::strcpy(vpn_addr, f->vpn_addr);
        std::strcpy(vpn_port, f->vpn_port);
        std::strcpy(vpn_user, f->vpn_user);
        std::strcpy(vpn_pwd, f->vpn_pwd);
        std::strcpy(account_timeout, f->account_timeout);
        result = 0;
    }
    // The values have been copied: the parsed document goes too.
    cJSON_Delete(f->root);
    cJSON_free(f);
    return result;
}

}  // extern "C"
