// SPDX-License-Identifier: MIT
// Process PID records: find a process by name in the process list, record
// its PID under "/tmp", read the record back.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "command.hpp"
#include "durable_file.hpp"

namespace qvs::pid {

// "/tmp/process_pid_<name>.pid" in a cleared 256-byte buffer (cut).
class RecordPath {
public:
    explicit RecordPath(const char *name) {
        std::memset(path_, 0, sizeof path_);
        std::snprintf(path_, sizeof path_, "%s_%s.pid", "/tmp/process_pid", name);
    }
    const char *c_str() const { return path_; }

private:
    char path_[256];
};

// The PID of the first line of the process list output: the first number on
// that line. Busybox lists the PID first; procps' "-ef" lists the user name
// first and the PID next, so leading fields that are no number are passed
// over. Returns false when the output has no line or the line no number.
bool read_first_pid(std::FILE *out, int &pid) {
    char line[512];
    std::memset(line, 0, sizeof line);
    if (std::fgets(line, sizeof line, out) == nullptr)
        return false;
    // The rest of a long line (and the other lines) are drained by pclose.
    const char *p = line;
    while (*p != '\0') {
        while (*p == ' ' || *p == '\t') ++p;
        if (*p == '\0' || *p == '\n') break;
        const char *end = p;
        while (*end != '\0' && *end != ' ' && *end != '\t' && *end != '\n') ++end;
        int value = 0;
        int used = 0;
        if (std::sscanf(p, "%d%n", &value, &used) == 1 && p + used == end) {
            pid = value;
            return true;
        }
        p = end;
    }
    return false;
}

constexpr const char *kLookup = "ps -ef | grep '%s' | grep -v grep";
using LookupCommand = qvs::CommandBuffer<512>;

// A name that would not leave the lookup line whole is refused: cut short,
// the line would lose its "grep -v grep" (or its closing quote).
bool refuse_long_name(const char *func, int line, const char *name) {
    return qvs::refuse_long_text(func, line, name, qvs::formatted_length(kLookup, name), LookupCommand::size());
}

}  // namespace qvs::pid

extern "C" {

int qvs_util_get_process_pid(const char *process_name) {
    if (process_name == nullptr)
        return -1;
    if (QVS_REFUSE_UNSAFE(process_name))
        return -1;
    if (qvs::pid::refuse_long_name(__func__, __LINE__, process_name))
        return -1;
    qvs::pid::LookupCommand cmd;
    cmd.format(qvs::pid::kLookup, process_name);
    qvs::Pipe out(cmd.c_str(), "r");
    if (!out) {
        std::printf("qvs_util_get_process_pid() couln't popen:%s \n", cmd.c_str());
        return -1;
    }
    int pid = 0;
    if (!qvs::pid::read_first_pid(out.get(), pid)) {
        pid = 0;
        std::printf("qvs_util_get_process_pid() process:%s not find !\n", process_name);
    }
    return pid;
}

int qvs_util_recordProcessPid(const char *process_name) {
    if (process_name == nullptr || process_name[0] == '\0') {
        std::puts("qvs_util_recordProcessPid() process_name is NULL");
        return -1;
    }
    // The name goes on a shell command line: nothing is run or written for
    // a name that could change it.
    if (QVS_REFUSE_UNSAFE(process_name) || qvs::pid::refuse_long_name(__func__, __LINE__, process_name))
        return -1;
    int pid = qvs_util_get_process_pid(process_name);
    qvs::pid::RecordPath path(process_name);
    // Other processes read the record: replaced by rename, never seen empty.
    qvs::FileRewrite f(path.c_str(), qvs::Durability::kVolatile);
    if (!f) {
        std::printf("record Pid_file:%s fail !", path.c_str());
        return -1;
    }
    std::fprintf(f.get(), "%d", pid);
    f.commit();
    return 0;
}

int qvs_util_getPidFromRecord(const char *process_name) {
    int pid = -1;
    if (process_name == nullptr || process_name[0] == '\0') {
        std::puts("qvs_util_getPidFromRecord() process_name is NULL");
        return pid;
    }
    qvs::pid::RecordPath path(process_name);
    qvs::File f(path.c_str(), "r");
    if (!f)
        return pid;
    pid = 0;
    if (std::fscanf(f.get(), "%d", &pid) != 1)
        pid = 0;
    return pid;
}

}  // extern "C"
