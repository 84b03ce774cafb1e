// SPDX-License-Identifier: MIT
// Runs the fault table: every row under each store fault ("attach",
// "object <oid>" for each object it looks up, "paramlist", "write",
// "write <p>" and "read <p>" for each parameter it names). The call must
// come back (no crash) and leave nothing attached: as many detach lines as
// attach lines in the journal.
#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fault_table.hpp"
#include "family_registry.hpp"
#include "qvsim.h"
#include "test_support.hpp"

namespace faulttest {

bool add_family(Family (*make)()) { return qvstest::FamilyRegistry<Family>::add(make); }

const std::vector<Family> &families() { return qvstest::FamilyRegistry<Family>::all(); }

namespace {

std::vector<std::string> faults_of(const Row &row) {
    std::vector<std::string> out = {"", "attach", "paramlist", "write"};
    for (int oid : row.objects) out.push_back("object " + std::to_string(oid));
    for (const std::string &p : row.params) {
        out.push_back("read " + p);
        out.push_back("write " + p);
    }
    return out;
}

class Faults : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(qvstest::in_sandbox()); }
};

TEST_F(Faults, EverySelfAttachingFunctionDetachesUnderEveryFault) {
    ASSERT_FALSE(families().empty());
    int calls = 0;
    for (const Family &family : families()) {
        for (const Row &row : family.rows) {
            for (const std::string &fault : faults_of(row)) {
                SCOPED_TRACE(std::string(family.name) + ": " + row.func + " under [" + fault + "]");
                ASSERT_EQ(qvsim_reset(), 0);
                family.prepare();
                qvsim_journal_clear();
                if (!fault.empty()) {
                    ASSERT_EQ(qvsim_fault_add(fault.c_str()), 0);
                }
                row.call();
                ASSERT_EQ(qvsim_fault_clear(), 0);
                const int attach = qvsim_journal_count("attach");
                const int detach = qvsim_journal_count("detach");
                EXPECT_EQ(attach, detach);
                // Without a fault the row does attach (it belongs in the table).
                if (fault.empty()) {
                    EXPECT_GE(attach, 1);
                }
                ++calls;
            }
        }
    }
    EXPECT_GT(calls, 0);
}

}  // namespace
}  // namespace faulttest
