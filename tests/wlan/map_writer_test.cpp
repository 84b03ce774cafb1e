// SPDX-License-Identifier: MIT
// The map writer when the Wi-Fi common object disappears between reading the
// map and writing it back (another process deleting it). The logger is
// wrapped so that the object vanishes right after the writer announces the
// new map text; every line still reaches the platform logger.
#include <dlfcn.h>

#include <cstdarg>
#include <cstring>

#include "wlan_fixture.hpp"

using namespace wlantest;

namespace {
bool g_vanish_after_new_map = false;
}  // namespace

extern "C" void qvs_log_print(const char *file, const char *func, int line, int level, const char *format, ...) {
    char msg[1024] = {};
    va_list ap;
    va_start(ap, format);
    std::vsnprintf(msg, sizeof msg, format, ap);
    va_end(ap);
    using Logger = void (*)(const char *, const char *, int, int, const char *, ...);
    static Logger real = reinterpret_cast<Logger>(dlsym(RTLD_NEXT, "qvs_log_print"));
    if (real != nullptr) real(file, func, line, level, "%s", msg);
    if (g_vanish_after_new_map && std::strncmp(msg, "new ssid_map=", 13) == 0) qvsim_fault_add("object 389");
}

namespace {

class MapWriter : public WlanTest {
protected:
    void TearDown() override {
        g_vanish_after_new_map = false;
        WlanTest::TearDown();
    }
};

TEST_F(MapWriter, AVanishedCommonObjectIsLoggedAndFails) {
    set_map(map16({1, 9, 2}));
    g_vanish_after_new_map = true;
    EXPECT_EQ(qvs_wlan_del_ssid(h, 3), -1);
    EXPECT_EQ(logs(), (Lines{log_line("change_ssid_map", 1, "new ssid_map=" + map16({1, 9})),
                             log_line("change_ssid_map", 1, "get wifi object error\\n")}));
    EXPECT_EQ(effects(), Lines{set_line(kSsid, "2", "Enable", kBool, "0")});
    qvsim_fault_clear();
    EXPECT_EQ(map_text(), map16({1, 9, 2}));
}

TEST_F(MapWriter, AddFailsTheSameWay) {
    set_map(map16({1, 9}));
    g_vanish_after_new_map = true;
    EXPECT_EQ(qvs_wlan_add_ssid(h, 3, 1), -1);
    EXPECT_EQ(logs(), (Lines{log_line("get_next_free_internal_idx", 1, "get next 2.4G free internal index=10\\n"),
                             log_line("change_ssid_map", 1, "new ssid_map=" + map16({1, 9, 10})),
                             log_line("change_ssid_map", 1, "get wifi object error\\n")}));
    EXPECT_EQ(effects(), Lines{});
}

TEST_F(MapWriter, TheWrappedLoggerPassesLinesThrough) {
    set_map(map16({1, 9, 2}));
    EXPECT_EQ(qvs_wlan_del_ssid(h, 3), 0);
    EXPECT_EQ(logs(), Lines{log_line("change_ssid_map", 1, "new ssid_map=" + map16({1, 9}))});
    EXPECT_EQ(map_text(), map16({1, 9}));
}

}  // namespace
