// SPDX-License-Identifier: MIT
// Several processes writing to one store at once: nothing lost, nothing torn.
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <set>
#include <thread>
#include <vector>
#include <string>

#include <gtest/gtest.h>

#include "sim_helpers.hpp"
#include "test_support.hpp"

using namespace simtest;

namespace {

constexpr int kAdds = 150;
constexpr int kWrites = 150;

// One writer: adds alarm entries under their parent (the store picks the
// numbers) and rewrites a parameter of its own SSID, attaching for each call
// as the library does.
int writer(int id) {
    int failures = 0;
    for (int i = 0; i < kAdds; ++i) {
        QVS_XMLSHM_HANDLE h = qvs_xmlShmInit();
        if (h == 0) return 100;
        QVS_PARAM_LIST *list = newParameterList();
        uint32_t code = static_cast<uint32_t>(id * 1000 + i);
        setParameterToList(list, "AlarmCode", QVS_TYPE_UINT32, &code);
        if (qvsXml_addObjectByOIDIWithParaListIndirect(h, QVS_OID_ALARM_INFO, 0, list) != 0) ++failures;
        freeParameterList(list);
        qvs_xmlShmDeInit(&h);
    }
    for (int i = 1; i <= kWrites; ++i) {
        QVS_XMLSHM_HANDLE h = qvs_xmlShmInit();
        if (h == 0) return 100;
        uint32_t v = static_cast<uint32_t>(i);
        std::string name = "w" + std::to_string(id) + "-" + std::to_string(i);
        auto *rec = qvsXml_GetObjectByOID(h, QVS_OID_WIFI_SSID, ia1(id), 1);
        QVS_PARAM_LIST *list = newParameterList();
        setParameterToList(list, "X_QV_Guest_Duration", QVS_TYPE_UINT32, &v);
        if (rec == nullptr || qvsXml_setParameterIndirectByParaList(h, qvsXmlGetPtrOffset(h, rec), list) != 0)
            ++failures;
        freeParameterList(list);
        if (qvsXml_setOneParameterByOIDIndirect(h, QVS_OID_WIFI_SSID_NAME, ia1(id), "SSID", QVS_TYPE_STRING,
                                                name.c_str()) != 0)
            ++failures;
        if (i % 50 == 0 && qvsXml_SaveIndirect(h) != 0) ++failures;
        qvs_xmlShmDeInit(&h);
    }
    return failures;
}

}  // namespace

TEST(Concurrency, TwoProcessesWritingAtOnceLoseNothing) {
    // Both children start on an existing store, as gateway processes do.
    ASSERT_EQ(qvsim_exists(QVS_OID_WIFI_COMMON, ""), 1);
    pid_t kids[2];
    for (int k = 0; k < 2; ++k) {
        kids[k] = fork();
        ASSERT_GE(kids[k], 0);
        if (kids[k] == 0) _exit(writer(k + 1));
    }
    for (pid_t kid : kids) {
        int status = -1;
        ASSERT_EQ(waitpid(kid, &status, 0), kid);
        ASSERT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status), 0);
    }
    // Every add got its own instance, numbered 1 to 2 x kAdds.
    std::set<std::string> codes;
    for (int i = 1; i <= 2 * kAdds; ++i) {
        std::string inst = std::to_string(i);
        ASSERT_EQ(qvsim_exists(QVS_OID_ALARM_INFO, inst.c_str()), 1) << i;
        codes.insert(get(QVS_OID_ALARM_INFO, inst.c_str(), "AlarmCode"));
    }
    EXPECT_EQ(codes.size(), static_cast<size_t>(2 * kAdds));
    EXPECT_EQ(qvsim_exists(QVS_OID_ALARM_INFO, std::to_string(2 * kAdds + 1).c_str()), 0);
    for (int id = 1; id <= 2; ++id) {
        std::string inst = std::to_string(id);
        EXPECT_EQ(get(QVS_OID_WIFI_SSID, inst.c_str(), "X_QV_Guest_Duration"), std::to_string(kWrites));
        EXPECT_EQ(get(QVS_OID_WIFI_SSID_NAME, inst.c_str(), "SSID"), "w" + inst + "-" + std::to_string(kWrites));
    }
    // The journal holds every line whole: attaches and detaches balance.
    auto attaches = journal_lines("attach");
    auto detaches = journal_lines("detach");
    EXPECT_EQ(attaches.size(), static_cast<size_t>(2 * (kAdds + kWrites)));
    EXPECT_EQ(detaches.size(), attaches.size());
    EXPECT_EQ(journal_lines("add").size(), static_cast<size_t>(2 * kAdds));
    EXPECT_EQ(journal_lines("set").size(), static_cast<size_t>(2 * (kAdds + 2 * kWrites)));
    // The database itself is sound.
    std::string check = qvstest::run(std::string("sqlite3 ") + qvsim_dir() + "/store.db 'PRAGMA integrity_check;'");
    if (!check.empty()) {
        EXPECT_EQ(check, "ok\n");
    }
    // The last saves made it to the saved copy.
    ASSERT_EQ(qvsim_restart(), 0);
    EXPECT_EQ(get(QVS_OID_WIFI_SSID, "1", "X_QV_Guest_Duration"), std::to_string(kWrites));
}

TEST(Concurrency, FirstAttachesRacingCreateOneStore) {
    // No store yet in this sandbox: four processes attach at once.
    pid_t kids[4];
    for (auto &kid : kids) {
        kid = fork();
        ASSERT_GE(kid, 0);
        if (kid == 0) {
            QVS_XMLSHM_HANDLE h = qvs_xmlShmInit();
            uint8_t on = 1;
            int r = h != 0 ? qvsXml_setOneParameterByOIDIndirect(h, QVS_OID_WIFI_SSID, ia1(static_cast<int>(getpid() % 6) + 2),
                                                                 "Enable", QVS_TYPE_BOOL, &on)
                           : -9;
            qvs_xmlShmDeInit(&h);
            _exit(r == 0 ? 0 : 1);
        }
    }
    for (pid_t kid : kids) {
        int status = -1;
        waitpid(kid, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    EXPECT_EQ(journal_lines("set").size(), 4u);
    EXPECT_EQ(get(QVS_OID_WIFI_COMMON, "", "X_QV_External_SSID_Map"), "1,9,0,0,0,0,0,0,0,0,0,0,0,0,0,0");
}

TEST(Concurrency, ThreadsOfOneProcessAreSerialised) {
    std::vector<std::thread> threads;
    std::atomic<int> failures{0};
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t, &failures] {
            for (int i = 0; i < 25; ++i) {
                QVS_XMLSHM_HANDLE h = qvs_xmlShmInit();
                QVS_PARAM_LIST *list = newParameterList();
                uint32_t code = static_cast<uint32_t>(t * 100 + i);
                setParameterToList(list, "AlarmCode", QVS_TYPE_UINT32, &code);
                if (h == 0 || qvsXml_addObjectByOIDIWithParaListIndirect(h, QVS_OID_ALARM_INFO, 0, list) != 0)
                    ++failures;
                freeParameterList(list);
                qvs_xmlShmDeInit(&h);
            }
        });
    }
    for (auto &th : threads) th.join();
    EXPECT_EQ(failures.load(), 0);
    EXPECT_EQ(qvsim_exists(QVS_OID_ALARM_INFO, "100"), 1);
    EXPECT_EQ(qvsim_exists(QVS_OID_ALARM_INFO, "101"), 0);
    EXPECT_EQ(qvsim_journal_count("attach"), 100);
    EXPECT_EQ(qvsim_journal_count("detach"), 100);
}
