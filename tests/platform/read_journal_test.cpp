// SPDX-License-Identifier: MIT
// The opt-in read journal: lookups and parameter reads, only when switched on.
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "sim_helpers.hpp"
#include "test_support.hpp"

using namespace simtest;

namespace {

void read_some(QVS_XMLSHM_HANDLE h) {
    char state[32] = {};
    qvsXml_GetObjectByOID(h, QVS_OID_WIFI_RADIO, ia1(1), 1);
    qvsXml_getParameterByOID(h, QVS_OID_WIFI_RADIO, ia1(1), "X_QV_DiagnosticsState", state);
}

TEST(ReadJournal, OffByDefault) {
    Attached a;
    read_some(a.h);
    EXPECT_EQ(journal_lines("lookup").size(), 0u);
    EXPECT_EQ(journal_lines("get").size(), 0u);
}

TEST(ReadJournal, LookupsAndReadsWithTheirOutcome) {
    ASSERT_EQ(qvsim_journal_reads(1), 0);
    Attached a;
    ASSERT_EQ(qvsim_fault_add("read SupportedStandards"), 0);
    ASSERT_EQ(qvsim_journal_clear(), 0);
    char out[32] = {};
    EXPECT_NE(qvsXml_GetObjectByOID(a.h, QVS_OID_WIFI_RADIO, ia1(2), 1), nullptr);
    EXPECT_EQ(qvsXml_GetObjectByOID(a.h, QVS_OID_WIFI_RADIO, ia1(7), 1), nullptr);
    EXPECT_EQ(qvsXml_GetObjectByOID(a.h, QVS_OID_WIFI_RADIO, ia1(-1), 1), nullptr);
    EXPECT_EQ(qvsXml_getParameterByOID(a.h, QVS_OID_WIFI_RADIO, ia1(1), "X_QV_DiagnosticsState", out), 0);
    EXPECT_EQ(qvsXml_getParameterByOID(a.h, QVS_OID_WIFI_RADIO, ia1(9), "X_QV_DiagnosticsState", out), -2);
    EXPECT_EQ(qvsXml_getParameterByOID(a.h, QVS_OID_WIFI_RADIO, ia1(1), "NoSuchThing", out), -3);
    EXPECT_EQ(qvsXml_getParameterByOID(a.h, QVS_OID_WIFI_RADIO, ia1(1), "SupportedStandards", out), -5);
    EXPECT_EQ(qvsXml_getParameterByOID(0, QVS_OID_WIFI_ASSOC_STA, ia2(1, 128), "MACAddress", out), -1);
    EXPECT_NE(qvsXml_GetObjectByName(a.h, "InternetGatewayDevice.WiFi.Radio.1", 1), nullptr);
    EXPECT_EQ(qvsXml_GetObjectByName(a.h, "InternetGatewayDevice.Nowhere.1", 1), nullptr);
    EXPECT_EQ(journal(),
              "lookup\t390\t2\tfound\n"
              "lookup\t390\t7\tmissing\n"
              "lookup\t390\tinvalid\tmissing\n"
              "get\t390\t1\tX_QV_DiagnosticsState\t0\n"
              "get\t390\t9\tX_QV_DiagnosticsState\t-2\n"
              "get\t390\t1\tNoSuchThing\t-3\n"
              "get\t390\t1\tSupportedStandards\t-5\n"
              "get\t402\t1,128\tMACAddress\t-1\n"
              "lookup\t390\t1\tfound\n"
              "lookup\t-\tInternetGatewayDevice.Nowhere.1\tmissing\n");
    EXPECT_EQ(qvsim_journal_count("get"), 5);
    EXPECT_EQ(qvsim_journal_count("lookup"), 5);
}

TEST(ReadJournal, SwitchedOffAgainAndByAReset) {
    Attached a;
    ASSERT_EQ(qvsim_journal_reads(1), 0);
    read_some(a.h);
    EXPECT_EQ(qvsim_journal_count("get"), 1);
    ASSERT_EQ(qvsim_journal_reads(0), 0);
    read_some(a.h);
    EXPECT_EQ(qvsim_journal_count("get"), 1);
    ASSERT_EQ(qvsim_journal_reads(1), 0);
    ASSERT_EQ(qvsim_reset(), 0);
    Attached b;
    read_some(b.h);
    EXPECT_EQ(qvsim_journal_count("get"), 0);
    EXPECT_EQ(qvsim_journal_count("lookup"), 0);
}

TEST(ReadJournal, ReachesEveryProcess) {
    ASSERT_EQ(qvsim_journal_reads(1), 0);
    pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        QVS_XMLSHM_HANDLE h = qvs_xmlShmInit();
        read_some(h);
        qvs_xmlShmDeInit(&h);
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(pid, &status, 0), pid);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(journal_lines("lookup"), std::vector<std::string>{"lookup\t390\t1\tfound"});
    EXPECT_EQ(journal_lines("get"), std::vector<std::string>{"get\t390\t1\tX_QV_DiagnosticsState\t0"});
}

TEST(ReadJournal, WritesAndTheirJournalAreUnchanged) {
    ASSERT_EQ(qvsim_journal_reads(1), 0);
    Attached a;
    ASSERT_EQ(qvsim_journal_clear(), 0);
    uint8_t off = 0;
    EXPECT_EQ(qvsXml_setOneParameterByOIDIndirect(a.h, QVS_OID_WIFI_SSID, ia1(9), "Enable", QVS_TYPE_BOOL, &off), 0);
    EXPECT_EQ(journal(), "set\t399\t9\tEnable\t0x20000001\t0\n");
}

TEST(ReadJournal, SwitchedByTheHostTool) {
    const std::string emulator = QVS_EMULATOR;
    const std::string qvstore = (emulator.empty() ? "" : emulator + " ") + QVSTORE;
    int st = -1;
    EXPECT_EQ(qvstest::run(qvstore + " journal reads on 2>&1", &st), "");
    EXPECT_EQ(st, 0);
    {
        Attached a;
        read_some(a.h);
    }
    EXPECT_EQ(qvsim_journal_count("get"), 1);
    EXPECT_EQ(qvstest::run(qvstore + " journal reads off 2>&1", &st), "");
    EXPECT_EQ(st, 0);
    {
        Attached a;
        read_some(a.h);
    }
    EXPECT_EQ(qvsim_journal_count("get"), 1);
    qvstest::run(qvstore + " journal reads maybe >/dev/null 2>&1", &st);
    EXPECT_NE(st, 0);
}

}  // namespace
