// SPDX-License-Identifier: MIT
// CUC sleep mode: Wi-Fi, LEDs and the LAN Ethernet ports off (the Wi-Fi and
// LED settings remembered in the sleep object) and back on.
#include <cstdint>

#include "core/store.hpp"

using namespace qvs;

namespace {

constexpr int kFirstLanPort = 1;
constexpr int kLastLanPort = 5;
constexpr int kPortDown = 0;
constexpr int kPortUp = 1;

// Writes one or two one-byte booleans to one object through a parameter list.
// False when the object or the list can't be had, or the store refuses.
bool write_flags(Handle h, int oid, const char *name, const std::uint8_t *value, const char *name2 = nullptr,
                 const std::uint8_t *value2 = nullptr) {
    const void *rec = ::qvsXml_GetObjectByOID(h, oid, 0, 1);
    if (rec == nullptr) return false;
    ParamList list;
    if (!list) return false;
    if (list.add(name, kTypeBool, value) != 0) return false;
    if (name2 != nullptr && list.add(name2, kTypeBool, value2) != 0) return false;
    return list.apply(h, rec) == 0;
}

// Every existing LAN Ethernet interface (1 to 5): its switch port set
// administratively down or up; missing interfaces are skipped.
void set_lan_ports(Handle h, int admin) {
    for (int port = kFirstLanPort; port <= kLastLanPort; ++port) {
        QVS_IA ia = QVS_IA_VALUE(2, "1,%d", port);
        const auto *eth = object<QVS_LAN_ETH_IF_REC>(h, QVS_OID_LAN_ETH_IF, ia);
        if (eth == nullptr) continue;
        int phy = ::libqv_switchApi_ethPortName2PhyPortNum(eth->X_QV_PortName);
        ::FC_libqv_switchApi_portSetAdmin(phy, admin);
    }
}

bool go_to_sleep(Handle h) {
    const auto *wifi = object<QVS_WIFI_COMMON_REC>(h, QVS_OID_WIFI_COMMON, 0);
    const auto *led = object<QVS_LED_REC>(h, QVS_OID_LED, 0);
    if (wifi == nullptr || led == nullptr) return false;
    std::uint8_t last_wlan = wifi->X_QV_Enable;
    std::uint8_t last_leds = led->Leds_Turnoff;
    if (!write_flags(h, QVS_OID_SLEEP, "LastWLANEnable", &last_wlan, "LastLeds_Turnoff", &last_leds)) return false;
    std::uint8_t wifi_off = 0;
    if (!write_flags(h, QVS_OID_WIFI_COMMON, "X_QV_Enable", &wifi_off)) return false;
    std::uint8_t leds_off = 1;
    if (!write_flags(h, QVS_OID_LED, "Leds_Turnoff", &leds_off)) return false;
    set_lan_ports(h, kPortDown);
    return true;
}

bool wake_up(Handle h) {
    const auto *sleep = object<QVS_SLEEP_REC>(h, QVS_OID_SLEEP, 0);
    if (sleep == nullptr) return false;
    std::uint8_t wlan = sleep->LastWLANEnable;
    std::uint8_t leds = sleep->LastLeds_Turnoff;
    if (!write_flags(h, QVS_OID_WIFI_COMMON, "X_QV_Enable", &wlan)) return false;
    if (!write_flags(h, QVS_OID_LED, "Leds_Turnoff", &leds)) return false;
    set_lan_ports(h, kPortUp);
    return true;
}

}  // namespace

extern "C" {

QVS_API int qvs_cuc_set_sleep_mode(int enable) {
    QVS_ATTACH(store, nullptr);
    if (!store) return kFail;
    const Handle h = store.handle();
    const auto *sleep = object<QVS_SLEEP_REC>(h, QVS_OID_SLEEP, 0);
    if (sleep == nullptr) return kFail;
    QVS_LOG(kLogError, "enable=%d, gateway_sleep->Enable=%d.\n", enable, sleep->Enable);
    if (sleep->Enable == enable) return kOk;

    // The requested value itself is stored; only exactly 1 means sleep.
    std::uint8_t requested = static_cast<std::uint8_t>(enable);
    if (!write_flags(h, QVS_OID_SLEEP, "Enable", &requested)) return kFail;
    // A failure part-way leaves the earlier writes applied and nothing saved.
    if (!(enable == 1 ? go_to_sleep(h) : wake_up(h))) return kFail;
    ::qvsXml_SaveIndirect(h);
    return kOk;
}

QVS_API int qvs_cuc_get_sleep_mode(void) {
    QVS_ATTACH(store, nullptr);
    if (!store) return kFail;
    const auto *sleep = object<QVS_SLEEP_REC>(store.handle(), QVS_OID_SLEEP, 0);
    if (sleep == nullptr) return kFail;
    return sleep->Enable;
}

}  // extern "C"
