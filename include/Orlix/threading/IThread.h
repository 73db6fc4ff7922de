#pragma once

#include <Orlix/foundation/OrlixApi.h>

namespace Orlix {

/** The system's side of a thread: what CThread holds and starts.
 *
 *  On the new thread an implementation applies the priority and the name, calls notifyThreadStarted, run and
 *  notifyThreadStopped of its CThread, in this order, and touches nothing of it afterwards. */
class ORLIX_API IThread {
public:
    virtual ~IThread() = default;
    /** Begins the thread and returns without waiting for it. */
    virtual void start() = 0;
};
} // namespace Orlix
