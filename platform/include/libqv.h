/* SPDX-License-Identifier: MIT */
/*
 * libqv: the gateway platform library as the utility library sees it.
 *
 * This header is the whole seam between libqvs_utils and the maker's
 * platform: the configuration store (the TR-069 data model), the command
 * runners and the device calls. On the gateway the maker's libqv.so provides
 * these; on a PC the simulated gateway under platform/ does.
 *
 * Object records are read-only views of one object instance. The library
 * reads their fields directly; it writes only through parameter lists or
 * single-parameter calls, by parameter name and type code.
 */
#ifndef LIBQV_H
#define LIBQV_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- store handles, instance addresses, type codes ------------------- */

typedef uint32_t QVS_XMLSHM_HANDLE; /* 0: no store attached */
typedef uint64_t QVS_IA;            /* instance address; 0 for single objects */
typedef uint32_t QVS_PTR_OFFSET;    /* record position inside the store */
typedef struct qvs_param_list QVS_PARAM_LIST;

#define QVS_TYPE_STRING    0xc0000000u /* pointer to a zero-terminated text */
#define QVS_TYPE_BOOL      0x20000001u /* pointer to a one-byte 0/1 */
#define QVS_TYPE_UINT32    4u          /* pointer to a 32-bit unsigned */
#define QVS_TYPE_INT8      1u          /* pointer to a one-byte integer */
#define QVS_TYPE_DATETIME  27u         /* pointer to a time-stamp text */
#define QVS_TYPE_HOSTVALUE 2u          /* pointer to a LAN host entry value (32-bit) */

/* ---- object identifiers ------------------------------------------------ */

enum qvs_oid {
    QVS_OID_DEVICE_INFO        = 3,
    QVS_OID_TIME               = 85,
    QVS_OID_LAN_ETH_IF         = 137,
    QVS_OID_LAN_HOST           = 156,
    QVS_OID_WAN_DEVICE         = 170,
    QVS_OID_WAN_CONN_DEVICE    = 173,
    QVS_OID_WAN_IP_CONN        = 174,
    QVS_OID_WAN_PPP_CONN       = 196,
    QVS_OID_GPON_OLT_REG       = 209,
    QVS_OID_EPON_OLT_REG       = 211,
    QVS_OID_ALARM_CONFIG       = 223,
    QVS_OID_ALARM_INFO         = 224,
    QVS_OID_LED                = 229,
    QVS_OID_RMS_REGISTER       = 288,
    QVS_OID_WIFI_COMMON        = 389,
    QVS_OID_WIFI_RADIO         = 390,
    QVS_OID_WIFI_NEIGHBOR      = 392,
    QVS_OID_WIFI_SSID_NAME     = 396,
    QVS_OID_WIFI_SSID          = 399,
    QVS_OID_WIFI_SECURITY      = 400,
    QVS_OID_WIFI_ASSOC_STA     = 402,
    QVS_OID_IPSEC_CONFIG       = 533,
    QVS_OID_SLEEP              = 563,
    QVS_OID_CMCC_TIMED_TASK    = 566,
    QVS_OID_CMCC_DEVICE_LIMIT  = 568
};

/* ---- object records ---------------------------------------------------- *
 * Field names are the data-model parameter names where the object has one.
 * Texts are zero-terminated within their fields. Records are packed to fixed
 * offsets so that the 32-bit and 64-bit builds see the same layout.
 */
#pragma pack(push, 1)

/* OID 3, InternetGatewayDevice.DeviceInfo: one byte, then the version text */
typedef struct {
    uint8_t Reserved;
    char SoftwareVersion[64];
    char HardwareVersion[64];
    char ModelName[64];
    char SerialNumber[64];
} QVS_DEVICE_INFO_REC;

/* OID 85, InternetGatewayDevice.Time */
typedef struct {
    int8_t DaylightSavingsUsed;   /* non-zero: summer time on */
    char LocalTimeZone[16];       /* "+08:00" */
    char NTPServer1[64];
    char NTPServer2[64];
    char LocalTimeZoneName[64];
} QVS_TIME_REC;

/* OID 170, InternetGatewayDevice.WANDevice.%d */
typedef struct {
    uint32_t WANConnectionNumberOfEntries;
} QVS_WAN_DEVICE_REC;

/* OID 173, ...WANDevice.%d.WANConnectionDevice.%d */
typedef struct {
    uint32_t WANIPConnectionNumberOfEntries;
    uint32_t WANPPPConnectionNumberOfEntries;
} QVS_WAN_CONN_DEVICE_REC;

