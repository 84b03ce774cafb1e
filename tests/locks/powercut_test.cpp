// SPDX-License-Identifier: MIT
// Power cuts at any instant: "/userconfig" is the power-cut filesystem over
// a backing directory under /run. It is first shown to lose what a writer
// never synced and to keep what one did, with the backing directory holding
// the visible files and, after a cut, the durable ones; then, for every
// function that writes under "/userconfig", a cut after each write, rename
// and sync the call makes leaves the list file byte for byte the old list
// or the new one, and once the call has returned, the new one (with at most
// one file sync and one directory sync). The IPsec generation, whose four
// fixed command lines write and copy without syncing, is checked at every
// step too.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "gateway_test.hpp"
#include "powercut_fs.hpp"
#include "qvs_utils.h"
#include "test_support.hpp"

using qvstest::PowerCutFs;
using qvstest::read_file;

namespace {

const std::string kMissing = PowerCutFs::kMissing;

int with_text(const std::string &text, const std::function<int(char *)> &f) {
    std::vector<char> buf(text.begin(), text.end());
    buf.push_back('\0');
    return f(buf.data());
}

class PowerCut : public qvstest::GatewayTest {
protected:
    void SetUp() override {
        GatewayTest::SetUp();
        ASSERT_TRUE(fs_.mount("/userconfig", kWork)) << "no FUSE in this sandbox";
        backing_ = fs_.backing();
        ASSERT_EQ(backing_, kWork + "/visible");
        for (const char *d : {"/userconfig/config", "/userconfig/config/qvvpn", "/userconfig/config/approute",
                              "/userconfig/config/appfilter"})
            ASSERT_EQ(::mkdir(d, 0755), 0) << d;
        ::mkdir("/etc/dnsmasq/ipset", 0755);
        fs_.sync_all();
    }
    void TearDown() override {
        fs_.unmount();
        GatewayTest::TearDown();
    }
    // Writes a file through the mount and makes it durable.
    void seed(const std::string &path, const std::string &content) {
        if (content == kMissing) {
            ::unlink(path.c_str());
        } else {
            qvstest::write_file(path, content);
        }
        fs_.sync_all();
    }
    // Writes text through stdio ("w" or "a"); with sync, flushes and fsyncs
    // the file before closing it.
    static bool write_through(const char *path, const char *mode, const char *text, bool sync) {
        std::FILE *f = std::fopen(path, mode);
        if (f == nullptr) return false;
        std::fputs(text, f);
        bool ok = std::fflush(f) == 0 && (!sync || ::fsync(::fileno(f)) == 0);
        return std::fclose(f) == 0 && ok;
    }
    // The same file as the backing directory holds it.
    std::string in_backing(const std::string &path) const {
        const std::string below = path.substr(std::string("/userconfig").size());
        return qvstest::exists(backing_ + below) ? read_file(backing_ + below) : kMissing;
    }
    const std::string kWork = "/run/powercut";
    PowerCutFs fs_;
    std::string backing_;
};

// ---- the filesystem itself --------------------------------------------------

TEST_F(PowerCut, AWriterThatNeverSyncsLosesItsDataAndItsNames) {
    seed("/userconfig/config/list", "old\n");
    ASSERT_TRUE(write_through("/userconfig/config/list.tmp", "w", "new\n", false));
    ASSERT_EQ(std::rename("/userconfig/config/list.tmp", "/userconfig/config/list"), 0);
    qvstest::write_file("/userconfig/config/other", "never synced\n");
    EXPECT_EQ(read_file("/userconfig/config/list"), "new\n");
    EXPECT_EQ(in_backing("/userconfig/config/list"), "new\n");
    EXPECT_EQ(in_backing("/userconfig/config/other"), "never synced\n");
    EXPECT_EQ(fs_.durable("/config/list"), "old\n");
    fs_.cut();
    EXPECT_EQ(read_file("/userconfig/config/list"), "old\n");
    EXPECT_EQ(in_backing("/userconfig/config/list"), "old\n");
    EXPECT_FALSE(qvstest::exists("/userconfig/config/list.tmp"));
    EXPECT_FALSE(qvstest::exists("/userconfig/config/other"));
    EXPECT_EQ(in_backing("/userconfig/config/other"), kMissing);
}

TEST_F(PowerCut, AnAppendNeverSyncedIsLostAndTheFileKeepsItsSyncedData) {
    seed("/userconfig/config/list", "one\n");
    ASSERT_TRUE(write_through("/userconfig/config/list", "a", "two\n", false));
    EXPECT_EQ(in_backing("/userconfig/config/list"), "one\ntwo\n");
    fs_.cut();
    EXPECT_EQ(read_file("/userconfig/config/list"), "one\n");
}

TEST_F(PowerCut, DataSyncedWithoutItsDirectoryIsLostByName) {
    ASSERT_TRUE(write_through("/userconfig/config/fresh", "w", "data\n", true));
    fs_.cut();
    EXPECT_FALSE(qvstest::exists("/userconfig/config/fresh"));
}

TEST_F(PowerCut, AWriterThatSyncsFileThenDirectoryKeepsEverything) {
    seed("/userconfig/config/list", "old\n");
    ASSERT_TRUE(write_through("/userconfig/config/list.tmp", "w", "new\n", true));
    ASSERT_EQ(std::rename("/userconfig/config/list.tmp", "/userconfig/config/list"), 0);
    const int dir = ::open("/userconfig/config", O_RDONLY | O_DIRECTORY);
    ASSERT_GE(dir, 0);
    ASSERT_EQ(::fsync(dir), 0);
    ::close(dir);
    EXPECT_EQ(fs_.durable("/config/list"), "new\n");
    fs_.cut();
    EXPECT_EQ(read_file("/userconfig/config/list"), "new\n");
    EXPECT_EQ(in_backing("/userconfig/config/list"), "new\n");
    EXPECT_FALSE(qvstest::exists("/userconfig/config/list.tmp"));
    EXPECT_EQ(fs_.file_syncs(), 1);
    EXPECT_EQ(fs_.dir_syncs(), 1);
}

// Every directory and file below a root, with its content: "d <path>" or
// "f <path> <content>".
std::vector<std::string> tree(const std::string &root) {
    std::vector<std::string> lines =
        qvstest::split(qvstest::run("cd " + root + " && find . -mindepth 1 | sort | while read -r p; do "
                                    "if [ -d \"$p\" ]; then echo \"d $p\"; else echo \"f $p $(cat \"$p\")\"; fi; done"),
                       '\n');
    if (!lines.empty() && lines.back().empty()) lines.pop_back();
    return lines;
}

TEST_F(PowerCut, TheBackingDirectoryHoldsTheVisibleFilesAndAfterACutTheDurableOnes) {
    ASSERT_EQ(::mkdir("/userconfig/config/kept", 0755), 0);
    ASSERT_EQ(::mkdir("/userconfig/config/lost", 0755), 0);
    qvstest::write_file("/userconfig/config/kept/a", "a1\n");
    qvstest::write_file("/userconfig/config/lost/b", "b1\n");
    qvstest::write_file("/userconfig/config/c", "c1\n");
    // Durable: "kept" and "lost" by name, "a" with its data, "c" by name
    // only (never synced: empty after a cut); "b" was never named durably.
    for (const char *dir : {"/userconfig/config", "/userconfig/config/kept"}) {
        const int fd = ::open(dir, O_RDONLY | O_DIRECTORY);
        ASSERT_GE(fd, 0);
        ASSERT_EQ(::fsync(fd), 0);
        ::close(fd);
    }
    const int a = ::open("/userconfig/config/kept/a", O_RDONLY);
    ASSERT_GE(a, 0);
    ASSERT_EQ(::fsync(a), 0);
    ::close(a);
    // Then changed again, visibly only.
    qvstest::write_file("/userconfig/config/kept/a", "a2\n");
    ASSERT_EQ(std::rename("/userconfig/config/c", "/userconfig/config/kept/c"), 0);

    const std::vector<std::string> visible = tree("/userconfig");
    EXPECT_EQ(visible, tree(backing_));
    EXPECT_NE(std::find(visible.begin(), visible.end(), "f ./config/kept/a a2"), visible.end());
    fs_.cut();
    const std::vector<std::string> after = {"d ./config",        "d ./config/appfilter", "d ./config/approute",
                                            "f ./config/c ",     "d ./config/kept",      "f ./config/kept/a a1",
                                            "d ./config/lost",   "d ./config/qvvpn"};
    EXPECT_EQ(tree(backing_), after);
    EXPECT_EQ(tree("/userconfig"), after);
}

// ---- every function that writes under /userconfig ---------------------------

struct Row {
    const char *name;
    std::string file;  // below /userconfig/config
    std::string before, after;
    std::function<int()> call;
    int result;
};

std::vector<Row> rows() {
    const std::string vip = "qvvpn/VPN_IP_1", vdom = "qvvpn/VPN_DOMAIN_1", vmac = "qvvpn/VPN_MAC_1";
    const std::string rip = "approute/approute_ip1", rdom = "approute/approute_domain1",
                      rmac = "approute/approute_mac1";
    const std::string fip = "appfilter/appfilter_ip1", fdom = "appfilter/appfilter_domain1",
                      fmac = "appfilter/appfilter_mac1";
    std::string thousand, thousand_list;
    for (int i = 0; i < 1000; ++i) {
        char b[32];
        std::snprintf(b, sizeof b, "10.9.%d.%d", i / 250, i % 250 + 1);
        thousand += std::string(b) + "\n";
        thousand_list += (i == 0 ? "" : ",") + std::string(b);
    }
    return {
        {"qvvpn_add_route_ip", vip, "10.0.0.1\n", "10.0.0.1\n10.0.0.2\n", [] { return qvvpn_add_route_ip(1, "10.0.0.2"); }, 0},
        {"qvvpn_add_route_ip (new file)", vip, kMissing, "10.0.0.2\n", [] { return qvvpn_add_route_ip(1, "10.0.0.2"); }, 0},
        {"qvvpn_del_route_ip", vip, "10.0.0.1\n10.0.0.2\n", "10.0.0.2\n", [] { return qvvpn_del_route_ip(1, "10.0.0.1"); }, 0},
        {"qvvpn_flush_route_ip", vip, "10.0.0.1\n", "", [] { return qvvpn_flush_route_ip(1); }, 0},
        {"qvvpn_add_route_domain", vdom, "a.example\n", "a.example\nb.example\n", [] { return qvvpn_add_route_domain(1, "b.example"); }, 0},
        {"qvvpn_del_route_domain", vdom, "a.example\nb.example\n", "b.example\n", [] { return qvvpn_del_route_domain(1, "a.example"); }, 0},
        {"qvvpn_flush_route_domain", vdom, "a.example\n", "", [] { return qvvpn_flush_route_domain(1); }, 0},
        {"qvvpn_add_route_mac", vmac, "", "aa:bb:cc:dd:ee:ff\n", [] { return with_text("AA:BB:CC:DD:EE:FF", [](char *t) { return qvvpn_add_route_mac(1, t); }); }, 0},
        {"qvvpn_del_route_mac", vmac, "aa:bb:cc:dd:ee:ff\n02:00:00:00:00:01\n", "02:00:00:00:00:01\n", [] { return with_text("aa:bb:cc:dd:ee:ff", [](char *t) { return qvvpn_del_route_mac(1, t); }); }, 0},
        {"qvvpn_flush_route_mac", vmac, "aa:bb:cc:dd:ee:ff\n", "", [] { return qvvpn_flush_route_mac(1); }, 0},
        {"qvvpn_set_route_all ip", vip, "10.0.0.1\n", "10.1.1.1\n10.1.1.2\n", [] { return with_text("10.1.1.1%10.1.1.2", [](char *t) { return qvvpn_set_route_all(1, 0, t); }); }, 0},
        {"qvvpn_set_route_all domain", vdom, "a.example\n", "c.example\n", [] { return with_text("c.example", [](char *t) { return qvvpn_set_route_all(1, 1, t); }); }, 0},
        {"qvvpn_set_route_all mac", vmac, "aa:bb:cc:dd:ee:ff\n", "02:00:00:00:00:02\n", [] { return with_text("02:00:00:00:00:02", [](char *t) { return qvvpn_set_route_all(1, 2, t); }); }, 0},
        {"approute_add_route_ip", rip, "10.0.0.1\n", "10.0.0.1\n10.0.0.2\n", [] { return with_text("10.0.0.2", [](char *t) { return approute_add_route_ip(1, t); }); }, 0},
        {"approute_add_route_domain", rdom, "", "a.example\n", [] { return with_text("a.example", [](char *t) { return approute_add_route_domain(1, t); }); }, 0},
        {"approute_add_route_mac", rmac, kMissing, "aa:bb:cc:dd:ee:ff\n", [] { return with_text("aa:bb:cc:dd:ee:ff", [](char *t) { return approute_add_route_mac(1, t); }); }, 0},
        {"approute_del_route_ip", rip, "10.0.0.1\n10.0.0.2\n", "10.0.0.1\n", [] { return with_text("10.0.0.2", [](char *t) { return approute_del_route_ip(1, t); }); }, 0},
        {"approute_del_route_domain", rdom, "a.example\nb.example\n", "b.example\n", [] { return with_text("a.example", [](char *t) { return approute_del_route_domain(1, t); }); }, 0},
        {"approute_del_route_mac", rmac, "aa:bb:cc:dd:ee:ff\n", "", [] { return with_text("AA:BB:CC:DD:EE:FF", [](char *t) { return approute_del_route_mac(1, t); }); }, 0},
        {"approute_flush_route_ip", rip, "10.0.0.1\n", "", [] { return approute_flush_route_ip(1); }, 0},
        {"approute_flush_route_domain", rdom, "a.example\n", "", [] { return approute_flush_route_domain(1); }, 0},
        {"approute_flush_route_mac", rmac, "aa:bb:cc:dd:ee:ff\n", "", [] { return approute_flush_route_mac(1); }, 0},
        {"approute_add_route_iplist", rip, "10.0.0.1\n", "10.0.0.1\n10.0.0.2\n10.0.0.3\n", [] { return with_text("10.0.0.2,10.0.0.3", [](char *t) { return approute_add_route_iplist(1, t); }); }, 0},
        {"approute_add_route_iplist (1000 items)", rip, "", thousand, [thousand_list] { return with_text(thousand_list, [](char *t) { return approute_add_route_iplist(1, t); }); }, 0},
        {"approute_add_route_domainlist", rdom, "www.a.example\nb.example\n", "b.example\na.example\nc.example\n", [] { return with_text("a.example,c.example", [](char *t) { return approute_add_route_domainlist(1, t); }); }, 0},
        {"approute_add_route_maclist", rmac, "", "aa:bb:cc:dd:ee:01\naa:bb:cc:dd:ee:02\n", [] { return with_text("aa:bb:cc:dd:ee:01,aa:bb:cc:dd:ee:02", [](char *t) { return approute_add_route_maclist(1, t); }); }, 0},
        {"approute_del_route_iplist", rip, "10.0.0.1\n10.0.0.2\n10.0.0.3\n", "10.0.0.2\n", [] { return with_text("10.0.0.1,10.0.0.3", [](char *t) { return approute_del_route_iplist(1, t); }); }, 0},
        {"approute_del_route_iplist (1000 items)", rip, thousand, "", [thousand_list] { return with_text(thousand_list, [](char *t) { return approute_del_route_iplist(1, t); }); }, 0},
        {"approute_del_route_domainlist", rdom, "a.example\nb.example\n", "", [] { return with_text("a.example,b.example", [](char *t) { return approute_del_route_domainlist(1, t); }); }, 0},
        {"approute_del_route_maclist", rmac, "aa:bb:cc:dd:ee:01\naa:bb:cc:dd:ee:02\n", "aa:bb:cc:dd:ee:01\n", [] { return with_text("AA:BB:CC:DD:EE:02", [](char *t) { return approute_del_route_maclist(1, t); }); }, 0},
        {"approute_add_route_list", rip, "", "10.0.0.5\n", [] { return with_text("10.0.0.5", [](char *t) { return approute_add_route_list(1, 0, t); }); }, 0},
        {"approute_del_route_list", rip, "10.0.0.5\n10.0.0.6\n", "10.0.0.6\n", [] { return with_text("10.0.0.5", [](char *t) { return approute_del_route_list(1, 0, t); }); }, 0},
        {"approute_set_route_all ip", rip, "10.0.0.1\n", "10.1.1.1\n10.1.1.2\n", [] { return with_text("10.1.1.1,10.1.1.2", [](char *t) { return approute_set_route_all(1, 0, t); }); }, 0},
        {"approute_set_route_all domain", rdom, "a.example\n", "c.example\n", [] { return with_text("c.example", [](char *t) { return approute_set_route_all(1, 1, t); }); }, 0},
        {"approute_set_route_all mac", rmac, "aa:bb:cc:dd:ee:ff\n", "02:00:00:00:00:02\n", [] { return with_text("02:00:00:00:00:02", [](char *t) { return approute_set_route_all(1, 2, t); }); }, 0},
        {"appfilter_add_route_iplist", fip, "10.0.0.1", "10.0.0.1,10.0.0.2", [] { return with_text("10.0.0.2", [](char *t) { return appfilter_add_route_iplist(1, t); }); }, 0},
        {"appfilter_add_route_domainlist", fdom, kMissing, "a.example", [] { return with_text("a.example", [](char *t) { return appfilter_add_route_domainlist(1, t); }); }, 0},
        {"appfilter_add_route_maclist", fmac, "", "aa:bb:cc:dd:ee:ff", [] { return with_text("aa:bb:cc:dd:ee:ff", [](char *t) { return appfilter_add_route_maclist(1, t); }); }, 0},
        {"appfilter_del_route_iplist", fip, "10.0.0.1,10.0.0.2", "10.0.0.2", [] { return with_text("10.0.0.1", [](char *t) { return appfilter_del_route_iplist(1, t); }); }, 0},
        {"appfilter_del_route_domainlist", fdom, "a.example,b.example", "a.example", [] { return with_text("b.example", [](char *t) { return appfilter_del_route_domainlist(1, t); }); }, 0},
        {"appfilter_del_route_maclist", fmac, "aa:bb:cc:dd:ee:ff", "", [] { return with_text("aa:bb:cc:dd:ee:ff", [](char *t) { return appfilter_del_route_maclist(1, t); }); }, 0},
        {"appfilter_flush_route_ip", fip, "10.0.0.1", "", [] { return appfilter_flush_route_ip(1); }, 0},
        {"appfilter_flush_route_domain", fdom, "a.example", "", [] { return appfilter_flush_route_domain(1); }, 0},
        {"appfilter_flush_route_mac", fmac, "aa:bb:cc:dd:ee:ff", "", [] { return appfilter_flush_route_mac(1); }, 0},
        {"appfilter_add_route_list", fip, "", "10.0.0.7", [] { return with_text("10.0.0.7", [](char *t) { return appfilter_add_route_list(1, 0, t); }); }, 0},
        {"appfilter_del_route_list", fip, "10.0.0.7,10.0.0.8", "10.0.0.8", [] { return with_text("10.0.0.7", [](char *t) { return appfilter_del_route_list(1, 0, t); }); }, 0},
        {"appfilter_flush_route_list", fip, "10.0.0.7", "", [] { return appfilter_flush_route_list(1, 0); }, 0},
    };
}

TEST_F(PowerCut, EveryListWriteLeavesTheOldOrTheNewListAtEveryInstant) {
    int checked = 0;
    std::size_t cuts = 0;
    for (const Row &row : rows()) {
        SCOPED_TRACE(row.name);
        const std::string path = "/userconfig/config/" + row.file;
        seed(path, row.before);
        const int file_syncs = fs_.file_syncs(), dir_syncs = fs_.dir_syncs();
        fs_.watch("/config/" + row.file);
        EXPECT_EQ(row.call(), row.result);
        const auto steps = fs_.steps();
        EXPECT_FALSE(steps.empty()) << "the call wrote nothing";
        cuts += steps.size();
        for (std::size_t k = 0; k < steps.size(); ++k) {
            const std::string &c = steps[k].content;
            EXPECT_TRUE(c == row.before || c == row.after)
                << "a cut after step " << k + 1 << " (" << steps[k].op << ") leaves [" << c << "]";
        }
        // Returned: on flash. One data sync for the one file, one directory
        // sync for its rename or creation.
        EXPECT_EQ(fs_.durable("/config/" + row.file), row.after);
        EXPECT_LE(fs_.file_syncs() - file_syncs, 1);
        EXPECT_LE(fs_.dir_syncs() - dir_syncs, 1);
        fs_.cut();
        EXPECT_EQ(qvstest::exists(path) ? read_file(path) : kMissing, row.after);
        ++checked;
    }
    EXPECT_EQ(checked, static_cast<int>(rows().size()));
    std::printf("%zu cut points over %d calls\n", cuts, checked);
}

// ---- the IPsec generation ---------------------------------------------------
//
// Its four command lines are fixed: two `ipsec pki ... > <file>` shell
// redirections and two `mv` of the CA files from /tmp (another filesystem,
// so mv copies them). None of them syncs; the library syncs the four files,
// then their directory, after the last command. So at every step:
//  - a cut leaves each file as it was before the call (missing or old) or
//    exactly its new content: no file is synced before its command has
//    finished, and their names only after all four data syncs;
//  - had the device written everything back just before the cut (a shell's
//    redirection cannot be stopped from that), each file would still be
//    missing, old, or a prefix of its new content: never anything else.
// Once the call has returned, all four are the new ones, durable.

const char *const kIpsecFiles[] = {"client.key.pem", "client.cert.pem", "ca.key.pem", "ca.cert.pem"};

bool prefix_of(const std::string &part, const std::string &whole) { return whole.compare(0, part.size(), part) == 0; }

bool pem(const std::string &text) {
    return text.rfind("-----BEGIN ", 0) == 0 && text.size() > 20 && text.compare(text.size() - 6, 6, "-----\n") == 0;
}

class IpsecPowerCut : public PowerCut {
protected:
    // Runs the generation over the files as they stand (before: each file's
    // content, or kMissing) and checks a cut at every step. The new files.
    std::vector<std::string> generate_and_check(const std::vector<std::string> &before, const char *organisation) {
        qvstest::run("ipsec pki --gen --outform pem > /tmp/ca.key.pem && ipsec pki --self --ca --lifetime 3650 "
                     "--in /tmp/ca.key.pem --dn \"C=CN, O=" + std::string(organisation) +
                     ", CN=Operator CA\" --outform pem > /tmp/ca.cert.pem");
        const std::string ca_key = read_file("/tmp/ca.key.pem"), ca_cert = read_file("/tmp/ca.cert.pem");
        EXPECT_TRUE(pem(ca_key) && pem(ca_cert));
        EXPECT_EQ(ipsec_write_ca_info("CN", organisation), 0);
        std::vector<std::string> watched;
        for (const char *name : kIpsecFiles) watched.push_back(std::string("/config/ipsec/") + name);
        const int file_syncs = fs_.file_syncs(), dir_syncs = fs_.dir_syncs();
        fs_.watch(watched);
        EXPECT_EQ(ipsec_generate_client_ca(), 0);

        std::vector<std::string> after;
        for (const char *name : kIpsecFiles) after.push_back(read_file(std::string("/userconfig/config/ipsec/") + name));
        EXPECT_EQ(after[2], ca_key);
        EXPECT_EQ(after[3], ca_cert);
        EXPECT_TRUE(pem(after[0]) && pem(after[1]));
        EXPECT_NE(after[0], before[0]);
        EXPECT_NE(after[1], before[1]);

        const auto steps = fs_.steps();
        EXPECT_GE(steps.size(), 4U * 3U) << "each file: made or truncated, written, synced";
        for (std::size_t k = 0; k < steps.size(); ++k)
            for (std::size_t i = 0; i < after.size(); ++i) {
                const std::string &cut = steps[k].contents[i], &written = steps[k].visible[i];
                EXPECT_TRUE(cut == before[i] || cut == after[i])
                    << kIpsecFiles[i] << ": a cut after step " << k + 1 << " (" << steps[k].op << ") leaves ["
                    << cut << "]";
                EXPECT_TRUE(written == before[i] || written == kMissing || prefix_of(written, after[i]))
                    << kIpsecFiles[i] << ": after step " << k + 1 << " (" << steps[k].op << ") it reads ["
                    << written << "]";
            }
        std::printf("%zu cut points, 4 files each\n", steps.size());
        // Returned: the four files' data, then their names, are on flash.
        for (std::size_t i = 0; i < after.size(); ++i)
            EXPECT_EQ(fs_.durable(watched[i]), after[i]) << kIpsecFiles[i];
        EXPECT_EQ(fs_.file_syncs() - file_syncs, 4);
        EXPECT_GE(fs_.dir_syncs() - dir_syncs, 1);
        fs_.cut();
        for (std::size_t i = 0; i < after.size(); ++i) {
            const std::string path = std::string("/userconfig/config/ipsec/") + kIpsecFiles[i];
            EXPECT_EQ(read_file(path), after[i]) << path;
            EXPECT_EQ(in_backing(path), after[i]) << path;
        }
        return after;
    }
};

TEST_F(IpsecPowerCut, AFirstGenerationLeavesEachFileMissingOrWholeAtEveryStep) {
    generate_and_check({kMissing, kMissing, kMissing, kMissing}, "Operator");
}

TEST_F(IpsecPowerCut, ARegenerationLeavesEachFileOldOrNewAtEveryStep) {
    const std::vector<std::string> first = generate_and_check({kMissing, kMissing, kMissing, kMissing}, "Operator");
    generate_and_check(first, "Other Operator");
}

TEST_F(PowerCut, ANewListDirectoryIsOnFlashWithItsFirstList) {
    ASSERT_EQ(::rmdir("/userconfig/config/qvvpn"), 0);
    fs_.sync_all();
    EXPECT_EQ(qvvpn_add_route_ip(2, "10.0.0.9"), 0);
    fs_.cut();
    EXPECT_EQ(read_file("/userconfig/config/qvvpn/VPN_IP_2"), "10.0.0.9\n");
}

}  // namespace
