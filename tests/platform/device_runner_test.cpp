// SPDX-License-Identifier: MIT
// Command runners, the logger and the simulated device calls.
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "liblog.h"
#include "sim_helpers.hpp"
#include "test_support.hpp"

using namespace simtest;
using qvstest::CaptureFd;

namespace {

std::string device(const char *key) {
    char out[256] = {};
    if (qvsim_device_get(key, out, sizeof out) != 0) return "<none>";
    return out;
}

}  // namespace

TEST(Runners, EachRunsTheLineWithTheShellAndJournalsIt) {
    EXPECT_EQ(qv_do_cmd("echo one > /tmp/r1"), 0);
    EXPECT_EQ(qvs_system("echo two > /tmp/r2 && echo $((6*7)) >> /tmp/r2"), 0);
    EXPECT_EQ(libqv_dosystem("printf three > /tmp/r3"), 0);
    EXPECT_EQ(qvstest::read_file("/tmp/r1"), "one\n");
    EXPECT_EQ(qvstest::read_file("/tmp/r2"), "two\n42\n");
    EXPECT_EQ(qvstest::read_file("/tmp/r3"), "three");
    auto cmds = journal_lines("cmd");
    ASSERT_EQ(cmds.size(), 3u);
    EXPECT_EQ(cmds[0], "cmd\tqv_do_cmd\techo one > /tmp/r1");
    EXPECT_EQ(cmds[1], "cmd\tqvs_system\techo two > /tmp/r2 && echo $((6*7)) >> /tmp/r2");
    EXPECT_EQ(cmds[2], "cmd\tlibqv_dosystem\tprintf three > /tmp/r3");
    // The result is the shell's status; a null line runs nothing.
    EXPECT_NE(qv_do_cmd("exit 3"), 0);
    EXPECT_EQ(qv_do_cmd(nullptr), -1);
    EXPECT_EQ(journal_lines("cmd").size(), 4u);
}

TEST(Runners, SafeCopyAlwaysTerminates) {
    char buf[5];
    std::memset(buf, 'x', sizeof buf);
    EXPECT_EQ(libqv_safe_strncpy(buf, "abcdefgh", sizeof buf), buf);
    EXPECT_STREQ(buf, "abcd");
    EXPECT_STREQ(libqv_safe_strncpy(buf, nullptr, sizeof buf), "");
    EXPECT_STREQ(libqv_safe_strncpy(buf, "ab", sizeof buf), "ab");
    EXPECT_EQ(libqv_safe_strncpy(buf, "zz", 0), buf);
    EXPECT_STREQ(buf, "ab");
}

TEST(Logger, PrintsAllFieldsToStderrAndJournal) {
    CaptureFd err(2);
    qvs_log_print("qvs_utils.cpp", "my_localtime", 120, 1, "second=%lu\n", 99UL);
    EXPECT_EQ(err.text(), "[qvs_utils.cpp:my_localtime:120][1] second=99\n");
    EXPECT_EQ(journal_lines("log"), std::vector<std::string>{"log\tqvs_utils.cpp\tmy_localtime\t120\t1\tsecond=99\\n"});
}

