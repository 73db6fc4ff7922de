#include <Orlix/foundation/CDataMap.h>

#include "support/TreeCheck.h"

#include <gtest/gtest.h>

using namespace Orlix;
using namespace OrlixTest;

namespace {

using CTextMap = CDataMap<int, CString, tagNumCompare<int>>;

TEST(CDataMap, HoldsValuesByValue) {
    CTextMap map;
    CString strText(L"one");
    EXPECT_TRUE(map.addItem(1, strText));
    EXPECT_FALSE(map.addItem(1, L"other"));
    strText = L"changed";
    EXPECT_EQ(*map.getItem(1), L"one");
    map.setItem(1, L"two");
    map.setItem(0, L"zero");
    EXPECT_EQ(*map.getItem(1), L"two");
    EXPECT_EQ(map.getItem(2), nullptr);
    EXPECT_EQ(map.buildPairs(), 2u);
    EXPECT_EQ(map.getValueAt(0), map.getItem(0));
    EXPECT_EQ(map.getKeyAt(1), 1);
    EXPECT_EQ(checkTree(map), "");
}
} // namespace
