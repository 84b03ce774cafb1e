// SPDX-License-Identifier: MIT
// Associated stations by MAC address (station instances 1 to 128 under one
// parent), counted through the read journal; the two mesh queries.
#include "wlan_fixture.hpp"

using namespace wlantest;

namespace {

constexpr int kSta = 402;

std::string sta(int parent, int n) { return std::to_string(parent) + "," + std::to_string(n); }

std::string mac_text(int n) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "02:00:5e:00:%02x:%02x", (n >> 8) & 0xff, n & 0xff);
    return buf;
}

struct Mac {
    uint8_t b[6];
};
Mac mac_of(int n) { return Mac{{0x02, 0x00, 0x5e, 0x00, static_cast<uint8_t>((n >> 8) & 0xff), static_cast<uint8_t>(n & 0xff)}}; }

class Station : public WlanTest {
protected:
    void SetUp() override {
        WlanTest::SetUp();
        ASSERT_EQ(qvsim_journal_reads(1), 0);
    }
    // Stations first..last under parent, station n holding MAC number n.
    static void seed(int parent, int first, int last) {
        for (int n = first; n <= last; ++n) {
            ensure(kSta, sta(parent, n));
            set(kSta, sta(parent, n), "MACAddress", mac_text(n));
        }
    }
    static int reads() { return count_kind("get"); }
    static void expect_balanced(int attaches) {
        EXPECT_EQ(count_kind("attach"), attaches);
        EXPECT_EQ(count_kind("detach"), attaches);
    }
    static std::string read_line(int parent, int n, int result) {
        return "get|402|" + sta(parent, n) + "|MACAddress|" + std::to_string(result);
    }
};

TEST_F(Station, FoundAtTheFirstInstance) {
    seed(5, 1, 128);
    const Mac m = mac_of(1);
    EXPECT_EQ(qvs_wlan_get_sta_objidx_by_mac(5, m.b), 1);
    const Lines e = effects();
    ASSERT_EQ(e.size(), 3u);
    EXPECT_EQ(e[1], read_line(5, 1, 0));
    expect_balanced(1);
    EXPECT_EQ(logs(), Lines{});
}

TEST_F(Station, FoundInTheMiddleAfterReadingEveryEarlierOne) {
    seed(5, 1, 128);
    const Mac m = mac_of(77);
    EXPECT_EQ(qvs_wlan_get_sta_objidx_by_mac(5, m.b), 77);
    EXPECT_EQ(reads(), 77);
    expect_balanced(1);
}

TEST_F(Station, FoundAtInstance128) {
    seed(5, 1, 128);
    const Mac m = mac_of(128);
    EXPECT_EQ(qvs_wlan_get_sta_objidx_by_mac(5, m.b), 128);
    EXPECT_EQ(reads(), 128);
    expect_balanced(1);
}

TEST_F(Station, AbsentWithInstance128PresentGivesZero) {
    seed(5, 1, 128);
    const Mac m = mac_of(300);
    EXPECT_EQ(qvs_wlan_get_sta_objidx_by_mac(5, m.b), 0);
    EXPECT_EQ(reads(), 128);
    EXPECT_EQ(effects()[128], read_line(5, 128, 0));
    expect_balanced(1);
}

TEST_F(Station, AbsentWithInstance128MissingGivesTheStoresCode) {
    seed(5, 1, 127);
    const Mac m = mac_of(300);
    EXPECT_EQ(qvs_wlan_get_sta_objidx_by_mac(5, m.b), -2);
    EXPECT_EQ(reads(), 128);
    EXPECT_EQ(effects()[128], read_line(5, 128, -2));
    expect_balanced(1);
}

TEST_F(Station, GapsAreReadPast) {
    seed(5, 1, 9);
    seed(5, 40, 60);
    seed(5, 128, 128);
    const Mac found = mac_of(50), absent = mac_of(20);
    EXPECT_EQ(qvs_wlan_get_sta_objidx_by_mac(5, found.b), 50);
    EXPECT_EQ(reads(), 50);
    EXPECT_EQ(effects()[10], read_line(5, 10, -2));
    EXPECT_EQ(qvs_wlan_get_sta_objidx_by_mac(5, absent.b), 0);  // instance 128 exists
    EXPECT_EQ(reads(), 178);
    expect_balanced(2);
}

TEST_F(Station, AGapAtTheEndGivesTheStoresCode) {
    seed(5, 1, 9);
    const Mac m = mac_of(100);
    EXPECT_EQ(qvs_wlan_get_sta_objidx_by_mac(5, m.b), -2);
}

TEST_F(Station, TheFirstOfTwoEqualMacsWins) {
    seed(5, 1, 12);
    set(kSta, sta(5, 12), "MACAddress", mac_text(4));
    const Mac m = mac_of(4);
    EXPECT_EQ(qvs_wlan_get_sta_objidx_by_mac(5, m.b), 4);
}

TEST_F(Station, OnlyTheGivenParentIsSearched) {
    seed(5, 1, 3);
    const Mac m = mac_of(2);
    EXPECT_EQ(qvs_wlan_get_sta_objidx_by_mac(6, m.b), -2);
    EXPECT_EQ(reads(), 128);
    EXPECT_EQ(effects()[1], read_line(6, 1, -2));
    EXPECT_EQ(qvs_wlan_get_sta_objidx_by_mac(5, m.b), 2);
}

