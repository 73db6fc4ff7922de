#include <Orlix/input/CCursorManager.h>

#include <Orlix/formats/CConfigParser.h>
#include <Orlix/input/CPlatformFactory.h>
#include <Orlix/input/CSurface.h>
#include <Orlix/input/ITouchListener.h>
#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/threading/CTime.h>
#include <Orlix/threading/CTimerManager.h>

#include "input/TouchFixture.h"
#include "support/PoolUnits.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <malloc.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace Orlix;
using namespace OrlixTest;

namespace {

constexpr unsigned int FINGERS = 60;

/** The one surface of the process, its center and its timers. */
class CCursorManagerLoadTest : public ::testing::Test {
protected:
    CCursorManagerLoadTest() : m_pCenter(CMessageCenter::getInstance()), m_pSurface(CSurface::getInstance(0, true)) {
        CConfigParser::getInstance();
        CTimerManager::getInstance();
        CTime::getTickCount();
        m_pSurface->setEnable(true);
    }
    ~CCursorManagerLoadTest() override {
        CSurface::deleteInstance();
        CPlatformFactory::deleteInstance();
        CMessageCenter::deleteInstance();
        CTimerManager::deleteInstance();
        CConfigParser::deleteInstance();
    }
    /** Handles what waits. @return whether there was anything. */
    bool handleAll() {
        bool bAny = false;
        while (const auto ptrMessage = m_pCenter->popMessage()) {
            ptrMessage->handleMessage();
            bAny = true;
        }
        return bAny;
    }

    CMessageCenter* const m_pCenter;
    CSurface* const m_pSurface;
};

// A minute of sixty fingers that report 240 times a second each.
constexpr unsigned int SECONDS = 60;
constexpr unsigned int RATE = 240;

unsigned int getTime(unsigned int uiFrame) { return 10000 + uiFrame * 1000 / RATE; }
int getX(unsigned int uiFinger, unsigned int uiFrame) { return static_cast<int>((uiFinger * 31 + uiFrame * 7) % 3840); }
int getY(unsigned int uiFinger, unsigned int uiFrame) { return static_cast<int>((uiFinger * 17 + uiFrame * 3) % 2160); }

/** Checks that each finger's moves come complete and in order; keeps nothing but counts. */
class CStreamCheck : public ITouchListener {
public:
    void onTouchPress(const CCursor& cursor) override { check(cursor, 0); }
    void onTouchMove(const CCursor& cursor) override { check(cursor, ++m_aryFrame[cursor.getID()]); }
    void onTouchRelease(const CCursor& cursor) override { check(cursor, m_aryFrame[cursor.getID()]); }
    void onTouchWheel(const CCursor&) override { ++m_uiWrong; }

    unsigned int m_uiHeard = 0;
    unsigned int m_uiWrong = 0;
    std::array<unsigned int, FINGERS> m_aryFrame{};

private:
    void check(const CCursor& cursor, unsigned int uiFrame) {
        const unsigned int uiID = cursor.getID();
        ++m_uiHeard;
        m_uiWrong += cursor.getX() != getX(uiID, uiFrame) || cursor.getY() != getY(uiID, uiFrame) ||
                     cursor.getXDelta() != getX(uiID, uiFrame) - getX(uiID, 0) ||
                     cursor.getYDelta() != getY(uiID, uiFrame) - getY(uiID, 0) ||
                     cursor.getTimestamp() != getTime(uiFrame);
    }
};

TEST_F(CCursorManagerLoadTest, AMinuteOfSixtyFingersLosesNoSampleAndTakesNoMoreMemory) {
    CStreamCheck check;
    m_pSurface->setTouchListener(&check);
    CCursorManager* const pManager = m_pSurface->getCursorManager();
    std::atomic<unsigned int> uiAsked{0}, uiFed{0}; // seconds
    std::thread platform([&] {
        for (unsigned int i = 0; i < FINGERS; ++i)
            pManager->addCursor(i, getX(i, 0), getY(i, 0), getTime(0));
        for (unsigned int uiFrame = 1; uiFrame <= SECONDS * RATE; ++uiFrame) {
            while (uiAsked.load() * RATE < uiFrame)
                std::this_thread::yield();
            for (unsigned int i = 0; i < FINGERS; ++i)
                pManager->updateCursor(i, getX(i, uiFrame), getY(i, uiFrame), getTime(uiFrame));
            // The host has all its other work too: with each frame one message for every list.
            m_pCenter->pushLogicEventMessage(uiFrame);
            m_pCenter->pushDataContextMessage(uiFrame, nullptr);
            m_pCenter->pushUserMessage(uiFrame, nullptr, nullptr);
            m_pCenter->pushRenderMessage(0);
            if (uiFrame % RATE == 0)
                uiFed.store(uiFrame / RATE);
        }
        for (unsigned int i = 0; i < FINGERS; ++i)
            pManager->removeCursor(i, getTime(SECONDS * RATE));
    });
    long lUnits = 0;
    std::size_t uiHeap = 0;
    for (unsigned int uiSecond = 1; uiSecond <= SECONDS - 1; ++uiSecond) {
        uiAsked.store(uiSecond);
        // In the first second the host sleeps, so that the longest queue there can be has its memory.
        while (uiFed.load() < uiSecond) {
            if (uiSecond > 1)
                handleAll();
        }
        handleAll();
        if (uiSecond == 1) {
            lUnits = countLiveUnits();
            uiHeap = mallinfo2().uordblks;
        }
        EXPECT_EQ(countLiveUnits(), lUnits) << "after second " << uiSecond;
        EXPECT_EQ(mallinfo2().uordblks, uiHeap) << "after second " << uiSecond;
    }
    uiAsked.store(SECONDS);
    platform.join();
    handleAll();
    EXPECT_EQ(check.m_uiHeard, FINGERS * (SECONDS * RATE + 2));
    EXPECT_EQ(check.m_uiWrong, 0u);
    for (const unsigned int uiFrame : check.m_aryFrame)
        EXPECT_EQ(uiFrame, SECONDS * RATE);
}

/** Checks that the samples of each finger, numbered by their x, come in order and that repeats repeat the last one. A
 *  sample is posted after the lock is given back, so a repeat of it may overtake it: then a press finds its finger
 *  down. */
class COrderCheck : public ITouchListener {
public:
    void onTouchPress(const CCursor& cursor) override {
        m_uiWrong += m_aryX[cursor.getID()] > 0 || cursor.getX() != 0;
        m_aryX[cursor.getID()] = 0;
    }
    void onTouchMove(const CCursor& cursor) override {
        int& iX = m_aryX[cursor.getID()];
        m_uiWrong += cursor.getX() != iX && cursor.getX() != iX + 1;
        m_uiRepeats += cursor.getX() == iX;
        iX = cursor.getX();
    }
    void onTouchRelease(const CCursor& cursor) override {
        m_uiWrong += m_aryX[cursor.getID()] + 1 != cursor.getX();
        m_aryX[cursor.getID()] = -1;
        ++m_uiReleases;
    }
    void onTouchWheel(const CCursor&) override {}

