#pragma once

#include <Orlix/foundation/OrlixApi.h>

namespace Orlix {

/** The system's side of a wait object. */
class ORLIX_API IWaitObject {
public:
    virtual ~IWaitObject() = default;
    virtual void reset() = 0;
    virtual void wait(unsigned int uiMilliseconds) = 0;
    virtual void forceWait(unsigned int uiMilliseconds) = 0;
    virtual void notify() = 0;
};
} // namespace Orlix
