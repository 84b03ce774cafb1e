// Shared set-up of the system-facts and bridge/WAN suites: a fresh simulated
// gateway per test case and the journal in the forms the tests compare.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "libqv.h"
#include "qvs_utils.h"
#include "qvsim.h"
#include "test_support.hpp"

namespace sysinfotest {

using Lines = std::vector<std::string>;

inline std::string inst(int i) { return std::to_string(i); }

class SysinfoTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(qvstest::in_sandbox()) << "these tests change mounts and network devices";
        ASSERT_EQ(qvsim_reset(), 0);
        ASSERT_EQ(qvsim_journal_clear(), 0);
    }
    void TearDown() override { qvsim_fault_clear(); }

    static void ensure(int oid, const std::string &instance) {
        if (!qvsim_exists(oid, instance.c_str())) {
            ASSERT_EQ(qvsim_add_instance(oid, instance.c_str()), 0) << oid << " " << instance;
        }
    }
    static void set(int oid, const std::string &instance, const char *param, const std::string &value) {
        ASSERT_EQ(qvsim_set(oid, instance.c_str(), param, value.c_str()), 0) << oid << " " << instance << " " << param;
    }
    static void fault(const char *f) { ASSERT_EQ(qvsim_fault_add(f), 0) << f; }
    static void device(const char *key, const char *value) { ASSERT_EQ(qvsim_device_set(key, value), 0) << key; }

    // Journal lines other than log lines, fields joined by "|" (unescaped).
    static Lines effects() {
        Lines out;
        for (const auto &f : qvstest::journal_fields()) {
            if (f[0] == "log") continue;
            std::string s;
            for (std::size_t i = 0; i < f.size(); ++i) s += (i ? "|" : "") + f[i];
            out.push_back(s);
        }
        return out;
    }
    // Log lines as "<func>|<level>|<message>" (unescaped); each must name
    // the library's source unit.
    static Lines logs() {
        Lines out;
        for (const auto &f : qvstest::journal_fields()) {
            if (f[0] != "log") continue;
            EXPECT_GE(f.size(), 6u);
            if (f.size() < 6) continue;
            EXPECT_EQ(f[1], "qvs_utils.cpp");
            out.push_back(f[2] + "|" + f[4] + "|" + f[5]);
        }
        return out;
    }
    static int count_kind(const char *kind) { return qvsim_journal_count(kind); }
    static void expect_balanced() { EXPECT_EQ(count_kind("attach"), count_kind("detach")); }
};

}  // namespace sysinfotest
