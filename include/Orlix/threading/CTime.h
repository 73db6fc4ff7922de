#pragma once

#include <Orlix/foundation/CObject.h>
#include <Orlix/threading/CTimeSpan.h>

namespace Orlix {

/** A date and time of day in the Gregorian calendar, without a zone, from the year 1 to the year 9999.
 *
 *  Midnight at the start of 1 January of the year 1 is the zero date: the default, and the origin of all counts.
 *  Only offsetYear and offsetMonth can leave the range of years; isValidDate tells. Threads: a plain value. */
class ORLIX_API CTime : public CObject {
    ORLIX_HEAP_CLASS(L"CTime")

public:
    /** The local date and time, with milliseconds. */
    static CTime getCurrentTime();

    /** Milliseconds since the first call in this process, which itself gives 0.
     *
     *  Wraps after some 49.7 days; subtract two ticks in unsigned int and the wrap does no harm.
     *  Threads: any, once the first call has returned. First calls that race may each give 0, and the later one
     *  sets the origin, so make the first call before the threads begin. */
    static unsigned int getTickCount();

    /** The zero date. */
    CTime() noexcept { setZeroDate(); }
    /** Values out of range are moved to the nearest in range, the day by the length of the month.
     *  Months and days count from 1. */
    CTime(unsigned short usYear, unsigned short usMonth, unsigned short usDay, unsigned short usHour,
          unsigned short usMinute, unsigned short usSecond, unsigned short usMilliSecond) noexcept;
    /** The reverse of getTotalSeconds; the milliseconds are 0.
     *  @param lTotalSeconds seconds since the zero date. Negative ones give the zero date, those beyond the year 9999
     *  its last second. */
    explicit CTime(long lTotalSeconds) noexcept;

    unsigned short getYear() const noexcept { return m_usYear; }
    unsigned short getMonth() const noexcept { return m_usMonth; }
    unsigned short getDay() const noexcept { return m_usDay; }
    unsigned short getHour() const noexcept { return m_usHour; }
    unsigned short getMinute() const noexcept { return m_usMinute; }
    unsigned short getSecond() const noexcept { return m_usSecond; }
    unsigned short getMilliSecond() const noexcept { return m_usMilliSecond; }

    /** Makes this the zero date. */
    void setZeroDate() noexcept;
    /** A day of 0 becomes 1, one beyond the end of the month the last. In a month that does not exist it becomes 1. */
    void rectifyDay() noexcept;

    /** Moves by years; 29 February becomes 28 February in a common year.
     *  @param iYears any value: the year is added up in 16 bits and may leave the range of valid dates. */
    void offsetYear(int iYears) noexcept;

    /** Moves by months; a day beyond the end of the new month becomes its last.
     *  @param iMonths any value: the year may leave the range of valid dates. Before January of the year 0 the year and
     *  the month are what a division that truncates toward zero leaves, stored in 16 bits; where that is no month, the
     *  day is 1. */
    void offsetMonth(int iMonths) noexcept;

    /** Moves by days, and sets the milliseconds to 0, even with an offset of 0.
     *  @param iDays -24855 to 24855. Beyond that its seconds wrap in 32 bits, and the date moves by what is left.
     *  A result outside the years 1 to 9999 is moved to the nearest second inside them. */
    void offsetDay(int iDays) noexcept;

    bool isLeapYear() const noexcept;
    bool isZeroDate() const noexcept;
    /** Looks at the date only, not at the time of day. */
    bool isValidDate() const noexcept;

    /** 365 or 366. */
    unsigned int getDayCountOfThisYear() const noexcept { return isLeapYear() ? 366 : 365; }
    /** 28 to 31, and 0 in a month that does not exist. */
    unsigned int getDayCountOfThisMonth() const noexcept;
    /** Days since 1 January of the year 1, which itself gives 0. The count of the year 0 is a wrapped negative one. */
    unsigned int getTotalDays() const noexcept;
    /** 0 is Sunday, 6 is Saturday. */
    unsigned int getDayOfWeek() const noexcept { return (getTotalDays() + 1) % 7; }
    /** Seconds since the zero date; the milliseconds are left out. */
    long getTotalSeconds() const noexcept;

    /** Calendar years from the one date to the other, in whichever order. Both ends count, so a date's stride to itself
     *  is 1. */
    unsigned int getStrideYears(const CTime& other) const noexcept;
    /** Calendar months from the one date to the other, counted like the years. */
    unsigned int getStrideMonths(const CTime& other) const noexcept;
    /** Days from the one date to the other, counted like the years. */
    unsigned int getStrideDays(const CTime& other) const noexcept;

    /** Looks at the year, month and day. @return -1 if this is the earlier, 1 if it is the later, otherwise 0. */
    int compareDate(const CTime& other) const noexcept;
    /** Looks at all fields. @return -1 if this is the earlier, 1 if it is the later, otherwise 0. */
    int compareFullTime(const CTime& other) const noexcept;

    /** The way from the other time to this one, negative if this is the earlier. Milliseconds play no part, so unequal
     *  times may be a span of 0 apart. */
    CTimeSpan operator-(const CTime& other) const noexcept {
        return CTimeSpan(getTotalSeconds() - other.getTotalSeconds());
    }

    // The milliseconds count in all of these.
    bool operator==(const CTime& other) const noexcept { return compareFullTime(other) == 0; }
    bool operator!=(const CTime& other) const noexcept { return compareFullTime(other) != 0; }
    bool operator<(const CTime& other) const noexcept { return compareFullTime(other) < 0; }
    bool operator>(const CTime& other) const noexcept { return compareFullTime(other) > 0; }
    bool operator<=(const CTime& other) const noexcept { return !operator>(other); }
    bool operator>=(const CTime& other) const noexcept { return !operator<(other); }

protected:
    /** The raw tick of the first call of getTickCount, 0 before it. No lock guards it: the first call is over before
     * the threads begin. */
    static unsigned int s_ulStartTickCount;

    unsigned short m_usYear;        // 1 to 9999, until an offset leaves the range
    unsigned short m_usMonth;       // 1 to 12, until an offset leaves the range
    unsigned short m_usDay;         // 1 to the length of the month
    unsigned short m_usHour;        // 0 to 23
    unsigned short m_usMinute;      // 0 to 59
    unsigned short m_usSecond;      // 0 to 59
    unsigned short m_usMilliSecond; // 0 to 999
};
} // namespace Orlix
