// SPDX-License-Identifier: MIT
// The 30-second wait for a reply that never comes, measured once, with
// signals interrupting it on the way.
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstring>
#include <pthread.h>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "peer.hpp"
#include "qvs_utils.h"
#include "test_support.hpp"

using qvstest::CaptureFd;
using namespace vpntest;

namespace {
std::atomic<int> g_signals{0};
void on_signal(int) { ++g_signals; }
}  // namespace

TEST(CreateSocketToGetAccountWait, SilentServerTimesOutAfterThirtySecondsInAll) {
    struct sigaction sa;
    std::memset(&sa, 0, sizeof sa);
    sa.sa_handler = on_signal;  // no SA_RESTART
    sigaction(SIGUSR1, &sa, nullptr);
    Peer peer("127.0.0.1", 0, PeerMode::Silent);
    const std::string d = peer.designation();
    pthread_t self = pthread_self();
    std::atomic<bool> done{false};
    // Two interruptions, at about 10 s and 20 s: the wait goes on with the
    // time left, so the whole wait stays 30 s (not 50 s).
    std::thread kicker([&] {
        for (int s = 1; s <= 20 && !done; ++s) {
            std::this_thread::sleep_for(std::chrono::seconds(1));
            if ((s == 10 || s == 20) && !done) pthread_kill(self, SIGUSR1);
        }
    });
    char reply[64] = "untouched";
    auto start = std::chrono::steady_clock::now();
    int r;
    std::string out;
    {
        CaptureFd cap(1);
        r = createSocketToGetAccount("vpn1", "user42", d.c_str(), reply);
        out = cap.text();
    }
    double elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    done = true;
    kicker.join();
    peer.release();
    EXPECT_EQ(r, 0);
    EXPECT_STREQ(reply, "untouched");
    EXPECT_EQ(g_signals.load(), 2);
    EXPECT_GE(elapsed, 29.5);
    EXPECT_LT(elapsed, 45.0);
    EXPECT_NE(out.find("write data success! \nselect timeout \n"), std::string::npos) << out;
    EXPECT_EQ(out.find("Client-read() OK"), std::string::npos);
    EXPECT_GT(peer.received().size(), 4u) << "the request was sent";
}
