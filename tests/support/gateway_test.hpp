// SPDX-License-Identifier: MIT
// A test case on a fresh simulated gateway: the store from the default
// model, an empty journal and no faults, with the store and journal helpers
// the family suites share.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "qvsim.h"
#include "test_support.hpp"

namespace qvstest {

using Lines = std::vector<std::string>;

// Journal lines whose kind is not in skip, fields joined by "|" (unescaped).
Lines journal_joined(std::initializer_list<std::string> skip);
// The library's log lines as "<func>|<level>|<message>" (unescaped); each
// must name the library's source unit.
Lines journal_logs();

class GatewayTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(in_sandbox()) << "these tests change the gateway's files, mounts and devices";
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
    static Lines logs() { return journal_logs(); }
    static int count(const char *kind) { return qvsim_journal_count(kind); }
    // A self-attaching call left nothing attached.
    static void expect_balanced() { EXPECT_EQ(count("attach"), count("detach")); }
};

}  // namespace qvstest
