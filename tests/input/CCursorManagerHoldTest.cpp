#include <Orlix/input/CCursorManager.h>

#include "input/TouchRecorder.h"
#include "threading/TimerFixture.h"

#include <memory>
#include <unistd.h>
#include <vector>

using namespace Orlix;
using namespace OrlixTest;

namespace {

/** Fingers that are held, with the cycles of the timer thread made by the test at ticks that it sets. */
class CCursorManagerHoldTest : public CTimerFixture {
protected:
    CCursorManagerHoldTest() : m_ptrCursors(new CCursorManager) {
        m_ptrCursors->setTouchListener(&m_recorder);
        m_ptrCursors->setEnable(true);
    }

    /** The cycles of a stretch of time. @return the ticks at which the listener heard something. */
    std::vector<unsigned int> hearFrom(unsigned int uiFirst, unsigned int uiLast) {
        std::vector<unsigned int> vecTick;
        for (unsigned int uiTick = uiFirst; uiTick <= uiLast; uiTick += 10) {
            cycle(uiTick);
            drain();
            for (const tagTouch& touch : m_recorder.take()) {
                m_vecTouch.push_back(touch);
                vecTick.push_back(uiTick);
            }
        }
        return vecTick;
    }

    CTouchRecorder m_recorder;
    VecTouch m_vecTouch;
    std::unique_ptr<CCursorManager> m_ptrCursors;
};

using VecTick = std::vector<unsigned int>;

TEST_F(CCursorManagerHoldTest, AMotionlessFingerRepeatsLateThenCatchesUpThenSettles) {
    setTick(1000);
    m_ptrCursors->addCursor(3, 10, 20, 0);
    // The timer's grid starts at the press. Its first pulse falls due after 500 ms; then the delay is 100 ms, and with
    // it the pulses 2 to 5 are late already. The burst is meant.
    EXPECT_EQ(hearFrom(1000, 1900), (VecTick{1000, 1500, 1510, 1520, 1530, 1540, 1600, 1700, 1800, 1900}));
    EXPECT_EQ(m_vecTouch.front(), (tagTouch{tagTouch::PRESS, 3, 10, 20, 0, 0, 0, 0, 0, 1000}));
    for (std::size_t i = 1; i < m_vecTouch.size(); ++i)
        EXPECT_EQ(m_vecTouch[i], (tagTouch{tagTouch::MOVE, 3, 10, 20, 0, 0, 0, 0, 0, 1000}));
}

TEST_F(CCursorManagerHoldTest, AWaveringFingerGoesOnRepeatingFromWhereItIs) {
    setTick(1000);
    m_ptrCursors->addCursor(3, 10, 20, 0);
    setTick(1200);
    m_ptrCursors->updateCursor(3, 35, -5, 0);
    EXPECT_EQ(hearFrom(1200, 1500), (VecTick{1200, 1200, 1500}));
    EXPECT_EQ(m_vecTouch.back(), (tagTouch{tagTouch::MOVE, 3, 35, -5, 25, -25, 0, 0, 0, 1200}));
}

TEST_F(CCursorManagerHoldTest, AFingerThatLeftItsPressNeverRepeatsAgain) {
    setTick(1000);
    m_ptrCursors->addCursor(3, 10, 20, 0);
    m_ptrCursors->updateCursor(3, 36, 20, 0);
    m_ptrCursors->updateCursor(3, 10, 20, 0);
    hearFrom(1000, 1000);
    EXPECT_EQ(hearFrom(1010, 3000), VecTick{});
}

TEST_F(CCursorManagerHoldTest, EachFingerRepeatsByATimerOfItsOwn) {
    setTick(1000);
    m_ptrCursors->addCursor(3, 10, 20, 0);
    setTick(1100);
    m_ptrCursors->addCursor(4, 30, 40, 0);
    EXPECT_EQ(hearFrom(1100, 1520), (VecTick{1100, 1100, 1500, 1510, 1520}));
    m_ptrCursors->removeCursor(3, 10, 20, 0);
    m_vecTouch.clear();
    EXPECT_EQ(hearFrom(1530, 1620), (VecTick{1530, 1600, 1610, 1620}));
    EXPECT_EQ(m_vecTouch.back(), (tagTouch{tagTouch::MOVE, 4, 30, 40, 0, 0, 0, 0, 0, 1100}));
}

TEST_F(CCursorManagerHoldTest, PulsesThatWaitGoWithTheFinger) {
    setTick(1000);
    m_ptrCursors->addCursor(3, 10, 20, 0);
    cycle(1500);
    cycle(1510);
    ASSERT_EQ(m_pCenter->getMessageCountByType(CBaseMessage::MESSAGE_TIMER), 1u);
    m_ptrCursors->removeCursor(3, 10, 20, 0);
    EXPECT_EQ(m_pCenter->getMessageCountByType(CBaseMessage::MESSAGE_TIMER), 0u);
    drain();
    EXPECT_EQ(m_recorder.take().size(), 2u) << "the press and the release";
}

TEST_F(CCursorManagerHoldTest, AFingerLiftedWhileItsPulsesAreHandledIsNotTouchedAgain) {
    class CLiftingListener : public CTouchRecorder {
    public:
        void onTouchMove(const CCursor& cursor) override {
            CTouchRecorder::onTouchMove(cursor);
            m_pCursors->unInitialize();
        }
        CCursorManager* m_pCursors = nullptr;
    } listener;
    listener.m_pCursors = m_ptrCursors.get();
    m_ptrCursors->setTouchListener(&listener);
    setTick(1000);
    m_ptrCursors->addCursor(3, 10, 20, 0);
    m_ptrCursors->addCursor(4, 10, 20, 0);
    cycle(1500); // one message with a pulse of each
    drain();
    EXPECT_EQ(hearFrom(1510, 2500), VecTick{});
    const VecTouch vecTouch = listener.take();
    ASSERT_EQ(vecTouch.size(), 4u) << "both pulses were handled before the first repeat was heard";
    EXPECT_EQ(vecTouch[2].uiID, 3u);
    EXPECT_EQ(vecTouch[3].uiID, 4u);
}

TEST_F(CCursorManagerHoldTest, AManagerMayGoWhilePulsesOfItsFingersWait) {
    setTick(1000);
    for (unsigned int i = 0; i < 60; ++i)
        m_ptrCursors->addCursor(i, 10, 20, 0);
    cycle(1500);
    m_ptrCursors.reset();
    EXPECT_EQ(m_pCenter->getMessageCountByType(CBaseMessage::MESSAGE_TIMER), 0u);
    EXPECT_EQ(hearFrom(1510, 1600).size(), 60u) << "the presses";
}

TEST_F(CCursorManagerHoldTest, ASecondFingerAtTheFirstOnesAddressRepeatsToo) {
    setTick(1000);
    m_ptrCursors->addCursor(3, 10, 20, 0);
    m_ptrCursors->removeCursor(3, 10, 20, 0);
    m_ptrCursors->addCursor(4, 30, 40, 0); // takes the memory of the first
    hearFrom(1000, 1000);
    EXPECT_EQ(hearFrom(1010, 1500), VecTick{1500});
}

TEST_F(CCursorManagerHoldTest, TheRealTimerThreadRepeatsToo) {
    CTimerManager* const pTimers = m_pManager;
    setTick(1000); // the stand-in is this thread's alone: the timer thread has the real clock
    pTimers->start();
    {
        const std::size_t uiWanted = 4;
        VecTouch vecTouch;
        m_ptrCursors->addCursor(3, 10, 20, 0);
        for (int i = 0; i < 20000 && vecTouch.size() < uiWanted; ++i) {
            drain();
            for (const tagTouch& touch : m_recorder.take())
                vecTouch.push_back(touch);
            usleep(1000);
        }
        ASSERT_GE(vecTouch.size(), uiWanted);
        EXPECT_EQ(vecTouch[3], (tagTouch{tagTouch::MOVE, 3, 10, 20, 0, 0, 0, 0, 0, 1000}));
    }
    m_ptrCursors->unInitialize();
    pTimers->stop();
}
} // namespace
