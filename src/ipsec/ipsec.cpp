// SPDX-License-Identifier: MIT
// IPsec VPN client support: the subject of the client certificate, the
// client key and certificate issued by the operator's CA through `ipsec pki`,
// and each configured tunnel's connection state from the IKE daemon's list of
// security associations (`swanctl --list-sas`).
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <initializer_list>

#include "core/command.hpp"
#include "core/durable_file.hpp"
#include "core/list_lock.hpp"
#include "core/store.hpp"

namespace qvs::ipsec {
namespace {

constexpr char kInfoPath[] = "/tmp/ca.info";
constexpr char kTmpCaKey[] = "/tmp/ca.key.pem";
constexpr char kTmpCaCert[] = "/tmp/ca.cert.pem";
constexpr char kDir[] = "/userconfig/config/ipsec";
constexpr char kClientKey[] = "/userconfig/config/ipsec/client.key.pem";
constexpr char kClientCert[] = "/userconfig/config/ipsec/client.cert.pem";
constexpr char kCaKey[] = "/userconfig/config/ipsec/ca.key.pem";
constexpr char kCaCert[] = "/userconfig/config/ipsec/ca.cert.pem";
constexpr char kStatusPath[] = "/var/ipsec.status";
constexpr char kStatusLock[] = "ipsec_status";
constexpr char kConfigPath[] = "InternetGatewayDevice.X_CMCC_IPSecVPN.Config.%d";

constexpr std::size_t kCommandSize = 512;
constexpr std::size_t kSubjectSize = 64;
constexpr int kSubjectRead = 63;  // fgets bound: at most 62 characters
constexpr std::size_t kLineSize = 1024;
constexpr std::size_t kStatusSize = 32;
constexpr int kFirstInstance = 1;
constexpr int kLastInstance = 10;

constexpr char kUnconfigured[] = "Unconfigured";
constexpr char kDisconnected[] = "Disconnected";
constexpr char kPhase1[] = "PhaseI_Connecting";
constexpr char kPhase2[] = "PhaseII_Connecting";
constexpr char kConnected[] = "Connected";
constexpr char kDisconnecting[] = "Disconnecting";

struct StateWord {
    const char *word;
    const char *status;
};

// Earlier rows win within a line kind.
constexpr StateWord kIkeStates[] = {
    {"CONNECTING", kPhase1},
    {"ESTABLISHED", kPhase2},
    {"DELETING", kDisconnecting},
    {"DESTROYING", kDisconnecting},
};
constexpr StateWord kChildStates[] = {
    {"INSTALLING", kPhase2},
    {"INSTALLED", kConnected},
    {"DELETING", kDisconnecting},
    {"DESTROYING", kDisconnecting},
};

bool file_exists(const char *path) { return ::access(path, F_OK) == 0; }

void sync_file(const char *path) {
    const int fd = ::open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) return;
    ::fsync(fd);
    ::close(fd);
}

template <std::size_t N>
const char *state_of(const StateWord (&table)[N], const char *text) {
    for (const StateWord &row : table)
        if (std::strstr(text, row.word) != nullptr) return row.status;
    return nullptr;
}

// The decimal number right after "conn", kept as a signed 8-bit value (its
// low eight bits, so conn200 is -56 and conn255 is -1); no digits give 0.
std::int8_t instance_after(const char *digits) {
    unsigned value = 0;
    for (const char *p = digits; *p >= '0' && *p <= '9'; ++p) value = value * 10U + static_cast<unsigned>(*p - '0');
    return static_cast<std::int8_t>(static_cast<std::uint8_t>(value & 0xFFU));
}

// "ConnectionStatus" of one configuration instance, without notifying the
// store's listeners; a missing instance or list is skipped.
void write_status(Handle h, int instance, const char *status) {
    ParamList list;
    if (!list) return;
    const auto *config = object<QVS_IPSEC_CONFIG_REC>(h, QVS_OID_IPSEC_CONFIG, QVS_IA_VALUE(1, "%d", instance));
    if (config == nullptr) return;
    list.add("ConnectionStatus", kTypeString, status);
    ::qvsXml_setParameterNnotify(h, ::qvsXmlGetPtrOffset(h, config), list.get(), 0);
}

// Every existing instance 1..10 back to "Disconnected" (enabled) or
// "Unconfigured" (disabled) before the SA list is read.
void reset_status(Handle h) {
    for (int i = kFirstInstance; i <= kLastInstance; ++i) {
        CommandBuffer<128> path;
        path.format(kConfigPath, i);
        const auto *config = static_cast<const QVS_IPSEC_CONFIG_REC *>(::qvsXml_GetObjectByName(h, path.c_str(), 1));
        if (config == nullptr) continue;
        char status[kStatusSize] = {};
        std::snprintf(status, sizeof status, "%s", config->Enable != 0 ? kDisconnected : kUnconfigured);
        write_status(h, i, status);
    }
}

// Reads the SA list line by line; the current instance carries over from an
// IKE SA line ("conn<n>: ...") to the child SA lines below it.
void parse_sa_list(Handle h, std::FILE *f) {
    int instance = -1;
    char line[kLineSize];
    std::memset(line, 0, sizeof line);
    while (std::fgets(line, sizeof line, f) != nullptr) {
        char status[kStatusSize] = {};
        if (const char *conn = std::strstr(line, "conn")) {
            instance = instance_after(conn + 4);
            if (const char *s = state_of(kIkeStates, conn + 4)) std::snprintf(status, sizeof status, "%s", s);
        }
        if (instance != -1) {
            if (const char *child = std::strstr(line, "child")) {
                if (const char *s = state_of(kChildStates, child)) std::snprintf(status, sizeof status, "%s", s);
            }
            if (status[0] != '\0') write_status(h, instance, status);
        }
        std::memset(line, 0, sizeof line);
    }
}

}  // namespace
}  // namespace qvs::ipsec

