#include <Orlix/foundation/MapCompare.h>

#include <gtest/gtest.h>

#include <climits>

using namespace Orlix;

namespace {

TEST(MapCompare, NumbersByValue) {
    EXPECT_EQ(tagNumCompare<int>()(-1, 1), -1);
    EXPECT_EQ(tagNumCompare<int>()(1, 1), 0);
    EXPECT_EQ(tagNumCompare<int>()(2, 1), 1);
    EXPECT_EQ(tagNumCompare<int>()(INT_MAX, INT_MIN), 1) << "a difference would wrap";
    EXPECT_EQ(tagNumCompare<unsigned int>()(UINT_MAX, 1), 1);
    EXPECT_EQ(tagNumCompare<float>()(0.5f, 0.75f), -1);
}

TEST(MapCompare, TextsFromEitherEndWithAndWithoutCase) {
    // The order of the first to the second text by each comparator; every row is also tried the other way round.
    const struct {
        CString strFirst, strSecond;
        int iCompare, iCompareIC, iReverse, iReverseIC;
    } aryRow[] = {{L"ab", L"ab", 0, 0, 0, 0},        {L"ab", L"ba", -1, -1, 1, 1}, {L"ab", L"AB", 1, 0, 1, 0},
                  {L"aZ", L"bY", -1, -1, 1, 1},      {L"B", L"a", -1, 1, -1, 1},   {L"ab", L"abc", -1, -1, -1, -1},
                  {L"b", L"ab", 1, 1, -1, -1},       {nullptr, L"", 0, 0, 0, 0},   {nullptr, L"a", -1, -1, -1, -1},
                  {L"\xC4", L"\xE4", -1, -1, -1, -1}};
    for (const auto& row : aryRow) {
        const CString &a = row.strFirst, &b = row.strSecond;
        SCOPED_TRACE(testing::Message() << "row " << (&row - aryRow));
        EXPECT_EQ(tagStringCompare()(a, b), row.iCompare);
        EXPECT_EQ(tagStringCompare()(b, a), -row.iCompare);
        EXPECT_EQ(tagStringCompareIC()(a, b), row.iCompareIC);
        EXPECT_EQ(tagStringCompareIC()(b, a), -row.iCompareIC);
        EXPECT_EQ(tagStringReverseCompare()(a, b), row.iReverse);
        EXPECT_EQ(tagStringReverseCompare()(b, a), -row.iReverse);
        EXPECT_EQ(tagStringReverseCompareIC()(a, b), row.iReverseIC);
        EXPECT_EQ(tagStringReverseCompareIC()(b, a), -row.iReverseIC);
    }
}

TEST(MapCompare, NarrowTextsByAddressAlone) { // meant: an order of identities, the text is never read
    const char aryText[2][2] = {"x", "x"};
    const tagCharPtrCompare compare;
    EXPECT_EQ(compare(aryText[0], aryText[0]), 0);
    EXPECT_EQ(compare(aryText[1], aryText[0]), 1);
    EXPECT_EQ(compare(aryText[0], aryText[1]), -1);
    EXPECT_EQ(compare(nullptr, aryText[0]), -1);
    EXPECT_EQ(compare(aryText[0], nullptr), 1);
}
} // namespace
