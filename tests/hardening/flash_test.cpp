// SPDX-License-Identifier: MIT
// A full or read-only flash: every list-writing function either stores its
// change whole or fails and leaves the list file exactly as it was, and
// sends no kernel command that would follow a failed write.
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "hardening_env.hpp"
#include "qvs_utils.h"

using namespace hardtest;

namespace {

enum class Kind {
    kAppend,   // appends one line ("<item>\n")
    kRewrite,  // rewrites the whole file through a temporary file
    kDelete,   // deletes a line with sed
    kFlush,    // rewrites the file empty
};

struct Row {
    const char *name;
    std::string path;  // the list file
    std::string item;  // appended line without its line end (kAppend)
    Kind kind;
    int (*call)();
    int failed;      // the result when the write fails
    bool cmd_first;  // the kernel command comes before the write
    bool one_line;   // the file is one comma-joined line (application filter)
};

int vpn_add_ip() { return qvvpn_add_route_ip(1, "10.10.201.201"); }
int vpn_add_domain() { return qvvpn_add_route_domain(1, "new.example.com"); }
int vpn_add_mac() {
    Text t("00:11:22:33:44:55");
    return qvvpn_add_route_mac(1, t.get());
}
int vpn_set_ip() {
    Text t("10.0.0.1%10.0.0.2");
    return qvvpn_set_route_all(1, 0, t.get());
}
int vpn_set_domain() {
    Text t("a.example%b.example");
    return qvvpn_set_route_all(1, 1, t.get());
}
int vpn_set_mac() {
    Text t("00:11:22:33:44:55");
    return qvvpn_set_route_all(1, 2, t.get());
}
int vpn_del_ip() { return qvvpn_del_route_ip(1, "yyy"); }
int vpn_del_domain() { return qvvpn_del_route_domain(1, "yyy"); }
int vpn_del_mac() {
    Text t("yyy");
    return qvvpn_del_route_mac(1, t.get());
}
int vpn_flush_ip() { return qvvpn_flush_route_ip(1); }
int vpn_flush_domain() { return qvvpn_flush_route_domain(1); }
int vpn_flush_mac() { return qvvpn_flush_route_mac(1); }

int route_add_ip() {
    Text t("10.10.201.201");
    return approute_add_route_ip(1, t.get());
}
int route_add_domain() {
    Text t("new.example.com");
    return approute_add_route_domain(1, t.get());
}
int route_add_mac() {
    Text t("00:11:22:33:44:55");
    return approute_add_route_mac(1, t.get());
}
int route_add_iplist() {
    Text t("10.10.201.201");
    return approute_add_route_iplist(1, t.get());
}
int route_add_domainlist() {
    Text t("new.example.com");
    return approute_add_route_domainlist(1, t.get());
}
int route_add_maclist() {
    Text t("00:11:22:33:44:55");
    return approute_add_route_maclist(1, t.get());
}
int route_set_ip() {
    Text t("10.0.0.1,10.0.0.2");
    return approute_set_route_all(1, 0, t.get());
}
int route_set_domain() {
    Text t("a.example,b.example");
    return approute_set_route_all(1, 1, t.get());
}
int route_set_mac() {
    Text t("00:11:22:33:44:55");
    return approute_set_route_all(1, 2, t.get());
}
int route_del_ip() {
    Text t("yyy");
    return approute_del_route_ip(1, t.get());
}
int route_del_domain() {
    Text t("yyy");
    return approute_del_route_domain(1, t.get());
}
int route_del_mac() {
    Text t("yyy");
    return approute_del_route_mac(1, t.get());
}
int route_del_iplist() {
    Text t("yyy");
    return approute_del_route_iplist(1, t.get());
}
int route_flush_ip() { return approute_flush_route_ip(1); }
int route_flush_domain() { return approute_flush_route_domain(1); }
int route_flush_mac() { return approute_flush_route_mac(1); }

int filter_add_ip() {
    Text t("10.10.201.201");
    return appfilter_add_route_iplist(1, t.get());
}
int filter_add_domain() {
    Text t("new.example.com");
    return appfilter_add_route_domainlist(1, t.get());
}
int filter_add_mac() {
    Text t("00:11:22:33:44:55");
    return appfilter_add_route_maclist(1, t.get());
}
int filter_del_ip() {
    Text t("z1");
    return appfilter_del_route_iplist(1, t.get());
}
int filter_del_domain() {
    Text t("z1");
    return appfilter_del_route_domainlist(1, t.get());
}
int filter_del_mac() {
    Text t("z1");
    return appfilter_del_route_maclist(1, t.get());
}
int filter_flush_ip() { return appfilter_flush_route_ip(1); }
int filter_flush_domain() { return appfilter_flush_route_domain(1); }
int filter_flush_mac() { return appfilter_flush_route_mac(1); }

const std::vector<Row> &rows() {
    static const std::vector<Row> r = {
        {"qvvpn_add_route_ip", kVpnDir + "/VPN_IP_1", "10.10.201.201", Kind::kAppend, vpn_add_ip, -1, false, false},
        {"qvvpn_add_route_domain", kVpnDir + "/VPN_DOMAIN_1", "new.example.com", Kind::kAppend, vpn_add_domain, -1,
         false, false},
        {"qvvpn_add_route_mac", kVpnDir + "/VPN_MAC_1", "00:11:22:33:44:55", Kind::kAppend, vpn_add_mac, -1, false,
         false},
        {"qvvpn_set_route_all", kVpnDir + "/VPN_IP_1", "", Kind::kRewrite, vpn_set_ip, -1, false, false},
        {"qvvpn_set_route_all", kVpnDir + "/VPN_DOMAIN_1", "", Kind::kRewrite, vpn_set_domain, -1, false, false},
        {"qvvpn_set_route_all", kVpnDir + "/VPN_MAC_1", "", Kind::kRewrite, vpn_set_mac, -1, false, false},
        {"qvvpn_del_route_ip", kVpnDir + "/VPN_IP_1", "", Kind::kDelete, vpn_del_ip, 0, false, false},
        {"qvvpn_del_route_domain", kVpnDir + "/VPN_DOMAIN_1", "", Kind::kDelete, vpn_del_domain, 0, false, false},
        {"qvvpn_del_route_mac", kVpnDir + "/VPN_MAC_1", "", Kind::kDelete, vpn_del_mac, 0, false, false},
        {"qvvpn_flush_route_ip", kVpnDir + "/VPN_IP_1", "", Kind::kFlush, vpn_flush_ip, -1, false, false},
        {"qvvpn_flush_route_domain", kVpnDir + "/VPN_DOMAIN_1", "", Kind::kFlush, vpn_flush_domain, -1, false, false},
        {"qvvpn_flush_route_mac", kVpnDir + "/VPN_MAC_1", "", Kind::kFlush, vpn_flush_mac, -1, false, false},

        {"approute_add_route_ip", kRouteDir + "/approute_ip1", "10.10.201.201", Kind::kAppend, route_add_ip, -1, false,
         false},
        {"approute_add_route_domain", kRouteDir + "/approute_domain1", "new.example.com", Kind::kAppend,
         route_add_domain, -1, false, false},
        {"approute_add_route_mac", kRouteDir + "/approute_mac1", "00:11:22:33:44:55", Kind::kAppend, route_add_mac, -1,
         false, false},
        {"approute_add_route_iplist", kRouteDir + "/approute_ip1", "10.10.201.201", Kind::kAppend, route_add_iplist, -1,
         true, false},
        {"approute_add_route_domainlist", kRouteDir + "/approute_domain1", "new.example.com", Kind::kAppend,
         route_add_domainlist, -1, true, false},
        {"approute_add_route_maclist", kRouteDir + "/approute_mac1", "00:11:22:33:44:55", Kind::kAppend,
         route_add_maclist, -1, true, false},
        {"approute_set_route_all", kRouteDir + "/approute_ip1", "", Kind::kRewrite, route_set_ip, -1, true, false},
        {"approute_set_route_all", kRouteDir + "/approute_domain1", "", Kind::kRewrite, route_set_domain, -1, true,
         false},
        {"approute_set_route_all", kRouteDir + "/approute_mac1", "", Kind::kRewrite, route_set_mac, -1, true, false},
        {"approute_del_route_ip", kRouteDir + "/approute_ip1", "", Kind::kDelete, route_del_ip, 0, false, false},
        {"approute_del_route_domain", kRouteDir + "/approute_domain1", "", Kind::kDelete, route_del_domain, 0, false,
         false},
        {"approute_del_route_mac", kRouteDir + "/approute_mac1", "", Kind::kDelete, route_del_mac, 0, false, false},
        {"approute_del_route_iplist", kRouteDir + "/approute_ip1", "", Kind::kDelete, route_del_iplist, 0, true, false},
        {"approute_flush_route_ip", kRouteDir + "/approute_ip1", "", Kind::kFlush, route_flush_ip, -1, false, false},
        {"approute_flush_route_domain", kRouteDir + "/approute_domain1", "", Kind::kFlush, route_flush_domain, -1, false,
         false},
        {"approute_flush_route_mac", kRouteDir + "/approute_mac1", "", Kind::kFlush, route_flush_mac, -1, false, false},

        {"appfilter_add_route_iplist", kFilterDir + "/appfilter_ip1", "", Kind::kRewrite, filter_add_ip, -1, false, true},
        {"appfilter_add_route_domainlist", kFilterDir + "/appfilter_domain1", "", Kind::kRewrite, filter_add_domain, -1,
         false, true},
        {"appfilter_add_route_maclist", kFilterDir + "/appfilter_mac1", "", Kind::kRewrite, filter_add_mac, -1, false,
         true},
        {"appfilter_del_route_iplist", kFilterDir + "/appfilter_ip1", "", Kind::kRewrite, filter_del_ip, -1, false, true},
        {"appfilter_del_route_domainlist", kFilterDir + "/appfilter_domain1", "", Kind::kRewrite, filter_del_domain, -1,
         false, true},
        {"appfilter_del_route_maclist", kFilterDir + "/appfilter_mac1", "", Kind::kRewrite, filter_del_mac, -1, false,
         true},
        {"appfilter_flush_route_ip", kFilterDir + "/appfilter_ip1", "", Kind::kFlush, filter_flush_ip, -1, false, true},
        {"appfilter_flush_route_domain", kFilterDir + "/appfilter_domain1", "", Kind::kFlush, filter_flush_domain, -1,
         false, true},
        {"appfilter_flush_route_mac", kFilterDir + "/appfilter_mac1", "", Kind::kFlush, filter_flush_mac, -1, false,
         true},
    };
    return r;
}

// Old content of size bytes: lines of z and y for the line lists (the
// deleted entry "yyy" among them), or one comma-joined line "z1,z2,...".
std::string old_content(const Row &row, std::size_t size) {
    if (!row.one_line) {
        if (row.kind == Kind::kDelete) return "yyy\n" + filler_lines(size - 4);
        return filler_lines(size);
    }
    std::string out = "z1";
    for (int i = 2; out.size() < size; ++i) out += ",z" + std::to_string(i);
    out.resize(size);
    if (out.back() == ',') out.back() = 'q';
    return out;
}

const std::size_t kPage = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));

