// SPDX-License-Identifier: MIT
// VPN account family: get_macAddr, md5ToAscii, constructReqData,
// createSocketToGetAccount, parseRepData.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "qvs_utils.h"
#include "qvsctl.hpp"

// The cJSON functions the library exports (the tool needs only these four).
extern "C" {
struct cJSON *cJSON_CreateObject(void);
char *cJSON_Print(const struct cJSON *item);
void cJSON_Delete(struct cJSON *item);
void cJSON_free(void *object);
}

namespace {

int run_get_macAddr(char **) {
    char mac[16] = {0};
    int r = get_macAddr(mac);
    std::fflush(stdout);
    qvsctl::print_result(r);
    qvsctl::print_text("mac", mac);
    return qvsctl::kRan;
}

int run_md5ToAscii(char **argv) {
    std::vector<unsigned char> digest;
    if (!qvsctl::parse_hex(argv[0], digest) || digest.size() != 16) {
        std::fprintf(stderr, "qvsctl: the digest is 16 bytes as 32 hex digits\n");
        return qvsctl::kBadArgs;
    }
    char text[33] = {0};
    md5ToAscii(digest.data(), text);
    qvsctl::print_text("text", text);
    return qvsctl::kRan;
}

int run_constructReqData(char **argv) {
    struct cJSON *req = cJSON_CreateObject();
    int r = constructReqData(argv[0], argv[1], req);
    std::fflush(stdout);
    qvsctl::print_result(r);
    char *text = req != nullptr ? cJSON_Print(req) : nullptr;
    qvsctl::print_text("request", text);
    cJSON_free(text);
    cJSON_Delete(req);
    return qvsctl::kRan;
}

int run_createSocketToGetAccount(char **argv) {
    char reply[2048 + 1] = {0};
    int r = createSocketToGetAccount(argv[0], argv[1], argv[2], reply);
    std::fflush(stdout);
    qvsctl::print_result(r);
    qvsctl::print_text("reply", reply);
    return qvsctl::kRan;
}

int run_parseRepData(char **argv) {
    // No value can be longer than the reply text itself.
    std::size_t n = std::strlen(argv[0]) + 1;
    std::vector<char> addr(n), port(n), user(n), pwd(n), timeout(n);
    int r = parseRepData(argv[0], addr.data(), port.data(), user.data(), pwd.data(), timeout.data());
    std::fflush(stdout);
    qvsctl::print_result(r);
    qvsctl::print_text("vpn_addr", addr.data());
    qvsctl::print_text("vpn_port", port.data());
    qvsctl::print_text("vpn_user", user.data());
    qvsctl::print_text("vpn_pwd", pwd.data());
    qvsctl::print_text("account_timeout", timeout.data());
    return qvsctl::kRan;
}

const qvsctl::Command kCommands[] = {
    {"get_macAddr", "", "MAC address of br0 as 12 upper-case hex digits", 0, 0, run_get_macAddr},
    {"md5ToAscii", "<digest-hex-16-bytes>", "an MD5 digest as 32 upper-case hex digits", 1, 1, run_md5ToAscii},
    {"constructReqData", "<tunnel> <user-id>", "build the signed account request and print it", 2, 2,
     run_constructReqData},
    {"createSocketToGetAccount", "<tunnel> <user-id> <host:port>",
     "send the request to the provisioning server and print its reply (waits up to 30 s)", 3, 3,
     run_createSocketToGetAccount},
    {"parseRepData", "<reply-json>", "the five account values of a reply", 1, 1, run_parseRepData},
};

}  // namespace

QVSCTL_FAMILY(g_vpnaccount, "vpnaccount", "VPN account retrieval from the provisioning server", kCommands);
