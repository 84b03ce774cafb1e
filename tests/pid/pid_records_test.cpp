// SPDX-License-Identifier: MIT
// Process PID records against the real process list: "ps", "grep" and
// record files under /tmp, with real processes started by the tests.
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <string>
#include <vector>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "qvs_utils.h"
#include "qvsim.h"
#include "busybox_first.hpp"
#include "test_support.hpp"

using qvstest::CaptureFd;
using qvstest::exists;
using qvstest::read_file;
using qvstest::write_file;

namespace {

// A "sleep 1000" whose command line starts with the given name instead of
// "sleep"; killed when the object goes.
class NamedProcess {
public:
    explicit NamedProcess(const std::string &argv0) {
        pid_ = ::fork();
        if (pid_ == 0) {
            ::execl("/bin/sleep", argv0.c_str(), "1000", static_cast<char *>(nullptr));
            ::_exit(127);
        }
        // Wait until the process list shows it under its new command line.
        std::string want = argv0 + std::string(1, '\0') + "1000";
        for (int i = 0; i < 500; ++i) {
            std::string cmdline = read_file("/proc/" + std::to_string(pid_) + "/cmdline");
            if (cmdline.compare(0, want.size(), want) == 0) break;
            ::usleep(10000);
        }
    }
    ~NamedProcess() {
        if (pid_ > 0) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, nullptr, 0);
        }
    }
    int pid() const { return static_cast<int>(pid_); }

private:
    pid_t pid_;
};

std::string record_path(const std::string &name) { return "/tmp/process_pid_" + name + ".pid"; }

// Names of the entries of /tmp that begin with "process_pid".
std::string pid_records_in_tmp() {
    std::string names;
    DIR *d = ::opendir("/tmp");
    if (d == nullptr) return names;
    while (dirent *e = ::readdir(d)) {
        if (std::strncmp(e->d_name, "process_pid", 11) == 0) names += std::string(e->d_name) + "\n";
    }
    ::closedir(d);
    return names;
}

// Lowers the soft limit of open files so that only `free_fds` more
// descriptors can be opened; restores it when the object goes.
class FdLimit {
public:
    explicit FdLimit(int free_fds) {
        ::getrlimit(RLIMIT_NOFILE, &saved_);
        int lowest = ::dup(0);
        ::close(lowest);
        rlimit lim = saved_;
        lim.rlim_cur = static_cast<rlim_t>(lowest + free_fds);
        ::setrlimit(RLIMIT_NOFILE, &lim);
    }
    ~FdLimit() { ::setrlimit(RLIMIT_NOFILE, &saved_); }

private:
    rlimit saved_{};
};

class PidRecords : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(qvstest::in_sandbox());
        // The process list's width is the system's; keep it unlimited.
        ::unsetenv("COLUMNS");
    }
};

}  // namespace

TEST_F(PidRecords, FindsRunningProcessByName) {
    NamedProcess p("zzalpha-daemon");
    CaptureFd out(1);
    EXPECT_EQ(qvs_util_get_process_pid("zzalpha-daemon"), p.pid());
    EXPECT_EQ(out.text(), "");
}

TEST_F(PidRecords, SubstringOfCommandLineFindsThatProcess) {
    NamedProcess p("zzalpha-daemon");
    // Part of the name, and text from the arguments after it.
    EXPECT_EQ(qvs_util_get_process_pid("lpha-dae"), p.pid());
    EXPECT_EQ(qvs_util_get_process_pid("daemon 1000"), p.pid());
}

TEST_F(PidRecords, FirstListedProcessWinsWhenSeveralMatch) {
    NamedProcess first("zzlead-one");
    NamedProcess second("zzlead-two");
    ASSERT_LT(first.pid(), second.pid());
    EXPECT_EQ(qvs_util_get_process_pid("zzlead"), first.pid());
    EXPECT_EQ(qvs_util_get_process_pid("lead-tw"), second.pid());
}

