#pragma once

#include <Orlix/threading/CTime.h>

namespace Orlix {

/** The system's clocks. */
class ORLIX_API ITime {
public:
    virtual ~ITime() = default;
    /** The local date and time of day, with milliseconds. */
    virtual CTime getCurrentTime() = 0;
    /** Milliseconds since a moment that the system chose; wraps after some 49.7 days. */
    virtual unsigned int getTickCount() = 0;
};
} // namespace Orlix
