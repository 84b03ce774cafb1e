// SPDX-License-Identifier: MIT
// Guest SSID clean-up and the guest count per radio.
#include "wlan_fixture.hpp"

using namespace wlantest;

namespace {

class GuestSsid : public WlanTest {
protected:
    void SetUp() override {
        WlanTest::SetUp();
        if (HasFatalFailure()) return;
        set_map(map16({1, 9, 10, 2}));  // external 3 -> internal 10, external 4 -> internal 2
        seed_guest(10);
        seed_guest(2);
        qvsim_journal_clear();
    }
    static void seed_guest(int idx) {
        set(kSsid, inst(idx), "Enable", "1");
        set(kSsid, inst(idx), "X_QV_PortIsolation", "1");
        set(kSsid, inst(idx), "X_QV_Guest_Duration", "3600");
        set_bitmap(idx, 0x20000 | 0x1);
    }
    static void set_guest(const std::string &t) { set(kCommon, "", "X_QV_GuestSSID_Map", t); }
    static std::string guest() { return get(kCommon, "", "X_QV_GuestSSID_Map"); }
    static Lines teardown_sets(int idx, std::uint32_t bitmap_after) {
        return {set_line(kSsid, inst(idx), "X_QV_Guest_Duration", kU32, "0"),
                set_line(kSsid, inst(idx), "X_QV_PortIsolation", kBool, "0"),
                set_line(kSsid, inst(idx), "Enable", kBool, "0"), bitmap_set(idx, bitmap_after)};
    }
    static void expect_torn_down(int idx) {
        EXPECT_EQ(get(kSsid, inst(idx), "Enable"), "0");
        EXPECT_EQ(get(kSsid, inst(idx), "X_QV_PortIsolation"), "0");
        EXPECT_EQ(get(kSsid, inst(idx), "X_QV_Guest_Duration"), "0");
        EXPECT_EQ(bitmap(idx), 0x1u);
    }
};

// ---- clean-up ---------------------------------------------------------------

TEST_F(GuestSsid, CleanResetsTheSsidAndRemovesItFromTheGuestList) {
    set_guest("4,3,7");
    qvsim_journal_clear();
    EXPECT_EQ(qvs_wlan_clean_guest_ssid_conf_by_ext_ssididx(h, 3), 0);
    expect_torn_down(10);
    EXPECT_EQ(guest(), "4,0,7");
    Lines want = teardown_sets(10, 0x1);
    want.push_back(set_line(kCommon, "", "X_QV_GuestSSID_Map", kStr, "4,0,7"));
    EXPECT_EQ(effects(), want);  // never saved
    EXPECT_EQ(logs(), Lines{});
    // the other guest SSID is untouched
    EXPECT_EQ(bitmap(2), 0x20001u);
    EXPECT_EQ(get(kSsid, "2", "Enable"), "1");
}

TEST_F(GuestSsid, CleanRemovesOnlyTheFirstMatchingPosition) {
    set_guest("1,3,3");
    EXPECT_EQ(qvs_wlan_clean_guest_ssid_conf_by_ext_ssididx(h, 3), 0);
    EXPECT_EQ(guest(), "1,0,3");
}

TEST_F(GuestSsid, CleanRemovesAnEntryAtTheFifteenthPosition) {
    set_guest("11,12,13,14,15,16,17,18,19,20,21,22,23,24,4,25");
    EXPECT_EQ(qvs_wlan_clean_guest_ssid_conf_by_ext_ssididx(h, 4), 0);
    expect_torn_down(2);
    EXPECT_EQ(guest(), "11,12,13,14,15,16,17,18,19,20,21,22,23,24,0,25");
}

TEST_F(GuestSsid, CleanNeverRemovesAnEntryAtTheSixteenthPosition) {
    const std::string list = "11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,3";
    set_guest(list);
    qvsim_journal_clear();
    EXPECT_EQ(qvs_wlan_clean_guest_ssid_conf_by_ext_ssididx(h, 3), 0);
    expect_torn_down(10);  // the SSID is reset all the same
    EXPECT_EQ(guest(), list);
    EXPECT_EQ(effects(), teardown_sets(10, 0x1));
}

TEST_F(GuestSsid, CleanOfAnSsidNotInTheListLeavesTheList) {
    set_guest("4,7");
    qvsim_journal_clear();
    EXPECT_EQ(qvs_wlan_clean_guest_ssid_conf_by_ext_ssididx(h, 3), 0);
    EXPECT_EQ(guest(), "4,7");
    EXPECT_EQ(effects(), teardown_sets(10, 0x1));
}

TEST_F(GuestSsid, CleanWithAnEmptyGuestList) {
    EXPECT_EQ(qvs_wlan_clean_guest_ssid_conf_by_ext_ssididx(h, 3), 0);
    expect_torn_down(10);
    EXPECT_EQ(guest(), "");
    EXPECT_EQ(effects(), teardown_sets(10, 0x1));
}

TEST_F(GuestSsid, CleanWithAMissingSsidObjectWritesNothing) {
    set_guest("3");
    fault("object 399");
    qvsim_journal_clear();
    EXPECT_EQ(qvs_wlan_clean_guest_ssid_conf_by_ext_ssididx(h, 3), 0);
    EXPECT_EQ(effects(), Lines{});
    qvsim_fault_clear();
    EXPECT_EQ(guest(), "3");
    EXPECT_EQ(bitmap(10), 0x20001u);
}

TEST_F(GuestSsid, CleanWithoutAParameterListWritesNothing) {
    set_guest("3");
    fault("paramlist");
    qvsim_journal_clear();
    EXPECT_EQ(qvs_wlan_clean_guest_ssid_conf_by_ext_ssididx(h, 3), 0);
    EXPECT_EQ(effects(), Lines{});
    EXPECT_EQ(guest(), "3");
}

TEST_F(GuestSsid, CleanOfAnUnmappedExternalIndexWritesNothing) {
    set_guest("9");
    qvsim_journal_clear();
    EXPECT_EQ(qvs_wlan_clean_guest_ssid_conf_by_ext_ssididx(h, 9), 0);  // external 9 is free
    EXPECT_EQ(effects(), Lines{});
    EXPECT_EQ(qvs_wlan_clean_guest_ssid_conf_by_ext_ssididx(h, 40), 0);  // beyond the map
    EXPECT_EQ(effects(), Lines{});
}

TEST_F(GuestSsid, CleanWithAFailedBitmapReadWritesAClearedBitmap) {
    set_guest("3");
    fault("read X_QV_SSID_Bitmap");
    qvsim_journal_clear();
    EXPECT_EQ(qvs_wlan_clean_guest_ssid_conf_by_ext_ssididx(h, 3), 0);
    EXPECT_EQ(bitmap(10), 0u);
    EXPECT_EQ(guest(), "0");
}

TEST_F(GuestSsid, CleanWithAZeroHandle) {
    set_guest("3");
    EXPECT_EQ(qvs_wlan_clean_guest_ssid_conf_by_ext_ssididx(0, 3), -1);
    EXPECT_EQ(journal().size(), 0u);
}

// ---- count per radio --------------------------------------------------------

TEST_F(GuestSsid, CountsGuestSsidsPerRadio) {
    set_bitmap(2, 0x20000);
    set_bitmap(3, 0x20001);
    set_bitmap(10, 0x60000);
    qvsim_journal_clear();
    for (int r : {-3, 0, 1, 2, 5, 8}) EXPECT_EQ(qvs_wlan_get_guest_ssid_count_per_radio(h, r), 2) << r;
    for (int r : {9, 10, 16, 17, 100}) EXPECT_EQ(qvs_wlan_get_guest_ssid_count_per_radio(h, r), 1) << r;
    EXPECT_EQ(effects(), Lines{});
    EXPECT_EQ(logs(), Lines{});
}

TEST_F(GuestSsid, CountsNothingWithoutGuestMarks) {
    set_bitmap(2, 0x40000);
    set_bitmap(10, 0x80000);
    EXPECT_EQ(qvs_wlan_get_guest_ssid_count_per_radio(h, 1), 0);
    EXPECT_EQ(qvs_wlan_get_guest_ssid_count_per_radio(h, 9), 0);
}

TEST_F(GuestSsid, CountsEveryGuestOfAFullRadio) {
    for (int i = 9; i <= 16; ++i) set_bitmap(i, 0x20000);
    set_bitmap(2, 0);
    EXPECT_EQ(qvs_wlan_get_guest_ssid_count_per_radio(h, 12), 8);
    EXPECT_EQ(qvs_wlan_get_guest_ssid_count_per_radio(h, 4), 0);
}

TEST_F(GuestSsid, AFailedReadCountsThePreviousIndexAgain) {
    set_bitmap(2, 0);
    set_bitmap(10, 0);
    set_bitmap(3, 0x20000);
    fault("read X_QV_SSID_Bitmap after 3");
    // indices 1 to 3 are read, 4 to 16 keep index 3's guest mark
    EXPECT_EQ(qvs_wlan_get_guest_ssid_count_per_radio(h, 1), 6);
    qvsim_fault_clear();
    fault("read X_QV_SSID_Bitmap after 3");
    EXPECT_EQ(qvs_wlan_get_guest_ssid_count_per_radio(h, 9), 8);
}

TEST_F(GuestSsid, CountWithAZeroHandle) {
    EXPECT_EQ(qvs_wlan_get_guest_ssid_count_per_radio(0, 1), -1);
    EXPECT_EQ(journal().size(), 0u);
}

}  // namespace
