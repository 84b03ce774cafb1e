// SPDX-License-Identifier: MIT
// Same-SSID merge: one network name across both radios, and its undoing.
#include <cstdio>
#include <cstring>

#include "wlan/ssid_map.hpp"

namespace qvs::wlan {

namespace {

constexpr int kNameSize = 33;       // network name, 32 characters
constexpr int kFirstSlot = 1;
constexpr int kLastSlot = 16;
constexpr int kLast5gSlot = 8;      // slots 1 to 8: the 5 GHz radio

template <std::size_t N>
void copy_field(char (&dst)[N], const char *src, std::size_t src_size) {
    std::memset(dst, 0, N);
    std::size_t n = ::strnlen(src, src_size);
    if (n > N - 1) n = N - 1;
    std::memcpy(dst, src, n);
}

// Sets the merge mark in one SSID's bitmap (read into a cleared value).
void mark_merged(Handle handle, QVS_IA ia) {
    std::uint32_t bitmap = 0;
    ::qvsXml_getParameterByOID(handle, QVS_OID_WIFI_SSID, ia, kParamBitmap, &bitmap);
    bitmap |= kBitmapMerged;
    ::qvsXml_setOneParameterByOIDIndirect(handle, QVS_OID_WIFI_SSID, ia, kParamBitmap, kTypeUInt32, &bitmap);
}

// The source's security values, copied out of its record.
struct Security {
    char ModeEnabled[sizeof(QVS_WIFI_SECURITY_REC::ModeEnabled)];
    char X_QV_WEPEncryptionLevel[sizeof(QVS_WIFI_SECURITY_REC::X_QV_WEPEncryptionLevel)];
    char X_QV_WEPAuthMode[sizeof(QVS_WIFI_SECURITY_REC::X_QV_WEPAuthMode)];
    char WEPKey[sizeof(QVS_WIFI_SECURITY_REC::WEPKey)];
    char X_QV_EncryptionMode[sizeof(QVS_WIFI_SECURITY_REC::X_QV_EncryptionMode)];
    char PreSharedKey[sizeof(QVS_WIFI_SECURITY_REC::PreSharedKey)];
    char KeyPassphrase[sizeof(QVS_WIFI_SECURITY_REC::KeyPassphrase)];
    char SAEPassphrase[sizeof(QVS_WIFI_SECURITY_REC::SAEPassphrase)];
};

#define QVS_COPY_SEC(field) copy_field(out.field, rec->field, sizeof rec->field)
void copy_security(Security &out, const QVS_WIFI_SECURITY_REC *rec) {
    QVS_COPY_SEC(ModeEnabled);
    QVS_COPY_SEC(X_QV_WEPEncryptionLevel);
    QVS_COPY_SEC(X_QV_WEPAuthMode);
    QVS_COPY_SEC(WEPKey);
    QVS_COPY_SEC(X_QV_EncryptionMode);
    QVS_COPY_SEC(PreSharedKey);
    QVS_COPY_SEC(KeyPassphrase);
    QVS_COPY_SEC(SAEPassphrase);
}
#undef QVS_COPY_SEC

}  // namespace

}  // namespace qvs::wlan

using namespace qvs;
using namespace qvs::wlan;

