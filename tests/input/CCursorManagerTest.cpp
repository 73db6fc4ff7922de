#include <Orlix/input/CCursorManager.h>

#include <Orlix/foundation/CAutoSync.h>
#include <Orlix/messaging/IMessageCenterListener.h>

#include "input/CTouchModel.h"
#include "input/TouchFixture.h"
#include "support/ChildProcess.h"
#include "support/MemoryLimit.h"
#include "support/Sanitizer.h"

#include <atomic>
#include <climits>
#include <functional>
#include <random>
#include <thread>
#include <unistd.h>

using namespace Orlix;
using namespace OrlixTest;

namespace {

using CCursorManagerTest = CTouchFixture;

TEST_F(CCursorManagerTest, IsDisabledAndWithoutAListenerAtFirst) {
    COpenCursorManager manager;
    EXPECT_EQ(manager.m_pTouchListener, nullptr);
    EXPECT_FALSE(manager.m_bEnable);
    manager.setTouchListener(&m_recorder);
    manager.initialize();
    manager.addCursor(1, 10, 20, 30);
    manager.updateCursor(1, 11, 21, 31);
    manager.removeCursor(1, 32);
    manager.removeCursor(1, 12, 22, 33);
    manager.wheelCursor(1, 2, 3);
    EXPECT_EQ(manager.m_mapTrack.getCount(), 0u);
    EXPECT_EQ(take(), VecTouch{});
}

TEST_F(CCursorManagerTest, TellsEachEventWithTheFieldsThatItHas) {
    m_manager.addCursor(7, 100, 200, 1000);
    m_manager.updateCursor(7, 140, 190, 1100);
    m_manager.updateCursor(7, 150, 180, 1150);
    m_manager.removeCursor(7, 160, 170, 1200);
    EXPECT_EQ(take(), (VecTouch{{tagTouch::PRESS, 7, 100, 200, 0, 0, 0, 0, 0, 1000},
                                {tagTouch::MOVE, 7, 140, 190, 40, -10, 0, 0, 0, 1100},
                                {tagTouch::MOVE, 7, 150, 180, 50, -20, 0, 0, 0, 1150},
                                {tagTouch::RELEASE, 7, 160, 170, 60, -30, 60, -30, 0, 1200}}));
    EXPECT_EQ(m_manager.m_mapTrack.getCount(), 0u);
}

TEST_F(CCursorManagerTest, APressThatIsLiftedOnTheSpotHasNoOffsetAndNoSpeed) {
    m_manager.addCursor(7, 100, 200, 1000);
    m_manager.removeCursor(7, 100, 200, 1080);
    EXPECT_EQ(take(), (VecTouch{{tagTouch::PRESS, 7, 100, 200, 0, 0, 0, 0, 0, 1000},
                                {tagTouch::RELEASE, 7, 100, 200, 0, 0, 0, 0, 0, 1080}}));
}

TEST_F(CCursorManagerTest, EachMovePaysNoHeedToHowSmallItIs) {
    m_manager.addCursor(7, 0, 0, 1000);
    m_manager.updateCursor(7, 1, 0, 1001);
    m_manager.updateCursor(7, 1, 0, 1002);
    EXPECT_EQ(take(), (VecTouch{{tagTouch::PRESS, 7, 0, 0, 0, 0, 0, 0, 0, 1000},
                                {tagTouch::MOVE, 7, 1, 0, 1, 0, 0, 0, 0, 1001},
                                {tagTouch::MOVE, 7, 1, 0, 1, 0, 0, 0, 0, 1002}}))
        << "the surroundings of the press decide on the repeats only";
}

TEST_F(CCursorManagerTest, ASecondPressOfAFingerIsDropped) {
    m_manager.addCursor(7, 100, 200, 1000);
    m_manager.addCursor(7, 300, 400, 1100);
    EXPECT_EQ(take(), (VecTouch{{tagTouch::PRESS, 7, 100, 200, 0, 0, 0, 0, 0, 1000}}));
    EXPECT_EQ(m_manager.getTrack(7)->iStartX, 100);
    EXPECT_EQ(m_manager.getTrack(7)->iStartY, 200);
    EXPECT_EQ(m_manager.getTrack(7)->lstPoint.getSize(), 1u);
}

TEST_F(CCursorManagerTest, AFingerThatIsNotDownIsIgnored) {
    m_manager.addCursor(7, 100, 200, 1000);
    take();
    m_manager.updateCursor(8, 1, 2, 3);
    m_manager.removeCursor(8, 1, 2, 3);
    m_manager.removeCursor(8, 3);
    EXPECT_EQ(take(), VecTouch{});
    EXPECT_EQ(m_manager.m_mapTrack.getCount(), 1u);
}

TEST_F(CCursorManagerTest, ATimeOfZeroIsNow) {
    m_tick.set(5001);
    m_manager.addCursor(1, 0, 0, 0);
    m_manager.addCursor(2, 0, 0, 0);
    m_tick.set(5002);
    m_manager.updateCursor(1, 1, 0, 0);
    m_tick.set(5003);
    m_manager.removeCursor(1, 2, 0, 0);
    m_tick.set(5004);
    m_manager.removeCursor(2, 0);
    EXPECT_EQ(take(), (VecTouch{{tagTouch::PRESS, 1, 0, 0, 0, 0, 0, 0, 0, 5001},
                                {tagTouch::PRESS, 2, 0, 0, 0, 0, 0, 0, 0, 5001},
                                {tagTouch::MOVE, 1, 1, 0, 1, 0, 0, 0, 0, 5002},
                                {tagTouch::RELEASE, 1, 2, 0, 2, 0, 200, 0, 0, 5003},
                                {tagTouch::RELEASE, 2, 0, 0, 0, 0, 0, 0, 0, 5004}}));
}

TEST_F(CCursorManagerTest, TheSpeedIsThatFromTheOldestSampleToTheNewest) {
    const struct {
        int iFirst, iLast;
        unsigned int uiFirst, uiLast;
        int iSpeed;
    } aryRow[] = {{0, 100, 1000, 1200, 100},
                  {100, 0, 1000, 1200, -100},
                  {0, 5, 1000, 1003, 333},   // 333.3
                  {0, -5, 1000, 1003, -333}, // toward zero
                  {0, 999, 1000, 1200, 999},
                  {0, 1000, 1000, 1200, 1000},
                  {0, 1001, 1000, 1200, 1000},
                  {0, -999, 1000, 1200, -999},
                  {0, -1000, 1000, 1200, -1000},
                  {0, -30000, 1000, 1200, -1000},
                  {0, 100, 1000, 1000, 0},           // at the same time
                  {0, 100, 1000, 999, 0},            // the clock ran backwards
                  {0, 100, UINT_MAX - 99, 100, 100}, // the clock wrapped
                  {0, 100, 1, 0x80000000, 0},        // 20000 over the longest span
                  {0, 100, 1, 0x80000001, 0},        // one more is a span backwards
                  // The product wraps: 10737418 times 200 is 2147483600, and one pixel more is -2147483496.
                  {0, 10737418, 1, 2147485, 999},
                  {0, 10737419, 1, 2147485, -999},
                  // So does the way itself: from one end to the other it is one pixel back.
                  {INT_MIN, INT_MAX, 1000, 1002, -100}};
    unsigned int uiID = 0;
    for (const auto& row : aryRow) {
        m_manager.addCursor(++uiID, row.iFirst, 0, row.uiFirst);
        m_manager.addCursor(++uiID, 0, row.iFirst, row.uiFirst);
        CCursorManager::tagCursorTrack& across = *m_manager.getTrack(uiID - 1);
        CCursorManager::tagCursorTrack& down = *m_manager.getTrack(uiID);
        across.addPoint(12345, 678, 777); // in between, it plays no part
        across.addPoint(row.iLast, 0, row.uiLast);
        EXPECT_EQ(across.iXSpeed, row.iSpeed) << row.iFirst << " to " << row.iLast;
        EXPECT_EQ(across.iYSpeed, 0);
        down.addPoint(0, row.iLast, row.uiLast);
        EXPECT_EQ(down.iXSpeed, 0);
        EXPECT_EQ(down.iYSpeed, row.iSpeed) << row.iFirst << " to " << row.iLast;
    }
}

TEST_F(CCursorManagerTest, AFirstSampleHasNoSpeed) {
    CCursorManager::tagCursorTrack track;
    track.iXSpeed = 5;
    track.iYSpeed = 5;
    track.addPoint(100, 100, 1000);
    EXPECT_EQ(track.iXSpeed, 0);
    EXPECT_EQ(track.iYSpeed, 0);
}

TEST_F(CCursorManagerTest, TheSpeedFallsBackToZeroWhenTheClockRunsBackwards) {
    m_manager.addCursor(1, 0, 0, 1000);
    m_manager.updateCursor(1, 100, 100, 1100);
    EXPECT_EQ(m_manager.getTrack(1)->iXSpeed, 200);
    m_manager.updateCursor(1, 200, 200, 900);
    EXPECT_EQ(m_manager.getTrack(1)->iXSpeed, 0);
    EXPECT_EQ(m_manager.getTrack(1)->iYSpeed, 0);
}

TEST_F(CCursorManagerTest, KeepsTheNewestHundredSamples) {
    m_manager.addCursor(1, 0, 0, 1000);
    CCursorManager::tagCursorTrack& track = *m_manager.getTrack(1);
    for (unsigned int i = 1; i < 250; ++i) {
        m_manager.updateCursor(1, static_cast<int>(i), static_cast<int>(i * 2), 1000 + i);
        const unsigned int uiSize = i < 100 ? i + 1 : 100;
        ASSERT_EQ(track.lstPoint.getSize(), uiSize);
        for (unsigned int j = 0; j < uiSize; ++j) {
            const CCursorManager::tagCursorPoint* const pPoint = track.lstPoint.getAt(j);
            const unsigned int uiNumber = i + 1 - uiSize + j;
            ASSERT_EQ(pPoint->iX, static_cast<int>(uiNumber));
            ASSERT_EQ(pPoint->iY, static_cast<int>(uiNumber * 2));
            ASSERT_EQ(pPoint->uiTimestamp, 1000 + uiNumber);
        }
    }
}

TEST_F(CCursorManagerTest, AHistoryThatIsTooLongIsCut) {
    CCursorManager::tagCursorTrack track;
    for (int i = 0; i < 150; ++i)
        track.lstPoint.add(new CCursorManager::tagCursorPoint{i, 0, 1000});
    track.addPoint(150, 0, 1200);
    EXPECT_EQ(track.lstPoint.getSize(), 100u);
    EXPECT_EQ(track.lstPoint.getAt(0)->iX, 51);
    EXPECT_EQ(track.lstPoint.getAt(99)->iX, 150);
    EXPECT_EQ(track.iXSpeed, 99);
}

TEST_F(CCursorManagerTest, AfterAHundredAndOneSamplesTheSpeedForgetsThePressButTheOffsetDoesNot) {
    m_manager.addCursor(1, -100000, 0, 1000);
    for (unsigned int i = 0; i < 98; ++i)
        m_manager.updateCursor(1, 0, 0, 1100);
    m_manager.updateCursor(1, 100, 0, 1300);
    EXPECT_EQ(m_manager.getTrack(1)->iXSpeed, 1000) << "a hundred samples: still from the press";
    take();
    m_manager.removeCursor(1, 100, 0, 1300);
    EXPECT_EQ(take(), (VecTouch{{tagTouch::RELEASE, 1, 100, 0, 100100, 0, 100, 0, 0, 1300}}));
}

TEST_F(CCursorManagerTest, AFingerThatStopsDeadStillTellsTheSpeedOfItsStroke) {
    m_manager.addCursor(1, 0, 0, 1000);
    m_manager.updateCursor(1, 400, 0, 1100);
    m_manager.updateCursor(1, 400, 0, 1190);
    take();
    m_manager.removeCursor(1, 400, 0, 1200);
    EXPECT_EQ(take(), (VecTouch{{tagTouch::RELEASE, 1, 400, 0, 400, 0, 400, 0, 0, 1200}}));
}

TEST_F(CCursorManagerTest, APressStartsATimerThatRepeatsWithoutEnd) {
    m_manager.addCursor(1, 0, 0, 1000);
    const CTimer& timer = m_manager.getTrack(1)->timer;
    EXPECT_TRUE(timer.isRunning());
    EXPECT_EQ(timer.getDelay(), 500u);
    EXPECT_EQ(timer.getRepeatCount(), 0u);
    EXPECT_EQ(timer.getListener(), &m_manager);
}

TEST_F(CCursorManagerTest, TheTimesAndTheSurroundingsComeFromTheConfiguration) {
    configure("waver_distance='3' long_press_delay='70' continuous_press_interval='30'");
    m_manager.addCursor(1, 0, 0, 1000);
    const CTimer& timer = m_manager.getTrack(1)->timer;
    EXPECT_EQ(timer.getDelay(), 70u);
    m_manager.onTimer(&timer, 1);
    EXPECT_EQ(timer.getDelay(), 30u);
    m_manager.updateCursor(1, 3, -3, 1001);
    EXPECT_TRUE(timer.isRunning());
    m_manager.updateCursor(1, 3, -4, 1002);
    EXPECT_FALSE(timer.isRunning());
    configure("waver_distance='4294967295'");
    m_manager.addCursor(2, 0, 0, 1000);
    EXPECT_EQ(m_manager.getTrack(2)->timer.getDelay(), 500u) << "a later load is seen at the next touch";
    m_manager.updateCursor(2, INT_MIN, INT_MAX, 1002);
    EXPECT_TRUE(m_manager.getTrack(2)->timer.isRunning()) << "nothing is farther away than that";
}

TEST_F(CCursorManagerTest, OnlyLeavingTheSurroundingsOfThePressEndsTheRepeats) {
    const struct {
        int iX, iY;
        bool bHolding;
    } aryRow[] = {{0, 0, true},        {25, 25, true},      {-25, -25, true},         {25, -25, true},
                  {26, 0, false},      {-26, 0, false},     {0, 26, false},           {0, -26, false},
                  {26, 25, false},     {25, -26, false},    {INT_MAX, 0, false},      {0, INT_MIN, false},
                  {INT_MIN, 0, false}, {0, INT_MAX, false}, {INT_MIN, INT_MIN, false}};
    unsigned int uiID = 0;
    for (const auto& row : aryRow) {
        m_manager.addCursor(++uiID, 0, 0, 1000);
        m_manager.updateCursor(uiID, row.iX, row.iY, 1001);
        const CTimer& timer = m_manager.getTrack(uiID)->timer;
        EXPECT_EQ(timer.isRunning(), row.bHolding) << row.iX << ' ' << row.iY;
        EXPECT_EQ(timer.getListener() != nullptr, row.bHolding) << row.iX << ' ' << row.iY;
        m_manager.updateCursor(uiID, 0, 0, 1002);
        EXPECT_EQ(timer.isRunning(), row.bHolding) << "coming back to the press starts nothing";
    }
}

TEST_F(CCursorManagerTest, AHeldFingerRepeatsItsLastSampleWithItsTime) {
    m_manager.addCursor(1, 10, 20, 1000);
    m_manager.addCursor(2, 30, 40, 1000);
    m_manager.updateCursor(2, 33, 38, 1100);
    take();
    m_tick.set(9000);
    m_manager.onTimer(&m_manager.getTrack(2)->timer, 3);
    m_manager.onTimer(&m_manager.getTrack(1)->timer, 1);
    m_manager.onTimer(&m_manager.getTrack(2)->timer, 4);
    EXPECT_EQ(take(), (VecTouch{{tagTouch::MOVE, 2, 33, 38, 3, -2, 0, 0, 0, 1100},
                                {tagTouch::MOVE, 1, 10, 20, 0, 0, 0, 0, 0, 1000},
                                {tagTouch::MOVE, 2, 33, 38, 3, -2, 0, 0, 0, 1100}}));
    EXPECT_EQ(m_manager.getTrack(2)->lstPoint.getSize(), 2u) << "a repeat is no sample";
}

TEST_F(CCursorManagerTest, ARepeatPacesTheTimerOfItsOwnFingerOnly) {
    m_manager.addCursor(1, 0, 0, 1000);
    m_manager.addCursor(2, 0, 0, 1000);
    m_manager.onTimer(&m_manager.getTrack(1)->timer, 1);
    EXPECT_EQ(m_manager.getTrack(1)->timer.getDelay(), 100u);
    EXPECT_EQ(m_manager.getTrack(1)->timer.getCurrentCount(), 0u) << "the count is the timer's own business";
    EXPECT_EQ(m_manager.getTrack(2)->timer.getDelay(), 500u);
}

TEST_F(CCursorManagerTest, AStrangeTimerRepeatsNothing) {
    m_manager.addCursor(1, 0, 0, 1000);
    take();
    const CTimer timer;
    m_manager.onTimer(&timer, 1);
    m_manager.onTimer(nullptr, 1);
    m_manager.onTimerComplete(&m_manager.getTrack(1)->timer);
    EXPECT_EQ(take(), VecTouch{});
    EXPECT_EQ(m_manager.getTrack(1)->timer.getDelay(), 500u);
}

TEST_F(CCursorManagerTest, LiftingWithoutAPlaceTellsTheLastOne) {
    m_manager.addCursor(1, 10, 20, 1000);
    m_manager.updateCursor(1, 30, 0, 1100);
    take();
    m_manager.removeCursor(1, 1900);
    EXPECT_EQ(take(), (VecTouch{{tagTouch::RELEASE, 1, 30, 0, 20, -20, 40, -40, 0, 1900}}))
        << "the time of lifting is no sample, so the speed stays";
    EXPECT_EQ(m_manager.getTrack(1), nullptr);
}

TEST_F(CCursorManagerTest, ALiftedFingerMayPressAgain) {
    m_manager.addCursor(1, 10, 20, 1000);
    m_manager.removeCursor(1, 10, 20, 1001);
    m_manager.addCursor(1, 30, 40, 1002);
    take();
    m_manager.updateCursor(1, 31, 41, 1003);
    EXPECT_EQ(take(), (VecTouch{{tagTouch::MOVE, 1, 31, 41, 1, 1, 0, 0, 0, 1003}}));
}

TEST_F(CCursorManagerTest, AReleaseWhileDisabledIsLost) {
    m_manager.addCursor(1, 10, 20, 1000);
    take();
    m_manager.setEnable(false);
    m_manager.updateCursor(1, 50, 60, 1001);
    m_manager.removeCursor(1, 50, 60, 1002);
    m_manager.removeCursor(1, 1003);
    EXPECT_EQ(take(), VecTouch{});
    EXPECT_EQ(m_manager.getTrack(1)->lstPoint.getSize(), 1u);
    EXPECT_TRUE(m_manager.getTrack(1)->timer.isRunning());
    m_manager.onTimer(&m_manager.getTrack(1)->timer, 1);
    EXPECT_EQ(take(), (VecTouch{{tagTouch::MOVE, 1, 10, 20, 0, 0, 0, 0, 0, 1000}})) << "repeats go on, on purpose";
    m_manager.setEnable(true);
    m_manager.addCursor(1, 70, 80, 1004);
    EXPECT_EQ(take(), VecTouch{}) << "it is down already";
    m_manager.removeCursor(1, 11, 21, 1200);
    EXPECT_EQ(take(), (VecTouch{{tagTouch::RELEASE, 1, 11, 21, 1, 1, 1, 1, 0, 1200}}));
}

TEST_F(CCursorManagerTest, UnInitializeForgetsAllFingersInSilence) {
    m_manager.addCursor(1, 10, 20, 1000);
    m_manager.addCursor(2, 10, 20, 1000);
    take();
    CTimer* const pTimer = &m_manager.getTrack(2)->timer;
    const unsigned int uiTimerID = pTimer->getID();
    m_manager.setEnable(false);
    m_manager.unInitialize();
    EXPECT_EQ(m_manager.m_mapTrack.getCount(), 0u);
    EXPECT_TRUE(CTimerManager::getInstance()->checkIsDeletedTimer(uiTimerID)) << "its timer was stopped";
    m_manager.setEnable(true);
    m_manager.updateCursor(1, 50, 60, 1001);
    m_manager.removeCursor(1, 50, 60, 1002);
    m_manager.removeCursor(2, 1003);
    m_manager.onTimer(pTimer, 1);
    EXPECT_EQ(take(), VecTouch{});
}

TEST_F(CCursorManagerTest, AMessageKeepsTheListenerThatItWasMadeWith) {
    CTouchRecorder other;
    m_manager.addCursor(1, 10, 20, 1000);
    m_manager.setTouchListener(&other);
    m_manager.updateCursor(1, 11, 21, 1001);
    EXPECT_EQ(take(), (VecTouch{{tagTouch::PRESS, 1, 10, 20, 0, 0, 0, 0, 0, 1000}}));
    EXPECT_EQ(other.take(), (VecTouch{{tagTouch::MOVE, 1, 11, 21, 1, 1, 0, 0, 0, 1001}}));
}

TEST_F(CCursorManagerTest, WithoutAListenerFingersAreTrackedAndMessagesMadeAllTheSame) {
    m_manager.setTouchListener(nullptr);
    m_manager.addCursor(1, 10, 20, 1000);
    m_manager.onTimer(&m_manager.getTrack(1)->timer, 1);
    m_manager.wheelCursor(1, 2, 3);
    EXPECT_TRUE(m_manager.getTrack(1)->timer.isRunning());
    EXPECT_EQ(CMessageCenter::getInstance()->getMessageCountByType(CBaseMessage::MESSAGE_TOUCH), 3u);
    EXPECT_EQ(take(), VecTouch{});
    m_manager.setTouchListener(&m_recorder);
    m_manager.updateCursor(1, 11, 21, 1001);
    EXPECT_EQ(take(), (VecTouch{{tagTouch::MOVE, 1, 11, 21, 1, 1, 0, 0, 0, 1001}}));
}

TEST_F(CCursorManagerTest, AWheelStepHasNeitherFingerNorTime) {
    m_manager.wheelCursor(10, 20, -3);
    EXPECT_EQ(take(), (VecTouch{{tagTouch::WHEEL, 0, 10, 20, 0, 0, 0, 0, -3, 0}}));
    EXPECT_EQ(m_manager.m_mapTrack.getCount(), 0u);
}

TEST_F(CCursorManagerTest, DispatchingPostsWhateverTheState) {
    m_manager.setEnable(false);
    m_manager.dispatchMessage(1, 2, 3, 4, 5, 6, 7, 8, CCursor::TOUCH_MOVE);
    m_manager.dispatchMessage(1, 2, 3, 4, 5, 6, 7, 8, CCursor::TOUCH_NONE);
    EXPECT_EQ(CMessageCenter::getInstance()->getMessageCount(), 2u);
    EXPECT_EQ(take(), (VecTouch{{tagTouch::MOVE, 1, 2, 5, 3, 6, 4, 7, 0, 8}}));
}

/** Tells, for each message, whether another thread can take the manager's lock while the message is announced. */
class CLockProbe : public IMessageCenterListener {
public:
    explicit CLockProbe(COpenCursorManager& manager) : m_manager(manager) {}
    void onMessageAvailable() override {
        m_bTaken = false;
        m_prober = std::thread([this] {
            const CAutoSync sync(m_manager.m_syncObject);
            m_bTaken = true;
        });
        for (int i = 0; i < m_iLimitMs && !m_bTaken; ++i) // counted, for this thread's clock stands still
            usleep(1000);
        m_bWasFree = m_bTaken;
    }
    /** Runs an operation that posts one message. @param iLimitMs how long to wait for the lock. */
    bool wasFree(int iLimitMs, const std::function<void()>& fnOperation) {
        m_iLimitMs = iLimitMs;
        m_bWasFree = false;
        fnOperation();
        m_prober.join();
        return m_bWasFree;
    }

private:
    COpenCursorManager& m_manager;
    std::thread m_prober;
    std::atomic<bool> m_bTaken{false};
    int m_iLimitMs = 0;
    bool m_bWasFree = false;
};

TEST_F(CCursorManagerTest, PressesAndMovesPostWithoutTheLockAndReleasesAndRepeatsWithIt) {
    constexpr int LONG_MS = 20000, SHORT_MS = 50;
    CLockProbe probe(m_manager);
    CMessageCenter::getInstance()->setListener(&probe);
    EXPECT_TRUE(probe.wasFree(LONG_MS, [this] { m_manager.addCursor(1, 0, 0, 1000); }));
    EXPECT_TRUE(probe.wasFree(LONG_MS, [this] { m_manager.updateCursor(1, 1, 1, 1000); }));
    EXPECT_TRUE(probe.wasFree(LONG_MS, [this] { m_manager.wheelCursor(1, 1, 1); }));
    EXPECT_FALSE(probe.wasFree(SHORT_MS, [this] { m_manager.onTimer(&m_manager.getTrack(1)->timer, 1); }));
    EXPECT_FALSE(probe.wasFree(SHORT_MS, [this] { m_manager.removeCursor(1, 2, 2, 1001); }));
    CMessageCenter::getInstance()->setListener(nullptr);
}

TEST_F(CCursorManagerTest, AWheelStepWaitsForNoLock) {
    const CAutoSync sync(m_manager.m_syncObject);
    std::thread([this] { m_manager.wheelCursor(1, 2, 3); }).join();
    EXPECT_EQ(take(), (VecTouch{{tagTouch::WHEEL, 0, 1, 2, 0, 0, 0, 0, 3, 0}}));
}

TEST_F(CCursorManagerTest, AManagerThatGoesTakesItsFingersAlong) {
    m_manager.addCursor(1, 10, 20, 1000);
    const unsigned int uiTimerID = m_manager.getTrack(1)->timer.getID();
    m_ptrManager.reset();
    EXPECT_TRUE(CTimerManager::getInstance()->checkIsDeletedTimer(uiTimerID));
    EXPECT_EQ(take(), (VecTouch{{tagTouch::PRESS, 1, 10, 20, 0, 0, 0, 0, 0, 1000}}));
}

TEST_F(CCursorManagerTest, ALongStrokeTakesNoMoreMemory) {
    m_manager.addCursor(1, 0, 0, 1000);
    for (unsigned int i = 1; i < 100; ++i)
        m_manager.updateCursor(1, 0, 0, 1000 + i);
    take();
    auto& lstPoint = m_manager.getTrack(1)->lstPoint;
    const CCursorManager::tagCursorPoint* const pOldest = lstPoint.getAt(0);
    m_manager.updateCursor(1, 0, 0, 2000);
    EXPECT_EQ(lstPoint.getAt(99), pOldest) << "the record of the oldest sample serves the newest";
}

#if !defined(ORLIX_TEST_ASAN) && !defined(ORLIX_TEST_TSAN) // both end the process when memory runs out
TEST_F(CCursorManagerTest, WithoutMemoryPressesAreDroppedAndFingersThatAreDownLiveOn) {
    m_manager.addCursor(1, 0, 0, 1000);
    const tagChildResult result = runInChild([this] {
        if (!limitMemory(4000000))
            return 1;
        useUpMemory();
        unsigned int uiID = 1;
        for (unsigned int uiCount = 1; uiID < 1000000 && m_manager.m_mapTrack.getCount() == uiCount; ++uiCount) {
            m_tick.set(1000); // keeps the stand-in's record of calls short
            m_manager.addCursor(++uiID, 0, 0, 1000);
        }
        if (uiID == 1000000 || m_manager.getTrack(uiID))
            return 2;
        for (unsigned int i = 1; i <= 300; ++i) {
            m_manager.updateCursor(1, static_cast<int>(i), 0, 1000 + i);
            m_manager.wheelCursor(0, 0, 1);
        }
        const CCursorManager::tagCursorTrack& track = *m_manager.getTrack(1);
        if (track.lstPoint.getSize() < 1 || track.lstPoint.getSize() > 100 || track.timer.isRunning())
            return 3;
        m_manager.onTimer(&track.timer, 1);
        m_manager.removeCursor(1, 0, 0, 2000);
        return m_manager.getTrack(1) ? 4 : 0;
    });
    EXPECT_EQ(result.iExitCode, 0) << result.strOutput;
}
#endif

/** A stream of samples, mostly plausible, sometimes as odd as can be, given to the manager and to the model alike. */
class CRandomStream {
public:
    CRandomStream(COpenCursorManager& manager, CTouchModel& model, CTickStandIn& tick, unsigned int uiSeed)
        : m_manager(manager), m_model(model), m_tick(tick), m_random(uiSeed), m_uiNow(m_random()) {}

