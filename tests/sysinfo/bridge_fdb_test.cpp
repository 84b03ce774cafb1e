// SPDX-License-Identifier: MIT
// The forwarding database of a real Linux bridge "br0" with veth ports,
// read through "/sys/class/net/br0/brforward".
#include <fcntl.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <sys/socket.h>
#include <unistd.h>

#include <climits>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <sstream>

#include "sysinfo_fixture.hpp"

using namespace sysinfotest;

namespace {

using Entry = qvs_fdb_entry;

std::string mac_text(const unsigned char *m) {
    char buf[18];
    std::snprintf(buf, sizeof buf, "%02x:%02x:%02x:%02x:%02x:%02x", m[0], m[1], m[2], m[3], m[4], m[5]);
    return buf;
}

unsigned port_of(const Entry &e) { return e.port_no | (static_cast<unsigned>(e.port_hi) << 8); }

// What `bridge fdb show` says of one forwarding entry of br0.
struct Shown {
    std::string dev;
    bool permanent;  // the bridge's own address
    bool is_static;
};

class BridgeFdb : public SysinfoTest {
protected:
    void SetUp() override {
        SysinfoTest::SetUp();
        if (HasFatalFailure()) return;
        // No default VLAN on the ports: a kernel with bridge VLAN support
        // (the booted ARM target's) otherwise keeps every entry twice in the
        // forwarding file, once without a VLAN and once for VLAN 1.
        sh("ip link add br0 type bridge vlan_default_pvid 0 && ip link set br0 up");
        // Two ports. Their peers stay outside the bridge, silent (no IPv6
        // neighbour discovery), so that only what a test adds or sends is
        // learned.
        for (int i = 1; i <= 2; ++i) {
            std::string p = "veth" + inst(i), q = "vpeer" + inst(i);
            sh("ip link add " + p + " type veth peer name " + q + " && ip link set " + p + " master br0 && ip link set " +
               p + " up && sysctl -qw net.ipv6.conf." + q + ".disable_ipv6=1 && ip link set " + q + " up");
        }
    }
    static void sh(const std::string &cmd) { ASSERT_EQ(std::system(cmd.c_str()), 0) << cmd; }

    // One broadcast frame from src out of the device.
    static void send_frame(const char *dev, const unsigned char src[6]) {
        int s = ::socket(AF_PACKET, SOCK_RAW, 0);
        ASSERT_GE(s, 0);
        sockaddr_ll to{};
        to.sll_family = AF_PACKET;
        to.sll_ifindex = static_cast<int>(::if_nametoindex(dev));
        to.sll_halen = 6;
        unsigned char frame[60] = {0xff, 0xff, 0xff, 0xff, 0xff, 0xff};
        std::memcpy(frame + 6, src, 6);
        frame[12] = 0x88;  // local experimental EtherType 0x88b5
        frame[13] = 0xb5;
        std::memset(to.sll_addr, 0xff, 6);
        EXPECT_EQ(::sendto(s, frame, sizeof frame, 0, reinterpret_cast<sockaddr *>(&to), sizeof to),
                  static_cast<ssize_t>(sizeof frame));
        ::close(s);
    }

    // n static host entries 02:00:00:00:hh:ll on the ports, added in one batch.
    static void add_hosts(int n, int first = 0) {
        std::string batch;
        for (int i = first; i < first + n; ++i) {
            char mac[18];
            std::snprintf(mac, sizeof mac, "02:00:00:00:%02x:%02x", (i >> 8) & 0xff, i & 0xff);
            batch += std::string("fdb add ") + mac + " dev veth" + inst(1 + i % 2) + " master static\n";
        }
        qvstest::write_file("/tmp/fdb.batch", batch);
        sh("bridge -batch /tmp/fdb.batch");
    }

    // Every record of the file, read whole.
    static std::vector<Entry> file_records(const char *bridge = "br0") {
        std::vector<Entry> out;
        int fd = ::open((std::string("/sys/class/net/") + bridge + "/brforward").c_str(), O_RDONLY);
        EXPECT_GE(fd, 0);
        if (fd < 0) return out;
        for (;;) {
            Entry batch[64];
            ssize_t n = ::pread(fd, batch, sizeof batch, static_cast<off_t>(out.size() * sizeof(Entry)));
            if (n <= 0) break;
            out.insert(out.end(), batch, batch + n / static_cast<ssize_t>(sizeof(Entry)));
        }
        ::close(fd);
        return out;
    }

