#pragma once

#include <Orlix/foundation/OrlixApi.h>

namespace Orlix {

/** The host's answer to a shortage of memory. */
class ORLIX_API IMemManagerListener {
public:
    virtual ~IMemManagerListener() = default;
    /** Releases what it can; the failed request is then tried once more. Called on the thread whose allocation
     *  failed, under the manager's retry lock. It may allocate: what fails meanwhile gives null without another call.
     */
    virtual void onMemoryShortage() = 0;
};
} // namespace Orlix