struct FullFlash {
    // Runs the row on a flash whose pages are all taken, the list file
    // holding old (its last page with page - old.size() % page bytes free).
    void run_full(const Row &row, const std::string &old, int expected, bool stored) {
        SCOPED_TRACE(std::string(row.name) + " " + row.path + " old size " + std::to_string(old.size()));
        small_flash();
        qvstest::write_file(row.path, old);
        fill_flash();
        const std::string dir = row.path.substr(0, row.path.rfind('/'));
        const auto names = dir_names(dir);
        qvsim_journal_clear();
        EXPECT_EQ(row.call(), expected);
        if (stored) {
            EXPECT_EQ(qvstest::read_file(row.path), old + row.item + "\n");
            return;
        }
        EXPECT_EQ(qvstest::read_file(row.path), old) << "the list file changed";
        EXPECT_EQ(dir_names(dir), names) << "a file was left behind";
        if (!row.cmd_first) {
            EXPECT_EQ(commands(), std::vector<std::string>{}) << "a command followed a failed write";
        }
    }
};


TEST(FullFlashAppend, OneByteShortOfTheLineStoresNothing) {
    ASSERT_EQ(qvsim_reset(), 0);
    for (const Row &row : rows()) {
        if (row.kind != Kind::kAppend) continue;
        const std::size_t line = row.item.size() + 1;
        // The last page has line - 1 bytes free: all but the line end fits.
        const std::string old = old_content(row, kPage - (line - 1));
        FullFlash f;
        f.run_full(row, old, row.failed, false);
        EXPECT_TRUE(logged(row.name, "open file " + row.path + " failed.")) << row.name;
    }
}

