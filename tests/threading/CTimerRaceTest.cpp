#include "threading/TimerFixture.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <random>
#include <shared_mutex>
#include <thread>

using namespace Orlix;
using namespace OrlixTest;

namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned int THREADS = 8;
constexpr unsigned int SLOTS = 16; // timers of each thread

/** ORLIX_TIMER_RACE_SECONDS asks for a longer run. */
std::chrono::milliseconds getDuration() {
    const char* const pSeconds = std::getenv("ORLIX_TIMER_RACE_SECONDS");
    return pSeconds ? std::chrono::seconds(std::atoi(pSeconds)) : std::chrono::milliseconds(2000);
}

/** The place of one timer after another, and the listener of each. It outlives them all. */
class CSlot : public ITimerListener {
public:
    void onTimer(const CTimer* pTimer, unsigned int) override { note(pTimer); }
    void onTimerComplete(const CTimer* pTimer) override { note(pTimer); }

    void create(unsigned int uiDelay, unsigned int uiRepeat, bool bListen) {
        m_ptrTimer = std::make_unique<CTimer>(uiDelay, uiRepeat);
        m_ptrTimer->setListener(bListen ? this : nullptr);
        m_pAlive = m_ptrTimer.get();
    }
    void destroy() {
        m_ptrTimer.reset();
        m_pAlive = nullptr;
    }

    std::unique_ptr<CTimer> m_ptrTimer; // of the slot's thread
    std::atomic<const CTimer*> m_pAlive{nullptr};
    static inline std::atomic<unsigned int> s_uiHeard{0};
    static inline std::atomic<unsigned int> s_uiOfTheDead{0};

private:
    void note(const CTimer* pTimer) {
        ++s_uiHeard;
        s_uiOfTheDead += pTimer != m_pAlive;
        pTimer->isRunning(); // read, for the address sanitizer to see
    }
};

/** Held by the host while it handles a message, and shared by the threads that destroy timers: the two must not meet,
 *  all else may. */
std::shared_mutex g_gate;

void playWithTimers(unsigned int uiSeed, const std::atomic<bool>& bEnd) {
    std::mt19937 random(uiSeed);
    const auto arySlot = std::make_unique<CSlot[]>(SLOTS);
    while (!bEnd) {
        CSlot& slot = arySlot[random() % SLOTS];
        const unsigned int uiAction = random() % 8;
        if (!slot.m_ptrTimer) {
            slot.create(random() % 3 * 5, random() % 4, random() % 4 != 0);
            slot.m_ptrTimer->start();
        } else if (uiAction == 0) {
            const std::shared_lock<std::shared_mutex> lock(g_gate);
            slot.destroy();
        } else if (uiAction == 1) {
            slot.m_ptrTimer->stop();
        } else if (uiAction == 2) {
            slot.m_ptrTimer->setRepeatCount(random() % 4);
        } else if (uiAction < 5) {
            slot.m_ptrTimer->start();
        } else {
            std::this_thread::sleep_for(std::chrono::microseconds(random() % 500));
        }
    }
    const std::shared_lock<std::shared_mutex> lock(g_gate);
    for (unsigned int i = 0; i < SLOTS; ++i)
        arySlot[i].destroy();
}

/** @return whether there was a message. */
bool handleOne(CMessageCenter& center) {
    const CObjectPtr<CBaseMessage> ptrMessage = center.popMessage();
    if (ptrMessage.isEmpty())
        return false;
    std::this_thread::yield(); // the message is in nobody's queue now
    const std::unique_lock<std::shared_mutex> lock(g_gate);
    ptrMessage->handleMessage();
    return true;
}

TEST(CTimerRace, NoPulseComesForATimerThatIsGone) {
    CTime::getTickCount();
    CMessageCenter* const pCenter = CMessageCenter::getInstance();
    COpenManager* const pManager = COpenManager::install();
    pManager->start();
    std::atomic<bool> bEnd{false};
    std::thread aryThread[THREADS];
    for (unsigned int i = 0; i < THREADS; ++i)
        aryThread[i] = std::thread([&bEnd, i] { playWithTimers(i, bEnd); });
    const Clock::time_point timeEnd = Clock::now() + getDuration();
    while (Clock::now() < timeEnd) {
        if (!handleOne(*pCenter))
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    bEnd = true;
    for (std::thread& thread : aryThread)
        thread.join();
    pManager->stop();
    EXPECT_EQ(pManager->m_aryTimer.getSize(), 0u);
    EXPECT_EQ(pCenter->getMessageCount(), 0u) << "pulses of destroyed timers wait";
    EXPECT_GT(CSlot::s_uiHeard, 0u);
    EXPECT_EQ(CSlot::s_uiOfTheDead, 0u);
    CTimerManager::deleteInstance();
    CMessageCenter::deleteInstance();
    CConfigParser::deleteInstance();
}

TEST(CTimerRace, TimersThatComeAndGoWhileOthersRunLoseNoPulseOfThem) {
    CTime::getTickCount();
    CMessageCenter* const pCenter = CMessageCenter::getInstance();
    COpenManager* const pManager = COpenManager::install();
    VecCall vecCall;
    CNotingListener listener(vecCall);
    CTimer timer(10, 0);
    timer.setListener(&listener);
    pManager->start();
    timer.start();
    std::atomic<bool> bEnd{false};
    std::thread aryThread[2];
    for (std::thread& thread : aryThread) {
        thread = std::thread([&] {
            while (!bEnd) {
                CTimer timerShort(0, 0);
                timerShort.start();
                std::this_thread::yield();
            }
        });
    }
    while (vecCall.size() < 40) {
        const CObjectPtr<CBaseMessage> ptrMessage = pCenter->popMessage();
        if (ptrMessage.isEmpty())
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        else
            ptrMessage->handleMessage();
    }
    bEnd = true;
    for (std::thread& thread : aryThread)
        thread.join();
    for (std::size_t i = 0; i < vecCall.size(); ++i)
        EXPECT_EQ(vecCall[i], std::to_string(i + 1));
    timer.stop();
    pManager->stop();
    CTimerManager::deleteInstance();
    CMessageCenter::deleteInstance();
    CConfigParser::deleteInstance();
}
} // namespace
