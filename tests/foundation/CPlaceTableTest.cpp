#include <Orlix/foundation/CPlaceTable.h>

#include <gtest/gtest.h>

#include <climits>
#include <map>
#include <random>

using namespace Orlix;

namespace {

/** The table and the map that it has to agree with. */
class CPair {
public:
    void set(unsigned long ulNumber, unsigned int uiPlace) {
        ASSERT_TRUE(m_table.set(ulNumber, uiPlace));
        m_map[ulNumber] = uiPlace;
    }
    void remove(unsigned long ulNumber) { ASSERT_EQ(m_table.remove(ulNumber), m_map.erase(ulNumber) == 1) << ulNumber; }
    void compare(unsigned long ulNumber) const {
        const unsigned int* const pPlace = m_table.find(ulNumber);
        const auto found = m_map.find(ulNumber);
        ASSERT_EQ(pPlace != nullptr, found != m_map.end()) << ulNumber;
        ASSERT_TRUE(!pPlace || *pPlace == found->second) << ulNumber;
        ASSERT_EQ(m_table.getCount(), m_map.size());
    }

private:
    CPlaceTable m_table;
    std::map<unsigned long, unsigned int> m_map;
};

TEST(CPlaceTable, HoldsNothingAtFirst) {
    CPlaceTable table;
    EXPECT_EQ(table.getCount(), 0u);
    EXPECT_EQ(table.find(0), nullptr);
    EXPECT_FALSE(table.remove(0));
    table.clear();
    EXPECT_EQ(table.getCount(), 0u);
}

TEST(CPlaceTable, TakesTheEndsOfTheRange) {
    CPlaceTable table;
    EXPECT_TRUE(table.set(0, 0));
    EXPECT_TRUE(table.set(ULONG_MAX, UINT_MAX - 1));
    EXPECT_TRUE(table.set(0, 7)) << "changes its place";
    EXPECT_EQ(table.getCount(), 2u);
    EXPECT_EQ(*table.find(0), 7u);
    EXPECT_EQ(*table.find(ULONG_MAX), UINT_MAX - 1);
    EXPECT_EQ(table.find(1), nullptr);
    table.clear();
    EXPECT_EQ(table.getCount(), 0u);
    EXPECT_EQ(table.find(0), nullptr);
    EXPECT_TRUE(table.set(1, 1)) << "usable again";
}

TEST(CPlaceTable, BehavesLikeAMap) {
    std::mt19937 random(7);
    for (const unsigned long ulStep : {1ul, 8ul, 64ul, 1ul << 32, 0x61C8864680B583EBul}) { // the last ones collide
        CPair pair;
        for (unsigned int i = 0; i < 20000; ++i) {
            const unsigned long ulNumber = random() % 700 * ulStep;
            if (random() % 2 == 0)
                ASSERT_NO_FATAL_FAILURE(pair.set(ulNumber, i));
            else
                ASSERT_NO_FATAL_FAILURE(pair.remove(ulNumber));
            ASSERT_NO_FATAL_FAILURE(pair.compare(random() % 700 * ulStep));
        }
        for (unsigned long i = 0; i < 700; ++i)
            ASSERT_NO_FATAL_FAILURE(pair.compare(i * ulStep));
    }
}
} // namespace
