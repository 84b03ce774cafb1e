// SPDX-License-Identifier: MIT
// qvsctl --json: one JSON object per call of an exported function, outputs
// by name (bytes as hex, numbers as numbers, a missing text as null, repeated
// names as arrays), the library's own standard output kept apart, exit codes
// as in the human form; and the bash completion that asks qvsctl itself.
#include <cstdio>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>

#include "qvs_utils.h"
#include "test_support.hpp"

using qvstest::run;
using qvstest::split;

namespace {

std::string qvsctl() {
    char buf[4096] = {};
    ssize_t n = readlink("/proc/self/exe", buf, sizeof buf - 1);
    std::string self(buf, n > 0 ? static_cast<size_t>(n) : 0);
    std::string path = self.substr(0, self.rfind('/')) + "/qvsctl";
#ifdef QVS_TEST_EMULATOR
    return std::string(QVS_TEST_EMULATOR) + " " + path;
#else
    return path;
#endif
}

// Standard output of qvsctl with the arguments; stderr is dropped.
std::string json(const std::string &args, int *status) {
    return run(qvsctl() + " --json " + args + " 2>/dev/null", status);
}

TEST(QvsctlJson, OneCallGivesOneObjectWithItsResultAndOutputs) {
    int status = -1;
    EXPECT_EQ(json("base64 b64_encode hello", &status),
              "{\"family\":\"base64\",\"function\":\"b64_encode\",\"result\":8,"
              "\"outputs\":{\"text\":\"aGVsbG8=\"},\"stdout\":[]}\n");
    EXPECT_EQ(status, 0);
}

TEST(QvsctlJson, BytesAreHexAndAMissingTextIsNull) {
    int status = -1;
    EXPECT_EQ(json("base64 base64_decode_alloc_ctx none aGk=", &status),
              "{\"family\":\"base64\",\"function\":\"base64_decode_alloc_ctx\",\"result\":1,"
              "\"outputs\":{\"bytes\":\"6869\",\"bytes_text\":\"hi\"},\"stdout\":[]}\n");
    EXPECT_EQ(status, 0);
    // Bad input: false and no block.
    EXPECT_EQ(json("base64 base64_decode_alloc_ctx none a", &status),
              "{\"family\":\"base64\",\"function\":\"base64_decode_alloc_ctx\",\"result\":0,"
              "\"outputs\":{\"bytes\":null},\"stdout\":[]}\n");
    EXPECT_EQ(status, 0);
}

TEST(QvsctlJson, EachCallOfAStreamIsItsOwnObject) {
    int status = -1;
    std::string out = json("base64 base64_decode_ctx ctx aGVs bG8= ''", &status);
    EXPECT_EQ(status, 0);
    std::vector<std::string> lines = split(out, '\n');
    ASSERT_GE(lines.size(), 3u) << out;
    const char *prefix = "{\"family\":\"base64\",\"function\":\"base64_decode_ctx\",\"result\":1,";
    EXPECT_EQ(lines[0], std::string(prefix) +
                            "\"outputs\":{\"bytes\":\"68656c\",\"bytes_text\":\"hel\",\"ctx.i\":0},\"stdout\":[\"call 1:\"]}");
    EXPECT_EQ(lines[1], std::string(prefix) +
                            "\"outputs\":{\"bytes\":\"6c6f\",\"bytes_text\":\"lo\",\"ctx.i\":0},\"stdout\":[\"call 2:\"]}");
    EXPECT_EQ(lines[2], std::string(prefix) +
                            "\"outputs\":{\"bytes\":\"\",\"bytes_text\":\"\",\"ctx.i\":0},\"stdout\":[\"call 3:\"]}");
}

TEST(QvsctlJson, ATablesRowsAreOneArray) {
    int status = -1;
    std::string out = json("alarm cu_alarmInfo", &status);
    EXPECT_EQ(status, 0);
    std::string want = "{\"family\":\"alarm\",\"function\":\"cu_alarmInfo\",\"result\":0,\"outputs\":{\"row\":[";
    for (int i = 0; i < CU_ALARM_INFO_COUNT; ++i) {
        char row[256];
        std::snprintf(row, sizeof row, "%s\"%u status=%u severity=%u \\\"%s\\\"\"", i ? "," : "",
                      static_cast<unsigned>(cu_alarmInfo[i].alarmCode), static_cast<unsigned>(cu_alarmInfo[i].alarmStatus),
                      static_cast<unsigned>(cu_alarmInfo[i].perceivedSeverity), cu_alarmInfo[i].alarmDetail);
        want += row;
    }
    want += "]},\"stdout\":[]}\n";
    EXPECT_EQ(out, want);
}

TEST(QvsctlJson, ControlCharactersAndStrayBytesAreEscaped) {
    int status = -1;
    EXPECT_EQ(json("strings qvsReplace a-b - 0x09", &status),
              "{\"family\":\"strings\",\"function\":\"qvsReplace\",\"result\":null,"
              "\"outputs\":{\"text\":\"a\\tb\"},\"stdout\":[]}\n");
    EXPECT_EQ(json("strings qvsReplace a-b - 0xe9", &status),
              "{\"family\":\"strings\",\"function\":\"qvsReplace\",\"result\":null,"
              "\"outputs\":{\"text\":\"a\\u00e9b\"},\"stdout\":[]}\n");
    // Valid UTF-8 passes as it is.
    EXPECT_EQ(json("strings qvsReplace \"$(printf '\\303\\251-')\" - x", &status),
              "{\"family\":\"strings\",\"function\":\"qvsReplace\",\"result\":null,"
              "\"outputs\":{\"text\":\"\xc3\xa9x\"},\"stdout\":[]}\n");
}

TEST(QvsctlJson, WhatTheLibraryPrintsStaysOutOfTheOutputs) {
    int status = -1;
    std::string out = json("vpnaccount constructReqData tun1 user1", &status);
    EXPECT_EQ(status, 0);
    // One object on one line, nothing else on standard output.
    ASSERT_EQ(out.find('\n'), out.size() - 1) << out;
    std::vector<std::string> lines = split(out, '\n');
    EXPECT_EQ(lines[0].rfind("{\"family\":\"vpnaccount\",\"function\":\"constructReqData\",\"result\":0,"
                             "\"outputs\":{\"request\":\"{\\n\\t\\\"RPCMethod\\\":\\t\\\"Post\\\",",
                             0),
              0u)
        << lines[0];
    EXPECT_NE(lines[0].find("\"stdout\":[\"Enter constructReqData() tunnel:tun1 userId:user1 \","), std::string::npos)
        << lines[0];
}

TEST(QvsctlJson, BadArgumentsPrintNoObjectAndExit2) {
    int status = -1;
    EXPECT_EQ(json("base64 b64_encode", &status), "");
    EXPECT_EQ(status, 2);
    EXPECT_EQ(json("base64 b64e_size not-a-number", &status), "");
    EXPECT_EQ(status, 2);
    EXPECT_EQ(json("nofamily x", &status).find('{'), std::string::npos);
    EXPECT_EQ(status, 2);
}

TEST(QvsctlJson, HelpStaysHuman) {
    int status = -1;
    std::string out = json("help", &status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(out.rfind("usage: qvsctl [--json] <family> <function>", 0), 0u) << out;
    EXPECT_NE(out.find("\n  base64 "), std::string::npos) << out;
}

// Completion candidates for the words typed so far (the last one is being
// completed), from the completion file and this build's qvsctl.
std::string complete(const std::string &words) {
    std::string script = "source '" QVS_COMPLETION_FILE "'; COMP_WORDS=(" + words +
                         "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _qvsctl; printf '%s\\n' \"${COMPREPLY[@]}\" | sort";
    // The completion runs qvsctl by the name typed: a wrapper script stands
    // in for it (and carries the emulator when cross compiled).
    std::string wrapper = "/tmp/qvsctl-completion";
    qvstest::write_file(wrapper, "#!/bin/sh\nexec " + qvsctl() + " \"$@\"\n");
    chmod(wrapper.c_str(), 0755);
    std::string quoted;
    for (char c : script) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return run("bash -c '" + quoted + "'");
}

TEST(QvsctlCompletion, FamiliesAndFunctionsComeFromQvsctlHelp) {
    std::string families = complete("/tmp/qvsctl-completion ''");
    for (const char *f : {"alarm", "base64", "strings", "help", "--json"})
        EXPECT_NE(families.find(std::string(f) + "\n"), std::string::npos) << f << " in\n" << families;
    EXPECT_EQ(complete("/tmp/qvsctl-completion ba"), "base64\n");
    EXPECT_EQ(complete("/tmp/qvsctl-completion --json ba"), "base64\n");
    std::string functions = complete("/tmp/qvsctl-completion base64 b64_");
    EXPECT_EQ(functions, "b64_chr\nb64_decode\nb64_encode\nb64_int\n");
    EXPECT_EQ(complete("/tmp/qvsctl-completion help str"), "strings\n");
}

}  // namespace
