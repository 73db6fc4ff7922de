#pragma once

#include <Orlix/foundation/CObject.h>
#include <Orlix/foundation/CSyncObject.h>

namespace Orlix {

/** Holds a lock from its construction to its destruction, on every exit of the block.
 *
 *  Threads: made and destroyed on the same thread, so keep it a local. */
class ORLIX_API CAutoSync : public CObject {
public:
    /** @param syncObject must outlive this object. */
    explicit CAutoSync(CSyncObject& syncObject) : m_pSyncObject(&syncObject) { m_pSyncObject->lock(); }
    CAutoSync(const CAutoSync&) = delete;
    CAutoSync& operator=(const CAutoSync&) = delete;
    ~CAutoSync() override { m_pSyncObject->unlock(); }

protected:
    CSyncObject* m_pSyncObject; // locked, not owned
};
} // namespace Orlix
