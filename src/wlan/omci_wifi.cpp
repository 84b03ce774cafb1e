// SPDX-License-Identifier: MIT
// The OMCI-provided VLAN settings of a Wi-Fi interface, applied to the
// switch and the network device layer.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/store.hpp"

namespace qvs::wlan {

namespace {

constexpr char kOmciWifiFile[] = "/var/run/qvOmciWifi";
// One line: interface name, VLAN mode, VLAN, VLAN type, physical index.
constexpr char kLineFormat[] = "%s %d %d %d %d \n";

// A file closed on every path.
class File {
public:
    explicit File(const char *path) : fp_(std::fopen(path, "r")) {}
    ~File() {
        if (fp_ != nullptr) std::fclose(fp_);
    }
    File(const File &) = delete;
    File &operator=(const File &) = delete;
    explicit operator bool() const { return fp_ != nullptr; }
    std::FILE *get() const { return fp_; }

private:
    std::FILE *fp_;
};

// Memory from the C library, freed on every path.
class Buffer {
public:
    Buffer() = default;
    ~Buffer() { std::free(p_); }
    Buffer(const Buffer &) = delete;
    Buffer &operator=(const Buffer &) = delete;
    char *&ref() { return p_; }
    char *get() const { return p_; }
    bool reserve(std::size_t size) {
        std::free(p_);
        p_ = static_cast<char *>(std::calloc(size, 1));
        return p_ != nullptr;
    }

private:
    char *p_ = nullptr;
};

struct OmciLine {
    const char *ifname;
    int vlan_mode;
    int vlan;
    int vlan_type;
    int phy_index;
};

// Parses one whole line with the file's format into line; the name goes
// into name, sized to the line, so "%s" cannot run past it however long
// the name is. False unless all five fields are there.
bool parse_line(const char *text, std::size_t length, Buffer &name, OmciLine &line) {
    if (!name.reserve(length + 1)) return false;
    line = OmciLine{name.get(), 0, 0, 0, 0};
    return std::sscanf(text, kLineFormat, name.get(), &line.vlan_mode, &line.vlan, &line.vlan_type,
                       &line.phy_index) == 5;
}

}  // namespace

}  // namespace qvs::wlan

using namespace qvs;
using namespace qvs::wlan;

extern "C" {

void qvsTask_wlanUpToOmciMsg(const char *wifi_name) {
    if (wifi_name == nullptr) return;
    File file(kOmciWifiFile);
    if (!file) return;

    Buffer text;
    std::size_t capacity = 0;
    ssize_t length = 0;
    while ((length = ::getline(&text.ref(), &capacity, file.get())) >= 0) {
        Buffer name;
        OmciLine line;
        // A line without all five fields is not one of the file's records.
        if (!parse_line(text.get(), static_cast<std::size_t>(length), name, line)) continue;
        QVS_LOG(kLogTrace, "read file[%s]in wifiname [%s] ifname:%s#vlanMode:%d#vlan:%d#vlantype:%d#phyIndex:%d\n",
                kOmciWifiFile, wifi_name, line.ifname, line.vlan_mode, line.vlan, line.vlan_type, line.phy_index);
        if (std::strcmp(line.ifname, wifi_name) != 0) continue;

        QVS_LOG(kLogTrace, "func[%s] line[%d] defaultTCI[%d]\n", __func__, __LINE__, line.vlan);
        QVS_SWITCH_VLAN_CFG cfg;
        std::memset(&cfg, 0, sizeof cfg);
        cfg.defaultTCI = static_cast<uint32_t>(line.vlan);
        cfg.vlanType = static_cast<uint32_t>(line.vlan_type);
        ::libqv_switchApi_setVlanCfgMain(&cfg);
        ::libqv_netApi_setVlanMode(line.vlan_mode, line.vlan, line.vlan_type, line.phy_index);
        return;  // the first matching line only
    }
}

}  // extern "C"
