#include <Orlix/messaging/CMessageCenter.h>

#include <Orlix/foundation/CStringConverter.h>
#include <Orlix/messaging/CMessageCenterProxy.h>
#include <Orlix/messaging/CMsgRender.h>
#include <Orlix/messaging/CMsgUser.h>
#include <Orlix/threading/CMsgTimer.h>
#include <Orlix/threading/CTime.h>

#include "messaging/RecordingListener.h"
#include "support/ChildProcess.h"
#include "support/MemoryLimit.h"
#include "support/Sanitizer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <random>
#include <thread>

using namespace Orlix;
using namespace OrlixTest;

namespace {

/** A message of any type, a timer message since one of type 40 has to be one; counts the living ones. */
class CAnyMessage : public CMsgTimer {
public:
    CAnyMessage(unsigned int uiType, unsigned int uiID) {
        m_eType = static_cast<EMessageType>(uiType);
        m_uiID = uiID;
        ++s_iAlive;
    }
    ~CAnyMessage() override { --s_iAlive; }
    void handleMessage() override {}
    static inline std::atomic<int> s_iAlive{0};
};

/** Opens the fields to the tests. */
class COpenCenter : public CMessageCenter {
public:
    using CMessageCenter::m_arrListInfo;
    using CMessageCenter::m_eLastList;
    using CMessageCenter::m_lstData;
    using CMessageCenter::m_lstInput;
    using CMessageCenter::m_lstSystem;
    using CMessageCenter::m_lstTimer;
    using CMessageCenter::m_lstUser;
};

using VecEntry = std::vector<std::pair<unsigned int, unsigned int>>; // type and ID

VecEntry read(CObjectList<CBaseMessage>& lst) {
    VecEntry vec;
    lst.toHead();
    while (const CBaseMessage* pMessage = lst.next())
        vec.emplace_back(pMessage->getType(), pMessage->getID());
    return vec;
}

class CMessageCenterTest : public ::testing::Test {
protected:
    CMessageCenterTest() : m_pCenter(new COpenCenter), m_listener(m_vecCall) { m_pCenter->setListener(&m_listener); }
    ~CMessageCenterTest() override {
        m_pCenter.reset();
        EXPECT_EQ(CAnyMessage::s_iAlive, 0) << "a message leaked";
    }
    void push(unsigned int uiType, unsigned int uiID = 0) { m_pCenter->pushMessage(new CAnyMessage(uiType, uiID)); }
    std::pair<unsigned int, unsigned int> pop() {
        const CObjectPtr<CBaseMessage> ptr = m_pCenter->popMessage();
        return ptr.isEmpty() ? std::make_pair(999u, 999u) : std::make_pair(unsigned(ptr->getType()), ptr->getID());
    }
    std::unique_ptr<COpenCenter> m_pCenter;
    VecCall m_vecCall;
    CRecordingListener m_listener;
};

TEST_F(CMessageCenterTest, StartsAsItShould) {
    EXPECT_EQ(m_pCenter->m_eLastList, 4u);
    EXPECT_FALSE(m_pCenter->isLocked());
    ASSERT_EQ(m_pCenter->m_arrListInfo.getSize(), 4u);
    EXPECT_EQ(m_pCenter->m_arrListInfo.getCapacity(), 4u);
    const unsigned int aryWeight[] = {10, 5, 2, 1};
    for (unsigned int i = 0; i < 4; ++i) {
        const auto& info = m_pCenter->m_arrListInfo[i];
        EXPECT_EQ(info.uiListType, i + 1);
        EXPECT_EQ(info.uiLastTime, 0u);
        EXPECT_EQ(info.uiTimeSpan, 0u);
        EXPECT_EQ(info.uiWeight, aryWeight[i]);
    }
    EXPECT_TRUE(m_pCenter->popMessage().isEmpty());
}

TEST_F(CMessageCenterTest, RoutesEveryTypeNumber) {
    for (unsigned int uiType = 0; uiType <= 60; ++uiType) {
        COpenCenter center;
        center.setListener(&m_listener);
        const int iBefore = m_listener.m_iAvailable;
        center.pushMessage(new CAnyMessage(uiType, 3));
        EXPECT_EQ(m_listener.m_iAvailable, iBefore + 1) << "told also of what is deleted: " << uiType;
        const VecEntry vecOne{{uiType, 3}};
        const bool bInput = uiType >= 20 && uiType <= 25, bData = uiType >= 31 && uiType <= 35, bTimer = uiType == 40;
        const bool bSystem = uiType == 10 || uiType == 11 || uiType == 50, bUserList = uiType == 1;
        EXPECT_EQ(read(center.m_lstSystem), bSystem ? vecOne : VecEntry{}) << uiType;
        EXPECT_EQ(read(center.m_lstInput), bInput ? vecOne : VecEntry{}) << uiType;
        EXPECT_EQ(read(center.m_lstData), bData ? vecOne : VecEntry{}) << uiType;
        EXPECT_EQ(read(center.m_lstTimer), bTimer ? vecOne : VecEntry{}) << uiType;
        EXPECT_EQ(read(center.m_lstUser), bUserList ? vecOne : VecEntry{}) << uiType;
        EXPECT_EQ(center.m_eLastList, bInput ? 1u : bData ? 2u : bTimer ? 3u : 4u) << uiType;
    }
}

TEST_F(CMessageCenterTest, SystemMessagesLeaveTheLastListAndUserMessagesSetIt) {
    push(20);
    push(10);
    push(11);
    EXPECT_EQ(m_pCenter->m_eLastList, 1u);
    push(50);
    EXPECT_EQ(m_pCenter->m_eLastList, 4u);
}

TEST_F(CMessageCenterTest, SystemAndUserMessagesComeBeforeAllInputInTheirOrder) {
    push(20, 1);
    push(50, 2);
    push(10, 3);
    EXPECT_EQ(pop().second, 2u);
    EXPECT_EQ(pop().second, 3u);
    EXPECT_EQ(pop().second, 1u);
    EXPECT_TRUE(m_pCenter->popMessage().isEmpty());
}

TEST_F(CMessageCenterTest, TheFirstPopPrefersInputByWeight) {
    push(40, 4);
    push(31, 3);
    push(20, 2);
    // All lists have waited since tick 0; let some time pass so that the weights tell.
    const unsigned int uiStart = CTime::getTickCount();
    while (CTime::getTickCount() == uiStart)
        std::this_thread::yield();
    EXPECT_EQ(pop().first, 20u);
    EXPECT_EQ(pop().first, 31u);
    EXPECT_EQ(pop().first, 40u);
}

TEST_F(CMessageCenterTest, WeighingWrapsAndSortsStably) {
    // Spans are (now - last) times weight in 32 bits: the list that last delivered "in the future" wraps to the top.
    for (unsigned int i = 0; i < 4; ++i)
        m_pCenter->m_arrListInfo[i].uiLastTime = CTime::getTickCount();
    m_pCenter->m_arrListInfo[3].uiLastTime = CTime::getTickCount() + 1000000; // the user list
    push(1, 9);
    push(20, 8);
    EXPECT_EQ(pop().second, 9u);
    EXPECT_EQ(pop().second, 8u);
}

TEST_F(CMessageCenterTest, AnEmptyPopMarksNoListButReordersTheInfos) {
    m_pCenter->m_arrListInfo[0].uiLastTime = CTime::getTickCount();
    for (unsigned int i = 1; i < 4; ++i)
        m_pCenter->m_arrListInfo[i].uiLastTime = CTime::getTickCount() - 1000 * i;
    const unsigned int aryLast[] = {m_pCenter->m_arrListInfo[0].uiLastTime, m_pCenter->m_arrListInfo[1].uiLastTime,
                                    m_pCenter->m_arrListInfo[2].uiLastTime, m_pCenter->m_arrListInfo[3].uiLastTime};
    EXPECT_TRUE(m_pCenter->popMessage().isEmpty());
    // 0 times 10, 3000 times 1, 2000 times 2, 1000 times 5, each give or take the ticks that pass meanwhile.
    const unsigned int aryOrder[] = {1, 4, 3, 2};
    for (unsigned int i = 0; i < 4; ++i) {
        EXPECT_EQ(m_pCenter->m_arrListInfo[i].uiListType, aryOrder[i]);
        EXPECT_EQ(m_pCenter->m_arrListInfo[i].uiLastTime, aryLast[aryOrder[i] - 1]);
    }
}

TEST_F(CMessageCenterTest, OnEqualSpansTheLaterEntryWins) {
    // Every span is 0 while no tick passes between the store and the pop, so retry until one tick holds both.
    for (;;) {
        const unsigned int uiTick = CTime::getTickCount();
        COpenCenter center;
        for (unsigned int i = 0; i < 4; ++i)
            center.m_arrListInfo[i].uiLastTime = uiTick;
        center.pushMessage(new CAnyMessage(20, 1));
        center.pushMessage(new CAnyMessage(40, 2));
        const CObjectPtr<CBaseMessage> ptr = center.popMessage();
        if (CTime::getTickCount() != uiTick)
            continue;
        EXPECT_EQ(ptr->getID(), 2u);
        return;
    }
}

TEST_F(CMessageCenterTest, OnlyTheListThatDeliversIsMarkedWithTheTick) {
    for (unsigned int i = 0; i < 4; ++i)
        m_pCenter->m_arrListInfo[i].uiLastTime = CTime::getTickCount() - 5000;
    const unsigned int uiOld = m_pCenter->m_arrListInfo[0].uiLastTime;
    push(31);
    const unsigned int uiBefore = CTime::getTickCount();
    EXPECT_EQ(pop().first, 31u);
    push(10);
    EXPECT_EQ(pop().first, 10u);
    for (unsigned int i = 0; i < 4; ++i) {
        const auto& info = m_pCenter->m_arrListInfo[i];
        if (info.uiListType == 2) {
            EXPECT_GE(info.uiLastTime, uiBefore);
            EXPECT_LE(info.uiLastTime, CTime::getTickCount());
        } else {
            EXPECT_NEAR(info.uiLastTime, uiOld, 1000) << info.uiListType;
        }
    }
}

TEST_F(CMessageCenterTest, ARepeatLeavesTheTailAndGoesItself) {
    push(20, 0);
    push(20, 1);
    auto* const pFirst = new CAnyMessage(1, 5);
    m_pCenter->pushMessage(pFirst);
    push(1, 5);
    EXPECT_EQ(m_pCenter->m_lstInput.getAt(2), pFirst);
    EXPECT_EQ(m_pCenter->getMessageCount(), 3u);
}

TEST_F(CMessageCenterTest, PoppedMessagesHaveOneReference) {
    push(20);
    const CObjectPtr<CBaseMessage> ptr = m_pCenter->popMessage();
    EXPECT_EQ(ptr->getRef(), 1);
    EXPECT_EQ(CAnyMessage::s_iAlive, 1);
}

TEST_F(CMessageCenterTest, RepeatedRenderRequestsFoldInTheTrailingRun) {
    m_pCenter->pushRenderMessage(5);
    m_pCenter->pushRenderMessage(5);
    EXPECT_EQ(m_listener.m_iAvailable, 1) << "the second one tells nobody";
    m_pCenter->pushRenderMessage(7);
    m_pCenter->pushRenderMessage(5);
    EXPECT_EQ(read(m_pCenter->m_lstUser), (VecEntry{{1, 5}, {1, 7}}));
    EXPECT_EQ(m_listener.m_iAvailable, 2);
    EXPECT_EQ(m_pCenter->getMessageCountByType(CBaseMessage::MESSAGE_RENDER), 2u);
}

TEST_F(CMessageCenterTest, APushedRenderOfTheTailsTargetIsDeletedAndStillTold) {
    m_pCenter->pushMessage(new CMsgRender(5));
    push(1, 5);
    EXPECT_EQ(m_listener.m_iAvailable, 2);
    EXPECT_EQ(CAnyMessage::s_iAlive, 0);
    EXPECT_EQ(m_pCenter->getMessageCount(), 1u);
}

TEST_F(CMessageCenterTest, AmongInputOnlyTheLastRenderOfATargetRemains) {
    push(20, 0);
    push(1, 5);
    push(20, 1);
    push(1, 6);
    push(20, 2);
    push(1, 5);
    EXPECT_EQ(read(m_pCenter->m_lstInput), (VecEntry{{20, 0}, {20, 1}, {1, 6}, {20, 2}, {1, 5}}));
    push(1, 5);
    EXPECT_EQ(read(m_pCenter->m_lstInput).size(), 5u);
}

TEST_F(CMessageCenterTest, AmongDataAndTimersOnlyAnImmediateRepeatFolds) {
    for (unsigned int uiType : {31u, 40u}) {
        COpenCenter center;
        center.pushMessage(new CAnyMessage(uiType, 0));
        center.pushMessage(new CAnyMessage(1, 5));
        center.pushMessage(new CAnyMessage(uiType, 1));
        center.pushMessage(new CAnyMessage(1, 5));
        center.pushMessage(new CAnyMessage(1, 5));
        EXPECT_EQ(read(uiType == 31 ? center.m_lstData : center.m_lstTimer),
                  (VecEntry{{uiType, 0}, {1, 5}, {uiType, 1}, {1, 5}}));
    }
}

TEST_F(CMessageCenterTest, PurgingASingleListRemovesEveryEarlierOneButNotTheTail) {
    CObjectList<CBaseMessage> lst;
    for (const auto& [uiType, uiID] : VecEntry{{1, 5}, {20, 0}, {1, 5}, {1, 6}, {1, 5}})
        lst.add(new CAnyMessage(uiType, uiID));
    m_pCenter->pushRenderMessage(lst, new CAnyMessage(1, 5), true);
    EXPECT_EQ(read(lst), (VecEntry{{20, 0}, {1, 6}, {1, 5}}));
    m_pCenter->pushRenderMessage(lst, new CAnyMessage(1, 6), false);
    EXPECT_EQ(read(lst), (VecEntry{{20, 0}, {1, 6}, {1, 5}, {1, 6}}));
    lst.clear();
    m_pCenter->pushRenderMessage(lst, new CAnyMessage(1, 6), true);
    EXPECT_EQ(read(lst), (VecEntry{{1, 6}}));
}

TEST_F(CMessageCenterTest, PurgingReachesRepaintsThatCameByTheSingleSteps) {
    m_pCenter->pushInputMessage(new CAnyMessage(1, 5));
    m_pCenter->pushInputMessage(new CAnyMessage(1, 5));
    m_pCenter->pushInputMessage(new CAnyMessage(20, 0));
    push(1, 5);
    EXPECT_EQ(read(m_pCenter->m_lstInput), (VecEntry{{20, 0}, {1, 5}}));
    m_pCenter->clearMessageList();
    COpenCenter center;
    center.pushRenderMessage(center.m_lstInput, new CAnyMessage(1, 5), false);
    center.pushInputMessage(new CAnyMessage(20, 0));
    center.pushRenderMessage(center.m_lstInput, new CAnyMessage(1, 5), false);
    center.pushInputMessage(new CAnyMessage(20, 1));
    center.pushMessage(new CAnyMessage(1, 5));
    EXPECT_EQ(read(center.m_lstInput), (VecEntry{{20, 0}, {20, 1}, {1, 5}}));
}

TEST_F(CMessageCenterTest, SingleStepsAppendWhateverTheType) {
    m_pCenter->pushUserMessage(new CAnyMessage(7, 1));
    EXPECT_EQ(m_pCenter->m_eLastList, 4u);
    m_pCenter->pushInputMessage(new CAnyMessage(7, 2));
    EXPECT_EQ(m_pCenter->m_eLastList, 1u);
    m_pCenter->pushDataMessage(new CAnyMessage(7, 3));
    EXPECT_EQ(m_pCenter->m_eLastList, 2u);
    m_pCenter->pushTimerMessage(new CAnyMessage(7, 4));
    EXPECT_EQ(m_pCenter->m_eLastList, 3u);
    m_pCenter->pushSystemMessage(new CAnyMessage(7, 5));
    EXPECT_EQ(m_pCenter->m_eLastList, 3u);
    EXPECT_EQ(read(m_pCenter->m_lstSystem), (VecEntry{{7, 1}, {7, 5}}));
    EXPECT_EQ(read(m_pCenter->m_lstInput), (VecEntry{{7, 2}}));
    EXPECT_EQ(read(m_pCenter->m_lstData), (VecEntry{{7, 3}}));
    EXPECT_EQ(read(m_pCenter->m_lstTimer), (VecEntry{{7, 4}}));
    EXPECT_EQ(read(m_pCenter->m_lstUser), VecEntry{});
    EXPECT_EQ(m_listener.m_iAvailable, 0) << "only pushMessage tells the listener";
}

TEST_F(CMessageCenterTest, SingleStepsIgnoreANullMessage) {
    push(40, 1);
    m_pCenter->pushSystemMessage(nullptr);
    m_pCenter->pushInputMessage(nullptr);
    m_pCenter->pushDataMessage(nullptr);
    m_pCenter->pushTimerMessage(nullptr);
    m_pCenter->pushUserMessage(nullptr);
    m_pCenter->pushRenderMessage(m_pCenter->m_lstTimer, nullptr, true);
    EXPECT_EQ(m_pCenter->getMessageCount(), 1u);
    EXPECT_EQ(m_pCenter->m_eLastList, 3u);
}

#if !defined(ORLIX_TEST_ASAN) && !defined(ORLIX_TEST_TSAN) // both end the process when memory runs out
TEST_F(CMessageCenterTest, WithoutMemoryForItsPlaceAMessageIsDeletedAndStillTold) {
    const tagChildResult result = runInChild([this] {
        const unsigned int aryType[] = {1, 10, 11, 20, 31, 40, 50};
        CAnyMessage* aryMessage[std::size(aryType)];
        for (unsigned int i = 0; i < std::size(aryType); ++i)
            aryMessage[i] = new CAnyMessage(aryType[i], 3);
        CAnyMessage* const pStep = new CAnyMessage(20, 3);
        CStringConverter::printf(L"\n"); // the stream takes its buffers while there is memory
        if (!limitMemory(0))
            return 1;
        for (const unsigned int uiSize : {100000u, 1000u, 1u})
            while (CMemory::malloc(uiSize, 0)) {}
        while (new CObjectList<CBaseMessage>::tagNode) {}
        for (CAnyMessage* const pMessage : aryMessage) {
            const int iAlive = CAnyMessage::s_iAlive;
            m_pCenter->pushMessage(pMessage);
            if (CAnyMessage::s_iAlive != iAlive - 1)
                return 2;
        }
        if (m_listener.m_iAvailable != int(std::size(aryType)) || m_pCenter->getMessageCount() != 0)
            return 3;
        m_pCenter->pushInputMessage(pStep);
        return CAnyMessage::s_iAlive == 0 ? 0 : 4;
    });
    EXPECT_EQ(result.iExitCode, 0);
}
#endif

TEST_F(CMessageCenterTest, FindsARenderInTheTrailingRunOnly) {
    CObjectList<CBaseMessage> lst;
    EXPECT_FALSE(m_pCenter->hasRenderMessageAtLast(lst, 5));
    for (const auto& [uiType, uiID] : VecEntry{{1, 4}, {20, 0}, {1, 5}, {1, 6}})
        lst.add(new CAnyMessage(uiType, uiID));
    EXPECT_TRUE(m_pCenter->hasRenderMessageAtLast(lst, 5));
    EXPECT_TRUE(m_pCenter->hasRenderMessageAtLast(lst, 6));
    EXPECT_FALSE(m_pCenter->hasRenderMessageAtLast(lst, 4));
    EXPECT_FALSE(m_pCenter->hasRenderMessageAtLast(lst, 0));
}

TEST_F(CMessageCenterTest, AClosedCenterDeletesAndTellsNobody) {
    push(20, 1);
    m_pCenter->lock();
    EXPECT_TRUE(m_pCenter->isLocked());
    push(20, 2);
    m_pCenter->pushRenderMessage(4);
    m_pCenter->pushHardkeyMessage(17, 1);
    EXPECT_TRUE(m_pCenter->isCtrlKeyPress()) << "the keys are kept all the same";
    EXPECT_EQ(m_listener.m_iAvailable, 1);
    EXPECT_EQ(m_pCenter->getMessageCount(), 1u);
    EXPECT_EQ(pop().second, 1u);
    m_pCenter->unlock();
    push(20, 3);
    EXPECT_EQ(pop().second, 3u);
    m_pCenter->pushMessage(nullptr);
    EXPECT_EQ(m_listener.m_iAvailable, 2);
}

TEST_F(CMessageCenterTest, ModifierKeysFollowTheirStates) {
    const auto readKeys = [this] {
        return int(m_pCenter->isShiftKeyPress()) * 100 + int(m_pCenter->isCtrlKeyPress()) * 10 +
               int(m_pCenter->isAltKeyPress());
    };
    const struct {
        unsigned int uiKey;
        int iPressed;
    } aryKey[] = {{16, 100}, {17, 10}, {18, 1}, {15, 0}, {19, 0}};
    for (const auto& key : aryKey) {
        for (unsigned int uiDown : {1u, 2u, 3u}) {
            for (unsigned int uiUp : {4u, 5u}) {
                m_pCenter->pushHardkeyMessage(key.uiKey, uiDown);
                EXPECT_EQ(readKeys(), key.iPressed);
                m_pCenter->pushHardkeyMessage(key.uiKey, 0);
                m_pCenter->pushHardkeyMessage(key.uiKey, 6);
                EXPECT_EQ(readKeys(), key.iPressed) << "other states change nothing";
                m_pCenter->pushHardkeyMessage(key.uiKey, uiUp);
                EXPECT_EQ(readKeys(), 0);
                m_pCenter->pushHardkeyMessage(key.uiKey, 0);
                m_pCenter->pushHardkeyMessage(key.uiKey, 6);
                EXPECT_EQ(readKeys(), 0) << "other states press nothing either";
            }
        }
    }
}

TEST_F(CMessageCenterTest, DeletesByIDByTypeAndByBothOverAllLists) {
    const auto fill = [this] {
        m_pCenter->clearMessageList();
        for (unsigned int uiType : {10u, 20u, 31u, 50u, 1u}) {
            push(uiType, 1);
            push(uiType, 2);
        }
        m_pCenter->m_lstTimer.add(new CAnyMessage(40, 1)); // directly: the second would be folded into the first
        m_pCenter->m_lstTimer.add(new CAnyMessage(40, 2));
    };
    fill();
    EXPECT_EQ(m_pCenter->getMessageCount(), 12u);
    m_pCenter->deleteMessageByID(1);
    EXPECT_EQ(m_pCenter->getMessageCount(), 6u);
    EXPECT_EQ(read(m_pCenter->m_lstSystem), (VecEntry{{10, 2}, {50, 2}}));
    EXPECT_EQ(read(m_pCenter->m_lstUser), (VecEntry{{1, 2}}));
    fill();
    m_pCenter->deleteMessageByType(CBaseMessage::MESSAGE_USER);
    EXPECT_EQ(read(m_pCenter->m_lstSystem), (VecEntry{{10, 1}, {10, 2}}));
    EXPECT_EQ(m_pCenter->getMessageCount(), 10u);
    fill();
    m_pCenter->deleteMessageByTypeAndID(CBaseMessage::MESSAGE_TIMER, 2);
    EXPECT_EQ(read(m_pCenter->m_lstTimer), (VecEntry{{40, 1}}));
    EXPECT_EQ(m_pCenter->getMessageCount(), 11u);
    m_pCenter->deleteMessageByID(m_pCenter->m_lstInput, 2);
    EXPECT_EQ(read(m_pCenter->m_lstInput), (VecEntry{{20, 1}}));
    m_pCenter->deleteMessageByType(m_pCenter->m_lstData, CBaseMessage::MESSAGE_DATA_CONTEXT);
    EXPECT_EQ(read(m_pCenter->m_lstData), VecEntry{});
    m_pCenter->deleteMessageByTypeAndID(m_pCenter->m_lstSystem, CBaseMessage::MESSAGE_USER, 1);
    EXPECT_EQ(m_pCenter->getMessageCountByType(m_pCenter->m_lstSystem, CBaseMessage::MESSAGE_USER), 1u);
    m_pCenter->clearMessageList();
    EXPECT_EQ(m_pCenter->getMessageCount(), 0u);
    EXPECT_EQ(m_pCenter->m_eLastList, 4u);
    EXPECT_EQ(CAnyMessage::s_iAlive, 0);
}

TEST_F(CMessageCenterTest, PostsEveryKind) {
    CObject data;
    data.addRef();
    CMessageCenter* const pCenter = CMessageCenter::getInstance();
    pCenter->setListener(&m_listener);
    COwnListener own(m_vecCall);
    pCenter->pushSystemMessage(1, &data, &own);
    pCenter->pushUserMessage(2, &data, &own);
    pCenter->pushQuitMessage();
    pCenter->pushGestureMessage(3, 4, &data);
    pCenter->pushHardkeyMessage(65, 2);
    pCenter->pushIMEMessage(L"text");
    pCenter->pushLogicEventMessage(5);
    pCenter->pushVoiceContentMessage(L"spoken");
    pCenter->pushRenderMessage(6);
    while (const CObjectPtr<CBaseMessage> ptr = pCenter->popMessage())
        ptr->handleMessage();
    pCenter->pushDataContextMessage(7, &data);
    pCenter->popMessage()->handleMessage();
    EXPECT_EQ(m_vecCall, (VecCall{L"system 1 with data", L"own system 1 with data", L"user 2 with data",
                                  L"own user 2 with data", L"quit", L"gesture 3 4 with data", L"hardkey 65 2",
                                  L"ime text", L"logic 5", L"voice spoken", L"render 6", L"data 7 with data"}));
    EXPECT_EQ(m_listener.m_iAvailable, 10);
    CMessageCenter::deleteInstance();
    EXPECT_EQ(data.getRef(), 1);
}

TEST_F(CMessageCenterTest, TheProxyReadsTheKeysAndPostsNothing) {
    CMessageCenter* const pCenter = CMessageCenter::getInstance();
    for (const unsigned int uiKey : {16u, 17u, 18u}) {
        pCenter->pushHardkeyMessage(uiKey, 1);
        EXPECT_EQ(CMessageCenterProxy::isShiftKeyPress(), uiKey == 16);
        EXPECT_EQ(CMessageCenterProxy::isCtrlKeyPress(), uiKey == 17);
        EXPECT_EQ(CMessageCenterProxy::isAltKeyPress(), uiKey == 18);
        pCenter->pushHardkeyMessage(uiKey, 4);
    }
    pCenter->pushHardkeyMessage(17, 1);
    pCenter->clearMessageList();
    CMessageCenterProxy::pushSystemMessage(1, nullptr, nullptr);
    CMessageCenterProxy::pushGestureMessage(1, 1, nullptr);
    CMessageCenterProxy::pushHardkeyMessage(17, 4);
    CMessageCenterProxy::pushIMEMessage(L"x");
    CMessageCenterProxy::pushLogicEventMessage(1);
    CMessageCenterProxy::pushVoiceContentMessage(L"x");
    CMessageCenterProxy::pushDataContextMessage(1, nullptr);
    CMessageCenterProxy::pushUserMessage(1, nullptr, nullptr);
    EXPECT_EQ(pCenter->getMessageCount(), 0u);
    EXPECT_TRUE(CMessageCenterProxy::isCtrlKeyPress()) << "not even the keys change";
    CMessageCenter::deleteInstance();
}

TEST_F(CMessageCenterTest, TheDestructorDeletesFromTheUserListToTheSystemList) {
    static std::vector<unsigned int> s_vecOrder;
    class CNoting : public CAnyMessage {
    public:
        using CAnyMessage::CAnyMessage;
        ~CNoting() override { s_vecOrder.push_back(getType()); }
    };
    s_vecOrder.clear();
    for (unsigned int uiType : {1u, 10u, 20u, 31u, 40u})
        m_pCenter->pushMessage(new CNoting(uiType, 0));
    m_pCenter.reset(new COpenCenter);
    EXPECT_EQ(s_vecOrder, (std::vector<unsigned int>{1, 40, 31, 20, 10}));
    s_vecOrder.clear();
    for (unsigned int uiType : {1u, 10u, 20u, 31u, 40u})
        m_pCenter->pushMessage(new CNoting(uiType, 0));
    m_pCenter->clearMessageList();
    EXPECT_EQ(s_vecOrder, (std::vector<unsigned int>{10, 20, 31, 40, 1}));
}

TEST_F(CMessageCenterTest, ADroppedMessagesDestructorMayCallBackOnAnotherThread) {
    class CCalling : public CAnyMessage {
    public:
        CCalling(CMessageCenter& center, unsigned int uiType) : CAnyMessage(uiType, 5), m_center(center) {}
        ~CCalling() override {
            std::thread([this] { m_center.getMessageCount(); }).join();
        }
        CMessageCenter& m_center;
    };
    push(20);
    m_pCenter->pushMessage(new CCalling(*m_pCenter, 1));
    push(20);
    push(1, 5);                                          // purges
    m_pCenter->pushMessage(new CCalling(*m_pCenter, 1)); // repeats the tail
    m_pCenter->pushMessage(new CCalling(*m_pCenter, 3)); // unknown
    m_pCenter->pushMessage(new CCalling(*m_pCenter, 20));
    m_pCenter->deleteMessageByID(5);
    EXPECT_EQ(m_pCenter->getMessageCount(), 2u);
    m_pCenter->pushMessage(new CCalling(*m_pCenter, 20));
}

TEST_F(CMessageCenterTest, ComparesSpansUnsigned) {
    const CMessageCenter::tagCompareByTimeSpan compare;
    const CMessageCenter::tagMessageListInfo low{1, 0, 1, 0}, high{1, 0, 0xFFFFFFFFu, 0};
    EXPECT_EQ(compare(low, high), -1);
    EXPECT_EQ(compare(high, low), 1);
    EXPECT_EQ(compare(low, low), 0);
}

/** The five lists and the weighing as plainly as they can be written, fed with the ticks that the center stored. */
class CModel {
public:
    void push(unsigned int uiType, unsigned int uiID) {
        if (uiType == 1)
            pushRender(uiID);
        else if (uiType == 10 || uiType == 11 || uiType == 50)
            m_aryList[0].push_back({uiType, uiID});
        else if (const unsigned int uiList = getListOf(uiType); uiList != 0 && !isFolded(uiType))
            m_aryList[uiList].push_back({uiType, uiID});
        if (uiType == 50)
            m_uiLast = 4;
        else if (const unsigned int uiList = getListOf(uiType))
            m_uiLast = uiList;
    }
    void erase(const std::function<bool(unsigned int, unsigned int)>& match) {
        for (auto& list : m_aryList)
            list.erase(std::remove_if(list.begin(), list.end(),
                                      [&](const auto& entry) { return match(entry.first, entry.second); }),
                       list.end());
    }
    std::deque<std::pair<unsigned int, unsigned int>> m_aryList[5]; // system, input, data, timer, user
    unsigned int m_uiLast = 4;

private:
    static unsigned int getListOf(unsigned int uiType) {
        return uiType >= 20 && uiType <= 25 ? 1 : uiType >= 31 && uiType <= 35 ? 2 : uiType == 40 ? 3 : 0;
    }
    bool isFolded(unsigned int uiType) const {
        return uiType == 40 && !m_aryList[3].empty() && m_aryList[3].back().first == 40;
    }
    void pushRender(unsigned int uiID) {
        auto& list = m_aryList[m_uiLast];
        const std::pair<unsigned int, unsigned int> entry{1, uiID};
        if (m_uiLast == 1 && list.size() >= 2) {
            const auto tail = list.back();
            list.pop_back();
            list.erase(std::remove(list.begin(), list.end(), entry), list.end());
            list.push_back(tail);
        }
        if (list.empty() || list.back() != entry)
            list.push_back(entry);
    }
};

TEST_F(CMessageCenterTest, BehavesLikeItsModel) {
    std::mt19937 random(42);
    CModel model;
    const unsigned int aryType[] = {0, 1, 1, 1, 2, 10, 11, 20, 21, 25, 26, 30, 31, 35, 36, 40, 41, 50, 51};
    for (int i = 0; i < 20000; ++i) {
        const unsigned int uiID = random() % 3;
        const unsigned int uiType = aryType[random() % std::size(aryType)];
        const unsigned int uiAction = random() % 40;
        if (uiAction == 0) {
            m_pCenter->deleteMessageByID(uiID);
            model.erase([=](unsigned int, unsigned int uiOther) { return uiOther == uiID; });
        } else if (uiAction == 1) {
            m_pCenter->deleteMessageByTypeAndID(static_cast<CBaseMessage::EMessageType>(uiType), uiID);
            model.erase([=](unsigned int uiT, unsigned int uiI) { return uiT == uiType && uiI == uiID; });
        } else if (uiAction < 18) {
            // The list that the center serves: the system list, else the last in weighed order that has something.
            const auto entry = pop();
            if (entry.first == 999) {
                for (const auto& list : model.m_aryList)
                    ASSERT_TRUE(list.empty());
                continue;
            }
            unsigned int uiList = 0;
            if (model.m_aryList[0].empty()) {
                for (unsigned int k = 4; k-- > 0 && uiList == 0;) {
                    const auto& info = m_pCenter->m_arrListInfo[k];
                    if (k > 0) {
                        ASSERT_GE(info.uiTimeSpan, m_pCenter->m_arrListInfo[k - 1].uiTimeSpan);
                    }
                    if (!model.m_aryList[info.uiListType].empty())
                        uiList = info.uiListType;
                }
            }
            ASSERT_EQ(entry, model.m_aryList[uiList].front());
            model.m_aryList[uiList].pop_front();
        } else {
            push(uiType, uiID);
            model.push(uiType, uiID);
        }
        CObjectList<CBaseMessage>* const aryList[] = {&m_pCenter->m_lstSystem, &m_pCenter->m_lstInput,
                                                      &m_pCenter->m_lstData, &m_pCenter->m_lstTimer,
                                                      &m_pCenter->m_lstUser};
        for (unsigned int k = 0; k < 5; ++k) {
            const VecEntry vecModel(model.m_aryList[k].begin(), model.m_aryList[k].end());
            ASSERT_EQ(read(*aryList[k]), vecModel) << "list " << k << " after step " << i;
        }
        ASSERT_EQ(m_pCenter->m_eLastList, model.m_uiLast);
        if (i % 500 == 0) {
            m_pCenter->clearMessageList();
            model.erase([](unsigned int, unsigned int) { return true; });
        }
    }
}

// The closing switch, the listener and the keys are plain fields: another thread may change them while messages come.
TEST_F(CMessageCenterTest, SwitchesMayBeThrownWhileOthersPush) {
    constexpr int PUSHES = 20000;
    class CWaking : public IMessageCenterListener {
    public:
        void onMessageAvailable() override { ++m_iAvailable; }
        std::atomic<int> m_iAvailable{0};
    } waking;
    std::atomic<bool> bDone{false};
    std::thread switcher([&] {
        while (!bDone) {
            m_pCenter->lock();
            m_pCenter->setListener(nullptr);
            m_pCenter->unlock();
            m_pCenter->setListener(&waking);
        }
    });
    std::thread typist([&] {
        for (unsigned int i = 0; i < PUSHES; ++i)
            m_pCenter->pushHardkeyMessage(16 + i % 3, 1 + i % 5);
    });
    int iSeen = 0;
    for (int i = 0; i < PUSHES; ++i) {
        push(20, 1);
        iSeen += m_pCenter->isCtrlKeyPress() || m_pCenter->isShiftKeyPress() || m_pCenter->isAltKeyPress();
        iSeen += m_pCenter->isLocked();
    }
    typist.join();
    bDone = true;
    switcher.join();
    EXPECT_LE(iSeen, 2 * PUSHES);
    EXPECT_LE(waking.m_iAvailable, 2 * PUSHES);
    EXPECT_LE(m_pCenter->getMessageCount(), 2u * PUSHES);
    EXPECT_FALSE(m_pCenter->isLocked());
    m_pCenter->clearMessageList();
    const int iBefore = waking.m_iAvailable;
    push(20, 1);
    EXPECT_EQ(waking.m_iAvailable, iBefore + 1);
    EXPECT_EQ(m_pCenter->getMessageCount(), 1u);
}

TEST_F(CMessageCenterTest, UnderLoadNothingIsLostDoubledOrReorderedPerProducer) {
    constexpr unsigned int PRODUCERS = 4, MESSAGES = 250000;
    const unsigned int aryType[] = {10, 20, 31, 11}; // timer messages would be folded
    m_pCenter->setListener(nullptr);
    std::thread aryProducer[PRODUCERS];
    for (unsigned int p = 0; p < PRODUCERS; ++p) {
        aryProducer[p] = std::thread([&, p] {
            for (unsigned int i = 0; i < MESSAGES; ++i)
                push(aryType[(i + p) % 4], p * MESSAGES + i);
        });
    }
    unsigned int aryNext[PRODUCERS][4] = {};
    for (auto& aryRow : aryNext)
        std::fill(std::begin(aryRow), std::end(aryRow), ~0u);
    unsigned int uiTaken = 0;
    bool bOrdered = true;
    while (uiTaken < PRODUCERS * MESSAGES) {
        const CObjectPtr<CBaseMessage> ptr = m_pCenter->popMessage();
        if (ptr.isEmpty()) {
            std::this_thread::yield();
            continue;
        }
        ++uiTaken;
        const unsigned int p = ptr->getID() / MESSAGES, i = ptr->getID() % MESSAGES;
        // Within one list a producer's numbers rise by 4 from the list's first one on: none lost, none twice.
        const unsigned int uiList = (i + p) % 4;
        unsigned int& uiLast = aryNext[p][uiList];
        bOrdered = bOrdered && ptr->getType() == aryType[uiList] && (uiLast == ~0u ? i < 4 : i == uiLast + 4);
        uiLast = i;
    }
    for (std::thread& producer : aryProducer)
        producer.join();
    EXPECT_TRUE(bOrdered);
    EXPECT_TRUE(m_pCenter->popMessage().isEmpty());
}
} // namespace
