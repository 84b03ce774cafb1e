/* SPDX-License-Identifier: MIT */
/*
 * libqvs_utils, operator features: timed tasks, speed limits, sleep mode,
 * hardware check, channels in use and LAN host hardware entries.
 *
 * Callers include <qvs_utils.h>, which includes every family's header;
 * this one also compiles on its own.
 */
#ifndef QVS_UTILS_OPERATOR_H
#define QVS_UTILS_OPERATOR_H

#include <stdint.h>

#include "api.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ==== Operator features: timed tasks, speed limits, sleep, hardware ======= */

/* CMCC timed tasks and device-limit tasks run by the scheduler at least once a
 * minute, speed limits by MAC, the CUC sleep mode, Wi-Fi hardware check and
 * channels in use, and the LAN hosts' hardware QoS entries. The task handlers
 * read the local clock (the process's time zone). */

/** Size in bytes of the record filled by qvs_cuc_check_hardware_status(). */
#define QVS_HW_STATUS_SIZE 9
/** Bytes a qvs_cuc_get_channelsinuse() buffer must hold (the store's field). */
#define QVS_CHANNELS_IN_USE_SIZE 128

/** Runs the CMCC timed task InternetGatewayDevice.X_CMCC_TimedTask.Task.`<instance>`
 * if the current local time falls in the minute it names (seconds ignored).
 * Each time test prints "now time HH:MM, your timer HH:MM" to standard
 * output.
 * - A task whose Enable is not 1: nothing, 0.
 * - Action 1 in its minute: raises platform event 300 with a 4-byte payload
 *   holding 0, after deleting a once-only task (Repeat 0) whose Removable is
 *   1 and saving the store. Outside its minute: -1.
 * - Action 2: at Time switches Wi-Fi off (external SSID SSIDIndex, or SSIDs 1
 *   and 5 when it is 0), at EndTime back on (equal times only switch off). At
 *   EndTime a once-only task with Removable 1 is deleted and the store
 *   saved. The SSIDs' "Enable" writes are not saved here. 0 in or out of its
 *   minutes.
 * - Any other action: 0.
 *
 * Returns 0 when done or nothing to do; -1 when the store can't be attached
 * (level-1 log "XMLSHMINIT fail"), the task is missing, or an action-1 task
 * is called outside its minute.
 * @param instance the task's instance number
 * @par Touches
 * the timed task (deleted when used up), the SSID objects' "Enable", platform
 * event 300, a save of the store; attaches and detaches itself.
 * @par Thread safety
 * MT-Safe env: the task's minute is compared with the local time, which reads
 * the process's time zone (TZ). */
QVS_API int qvs_cmcc_timedTask_handler(int instance);

/** Sets "UpSpeedLimit" and "DownSpeedLimit" of the first LAN device
 * InternetGatewayDevice.LANDevice.1.Hosts.Host.`<n>` (n = 1..255, gaps
 * skipped) whose MAC address is the 6 given bytes, then saves the store.
 * Returns 0 on success (the store's result of the write is not returned);
 * -1 when mac is NULL, the store can't be attached (level-1 log), no
 * parameter list can be had or no device has that MAC; when a limit cannot
 * be added to the parameter list, the non-zero OR of the two add results
 * (nothing written).
 * @param mac 6 binary bytes
 * @param upLimit value for "UpSpeedLimit" (0: no limit)
 * @param downLimit value for "DownSpeedLimit" (0: no limit)
 * @par Touches
 * the LAN device's two limits and a save of the store; attaches and detaches
 * itself.
 * @par Thread safety
 * MT-Safe. */
QVS_API int qvs_setSpeedLimitByMac(const uint8_t *mac, uint32_t upLimit, uint32_t downLimit);

/** Runs the CMCC device-limit task InternetGatewayDevice.X_CMCC_DeviceLimit.Task.`<instance>`
 * for its LAN device (the first of devices 1..255 holding the task's MAC).
 * Prints the "now time" line of each time test to standard output.
 * - In the StartTime minute: the device gets the task's up and down limits.
 * - Otherwise in the EndTime minute: a daily task (Repeat non-zero) writes
 *   both limits 0 (lifted); a once-only task is deleted and the device keeps
 *   its limits.
 *
 * The store is saved after each of these. Returns 0 when an action was
 * taken; -1 when the store can't be attached (level-1 log), the task is
 * missing or its Enable is not 1, both its limits are 0, no device has its
 * MAC, no parameter list can be had, or neither time matches; the non-zero OR
 * of the add results when a limit cannot be added to the parameter list
 * (nothing written).
 * @param instance the task's instance number
 * @par Touches
 * the LAN device's "UpSpeedLimit" and "DownSpeedLimit", the task (deleted
 * when a once-only task ends), a save of the store; attaches and detaches
 * itself.
 * @par Thread safety
 * MT-Safe env: the task's minutes are compared with the local time, which
 * reads the process's time zone (TZ). */
QVS_API int qvs_cmcc_deviceLimit_handler(int instance);

