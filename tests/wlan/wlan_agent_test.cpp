// SPDX-License-Identifier: MIT
// The Wi-Fi agent client and the uplink connection message, against a real
// UNIX stream listener at the agent's path inside the sandbox.
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <thread>

#include "wlan_fixture.hpp"

using namespace wlantest;

namespace {

const char kAgentPath[] = "/var/run/wlan_event_agent_socket";
const char kSetter[] = "qvs_set_uplink_wlan_conn_info";

// The agent's listening socket. Connections wait in its backlog until
// taken, so a call can finish before the test reads what it sent.
class Agent {
public:
    Agent() {
        fd_ = ::socket(AF_UNIX, SOCK_STREAM, 0);
        EXPECT_GE(fd_, 0);
        struct sockaddr_un a;
        std::memset(&a, 0, sizeof a);
        a.sun_family = AF_UNIX;
        std::strncpy(a.sun_path, kAgentPath, sizeof a.sun_path - 1);
        ::unlink(kAgentPath);
        EXPECT_EQ(::bind(fd_, reinterpret_cast<struct sockaddr *>(&a), sizeof a), 0) << std::strerror(errno);
        EXPECT_EQ(::listen(fd_, 8), 0);
    }
    ~Agent() {
        if (closer_.joinable()) closer_.join();
        ::close(fd_);
        ::unlink(kAgentPath);
    }
    // A connection waits to be taken.
    bool pending(int timeout_ms = 0) const {
        struct pollfd p = {fd_, POLLIN, 0};
        return ::poll(&p, 1, timeout_ms) == 1;
    }
    // Takes one waiting connection and reads it to its end.
    std::string take() {
        if (!pending()) return "<no connection>";
        int c = ::accept(fd_, nullptr, nullptr);
        if (c < 0) return "<accept failed>";
        std::string data;
        char buf[4096];
        ssize_t n = 0;
        while ((n = ::read(c, buf, sizeof buf)) > 0) data.append(buf, static_cast<std::size_t>(n));
        ::close(c);
        return data;
    }
    // From now on, accepts the next connection and closes it unread.
    void close_at_once() {
        closer_ = std::thread([this] {
            if (!pending(10000)) return;
            int c = ::accept(fd_, nullptr, nullptr);
            if (c >= 0) ::close(c);
        });
    }

private:
    int fd_ = -1;
    std::thread closer_;
};

// The 124 bytes the agent expects, built field by field.
std::string message(const std::string &ssid, const std::string &pwd, const std::string &mode) {
    std::string m(124, '\0');
    m[0] = 2;
    m.replace(4, ssid.size(), ssid);
    m.replace(37, pwd.size(), pwd);
    m.replace(101, mode.size(), mode);
    return m;
}

// perror lines among what went to standard error.
Lines perror_lines(const std::string &err) {
    Lines out;
    for (const auto &l : qvstest::split(err, '\n'))
        if (l.rfind("connect failed", 0) == 0 || l.rfind("send failed", 0) == 0 || l.rfind("socket create", 0) == 0)
            out.push_back(l);
    return out;
}

Lines repeat_lines(const std::string &line, int n) { return Lines(static_cast<std::size_t>(n), line); }

class AgentTest : public WlanTest {};

// ---- the uplink connection message ---------------------------------------------

TEST_F(AgentTest, FullFieldsArriveByteForByte) {
    Agent agent;
    const std::string ssid(32, 'S'), pwd(63, 'p'), mode = "WPA2-PSK-WPA3-SAE-MIXD";
    ASSERT_EQ(mode.size(), 22u);
    qvstest::CaptureFd err(2);
    EXPECT_EQ(qvs_set_uplink_wlan_conn_info(ssid.c_str(), pwd.c_str(), mode.c_str()), 0);
    EXPECT_EQ(perror_lines(err.text()), Lines{});
    const std::string got = agent.take();
    ASSERT_EQ(got.size(), 124u);
    const std::string want = message(ssid, pwd, mode);
    for (std::size_t i = 0; i < 124; ++i) EXPECT_EQ(got[i], want[i]) << "byte " << i;
    EXPECT_EQ(got[0], 2);
    EXPECT_EQ(got[36], '\0');   // the SSID's terminating zero, its 33rd byte
    EXPECT_EQ(got[100], '\0');  // the password's
    EXPECT_EQ(got[123], '\0');  // the security mode's
    EXPECT_EQ(logs(), Lines{log_line(kSetter, 1, "ssid = " + ssid + ", pwd=" + pwd + ", securityMode = " + mode + "\\n")});
    EXPECT_FALSE(agent.pending());  // one connection only
}

TEST_F(AgentTest, ShortFieldsAreZeroPadded) {
    Agent agent;
    EXPECT_EQ(qvs_set_uplink_wlan_conn_info("home", "secret12", "WPA2"), 0);
    const std::string got = agent.take();
    EXPECT_EQ(got, message("home", "secret12", "WPA2"));
    EXPECT_EQ(got.substr(1, 3), std::string(3, '\0'));
}

TEST_F(AgentTest, EmptyTextsGiveEmptyFields) {
    Agent agent;
    EXPECT_EQ(qvs_set_uplink_wlan_conn_info("", "", ""), 0);
    EXPECT_EQ(agent.take(), message("", "", ""));
    EXPECT_EQ(logs(), Lines{log_line(kSetter, 1, "ssid = , pwd=, securityMode = \\n")});
}

TEST_F(AgentTest, TextsLongerThanTheirFieldsAreCut) {
    Agent agent;
    const std::string ssid(40, 's'), pwd(80, 'p'), mode(30, 'm');
    EXPECT_EQ(qvs_set_uplink_wlan_conn_info(ssid.c_str(), pwd.c_str(), mode.c_str()), 0);
    EXPECT_EQ(agent.take(), message(ssid.substr(0, 32), pwd.substr(0, 63), mode.substr(0, 22)));
}

TEST_F(AgentTest, ANullArgumentSendsNothing) {
    Agent agent;
    EXPECT_EQ(qvs_set_uplink_wlan_conn_info(nullptr, "p", "m"), -1);
    EXPECT_EQ(qvs_set_uplink_wlan_conn_info("s", nullptr, "m"), -1);
    EXPECT_EQ(qvs_set_uplink_wlan_conn_info("s", "p", nullptr), -1);
    EXPECT_FALSE(agent.pending());
    EXPECT_EQ(logs(), repeat_lines(log_line(kSetter, 1, "wlan info args invaild\\n"), 3));
}

TEST_F(AgentTest, NoListenerIsReportedOnlyInTheLog) {
    qvstest::CaptureFd err(2);
    EXPECT_EQ(qvs_set_uplink_wlan_conn_info("home", "secret12", "WPA2"), 0);
    EXPECT_EQ(perror_lines(err.text()), Lines{"connect failed: No such file or directory"});
    EXPECT_EQ(logs(), (Lines{log_line(kSetter, 1, "ssid = home, pwd=secret12, securityMode = WPA2\\n"),
                             log_line(kSetter, 1, "send msg to wlan_event_agent failed.\\n")}));
}

TEST_F(AgentTest, TheMessageTouchesNoStore) {
    Agent agent;
    EXPECT_EQ(qvs_set_uplink_wlan_conn_info("home", "secret12", "WPA2"), 0);
    EXPECT_EQ(effects(), Lines{});
}

// ---- the client ---------------------------------------------------------------------

TEST_F(AgentTest, ClientSendsTheBytesGivenInOneConnection) {
    Agent agent;
    const char bytes[] = {'\x07', '\0', 'a', '\xff', 'z'};
    qvstest::CaptureFd err(2);
    EXPECT_EQ(communicate_to_wlan_agent(bytes, sizeof bytes), 0);
    EXPECT_EQ(err.text(), "");
    EXPECT_EQ(agent.take(), std::string(bytes, sizeof bytes));
    EXPECT_FALSE(agent.pending());
}

TEST_F(AgentTest, ClientWithNothingToSendStillConnects) {
    Agent agent;
    EXPECT_EQ(communicate_to_wlan_agent("", 0), 0);
    EXPECT_EQ(agent.take(), "");
}

TEST_F(AgentTest, ClientWithoutAListener) {
    qvstest::CaptureFd err(2);
    EXPECT_LT(communicate_to_wlan_agent("abc", 3), 0);
    EXPECT_EQ(err.text(), "connect failed: No such file or directory\n");
}

TEST_F(AgentTest, ClientAtARegularFile) {
    qvstest::write_file(kAgentPath, "not a socket\n");
    qvstest::CaptureFd err(2);
    EXPECT_EQ(communicate_to_wlan_agent("abc", 3), -1);
    EXPECT_EQ(err.text(), "connect failed: Connection refused\n");
    EXPECT_EQ(qvstest::read_file(kAgentPath), "not a socket\n");
}

TEST_F(AgentTest, ClientAtASocketNobodyListensOn) {
    int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    struct sockaddr_un a;
    std::memset(&a, 0, sizeof a);
    a.sun_family = AF_UNIX;
    std::strncpy(a.sun_path, kAgentPath, sizeof a.sun_path - 1);
    ASSERT_EQ(::bind(fd, reinterpret_cast<struct sockaddr *>(&a), sizeof a), 0);  // bound, not listening
    qvstest::CaptureFd err(2);
    EXPECT_EQ(communicate_to_wlan_agent("abc", 3), -1);
    EXPECT_EQ(err.text(), "connect failed: Connection refused\n");
    ::close(fd);
}

TEST_F(AgentTest, AListenerThatClosesAtOnceCutsAMessageShort) {
    Agent agent;
    agent.close_at_once();
    // More than the socket can hold: the send can only end when the agent
    // closes, sending part of it or nothing. The result stays connect's.
    const std::string big(4 << 20, 'x');
    qvstest::CaptureFd err(2);
    EXPECT_EQ(communicate_to_wlan_agent(big.data(), big.size()), 0);
    const Lines lines = perror_lines(err.text());
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].rfind("send failed: ", 0), 0u) << lines[0];
}

