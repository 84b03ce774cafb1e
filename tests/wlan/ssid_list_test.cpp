// SPDX-License-Identifier: MIT
// The shared and guest SSID lists: reading, one entry by position, updating.
#include <cstring>

#include "wlan_fixture.hpp"

using namespace wlantest;

namespace {

constexpr int kShared = 0x10000;
constexpr int kGuest = 0x20000;

class SsidList : public WlanTest {
protected:
    static void set_shared(const std::string &t) { set(kCommon, "", "X_QV_SharedSSID_Map", t); }
    static void set_guest(const std::string &t) { set(kCommon, "", "X_QV_GuestSSID_Map", t); }
    static std::string shared() { return get(kCommon, "", "X_QV_SharedSSID_Map"); }
    static std::string guest() { return get(kCommon, "", "X_QV_GuestSSID_Map"); }
    static std::string shared_set(const std::string &t) { return set_line(kCommon, "", "X_QV_SharedSSID_Map", kStr, t); }
    static std::string guest_set(const std::string &t) { return set_line(kCommon, "", "X_QV_GuestSSID_Map", kStr, t); }
};

// ---- reading -------------------------------------------------------------

TEST_F(SsidList, ReadsTheSharedAndTheGuestListSeparately) {
    set_shared("3,4");
    set_guest("5,12,6");
    uint8_t table[16] = {};
    int count = 16;
    EXPECT_EQ(qvs_wlan_get_shared_ssid_list(h, table, &count), 0);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(table[0], 3);
    EXPECT_EQ(table[1], 4);
    uint8_t g[16] = {};
    count = 16;
    EXPECT_EQ(qvs_wlan_get_guest_ssid_list(h, g, &count), 0);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(g[0], 5);
    EXPECT_EQ(g[1], 12);
    EXPECT_EQ(g[2], 6);
    EXPECT_EQ(effects(), Lines{});
    EXPECT_EQ(logs(), Lines{});
}

TEST_F(SsidList, ReadsNoMoreThanTheRoom) {
    set_guest("1,2,3,4");
    uint8_t table[16] = {};
    int count = 3;
    EXPECT_EQ(qvs_wlan_get_guest_ssid_list(h, table, &count), 0);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(table[2], 3);
    EXPECT_EQ(table[3], 0);
}

TEST_F(SsidList, NumbersAreStoredAsBytes) {
    set_shared("258,7");
    uint8_t table[16] = {};
    int count = 16;
    EXPECT_EQ(qvs_wlan_get_shared_ssid_list(h, table, &count), 0);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(table[0], 2);
    EXPECT_EQ(table[1], 7);
}

TEST_F(SsidList, ZeroHandleSetsTheCountToZero) {
    set_shared("3,4");
    uint8_t table[16] = {};
    int count = 16;
    EXPECT_EQ(qvs_wlan_get_shared_ssid_list(0, table, &count), -22);
    EXPECT_EQ(count, 0);
    count = 16;
    EXPECT_EQ(qvs_wlan_get_guest_ssid_list(0, table, &count), -22);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(journal().size(), 0u);
}

TEST_F(SsidList, MissingCommonObjectSetsTheCountToZero) {
    set_shared("3,4");
    set_guest("3,4");
    fault("object 389");
    uint8_t table[16] = {};
    int count = 16;
    EXPECT_EQ(qvs_wlan_get_shared_ssid_list(h, table, &count), -1003);
    EXPECT_EQ(count, 0);
    count = 16;
    EXPECT_EQ(qvs_wlan_get_guest_ssid_list(h, table, &count), -1003);
    EXPECT_EQ(count, 0);
}

TEST_F(SsidList, EmptyTextSetsTheCountToZero) {
    uint8_t table[16] = {};
    int count = 16;
    EXPECT_EQ(qvs_wlan_get_shared_ssid_list(h, table, &count), -1000);
    EXPECT_EQ(count, 0);
    count = 16;
    set_guest(",");
    EXPECT_EQ(qvs_wlan_get_guest_ssid_list(h, table, &count), -1000);
    EXPECT_EQ(count, 0);
}

TEST_F(SsidList, NoRoomSetsTheCountToZero) {
    set_guest("3,4");
    uint8_t table[16] = {};
    int count = 0;
    EXPECT_EQ(qvs_wlan_get_guest_ssid_list(h, table, &count), -1000);
    EXPECT_EQ(count, 0);
    count = -5;
    EXPECT_EQ(qvs_wlan_get_guest_ssid_list(h, table, &count), -1000);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(table[0], 0);
}

TEST_F(SsidList, AtMost63CharactersOfTheTextAreRead) {
    // 60 zeros then "1,23": the bounded copy keeps "0...01,2".
    std::string text = std::string(60, '0') + "1,23";
    set_guest(text);
    uint8_t table[16] = {};
    int count = 16;
    EXPECT_EQ(qvs_wlan_get_guest_ssid_list(h, table, &count), 0);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(table[0], 1);
    EXPECT_EQ(table[1], 2);
}

// ---- one entry by position -------------------------------------------------

TEST_F(SsidList, EntryByPositionInBothLists) {
    set_shared("5,6,7");
    set_guest("11,12");
    EXPECT_EQ(qvs_wlan_get_ext_ssid_idx_by_mapped_ssid_oid_idx(h, 1, kShared), 5);
    EXPECT_EQ(qvs_wlan_get_ext_ssid_idx_by_mapped_ssid_oid_idx(h, 3, kShared), 7);
    EXPECT_EQ(qvs_wlan_get_ext_ssid_idx_by_mapped_ssid_oid_idx(h, 2, kGuest), 12);
    EXPECT_EQ(effects(), Lines{});
}

TEST_F(SsidList, EntryAtTheSixteenthPosition) {
    set_guest("1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16");
    EXPECT_EQ(qvs_wlan_get_ext_ssid_idx_by_mapped_ssid_oid_idx(h, 16, kGuest), 16);
}

TEST_F(SsidList, EntryPositionOutsideOneToSixteenGivesMinus1) {
    set_guest("1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16");
    EXPECT_EQ(qvs_wlan_get_ext_ssid_idx_by_mapped_ssid_oid_idx(h, 0, kGuest), -1);
    EXPECT_EQ(qvs_wlan_get_ext_ssid_idx_by_mapped_ssid_oid_idx(h, 17, kGuest), -1);
    EXPECT_EQ(qvs_wlan_get_ext_ssid_idx_by_mapped_ssid_oid_idx(h, -1, kGuest), -1);
}

TEST_F(SsidList, EntryWithUnknownSelectorGivesMinus1) {
    set_guest("4");
    EXPECT_EQ(qvs_wlan_get_ext_ssid_idx_by_mapped_ssid_oid_idx(h, 1, 0x30000), -1);
    EXPECT_EQ(qvs_wlan_get_ext_ssid_idx_by_mapped_ssid_oid_idx(h, 1, 0), -1);
}

TEST_F(SsidList, EntryOfAnEmptyOrShortListGivesMinus1) {
    EXPECT_EQ(qvs_wlan_get_ext_ssid_idx_by_mapped_ssid_oid_idx(h, 1, kShared), -1);
    set_shared("5,6");
    EXPECT_EQ(qvs_wlan_get_ext_ssid_idx_by_mapped_ssid_oid_idx(h, 3, kShared), -1);
    EXPECT_EQ(qvs_wlan_get_ext_ssid_idx_by_mapped_ssid_oid_idx(0, 1, kShared), -1);
    fault("object 389");
    EXPECT_EQ(qvs_wlan_get_ext_ssid_idx_by_mapped_ssid_oid_idx(h, 1, kShared), -1);
}

// ---- updating one entry -----------------------------------------------------

TEST_F(SsidList, UpdateClearsAnEntryWithZero) {
    set_guest("5,6,7");
    EXPECT_EQ(qvs_wlan_update_mapped_list(h, 2, 0, kGuest), 0);
    EXPECT_EQ(guest(), "5,0,7");
    EXPECT_EQ(effects(), Lines{guest_set("5,0,7")});
    EXPECT_EQ(logs(), Lines{});
}

TEST_F(SsidList, UpdateSetsAnEntryInTheSharedList) {
    set_shared("5,6,7");
    set_guest("1");
    EXPECT_EQ(qvs_wlan_update_mapped_list(h, 3, 8, kShared), 0);
    EXPECT_EQ(shared(), "5,6,8");
    EXPECT_EQ(guest(), "1");
    EXPECT_EQ(effects(), Lines{shared_set("5,6,8")});
}

TEST_F(SsidList, UpdateRefusesADuplicate) {
    set_shared("5,6,7");
    EXPECT_EQ(qvs_wlan_update_mapped_list(h, 1, 7, kShared), -1);
    EXPECT_EQ(shared(), "5,6,7");
    EXPECT_EQ(effects(), Lines{});
}

TEST_F(SsidList, UpdateMayClearWhenZeroIsAlreadyThere) {
    set_guest("0,6");
    EXPECT_EQ(qvs_wlan_update_mapped_list(h, 2, 0, kGuest), 0);
    EXPECT_EQ(guest(), "0,0");
}

TEST_F(SsidList, UpdateBeyondTheEntriesKeepsTheNewPosition) {
    set_guest("5,6");
    EXPECT_EQ(qvs_wlan_update_mapped_list(h, 5, 9, kGuest), 0);
    EXPECT_EQ(guest(), "5,6,0,0,9");
}

TEST_F(SsidList, UpdateOfAnEmptyListFails) {
    EXPECT_EQ(qvs_wlan_update_mapped_list(h, 1, 4, kGuest), -1);
    EXPECT_EQ(guest(), "");
    EXPECT_EQ(effects(), Lines{});
}

TEST_F(SsidList, UpdateRefusesBadPositionsAndSelectors) {
    set_guest("5,6");
    EXPECT_EQ(qvs_wlan_update_mapped_list(h, 0, 4, kGuest), -1);
    EXPECT_EQ(qvs_wlan_update_mapped_list(h, 17, 4, kGuest), -1);
    EXPECT_EQ(qvs_wlan_update_mapped_list(h, 1, 4, 0x40000), -1);
    EXPECT_EQ(qvs_wlan_update_mapped_list(0, 1, 4, kGuest), -1);
    EXPECT_EQ(guest(), "5,6");
    EXPECT_EQ(effects(), Lines{});
}

TEST_F(SsidList, UpdateReturnsTheStoresWriteResult) {
    set_guest("5,6");
    fault("write X_QV_GuestSSID_Map");
    EXPECT_LT(qvs_wlan_update_mapped_list(h, 1, 0, kGuest), 0);
    EXPECT_EQ(guest(), "5,6");
    EXPECT_EQ(count_kind("save"), 0);
}

TEST_F(SsidList, UpdateWithAMissingCommonObjectFails) {
    set_guest("5,6");
    fault("object 389");
    EXPECT_EQ(qvs_wlan_update_mapped_list(h, 1, 0, kGuest), -1);
    EXPECT_EQ(effects(), Lines{});
}

}  // namespace
