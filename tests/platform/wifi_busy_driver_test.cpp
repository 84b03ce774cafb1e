// SPDX-License-Identifier: MIT
// The simulated Wi-Fi driver busy for the next few scan requests.
#include <string>

#include <gtest/gtest.h>

#include "sim_helpers.hpp"

using namespace simtest;

namespace {

int request(QVS_XMLSHM_HANDLE h, int radio) {
    const char *req = "Requested";
    return qvsXml_setOneParameterByOIDIndirect(h, QVS_OID_WIFI_RADIO, ia1(radio), "X_QV_DiagnosticsState",
                                               QVS_TYPE_STRING, req);
}

std::string device(const char *key) {
    char out[64] = {};
    return qvsim_device_get(key, out, sizeof out) == 0 ? out : "<none>";
}

TEST(WifiDriver, BusyForTheNextRequestsThenAsConfigured) {
    Attached a;
    ASSERT_EQ(qvsim_device_set("wifi.scan", "complete"), 0);
    ASSERT_EQ(qvsim_device_set("wifi.scan_results", "3"), 0);
    ASSERT_EQ(qvsim_device_set("wifi.scan_errors", "2"), 0);
    EXPECT_EQ(request(a.h, 1), 0);
    EXPECT_EQ(get(QVS_OID_WIFI_RADIO, "1", "X_QV_DiagnosticsState"), "Error");
    EXPECT_EQ(get(QVS_OID_WIFI_NEIGHBOR, "1", "ResultNumberOfEntries"), "0");
    EXPECT_EQ(device("wifi.scan_errors"), "1");
    EXPECT_EQ(request(a.h, 2), 0);  // counted across radios
    EXPECT_EQ(get(QVS_OID_WIFI_RADIO, "2", "X_QV_DiagnosticsState"), "Error");
    EXPECT_EQ(device("wifi.scan_errors"), "0");
    EXPECT_EQ(request(a.h, 1), 0);
    EXPECT_EQ(get(QVS_OID_WIFI_RADIO, "1", "X_QV_DiagnosticsState"), "Complete");
    EXPECT_EQ(get(QVS_OID_WIFI_NEIGHBOR, "1", "ResultNumberOfEntries"), "3");
    EXPECT_EQ(device("wifi.scan_errors"), "0");
}

TEST(WifiDriver, BusyAlsoWhenRequestsWouldStayPending) {
    Attached a;
    ASSERT_EQ(qvsim_device_set("wifi.scan_errors", "1"), 0);
    EXPECT_EQ(request(a.h, 1), 0);
    EXPECT_EQ(get(QVS_OID_WIFI_RADIO, "1", "X_QV_DiagnosticsState"), "Error");
    EXPECT_EQ(request(a.h, 1), 0);
    EXPECT_EQ(get(QVS_OID_WIFI_RADIO, "1", "X_QV_DiagnosticsState"), "Requested");
}

}  // namespace
