#include <Orlix/threading/CTimeSpan.h>

#include <gtest/gtest.h>

#include <climits>
#include <type_traits>

using namespace Orlix;

namespace {

static_assert(std::is_base_of<CObject, CTimeSpan>::value, "a span is an object");
static_assert(sizeof(CTimeSpan) == sizeof(CObject) + 8, "64 bits of seconds are all it adds");

TEST(CTimeSpan, DefaultIsNoTime) {
    const CTimeSpan span;
    EXPECT_EQ(span.getTotalSeconds(), 0);
    EXPECT_EQ(span, CTimeSpan(0));
}

TEST(CTimeSpan, CopiesCarryTheSeconds) {
    const CTimeSpan source(-5);
    const CTimeSpan copy(source);
    CTimeSpan assigned(7);
    assigned = source;
    EXPECT_EQ(copy.getTotalSeconds(), -5);
    EXPECT_EQ(assigned.getTotalSeconds(), -5);
}

TEST(CTimeSpan, SplitsIntoPartsTruncatingTowardZero) {
    const struct {
        long lSpan, lDays, lHours, lMinutes, lSeconds;
    } aryRow[] = {{0, 0, 0, 0, 0},
                  {59, 0, 0, 0, 59},
                  {60, 0, 0, 1, 0},
                  {3599, 0, 0, 59, 59},
                  {3600, 0, 1, 0, 0},
                  {86399, 0, 23, 59, 59},
                  {86400, 1, 0, 0, 0},
                  {90061, 1, 1, 1, 1},
                  {-1, 0, 0, 0, -1},
                  {-86399, 0, -23, -59, -59},
                  {-90061, -1, -1, -1, -1},
                  {LONG_MAX, 106751991167300, 15, 30, 7},
                  {LONG_MIN, -106751991167300, -15, -30, -8}};
    for (const auto& row : aryRow) {
        const CTimeSpan span(row.lSpan);
        EXPECT_EQ(span.getDays(), row.lDays) << row.lSpan;
        EXPECT_EQ(span.getHours(), row.lHours) << row.lSpan;
        EXPECT_EQ(span.getMinutes(), row.lMinutes) << row.lSpan;
        EXPECT_EQ(span.getSeconds(), row.lSeconds) << row.lSpan;
    }
}

TEST(CTimeSpan, TotalsTruncateTowardZero) {
    const struct {
        long lSpan;
        int iDays;
        long lHours, lMinutes;
    } aryRow[] = {{0, 0, 0, 0},   {86399, 0, 23, 1439},     {90061, 1, 25, 1501},
                  {-59, 0, 0, 0}, {-90061, -1, -25, -1501}, {36000000000000, 416666666, 10000000000, 600000000000}};
    for (const auto& row : aryRow) {
        const CTimeSpan span(row.lSpan);
        EXPECT_EQ(span.getTotalDays(), row.iDays) << row.lSpan;
        EXPECT_EQ(span.getTotalHours(), row.lHours) << row.lSpan;
        EXPECT_EQ(span.getTotalMinutes(), row.lMinutes) << row.lSpan;
        EXPECT_EQ(span.getTotalSeconds(), row.lSpan);
    }
}

TEST(CTimeSpan, TotalDaysKeepTheirLower32Bits) {
    const long lDays = (1L << 32) + 3;
    EXPECT_EQ(CTimeSpan(lDays * 86400).getDays(), lDays);
    EXPECT_EQ(CTimeSpan(lDays * 86400).getTotalDays(), 3);
    static_assert(sizeof(CTimeSpan().getTotalDays()) == 4, "narrowed to 32 bits");
}

TEST(CTimeSpan, ComparesTheSeconds) {
    const long aryOrdered[] = {LONG_MIN, -90061, -1, 0, 1, 4294967296, LONG_MAX};
    for (const long lOne : aryOrdered)
        for (const long lOther : aryOrdered) {
            const CTimeSpan one(lOne), other(lOther);
            EXPECT_EQ(one == other, lOne == lOther) << lOne << ' ' << lOther;
            EXPECT_EQ(one != other, lOne != lOther) << lOne << ' ' << lOther;
            EXPECT_EQ(one < other, lOne < lOther) << lOne << ' ' << lOther;
            EXPECT_EQ(one <= other, lOne <= lOther) << lOne << ' ' << lOther;
            EXPECT_EQ(one > other, lOne > lOther) << lOne << ' ' << lOther;
            EXPECT_EQ(one >= other, lOne >= lOther) << lOne << ' ' << lOther;
        }
}
} // namespace
