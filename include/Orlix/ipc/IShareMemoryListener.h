#pragma once

#include <Orlix/foundation/OrlixApi.h>

namespace Orlix {

/** Hears of what comes through a shared-memory channel, on the host thread and without a lock. No writer gets at the
 *  block before the call returns. The channel may be closed in a call, but not destroyed. */
class ORLIX_API IShareMemoryListener {
public:
    virtual ~IShareMemoryListener() = default;
    /** The writer has closed its side. The name is spelled so. */
    virtual void onWritterClose() {}
    /** A block is there: take it with CShareMemory::getSize and readData before returning. It may be empty, or the one
     *  that was there the last time. */
    virtual void onDataAvailable() {}
};
} // namespace Orlix
