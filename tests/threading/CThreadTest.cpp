#include <Orlix/threading/CThread.h>

#include <Orlix/formats/CConfigParser.h>
#include <Orlix/system/CLog.h>
#include <Orlix/system/ILogOuter.h>
#include <Orlix/threading/CImpThread.h>

#include "support/ThreadStandIn.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <pthread.h>
#include <sched.h>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

using namespace Orlix;
using namespace OrlixTest;

namespace {

static_assert(!std::is_base_of<CObject, CThread>::value, "a thread has no base class");
static_assert(std::is_base_of<IThread, CImpThread>::value && std::is_abstract<CThread>::value, "run is the subclass's");

/** What the tests want to see of any thread. */
class COpenThread : public CThread {
public:
    COpenThread() = default;
    /** @param fnRun the work. */
    explicit COpenThread(std::function<void(COpenThread&)> fnRun) : m_fnRun(std::move(fnRun)) {}
    ~COpenThread() override { stopThread(); }

    void run() override {
        if (m_fnRun)
            m_fnRun(*this);
        else
            sleepUntilStop();
    }
    void sleepUntilStop() {
        while (!isPrepareStopThread())
            m_waitWake.wait(0);
    }
    /** Waits for a thread that ends by itself, also if it has ended already, and then sees all that it wrote. */
    void awaitEnd() {
        waitForThreadStop();
        while (!m_bOver.exchange(false))
            std::this_thread::yield();
    }
    /** Joins the system's thread, which works since the library neither joins nor detaches one. */
    void* join() {
        void* pResult = nullptr;
        EXPECT_EQ(pthread_join(m_thread, &pResult), 0);
        return pResult;
    }
    void notifyThreadStarted(unsigned int uiThreadID) override {
        m_thread = pthread_self();
        CThread::notifyThreadStarted(uiThreadID);
        m_strOrder += "started ";
    }
    void notifyThreadStopped() override {
        m_strOrder += "stopped ";
        m_bOver = true;
        CThread::notifyThreadStopped();
    }

    using CThread::m_bPrepareStop;
    using CThread::m_bRunning;
    using CThread::m_iPriority;
    using CThread::m_pImp;
    using CThread::m_strName;
    using CThread::m_syncObject;
    using CThread::m_uiThreadID;
    using CThread::m_waitStart;
    using CThread::m_waitStop;
    using CThread::m_waitWake;

    pthread_t m_thread{};
    std::string m_strOrder;
    std::atomic<bool> m_bOver{false};

private:
    std::function<void(COpenThread&)> m_fnRun;
};

/** A system's side that starts nothing. */
class CIdleImp : public IThread {
    ORLIX_HEAP_CLASS(L"CIdleImp")

public:
    CIdleImp(int& iStarts, int& iAlive) : m_iStarts(iStarts), m_iAlive(iAlive) { ++iAlive; }
    ~CIdleImp() override { --m_iAlive; }
    void start() override { ++m_iStarts; }

private:
    int& m_iStarts;
    int& m_iAlive;
};

/** The log asks the configuration, which is made before there are threads and goes with the test. */
class CThreadTest : public ::testing::Test {
protected:
    CThreadTest() { CConfigParser::getInstance(); }
    ~CThreadTest() override { CConfigParser::deleteInstance(); }
};

/** The lines that the log gets, from any thread. */
class CLogLines : public ILogOuter {
public:
    CLogLines() { CLog::setLogOuter(this); }
    ~CLogLines() override { CLog::setLogOuter(nullptr); }
    void writeLog(const CString& strLevel, const CString& strSource, const CString& strText) override {
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (const CString* const pText : {&strLevel, &strSource, &strText})
            m_strLines.append(pText->getBuffer()).append(pText == &strText ? L"\n" : L"|");
    }
    std::wstring getLines() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_strLines;
    }

private:
    std::mutex m_mutex;
    std::wstring m_strLines;
};

std::string nameOf(pthread_t thread) {
    char szName[64] = "";
    EXPECT_EQ(pthread_getname_np(thread, szName, sizeof(szName)), 0);
    return szName;
}

/** The name that the system knows a thread by, once it runs. */
std::string nameWhenNamed(const CString& strName) {
    std::string strFound;
    COpenThread thread([&](COpenThread& own) {
        strFound = nameOf(pthread_self());
        own.m_waitStart.notify();
    });
    thread.setThreadName(strName);
    thread.startThread();
    thread.awaitEnd();
    thread.join();
    return strFound;
}

