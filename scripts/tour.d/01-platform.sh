#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The simulated gateway itself: its configuration store and its journal.
set -euo pipefail
echo "The simulated gateway keeps the TR-069 data model in a store; qvstore shows it."
echo "--- the Wi-Fi common object and the first SSIDs of both radios:"
qvstore dump | awk '/^\[InternetGatewayDevice.X_QV_WiFi\]/,/^$/'
qvstore dump | awk '/^\[InternetGatewayDevice.WiFi.SSID.(1|9)\]/,/^$/'
echo "--- the WAN connection that carries the TR069 management service:"
qvstore dump | awk '/^\[InternetGatewayDevice.WANDevice.1.WANConnectionDevice.1.WANIPConnection.1\]/,/^$/'
echo "--- one parameter read and written by OID (399 = SSID object), then a restart without saving:"
qvstore get 399 2 Enable
qvstore set 399 2 Enable 1
qvstore get 399 2 Enable
qvstore restart
echo "after the restart: $(qvstore get 399 2 Enable) (not saved, so lost)"
echo "--- the record layout the library reads, for the SSID object:"
qvstore classes | awk '/^399\t/{p=1;print;next} /^[0-9]/{p=0} p'
