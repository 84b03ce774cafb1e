// SPDX-License-Identifier: MIT
// The simulated store: addressing, records, reads and writes, instances,
// saving and restarting, for every object class.
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "sim_helpers.hpp"
#include "test_support.hpp"

using namespace simtest;

namespace {

struct ClassCase {
    int oid;
    const char *path;          // an existing instance's path
    const char *inst;          // its instance list
    QVS_IA (*ia)();            // its address
    const char *param;         // a writable parameter
    uint32_t type;             // type code to write it with
    const char *text_value;    // for text parameters
    uint32_t num_value;        // for numeric ones
    std::size_t field_offset;  // the parameter's offset in the record
    const char *new_inst;      // an instance to add and delete ("" for single objects)
    QVS_IA (*new_ia)();
};

QVS_IA none() { return 0; }

const ClassCase kCases[] = {
    {3, "InternetGatewayDevice.DeviceInfo", "", none, "SoftwareVersion", QVS_TYPE_STRING, "V9.9", 0,
     offsetof(QVS_DEVICE_INFO_REC, SoftwareVersion), "", none},
    {85, "InternetGatewayDevice.Time", "", none, "LocalTimeZone", QVS_TYPE_STRING, "-05:30", 0,
     offsetof(QVS_TIME_REC, LocalTimeZone), "", none},
    {137, "InternetGatewayDevice.LANDevice.1.LANEthernetInterfaceConfig.2", "1,2", [] { return ia2(1, 2); },
     "X_QV_PortName", QVS_TYPE_STRING, "eth7", 0, offsetof(QVS_LAN_ETH_IF_REC, X_QV_PortName), "1,6",
     [] { return ia2(1, 6); }},
    {156, "InternetGatewayDevice.LANDevice.1.Hosts.Host.2", "1,2", [] { return ia2(1, 2); }, "UpSpeedLimit",
     QVS_TYPE_UINT32, nullptr, 2048, offsetof(QVS_LAN_HOST_REC, UpSpeedLimit), "1,255", [] { return ia2(1, 255); }},
    {170, "InternetGatewayDevice.WANDevice.1", "1", [] { return ia1(1); }, "WANConnectionNumberOfEntries",
     QVS_TYPE_UINT32, nullptr, 7, offsetof(QVS_WAN_DEVICE_REC, WANConnectionNumberOfEntries), "2",
     [] { return ia1(2); }},
    {173, "InternetGatewayDevice.WANDevice.1.WANConnectionDevice.2", "1,2", [] { return ia2(1, 2); },
     "WANPPPConnectionNumberOfEntries", QVS_TYPE_UINT32, nullptr, 2,
     offsetof(QVS_WAN_CONN_DEVICE_REC, WANPPPConnectionNumberOfEntries), "1,16", [] { return ia2(1, 16); }},
    {174, "InternetGatewayDevice.WANDevice.1.WANConnectionDevice.1.WANIPConnection.1", "1,1,1",
     [] { return qvsXml_ConstructIAValue("t.cpp", "f", 1, 3, "1,%d,%d", 1, 1); }, "X_QV_ServiceList",
     QVS_TYPE_STRING, "TR069_INTERNET", 0, offsetof(QVS_WAN_CONN_REC, X_QV_ServiceList), "1,1,8",
     [] { return ia3(1, 1, 8); }},
    {196, "InternetGatewayDevice.WANDevice.1.WANConnectionDevice.2.WANPPPConnection.1", "1,2,1",
     [] { return qvsXml_ConstructIAValue("t.cpp", "f", 1, 3, "1,%d,%d", 2, 1); }, "ConnectionUp", QVS_TYPE_BOOL,
     nullptr, 0, offsetof(QVS_WAN_CONN_REC, ConnectionUp), "1,2,2", [] { return ia3(1, 2, 2); }},
    {209, "InternetGatewayDevice.WANDevice.1.X_CMCC_GponInterfaceConfig", "1", [] { return ia1(1); },
     "RegistrationState", QVS_TYPE_STRING, "Loid Wrong", 0, offsetof(QVS_OLT_REG_REC, RegistrationState), "2",
     [] { return ia1(2); }},
    {211, "InternetGatewayDevice.WANDevice.1.X_CMCC_EponInterfaceConfig", "1", [] { return ia1(1); },
     "RegistrationState", QVS_TYPE_STRING, "NoSignal", 0, offsetof(QVS_OLT_REG_REC, RegistrationState), "2",
     [] { return ia1(2); }},
    {223, "InternetGatewayDevice.X_CU_Function.Log", "", none, "NumberOfAlarmInfo", QVS_TYPE_UINT32, nullptr, 12,
     offsetof(QVS_ALARM_CONFIG_REC, NumberOfAlarmInfo), "", none},
    {224, "InternetGatewayDevice.X_CU_Function.Log.AlarmInfo.3", "3", [] { return ia1(3); }, "AlarmStatus",
     QVS_TYPE_INT8, nullptr, 3, offsetof(QVS_ALARM_INFO_REC, AlarmStatus), "4", [] { return ia1(4); }},
    {229, "InternetGatewayDevice.X_CU_Function.LED", "", none, "Leds_Turnoff", QVS_TYPE_BOOL, nullptr, 1,
     offsetof(QVS_LED_REC, Leds_Turnoff), "", none},
    {288, "InternetGatewayDevice.X_CMCC_UserInfo", "", none, "X_QV_RegisterStatus", QVS_TYPE_INT8, nullptr, 99,
     offsetof(QVS_RMS_REGISTER_REC, X_QV_RegisterStatus), "", none},
    {389, "InternetGatewayDevice.X_QV_WiFi", "", none, "X_QV_GuestSSID_Map", QVS_TYPE_STRING, "2,3,0", 0,
     offsetof(QVS_WIFI_COMMON_REC, X_QV_GuestSSID_Map), "", none},
    {390, "InternetGatewayDevice.WiFi.Radio.2", "2", [] { return ia1(2); }, "X_QV_DiagnosticsState",
     QVS_TYPE_STRING, "Requested", 0, offsetof(QVS_WIFI_RADIO_REC, X_QV_DiagnosticsState), "3",
     [] { return ia1(3); }},
    {392, "InternetGatewayDevice.WiFi.Radio.1.X_QV_NeighboringWiFiDiagnostic", "1", [] { return ia1(1); },
     "ResultNumberOfEntries", QVS_TYPE_UINT32, nullptr, 17, offsetof(QVS_WIFI_NEIGHBOR_REC, ResultNumberOfEntries),
     "3", [] { return ia1(3); }},
    {396, "InternetGatewayDevice.LANDevice.1.WLANConfiguration.9", "9", [] { return ia1(9); }, "SSID",
     QVS_TYPE_STRING, "HomeNet", 0, offsetof(QVS_WIFI_SSID_NAME_REC, SSID), "17", [] { return ia1(17); }},
    {399, "InternetGatewayDevice.WiFi.SSID.16", "16", [] { return ia1(16); }, "X_QV_SSID_Bitmap", QVS_TYPE_UINT32,
     nullptr, 0x80000, offsetof(QVS_WIFI_SSID_REC, X_QV_SSID_Bitmap), "17", [] { return ia1(17); }},
    {400, "InternetGatewayDevice.WiFi.AccessPoint.9.Security", "9", [] { return ia1(9); }, "SAEPassphrase",
     QVS_TYPE_STRING, "sae-secret", 0, offsetof(QVS_WIFI_SECURITY_REC, SAEPassphrase), "17", [] { return ia1(17); }},
    {402, "InternetGatewayDevice.WiFi.AccessPoint.9.AssociatedDevice.2", "9,2", [] { return ia2(9, 2); },
     "LastDataUplinkRate", QVS_TYPE_UINT32, nullptr, 1234, offsetof(QVS_WIFI_ASSOC_STA_REC, LastDataUplinkRate),
     "9,128", [] { return ia2(9, 128); }},
    {533, "InternetGatewayDevice.X_CMCC_IPSecVPN.Config.2", "2", [] { return ia1(2); }, "ConnectionStatus",
     QVS_TYPE_STRING, "PhaseI_Connecting", 0, offsetof(QVS_IPSEC_CONFIG_REC, ConnectionStatus), "10",
     [] { return ia1(10); }},
    {563, "InternetGatewayDevice.X_CU_Function.Sleep", "", none, "LastWLANEnable", QVS_TYPE_BOOL, nullptr, 0,
     offsetof(QVS_SLEEP_REC, LastWLANEnable), "", none},
    {566, "InternetGatewayDevice.X_CMCC_TimedTask.Task.1", "1", [] { return ia1(1); }, "EndTime", QVS_TYPE_UINT32,
     nullptr, 86399, offsetof(QVS_CMCC_TIMED_TASK_REC, EndTime), "3", [] { return ia1(3); }},
    {568, "InternetGatewayDevice.X_CMCC_DeviceLimit.Task.1", "1", [] { return ia1(1); }, "DownSpeedLimit",
     QVS_TYPE_UINT32, nullptr, 100, offsetof(QVS_CMCC_DEVICE_LIMIT_REC, DownSpeedLimit), "2", [] { return ia1(2); }},
};

void PrintTo(const ClassCase &c, std::ostream *os) { *os << "OID " << c.oid << " " << c.path; }

class EveryClass : public ::testing::TestWithParam<ClassCase> {};

std::string case_name(const ::testing::TestParamInfo<ClassCase> &info) {
    return "Oid" + std::to_string(info.param.oid);
}

}  // namespace

