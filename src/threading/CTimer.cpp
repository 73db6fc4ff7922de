#include <Orlix/threading/CTimer.h>

#include <Orlix/threading/CMsgTimer.h>
#include <Orlix/threading/CTime.h>
#include <Orlix/threading/CTimerManager.h>

namespace Orlix {
namespace {

constexpr unsigned int DEFAULT_DELAY_MS = 20;
} // namespace

CTimer::CTimer() : CTimer(DEFAULT_DELAY_MS, 0) {}

CTimer::CTimer(unsigned int uiDelay, unsigned int uiRepeatCount)
    : m_pListener(nullptr), m_uiDelay(uiDelay), m_uiRepeatCount(uiRepeatCount), m_uiCurrentCount(0), m_bRunning(false),
      m_uiStartTime(0), m_bStarted(false) {}

CTimer::~CTimer() {
    // A timer that has run out may still have pulses waiting, so it is not the running flag alone that counts.
    if (m_bRunning || m_bStarted)
        stop();
}

void CTimer::start() {
    if (m_bRunning)
        return;
    m_uiStartTime = CTime::getTickCount();
    m_uiCurrentCount = 0;
    m_bStarted = true;
    m_bRunning = true; // last: after a terminate the manager may still know the timer and look at it
    CTimerManager::getInstance()->addTimer(this);
}

void CTimer::stop() {
    m_bRunning = false;
    m_bStarted = false;
    CTimerManager::getInstance()->removeTimer(this);
    m_uiStartTime = 0;
    m_uiCurrentCount = 0;
}

void CTimer::reset() {
    m_uiCurrentCount = 0;
    m_uiStartTime = CTime::getTickCount();
}

void CTimer::terminate() {
    m_bRunning = false;
    reset();
}

bool CTimer::pulse(unsigned int uiNow) {
    if (!m_bRunning)
        return false;
    const unsigned int uiNext = m_uiCurrentCount + 1;
    if (uiNow - m_uiStartTime < m_uiDelay * uiNext) // unsigned: right across the wrap of the tick
        return true;
    m_uiCurrentCount = uiNext;
    if (m_uiRepeatCount != 0 && m_uiRepeatCount <= uiNext)
        return complete(uiNext);
    CTimerManager::getInstance()->timerPulse(new CMsgTimer::CTimerData(this, TIMER_PULSE, uiNext));
    return true;
}

/** The last pulse, or the end without one if the repeat count has been passed. @return false. */
bool CTimer::complete(unsigned int uiCount) {
    const bool bLast = m_uiRepeatCount == uiCount;
    if (bLast)
        CTimerManager::getInstance()->timerPulse(new CMsgTimer::CTimerData(this, TIMER_COMPLETE, uiCount));
    if (!bLast || !m_pListener) // a listener ends the timer when it has heard of the last pulse
        m_bRunning = false;
    return false;
}
} // namespace Orlix
