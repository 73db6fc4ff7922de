#include <Orlix/threading/CImpTime.h>

#include <ctime>
#include <sys/time.h>

namespace Orlix {
namespace {

CTime fromLocalTime(time_t lSeconds, suseconds_t lMicroSeconds) {
    tzset(); // unlike localtime, localtime_r need not notice that the zone has changed
    tm local{};
    if (!localtime_r(&lSeconds, &local))
        return CTime();
    // Added unsigned: the last years that the system's calendar holds are near the end of an int.
    return CTime(static_cast<unsigned short>(static_cast<unsigned int>(local.tm_year) + 1900u),
                 static_cast<unsigned short>(local.tm_mon + 1), static_cast<unsigned short>(local.tm_mday),
                 static_cast<unsigned short>(local.tm_hour), static_cast<unsigned short>(local.tm_min),
                 static_cast<unsigned short>(local.tm_sec), static_cast<unsigned short>(lMicroSeconds / 1000));
}
} // namespace

CTime CImpTime::getCurrentTime() {
    timeval first{}, second{};
    gettimeofday(&first, nullptr);
    const time_t lFirst = time(nullptr);
    gettimeofday(&second, nullptr);
    const time_t lSecond = time(nullptr);
    // The second may change between the two clocks of the first pair, but not again within the next pair.
    // The seconds come from the coarse clock on purpose, also where it lags behind the fine one by a tick.
    if (first.tv_sec == second.tv_sec)
        return fromLocalTime(lFirst, first.tv_usec);
    return fromLocalTime(lSecond, second.tv_usec);
}

unsigned int CImpTime::getTickCount() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<unsigned int>(now.tv_sec) * 1000u + static_cast<unsigned int>(now.tv_nsec) / 1000000u;
}
} // namespace Orlix
