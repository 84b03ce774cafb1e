// SPDX-License-Identifier: MIT
// The journal of everything done to the platform, and the injected faults.
#include <cstring>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "liblog.h"
#include "sim_helpers.hpp"
#include "test_support.hpp"

using namespace simtest;

TEST(Journal, RecordsAttachWritesSavesAndDetachInOrder) {
    QVS_XMLSHM_HANDLE h = qvs_xmlShmInit();
    ASSERT_NE(h, 0u);
    auto *rec = qvsXml_GetObjectByOID(h, QVS_OID_IPSEC_CONFIG, ia1(1), 1);
    QVS_PARAM_LIST *list = newParameterList();
    const char *st = "Connected";
    setParameterToList(list, "ConnectionStatus", QVS_TYPE_STRING, st);
    EXPECT_EQ(qvsXml_setParameterNnotify(h, qvsXmlGetPtrOffset(h, rec), list, 0), 0);
    freeParameterList(list);
    uint8_t off = 0;
    EXPECT_EQ(qvsXml_setOneParameterByOIDIndirect(h, QVS_OID_WIFI_SSID, ia1(9), "Enable", QVS_TYPE_BOOL, &off), 0);
    EXPECT_EQ(qvsXml_delObjectByOIDIAIndirect(h, QVS_OID_CMCC_TIMED_TASK, ia1(2)), 0);
    EXPECT_EQ(qvsXml_SaveNoReply(h), 0);
    EXPECT_EQ(qvsXml_SaveIndirect(h), 0);
    std::string hs = std::to_string(h);
    EXPECT_EQ(qvs_xmlShmDeInit(&h), 0);
    EXPECT_EQ(journal(), "attach\t" + hs +
                             "\n"
                             "nnotify\t533\t1\n"
                             "set\t533\t1\tConnectionStatus\t0xc0000000\tConnected\n"
                             "set\t399\t9\tEnable\t0x20000001\t0\n"
                             "del\t566\t2\n"
                             "save\tnoreply\n"
                             "save\tindirect\n"
                             "detach\t" +
                             hs + "\n");
    EXPECT_EQ(qvsim_journal_count("attach"), 1);
    EXPECT_EQ(qvsim_journal_count("detach"), 1);
    EXPECT_EQ(qvsim_journal_count("set"), 2);
    EXPECT_EQ(qvsim_journal_count("save"), 2);
    EXPECT_EQ(qvsim_journal_count("attach-refused"), 0);
    EXPECT_EQ(qvsim_journal_count(nullptr), -1);
    EXPECT_EQ(qvsim_journal_clear(), 0);
    EXPECT_EQ(journal(), "");
    EXPECT_EQ(qvsim_journal_count("attach"), 0);
}

TEST(Journal, EscapesTextsAndKeepsCommandLinesWhole) {
    EXPECT_EQ(qv_do_cmd("echo 'a\tb' > /tmp/escaped; echo done\\"), 0);
    qvs_log_print("qvs_utils.cpp", "some_func", 77, 5, "line one\nline two\r\n");
    auto lines = journal_lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], "cmd\tqv_do_cmd\techo 'a\\tb' > /tmp/escaped; echo done\\\\");
    EXPECT_EQ(lines[1], "log\tqvs_utils.cpp\tsome_func\t77\t5\tline one\\nline two\\r\\n");
    EXPECT_EQ(qvstest::read_file("/tmp/escaped"), "a\tb\n");
}

TEST(Journal, TypeCodesAndValuesOfEveryKind) {
    Attached a;
    uint32_t u = 4000000000u, hv = 65535;
    int8_t i8 = -7;
    uint8_t b = 1;
    const char *dt = "0000-00-00T00:00:00";
    QVS_PARAM_LIST *list = newParameterList();
    setParameterToList(list, "AlarmCode", QVS_TYPE_UINT32, &u);
    setParameterToList(list, "AlarmStatus", QVS_TYPE_INT8, &i8);
    setParameterToList(list, "AlarmClearedTime", QVS_TYPE_DATETIME, dt);
    ASSERT_EQ(qvsXml_addObjectByOIDIWithParaListIndirect(a.h, QVS_OID_ALARM_INFO, ia1(2), list), 0);
    freeParameterList(list);
    EXPECT_EQ(qvsXml_setOneParameterByOIDIndirect(a.h, QVS_OID_LAN_HOST, ia2(1, 1), "CounterID",
                                                  QVS_TYPE_HOSTVALUE, &hv),
              0);
    EXPECT_EQ(qvsXml_setOneParameterByOIDIndirect(a.h, QVS_OID_LED, 0, "Leds_Turnoff", QVS_TYPE_BOOL, &b), 0);
    auto sets = journal_lines("set");
    ASSERT_EQ(sets.size(), 5u);
    EXPECT_EQ(journal_lines("add").at(0), "add\t224\t2");
    EXPECT_EQ(sets[0], "set\t224\t2\tAlarmCode\t4\t4000000000");
    EXPECT_EQ(sets[1], "set\t224\t2\tAlarmStatus\t1\t-7");
    EXPECT_EQ(sets[2], "set\t224\t2\tAlarmClearedTime\t27\t0000-00-00T00:00:00");
    EXPECT_EQ(sets[3], "set\t156\t1,1\tCounterID\t2\t65535");
    EXPECT_EQ(sets[4], "set\t229\t\tLeds_Turnoff\t0x20000001\t1");
}

