/* SPDX-License-Identifier: MIT */
/*
 * qvsim: control of the simulated gateway, for tests and tools only.
 * Not part of the maker's platform; libqvs_utils never includes this.
 *
 * State lives under qvsim_dir() (default "/var/qvsim", or $QVSIM_DIR): the
 * runtime store, the saved copy, the journal, the active faults and the
 * simulated kernel modules. Every process attached to the simulated store
 * (the test, qvsctl, a second writer) shares it.
 *
 * Journal: one line per thing the library did to the platform, fields
 * separated by a tab; texts have backslash, tab and line ends escaped as
 * "\\", "\t", "\n" (and "\r"):
 *   cmd     <runner> <line>            runner: qv_do_cmd | qvs_system | libqv_dosystem
 *   log     <file> <func> <line> <level> <message>
 *   attach  <handle>                   attach-refused (fault "attach")
 *   detach  <handle>
 *   set     <oid> <instance> <param> <type code> <value>
 *   nnotify <oid> <instance>           the set lines after it came without notification
 *   add     <oid> <instance>
 *   del     <oid> <instance>
 *   save    indirect | noreply
 *   stats   <oid> <instance> <arg>
 *   event   <number> <length> <payload hex>
 *   device  <call> <arguments...>
 * <instance> is the instance list as text ("", "3", "1,2", "1,2,3").
 * <type code> is written "0xc0000000", "0x20000001", "4", "1", "27", "2";
 * <value> is the value the caller passed: texts as they are, numbers in
 * decimal (one-byte integers signed for type 1).
 *
 * Read journal, off by default and after qvsim_reset (qvsim_journal_reads
 * switches it for every process; "qvstore journal reads on|off"):
 *   lookup  <oid> <instance> found|missing    qvsXml_GetObjectByOID / ByName
 *                                             (a path naming no object:
 *                                             "-" and the path)
 *   get     <oid> <instance> <param> <result> qvsXml_getParameterByOID, its
 *                                             result code (0, -1, -2, -3, -5)
 * <instance> of an address that cannot name any instance: "invalid".
 *
 * Faults (qvsim_fault_add), active until cleared, several at once:
 *   "attach"                      qvs_xmlShmInit returns 0
 *   "object <oid>"                lookups of that OID find nothing
 *   "object <oid> <instance>"     ... only that instance
 *   "paramlist"                   newParameterList returns NULL
 *   "listadd <param>"             setParameterToList of that parameter
 *                                 fails (-1); the entry is not added
 *   "write"                       every parameter write fails (-1)
 *   "write <param>"               writes of that parameter fail
 *   "read <param>"                qvsXml_getParameterByOID of it fails
 *   "read <param> after <n>"      ... from the (n+1)-th read on
 *   "device <call>"               that device call fails (-1), e.g.
 *                                 "device libqv_sys_getCpuUsage"
 */
#ifndef QVSIM_H
#define QVSIM_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

const char *qvsim_dir(void);

/* Fresh gateway: store from the default model (runtime and saved copy),
 * empty journal, no faults, empty simulated modules. */
int qvsim_reset(void);
/* Simulated reboot: the runtime store is replaced by the saved copy; the
 * volatile kernel and switch state is lost (simulated modules emptied, QoS
 * host entries, port admin and VLAN settings gone). Journal and faults stay. */
int qvsim_restart(void);
/* Loads a model file (the default model's format) as runtime and saved store. */
int qvsim_load_model(const char *path);

/* Copies the runtime store to the saved copy (like a save, not journaled). */
int qvsim_save(void);

/* Store access by OID, instance list text and parameter name, bypassing
 * the journal. Values as text (numbers in decimal, MACs as aa:bb:..). */
/* All return 0 on success and -1 on failure (unknown OID or parameter,
 * instance list with the wrong number of levels, value that does not parse).
 * qvsim_set writes only existing instances: add them first. qvsim_add_instance
 * takes the full instance list, or the parent's (one level fewer) for the
 * next free number. qvsim_exists gives 1 or 0. Numbers may be written in
 * decimal or 0x hexadecimal; one-byte and 16-bit parameters keep the low
 * bits. These change the runtime store only (see qvsim_save). */
int qvsim_get(int oid, const char *instance, const char *param, char *out, size_t size);
int qvsim_set(int oid, const char *instance, const char *param, const char *value);
int qvsim_add_instance(int oid, const char *instance);
int qvsim_delete_instance(int oid, const char *instance);
int qvsim_exists(int oid, const char *instance);
/* Object path ("InternetGatewayDevice.WiFi.SSID.3") to OID and instance list
 * text ("3"); 0, or -1 for a path of no known object. */
int qvsim_resolve(const char *path, int *oid, char *instance, size_t size);

/* Whole store in the model file's format (runtime, or the saved copy when
 * saved is non-zero); the object classes with their record layouts. Both
 * malloc'ed, free them. */
char *qvsim_dump_text(int saved);
char *qvsim_classes_text(void);

/* Simulated device state and facts, by key (values as text):
 *   "area", "province"        what libqv_sys_getArea/getProvince report
 *   "cpu_usage"               what libqv_sys_getCpuUsage reports
 *   "port.<n>.admin"          switch port n administratively up (1) / down (0)
 *   "switch.vlan"             "<defaultTCI> <vlanType>" of the last VLAN config
 *   "vlanmode"                "<vlanMode> <vlan> <vlanType> <phyIndex>" last set
 *   "netdev.<name>"           "<base> <type> <vid> <kind>" of each added device;
 *                             kind: "vlan" (a real 802.1Q sub-interface),
 *                             "macvlan" (kernel without 802.1Q: a MAC VLAN
 *                             on the base instead) or "recorded" (outside a
 *                             network namespace of the caller's own)
 *   "qos.<host index>"        "<mac> <bucket> <counter> <up> <down>"
 *   "wifi.scan"               how the Wi-Fi driver answers a scan request
 *                             written into a radio's "X_QV_DiagnosticsState":
 *                             "complete" (state becomes "Complete"), "error"
 *                             ("Error"); unset or anything else: the request
 *                             stays pending (the default)
 *   "wifi.scan_results"       with "complete": the radio's neighbour table
 *                             (392) ResultNumberOfEntries becomes this
 *   "wifi.scan_errors"        a count: while above 0, a scan request is
 *                             answered "Error" whatever "wifi.scan" says,
 *                             and the count goes down by one
 * qvsim_device_set with a null value removes the key. */
int qvsim_device_get(const char *key, char *out, size_t size);
int qvsim_device_set(const char *key, const char *value);
char *qvsim_device_text(void);

/* The journal: whole text (malloc'ed, free it), and clearing. */
char *qvsim_journal_text(void);
int qvsim_journal_clear(void);
/* Read journal on (non-zero) or off; 0, or -1 when the store cannot be opened. */
int qvsim_journal_reads(int on);
/* Number of journal lines of one kind ("attach", "detach", "set", "cmd",
 * ...); a self-attaching function left nothing attached when
 * qvsim_journal_count("attach") == qvsim_journal_count("detach"). */
int qvsim_journal_count(const char *kind);

int qvsim_fault_add(const char *fault);
int qvsim_fault_clear(void);

/* Simulated kernel modules ("approute", "appfilter"): what rule index n
 * holds for list type t, as text (malloc'ed, free it). */
char *qvsim_module_list(const char *module, int index, int type);

#ifdef __cplusplus
}
#endif

#endif /* QVSIM_H */
