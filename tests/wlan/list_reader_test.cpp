// SPDX-License-Identifier: MIT
// The shared/guest list reader itself, for the selector check that the
// exported list functions never reach (they pass fixed selectors).
#include "wlan/ssid_map.hpp"
#include "wlan_fixture.hpp"

using namespace wlantest;

namespace {

class ListReader : public WlanTest {};

TEST_F(ListReader, UnknownSelectorGivesMinus1105AndKeepsTheCount) {
    set(kCommon, "", "X_QV_GuestSSID_Map", "3,4");
    set(kCommon, "", "X_QV_SharedSSID_Map", "5");
    uint8_t table[16] = {};
    int count = 16;
    EXPECT_EQ(qvs::wlan::get_mapped_ssid_list(h, table, &count, 0x30000), -1105);
    EXPECT_EQ(count, 16);
    count = 7;
    EXPECT_EQ(qvs::wlan::get_mapped_ssid_list(h, table, &count, 0), -1105);
    EXPECT_EQ(count, 7);
    EXPECT_EQ(table[0], 0);
    EXPECT_EQ(journal().size(), 0u);
}

TEST_F(ListReader, HandleAndObjectAreCheckedBeforeTheSelector) {
    uint8_t table[16] = {};
    int count = 16;
    EXPECT_EQ(qvs::wlan::get_mapped_ssid_list(0, table, &count, 0x30000), -22);
    EXPECT_EQ(count, 0);
    fault("object 389");
    count = 16;
    EXPECT_EQ(qvs::wlan::get_mapped_ssid_list(h, table, &count, 0x30000), -1003);
    EXPECT_EQ(count, 0);
}

TEST_F(ListReader, TheTwoSelectorsPickTheirLists) {
    set(kCommon, "", "X_QV_GuestSSID_Map", "3,4");
    set(kCommon, "", "X_QV_SharedSSID_Map", "5");
    uint8_t table[16] = {};
    int count = 16;
    EXPECT_EQ(qvs::wlan::get_mapped_ssid_list(h, table, &count, 0x10000), 0);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(table[0], 5);
    count = 16;
    EXPECT_EQ(qvs::wlan::get_mapped_ssid_list(h, table, &count, 0x20000), 0);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(table[0], 3);
    EXPECT_EQ(table[1], 4);
}

}  // namespace
