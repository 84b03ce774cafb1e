// SPDX-License-Identifier: MIT
// The subject file and the client key and certificate: real `ipsec pki`
// runs against a test CA; openssl and `pki --print` check what came out.
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ipsec_env.hpp"
#include "qvs_utils.h"
#include "qvsim.h"
#include "test_support.hpp"

using namespace ipsectest;
using qvstest::exists;
using qvstest::read_file;
using qvstest::write_file;
using Lines = std::vector<std::string>;

namespace {

const std::string kCaSubject = "C=CN, O=Test Operator, CN=Test Operator Root CA";

int mode_of(const std::string &path) {
    struct stat st;
    if (::stat(path.c_str(), &st) != 0) return -1;
    return static_cast<int>(st.st_mode & 07777);
}

bool is_dir(const std::string &path) {
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

// "<path>[qvs_utils.cpp:<func>:<line>]<message>\n" from util_printf.
bool printed(const std::string &err, const std::string &func, const std::string &message) {
    const std::string head = "[qvs_utils.cpp:" + func + ":";
    for (std::size_t p = err.find(head); p != std::string::npos; p = err.find(head, p + 1)) {
        std::size_t q = p + head.size();
        while (q < err.size() && err[q] >= '0' && err[q] <= '9') ++q;
        if (err.compare(q, 1, "]") == 0 && err.compare(q + 1, message.size() + 1, message + "\n") == 0) return true;
    }
    return false;
}

Lines generation_commands(const std::string &subject) {
    return {"ipsec pki --gen --outform pem > /userconfig/config/ipsec/client.key.pem",
            "ipsec pki --pub --in /userconfig/config/ipsec/client.key.pem | ipsec pki --issue --cacert "
            "/tmp/ca.cert.pem --cakey /tmp/ca.key.pem --dn \"" +
                subject + "\" --outform pem > /userconfig/config/ipsec/client.cert.pem",
            "mv /tmp/ca.key.pem /userconfig/config/ipsec/ca.key.pem",
            "mv /tmp/ca.cert.pem /userconfig/config/ipsec/ca.cert.pem"};
}

class IpsecCaInfo : public ::testing::Test {
protected:
    void SetUp() override {
        prepare();
        journal_clear();
    }
};

TEST_F(IpsecCaInfo, WritesTheSubjectWithoutALineEnd) {
    write_file(kInfo, "C=XX, O=an older and much longer subject, CN=Client\n");
    EXPECT_EQ(ipsec_write_ca_info("CN", "China Mobile"), 0);
    EXPECT_EQ(read_file(kInfo), "C=CN, O=China Mobile, CN=Client");
    EXPECT_EQ(count("attach"), 0);
    EXPECT_TRUE(commands_run().empty());
}

TEST_F(IpsecCaInfo, NullOrEmptyCountryIsRefused) {
    write_file(kInfo, "old");
    for (const char *country : {static_cast<const char *>(nullptr), ""}) {
        qvstest::CaptureFd err(2);
        EXPECT_EQ(ipsec_write_ca_info(country, "Org"), -1);
        EXPECT_TRUE(printed(err.text(), "ipsec_write_ca_info", "countryca is null"));
    }
    // Both missing: the country is looked at first.
    qvstest::CaptureFd err(2);
    EXPECT_EQ(ipsec_write_ca_info(nullptr, nullptr), -1);
    std::string text = err.text();
    EXPECT_TRUE(printed(text, "ipsec_write_ca_info", "countryca is null"));
    EXPECT_EQ(text.find("organizationca"), std::string::npos);
    EXPECT_EQ(read_file(kInfo), "old");
}

TEST_F(IpsecCaInfo, NullOrEmptyOrganisationLeavesTheOldFile) {
    write_file(kInfo, "C=CN, O=Old, CN=Client");
    for (const char *org : {static_cast<const char *>(nullptr), ""}) {
        qvstest::CaptureFd err(2);
        EXPECT_EQ(ipsec_write_ca_info("CN", org), -1);
        EXPECT_TRUE(printed(err.text(), "ipsec_write_ca_info", "organizationca is null"));
    }
    EXPECT_EQ(read_file(kInfo), "C=CN, O=Old, CN=Client");
}

TEST_F(IpsecCaInfo, TextThatWouldChangeTheIssueCommandIsRefused) {
    write_file(kInfo, "C=CN, O=Old, CN=Client");
    EXPECT_EQ(ipsec_write_ca_info("CN", "Evil\" --outform der; rm -rf /x"), -1);
    EXPECT_TRUE(journal_logged("ipsec_write_ca_info", "refused unsafe text"));
    EXPECT_EQ(ipsec_write_ca_info("C$N", "Org"), -1);
    EXPECT_EQ(ipsec_write_ca_info("CN", "Org\nCN=Admin"), -1);
    EXPECT_EQ(read_file(kInfo), "C=CN, O=Old, CN=Client");
}

TEST_F(IpsecCaInfo, UnopenableFileIsLogged) {
    ASSERT_EQ(::mkdir(kInfo.c_str(), 0755), 0);
    qvstest::CaptureFd err(2);
    EXPECT_EQ(ipsec_write_ca_info("CN", "Org"), -1);
    EXPECT_TRUE(printed(err.text(), "ipsec_write_ca_info", "open file /tmp/ca.info failed!"));
}

TEST_F(IpsecCaInfo, FullFileSystemIsAFailure) {
    // A small /tmp of this test's own, filled up (the capture of stderr
    // stays in the /tmp below it).
    qvstest::CaptureFd err(2);
    ASSERT_EQ(::mount("qvs-full-tmp", "/tmp", "tmpfs", 0, "size=8k"), 0);
    sh("dd if=/dev/zero of=/tmp/fill bs=1k count=64 2>/dev/null; true");
    EXPECT_EQ(ipsec_write_ca_info("CN", "Org"), -1);
    ASSERT_EQ(::umount("/tmp"), 0);
    EXPECT_TRUE(printed(err.text(), "ipsec_write_ca_info", "write file /tmp/ca.info failed!"));
}

class IpsecClientCert : public ::testing::Test {
protected:
    void SetUp() override {
        prepare();
        sh("mkdir -p /tmp/testca");
        make_ca(kCaSubject, "/tmp/testca/ca.key.pem", "/tmp/testca/ca.cert.pem");
        place_ca();
        journal_clear();
    }
    void place_ca() {
        sh("cp /tmp/testca/ca.key.pem " + kTmpCaKey + " && cp /tmp/testca/ca.cert.pem " + kTmpCaCert);
    }
};

TEST_F(IpsecClientCert, IssuesAClientCertificateFromTheOperatorsCa) {
    ASSERT_EQ(ipsec_write_ca_info("CN", "China Mobile"), 0);
    EXPECT_EQ(ipsec_generate_client_ca(), 0);
    EXPECT_EQ(commands_run(), generation_commands("C=CN, O=China Mobile, CN=Client"));
    EXPECT_EQ(count("attach"), 0);

    ASSERT_TRUE(exists(kClientKey));
    ASSERT_TRUE(exists(kClientCert));
    std::string print = sh("pki --print --in " + kClientCert);
    EXPECT_NE(print.find("subject:  \"C=CN, O=China Mobile, CN=Client\""), std::string::npos) << print;
    EXPECT_NE(print.find("issuer:   \"" + kCaSubject + "\""), std::string::npos) << print;
    std::string subject = sh("openssl x509 -noout -subject -issuer -nameopt RFC2253 -in " + kClientCert);
    EXPECT_EQ(subject, "subject=CN=Client,O=China Mobile,C=CN\n"
                       "issuer=CN=Test Operator Root CA,O=Test Operator,C=CN\n");
    EXPECT_EQ(sh("openssl verify -CAfile " + kCaCert + " " + kClientCert), kClientCert + ": OK\n");
    // The key is the certificate's.
    EXPECT_EQ(sh("openssl pkey -in " + kClientKey + " -pubout"), sh("openssl x509 -in " + kClientCert + " -noout -pubkey"));

    // The CA files moved into the persistent directory, unchanged.
    EXPECT_FALSE(exists(kTmpCaKey));
    EXPECT_FALSE(exists(kTmpCaCert));
    EXPECT_EQ(read_file(kCaKey), read_file("/tmp/testca/ca.key.pem"));
    EXPECT_EQ(read_file(kCaCert), read_file("/tmp/testca/ca.cert.pem"));
    EXPECT_TRUE(is_dir(kDir));
    EXPECT_EQ(mode_of(kDir), 0755);
}

TEST_F(IpsecClientCert, SecondCallFailsOnceTheCaFilesMoved) {
    ASSERT_EQ(ipsec_write_ca_info("CN", "China Mobile"), 0);
    ASSERT_EQ(ipsec_generate_client_ca(), 0);
    journal_clear();
    std::string cert = read_file(kClientCert);
    qvstest::CaptureFd err(2);
    EXPECT_EQ(ipsec_generate_client_ca(), -1);
    EXPECT_TRUE(printed(err.text(), "ipsec_generate_client_ca", "CA file not ready"));
    EXPECT_TRUE(commands_run().empty());
    EXPECT_EQ(read_file(kClientCert), cert);
    // New CA files make it work again.
    place_ca();
    EXPECT_EQ(ipsec_generate_client_ca(), 0);
    EXPECT_EQ(commands_run().size(), 4u);
}

TEST_F(IpsecClientCert, EitherCaFileMissingIsNotReady) {
    ASSERT_EQ(ipsec_write_ca_info("CN", "Org"), 0);
    for (const std::string &gone : {kTmpCaKey, kTmpCaCert}) {
        place_ca();
        ::unlink(gone.c_str());
        qvstest::CaptureFd err(2);
        EXPECT_EQ(ipsec_generate_client_ca(), -1);
        EXPECT_TRUE(printed(err.text(), "ipsec_generate_client_ca", "CA file not ready")) << gone;
    }
    EXPECT_TRUE(commands_run().empty());
    EXPECT_FALSE(exists(kDir));
}

TEST_F(IpsecClientCert, MissingSubjectFileIsLogged) {
    qvstest::CaptureFd err(2);
    EXPECT_EQ(ipsec_generate_client_ca(), -1);
    EXPECT_TRUE(printed(err.text(), "ipsec_generate_client_ca", "open file /tmp/ca.info failed!"));
    EXPECT_TRUE(commands_run().empty());
    EXPECT_TRUE(exists(kTmpCaKey));
    EXPECT_TRUE(exists(kTmpCaCert));
    EXPECT_FALSE(exists(kDir));
}

TEST_F(IpsecClientCert, SubjectIsCutAt62Characters) {
    const std::string org(70, 'o');
    ASSERT_EQ(ipsec_write_ca_info("CN", org.c_str()), 0);
    const std::string cut = ("C=CN, O=" + org + ", CN=Client").substr(0, 62);
    ASSERT_EQ(cut.size(), 62u);
    EXPECT_EQ(ipsec_generate_client_ca(), 0);
    EXPECT_EQ(commands_run(), generation_commands(cut));
    std::string print = sh("pki --print --in " + kClientCert);
    EXPECT_NE(print.find("subject:  \"" + cut + "\""), std::string::npos) << print;
}

TEST_F(IpsecClientCert, SubjectOf62CharactersIsWhole) {
    const std::string org(62 - std::string("C=CN, O=, CN=Client").size(), 'p');
    ASSERT_EQ(ipsec_write_ca_info("CN", org.c_str()), 0);
    EXPECT_EQ(ipsec_generate_client_ca(), 0);
    EXPECT_EQ(commands_run(), generation_commands("C=CN, O=" + org + ", CN=Client"));
}

TEST_F(IpsecClientCert, OnlyTheFirstLineOfTheSubjectFileCounts) {
    write_file(kInfo, "C=CN, O=Placed By Hand, CN=Client\nC=US, O=Second, CN=Other\n");
    EXPECT_EQ(ipsec_generate_client_ca(), 0);
    EXPECT_EQ(commands_run(), generation_commands("C=CN, O=Placed By Hand, CN=Client"));
}

TEST_F(IpsecClientCert, UnsafeSubjectFileRunsNothing) {
    write_file(kInfo, "C=CN, O=X\" > /etc/passwd; echo \", CN=Client");
    EXPECT_EQ(ipsec_generate_client_ca(), -1);
    EXPECT_TRUE(journal_logged("ipsec_generate_client_ca", "refused unsafe text"));
    EXPECT_TRUE(commands_run().empty());
    EXPECT_TRUE(exists(kTmpCaKey));
}

TEST_F(IpsecClientCert, ExistingDirectoryIsKept) {
    ASSERT_EQ(::mkdir(kDir.c_str(), 0700), 0);
    ASSERT_EQ(ipsec_write_ca_info("CN", "Org"), 0);
    EXPECT_EQ(ipsec_generate_client_ca(), 0);
    EXPECT_EQ(mode_of(kDir), 0700);
    EXPECT_TRUE(exists(kClientCert));
}

TEST_F(IpsecClientCert, FailedIssueStillMovesTheCaFiles) {
    write_file(kTmpCaKey, "not a key\n");
    ASSERT_EQ(ipsec_write_ca_info("CN", "Org"), 0);
    EXPECT_EQ(ipsec_generate_client_ca(), 0);
    EXPECT_EQ(commands_run().size(), 4u);
    EXPECT_TRUE(exists(kClientKey));
    EXPECT_EQ(read_file(kClientCert), "");
    EXPECT_EQ(read_file(kCaKey), "not a key\n");
    EXPECT_FALSE(exists(kTmpCaKey));
    EXPECT_FALSE(exists(kTmpCaCert));
}

}  // namespace
