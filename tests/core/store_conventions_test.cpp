// SPDX-License-Identifier: MIT
// The store conventions every family follows: the attach guard, parameter
// lists, instance addresses under the caller's name, typed lookups.
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/store.hpp"
#include "qvsim.h"
#include "test_support.hpp"

namespace {

std::vector<std::string> journal_lines(const std::string &kind) {
    char *t = qvsim_journal_text();
    std::istringstream in(t != nullptr ? t : "");
    std::free(t);
    std::vector<std::string> out;
    std::string line;
    while (std::getline(in, line))
        if (line == kind || line.rfind(kind + "\t", 0) == 0) out.push_back(line);
    return out;
}

int g_attach_line = 0;

// A self-attaching function with several return paths.
int session_user(int path) {
    g_attach_line = __LINE__ + 1;
    QVS_ATTACH(store, "XMLSHMINIT fail\n");
    if (!store) return -1;
    if (path == 1) return 1;
    auto *w = qvs::object<QVS_WIFI_COMMON_REC>(store.handle(), QVS_OID_WIFI_COMMON, 0);
    if (w == nullptr) return qvs::kErrNoObject;
    return 0;
}

int quiet_session_user() {
    QVS_ATTACH(store, nullptr);
    return store ? 0 : -1;
}

int write_ssid_enable(int index, uint8_t enable) {
    QVS_ATTACH(store, "XMLSHMINIT fail\n");
    if (!store) return -1;
    qvs::ParamList list;
    if (!list) return -1;
    QVS_IA ia = QVS_IA_VALUE(1, "%d", index);
    auto *rec = qvs::object<QVS_WIFI_SSID_REC>(store.handle(), QVS_OID_WIFI_SSID, ia);
    if (rec == nullptr) return -1;
    if (list.add("Enable", qvs::kTypeBool, &enable) != 0) return -1;
    return list.apply(store.handle(), rec);
}

QVS_IA ia_caller(int count) { return QVS_IA_VALUE(count, "%d", 3); }

}  // namespace

TEST(StoreSession, DetachesOnEveryReturnPath) {
    for (int path : {0, 1}) {
        ASSERT_EQ(qvsim_journal_clear(), 0);
        EXPECT_EQ(session_user(path), path == 1 ? 1 : 0);
        auto att = journal_lines("attach");
        auto det = journal_lines("detach");
        ASSERT_EQ(att.size(), 1u);
        ASSERT_EQ(det.size(), 1u);
        EXPECT_EQ(att[0].substr(7), det[0].substr(7));  // the same handle
    }
    ASSERT_EQ(qvsim_journal_clear(), 0);
    ASSERT_EQ(qvsim_fault_add("object 389"), 0);
    EXPECT_EQ(session_user(0), qvs::kErrNoObject);
    EXPECT_EQ(journal_lines("attach").size(), 1u);
    EXPECT_EQ(journal_lines("detach").size(), 1u);
}

TEST(StoreSession, RefusedAttachLogsTheTextAtLevelOneAndDetachesNothing) {
    ASSERT_EQ(qvsim_fault_add("attach"), 0);
    qvstest::CaptureFd err(2);
    EXPECT_EQ(session_user(0), -1);
    std::string printed = err.text();
    EXPECT_EQ(journal_lines("attach-refused").size(), 1u);
    EXPECT_TRUE(journal_lines("detach").empty());
    auto logs = journal_lines("log");
    ASSERT_EQ(logs.size(), 1u);
    EXPECT_EQ(logs[0], "log\tqvs_utils.cpp\tsession_user\t" + std::to_string(g_attach_line) +
                           "\t1\tXMLSHMINIT fail\\n");
    EXPECT_EQ(printed, "[qvs_utils.cpp:session_user:" + std::to_string(g_attach_line) + "][1] XMLSHMINIT fail\n");
    // Without a text nothing is logged.
    EXPECT_EQ(quiet_session_user(), -1);
    EXPECT_EQ(journal_lines("log").size(), 1u);
}

TEST(ParamList, AppliesToTheRecordAndReturnsTheStoreResult) {
    EXPECT_EQ(write_ssid_enable(5, 1), 0);
    char out[8] = {};
    ASSERT_EQ(qvsim_get(QVS_OID_WIFI_SSID, "5", "Enable", out, sizeof out), 0);
    EXPECT_STREQ(out, "1");
    EXPECT_EQ(journal_lines("set"), std::vector<std::string>{"set\t399\t5\tEnable\t0x20000001\t1"});
    // The store's write failure comes back unchanged; the list is still freed
    // (the sanitizer build checks for leaks).
    ASSERT_EQ(qvsim_fault_add("write Enable"), 0);
    EXPECT_EQ(write_ssid_enable(5, 0), -1);
    ASSERT_EQ(qvsim_fault_clear(), 0);
    // No list: refused before the lookup, and still detached.
    ASSERT_EQ(qvsim_fault_add("paramlist"), 0);
    ASSERT_EQ(qvsim_journal_clear(), 0);
    EXPECT_EQ(write_ssid_enable(5, 0), -1);
    EXPECT_EQ(journal_lines("attach").size(), journal_lines("detach").size());
    EXPECT_TRUE(journal_lines("set").empty());
    qvs::ParamList none;
    EXPECT_FALSE(none);
    EXPECT_EQ(none.get(), nullptr);
    EXPECT_EQ(none.add("Enable", qvs::kTypeBool, out), -1);
}

TEST(InstanceAddress, BuiltUnderTheCallersNameAndLine) {
    EXPECT_EQ(ia_caller(1), qvsXml_ConstructIAValue("x", "y", 0, 1, "%d", 3));
    qvstest::CaptureFd err(2);
    ia_caller(2);  // a count that does not match the format: the platform names the caller
    std::string printed = err.text();
    EXPECT_NE(printed.find("[qvs_utils.cpp:ia_caller:"), std::string::npos) << printed;
}

TEST(ResultCodes, ValuesOfTheConventions) {
    EXPECT_EQ(qvs::kOk, 0);
    EXPECT_EQ(qvs::kFail, -1);
    EXPECT_EQ(qvs::kErrZeroHandle, -22);
    EXPECT_EQ(qvs::kErrEmpty, -1000);
    EXPECT_EQ(qvs::kErrAttach, -1001);
    EXPECT_EQ(qvs::kErrNoObject, -1003);
    EXPECT_EQ(qvs::kErrNoParamList, -14);
    EXPECT_EQ(qvs::kErrSelector, -1105);
    EXPECT_EQ(qvs::kTypeString, 0xc0000000u);
    EXPECT_EQ(qvs::kTypeBool, 0x20000001u);
    EXPECT_EQ(qvs::kTypeUInt32, 4u);
    EXPECT_EQ(qvs::kTypeInt8, 1u);
    EXPECT_EQ(qvs::kTypeDateTime, 27u);
    EXPECT_EQ(qvs::kTypeHostValue, 2u);
}