TEST(Switch, PortNamesAndAdminState) {
    EXPECT_EQ(libqv_switchApi_ethPortName2PhyPortNum("eth0"), 0);
    EXPECT_EQ(libqv_switchApi_ethPortName2PhyPortNum("eth3"), 3);
    EXPECT_EQ(libqv_switchApi_ethPortName2PhyPortNum("wan0"), -1);
    EXPECT_EQ(libqv_switchApi_ethPortName2PhyPortNum("eth"), -1);
    EXPECT_EQ(libqv_switchApi_ethPortName2PhyPortNum("eth1x"), -1);
    EXPECT_EQ(libqv_switchApi_ethPortName2PhyPortNum(nullptr), -1);
    EXPECT_EQ(FC_libqv_switchApi_portSetAdmin(2, 0), 0);
    EXPECT_EQ(device("port.2.admin"), "0");
    EXPECT_EQ(FC_libqv_switchApi_portSetAdmin(2, 1), 0);
    EXPECT_EQ(device("port.2.admin"), "1");
    EXPECT_EQ(FC_libqv_switchApi_portSetAdmin(-1, 1), -1);
    QVS_SWITCH_VLAN_CFG cfg = {};
    cfg.defaultTCI = 45;
    cfg.vlanType = 2;
    EXPECT_EQ(libqv_switchApi_setVlanCfgMain(&cfg), 0);
    EXPECT_EQ(device("switch.vlan"), "45 2");
    EXPECT_EQ(libqv_switchApi_setVlanCfgMain(nullptr), -1);
    EXPECT_EQ(libqv_netApi_setVlanMode(1, 45, 2, 3), 0);
    EXPECT_EQ(device("vlanmode"), "1 45 2 3");
    auto lines = journal_lines("device");
    ASSERT_GE(lines.size(), 9u);
    EXPECT_EQ(lines[0], "device\tlibqv_switchApi_ethPortName2PhyPortNum\teth0");
    EXPECT_EQ(lines[6], "device\tFC_libqv_switchApi_portSetAdmin\t2\t0");
    EXPECT_EQ(journal_lines().back(), "device\tlibqv_netApi_setVlanMode\t1\t45\t2\t3");
}

TEST(NetDevices, RealVlanSubInterfacesInsideTheNamespace) {
    ASSERT_TRUE(qvstest::in_sandbox());
    int st = -1;
    qvstest::run("ip link add eth1 type veth peer name eth1peer 2>&1", &st);
    ASSERT_EQ(st, 0);
    EXPECT_EQ(libqv_netApi_addDev("eth1", "eth1.5", 3, 5, 0, 0, 0, 0), 0);
    std::string link = qvstest::run("ip -d link show eth1.5 2>&1", &st);
    EXPECT_EQ(st, 0);
    EXPECT_NE(link.find("eth1.5@eth1:"), std::string::npos) << link;
    std::string state = device("netdev.eth1.5");
    if (state == "eth1 3 5 vlan") {
        EXPECT_NE(link.find("vlan protocol 802.1Q id 5"), std::string::npos) << link;
    } else {
        // This kernel has no 802.1Q: a MAC VLAN on the base stands in.
        EXPECT_EQ(state, "eth1 3 5 macvlan");
        EXPECT_NE(link.find("macvlan"), std::string::npos) << link;
    }
    EXPECT_EQ(libqv_netApi_addDev("eth1", "eth1.5", 3, 5, 0, 0, 0, 0), -1);  // exists
    EXPECT_EQ(libqv_netApi_addDev("eth9", "eth9.5", 3, 5, 0, 0, 0, 0), -1);  // no base
    EXPECT_EQ(device("netdev.eth9.5"), "<none>");
    EXPECT_EQ(libqv_netApi_addDev("eth1", "eth1;reboot", 3, 5, 0, 0, 0, 0), -1);
    EXPECT_EQ(libqv_netApi_addDev("eth1", "eth1.6", 3, 5000, 0, 0, 0, 0), -1);
    EXPECT_EQ(libqv_netApi_remDev("eth1.5"), 0);
    qvstest::run("ip link show eth1.5 2>&1", &st);
    EXPECT_NE(st, 0);
    EXPECT_EQ(device("netdev.eth1.5"), "<none>");
    EXPECT_EQ(libqv_netApi_remDev("eth1.5"), -1);
    EXPECT_EQ(libqv_netApi_remDev(nullptr), -1);
    EXPECT_EQ(journal_lines("device").front(), "device\tlibqv_netApi_addDev\teth1\teth1.5\t3\t5\t0\t0\t0\t0");
}