    unsigned int m_uiWrong = 0;
    unsigned int m_uiRepeats = 0;
    unsigned int m_uiReleases = 0;
    std::vector<int> m_aryX = std::vector<int>(FINGERS, -1); // -1 for a finger that is not down
};

TEST_F(CCursorManagerLoadTest, ManyThreadsAndTheTimersTouchOneSurfaceAtOnce) {
    constexpr unsigned int THREADS = 4, STROKES = 40, STEPS = 40;
    {
        const CTempFolder folder;
        writeWhole(folder / "engine.xml", "<e><touch_param long_press_delay='1' continuous_press_interval='1'/></e>");
        ASSERT_TRUE(CConfigParser::getInstance()->load(toText(folder / "engine.xml")));
    }
    COrderCheck check;
    m_pSurface->setTouchListener(&check);
    CTimerManager::getInstance()->start();
    std::atomic<unsigned int> uiEnded{0};
    std::vector<std::thread> vecThread;
    for (unsigned int uiThread = 0; uiThread < THREADS; ++uiThread) {
        vecThread.emplace_back([&, uiThread] {
            for (unsigned int uiStroke = 0; uiStroke < STROKES; ++uiStroke) {
                for (int iX = 0; iX <= static_cast<int>(STEPS); ++iX) {
                    for (unsigned int uiID = uiThread; uiID < FINGERS; uiID += THREADS)
                        m_pCenter->pushTouchMessage(0, uiID, iX, 0, iX == 0 ? 0 : iX < static_cast<int>(STEPS) ? 1 : 2);
                    if (iX % 20 == 10)
                        usleep(2000); // long enough to be held
                }
            }
            uiEnded.fetch_add(1);
        });
    }
    while (uiEnded.load() < THREADS)
        handleAll();
    for (std::thread& thread : vecThread)
        thread.join();
    CTimerManager::getInstance()->stop();
    handleAll();
    EXPECT_EQ(check.m_uiWrong, 0u);
    EXPECT_EQ(check.m_uiReleases, STROKES * FINGERS);
    EXPECT_GT(check.m_uiRepeats, 0u);
}

TEST_F(CCursorManagerLoadTest, SettingsMayChangeWhileTouchesArrive) {
    COrderCheck first, second;
    std::atomic<bool> bEnd{false};
    std::thread platform([&] {
        for (unsigned int i = 0; i < 3000; ++i) {
            m_pCenter->pushTouchMessage(0, i % FINGERS, 0, 0, i / FINGERS % 3);
            m_pSurface->notifySurfacePosChange(static_cast<int>(i), 1);
            m_pSurface->notifySurfaceSizeChange(i, 1);
        }
        bEnd = true;
    });
    for (unsigned int i = 0; !bEnd; ++i) {
        m_pSurface->setTouchListener(i % 2 ? &first : &second);
        m_pSurface->setEnable(i % 3 != 0);
        EXPECT_LT(m_pSurface->getSurfaceX(), 3000);
        EXPECT_LT(m_pSurface->getSurfaceWidth(), 3000u);
        handleAll();
    }
    platform.join();
    handleAll();
}
} // namespace
