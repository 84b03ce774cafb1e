// SPDX-License-Identifier: MIT
// The steering list readers and listings on arbitrary file content: the
// input becomes a list file at its real path (inside the sandbox only) and
// every listing of it must stay within the caller's buffer. The seeds hold
// each sample file once per reader.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "fuzz_check.hpp"
#include "qvs_utils.h"

namespace {

// Rewrites the file in place and cuts it to the new length: truncating it
// to nothing first makes tmpfs free its pages and zero new ones on every
// input (about a tenth of this harness's time).
void put(const char *path, const uint8_t *data, size_t size) {
    const int fd = ::open(path, O_WRONLY | O_CREAT, 0644);
    FUZZ_CHECK(fd >= 0);
    if (size > 0) FUZZ_CHECK(::pwrite(fd, data, size, 0) == static_cast<ssize_t>(size));
    FUZZ_CHECK(::ftruncate(fd, static_cast<off_t>(size)) == 0);
    FUZZ_CHECK(::close(fd) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    const char *sandbox = std::getenv("QVS_SANDBOX");
    if (sandbox == nullptr || std::strcmp(sandbox, "1") != 0) {
        std::fprintf(stderr, "fuzz_lists writes /userconfig: run it inside tests/sandbox/qvs-sandbox\n");
        std::exit(1);
    }
    ::mkdir("/userconfig/config", 0755);
    ::mkdir("/userconfig/config/qvvpn", 0755);
    ::mkdir("/userconfig/config/approute", 0755);
    ::mkdir("/userconfig/config/appfilter", 0755);
    // One file written per input; the other two lists are links to it.
    if (::symlink("/userconfig/config/qvvpn/VPN_IP_1", "/userconfig/config/approute/approute_domain1") != 0 ||
        ::symlink("/userconfig/config/qvvpn/VPN_IP_1", "/userconfig/config/appfilter/appfilter_mac1") != 0) {
        std::perror("fuzz_lists: linking the list files");
        std::exit(1);
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 1 || size > 8192) return 0;
    // The first byte picks one reader (low two bits) and the caller's buffer
    // size (the rest: 1 to 1009 bytes); the others are the file. One reader
    // per input keeps each execution to one file read, not four.
    const unsigned reader = data[0] & 3u;
    const int outsize = 1 + (data[0] >> 2) * 16;
    put("/userconfig/config/qvvpn/VPN_IP_1", data + 1, size - 1);

    std::vector<char> out(static_cast<size_t>(outsize), '\0');
    switch (reader) {
        case 0:
            FUZZ_CHECK(qvvpn_get_route_all(1, 0, out.data(), outsize) >= 0);
            FUZZ_CHECK(std::strlen(out.data()) < static_cast<size_t>(outsize));
            break;
        case 1:
            FUZZ_CHECK(approute_get_route_all(1, 1, out.data(), outsize) >= 0);
            FUZZ_CHECK(std::strlen(out.data()) < static_cast<size_t>(outsize));
            break;
        case 2:
            FUZZ_CHECK(approute_get_route_count(1, 1) >= 0);
            break;
        default:
            FUZZ_CHECK(appfilter_get_route_list(1, 2, out.data(), outsize) == 0);
            FUZZ_CHECK(std::memchr(out.data(), 0, out.size()) != nullptr);
            break;
    }
    return 0;
}