extern "C" {

QVS_API int ipsec_write_ca_info(const char *countryca, const char *organizationca) {
    using namespace qvs::ipsec;
    if (countryca == nullptr || countryca[0] == '\0') {
        QVS_UTIL_PRINTF("countryca is null");
        return -1;
    }
    if (organizationca == nullptr || organizationca[0] == '\0') {
        QVS_UTIL_PRINTF("organizationca is null");
        return -1;
    }
    // The subject ends up inside the issue command line.
    if (QVS_REFUSE_UNSAFE(countryca) || QVS_REFUSE_UNSAFE(organizationca)) return -1;

    // Replaced by rename and synced: the issue step never reads half a subject.
    qvs::FileRewrite f(kInfoPath);
    if (!f) {
        QVS_UTIL_PRINTF("open file %s failed!", kInfoPath);
        return -1;
    }
    std::fprintf(f.get(), "C=%s, O=%s, CN=Client", countryca, organizationca);
    if (!f.commit()) {
        QVS_UTIL_PRINTF("write file %s failed!", kInfoPath);
        return -1;
    }
    return 0;
}

QVS_API int ipsec_generate_client_ca(void) {
    using namespace qvs::ipsec;
    if (!file_exists(kTmpCaKey) || !file_exists(kTmpCaCert)) {
        QVS_UTIL_PRINTF("CA file not ready");
        return -1;
    }

    char subject[kSubjectSize];
    std::memset(subject, 0, sizeof subject);
    {
        qvs::File f(kInfoPath, "r");
        if (!f) {
            QVS_UTIL_PRINTF("open file %s failed!", kInfoPath);
            return -1;
        }
        if (std::fgets(subject, kSubjectRead, f.get()) == nullptr) subject[0] = '\0';
    }
    // Only the first line is the subject; the text goes into a command line.
    subject[std::strcspn(subject, "\r\n")] = '\0';
    if (QVS_REFUSE_UNSAFE(subject)) return -1;

    // A new directory's name is on flash with the files put into it.
    if (!file_exists(kDir) && ::mkdir(kDir, 0755) == 0) qvs::sync_parent_dir(kDir);

    qvs::CommandBuffer<kCommandSize> cmd;
    cmd.format("ipsec pki --gen --outform pem > %s", kClientKey);
    ::qv_do_cmd(cmd.c_str());
    cmd.format("ipsec pki --pub --in %s | ipsec pki --issue --cacert %s --cakey %s --dn \"%s\" --outform pem > %s",
               kClientKey, kTmpCaCert, kTmpCaKey, subject, kClientCert);
    ::qv_do_cmd(cmd.c_str());
    cmd.format("mv %s %s", kTmpCaKey, kCaKey);
    ::qv_do_cmd(cmd.c_str());
    cmd.format("mv %s %s", kTmpCaCert, kCaCert);
    ::qv_do_cmd(cmd.c_str());
    // The commands write and move without syncing: the four files, then
    // their names, are on flash before 0 is returned.
    for (const char *path : {kClientKey, kClientCert, kCaKey, kCaCert}) sync_file(path);
    qvs::sync_dir(kDir);
    return 0;
}

QVS_API int ipsec_update_status(void) {
    using namespace qvs::ipsec;
    // The capture file's name is fixed, so refreshes in other processes share
    // it: one whole refresh at a time (reset, capture, parse, removal), or
    // one caller's swanctl truncates the list another is parsing and its
    // removal takes the file away before the other opens it.
    qvs::ListLock lock(__func__, kStatusLock);
    if (!lock) return -1;
    {
        QVS_ATTACH(store, "XMLSHMINIT fail\n");
        if (!store) return -1;
        const qvs::Handle h = store.handle();

        reset_status(h);

        qvs::CommandBuffer<128> cmd;
        cmd.format("swanctl --list-sas > %s", kStatusPath);
        ::qv_do_cmd(cmd.c_str());

        qvs::File f(kStatusPath, "r");
        if (!f)
            QVS_UTIL_PRINTF("open file %s failed!", kStatusPath);
        else
            parse_sa_list(h, f.get());
    }
    if (file_exists(kStatusPath)) ::unlink(kStatusPath);
    return 0;
}

}  // extern "C"