/** CUC sleep mode. enable exactly 1 puts the gateway to sleep: the current
 * Wi-Fi switch ("X_QV_Enable" of InternetGatewayDevice.X_QV_WiFi) and
 * "Leds_Turnoff" are remembered as "LastWLANEnable" and "LastLeds_Turnoff"
 * of the sleep object, Wi-Fi is switched off, the LEDs off ("Leds_Turnoff"
 * 1) and the switch port of every existing LAN Ethernet interface 1..5 set
 * administratively down. Any other value wakes it: the remembered values
 * are written back and the ports set up. The sleep object's "Enable"
 * receives the value as given; the store is saved at the end. Logs
 * "enable=%d, gateway_sleep->Enable=%d." at level 1.
 *
 * Returns 0 on success or when "Enable" already holds the value (nothing
 * written); -1 when the store can't be attached, an object or a parameter
 * list is missing or the store refuses a write. A failure part-way leaves
 * the earlier writes applied and unsaved ("Enable" already changed, so the
 * same call then returns 0 at once).
 * @param enable 1: sleep; anything else: wake
 * @par Touches
 * InternetGatewayDevice.X_CU_Function.Sleep, the Wi-Fi common object, the LED
 * object, the switch ports' admin state, a save of the store; attaches and
 * detaches itself.
 * @par Thread safety
 * MT-Unsafe race:sleep: the Wi-Fi and LED settings are read, remembered in the
 * sleep object and changed in separate store calls, so concurrent calls can
 * remember each other's sleep settings. */
QVS_API int qvs_cuc_set_sleep_mode(int enable);

/** Returns the sleep object's "Enable" byte (0 or 1), or -1 when the store
 * can't be attached or the object is missing.
 * @par Touches
 * reads InternetGatewayDevice.X_CU_Function.Sleep; attaches and detaches
 * itself.
 * @par Thread safety
 * MT-Safe. */
QVS_API int qvs_cuc_get_sleep_mode(void);

/** Start hook of the Wi-Fi hardware check, kept for callers: does nothing
 * and returns 0.
 * @par Touches
 * nothing.
 * @par Thread safety
 * MT-Safe. */
QVS_API int qvs_cuc_check_hardware_start(void);

/** Wi-Fi hardware check: looks for a known Wi-Fi chip (PCI 14c3:7615,
 * 14c3:7915, 14c3:7663, 14c3:7603, in this order) in the PCI device list.
 * Byte 1 of the record becomes 0 when a chip is present, 254 when none is (a
 * hardware fault); the other bytes 0. Always returns 0; an unreadable list
 * counts as no chip and prints "fail to open file /proc/bus/pci/devices" to
 * standard error for each chip tried.
 * @param status record of QVS_HW_STATUS_SIZE (9) bytes; NULL: nothing written
 * @par Touches
 * reads "/proc/bus/pci/devices".
 * @par Thread safety
 * MT-Safe. */
QVS_API int qvs_cuc_check_hardware_status(uint8_t *status);

/** Copies the channels-in-use text of radio InternetGatewayDevice.WiFi.Radio.`<radio>`
 * into channels, unbounded. Returns 0 with the text copied; -1 when channels
 * is NULL, the store can't be attached or the radio object is missing.
 * @param radio radio index (1: 5 GHz, 2: 2.4 GHz)
 * @param channels buffer of QVS_CHANNELS_IN_USE_SIZE (128) bytes
 * @par Touches
 * reads the radio object; attaches and detaches itself.
 * @par Thread safety
 * MT-Safe. */
QVS_API int qvs_cuc_get_channelsinuse(int radio, char *channels);

/** Keeps the hardware QoS host entry of one LAN device in step with its
 * record (InternetGatewayDevice.LANDevice.1.Hosts.Host.`<n>`): an active
 * device whose limits differ from an active old record (or that has none)
 * gets an entry through libqv_qos_hostEntryAdd, without a delete first; an
 * inactive device holding an entry (BucketID or CounterID non-zero) loses
 * it through libqv_qos_hostEntryDel. "BucketID" and "CounterID" as the QoS
 * API left them are then written to the device's object (type code 2); the
 * store is not saved. Logs through util_printf: "Invalid Host. index:%d",
 * "LAN HostEntry add ...", "LAN HostEntry del ...", "newParameterList()
 * failed!!!". The result is informative only (callers ignore it): the
 * store's result of the write-back, or -1 for a zero handle, a refused
 * record or no parameter list.
 * @param handle attached store handle (0: nothing done)
 * @param hostIndex the QoS API's index of the entry
 * @param newHost the device's current record as the store returned it (NULL,
 *        or a MAC of all 0x00 or all 0xFF: refused)
 * @param oldHost the device's previous record (a copy), or NULL
 * @par Touches
 * the hardware QoS host entry, the device's "BucketID" and "CounterID".
 * @par Thread safety
 * MT-Safe race:hostIndex: the QoS entry and the device's "BucketID" and
 * "CounterID" are changed in separate calls, so two calls for the same entry
 * must not overlap. */
QVS_API int qvsTask_LanDeviceHost_exec(uint32_t handle, int hostIndex, const void *newHost, const void *oldHost);

#ifdef __cplusplus
}
#endif

#endif /* QVS_UTILS_OPERATOR_H */
