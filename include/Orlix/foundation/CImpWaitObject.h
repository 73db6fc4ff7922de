#pragma once

#include <Orlix/foundation/CObject.h>
#include <Orlix/foundation/IWaitObject.h>

#include <pthread.h>

#include <atomic>

namespace Orlix {

/** An auto-reset event with memory, on a condition variable that runs on the monotonic clock.
 *  Results of the system calls are not looked at.
 *
 *  Threads: any operation from any thread; CWaitObject owns it. */
class ORLIX_API CImpWaitObject : public IWaitObject {
    ORLIX_HEAP_CLASS(L"CImpWaitObject")

public:
    CImpWaitObject();
    CImpWaitObject(const CImpWaitObject&) = delete;
    CImpWaitObject& operator=(const CImpWaitObject&) = delete;
    ~CImpWaitObject() override;

    void reset() override;
    void wait(unsigned int uiMilliseconds) override;
    /** A signal handler that runs meanwhile does not shorten it. */
    void forceWait(unsigned int uiMilliseconds) override;
    void notify() override;

protected:
    pthread_mutex_t m_mutex;
    pthread_cond_t m_condition;
    pthread_condattr_t m_attribute;
    std::atomic<bool> m_bSignaled;         // set and cleared under m_mutex
    std::atomic<unsigned int> m_uiWaiters; // threads inside the condition; changed under m_mutex

private:
    bool isRemembered() noexcept;
    void waitUntilSignaled();
    void waitOnceUntilDeadline(unsigned int uiMilliseconds);
};
} // namespace Orlix