TEST_P(EveryClass, AddressedReadWrittenAddedDeletedAndPersistedOnlyWhenSaved) {
    const ClassCase &c = GetParam();
    if (c.oid == 224) {  // the default model holds no alarm entries: make one
        ASSERT_EQ(qvsim_add_instance(224, "3"), 0);
        ASSERT_EQ(qvsim_save(), 0);
    }
    Attached a;
    ASSERT_NE(a.h, 0u);

    // Addressed by OID and instance address, and by path: the same record.
    void *rec = qvsXml_GetObjectByOID(a.h, c.oid, c.ia(), 1);
    ASSERT_NE(rec, nullptr);
    EXPECT_EQ(qvsXml_GetObjectByName(a.h, c.path, 1), rec);
    std::string with_dot = std::string(c.path) + ".";
    EXPECT_EQ(qvsXml_GetObjectByName(a.h, with_dot.c_str(), 1), rec);
    QVS_PTR_OFFSET pos = qvsXmlGetPtrOffset(a.h, rec);
    ASSERT_NE(pos, 0u);

    // Written through a parameter list at the record's position.
    QVS_PARAM_LIST *list = newParameterList();
    ASSERT_NE(list, nullptr);
    uint32_t u32 = c.num_value;
    uint8_t u8 = static_cast<uint8_t>(c.num_value);
    const void *value = c.type == QVS_TYPE_STRING ? static_cast<const void *>(c.text_value)
                        : c.type == QVS_TYPE_UINT32 ? static_cast<const void *>(&u32)
                                                    : static_cast<const void *>(&u8);
    ASSERT_EQ(setParameterToList(list, c.param, c.type, value), 0);
    EXPECT_EQ(qvsXml_setParameterIndirectByParaList(a.h, pos, list), 0);
    freeParameterList(list);

    // The record shows it, and so do a read and the control interface.
    const unsigned char *field = static_cast<const unsigned char *>(rec) + c.field_offset;
    std::string expect;
    if (c.type == QVS_TYPE_STRING) {
        EXPECT_STREQ(reinterpret_cast<const char *>(field), c.text_value);
        char out[32] = {};
        EXPECT_EQ(qvsXml_getParameterByOID(a.h, c.oid, c.ia(), c.param, out), 0);
        EXPECT_STREQ(out, c.text_value);
        expect = c.text_value;
    } else if (c.type == QVS_TYPE_UINT32) {
        uint32_t v = 0;
        std::memcpy(&v, field, 4);
        EXPECT_EQ(v, c.num_value);
        uint32_t out = 0;
        EXPECT_EQ(qvsXml_getParameterByOID(a.h, c.oid, c.ia(), c.param, &out), 0);
        EXPECT_EQ(out, c.num_value);
        expect = std::to_string(c.num_value);
    } else {
        EXPECT_EQ(*field, u8);
        uint8_t out = 0xee;
        EXPECT_EQ(qvsXml_getParameterByOID(a.h, c.oid, c.ia(), c.param, &out), 0);
        EXPECT_EQ(out, u8);
        expect = std::to_string(u8);
    }
    EXPECT_EQ(get(c.oid, c.inst, c.param), expect);

    // A restart without a save loses the write.
    ASSERT_EQ(qvsim_restart(), 0);
    EXPECT_NE(get(c.oid, c.inst, c.param), expect);
    // Written again with one call, saved, restarted: kept.
    EXPECT_EQ(qvsXml_setOneParameterByOIDIndirect(a.h, c.oid, c.ia(), c.param, c.type, value), 0);
    EXPECT_EQ(qvsXml_SaveIndirect(a.h), 0);
    ASSERT_EQ(qvsim_restart(), 0);
    EXPECT_EQ(get(c.oid, c.inst, c.param), expect);

    if (c.new_inst[0] == '\0') {
        // Single objects: no instances to add or delete.
        EXPECT_EQ(qvsXml_addObjectByOIDIWithParaListIndirect(a.h, c.oid, 0, nullptr), -1);
        EXPECT_EQ(qvsXml_delObjectByOIDIAIndirect(a.h, c.oid, 0), -1);
        EXPECT_EQ(qvsim_exists(c.oid, ""), 1);
        return;
    }
    // Added with a list, found, deleted, gone; the add survives only a save.
    EXPECT_EQ(qvsXml_GetObjectByOID(a.h, c.oid, c.new_ia(), 1), nullptr);
    list = newParameterList();
    ASSERT_EQ(setParameterToList(list, c.param, c.type, value), 0);
    EXPECT_EQ(qvsXml_addObjectByOIDIWithParaListIndirect(a.h, c.oid, c.new_ia(), list), 0);
    EXPECT_EQ(qvsXml_addObjectByOIDIWithParaListIndirect(a.h, c.oid, c.new_ia(), list), -1);  // exists
    freeParameterList(list);
    EXPECT_NE(qvsXml_GetObjectByOID(a.h, c.oid, c.new_ia(), 1), nullptr);
    EXPECT_EQ(get(c.oid, c.new_inst, c.param), expect);
    ASSERT_EQ(qvsim_restart(), 0);
    EXPECT_EQ(qvsim_exists(c.oid, c.new_inst), 0);
    list = newParameterList();
    EXPECT_EQ(qvsXml_addObjectByOIDIWithParaListIndirect(a.h, c.oid, c.new_ia(), list), 0);
    freeParameterList(list);
    EXPECT_EQ(qvsXml_SaveNoReply(a.h), 0);
    ASSERT_EQ(qvsim_restart(), 0);
    EXPECT_EQ(qvsim_exists(c.oid, c.new_inst), 1);
    EXPECT_EQ(qvsXml_delObjectByOIDIAIndirect(a.h, c.oid, c.new_ia()), 0);
    EXPECT_EQ(qvsXml_GetObjectByOID(a.h, c.oid, c.new_ia(), 1), nullptr);
    EXPECT_EQ(qvsXml_delObjectByOIDIAIndirect(a.h, c.oid, c.new_ia()), -1);
    ASSERT_EQ(qvsim_restart(), 0);  // the delete was not saved
    EXPECT_EQ(qvsim_exists(c.oid, c.new_inst), 1);
    EXPECT_EQ(qvsXml_delObjectByOIDIAIndirect(a.h, c.oid, c.new_ia()), 0);
    EXPECT_EQ(qvsXml_SaveIndirect(a.h), 0);
    ASSERT_EQ(qvsim_restart(), 0);
    EXPECT_EQ(qvsim_exists(c.oid, c.new_inst), 0);
}

