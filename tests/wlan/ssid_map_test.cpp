// SPDX-License-Identifier: MIT
// The external-to-internal SSID map and the conversions between numberings.
#include <cstring>

#include "wlan_fixture.hpp"

using namespace wlantest;

namespace {

class SsidMap : public WlanTest {};

// ---- reading the map ---------------------------------------------------

TEST_F(SsidMap, ReadsEveryNumberWithRoomSixteen) {
    set_map("1,9,2");
    uint8_t table[16];
    std::memset(table, 0xee, sizeof table);
    int count = 16;
    EXPECT_EQ(qvs_wlan_get_ssid_map(h, table, &count), 0);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(table[0], 1);
    EXPECT_EQ(table[1], 9);
    EXPECT_EQ(table[2], 2);
    EXPECT_EQ(table[3], 0xee);  // only the entries read are stored
    EXPECT_EQ(effects(), Lines{});
    EXPECT_EQ(logs(), Lines{});
}

TEST_F(SsidMap, TwoNumbersGiveTwoEntries) {
    set_map("1,9");
    uint8_t table[16] = {};
    int count = 16;
    EXPECT_EQ(qvs_wlan_get_ssid_map(h, table, &count), 0);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(table[0], 1);
    EXPECT_EQ(table[1], 9);
}

TEST_F(SsidMap, SixteenNumbersFillTheTable) {
    set_map("1,9,2,10,3,11,4,12,5,13,6,14,7,15,8,16");
    uint8_t table[16] = {};
    int count = 16;
    EXPECT_EQ(qvs_wlan_get_ssid_map(h, table, &count), 0);
    EXPECT_EQ(count, 16);
    const uint8_t want[16] = {1, 9, 2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15, 8, 16};
    EXPECT_EQ(std::memcmp(table, want, 16), 0);
}

TEST_F(SsidMap, NumbersBeyondTheRoomAreIgnored) {
    set_map("1,9,2,10,3");
    uint8_t table[16] = {};
    int count = 2;
    EXPECT_EQ(qvs_wlan_get_ssid_map(h, table, &count), 0);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(table[0], 1);
    EXPECT_EQ(table[1], 9);
    EXPECT_EQ(table[2], 0);
}

TEST_F(SsidMap, NumbersAreStoredAsBytes) {
    set_map("257,9,x");
    uint8_t table[16] = {};
    int count = 16;
    EXPECT_EQ(qvs_wlan_get_ssid_map(h, table, &count), 0);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(table[0], 1);  // 257 modulo 256
    EXPECT_EQ(table[1], 9);
    EXPECT_EQ(table[2], 0);  // not a number
}

TEST_F(SsidMap, EmptySeparatorsAreSkippedByTheTokenizer) {
    set_map(",1,,9,");
    uint8_t table[16] = {};
    int count = 16;
    EXPECT_EQ(qvs_wlan_get_ssid_map(h, table, &count), 0);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(table[0], 1);
    EXPECT_EQ(table[1], 9);
}

TEST_F(SsidMap, ZeroHandleGivesMinus22WithoutTouchingTheStore) {
    set_map("1,9");
    uint8_t table[16] = {};
    int count = 16;
    EXPECT_EQ(qvs_wlan_get_ssid_map(0, table, &count), -22);
    EXPECT_EQ(count, 16);
    EXPECT_EQ(journal().size(), 0u);
}

TEST_F(SsidMap, MissingCommonObjectGivesMinus1003) {
    set_map("1,9");
    fault("object 389");
    uint8_t table[16] = {};
    int count = 16;
    EXPECT_EQ(qvs_wlan_get_ssid_map(h, table, &count), -1003);
    EXPECT_EQ(count, 16);
    EXPECT_EQ(table[0], 0);
}

TEST_F(SsidMap, EmptyTextGivesMinus1000AndKeepsTheCount) {
    set_map("");
    uint8_t table[16] = {};
    int count = 16;
    EXPECT_EQ(qvs_wlan_get_ssid_map(h, table, &count), -1000);
    EXPECT_EQ(count, 16);
}

TEST_F(SsidMap, OnlySeparatorsGiveMinus1000) {
    set_map(",,,");
    uint8_t table[16] = {};
    int count = 16;
    EXPECT_EQ(qvs_wlan_get_ssid_map(h, table, &count), -1000);
    EXPECT_EQ(count, 16);
}

TEST_F(SsidMap, NoRoomGivesMinus1000AndKeepsTheCount) {
    set_map("1,9");
    uint8_t table[16] = {};
    int count = 0;
    EXPECT_EQ(qvs_wlan_get_ssid_map(h, table, &count), -1000);
    EXPECT_EQ(count, 0);
    count = -3;
    EXPECT_EQ(qvs_wlan_get_ssid_map(h, table, &count), -1000);
    EXPECT_EQ(count, -3);
    EXPECT_EQ(table[0], 0);
}

// ---- external to internal ------------------------------------------------

TEST_F(SsidMap, ExternalToInternal) {
    set_map("1,9,2");
    EXPECT_EQ(qvs_wlan_get_internal_ssididx_by_ext_ssididx(h, 1), 1);
    EXPECT_EQ(qvs_wlan_get_internal_ssididx_by_ext_ssididx(h, 2), 9);
    EXPECT_EQ(qvs_wlan_get_internal_ssididx_by_ext_ssididx(h, 3), 2);
    EXPECT_EQ(effects(), Lines{});
}

TEST_F(SsidMap, ExternalBeyondTheEntriesReadGivesMinus1) {
    set_map("1,9");
    EXPECT_EQ(qvs_wlan_get_internal_ssididx_by_ext_ssididx(h, 3), -1);
    set_map(map16({1, 9}));
    EXPECT_EQ(qvs_wlan_get_internal_ssididx_by_ext_ssididx(h, 16), 0);
    EXPECT_EQ(qvs_wlan_get_internal_ssididx_by_ext_ssididx(h, 17), -1);
}

TEST_F(SsidMap, FreeExternalIndexGivesZero) {
    set_map("1,0,9");
    EXPECT_EQ(qvs_wlan_get_internal_ssididx_by_ext_ssididx(h, 2), 0);
}

TEST_F(SsidMap, ExternalBelowOneGivesMinus1) {
    set_map(map16({1, 9}));
    EXPECT_EQ(qvs_wlan_get_internal_ssididx_by_ext_ssididx(h, 0), -1);
    EXPECT_EQ(qvs_wlan_get_internal_ssididx_by_ext_ssididx(h, -1), -1);
}

TEST_F(SsidMap, ExternalToInternalFailsWhenTheMapCannotBeRead) {
    set_map("");
    EXPECT_EQ(qvs_wlan_get_internal_ssididx_by_ext_ssididx(h, 1), -1);
    set_map("1,9");
    EXPECT_EQ(qvs_wlan_get_internal_ssididx_by_ext_ssididx(0, 1), -1);
    fault("object 389");
    EXPECT_EQ(qvs_wlan_get_internal_ssididx_by_ext_ssididx(h, 1), -1);
}

// ---- internal to external ------------------------------------------------

TEST_F(SsidMap, InternalToExternal) {
    set_map(map16({1, 9, 2}));
    EXPECT_EQ(qvs_wlan_get_ext_ssididx_by_internal_ssididx(h, 1), 1);
    EXPECT_EQ(qvs_wlan_get_ext_ssididx_by_internal_ssididx(h, 9), 2);
    EXPECT_EQ(qvs_wlan_get_ext_ssididx_by_internal_ssididx(h, 2), 3);
    EXPECT_EQ(qvs_wlan_get_ext_ssididx_by_internal_ssididx(h, 16), -1);
    EXPECT_EQ(effects(), Lines{});
}

TEST_F(SsidMap, InternalOutsideOneToSixteenGivesMinus1) {
    set_map(map16({1, 9, 17}));
    EXPECT_EQ(qvs_wlan_get_ext_ssididx_by_internal_ssididx(h, 0), -1);
    EXPECT_EQ(qvs_wlan_get_ext_ssididx_by_internal_ssididx(h, 17), -1);
    EXPECT_EQ(qvs_wlan_get_ext_ssididx_by_internal_ssididx(h, -1), -1);
}

TEST_F(SsidMap, InternalMappedTwiceGivesTheFirstExternal) {
    set_map("0,4,7,4");
    EXPECT_EQ(qvs_wlan_get_ext_ssididx_by_internal_ssididx(h, 4), 2);
}

TEST_F(SsidMap, UnmappedInternalGivesMinus1) {
    set_map("1,9,2");
    EXPECT_EQ(qvs_wlan_get_ext_ssididx_by_internal_ssididx(h, 5), -1);
    EXPECT_EQ(qvs_wlan_get_ext_ssididx_by_internal_ssididx(h, 10), -1);
}

TEST_F(SsidMap, InternalToExternalFailsWhenTheMapCannotBeRead) {
    set_map("");
    EXPECT_EQ(qvs_wlan_get_ext_ssididx_by_internal_ssididx(h, 1), -1);
    set_map("1,9");
    EXPECT_EQ(qvs_wlan_get_ext_ssididx_by_internal_ssididx(0, 1), -1);
    fault("object 389");
    EXPECT_EQ(qvs_wlan_get_ext_ssididx_by_internal_ssididx(h, 1), -1);
}

// ---- ubus to external: the ubus number is an internal index value -------

TEST_F(SsidMap, UbusToExternalFindsTheExternalIndexMappingToIt) {
    set_map(map16({1, 9, 2}));
    EXPECT_EQ(qvs_wlan_get_ssididx_by_ubus_ssididx(h, 9), 2);
    EXPECT_EQ(qvs_wlan_get_ssididx_by_ubus_ssididx(h, 2), 3);
    EXPECT_EQ(qvs_wlan_get_ssididx_by_ubus_ssididx(h, 1), 1);
}

TEST_F(SsidMap, UbusToExternalGivesZeroWhenValidButUnmapped) {
    set_map(map16({1, 9, 2}));
    EXPECT_EQ(qvs_wlan_get_ssididx_by_ubus_ssididx(h, 3), 0);
    EXPECT_EQ(qvs_wlan_get_ssididx_by_ubus_ssididx(h, 16), 0);
}

TEST_F(SsidMap, UbusToExternalChecksTheCountAgainstTheUbusNumber) {
    set_map("1,9,2");
    EXPECT_EQ(qvs_wlan_get_ssididx_by_ubus_ssididx(h, 3), 0);   // 3 entries: valid, not mapped
    EXPECT_EQ(qvs_wlan_get_ssididx_by_ubus_ssididx(h, 9), -1);  // 3 entries, fewer than 9
    EXPECT_EQ(qvs_wlan_get_ssididx_by_ubus_ssididx(h, 0), -1);
    EXPECT_EQ(qvs_wlan_get_ssididx_by_ubus_ssididx(h, -2), -1);
}

TEST_F(SsidMap, UbusToExternalFailsWhenTheMapCannotBeRead) {
    set_map("");
    EXPECT_EQ(qvs_wlan_get_ssididx_by_ubus_ssididx(h, 1), -1);
    set_map(map16({1, 9}));
    EXPECT_EQ(qvs_wlan_get_ssididx_by_ubus_ssididx(0, 1), -1);
    fault("object 389");
    EXPECT_EQ(qvs_wlan_get_ssididx_by_ubus_ssididx(h, 1), -1);
}

// ---- ubus to internal: the ubus number is a zero-based external position -

TEST_F(SsidMap, UbusToInternalReadsTheZeroBasedPosition) {
    set_map(map16({1, 9, 2}));
    EXPECT_EQ(qvs_wlan_get_internal_ssididx_by_ubus(h, 1), 9);
    EXPECT_EQ(qvs_wlan_get_internal_ssididx_by_ubus(h, 2), 2);
    EXPECT_EQ(qvs_wlan_get_internal_ssididx_by_ubus(h, 3), 0);
}

TEST_F(SsidMap, UbusToInternalPastTheTableReadsZero) {
    set_map("1,9,2,10,3,11,4,12,5,13,6,14,7,15,8,16");
    EXPECT_EQ(qvs_wlan_get_internal_ssididx_by_ubus(h, 15), 16);
    EXPECT_EQ(qvs_wlan_get_internal_ssididx_by_ubus(h, 16), 0);
    EXPECT_EQ(qvs_wlan_get_internal_ssididx_by_ubus(h, 17), -1);
}

TEST_F(SsidMap, UbusToInternalChecksLikeExternalToInternal) {
    set_map("1,9");
    EXPECT_EQ(qvs_wlan_get_internal_ssididx_by_ubus(h, 2), 0);  // count 2 is not less than 2
    EXPECT_EQ(qvs_wlan_get_internal_ssididx_by_ubus(h, 3), -1);
    EXPECT_EQ(qvs_wlan_get_internal_ssididx_by_ubus(h, 0), -1);
    EXPECT_EQ(qvs_wlan_get_internal_ssididx_by_ubus(0, 1), -1);
    set_map("");
    EXPECT_EQ(qvs_wlan_get_internal_ssididx_by_ubus(h, 1), -1);
}

// ---- radios --------------------------------------------------------------

TEST(SsidRadio, InternalIndexToRadio) {
    for (int i = 1; i <= 8; ++i) EXPECT_EQ(qvs_wlan_internal_ssididx_to_radioidx(i), 1) << i;
    for (int i = 9; i <= 16; ++i) EXPECT_EQ(qvs_wlan_internal_ssididx_to_radioidx(i), 2) << i;
    EXPECT_EQ(qvs_wlan_internal_ssididx_to_radioidx(0), 1);
    EXPECT_EQ(qvs_wlan_internal_ssididx_to_radioidx(17), 1);
    EXPECT_EQ(qvs_wlan_internal_ssididx_to_radioidx(-1), 1);
}

TEST(SsidRadio, StationInterfaceToRadio) {
    EXPECT_EQ(qvs_wlan_internal_staidx_to_radioidx(1), 2);
    EXPECT_EQ(qvs_wlan_internal_staidx_to_radioidx(0), 1);
    EXPECT_EQ(qvs_wlan_internal_staidx_to_radioidx(2), 1);
    EXPECT_EQ(qvs_wlan_internal_staidx_to_radioidx(9), 1);
}

TEST(SsidRadio, DualBandIsAlwaysSupported) { EXPECT_EQ(qvs_wlan_get_dual_bandsupport(), 1); }

// ---- band of an external index (attaches by itself) ----------------------

TEST_F(SsidMap, BandIsOneForRadioOneAndZeroForRadioTwo) {
    set_map(map16({1, 9, 8, 16}));
    EXPECT_EQ(qvs_wlan_get_ssid_band(1), 1);
    EXPECT_EQ(qvs_wlan_get_ssid_band(2), 0);
    EXPECT_EQ(qvs_wlan_get_ssid_band(3), 1);
    EXPECT_EQ(qvs_wlan_get_ssid_band(4), 0);
    EXPECT_EQ(count_kind("attach"), 4);
    EXPECT_EQ(count_kind("detach"), 4);
    EXPECT_EQ(effects().size(), 8u);  // attach and detach, nothing else
    EXPECT_EQ(logs(), Lines{});
}

TEST_F(SsidMap, BandOfAnUnknownIndexIsRadioOne) {
    set_map("1,9");
    EXPECT_EQ(qvs_wlan_get_ssid_band(3), 1);   // conversion fails: -1 lies on radio 1
    EXPECT_EQ(qvs_wlan_get_ssid_band(0), 1);
    EXPECT_EQ(count_kind("attach"), 2);
    EXPECT_EQ(count_kind("detach"), 2);
}

TEST_F(SsidMap, BandIsZeroWhenTheStoreCannotBeAttached) {
    set_map(map16({1, 9}));
    fault("attach");
    EXPECT_EQ(qvs_wlan_get_ssid_band(1), 0);
    EXPECT_EQ(count_kind("detach"), 0);
    EXPECT_EQ(count_kind("set"), 0);
    EXPECT_EQ(logs(), Lines{log_line("qvs_wlan_get_ssid_band", 1, "XMLSHMINIT fail\\n")});
}

}  // namespace