    // `bridge fdb show br br0`: the entries the bridge forwards by, by MAC.
    static std::map<std::string, Shown> shown() {
        std::map<std::string, Shown> out;
        std::istringstream in(qvstest::run("bridge fdb show br br0"));
        std::string line;
        while (std::getline(in, line)) {
            if (line.find(" master br0") == std::string::npos) continue;
            std::istringstream f(line);
            std::string mac, dev_kw, dev;
            f >> mac >> dev_kw >> dev;
            out[mac] = {dev, line.find(" permanent") != std::string::npos,
                        line.find(" static") != std::string::npos};
        }
        return out;
    }
    static unsigned port_no(const std::string &dev) {
        return static_cast<unsigned>(
            std::strtoul(qvstest::read_file("/sys/class/net/" + dev + "/brport/port_no").c_str(), nullptr, 16));
    }
    // The record matches what the bridge tool and the kernel's file say.
    static void expect_as_shown(const Entry &e, const std::map<std::string, Shown> &table,
                                const std::vector<Entry> &file) {
        const std::string mac = mac_text(e.mac_addr);
        auto it = table.find(mac);
        ASSERT_NE(it, table.end()) << mac << " is not in bridge fdb show";
        EXPECT_EQ(port_of(e), port_no(it->second.dev)) << mac;
        EXPECT_EQ(e.is_local != 0, it->second.permanent) << mac;
        bool in_file = false;
        for (const auto &f : file) {
            if (std::memcmp(f.mac_addr, e.mac_addr, 6) != 0) continue;
            in_file = true;
            // Same bytes but for the ageing timer, which moves meanwhile.
            EXPECT_EQ(std::memcmp(&f, &e, 8), 0) << mac;
            EXPECT_EQ(std::memcmp(reinterpret_cast<const char *>(&f) + 12, reinterpret_cast<const char *>(&e) + 12, 4),
                      0)
                << mac;
            EXPECT_LE(e.ageing_timer_value, f.ageing_timer_value + 100) << mac;
            EXPECT_LE(f.ageing_timer_value, e.ageing_timer_value + 500) << mac;
        }
        EXPECT_TRUE(in_file) << mac;
    }
    static std::size_t locals_in(const std::vector<Entry> &v, std::size_t n) {
        std::size_t k = 0;
        for (std::size_t i = 0; i < n && i < v.size(); ++i) k += v[i].is_local != 0;
        return k;
    }
};

TEST_F(BridgeFdb, TheFileHoldsWhatTheBridgeToolShows) {
    add_hosts(10);
    const auto file = file_records();
    const auto table = shown();
    EXPECT_EQ(file.size(), table.size());
    for (const auto &e : file) expect_as_shown(e, table, file);
    EXPECT_EQ(locals_in(file, file.size()), 2u);  // one own address per port
}

TEST_F(BridgeFdb, GetMacsCopiesTheLearnedHostsInFileOrder) {
    add_hosts(20);
    const auto file = file_records();
    const auto table = shown();
    Entry out[128];
    std::memset(out, 0xee, sizeof out);
    const int n = brctl_getmacs("br0", out, 128);
    std::vector<Entry> learned;
    for (const auto &e : file)
        if (e.is_local == 0) learned.push_back(e);
    ASSERT_EQ(n, static_cast<int>(learned.size()));
    EXPECT_GE(n, 20);
    for (int i = 0; i < n; ++i) {
        EXPECT_EQ(std::memcmp(out[i].mac_addr, learned[i].mac_addr, 6), 0) << i;
        EXPECT_EQ(out[i].is_local, 0);
        expect_as_shown(out[i], table, file);
    }
    // Nothing beyond the records written.
    const auto *rest = reinterpret_cast<const unsigned char *>(&out[n]);
    for (std::size_t i = 0; i < sizeof(Entry); ++i) EXPECT_EQ(rest[i], 0xee);
    EXPECT_EQ(effects(), Lines{});
}

TEST_F(BridgeFdb, ALearnedHostOfARealFrame) {
    // One frame sent by the peer into the first port teaches the bridge the
    // peer's address, as a dynamic entry.
    unsigned char mac[6];
    const std::string peer = qvstest::read_file("/sys/class/net/vpeer1/address");
    ASSERT_EQ(std::sscanf(peer.c_str(), "%hhx:%hhx:%hhx:%hhx:%hhx:%hhx", &mac[0], &mac[1], &mac[2], &mac[3], &mac[4],
                          &mac[5]),
              6);
    send_frame("vpeer1", mac);
    Entry e{};
    ASSERT_EQ(brctl_getmacs_by_mac("br0", mac, &e), 1);
    EXPECT_EQ(e.is_local, 0);
    EXPECT_EQ(port_of(e), port_no("veth1"));
    auto table = shown();
    ASSERT_TRUE(table.count(mac_text(mac)));
    EXPECT_FALSE(table[mac_text(mac)].is_static);
    EXPECT_FALSE(table[mac_text(mac)].permanent);
}

TEST_F(BridgeFdb, GetMacsByMacFindsAHost) {
    add_hosts(5);
    const unsigned char mac[6] = {0x02, 0, 0, 0, 0, 3};
    Entry e;
    std::memset(&e, 0xee, sizeof e);
    EXPECT_EQ(brctl_getmacs_by_mac("br0", mac, &e), 1);
    EXPECT_EQ(std::memcmp(e.mac_addr, mac, 6), 0);
    EXPECT_EQ(port_of(e), port_no("veth2"));  // host 3 sits on the second port
    EXPECT_EQ(e.is_local, 0);
    expect_as_shown(e, shown(), file_records());
}

TEST_F(BridgeFdb, GetMacsByMacFindsLocalEntriesToo) {
    unsigned char mac[6];
    const std::string own = qvstest::read_file("/sys/class/net/veth1/address");
    ASSERT_EQ(std::sscanf(own.c_str(), "%hhx:%hhx:%hhx:%hhx:%hhx:%hhx", &mac[0], &mac[1], &mac[2], &mac[3], &mac[4],
                          &mac[5]),
              6);
    Entry e{};
    EXPECT_EQ(brctl_getmacs_by_mac("br0", mac, &e), 1);
    EXPECT_NE(e.is_local, 0);
    EXPECT_EQ(port_of(e), port_no("veth1"));
    EXPECT_TRUE(shown()[mac_text(mac)].permanent);
}

TEST_F(BridgeFdb, GetMacsByMacOfAnUnknownAddressGivesZero) {
    add_hosts(5);
    const unsigned char mac[6] = {0x02, 0, 0, 0, 0x7f, 0x7f};
    Entry e;
    std::memset(&e, 0xee, sizeof e);
    EXPECT_EQ(brctl_getmacs_by_mac("br0", mac, &e), 0);
    const auto *b = reinterpret_cast<const unsigned char *>(&e);
    for (std::size_t i = 0; i < sizeof e; ++i) EXPECT_EQ(b[i], 0xee);
}

TEST_F(BridgeFdb, NoSuchBridgeGivesZero) {
    const unsigned char mac[6] = {0x02, 0, 0, 0, 0, 1};
    Entry out[4];
    std::memset(out, 0xee, sizeof out);
    EXPECT_EQ(brctl_getmacs_by_mac("br9", mac, out), 0);
    EXPECT_EQ(brctl_getmacs("br9", out, 4), 0);
    // A device that is no bridge has no forwarding file either.
    EXPECT_EQ(brctl_getmacs("veth1", out, 4), 0);
    EXPECT_EQ(out[0].mac_addr[0], 0xee);
}

TEST_F(BridgeFdb, ABridgeWithoutPortsHasNoRecords) {
    sh("ip link add br1 type bridge && ip link set br1 up");
    const unsigned char mac[6] = {0x02, 0, 0, 0, 0, 1};
    Entry out[4];
    EXPECT_EQ(brctl_getmacs("br1", out, 4), 0);
    EXPECT_EQ(brctl_getmacs_by_mac("br1", mac, out), 0);
}

TEST_F(BridgeFdb, MaxZeroOrBelowGivesZeroAndWritesNothing) {
    add_hosts(5);
    Entry out[4];
    std::memset(out, 0xee, sizeof out);
    EXPECT_EQ(brctl_getmacs("br0", out, 0), 0);
    EXPECT_EQ(brctl_getmacs("br0", out, -1), 0);
    EXPECT_EQ(brctl_getmacs("br0", out, INT_MIN), 0);
    const auto *b = reinterpret_cast<const unsigned char *>(out);
    for (std::size_t i = 0; i < sizeof out; ++i) EXPECT_EQ(b[i], 0xee);
}

TEST_F(BridgeFdb, MaxBoundsTheRecordsExaminedNotOnlyThoseWritten) {
    add_hosts(30);
    const auto file = file_records();
    ASSERT_EQ(locals_in(file, file.size()), 2u);
    // Up to and including the first local record.
    std::size_t first_local = 0;
    while (file[first_local].is_local == 0) ++first_local;
    for (std::size_t max : {std::size_t{1}, first_local + 1, file.size()}) {
        Entry out[128];
        const int n = brctl_getmacs("br0", out, static_cast<int>(max));
        EXPECT_EQ(n, static_cast<int>(max - locals_in(file, max))) << "max " << max;
        std::size_t k = 0;
        for (std::size_t i = 0; i < max; ++i) {
            if (file[i].is_local != 0) continue;
            EXPECT_EQ(std::memcmp(out[k].mac_addr, file[i].mac_addr, 6), 0) << "max " << max << " slot " << k;
            ++k;
        }
    }
    Entry out[128];
    EXPECT_EQ(brctl_getmacs("br0", out, static_cast<int>(first_local + 1)), static_cast<int>(first_local));
}

TEST_F(BridgeFdb, WithMoreThan200HostsOnlyTheFirst128RecordsCount) {
    add_hosts(210);
    const auto file = file_records();
    ASSERT_GE(file.size(), 212u);
    const auto table = shown();
    EXPECT_EQ(file.size(), table.size());

    Entry out[300];
    std::memset(out, 0xee, sizeof out);
    const int n = brctl_getmacs("br0", out, 300);
    EXPECT_EQ(n, static_cast<int>(128 - locals_in(file, 128)));
    std::size_t k = 0;
    for (std::size_t i = 0; i < 128; ++i) {
        if (file[i].is_local != 0) continue;
        EXPECT_EQ(std::memcmp(out[k].mac_addr, file[i].mac_addr, 6), 0) << k;
        expect_as_shown(out[k], table, file);
        ++k;
    }
    EXPECT_EQ(reinterpret_cast<const unsigned char *>(&out[n])[0], 0xee);

    // The 128th record is found by its address, the 129th is not.
    Entry e{};
    EXPECT_EQ(brctl_getmacs_by_mac("br0", file[127].mac_addr, &e), 1);
    EXPECT_EQ(std::memcmp(e.mac_addr, file[127].mac_addr, 6), 0);
    EXPECT_EQ(brctl_getmacs_by_mac("br0", file[128].mac_addr, &e), 0);
    EXPECT_EQ(brctl_getmacs_by_mac("br0", file.back().mac_addr, &e), 0);
}

TEST_F(BridgeFdb, ExactlyNinetySixRecordsReadOneBatchMore) {
    // 96 records do not yet stop the reading: with 120 in the file all count.
    add_hosts(118);
    const auto file = file_records();
    ASSERT_EQ(file.size(), 120u);
    Entry out[200];
    EXPECT_EQ(brctl_getmacs("br0", out, 200), 118);
    Entry e{};
    EXPECT_EQ(brctl_getmacs_by_mac("br0", file.back().mac_addr, &e), 1);
}

TEST_F(BridgeFdb, TheFirstEqualRecordWins) {
    add_hosts(3);
    const auto file = file_records();
    Entry e{};
    for (const auto &f : file) {
        ASSERT_EQ(brctl_getmacs_by_mac("br0", f.mac_addr, &e), 1);
        EXPECT_EQ(std::memcmp(&e, &f, 8), 0);
    }
}

}  // namespace
