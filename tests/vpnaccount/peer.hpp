// SPDX-License-Identifier: MIT
// A provisioning server on a loopback address inside the test's own network
// namespace: it records the exact bytes a client sends and answers with a
// scripted reply.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>

namespace vpntest {

enum class PeerMode {
    ReplyAfterRequest,  // read one framed request, send the reply, wait for the client to close
    ReplyAtOnce,        // send the reply on accept, then record whatever comes until the client closes
    Silent,             // read the request and never answer (until released or the client closes)
    CloseAtOnce,        // close the connection right after accepting it
    SplitReply,         // send `reply`, wait for release(), then send `second`
};

class Peer {
public:
    // Listens on ip:port (port 0: any free port).
    // `delay_ms`: how long a ReplyAfterRequest server waits before answering.
    Peer(const char *ip, std::uint16_t port, PeerMode mode, std::string reply = std::string(),
         std::string second = std::string(), int delay_ms = 0);
    ~Peer();
    Peer(const Peer &) = delete;
    Peer &operator=(const Peer &) = delete;

    std::uint16_t port() const { return port_; }
    std::string designation() const;  // "ip:port"
    // Waits (up to a minute) until the server has read a whole request.
    bool wait_request();
    // Lets a Silent or SplitReply server go on.
    void release();
    // Waits for the server to finish and returns the bytes it received.
    std::string received();
    // Connections accepted (waits for the server to finish).
    int accepted();

private:
    void serve();
    std::string ip_;
    std::uint16_t port_ = 0;
    PeerMode mode_;
    std::string reply_, second_;
    int delay_ms_ = 0;
    bool is_released();
    int listen_fd_ = -1;
    std::string received_;
    int accepted_ = 0;
    std::mutex mu_;
    std::condition_variable cv_;
    bool released_ = false;
    bool got_request_ = false;
    void request_read();
    std::thread thread_;
};

// A 4-byte big-endian length followed by the text.
std::string frame(const std::string &text);

// Independent digests and encodings: openssl, run as a separate program.
std::string openssl_md5_upper(const std::string &text);
std::string openssl_base64(const std::string &bytes);
std::string openssl_base64_decode(const std::string &text);

// The formatted inner request text the client must build.
std::string inner_text(const std::string &tunnel, const std::string &user);

// Creates the LAN bridge "br0" with the given address (aa:bb:cc:dd:ee:ff).
bool make_bridge(const char *mac);

// Runs `fn` in a child process whose file descriptors are all used up and
// returns what it printed on standard output; *result gets fn's result.
std::string run_without_descriptors(int (*fn)(), int *result);

// Runs a command line and returns its exit status (0 = success).
int sh(const std::string &cmd);

}  // namespace vpntest
