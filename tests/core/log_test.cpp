// SPDX-License-Identifier: MIT
// util_getPidname / util_printf.
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>

#include "qvs_utils.h"
#include "test_support.hpp"

using qvstest::CaptureFd;

static std::string self_exe() {
    char buf[4096] = {};
    ssize_t n = readlink("/proc/self/exe", buf, sizeof buf - 1);
    return n > 0 ? std::string(buf, static_cast<size_t>(n)) : std::string();
}

TEST(UtilGetPidname, ReturnsFullExecutablePath) {
    char *p = util_getPidname();
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(std::string(p), self_exe().substr(0, 127));
    free(p);
}

TEST(UtilPrintf, WritesPrefixMessageAndNewline) {
    CaptureFd err(2);
    int r = util_printf("qvs_utils.cpp", "my_func", 42, "value=%d", 7);
    std::string out = err.text();
    EXPECT_EQ(r, '\n');
    EXPECT_EQ(out, self_exe().substr(0, 127) + "[qvs_utils.cpp:my_func:42]value=7\n");
}

TEST(UtilPrintf, FormatEndingInNewlineGivesEmptyLine) {
    CaptureFd err(2);
    util_printf("f.cpp", "fn", 1, "second=%lu\n", 5UL);
    std::string out = err.text();
    ASSERT_GE(out.size(), 2u);
    EXPECT_EQ(out.substr(out.size() - 2), "\n\n");
}
