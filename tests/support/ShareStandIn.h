#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace OrlixTest {

/** The calls for segments and named semaphores, written down for as long as this lives; one at a time. Without it the
 *  calls go through, and the janitor is told of them.
 *
 *  A wait is written down when it has got what it waited for. */
class CShareStandIn {
public:
    CShareStandIn();
    ~CShareStandIn();
    CShareStandIn(const CShareStandIn&) = delete;
    CShareStandIn& operator=(const CShareStandIn&) = delete;

    /** Writes a call down. With the number of calls in m_iKillAt reached, the process kills itself instead. */
    void note(const std::string& strCall);
    /** The name of an opened semaphore without its front and its number: "read", "write" or "event". */
    std::string getName(const void* pSemaphore);
    void setName(const void* pSemaphore, const std::string& strName);
    std::vector<std::string> getCalls();
    void clear();

    int m_iKillAt = 0;                  // 0 for never
    bool m_bNoAttach = false;           // no segment can be attached
    unsigned int m_uiReason = 0;        // bytes in which errors are described, at most 1024; 0 as the system does
    std::function<void()> m_fnLook;     // called before each look at the state of a segment; null for nothing
    bool m_bZeroID = false;             // the one segment that is made has the identifier 0
    std::atomic<bool> m_bNoPost{false}; // posts are lost, as if another process had taken what they give

private:
    std::mutex m_mutex;
    std::vector<std::string> m_vecCall;
    std::map<const void*, std::string> m_mapName;
    int m_iCalls = 0;
};
} // namespace OrlixTest
