// SPDX-License-Identifier: MIT
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
#include "gateway_test.hpp"
#include "test_support.hpp"

namespace sysinfotest {

using qvstest::Lines;

inline std::string inst(int i) { return std::to_string(i); }

class SysinfoTest : public qvstest::GatewayTest {
protected:
    static void device(const char *key, const char *value) { ASSERT_EQ(qvsim_device_set(key, value), 0) << key; }
    // Journal lines other than log lines, fields joined by "|" (unescaped).
    static Lines effects() { return qvstest::journal_joined({"log"}); }
};

}  // namespace sysinfotest
