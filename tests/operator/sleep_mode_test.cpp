// SPDX-License-Identifier: MIT
// CUC sleep mode: the sleep and wake sequences, their order, the port admin
// state, partial failures, and the sleep flag read.
#include "operator_fixture.hpp"

using namespace optest;

namespace {

const char kSet[] = "qvs_cuc_set_sleep_mode";

class SleepMode : public OperatorTest {
protected:
    void SetUp() override {
        OperatorTest::SetUp();
        set(kWifiCommon, "", "X_QV_Enable", "1");
        set(kLed, "", "Leds_Turnoff", "0");
        clear_journal();
    }
    static std::string flag(int oid, const char *param, const std::string &v) {
        return set_line(oid, "", param, kBool, v);
    }
    static std::string trace(int requested, int current) {
        return std::string(kSet) + "|1|enable=" + std::to_string(requested) +
               ", gateway_sleep->Enable=" + std::to_string(current) + ".\n";
    }
    // The switch calls for LAN interfaces with these port names, in order.
    static Lines port_lines(const std::vector<int> &phys, int admin) {
        Lines out;
        for (int p : phys) {
            out.push_back("device|libqv_switchApi_ethPortName2PhyPortNum|eth" + std::to_string(p));
            out.push_back("device|FC_libqv_switchApi_portSetAdmin|" + std::to_string(p) + "|" + std::to_string(admin));
        }
        return out;
    }
    static Lines concat(Lines a, const Lines &b) {
        a.insert(a.end(), b.begin(), b.end());
        return a;
    }
    void sleep_now() {
        ASSERT_EQ(qvs_cuc_set_sleep_mode(1), 0);
        clear_journal();
    }
};

TEST_F(SleepMode, SleepRemembersWifiAndLedsSwitchesThemOffAndTakesThePortsDown) {
    EXPECT_EQ(qvs_cuc_set_sleep_mode(1), 0);
    Lines expected = {flag(kSleep, "Enable", "1"), flag(kSleep, "LastWLANEnable", "1"),
                      flag(kSleep, "LastLeds_Turnoff", "0"), flag(kWifiCommon, "X_QV_Enable", "0"),
                      flag(kLed, "Leds_Turnoff", "1")};
    expected = concat(expected, port_lines({0, 1, 2, 3, 4}, 0));
    expected.push_back(save_line());
    EXPECT_EQ(effects(), expected);
    EXPECT_EQ(logs(), Lines{trace(1, 0)});
    for (int p = 0; p <= 4; ++p) EXPECT_EQ(device("port." + std::to_string(p) + ".admin"), "0") << p;
    EXPECT_EQ(get(kSleep, "", "Enable"), "1");
    EXPECT_EQ(get(kWifiCommon, "", "X_QV_Enable"), "0");
    EXPECT_EQ(get(kLed, "", "Leds_Turnoff"), "1");
    expect_balanced();
}

TEST_F(SleepMode, SleepIsSavedAndSurvivesARestart) {
    sleep_now();
    ASSERT_EQ(qvsim_restart(), 0);
    EXPECT_EQ(get(kSleep, "", "Enable"), "1");
    EXPECT_EQ(get(kSleep, "", "LastWLANEnable"), "1");
    EXPECT_EQ(get(kWifiCommon, "", "X_QV_Enable"), "0");
    EXPECT_EQ(get(kLed, "", "Leds_Turnoff"), "1");
    EXPECT_EQ(qvs_cuc_get_sleep_mode(), 1);
}

TEST_F(SleepMode, SleepRemembersWhateverWasSet) {
    set(kWifiCommon, "", "X_QV_Enable", "0");
    set(kLed, "", "Leds_Turnoff", "1");
    EXPECT_EQ(qvs_cuc_set_sleep_mode(1), 0);
    EXPECT_EQ(get(kSleep, "", "LastWLANEnable"), "0");
    EXPECT_EQ(get(kSleep, "", "LastLeds_Turnoff"), "1");
}

TEST_F(SleepMode, WakeRestoresTheRememberedValuesAndTakesThePortsUp) {
    sleep_now();
    EXPECT_EQ(qvs_cuc_set_sleep_mode(0), 0);
    Lines expected = {flag(kSleep, "Enable", "0"), flag(kWifiCommon, "X_QV_Enable", "1"),
                      flag(kLed, "Leds_Turnoff", "0")};
    expected = concat(expected, port_lines({0, 1, 2, 3, 4}, 1));
    expected.push_back(save_line());
    EXPECT_EQ(effects(), expected);
    EXPECT_EQ(logs(), Lines{trace(0, 1)});
    for (int p = 0; p <= 4; ++p) EXPECT_EQ(device("port." + std::to_string(p) + ".admin"), "1") << p;
    EXPECT_EQ(get(kWifiCommon, "", "X_QV_Enable"), "1");
    EXPECT_EQ(get(kLed, "", "Leds_Turnoff"), "0");
    EXPECT_EQ(qvs_cuc_get_sleep_mode(), 0);
    expect_balanced();
}

TEST_F(SleepMode, WakeWithoutAnEarlierSleepRestoresTheFieldsAsTheyStand) {
    set(kSleep, "", "Enable", "1");
    set(kSleep, "", "LastWLANEnable", "0");
    set(kSleep, "", "LastLeds_Turnoff", "1");
    clear_journal();
    EXPECT_EQ(qvs_cuc_set_sleep_mode(0), 0);
    EXPECT_EQ(get(kWifiCommon, "", "X_QV_Enable"), "0");
    EXPECT_EQ(get(kLed, "", "Leds_Turnoff"), "1");
}

TEST_F(SleepMode, SleepTwiceLogsAndChangesNothingTheSecondTime) {
    sleep_now();
    EXPECT_EQ(qvs_cuc_set_sleep_mode(1), 0);
    EXPECT_EQ(effects(), Lines{});
    EXPECT_EQ(logs(), Lines{trace(1, 1)});
    expect_balanced();
}

TEST_F(SleepMode, WakeWhileAwakeChangesNothing) {
    EXPECT_EQ(qvs_cuc_set_sleep_mode(0), 0);
    EXPECT_EQ(effects(), Lines{});
    EXPECT_EQ(logs(), Lines{trace(0, 0)});
}

TEST_F(SleepMode, ValueTwoTakesTheWakePathAndIsStoredAsGiven) {
    EXPECT_EQ(qvs_cuc_set_sleep_mode(2), 0);
    Lines expected = {flag(kSleep, "Enable", "2"), flag(kWifiCommon, "X_QV_Enable", "1"),
                      flag(kLed, "Leds_Turnoff", "0")};
    expected = concat(expected, port_lines({0, 1, 2, 3, 4}, 1));
    expected.push_back(save_line());
    EXPECT_EQ(effects(), expected);
    EXPECT_EQ(logs(), Lines{trace(2, 0)});
    EXPECT_EQ(qvs_cuc_get_sleep_mode(), 2);
}

TEST_F(SleepMode, AMissingThirdInterfaceSkipsOnlyItsPort) {
    ASSERT_EQ(qvsim_delete_instance(kLanEth, "1,3"), 0);
    EXPECT_EQ(qvs_cuc_set_sleep_mode(1), 0);
    Lines ports;
    for (const auto &l : effects())
        if (l.rfind("device|", 0) == 0) ports.push_back(l);
    EXPECT_EQ(ports, port_lines({0, 1, 3, 4}, 0));
    EXPECT_EQ(device("port.2.admin"), "(none)");
    EXPECT_EQ(device("port.4.admin"), "0");
    EXPECT_EQ(effects().back(), save_line());
    expect_balanced();
}

TEST_F(SleepMode, WithoutAnyLanInterfaceNoPortIsTouchedAndTheSleepStillCompletes) {
    fault("object 137");
    EXPECT_EQ(qvs_cuc_set_sleep_mode(1), 0);
    for (const auto &l : effects()) EXPECT_NE(l.rfind("device|", 0), 0u) << l;
    EXPECT_EQ(effects().back(), save_line());
    expect_balanced();
}

TEST_F(SleepMode, AnUnknownPortNameIsHandedOnAsTheSwitchAnswers) {
    set(kLanEth, "1,2", "X_QV_PortName", "wan0");
    EXPECT_EQ(qvs_cuc_set_sleep_mode(1), 0);
    Lines ports;
    for (const auto &l : effects())
        if (l.rfind("device|", 0) == 0) ports.push_back(l);
    ASSERT_EQ(ports.size(), 10u);
    EXPECT_EQ(ports[2], "device|libqv_switchApi_ethPortName2PhyPortNum|wan0");
    EXPECT_EQ(ports[3], "device|FC_libqv_switchApi_portSetAdmin|-1|0");
}

TEST_F(SleepMode, TheInterfacesPortNamesDecideThePhysicalPorts) {
    set(kLanEth, "1,1", "X_QV_PortName", "eth7");
    EXPECT_EQ(qvs_cuc_set_sleep_mode(1), 0);
    EXPECT_EQ(device("port.7.admin"), "0");
    EXPECT_EQ(device("port.0.admin"), "(none)");
}

TEST_F(SleepMode, SwitchFailuresAreNotExamined) {
    fault("device FC_libqv_switchApi_portSetAdmin");
    EXPECT_EQ(qvs_cuc_set_sleep_mode(1), 0);
    EXPECT_EQ(effects().back(), save_line());
}

TEST_F(SleepMode, AFailingWriteMidwayStopsWithEarlierWritesAppliedAndNothingSaved) {
    fault("write Leds_Turnoff");
    EXPECT_EQ(qvs_cuc_set_sleep_mode(1), -1);
    EXPECT_EQ(effects(), (Lines{flag(kSleep, "Enable", "1"), flag(kSleep, "LastWLANEnable", "1"),
                                flag(kSleep, "LastLeds_Turnoff", "0"), flag(kWifiCommon, "X_QV_Enable", "0")}));
    EXPECT_EQ(get(kLed, "", "Leds_Turnoff"), "0");
    EXPECT_EQ(device("port.0.admin"), "(none)");
    expect_balanced();
    // "Enable" is already 1: the same call now stops at once.
    qvsim_fault_clear();
    clear_journal();
    EXPECT_EQ(qvs_cuc_set_sleep_mode(1), 0);
    EXPECT_EQ(effects(), Lines{});
    // Nothing was saved: a restart brings the old state back.
    ASSERT_EQ(qvsim_restart(), 0);
    EXPECT_EQ(get(kSleep, "", "Enable"), "0");
    EXPECT_EQ(get(kWifiCommon, "", "X_QV_Enable"), "1");
}

TEST_F(SleepMode, AMissingLedObjectStopsTheSleepAfterTheFlag) {
    fault("object 229");
    EXPECT_EQ(qvs_cuc_set_sleep_mode(1), -1);
    EXPECT_EQ(effects(), Lines{flag(kSleep, "Enable", "1")});
    expect_balanced();
}

TEST_F(SleepMode, AMissingWifiObjectStopsTheWakeAfterTheFlag) {
    sleep_now();
    fault("object 389");
    EXPECT_EQ(qvs_cuc_set_sleep_mode(0), -1);
    EXPECT_EQ(effects(), Lines{flag(kSleep, "Enable", "0")});
    EXPECT_EQ(device("port.0.admin"), "0");
    expect_balanced();
}

TEST_F(SleepMode, AFailingLedWriteStopsTheWake) {
    sleep_now();
    fault("write Leds_Turnoff");
    EXPECT_EQ(qvs_cuc_set_sleep_mode(0), -1);
    EXPECT_EQ(effects(), (Lines{flag(kSleep, "Enable", "0"), flag(kWifiCommon, "X_QV_Enable", "1")}));
    EXPECT_EQ(device("port.0.admin"), "0");
    expect_balanced();
}

TEST_F(SleepMode, AFailedListAddStopsTheSleep) {
    fault("listadd LastLeds_Turnoff");
    EXPECT_EQ(qvs_cuc_set_sleep_mode(1), -1);
    EXPECT_EQ(effects(), Lines{flag(kSleep, "Enable", "1")});
    expect_balanced();
}

TEST_F(SleepMode, NoParameterListWritesNothing) {
    fault("paramlist");
    EXPECT_EQ(qvs_cuc_set_sleep_mode(1), -1);
    EXPECT_EQ(effects(), Lines{});
    EXPECT_EQ(logs(), Lines{trace(1, 0)});
    expect_balanced();
}

TEST_F(SleepMode, AMissingSleepObjectFailsBeforeTheLog) {
    fault("object 563");
    EXPECT_EQ(qvs_cuc_set_sleep_mode(1), -1);
    EXPECT_EQ(effects(), Lines{});
    EXPECT_EQ(logs(), Lines{});
    expect_balanced();
}

TEST_F(SleepMode, AttachFailureFailsWithoutALog) {
    fault("attach");
    EXPECT_EQ(qvs_cuc_set_sleep_mode(1), -1);
    EXPECT_EQ(effects(), Lines{"attach-refused"});
    EXPECT_EQ(logs(), Lines{});
}

TEST_F(SleepMode, TheFlagReadGivesTheStoredByte) {
    EXPECT_EQ(qvs_cuc_get_sleep_mode(), 0);
    set(kSleep, "", "Enable", "1");
    EXPECT_EQ(qvs_cuc_get_sleep_mode(), 1);
    EXPECT_EQ(effects(), Lines{});
    EXPECT_EQ(count("attach"), 2);
    expect_balanced();
}

TEST_F(SleepMode, TheFlagReadFailsWithoutStoreOrObject) {
    fault("object 563");
    EXPECT_EQ(qvs_cuc_get_sleep_mode(), -1);
    expect_balanced();
    qvsim_fault_clear();
    fault("attach");
    EXPECT_EQ(qvs_cuc_get_sleep_mode(), -1);
    EXPECT_EQ(logs(), Lines{});
}

}  // namespace
