// SPDX-License-Identifier: MIT
#include "classes.hpp"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "libqv.h"

namespace qvsim {
namespace {

#define QF(REC, NAME, KIND) \
    Field { #NAME, Kind::KIND, static_cast<uint32_t>(offsetof(REC, NAME)), static_cast<uint32_t>(sizeof(((REC *)nullptr)->NAME)) }
#define QCLASS(OID, PATH, LEVELS, REC, FIELDS) \
    ObjClass { OID, PATH, LEVELS, sizeof(REC), FIELDS, sizeof(FIELDS) / sizeof(FIELDS[0]) }

const Field kDeviceInfo[] = {
    QF(QVS_DEVICE_INFO_REC, Reserved, U8),
    QF(QVS_DEVICE_INFO_REC, SoftwareVersion, Text),
    QF(QVS_DEVICE_INFO_REC, HardwareVersion, Text),
    QF(QVS_DEVICE_INFO_REC, ModelName, Text),
    QF(QVS_DEVICE_INFO_REC, SerialNumber, Text),
};
const Field kTime[] = {
    QF(QVS_TIME_REC, DaylightSavingsUsed, I8),
    QF(QVS_TIME_REC, LocalTimeZone, Text),
    QF(QVS_TIME_REC, NTPServer1, Text),
    QF(QVS_TIME_REC, NTPServer2, Text),
    QF(QVS_TIME_REC, LocalTimeZoneName, Text),
};
const Field kLanEthIf[] = {
    QF(QVS_LAN_ETH_IF_REC, X_QV_PortName, Text),
    QF(QVS_LAN_ETH_IF_REC, Enable, U8),
    QF(QVS_LAN_ETH_IF_REC, Status, Text),
    QF(QVS_LAN_ETH_IF_REC, MaxBitRate, U32),
};
const Field kLanHost[] = {
    QF(QVS_LAN_HOST_REC, UpSpeedLimit, U32),
    QF(QVS_LAN_HOST_REC, DownSpeedLimit, U32),
    QF(QVS_LAN_HOST_REC, MACAddress, Mac),
    QF(QVS_LAN_HOST_REC, BucketID, U16),
    QF(QVS_LAN_HOST_REC, CounterID, U16),
    QF(QVS_LAN_HOST_REC, Active, U8),
    QF(QVS_LAN_HOST_REC, HostName, Text),
    QF(QVS_LAN_HOST_REC, IPAddress, Text),
};
const Field kWanDevice[] = {
    QF(QVS_WAN_DEVICE_REC, WANConnectionNumberOfEntries, U32),
};
const Field kWanConnDevice[] = {
    QF(QVS_WAN_CONN_DEVICE_REC, WANIPConnectionNumberOfEntries, U32),
    QF(QVS_WAN_CONN_DEVICE_REC, WANPPPConnectionNumberOfEntries, U32),
};
const Field kWanConn[] = {
    QF(QVS_WAN_CONN_REC, Enable, U8),
    QF(QVS_WAN_CONN_REC, ConnectionUp, U8),
    QF(QVS_WAN_CONN_REC, Name, Text),
    QF(QVS_WAN_CONN_REC, X_QV_ServiceList, Text),
    QF(QVS_WAN_CONN_REC, X_QV_LanInterface, Text),
    QF(QVS_WAN_CONN_REC, X_QV_IfName, Text),
    QF(QVS_WAN_CONN_REC, ConnectionType, Text),
    QF(QVS_WAN_CONN_REC, X_QV_PVCIndex, U32),
    QF(QVS_WAN_CONN_REC, ConnectionStatus, Text),
};
const Field kOltReg[] = {
    QF(QVS_OLT_REG_REC, RegistrationState, Text),
};
const Field kAlarmConfig[] = {
    QF(QVS_ALARM_CONFIG_REC, AlarmEnable, U8),
    QF(QVS_ALARM_CONFIG_REC, AlarmLevel, U8),
    QF(QVS_ALARM_CONFIG_REC, NumberOfAlarmInfo, U32),
};
const Field kAlarmInfo[] = {
    QF(QVS_ALARM_INFO_REC, AlarmID, U32),
    QF(QVS_ALARM_INFO_REC, AlarmCode, U32),
    QF(QVS_ALARM_INFO_REC, AlarmStatus, I8),
    QF(QVS_ALARM_INFO_REC, PerceivedSeverity, I8),
    QF(QVS_ALARM_INFO_REC, AlarmRaisedTime, Text),
    QF(QVS_ALARM_INFO_REC, AlarmClearedTime, Text),
    QF(QVS_ALARM_INFO_REC, AlarmDetail, Text),
};
const Field kLed[] = {
    QF(QVS_LED_REC, Leds_Turnoff, U8),
};
const Field kRmsRegister[] = {
    QF(QVS_RMS_REGISTER_REC, X_QV_RegisterTimes, U16),
    QF(QVS_RMS_REGISTER_REC, X_QV_RegisterFlag, U8),
    QF(QVS_RMS_REGISTER_REC, X_QV_RegisterStatus, U8),
    QF(QVS_RMS_REGISTER_REC, X_QV_ServiceResult, U8),
};
const Field kWifiCommon[] = {
    QF(QVS_WIFI_COMMON_REC, X_QV_External_SSID_Map, Text),
    QF(QVS_WIFI_COMMON_REC, X_QV_SharedSSID_Map, Text),
    QF(QVS_WIFI_COMMON_REC, X_QV_GuestSSID_Map, Text),
    QF(QVS_WIFI_COMMON_REC, X_QV_Enable, U8),
};
const Field kWifiRadio[] = {
    QF(QVS_WIFI_RADIO_REC, Enable, U8),
    QF(QVS_WIFI_RADIO_REC, X_QV_DiagnosticsState, Text),
    QF(QVS_WIFI_RADIO_REC, SupportedStandards, Text),
    QF(QVS_WIFI_RADIO_REC, ChannelsInUse, Text),
    QF(QVS_WIFI_RADIO_REC, OperatingFrequencyBand, Text),
    QF(QVS_WIFI_RADIO_REC, Channel, U32),
};
const Field kWifiNeighbor[] = {
    QF(QVS_WIFI_NEIGHBOR_REC, ResultNumberOfEntries, U32),
    QF(QVS_WIFI_NEIGHBOR_REC, DiagnosticsState, Text),
};
const Field kWifiSsidName[] = {
    QF(QVS_WIFI_SSID_NAME_REC, SSID, Text),
};
const Field kWifiSsid[] = {
    QF(QVS_WIFI_SSID_REC, Enable, U8),
    QF(QVS_WIFI_SSID_REC, X_QV_PortIsolation, U8),
    QF(QVS_WIFI_SSID_REC, X_QV_SSID_Bitmap, U32),
    QF(QVS_WIFI_SSID_REC, X_QV_Guest_Duration, U32),
    QF(QVS_WIFI_SSID_REC, Name, Text),
};
const Field kWifiSecurity[] = {
    QF(QVS_WIFI_SECURITY_REC, ModeEnabled, Text),
    QF(QVS_WIFI_SECURITY_REC, X_QV_WEPEncryptionLevel, Text),
    QF(QVS_WIFI_SECURITY_REC, X_QV_WEPAuthMode, Text),
    QF(QVS_WIFI_SECURITY_REC, WEPKey, Text),
    QF(QVS_WIFI_SECURITY_REC, X_QV_EncryptionMode, Text),
    QF(QVS_WIFI_SECURITY_REC, PreSharedKey, Text),
    QF(QVS_WIFI_SECURITY_REC, KeyPassphrase, Text),
    QF(QVS_WIFI_SECURITY_REC, SAEPassphrase, Text),
};
const Field kWifiAssocSta[] = {
    QF(QVS_WIFI_ASSOC_STA_REC, MACAddress, Mac),
    QF(QVS_WIFI_ASSOC_STA_REC, Active, U8),
    QF(QVS_WIFI_ASSOC_STA_REC, IPAddress, Text),
    QF(QVS_WIFI_ASSOC_STA_REC, LastDataDownlinkRate, U32),
    QF(QVS_WIFI_ASSOC_STA_REC, LastDataUplinkRate, U32),
};
const Field kIpsecConfig[] = {
    QF(QVS_IPSEC_CONFIG_REC, Enable, U8),
    QF(QVS_IPSEC_CONFIG_REC, ConnectionStatus, Text),
    QF(QVS_IPSEC_CONFIG_REC, Name, Text),
    QF(QVS_IPSEC_CONFIG_REC, RemoteEndpoint, Text),
    QF(QVS_IPSEC_CONFIG_REC, LocalSubnet, Text),
    QF(QVS_IPSEC_CONFIG_REC, RemoteSubnet, Text),
};
const Field kSleep[] = {
    QF(QVS_SLEEP_REC, Enable, U8),
    QF(QVS_SLEEP_REC, LastWLANEnable, U8),
    QF(QVS_SLEEP_REC, LastLeds_Turnoff, U8),
};
const Field kTimedTask[] = {
    QF(QVS_CMCC_TIMED_TASK_REC, Repeat, U32),
    QF(QVS_CMCC_TIMED_TASK_REC, Action, U32),
    QF(QVS_CMCC_TIMED_TASK_REC, SSIDIndex, U32),
    QF(QVS_CMCC_TIMED_TASK_REC, Time, U32),
    QF(QVS_CMCC_TIMED_TASK_REC, EndTime, U32),
    QF(QVS_CMCC_TIMED_TASK_REC, Removable, U32),
    QF(QVS_CMCC_TIMED_TASK_REC, Enable, U8),
};
const Field kDeviceLimit[] = {
    QF(QVS_CMCC_DEVICE_LIMIT_REC, UpSpeedLimit, U32),
    QF(QVS_CMCC_DEVICE_LIMIT_REC, DownSpeedLimit, U32),
    QF(QVS_CMCC_DEVICE_LIMIT_REC, Enable, U32),
    QF(QVS_CMCC_DEVICE_LIMIT_REC, Repeat, U32),
    QF(QVS_CMCC_DEVICE_LIMIT_REC, StartTime, U32),
    QF(QVS_CMCC_DEVICE_LIMIT_REC, EndTime, U32),
    QF(QVS_CMCC_DEVICE_LIMIT_REC, MACAddress, Mac),
};

const ObjClass kClasses[] = {
    QCLASS(3, "InternetGatewayDevice.DeviceInfo", 0, QVS_DEVICE_INFO_REC, kDeviceInfo),
    QCLASS(85, "InternetGatewayDevice.Time", 0, QVS_TIME_REC, kTime),
    QCLASS(137, "InternetGatewayDevice.LANDevice.%d.LANEthernetInterfaceConfig.%d", 2, QVS_LAN_ETH_IF_REC, kLanEthIf),
    QCLASS(156, "InternetGatewayDevice.LANDevice.%d.Hosts.Host.%d", 2, QVS_LAN_HOST_REC, kLanHost),
    QCLASS(170, "InternetGatewayDevice.WANDevice.%d", 1, QVS_WAN_DEVICE_REC, kWanDevice),
    QCLASS(173, "InternetGatewayDevice.WANDevice.%d.WANConnectionDevice.%d", 2, QVS_WAN_CONN_DEVICE_REC,
           kWanConnDevice),
    QCLASS(174, "InternetGatewayDevice.WANDevice.%d.WANConnectionDevice.%d.WANIPConnection.%d", 3,
           QVS_WAN_CONN_REC, kWanConn),
    QCLASS(196, "InternetGatewayDevice.WANDevice.%d.WANConnectionDevice.%d.WANPPPConnection.%d", 3,
           QVS_WAN_CONN_REC, kWanConn),
    QCLASS(209, "InternetGatewayDevice.WANDevice.%d.X_CMCC_GponInterfaceConfig", 1, QVS_OLT_REG_REC, kOltReg),
    QCLASS(211, "InternetGatewayDevice.WANDevice.%d.X_CMCC_EponInterfaceConfig", 1, QVS_OLT_REG_REC, kOltReg),
    QCLASS(223, "InternetGatewayDevice.X_CU_Function.Log", 0, QVS_ALARM_CONFIG_REC, kAlarmConfig),
    QCLASS(224, "InternetGatewayDevice.X_CU_Function.Log.AlarmInfo.%d", 1, QVS_ALARM_INFO_REC, kAlarmInfo),
    QCLASS(229, "InternetGatewayDevice.X_CU_Function.LED", 0, QVS_LED_REC, kLed),
    QCLASS(288, "InternetGatewayDevice.X_CMCC_UserInfo", 0, QVS_RMS_REGISTER_REC, kRmsRegister),
    QCLASS(389, "InternetGatewayDevice.X_QV_WiFi", 0, QVS_WIFI_COMMON_REC, kWifiCommon),
    QCLASS(390, "InternetGatewayDevice.WiFi.Radio.%d", 1, QVS_WIFI_RADIO_REC, kWifiRadio),
    QCLASS(392, "InternetGatewayDevice.WiFi.Radio.%d.X_QV_NeighboringWiFiDiagnostic", 1, QVS_WIFI_NEIGHBOR_REC,
           kWifiNeighbor),
    QCLASS(396, "InternetGatewayDevice.LANDevice.1.WLANConfiguration.%d", 1, QVS_WIFI_SSID_NAME_REC, kWifiSsidName),
    QCLASS(399, "InternetGatewayDevice.WiFi.SSID.%d", 1, QVS_WIFI_SSID_REC, kWifiSsid),
    QCLASS(400, "InternetGatewayDevice.WiFi.AccessPoint.%d.Security", 1, QVS_WIFI_SECURITY_REC, kWifiSecurity),
    QCLASS(402, "InternetGatewayDevice.WiFi.AccessPoint.%d.AssociatedDevice.%d", 2, QVS_WIFI_ASSOC_STA_REC,
           kWifiAssocSta),
    QCLASS(533, "InternetGatewayDevice.X_CMCC_IPSecVPN.Config.%d", 1, QVS_IPSEC_CONFIG_REC, kIpsecConfig),
    QCLASS(563, "InternetGatewayDevice.X_CU_Function.Sleep", 0, QVS_SLEEP_REC, kSleep),
    QCLASS(566, "InternetGatewayDevice.X_CMCC_TimedTask.Task.%d", 1, QVS_CMCC_TIMED_TASK_REC, kTimedTask),
    QCLASS(568, "InternetGatewayDevice.X_CMCC_DeviceLimit.Task.%d", 1, QVS_CMCC_DEVICE_LIMIT_REC, kDeviceLimit),
};

const ObjClass *const kClassPtrs[] = {
    &kClasses[0],  &kClasses[1],  &kClasses[2],  &kClasses[3],  &kClasses[4],  &kClasses[5],  &kClasses[6],
    &kClasses[7],  &kClasses[8],  &kClasses[9],  &kClasses[10], &kClasses[11], &kClasses[12], &kClasses[13],
    &kClasses[14], &kClasses[15], &kClasses[16], &kClasses[17], &kClasses[18], &kClasses[19], &kClasses[20],
    &kClasses[21], &kClasses[22], &kClasses[23], &kClasses[24],
};
static_assert(sizeof(kClassPtrs) / sizeof(kClassPtrs[0]) == sizeof(kClasses) / sizeof(kClasses[0]));

bool parse_long(const char *&p, long &out) {
    if (!((*p >= '0' && *p <= '9') || *p == '-')) return false;
    errno = 0;
    char *end = nullptr;
    long v = std::strtol(p, &end, 10);
    if (end == p || errno != 0) return false;
    out = v;
    p = end;
    return true;
}

}  // namespace

std::string Inst::text() const {
    std::string s;
    for (int i = 0; i < count; ++i) {
        if (i > 0) s += ',';
        s += std::to_string(v[i]);
    }
    return s;
}

bool parse_inst(const char *text, Inst &out) {
    out = Inst();
    if (text == nullptr || *text == '\0') return true;
    const char *p = text;
    while (true) {
        if (out.count == 3) return false;
        long v = 0;
        if (!parse_long(p, v)) return false;
        out.v[out.count++] = v;
        if (*p == '\0') return true;
        if (*p != ',') return false;
        ++p;
    }
}

const ObjClass *find_class(int oid) {
    for (const auto &c : kClasses)
        if (c.oid == oid) return &c;
    return nullptr;
}

const Field *find_field(const ObjClass &c, const char *name) {
    if (name == nullptr) return nullptr;
    for (std::size_t i = 0; i < c.field_count; ++i)
        if (std::strcmp(c.fields[i].name, name) == 0) return &c.fields[i];
    return nullptr;
}

const ObjClass *const *all_classes(std::size_t &count) {
    count = sizeof(kClassPtrs) / sizeof(kClassPtrs[0]);
    return kClassPtrs;
}

static bool match_template(const char *tmpl, const char *path, Inst &inst) {
    inst = Inst();
    const char *t = tmpl;
    const char *p = path;
    while (*t != '\0') {
        if (t[0] == '%' && t[1] == 'd') {
            if (!(*p >= '0' && *p <= '9')) return false;
            long v = 0;
            if (!parse_long(p, v)) return false;
            if (inst.count == 3) return false;
            inst.v[inst.count++] = v;
            t += 2;
            continue;
        }
        if (*t != *p) return false;
        ++t;
        ++p;
    }
    return *p == '\0' || (p[0] == '.' && p[1] == '\0');
}

const ObjClass *resolve_path(const char *path, Inst &inst) {
    if (path == nullptr) return nullptr;
    for (const auto &c : kClasses) {
        Inst i;
        if (match_template(c.path, path, i)) {
            inst = i;
            return &c;
        }
    }
    return nullptr;
}

std::string format_path(const ObjClass &c, const Inst &inst) {
    std::string out;
    int level = 0;
    for (const char *t = c.path; *t != '\0'; ++t) {
        if (t[0] == '%' && t[1] == 'd') {
            out += std::to_string(level < inst.count ? inst.v[level] : 0);
            ++level;
            ++t;
        } else {
            out += *t;
        }
    }
    return out;
}

bool is_descendant(const ObjClass &child, const ObjClass &parent) {
    std::size_t n = std::strlen(parent.path);
    return &child != &parent && std::strncmp(child.path, parent.path, n) == 0 && child.path[n] == '.' &&
           child.levels >= parent.levels;
}

std::string zero_value(const Field &f) {
    switch (f.kind) {
        case Kind::Text: return "";
        case Kind::Mac: return "00:00:00:00:00:00";
        default: return "0";
    }
}

static bool parse_mac(const char *text, unsigned char mac[6]) {
    unsigned int b[6];
    char tail = 0;
    if (std::sscanf(text, "%2x:%2x:%2x:%2x:%2x:%2x%c", &b[0], &b[1], &b[2], &b[3], &b[4], &b[5], &tail) == 6) {
        for (int i = 0; i < 6; ++i) mac[i] = static_cast<unsigned char>(b[i]);
        return true;
    }
    if (std::strlen(text) == 12) {
        for (int i = 0; i < 6; ++i) {
            char two[3] = {text[2 * i], text[2 * i + 1], 0};
            char *end = nullptr;
            unsigned long v = std::strtoul(two, &end, 16);
            if (end != two + 2) return false;
            mac[i] = static_cast<unsigned char>(v);
        }
        return true;
    }
    return false;
}

bool normalise(const Field &f, const char *text, std::string &out) {
    if (text == nullptr) text = "";
    switch (f.kind) {
        case Kind::Text: {
            std::size_t n = std::strlen(text);
            if (n > f.size - 1) n = f.size - 1;
            out.assign(text, n);
            return true;
        }
        case Kind::Mac: {
            unsigned char m[6];
            if (!parse_mac(text, m)) return false;
            char buf[18];
            std::snprintf(buf, sizeof buf, "%02x:%02x:%02x:%02x:%02x:%02x", m[0], m[1], m[2], m[3], m[4], m[5]);
            out = buf;
            return true;
        }
        default: break;
    }
    const char *p = text;
    while (*p == ' ') ++p;
    if (*p == '\0') return false;
    errno = 0;
    char *end = nullptr;
    long long v = std::strtoll(p, &end, 0);
    if (end == p || *end != '\0' || errno != 0) return false;
    switch (f.kind) {
        case Kind::U8: v = static_cast<uint8_t>(v); break;
        case Kind::I8: v = static_cast<int8_t>(v); break;
        case Kind::U16: v = static_cast<uint16_t>(v); break;
        case Kind::U32: v = static_cast<uint32_t>(v); break;
        default: break;
    }
    out = std::to_string(v);
    return true;
}

void put_field(const Field &f, const std::string &value, unsigned char *record) {
    unsigned char *dst = record + f.offset;
    switch (f.kind) {
        case Kind::Text: {
            std::memset(dst, 0, f.size);
            std::size_t n = value.size() < f.size - 1 ? value.size() : f.size - 1;
            std::memcpy(dst, value.data(), n);
            return;
        }
        case Kind::Mac: {
            unsigned char m[6] = {};
            parse_mac(value.c_str(), m);
            std::memcpy(dst, m, 6);
            return;
        }
        default: break;
    }
    long long v = std::strtoll(value.c_str(), nullptr, 10);
    switch (f.kind) {
        case Kind::U8: { uint8_t x = static_cast<uint8_t>(v); std::memcpy(dst, &x, 1); break; }
        case Kind::I8: { int8_t x = static_cast<int8_t>(v); std::memcpy(dst, &x, 1); break; }
        case Kind::U16: { uint16_t x = static_cast<uint16_t>(v); std::memcpy(dst, &x, 2); break; }
        case Kind::U32: { uint32_t x = static_cast<uint32_t>(v); std::memcpy(dst, &x, 4); break; }
        default: break;
    }
}

}  // namespace qvsim
