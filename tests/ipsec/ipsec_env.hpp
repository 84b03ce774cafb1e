// SPDX-License-Identifier: MIT
// Shared helpers of the IPsec suites: the fixed paths, a test CA made with
// `ipsec pki`, the store's IPsec configuration instances, the platform
// journal, a swanctl stand-in, and a pair of IKE daemons (charon with its
// userspace IPsec) in two network namespaces joined by a veth pair.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace ipsectest {

inline const std::string kInfo = "/tmp/ca.info";
inline const std::string kTmpCaKey = "/tmp/ca.key.pem";
inline const std::string kTmpCaCert = "/tmp/ca.cert.pem";
inline const std::string kDir = "/userconfig/config/ipsec";
inline const std::string kClientKey = kDir + "/client.key.pem";
inline const std::string kClientCert = kDir + "/client.cert.pem";
inline const std::string kCaKey = kDir + "/ca.key.pem";
inline const std::string kCaCert = kDir + "/ca.cert.pem";
inline const std::string kStatusFile = "/var/ipsec.status";

// Refuses to run outside qvs-sandbox; fresh store and journal, and
// "/userconfig/config" present.
void prepare();

// Runs a shell command and expects it to succeed; returns its output.
std::string sh(const std::string &cmd);

// A CA key and self-signed certificate made with `ipsec pki`, written to
// key_path and cert_path.
void make_ca(const std::string &subject, const std::string &key_path, const std::string &cert_path);
// A key and a certificate for subject issued by the CA, written to the paths.
void issue_cert(const std::string &ca_key, const std::string &ca_cert, const std::string &subject,
                const std::string &san, const std::string &key_path, const std::string &cert_path);

// --- the store ---------------------------------------------------------------
// Adds (when missing) configuration instance n with the enable flag given.
void add_config(int n, bool enabled);
std::string status_of(int n);
void set_status(int n, const std::string &status);
// Status of instances 1..10 that exist, by instance.
std::map<int, std::string> statuses();
// The (instance, value) of every "ConnectionStatus" write since the last
// clear, in order; each must follow an "nnotify 533 <instance>" line.
std::vector<std::pair<std::string, std::string>> status_writes(bool *all_without_notify = nullptr);

// --- the journal -------------------------------------------------------------
void journal_clear();
std::vector<std::string> commands_run();  // lines given to qv_do_cmd
bool journal_logged(const std::string &func, const std::string &message);  // level 1
bool balanced();  // as many detaches as attaches
int count(const char *kind);

// --- the swanctl stand-in ------------------------------------------------------
// Puts a swanctl first on PATH (this test process and its children only)
// whose "--list-sas" prints the file named by $QVS_TEST_SA_LIST, or, when
// that variable is "remove-capture", deletes "/var/ipsec.status" and prints
// nothing.
void use_swanctl_standin();
void standin_list(const std::string &text);

// --- two IKE daemons -------------------------------------------------------------
// Namespace "ipsa" (10.77.0.1, the gateway side: its vici socket is the
// default "/var/run/charon.vici" that the library's swanctl uses) and
// "ipsb" (10.77.0.2, the VPN server: its own /var/run, vici socket under
// /tmp). Both authenticate with certificates issued by one test CA. The
// gateway knows connections conn1, conn3, conn200 and conn255 with child SAs
// child1, child3, child200 and child255; the server accepts all of them.
class IkePair {
public:
    IkePair() = default;
    IkePair(const IkePair &) = delete;
    IkePair &operator=(const IkePair &) = delete;
    ~IkePair();

    // Builds the network, the certificates and the configurations, starts both
    // daemons and loads their configurations. Fatal failures via gtest.
    void start();
    // Stops both daemons (SIGTERM, then SIGKILL after 5 s) and waits for them.
    void stop();

    // swanctl against the gateway's daemon; returns its standard output.
    std::string gateway(const std::string &args, int *status = nullptr);
    // The gateway's current SA list.
    std::string list_sas();
    // Initiates conn<n> with child<n> and waits for the result.
    bool bring_up(int n);
    // Tears the IKE SA of conn<n> down (with its child SAs).
    void tear_down(int n);
    // Cuts the veth link on the server's side (no answer any more).
    void cut_link();
    // Whether the daemons hand their SAs to the kernel's ESP (else userspace
    // IPsec), and the kernel's SA list of the gateway's namespace.
    bool kernel_esp() const { return kernel_esp_; }
    std::string kernel_sas();

    std::string work_dir() const { return dir_; }

private:
    int start_daemon(const std::string &cmd);
    std::string dir_ = "/tmp/ike";
    int pid_a_ = -1;
    int pid_b_ = -1;
    bool kernel_esp_ = false;
};

// Whether this kernel takes an ESP state (the booted ARM target's does).
bool kernel_has_esp();

}  // namespace ipsectest
