#pragma once

#include <Orlix/foundation/OrlixApi.h>

namespace Orlix {

/** The system's side of a lock: what CSyncObject holds and forwards to, and owns.
 *
 *  Threads: lock and unlock from any thread; destroyed while no thread holds or awaits it. */
class ORLIX_API ISyncObject {
public:
    virtual ~ISyncObject() = default;
    /** Blocks until the lock is this thread's; a thread that has it may take it again. */
    virtual void lock() = 0;
    /** Gives one lock() back. Only on the thread that took it. */
    virtual void unlock() = 0;
};
} // namespace Orlix