/* OID 174 (WANIPConnection) and 196 (WANPPPConnection), "1,%d,%d" */
typedef struct {
    uint8_t Enable;
    uint8_t ConnectionUp;              /* connection state flag: 1 = Connected */
    char Name[64];
    char X_QV_ServiceList[32];         /* "TR069", "INTERNET", "TR069_INTERNET", ... */
    char X_QV_LanInterface[1026];      /* bound LAN interfaces: comma-separated object paths, up to 1025 characters */
    char X_QV_IfName[32];              /* kernel interface, e.g. "nas0_0" */
    char ConnectionType[32];           /* "IP_Routed", "IP_Bridged", "PPPoE_Routed", "PPPoE_Bridged" */
    uint32_t X_QV_PVCIndex;            /* PVC index, 1 to 20; the record's first 32-bit field */
    char ConnectionStatus[32];         /* "Connected", "Disconnected", ... */
} QVS_WAN_CONN_REC;

/* OID 209 (GPON) and 211 (EPON) OLT registration, instance "1" */
typedef struct {
    char RegistrationState[64];
} QVS_OLT_REG_REC;

/* OID 223, InternetGatewayDevice.X_CU_Function.Log */
typedef struct {
    uint8_t AlarmEnable;
    uint8_t AlarmLevel;
    uint32_t NumberOfAlarmInfo;
} QVS_ALARM_CONFIG_REC;

/* OID 224, InternetGatewayDevice.X_CU_Function.Log.AlarmInfo.%d */
typedef struct {
    uint32_t AlarmID;
    uint32_t AlarmCode;
    int8_t AlarmStatus;
    int8_t PerceivedSeverity;
    char AlarmRaisedTime[20];
    char AlarmClearedTime[20];
    char AlarmDetail[128];
} QVS_ALARM_INFO_REC;

/* OID 288, remote-management (ITMS) registration record */
typedef struct {
    uint16_t X_QV_RegisterTimes;   /* attempt counter */
    uint8_t X_QV_RegisterFlag;     /* indicator */
    uint8_t X_QV_RegisterStatus;   /* registration status */
    uint8_t X_QV_ServiceResult;    /* service result */
} QVS_RMS_REGISTER_REC;

/* OID 389, InternetGatewayDevice.X_QV_WiFi (common object) */
typedef struct {
    char X_QV_External_SSID_Map[64];
    char X_QV_SharedSSID_Map[64];
    char X_QV_GuestSSID_Map[64];
    uint8_t X_QV_Enable;           /* Wi-Fi on as a whole */
} QVS_WIFI_COMMON_REC;

/* OID 396, per-SSID name object, internal SSID index */
typedef struct {
    char SSID[33];
} QVS_WIFI_SSID_NAME_REC;

/* OID 399, InternetGatewayDevice.WiFi.SSID.%d */
typedef struct {
    uint8_t Enable;
    uint8_t X_QV_PortIsolation;
    uint32_t X_QV_SSID_Bitmap;
    uint32_t X_QV_Guest_Duration;
    char Name[16];                 /* driver interface, e.g. "wlan0" */
} QVS_WIFI_SSID_REC;

/* OID 400, per-SSID security object, internal SSID index */
typedef struct {
    char ModeEnabled[32];
    char X_QV_WEPEncryptionLevel[32];
    char X_QV_WEPAuthMode[32];
    char WEPKey[128];
    char X_QV_EncryptionMode[32];
    char PreSharedKey[68];
    char KeyPassphrase[68];
    char SAEPassphrase[68];
} QVS_WIFI_SECURITY_REC;


/* OID 137, InternetGatewayDevice.LANDevice.%d.LANEthernetInterfaceConfig.%d ("1,%d", 1 to 5) */
typedef struct {
    char X_QV_PortName[16];        /* the switch's name for the port, e.g. "eth0" */
    uint8_t Enable;
    char Status[16];               /* "Up", "NoLink", "Disabled" */
    uint32_t MaxBitRate;
} QVS_LAN_ETH_IF_REC;

/* OID 156, InternetGatewayDevice.LANDevice.%d.Hosts.Host.%d ("1,%d", 1 to 255) */
typedef struct {
    uint32_t UpSpeedLimit;
    uint32_t DownSpeedLimit;
    uint8_t MACAddress[6];         /* binary; text form aa:bb:cc:dd:ee:ff */
    uint16_t BucketID;             /* hardware meter bucket, 0: none */
    uint16_t CounterID;            /* hardware counter, 0: none */
    uint8_t Active;
    char HostName[64];
    char IPAddress[16];
} QVS_LAN_HOST_REC;

