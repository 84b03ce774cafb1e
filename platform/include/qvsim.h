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
 *   add     <oid> <instance>
 *   del     <oid> <instance>
 *   save    indirect | noreply
 *   stats   <oid> <instance> <arg>
 *   event   <number> <length> <payload hex>
 *   device  <call> <arguments...>
 * <instance> is the instance list as text ("", "3", "1,2", "1,2,3").
 *
 * Faults (qvsim_fault_add), active until cleared, several at once:
 *   "attach"                      qvs_xmlShmInit returns 0
 *   "object <oid>"                lookups of that OID find nothing
 *   "object <oid> <instance>"     ... only that instance
 *   "paramlist"                   newParameterList returns NULL
 *   "write"                       every parameter write fails (-1)
 *   "write <param>"               writes of that parameter fail
 *   "read <param>"                qvsXml_getParameterByOID of it fails
 *   "read <param> after <n>"      ... from the (n+1)-th read on
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
/* Simulated reboot: the runtime store is replaced by the saved copy. */
int qvsim_restart(void);
/* Loads a model file (the default model's format) as runtime and saved store. */
int qvsim_load_model(const char *path);

/* Store access by OID, instance list text and parameter name, bypassing
 * the journal. Values as text (numbers in decimal, MACs as aa:bb:..). */
int qvsim_get(int oid, const char *instance, const char *param, char *out, size_t size);
int qvsim_set(int oid, const char *instance, const char *param, const char *value);
int qvsim_add_instance(int oid, const char *instance);
int qvsim_delete_instance(int oid, const char *instance);
int qvsim_exists(int oid, const char *instance);

/* The journal: whole text (malloc'ed, free it), and clearing. */
char *qvsim_journal_text(void);
int qvsim_journal_clear(void);

int qvsim_fault_add(const char *fault);
int qvsim_fault_clear(void);

/* Simulated kernel modules ("approute", "appfilter"): what rule index n
 * holds for list type t, as text (malloc'ed, free it). */
char *qvsim_module_list(const char *module, int index, int type);

#ifdef __cplusplus
}
#endif

#endif /* QVSIM_H */
