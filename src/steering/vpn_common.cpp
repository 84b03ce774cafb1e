// SPDX-License-Identifier: MIT
#include "steering/vpn_common.hpp"

#include <cctype>
#include <cstdio>
#include <cstring>

#include "core/command.hpp"
#include "core/log.hpp"
#include "steering/list_file.hpp"

namespace qvs::vpn {

steering::DirStep dir_step(const char *func) {
    return steering::list_dir_step(kListDir, func, "creat vpn route dir error.\n");
}

void list_path(char (&out)[kPathSize], const char *prefix, int n) {
    std::memset(out, 0, sizeof out);
    std::snprintf(out, sizeof out, "%s/%s%d", kListDir, prefix, n);
}

const char *file_prefix_of(unsigned type) {
    switch (type) {
    case kTypeIp: return kIpFilePrefix;
    case kTypeDomain: return kDomainFilePrefix;
    case kTypeMac: return kMacFilePrefix;
    default: return nullptr;
    }
}

void vpn_ipset_add(int n, int isMac, const char *member) {
    CommandBuffer<kCmdSize> cmd;
    cmd.format("ipset add %s%d %s 2> /dev/null", isMac != 0 ? kMacSet : kIpSet, n, member);
    ::qv_do_cmd(cmd.c_str());
}

void vpn_ipset_flush(int n, unsigned type) {
    const char *set = type == kTypeIp ? kIpSet : type == kTypeDomain ? kDomainSet : kMacSet;
    CommandBuffer<kCmdSize> cmd;
    cmd.format("ipset flush %s%d 2> /dev/null", set, n);
    ::qv_do_cmd(cmd.c_str());
}

namespace {

// Six "%02hhx" fields read one after the other exactly as the C library's
// sscanf reads them (blanks before a field skipped, at most two characters
// each, an optional sign or "0x" taken as sscanf takes them), except that a
// '-' never starts a field: a MAC written with dashes yields no colon form
// instead of reading "-B" as a negative number. Returns the bytes read.
int scan_six_hex_bytes(const char *text, unsigned char (&b)[6]) {
    const char *p = text;
    for (int i = 0; i < 6; ++i) {
        while (std::isspace(static_cast<unsigned char>(*p))) ++p;
        if (*p == '-') return i;
        int used = 0;
        if (std::sscanf(p, "%2hhx%n", &b[i], &used) != 1) return i;
        p += used;
    }
    return 6;
}

}  // namespace

void mac_to_colon_form(const char *text, char *out) {
    if (std::strchr(text, ':') != nullptr) {
        std::snprintf(out, kMacTextSize, "%s", text);
        return;
    }
    unsigned char b[6] = {};
    if (scan_six_hex_bytes(text, b) == 6)
        std::snprintf(out, kMacTextSize, "%02hhx:%02hhx:%02hhx:%02hhx:%02hhx:%02hhx", b[0], b[1], b[2], b[3], b[4],
                      b[5]);
}

}  // namespace qvs::vpn