TEST_F(Station, TheDefaultGatewaysStations) {
    const uint8_t second[6] = {0xa4, 0x83, 0xe7, 0x55, 0x66, 0x03};
    EXPECT_EQ(qvs_wlan_get_sta_objidx_by_mac(9, second), 2);
    const uint8_t first[6] = {0x3c, 0x22, 0xfb, 0x10, 0x20, 0x01};
    EXPECT_EQ(qvs_wlan_get_sta_objidx_by_mac(1, first), 1);
    EXPECT_EQ(qvs_wlan_get_sta_objidx_by_mac(9, first), -2);
}

TEST_F(Station, AllSixBytesMustMatch) {
    seed(5, 1, 128);
    Mac m = mac_of(7);
    m.b[0] = 0x03;  // differs in the first byte only
    EXPECT_EQ(qvs_wlan_get_sta_objidx_by_mac(5, m.b), 0);
    m = mac_of(7);
    m.b[5] ^= 0x80;  // and in the last
    EXPECT_EQ(qvs_wlan_get_sta_objidx_by_mac(5, m.b), 0);
}

TEST_F(Station, AnUnsetStationMacReadsAsZeros) {
    ensure(kSta, sta(5, 1));
    ensure(kSta, sta(5, 2));
    set(kSta, sta(5, 1), "MACAddress", mac_text(1));
    const uint8_t zero[6] = {};
    EXPECT_EQ(qvs_wlan_get_sta_objidx_by_mac(5, zero), 2);
}

TEST_F(Station, ParentsThatNameNoInstance) {
    const Mac m = mac_of(1);
    EXPECT_EQ(qvs_wlan_get_sta_objidx_by_mac(0, m.b), -2);
    EXPECT_EQ(qvs_wlan_get_sta_objidx_by_mac(-1, m.b), -2);
    EXPECT_EQ(qvs_wlan_get_sta_objidx_by_mac(70000, m.b), -2);
    const Lines e = effects();  // attach, 128 reads, detach, three times
    ASSERT_EQ(e.size(), 3u * 130);
    EXPECT_EQ(e[1], read_line(0, 1, -2));
    EXPECT_EQ(e[131], "get|402|invalid|MACAddress|-2");  // a parent outside 0 to 65535
    EXPECT_EQ(e[261], "get|402|invalid|MACAddress|-2");
    EXPECT_EQ(reads(), 3 * 128);
    expect_balanced(3);
}

TEST_F(Station, ANullMacTouchesNothing) {
    EXPECT_EQ(qvs_wlan_get_sta_objidx_by_mac(5, nullptr), -22);
    EXPECT_EQ(journal().size(), 0u);
}

TEST_F(Station, AttachFailure) {
    seed(5, 1, 3);
    fault("attach");
    const Mac m = mac_of(1);
    EXPECT_EQ(qvs_wlan_get_sta_objidx_by_mac(5, m.b), -1001);
    EXPECT_EQ(reads(), 0);
    EXPECT_EQ(count_kind("attach-refused"), 1);
    EXPECT_EQ(count_kind("detach"), 0);
    EXPECT_EQ(logs(), Lines{log_line("qvs_wlan_get_sta_objidx_by_mac", 1, "XMLSHMINIT fail\\n")});
}

TEST_F(Station, AStationReadThatKeepsFailing) {
    seed(5, 1, 128);
    fault("read MACAddress");
    const Mac m = mac_of(1);
    EXPECT_EQ(qvs_wlan_get_sta_objidx_by_mac(5, m.b), -5);
    EXPECT_EQ(reads(), 128);
    expect_balanced(1);
}

TEST_F(Station, ReadsFailingBeforeTheMatchHideIt) {
    seed(5, 1, 128);
    fault("read MACAddress after 10");
    const Mac m = mac_of(50);
    EXPECT_EQ(qvs_wlan_get_sta_objidx_by_mac(5, m.b), -5);
    EXPECT_EQ(effects()[10], read_line(5, 10, 0));
    EXPECT_EQ(effects()[11], read_line(5, 11, -5));
    EXPECT_EQ(reads(), 128);
    expect_balanced(1);
}

TEST_F(Station, AFailedReadEarlierDoesNotDecideTheResult) {
    seed(5, 1, 128);
    fault("object 402 5,3");
    const Mac absent = mac_of(999), found = mac_of(4);
    EXPECT_EQ(qvs_wlan_get_sta_objidx_by_mac(5, absent.b), 0);  // the last read succeeded
    EXPECT_EQ(qvs_wlan_get_sta_objidx_by_mac(5, found.b), 4);
    const Mac hidden = mac_of(3);
    EXPECT_EQ(qvs_wlan_get_sta_objidx_by_mac(5, hidden.b), 0);
}

TEST_F(Station, AMissingStationObjectClass) {
    seed(5, 1, 128);
    fault("object 402");
    const Mac m = mac_of(1);
    EXPECT_EQ(qvs_wlan_get_sta_objidx_by_mac(5, m.b), -2);
    EXPECT_EQ(reads(), 128);
    expect_balanced(1);
}

TEST_F(Station, MeshQueriesAreNotSupported) {
    EXPECT_EQ(qvs_wlan_get_map_sta_num(), -1);
    EXPECT_EQ(qvs_wlan_get_map_bh_almac(), -1);
    EXPECT_EQ(journal().size(), 0u);
}

}  // namespace
