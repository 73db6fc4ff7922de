#pragma once

#include <Orlix/foundation/CArrayIndex.h>
#include <Orlix/foundation/CDataArray.h>
#include <Orlix/threading/CMsgTimer.h>
#include <Orlix/threading/CThread.h>

#include <atomic>

namespace Orlix {

/** The timer thread: looks every 10 ms which timers are due and posts their pulses to CMessageCenter, all of one cycle
 *  in one message. It calls no listener. Without timers it sleeps until one is started.
 *
 *  Threads: the host makes, starts, stops and deletes it; timers come and go on any thread. m_syncObject is held for a
 *  whole cycle, the posting included; it and m_syncDeleted are never held together outside of a cycle. */
class ORLIX_API CTimerManager : public CThread {
    ORLIX_HEAP_CLASS(L"CTimerManager")

public:
    CTimerManager();
    ~CTimerManager() override;

    /** The manager, made by the first call. Not synchronised. */
    static CTimerManager* getInstance();
    /** Deletes the manager, if there is one; its thread must have been stopped. Not synchronised. */
    static void deleteInstance();

    /** Begins the thread, named and prioritised as the configuration says, and waits until it runs. Nothing happens if
     *  it runs already. */
    void start();
    /** Ends the thread and waits for it, at most about one cycle. Timers stay listed and go on with the next start. */
    void stop();

    /** What CTimer::start does. @param pTimer not owned; null, and one that is listed already, are ignored. */
    void addTimer(CTimer* pTimer);
    /** What CTimer::stop does: behind it no pulse of the timer waits anywhere, and those in a message that the host is
     *  handling are skipped. @param pTimer need not be listed; null is ignored. */
    void removeTimer(CTimer* pTimer);
    /** What CTimer::pulse does, on the timer thread only. @param pData taken over; null is ignored. */
    void timerPulse(CMsgTimer::CTimerData* pData);

    /** Whether a timer was removed since the last timer message was handled, and not added again. */
    bool checkIsDeletedTimer(unsigned int uiID);
    /** Forgets the removed timers. Called at the end of each timer message. */
    void clearDeletedTimer();

    void run() override;

protected:
    CDataArray<CTimer*> m_aryTimer; // not owned, guarded by m_syncObject
    CDataArray<CMsgTimer::CTimerData*> m_aryPulse;
    CDataArray<unsigned int> m_aryDeletedID; // guarded by m_syncDeleted
    unsigned int m_uiInterval;               // milliseconds of one cycle's sleep
    CWaitObject m_waitSleep;
    CSyncObject m_syncDeleted;
    CArrayIndex<CTimer*> m_indexTimer;         // of m_aryTimer
    CArrayIndex<unsigned int> m_indexDeleted;  // of m_aryDeletedID
    std::atomic<unsigned int> m_uiDeletedSize; // of m_aryDeletedID, to be read without the lock
    unsigned int m_uiLastPulses;               // of the last cycle; of the timer thread

    static CTimerManager* s_pInstance;

    /** One cycle, without its sleep. */
    void pulseTimers();

private:
    bool isListed(CTimer* pTimer);
    void pulseDue(unsigned int uiNow);
    void postPulses();
};
} // namespace Orlix
