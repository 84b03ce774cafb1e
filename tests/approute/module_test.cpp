// SPDX-License-Identifier: MIT
// The simulated route and filter modules: which command lines they take,
// and what each rule index holds afterwards.
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "kernel_modules.hpp"
#include "qvsim.h"
#include "test_support.hpp"

namespace {

std::string held(const char *module, int index, int type) {
    char *t = qvsim_module_list(module, index, type);
    std::string s = t != nullptr ? t : "(null)";
    std::free(t);
    return s;
}

std::string state(const char *module, const char *file) {
    return qvstest::read_file(std::string(qvsim_dir()) + "/modules/" + module + "/" + file);
}

bool run(const std::string &line) { return qvsim::run_module_command(line.c_str()); }

class SimModule : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(qvstest::in_sandbox());
        qvsim::reset_modules();
    }
};

TEST_F(SimModule, AddKeepsItemsInOrderWithoutDuplicates) {
    EXPECT_TRUE(run("echo ADD_DATA index:1 type:1 list:10.0.0.2,10.0.0.1 > /proc/approute/rule"));
    EXPECT_TRUE(run("echo ADD_DATA index:1 type:1 list:10.0.0.1,,10.0.0.3, > /proc/approute/rule"));
    EXPECT_EQ(held("approute", 1, 1), "10.0.0.2,10.0.0.1,10.0.0.3");
    EXPECT_EQ(held("approute", 1, 2), "");
    EXPECT_EQ(held("approute", 2, 1), "");
    EXPECT_EQ(state("approute", "1.1"), "10.0.0.2\n10.0.0.1\n10.0.0.3\n");
}

TEST_F(SimModule, DeleteAndClear) {
    run("echo ADD_DATA index:4 type:2 list:a.com,b.com,c.com > /proc/approute/rule");
    EXPECT_TRUE(run("echo DEL_DATA index:4 type:2 list:b.com,x.com > /proc/approute/rule"));
    EXPECT_EQ(held("approute", 4, 2), "a.com,c.com");
    EXPECT_TRUE(run("echo CLR_DATA index:4 type:2 > /proc/approute/rule"));
    EXPECT_EQ(held("approute", 4, 2), "");
    EXPECT_FALSE(qvstest::exists(std::string(qvsim_dir()) + "/modules/approute/4.2"));
}

TEST_F(SimModule, EveryReceivedLineIsRecorded) {
    run("echo CLR_DATA index:1 type:3 > /proc/approute/rule");
    run("echo ADD_DATA   index:1\ttype:3 list:aa:bb:cc:dd:ee:ff > /proc/approute/rule");
    run("echo ADD_DATA index:7 type:1 list:1.1.1.1 > /proc/appfilter/rule");
    EXPECT_EQ(state("approute", "received"),
              "CLR_DATA index:1 type:3\nADD_DATA index:1 type:3 list:aa:bb:cc:dd:ee:ff\n");
    EXPECT_EQ(state("appfilter", "received"), "ADD_DATA index:7 type:1 list:1.1.1.1\n");
    EXPECT_EQ(held("appfilter", 7, 1), "1.1.1.1");
    EXPECT_EQ(held("approute", 7, 1), "");
}

TEST_F(SimModule, WordsAreJoinedWithSingleBlanksAsEchoDoes) {
    EXPECT_TRUE(run("echo ADD_DATA index:2 type:2 list:a  b,c\t\td > /proc/approute/rule"));
    EXPECT_EQ(held("approute", 2, 2), "a b,c d");
}

TEST_F(SimModule, RedirectionForms) {
    EXPECT_TRUE(run("echo ADD_DATA index:1 type:1 list:a >/proc/approute/rule"));
    EXPECT_TRUE(run("echo ADD_DATA index:1 type:1 list:b>/proc/approute/rule"));
    EXPECT_TRUE(run("echo ADD_DATA index:1 type:1 list:c >> /proc/approute/rule"));
    EXPECT_TRUE(run("echo ADD_DATA index:1 type:1 list:d 1> /proc/approute/rule"));
    EXPECT_TRUE(run("> /proc/approute/rule echo ADD_DATA index:1 type:1 list:e"));
    EXPECT_EQ(held("approute", 1, 1), "a,b,c,d,e");
    // Standard error into the control file writes nothing there.
    EXPECT_FALSE(run("echo ADD_DATA index:1 type:1 list:f 2> /proc/approute/rule"));
    EXPECT_EQ(held("approute", 1, 1), "a,b,c,d,e");
}

TEST_F(SimModule, EchoWithoutLineEnd) {
    EXPECT_TRUE(run("echo -n ADD_DATA index:3 type:1 list:9.9.9.9 > /proc/approute/rule"));
    EXPECT_EQ(held("approute", 3, 1), "9.9.9.9");
}

TEST_F(SimModule, NegativeIndex) {
    EXPECT_TRUE(run("echo ADD_DATA index:-1 type:1 list:x > /proc/appfilter/rule"));
    EXPECT_EQ(held("appfilter", -1, 1), "x");
}