// The gateway's "ps -ef" is busybox's: "PID USER COMMAND", the PID first
// (procps puts the user name first). Checked with busybox's ps in every
// userland.
TEST_F(PidRecords, BusyboxProcessListGivesThePid) {
    qvstest::BusyboxFirst busybox({"ps"});
    ASSERT_TRUE(busybox.ok());
    ASSERT_NE(qvstest::run("ps --help 2>&1").find("BusyBox"), std::string::npos);
    NamedProcess first("zzbusy-one");
    NamedProcess second("zzbusy-two");
    // The line the lookup reads begins with the PID.
    const std::string line = qvstest::run("ps -ef | grep 'zzbusy-two' | grep -v grep");
    EXPECT_EQ(std::atoi(line.c_str()), second.pid()) << line;
    CaptureFd out(1);
    EXPECT_EQ(qvs_util_get_process_pid("zzbusy-one"), first.pid());
    EXPECT_EQ(qvs_util_get_process_pid("zzbusy"), first.pid());
    EXPECT_EQ(qvs_util_get_process_pid("busy-tw"), second.pid());
    EXPECT_EQ(qvs_util_get_process_pid("zzbusy-ghost"), 0);
    EXPECT_EQ(out.text(), "qvs_util_get_process_pid() process:zzbusy-ghost not find !\n");
    EXPECT_EQ(qvs_util_recordProcessPid("zzbusy-two"), 0);
    EXPECT_EQ(read_file(record_path("zzbusy-two")), std::to_string(second.pid()));
    EXPECT_EQ(qvs_util_getPidFromRecord("zzbusy-two"), second.pid());
}

TEST_F(PidRecords, NoMatchingProcessGivesZeroAndSaysSo) {
    CaptureFd out(1);
    EXPECT_EQ(qvs_util_get_process_pid("zzghost"), 0);
    EXPECT_EQ(out.text(), "qvs_util_get_process_pid() process:zzghost not find !\n");
}

TEST_F(PidRecords, SearchThatCannotBeRunGivesMinusOne) {
    CaptureFd out(1);
    int r;
    {
        FdLimit limit(0);  // no pipe can be made
        r = qvs_util_get_process_pid("zzghost");
    }
    EXPECT_EQ(r, -1);
    EXPECT_EQ(out.text(), "qvs_util_get_process_pid() couln't popen:ps -ef | grep 'zzghost' | grep -v grep \n");
}

TEST_F(PidRecords, NullNameGivesMinusOne) {
    CaptureFd out(1);
    EXPECT_EQ(qvs_util_get_process_pid(nullptr), -1);
    EXPECT_EQ(out.text(), "");
}

TEST_F(PidRecords, EmptyNameMatchesNoPidLine) {
    // Every line matches; the first one is the list's header, which has no
    // number on it.
    CaptureFd out(1);
    EXPECT_EQ(qvs_util_get_process_pid(""), 0);
    EXPECT_EQ(out.text(), "qvs_util_get_process_pid() process: not find !\n");
}

TEST_F(PidRecords, NameThatCouldChangeTheCommandIsRefused) {
    const char *names[] = {"zz;touch /tmp/zzpwned", "zz'; touch /tmp/zzpwned; '", "$(touch /tmp/zzpwned)",
                           "`touch /tmp/zzpwned`", "zz|touch /tmp/zzpwned", "zz\ntouch /tmp/zzpwned",
                           "zz&&touch /tmp/zzpwned", "zz>/tmp/zzpwned"};
    for (const char *name : names) {
        CaptureFd err(2);
        EXPECT_EQ(qvs_util_get_process_pid(name), -1) << name;
        std::string log = err.text();
        EXPECT_NE(log.find("qvs_util_get_process_pid"), std::string::npos) << log;
        EXPECT_FALSE(exists("/tmp/zzpwned")) << name;
    }
}

