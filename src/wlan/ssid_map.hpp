// SPDX-License-Identifier: MIT
// SSID numbering shared by the Wi-Fi families: the external-to-internal map
// text, its writer and the shared/guest list reader.
#pragma once

#include <cstdint>

#include "core/store.hpp"

namespace qvs::wlan {

inline constexpr int kMapRoom = 16;             // entries in a map or list table
inline constexpr int kTextSize = 64;            // map and list texts, with terminator
inline constexpr int kNumberScratch = 16;       // one number formatted with "%d"

inline constexpr int kSelectShared = 0x10000;   // "X_QV_SharedSSID_Map"
inline constexpr int kSelectGuest = 0x20000;    // "X_QV_GuestSSID_Map"

inline constexpr std::uint32_t kBitmapGuest = 0x20000;
inline constexpr std::uint32_t kBitmapMerged = 0x40000;
inline constexpr std::uint32_t kBitmapReserved = 0x80000;

inline constexpr char kParamExtMap[] = "X_QV_External_SSID_Map";
inline constexpr char kParamSharedMap[] = "X_QV_SharedSSID_Map";
inline constexpr char kParamGuestMap[] = "X_QV_GuestSSID_Map";
inline constexpr char kParamBitmap[] = "X_QV_SSID_Bitmap";

// Sets the map entry of external index ext (1 to 16) to internal index
// internal_idx (0 frees it) and writes the map back as 16 numbers. Never saves.
// 0, or -1 on a zero handle, a failed map read or a missing Wi-Fi object.
// An external index outside 1 to 16 changes no entry; the map is still
// rewritten.
int change_ssid_map(Handle handle, int ext, int internal_idx);

// Reads the shared (0x10000) or guest (0x20000) list into table, with *count
// the room on entry and the number read on return.
// 0; -22 zero handle and -1003 no Wi-Fi object (count set to 0); -1105 unknown
// selector (count unchanged); -1000 empty text or no room (count set to 0).
int get_mapped_ssid_list(Handle handle, std::uint8_t *table, int *count, int selector);

// Joins count entries as decimal numbers separated by "," into a cleared
// 64-byte text.
void join_entries(const std::uint8_t *table, int count, char (&text)[kTextSize]);

}  // namespace qvs::wlan
