// SPDX-License-Identifier: MIT
// Zero-configuration state of a newly connected EPON or GPON gateway: one
// code 0 to 17 telling which phase it is in (OLT registration, TR-069 WAN
// connection, remote management registration, service configuration) and
// whether that phase has run out of time. Time stamps of the timed phases
// are kept in files under /tmp, created through the command runner.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string_view>
#include <unistd.h>

#include "core/command.hpp"
#include "core/list_lock.hpp"
#include "core/store.hpp"

namespace qvs::pon {
namespace {

// One uplink's OLT registration object and its state texts.
struct Uplink {
    int oid;
    int refresh_arg;
    const char *registered;
    const char *starting;
    const char *const *known_failures;
    std::size_t known_failure_count;
};

constexpr const char *kEponFailures[] = {
    "Unregistered and unauthorized",
    "NoSignal",
    "Disabled",
    "Registered but unauthorized",
};
constexpr const char *kGponFailures[] = {
    "Loid Wrong",
    "Loid OK, but password wrong",
    "Loid Conflict",
    "Optical Los",
    "Deactived by OLT",
};

constexpr Uplink kEpon{QVS_OID_EPON_OLT_REG, 300, "Registered and certified", "Initializing", kEponFailures,
                       sizeof kEponFailures / sizeof kEponFailures[0]};
constexpr Uplink kGpon{QVS_OID_GPON_OLT_REG, 3000, "Authentication Success", "Init State", kGponFailures,
                       sizeof kGponFailures / sizeof kGponFailures[0]};

// A timed phase: its time-stamp file, the echo command that creates it, its
// time-out in seconds and the lock that guards the file (named after it).
// The time is printed in full ("%lld"): a 32-bit long would wrap in 2038.
struct TimedPhase {
    const char *path;
    const char *create_format;
    long timeout;
    const char *lock;
};

constexpr TimedPhase kOltPhase{"/tmp/oltretime", "echo %lld > /tmp/oltretime", 180, "oltretime"};
constexpr TimedPhase kWanPhase{"/tmp/getwantime", "echo %lld > /tmp/getwantime", 120, "getwantime"};
constexpr TimedPhase kRmsPhase{"/tmp/registerrms", "echo %lld > /tmp/registerrms", 120, "registerrms"};
constexpr TimedPhase kServicePhase{"/tmp/servicetime", "echo %lld > /tmp/servicetime", 120, "servicetime"};

// Result codes.
enum : int {
    kUndetermined = 0,
    kOltStarting = 1,
    kOltWaiting = 2,
    kOltTimedOutKnown = 3,
    kOltTimedOutOther = 4,
    kWanWaiting = 5,
    kWanTimedOut = 6,
    kRmsTooManyAttempts = 7,
    kRmsWaiting = 8,
    kRmsTimedOut = 9,
    kRmsIndicatorOrStatus1 = 10,
    kRmsStatus4 = 11,
    kRmsStatus5 = 12,
    kServiceTimedOut = 13,
    kServiceWaiting = 14,
    kServiceResult1 = 15,
    kServiceResult2 = 16,
    kServiceResult99 = 17,
};

// Text of a fixed-size record field, never read past the field.
template <std::size_t N>
std::string_view field_text(const char (&field)[N]) {
    return std::string_view(field, strnlen(field, N));
}

// True when the phase has run out of time. A missing file is created with
// the current time (waiting); an empty or unreadable file counts as waiting.
// The shell's redirection truncates before it writes, so a check in another
// process could read the file empty, or find it missing and stamp it again:
// one check of a file at a time. A file whose lock stays busy counts as
// unreadable (waiting).
bool phase_timed_out(const char *func, const TimedPhase &phase) {
    ListLock lock(func, phase.lock);
    if (!lock) return false;
    const long long now = static_cast<long long>(std::time(nullptr));
    if (::access(phase.path, F_OK) != 0) {
        CommandBuffer<128> cmd;
        cmd.format(phase.create_format, now);
        ::qv_do_cmd(cmd.c_str());
        return false;
    }
    File f(phase.path, "r");
    if (!f) return false;
    char line[128] = {};
    if (std::fgets(line, sizeof line, f.get()) == nullptr) return false;
    char *end = nullptr;
    long long stored = std::strtoll(line, &end, 10);
    if (end == line) return false;  // no number on the first line: unreadable
    // elapsed = now - stored > time-out, said without overflowing
    return stored < now - phase.timeout;
}

bool is_known_failure(const Uplink &up, std::string_view state) {
    for (std::size_t k = 0; k < up.known_failure_count; ++k)
        if (state == up.known_failures[k]) return true;
    return false;
}

// First existing connection of one kind (IP or PPP) under connection device
// i whose service list holds "TR069": true when its state flag is set.
bool tr069_connection_up(Handle h, int oid, int i) {
    for (int j = 1; j <= 8; ++j) {
        QVS_IA ia = QVS_IA_VALUE(3, "1,%d,%d", i, j);
        const auto *conn = object<QVS_WAN_CONN_REC>(h, oid, ia);
        if (conn == nullptr) continue;
        char services[sizeof conn->X_QV_ServiceList + 1] = {};
        std::memcpy(services, conn->X_QV_ServiceList, sizeof conn->X_QV_ServiceList);
        if (std::strstr(services, "TR069") == nullptr) continue;
        return conn->ConnectionUp != 0;
    }
    return false;
}

int zero_config_state(const char *func, const Uplink &up) {
    StoreSession store(func, __LINE__, "XMLSHMINIT fail\n");
    if (!store) return kUndetermined;
    const Handle h = store.handle();

    QVS_IA ia = ::qvsXml_ConstructIAValue(kSourceFile, func, __LINE__, 1, "%d", 1);
    ::qvsXml_ObjectStats(up.oid, ia, up.refresh_arg);
    const auto *olt = object<QVS_OLT_REG_REC>(h, up.oid, ia);
    if (olt == nullptr) return kUndetermined;

    const std::string_view state = field_text(olt->RegistrationState);
    if (state != up.registered) {
        if (state == up.starting) return kOltStarting;
        if (!phase_timed_out(func, kOltPhase)) return kOltWaiting;
        return is_known_failure(up, state) ? kOltTimedOutKnown : kOltTimedOutOther;
    }

    bool wan_up = false;
    for (int i = 1; i <= 15; ++i) {
        if (tr069_connection_up(h, QVS_OID_WAN_IP_CONN, i)) wan_up = true;
        if (tr069_connection_up(h, QVS_OID_WAN_PPP_CONN, i)) wan_up = true;
    }
    if (!wan_up) return phase_timed_out(func, kWanPhase) ? kWanTimedOut : kWanWaiting;

    const auto *rms = object<QVS_RMS_REGISTER_REC>(h, QVS_OID_RMS_REGISTER, 0);
    if (rms == nullptr) return kUndetermined;
    const unsigned attempts = rms->X_QV_RegisterTimes;
    const unsigned flag = rms->X_QV_RegisterFlag;
    const unsigned status = rms->X_QV_RegisterStatus;
    const unsigned result = rms->X_QV_ServiceResult;

    if (attempts > 10) return kRmsTooManyAttempts;
    if (flag == 1 || status == 99) return phase_timed_out(func, kRmsPhase) ? kRmsTimedOut : kRmsWaiting;
    if (flag == 97 || status == 1) return kRmsIndicatorOrStatus1;
    if (status == 4) return kRmsStatus4;
    if (status == 5) return kRmsStatus5;
    if (status == 0) {
        switch (result) {
        case 0:
            if (phase_timed_out(func, kServicePhase)) {
                std::puts("service is timeout");
                return kServiceTimedOut;
            }
            return kServiceWaiting;
        case 1: return kServiceResult1;
        case 2: return kServiceResult2;
        case 99: return kServiceResult99;
        default: break;
        }
    }
    return kUndetermined;
}

}  // namespace
}  // namespace qvs::pon

extern "C" {

QVS_API int getzeroconfigeponstate(void) { return qvs::pon::zero_config_state(__func__, qvs::pon::kEpon); }

QVS_API int getzeroconfiggponstate(void) { return qvs::pon::zero_config_state(__func__, qvs::pon::kGpon); }

}  // extern "C"