    void step() {
        m_uiNow += pick(30);
        m_tick.set(m_uiNow);
        const unsigned int uiID = pickID();
        const int iX = pickPlace(uiID, &CTouchModel::tagSample::lX), iY = pickPlace(uiID, &CTouchModel::tagSample::lY);
        const unsigned int uiPassed = pickTime();
        // The tick itself may be 0, which then is the time: nothing further stands in for it.
        const unsigned int uiTime = uiPassed != 0 ? uiPassed : m_uiNow;
        const unsigned int uiKind = pick(1000);
        if (uiKind < 200) {
            m_manager.addCursor(uiID, iX, iY, uiPassed);
            m_model.press(uiID, iX, iY, uiTime);
        } else if (uiKind < 880) {
            m_manager.updateCursor(uiID, iX, iY, uiPassed);
            m_model.move(uiID, iX, iY, uiTime);
        } else if (uiKind < 884) {
            m_manager.removeCursor(uiID, iX, iY, uiPassed);
            m_model.liftAt(uiID, iX, iY, uiTime);
        } else if (uiKind < 887) {
            m_manager.removeCursor(uiID, uiPassed);
            m_model.lift(uiID, uiTime);
        } else if (uiKind < 910) {
            m_manager.wheelCursor(iX, iY, static_cast<int>(uiTime));
            m_model.wheel(iX, iY, static_cast<int>(uiTime));
        } else {
            stepRarely(uiID, uiKind);
        }
    }

private:
    COpenCursorManager& m_manager;
    CTouchModel& m_model;
    CTickStandIn& m_tick;
    std::mt19937 m_random;
    unsigned int m_uiNow;