TEST_F(CThreadTest, AStopThatComesLateLetsTheThreadLeaveTheObject) {
    CThreadStandIn standIn;
    COpenThread thread([](COpenThread&) {});
    standIn.m_bHoldSignals = true;
    thread.startThread();
    while (!standIn.m_bSignalIsHeld || thread.m_bRunning) // it has nothing left to do but to announce its end
        std::this_thread::yield();
    std::atomic<bool> bStopping{false}, bStopped{false};
    std::thread stopper([&] {
        bStopping = true;
        thread.stopThread();
        bStopped = true;
    });
    while (!bStopping)
        std::this_thread::yield();
    for (int i = 0; i < 1000; ++i)
        std::this_thread::yield();
    EXPECT_FALSE(bStopped) << "the object could be destroyed under the thread";
    standIn.m_bHoldSignals = false;
    stopper.join();
}

TEST_F(CThreadTest, StartsAsItShould) {
    const COpenThread thread;
    EXPECT_EQ(thread.getThreadPriority(), 51);
    EXPECT_TRUE(thread.getThreadName() == L"Unknown");
    EXPECT_EQ(thread.getThreadID(), 0u);
    EXPECT_FALSE(thread.isPrepareStopThread());
    EXPECT_FALSE(thread.m_bRunning);
    EXPECT_NE(thread.m_pImp, nullptr);
}

TEST_F(CThreadTest, FieldsStandInTheirOrder) {
    const COpenThread thread;
    const void* const aryField[] = {
        &thread.m_iPriority,  &thread.m_strName,  &thread.m_uiThreadID, &thread.m_bRunning, &thread.m_bPrepareStop,
        &thread.m_syncObject, &thread.m_waitWake, &thread.m_waitStart,  &thread.m_waitStop, &thread.m_pImp};
    for (std::size_t i = 1; i < std::size(aryField); ++i)
        EXPECT_LT(aryField[i - 1], aryField[i]) << i;
}

TEST_F(CThreadTest, NameAndPriorityAreKeptForTheNextStart) {
    COpenThread thread;
    thread.setThreadPriority(-7);
    thread.setThreadName(L"worker");
    EXPECT_EQ(thread.getThreadPriority(), -7);
    EXPECT_TRUE(thread.getThreadName() == L"worker");
    const CString& strSame = thread.getThreadName();
    EXPECT_EQ(&strSame, &thread.m_strName) << "a reference, no copy";
}

TEST_F(CThreadTest, TheNewThreadGoesThroughItsStepsInOrder) {
    CThreadStandIn standIn;
    int iPolicy = -1;
    unsigned int uiIDInRun = 0;
    COpenThread thread([&](COpenThread& own) {
        sched_param param{};
        pthread_getschedparam(pthread_self(), &iPolicy, &param);
        uiIDInRun = own.getThreadID();
        standIn.note("run " + nameOf(pthread_self()) + " " + own.m_strOrder);
    });
    thread.setThreadName(L"steps");
    thread.setThreadPriority(1);
    thread.startThread();
    thread.awaitEnd();
    // The name is in force and the start was told before run; the policy is the one that was there.
    const std::vector<std::string> vecExpected{"get", "set " + std::to_string(iPolicy) + " 1", "get",
                                               "run steps started "};
    EXPECT_EQ(standIn.getCalls(), vecExpected);
    EXPECT_EQ(thread.m_strOrder, "started stopped ");
    EXPECT_EQ(uiIDInRun, static_cast<unsigned int>(thread.m_thread)) << "the low 32 bits of the handle";
    EXPECT_EQ(thread.join(), static_cast<CThread*>(&thread)) << "the argument comes back, to whoever joins";
}

TEST_F(CThreadTest, ThePriorityIsAppliedWhereThePolicyAllowsIt) {
    sched_param before{}, fifo{}, inRun{};
    int iBefore = 0, iInRun = 0;
    pthread_getschedparam(pthread_self(), &iBefore, &before);
    fifo.sched_priority = 1;
    const bool bAllowed = pthread_setschedparam(pthread_self(), SCHED_FIFO, &fifo) == 0;
    COpenThread thread([&](COpenThread&) { pthread_getschedparam(pthread_self(), &iInRun, &inRun); });
    thread.startThread();
    thread.awaitEnd();
    thread.join();
    pthread_setschedparam(pthread_self(), iBefore, &before);
    EXPECT_EQ(iInRun, bAllowed ? SCHED_FIFO : iBefore) << "the policy never changes";
    EXPECT_EQ(inRun.sched_priority, bAllowed ? 51 : 0) << "a refusal is ignored";
}

TEST_F(CThreadTest, WithoutItsSchedulingAThreadRunsAllTheSame) {
    CThreadStandIn standIn;
    standIn.m_bNoSchedule = true;
    bool bRun = false;
    COpenThread thread([&](COpenThread&) { bRun = true; });
    thread.startThread();
    thread.awaitEnd();
    thread.join();
    EXPECT_TRUE(bRun);
    EXPECT_EQ(standIn.getCalls(), std::vector<std::string>{"get"}) << "nothing is set";
}