INSTANTIATE_TEST_SUITE_P(Store, EveryClass, ::testing::ValuesIn(kCases), case_name);

TEST(DefaultModel, IsTheFactoryGateway) {
    Attached a;
    ASSERT_NE(a.h, 0u);
    auto *w = static_cast<const QVS_WIFI_COMMON_REC *>(qvsXml_GetObjectByOID(a.h, QVS_OID_WIFI_COMMON, 0, 1));
    ASSERT_NE(w, nullptr);
    EXPECT_STREQ(w->X_QV_External_SSID_Map, "1,9,0,0,0,0,0,0,0,0,0,0,0,0,0,0");
    EXPECT_EQ(w->X_QV_Enable, 1);
    for (int i = 1; i <= 16; ++i) {
        auto *s = static_cast<const QVS_WIFI_SSID_REC *>(qvsXml_GetObjectByOID(a.h, QVS_OID_WIFI_SSID, ia1(i), 1));
        ASSERT_NE(s, nullptr) << i;
        EXPECT_EQ(s->Enable, (i == 1 || i == 9) ? 1 : 0) << i;
        EXPECT_NE(qvsXml_GetObjectByOID(a.h, QVS_OID_WIFI_SSID_NAME, ia1(i), 1), nullptr) << i;
        EXPECT_NE(qvsXml_GetObjectByOID(a.h, QVS_OID_WIFI_SECURITY, ia1(i), 1), nullptr) << i;
    }
    EXPECT_EQ(qvsXml_GetObjectByOID(a.h, QVS_OID_WIFI_SSID, ia1(17), 1), nullptr);
    EXPECT_NE(qvsXml_GetObjectByOID(a.h, QVS_OID_WIFI_RADIO, ia1(1), 1), nullptr);
    EXPECT_NE(qvsXml_GetObjectByOID(a.h, QVS_OID_WIFI_RADIO, ia1(2), 1), nullptr);
    // The WAN device with a TR069 connection that is up.
    auto *tr = static_cast<const QVS_WAN_CONN_REC *>(qvsXml_GetObjectByOID(
        a.h, QVS_OID_WAN_IP_CONN, qvsXml_ConstructIAValue("t", "f", 1, 3, "1,%d,%d", 1, 1), 1));
    ASSERT_NE(tr, nullptr);
    EXPECT_NE(std::strstr(tr->X_QV_ServiceList, "TR069"), nullptr);
    EXPECT_EQ(tr->ConnectionUp, 1);
    auto *t = static_cast<const QVS_TIME_REC *>(qvsXml_GetObjectByOID(a.h, QVS_OID_TIME, 0, 1));
    ASSERT_NE(t, nullptr);
    EXPECT_STREQ(t->LocalTimeZone, "+08:00");
    auto *ac = static_cast<const QVS_ALARM_CONFIG_REC *>(qvsXml_GetObjectByOID(a.h, QVS_OID_ALARM_CONFIG, 0, 1));
    ASSERT_NE(ac, nullptr);
    EXPECT_EQ(ac->AlarmEnable, 1);
    EXPECT_NE(qvsXml_GetObjectByOID(a.h, QVS_OID_LAN_HOST, ia2(1, 1), 1), nullptr);
    EXPECT_NE(qvsXml_GetObjectByOID(a.h, QVS_OID_SLEEP, 0, 1), nullptr);
    EXPECT_NE(qvsXml_GetObjectByOID(a.h, QVS_OID_CMCC_TIMED_TASK, ia1(1), 1), nullptr);
    EXPECT_NE(qvsXml_GetObjectByOID(a.h, QVS_OID_IPSEC_CONFIG, ia1(1), 1), nullptr);
    auto *dev = static_cast<const unsigned char *>(qvsXml_GetObjectByOID(a.h, QVS_OID_DEVICE_INFO, 0, 1));
    ASSERT_NE(dev, nullptr);
    EXPECT_STREQ(reinterpret_cast<const char *>(dev + 1), "V2.0.7_QV_R1");
}

