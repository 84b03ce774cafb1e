// SPDX-License-Identifier: MIT
// The 81920-byte list is allocated; when that allocation fails the call
// gives -1 and changes nothing. This program replaces calloc to make exactly
// that allocation fail on demand.
#include <sys/stat.h>

#include <cstddef>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qvs_utils.h"
#include "steering_journal.hpp"

namespace {
bool g_fail_list = false;
}

extern "C" {
#if defined(__SANITIZE_ADDRESS__)
void *__interceptor_calloc(std::size_t n, std::size_t size);
#define QVS_REAL_CALLOC __interceptor_calloc
#else
void *__libc_calloc(std::size_t n, std::size_t size);
#define QVS_REAL_CALLOC __libc_calloc
#endif

void *calloc(std::size_t n, std::size_t size) {
    if (g_fail_list && n * size == 81920) return nullptr;
    return QVS_REAL_CALLOC(n, size);
}
}

namespace {

using steertest::held;
using steertest::Text;
using ::testing::IsEmpty;

const std::string kDir = "/userconfig/config/appfilter";

class AppFilterNoMemory : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(qvstest::in_sandbox());
        ASSERT_EQ(qvsim_reset(), 0);
        ASSERT_EQ(::mkdir("/userconfig/config", 0755), 0);  // as on the gateway
        ASSERT_EQ(::mkdir(kDir.c_str(), 0755), 0);
        char list[] = "10.0.0.1,10.0.0.2";
        ASSERT_EQ(appfilter_add_route_iplist(1, list), 0);
        qvsim_journal_clear();
    }
    void TearDown() override { g_fail_list = false; }
};

TEST_F(AppFilterNoMemory, EveryListFunctionGivesMinusOne) {
    g_fail_list = true;
    Text a("10.0.0.3"), d("10.0.0.1");
    EXPECT_EQ(appfilter_add_route_iplist(1, a.get()), -1);
    EXPECT_EQ(appfilter_del_route_iplist(1, d.get()), -1);
    EXPECT_EQ(update_data_list_to_appfilter_module(1, 0), -1);
    // Flushing needs no list buffer for itself, but its module update does.
    EXPECT_EQ(appfilter_flush_route_ip(1), 0);
    g_fail_list = false;
    EXPECT_EQ(qvstest::read_file(kDir + "/appfilter_ip1"), "");
    // The module was not told: it still holds the old list.
    EXPECT_EQ(held("appfilter", 1, 1), "10.0.0.1,10.0.0.2");
    EXPECT_THAT(steertest::commands(), IsEmpty());
}

TEST_F(AppFilterNoMemory, NothingIsWrittenOrSent) {
    g_fail_list = true;
    Text a("10.0.0.3");
    EXPECT_EQ(appfilter_add_route_list(1, 0, a.get()), -1);
    g_fail_list = false;
    EXPECT_EQ(qvstest::read_file(kDir + "/appfilter_ip1"), "10.0.0.1,10.0.0.2");
    EXPECT_EQ(held("appfilter", 1, 1), "10.0.0.1,10.0.0.2");
    EXPECT_THAT(steertest::commands(), IsEmpty());
    // And with memory back, the same call works.
    Text again("10.0.0.3");
    EXPECT_EQ(appfilter_add_route_list(1, 0, again.get()), 0);
    EXPECT_EQ(held("appfilter", 1, 1), "10.0.0.1,10.0.0.2,10.0.0.3");
}

}  // namespace