TEST(FullFlashAppend, AFullPageStoresNothing) {
    ASSERT_EQ(qvsim_reset(), 0);
    for (const Row &row : rows()) {
        if (row.kind != Kind::kAppend) continue;
        for (std::size_t pages : {1u, 2u, 3u}) {
            FullFlash f;
            f.run_full(row, old_content(row, pages * kPage), row.failed, false);
        }
    }
}

TEST(FullFlashAppend, ALineThatJustFitsIsStored) {
    ASSERT_EQ(qvsim_reset(), 0);
    for (const Row &row : rows()) {
        if (row.kind != Kind::kAppend) continue;
        const std::size_t line = row.item.size() + 1;
        FullFlash f;
        f.run_full(row, old_content(row, kPage - line), 0, true);
    }
}

TEST(FullFlashAppend, RepeatedAddsNeverMergeLines) {
    // The torn "10." of one add must not join the next add's line.
    ASSERT_EQ(qvsim_reset(), 0);
    small_flash();
    const std::string path = kVpnDir + "/VPN_IP_1";
    const std::string old = filler_lines(kPage - 3);
    qvstest::write_file(path, old);
    fill_flash();
    EXPECT_EQ(qvvpn_add_route_ip(1, "10.10.201.201"), -1);
    EXPECT_EQ(qvvpn_add_route_ip(1, "10.10.201.201"), -1);
    EXPECT_EQ(qvstest::read_file(path), old);
    ::unlink("/userconfig/filler");
    EXPECT_EQ(qvvpn_add_route_ip(1, "10.10.201.201"), 0);
    EXPECT_EQ(qvstest::read_file(path), old + "10.10.201.201\n");
}

