// SPDX-License-Identifier: MIT
// Shared set-up of the operator-feature suites: a fresh simulated gateway per
// test, store helpers, the journal split into effects and log lines, and the
// attach/detach balance of self-attaching calls.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "libqv.h"
#include "qvs_utils.h"
#include "qvsim.h"
#include "gateway_test.hpp"
#include "test_support.hpp"

namespace optest {

using qvstest::Lines;

inline constexpr int kLanEth = 137;
inline constexpr int kLanHost = 156;
inline constexpr int kLed = 229;
inline constexpr int kWifiCommon = 389;
inline constexpr int kRadio = 390;
inline constexpr int kSsid = 399;
inline constexpr int kSleep = 563;
inline constexpr int kTimedTask = 566;
inline constexpr int kDeviceLimit = 568;

inline const std::string kBool = "0x20000001";
inline const std::string kU32 = "4";
inline const std::string kHostValue = "2";

inline std::string mac_text(const std::uint8_t *m) {
    char b[18];
    std::snprintf(b, sizeof b, "%02x:%02x:%02x:%02x:%02x:%02x", m[0], m[1], m[2], m[3], m[4], m[5]);
    return b;
}

class OperatorTest : public qvstest::GatewayTest {
protected:
    static std::string get(int oid, const std::string &instance, const char *param) {
        char buf[512] = {};
        EXPECT_EQ(qvsim_get(oid, instance.c_str(), param, buf, sizeof buf), 0) << oid << " " << instance << " " << param;
        return buf;
    }
    static bool exists(int oid, const std::string &instance) { return qvsim_exists(oid, instance.c_str()) != 0; }
    static void clear_journal() { ASSERT_EQ(qvsim_journal_clear(), 0); }
    static std::string device(const std::string &key) {
        char buf[256] = {};
        if (qvsim_device_get(key.c_str(), buf, sizeof buf) != 0) return "(none)";
        return buf;
    }

    // Every journal line that is neither a log line nor an attach or detach,
    // fields joined by "|".
    static Lines effects() { return qvstest::journal_joined({"log", "attach", "detach"}); }

    static std::string set_line(int oid, const std::string &instance, const char *param, const std::string &type,
                                const std::string &value) {
        return "set|" + std::to_string(oid) + "|" + instance + "|" + param + "|" + type + "|" + value;
    }
    static std::string save_line() { return "save|indirect"; }
};

}  // namespace optest
