#include <Orlix/threading/CTime.h>

#include <Orlix/threading/CImpTime.h>

#include "support/ChildProcess.h"
#include "support/ClockStandIn.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <type_traits>

using namespace Orlix;
using OrlixTest::runInChild;
using OrlixTest::tagClockStandIn;

namespace {

static_assert(std::is_base_of<CObject, CTime>::value, "a time is an object");
static_assert(std::is_base_of<ITime, CImpTime>::value && sizeof(CImpTime) == sizeof(ITime), "no fields");
static_assert(sizeof(CTime().getTotalDays()) == 4 && sizeof(CTime().getTotalSeconds()) == 8, "widths of the counts");
static_assert(std::is_same<decltype(CTime::getTickCount()), unsigned int>::value, "ticks are unsigned, 32 bits");

constexpr long LAST_SECOND = 3652059L * 86400 - 1; // of the year 9999

/** All seven fields, so that a failure shows them. */
std::string textOf(const CTime& time) {
    char szText[80];
    std::snprintf(szText, sizeof(szText), "%u-%u-%u %u:%u:%u.%u", time.getYear(), time.getMonth(), time.getDay(),
                  time.getHour(), time.getMinute(), time.getSecond(), time.getMilliSecond());
    return szText;
}

/** A date without a time of day. */
CTime dateOf(unsigned short usYear, unsigned short usMonth, unsigned short usDay) {
    return CTime(usYear, usMonth, usDay, 0, 0, 0, 0);
}

class CTickProbe : public CTime {
public:
    static void setStart(unsigned int uiStart) { s_ulStartTickCount = uiStart; }
    static unsigned int getStart() { return s_ulStartTickCount; }
};

/** Reaches the fields, also for values that construction would move. */
class CFieldProbe : public CTime {
public:
    CFieldProbe(unsigned short usYear, unsigned short usMonth, unsigned short usDay) {
        m_usYear = usYear;
        m_usMonth = usMonth;
        m_usDay = usDay;
        m_usHour = m_usMinute = m_usSecond = m_usMilliSecond = 65535;
    }

