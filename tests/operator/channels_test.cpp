// SPDX-License-Identifier: MIT
// A radio's channels in use (qvs_cuc_get_channelsinuse) and the hardware
// check's start hook.
#include <cstring>

#include "operator_fixture.hpp"

using namespace optest;

namespace {

class Channels : public OperatorTest {};

TEST_F(Channels, CopiesTheRadiosText) {
    set(kRadio, "1", "ChannelsInUse", "36,40,44,48");
    set(kRadio, "2", "ChannelsInUse", "1,6,11");
    clear_journal();
    char out[QVS_CHANNELS_IN_USE_SIZE];
    std::memset(out, 'x', sizeof out);
    EXPECT_EQ(qvs_cuc_get_channelsinuse(1, out), 0);
    EXPECT_STREQ(out, "36,40,44,48");
    EXPECT_EQ(qvs_cuc_get_channelsinuse(2, out), 0);
    EXPECT_STREQ(out, "1,6,11");
    EXPECT_EQ(effects(), Lines{});
    EXPECT_EQ(count("attach"), 2);
    expect_balanced();
}

TEST_F(Channels, AnEmptyTextGivesAnEmptyBuffer) {
    set(kRadio, "1", "ChannelsInUse", "");
    char out[QVS_CHANNELS_IN_USE_SIZE];
    std::memset(out, 'x', sizeof out);
    EXPECT_EQ(qvs_cuc_get_channelsinuse(1, out), 0);
    EXPECT_STREQ(out, "");
}

TEST_F(Channels, AFullFieldIsCopiedWhole) {
    std::string text;
    while (text.size() < QVS_CHANNELS_IN_USE_SIZE - 1) text += "1";
    set(kRadio, "2", "ChannelsInUse", text);
    char out[QVS_CHANNELS_IN_USE_SIZE];
    std::memset(out, 'x', sizeof out);
    EXPECT_EQ(qvs_cuc_get_channelsinuse(2, out), 0);
    EXPECT_EQ(std::string(out), text);
}

TEST_F(Channels, AMissingRadioFails) {
    char out[QVS_CHANNELS_IN_USE_SIZE] = "untouched";
    EXPECT_EQ(qvs_cuc_get_channelsinuse(3, out), -1);
    EXPECT_EQ(qvs_cuc_get_channelsinuse(0, out), -1);
    EXPECT_STREQ(out, "untouched");
    expect_balanced();
    fault("object 390");
    EXPECT_EQ(qvs_cuc_get_channelsinuse(1, out), -1);
    EXPECT_STREQ(out, "untouched");
    expect_balanced();
}

TEST_F(Channels, ANullBufferIsRefusedBeforeAttaching) {
    EXPECT_EQ(qvs_cuc_get_channelsinuse(1, nullptr), -1);
    EXPECT_EQ(count("attach"), 0);
}

TEST_F(Channels, AttachFailureFailsWithoutALog) {
    fault("attach");
    char out[QVS_CHANNELS_IN_USE_SIZE] = "untouched";
    EXPECT_EQ(qvs_cuc_get_channelsinuse(1, out), -1);
    EXPECT_STREQ(out, "untouched");
    EXPECT_EQ(logs(), Lines{});
}

TEST_F(Channels, TheHardwareStartHookDoesNothing) {
    EXPECT_EQ(qvs_cuc_check_hardware_start(), 0);
    EXPECT_EQ(qvstest::journal_fields().size(), 0u);
}

}  // namespace
