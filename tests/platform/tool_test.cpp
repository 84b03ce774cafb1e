// SPDX-License-Identifier: MIT
// The host tool over the simulated store.
#include <string>

#include <gtest/gtest.h>

#include "sim_helpers.hpp"
#include "test_support.hpp"

using namespace simtest;

namespace {

std::string tool(const std::string &args, int *status = nullptr) {
    std::string emulator = QVS_EMULATOR;
    return qvstest::run((emulator.empty() ? "" : emulator + " ") + QVSTORE + " " + args + " 2>&1", status);
}

}  // namespace

TEST(Qvstore, ShowsTheDefaultModel) {
    int st = -1;
    std::string dump = tool("dump", &st);
    EXPECT_EQ(st, 0);
    EXPECT_NE(dump.find("[InternetGatewayDevice.X_QV_WiFi]\nX_QV_External_SSID_Map = 1,9,0,0,0,0,0,0,0,0,0,0,0,0,0,0\n"),
              std::string::npos);
    EXPECT_NE(dump.find("[InternetGatewayDevice.WANDevice.1.WANConnectionDevice.1.WANIPConnection.1]\n"),
              std::string::npos);
    EXPECT_NE(dump.find("X_QV_ServiceList = TR069\n"), std::string::npos);
    EXPECT_NE(dump.find("[InternetGatewayDevice.X_CMCC_IPSecVPN.Config.2]\n"), std::string::npos);
    std::string classes = tool("classes", &st);
    EXPECT_EQ(st, 0);
    EXPECT_NE(classes.find("399\tInternetGatewayDevice.WiFi.SSID.%d\tlevels 1"), std::string::npos);
}

TEST(Qvstore, GetSetAddDeleteSaveRestart) {
    int st = -1;
    EXPECT_EQ(tool("get 389 - X_QV_External_SSID_Map", &st), "1,9,0,0,0,0,0,0,0,0,0,0,0,0,0,0\n");
    EXPECT_EQ(tool("set 399 2 Enable 1", &st), "");
    EXPECT_EQ(st, 0);
    EXPECT_EQ(get(QVS_OID_WIFI_SSID, "2", "Enable"), "1");
    EXPECT_EQ(tool("add 224 7", &st), "");
    EXPECT_EQ(tool("exists 224 7"), "1\n");
    EXPECT_EQ(tool("delete 224 7", &st), "");
    EXPECT_EQ(tool("exists 224 7"), "0\n");
    EXPECT_EQ(tool("save"), "");
    EXPECT_EQ(tool("set 399 3 Enable 1"), "");
    EXPECT_EQ(tool("restart"), "");
    EXPECT_EQ(tool("get 399 2 Enable"), "1\n");
    EXPECT_EQ(tool("get 399 3 Enable"), "0\n");
    // Object paths stand for the OID and the instance list.
    EXPECT_EQ(tool("get InternetGatewayDevice.WiFi.SSID.9 Name"), "ra0\n");
    EXPECT_EQ(tool("get InternetGatewayDevice.X_QV_WiFi. X_QV_Enable"), "1\n");
    EXPECT_EQ(tool("set InternetGatewayDevice.LANDevice.1.Hosts.Host.2 UpSpeedLimit 512"), "");
    EXPECT_EQ(get(QVS_OID_LAN_HOST, "1,2", "UpSpeedLimit"), "512");
    EXPECT_EQ(tool("add InternetGatewayDevice.X_CU_Function.Log.AlarmInfo.9"), "");
    EXPECT_EQ(tool("exists InternetGatewayDevice.X_CU_Function.Log.AlarmInfo.9"), "1\n");
    EXPECT_EQ(tool("delete InternetGatewayDevice.X_CU_Function.Log.AlarmInfo.9"), "");
    tool("get InternetGatewayDevice.Nothing.1 X", &st);
    EXPECT_EQ(st, 1);
    int oid = 0;
    char inst[16] = {};
    EXPECT_EQ(qvsim_resolve("InternetGatewayDevice.WANDevice.1.WANConnectionDevice.2.WANPPPConnection.1", &oid, inst,
                            sizeof inst),
              0);
    EXPECT_EQ(oid, QVS_OID_WAN_PPP_CONN);
    EXPECT_STREQ(inst, "1,2,1");
    EXPECT_EQ(qvsim_resolve("InternetGatewayDevice.WiFi.SSID", &oid, inst, sizeof inst), -1);
    tool("get 399 3 Nope", &st);
    EXPECT_EQ(st, 1);
    tool("set 399 40 Enable 1", &st);
    EXPECT_EQ(st, 1);
    tool("bogus", &st);
    EXPECT_EQ(st, 2);
    tool("get x 1 Enable", &st);
    EXPECT_EQ(st, 2);
}

TEST(Qvstore, JournalFaultsDeviceModulesLoadAndReset) {
    int st = -1;
    qv_do_cmd("true");
    EXPECT_EQ(tool("journal"), "cmd\tqv_do_cmd\ttrue\n");
    EXPECT_EQ(tool("journal clear"), "");
    EXPECT_EQ(journal(), "");
    EXPECT_EQ(tool("fault object 389"), "");
    {
        Attached a;
        EXPECT_EQ(qvsXml_GetObjectByOID(a.h, QVS_OID_WIFI_COMMON, 0, 1), nullptr);
    }
    tool("fault nonsense here", &st);
    EXPECT_EQ(st, 1);
    EXPECT_EQ(tool("fault clear"), "");
    EXPECT_EQ(tool("device province"), "GD\n");
    EXPECT_EQ(tool("device province WX"), "");
    char p[32] = {};
    EXPECT_EQ(libqv_sys_getProvince(p), 0);
    EXPECT_STREQ(p, "WX");
    EXPECT_NE(tool("device").find("province = WX\n"), std::string::npos);
    tool("modules approute 1 1", &st);
    EXPECT_EQ(st, 0);
    qvstest::write_file("/tmp/tiny.model", "[InternetGatewayDevice.X_QV_WiFi]\nX_QV_External_SSID_Map = 1\n");
    EXPECT_EQ(tool("load /tmp/tiny.model"), "");
    EXPECT_EQ(get(QVS_OID_WIFI_COMMON, "", "X_QV_External_SSID_Map"), "1");
    EXPECT_EQ(qvsim_exists(QVS_OID_WIFI_SSID, "1"), 0);
    EXPECT_EQ(tool("reset"), "");
    EXPECT_EQ(qvsim_exists(QVS_OID_WIFI_SSID, "1"), 1);
    EXPECT_EQ(tool("device province"), "GD\n");
}
