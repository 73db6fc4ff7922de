#pragma once

#include <chrono>

/** Ends the waiting of threads that wait for something else: the host is to stop, say. Once set it stays set.
 *
 *  Threads: any operation from any thread. */
class CEventFlag {
public:
    CEventFlag();
    CEventFlag(const CEventFlag&) = delete;
    CEventFlag& operator=(const CEventFlag&) = delete;
    ~CEventFlag();

    void set() noexcept;

    /** Never blocks. */
    bool isSet() const noexcept;

    /** Blocks until a descriptor can be read, is at its end or is broken.
     *  @param iFile -1 waits for the flag alone. @return false once the flag is set, readable or not. */
    bool waitForInput(int iFile) const noexcept;

    /** Blocks until the time. @return false once the flag is set. */
    bool sleepUntil(std::chrono::steady_clock::time_point time) const noexcept;

    /** Can be read once the flag is set, so that one flag can be waited for under another. */
    int getDescriptor() const noexcept { return m_iEvent; }

private:
    int m_iEvent;
};
