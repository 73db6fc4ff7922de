#include "threading/TimerFixture.h"

#include <Orlix/foundation/CImpWaitObject.h>

#include "support/TempFolder.h"

#include <algorithm>
#include <chrono>
#include <climits>
#include <functional>
#include <memory>
#include <random>
#include <thread>

using namespace Orlix;
using namespace OrlixTest;

namespace {

static_assert(std::is_base_of<CThread, CTimerManager>::value, "the manager is a thread");

/** Reaches the system's side of an event, so that a test can stand in for it. */
class CWaitAccess : public CWaitObject {
public:
    static void replace(CWaitObject& waitObject, IWaitObject* pImp) {
        IWaitObject*& pOld = waitObject.*(&CWaitAccess::m_pImp);
        delete pOld;
        pOld = pImp;
    }
};

/** An event on which nobody ever sleeps: instead the test is asked what happens next. */
class CScriptedWait final : public IWaitObject {
    ORLIX_HEAP_CLASS(L"CScriptedWait")

public:
    CScriptedWait(std::function<void()> fnBlocked, std::function<void(unsigned int)> fnSleep)
        : m_fnBlocked(std::move(fnBlocked)), m_fnSleep(std::move(fnSleep)) {}
    void reset() override {}
    void wait(unsigned int uiMilliseconds) override {
        EXPECT_EQ(uiMilliseconds, 0u) << "without limit";
        if (!m_bSignaled)
            m_fnBlocked();
        m_bSignaled = false;
    }
    void forceWait(unsigned int uiMilliseconds) override { m_fnSleep(uiMilliseconds); }
    void notify() override { m_bSignaled = true; }

private:
    std::function<void()> m_fnBlocked;
    std::function<void(unsigned int)> m_fnSleep;
    bool m_bSignaled = false;
};

/** The thread's own loop, run on the test's thread on a clock that only its sleeps move. */
class CTimerManagerTest : public CTimerFixture {
protected:
    /** Runs until fnStep, called in place of each sleep with its number from 0 on, or fnBlocked, called where the
     *  thread would sleep for ever, asks for the stop. */
    void runVirtual(const std::function<void(unsigned int)>& fnStep, const std::function<void()>& fnBlocked) {
        unsigned int uiStep = 0;
        CWaitAccess::replace(m_pManager->m_waitWake, new CScriptedWait(fnBlocked, [](unsigned int) { FAIL(); }));
        CWaitAccess::replace(m_pManager->m_waitSleep, new CScriptedWait([] { FAIL(); },
                                                                        [&](unsigned int uiMilliseconds) {
                                                                            EXPECT_EQ(uiMilliseconds, 10u);
                                                                            advance(10);
                                                                            fnStep(uiStep++);
                                                                        }));
        if (m_pManager->m_aryTimer.getSize() != 0)
            m_pManager->m_waitWake.notify(); // the wake-up of their start went to the event that was replaced
        m_pManager->run();
    }
    void advance(unsigned int uiMilliseconds) {
        m_uiTick += uiMilliseconds;
        setTick(m_uiTick);
    }
    unsigned int m_uiTick = 0;
};

/** What a timer ought to do, by division where the library multiplies: at most one pulse a cycle, and never more than
 *  whole delays have passed since the start. */
class CModelTimer {
public:
    CModelTimer(const std::string& strName, unsigned int uiDelay, unsigned int uiRepeat, unsigned int uiStart)
        : m_strName(strName), m_uiDelay(uiDelay), m_uiRepeat(uiRepeat), m_uiStart(uiStart) {}
    void cycle(unsigned int uiNow, VecCall& vecCall) {
        if (m_uiCount == m_uiRepeat && m_uiRepeat != 0)
            return;
        if (m_uiDelay != 0 && (uiNow - m_uiStart) / m_uiDelay <= m_uiCount)
            return;
        ++m_uiCount;
        vecCall.push_back(m_strName + (m_uiCount == m_uiRepeat ? "complete" : std::to_string(m_uiCount)));
    }

private:
    std::string m_strName;
    unsigned int m_uiDelay, m_uiRepeat, m_uiStart;
    unsigned int m_uiCount = 0;
};

constexpr unsigned int DELAYS[] = {0, 5, 10, 33, 1000};

TEST_F(CTimerManagerTest, StartsAsItShould) {
    EXPECT_EQ(m_pManager->m_uiInterval, 10u);
    EXPECT_EQ(m_pManager->m_aryTimer.getSize(), 0u);
    EXPECT_EQ(m_pManager->m_aryPulse.getSize(), 0u);
    EXPECT_EQ(m_pManager->m_aryDeletedID.getSize(), 0u);
    EXPECT_EQ(CTimerManager::getInstance(), m_pManager);
    const void* const aryField[] = {&m_pManager->m_aryTimer, &m_pManager->m_aryPulse, &m_pManager->m_aryDeletedID,
                                    &m_pManager->m_uiInterval, &m_pManager->m_waitSleep};
    for (std::size_t i = 1; i < std::size(aryField); ++i)
        EXPECT_LT(aryField[i - 1], aryField[i]) << i;
}

TEST_F(CTimerManagerTest, PulsesOfAllDelaysFollowTheirGrid) {
    // The sleeps of a cycle are 10 ms and a lateness; once the machine hangs for two seconds.
    for (const unsigned int uiHang : {0u, 500u, 2000u}) {
        for (const unsigned int uiStart : {0u, 0xFFFFF000u}) { // the second run crosses the wrap of the tick
            SCOPED_TRACE(testing::Message() << uiHang << " " << uiStart);
            std::mt19937 random(uiHang + 1);
            m_uiTick = uiStart;
            setTick(m_uiTick);
            m_pManager->m_bPrepareStop = false;
            std::vector<std::unique_ptr<CTimer>> vecTimer;
            std::vector<std::unique_ptr<CNotingListener>> vecListener;
            std::vector<CModelTimer> vecModel;
            VecCall vecExpected;
            m_vecCall.clear();
            for (const unsigned int uiDelay : DELAYS) {
                for (const unsigned int uiRepeat : {0u, 1u, 3u, 50u}) {
                    const std::string strName = std::to_string(uiDelay) + "/" + std::to_string(uiRepeat) + ":";
                    vecListener.push_back(std::make_unique<CNotingListener>(m_vecCall, strName));
                    vecTimer.push_back(std::make_unique<CTimer>(uiDelay, uiRepeat));
                    vecTimer.back()->setListener(vecListener.back().get());
                    vecTimer.back()->start();
                    vecModel.emplace_back(strName, uiDelay, uiRepeat, m_uiTick);
                    advance(random() % 3);
                }
            }
            runVirtual(
                [&](unsigned int uiStep) {
                    drain(); // before the cycle, so that each cycle's message is handled by itself
                    advance(uiStep == 100 ? uiHang : random() % 4);
                    if (uiStep == 600) {
                        m_pManager->prepareStopThread();
                        return;
                    }
                    for (CModelTimer& model : vecModel)
                        model.cycle(m_uiTick, vecExpected);
                },
                [] { FAIL() << "timers are listed"; });
            drain();
            ASSERT_EQ(m_vecCall, vecExpected);
            EXPECT_GT(m_vecCall.size(), 1500u);
        }
    }
}

TEST_F(CTimerManagerTest, AHostThatSleepsHalfASecondFindsEveryPulseInOneMessage) {
    std::vector<std::unique_ptr<CTimer>> vecTimer;
    std::vector<std::unique_ptr<CNotingListener>> vecListener;
    std::vector<CModelTimer> vecModel;
    VecCall vecExpected;
    for (const unsigned int uiDelay : DELAYS) {
        const std::string strName = std::to_string(uiDelay) + ":";
        vecListener.push_back(std::make_unique<CNotingListener>(m_vecCall, strName));
        vecTimer.push_back(std::make_unique<CTimer>(uiDelay, 0));
        vecTimer.back()->setListener(vecListener.back().get());
        vecTimer.back()->start();
        vecModel.emplace_back(strName, uiDelay, 0, 0);
    }
    for (int iRound = 0; iRound < 4; ++iRound) {
        for (unsigned int i = 0; i < 50; ++i) {
            advance(10);
            m_pManager->pulseTimers();
            for (CModelTimer& model : vecModel)
                model.cycle(m_uiTick, vecExpected);
        }
        EXPECT_EQ(m_pCenter->getMessageCount(), 1u);
        EXPECT_EQ(drain(), 1u);
        EXPECT_EQ(m_vecCall, vecExpected);
    }
    EXPECT_EQ(std::count(m_vecCall.begin(), m_vecCall.end(), "1000:2"), 1);
}

TEST_F(CTimerManagerTest, AShortDelayFallsEverFurtherBehind) {
    CTimer timer(5, 0);
    timer.start();
    for (unsigned int i = 1; i <= 20; ++i) {
        cycle(i * 10);
        EXPECT_EQ(timer.getCurrentCount(), i) << "of " << i * 2 << " that were due";
    }
    drain();
}

TEST_F(CTimerManagerTest, OneCyclePostsOneMessageInTheOrderOfTheStarts) {
    CNotingListener a(m_vecCall, "a"), b(m_vecCall, "b"), c(m_vecCall, "c");
    CTimer timerA(10, 0), timerB(10, 1), timerC(20, 0);
    timerA.setListener(&a);
    timerB.setListener(&b);
    timerC.setListener(&c);
    timerC.start();
    timerB.start();
    timerA.start();
    cycle(9);
    EXPECT_EQ(m_pCenter->getMessageCount(), 0u) << "nothing due, nothing posted";
    cycle(20);
    EXPECT_EQ(drain(), 1u);
    EXPECT_EQ(m_vecCall, (VecCall{"c1", "bcomplete", "a1"}));
    EXPECT_EQ(m_pManager->m_aryPulse.getSize(), 0u);
    EXPECT_EQ(m_pManager->m_aryTimer.getSize(), 2u);
    EXPECT_EQ(m_pManager->m_aryTimer[0], &timerC);
    EXPECT_EQ(m_pManager->m_aryTimer[1], &timerA) << "examined although the one before it went";
}

TEST_F(CTimerManagerTest, WithoutTimersTheThreadBlocks) {
    CTimer timer(10, 2);
    unsigned int uiBlocked = 0, uiSleeps = 0;
    runVirtual([&](unsigned int) { ++uiSleeps; },
               [&] {
                   if (++uiBlocked == 1)
                       timer.start();
                   else
                       m_pManager->prepareStopThread();
               });
    EXPECT_EQ(uiBlocked, 2u) << "before the timer and behind its end, and not in between";
    EXPECT_EQ(uiSleeps, 2u);
    drain();
}

TEST_F(CTimerManagerTest, AStopIsSeenBeforeAndBehindTheSleep) {
    CTimer timer(0, 0);
    timer.start();
    unsigned int uiSleeps = 0;
    runVirtual(
        [&](unsigned int) {
            ++uiSleeps;
            m_pManager->prepareStopThread();
        },
        [] { FAIL(); });
    EXPECT_EQ(uiSleeps, 1u);
    EXPECT_EQ(timer.getCurrentCount(), 0u) << "no cycle behind the stop";
    runVirtual([](unsigned int) { FAIL() << "asked to stop already"; }, [] {});
}

TEST_F(CTimerManagerTest, TheFirstCycleOfAnEarlyTimerNeedsNoFurtherWakeUp) {
    CTimer timer(10, 0);
    unsigned int uiSleeps = 0;
    CWaitAccess::replace(m_pManager->m_waitWake, new CScriptedWait([] { FAIL(); }, [](unsigned int) { FAIL(); }));
    timer.start(); // before the thread: the wake-up is remembered
    CWaitAccess::replace(m_pManager->m_waitSleep, new CScriptedWait([] { FAIL(); },
                                                                    [&](unsigned int) {
                                                                        ++uiSleeps;
                                                                        m_pManager->prepareStopThread();
                                                                    }));
    m_pManager->run();
    EXPECT_EQ(uiSleeps, 1u);
}

// ---- Adding and removing

TEST_F(CTimerManagerTest, ATimerIsListedOnce) {
    CTimer timerA, timerB;
    m_pManager->addTimer(nullptr);
    m_pManager->addTimer(&timerA);
    m_pManager->addTimer(&timerB);
    m_pManager->addTimer(&timerA);
    ASSERT_EQ(m_pManager->m_aryTimer.getSize(), 2u);
    EXPECT_EQ(m_pManager->m_aryTimer[0], &timerA);
    m_pManager->removeTimer(nullptr);
    m_pManager->removeTimer(&timerA);
    EXPECT_EQ(m_pManager->m_aryTimer.getSize(), 1u);
    m_pManager->removeTimer(&timerB);
    EXPECT_EQ(m_pManager->m_aryTimer.getSize(), 0u);
    EXPECT_EQ(m_pManager->m_aryDeletedID.getSize(), 2u);
}

TEST_F(CTimerManagerTest, AnAddedTimerWakesTheThreadAndAListedOneDoesNot) {
    CTimer timer;
    int iBlocked = 0;
    CWaitAccess::replace(m_pManager->m_waitWake, new CScriptedWait([&] { ++iBlocked; }, [](unsigned int) {}));
    m_pManager->addTimer(&timer);
    m_pManager->m_waitWake.wait(0);
    EXPECT_EQ(iBlocked, 0);
    m_pManager->addTimer(&timer);
    m_pManager->m_waitWake.wait(0);
    EXPECT_EQ(iBlocked, 1);
}

TEST_F(CTimerManagerTest, ARemovedTimerIsNotedOnceAndForgottenWhenAddedAgain) {
    CTimer timer;
    m_pManager->removeTimer(&timer); // also one that was not listed
    m_pManager->removeTimer(&timer);
    EXPECT_EQ(m_pManager->m_aryDeletedID.getSize(), 1u);
    EXPECT_TRUE(m_pManager->checkIsDeletedTimer(timer.getID()));
    EXPECT_FALSE(m_pManager->checkIsDeletedTimer(timer.getID() + 1));
    m_pManager->addTimer(&timer);
    EXPECT_FALSE(m_pManager->checkIsDeletedTimer(timer.getID()));
    m_pManager->removeTimer(&timer);
    m_pManager->clearDeletedTimer();
    EXPECT_FALSE(m_pManager->checkIsDeletedTimer(timer.getID()));
    EXPECT_EQ(m_pManager->m_aryDeletedID.getCapacity(), 0u) << "the storage goes too";
}

TEST_F(CTimerManagerTest, AddingAListedTimerLeavesItsIDNoted) {
    CTimer timer;
    m_pManager->addTimer(&timer);
    m_pManager->m_aryTimer.clear();
    m_pManager->removeTimer(&timer);
    m_pManager->m_aryTimer.add(&timer);
    m_pManager->addTimer(&timer);
    EXPECT_TRUE(m_pManager->checkIsDeletedTimer(timer.getID()));
    m_pManager->m_aryTimer.clear();
}

TEST_F(CTimerManagerTest, AStoppedAndRestartedTimerPulses) {
    CNotingListener listener(m_vecCall);
    CTimer timer(10, 0);
    timer.setListener(&listener);
    timer.start();
    cycle(10);
    timer.stop();
    timer.start();
    cycle(20);
    drain();
    EXPECT_EQ(m_vecCall, VecCall{"1"}) << "of the second start";
}

/** Ends another timer from within the pulse of the first. */
class CEnding : public ITimerListener {
public:
    explicit CEnding(std::function<void()> fnEnd) : m_fnEnd(std::move(fnEnd)) {}
    void onTimer(const CTimer*, unsigned int) override { m_fnEnd(); }

private:
    std::function<void()> m_fnEnd;
};

TEST_F(CTimerManagerTest, ATimerStoppedOrDestroyedByAnotherInTheSameMessageIsSkipped) {
    for (const bool bDestroy : {false, true}) {
        m_vecCall.clear();
        CNotingListener b(m_vecCall, "b"), c(m_vecCall, "c");
        CTimer timerA(10, 0), timerC(10, 0);
        auto ptrB = std::make_unique<CTimer>(10u, 0u);
        CEnding ending([&] {
            if (bDestroy)
                ptrB.reset();
            else
                ptrB->stop();
        });
        timerA.setListener(&ending);
        ptrB->setListener(&b);
        timerC.setListener(&c);
        timerA.start();
        ptrB->start();
        timerC.start();
        m_uiTick += 10;
        cycle(m_uiTick);
        m_uiTick += 10;
        cycle(m_uiTick);
        EXPECT_EQ(drain(), 1u);
        EXPECT_EQ(m_vecCall, (VecCall{"c1", "c2"}));
        EXPECT_EQ(m_pManager->m_aryDeletedID.getSize(), 0u);
    }
}

TEST_F(CTimerManagerTest, ThousandsComeAndGoLikeInPlainArrays) {
    constexpr unsigned int TIMERS = 3000;
    std::mt19937 random(5);
    std::vector<std::unique_ptr<CTimer>> vecTimer;
    for (unsigned int i = 0; i < TIMERS; ++i)
        vecTimer.push_back(std::make_unique<CTimer>(1000000, 0));
    std::vector<CTimer*> vecListed;
    std::vector<unsigned int> vecDeleted;
    for (int i = 0; i < 20000; ++i) {
        CTimer* const pTimer = vecTimer[random() % TIMERS].get();
        const auto listed = std::find(vecListed.begin(), vecListed.end(), pTimer);
        const auto deleted = std::find(vecDeleted.begin(), vecDeleted.end(), pTimer->getID());
        const bool bMostlyStarts = i / 5000 % 2 == 0;
        if ((random() % 4 == 0) != bMostlyStarts) {
            pTimer->start();
            if (listed == vecListed.end()) {
                vecListed.push_back(pTimer);
                if (deleted != vecDeleted.end())
                    vecDeleted.erase(deleted);
            }
        } else {
            pTimer->stop();
            if (listed != vecListed.end())
                vecListed.erase(listed);
            if (deleted == vecDeleted.end())
                vecDeleted.push_back(pTimer->getID());
        }
        CTimer* const pAsked = vecTimer[random() % TIMERS].get();
        ASSERT_EQ(m_pManager->checkIsDeletedTimer(pAsked->getID()),
                  std::find(vecDeleted.begin(), vecDeleted.end(), pAsked->getID()) != vecDeleted.end());
        if (i % 200 != 0)
            continue;
        ASSERT_EQ(m_pManager->m_aryTimer.getSize(), vecListed.size());
        for (unsigned int k = 0; k < vecListed.size(); ++k)
            ASSERT_EQ(m_pManager->m_aryTimer[k], vecListed[k]) << i;
        ASSERT_EQ(m_pManager->m_aryDeletedID.getSize(), vecDeleted.size());
        for (unsigned int k = 0; k < vecDeleted.size(); ++k)
            ASSERT_EQ(m_pManager->m_aryDeletedID[k], vecDeleted[k]) << i;
    }
}

TEST_F(CTimerManagerTest, ANullPulseIsIgnored) {
    m_pManager->timerPulse(nullptr);
    EXPECT_EQ(m_pManager->m_aryPulse.getSize(), 0u);
}

// ---- The thread itself, in real time

/** The manager with its thread on the real clock; what is measured has room to spare. */
class CTimerThreadTest : public ::testing::Test {
protected:
    CTimerThreadTest() : m_pCenter(CMessageCenter::getInstance()), m_pManager(COpenManager::install()) {
        CTime::getTickCount();
    }
    ~CTimerThreadTest() override {
        m_pManager->stop();
        CTimerManager::deleteInstance();
        CMessageCenter::deleteInstance();
        CConfigParser::deleteInstance();
    }
    template <class F> void drainUntil(F fnDone) {
        while (!fnDone()) {
            const CObjectPtr<CBaseMessage> ptrMessage = m_pCenter->popMessage();
            if (ptrMessage.isEmpty())
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            else
                ptrMessage->handleMessage();
        }
    }
    CMessageCenter* const m_pCenter;
    COpenManager* const m_pManager;
    VecCall m_vecCall;
};

TEST_F(CTimerThreadTest, TakesItsNameAndPriorityFromTheConfiguration) {
    const CTempFolder folder;
    const std::string strPath = folder / "engine.xml";
    writeWhole(strPath,
               "<engine><thread_set><thread id=\"tm\" name=\"clockwork\" priority=\"7\"/></thread_set></engine>");
    ASSERT_TRUE(CConfigParser::getInstance()->load(toText(strPath)));
    m_pManager->start();
    EXPECT_TRUE(m_pManager->getThreadName() == L"clockwork");
    EXPECT_EQ(m_pManager->getThreadPriority(), 7);
    EXPECT_NE(m_pManager->getThreadID(), 0u) << "start waits for the thread";
    m_pManager->setThreadName(L"other");
    m_pManager->start();
    EXPECT_TRUE(m_pManager->getThreadName() == L"other") << "it runs already: nothing happens";
}

TEST_F(CTimerThreadTest, TimersPulseStopAndGoOnWithTheNextStart) {
    CNotingListener listener(m_vecCall);
    CTimer timer(10, 0);
    timer.setListener(&listener);
    m_pManager->stop(); // not running: nothing
    timer.start();
    m_pManager->start();
    drainUntil([&] { return m_vecCall.size() >= 3; });
    m_pManager->stop();
    EXPECT_FALSE(m_pManager->m_bRunning);
    EXPECT_TRUE(m_pManager->isPrepareStopThread());
    drainUntil([&] { return m_pCenter->getMessageCount() == 0; });
    const std::size_t uiHeard = m_vecCall.size();
    m_pManager->start(); // nobody starts a timer: the listed one goes on
    drainUntil([&] { return m_vecCall.size() >= uiHeard + 3; });
    for (std::size_t i = 0; i < m_vecCall.size(); ++i)
        EXPECT_EQ(m_vecCall[i], std::to_string(i + 1));
    timer.stop();
}

TEST_F(CTimerThreadTest, IsIdleWithoutTimersAndStopsAtOnce) {
    for (int i = 0; i < 20; ++i) {
        m_pManager->start();
        m_pManager->stop();
    }
    EXPECT_EQ(m_pCenter->getMessageCount(), 0u);
}

TEST_F(CTimerThreadTest, AStopTakesAboutOneCycle) {
    CTimer timer(0, 0);
    timer.start();
    m_pManager->start();
    drainUntil([&] { return timer.getCurrentCount() >= 2; });
    const auto start = std::chrono::steady_clock::now();
    m_pManager->stop();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
    timer.stop();
}
} // namespace
