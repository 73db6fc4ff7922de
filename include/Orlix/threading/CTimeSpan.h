#pragma once

#include <Orlix/foundation/CObject.h>

namespace Orlix {

/** A difference of two times in whole seconds, which may be negative.
 *
 *  Division and remainder truncate toward zero, so every part of a negative span is negative or 0.
 *  Threads: a plain value. */
class ORLIX_API CTimeSpan : public CObject {
    ORLIX_HEAP_CLASS(L"CTimeSpan")

public:
    /** No time at all. */
    CTimeSpan() noexcept : m_lTimeSpan(0) {}
    /** @param lSeconds any value, negative ones too. */
    explicit CTimeSpan(long lSeconds) noexcept : m_lTimeSpan(lSeconds) {}

    /** The whole days. */
    long getDays() const noexcept { return m_lTimeSpan / DAY_SECONDS; }
    /** The hours beyond the whole days, -23 to 23. */
    long getHours() const noexcept { return m_lTimeSpan % DAY_SECONDS / HOUR_SECONDS; }
    /** The minutes beyond the whole hours, -59 to 59. */
    long getMinutes() const noexcept { return m_lTimeSpan % HOUR_SECONDS / MINUTE_SECONDS; }
    /** The seconds beyond the whole minutes, -59 to 59. */
    long getSeconds() const noexcept { return m_lTimeSpan % MINUTE_SECONDS; }

    /** The whole days, narrowed: days that need more than 32 bits lose their upper ones. */
    int getTotalDays() const noexcept { return static_cast<int>(getDays()); }
    /** The whole span in hours. */
    long getTotalHours() const noexcept { return m_lTimeSpan / HOUR_SECONDS; }
    /** The whole span in minutes. */
    long getTotalMinutes() const noexcept { return m_lTimeSpan / MINUTE_SECONDS; }
    /** The whole span in seconds. */
    long getTotalSeconds() const noexcept { return m_lTimeSpan; }

    bool operator==(const CTimeSpan& other) const noexcept { return m_lTimeSpan == other.m_lTimeSpan; }
    bool operator!=(const CTimeSpan& other) const noexcept { return m_lTimeSpan != other.m_lTimeSpan; }
    bool operator<(const CTimeSpan& other) const noexcept { return m_lTimeSpan < other.m_lTimeSpan; }
    bool operator<=(const CTimeSpan& other) const noexcept { return m_lTimeSpan <= other.m_lTimeSpan; }
    bool operator>(const CTimeSpan& other) const noexcept { return m_lTimeSpan > other.m_lTimeSpan; }
    bool operator>=(const CTimeSpan& other) const noexcept { return m_lTimeSpan >= other.m_lTimeSpan; }

protected:
    static constexpr long MINUTE_SECONDS = 60;
    static constexpr long HOUR_SECONDS = 3600;
    static constexpr long DAY_SECONDS = 86400;

    long m_lTimeSpan; // seconds
};
} // namespace Orlix