TEST(Faults, AttachRefused) {
    ASSERT_EQ(qvsim_fault_add("attach"), 0);
    EXPECT_EQ(qvs_xmlShmInit(), 0u);
    EXPECT_EQ(journal_lines(), std::vector<std::string>{"attach-refused"});
    ASSERT_EQ(qvsim_fault_clear(), 0);
    QVS_XMLSHM_HANDLE h = qvs_xmlShmInit();
    EXPECT_NE(h, 0u);
    qvs_xmlShmDeInit(&h);
}

TEST(Faults, ObjectMissingForTheWholeClassOrOneInstance) {
    Attached a;
    ASSERT_EQ(qvsim_fault_add("object 389"), 0);
    ASSERT_EQ(qvsim_fault_add("object 399 9"), 0);
    EXPECT_EQ(qvsXml_GetObjectByOID(a.h, QVS_OID_WIFI_COMMON, 0, 1), nullptr);
    EXPECT_EQ(qvsXml_GetObjectByName(a.h, "InternetGatewayDevice.X_QV_WiFi", 1), nullptr);
    char out[32] = {};
    EXPECT_LT(qvsXml_getParameterByOID(a.h, QVS_OID_WIFI_COMMON, 0, "X_QV_External_SSID_Map", out), 0);
    EXPECT_EQ(qvsXml_GetObjectByOID(a.h, QVS_OID_WIFI_SSID, ia1(9), 1), nullptr);
    EXPECT_NE(qvsXml_GetObjectByOID(a.h, QVS_OID_WIFI_SSID, ia1(1), 1), nullptr);
    uint8_t on = 1;
    EXPECT_LT(qvsXml_setOneParameterByOIDIndirect(a.h, QVS_OID_WIFI_SSID, ia1(9), "Enable", QVS_TYPE_BOOL, &on), 0);
    EXPECT_EQ(qvsXml_delObjectByOIDIAIndirect(a.h, QVS_OID_WIFI_SSID, ia1(9)), -1);
    EXPECT_EQ(qvsim_exists(QVS_OID_WIFI_SSID, "9"), 1);  // the control interface still sees it
    ASSERT_EQ(qvsim_fault_add("object 392"), 0);
    EXPECT_EQ(qvsXml_ObjectStats(QVS_OID_WIFI_NEIGHBOR, ia1(1), 6000), -1);
    ASSERT_EQ(qvsim_fault_add("object 224 7"), 0);
    QVS_PARAM_LIST *list = newParameterList();
    EXPECT_EQ(qvsXml_addObjectByOIDIWithParaListIndirect(a.h, QVS_OID_ALARM_INFO, ia1(7), list), -1);
    EXPECT_EQ(qvsXml_addObjectByOIDIWithParaListIndirect(a.h, QVS_OID_ALARM_INFO, ia1(8), list), 0);
    freeParameterList(list);
    ASSERT_EQ(qvsim_fault_clear(), 0);
    EXPECT_NE(qvsXml_GetObjectByOID(a.h, QVS_OID_WIFI_COMMON, 0, 1), nullptr);
}

TEST(Faults, NoParameterList) {
    ASSERT_EQ(qvsim_fault_add("paramlist"), 0);
    EXPECT_EQ(newParameterList(), nullptr);
    ASSERT_EQ(qvsim_fault_clear(), 0);
    QVS_PARAM_LIST *list = newParameterList();
    EXPECT_NE(list, nullptr);
    freeParameterList(list);
}

TEST(Faults, EveryWriteOrOneParameterFails) {
    Attached a;
    auto *s = static_cast<const QVS_WIFI_SSID_REC *>(qvsXml_GetObjectByOID(a.h, QVS_OID_WIFI_SSID, ia1(2), 1));
    uint8_t on = 1;
    uint32_t dur = 60;
    ASSERT_EQ(qvsim_fault_add("write X_QV_Guest_Duration"), 0);
    EXPECT_EQ(qvsXml_setOneParameterByOIDIndirect(a.h, QVS_OID_WIFI_SSID, ia1(2), "Enable", QVS_TYPE_BOOL, &on), 0);
    EXPECT_EQ(qvsXml_setOneParameterByOIDIndirect(a.h, QVS_OID_WIFI_SSID, ia1(2), "X_QV_Guest_Duration",
                                                  QVS_TYPE_UINT32, &dur),
              -1);
    QVS_PARAM_LIST *list = newParameterList();
    on = 0;
    setParameterToList(list, "Enable", QVS_TYPE_BOOL, &on);
    setParameterToList(list, "X_QV_Guest_Duration", QVS_TYPE_UINT32, &dur);
    EXPECT_EQ(qvsXml_setParameterIndirectByParaList(a.h, qvsXmlGetPtrOffset(a.h, s), list), -1);
    EXPECT_EQ(s->Enable, 1);  // nothing of the failed list applied
    ASSERT_EQ(qvsim_fault_clear(), 0);
    ASSERT_EQ(qvsim_fault_add("write"), 0);
    EXPECT_EQ(qvsXml_setParameterIndirectByParaList(a.h, qvsXmlGetPtrOffset(a.h, s), list), -1);
    EXPECT_EQ(qvsXml_setParameterNnotify(a.h, qvsXmlGetPtrOffset(a.h, s), list, 0), -1);
    EXPECT_EQ(qvsXml_addObjectByOIDIWithParaListIndirect(a.h, QVS_OID_WIFI_SSID, ia1(17), list), -1);
    EXPECT_EQ(qvsim_exists(QVS_OID_WIFI_SSID, "17"), 0);
    ASSERT_EQ(qvsim_fault_clear(), 0);
    EXPECT_EQ(qvsXml_setParameterIndirectByParaList(a.h, qvsXmlGetPtrOffset(a.h, s), list), 0);
    freeParameterList(list);
    EXPECT_EQ(s->Enable, 0);
    EXPECT_EQ(+s->X_QV_Guest_Duration, 60u);
    EXPECT_EQ(journal_lines("set").size(), 3u);  // only the successful writes
}

