// SPDX-License-Identifier: MIT
// Shared set-up of the Wi-Fi suites: a fresh simulated gateway per test, an
// attached store handle, seeding helpers and the journal split into lines.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "libqv.h"
#include "qvs_utils.h"
#include "qvsim.h"
#include "test_support.hpp"

namespace wlantest {

inline constexpr int kCommon = 389;
inline constexpr int kName = 396;
inline constexpr int kSsid = 399;
inline constexpr int kSec = 400;

inline std::string type_text(std::uint32_t type) {
    char buf[32];
    if (type > 0xff)
        std::snprintf(buf, sizeof buf, "0x%08x", type);
    else
        std::snprintf(buf, sizeof buf, "%u", type);
    return buf;
}
inline const std::string kStr = type_text(0xc0000000u);
inline const std::string kBool = type_text(0x20000001u);
inline const std::string kU32 = type_text(4u);

using qvstest::split;

inline std::string inst(int i) { return std::to_string(i); }

// Map text of 16 numbers from the first few.
inline std::string map16(std::vector<int> head) {
    std::string s;
    for (int i = 0; i < 16; ++i) {
        if (i > 0) s += ",";
        s += std::to_string(i < static_cast<int>(head.size()) ? head[i] : 0);
    }
    return s;
}

class WlanTest : public ::testing::Test {
protected:
    std::uint32_t h = 0;

    void SetUp() override {
        ASSERT_EQ(qvsim_reset(), 0);
        ensure(kCommon, "");
        set(kCommon, "", "X_QV_External_SSID_Map", "");
        set(kCommon, "", "X_QV_SharedSSID_Map", "");
        set(kCommon, "", "X_QV_GuestSSID_Map", "");
        for (int i = 1; i <= 16; ++i) {
            ensure(kSsid, inst(i));
            ensure(kName, inst(i));
            ensure(kSec, inst(i));
            set(kSsid, inst(i), "X_QV_SSID_Bitmap", "0");
            set(kSsid, inst(i), "Enable", "1");
            set(kName, inst(i), "SSID", "net" + inst(i));
        }
        h = qvs_xmlShmInit();
        ASSERT_NE(h, 0u);
        ASSERT_EQ(qvsim_journal_clear(), 0);
    }
    void TearDown() override {
        qvsim_fault_clear();
        if (h != 0) qvs_xmlShmDeInit(&h);
    }

    static void ensure(int oid, const std::string &instance) {
        if (!qvsim_exists(oid, instance.c_str())) {
            ASSERT_EQ(qvsim_add_instance(oid, instance.c_str()), 0);
        }
    }
    static void set(int oid, const std::string &instance, const char *param, const std::string &value) {
        ASSERT_EQ(qvsim_set(oid, instance.c_str(), param, value.c_str()), 0) << oid << " " << instance << " " << param;
    }
    static std::string get(int oid, const std::string &instance, const char *param) {
        char buf[2048] = {};
        EXPECT_EQ(qvsim_get(oid, instance.c_str(), param, buf, sizeof buf), 0) << oid << " " << instance << " " << param;
        return buf;
    }
    static void fault(const char *f) { ASSERT_EQ(qvsim_fault_add(f), 0) << f; }

    static void set_map(const std::string &text) { set(kCommon, "", "X_QV_External_SSID_Map", text); }
    static std::string map_text() { return get(kCommon, "", "X_QV_External_SSID_Map"); }
    static void set_bitmap(int idx, std::uint32_t v) { set(kSsid, inst(idx), "X_QV_SSID_Bitmap", std::to_string(v)); }
    static std::uint32_t bitmap(int idx) {
        return static_cast<std::uint32_t>(std::strtoul(get(kSsid, inst(idx), "X_QV_SSID_Bitmap").c_str(), nullptr, 10));
    }

    // The journal's lines, each split at tabs, escapes kept as journaled.
    static std::vector<std::vector<std::string>> journal() { return qvstest::journal_fields(false); }
    // Every line that is not a log line, fields joined by "|".
    static std::vector<std::string> effects() {
        std::vector<std::string> out;
        for (const auto &f : journal()) {
            if (f[0] == "log") continue;
            std::string s;
            for (std::size_t i = 0; i < f.size(); ++i) s += (i ? "|" : "") + f[i];
            out.push_back(s);
        }
        return out;
    }
    // Log lines as "<func>|<level>|<message>" (message escaped as journaled);
    // every one must name the library's source unit.
    static std::vector<std::string> logs() {
        std::vector<std::string> out;
        for (const auto &f : journal()) {
            if (f[0] != "log") continue;
            EXPECT_GE(f.size(), 6u);
            if (f.size() < 6) continue;
            EXPECT_EQ(f[1], "qvs_utils.cpp");
            std::string msg = f[5];
            for (std::size_t i = 6; i < f.size(); ++i) msg += "\t" + f[i];
            out.push_back(f[2] + "|" + f[4] + "|" + msg);
        }
        return out;
    }
    static int count_kind(const char *kind) {
        int n = 0;
        for (const auto &f : journal()) n += f[0] == kind;
        return n;
    }

    // Expected journal lines.
    static std::string set_line(int oid, const std::string &instance, const char *param, const std::string &type,
                                const std::string &value) {
        return "set|" + std::to_string(oid) + "|" + instance + "|" + param + "|" + type + "|" + value;
    }
    static std::string map_set(const std::string &text) {
        return set_line(kCommon, "", "X_QV_External_SSID_Map", kStr, text);
    }
    static std::string bitmap_set(int idx, std::uint32_t v) {
        return set_line(kSsid, inst(idx), "X_QV_SSID_Bitmap", kU32, std::to_string(v));
    }
    static std::string log_line(const char *func, int level, const std::string &msg) {
        return std::string(func) + "|" + std::to_string(level) + "|" + msg;
    }
};

using Lines = std::vector<std::string>;

}  // namespace wlantest