TEST_F(PidRecords, LongestNameThatFitsRunsAndOneMoreIsRefused) {
    NamedProcess p(std::string(500, 'z') + "-longname");
    // "ps -ef | grep '" + 480 characters + "' | grep -v grep" is 511: whole.
    EXPECT_EQ(qvs_util_get_process_pid(std::string(480, 'z').c_str()), p.pid());
    // One more would cut the line short: refused, nothing run.
    qvsim_journal_clear();
    CaptureFd out(1);
    std::string name(481, 'z');
    EXPECT_EQ(qvs_util_get_process_pid(name.c_str()), -1);
    EXPECT_EQ(out.text(), "");
    std::vector<std::vector<std::string>> logs;
    for (auto &f : qvstest::journal_fields())
        if (!f.empty() && f[0] != "attach" && f[0] != "detach") logs.push_back(f);
    ASSERT_EQ(logs.size(), 1u);
    ASSERT_EQ(logs[0].size(), 6u);
    EXPECT_EQ(logs[0][0], "log");
    EXPECT_EQ(logs[0][2], "qvs_util_get_process_pid");
    EXPECT_EQ(logs[0][4], "1");
    EXPECT_EQ(logs[0][5], "refused text too long for its command line [" + name + "]\n");
}

TEST_F(PidRecords, RecordOfATooLongNameWritesNothing) {
    std::string name(481, 'z');
    EXPECT_EQ(qvs_util_recordProcessPid(name.c_str()), -1);
    EXPECT_FALSE(exists(record_path(name)));
    EXPECT_EQ(qvs_util_recordProcessPid(std::string(480, 'z').c_str()), 0);
}

TEST_F(PidRecords, RecordWritesThePidOfTheRunningProcess) {
    NamedProcess p("zzrec-daemon");
    EXPECT_EQ(qvs_util_recordProcessPid("zzrec-daemon"), 0);
    EXPECT_EQ(read_file(record_path("zzrec-daemon")), std::to_string(p.pid()));
    EXPECT_EQ(qvs_util_getPidFromRecord("zzrec-daemon"), p.pid());
}

TEST_F(PidRecords, RecordOfUnmatchedNameHoldsZero) {
    CaptureFd out(1);
    EXPECT_EQ(qvs_util_recordProcessPid("zznobody"), 0);
    EXPECT_EQ(out.text(), "qvs_util_get_process_pid() process:zznobody not find !\n");
    EXPECT_EQ(read_file(record_path("zznobody")), "0");
    EXPECT_EQ(qvs_util_getPidFromRecord("zznobody"), 0);
}

TEST_F(PidRecords, RecordReplacesAnOlderRecord) {
    write_file(record_path("zzrec-daemon"), "123456789012");
    NamedProcess p("zzrec-daemon");
    EXPECT_EQ(qvs_util_recordProcessPid("zzrec-daemon"), 0);
    EXPECT_EQ(read_file(record_path("zzrec-daemon")), std::to_string(p.pid()));
}

TEST_F(PidRecords, FailedSearchIsRecordedAsMinusOne) {
    CaptureFd out(1);
    int r;
    {
        FdLimit limit(1);  // room for the record file but not for a pipe
        r = qvs_util_recordProcessPid("zzghost");
    }
    EXPECT_EQ(r, 0);
    EXPECT_EQ(out.text(), "qvs_util_get_process_pid() couln't popen:ps -ef | grep 'zzghost' | grep -v grep \n");
    EXPECT_EQ(read_file(record_path("zzghost")), "-1");
    EXPECT_EQ(qvs_util_getPidFromRecord("zzghost"), -1);
}

TEST_F(PidRecords, RecordWithoutNameIsRefused) {
    {
        CaptureFd out(1);
        EXPECT_EQ(qvs_util_recordProcessPid(nullptr), -1);
        EXPECT_EQ(out.text(), "qvs_util_recordProcessPid() process_name is NULL\n");
    }
    {
        CaptureFd out(1);
        EXPECT_EQ(qvs_util_recordProcessPid(""), -1);
        EXPECT_EQ(out.text(), "qvs_util_recordProcessPid() process_name is NULL\n");
    }
    EXPECT_EQ(pid_records_in_tmp(), "");
}

