#pragma once

#include <Orlix/threading/ITime.h>

namespace Orlix {

/** The clocks of a POSIX system. It holds nothing, so each caller makes its own on the stack. */
class ORLIX_API CImpTime final : public ITime {
    ORLIX_HEAP_CLASS(L"CImpTime")

public:
    /** The wall clock in the zone that the environment names at the time of the call.
     *  Seconds and milliseconds belong together also when the second changes during the call. Threads: any. */
    CTime getCurrentTime() override;

    /** The monotonic clock, which nobody can set. Threads: any. */
    unsigned int getTickCount() override;
};
} // namespace Orlix
