// SPDX-License-Identifier: MIT
// Same-SSID merge, its cancellation and status.
#include <cstring>

#include "wlan_fixture.hpp"

using namespace wlantest;

namespace {

const char *const kWep[] = {"X_QV_WEPEncryptionLevel", "X_QV_WEPAuthMode", "WEPKey"};
const char *const kWpa[] = {"X_QV_EncryptionMode", "PreSharedKey", "KeyPassphrase", "SAEPassphrase"};

class SameSsid : public WlanTest {
protected:
    void SetUp() override {
        WlanTest::SetUp();
        if (HasFatalFailure()) return;
        set_map(map16({1, 9, 2, 10}));  // external 1..4 -> internal 1, 9, 2, 10
        for (int i : {1, 9, 2, 10}) seed_security(i, "s" + inst(i) + "-");
        set(kName, "1", "SSID", "home");
        set(kName, "9", "SSID", "home-24");
        qvsim_journal_clear();
    }
    static void seed_security(int idx, const std::string &prefix) {
        set(kSec, inst(idx), "ModeEnabled", "None");
        for (const char *p : kWep) set(kSec, inst(idx), p, prefix + p);
        for (const char *p : kWpa) set(kSec, inst(idx), p, prefix + p);
    }
    static std::string sec(int idx, const char *p) { return get(kSec, inst(idx), p); }
    static std::string name(int idx) { return get(kName, inst(idx), "SSID"); }
    static std::string sec_set(int idx, const char *p, const std::string &v) {
        return set_line(kSec, inst(idx), p, kStr, v);
    }
    static std::string name_set(int idx, const std::string &v) { return set_line(kName, inst(idx), "SSID", kStr, v); }
};

// ---- merging ---------------------------------------------------------------

TEST_F(SameSsid, MergeCopiesNameAndWpaSettingsFromFirstToSecond) {
    set(kSec, "1", "ModeEnabled", "WPA2-PSK");
    set_bitmap(1, 0x1);
    set_bitmap(9, 0x20000);
    qvsim_journal_clear();

    EXPECT_EQ(qvs_wlan_set_same_ssid(h, 1, 2), 0);

    EXPECT_EQ(bitmap(1), 0x40001u);
    EXPECT_EQ(bitmap(9), 0x60000u);
    EXPECT_EQ(name(9), "home");
    EXPECT_EQ(name(1), "home");
    EXPECT_EQ(sec(9, "ModeEnabled"), "WPA2-PSK");
    for (const char *p : kWpa) EXPECT_EQ(sec(9, p), std::string("s1-") + p) << p;
    for (const char *p : kWep) EXPECT_EQ(sec(9, p), std::string("s9-") + p) << p;  // untouched
    for (const char *p : kWpa) EXPECT_EQ(sec(1, p), std::string("s1-") + p) << p;

    Lines want = {bitmap_set(1, 0x40001), bitmap_set(9, 0x60000), name_set(9, "home"),
                  sec_set(9, "ModeEnabled", "WPA2-PSK")};
    for (const char *p : kWpa) want.push_back(sec_set(9, p, std::string("s1-") + p));
    want.push_back("save|noreply");
    EXPECT_EQ(effects(), want);
    EXPECT_EQ(logs(), Lines{});
}

TEST_F(SameSsid, MergeNeverCopiesTheOtherWay) {
    set(kSec, "9", "ModeEnabled", "WPA-WPA2-PSK");
    qvsim_journal_clear();
    EXPECT_EQ(qvs_wlan_set_same_ssid(h, 2, 1), 0);
    EXPECT_EQ(name(1), "home-24");
    EXPECT_EQ(name(9), "home-24");
    EXPECT_EQ(sec(1, "ModeEnabled"), "WPA-WPA2-PSK");
    for (const char *p : kWpa) EXPECT_EQ(sec(1, p), std::string("s9-") + p) << p;
    EXPECT_EQ(bitmap(9), 0x40000u);
    EXPECT_EQ(bitmap(1), 0x40000u);
}

TEST_F(SameSsid, MergeOfAnOpenNetworkCopiesOnlyTheMode) {
    set(kSec, "2", "ModeEnabled", "None");
    set(kSec, "10", "ModeEnabled", "WPA2-PSK");
    qvsim_journal_clear();
    EXPECT_EQ(qvs_wlan_set_same_ssid(h, 3, 4), 0);
    EXPECT_EQ(sec(10, "ModeEnabled"), "None");
    for (const char *p : kWpa) EXPECT_EQ(sec(10, p), std::string("s10-") + p) << p;
    for (const char *p : kWep) EXPECT_EQ(sec(10, p), std::string("s10-") + p) << p;
    EXPECT_EQ(effects(), (Lines{bitmap_set(2, 0x40000), bitmap_set(10, 0x40000), name_set(10, "net2"),
                                sec_set(10, "ModeEnabled", "None"), "save|noreply"}));
}

TEST_F(SameSsid, MergeOfAWepNetworkCopiesTheWepGroup) {
    set(kSec, "1", "ModeEnabled", "WEP-64");
    qvsim_journal_clear();
    EXPECT_EQ(qvs_wlan_set_same_ssid(h, 1, 3), 0);
    EXPECT_EQ(sec(2, "ModeEnabled"), "WEP-64");
    for (const char *p : kWep) EXPECT_EQ(sec(2, p), std::string("s1-") + p) << p;
    for (const char *p : kWpa) EXPECT_EQ(sec(2, p), std::string("s2-") + p) << p;
    Lines want = {bitmap_set(1, 0x40000), bitmap_set(2, 0x40000), name_set(2, "home"),
                  sec_set(2, "ModeEnabled", "WEP-64")};
    for (const char *p : kWep) want.push_back(sec_set(2, p, std::string("s1-") + p));
    want.push_back("save|noreply");
    EXPECT_EQ(effects(), want);
}

TEST_F(SameSsid, MergeOfAModeNamingBothCopiesWepFirstThenWpa) {
    set(kSec, "1", "ModeEnabled", "WEP-WPA");
    qvsim_journal_clear();
    EXPECT_EQ(qvs_wlan_set_same_ssid(h, 1, 2), 0);
    Lines want = {bitmap_set(1, 0x40000), bitmap_set(9, 0x40000), name_set(9, "home"),
                  sec_set(9, "ModeEnabled", "WEP-WPA")};
    for (const char *p : kWep) want.push_back(sec_set(9, p, std::string("s1-") + p));
    for (const char *p : kWpa) want.push_back(sec_set(9, p, std::string("s1-") + p));
    want.push_back("save|noreply");
    EXPECT_EQ(effects(), want);
}

TEST_F(SameSsid, MergeWithAMissingSourceNameObjectKeepsTheMarks) {
    fault("object 396 1");
    EXPECT_EQ(qvs_wlan_set_same_ssid(h, 1, 2), -1003);
    EXPECT_EQ(bitmap(1), 0x40000u);
    EXPECT_EQ(bitmap(9), 0x40000u);
    EXPECT_EQ(name(9), "home-24");
    EXPECT_EQ(effects(), (Lines{bitmap_set(1, 0x40000), bitmap_set(9, 0x40000)}));
}

TEST_F(SameSsid, MergeWithAMissingSourceSecurityObjectKeepsTheMarks) {
    fault("object 400 1");
    EXPECT_EQ(qvs_wlan_set_same_ssid(h, 1, 2), -1003);
    EXPECT_EQ(bitmap(1), 0x40000u);
    EXPECT_EQ(bitmap(9), 0x40000u);
    EXPECT_EQ(effects(), (Lines{bitmap_set(1, 0x40000), bitmap_set(9, 0x40000)}));
}

TEST_F(SameSsid, MergeWithoutAParameterListGivesMinus14) {
    fault("paramlist");
    EXPECT_EQ(qvs_wlan_set_same_ssid(h, 1, 2), -14);
    EXPECT_EQ(bitmap(1), 0x40000u);
    EXPECT_EQ(bitmap(9), 0x40000u);
    EXPECT_EQ(name(9), "home");
    EXPECT_EQ(effects(), (Lines{bitmap_set(1, 0x40000), bitmap_set(9, 0x40000), name_set(9, "home")}));
}

TEST_F(SameSsid, MergeWithAMissingTargetSecurityObjectIsNotSaved) {
    fault("object 400 9");
    EXPECT_EQ(qvs_wlan_set_same_ssid(h, 1, 2), -1003);
    EXPECT_EQ(effects(), (Lines{bitmap_set(1, 0x40000), bitmap_set(9, 0x40000), name_set(9, "home")}));
}

TEST_F(SameSsid, MergeMarksFromAClearedValueWhenTheBitmapReadFails) {
    set_bitmap(1, 0x3);
    fault("read X_QV_SSID_Bitmap");
    qvsim_journal_clear();
    EXPECT_EQ(qvs_wlan_set_same_ssid(h, 1, 2), 0);
    EXPECT_EQ(bitmap(1), 0x40000u);
    EXPECT_EQ(bitmap(9), 0x40000u);
}

TEST_F(SameSsid, MergeFromAnUnmappedSourceMarksOnlyTheTarget) {
    EXPECT_EQ(qvs_wlan_set_same_ssid(h, 7, 2), -1003);  // external 7 is free
    EXPECT_EQ(bitmap(9), 0x40000u);
    EXPECT_EQ(effects(), Lines{bitmap_set(9, 0x40000)});
    qvsim_journal_clear();
    EXPECT_EQ(qvs_wlan_set_same_ssid(h, 20, 2), -1003);  // beyond the map
    EXPECT_EQ(effects(), Lines{bitmap_set(9, 0x40000)});
}

TEST_F(SameSsid, MergeCopiesFullLengthNamesAndKeys) {
    const std::string name32 = "abcdefghijklmnopqrstuvwxyz012345";
    const std::string psk64(64, 'f');
    const std::string pass63(63, 'p');
    set(kName, "1", "SSID", name32);
    set(kSec, "1", "ModeEnabled", "WPA3-SAE");
    set(kSec, "1", "PreSharedKey", psk64);
    set(kSec, "1", "KeyPassphrase", pass63);
    set(kSec, "1", "SAEPassphrase", pass63);
    qvsim_journal_clear();
    EXPECT_EQ(qvs_wlan_set_same_ssid(h, 1, 2), 0);
    EXPECT_EQ(name(9), name32);
    EXPECT_EQ(sec(9, "PreSharedKey"), psk64);
    EXPECT_EQ(sec(9, "KeyPassphrase"), pass63);
    EXPECT_EQ(sec(9, "SAEPassphrase"), pass63);
}

TEST_F(SameSsid, MergedSsidsReadBackAsMergedUntilCancelled) {
    EXPECT_EQ(qvs_wlan_get_same_ssid_status(h), 0);
    EXPECT_EQ(qvs_wlan_set_same_ssid(h, 3, 4), 0);
    EXPECT_EQ(qvs_wlan_get_same_ssid_status(h), 1);
    EXPECT_EQ(qvs_wlan_cancel_same_ssid(h), 0);
    EXPECT_EQ(qvs_wlan_get_same_ssid_status(h), 0);
    EXPECT_EQ(name(2), "net2-5G");
    EXPECT_EQ(name(10), "net2");
    EXPECT_EQ(count_kind("save"), 2);
}

TEST_F(SameSsid, MergeWithAZeroHandleDoesNothing) {
    EXPECT_EQ(qvs_wlan_set_same_ssid(0, 1, 2), -22);
    EXPECT_EQ(journal().size(), 0u);
    EXPECT_EQ(bitmap(1), 0u);
}

// ---- cancelling --------------------------------------------------------------

TEST_F(SameSsid, CancelClearsTheMarksAndRenamesTheFiveGigahertzOnes) {
    set_bitmap(1, 0x40001);
    set_bitmap(3, 0x40000);
    set_bitmap(9, 0x60000);
    set_bitmap(4, 0x20000);  // not merged: untouched
    set(kName, "3", "SSID", "abcdefghijklmnopqrstuvwxyz0123");  // 30 characters
    qvsim_journal_clear();

    EXPECT_EQ(qvs_wlan_cancel_same_ssid(h), 0);

    EXPECT_EQ(bitmap(1), 0x1u);
    EXPECT_EQ(bitmap(3), 0u);
    EXPECT_EQ(bitmap(9), 0x20000u);
    EXPECT_EQ(bitmap(4), 0x20000u);
    EXPECT_EQ(name(1), "home-5G");
    EXPECT_EQ(name(3), "abcdefghijklmnopqrstuvwxyz012-5G");
    EXPECT_EQ(name(9), "home-24");
    EXPECT_EQ(name(4), "net4");
    EXPECT_EQ(effects(), (Lines{bitmap_set(1, 0x1), name_set(1, "home-5G"), bitmap_set(3, 0),
                                name_set(3, "abcdefghijklmnopqrstuvwxyz012-5G"), bitmap_set(9, 0x20000),
                                "save|noreply"}));
    EXPECT_EQ(logs(), Lines{});
}

TEST_F(SameSsid, CancelTwiceDoesNothingTheSecondTime) {
    set_bitmap(2, 0x40000);
    set_bitmap(16, 0x40000);
    EXPECT_EQ(qvs_wlan_cancel_same_ssid(h), 0);
    EXPECT_EQ(name(2), "net2-5G");
    EXPECT_EQ(name(16), "net16");
    qvsim_journal_clear();
    EXPECT_EQ(qvs_wlan_cancel_same_ssid(h), 0);
    EXPECT_EQ(name(2), "net2-5G");
    EXPECT_EQ(effects(), Lines{"save|noreply"});
}

TEST_F(SameSsid, CancelWithoutMarksOnlySaves) {
    EXPECT_EQ(qvs_wlan_cancel_same_ssid(h), 0);
    EXPECT_EQ(effects(), Lines{"save|noreply"});
}

TEST_F(SameSsid, CancelWithFailingReadsChangesNothingButSaves) {
    set_bitmap(1, 0x40000);
    set_bitmap(5, 0x40000);
    fault("read X_QV_SSID_Bitmap after 3");
    qvsim_journal_clear();
    EXPECT_EQ(qvs_wlan_cancel_same_ssid(h), 0);
    EXPECT_EQ(bitmap(1), 0u);
    EXPECT_EQ(bitmap(5), 0x40000u);
    EXPECT_EQ(effects(), (Lines{bitmap_set(1, 0), name_set(1, "home-5G"), "save|noreply"}));
}

TEST_F(SameSsid, CancelWithAMissingNameObjectStillClearsTheMark) {
    set_bitmap(2, 0x40000);
    fault("object 396");
    qvsim_journal_clear();
    EXPECT_EQ(qvs_wlan_cancel_same_ssid(h), 0);
    EXPECT_EQ(bitmap(2), 0u);
    EXPECT_EQ(effects(), (Lines{bitmap_set(2, 0), "save|noreply"}));
}

TEST_F(SameSsid, CancelWithAZeroHandleDoesNothing) {
    set_bitmap(2, 0x40000);
    qvsim_journal_clear();
    EXPECT_EQ(qvs_wlan_cancel_same_ssid(0), -1);
    EXPECT_EQ(journal().size(), 0u);
    EXPECT_EQ(bitmap(2), 0x40000u);
}

// ---- status ----------------------------------------------------------------

TEST_F(SameSsid, StatusIsOneWhenAnySsidIsMerged) {
    EXPECT_EQ(qvs_wlan_get_same_ssid_status(h), 0);
    set_bitmap(16, 0x40000);
    EXPECT_EQ(qvs_wlan_get_same_ssid_status(h), 1);
    set_bitmap(16, 0x20000);
    set_bitmap(1, 0x40000);
    EXPECT_EQ(qvs_wlan_get_same_ssid_status(h), 1);
    EXPECT_EQ(effects(), Lines{});
    EXPECT_EQ(logs(), Lines{});
}

TEST_F(SameSsid, StatusKeepsThePreviousValueOverAFailedRead) {
    set_bitmap(3, 0x1);
    set_bitmap(10, 0x40000);
    fault("read X_QV_SSID_Bitmap after 3");
    EXPECT_EQ(qvs_wlan_get_same_ssid_status(h), 0);
    qvsim_fault_clear();
    EXPECT_EQ(qvs_wlan_get_same_ssid_status(h), 1);
}

TEST_F(SameSsid, StatusWithAZeroHandle) {
    set_bitmap(1, 0x40000);
    EXPECT_EQ(qvs_wlan_get_same_ssid_status(0), -1);
    EXPECT_EQ(journal().size(), 0u);
}

}  // namespace
