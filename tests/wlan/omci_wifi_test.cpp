// SPDX-License-Identifier: MIT
// OMCI Wi-Fi VLAN settings: the file "/var/run/qvOmciWifi" read line by
// line, the first line of the requested interface applied to the simulated
// switch and network layer.
#include "wlan_fixture.hpp"

using namespace wlantest;

namespace {

const char kFile[] = "/var/run/qvOmciWifi";
const char kTask[] = "qvsTask_wlanUpToOmciMsg";

class Omci : public WlanTest {
protected:
    static std::string device(const char *key) {
        char out[256] = {};
        return qvsim_device_get(key, out, sizeof out) == 0 ? out : "<none>";
    }
    static std::string read_log(const std::string &want, const std::string &name, int mode, int vlan, int type,
                                int phy) {
        return log_line(kTask, 5,
                        "read file[/var/run/qvOmciWifi]in wifiname [" + want + "] ifname:" + name +
                            "#vlanMode:" + std::to_string(mode) + "#vlan:" + std::to_string(vlan) +
                            "#vlantype:" + std::to_string(type) + "#phyIndex:" + std::to_string(phy) + "\\n");
    }
    // The TCI line, with its source line number taken out.
    static Lines logs_without_line_numbers() {
        Lines out;
        for (auto l : logs()) {
            auto at = l.find("] line[");
            if (at != std::string::npos) l.replace(at + 7, l.find(']', at + 7) - (at + 7), "N");
            out.push_back(l);
        }
        return out;
    }
    static std::string tci_log(int vlan) {
        return log_line(kTask, 5, "func[qvsTask_wlanUpToOmciMsg] line[N] defaultTCI[" + std::to_string(vlan) + "]\\n");
    }
    static Lines applied(int mode, int vlan, int type, int phy) {
        return {"device|libqv_switchApi_setVlanCfgMain|" + std::to_string(vlan) + "|" + std::to_string(type),
                "device|libqv_netApi_setVlanMode|" + std::to_string(mode) + "|" + std::to_string(vlan) + "|" +
                    std::to_string(type) + "|" + std::to_string(phy)};
    }
};

TEST_F(Omci, TheMatchingLineReachesSwitchAndNetworkLayer) {
    qvstest::write_file(kFile, "ra0 2 100 1 3 \n");
    qvsTask_wlanUpToOmciMsg("ra0");
    EXPECT_EQ(effects(), applied(2, 100, 1, 3));
    EXPECT_EQ(device("switch.vlan"), "100 1");
    EXPECT_EQ(device("vlanmode"), "2 100 1 3");
    EXPECT_EQ(logs_without_line_numbers(), (Lines{read_log("ra0", "ra0", 2, 100, 1, 3), tci_log(100)}));
}

TEST_F(Omci, EveryLineUpToTheFirstMatchIsTracedLaterOnesAreNotRead) {
    qvstest::write_file(kFile,
                        "rai0 1 10 0 0 \n"
                        "ra1 1 20 1 1 \n"
                        "ra0 3 30 2 2 \n"
                        "ra0 4 40 3 3 \n"
                        "ra2 5 50 4 4 \n");
    qvsTask_wlanUpToOmciMsg("ra0");
    EXPECT_EQ(effects(), applied(3, 30, 2, 2));
    EXPECT_EQ(device("vlanmode"), "3 30 2 2");
    EXPECT_EQ(logs_without_line_numbers(),
              (Lines{read_log("ra0", "rai0", 1, 10, 0, 0), read_log("ra0", "ra1", 1, 20, 1, 1),
                     read_log("ra0", "ra0", 3, 30, 2, 2), tci_log(30)}));
}

TEST_F(Omci, NoMatchingLineChangesNothing) {
    qvstest::write_file(kFile, "ra1 1 20 1 1 \nra01 1 21 1 1 \n");
    qvsTask_wlanUpToOmciMsg("ra0");
    EXPECT_EQ(effects(), Lines{});
    EXPECT_EQ(device("switch.vlan"), "<none>");
    EXPECT_EQ(logs_without_line_numbers(),
              (Lines{read_log("ra0", "ra1", 1, 20, 1, 1), read_log("ra0", "ra01", 1, 21, 1, 1)}));
}

TEST_F(Omci, NamesAreComparedWhole) {
    qvstest::write_file(kFile, "ra 1 20 1 1 \nRA0 1 21 1 1 \n");
    qvsTask_wlanUpToOmciMsg("ra0");
    EXPECT_EQ(count_kind("device"), 0);
    qvsTask_wlanUpToOmciMsg("r");
    EXPECT_EQ(count_kind("device"), 0);
}

TEST_F(Omci, AMissingFileChangesNothing) {
    qvsTask_wlanUpToOmciMsg("ra0");
    EXPECT_EQ(journal().size(), 0u);
}

TEST_F(Omci, AnEmptyFileOrBlankLines) {
    qvstest::write_file(kFile, "");
    qvsTask_wlanUpToOmciMsg("ra0");
    qvstest::write_file(kFile, "\n   \n\t\n");
    qvsTask_wlanUpToOmciMsg("ra0");
    EXPECT_EQ(journal().size(), 0u);
}

TEST_F(Omci, ANullNameChangesNothing) {
    qvstest::write_file(kFile, "ra0 2 100 1 3 \n");
    qvsTask_wlanUpToOmciMsg(nullptr);
    EXPECT_EQ(journal().size(), 0u);
}

TEST_F(Omci, LinesWithNumbersMissingAreSkipped) {
    qvstest::write_file(kFile,
                        "ra0 2 100 1\n"
                        "ra0\n"
                        "ra0 x 100 1 3\n"
                        "ra0 6 600 1 2\n");
    qvsTask_wlanUpToOmciMsg("ra0");
    EXPECT_EQ(effects(), applied(6, 600, 1, 2));  // the first complete line
    EXPECT_EQ(logs_without_line_numbers(), (Lines{read_log("ra0", "ra0", 6, 600, 1, 2), tci_log(600)}));
}

TEST_F(Omci, ALineWithTheNameMissing) {
    // Four numbers: the first is read as the name and one number is missing.
    qvstest::write_file(kFile, "   2 100 1 3\nra0 1 7 0 1\n");
    qvsTask_wlanUpToOmciMsg("2");
    EXPECT_EQ(count_kind("device"), 0);
    EXPECT_EQ(logs_without_line_numbers(), Lines{read_log("2", "ra0", 1, 7, 0, 1)});
}

TEST_F(Omci, AnOverLongNameNeitherOverflowsNorMatchesByItsStart) {
    const std::string long_name = "ra0" + std::string(5000, 'x');
    qvstest::write_file(kFile, long_name + " 9 900 9 9 \nra0 1 7 0 1 \n");
    qvsTask_wlanUpToOmciMsg("ra0");
    EXPECT_EQ(effects(), applied(1, 7, 0, 1));
    const Lines l = logs_without_line_numbers();
    ASSERT_EQ(l.size(), 3u);
    // the whole name was read (the platform logger keeps the first 2047
    // characters of a message)
    const std::string whole = read_log("ra0", long_name, 9, 900, 9, 9);
    EXPECT_EQ(l[0], whole.substr(0, l[0].size()));
    EXPECT_GT(l[0].size(), 2000u);
    EXPECT_EQ(l[1], read_log("ra0", "ra0", 1, 7, 0, 1));
}

TEST_F(Omci, AnOverLongNameIsFoundWhenAskedForWhole) {
    const std::string long_name(700, 'w');
    qvstest::write_file(kFile, long_name + " 9 900 9 9 \n");
    qvsTask_wlanUpToOmciMsg(long_name.c_str());
    EXPECT_EQ(effects(), applied(9, 900, 9, 9));
}

TEST_F(Omci, LineEndsAndBlanksAreFree) {
    qvstest::write_file(kFile, "  ra0\t2   100 1 3\r\n");
    qvsTask_wlanUpToOmciMsg("ra0");
    EXPECT_EQ(effects(), applied(2, 100, 1, 3));
    qvsim_journal_clear();
    qvstest::write_file(kFile, "ra1 1 2 3 4" + std::string(3000, ' ') + "\nra0 5 6 7 8");  // no line end at the end
    qvsTask_wlanUpToOmciMsg("ra0");
    EXPECT_EQ(effects(), applied(5, 6, 7, 8));
}

TEST_F(Omci, NegativeAndZeroValuesArePassedAsRead) {
    qvstest::write_file(kFile, "ra0 0 -1 0 0\n");
    qvsTask_wlanUpToOmciMsg("ra0");
    // the switch record's fields are unsigned
    EXPECT_EQ(effects(), (Lines{"device|libqv_switchApi_setVlanCfgMain|4294967295|0",
                                "device|libqv_netApi_setVlanMode|0|-1|0|0"}));
    EXPECT_EQ(device("vlanmode"), "0 -1 0 0");
}

TEST_F(Omci, AFailingSwitchCallDoesNotStopTheNetworkCall) {
    qvstest::write_file(kFile, "ra0 2 100 1 3\n");
    fault("device libqv_switchApi_setVlanCfgMain");
    qvsTask_wlanUpToOmciMsg("ra0");
    EXPECT_EQ(effects(), applied(2, 100, 1, 3));
    EXPECT_EQ(device("switch.vlan"), "<none>");
    EXPECT_EQ(device("vlanmode"), "2 100 1 3");
}

TEST_F(Omci, TheFileIsLeftAsItWas) {
    const std::string content = "ra0 2 100 1 3 \nra1 1 1 1 1\n";
    qvstest::write_file(kFile, content);
    qvsTask_wlanUpToOmciMsg("ra0");
    EXPECT_EQ(qvstest::read_file(kFile), content);
    EXPECT_EQ(count_kind("attach"), 0);
}

}  // namespace
