// SPDX-License-Identifier: MIT
// time_probe <dstEnable> <zone>: prints my_localtime's result and stamp,
// for runs under a clock pinned from outside (faketime).
#include <cstdio>
#include <cstdlib>

#include "qvs_utils.h"

int main(int argc, char **argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: time_probe <dstEnable> <zone>\n");
        return 2;
    }
    char out[26] = {};
    int r = my_localtime(std::atoi(argv[1]), argv[2], out);
    std::fflush(stdout);
    std::printf("%d %s\n", r, out);
    return 0;
}