TEST_F(CThreadTest, TheSystemKnowsTheThreadByItsName) {
    EXPECT_EQ(nameWhenNamed(L"timer"), "timer");
    EXPECT_EQ(nameWhenNamed(L"123456789012345"), "123456789012345");
    EXPECT_EQ(nameWhenNamed(L"\x5DE5\x4F5C"), "\xE5\xB7\xA5\xE4\xBD\x9C") << "three bytes a character";
    EXPECT_EQ(nameWhenNamed(L"\x5DE5\x4F5C\x7EBF\x7A0B\x540D"),
              "\xE5\xB7\xA5\xE4\xBD\x9C\xE7\xBA\xBF\xE7\xA8\x8B\xE5\x90\x8D");
    EXPECT_EQ(nameWhenNamed(L""), "");
    EXPECT_EQ(nameWhenNamed(STRING_NULL), "");
}

TEST_F(CThreadTest, ANameThatIsTooLongLeavesTheThreadTheOneItHad) {
    const std::string strOwn = nameOf(pthread_self()); // a new thread has the name of its maker
    EXPECT_EQ(nameWhenNamed(L"1234567890123456"), strOwn);
}

TEST_F(CThreadTest, AStartSetsTheFlagsAndStartsOnce) {
    int iStarts = 0, iAlive = 0;
    {
        COpenThread thread;
        delete thread.m_pImp;
        thread.m_pImp = new CIdleImp(iStarts, iAlive);
        thread.m_bPrepareStop = true;
        thread.m_uiThreadID = 5;
        thread.startThread();
        EXPECT_EQ(iStarts, 1);
        EXPECT_TRUE(thread.m_bRunning);
        EXPECT_FALSE(thread.m_bPrepareStop);
        EXPECT_EQ(thread.m_uiThreadID, 0u);

        thread.m_bPrepareStop = true;
        thread.m_uiThreadID = 5;
        thread.startThread();
        EXPECT_EQ(iStarts, 1) << "it runs already";
        EXPECT_TRUE(thread.m_bPrepareStop) << "stays as it was";
        EXPECT_EQ(thread.m_uiThreadID, 5u);
        thread.m_bRunning = false;
    }
    EXPECT_EQ(iAlive, 0) << "the system's side goes with the thread";
}

TEST_F(CThreadTest, StoppingAnIdleThreadDoesNothing) {
    COpenThread thread;
    thread.stopThread();
    thread.waitForThreadStop();
    EXPECT_FALSE(thread.isPrepareStopThread());
    EXPECT_EQ(thread.m_strOrder, "");
}

TEST_F(CThreadTest, AStopEndsTheRunAndIsOverWhenTheThreadIs) {
    std::atomic<bool> bEnded{false};
    COpenThread thread([&](COpenThread& own) {
        own.m_waitStart.notify();
        own.sleepUntilStop();
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        bEnded = true;
    });
    thread.startThread();
    thread.m_waitStart.wait(0);
    EXPECT_NE(thread.getThreadID(), 0u);
    thread.stopThread();
    EXPECT_TRUE(bEnded);
    EXPECT_EQ(thread.m_strOrder, "started stopped ");
    EXPECT_EQ(thread.getThreadID(), 0u);
    EXPECT_FALSE(thread.m_bRunning);
    EXPECT_TRUE(thread.isPrepareStopThread()) << "stays until the next start";
    thread.stopThread();
    EXPECT_EQ(thread.m_strOrder, "started stopped ");
    thread.join();
}

TEST_F(CThreadTest, AStopAsksThroughTheSubclass) {
    class CAsked : public COpenThread {
    public:
        ~CAsked() override { stopThread(); }
        void prepareStopThread() override {
            ++m_iAsked;
            COpenThread::prepareStopThread();
        }
        int m_iAsked = 0;
    } thread;
    thread.startThread();
    thread.stopThread();
    EXPECT_EQ(thread.m_iAsked, 1);
    thread.join();
}

TEST_F(CThreadTest, WaitingForTheEndAsksForNothing) {
    bool bAsked = true;
    COpenThread thread([&](COpenThread& own) {
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        bAsked = own.isPrepareStopThread();
    });
    thread.startThread();
    thread.awaitEnd();
    EXPECT_FALSE(bAsked);
    EXPECT_EQ(thread.m_strOrder, "started stopped ");
    thread.join();
}