/* OID 229, InternetGatewayDevice.X_CU_Function.LED */
typedef struct {
    uint8_t Leds_Turnoff;
} QVS_LED_REC;

/* OID 390, InternetGatewayDevice.WiFi.Radio.%d (1: slots 1-8, 5 GHz; 2: slots 9-16, 2.4 GHz) */
typedef struct {
    uint8_t Enable;
    char X_QV_DiagnosticsState[32];   /* "None", "Requested", "Complete", "Error", ... */
    char SupportedStandards[32];      /* comma-separated letters, e.g. "b,g,n,ax" */
    char ChannelsInUse[128];          /* comma-separated channel numbers */
    char OperatingFrequencyBand[16];  /* "2.4GHz", "5GHz" */
    uint32_t Channel;
} QVS_WIFI_RADIO_REC;

/* OID 392, InternetGatewayDevice.WiFi.Radio.%d.X_QV_NeighboringWiFiDiagnostic
 * (the neighbour scan result table of one radio). qvsXml_ObjectStats on it
 * answers ResultNumberOfEntries. */
typedef struct {
    uint32_t ResultNumberOfEntries;
    char DiagnosticsState[32];
} QVS_WIFI_NEIGHBOR_REC;

/* OID 402, InternetGatewayDevice.WiFi.AccessPoint.%d.AssociatedDevice.%d ("%d,%d":
 * internal SSID index, station 1 to 128) */
typedef struct {
    uint8_t MACAddress[6];
    uint8_t Active;
    char IPAddress[16];
    uint32_t LastDataDownlinkRate;
    uint32_t LastDataUplinkRate;
} QVS_WIFI_ASSOC_STA_REC;

/* OID 533, InternetGatewayDevice.X_CMCC_IPSecVPN.Config.%d (1 to 10) */
typedef struct {
    uint8_t Enable;
    char ConnectionStatus[32];
    char Name[64];
    char RemoteEndpoint[64];
    char LocalSubnet[64];
    char RemoteSubnet[64];
} QVS_IPSEC_CONFIG_REC;

/* OID 563, InternetGatewayDevice.X_CU_Function.Sleep */
typedef struct {
    uint8_t Enable;
    uint8_t LastWLANEnable;
    uint8_t LastLeds_Turnoff;
} QVS_SLEEP_REC;

/* OID 566, InternetGatewayDevice.X_CMCC_TimedTask.Task.%d */
typedef struct {
    uint32_t Repeat;               /* 0: once, then removed */
    uint32_t Action;               /* 1: platform event; 2: Wi-Fi off and on */
    uint32_t SSIDIndex;            /* external SSID 1-8; 0: SSIDs 1 and 5 */
    uint32_t Time;                 /* seconds of the day */
    uint32_t EndTime;              /* seconds of the day */
    uint32_t Removable;
    uint8_t Enable;
} QVS_CMCC_TIMED_TASK_REC;

/* OID 568, InternetGatewayDevice.X_CMCC_DeviceLimit.Task.%d */
typedef struct {
    uint32_t UpSpeedLimit;
    uint32_t DownSpeedLimit;
    uint32_t Enable;
    uint32_t Repeat;               /* 0: once; non-zero: daily */
    uint32_t StartTime;            /* seconds of the day */
    uint32_t EndTime;              /* seconds of the day */
    uint8_t MACAddress[6];
} QVS_CMCC_DEVICE_LIMIT_REC;

/* Switch VLAN configuration handed to libqv_switchApi_setVlanCfgMain. */
typedef struct {
    uint32_t defaultTCI;           /* the VLAN */
    uint32_t vlanType;
    uint32_t reserved[4];
} QVS_SWITCH_VLAN_CFG;

#pragma pack(pop)

/* ---- store operations ---------------------------------------------------- *
 * Results on the simulated gateway: 0 success; -1 zero or unknown handle,
 * bad argument, failed write (the whole list is applied or nothing);
 * qvsXml_getParameterByOID and qvsXml_setOneParameterByOIDIndirect also give
 * -2 (no such instance), -3 (no such parameter), and the read -5 (injected
 * read fault). Reads give texts as at most 31 characters and the zero,
 * 32- and 16-bit values as a 32-bit unsigned, one-byte values as one byte,
 * MACs as 6 bytes. Adds take the new instance's address, or its parent's
 * (one level fewer) for the next free number. Records stay valid until the
 * process's last handle detaches and show this process's own writes at once.
 */

QVS_XMLSHM_HANDLE qvs_xmlShmInit(void);
int qvs_xmlShmDeInit(QVS_XMLSHM_HANDLE *handle);

