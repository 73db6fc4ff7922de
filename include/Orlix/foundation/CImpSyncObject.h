#pragma once

#include <Orlix/foundation/CObject.h>
#include <Orlix/foundation/ISyncObject.h>

#include <pthread.h>

namespace Orlix {

/** A recursive POSIX mutex. Results of the system calls are not looked at.
 *
 *  Threads: any operation from any thread; CSyncObject owns it. */
class ORLIX_API CImpSyncObject : public ISyncObject {
    ORLIX_HEAP_CLASS(L"CImpSyncObject")

public:
    CImpSyncObject();
    CImpSyncObject(const CImpSyncObject&) = delete;
    CImpSyncObject& operator=(const CImpSyncObject&) = delete;
    ~CImpSyncObject() override;

    void lock() override { pthread_mutex_lock(&m_mutex); }
    void unlock() override { pthread_mutex_unlock(&m_mutex); }

protected:
    pthread_mutex_t m_mutex;
};
} // namespace Orlix
