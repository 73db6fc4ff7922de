#include <Orlix/messaging/CBaseMessage.h>

#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/messaging/CMsgDataContext.h>
#include <Orlix/messaging/CMsgGesture.h>
#include <Orlix/messaging/CMsgHardkey.h>
#include <Orlix/messaging/CMsgIME.h>
#include <Orlix/messaging/CMsgLogicEvent.h>
#include <Orlix/messaging/CMsgQuit.h>
#include <Orlix/messaging/CMsgRender.h>
#include <Orlix/messaging/CMsgSystem.h>
#include <Orlix/messaging/CMsgUser.h>
#include <Orlix/messaging/CMsgVoiceContent.h>

#include "messaging/RecordingListener.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>

using namespace Orlix;
using namespace OrlixTest;

namespace {

class CAnyMessage : public CBaseMessage {
public:
    explicit CAnyMessage(unsigned int uiType) { m_eType = static_cast<EMessageType>(uiType); }
    void handleMessage() override {}
};

class CBaseMessageTest : public ::testing::Test {
protected:
    CBaseMessageTest() : m_listener(m_vecCall), m_own(m_vecCall) {
        CMessageCenter::getInstance()->setListener(&m_listener);
        m_data.addRef(); // a local object: no release may delete it
    }
    ~CBaseMessageTest() override { CMessageCenter::deleteInstance(); }

    VecCall handle(CBaseMessage& message) {
        m_vecCall.clear();
        message.handleMessage();
        return m_vecCall;
    }