TEST(InstanceAddress, FormsLevelsAndReplacement) {
    Attached a;
    QVS_IA one = qvsXml_ConstructIAValue("t", "f", 1, 1, "%d", 9);
    QVS_IA lead1 = qvsXml_ConstructIAValue("t", "f", 1, 3, "1,%d,%d", 2, 1);
    QVS_IA three = qvsXml_ConstructIAValue("t", "f", 1, 3, "%d,%d,%d", 1, 2, 1);
    EXPECT_EQ(lead1, three);
    EXPECT_NE(qvsXml_GetObjectByOID(a.h, QVS_OID_WIFI_SSID, one, 1), nullptr);
    EXPECT_NE(qvsXml_GetObjectByOID(a.h, QVS_OID_WAN_PPP_CONN, lead1, 1), nullptr);
    // The wrong number of levels finds nothing.
    EXPECT_EQ(qvsXml_GetObjectByOID(a.h, QVS_OID_WAN_PPP_CONN, one, 1), nullptr);
    EXPECT_EQ(qvsXml_GetObjectByOID(a.h, QVS_OID_WIFI_SSID, lead1, 1), nullptr);
    EXPECT_EQ(qvsXml_GetObjectByOID(a.h, QVS_OID_WIFI_COMMON, one, 1), nullptr);
    // Negative or zero instances find nothing.
    EXPECT_EQ(qvsXml_GetObjectByOID(a.h, QVS_OID_WIFI_SSID, ia1(-1), 1), nullptr);
    EXPECT_EQ(qvsXml_GetObjectByOID(a.h, QVS_OID_WIFI_SSID, ia1(0), 1), nullptr);
    // A count that does not match the numbers finds nothing.
    EXPECT_EQ(qvsXml_GetObjectByOID(a.h, QVS_OID_WIFI_SSID,
                                    qvsXml_ConstructIAValue("t", "f", 1, 2, "%d", 9), 1), nullptr);
    // Replacing one level steps over radios and instances.
    QVS_IA radio = qvsXml_ConstructIAValue("t", "f", 1, 1, "%d", 1);
    EXPECT_EQ(qvsXmlSetIAValue(1, radio, 2), ia1(2));
    EXPECT_EQ(qvsXmlSetIAValue(0, radio, 2), ia1(2));
    EXPECT_EQ(qvsXmlSetIAValue(3, lead1, 7), ia3(1, 2, 7));
    EXPECT_EQ(qvsXmlSetIAValue(2, ia1(1), 3), ia2(1, 3));
    EXPECT_EQ(qvsXml_GetObjectByOID(a.h, QVS_OID_WIFI_SSID, qvsXmlSetIAValue(1, one, -3), 1), nullptr);
    EXPECT_EQ(qvsXmlSetIAValue(1, qvsXmlSetIAValue(1, one, -3), 9), one);
}