QVS_IA qvsXml_ConstructIAValue(const char *file, const char *func, int line,
                               int count, const char *format, ...);
QVS_IA qvsXmlSetIAValue(int level, QVS_IA ia, int instance);

void *qvsXml_GetObjectByOID(QVS_XMLSHM_HANDLE handle, int oid, QVS_IA ia, int flag);
void *qvsXml_GetObjectByName(QVS_XMLSHM_HANDLE handle, const char *path, int flag);
QVS_PTR_OFFSET qvsXmlGetPtrOffset(QVS_XMLSHM_HANDLE handle, const void *record);

QVS_PARAM_LIST *newParameterList(void);
int setParameterToList(QVS_PARAM_LIST *list, const char *name, uint32_t type, const void *value);
void freeParameterList(QVS_PARAM_LIST *list);
int qvsXml_setParameterIndirectByParaList(QVS_XMLSHM_HANDLE handle, QVS_PTR_OFFSET pos,
                                          QVS_PARAM_LIST *list);
int qvsXml_setParameterNnotify(QVS_XMLSHM_HANDLE handle, QVS_PTR_OFFSET pos,
                               QVS_PARAM_LIST *list, int flag);
int qvsXml_setOneParameterByOIDIndirect(QVS_XMLSHM_HANDLE handle, int oid, QVS_IA ia,
                                        const char *name, uint32_t type, const void *value);
/* 0 on success, negative on failure; out is a text buffer (32 bytes) or a
 * 32-bit integer, by the parameter's type. */
int qvsXml_getParameterByOID(QVS_XMLSHM_HANDLE handle, int oid, QVS_IA ia,
                             const char *name, void *out);
int qvsXml_addObjectByOIDIWithParaListIndirect(QVS_XMLSHM_HANDLE handle, int oid,
                                               QVS_IA parent, QVS_PARAM_LIST *list);
int qvsXml_delObjectByOIDIAIndirect(QVS_XMLSHM_HANDLE handle, int oid, QVS_IA ia);
int qvsXml_ObjectStats(int oid, QVS_IA ia, int arg);
int qvsXml_SaveIndirect(QVS_XMLSHM_HANDLE handle);
int qvsXml_SaveNoReply(QVS_XMLSHM_HANDLE handle);
int qvs_eventNotify(int event, int length, const void *data);

/* ---- command runners ----------------------------------------------------- */

int qv_do_cmd(const char *cmd);
int qvs_system(const char *cmd);
int libqv_dosystem(const char *cmd);
char *libqv_safe_strncpy(char *dst, const char *src, size_t size);

/* ---- device calls ---------------------------------------------------------- *
 * Each returns 0 on success and -1 on failure unless said otherwise. */

/* Switch: the physical port number of a port name ("eth0" -> 0), -1 when unknown. */
int libqv_switchApi_ethPortName2PhyPortNum(const char *portName);
/* Switch: port administratively down (0) or up (1). */
int FC_libqv_switchApi_portSetAdmin(int phyPort, int admin);
/* Switch: VLAN configuration of a Wi-Fi uplink. */
int libqv_switchApi_setVlanCfgMain(const QVS_SWITCH_VLAN_CFG *cfg);

/* Network devices: create the VLAN sub-interface devName (e.g. "eth1.5") on
 * baseName with VLAN vid; type 3 is a tagged LAN member; the four trailing
 * arguments are reserved (pass 0). */
int libqv_netApi_addDev(const char *baseName, const char *devName, int type, int vid,
                        int arg1, int arg2, int arg3, int arg4);
/* Network devices: remove a device made by libqv_netApi_addDev. */
int libqv_netApi_remDev(const char *devName);
/* Network devices: VLAN handling of a Wi-Fi uplink port. */
int libqv_netApi_setVlanMode(int vlanMode, int vlan, int vlanType, int phyIndex);

/* QoS: hardware host entry of one LAN device; fills the bucket and counter
 * numbers (both 0 after a delete). */
int libqv_qos_hostEntryAdd(int hostIndex, const uint8_t *mac, int enable, uint32_t upLimit,
                           uint32_t downLimit, uint32_t *bucket, uint32_t *counter);
int libqv_qos_hostEntryDel(int hostIndex, const uint8_t *mac, uint32_t *bucket, uint32_t *counter);

/* System facts: area and province codes into 32-byte buffers; CPU load in percent. */
int libqv_sys_getArea(char *area);
int libqv_sys_getProvince(char *province);
int libqv_sys_getCpuUsage(uint32_t *percent);

#ifdef __cplusplus
}
#endif

#endif /* LIBQV_H */
