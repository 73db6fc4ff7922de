#pragma once

#include <Orlix/formats/CConfigParser.h>
#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/threading/CMsgTimer.h>
#include <Orlix/threading/CTime.h>
#include <Orlix/threading/CTimer.h>
#include <Orlix/threading/CTimerManager.h>
#include <Orlix/threading/ITimerListener.h>

#include "support/ClockStandIn.h"
#include "support/DrainCenter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace OrlixTest {

using VecCall = std::vector<std::string>;

/** Writes down what it hears, under the names of the timers. */
class CNotingListener : public Orlix::ITimerListener {
public:
    explicit CNotingListener(VecCall& vecCall, const std::string& strName = "")
        : m_vecCall(vecCall), m_strName(strName) {}
    void onTimer(const Orlix::CTimer*, unsigned int uiCount) override {
        m_vecCall.push_back(m_strName + std::to_string(uiCount));
    }
    void onTimerComplete(const Orlix::CTimer*) override { m_vecCall.push_back(m_strName + "complete"); }

private:
    VecCall& m_vecCall;
    std::string m_strName;
};

/** A timer with its fields open. */
class COpenTimer : public Orlix::CTimer {
public:
    using CTimer::CTimer;
    using CTimer::m_bRunning;
    using CTimer::m_bStarted;
    using CTimer::m_pListener;
    using CTimer::m_uiCurrentCount;
    using CTimer::m_uiDelay;
    using CTimer::m_uiRepeatCount;
    using CTimer::m_uiStartTime;
};

/** A message with its pulses open. */
class COpenMsgTimer : public Orlix::CMsgTimer {
public:
    using CMsgTimer::m_aryData;
};

/** A manager whose cycles a test can make itself. */
class COpenManager : public Orlix::CTimerManager {
public:
    static COpenManager* install() {
        COpenManager* const pManager = new COpenManager;
        s_pInstance = pManager;
        return pManager;
    }
    bool isListed(const Orlix::CTimer& timer) const { return m_aryTimer.find(const_cast<Orlix::CTimer*>(&timer)) >= 0; }
    using CThread::m_bPrepareStop;
    using CThread::m_bRunning;
    using CThread::m_waitStart;
    using CThread::m_waitWake;
    using CTimerManager::m_aryDeletedID;
    using CTimerManager::m_aryPulse;
    using CTimerManager::m_aryTimer;
    using CTimerManager::m_uiInterval;
    using CTimerManager::m_waitSleep;
    using CTimerManager::pulseTimers;
};

/** A manager without a thread, and a clock that stands still until it is set. */
class CTimerFixture : public ::testing::Test {
protected:
    CTimerFixture() : m_pCenter(Orlix::CMessageCenter::getInstance()), m_pManager(COpenManager::install()) {
        m_uiRealStart = CTickProbe::exchangeStart(1);
        setTick(0);
    }
    ~CTimerFixture() override {
        Orlix::CTimerManager::deleteInstance();
        Orlix::CMessageCenter::deleteInstance();
        Orlix::CConfigParser::deleteInstance();
        CTickProbe::exchangeStart(m_uiRealStart);
    }

    void setTick(unsigned int uiTick) {
        const unsigned int uiRaw = uiTick + 1;
        m_clock.monotonic = {static_cast<time_t>(uiRaw / 1000), static_cast<long>(uiRaw % 1000) * 1000000};
    }
    /** One cycle of the timer thread at a tick. */
    void cycle(unsigned int uiTick) {
        setTick(uiTick);
        m_pManager->pulseTimers();
    }
    static unsigned int drain() { return drainCenter(); }

    tagClockStandIn m_clock;
    Orlix::CMessageCenter* const m_pCenter;
    COpenManager* const m_pManager;
    VecCall m_vecCall;

private:
    class CTickProbe : public Orlix::CTime {
    public:
        static unsigned int exchangeStart(unsigned int uiStart) {
            const unsigned int uiBefore = s_ulStartTickCount;
            s_ulStartTickCount = uiStart;
            return uiBefore;
        }
    };
    unsigned int m_uiRealStart;
};
} // namespace OrlixTest