TEST(Records, RefreshedAfterOwnWritesAndOtherWriters) {
    Attached a;
    auto *s = static_cast<const QVS_WIFI_SSID_REC *>(qvsXml_GetObjectByOID(a.h, QVS_OID_WIFI_SSID, ia1(2), 1));
    ASSERT_NE(s, nullptr);
    uint8_t on = 1;
    EXPECT_EQ(qvsXml_setOneParameterByOIDIndirect(a.h, QVS_OID_WIFI_SSID, ia1(2), "Enable", QVS_TYPE_BOOL, &on), 0);
    EXPECT_EQ(s->Enable, 1);
    // Another process writes: a new lookup shows it in the same record.
    ASSERT_EQ(qvsim_set(QVS_OID_WIFI_SSID, "2", "X_QV_Guest_Duration", "3600"), 0);
    EXPECT_EQ(qvsXml_GetObjectByOID(a.h, QVS_OID_WIFI_SSID, ia1(2), 1), s);
    EXPECT_EQ(+s->X_QV_Guest_Duration, 3600u);
    // Two handles of one process see one record; positions name it.
    Attached b;
    EXPECT_EQ(qvsXml_GetObjectByOID(b.h, QVS_OID_WIFI_SSID, ia1(2), 1), s);
    EXPECT_EQ(qvsXmlGetPtrOffset(a.h, s), qvsXmlGetPtrOffset(b.h, s));
    int local = 0;
    EXPECT_EQ(qvsXmlGetPtrOffset(a.h, &local), 0u);
    EXPECT_EQ(qvsXmlGetPtrOffset(a.h, nullptr), 0u);
}

TEST(Reads, OutputsByParameterKind) {
    Attached a;
    // Text: at most 31 characters and the zero.
    std::string longname(40, 'x');
    ASSERT_EQ(qvsim_set(QVS_OID_WIFI_COMMON, "", "X_QV_SharedSSID_Map", longname.c_str()), 0);
    char out[40];
    std::memset(out, 'Z', sizeof out);
    EXPECT_EQ(qvsXml_getParameterByOID(a.h, QVS_OID_WIFI_COMMON, 0, "X_QV_SharedSSID_Map", out), 0);
    EXPECT_EQ(std::string(out), std::string(31, 'x'));
    EXPECT_EQ(out[32], 'Z');
    // One-byte parameters: one byte, nothing beyond.
    unsigned char bytes[4] = {0, 0xAA, 0xAA, 0xAA};
    EXPECT_EQ(qvsXml_getParameterByOID(a.h, QVS_OID_WIFI_SSID, ia1(1), "Enable", bytes), 0);
    EXPECT_EQ(bytes[0], 1);
    EXPECT_EQ(bytes[1], 0xAA);
    ASSERT_EQ(qvsim_set(QVS_OID_RMS_REGISTER, "", "X_QV_RegisterStatus", "99"), 0);
    int32_t wide = 0;
    EXPECT_EQ(qvsXml_getParameterByOID(a.h, QVS_OID_RMS_REGISTER, 0, "X_QV_RegisterStatus", &wide), 0);
    EXPECT_EQ(wide, 99);
    // 16-bit parameters: a 32-bit integer.
    ASSERT_EQ(qvsim_set(QVS_OID_LAN_HOST, "1,1", "BucketID", "513"), 0);
    uint32_t u = 0xffffffff;
    EXPECT_EQ(qvsXml_getParameterByOID(a.h, QVS_OID_LAN_HOST, ia2(1, 1), "BucketID", &u), 0);
    EXPECT_EQ(u, 513u);
    // MAC: six bytes.
    unsigned char mac[8] = {0, 0, 0, 0, 0, 0, 0xAA, 0xAA};
    EXPECT_EQ(qvsXml_getParameterByOID(a.h, QVS_OID_WIFI_ASSOC_STA, ia2(9, 2), "MACAddress", mac), 0);
    const unsigned char want[6] = {0xa4, 0x83, 0xe7, 0x55, 0x66, 0x03};
    EXPECT_EQ(std::memcmp(mac, want, 6), 0);
    EXPECT_EQ(mac[6], 0xAA);
    // Failures are negative.
    EXPECT_EQ(qvsXml_getParameterByOID(a.h, QVS_OID_WIFI_ASSOC_STA, ia2(9, 3), "MACAddress", mac), -2);
    EXPECT_EQ(qvsXml_getParameterByOID(a.h, QVS_OID_WIFI_SSID, ia1(1), "NoSuchParam", out), -3);
    EXPECT_EQ(qvsXml_getParameterByOID(0, QVS_OID_WIFI_SSID, ia1(1), "Enable", out), -1);
    EXPECT_EQ(qvsXml_getParameterByOID(a.h, QVS_OID_WIFI_SSID, ia1(1), nullptr, out), -1);
}