TEST_F(CThreadTest, AStopRequestToAnIdleThreadIsRememberedAsAWakeUp) {
    bool bStopSeen = true;
    COpenThread thread([&](COpenThread& own) {
        own.m_waitWake.wait(0); // the remembered one: nobody else notifies
        bStopSeen = own.isPrepareStopThread();
    });
    thread.prepareStopThread();
    EXPECT_TRUE(thread.isPrepareStopThread());
    EXPECT_FALSE(thread.m_bRunning);
    thread.startThread();
    thread.awaitEnd();
    EXPECT_FALSE(bStopSeen) << "the start has cleared the flag";
    thread.join();
}

TEST_F(CThreadTest, CanBeStartedAgain) {
    int iRuns = 0;
    COpenThread thread([&](COpenThread& own) {
        ++iRuns;
        own.sleepUntilStop();
    });
    for (int i = 0; i < 5; ++i) {
        thread.startThread();
        thread.stopThread();
        thread.join();
    }
    EXPECT_EQ(iRuns, 5);
    EXPECT_EQ(thread.m_strOrder, "started stopped started stopped started stopped started stopped started stopped ");
}

TEST_F(CThreadTest, TheEndOfAnEarlierRunDoesNotCountAsTheEndOfThis) {
    std::atomic<int> iRuns{0}, iEnds{0};
    COpenThread thread([&](COpenThread& own) {
        if (++iRuns == 1)
            return; // ends by itself, and nobody waits for it
        own.sleepUntilStop();
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        ++iEnds;
    });
    thread.startThread();
    while (!thread.m_bOver)
        std::this_thread::yield();
    thread.join(); // its announcement is made
    thread.startThread();
    thread.stopThread();
    EXPECT_EQ(iEnds, 1);
    thread.join();
}

TEST_F(CThreadTest, AnAnnouncementOfNothingEndsNoWait) {
    std::atomic<bool> bEnded{false};
    COpenThread thread([&](COpenThread& own) {
        own.m_waitStop.notify(); // as a late end of an earlier run
        own.m_waitStart.notify();
        own.sleepUntilStop();
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        bEnded = true;
    });
    thread.startThread();
    thread.m_waitStart.wait(0);
    thread.stopThread();
    EXPECT_TRUE(bEnded);
    thread.join();
}

TEST_F(CThreadTest, CanBeDestroyedAsSoonAsTheStopIsOver) {
    for (int i = 0; i < 200; ++i) {
        COpenThread* const pThread = new COpenThread;
        pThread->startThread();
        pThread->stopThread();
        const pthread_t thread = pThread->m_thread;
        delete pThread;
        pthread_join(thread, nullptr);
    }
}

TEST_F(CThreadTest, EachRunLogsItsStartAndItsEnd) {
    CLogLines log;
    std::wstring strExpected, strAtRun;
    COpenThread thread([&](COpenThread&) { strAtRun = log.getLines(); });
    for (const wchar_t* const pName : {L"one", L"", static_cast<const wchar_t*>(nullptr)}) {
        thread.setThreadName(pName);
        thread.startThread();
        thread.awaitEnd();
        thread.join();
        const std::wstring strThread = L"Info|OrlixEngine|Thread (ID: " +
                                       std::to_wstring(static_cast<unsigned int>(thread.m_thread)) + L", Name: " +
                                       (pName ? pName : L"") + L") ";
        strExpected += strThread + L"starts.\n";
        EXPECT_EQ(strAtRun, strExpected) << "before run";
        strExpected += strThread + L"exits.\n";
        EXPECT_EQ(log.getLines(), strExpected);
    }
}

TEST_F(CThreadTest, TheIDIsLoggedAsAnUnsignedNumber) {
    CLogLines log;
    COpenThread thread;
    thread.notifyThreadStarted(0xFFFFFFFFu);
    EXPECT_EQ(thread.getThreadID(), 0xFFFFFFFFu);
    thread.notifyThreadStopped();
    EXPECT_EQ(thread.getThreadID(), 0u);
    EXPECT_EQ(log.getLines(), L"Info|OrlixEngine|Thread (ID: 4294967295, Name: Unknown) starts.\n"
                              L"Info|OrlixEngine|Thread (ID: 4294967295, Name: Unknown) exits.\n");
}

TEST_F(CThreadTest, WithoutResourcesItStaysRunningWithNothingBehindIt) {
    class CHugeImp : public CImpThread {
    public:
        explicit CHugeImp(CThread* pThread) : CImpThread(pThread) {
            pthread_attr_setstacksize(&m_attr, std::size_t{1} << 47); // more than there are addresses
        }
    };
    COpenThread thread;
    delete thread.m_pImp;
    thread.m_pImp = new CHugeImp(&thread);
    thread.startThread();
    EXPECT_TRUE(thread.m_bRunning);
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_EQ(thread.m_strOrder, "");
    EXPECT_TRUE(thread.m_bRunning);
    thread.m_bRunning = false; // otherwise the stop would wait for ever
}
} // namespace
