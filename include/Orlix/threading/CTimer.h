#pragma once

#include <Orlix/foundation/CObject.h>

namespace Orlix {

class ITimerListener;

/** A repeated or counted delay whose listener is called on the host thread.
 *
 *  Pulse k falls due at the start plus k delays, so the lateness of one pulse does not move the next. A timer that has
 *  fallen behind makes one pulse per cycle of CTimerManager (about 10 ms) until it has caught up; none is dropped.
 *
 *  Threads: start, stop and destroy on any thread, but destroy timers with a listener on the host thread: elsewhere the
 *  host may be in the middle of a pulse. The fields have no lock; a stop that meets a pulse halfway takes it back.
 *  Ownership: the destructor stops the timer. */
class ORLIX_API CTimer : public CObject {
    ORLIX_HEAP_CLASS(L"CTimer")

public:
    enum ETimerStatus : unsigned int {
        TIMER_PULSE = 0,   ///< onTimer is called
        TIMER_COMPLETE = 1 ///< onTimerComplete is called
    };

    /** Every 20 ms without end. */
    CTimer();
    /** @param uiDelay milliseconds; 0 means every cycle. @param uiRepeatCount pulses in all; 0 means without end. */
    CTimer(unsigned int uiDelay, unsigned int uiRepeatCount);
    CTimer(const CTimer&) = delete;
    CTimer& operator=(const CTimer&) = delete;
    ~CTimer() override;

    /** @param pListener not owned; null for nobody, and then the last pulse ends the timer at once. */
    void setListener(ITimerListener* pListener) noexcept { m_pListener = pListener; }
    ITimerListener* getListener() const noexcept { return m_pListener; }

    /** The low 32 bits of the timer's address. */
    unsigned int getID() const noexcept { return static_cast<unsigned int>(reinterpret_cast<std::size_t>(this)); }

    /** From the next check on the due times are counted with this delay, also those of a running timer: the start and
     *  the count stay, so the whole grid moves. @param uiDelay milliseconds. */
    void setDelay(unsigned int uiDelay) noexcept { m_uiDelay = uiDelay; }
    unsigned int getDelay() const noexcept { return m_uiDelay; }

    /** Also sets the count to 0, but not the start: a running timer then catches up, one pulse per cycle. */
    void setRepeatCount(unsigned int uiRepeatCount) noexcept {
        m_uiRepeatCount = uiRepeatCount;
        m_uiCurrentCount = 0;
    }
    unsigned int getRepeatCount() const noexcept { return m_uiRepeatCount; }
    /** Pulses made since the start. */
    unsigned int getCurrentCount() const noexcept { return m_uiCurrentCount; }
    /** A counted timer with a listener runs until that has heard of its end. */
    bool isRunning() const noexcept { return m_bRunning; }

    /** Begins with a count of 0 from now on; a running timer goes on as it is. */
    void start();
    /** Ends the timer and takes its waiting pulses back; the timer of a pulse that is just being handled may still hear
     *  of it. Works on an idle timer too. */
    void stop();
    /** Sets the count to 0 and the start to now, and leaves the rest as it is. */
    void reset() override;
    /** Ends the timer; pulses that wait are still delivered. */
    void terminate();

    /** Makes a pulse if one is due. Called by the timer thread. @param uiNow the tick of the cycle.
     *  @return whether the timer has more to do. */
    bool pulse(unsigned int uiNow);

protected:
    ITimerListener* m_pListener; // not owned
    unsigned int m_uiDelay;      // milliseconds
    unsigned int m_uiRepeatCount;
    unsigned int m_uiCurrentCount;
    bool m_bRunning;
    unsigned int m_uiStartTime; // tick
    bool m_bStarted;            // since the last stop, so that the manager or a message may know the timer

private:
    bool complete(unsigned int uiCount);
};
} // namespace Orlix
