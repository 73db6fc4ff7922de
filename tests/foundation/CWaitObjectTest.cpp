#include <Orlix/foundation/CWaitObject.h>

#include <Orlix/foundation/CImpWaitObject.h>
#include <Orlix/foundation/CString.h>

#include "support/ClockStandIn.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <fstream>
#include <string>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

using namespace Orlix;

namespace {

template <class F> long long measureMilliseconds(F fnBody) {
    const auto start = std::chrono::steady_clock::now();
    fnBody();
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start).count();
}

/** A thread in one limited wait. */
class CSleeper {
public:
    explicit CSleeper(CWaitObject& waitObject)
        : m_thread([this, &waitObject] {
              m_iThread = static_cast<int>(syscall(SYS_gettid));
              m_iTook = measureMilliseconds([&] { waitObject.wait(60000); });
          }) {
        while (!isAsleep())
            std::this_thread::yield();
    }

    /** How long the wait took. */
    long long join() {
        m_thread.join();
        return m_iTook;
    }

private:
    std::atomic<int> m_iThread{0};
    long long m_iTook = 0;
    std::thread m_thread; // last, so that what it writes exists before it

    bool isAsleep() const {
        std::ifstream file("/proc/self/task/" + std::to_string(m_iThread) + "/stat");
        std::string strNumber, strName, strState;
        file >> strNumber >> strName >> strState;
        return strState == "S";
    }
};

class CRecorder final : public IWaitObject {
    ORLIX_HEAP_CLASS(L"CRecorder")

public:
    explicit CRecorder(std::string& strCalls) : m_strCalls(strCalls) {}
    ~CRecorder() override { m_strCalls += "gone "; }
    void reset() override { m_strCalls += "reset "; }
    void wait(unsigned int uiMilliseconds) override { m_strCalls += "wait" + std::to_string(uiMilliseconds) + " "; }
    void forceWait(unsigned int uiMilliseconds) override {
        m_strCalls += "force" + std::to_string(uiMilliseconds) + " ";
    }
    void notify() override { m_strCalls += "notify "; }

private:
    std::string& m_strCalls;
};

class CRecordedWait : public CWaitObject {
public:
    explicit CRecordedWait(std::string& strCalls) : CWaitObject(STRING_NULL) {
        delete m_pImp;
        m_pImp = new CRecorder(strCalls);
    }
};

class CWaitObjectTest : public testing::Test {
protected:
    CWaitObject m_wait{STRING_NULL};
};

TEST_F(CWaitObjectTest, ForwardsToItsImplementationAndDeletesIt) {
    std::string strCalls;
    {
        CRecordedWait wait(strCalls);
        wait.wait(5);
        wait.forceWait(6);
        wait.notify();
        static_cast<CObject&>(wait).reset();
    }
    EXPECT_EQ(strCalls, "wait5 force6 notify reset gone ");
}

TEST_F(CWaitObjectTest, RememberedSignalEndsAWaitWithoutLimitAtOnce) {
    m_wait.notify();
    m_wait.wait(0); // hangs if the signal was lost
    EXPECT_GE(measureMilliseconds([&] { m_wait.wait(10); }), 10) << "the signal was not taken";
}

TEST_F(CWaitObjectTest, RememberedSignalEndsALimitedWaitAtOnce) {
    m_wait.notify();
    EXPECT_LT(measureMilliseconds([&] { m_wait.wait(60000); }), 30000);
    EXPECT_GE(measureMilliseconds([&] { m_wait.wait(10); }), 10) << "the signal was not taken";
}

TEST_F(CWaitObjectTest, SeveralSignalsCountAsOne) {
    m_wait.notify();
    m_wait.notify();
    m_wait.notify();
    m_wait.wait(0);
    EXPECT_GE(measureMilliseconds([&] { m_wait.wait(20); }), 20);
}

TEST_F(CWaitObjectTest, ResetLeavesTheSignalPending) {
    m_wait.notify();
    m_wait.reset();
    m_wait.wait(0); // hangs if reset took the signal
}

TEST_F(CWaitObjectTest, LimitIsCountedInMilliseconds) {
    for (const int iLimit : {1, 30, 999, 1050}) {
        const long long iTook = measureMilliseconds([&] { m_wait.wait(static_cast<unsigned int>(iLimit)); });
        EXPECT_GE(iTook, iLimit);
        EXPECT_LT(iTook, iLimit + 10000);
    }
}

TEST_F(CWaitObjectTest, SignalOfAnotherThreadWakesTheWaiter) {
    for (const unsigned int uiLimit : {0u, 60000u}) {
        std::atomic<bool> bNotified{false};
        std::thread other([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(20)); // lets the waiter block in most runs
            bNotified = true;
            m_wait.notify();
        });
        EXPECT_LT(measureMilliseconds([&] { m_wait.wait(uiLimit); }), 30000);
        EXPECT_TRUE(bNotified) << "woke before the signal";
        other.join();
    }
}

TEST_F(CWaitObjectTest, EachSignalWakesOneOfTheSleepers) {
    for (int i = 0; i < 50; ++i) { // the second signal most often comes before the first one woken has taken its own
        CSleeper first(m_wait), second(m_wait);
        m_wait.notify();
        m_wait.notify();
        EXPECT_LT(first.join(), 30000);
        EXPECT_LT(second.join(), 30000);
    }
}

