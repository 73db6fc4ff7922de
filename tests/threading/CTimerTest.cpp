#include "threading/TimerFixture.h"

#include <climits>
#include <memory>
#include <type_traits>

using namespace Orlix;
using namespace OrlixTest;

namespace {

static_assert(std::is_base_of<CObject, CTimer>::value, "a timer is an object");
static_assert(CTimer::TIMER_PULSE == 0 && CTimer::TIMER_COMPLETE == 1, "numbers of the kinds of pulse");

class CTimerTest : public CTimerFixture {};

TEST_F(CTimerTest, StartsAsItShould) {
    const COpenTimer timer;
    EXPECT_EQ(timer.m_pListener, nullptr);
    EXPECT_EQ(timer.getDelay(), 20u);
    EXPECT_EQ(timer.getRepeatCount(), 0u);
    EXPECT_EQ(timer.getCurrentCount(), 0u);
    EXPECT_FALSE(timer.isRunning());
    EXPECT_EQ(timer.m_uiStartTime, 0u);
    const COpenTimer timerSet(33, 4);
    EXPECT_EQ(timerSet.getDelay(), 33u);
    EXPECT_EQ(timerSet.getRepeatCount(), 4u);
    EXPECT_EQ(timerSet.getCurrentCount(), 0u);
    EXPECT_FALSE(timerSet.isRunning());
}

TEST_F(CTimerTest, FieldsStandInTheirOrder) {
    const COpenTimer timer;
    const void* const aryField[] = {&timer.m_pListener,      &timer.m_uiDelay,  &timer.m_uiRepeatCount,
                                    &timer.m_uiCurrentCount, &timer.m_bRunning, &timer.m_uiStartTime};
    for (std::size_t i = 1; i < std::size(aryField); ++i)
        EXPECT_LT(aryField[i - 1], aryField[i]) << i;
}

TEST_F(CTimerTest, TheIDIsTheLowHalfOfTheAddress) {
    CTimer timer;
    EXPECT_EQ(timer.getID(), reinterpret_cast<std::uintptr_t>(&timer) & 0xFFFFFFFFu);
}

TEST_F(CTimerTest, SettersTouchWhatTheyAreFor) {
    COpenTimer timer(10, 5);
    timer.start();
    timer.m_uiCurrentCount = 3;
    timer.m_uiStartTime = 77;
    timer.setDelay(40);
    EXPECT_EQ(timer.getDelay(), 40u);
    EXPECT_EQ(timer.getCurrentCount(), 3u);
    timer.setRepeatCount(9);
    EXPECT_EQ(timer.getRepeatCount(), 9u);
    EXPECT_EQ(timer.getCurrentCount(), 0u) << "counts anew";
    EXPECT_EQ(timer.m_uiStartTime, 77u) << "but from the old start";
    EXPECT_TRUE(timer.isRunning());
}

TEST_F(CTimerTest, AStartBeginsACountFromNow) {
    COpenTimer timer(10, 0);
    timer.m_uiCurrentCount = 9;
    setTick(1234);
    timer.start();
    EXPECT_TRUE(timer.isRunning());
    EXPECT_EQ(timer.m_uiStartTime, 1234u);
    EXPECT_EQ(timer.getCurrentCount(), 0u);
    EXPECT_TRUE(m_pManager->isListed(timer));
    EXPECT_EQ(m_pManager->m_aryTimer.getSize(), 1u);
}

TEST_F(CTimerTest, AStartOfARunningTimerChangesNothing) {
    COpenTimer timer(10, 0);
    timer.start();
    timer.m_uiCurrentCount = 3;
    setTick(55);
    timer.start();
    EXPECT_EQ(timer.m_uiStartTime, 0u);
    EXPECT_EQ(timer.getCurrentCount(), 3u);
    EXPECT_EQ(m_pManager->m_aryTimer.getSize(), 1u);
}

TEST_F(CTimerTest, AStopEndsTheTimerAndTakesItsPulsesBack) {
    CNotingListener listener(m_vecCall);
    COpenTimer timer(10, 0);
    timer.setListener(&listener);
    setTick(5);
    timer.start();
    cycle(15);
    cycle(25);
    EXPECT_EQ(m_pCenter->getMessageCount(), 1u);
    timer.stop();
    EXPECT_FALSE(timer.isRunning());
    EXPECT_EQ(timer.m_uiStartTime, 0u);
    EXPECT_EQ(timer.getCurrentCount(), 0u);
    EXPECT_FALSE(m_pManager->isListed(timer));
    EXPECT_TRUE(m_pManager->checkIsDeletedTimer(timer.getID()));
    EXPECT_EQ(m_pCenter->getMessageCount(), 0u);
    drain();
    EXPECT_EQ(m_vecCall, VecCall{});
}

TEST_F(CTimerTest, AStopOfAnIdleTimerDoesAllOfItToo) {
    COpenTimer timer(10, 0);
    timer.m_uiStartTime = 7;
    timer.m_uiCurrentCount = 7;
    m_pCenter->pushMessage([&] {
        CMsgTimer* const pMessage = new CMsgTimer;
        pMessage->addData(new CMsgTimer::CTimerData(&timer, CTimer::TIMER_PULSE, 1));
        return pMessage;
    }());
    timer.stop();
    EXPECT_EQ(timer.m_uiStartTime, 0u);
    EXPECT_EQ(timer.getCurrentCount(), 0u);
    EXPECT_TRUE(m_pManager->checkIsDeletedTimer(timer.getID()));
    EXPECT_EQ(m_pCenter->getMessageCount(), 0u);
}

TEST_F(CTimerTest, AResetCountsAnewFromNow) {
    COpenTimer timer(10, 0);
    timer.start();
    timer.m_uiCurrentCount = 3;
    setTick(35);
    timer.reset();
    EXPECT_EQ(timer.getCurrentCount(), 0u);
    EXPECT_EQ(timer.m_uiStartTime, 35u);
    EXPECT_TRUE(timer.isRunning());
}

TEST_F(CTimerTest, ATerminateEndsAndResetsThroughTheSubclass) {
    class CCounting : public COpenTimer {
    public:
        using COpenTimer::COpenTimer;
        void reset() override {
            ++m_iResets;
            m_bRunningAtReset = isRunning();
            COpenTimer::reset();
        }
        int m_iResets = 0;
        bool m_bRunningAtReset = true;
    } timer(10, 0);
    timer.start();
    cycle(10);
    setTick(17);
    timer.terminate();
    EXPECT_FALSE(timer.isRunning());
    EXPECT_EQ(timer.m_iResets, 1);
    EXPECT_FALSE(timer.m_bRunningAtReset);
    EXPECT_EQ(timer.m_uiStartTime, 17u);
    EXPECT_TRUE(m_pManager->isListed(timer)) << "until the next cycle";
    EXPECT_EQ(m_pCenter->getMessageCount(), 1u) << "what waits is still delivered";
    cycle(20);
    EXPECT_FALSE(m_pManager->isListed(timer));
}

TEST_F(CTimerTest, ADestructorStopsARunningTimer) {
    unsigned int uiID;
    {
        CTimer timer(0, 0);
        uiID = timer.getID();
        timer.start();
        cycle(1);
        EXPECT_EQ(m_pCenter->getMessageCount(), 1u);
    }
    EXPECT_EQ(m_pManager->m_aryTimer.getSize(), 0u);
    EXPECT_EQ(m_pCenter->getMessageCount(), 0u);
    EXPECT_TRUE(m_pManager->checkIsDeletedTimer(uiID));
}

TEST_F(CTimerTest, ADestructorTakesBackTheLastPulseOfATimerThatHasRunOut) {
    {
        CTimer timer(0, 1); // without a listener, so that its last pulse clears the running flag
        timer.start();
        cycle(1);
        EXPECT_FALSE(timer.isRunning());
        EXPECT_EQ(m_pCenter->getMessageCount(), 1u);
    }
    EXPECT_EQ(m_pCenter->getMessageCount(), 0u) << "it would read a timer that is gone";
}

TEST_F(CTimerTest, ATimerThatNeverRanLeavesNothingBehind) {
    { const CTimer timer(10, 0); }
    {
        CTimer timer(10, 0);
        timer.start();
        timer.stop();
        m_pManager->clearDeletedTimer();
    }
    EXPECT_EQ(m_pManager->m_aryDeletedID.getSize(), 0u);
}

TEST_F(CTimerTest, EachPulseFollowsItsTable) {
    CNotingListener listener(m_vecCall);
    const struct {
        unsigned int uiDelay, uiRepeat, uiCount, uiStart, uiNow;
        bool bListener;
        bool bStays, bRunning;
        unsigned int uiCountAfter;
        const char* szHeard;
    } aryRow[] = {{10, 0, 0, 0, 9, true, true, true, 0, ""},            // not yet due
                  {10, 0, 0, 0, 10, true, true, true, 1, "1"},          // due at the very millisecond
                  {10, 0, 3, 0, 39, true, true, true, 3, ""},           // the grid counts from the start
                  {10, 0, 3, 0, 40, true, true, true, 4, "4"},          //
                  {10, 0, 3, 0, 4000, true, true, true, 4, "4"},        // far behind: one pulse all the same
                  {0, 0, 7, 50, 50, true, true, true, 8, "8"},          // no delay: due at once
                  {10, 0, 0, 0xFFFFFFFBu, 4, true, true, true, 0, ""},  // across the wrap of the tick
                  {10, 0, 0, 0xFFFFFFFBu, 5, true, true, true, 1, "1"}, //
                  {0x80000000u, 0, 1, 0, 5, true, true, true, 2, "2"},  // the product wraps too: 2 delays are 0
                  {10, 3, 0, 0, 10, true, true, true, 1, "1"},          // counted, not the last
                  {10, 3, 1, 0, 20, true, true, true, 2, "2"},          //
                  {10, 3, 2, 0, 30, true, false, true, 3, "complete"},  // the last: runs until that was heard
                  {10, 3, 2, 0, 30, false, false, false, 3, ""},        // nobody to hear it
                  {10, 1, 0, 0, 10, true, false, true, 1, "complete"},  // the only one
                  {10, 3, 3, 0, 40, true, false, false, 4, ""},         // past the count
                  {10, 3, 3, 0, 39, true, true, true, 3, ""},           // past the count, but only found out when due
                  {0, 0, UINT_MAX, 50, 50, true, true, true, 0, "0"},   // the count wraps
                  {10, UINT_MAX, 0, 0, 10, true, true, true, 1, "1"}};  //
    for (const auto& row : aryRow) {
        SCOPED_TRACE(&row - aryRow);
        COpenTimer timer(row.uiDelay, row.uiRepeat);
        timer.setListener(row.bListener ? &listener : nullptr);
        timer.m_uiCurrentCount = row.uiCount;
        timer.m_uiStartTime = row.uiStart;
        timer.m_bRunning = true;
        EXPECT_EQ(timer.pulse(row.uiNow), row.bStays);
        EXPECT_EQ(timer.isRunning(), row.bRunning);
        EXPECT_EQ(timer.getCurrentCount(), row.uiCountAfter);
        EXPECT_EQ(timer.m_uiStartTime, row.uiStart);
        std::string strHeard;
        const unsigned int uiPulses = m_pManager->m_aryPulse.getSize();
        for (unsigned int i = 0; i < uiPulses; ++i) {
            const std::unique_ptr<CMsgTimer::CTimerData> ptrData(m_pManager->m_aryPulse[i]);
            EXPECT_EQ(ptrData->getID(), timer.getID());
            ptrData->handleMessage();
        }
        for (const std::string& strCall : m_vecCall)
            strHeard += strCall;
        EXPECT_EQ(strHeard, row.szHeard);
        EXPECT_EQ(uiPulses,
                  row.uiCountAfter == row.uiCount || (row.uiRepeat != 0 && row.uiRepeat <= row.uiCount) ? 0u : 1u);
        m_pManager->m_aryPulse.clear();
        m_vecCall.clear();
    }
}

TEST_F(CTimerTest, AnIdleTimerMakesNoPulse) {
    COpenTimer timer(0, 0);
    EXPECT_FALSE(timer.pulse(5));
    EXPECT_EQ(timer.getCurrentCount(), 0u);
    EXPECT_EQ(m_pManager->m_aryPulse.getSize(), 0u);
}

TEST_F(CTimerTest, OfNRepeatsAllButTheLastAreOrdinary) {
    CNotingListener listener(m_vecCall);
    CTimer timer(10, 3);
    timer.setListener(&listener);
    timer.start();
    for (unsigned int uiTick = 10; uiTick <= 60; uiTick += 10) {
        cycle(uiTick);
        EXPECT_EQ(timer.isRunning(), uiTick <= 30) << uiTick;
        drain();
    }
    EXPECT_EQ(m_vecCall, (VecCall{"1", "2", "complete"}));
    EXPECT_FALSE(timer.isRunning());
    EXPECT_EQ(timer.getCurrentCount(), 0u);
    timer.start();
    for (unsigned int uiTick = 70; uiTick <= 90; uiTick += 10)
        cycle(uiTick);
    drain();
    EXPECT_EQ(m_vecCall, (VecCall{"1", "2", "complete", "1", "2", "complete"})) << "it can run again";
}

TEST_F(CTimerTest, WithoutAListenerTheLastPulseEndsItAtOnce) {
    CTimer timer(10, 3);
    timer.start();
    cycle(10);
    cycle(20);
    EXPECT_TRUE(timer.isRunning());
    cycle(30);
    EXPECT_FALSE(timer.isRunning());
    EXPECT_FALSE(m_pManager->isListed(timer));
    EXPECT_EQ(m_pCenter->getMessageCount(), 1u) << "pulses that nobody hears";
    drain();
}

TEST_F(CTimerTest, ANewDelayMovesTheWholeGrid) {
    CNotingListener listener(m_vecCall);
    CTimer timer(10, 0);
    timer.setListener(&listener);
    timer.start();
    for (unsigned int uiTick = 10; uiTick <= 30; uiTick += 10)
        cycle(uiTick);
    timer.setDelay(20); // pulse 4 is now due at 80
    for (unsigned int uiTick = 40; uiTick <= 80; uiTick += 10) {
        cycle(uiTick);
        EXPECT_EQ(timer.getCurrentCount(), uiTick < 80 ? 3u : 4u) << uiTick;
    }
    timer.setDelay(5); // pulses up to 16 are due at once: one per cycle
    for (unsigned int uiTick = 81; uiTick <= 85; ++uiTick)
        cycle(uiTick);
    EXPECT_EQ(timer.getCurrentCount(), 9u);
    drain();
    EXPECT_EQ(m_vecCall, (VecCall{"1", "2", "3", "4", "5", "6", "7", "8", "9"}));
}

TEST_F(CTimerTest, ANewRepeatCountIsCaughtUpWithOnePulseACycle) {
    CNotingListener listener(m_vecCall);
    CTimer timer(10, 0);
    timer.setListener(&listener);
    timer.start();
    for (unsigned int uiTick = 10; uiTick <= 40; uiTick += 10)
        cycle(uiTick);
    drain();
    m_vecCall.clear();
    timer.setRepeatCount(4);
    for (unsigned int uiTick = 41; uiTick <= 45; ++uiTick)
        cycle(uiTick);
    drain();
    EXPECT_EQ(m_vecCall, (VecCall{"1", "2", "3", "complete"}));
}
} // namespace