TEST(Qos, HostEntriesHandBackBucketAndCounter) {
    const uint8_t mac1[6] = {0, 0x1a, 0x2b, 0x3c, 0x4d, 1};
    const uint8_t mac2[6] = {0, 0x1a, 0x2b, 0x3c, 0x4d, 2};
    uint32_t b1 = 0, c1 = 0, b2 = 0, c2 = 0;
    EXPECT_EQ(libqv_qos_hostEntryAdd(1, mac1, 1, 100, 200, &b1, &c1), 0);
    EXPECT_EQ(libqv_qos_hostEntryAdd(2, mac2, 1, 300, 400, &b2, &c2), 0);
    EXPECT_EQ(b1, 1u);
    EXPECT_EQ(c1, 1u);
    EXPECT_EQ(b2, 2u);
    EXPECT_EQ(c2, 2u);
    EXPECT_EQ(device("qos.1"), "00:1a:2b:3c:4d:01 1 1 100 200");
    // A second add for the same host keeps its numbers and takes the new limits.
    uint32_t b = 0, c = 0;
    EXPECT_EQ(libqv_qos_hostEntryAdd(1, mac1, 1, 111, 222, &b, &c), 0);
    EXPECT_EQ(b, 1u);
    EXPECT_EQ(c, 1u);
    EXPECT_EQ(device("qos.1"), "00:1a:2b:3c:4d:01 1 1 111 222");
    // Deleting clears the slots and frees the numbers.
    EXPECT_EQ(libqv_qos_hostEntryDel(1, mac1, &b1, &c1), 0);
    EXPECT_EQ(b1, 0u);
    EXPECT_EQ(c1, 0u);
    EXPECT_EQ(device("qos.1"), "<none>");
    b1 = 5;
    c1 = 5;
    EXPECT_EQ(libqv_qos_hostEntryDel(1, mac1, &b1, &c1), -1);
    EXPECT_EQ(b1, 0u);
    EXPECT_EQ(libqv_qos_hostEntryAdd(7, mac1, 1, 1, 1, &b, &c), 0);
    EXPECT_EQ(b, 1u);
    EXPECT_EQ(libqv_qos_hostEntryAdd(8, nullptr, 1, 1, 1, &b, &c), -1);
    EXPECT_EQ(libqv_qos_hostEntryAdd(8, mac1, 1, 1, 1, nullptr, &c), -1);
    auto lines = journal_lines("device");
    EXPECT_EQ(lines[0], "device\tlibqv_qos_hostEntryAdd\t1\t00:1a:2b:3c:4d:01\t1\t100\t200");
    EXPECT_EQ(lines[3], "device\tlibqv_qos_hostEntryDel\t1\t00:1a:2b:3c:4d:01\t1\t1");
}

