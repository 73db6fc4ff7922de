#pragma once

#include <Orlix/foundation/CObject.h>
#include <Orlix/foundation/ISyncObject.h>

namespace Orlix {

/** A lock that the thread holding it can take again; it must give it back as often. Prefer CAutoSync.
 *
 *  Built without memory for its mutex it locks nothing. Threads: lock and unlock from any thread. */
class ORLIX_API CSyncObject : public CObject {
    ORLIX_HEAP_CLASS(L"CSyncObject")

public:
    CSyncObject();
    CSyncObject(const CSyncObject&) = delete;
    CSyncObject& operator=(const CSyncObject&) = delete;
    /** Only while no thread holds or awaits the lock. */
    ~CSyncObject() override;

    /** Blocks until the lock is this thread's. */
    void lock() {
        if (m_pImp)
            m_pImp->lock();
    }
    /** Gives one lock() back. Only on the thread that took it. */
    void unlock() {
        if (m_pImp)
            m_pImp->unlock();
    }

protected:
    ISyncObject* m_pImp; // owned; null only if it could not be allocated
};
} // namespace Orlix
