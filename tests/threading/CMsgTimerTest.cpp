#include "threading/TimerFixture.h"

#include <Orlix/messaging/IMessageCenterListener.h>

#include <algorithm>
#include <random>
#include <type_traits>

using namespace Orlix;
using namespace OrlixTest;

namespace {

using CTimerData = CMsgTimer::CTimerData;
using VecID = std::vector<std::pair<unsigned int, int>>; // ID and number of each pulse

static_assert(std::is_base_of<CBaseMessage, CMsgTimer>::value && std::is_base_of<CObject, CTimerData>::value, "");

/** A pulse of a timer that need not exist, with a number to tell it by; counts the living ones. */
class CNumbered : public CTimerData {
public:
    CNumbered(unsigned int uiID, int iNumber, VecCall* pCall = nullptr)
        : CTimerData(nullptr, CTimer::TIMER_PULSE, 0), m_iNumber(iNumber), m_pCall(pCall) {
        m_uiID = uiID;
        ++s_iAlive;
    }
    ~CNumbered() override { --s_iAlive; }
    void handleMessage() override { m_pCall->push_back(std::to_string(m_iNumber)); }
    static inline int s_iAlive = 0;
    int m_iNumber;

private:
    VecCall* m_pCall;
};

VecID read(const COpenMsgTimer& message) {
    VecID vec;
    for (unsigned int i = 0; i < message.m_aryData.getSize(); ++i)
        vec.emplace_back(message.m_aryData[i]->getID(), static_cast<const CNumbered*>(message.m_aryData[i])->m_iNumber);
    return vec;
}

class CMsgTimerTest : public CTimerFixture {
protected:
    ~CMsgTimerTest() override {
        m_pCenter->clearMessageList();
        EXPECT_EQ(CNumbered::s_iAlive, 0) << "a pulse leaked";
    }
    /** A message with one pulse of each timer. */
    CMsgTimer* makeMessage(std::initializer_list<CTimer*> listTimer) {
        CMsgTimer* const pMessage = new CMsgTimer;
        for (CTimer* const pTimer : listTimer)
            pMessage->addData(new CTimerData(pTimer, CTimer::TIMER_PULSE, 1));
        return pMessage;
    }
};

TEST_F(CMsgTimerTest, StartsAsItShould) {
    CMsgTimer message;
    EXPECT_EQ(message.getType(), CBaseMessage::MESSAGE_TIMER);
    EXPECT_EQ(message.getID(), 0u);
    EXPECT_EQ(message.getDataCount(), 0u);
    message.addData(nullptr);
    EXPECT_EQ(message.getDataCount(), 0u) << "null is ignored";
    message.handleMessage();
}

TEST_F(CMsgTimerTest, APulseKnowsTheIDOfItsTimer) {
    CTimer timer;
    EXPECT_EQ(CTimerData(&timer, CTimer::TIMER_PULSE, 1).getID(), timer.getID());
    CTimerData nobody(nullptr, CTimer::TIMER_PULSE, 1);
    EXPECT_EQ(nobody.getID(), 0u);
    nobody.handleMessage();
}

TEST_F(CMsgTimerTest, EachStatusReachesItsOperation) {
    CNotingListener listener(m_vecCall);
    COpenTimer timer(10, 0);
    timer.start();
    timer.m_uiCurrentCount = 5;
    CTimerData pulse(&timer, CTimer::TIMER_PULSE, 4), complete(&timer, CTimer::TIMER_COMPLETE, 5),
        odd(&timer, static_cast<CTimer::ETimerStatus>(2), 6);
    pulse.handleMessage(); // no listener
    complete.handleMessage();
    EXPECT_TRUE(timer.isRunning()) << "without a listener not even the end";
    timer.setListener(&listener);
    pulse.handleMessage();
    odd.handleMessage();
    EXPECT_EQ(m_vecCall, VecCall{"4"});
    EXPECT_TRUE(timer.isRunning());
    setTick(30);
    complete.handleMessage();
    EXPECT_EQ(m_vecCall, (VecCall{"4", "complete"}));
    EXPECT_FALSE(timer.isRunning());
    EXPECT_EQ(timer.getCurrentCount(), 0u);
    EXPECT_EQ(timer.m_uiStartTime, 30u);
}

TEST_F(CMsgTimerTest, ATimerRunsWhileItHearsOfItsEnd) {
    class CAsking : public ITimerListener {
    public:
        void onTimerComplete(const CTimer* pTimer) override { m_bRunning = pTimer->isRunning(); }
        bool m_bRunning = false;
    } asking;
    CTimer timer(0, 1);
    timer.setListener(&asking);
    timer.start();
    cycle(1);
    drain();
    EXPECT_TRUE(asking.m_bRunning);
    EXPECT_FALSE(timer.isRunning());
}

TEST_F(CMsgTimerTest, DeletesThePulsesOfOneTimer) {
    COpenMsgTimer message;
    for (int i = 0; i < 6; ++i)
        message.addData(new CNumbered(static_cast<unsigned int>(i) % 2, i));
    message.deleteDataByID(7);
    EXPECT_EQ(message.getDataCount(), 6u);
    message.deleteDataByID(0);
    EXPECT_EQ(read(message), (VecID{{1, 1}, {1, 3}, {1, 5}}));
    EXPECT_EQ(CNumbered::s_iAlive, 3);
    message.deleteDataByID(1);
    EXPECT_EQ(message.getDataCount(), 0u);
}

TEST_F(CMsgTimerTest, AMergeMovesThePulses) {
    COpenMsgTimer message, other;
    message.addData(new CNumbered(1, 1));
    message.margeDataFrom(nullptr);
    message.margeDataFrom(&message);
    message.margeDataFrom(&other);
    EXPECT_EQ(message.getDataCount(), 1u);
    for (int i = 2; i < 6; ++i)
        other.addData(new CNumbered(2, i));
    message.margeDataFrom(&other);
    EXPECT_EQ(read(message), (VecID{{1, 1}, {2, 2}, {2, 3}, {2, 4}, {2, 5}}));
    EXPECT_EQ(message.m_aryData.getCapacity(), 7u) << "1, 2, 4, 7";
    EXPECT_EQ(other.getDataCount(), 0u);
    EXPECT_EQ(other.m_aryData.getCapacity(), 0u);
    EXPECT_EQ(CNumbered::s_iAlive, 5);
}

TEST_F(CMsgTimerTest, BehavesLikeAVectorOfPulses) {
    std::mt19937 random(11);
    for (const unsigned int uiTimers : {3u, 40u, 500u}) {
        COpenMsgTimer message, other;
        VecID vecModel, vecOther;
        for (int i = 0; i < 6000; ++i) {
            const unsigned int uiID = random() % uiTimers;
            switch (random() % 8) {
            case 0:
                message.deleteDataByID(uiID);
                vecModel.erase(std::remove_if(vecModel.begin(), vecModel.end(),
                                              [=](const auto& entry) { return entry.first == uiID; }),
                               vecModel.end());
                break;
            case 1:
                other.deleteDataByID(uiID);
                vecOther.erase(std::remove_if(vecOther.begin(), vecOther.end(),
                                              [=](const auto& entry) { return entry.first == uiID; }),
                               vecOther.end());
                break;
            case 2:
                if (i % 5 == 0) {
                    message.margeDataFrom(&other);
                    vecModel.insert(vecModel.end(), vecOther.begin(), vecOther.end());
                    vecOther.clear();
                }
                break;
            case 3:
                message.addData(new CNumbered(uiID, i));
                vecModel.emplace_back(uiID, i);
                break;
            default:
                other.addData(new CNumbered(uiID, i));
                vecOther.emplace_back(uiID, i);
                break;
            }
            ASSERT_EQ(message.getDataCount(), vecModel.size()) << i;
            ASSERT_EQ(other.getDataCount(), vecOther.size()) << i;
            if (i % 50 == 0) {
                ASSERT_EQ(read(message), vecModel) << i;
                ASSERT_EQ(read(other), vecOther) << i;
            }
        }
    }
}

TEST_F(CMsgTimerTest, DeliversInOrderWithoutTheTimersThatAreGone) {
    CTimer gone;
    m_pManager->removeTimer(&gone);
    CMsgTimer message;
    message.addData(new CNumbered(5, 1, &m_vecCall));
    message.addData(new CNumbered(gone.getID(), 2, &m_vecCall));
    message.addData(new CNumbered(6, 3, &m_vecCall));
    message.handleMessage();
    EXPECT_EQ(m_vecCall, (VecCall{"1", "3"}));
    EXPECT_FALSE(m_pManager->checkIsDeletedTimer(gone.getID())) << "forgotten behind the message";
    message.handleMessage();
    EXPECT_EQ(m_vecCall, (VecCall{"1", "3", "1", "2", "3"})) << "a stale ID lasts for one message";
}

// ---- In the center

TEST_F(CMsgTimerTest, TwoInARowBecomeOne) {
    CNotingListener a(m_vecCall, "a"), b(m_vecCall, "b");
    CTimer timerA, timerB;
    timerA.setListener(&a);
    timerB.setListener(&b);
    m_pCenter->pushMessage(makeMessage({&timerA, &timerB}));
    m_pCenter->pushMessage(makeMessage({&timerB}));
    EXPECT_EQ(m_pCenter->getMessageCount(), 1u);
    EXPECT_EQ(drain(), 1u);
    EXPECT_EQ(m_vecCall, (VecCall{"a1", "b1", "b1"}));
}

TEST_F(CMsgTimerTest, ARenderMessageAtTheTailKeepsThemApart) {
    CTimer timer;
    m_pCenter->pushMessage(makeMessage({&timer}));
    m_pCenter->pushRenderMessage(7);
    m_pCenter->pushMessage(makeMessage({&timer}));
    m_pCenter->pushMessage(makeMessage({&timer}));
    EXPECT_EQ(m_pCenter->getMessageCountByType(CBaseMessage::MESSAGE_TIMER), 2u);
    EXPECT_EQ(m_pCenter->getMessageCount(), 3u);
    m_pCenter->deleteTimerMessage(timer.getID());
    EXPECT_EQ(m_pCenter->getMessageCount(), 1u) << "both are empty and gone, the repaint stays";
    EXPECT_EQ(m_pCenter->getMessageCountByType(CBaseMessage::MESSAGE_RENDER), 1u);
}

TEST_F(CMsgTimerTest, TheListenerHearsOfAFoldedMessageToo) {
    class CCounting : public IMessageCenterListener {
    public:
        void onMessageAvailable() override { ++m_iAvailable; }
        int m_iAvailable = 0;
    } counting;
    CTimer timer;
    m_pCenter->setListener(&counting);
    m_pCenter->pushMessage(makeMessage({&timer}));
    m_pCenter->pushMessage(makeMessage({&timer}));
    m_pCenter->pushTimerMessage(makeMessage({&timer}));
    EXPECT_EQ(counting.m_iAvailable, 2) << "the single step tells nobody";
    EXPECT_EQ(m_pCenter->getMessageCount(), 1u);
    m_pCenter->pushRenderMessage(3); // joins the list last pushed to: the timers'
    m_pCenter->pushTimerMessage(makeMessage({&timer}));
    EXPECT_EQ(m_pCenter->getMessageCount(), 3u);
}

TEST_F(CMsgTimerTest, OnlyTheLastPulseOfAMessageTakesItAlong) {
    CTimer timerA, timerB;
    m_pCenter->pushMessage(makeMessage({&timerA, &timerB}));
    m_pCenter->deleteTimerMessage(timerA.getID() + 1);
    m_pCenter->deleteTimerMessage(timerA.getID());
    EXPECT_EQ(m_pCenter->getMessageCount(), 1u);
    m_pCenter->deleteTimerMessage(timerB.getID());
    EXPECT_EQ(m_pCenter->getMessageCount(), 0u);
    m_pCenter->pushMessage(new CMsgTimer);
    m_pCenter->deleteTimerMessage(timerB.getID());
    EXPECT_EQ(m_pCenter->getMessageCount(), 0u) << "also one that was empty before";
}

// Noted first, the ID could be forgotten with the message that the host is just ending, and the waiting pulse would
// then find its timer gone.
TEST_F(CMsgTimerTest, WaitingPulsesGoBeforeTheIDOfTheirTimerIsNoted) {
    class CWatching : public CTimerData {
    public:
        CWatching(CTimer& timer, bool& bNoted) : CTimerData(&timer, CTimer::TIMER_PULSE, 1), m_bNoted(bNoted) {}
        ~CWatching() override { m_bNoted = CTimerManager::getInstance()->checkIsDeletedTimer(m_uiID); }

    private:
        bool& m_bNoted;
    };
    CTimer timer;
    bool bNoted = true;
    CMsgTimer* const pMessage = new CMsgTimer;
    pMessage->addData(new CWatching(timer, bNoted));
    m_pCenter->pushMessage(pMessage);
    m_pManager->removeTimer(&timer);
    EXPECT_FALSE(bNoted);
    EXPECT_TRUE(m_pManager->checkIsDeletedTimer(timer.getID()));
}

TEST_F(CMsgTimerTest, AClosedCenterLosesThePulses) {
    CTimer timer(0, 0);
    timer.start();
    m_pCenter->lock();
    cycle(1);
    EXPECT_EQ(m_pCenter->getMessageCount(), 0u);
    m_pCenter->unlock();
    EXPECT_EQ(timer.getCurrentCount(), 1u);
}
} // namespace