TEST(SystemFacts, AreaProvinceAndCpu) {
    char area[32] = {}, province[32] = {};
    uint32_t cpu = 0;
    EXPECT_EQ(libqv_sys_getArea(area), 0);
    EXPECT_EQ(libqv_sys_getProvince(province), 0);
    EXPECT_EQ(libqv_sys_getCpuUsage(&cpu), 0);
    EXPECT_STREQ(area, "CN");
    EXPECT_STREQ(province, "GD");
    EXPECT_EQ(cpu, 12u);
    ASSERT_EQ(qvsim_device_set("province", "WX"), 0);
    ASSERT_EQ(qvsim_device_set("cpu_usage", "87"), 0);
    EXPECT_EQ(libqv_sys_getProvince(province), 0);
    EXPECT_STREQ(province, "WX");
    EXPECT_EQ(libqv_sys_getCpuUsage(&cpu), 0);
    EXPECT_EQ(cpu, 87u);
    // A 40-character fact is cut to the 32-byte buffer.
    ASSERT_EQ(qvsim_device_set("area", std::string(40, 'A').c_str()), 0);
    char big[40];
    std::memset(big, 'z', sizeof big);
    EXPECT_EQ(libqv_sys_getArea(big), 0);
    EXPECT_EQ(std::string(big), std::string(31, 'A'));
    EXPECT_EQ(big[32], 'z');
    // Failures: a device fault, a missing fact, null buffers.
    ASSERT_EQ(qvsim_fault_add("device libqv_sys_getCpuUsage"), 0);
    cpu = 5;
    EXPECT_EQ(libqv_sys_getCpuUsage(&cpu), -1);
    EXPECT_EQ(cpu, 5u);
    EXPECT_EQ(libqv_sys_getArea(area), 0);
    ASSERT_EQ(qvsim_device_set("province", nullptr), 0);
    EXPECT_EQ(libqv_sys_getProvince(province), -1);
    EXPECT_EQ(libqv_sys_getArea(nullptr), -1);
    auto lines = journal_lines("device");
    EXPECT_EQ(lines[0], "device\tlibqv_sys_getArea");
    EXPECT_EQ(lines[1], "device\tlibqv_sys_getProvince");
    EXPECT_EQ(lines[2], "device\tlibqv_sys_getCpuUsage");
    char *text = qvsim_device_text();
    EXPECT_NE(std::strstr(text, "cpu_usage = 87\n"), nullptr);
    std::free(text);
}

TEST(DeviceFaults, EveryCallCanFail) {
    const char *calls[] = {"libqv_switchApi_ethPortName2PhyPortNum", "FC_libqv_switchApi_portSetAdmin",
                           "libqv_switchApi_setVlanCfgMain", "libqv_netApi_addDev", "libqv_netApi_remDev",
                           "libqv_netApi_setVlanMode", "libqv_qos_hostEntryAdd", "libqv_qos_hostEntryDel",
                           "libqv_sys_getArea", "libqv_sys_getProvince"};
    for (const char *c : calls) ASSERT_EQ(qvsim_fault_add((std::string("device ") + c).c_str()), 0);
    QVS_SWITCH_VLAN_CFG cfg = {};
    const uint8_t mac[6] = {0, 1, 2, 3, 4, 5};
    uint32_t b = 9, c = 9;
    char text[32] = {};
    EXPECT_EQ(libqv_switchApi_ethPortName2PhyPortNum("eth1"), -1);
    EXPECT_EQ(FC_libqv_switchApi_portSetAdmin(1, 0), -1);
    EXPECT_EQ(libqv_switchApi_setVlanCfgMain(&cfg), -1);
    EXPECT_EQ(libqv_netApi_addDev("lo", "lo.5", 3, 5, 0, 0, 0, 0), -1);
    EXPECT_EQ(libqv_netApi_remDev("lo.5"), -1);
    EXPECT_EQ(libqv_netApi_setVlanMode(1, 2, 3, 4), -1);
    EXPECT_EQ(libqv_qos_hostEntryAdd(1, mac, 1, 1, 1, &b, &c), -1);
    EXPECT_EQ(b, 9u);
    EXPECT_EQ(libqv_qos_hostEntryDel(1, mac, &b, &c), -1);
    EXPECT_EQ(libqv_sys_getArea(text), -1);
    EXPECT_EQ(libqv_sys_getProvince(text), -1);
    EXPECT_EQ(device("port.1.admin"), "<none>");
    EXPECT_EQ(journal_lines("device").size(), 10u);
}

