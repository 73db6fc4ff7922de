#pragma once

#include <Orlix/foundation/OrlixApi.h>

namespace Orlix {

/** The system's side of a shared-memory channel: what CShareMemory holds and runs on its thread. */
class ORLIX_API IShareMemory {
public:
    virtual ~IShareMemory() = default;
    /** Attaches the segment of a key and makes it known to the channel. @return false on failure, with
     *  everything as it was. */
    virtual bool open(unsigned int uiKey) = 0;
    /** Gives back what is held; nothing happens without. The thread must have ended. */
    virtual void close() = 0;
    /** Wakes a reader that sleeps until there is data. */
    virtual void prepareStopForRead() = 0;
    /** Wakes a writer that sleeps until it may write. */
    virtual void prepareStopForWrite() = 0;
    /** The work of the channel's thread, until its stop flag is set. */
    virtual void run() = 0;
};
} // namespace Orlix
