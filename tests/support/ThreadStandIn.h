#pragma once

#include <mutex>
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

    bool m_bNoSchedule = false; // the scheduling of a thread cannot be read

private:
    std::mutex m_mutex;
    std::vector<std::string> m_vecCall;
};
} // namespace OrlixTest