TEST(Writes, TypeCodesConversionsAndAllOrNothing) {
    Attached a;
    void *rec = qvsXml_GetObjectByOID(a.h, QVS_OID_ALARM_INFO, ia1(1), 1);
    EXPECT_EQ(rec, nullptr);
    QVS_PARAM_LIST *list = newParameterList();
    uint32_t id = 1, code = 104001;
    int8_t status = -2, sev = 3;
    const char *raised = "2026-01-02T03:04:05";
    const char *detail = "The link\tdropped";
    setParameterToList(list, "AlarmID", QVS_TYPE_UINT32, &id);
    setParameterToList(list, "AlarmCode", QVS_TYPE_UINT32, &code);
    setParameterToList(list, "AlarmStatus", QVS_TYPE_INT8, &status);
    setParameterToList(list, "PerceivedSeverity", QVS_TYPE_INT8, &sev);
    setParameterToList(list, "AlarmRaisedTime", QVS_TYPE_DATETIME, raised);
    setParameterToList(list, "AlarmDetail", QVS_TYPE_STRING, detail);
    // Values are read when the list is applied.
    code = 104002;
    ASSERT_EQ(qvsXml_addObjectByOIDIWithParaListIndirect(a.h, QVS_OID_ALARM_INFO, ia1(1), list), 0);
    freeParameterList(list);
    auto *al = static_cast<const QVS_ALARM_INFO_REC *>(qvsXml_GetObjectByOID(a.h, QVS_OID_ALARM_INFO, ia1(1), 1));
    ASSERT_NE(al, nullptr);
    EXPECT_EQ(+al->AlarmCode, 104002u);
    EXPECT_EQ(al->AlarmStatus, -2);
    EXPECT_STREQ(al->AlarmRaisedTime, raised);
    EXPECT_STREQ(al->AlarmClearedTime, "");
    EXPECT_STREQ(al->AlarmDetail, detail);
    // Host values (type 2) from 32-bit slots into 16-bit fields.
    auto *host = static_cast<const QVS_LAN_HOST_REC *>(qvsXml_GetObjectByOID(a.h, QVS_OID_LAN_HOST, ia2(1, 3), 1));
    ASSERT_NE(host, nullptr);
    uint32_t bucket = 7, counter = 9;
    list = newParameterList();
    setParameterToList(list, "BucketID", QVS_TYPE_HOSTVALUE, &bucket);
    setParameterToList(list, "CounterID", QVS_TYPE_HOSTVALUE, &counter);
    EXPECT_EQ(qvsXml_setParameterIndirectByParaList(a.h, qvsXmlGetPtrOffset(a.h, host), list), 0);
    freeParameterList(list);
    EXPECT_EQ(+host->BucketID, 7);
    EXPECT_EQ(+host->CounterID, 9);
    // A text longer than its field is cut to the field.
    std::string longssid(50, 's');
    EXPECT_EQ(qvsXml_setOneParameterByOIDIndirect(a.h, QVS_OID_WIFI_SSID_NAME, ia1(3), "SSID", QVS_TYPE_STRING,
                                                  longssid.c_str()),
              0);
    EXPECT_EQ(get(QVS_OID_WIFI_SSID_NAME, "3", "SSID"), std::string(32, 's'));
    // An unknown name or type code fails the whole list: nothing is written.
    auto *s = static_cast<const QVS_WIFI_SSID_REC *>(qvsXml_GetObjectByOID(a.h, QVS_OID_WIFI_SSID, ia1(4), 1));
    uint8_t on = 1;
    uint32_t bm = 0x20000;
    list = newParameterList();
    setParameterToList(list, "Enable", QVS_TYPE_BOOL, &on);
    setParameterToList(list, "X_QV_SSID_Bitmap", 99u, &bm);
    EXPECT_EQ(qvsXml_setParameterIndirectByParaList(a.h, qvsXmlGetPtrOffset(a.h, s), list), -1);
    freeParameterList(list);
    list = newParameterList();
    setParameterToList(list, "Enable", QVS_TYPE_BOOL, &on);
    setParameterToList(list, "Bogus", QVS_TYPE_UINT32, &bm);
    EXPECT_EQ(qvsXml_setParameterIndirectByParaList(a.h, qvsXmlGetPtrOffset(a.h, s), list), -1);
    freeParameterList(list);
    EXPECT_EQ(s->Enable, 0);
    EXPECT_EQ(get(QVS_OID_WIFI_SSID, "4", "Enable"), "0");
    // Bad positions, handles and lists.
    list = newParameterList();
    setParameterToList(list, "Enable", QVS_TYPE_BOOL, &on);
    EXPECT_EQ(qvsXml_setParameterIndirectByParaList(a.h, 0, list), -1);
    EXPECT_EQ(qvsXml_setParameterIndirectByParaList(a.h, 100000, list), -1);
    EXPECT_EQ(qvsXml_setParameterIndirectByParaList(0, qvsXmlGetPtrOffset(a.h, s), list), -1);
    EXPECT_EQ(qvsXml_setParameterIndirectByParaList(a.h, qvsXmlGetPtrOffset(a.h, s), nullptr), -1);
    EXPECT_EQ(setParameterToList(nullptr, "Enable", QVS_TYPE_BOOL, &on), -1);
    EXPECT_EQ(setParameterToList(list, nullptr, QVS_TYPE_BOOL, &on), -1);
    freeParameterList(list);
    freeParameterList(nullptr);
    EXPECT_EQ(qvsXml_setOneParameterByOIDIndirect(a.h, QVS_OID_WIFI_SSID, ia1(40), "Enable", QVS_TYPE_BOOL, &on),
              -2);
    EXPECT_EQ(qvsXml_setOneParameterByOIDIndirect(a.h, QVS_OID_WIFI_SSID, ia1(4), "Nope", QVS_TYPE_BOOL, &on), -3);
}