TEST(FullFlashRewrite, AFailedRewriteLeavesTheOldFile) {
    ASSERT_EQ(qvsim_reset(), 0);
    for (const Row &row : rows()) {
        if (row.kind != Kind::kRewrite) continue;
        for (std::size_t size : {std::size_t{100}, kPage, 2 * kPage - 1}) {
            FullFlash f;
            f.run_full(row, old_content(row, size), row.failed, false);
            // The set-all functions fail quietly, as when the file cannot be opened.
            if (std::string(row.name).find("set_route_all") == std::string::npos) {
                EXPECT_TRUE(logged(row.name, "open file " + row.path + " failed.")) << row.name;
            }
        }
    }
}

TEST(FullFlashRewrite, FlushingNeedsNoRoom) {
    ASSERT_EQ(qvsim_reset(), 0);
    for (const Row &row : rows()) {
        if (row.kind != Kind::kFlush) continue;
        SCOPED_TRACE(row.name);
        small_flash();
        qvstest::write_file(row.path, old_content(row, 300));
        fill_flash();
        EXPECT_EQ(row.call(), 0);
        EXPECT_EQ(qvstest::read_file(row.path), "");
        EXPECT_TRUE(qvstest::exists(row.path));
    }
}

TEST(FullFlashDelete, AFailedDeleteKeepsTheLineAndSendsNoCommand) {
    ASSERT_EQ(qvsim_reset(), 0);
    for (const Row &row : rows()) {
        if (row.kind != Kind::kDelete) continue;
        for (std::size_t size : {std::size_t{200}, kPage}) {
            FullFlash f;
            f.run_full(row, old_content(row, size), row.failed, false);
            EXPECT_TRUE(logged(row.name, "delete line 1 of " + row.path + " failed.")) << row.name;
        }
    }
}