TEST_F(PidRecords, RecordFileThatCannotBeOpenedFails) {
    ASSERT_EQ(::mkdir(record_path("zzdir").c_str(), 0755), 0);
    CaptureFd out(1);
    EXPECT_EQ(qvs_util_recordProcessPid("zzdir"), -1);
    EXPECT_EQ(out.text(), "qvs_util_get_process_pid() process:zzdir not find !\n"
                          "record Pid_file:/tmp/process_pid_zzdir.pid fail !");
}

TEST_F(PidRecords, RecordOfUnsafeNameWritesNothing) {
    CaptureFd err(2);
    EXPECT_EQ(qvs_util_recordProcessPid("zz;touch /tmp/zzpwned"), -1);
    EXPECT_EQ(qvs_util_recordProcessPid("zz$(id)"), -1);
    EXPECT_NE(err.text().find("qvs_util_recordProcessPid"), std::string::npos);
    EXPECT_EQ(pid_records_in_tmp(), "");
    EXPECT_FALSE(exists("/tmp/zzpwned"));
}

TEST_F(PidRecords, RecordPathIsCutAt255Characters) {
    std::string name = std::string(300, 'y');
    NamedProcess p(name);
    EXPECT_EQ(qvs_util_recordProcessPid(name.c_str()), 0);
    // "/tmp/process_pid_" is 17 characters: 238 of the name fit, no ".pid".
    std::string cut = "/tmp/process_pid_" + std::string(238, 'y');
    ASSERT_EQ(cut.size(), 255u);
    EXPECT_EQ(pid_records_in_tmp(), "process_pid_" + std::string(238, 'y') + "\n");
    EXPECT_EQ(read_file(cut), std::to_string(p.pid()));
    EXPECT_EQ(qvs_util_getPidFromRecord(name.c_str()), p.pid());
    // Any name with the same first 238 characters reads the same record.
    EXPECT_EQ(qvs_util_getPidFromRecord((std::string(238, 'y') + "other").c_str()), p.pid());
}

TEST_F(PidRecords, ReadingANameNeverRecordedGivesMinusOne) {
    CaptureFd out(1);
    EXPECT_EQ(qvs_util_getPidFromRecord("zzneverseen"), -1);
    EXPECT_EQ(out.text(), "");
}

TEST_F(PidRecords, ReadingAnEmptyRecordGivesZero) {
    write_file(record_path("zzempty"), "");
    EXPECT_EQ(qvs_util_getPidFromRecord("zzempty"), 0);
}

TEST_F(PidRecords, ReadingARecordWithoutANumberGivesZero) {
    write_file(record_path("zztext"), "dnsmasq");
    EXPECT_EQ(qvs_util_getPidFromRecord("zztext"), 0);
}

TEST_F(PidRecords, ReadingTakesTheLeadingNumber) {
    write_file(record_path("zznum"), "  4242\n17\n");
    EXPECT_EQ(qvs_util_getPidFromRecord("zznum"), 4242);
    write_file(record_path("zzneg"), "-1");
    EXPECT_EQ(qvs_util_getPidFromRecord("zzneg"), -1);
}

TEST_F(PidRecords, ReadingWithoutNameIsRefused) {
    {
        CaptureFd out(1);
        EXPECT_EQ(qvs_util_getPidFromRecord(nullptr), -1);
        EXPECT_EQ(out.text(), "qvs_util_getPidFromRecord() process_name is NULL\n");
    }
    {
        // Even with a record named "/tmp/process_pid_.pid" present.
        write_file(record_path(""), "77");
        CaptureFd out(1);
        EXPECT_EQ(qvs_util_getPidFromRecord(""), -1);
        EXPECT_EQ(out.text(), "qvs_util_getPidFromRecord() process_name is NULL\n");
    }
}