extern "C" {

int qvs_wlan_set_same_ssid(uint32_t handle, int src_ext_idx, int dst_ext_idx) {
    if (handle == 0) return kErrZeroHandle;
    int src = qvs_wlan_get_internal_ssididx_by_ext_ssididx(handle, src_ext_idx);
    int dst = qvs_wlan_get_internal_ssididx_by_ext_ssididx(handle, dst_ext_idx);
    QVS_IA src_ia = QVS_IA_VALUE(1, "%d", src);
    QVS_IA dst_ia = QVS_IA_VALUE(1, "%d", dst);

    mark_merged(handle, src_ia);
    mark_merged(handle, dst_ia);

    const auto *name_rec = object<QVS_WIFI_SSID_NAME_REC>(handle, QVS_OID_WIFI_SSID_NAME, src_ia);
    const auto *sec_rec = object<QVS_WIFI_SECURITY_REC>(handle, QVS_OID_WIFI_SECURITY, src_ia);
    if (name_rec == nullptr || sec_rec == nullptr) return kErrNoObject;  // marks stay set

    char name[kNameSize];
    copy_field(name, name_rec->SSID, sizeof name_rec->SSID);
    Security sec;
    copy_security(sec, sec_rec);

    ::qvsXml_setOneParameterByOIDIndirect(handle, QVS_OID_WIFI_SSID_NAME, dst_ia, "SSID", kTypeString, name);

    ParamList list;
    if (!list) return kErrNoParamList;
    list.add("ModeEnabled", kTypeString, sec.ModeEnabled);
    if (std::strstr(sec.ModeEnabled, "WEP-") != nullptr) {
        list.add("X_QV_WEPEncryptionLevel", kTypeString, sec.X_QV_WEPEncryptionLevel);
        list.add("X_QV_WEPAuthMode", kTypeString, sec.X_QV_WEPAuthMode);
        list.add("WEPKey", kTypeString, sec.WEPKey);
    }
    if (std::strstr(sec.ModeEnabled, "WPA") != nullptr) {
        list.add("X_QV_EncryptionMode", kTypeString, sec.X_QV_EncryptionMode);
        list.add("PreSharedKey", kTypeString, sec.PreSharedKey);
        list.add("KeyPassphrase", kTypeString, sec.KeyPassphrase);
        list.add("SAEPassphrase", kTypeString, sec.SAEPassphrase);
    }
    const auto *dst_sec = object<QVS_WIFI_SECURITY_REC>(handle, QVS_OID_WIFI_SECURITY, dst_ia);
    if (dst_sec == nullptr) return kErrNoObject;
    list.apply(handle, dst_sec);
    ::qvsXml_SaveNoReply(handle);
    return kOk;
}

int qvs_wlan_cancel_same_ssid(uint32_t handle) {
    if (handle == 0) return kFail;
    for (int idx = kFirstSlot; idx <= kLastSlot; ++idx) {
        QVS_IA ia = QVS_IA_VALUE(1, "%d", idx);
        std::uint32_t bitmap = 0;
        ::qvsXml_getParameterByOID(handle, QVS_OID_WIFI_SSID, ia, kParamBitmap, &bitmap);
        if ((bitmap & kBitmapMerged) == 0) continue;
        bitmap &= ~kBitmapMerged;
        ::qvsXml_setOneParameterByOIDIndirect(handle, QVS_OID_WIFI_SSID, ia, kParamBitmap, kTypeUInt32, &bitmap);
        if (idx > kLast5gSlot) continue;  // the 2.4 GHz radio keeps its names
        const auto *rec = object<QVS_WIFI_SSID_NAME_REC>(handle, QVS_OID_WIFI_SSID_NAME, ia);
        if (rec == nullptr) continue;
        char old_name[kNameSize];
        copy_field(old_name, rec->SSID, sizeof rec->SSID);
        char name[kNameSize] = {};
        std::snprintf(name, sizeof name, "%.29s-5G", old_name);
        ::qvsXml_setOneParameterByOIDIndirect(handle, QVS_OID_WIFI_SSID_NAME, ia, "SSID", kTypeString, name);
    }
    ::qvsXml_SaveNoReply(handle);
    return kOk;
}

int qvs_wlan_get_same_ssid_status(uint32_t handle) {
    if (handle == 0) return kFail;
    // One value for all reads: a failed read keeps the previous index's bits.
    std::uint32_t bitmap = 0;
    for (int idx = kFirstSlot; idx <= kLastSlot; ++idx) {
        QVS_IA ia = QVS_IA_VALUE(1, "%d", idx);
        ::qvsXml_getParameterByOID(handle, QVS_OID_WIFI_SSID, ia, kParamBitmap, &bitmap);
        if ((bitmap & kBitmapMerged) != 0) return 1;
    }
    return 0;
}

}  // extern "C"
