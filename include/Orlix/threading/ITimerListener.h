#pragma once

#include <Orlix/foundation/OrlixApi.h>

namespace Orlix {

class CTimer;

/** Receives the pulses of timers, on the host thread and without a lock. Override what is needed. */
class ORLIX_API ITimerListener {
public:
    virtual ~ITimerListener() = default;
    /** One pulse; the second argument is its number since the start, from 1 on. */
    virtual void onTimer(const CTimer*, unsigned int) {}
    /** The last pulse of a counted timer, for which onTimer is not called. The timer is idle right after this call, so
     *  do not destroy it here and do not start it here. */
    virtual void onTimerComplete(const CTimer*) {}
};
} // namespace Orlix