TEST(Instances, ParentAddressedAddsAndCascadingDeletes) {
    Attached a;
    // Adding under the parent takes the next number.
    QVS_PARAM_LIST *list = newParameterList();
    EXPECT_EQ(qvsXml_addObjectByOIDIWithParaListIndirect(a.h, QVS_OID_CMCC_TIMED_TASK, 0, list), 0);
    EXPECT_EQ(qvsim_exists(QVS_OID_CMCC_TIMED_TASK, "3"), 1);
    EXPECT_EQ(qvsXml_addObjectByOIDIWithParaListIndirect(a.h, QVS_OID_LAN_HOST, ia1(1), list), 0);
    EXPECT_EQ(qvsim_exists(QVS_OID_LAN_HOST, "1,4"), 1);
    freeParameterList(list);
    // Deleting a connection device removes its connections.
    ASSERT_EQ(qvsim_exists(QVS_OID_WAN_PPP_CONN, "1,2,1"), 1);
    EXPECT_EQ(qvsXml_delObjectByOIDIAIndirect(a.h, QVS_OID_WAN_CONN_DEVICE, ia2(1, 2)), 0);
    EXPECT_EQ(qvsim_exists(QVS_OID_WAN_PPP_CONN, "1,2,1"), 0);
    EXPECT_EQ(qvsim_exists(QVS_OID_WAN_IP_CONN, "1,1,1"), 1);
    EXPECT_EQ(qvsim_exists(QVS_OID_WAN_IP_CONN, "1,3,1"), 1);
    // Control interface adds and deletes, bypassing the journal.
    qvsim_journal_clear();
    EXPECT_EQ(qvsim_add_instance(QVS_OID_ALARM_INFO, "255"), 0);
    EXPECT_EQ(qvsim_add_instance(QVS_OID_ALARM_INFO, "255"), -1);
    EXPECT_EQ(qvsim_add_instance(QVS_OID_ALARM_INFO, ""), 0);  // next: 256
    EXPECT_EQ(qvsim_exists(QVS_OID_ALARM_INFO, "256"), 1);
    EXPECT_EQ(qvsim_delete_instance(QVS_OID_ALARM_INFO, "255"), 0);
    EXPECT_EQ(qvsim_delete_instance(QVS_OID_ALARM_INFO, "255"), -1);
    EXPECT_EQ(qvsim_add_instance(QVS_OID_WIFI_COMMON, ""), -1);
    EXPECT_EQ(qvsim_exists(999, ""), 0);
    EXPECT_EQ(journal(), "");
}

TEST(Stats, NeighbourTableCountAndRefresh) {
    ASSERT_EQ(qvsim_set(QVS_OID_WIFI_NEIGHBOR, "2", "ResultNumberOfEntries", "23"), 0);
    EXPECT_EQ(qvsXml_ObjectStats(QVS_OID_WIFI_NEIGHBOR, ia1(2), 6000), 23);
    EXPECT_EQ(qvsXml_ObjectStats(QVS_OID_WIFI_NEIGHBOR, ia1(1), 6000), 0);
    EXPECT_EQ(qvsXml_ObjectStats(QVS_OID_GPON_OLT_REG, ia1(1), 3000), 0);
    EXPECT_EQ(qvsXml_ObjectStats(QVS_OID_EPON_OLT_REG, ia1(1), 300), 0);
    EXPECT_EQ(qvsXml_ObjectStats(QVS_OID_WIFI_NEIGHBOR, ia1(3), 6000), -1);
    auto lines = journal_lines("stats");
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[0], "stats\t392\t2\t6000");
    EXPECT_EQ(lines[3], "stats\t211\t1\t300");
    // Not an attachment of the caller's: no attach or detach lines.
    EXPECT_TRUE(journal_lines("attach").empty());
}

TEST(Handles, ZeroAndUnknownHandlesAreRefused) {
    QVS_XMLSHM_HANDLE zero = 0;
    EXPECT_EQ(qvs_xmlShmDeInit(&zero), 0);
    EXPECT_EQ(qvs_xmlShmDeInit(nullptr), -1);
    EXPECT_EQ(qvsXml_GetObjectByOID(0, QVS_OID_WIFI_COMMON, 0, 1), nullptr);
    EXPECT_EQ(qvsXml_GetObjectByName(0, "InternetGatewayDevice.X_QV_WiFi", 1), nullptr);
    EXPECT_EQ(qvsXml_SaveIndirect(0), -1);
    EXPECT_EQ(qvsXml_SaveNoReply(0), -1);
    EXPECT_EQ(qvsXml_delObjectByOIDIAIndirect(0, QVS_OID_ALARM_INFO, ia1(1)), -1);
    EXPECT_EQ(qvsXml_addObjectByOIDIWithParaListIndirect(0, QVS_OID_ALARM_INFO, ia1(1), nullptr), -1);
    QVS_XMLSHM_HANDLE h = qvs_xmlShmInit();
    ASSERT_NE(h, 0u);
    QVS_XMLSHM_HANDLE copy = h;
    EXPECT_EQ(qvs_xmlShmDeInit(&h), 0);
    EXPECT_EQ(h, 0u);
    EXPECT_EQ(qvs_xmlShmDeInit(&copy), -1);  // already detached
    EXPECT_EQ(qvsXml_GetObjectByOID(copy, QVS_OID_WIFI_COMMON, 0, 1), nullptr);
    EXPECT_EQ(qvsXml_GetObjectByName(copy, "no.such.path", 1), nullptr);
    Attached a;
    EXPECT_EQ(qvsXml_GetObjectByName(a.h, "InternetGatewayDevice.NoSuch", 1), nullptr);
    EXPECT_EQ(qvsXml_GetObjectByName(a.h, "InternetGatewayDevice.WiFi.SSID", 1), nullptr);
    EXPECT_EQ(qvsXml_GetObjectByName(a.h, nullptr, 1), nullptr);
}

