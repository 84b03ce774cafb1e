// SPDX-License-Identifier: MIT
// Adding and deleting SSIDs, and the map writer behind them.
#include "wlan_fixture.hpp"

using namespace wlantest;

namespace {

const char kSearch[] = "get_next_free_internal_idx";
const char kWriter[] = "change_ssid_map";

class AddDel : public WlanTest {
protected:
    static std::string enable_set(int idx) { return set_line(kSsid, inst(idx), "Enable", kBool, "0"); }
    static std::string new_map_log(const std::string &text) { return log_line(kWriter, 1, "new ssid_map=" + text); }
};

// ---- adding ---------------------------------------------------------------

TEST_F(AddDel, AddOnTheFiveGigahertzRadioPicksTheFirstFreeSlot) {
    set_map(map16({1, 9, 2}));
    EXPECT_EQ(qvs_wlan_add_ssid(h, 4, 0), 0);
    EXPECT_EQ(map_text(), map16({1, 9, 2, 3}));
    EXPECT_EQ(logs(), (Lines{log_line(kSearch, 1, "get next 5G free internal index=3\\n"),
                             new_map_log(map16({1, 9, 2, 3}))}));
    EXPECT_EQ(effects(), Lines{map_set(map16({1, 9, 2, 3}))});  // not saved, not enabled
}

TEST_F(AddDel, AddOnTheTwoPointFourGigahertzRadioSearchesNineToSixteen) {
    set_map(map16({1, 9, 2}));
    EXPECT_EQ(qvs_wlan_add_ssid(h, 4, 7), 0);
    EXPECT_EQ(map_text(), map16({1, 9, 2, 10}));
    EXPECT_EQ(logs(), (Lines{log_line(kSearch, 1, "get next 2.4G free internal index=10\\n"),
                             new_map_log(map16({1, 9, 2, 10}))}));
    EXPECT_EQ(effects(), Lines{map_set(map16({1, 9, 2, 10}))});
}

TEST_F(AddDel, AddWritesTheMapAsSixteenNumbers) {
    set_map("1,9");
    EXPECT_EQ(qvs_wlan_get_internal_ssididx_by_ext_ssididx(h, 3), -1);
    EXPECT_EQ(qvs_wlan_add_ssid(h, 3, 0), 0);
    EXPECT_EQ(map_text(), "1,9,2,0,0,0,0,0,0,0,0,0,0,0,0,0");
    EXPECT_EQ(qvs_wlan_get_internal_ssididx_by_ext_ssididx(h, 3), 2);
}

TEST_F(AddDel, AddSkipsAReservedSlotEvenWhenUnmapped) {
    set_map(map16({1, 9, 2}));
    set_bitmap(3, 0x80000);
    set_bitmap(4, 0x40000 | 0x20000);  // other marks do not reserve
    EXPECT_EQ(qvs_wlan_add_ssid(h, 4, 0), 0);
    EXPECT_EQ(map_text(), map16({1, 9, 2, 4}));
    EXPECT_EQ(logs()[0], log_line(kSearch, 1, "get next 5G free internal index=4\\n"));
}

TEST_F(AddDel, AddOverwritesAnExistingExternalEntry) {
    set_map(map16({1, 9, 2}));
    EXPECT_EQ(qvs_wlan_add_ssid(h, 3, 1), 0);
    EXPECT_EQ(map_text(), map16({1, 9, 10}));
}

TEST_F(AddDel, AddWithTheRadioFullFails) {
    set_map(map16({1, 9, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(qvs_wlan_add_ssid(h, 10, 0), -1);
    EXPECT_EQ(logs(), Lines{log_line(kSearch, 1, "there is no free internal index\\n")});
    EXPECT_EQ(effects(), Lines{});
    EXPECT_EQ(map_text(), map16({1, 9, 2, 3, 4, 5, 6, 7, 8}));
}

TEST_F(AddDel, AddWithEverySlotReservedFails) {
    set_map(map16({1}));
    for (int i = 9; i <= 16; ++i) set_bitmap(i, 0x80000);
    EXPECT_EQ(qvs_wlan_add_ssid(h, 2, 1), -1);
    EXPECT_EQ(logs(), Lines{log_line(kSearch, 1, "there is no free internal index\\n")});
    EXPECT_EQ(effects(), Lines{});
}

TEST_F(AddDel, AddKeepsTheLastBitmapReadOverAFailedRead) {
    set_map(map16({1}));
    set_bitmap(2, 0x80000);
    fault("read X_QV_SSID_Bitmap after 1");
    // slot 2 is reserved; slots 3 to 8 cannot be read and keep slot 2's value
    EXPECT_EQ(qvs_wlan_add_ssid(h, 2, 0), -1);
    EXPECT_EQ(logs(), Lines{log_line(kSearch, 1, "there is no free internal index\\n")});
}

TEST_F(AddDel, AddWithFailingReadsFromTheStartTakesTheFirstUnmappedSlot) {
    set_map(map16({9}));
    fault("read X_QV_SSID_Bitmap");
    set_bitmap(10, 0x80000);
    EXPECT_EQ(qvs_wlan_add_ssid(h, 2, 1), 0);  // the value stays 0
    EXPECT_EQ(map_text(), map16({9, 10}));
}

TEST_F(AddDel, AddWithAnUnreadableMapFailsInTheWriter) {
    set_map("");
    EXPECT_EQ(qvs_wlan_add_ssid(h, 1, 0), -1);
    EXPECT_EQ(logs(), (Lines{log_line(kSearch, 1, "get next 5G free internal index=1\\n"),
                             log_line(kWriter, 1, "get wlan ssid map fail.\\n")}));
    EXPECT_EQ(effects(), Lines{});
    EXPECT_EQ(map_text(), "");
}

TEST_F(AddDel, AddWithAMissingCommonObjectFailsInTheWriter) {
    set_map(map16({1, 9}));
    fault("object 389");
    EXPECT_EQ(qvs_wlan_add_ssid(h, 3, 1), -1);
    EXPECT_EQ(logs(), (Lines{log_line(kSearch, 1, "get next 2.4G free internal index=9\\n"),
                             log_line(kWriter, 1, "get wlan ssid map fail.\\n")}));
    EXPECT_EQ(effects(), Lines{});
}

TEST_F(AddDel, AddWithoutAParameterListFails) {
    set_map(map16({1, 9}));
    fault("paramlist");
    EXPECT_EQ(qvs_wlan_add_ssid(h, 3, 0), -1);
    EXPECT_EQ(logs(), (Lines{log_line(kSearch, 1, "get next 5G free internal index=2\\n"),
                             new_map_log(map16({1, 9, 2}))}));
    EXPECT_EQ(effects(), Lines{});
    EXPECT_EQ(map_text(), map16({1, 9}));
}

TEST_F(AddDel, AddIgnoresTheStoresWriteResult) {
    set_map(map16({1, 9}));
    fault("write X_QV_External_SSID_Map");
    EXPECT_EQ(qvs_wlan_add_ssid(h, 3, 0), 0);
    EXPECT_EQ(map_text(), map16({1, 9}));
}

TEST_F(AddDel, AddWithAnExternalIndexOutsideTheMapOnlyRewritesIt) {
    set_map("1,9");
    EXPECT_EQ(qvs_wlan_add_ssid(h, 17, 0), 0);
    EXPECT_EQ(map_text(), map16({1, 9}));
    EXPECT_EQ(qvs_wlan_add_ssid(h, 0, 0), 0);
    EXPECT_EQ(map_text(), map16({1, 9}));
}

TEST_F(AddDel, AddWithAZeroHandle) {
    set_map(map16({1, 9}));
    EXPECT_EQ(qvs_wlan_add_ssid(0, 3, 0), -1);
    EXPECT_EQ(journal().size(), 0u);
}

// ---- deleting by external index ---------------------------------------------

TEST_F(AddDel, DeleteDisablesAndFreesTheExternalIndex) {
    set_map(map16({1, 9, 2, 10}));
    EXPECT_EQ(qvs_wlan_del_ssid(h, 3), 0);
    EXPECT_EQ(map_text(), map16({1, 9, 0, 10}));
    EXPECT_EQ(get(kSsid, "2", "Enable"), "0");
    EXPECT_EQ(get(kSsid, "10", "Enable"), "1");
    EXPECT_EQ(effects(), (Lines{enable_set(2), map_set(map16({1, 9, 0, 10}))}));  // not saved
    EXPECT_EQ(logs(), Lines{new_map_log(map16({1, 9, 0, 10}))});
}

TEST_F(AddDel, DeleteOfTheFirstSsidOfEitherRadioIsRefusedAsSuccess) {
    set_map(map16({1, 9, 2}));
    EXPECT_EQ(qvs_wlan_del_ssid(h, 1), 0);
    EXPECT_EQ(qvs_wlan_del_ssid(h, 2), 0);
    EXPECT_EQ(map_text(), map16({1, 9, 2}));
    EXPECT_EQ(get(kSsid, "1", "Enable"), "1");
    EXPECT_EQ(get(kSsid, "9", "Enable"), "1");
    EXPECT_EQ(effects(), Lines{});
    EXPECT_EQ(logs(), (Lines{log_line("qvs_wlan_del_ssid", 1,
                                      "The first 2.4G/5G ssid can not be removed internal_ssid_index=1\\n"),
                             log_line("qvs_wlan_del_ssid", 1,
                                      "The first 2.4G/5G ssid can not be removed internal_ssid_index=9\\n")}));
}

TEST_F(AddDel, DeleteOfAFreeOrUnknownExternalIndexFails) {
    set_map("1,9,0");
    EXPECT_EQ(qvs_wlan_del_ssid(h, 3), -1);   // free
    EXPECT_EQ(qvs_wlan_del_ssid(h, 4), -1);   // beyond the entries
    EXPECT_EQ(qvs_wlan_del_ssid(h, 0), -1);
    EXPECT_EQ(qvs_wlan_del_ssid(0, 2), -1);
    set_map("");
    EXPECT_EQ(qvs_wlan_del_ssid(h, 1), -1);
    EXPECT_EQ(effects(), Lines{});
    EXPECT_EQ(logs(), Lines{});
}

TEST_F(AddDel, DeleteIgnoresFailedStoreWrites) {
    set_map(map16({1, 9, 2}));
    fault("write");
    EXPECT_EQ(qvs_wlan_del_ssid(h, 3), 0);
    EXPECT_EQ(map_text(), map16({1, 9, 2}));
    EXPECT_EQ(get(kSsid, "2", "Enable"), "1");
    EXPECT_EQ(count_kind("set"), 0);
}

TEST_F(AddDel, DeleteWithoutAParameterListFailsAfterDisabling) {
    set_map(map16({1, 9, 2}));
    fault("paramlist");
    EXPECT_EQ(qvs_wlan_del_ssid(h, 3), -1);
    EXPECT_EQ(get(kSsid, "2", "Enable"), "0");
    EXPECT_EQ(effects(), Lines{enable_set(2)});
}

// ---- deleting by ubus index ---------------------------------------------------

TEST_F(AddDel, DeleteByUbusDisablesThatSlotAndFreesItsExternalIndex) {
    set_map(map16({1, 9, 2, 3}));
    EXPECT_EQ(qvs_wlan_del_ssid_by_ubus(h, 3), 0);
    EXPECT_EQ(get(kSsid, "3", "Enable"), "0");
    EXPECT_EQ(map_text(), map16({1, 9, 2, 0}));
    EXPECT_EQ(effects(), (Lines{enable_set(3), map_set(map16({1, 9, 2}))}));
    EXPECT_EQ(logs(), Lines{new_map_log(map16({1, 9, 2}))});
}

TEST_F(AddDel, DeleteByUbusOfTheFirstSsidsIsRefusedAsSuccess) {
    set_map(map16({1, 9, 2}));
    EXPECT_EQ(qvs_wlan_del_ssid_by_ubus(h, 9), 0);
    EXPECT_EQ(qvs_wlan_del_ssid_by_ubus(h, 1), 0);
    EXPECT_EQ(map_text(), map16({1, 9, 2}));
    EXPECT_EQ(get(kSsid, "9", "Enable"), "1");
    EXPECT_EQ(effects(), Lines{});
    EXPECT_EQ(logs(), (Lines{log_line("qvs_wlan_del_ssid_by_ubus", 1,
                                      "The first 2.4G/5G ssid can not be removed internal_ssid_index=9\\n"),
                             log_line("qvs_wlan_del_ssid_by_ubus", 1,
                                      "The first 2.4G/5G ssid can not be removed internal_ssid_index=1\\n")}));
}

TEST_F(AddDel, DeleteByUbusOfAnUnmappedSlotOnlyRewritesTheMap) {
    set_map(map16({1, 9, 2}));
    EXPECT_EQ(qvs_wlan_del_ssid_by_ubus(h, 5), 0);
    EXPECT_EQ(get(kSsid, "5", "Enable"), "0");
    EXPECT_EQ(map_text(), map16({1, 9, 2}));
    EXPECT_EQ(effects(), (Lines{enable_set(5), map_set(map16({1, 9, 2}))}));
}

TEST_F(AddDel, DeleteByUbusWhenTheConversionFailsWritesSixteenNumbers) {
    set_map("1,9,2");  // 3 entries: ubus 5 cannot be converted
    EXPECT_EQ(qvs_wlan_del_ssid_by_ubus(h, 5), 0);
    EXPECT_EQ(get(kSsid, "5", "Enable"), "0");
    EXPECT_EQ(map_text(), map16({1, 9, 2}));
    EXPECT_EQ(effects(), (Lines{enable_set(5), map_set(map16({1, 9, 2}))}));
}

TEST_F(AddDel, DeleteByUbusFailsWithoutAMap) {
    set_map("");
    EXPECT_EQ(qvs_wlan_del_ssid_by_ubus(h, 3), -1);
    EXPECT_EQ(effects(), Lines{enable_set(3)});
    EXPECT_EQ(logs(), Lines{log_line(kWriter, 1, "get wlan ssid map fail.\\n")});
}

TEST_F(AddDel, DeleteByUbusRefusesIndicesBelowOneAndAZeroHandle) {
    set_map(map16({1, 9, 2}));
    EXPECT_EQ(qvs_wlan_del_ssid_by_ubus(h, 0), -1);
    EXPECT_EQ(qvs_wlan_del_ssid_by_ubus(h, -4), -1);
    EXPECT_EQ(qvs_wlan_del_ssid_by_ubus(0, 3), -1);
    EXPECT_EQ(journal().size(), 0u);
}

}  // namespace
