// SPDX-License-Identifier: MIT
// Command lines: cleared fixed-size buffers cut at size - 1, handed whole to
// the runner; refusal of caller text that would change a command line;
// scoped files and pipes.
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/command.hpp"
#include "qvsim.h"
#include "test_support.hpp"

namespace {

std::vector<std::string> log_lines() {
    char *t = qvsim_journal_text();
    std::istringstream in(t != nullptr ? t : "");
    std::free(t);
    std::vector<std::string> out;
    std::string line;
    while (std::getline(in, line))
        if (line.rfind("log\t", 0) == 0) out.push_back(line);
    return out;
}

int g_refuse_line = 0;

int refusing_caller(const char *text) {
    g_refuse_line = __LINE__ + 1;
    if (QVS_REFUSE_UNSAFE(text)) return -1;
    return 0;
}

static_assert(qvs::is_shell_safe("www.example.com"));
static_assert(!qvs::is_shell_safe("a;b"));

}  // namespace

TEST(CommandBuffer, CutAtSizeLessOneAndClearedBeforeEachFormat) {
    qvs::CommandBuffer<16> cmd;
    static_assert(qvs::CommandBuffer<16>::size() == 16);
    EXPECT_EQ(cmd.format("ipset flush %s%d", "VPN_IP_", 12345), 24);
    EXPECT_EQ(std::string(cmd.c_str()), "ipset flush VPN");
    EXPECT_EQ(std::strlen(cmd.c_str()), 15u);
    cmd.format("%s", "ab");
    for (std::size_t i = 2; i < cmd.size(); ++i) EXPECT_EQ(cmd.data()[i], '\0') << i;
    qvs::CommandBuffer<128> fresh;
    for (std::size_t i = 0; i < fresh.size(); ++i) ASSERT_EQ(fresh.c_str()[i], '\0');
}

TEST(CommandBuffer, HandedWholeToTheRunner) {
    qvs::CommandBuffer<128> cmd;
    cmd.format("echo CLR_DATA index:%d type:%d > %s", 3, 1, "/tmp/rule");
    EXPECT_EQ(qv_do_cmd(cmd.c_str()), 0);
    EXPECT_EQ(qvstest::read_file("/tmp/rule"), "CLR_DATA index:3 type:1\n");
    char *j = qvsim_journal_text();
    EXPECT_STREQ(j, "cmd\tqv_do_cmd\techo CLR_DATA index:3 type:1 > /tmp/rule\n");
    std::free(j);
}

TEST(RefuseUnsafe, EveryListedCharacterIsRefusedAndLoggedAtLevelOne) {
    std::string chars(qvs::kShellMetaChars);
    ASSERT_EQ(chars.size(), 15u);
    for (char c : chars) {
        std::string text = std::string("abc") + c + "def";
        ASSERT_EQ(qvsim_journal_clear(), 0);
        EXPECT_EQ(refusing_caller(text.c_str()), -1) << static_cast<int>(c);
        auto logs = log_lines();
        ASSERT_EQ(logs.size(), 1u) << static_cast<int>(c);
        EXPECT_EQ(logs[0].rfind("log\tqvs_utils.cpp\trefusing_caller\t" + std::to_string(g_refuse_line) +
                                    "\t1\trefused unsafe text [",
                                0),
                  0u)
            << logs[0];
    }
    ASSERT_EQ(qvsim_journal_clear(), 0);
    for (const char *ok : {"www.example.com", "192.168.1.0/24", "a-b_c:d,e.f", "", "00:1a:2b:3c:4d:5e"})
        EXPECT_EQ(refusing_caller(ok), 0) << ok;
    EXPECT_EQ(refusing_caller(nullptr), 0);
    EXPECT_TRUE(log_lines().empty());
}

TEST(ScopedFiles, FileAndPipeCloseOnEveryPath) {
    qvstest::write_file("/tmp/f.txt", "hello\n");
    {
        qvs::File f("/tmp/f.txt", "r");
        ASSERT_TRUE(f);
        char line[16] = {};
        ASSERT_NE(std::fgets(line, sizeof line, f.get()), nullptr);
        EXPECT_STREQ(line, "hello\n");
        f.close();
        EXPECT_FALSE(f);
        f.close();  // twice is harmless
    }
    {
        qvs::File missing("/tmp/nope/x", "r");
        EXPECT_FALSE(missing);
    }
    std::FILE *kept = nullptr;
    {
        qvs::File f("/tmp/g.txt", "w");
        ASSERT_TRUE(f);
        kept = f.release();
        EXPECT_FALSE(f);
    }
    std::fputs("still open", kept);
    std::fclose(kept);
    EXPECT_EQ(qvstest::read_file("/tmp/g.txt"), "still open");
    {
        qvs::Pipe p("echo 4242; echo second");
        ASSERT_TRUE(p);
        int v = 0;
        ASSERT_EQ(std::fscanf(p.get(), "%d", &v), 1);
        EXPECT_EQ(v, 4242);
    }
}
