#pragma once

#include <Orlix/input/CCursor.h>

#include <chrono>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

/** Counts what the touch listener got, and how long each sample took from its push to the listener's call.
 *
 *  Messages come out in the order in which they were posted, so the n-th touch that is handled is the n-th one posted.
 *  Repeats of a held finger are posted by the host thread and take part in that order, but are not measured.
 *  Threads: construct on the host thread; then each operation as it says. */
class CTouchStatistics {
public:
    CTouchStatistics();

    /** On the input thread, around each push of a sample. */
    void beginSample();
    void endSample();

    /** On the thread that has posted a message, as the center's listener is told of it. */
    void onPosted();

    /** On the host thread, for each call of the touch listener. */
    void onHandled(Orlix::CCursor::ETouchStatus eStatus);

    /** One line on stderr, once the input thread has ended. */
    void print();

private:
    typedef std::chrono::steady_clock CClock;

    const std::thread::id m_idHost;
    unsigned int m_aryCount[Orlix::CCursor::TOUCH_WHEEL + 1] = {}; // by status
    unsigned int m_uiDeepest = 0;                                  // of the input thread
    std::mutex m_mutex;                                            // guards what follows
    std::deque<CClock::time_point> m_qPosted;   // posted and not yet handled; the epoch for what is not measured
    std::deque<CClock::time_point> m_qHandled;  // handled before the posting thread came to tell of it
    std::vector<CClock::duration> m_aryLatency; // of the samples

    void record(CClock::time_point timePosted, CClock::time_point timeHandled);
    double getPercentile(unsigned int uiPercent);
};
