#pragma once

#include <Orlix/foundation/CString.h>
#include <Orlix/foundation/CSyncObject.h>
#include <Orlix/foundation/CWaitObject.h>

#include <atomic>

namespace Orlix {

class IThread;

/** Base of every background thread: a name, a priority, a stop flag and three events around the run of a subclass.
 *
 *  No thread is ever killed: it ends by returning from run once it has seen the stop flag. The usual run waits on
 *  m_waitWake without limit, returns if isPrepareStopThread says so, and otherwise does one piece of work; it tolerates
 *  a wake-up without work, since a request to an idle thread is remembered into the next run.
 *
 *  Ownership: stop the thread before its object goes, at the latest in the destructor of the subclass; one that ends by
 *  itself has to be awaited with waitForThreadStop before that. If the system has no thread to give, the object stays
 *  running with nothing behind it, and a stop waits for ever.
 *  Threads: start and stop from one thread at a time, never from the thread itself. The flags and the id are plain
 *  fields: the announcement that follows a stop request is what makes it visible to a run that waits. */
class ORLIX_API CThread {
public:
    CThread();
    CThread(const CThread&) = delete;
    CThread& operator=(const CThread&) = delete;
    /** Does not stop the thread, but lets one that has just ended leave the object. */
    virtual ~CThread();

    /** Begins a run, unless one is going on. Returns without waiting; the id is not yet known then. */
    virtual void startThread();
    /** Asks the thread to end and waits until it has left the object; returns at once if none runs. */
    virtual void stopThread();
    /** Sets the stop flag and wakes the thread, also if none runs. Returns at once. */
    virtual void prepareStopThread();
    /** Waits until the thread ends by itself; returns at once if none runs. */
    virtual void waitForThreadStop();
    /** Keeps the id and logs the start. Called on the new thread before run; an override calls this one. @param
     * uiThreadID the system's id, cut to 32 bits. */
    virtual void notifyThreadStarted(unsigned int uiThreadID);
    /** Logs the end and tells who waits for it. Called on the ending thread behind run, as the last that touches the
     *  object: the waiter may destroy it. An override ends with this one. */
    virtual void notifyThreadStopped();
    /** The work of the thread, on it. */
    virtual void run() = 0;

    /** In force from the next start on, where the system allows it. */
    void setThreadPriority(int iPriority) noexcept { m_iPriority = iPriority; }
    int getThreadPriority() const noexcept { return m_iPriority; }
    /** In force from the next start on; of more than 15 bytes it is not taken by the system. */
    void setThreadName(const CString& strName) { m_strName = strName; }
    const CString& getThreadName() const noexcept { return m_strName; }
    /** Of the live thread, valid once m_waitStart or other means have told that it runs; 0 when there is none. */
    unsigned int getThreadID() const noexcept { return m_uiThreadID; }
    /** Whether run is to return. Stays true after the run, up to the next start. */
    bool isPrepareStopThread() const noexcept { return m_bPrepareStop; }

protected:
    int m_iPriority;
    CString m_strName;
    unsigned int m_uiThreadID;
    bool m_bRunning;              // from startThread to notifyThreadStopped
    bool m_bPrepareStop;          // a stop was asked for
    CSyncObject m_syncObject;     // for the subclass's own data
    CWaitObject m_waitWake;       // what run sleeps on
    CWaitObject m_waitStart;      // announced by run once it is ready, for a starter that waits
    CWaitObject m_waitStop;       // announced by the end of the thread
    IThread* m_pImp;              // owned; null only if it could not be allocated
    std::atomic<bool> m_bLeaving; // while the ending thread announces its end, after m_bRunning is clear

    /** Waits for the end of a thread that was seen running. */
    void waitForEnd();
    /** Waits until a thread that is no longer running touches the object no more, which is a matter of instructions. */
    void awaitDeparture() const noexcept;
};
} // namespace Orlix
