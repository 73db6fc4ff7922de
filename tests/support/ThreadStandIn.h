#pragma once

#include <atomic>
#include <mutex>
#include <pthread.h>
#include <string>
#include <vector>

namespace OrlixTest {

/** What threads ask the system about themselves, written down for as long as this lives; one at a time. */
class CThreadStandIn {
public:
    CThreadStandIn();
    ~CThreadStandIn();
    CThreadStandIn(const CThreadStandIn&) = delete;
    CThreadStandIn& operator=(const CThreadStandIn&) = delete;

    void note(const std::string& strCall);
    std::vector<std::string> getCalls();

    /** Called by a thread that is about to signal a condition: keeps it there while m_bHoldSignals, unless it is the
     *  one that made this. */
    void holdSignal();

    bool m_bNoSchedule = false;               // the scheduling of a thread cannot be read
    std::atomic<bool> m_bHoldSignals{false};  // no other thread gets past a signal
    std::atomic<bool> m_bSignalIsHeld{false}; // one has come that far

private:
    const pthread_t m_threadOwn = pthread_self();
    std::mutex m_mutex;
    std::vector<std::string> m_vecCall;
};
} // namespace OrlixTest