TEST(Faults, ReadFailsAlwaysOrAfterSomeReads) {
    Attached a;
    char out[32] = {};
    ASSERT_EQ(qvsim_fault_add("read X_QV_DiagnosticsState after 2"), 0);
    EXPECT_EQ(qvsXml_getParameterByOID(a.h, QVS_OID_WIFI_RADIO, ia1(1), "X_QV_DiagnosticsState", out), 0);
    EXPECT_STREQ(out, "None");
    EXPECT_EQ(qvsXml_getParameterByOID(a.h, QVS_OID_WIFI_RADIO, ia1(2), "X_QV_DiagnosticsState", out), 0);
    EXPECT_EQ(qvsXml_getParameterByOID(a.h, QVS_OID_WIFI_RADIO, ia1(1), "X_QV_DiagnosticsState", out), -5);
    EXPECT_EQ(qvsXml_getParameterByOID(a.h, QVS_OID_WIFI_RADIO, ia1(1), "X_QV_DiagnosticsState", out), -5);
    EXPECT_EQ(qvsXml_getParameterByOID(a.h, QVS_OID_WIFI_RADIO, ia1(1), "SupportedStandards", out), 0);
    ASSERT_EQ(qvsim_fault_clear(), 0);
    ASSERT_EQ(qvsim_fault_add("read X_QV_SSID_Bitmap"), 0);
    uint32_t bm = 0;
    EXPECT_EQ(qvsXml_getParameterByOID(a.h, QVS_OID_WIFI_SSID, ia1(1), "X_QV_SSID_Bitmap", &bm), -5);
    // Other processes see the same faults and the same count.
    ASSERT_EQ(qvsim_fault_clear(), 0);
    ASSERT_EQ(qvsim_fault_add("read SSID after 1"), 0);
    pid_t pid = fork();
    if (pid == 0) {
        QVS_XMLSHM_HANDLE h = qvs_xmlShmInit();
        char o[32] = {};
        int r = qvsXml_getParameterByOID(h, QVS_OID_WIFI_SSID_NAME, ia1(1), "SSID", o);
        qvs_xmlShmDeInit(&h);
        _exit(r == 0 ? 0 : 1);
    }
    int status = -1;
    waitpid(pid, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(qvsXml_getParameterByOID(a.h, QVS_OID_WIFI_SSID_NAME, ia1(1), "SSID", out), -5);
}

TEST(Faults, GrammarIsChecked) {
    for (const char *bad : {"", "attach now", "object", "object x", "object 389 a", "read", "read a after",
                            "read a after x", "write a b", "bogus", "paramlist 1", "device"})
        EXPECT_EQ(qvsim_fault_add(bad), -1) << bad;
    EXPECT_EQ(qvsim_fault_add(nullptr), -1);
    for (const char *good : {"attach", "object 389", "object 156 1,3", "paramlist", "write", "write Enable",
                             "read Enable", "read Enable after 3", "device libqv_sys_getArea"})
        EXPECT_EQ(qvsim_fault_add(good), 0) << good;
}

TEST(Faults, ResetClearsFaultsJournalAndStore) {
    ASSERT_EQ(qvsim_set(QVS_OID_WIFI_SSID, "2", "Enable", "1"), 0);
    ASSERT_EQ(qvsim_save(), 0);
    ASSERT_EQ(qvsim_fault_add("attach"), 0);
    qv_do_cmd("true");
    ASSERT_EQ(qvsim_reset(), 0);
    EXPECT_EQ(journal(), "");
    EXPECT_EQ(get(QVS_OID_WIFI_SSID, "2", "Enable"), "0");
    ASSERT_EQ(qvsim_restart(), 0);
    EXPECT_EQ(get(QVS_OID_WIFI_SSID, "2", "Enable"), "0");
    QVS_XMLSHM_HANDLE h = qvs_xmlShmInit();
    EXPECT_NE(h, 0u);
    qvs_xmlShmDeInit(&h);
}