TEST(WifiDriver, AnswersScanRequestsAsConfigured) {
    Attached a;
    const char *req = "Requested";
    char out[32] = {};
    // By default a request stays pending.
    EXPECT_EQ(qvsXml_setOneParameterByOIDIndirect(a.h, QVS_OID_WIFI_RADIO, ia1(1), "X_QV_DiagnosticsState",
                                                  QVS_TYPE_STRING, req),
              0);
    EXPECT_EQ(get(QVS_OID_WIFI_RADIO, "1", "X_QV_DiagnosticsState"), "Requested");
    ASSERT_EQ(qvsim_device_set("wifi.scan", "complete"), 0);
    ASSERT_EQ(qvsim_device_set("wifi.scan_results", "14"), 0);
    const char *force = "Request_Force";
    EXPECT_EQ(qvsXml_setOneParameterByOIDIndirect(a.h, QVS_OID_WIFI_RADIO, ia1(2), "X_QV_DiagnosticsState",
                                                  QVS_TYPE_STRING, force),
              0);
    EXPECT_EQ(qvsXml_getParameterByOID(a.h, QVS_OID_WIFI_RADIO, ia1(2), "X_QV_DiagnosticsState", out), 0);
    EXPECT_STREQ(out, "Complete");
    EXPECT_EQ(qvsXml_ObjectStats(QVS_OID_WIFI_NEIGHBOR, ia1(2), 6000), 14);
    EXPECT_EQ(qvsXml_ObjectStats(QVS_OID_WIFI_NEIGHBOR, ia1(1), 6000), 0);
    // The journal shows what the library wrote.
    EXPECT_EQ(journal_lines("set").back(), "set\t390\t2\tX_QV_DiagnosticsState\t0xc0000000\tRequest_Force");
    ASSERT_EQ(qvsim_device_set("wifi.scan", "error"), 0);
    const char *partial = "Request_partial";
    EXPECT_EQ(qvsXml_setOneParameterByOIDIndirect(a.h, QVS_OID_WIFI_RADIO, ia1(1), "X_QV_DiagnosticsState",
                                                  QVS_TYPE_STRING, partial),
              0);
    EXPECT_EQ(get(QVS_OID_WIFI_RADIO, "1", "X_QV_DiagnosticsState"), "Error");
    // Other values are kept as written.
    const char *err = "Error";
    ASSERT_EQ(qvsim_device_set("wifi.scan", "complete"), 0);
    EXPECT_EQ(qvsXml_setOneParameterByOIDIndirect(a.h, QVS_OID_WIFI_RADIO, ia1(1), "X_QV_DiagnosticsState",
                                                  QVS_TYPE_STRING, err),
              0);
    EXPECT_EQ(get(QVS_OID_WIFI_RADIO, "1", "X_QV_DiagnosticsState"), "Error");
}

TEST(Restart, LosesVolatileHardwareStateKeepsFacts) {
    const uint8_t mac[6] = {0, 1, 2, 3, 4, 5};
    uint32_t b = 0, c = 0;
    ASSERT_EQ(libqv_qos_hostEntryAdd(3, mac, 1, 10, 20, &b, &c), 0);
    ASSERT_EQ(FC_libqv_switchApi_portSetAdmin(1, 0), 0);
    ASSERT_EQ(libqv_netApi_setVlanMode(1, 2, 3, 4), 0);
    ASSERT_EQ(qvsim_device_set("province", "WX"), 0);
    ASSERT_EQ(qvsim_device_set("wifi.scan", "complete"), 0);
    ASSERT_EQ(qv_do_cmd("echo ADD_DATA index:1 type:1 list:1.2.3.4 > /proc/approute/rule"), 0);
    char *held = qvsim_module_list("approute", 1, 1);
    std::string before = held != nullptr ? held : "";
    std::free(held);
    ASSERT_EQ(qvsim_restart(), 0);
    EXPECT_EQ(device("qos.3"), "<none>");
    EXPECT_EQ(device("port.1.admin"), "<none>");
    EXPECT_EQ(device("vlanmode"), "<none>");
    EXPECT_EQ(device("province"), "WX");
    EXPECT_EQ(device("wifi.scan"), "complete");
    held = qvsim_module_list("approute", 1, 1);
    EXPECT_STREQ(held, "");
    std::free(held);
    EXPECT_NE(before, "");
    EXPECT_EQ(journal_lines("cmd").size(), 1u);  // the journal stays
}
