#include "support/PoolUnits.h"

#include <gtest/gtest.h>

// Every test gives back the pool units it took. The address sanitizer does not see them, since a pool's block stays
// reachable whatever becomes of its units.

using namespace OrlixTest;

namespace {

class CLeakListener : public testing::EmptyTestEventListener {
public:
    void OnTestStart(const testing::TestInfo&) override { m_lBefore = countLiveUnits(); }
    void OnTestEnd(const testing::TestInfo&) override {
        EXPECT_EQ(countLiveUnits(), m_lBefore) << "units of the pools that live before and after";
    }

private:
    long m_lBefore = 0;
};

[[maybe_unused]] const int s_iRegistered = (testing::UnitTest::GetInstance()->listeners().Append(new CLeakListener), 0);
} // namespace