TEST(ReadOnlyFlash, EveryWriteFailsAndLeavesTheFile) {
    ASSERT_EQ(qvsim_reset(), 0);
    for (const Row &row : rows()) {
        SCOPED_TRACE(std::string(row.name) + " " + row.path);
        small_flash();
        const std::string old = old_content(row, 500);
        qvstest::write_file(row.path, old);
        const std::string dir = row.path.substr(0, row.path.rfind('/'));
        const auto names = dir_names(dir);
        read_only_flash();
        qvsim_journal_clear();
        // A read-only directory is not writable: the directory step fails
        // where the function has one that tests for writing.
        const int r = row.call();
        EXPECT_TRUE(r == row.failed || r == -1) << r;
        EXPECT_EQ(qvstest::read_file(row.path), old);
        EXPECT_EQ(dir_names(dir), names);
        if (!row.cmd_first) {
            EXPECT_EQ(commands(), std::vector<std::string>{});
        }
    }
}

// No inode left: the temporary file of a rewrite cannot even be created.
void no_free_inode(const std::string &dir) {
    for (int i = 0; i < 100000; ++i) {
        FILE *f = std::fopen((dir + "/inode" + std::to_string(i)).c_str(), "w");
        if (f == nullptr) return;
        std::fclose(f);
    }
    FAIL() << "inodes never ran out";
}

void small_inode_fs(const std::string &at) {
    int status = -1;
    qvstest::run("mount -t tmpfs -o mode=0755,size=1m,nr_inodes=32 qvs-few-inodes " + at + " 2>&1", &status);
    ASSERT_EQ(status, 0) << "cannot mount a tmpfs on " << at;
}

TEST(NoInodeLeft, ARewriteThatCannotCreateItsTemporaryFileLeavesTheList) {
    ASSERT_EQ(qvsim_reset(), 0);
    small_inode_fs("/userconfig");
    for (const std::string &d : {std::string("/userconfig/config"), kVpnDir, kRouteDir, kFilterDir})
        ASSERT_EQ(::mkdir(d.c_str(), 0755), 0) << d;
    const std::string path = kRouteDir + "/approute_ip1";
    qvstest::write_file(path, "10.0.0.1\n");
    no_free_inode("/userconfig");
    qvsim_journal_clear();
    EXPECT_EQ(approute_flush_route_ip(1), -1);
    EXPECT_EQ(qvstest::read_file(path), "10.0.0.1\n");
    EXPECT_TRUE(logged("approute_flush_route_ip", "open file " + path + " failed."));
    EXPECT_EQ(commands(), std::vector<std::string>{});
}

TEST(NoInodeLeft, TheDnsmasqFileStaysAsItWas) {
    ASSERT_EQ(qvsim_reset(), 0);
    ::mkdir("/userconfig/config", 0755);
    ::mkdir(kVpnDir.c_str(), 0755);
    small_inode_fs("/etc/dnsmasq");
    ASSERT_EQ(::mkdir("/etc/dnsmasq/ipset", 0755), 0);
    const std::string conf = "/etc/dnsmasq/ipset/vpn_domain1";
    qvstest::write_file(conf, "old.example vpn_domain1 1\n");
    no_free_inode("/etc/dnsmasq");
    qvsim_journal_clear();
    // The list itself is stored; the dnsmasq file cannot be rewritten.
    EXPECT_EQ(qvvpn_add_route_domain(1, "a.example"), 0);
    EXPECT_EQ(qvstest::read_file(kVpnDir + "/VPN_DOMAIN_1"), "a.example\n");
    EXPECT_EQ(qvstest::read_file(conf), "old.example vpn_domain1 1\n");
    EXPECT_TRUE(logged("update_dnsmasq_ipset_conf", "open file " + conf + " failed"));
}

}  // namespace
