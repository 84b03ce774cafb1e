// SPDX-License-Identifier: MIT
#include "peer.hpp"

#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "test_support.hpp"

namespace vpntest {

namespace {

// Waits up to `ms` for fd to be readable.
bool readable(int fd, int ms) {
    struct pollfd p = {fd, POLLIN, 0};
    int r;
    do {
        r = poll(&p, 1, ms);
    } while (r < 0 && errno == EINTR);
    return r > 0;
}

// Appends what arrives until `want` bytes are there, EOF or a quiet minute.
void read_until(int fd, std::string &into, std::size_t want) {
    char buf[4096];
    while (into.size() < want && readable(fd, 60000)) {
        ssize_t n = recv(fd, buf, sizeof buf, 0);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return;
        into.append(buf, static_cast<std::size_t>(n));
    }
}

void send_all(int fd, const std::string &bytes) {
    std::size_t off = 0;
    while (off < bytes.size()) {
        ssize_t n = send(fd, bytes.data() + off, bytes.size() - off, MSG_NOSIGNAL);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return;
        off += static_cast<std::size_t>(n);
    }
}

std::size_t framed_size(const std::string &got) {
    if (got.size() < 4) return 4;
    const unsigned char *p = reinterpret_cast<const unsigned char *>(got.data());
    std::uint32_t n = (std::uint32_t{p[0]} << 24) | (std::uint32_t{p[1]} << 16) | (std::uint32_t{p[2]} << 8) | p[3];
    return 4 + static_cast<std::size_t>(n);
}

void read_request(int fd, std::string &into) {
    read_until(fd, into, 4);
    if (into.size() >= 4) read_until(fd, into, framed_size(into));
}

}  // namespace

Peer::Peer(const char *ip, std::uint16_t port, PeerMode mode, std::string reply, std::string second, int delay_ms)
    : ip_(ip), mode_(mode), reply_(std::move(reply)), second_(std::move(second)), delay_ms_(delay_ms) {
    listen_fd_ = socket(AF_INET, SOCK_STREAM, 0);
    EXPECT_GE(listen_fd_, 0);
    int one = 1;
    setsockopt(listen_fd_, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
    struct sockaddr_in a;
    std::memset(&a, 0, sizeof a);
    a.sin_family = AF_INET;
    a.sin_port = htons(port);
    inet_pton(AF_INET, ip, &a.sin_addr);
    EXPECT_EQ(bind(listen_fd_, reinterpret_cast<struct sockaddr *>(&a), sizeof a), 0) << ip << ":" << port;
    EXPECT_EQ(listen(listen_fd_, 4), 0);
    socklen_t len = sizeof a;
    getsockname(listen_fd_, reinterpret_cast<struct sockaddr *>(&a), &len);
    port_ = ntohs(a.sin_port);
    thread_ = std::thread([this] { serve(); });
}

Peer::~Peer() {
    release();
    if (thread_.joinable()) thread_.join();
    if (listen_fd_ >= 0) close(listen_fd_);
}

std::string Peer::designation() const { return ip_ + ":" + std::to_string(port_); }

void Peer::release() {
    std::lock_guard<std::mutex> lock(mu_);
    released_ = true;
    cv_.notify_all();
}

std::string Peer::received() {
    if (thread_.joinable()) thread_.join();
    return received_;
}

int Peer::accepted() {
    if (thread_.joinable()) thread_.join();
    return accepted_;
}

bool Peer::wait_request() {
    std::unique_lock<std::mutex> lock(mu_);
    return cv_.wait_for(lock, std::chrono::seconds(60), [this] { return got_request_; });
}

void Peer::request_read() {
    std::lock_guard<std::mutex> lock(mu_);
    got_request_ = true;
    cv_.notify_all();
}

bool Peer::is_released() {
    std::lock_guard<std::mutex> lock(mu_);
    return released_;
}

void Peer::serve() {
    // No client may come at all: give up when released, or after a minute.
    bool ready = false;
    for (int i = 0; i < 600 && !ready; ++i) {
        ready = readable(listen_fd_, 100);
        if (!ready && is_released()) return;
    }
    if (!ready) return;
    int fd = accept(listen_fd_, nullptr, nullptr);
    if (fd < 0) return;
    ++accepted_;
    int one = 1;
    setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
    switch (mode_) {
    case PeerMode::ReplyAfterRequest:
        read_request(fd, received_);
        request_read();
        if (delay_ms_ > 0) std::this_thread::sleep_for(std::chrono::milliseconds(delay_ms_));
        send_all(fd, reply_);
        read_until(fd, received_, static_cast<std::size_t>(-1));
        break;
    case PeerMode::ReplyAtOnce:
        send_all(fd, reply_);
        read_until(fd, received_, static_cast<std::size_t>(-1));
        break;
    case PeerMode::Silent: {
        read_request(fd, received_);
        request_read();
        // Until the test lets go or the client closes: poll both.
        for (;;) {
            {
                std::unique_lock<std::mutex> lock(mu_);
                if (cv_.wait_for(lock, std::chrono::milliseconds(100), [this] { return released_; })) break;
            }
            if (readable(fd, 0)) {
                char b[256];
                ssize_t n = recv(fd, b, sizeof b, 0);
                if (n <= 0) break;
                received_.append(b, static_cast<std::size_t>(n));
            }
        }
        break;
    }
    case PeerMode::CloseAtOnce:
        break;
    case PeerMode::SplitReply: {
        read_request(fd, received_);
        send_all(fd, reply_);
        {
            std::unique_lock<std::mutex> lock(mu_);
            cv_.wait_for(lock, std::chrono::seconds(60), [this] { return released_; });
        }
        send_all(fd, second_);
        read_until(fd, received_, static_cast<std::size_t>(-1));
        break;
    }
    }
    close(fd);
}

std::string frame(const std::string &text) {
    std::uint32_t n = static_cast<std::uint32_t>(text.size());
    std::string out;
    out.push_back(static_cast<char>(n >> 24));
    out.push_back(static_cast<char>(n >> 16));
    out.push_back(static_cast<char>(n >> 8));
    out.push_back(static_cast<char>(n));
    return out + text;
}

static std::string through_openssl(const std::string &bytes, const std::string &args) {
    static int serial = 0;
    std::string path = "/tmp/vpntest-openssl-" + std::to_string(getpid()) + "-" + std::to_string(serial++);
    qvstest::write_file(path, bytes);
    int status = -1;
    std::string out = qvstest::run("openssl " + args + " " + path, &status);
    unlink(path.c_str());
    EXPECT_EQ(status, 0) << "openssl " << args;
    while (!out.empty() && (out.back() == '\n' || out.back() == '\r')) out.pop_back();
    return out;
}

std::string openssl_md5_upper(const std::string &text) {
    // "-r" prints "<hex> *<file>".
    std::string out = through_openssl(text, "dgst -md5 -r");
    std::string hex = out.substr(0, out.find(' '));
    for (auto &c : hex) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return hex;
}

std::string openssl_base64(const std::string &bytes) { return through_openssl(bytes, "base64 -A -in"); }

std::string openssl_base64_decode(const std::string &text) {
    static int serial = 0;
    std::string path = "/tmp/vpntest-b64-" + std::to_string(getpid()) + "-" + std::to_string(serial++);
    qvstest::write_file(path, text + "\n");
    int status = -1;
    std::string out = qvstest::run("openssl base64 -d -A -in " + path, &status);
    unlink(path.c_str());
    EXPECT_EQ(status, 0);
    return out;
}

std::string inner_text(const std::string &tunnel, const std::string &user) {
    return "{\n\t\"CmdType\":\t\"GET_VPN_ACCOUNT\",\n\t\"tunnelName\":\t\"" + tunnel + "\",\n\t\"userId\":\t\"" +
           user + "\"\n}";
}

std::string run_without_descriptors(int (*fn)(), int *result) {
    const char *path = "/tmp/vpntest-nofd.out";
    std::fflush(nullptr);
    pid_t pid = fork();
    if (pid == 0) {
        if (std::freopen(path, "w", stdout) == nullptr) _exit(1);
        struct rlimit rl = {64, 64};
        setrlimit(RLIMIT_NOFILE, &rl);
        // Use up every descriptor (standard input may be closed, so open).
        while (open("/dev/null", O_RDONLY) >= 0) {
        }
        int r = fn();
        std::fflush(stdout);
        _exit(r + 100);
    }
    int st = 0;
    waitpid(pid, &st, 0);
    *result = WIFEXITED(st) ? WEXITSTATUS(st) - 100 : -999;
    return qvstest::read_file(path);
}

int sh(const std::string &cmd) { return std::system((cmd + " >/dev/null 2>&1").c_str()); }

bool make_bridge(const char *mac) {
    return sh(std::string("ip link add br0 type bridge && ip link set br0 address ") + mac) == 0;
}

}  // namespace vpntest