TEST_F(CWaitObjectTest, NoSignalIsLostBetweenTheLookAndTheSleep) {
    constexpr unsigned int COUNT = 200000;
    std::atomic<unsigned int> uiPosted{0};
    std::thread other([&] {
        for (unsigned int i = 0; i < COUNT; ++i) {
            uiPosted.fetch_add(1, std::memory_order_relaxed);
            m_wait.notify();
        }
    });
    while (uiPosted.load(std::memory_order_relaxed) != COUNT)
        EXPECT_LT(measureMilliseconds([&] { m_wait.wait(60000); }), 30000) << "slept through a signal";
    other.join();
}

TEST_F(CWaitObjectTest, ForcedWaitIsNotCutShortAndLeavesTheSignal) {
    std::thread other([&] { m_wait.notify(); });
    EXPECT_GE(measureMilliseconds([&] { m_wait.forceWait(50); }), 50);
    other.join();
    m_wait.wait(0); // hangs if the forced wait took the signal
}

TEST_F(CWaitObjectTest, ForcedWaitSplitsSecondsFromTheRest) {
    const long long iTook = measureMilliseconds([&] { m_wait.forceWait(1020); });
    EXPECT_GE(iTook, 1020);
    EXPECT_LT(iTook, 11000);
}

TEST_F(CWaitObjectTest, ForcedWaitSleepsOnAfterASignalHandler) {
    struct sigaction action {};
    struct sigaction old {};
    static volatile std::sig_atomic_t s_iHandled;
    s_iHandled = 0;
    action.sa_handler = [](int) { s_iHandled = 1; };
    ASSERT_EQ(sigaction(SIGUSR1, &action, &old), 0);
    std::atomic<bool> bDone{false};
    const pid_t iSleeper = static_cast<pid_t>(syscall(SYS_gettid));
    std::thread other([&] {
        while (!bDone) { // again and again, so that one comes in the middle of the sleep
            syscall(SYS_tgkill, getpid(), iSleeper, SIGUSR1);
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    });
    EXPECT_GE(measureMilliseconds([&] { m_wait.forceWait(50); }), 50);
    bDone = true;
    other.join();
    EXPECT_EQ(s_iHandled, 1);
    sigaction(SIGUSR1, &old, nullptr);
}

TEST_F(CWaitObjectTest, ForcedWaitOfNothingReturnsAtOnce) {
    EXPECT_LT(measureMilliseconds([&] { m_wait.forceWait(0); }), 10000);
}

// One signal wakes one waiter: the second sleeps on until it has a signal of its own.
TEST_F(CWaitObjectTest, SignalWakesASingleWaiter) {
    std::atomic<int> iWoken{0};
    std::thread aryWaiter[2];
    for (std::thread& waiter : aryWaiter)
        waiter = std::thread([&] {
            m_wait.wait(60000);
            ++iWoken;
        });
    std::this_thread::sleep_for(std::chrono::milliseconds(20)); // lets both block in most runs
    m_wait.notify();
    while (iWoken == 0)
        std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(20)); // time for the second to wake wrongly
    EXPECT_EQ(iWoken, 1);
    m_wait.notify();
    for (std::thread& waiter : aryWaiter)
        waiter.join();
}

// Wakes its waiters without a signal, as the system may do on its own.
class COpenWait : public CImpWaitObject {
public:
    void wakeForNothing() {
        pthread_mutex_lock(&m_mutex);
        pthread_cond_signal(&m_condition);
        pthread_mutex_unlock(&m_mutex);
    }
    bool isSignaled() const { return m_bSignaled; }
};

TEST(CImpWaitObject, StartsWithoutASignal) { EXPECT_FALSE(COpenWait().isSignaled()); }

// Meant so: nobody learns why a limited wait ended, and callers test their own condition again.
TEST(CImpWaitObject, WakeUpForNothingEndsALimitedWait) {
    COpenWait wait;
    std::atomic<bool> bDone{false};
    std::thread other([&] {
        while (!bDone) {
            wait.wakeForNothing();
            std::this_thread::yield();
        }
    });
    EXPECT_LT(measureMilliseconds([&] { wait.wait(60000); }), 30000);
    bDone = true;
    other.join();
}

TEST(CImpWaitObject, WakeUpForNothingDoesNotEndAWaitWithoutLimit) {
    COpenWait wait;
    std::atomic<bool> bNotified{false};
    std::thread other([&] {
        for (int i = 0; i < 20; ++i) {
            wait.wakeForNothing();
            std::this_thread::sleep_for(std::chrono::milliseconds(1)); // lets the waiter block again
        }
        bNotified = true;
        wait.notify();
    });
    wait.wait(0);
    EXPECT_TRUE(bNotified);
    other.join();
}

// From the last millisecond of a second the deadline lies exactly on the next one: the nanoseconds must be carried
// there, since the system refuses 1,000,000,000 of them and would end the wait at once.
TEST(CImpWaitObject, DeadlineOnAFullSecondIsCarried) {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    COpenWait wait;
    {
        OrlixTest::tagClockStandIn clock;
        clock.monotonic.tv_sec = now.tv_sec;
        clock.monotonic.tv_nsec = 999000000;
        wait.wait(1);
        EXPECT_EQ(clock.strCalls, "m");
    }
    timespec after{};
    clock_gettime(CLOCK_MONOTONIC, &after);
    EXPECT_GE(after.tv_sec, now.tv_sec + 1);
}
} // namespace