TEST_F(SimModule, LinesForOtherTargetsAreLeftToTheShell) {
    EXPECT_FALSE(run("echo ADD_DATA index:1 type:1 list:a > /tmp/rule"));
    EXPECT_FALSE(run("ipset flush vpn_ip1 2> /dev/null"));
    EXPECT_FALSE(run("cat /proc/approute/rule"));
    EXPECT_FALSE(run("cat x > /proc/approute/rule"));
    // Cut command lines: the redirection is gone or names another file.
    EXPECT_FALSE(run("echo DEL_DATA index:1 type:1 list:aaaaaaaa"));
    EXPECT_FALSE(run("echo DEL_DATA index:1 type:1 list:aaaaaaaa > /proc/approute/ru"));
    // Shell syntax beyond the simple forms.
    EXPECT_FALSE(run("echo ADD_DATA index:1 type:1 list:a;reboot > /proc/approute/rule"));
    EXPECT_FALSE(run("echo ADD_DATA index:1 type:1 list:$(id) > /proc/approute/rule"));
    EXPECT_FALSE(run("echo 'ADD_DATA index:1 type:1 list:a' > /proc/approute/rule"));
    EXPECT_FALSE(run("echo ADD_DATA index:1 type:1 list:a > /proc/approute/rule > /tmp/x"));
    EXPECT_FALSE(qvsim::run_module_command(nullptr));
    EXPECT_EQ(held("approute", 1, 1), "");
    EXPECT_FALSE(qvstest::exists(std::string(qvsim_dir()) + "/modules/approute/received"));
}

TEST_F(SimModule, RefusedLinesChangeNothing) {
    EXPECT_TRUE(run("echo ADD_DATA index:1 type:4 list:a > /proc/approute/rule"));
    EXPECT_TRUE(run("echo ADD_DATA index:1 type:0 list:a > /proc/approute/rule"));
    EXPECT_TRUE(run("echo ADD_DATA index:x type:1 list:a > /proc/approute/rule"));
    EXPECT_TRUE(run("echo ADD_DATA index:1 type:1 > /proc/approute/rule"));
    EXPECT_TRUE(run("echo CLR_DATA index:1 type:1 list:a > /proc/approute/rule"));
    EXPECT_TRUE(run("echo SET_DATA index:1 type:1 list:a > /proc/approute/rule"));
    EXPECT_TRUE(run("echo ADD_DATA index:99999999999 type:1 list:a > /proc/approute/rule"));
    // The filter module takes no delete command.
    run("echo ADD_DATA index:1 type:1 list:a > /proc/appfilter/rule");
    EXPECT_TRUE(run("echo DEL_DATA index:1 type:1 list:a > /proc/appfilter/rule"));
    EXPECT_EQ(held("appfilter", 1, 1), "a");
    for (int t = 0; t <= 4; ++t) EXPECT_EQ(held("approute", 1, t), "") << t;
    EXPECT_EQ(state("approute", "rejected"),
              "ADD_DATA index:1 type:4 list:a\nADD_DATA index:1 type:0 list:a\n"
              "ADD_DATA index:x type:1 list:a\nADD_DATA index:1 type:1\n"
              "CLR_DATA index:1 type:1 list:a\nSET_DATA index:1 type:1 list:a\n"
              "ADD_DATA index:99999999999 type:1 list:a\n");
    EXPECT_EQ(state("appfilter", "rejected"), "DEL_DATA index:1 type:1 list:a\n");
}

TEST_F(SimModule, PatternsExpandAsInTheShell) {
    // A pattern that matches nothing stays as it is; one that matches is
    // replaced by the names it matches.
    qvstest::write_file("/tmp/qq1", "");
    qvstest::write_file("/tmp/qq2", "");
    EXPECT_TRUE(run("echo ADD_DATA index:1 type:2 list:*.example.com > /proc/approute/rule"));
    EXPECT_TRUE(run("echo ADD_DATA index:1 type:2 list:x /tmp/qq? > /proc/approute/rule"));
    EXPECT_EQ(held("approute", 1, 2), "*.example.com,x /tmp/qq1 /tmp/qq2");
}

TEST_F(SimModule, TildeExpandsToHome) {
    setenv("HOME", "/home/tester", 1);
    EXPECT_TRUE(run("echo ADD_DATA index:1 type:2 list:a ~ > /proc/approute/rule"));
    EXPECT_EQ(held("approute", 1, 2), "a /home/tester");
}

TEST_F(SimModule, ResetEmptiesBothModules) {
    run("echo ADD_DATA index:1 type:1 list:a > /proc/approute/rule");
    run("echo ADD_DATA index:1 type:1 list:a > /proc/appfilter/rule");
    qvsim::reset_modules();
    EXPECT_EQ(held("approute", 1, 1), "");
    EXPECT_EQ(held("appfilter", 1, 1), "");
    EXPECT_EQ(state("approute", "received"), "");
}

TEST_F(SimModule, UnknownModuleName) {
    EXPECT_EQ(qvsim_module_list("nosuch", 1, 1), nullptr);
    EXPECT_EQ(qvsim_module_list(nullptr, 1, 1), nullptr);
}

}  // namespace