    VecCall m_vecCall;
    CRecordingListener m_listener;
    COwnListener m_own;
    CObject m_data;
};

TEST_F(CBaseMessageTest, EveryTypeHasItsNameAndNoOtherNumberHasOne) {
    const struct {
        unsigned int uiType;
        const wchar_t* pName;
    } aryRow[] = {{0, L"Unknown"},        {1, L"Render"},          {10, L"System"},       {11, L"Quit"},
                  {20, L"Touch"},         {21, L"Gesture"},        {22, L"Hardkey"},      {23, L"IME"},
                  {24, L"Logic Event"},   {25, L"Voice Content"},  {31, L"Data Context"}, {32, L"Share Memory"},
                  {33, L"Data Transfer"}, {34, L"Http Connector"}, {35, L"Web Browser"},  {40, L"Timer"},
                  {50, L"User"}};
    unsigned int uiNamed = 0;
    for (unsigned int uiType = 0; uiType < 200; ++uiType) {
        const CAnyMessage message(uiType);
        const wchar_t* pExpected = L"";
        for (const auto& row : aryRow) {
            if (row.uiType == uiType) {
                pExpected = row.pName;
                ++uiNamed;
            }
        }
        EXPECT_EQ(toText(message.getTypeName()), pExpected) << uiType;
        EXPECT_FALSE(message.getTypeName().isEmpty()) << "blank, not null";
    }
    EXPECT_EQ(uiNamed, std::size(aryRow));
}

TEST_F(CBaseMessageTest, ConstructorsSetTypeAndID) {
    EXPECT_EQ(CMsgRender(4).getType(), 1u);
    EXPECT_EQ(CMsgRender(4).getID(), 4u);
    EXPECT_EQ(CMsgSystem(5, nullptr, nullptr).getType(), 10u);
    EXPECT_EQ(CMsgSystem(5, nullptr, nullptr).getID(), 5u);
    EXPECT_EQ(CMsgQuit().getType(), 11u);
    EXPECT_EQ(CMsgQuit().getID(), 0u);
    EXPECT_EQ(CMsgGesture(1, 6, nullptr).getType(), 21u);
    EXPECT_EQ(CMsgGesture(1, 6, nullptr).getID(), 6u);
    EXPECT_EQ(CMsgHardkey(65, 2).getType(), 22u);
    EXPECT_EQ(CMsgHardkey(65, 2).getID(), 65u);
    EXPECT_EQ(CMsgIME(L"x").getType(), 23u);
    EXPECT_EQ(CMsgLogicEvent(7).getType(), 24u);
    EXPECT_EQ(CMsgLogicEvent(7).getID(), 7u);
    EXPECT_EQ(CMsgVoiceContent(L"x").getType(), 25u);
    EXPECT_EQ(CMsgDataContext(8, nullptr).getType(), 31u);
    EXPECT_EQ(CMsgDataContext(8, nullptr).getID(), 8u);
    EXPECT_EQ(CMsgUser(9, nullptr, nullptr).getType(), 50u);
    EXPECT_EQ(CMsgUser(9, nullptr, nullptr).getID(), 9u);
}

TEST_F(CBaseMessageTest, EachMessageReachesItsOwnOperation) {
    CMsgRender render(4);
    EXPECT_EQ(handle(render), (VecCall{L"render 4"}));
    CMsgQuit quit;
    EXPECT_EQ(handle(quit), (VecCall{L"quit"}));
    CMsgGesture gesture(1, 6, &m_data);
    EXPECT_EQ(handle(gesture), (VecCall{L"gesture 1 6 with data"}));
    CMsgHardkey hardkey(65, 2);
    EXPECT_EQ(handle(hardkey), (VecCall{L"hardkey 65 2"}));
    CMsgIME ime(L"a\u4e2d");
    EXPECT_EQ(handle(ime), (VecCall{L"ime a\u4e2d"}));
    CMsgLogicEvent logic(7);
    EXPECT_EQ(handle(logic), (VecCall{L"logic 7"}));
    CMsgVoiceContent voice(L"yes");
    EXPECT_EQ(handle(voice), (VecCall{L"voice yes"}));
    CMsgDataContext data(8, &m_data);
    EXPECT_EQ(handle(data), (VecCall{L"data 8 with data"}));
}

TEST_F(CBaseMessageTest, TheCentersListenerGoesBeforeTheMessagesOwn) {
    CMsgSystem system(5, &m_data, &m_own);
    EXPECT_EQ(handle(system), (VecCall{L"system 5 with data", L"own system 5 with data"}));
    CMsgUser user(9, nullptr, &m_own);
    EXPECT_EQ(handle(user), (VecCall{L"user 9", L"own user 9"}));
}

TEST_F(CBaseMessageTest, WithoutACentersListenerTheOwnOneIsStillReached) {
    CMessageCenter::getInstance()->setListener(nullptr);
    CMsgUser user(9, nullptr, &m_own);
    EXPECT_EQ(handle(user), (VecCall{L"own user 9"}));
    CMsgSystem system(5, nullptr, &m_own);
    EXPECT_EQ(handle(system), (VecCall{L"own system 5"}));
    CMsgRender render(1);
    EXPECT_EQ(handle(render), VecCall{});
}

TEST_F(CBaseMessageTest, DefaultBuiltMessagesAreHarmless) {
    CMsgSystem system;
    EXPECT_EQ(handle(system), (VecCall{L"system 0"}));
    CMsgUser user;
    EXPECT_EQ(handle(user), (VecCall{L"user 0"}));
    CMsgGesture gesture;
    EXPECT_EQ(handle(gesture), (VecCall{L"gesture 0 0"}));
    CMsgHardkey hardkey;
    EXPECT_EQ(handle(hardkey), (VecCall{L"hardkey 0 1"})) << "a key is down by default";
    CMsgIME ime;
    EXPECT_EQ(handle(ime), (VecCall{L"ime "}));
    CMsgVoiceContent voice;
    EXPECT_EQ(handle(voice), (VecCall{L"voice "}));
}

TEST_F(CBaseMessageTest, DefaultBuiltMessagesHaveTheirTypeAndNothingElse) {
    const std::pair<std::shared_ptr<CBaseMessage>, unsigned int> aryRow[] = {
        {std::make_shared<CMsgRender>(), 1},       {std::make_shared<CMsgSystem>(), 10},
        {std::make_shared<CMsgQuit>(), 11},        {std::make_shared<CMsgGesture>(), 21},
        {std::make_shared<CMsgHardkey>(), 22},     {std::make_shared<CMsgIME>(), 23},
        {std::make_shared<CMsgLogicEvent>(), 24},  {std::make_shared<CMsgVoiceContent>(), 25},
        {std::make_shared<CMsgDataContext>(), 31}, {std::make_shared<CMsgUser>(), 50}};
    for (const auto& [ptrMessage, uiType] : aryRow) {
        EXPECT_EQ(ptrMessage->getType(), uiType);
        EXPECT_EQ(ptrMessage->getID(), 0u) << uiType;
        EXPECT_TRUE(ptrMessage->getData().isEmpty()) << uiType;
        EXPECT_EQ(ptrMessage->getRef(), 0) << uiType;
    }
}

TEST_F(CBaseMessageTest, ADerivedClassThatNamesNoTypeIsUnknown) {
    class CPlainMessage : public CBaseMessage {
    public:
        void handleMessage() override {}
    } message;
    EXPECT_EQ(message.getType(), 0u);
    EXPECT_EQ(toText(message.getTypeName()), L"Unknown");
    EXPECT_EQ(message.getID(), 0u);
}

/** Notes each object it is shown, with the references on it at that moment. */
class CDataListener : public IMessageCenterListener, public IMsgSystemListener, public IMsgUserListener {
public:
    void onHandleSystemMessage(unsigned int, CObject* pData) override { note(pData); }
    void onHandleGestureMessage(unsigned int, unsigned int, CObject* pData) override { note(pData); }
    void onHandleDataContextMessage(unsigned int, CObject* pData) override { note(pData); }
    void onHandleUserMessage(unsigned int, CObject* pData) override { note(pData); }
    std::vector<std::pair<CObject*, int>> m_vecSeen;

private:
    void note(CObject* pData) { m_vecSeen.emplace_back(pData, pData->getRef()); }
};

TEST_F(CBaseMessageTest, ReceiversGetTheObjectItselfWithoutAnotherReference) {
    CDataListener listener;
    CMessageCenter::getInstance()->setListener(&listener);
    CMsgSystem(1, &m_data, &listener).handleMessage();
    CMsgUser(1, &m_data, &listener).handleMessage();
    CMsgGesture(1, 1, &m_data).handleMessage();
    CMsgDataContext(1, &m_data).handleMessage();
    const std::pair<CObject*, int> seen{&m_data, 2}; // the test's own and the message's
    EXPECT_EQ(listener.m_vecSeen, (std::vector<std::pair<CObject*, int>>(6, seen)));
    EXPECT_EQ(m_data.getRef(), 1);
}

TEST_F(CBaseMessageTest, AListenerThatOverridesNothingTakesEverything) {
    IMessageCenterListener listener;
    CMessageCenter::getInstance()->setListener(&listener);
    CMsgRender(1).handleMessage();
    CMsgSystem(1, &m_data, nullptr).handleMessage();
    CMsgQuit().handleMessage();
    CMsgGesture(1, 1, &m_data).handleMessage();
    CMsgHardkey(1, 1).handleMessage();
    CMsgIME(L"x").handleMessage();
    CMsgLogicEvent(1).handleMessage();
    CMsgVoiceContent(L"x").handleMessage();
    CMsgDataContext(1, &m_data).handleMessage();
    CMsgUser(1, &m_data, nullptr).handleMessage();
    CMessageCenter::getInstance()->pushQuitMessage();
    EXPECT_EQ(m_data.getRef(), 1);
    EXPECT_EQ(CMessageCenter::getInstance()->getMessageCount(), 1u);
}

TEST_F(CBaseMessageTest, WithoutAnyListenerAMessageIsConsumedWithoutEffect) {
    CMessageCenter::getInstance()->setListener(nullptr);
    const std::shared_ptr<CBaseMessage> aryMessage[] = {std::make_shared<CMsgRender>(1),
                                                        std::make_shared<CMsgSystem>(1, &m_data, nullptr),
                                                        std::make_shared<CMsgQuit>(),
                                                        std::make_shared<CMsgGesture>(1, 1, &m_data),
                                                        std::make_shared<CMsgHardkey>(1, 1),
                                                        std::make_shared<CMsgIME>(L"x"),
                                                        std::make_shared<CMsgLogicEvent>(1),
                                                        std::make_shared<CMsgVoiceContent>(L"x"),
                                                        std::make_shared<CMsgDataContext>(1, &m_data),
                                                        std::make_shared<CMsgUser>(1, &m_data, nullptr)};
    for (const auto& ptrMessage : aryMessage)
        EXPECT_EQ(handle(*ptrMessage), VecCall{}) << ptrMessage->getType();
}

TEST_F(CBaseMessageTest, TextsAreCopied) {
    CString strText(L"first");
    CMsgIME ime(strText);
    CMsgVoiceContent voice(strText);
    strText = L"second";
    EXPECT_EQ(handle(ime), (VecCall{L"ime first"}));
    EXPECT_EQ(handle(voice), (VecCall{L"voice first"}));
}

TEST_F(CBaseMessageTest, ReplacingTheDataReleasesTheOldObjectAfterTheNewOneIsHeld) {
    CObject other;
    other.addRef();
    CMsgDataContext message(1, &m_data);
    message.setData(&other);
    EXPECT_EQ(m_data.getRef(), 1);
    EXPECT_EQ(other.getRef(), 2);
    // The old object holds the only reference on the new one.
    class CHolder : public CObject {
    public:
        explicit CHolder(bool& bAlive) : m_ptrHeld(new CHeld(bAlive)) {}
        struct CHeld : CObject {
            explicit CHeld(bool& bAlive) : m_bAlive(bAlive) { m_bAlive = true; }
            ~CHeld() override { m_bAlive = false; }
            bool& m_bAlive;
        };
        CObjectPtr<CObject> m_ptrHeld;
    };
    bool bAlive = false;
    auto* const pHolder = new CHolder(bAlive);
    message.setData(pHolder);
    EXPECT_EQ(other.getRef(), 1);
    message.setData(pHolder->m_ptrHeld.getPtr());
    EXPECT_TRUE(bAlive);
    EXPECT_EQ(message.getData()->getRef(), 2); // the message's and the temporary's
    message.setData(nullptr);
    EXPECT_FALSE(bAlive);
}

TEST_F(CBaseMessageTest, HoldsOneReferenceOnItsData) {
    auto* const pData = new CObject;
    pData->addRef();
    {
        CMsgSystem message(1, pData, nullptr);
        EXPECT_EQ(pData->getRef(), 2);
        message.setData(pData);
        EXPECT_EQ(pData->getRef(), 2);
        {
            const CObjectPtr<CObject> ptrData = message.getData();
            EXPECT_EQ(ptrData.getPtr(), pData);
            EXPECT_EQ(pData->getRef(), 3);
        }
        message.setData(nullptr);
        EXPECT_EQ(pData->getRef(), 1);
        EXPECT_TRUE(message.getData().isEmpty());
        message.setData(pData);
        message.setID(77);
        EXPECT_EQ(message.getID(), 77u);
    }
    EXPECT_EQ(pData->getRef(), 1) << "the destructor releases";
    pData->release();
}
} // namespace