TEST_F(AgentTest, UplinkToAListenerThatClosesAtOnceStillAnswersZero) {
    Agent agent;
    agent.close_at_once();
    EXPECT_EQ(qvs_set_uplink_wlan_conn_info("home", "secret12", "WPA2"), 0);
    // connect succeeded, so the send outcome is not logged as a failure
    EXPECT_EQ(logs(), Lines{log_line(kSetter, 1, "ssid = home, pwd=secret12, securityMode = WPA2\\n")});
}

TEST_F(AgentTest, NoSocketIsReportedAndGivesMinusOne) {
    Agent agent;
    int out[2];
    ASSERT_EQ(::pipe(out), 0);
    pid_t pid = ::fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        ::dup2(out[1], 2);
        // No new descriptor at all: the soft limit 0 (the hard limit kept,
        // which memcheck requires of a program).
        struct rlimit none = {};
        ::getrlimit(RLIMIT_NOFILE, &none);
        none.rlim_cur = 0;
        ::setrlimit(RLIMIT_NOFILE, &none);
        int r = communicate_to_wlan_agent("abc", 3);
        ::_exit(r == -1 ? 0 : 1);
    }
    ::close(out[1]);
    std::string err;
    char buf[256];
    ssize_t n = 0;
    while ((n = ::read(out[0], buf, sizeof buf)) > 0) err.append(buf, static_cast<std::size_t>(n));
    ::close(out[0]);
    int status = 0;
    ASSERT_EQ(::waitpid(pid, &status, 0), pid);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    EXPECT_EQ(perror_lines(err), Lines{"socket create failed: Too many open files"});
    EXPECT_FALSE(agent.pending());
}

}  // namespace