    /** Whether the fields follow one another without a gap, the most significant first. */
    bool isInOrder() const {
        const unsigned short* const aryField[] = {&m_usYear,   &m_usMonth,  &m_usDay,        &m_usHour,
                                                  &m_usMinute, &m_usSecond, &m_usMilliSecond};
        const char* const pStart = reinterpret_cast<const char*>(&m_usYear);
        for (int i = 0; i < 7; ++i)
            if (reinterpret_cast<const char*>(aryField[i]) != pStart + i * 2)
                return false;
        return true;
    }
};

const unsigned int START_AT_LOAD = CTickProbe::getStart(); // read before any test could start the tick

timespec tickOf(long lMilliSeconds) { return {lMilliSeconds / 1000, lMilliSeconds % 1000 * 1000000}; }

// ---- Construction

TEST(CTime, DefaultIsTheZeroDate) {
    const CTime time;
    EXPECT_EQ(textOf(time), "1-1-1 0:0:0.0");
    EXPECT_TRUE(time.isZeroDate());
    EXPECT_TRUE(time.isValidDate());
    EXPECT_EQ(time.getTotalDays(), 0u);
    EXPECT_EQ(time.getTotalSeconds(), 0);
    EXPECT_EQ(time.getDayOfWeek(), 1u) << "a Monday";
}

TEST(CTime, FieldsStandInOrderOfTheirWeight) { EXPECT_TRUE(CFieldProbe(1, 2, 3).isInOrder()); }

TEST(CTime, CopiesCarryAllFields) {
    const CTime source(2024, 2, 29, 13, 14, 15, 167);
    const CTime copy(source);
    CTime assigned;
    assigned = source;
    EXPECT_EQ(textOf(copy), "2024-2-29 13:14:15.167");
    EXPECT_EQ(textOf(assigned), "2024-2-29 13:14:15.167");
}

TEST(CTime, ConstructionMovesEachFieldIntoItsRange) {
    const struct {
        CTime time;
        const char* szText;
    } aryRow[] = {{CTime(0, 0, 0, 25, 61, 61, 1000), "1-1-1 23:59:59.999"},
                  {CTime(9999, 12, 31, 23, 59, 59, 999), "9999-12-31 23:59:59.999"},
                  {CTime(10000, 13, 32, 24, 60, 60, 1000), "9999-12-31 23:59:59.999"},
                  {CTime(65535, 65535, 65535, 65535, 65535, 65535, 65535), "9999-12-31 23:59:59.999"},
                  {CTime(2021, 2, 30, 1, 2, 3, 4), "2021-2-28 1:2:3.4"},
                  {CTime(2020, 2, 30, 1, 2, 3, 4), "2020-2-29 1:2:3.4"},
                  {CTime(2020, 4, 31, 0, 0, 0, 0), "2020-4-30 0:0:0.0"},
                  {CTime(2020, 13, 0, 0, 0, 0, 0), "2020-12-1 0:0:0.0"},
                  {CTime(0, 2, 29, 0, 0, 0, 0), "1-2-28 0:0:0.0"}}; // the day by the year it becomes
    for (const auto& row : aryRow)
        EXPECT_EQ(textOf(row.time), row.szText);
}

TEST(CTime, SecondsOutsideTheRangeBecomeItsEnds) {
    const struct {
        long lSeconds;
        const char* szText;
    } aryRow[] = {{LONG_MIN, "1-1-1 0:0:0.0"},
                  {-1, "1-1-1 0:0:0.0"},
                  {0, "1-1-1 0:0:0.0"},
                  {1, "1-1-1 0:0:1.0"},
                  {86399, "1-1-1 23:59:59.0"},
                  {86400, "1-1-2 0:0:0.0"},
                  {LAST_SECOND, "9999-12-31 23:59:59.0"},
                  {LAST_SECOND + 1, "9999-12-31 23:59:59.0"},
                  {4294967296L * 86400, "9999-12-31 23:59:59.0"}, // days that 32 bits would make 0
                  {LONG_MAX, "9999-12-31 23:59:59.0"}};
    for (const auto& row : aryRow)
        EXPECT_EQ(textOf(CTime(row.lSeconds)), row.szText) << row.lSeconds;
}

TEST(CTime, SecondsThereAndBackDropOnlyTheMilliseconds) {
    const CTime time(2026, 11, 21, 6, 38, 59, 999);
    EXPECT_EQ(time.getTotalSeconds(), 739940L * 86400 + 6 * 3600 + 38 * 60 + 59);
    EXPECT_EQ(textOf(CTime(time.getTotalSeconds())), "2026-11-21 6:38:59.0");
}

TEST(CTime, EverySecondOfADayComesBack) {
    long lSeconds = 737483L * 86400; // 29 February 2020
    for (unsigned short usHour = 0; usHour < 24; ++usHour)
        for (unsigned short usMinute = 0; usMinute < 60; ++usMinute)
            for (unsigned short usSecond = 0; usSecond < 60; ++usSecond, ++lSeconds) {
                const CTime time(2020, 2, 29, usHour, usMinute, usSecond, 0);
                ASSERT_EQ(time.getTotalSeconds(), lSeconds) << textOf(time);
                ASSERT_EQ(CTime(lSeconds), time) << textOf(time);
            }
}

// ---- Calendar

TEST(CTime, CalendarIsRightOnEveryDayOfEveryYear) {
    unsigned int uiDays = 0, uiWeekday = 1;
    for (unsigned short usYear = 1; usYear <= 9999; ++usYear) {
        const bool bLeap = usYear % 400 == 0 || (usYear % 4 == 0 && usYear % 100 != 0);
        const unsigned int aryLength[] = {31, bLeap ? 29u : 28u, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
        for (unsigned short usMonth = 1; usMonth <= 12; ++usMonth)
            for (unsigned short usDay = 1; usDay <= aryLength[usMonth - 1]; ++usDay) {
                const CTime time(usYear, usMonth, usDay, 23, 59, 59, 0);
                ASSERT_EQ(time.getDay(), usDay) << textOf(time);
                ASSERT_EQ(time.isLeapYear(), bLeap) << textOf(time);
                ASSERT_EQ(time.getDayCountOfThisYear(), bLeap ? 366u : 365u) << textOf(time);
                ASSERT_EQ(time.getDayCountOfThisMonth(), aryLength[usMonth - 1]) << textOf(time);
                ASSERT_EQ(time.getTotalDays(), uiDays) << textOf(time);
                ASSERT_EQ(time.getDayOfWeek(), uiWeekday) << textOf(time);
                ASSERT_EQ(time.getTotalSeconds(), uiDays * 86400L + 86399) << textOf(time);
                ASSERT_EQ(CTime(uiDays * 86400L + 86399), time) << textOf(time);
                ASSERT_EQ(CTime(uiDays * 86400L), dateOf(usYear, usMonth, usDay)) << textOf(time);
                ASSERT_TRUE(time.isValidDate()) << textOf(time);
                ++uiDays;
                uiWeekday = uiWeekday == 6 ? 0 : uiWeekday + 1;
            }
    }
    EXPECT_EQ(uiDays, 3652059u);
}

TEST(CTime, CenturiesAreLeapYearsOnlyEveryFourHundredYears) {
    EXPECT_FALSE(dateOf(1900, 1, 1).isLeapYear());
    EXPECT_TRUE(dateOf(2000, 1, 1).isLeapYear());
    EXPECT_TRUE(dateOf(2024, 1, 1).isLeapYear());
    EXPECT_FALSE(dateOf(2023, 1, 1).isLeapYear());
}

TEST(CTime, ValidDateLooksAtEachFieldOfTheDateAndAtNoOther) {
    const struct {
        unsigned short usYear, usMonth, usDay;
        bool bValid;
    } aryRow[] = {{1, 1, 1, true},      {9999, 12, 31, true},   {2024, 2, 29, true}, {2023, 2, 29, false},
                  {2023, 4, 30, true},  {2023, 4, 31, false},   {2023, 1, 0, false}, {2023, 1, 32, false},
                  {2023, 0, 1, false},  {2023, 13, 1, false},   {0, 1, 1, false},    {10000, 1, 1, false},
                  {65535, 1, 1, false}, {2023, 65535, 1, false}};
    for (const auto& row : aryRow) {
        const CFieldProbe time(row.usYear, row.usMonth, row.usDay); // its time of day is out of range
        EXPECT_EQ(time.isValidDate(), row.bValid) << textOf(time);
    }
}

TEST(CTime, RectifyDayMovesTheDayIntoItsMonthAndNothingElse) {
    const struct {
        CFieldProbe time;
        const char* szText;
    } aryRow[] = {
        {{2023, 2, 0}, "2023-2-1 65535:65535:65535.65535"},     {{2023, 2, 28}, "2023-2-28 65535:65535:65535.65535"},
        {{2023, 2, 29}, "2023-2-28 65535:65535:65535.65535"},   {{2024, 2, 65535}, "2024-2-29 65535:65535:65535.65535"},
        {{10000, 4, 31}, "10000-4-30 65535:65535:65535.65535"}, {{2023, 13, 5}, "2023-13-1 65535:65535:65535.65535"}};
    for (const auto& row : aryRow) {
        CFieldProbe time(row.time);
        time.rectifyDay();
        EXPECT_EQ(textOf(time), row.szText) << textOf(row.time);
    }
}

TEST(CTime, DaysOfTheWeekCountFromSunday) {
    EXPECT_EQ(dateOf(2000, 1, 1).getDayOfWeek(), 6u);
    EXPECT_EQ(dateOf(2000, 1, 2).getDayOfWeek(), 0u);
    EXPECT_EQ(dateOf(1970, 1, 1).getDayOfWeek(), 4u);
    EXPECT_EQ(dateOf(1970, 1, 1).getTotalDays(), 719162u);
}

TEST(CTime, OneFieldOffTheDefaultIsNoZeroDate) {
    const CTime aryTime[] = {CTime(2, 1, 1, 0, 0, 0, 0), CTime(1, 2, 1, 0, 0, 0, 0), CTime(1, 1, 2, 0, 0, 0, 0),
                             CTime(1, 1, 1, 1, 0, 0, 0), CTime(1, 1, 1, 0, 1, 0, 0), CTime(1, 1, 1, 0, 0, 1, 0),
                             CTime(1, 1, 1, 0, 0, 0, 1)};
    for (const CTime& time : aryTime)
        EXPECT_FALSE(time.isZeroDate()) << textOf(time);
}

TEST(CTime, SetZeroDateClearsAllFields) {
    CTime time(2024, 2, 29, 13, 14, 15, 167);
    time.setZeroDate();
    EXPECT_EQ(textOf(time), "1-1-1 0:0:0.0");
}

TEST(CTime, ResetLeavesTheFieldsAlone) {
    CTime time(2024, 2, 29, 13, 14, 15, 167);
    time.reset();
    EXPECT_EQ(textOf(time), "2024-2-29 13:14:15.167");
}

// ---- Strides and comparisons

TEST(CTime, StridesCountBothEndsInEitherDirection) {
    const struct {
        CTime one, other;
        unsigned int uiYears, uiMonths, uiDays;
    } aryRow[] = {{dateOf(2024, 5, 6), dateOf(2024, 5, 6), 1, 1, 1},
                  {dateOf(2024, 5, 6), CTime(2024, 5, 6, 23, 59, 59, 999), 1, 1, 1},
                  {dateOf(2023, 12, 31), dateOf(2024, 1, 1), 2, 2, 2},
                  {dateOf(2024, 1, 31), dateOf(2024, 3, 1), 1, 3, 31},
                  {dateOf(2020, 11, 1), dateOf(2024, 2, 1), 5, 40, 1188},
                  {dateOf(1, 1, 1), dateOf(9999, 12, 31), 9999, 119988, 3652059}};
    for (const auto& row : aryRow) {
        EXPECT_EQ(row.one.getStrideYears(row.other), row.uiYears) << textOf(row.one);
        EXPECT_EQ(row.other.getStrideYears(row.one), row.uiYears) << textOf(row.one);
        EXPECT_EQ(row.one.getStrideMonths(row.other), row.uiMonths) << textOf(row.one);
        EXPECT_EQ(row.other.getStrideMonths(row.one), row.uiMonths) << textOf(row.one);
        EXPECT_EQ(row.one.getStrideDays(row.other), row.uiDays) << textOf(row.one);
        EXPECT_EQ(row.other.getStrideDays(row.one), row.uiDays) << textOf(row.one);
    }
}

TEST(CTime, ComparisonsLookAtTheMostSignificantFieldFirst) {
    // Each is later than all before it, though all its smaller fields are smaller than in the one before.
    const CTime aryOrdered[] = {
        CTime(1, 1, 1, 0, 0, 0, 0),          CTime(1, 1, 1, 0, 0, 0, 999),      CTime(1, 1, 1, 0, 0, 59, 0),
        CTime(1, 1, 1, 0, 59, 0, 0),         CTime(1, 1, 1, 23, 0, 0, 0),       CTime(1, 1, 31, 0, 0, 0, 0),
        CTime(1, 12, 1, 0, 0, 0, 0),         CTime(1, 12, 31, 23, 59, 59, 999), CTime(2, 1, 1, 0, 0, 0, 0),
        CTime(256, 1, 1, 0, 0, 0, 0),        CTime(9999, 1, 1, 0, 0, 0, 0),     CTime(9999, 12, 31, 23, 59, 59, 998),
        CTime(9999, 12, 31, 23, 59, 59, 999)};
    constexpr int COUNT = sizeof(aryOrdered) / sizeof(aryOrdered[0]);
    for (int i = 0; i < COUNT; ++i)
        for (int j = 0; j < COUNT; ++j) {
            const CTime &one = aryOrdered[i], &other = aryOrdered[j];
            const std::string strCase = textOf(one) + " and " + textOf(other);
            EXPECT_EQ(one.compareFullTime(other), (i > j) - (i < j)) << strCase;
            EXPECT_EQ(one == other, i == j) << strCase;
            EXPECT_EQ(one != other, i != j) << strCase;
            EXPECT_EQ(one < other, i < j) << strCase;
            EXPECT_EQ(one > other, i > j) << strCase;
            EXPECT_EQ(one <= other, i <= j) << strCase;
            EXPECT_EQ(one >= other, i >= j) << strCase;
        }
}

TEST(CTime, CompareDateIgnoresTheTimeOfDay) {
    const CTime noon(2024, 5, 6, 12, 0, 0, 0);
    EXPECT_EQ(noon.compareDate(CTime(2024, 5, 6, 23, 59, 59, 999)), 0);
    EXPECT_EQ(noon.compareDate(CTime(2024, 5, 5, 23, 59, 59, 999)), 1);
    EXPECT_EQ(noon.compareDate(CTime(2024, 5, 7, 0, 0, 0, 0)), -1);
    EXPECT_EQ(noon.compareDate(CTime(2024, 4, 30, 0, 0, 0, 0)), 1);
    EXPECT_EQ(noon.compareDate(CTime(2024, 6, 1, 0, 0, 0, 0)), -1);
    EXPECT_EQ(noon.compareDate(CTime(2023, 12, 31, 0, 0, 0, 0)), 1);
    EXPECT_EQ(noon.compareDate(CTime(2025, 1, 1, 0, 0, 0, 0)), -1);
}

TEST(CTime, DifferenceIsInSecondsAndMayBeNegative) {
    const CTime early(2024, 2, 28, 23, 59, 59, 0), late(2024, 3, 1, 0, 0, 1, 0);
    EXPECT_EQ((late - early).getTotalSeconds(), 86402);
    EXPECT_EQ((early - late).getTotalSeconds(), -86402);
    EXPECT_EQ((CTime(LAST_SECOND) - CTime()).getTotalSeconds(), LAST_SECOND);
}

TEST(CTime, MillisecondsMakeTimesUnequalButNotApart) {
    const CTime one(2024, 5, 6, 7, 8, 9, 0), other(2024, 5, 6, 7, 8, 9, 999);
    EXPECT_NE(one, other);
    EXPECT_EQ(other - one, CTimeSpan(0));
}

// ---- Offsets

TEST(CTime, OffsetYearKeepsTheRestAndRectifiesTheDay) {
    const struct {
        CTime from;
        int iYears;
        const char* szText;
    } aryRow[] = {{CTime(2024, 5, 31, 1, 2, 3, 4), 0, "2024-5-31 1:2:3.4"},
                  {CTime(2024, 2, 29, 1, 2, 3, 4), 1, "2025-2-28 1:2:3.4"},
                  {CTime(2024, 2, 29, 1, 2, 3, 4), 4, "2028-2-29 1:2:3.4"},
                  {CTime(2024, 2, 29, 1, 2, 3, 4), -124, "1900-2-28 1:2:3.4"},
                  {CTime(9999, 1, 1, 0, 0, 0, 0), 1, "10000-1-1 0:0:0.0"},
                  {CTime(1, 1, 1, 0, 0, 0, 0), -1, "0-1-1 0:0:0.0"},
                  {CTime(1, 1, 1, 0, 0, 0, 0), -2, "65535-1-1 0:0:0.0"},
                  {CTime(1, 1, 1, 0, 0, 0, 0), 65536, "1-1-1 0:0:0.0"},
                  {CTime(1, 1, 1, 0, 0, 0, 0), INT_MAX, "0-1-1 0:0:0.0"},
                  {CTime(1, 1, 1, 0, 0, 0, 0), INT_MIN, "1-1-1 0:0:0.0"}};
    for (const auto& row : aryRow) {
        CTime time(row.from);
        time.offsetYear(row.iYears);
        EXPECT_EQ(textOf(time), row.szText) << textOf(row.from) << ' ' << row.iYears;
    }
}

TEST(CTime, YearsOutsideTheRangeAreNoValidDates) {
    CTime above(9999, 6, 15, 0, 0, 0, 0), below(1, 6, 15, 0, 0, 0, 0);
    above.offsetYear(1);
    below.offsetYear(-1);
    EXPECT_FALSE(above.isValidDate());
    EXPECT_FALSE(below.isValidDate());
    above.offsetYear(-1);
    below.offsetYear(1);
    EXPECT_TRUE(above.isValidDate());
    EXPECT_TRUE(below.isValidDate());
}

TEST(CTime, OffsetMonthCarriesIntoTheYearAndRectifiesTheDay) {
    const struct {
        CTime from;
        int iMonths;
        const char* szText;
    } aryRow[] = {{CTime(2023, 1, 31, 1, 2, 3, 4), 0, "2023-1-31 1:2:3.4"},
                  {CTime(2023, 1, 31, 1, 2, 3, 4), 1, "2023-2-28 1:2:3.4"},
                  {CTime(2024, 1, 31, 1, 2, 3, 4), 1, "2024-2-29 1:2:3.4"},
                  {CTime(2023, 1, 31, 0, 0, 0, 0), 11, "2023-12-31 0:0:0.0"},
                  {CTime(2023, 1, 31, 0, 0, 0, 0), 12, "2024-1-31 0:0:0.0"},
                  {CTime(2023, 12, 31, 0, 0, 0, 0), 1, "2024-1-31 0:0:0.0"},
                  {CTime(2023, 12, 31, 0, 0, 0, 0), -1, "2023-11-30 0:0:0.0"},
                  {CTime(2, 1, 15, 0, 0, 0, 0), -1, "1-12-15 0:0:0.0"},
                  {CTime(9999, 12, 31, 0, 0, 0, 0), 1, "10000-1-31 0:0:0.0"},
                  {CTime(1, 1, 31, 0, 0, 0, 0), -1, "0-12-31 0:0:0.0"},
                  {CTime(1, 1, 31, 0, 0, 0, 0), -11, "0-2-29 0:0:0.0"},
                  {CTime(1, 1, 31, 0, 0, 0, 0), -12, "0-1-31 0:0:0.0"}};
    for (const auto& row : aryRow) {
        CTime time(row.from);
        time.offsetMonth(row.iMonths);
        EXPECT_EQ(textOf(time), row.szText) << textOf(row.from) << ' ' << row.iMonths;
    }
}

TEST(CTime, MonthsBeforeTheYearZeroTruncateAndWrap) {
    // From the month 13 of all, counting January of the year 0 as 1.
    const struct {
        int iMonths;
        const char* szText;
    } aryRow[] = {{-13, "0-0-1 1:2:3.4"},              // the month 0 of all, which has no days
                  {-14, "0-65535-1 1:2:3.4"},          // the month -1 of all
                  {-23, "0-65526-1 1:2:3.4"},          // the month -10, the last with a year of 0
                  {-24, "65535-1-31 1:2:3.4"},         // the month -11: the year -1 and the month 1
                  {INT_MIN, "21847-65529-1 1:2:3.4"}}; // the year -178956969 and the month -7
    for (const auto& row : aryRow) {
        CTime time(1, 1, 31, 1, 2, 3, 4);
        time.offsetMonth(row.iMonths);
        EXPECT_EQ(textOf(time), row.szText) << row.iMonths;
        EXPECT_FALSE(time.isValidDate()) << row.iMonths;
    }
}

TEST(CTime, MonthThatDoesNotExistHasNoDays) {
    CTime time(1, 1, 31, 0, 0, 0, 0);
    time.offsetMonth(-13);
    EXPECT_EQ(time.getMonth(), 0);
    EXPECT_EQ(time.getDayCountOfThisMonth(), 0u);
    EXPECT_EQ(time.getTotalDays(), 0u - 365u);
    time.offsetMonth(-1);
    EXPECT_EQ(time.getMonth(), 65535);
    EXPECT_EQ(time.getDayCountOfThisMonth(), 0u);
    EXPECT_EQ(time.getTotalDays(), 1u) << "behind the whole year 0, a leap year";
    time.setZeroDate();
    EXPECT_TRUE(time.isValidDate());
}

TEST(CTime, OffsetDayCrossesMonthsYearsAndLeapDays) {
    const struct {
        CTime from;
        int iDays;
        const char* szText;
    } aryRow[] = {{CTime(2024, 2, 28, 1, 2, 3, 0), 1, "2024-2-29 1:2:3.0"},
                  {CTime(2023, 2, 28, 1, 2, 3, 0), 1, "2023-3-1 1:2:3.0"},
                  {CTime(2024, 1, 1, 23, 59, 59, 0), -1, "2023-12-31 23:59:59.0"},
                  {CTime(2000, 1, 1, 0, 0, 0, 0), 24855, "2068-1-19 0:0:0.0"},
                  {CTime(2000, 1, 1, 0, 0, 0, 0), -24855, "1931-12-14 0:0:0.0"},
                  {CTime(1, 1, 1, 5, 0, 0, 0), -1, "1-1-1 0:0:0.0"},
                  {CTime(9999, 12, 31, 5, 0, 0, 0), 1, "9999-12-31 23:59:59.0"}};
    for (const auto& row : aryRow) {
        CTime time(row.from);
        time.offsetDay(row.iDays);
        EXPECT_EQ(textOf(time), row.szText) << textOf(row.from) << ' ' << row.iDays;
    }
}

TEST(CTime, OffsetDayDropsTheMilliseconds) {
    CTime time(2024, 5, 6, 7, 8, 9, 10);
    time.offsetDay(0);
    EXPECT_EQ(textOf(time), "2024-5-6 7:8:9.0");
}

TEST(CTime, OffsetDayWrapsItsSecondsIn32Bits) {
    CTime forward(2000, 1, 1, 0, 0, 0, 0), backward(forward), nowhere(forward);
    forward.offsetDay(24856); // 2147558400 seconds, less 4294967296: -2147408896
    EXPECT_EQ((forward - dateOf(2000, 1, 1)).getTotalSeconds(), -2147408896L);
    backward.offsetDay(-24856);
    EXPECT_EQ((backward - dateOf(2000, 1, 1)).getTotalSeconds(), 2147408896L);
    nowhere.offsetDay(INT_MIN); // an even multiple of 2 to the power of 32
    EXPECT_EQ(nowhere, dateOf(2000, 1, 1));
}

// ---- Clocks

TEST(CTime, FirstTickIsZeroAndTheNextCountsFromIt) {
    const auto result = runInChild([] {
        CTickProbe::setStart(0); // as in a process that never asked: other tests may have
        tagClockStandIn clock;
        clock.monotonic = tickOf(7654321);
        const unsigned int uiFirst = CTime::getTickCount(), uiSame = CTime::getTickCount();
        clock.monotonic = tickOf(7654321 + 250);
        const unsigned int uiLater = CTime::getTickCount();
        std::printf("%u %u %u %u %s", uiFirst, uiSame, uiLater, CTickProbe::getStart(), clock.strCalls.c_str());
        return 0;
    });
    EXPECT_EQ(result.strOutput, "0 0 250 7654321 mmm");
    EXPECT_EQ(result.iExitCode, 0);
}

TEST(CTime, RawTickOfZeroIsNoFirstCall) {
    const auto result = runInChild([] {
        CTickProbe::setStart(0);
        tagClockStandIn clock;
        const unsigned int uiFirst = CTime::getTickCount();
        clock.monotonic = tickOf(40);
        const unsigned int uiSecond = CTime::getTickCount();
        clock.monotonic = tickOf(100);
        std::printf("%u %u %u", uiFirst, uiSecond, CTime::getTickCount());
        return 0;
    });
    EXPECT_EQ(result.strOutput, "0 0 60");
}

TEST(CTime, TicksAreRightAcrossTheWrap) {
    const auto result = runInChild([] {
        CTickProbe::setStart(0);
        tagClockStandIn clock;
        clock.monotonic = tickOf(4294967296 - 10);
        const unsigned int uiFirst = CTime::getTickCount();
        clock.monotonic = tickOf(4294967296 + 5);
        std::printf("%u %u", uiFirst, CTime::getTickCount());
        return 0;
    });
    EXPECT_EQ(result.strOutput, "0 15");
}

TEST(CTime, TicksFollowTheRealClock) {
    CImpTime imp;
    CTime::getTickCount(); // not the first call any more
    const unsigned int uiOuter = imp.getTickCount(), uiStart = CTime::getTickCount(), uiInner = imp.getTickCount();
    while (imp.getTickCount() - uiInner < 5) {}
    const unsigned int uiShortest = imp.getTickCount() - uiInner;
    const unsigned int uiPassed = CTime::getTickCount() - uiStart;
    EXPECT_GE(uiPassed, uiShortest);
    EXPECT_LE(uiPassed, imp.getTickCount() - uiOuter);
}

TEST(CTime, LoadingTheLibraryStartsNoTick) { EXPECT_EQ(START_AT_LOAD, 0u); }

TEST(CImpTime, TickIsTheMonotonicClockInMillisecondsOf32Bits) {
    const struct {
        timespec now;
        unsigned int uiTick;
    } aryRow[] = {{{0, 0}, 0u},
                  {{0, 999999}, 0u},
                  {{0, 1000000}, 1u},
                  {{12, 345999999}, 12345u},
                  {{4294967, 295000000}, 4294967295u},
                  {{4294967, 296000000}, 0u},
                  {{4294967296, 5000000}, 5u}};
    tagClockStandIn clock;
    CImpTime imp;
    for (const auto& row : aryRow) {
        clock.monotonic = row.now;
        EXPECT_EQ(imp.getTickCount(), row.uiTick) << row.now.tv_sec << ' ' << row.now.tv_nsec;
    }
    EXPECT_EQ(clock.strCalls, "mmmmmmm");
}

/** What the present time reads as in the zone, in a child, so that no other test sees the zone. */
std::string currentTimeIn(const char* szZone, timeval first, time_t lFirst, timeval second, time_t lSecond) {
    return runInChild([&] {
               setenv("TZ", szZone, 1);
               tagClockStandIn clock;
               clock.aryOfDay[0] = first;
               clock.aryOfDay[1] = second;
               clock.arySeconds[0] = lFirst;
               clock.arySeconds[1] = lSecond;
               const CTime time = CTime::getCurrentTime();
               std::printf("%s %s", textOf(time).c_str(), clock.strCalls.c_str());
               return 0;
           })
        .strOutput;
}

TEST(CImpTime, UsesTheFirstReadingsWithinOneSecond) {
    EXPECT_EQ(currentTimeIn("UTC0", {1000000000, 123999}, 1000000000, {1000000000, 456999}, 1000000007),
              "2001-9-9 1:46:40.123 gtgt");
}

TEST(CImpTime, UsesTheSecondReadingsWhenTheSecondChanges) {
    EXPECT_EQ(currentTimeIn("UTC0", {1000000000, 999999}, 1000000001, {1000000001, 2000}, 1000000001),
              "2001-9-9 1:46:41.2 gtgt");
}

TEST(CImpTime, TakesTheSecondsFromTheCoarseClockOnly) {
    EXPECT_EQ(currentTimeIn("UTC0", {1000000000, 5000}, 999999999, {1000000000, 6000}, 1000000000),
              "2001-9-9 1:46:39.5 gtgt");
    EXPECT_EQ(currentTimeIn("UTC0", {999999999, 999000}, 999999998, {1000000000, 6000}, 999999999),
              "2001-9-9 1:46:39.6 gtgt");
}

TEST(CImpTime, LastYearOfTheSystemsCalendarIsStoredIn16Bits) {
    constexpr time_t LAST = 67768036191676799; // the year 2147485547, 1900 beyond the largest int
    EXPECT_EQ(currentTimeIn("UTC0", {LAST, 0}, LAST, {LAST, 0}, LAST), "1899-12-31 23:59:59.0 gtgt");
}

TEST(CImpTime, ClockThatNoCalendarHoldsGivesTheZeroDate) {
    EXPECT_EQ(currentTimeIn("UTC0", {LONG_MAX, 0}, LONG_MAX, {LONG_MAX, 0}, LONG_MAX), "1-1-1 0:0:0.0 gtgt");
}

TEST(CImpTime, ConvertsToTheLocalZone) {
    EXPECT_EQ(currentTimeIn("XXX-05:30", {1704047400, 0}, 1704047400, {1704047400, 0}, 1704047400),
              "2024-1-1 0:0:0.0 gtgt");
    EXPECT_EQ(currentTimeIn("XXX+02", {0, 0}, 0, {0, 0}, 0), "1969-12-31 22:0:0.0 gtgt");
}

TEST(CImpTime, NoticesAChangeOfTheZone) {
    const auto result = runInChild([] {
        tagClockStandIn clock;
        setenv("TZ", "UTC0", 1);
        const CTime before = CTime::getCurrentTime();
        setenv("TZ", "XXX-3", 1);
        std::printf("%s, %s", textOf(before).c_str(), textOf(CTime::getCurrentTime()).c_str());
        return 0;
    });
    EXPECT_EQ(result.strOutput, "1970-1-1 0:0:0.0, 1970-1-1 3:0:0.0");
}

TEST(CImpTime, TimesBeyondTheLastYearAreClamped) {
    EXPECT_EQ(currentTimeIn("UTC0", {253402300800, 7000}, 253402300800, {253402300800, 0}, 0),
              "9999-1-1 0:0:0.7 gtgt"); // the first moment of the year 10000
}

TEST(CImpTime, FollowsTheRealClock) {
    const time_t lBefore = std::time(nullptr);
    const CTime time = CTime::getCurrentTime();
    const time_t lAfter = std::time(nullptr);
    tm before{}, after{};
    localtime_r(&lBefore, &before);
    localtime_r(&lAfter, &after);
    const auto secondsOf = [](const tm& local) {
        return CTime(static_cast<unsigned short>(local.tm_year + 1900), static_cast<unsigned short>(local.tm_mon + 1),
                     static_cast<unsigned short>(local.tm_mday), static_cast<unsigned short>(local.tm_hour),
                     static_cast<unsigned short>(local.tm_min), static_cast<unsigned short>(local.tm_sec), 0)
            .getTotalSeconds();
    };
    EXPECT_GE(time.getTotalSeconds(), secondsOf(before));
    EXPECT_LE(time.getTotalSeconds(), secondsOf(after));
}
} // namespace
