#include "ipc/DataTransferFixture.h"

#include "support/PoolUnits.h"

#include <memory>
#include <new>
#include <type_traits>

using namespace Orlix;
using namespace OrlixTest;

namespace {

static_assert(std::is_base_of<CObject, CDataTransfer>::value, "");
static_assert(std::is_base_of<ISocketServerListener, CDataTransfer>::value, "");
static_assert(std::is_base_of<ISocketClientListener, CDataTransfer>::value, "");
static_assert(!std::is_copy_constructible<CDataTransfer>::value && !std::is_copy_assignable<CDataTransfer>::value, "");

const std::string TOUCH = xmlFrameOf("<root><touch_input id=\"7\"/></root>");

class CDataTransferTest : public CDataTransferFixture {
protected:
    /** The entries of instances that are gone. */
    static std::vector<CDataTransfer*> getDeleted() {
        std::vector<CDataTransfer*> vecDeleted;
        for (unsigned int i = 0; i < g_aryDeletedInstance.getSize(); ++i)
            vecDeleted.push_back(g_aryDeletedInstance[i]);
        return vecDeleted;
    }
};

typedef std::vector<CDataTransfer*> TInstances;

/** Instances that come and go at one address. */
class CPlace {
public:
    ~CPlace() { destroy(); }
    COpenTransfer* make(IDataTransferListener* pListener) {
        m_pTransfer = ::new (m_aryPlace) COpenTransfer(pListener);
        return m_pTransfer;
    }
    void destroy() {
        if (m_pTransfer)
            m_pTransfer->~COpenTransfer();
        m_pTransfer = nullptr;
    }
    CDataTransfer* getAddress() { return reinterpret_cast<COpenTransfer*>(m_aryPlace); }

private:
    alignas(COpenTransfer) unsigned char m_aryPlace[sizeof(COpenTransfer)];
    COpenTransfer* m_pTransfer = nullptr;
};

TEST_F(CDataTransferTest, BeginsClosed) {
    COpenTransfer transfer;
    EXPECT_EQ(transfer.m_pListener, nullptr);
    EXPECT_EQ(transfer.m_pServer, nullptr);
    EXPECT_EQ(transfer.m_pClient, nullptr);
    EXPECT_FALSE(transfer.m_bRawConnection);
    EXPECT_FALSE(transfer.isConnect());
    EXPECT_FALSE(transfer.canNotifyListener());
    EXPECT_EQ(transfer.m_bufReceive.getCapacity(), 0u);
    transfer.m_bufReceive.writeBYTE(1);
    EXPECT_EQ(transfer.m_bufReceive.getCapacity(), 1025u) << "1024 spare bytes of each growth";
    EXPECT_TRUE(CDataTransfer::isAlive(&transfer));
    EXPECT_FALSE(CDataTransfer::isAlive(nullptr));
}

TEST_F(CDataTransferTest, OddOpensChangeNothing) {
    COpenTransfer transfer;
    transfer.openAsServer(0);
    transfer.openAsClient(STRING_NULL, 1);
    transfer.openAsClient(L"", 1);
    transfer.openAsClient(L"127.0.0.1", 0);
    EXPECT_EQ(transfer.m_pServer, nullptr);
    EXPECT_EQ(transfer.m_pClient, nullptr);
}

TEST_F(CDataTransferTest, ASecondOpenChangesNothing) {
    COpenTransfer transfer(&m_listener);
    const CSocketServer* const pServer = transfer.m_pServer;
    transfer.openAsServer(2);
    transfer.openAsClient(L"127.0.0.1", 2);
    EXPECT_EQ(transfer.m_pServer, pServer);
    EXPECT_EQ(transfer.m_pClient, nullptr);
}

TEST_F(CDataTransferTest, CloseIsSafeWhenNotOpen) {
    COpenTransfer transfer;
    transfer.close();
    transfer.close();
    EXPECT_EQ(transfer.m_pServer, nullptr);
}

TEST_F(CDataTransferTest, CloseForgetsTheConnectionAndTheBegunFrame) {
    COpenTransfer transfer(&m_listener);
    transfer.onConnect(static_cast<CSocketServer*>(nullptr), 7);
    transfer.feed("IVEN");
    transfer.setRawConnection(true);
    transfer.close();
    EXPECT_EQ(transfer.m_pServer, nullptr);
    EXPECT_FALSE(transfer.isConnect());
    EXPECT_EQ(transfer.getHeld(), "");
    EXPECT_TRUE(transfer.m_bRawConnection) << "settings stay";
    EXPECT_TRUE(transfer.canNotifyListener());
    drain();
    EXPECT_EQ(m_listener.m_vecCall, VecCall{"connect"}) << "what was posted is delivered";
}

TEST_F(CDataTransferTest, SendsOfAClosedChannelDoNothing) {
    CDataTransfer transfer;
    CXMLParser parser;
    transfer.sendLogicData(bytesOf("abc"), 3);
    transfer.sendLogicData(&parser, true);
    transfer.sendLogicData(nullptr, true);
    transfer.sendTouchInput(CCursor());
    transfer.sendPageCMD(IDataTransferListener::EOperationHandle(1), L"page");
    transfer.sendPopupCMD(IDataTransferListener::EOperationHandle(1), STRING_NULL);
    EXPECT_EQ(m_pCenter->getMessageCount(), 0u);
}

// ---- Instances that are gone

TEST_F(CDataTransferTest, DestructionTakesBackAllButTheBuiltInDocuments) {
    CPlace place, other;
    COpenTransfer* const pGone = place.make(&m_listener);
    COpenTransfer* const pOther = other.make(&m_listener);
    for (COpenTransfer* pTransfer : {pGone, pOther}) {
        pTransfer->onConnect(static_cast<CSocketServer*>(nullptr), 7);
        pTransfer->feed(TOUCH + frameOf("abc", 0) + xmlFrameOf("<a/>") + TOUCH);
    }
    place.destroy();
    EXPECT_EQ(m_pCenter->getMessageCountByType(CBaseMessage::MESSAGE_DATA_TRANSFER), 3u);
    EXPECT_EQ(m_pCenter->getMessageCountByType(CBaseMessage::MESSAGE_TOUCH), 4u);
    EXPECT_EQ(getDeleted(), TInstances{place.getAddress()});
    EXPECT_FALSE(CDataTransfer::isAlive(place.getAddress()));
    EXPECT_TRUE(CDataTransfer::isAlive(pOther));
    EXPECT_EQ(drain(), 7u);
    EXPECT_EQ(m_listener.m_vecCall.size(), 5u) << "only the other's are heard";
    EXPECT_EQ(getDeleted(), TInstances{}) << "the first late document uses up the entry";
}

TEST_F(CDataTransferTest, LateMessagesOfTheDeadTouchNothing) {
    const VecCall vecNothing;
    auto pTransfer = std::make_unique<COpenTransfer>(&m_listener);
    CDataTransfer* const pAddress = pTransfer.get();
    const std::string strTouch = "<root><touch_input/></root>";
    std::vector<std::unique_ptr<CMsgDataTransfer>> vecLate;
    vecLate.emplace_back(new CMsgDataTransfer(pAddress, true));
    vecLate.emplace_back(new CMsgDataTransfer(pAddress, bytesOf("no document"), 11, true));
    vecLate.emplace_back(new CMsgDataTransfer(pAddress, nullptr, 0, false));
    vecLate.emplace_back(new CMsgDataTransfer(pAddress, bytesOf("abc"), 3, false));
    vecLate.emplace_back(new CMsgDataTransfer(pAddress, bytesOf(strTouch), 27, true));
    vecLate.emplace_back(new CMsgDataTransfer(pAddress, bytesOf(strTouch), 27, true));
    pTransfer.reset();
    const unsigned int aryEntries[] = {1, 1, 1, 0, 0, 0}; // only a document or a block uses up the entry
    for (std::size_t i = 0; i < vecLate.size(); ++i) {
        vecLate[i]->handleMessage();
        EXPECT_EQ(getDeleted().size(), aryEntries[i]) << i;
    }
    EXPECT_EQ(m_listener.m_vecCall, vecNothing);
}

TEST_F(CDataTransferTest, LaterInstanceAtTheSameAddressLosesItsFirstMessage) {
    const struct {
        std::string strLost;
        bool bLost;
    } aryRow[] = {
        {frameOf("lost", 0), true}, {xmlFrameOf("<lost/>"), true}, {TOUCH, true}, {xmlFrameOf("no document"), false}};
    for (const auto& row : aryRow) {
        CPlace place;
        place.make(&m_listener);
        place.destroy();
        COpenTransfer* const pLater = place.make(&m_listener);
        EXPECT_EQ(getDeleted(), TInstances{pLater});
        pLater->onConnect(static_cast<CSocketServer*>(nullptr), 7); // this form asks nobody
        drain();
        EXPECT_EQ(m_listener.m_vecCall, VecCall{"connect"});
        m_listener.m_vecCall.clear();
        pLater->feed(row.strLost);
        drain();
        EXPECT_EQ(m_listener.m_vecCall, VecCall{});
        EXPECT_EQ(getDeleted().empty(), row.bLost);
        CDataTransfer::deleteAllInstance();
        pLater->feed(frameOf("kept", 0));
        drain();
        EXPECT_EQ(m_listener.m_vecCall, VecCall{"data kept"});
        m_listener.m_vecCall.clear();
        place.destroy();
        CDataTransfer::deleteAllInstance();
    }
}

// Instances are known by their address alone, so a later one is taken for the owner of what the entry does not cover.
TEST_F(CDataTransferTest, LaterInstanceAtTheSameAddressHearsAllButTheFirstLateDocument) {
    CPlace place;
    place.make(&m_listener)
        ->feed(TOUCH + xmlFrameOf("<root><touch_input id=\"8\"/></root>") + xmlFrameOf("<root><page_cmd/></root>"));
    place.destroy();
    CTransferListener later;
    place.make(&later);
    EXPECT_EQ(drain(), 3u);
    EXPECT_EQ(m_listener.m_vecCall, VecCall{});
    EXPECT_EQ(later.m_vecCall, (VecCall{"touch 8 at 0,0 delta 0,0 speed 0,0 status 0 time 0 distance 0", "page 0 "}));
    EXPECT_EQ(getDeleted(), TInstances{});
}

TEST_F(CDataTransferTest, EntryIsUsedUpWhoeverListens) {
    CXMLParser parser;
    const std::function<void(COpenTransfer&)> aryHandle[] = {
        [](COpenTransfer& transfer) { transfer.handleDataTransferMessage(CArrayPtr<unsigned char>()); },
        [](COpenTransfer& transfer) { transfer.handleDataTransferMessage(static_cast<CXMLParser*>(nullptr)); },
        [&](COpenTransfer& transfer) { transfer.handleDataTransferMessage(&parser); }};
    for (const auto& fnHandle : aryHandle) {
        for (IDataTransferListener* const pListener : {static_cast<CTransferListener*>(nullptr), &m_listener}) {
            CPlace place;
            place.make(nullptr);
            place.destroy();
            fnHandle(*place.make(pListener));
            EXPECT_EQ(getDeleted(), TInstances{});
            place.destroy();
            CDataTransfer::deleteAllInstance();
        }
    }
    EXPECT_EQ(m_listener.m_vecCall, VecCall{});
}

TEST_F(CDataTransferTest, OneEntryIsUsedUpAtATime) {
    CPlace place, other;
    for (int i = 0; i < 3; ++i) {
        place.make(nullptr);
        place.destroy();
    }
    other.make(nullptr);
    other.destroy();
    CDataTransfer* const pDead = place.getAddress();
    EXPECT_EQ(getDeleted(), (TInstances{pDead, pDead, pDead, other.getAddress()}));
    EXPECT_TRUE(CDataTransfer::removeDeleted(pDead));
    EXPECT_EQ(getDeleted(), (TInstances{pDead, pDead, other.getAddress()}));
    COpenTransfer* const pLater = place.make(&m_listener);
    pLater->feed(frameOf("1", 0) + frameOf("2", 0) + frameOf("3", 0));
    drain();
    EXPECT_EQ(m_listener.m_vecCall, VecCall{"data 3"});
    EXPECT_FALSE(CDataTransfer::removeDeleted(pDead));
    EXPECT_EQ(getDeleted(), TInstances{other.getAddress()});
}

TEST_F(CDataTransferTest, DeleteAllInstanceFreesTheRecord) {
    const long lUnits = countLiveUnits();
    for (int i = 0; i < 5; ++i)
        COpenTransfer transfer;
    EXPECT_EQ(getDeleted().size(), 5u);
    CDataTransfer::deleteAllInstance();
    EXPECT_EQ(g_aryDeletedInstance.getSize(), 0u);
    EXPECT_EQ(g_aryDeletedInstance.getCapacity(), 0u);
    EXPECT_EQ(countLiveUnits(), lUnits);
}

TEST_F(CDataTransferTest, InstancesMayGoInAnyOrder) {
    std::vector<std::unique_ptr<CDataTransfer>> vecTransfer;
    for (int i = 0; i < 4; ++i)
        vecTransfer.emplace_back(new CDataTransfer);
    for (const unsigned int uiGone : {2u, 0u, 3u, 1u}) {
        const CDataTransfer* const pGone = vecTransfer[uiGone].get();
        vecTransfer[uiGone].reset();
        EXPECT_FALSE(CDataTransfer::isAlive(pGone));
        for (const auto& pTransfer : vecTransfer)
            EXPECT_EQ(CDataTransfer::isAlive(pTransfer.get()), pTransfer != nullptr);
    }
}

// ---- What a listener may do

TEST_F(CDataTransferTest, ListenerMayCloseOrDestroyInEveryCall) {
    const auto feed = [](const std::string& strFrame) {
        return [=](COpenTransfer& transfer) { transfer.feed(strFrame); };
    };
    const std::function<void(COpenTransfer&)> aryPost[] = {
        feed(TOUCH),
        feed(xmlFrameOf("<root><page_cmd/></root>")),
        feed(xmlFrameOf("<a/>")),
        feed(frameOf("a", 0)),
        [](COpenTransfer& transfer) { transfer.onConnect(static_cast<CSocketServer*>(nullptr), 7); },
        [](COpenTransfer& transfer) { transfer.onDisconnect(static_cast<CSocketServer*>(nullptr), 7); }};
    for (const auto& fnPost : aryPost) {
        for (const bool bDestroy : {false, true}) {
            auto pTransfer = std::make_unique<COpenTransfer>(&m_listener);
            m_listener.m_fnInCall = [&] { bDestroy ? pTransfer.reset() : pTransfer->close(); };
            m_listener.m_vecCall.clear();
            fnPost(*pTransfer);
            drain();
            EXPECT_EQ(m_listener.m_vecCall.size(), 1u);
            EXPECT_EQ(pTransfer == nullptr, bDestroy);
            EXPECT_TRUE(bDestroy || !pTransfer->m_pServer);
            pTransfer.reset();
            CDataTransfer::deleteAllInstance();
        }
    }
}
} // namespace
