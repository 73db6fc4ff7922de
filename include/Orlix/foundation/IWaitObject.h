#pragma once

#include <Orlix/foundation/OrlixApi.h>

namespace Orlix {

/** The system's side of a wait object: what CWaitObject holds and forwards to, and owns; see there for the rules.
 *
 *  Threads: any operation from any thread; destroyed while no thread waits. */
class ORLIX_API IWaitObject {
public:
    virtual ~IWaitObject() = default;
    /** Leaves a pending announcement alone. */
    virtual void reset() = 0;
    /** @param uiMilliseconds 0 waits without limit. */
    virtual void wait(unsigned int uiMilliseconds) = 0;
    /** Sleeps, whatever is announced. */
    virtual void forceWait(unsigned int uiMilliseconds) = 0;
    /** Wakes one waiter, or the next one to come. */
    virtual void notify() = 0;
};
} // namespace Orlix