    unsigned int pick(unsigned int uiEnd) { return static_cast<unsigned int>(m_random() % uiEnd); }

    unsigned int pickID() {
        const unsigned int uiID = pick(60);
        return uiID % 4 == 0 ? UINT_MAX - uiID : uiID; // any number may be a finger's
    }

    int pickPlace(unsigned int uiID, std::int64_t CTouchModel::tagSample::*pAxis) {
        const auto itFinger = m_model.m_mapFinger.find(uiID);
        const unsigned int uiKind = pick(100);
        if (uiKind == 0)
            return static_cast<int>(m_random());
        if (uiKind == 1)
            return pick(2) ? INT_MIN : INT_MAX;
        if (itFinger == m_model.m_mapFinger.end() || uiKind < 10)
            return static_cast<int>(pick(4000)) - 100;
        const int iStart = static_cast<int>(itFinger->second.vecSample.front().*pAxis);
        if (iStart > INT_MAX - 30 || iStart < INT_MIN + 30)
            return iStart;
        return iStart + static_cast<int>(pick(uiID % 3 ? 52 : 20)) - (uiID % 3 ? 26 : 10); // up to one pixel too far
    }

    unsigned int pickTime() {
        const unsigned int uiKind = pick(100);
        if (uiKind < 30)
            return 0;
        if (uiKind < 35)
            return m_uiNow - pick(5000);
        return uiKind == 35 ? static_cast<unsigned int>(m_random()) : m_uiNow;
    }

