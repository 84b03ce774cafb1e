// SPDX-License-Identifier: MIT
// Speed limits set at once by MAC address (qvs_setSpeedLimitByMac).
#include <cstdint>

#include "operator_fixture.hpp"

using namespace optest;

namespace {

const std::uint8_t kPhone[6] = {0x00, 0x1a, 0x2b, 0x3c, 0x4d, 0x02};
const std::uint8_t kStranger[6] = {0x02, 0x00, 0x00, 0x00, 0x00, 0x99};

class SpeedLimit : public OperatorTest {
protected:
    static void put_device(int n, const std::string &mac) {
        std::string in = "1," + std::to_string(n);
        ensure(kLanHost, in);
        set(kLanHost, in, "MACAddress", mac);
    }
    static Lines limit_lines(int n, std::uint32_t up, std::uint32_t down) {
        std::string in = "1," + std::to_string(n);
        return {set_line(kLanHost, in, "UpSpeedLimit", kU32, std::to_string(up)),
                set_line(kLanHost, in, "DownSpeedLimit", kU32, std::to_string(down)), save_line()};
    }
};

TEST_F(SpeedLimit, SetsBothLimitsOfTheDeviceWithTheMacAndSaves) {
    EXPECT_EQ(qvs_setSpeedLimitByMac(kPhone, 512, 2048), 0);
    EXPECT_EQ(effects(), limit_lines(2, 512, 2048));
    EXPECT_EQ(get(kLanHost, "1,2", "UpSpeedLimit"), "512");
    EXPECT_EQ(get(kLanHost, "1,2", "DownSpeedLimit"), "2048");
    EXPECT_EQ(get(kLanHost, "1,1", "UpSpeedLimit"), "0");
    EXPECT_EQ(logs(), Lines{});
    expect_balanced();
    EXPECT_EQ(count("attach"), 1);
}

TEST_F(SpeedLimit, TheLimitsSurviveARestart) {
    EXPECT_EQ(qvs_setSpeedLimitByMac(kPhone, 300, 400), 0);
    ASSERT_EQ(qvsim_restart(), 0);
    EXPECT_EQ(get(kLanHost, "1,2", "UpSpeedLimit"), "300");
    EXPECT_EQ(get(kLanHost, "1,2", "DownSpeedLimit"), "400");
}

TEST_F(SpeedLimit, ZeroLiftsTheLimits) {
    set(kLanHost, "1,2", "UpSpeedLimit", "10");
    set(kLanHost, "1,2", "DownSpeedLimit", "20");
    EXPECT_EQ(qvs_setSpeedLimitByMac(kPhone, 0, 0), 0);
    EXPECT_EQ(effects(), limit_lines(2, 0, 0));
}

TEST_F(SpeedLimit, LargestLimitsPassUnchanged) {
    EXPECT_EQ(qvs_setSpeedLimitByMac(kPhone, 4294967295u, 1), 0);
    EXPECT_EQ(effects(), limit_lines(2, 4294967295u, 1));
}

TEST_F(SpeedLimit, DevicesWithGapsAreAllSearched) {
    ASSERT_EQ(qvsim_delete_instance(kLanHost, "1,3"), 0);
    put_device(5, "02:00:00:00:00:99");
    EXPECT_EQ(qvs_setSpeedLimitByMac(kStranger, 7, 8), 0);
    EXPECT_EQ(effects(), limit_lines(5, 7, 8));
}

TEST_F(SpeedLimit, DeviceTwoHundredFiftyFiveIsTheLastSearched) {
    put_device(255, "02:00:00:00:00:99");
    EXPECT_EQ(qvs_setSpeedLimitByMac(kStranger, 7, 8), 0);
    EXPECT_EQ(effects(), limit_lines(255, 7, 8));
}

TEST_F(SpeedLimit, AMacHeldOnlyByDeviceTwoHundredFiftySixIsNotFound) {
    put_device(256, "02:00:00:00:00:99");
    EXPECT_EQ(qvs_setSpeedLimitByMac(kStranger, 7, 8), -1);
    EXPECT_EQ(effects(), Lines{});
    EXPECT_EQ(get(kLanHost, "1,256", "UpSpeedLimit"), "0");
    expect_balanced();
}

TEST_F(SpeedLimit, TheFirstDeviceWithTheMacIsTheTarget) {
    put_device(4, "00:1a:2b:3c:4d:02");
    EXPECT_EQ(qvs_setSpeedLimitByMac(kPhone, 1, 2), 0);
    EXPECT_EQ(effects(), limit_lines(2, 1, 2));
    EXPECT_EQ(get(kLanHost, "1,4", "UpSpeedLimit"), "0");
}

TEST_F(SpeedLimit, AnUnknownMacChangesNothing) {
    EXPECT_EQ(qvs_setSpeedLimitByMac(kStranger, 1, 2), -1);
    EXPECT_EQ(effects(), Lines{});
    EXPECT_EQ(logs(), Lines{});
    expect_balanced();
}

TEST_F(SpeedLimit, ANullMacIsRefusedBeforeAttaching) {
    EXPECT_EQ(qvs_setSpeedLimitByMac(nullptr, 1, 2), -1);
    EXPECT_EQ(count("attach"), 0);
    EXPECT_EQ(effects(), Lines{});
}

TEST_F(SpeedLimit, AttachFailureIsLoggedAndNothingElseHappens) {
    fault("attach");
    EXPECT_EQ(qvs_setSpeedLimitByMac(kPhone, 1, 2), -1);
    EXPECT_EQ(effects(), Lines{"attach-refused"});
    EXPECT_EQ(logs(), Lines{"qvs_setSpeedLimitByMac|1|XMLSHMINIT fail\n"});
}

TEST_F(SpeedLimit, NoParameterListFails) {
    fault("paramlist");
    EXPECT_EQ(qvs_setSpeedLimitByMac(kPhone, 1, 2), -1);
    EXPECT_EQ(effects(), Lines{});
    expect_balanced();
}

TEST_F(SpeedLimit, AFailedAddGivesTheOrOfTheAddResultsAndWritesNothing) {
    fault("listadd DownSpeedLimit");
    EXPECT_EQ(qvs_setSpeedLimitByMac(kPhone, 1, 2), 0 | -1);
    EXPECT_EQ(effects(), Lines{});
    EXPECT_EQ(get(kLanHost, "1,2", "UpSpeedLimit"), "0");
    expect_balanced();
}

TEST_F(SpeedLimit, BothAddsFailing) {
    fault("listadd UpSpeedLimit");
    fault("listadd DownSpeedLimit");
    EXPECT_EQ(qvs_setSpeedLimitByMac(kPhone, 1, 2), -1 | -1);
    EXPECT_EQ(effects(), Lines{});
    expect_balanced();
}

TEST_F(SpeedLimit, ARefusedWriteStillSavesAndGivesZero) {
    fault("write UpSpeedLimit");
    EXPECT_EQ(qvs_setSpeedLimitByMac(kPhone, 1, 2), 0);
    EXPECT_EQ(effects(), Lines{save_line()});
    EXPECT_EQ(get(kLanHost, "1,2", "UpSpeedLimit"), "0");
    EXPECT_EQ(get(kLanHost, "1,2", "DownSpeedLimit"), "0");
    expect_balanced();
}

}  // namespace
