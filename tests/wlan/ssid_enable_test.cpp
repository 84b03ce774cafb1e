// SPDX-License-Identifier: MIT
// Switching one SSID on or off by its external index (file-local in the
// shipped object; built here from its own source).
#include "wlan_fixture.hpp"
#include "wlan/ssid_enable.hpp"

using namespace wlantest;

namespace {

const char kFunc[] = "__setSSIDEnable";

class SsidEnable : public WlanTest {
protected:
    static std::string enable_set(int idx, const char *v) { return set_line(kSsid, inst(idx), "Enable", kBool, v); }
    static void expect_balanced() {
        EXPECT_EQ(qvsim_journal_count("attach"), qvsim_journal_count("detach"));
    }
};

TEST_F(SsidEnable, DisablesTheMappedSsidWithoutSaving) {
    set_map(map16({1, 9, 2, 10}));
    EXPECT_EQ(__setSSIDEnable(3, 0), 0);
    EXPECT_EQ(get(kSsid, "2", "Enable"), "0");
    EXPECT_EQ(get(kSsid, "3", "Enable"), "1");
    const Lines e = effects();
    ASSERT_EQ(e.size(), 3u);
    EXPECT_EQ(e[0].rfind("attach|", 0), 0u);
    EXPECT_EQ(e[1], enable_set(2, "0"));
    EXPECT_EQ(e[2].rfind("detach|", 0), 0u);
    EXPECT_EQ(count_kind("save"), 0);
    EXPECT_EQ(logs(), Lines{});
}

TEST_F(SsidEnable, EnablesTheMappedSsid) {
    set_map(map16({1, 9, 2, 10}));
    set(kSsid, "10", "Enable", "0");
    EXPECT_EQ(__setSSIDEnable(4, 1), 0);
    EXPECT_EQ(get(kSsid, "10", "Enable"), "1");
    EXPECT_EQ(count_kind("set"), 1);
    EXPECT_EQ(journal()[1][0], "set");
    EXPECT_EQ(effects()[1], enable_set(10, "1"));
    expect_balanced();
}

TEST_F(SsidEnable, AnyNonZeroFlagIsWrittenAsTrue) {
    set_map(map16({1, 9}));
    set(kSsid, "9", "Enable", "0");
    EXPECT_EQ(__setSSIDEnable(2, 7), 0);
    EXPECT_EQ(effects()[1], enable_set(9, "1"));
    EXPECT_EQ(get(kSsid, "9", "Enable"), "1");
}

TEST_F(SsidEnable, ServesExternalIndexOneAndEight) {
    set_map(map16({1, 9, 2, 10, 3, 11, 4, 12, 5}));
    EXPECT_EQ(__setSSIDEnable(1, 0), 0);
    EXPECT_EQ(__setSSIDEnable(8, 0), 0);
    EXPECT_EQ(get(kSsid, "1", "Enable"), "0");
    EXPECT_EQ(get(kSsid, "12", "Enable"), "0");
    EXPECT_EQ(effects()[1], enable_set(1, "0"));
    EXPECT_EQ(effects()[4], enable_set(12, "0"));
    expect_balanced();
}

TEST_F(SsidEnable, ExternalIndexNineChangesNothing) {
    set_map(map16({1, 9, 2, 10, 3, 11, 4, 12, 5}));
    EXPECT_EQ(__setSSIDEnable(9, 0), 0);
    EXPECT_EQ(get(kSsid, "5", "Enable"), "1");
    EXPECT_EQ(count_kind("set"), 0);
    EXPECT_EQ(count_kind("attach"), 1);
    expect_balanced();
}

TEST_F(SsidEnable, IndicesOutsideOneToEightChangeNothing) {
    set_map(map16({1, 9, 2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15, 8, 16}));
    for (int ext : {0, -1, 16, 17, 1000}) {
        EXPECT_EQ(__setSSIDEnable(ext, 0), 0) << ext;
    }
    EXPECT_EQ(count_kind("set"), 0);
    EXPECT_EQ(count_kind("attach"), 5);
    expect_balanced();
    for (int i = 1; i <= 16; ++i) EXPECT_EQ(get(kSsid, inst(i), "Enable"), "1") << i;
}

TEST_F(SsidEnable, AFreeExternalIndexChangesNothing) {
    set_map(map16({1, 9, 0, 10}));
    EXPECT_EQ(__setSSIDEnable(3, 0), 0);
    EXPECT_EQ(count_kind("set"), 0);
    expect_balanced();
}

TEST_F(SsidEnable, APositionPastTheMapsNumbersChangesNothing) {
    set_map("1,9");
    EXPECT_EQ(__setSSIDEnable(3, 0), 0);
    EXPECT_EQ(count_kind("set"), 0);
    set_map("");
    EXPECT_EQ(__setSSIDEnable(1, 0), 0);
    EXPECT_EQ(count_kind("set"), 0);
    expect_balanced();
}

TEST_F(SsidEnable, AnUnmappedSlotNumberChangesNothing) {
    set_map("1,9,17,250");
    EXPECT_EQ(__setSSIDEnable(3, 0), 0);
    EXPECT_EQ(__setSSIDEnable(4, 0), 0);
    EXPECT_EQ(count_kind("set"), 0);
    expect_balanced();
}

TEST_F(SsidEnable, AttachFailure) {
    set_map(map16({1, 9}));
    fault("attach");
    EXPECT_EQ(__setSSIDEnable(1, 0), -1);
    EXPECT_EQ(logs(), Lines{log_line(kFunc, 1, "XMLSHMINIT fail\\n")});
    EXPECT_EQ(count_kind("set"), 0);
    EXPECT_EQ(count_kind("detach"), 0);
    qvsim_fault_clear();
    EXPECT_EQ(get(kSsid, "1", "Enable"), "1");
}

TEST_F(SsidEnable, MissingCommonObjectChangesNothing) {
    set_map(map16({1, 9}));
    fault("object 389");
    EXPECT_EQ(__setSSIDEnable(1, 0), 0);
    EXPECT_EQ(count_kind("set"), 0);
    EXPECT_EQ(logs(), Lines{});
    expect_balanced();
}

TEST_F(SsidEnable, MissingSsidObjectChangesNothing) {
    set_map(map16({1, 9}));
    fault("object 399 9");
    EXPECT_EQ(__setSSIDEnable(2, 0), 0);
    EXPECT_EQ(count_kind("set"), 0);
    expect_balanced();
    qvsim_fault_clear();
    EXPECT_EQ(get(kSsid, "9", "Enable"), "1");
}

TEST_F(SsidEnable, NoParameterListStillAnswersZero) {
    set_map(map16({1, 9}));
    fault("paramlist");
    EXPECT_EQ(__setSSIDEnable(1, 0), 0);
    EXPECT_EQ(count_kind("set"), 0);
    expect_balanced();
    EXPECT_EQ(get(kSsid, "1", "Enable"), "1");
}

TEST_F(SsidEnable, AFailedWriteStillAnswersZero) {
    set_map(map16({1, 9}));
    fault("write Enable");
    EXPECT_EQ(__setSSIDEnable(1, 0), 0);
    expect_balanced();
    qvsim_fault_clear();
    EXPECT_EQ(get(kSsid, "1", "Enable"), "1");
}

}  // namespace
