#pragma once

#include <Orlix/foundation/CObject.h>
#include <Orlix/threading/IThread.h>

#include <pthread.h>

namespace Orlix {

class CThread;

/** A POSIX thread. Results of the system calls are not looked at, on purpose: a priority that this process may not set
 *  or a name that is too long leaves the thread running with what it has.
 *
 *  The handle is not kept: a thread is neither joined nor detached, and what the system keeps of an ended one stays.
 *  Threads: CThread owns it and starts it from one thread at a time. */
class ORLIX_API CImpThread : public IThread {
    ORLIX_HEAP_CLASS(L"CImpThread")

public:
    /** @param pThread whose work is done; not owned. */
    explicit CImpThread(CThread* pThread);
    CImpThread(const CImpThread&) = delete;
    CImpThread& operator=(const CImpThread&) = delete;
    ~CImpThread() override;

    /** Without resources for a thread nothing begins, and nobody learns of it. */
    void start() override;

protected:
    CThread* m_pThread; // not owned
    pthread_attr_t m_attr;

    /** The first code on the new thread. @param pThread the CThread. @return pThread. */
    static void* threadProc(void* pThread);
};
} // namespace Orlix
