// SPDX-License-Identifier: MIT
// Switching one SSID on or off by its external index. Not exported: the
// timed-task handler of the operator family calls it inside the library.
#pragma once

extern "C" {

// Attaches to the store, looks up the internal index of external SSID
// ext_idx (1 to 8 only; any other index finds no SSID) in
// "X_QV_External_SSID_Map" and writes the SSID object's "Enable" (a one-byte
// boolean: 1 for any non-zero enable, else 0) through a parameter list.
// Nothing is saved: the caller saves. Logs under "__setSSIDEnable".
// 0 whenever the store was attached (also when no SSID was found or the write
// failed), -1 when it could not be attached ("XMLSHMINIT fail\n", level 1).
int __setSSIDEnable(int ext_idx, int enable);

}  // extern "C"