    void stepRarely(unsigned int uiID, unsigned int uiKind) {
        if (uiKind < 980) {
            if (CCursorManager::tagCursorTrack* const pTrack = m_manager.getTrack(uiID)) {
                m_manager.onTimer(&pTrack->timer, pick(9));
                m_model.repeat(uiID);
            }
        } else if (pick(4) != 0) {
            const bool bEnable = pick(4) != 0;
            m_manager.setEnable(bEnable);
            m_model.m_bEnable = bEnable;
        } else if (pick(100) == 0) {
            m_manager.unInitialize();
            m_model.m_mapFinger.clear();
        }
    }
};

void expectSameTracks(const COpenCursorManager& manager, const CTouchModel& model) {
    ASSERT_EQ(manager.m_mapTrack.getCount(), model.m_mapFinger.size());
    for (const auto& entry : model.m_mapFinger) {
        const CCursorManager::tagCursorTrack* const pTrack = manager.getTrack(entry.first);
        ASSERT_TRUE(pTrack);
        const CTouchModel::tagFinger& finger = entry.second;
        ASSERT_EQ(pTrack->iStartX, finger.vecSample.front().lX);
        ASSERT_EQ(pTrack->iStartY, finger.vecSample.front().lY);
        ASSERT_EQ(pTrack->iXSpeed, finger.getSpeed(&CTouchModel::tagSample::lX));
        ASSERT_EQ(pTrack->iYSpeed, finger.getSpeed(&CTouchModel::tagSample::lY));
        ASSERT_EQ(pTrack->lstPoint.getSize(), std::min<std::size_t>(finger.vecSample.size(), 100));
        ASSERT_EQ(pTrack->lstPoint.getAt(0)->uiTimestamp, finger.getOldest().uiTime);
        ASSERT_EQ(pTrack->timer.isRunning(), finger.bHolding);
        ASSERT_EQ(pTrack->timer.getDelay(), finger.bRepeated ? 100u : 500u);
    }
}

TEST_F(CCursorManagerTest, TracksAnyStreamOfUpToSixtyFingersAsTheModelDoes) {
    for (unsigned int uiSeed = 1; uiSeed <= 10; ++uiSeed) {
        SCOPED_TRACE("seed " + std::to_string(uiSeed));
        m_manager.unInitialize();
        m_manager.setEnable(true);
        CTouchModel model;
        CRandomStream stream(m_manager, model, m_tick, uiSeed);
        std::size_t uiMostFingers = 0, uiMostSamples = 0;
        for (unsigned int i = 0; i < 40000; ++i) {
            stream.step();
            ASSERT_EQ(take(), model.take()) << "step " << i;
            uiMostFingers = std::max(uiMostFingers, model.m_mapFinger.size());
            if (i % 100 == 0) {
                ASSERT_NO_FATAL_FAILURE(expectSameTracks(m_manager, model));
            }
            for (const auto& entry : model.m_mapFinger)
                uiMostSamples = std::max(uiMostSamples, entry.second.vecSample.size());
        }
        EXPECT_GE(uiMostFingers, 50u) << "the stream must be one of many fingers";
        EXPECT_GE(uiMostSamples, 101u) << "and of full histories";
    }
}
} // namespace
