#pragma once

#include <ctime>
#include <string>
#include <sys/time.h>

namespace OrlixTest {

/** What the system's clocks say to the thread that made this, for as long as it lives. Other threads, and other clocks
 *  than these, keep their real ones. */
struct tagClockStandIn {
    tagClockStandIn();
    ~tagClockStandIn();
    tagClockStandIn(const tagClockStandIn&) = delete;
    tagClockStandIn& operator=(const tagClockStandIn&) = delete;

    timeval aryOfDay[2]{};    // for the first and the second gettimeofday
    time_t arySeconds[2]{};   // for the first and the second time
    timespec monotonic{};     // for each clock_gettime on CLOCK_MONOTONIC
    std::string strCalls;     // 'g' for each gettimeofday, 't' for each time, 'm' for each clock_gettime
    unsigned int uiOfDay = 0; // calls so far
    unsigned int uiSeconds = 0;
};
} // namespace OrlixTest
