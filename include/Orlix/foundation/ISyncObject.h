#pragma once

#include <Orlix/foundation/OrlixApi.h>

namespace Orlix {

/** The system's side of a lock. */
class ORLIX_API ISyncObject {
public:
    virtual ~ISyncObject() = default;
    virtual void lock() = 0;
    virtual void unlock() = 0;
};
} // namespace Orlix
