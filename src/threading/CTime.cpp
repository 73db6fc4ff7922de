#include <Orlix/threading/CTime.h>

#include <Orlix/threading/CImpTime.h>

namespace Orlix {
namespace {

constexpr unsigned int FIRST_YEAR = 1;
constexpr unsigned int LAST_YEAR = 9999;
constexpr unsigned int MONTHS_PER_YEAR = 12;
constexpr int DAY_SECONDS = 86400;

constexpr unsigned int DAYS_PER_YEAR = 365;                      // a common one
constexpr unsigned int DAYS_PER_4_YEARS = 4 * DAYS_PER_YEAR + 1; // with the leap year at the end
constexpr unsigned int DAYS_PER_100_YEARS = 25 * DAYS_PER_4_YEARS - 1;
constexpr unsigned int DAYS_PER_400_YEARS = 4 * DAYS_PER_100_YEARS + 1;
constexpr long RANGE_SECONDS = (25L * DAYS_PER_400_YEARS - 366) * DAY_SECONDS; // the year 10000 is a leap year

// The days before each month, and behind the last one those of the whole year.
constexpr unsigned short DAYS_BEFORE[2][MONTHS_PER_YEAR + 1] = {
    {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365},
    {0, 31, 60, 91, 121, 152, 182, 213, 244, 274, 305, 335, 366}};

constexpr unsigned int atMost(unsigned int uiValue, unsigned int uiLimit) {
    return uiValue < uiLimit ? uiValue : uiLimit;
}

constexpr unsigned short clamp(unsigned short usValue, unsigned int uiLowest, unsigned int uiHighest) {
    return static_cast<unsigned short>(usValue < uiLowest ? uiLowest : atMost(usValue, uiHighest));
}

constexpr unsigned int strideOf(unsigned int uiOne, unsigned int uiOther) {
    return (uiOne < uiOther ? uiOther - uiOne : uiOne - uiOther) + 1; // both ends count on purpose
}

constexpr int compare(unsigned long ulOne, unsigned long ulOther) {
    return ulOne < ulOther ? -1 : static_cast<int>(ulOne > ulOther);
}

/** Takes whole years off a count of days. The last of four centuries, and of four years, has the leap day: its last day
 *  is not the first of a fifth one. @return the whole years. */
unsigned int takeYears(unsigned int& uiDays) {
    unsigned int uiYears = uiDays / DAYS_PER_400_YEARS * 400;
    uiDays %= DAYS_PER_400_YEARS;
    const unsigned int uiCenturies = atMost(uiDays / DAYS_PER_100_YEARS, 3);
    uiYears += uiCenturies * 100;
    uiDays -= uiCenturies * DAYS_PER_100_YEARS;
    uiYears += uiDays / DAYS_PER_4_YEARS * 4;
    uiDays %= DAYS_PER_4_YEARS;
    const unsigned int uiSingle = atMost(uiDays / DAYS_PER_YEAR, 3);
    uiDays -= uiSingle * DAYS_PER_YEAR;
    return uiYears + uiSingle;
}
} // namespace

unsigned int CTime::s_ulStartTickCount = 0;

CTime CTime::getCurrentTime() {
    CImpTime imp;
    return imp.getCurrentTime();
}

unsigned int CTime::getTickCount() {
    CImpTime imp;
    const unsigned int uiRaw = imp.getTickCount();
    if (s_ulStartTickCount == 0) { // also after a first raw tick of 0, which then counts as none
        s_ulStartTickCount = uiRaw;
        return 0;
    }
    return uiRaw - s_ulStartTickCount;
}

CTime::CTime(unsigned short usYear, unsigned short usMonth, unsigned short usDay, unsigned short usHour,
             unsigned short usMinute, unsigned short usSecond, unsigned short usMilliSecond) noexcept
    : m_usYear(clamp(usYear, FIRST_YEAR, LAST_YEAR)), m_usMonth(clamp(usMonth, 1, MONTHS_PER_YEAR)), m_usDay(usDay),
      m_usHour(clamp(usHour, 0, 23)), m_usMinute(clamp(usMinute, 0, 59)), m_usSecond(clamp(usSecond, 0, 59)),
      m_usMilliSecond(clamp(usMilliSecond, 0, 999)) {
    rectifyDay(); // needs the clamped year and month
}

CTime::CTime(long lTotalSeconds) noexcept {
    if (lTotalSeconds < 0)
        lTotalSeconds = 0;
    else if (lTotalSeconds >= RANGE_SECONDS)
        lTotalSeconds = RANGE_SECONDS - 1;
    const CTimeSpan span(lTotalSeconds);
    unsigned int uiDays = static_cast<unsigned int>(span.getDays());
    m_usYear = static_cast<unsigned short>(FIRST_YEAR + takeYears(uiDays));
    const unsigned short* const pDaysBefore = DAYS_BEFORE[isLeapYear()];
    unsigned int uiMonth = uiDays / 32 + 1; // no month is longer than 31 days, so this is the month or the one before
    if (uiDays >= pDaysBefore[uiMonth])
        ++uiMonth;
    m_usMonth = static_cast<unsigned short>(uiMonth);
    m_usDay = static_cast<unsigned short>(uiDays - pDaysBefore[uiMonth - 1] + 1);
    m_usHour = static_cast<unsigned short>(span.getHours());
    m_usMinute = static_cast<unsigned short>(span.getMinutes());
    m_usSecond = static_cast<unsigned short>(span.getSeconds());
    m_usMilliSecond = 0;
}

void CTime::setZeroDate() noexcept {
    m_usYear = m_usMonth = m_usDay = 1;
    m_usHour = m_usMinute = m_usSecond = m_usMilliSecond = 0;
}

void CTime::rectifyDay() noexcept {
    m_usDay = static_cast<unsigned short>(atMost(m_usDay, getDayCountOfThisMonth()));
    if (m_usDay == 0) // last, for a month that does not exist has no days
        m_usDay = 1;
}

void CTime::offsetYear(int iYears) noexcept {
    m_usYear = static_cast<unsigned short>(m_usYear + static_cast<unsigned int>(iYears)); // no clamp on purpose
    rectifyDay();
}

void CTime::offsetMonth(int iMonths) noexcept {
    const unsigned int uiMonths = m_usMonth + m_usYear * MONTHS_PER_YEAR + static_cast<unsigned int>(iMonths);
    const int iYear = static_cast<int>(uiMonths - 1) / static_cast<int>(MONTHS_PER_YEAR);
    m_usYear = static_cast<unsigned short>(iYear);
    m_usMonth = static_cast<unsigned short>(uiMonths - static_cast<unsigned int>(iYear) * MONTHS_PER_YEAR);
    rectifyDay();
}

void CTime::offsetDay(int iDays) noexcept {
    // Both are meant, and callers know them: the product wraps in 32 bits, and the way through seconds drops the
    // milliseconds, even for an offset of 0.
    const int iSeconds = static_cast<int>(static_cast<unsigned int>(iDays) * static_cast<unsigned int>(DAY_SECONDS));
    *this = CTime(getTotalSeconds() + iSeconds);
}

bool CTime::isLeapYear() const noexcept { return (m_usYear % 4 == 0 && m_usYear % 100 != 0) || m_usYear % 400 == 0; }

bool CTime::isZeroDate() const noexcept { return operator==(CTime()); }

bool CTime::isValidDate() const noexcept {
    return m_usYear >= FIRST_YEAR && m_usYear <= LAST_YEAR && m_usDay >= 1 && m_usDay <= getDayCountOfThisMonth();
}

unsigned int CTime::getDayCountOfThisMonth() const noexcept {
    if (m_usMonth < 1 || m_usMonth > MONTHS_PER_YEAR)
        return 0;
    const unsigned short* const pDaysBefore = DAYS_BEFORE[isLeapYear()];
    return static_cast<unsigned int>(pDaysBefore[m_usMonth] - pDaysBefore[m_usMonth - 1]);
}

unsigned int CTime::getTotalDays() const noexcept {
    const int iYears = m_usYear - 1; // signed, so that the year 0 is a year before the zero date
    const int iDays = iYears * 365 + iYears / 4 - iYears / 100 + iYears / 400;
    const unsigned int uiMonths = m_usMonth == 0 ? 0 : atMost(m_usMonth - 1u, MONTHS_PER_YEAR);
    return static_cast<unsigned int>(iDays) + DAYS_BEFORE[isLeapYear()][uiMonths] + m_usDay - 1u;
}

long CTime::getTotalSeconds() const noexcept {
    return static_cast<long>(getTotalDays()) * DAY_SECONDS + m_usHour * 3600 + m_usMinute * 60 + m_usSecond;
}

unsigned int CTime::getStrideYears(const CTime& other) const noexcept { return strideOf(m_usYear, other.m_usYear); }

unsigned int CTime::getStrideMonths(const CTime& other) const noexcept {
    return strideOf(m_usYear * MONTHS_PER_YEAR + m_usMonth, other.m_usYear * MONTHS_PER_YEAR + other.m_usMonth);
}

unsigned int CTime::getStrideDays(const CTime& other) const noexcept {
    return strideOf(getTotalDays(), other.getTotalDays());
}

int CTime::compareDate(const CTime& other) const noexcept {
    const auto keyOf = [](const CTime& t) {
        return static_cast<unsigned long>(t.m_usYear) << 32 | static_cast<unsigned long>(t.m_usMonth) << 16 | t.m_usDay;
    };
    return compare(keyOf(*this), keyOf(other));
}

int CTime::compareFullTime(const CTime& other) const noexcept {
    const int iDate = compareDate(other);
    if (iDate != 0)
        return iDate;
    const auto keyOf = [](const CTime& t) {
        return static_cast<unsigned long>(t.m_usHour) << 48 | static_cast<unsigned long>(t.m_usMinute) << 32 |
               static_cast<unsigned long>(t.m_usSecond) << 16 | t.m_usMilliSecond;
    };
    return compare(keyOf(*this), keyOf(other));
}
} // namespace Orlix