TEST(Events, JournaledWithPayload) {
    uint32_t zero = 0;
    EXPECT_EQ(qvs_eventNotify(300, 4, &zero), 0);
    const unsigned char bytes[2] = {0xab, 0x01};
    EXPECT_EQ(qvs_eventNotify(12, 2, bytes), 0);
    EXPECT_EQ(qvs_eventNotify(13, 0, nullptr), 0);
    auto lines = journal_lines("event");
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0], "event\t300\t4\t00000000");
    EXPECT_EQ(lines[1], "event\t12\t2\tab01");
    EXPECT_EQ(lines[2], "event\t13\t0\t");
}

TEST(Model, LoadDumpRoundTripAndBadFiles) {
    qvstest::write_file("/tmp/small.model",
                        "# two objects\n[InternetGatewayDevice.X_QV_WiFi]\nX_QV_External_SSID_Map = \"1,9\"\n\n"
                        "[InternetGatewayDevice.WiFi.SSID.1]\nEnable = 1\nName = \" ra 0 \"\n");
    ASSERT_EQ(qvsim_load_model("/tmp/small.model"), 0);
    EXPECT_EQ(get(QVS_OID_WIFI_COMMON, "", "X_QV_External_SSID_Map"), "1,9");
    EXPECT_EQ(get(QVS_OID_WIFI_SSID, "1", "Name"), " ra 0 ");
    EXPECT_EQ(qvsim_exists(QVS_OID_WIFI_SSID, "9"), 0);
    ASSERT_EQ(qvsim_restart(), 0);  // the model is the saved copy too
    EXPECT_EQ(get(QVS_OID_WIFI_SSID, "1", "Enable"), "1");
    // Errors leave the store as it was.
    qvstest::write_file("/tmp/bad1.model", "[InternetGatewayDevice.NoSuchThing]\n");
    qvstest::write_file("/tmp/bad2.model", "[InternetGatewayDevice.WiFi.SSID.1]\nNoParam = 1\n");
    qvstest::write_file("/tmp/bad3.model", "Enable = 1\n");
    qvstest::write_file("/tmp/bad4.model", "[InternetGatewayDevice.WiFi.SSID.1]\nEnable = yes\n");
    for (const char *bad : {"/tmp/bad1.model", "/tmp/bad2.model", "/tmp/bad3.model", "/tmp/bad4.model",
                            "/tmp/missing.model"})
        EXPECT_EQ(qvsim_load_model(bad), -1) << bad;
    EXPECT_EQ(get(QVS_OID_WIFI_SSID, "1", "Name"), " ra 0 ");
    // Back to the factory model; a dump loads back to the same store.
    ASSERT_EQ(qvsim_reset(), 0);
    char *dump = qvsim_dump_text(0);
    ASSERT_NE(dump, nullptr);
    qvstest::write_file("/tmp/dump.model", dump);
    ASSERT_EQ(qvsim_set(QVS_OID_WIFI_SSID, "5", "Enable", "1"), 0);
    ASSERT_EQ(qvsim_load_model("/tmp/dump.model"), 0);
    char *again = qvsim_dump_text(0);
    EXPECT_STREQ(dump, again);
    EXPECT_NE(std::strstr(dump, "[InternetGatewayDevice.WiFi.SSID.16]\n"), nullptr);
    std::free(dump);
    std::free(again);
    char *classes = qvsim_classes_text();
    EXPECT_NE(std::strstr(classes, "568\tInternetGatewayDevice.X_CMCC_DeviceLimit.Task.%d\tlevels 1"), nullptr);
    std::free(classes);
}

TEST(ControlInterface, GetSetByOidAndValueForms) {
    EXPECT_EQ(qvsim_set(QVS_OID_LAN_HOST, "1,1", "MACAddress", "AABBCCDDEEFF"), 0);
    EXPECT_EQ(get(QVS_OID_LAN_HOST, "1,1", "MACAddress"), "aa:bb:cc:dd:ee:ff");
    EXPECT_EQ(qvsim_set(QVS_OID_LAN_HOST, "1,1", "MACAddress", "zz"), -1);
    EXPECT_EQ(qvsim_set(QVS_OID_WIFI_SSID, "3", "X_QV_SSID_Bitmap", "0x80000"), 0);
    EXPECT_EQ(get(QVS_OID_WIFI_SSID, "3", "X_QV_SSID_Bitmap"), "524288");
    EXPECT_EQ(qvsim_set(QVS_OID_WIFI_SSID, "3", "Enable", "256"), 0);  // one byte
    EXPECT_EQ(get(QVS_OID_WIFI_SSID, "3", "Enable"), "0");
    EXPECT_EQ(qvsim_set(QVS_OID_ALARM_INFO, "1", "AlarmCode", "1"), -1);   // no such instance
    EXPECT_EQ(qvsim_set(QVS_OID_WIFI_SSID, "3", "Nope", "1"), -1);         // no such parameter
    EXPECT_EQ(qvsim_set(QVS_OID_WIFI_SSID, "3,1", "Enable", "1"), -1);     // wrong levels
    EXPECT_EQ(get(QVS_OID_WIFI_SSID, "x", "Enable"), "<none>");
    char small[4];
    EXPECT_EQ(qvsim_get(QVS_OID_WIFI_COMMON, "", "X_QV_External_SSID_Map", small, sizeof small), 0);
    EXPECT_STREQ(small, "1,9");
    EXPECT_EQ(qvsim_save(), 0);
    EXPECT_EQ(qvsim_restart(), 0);
    EXPECT_EQ(get(QVS_OID_WIFI_SSID, "3", "X_QV_SSID_Bitmap"), "524288");
    EXPECT_STRNE(qvsim_dir(), "");
}
