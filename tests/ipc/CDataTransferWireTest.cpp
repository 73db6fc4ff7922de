#include "ipc/ConnectedFixture.h"

#include <atomic>
#include <sys/ioctl.h>

using namespace Orlix;
using namespace OrlixTest;

namespace {

const std::string HEART_BEAT("\xAF\0", 2);

class CDataTransferWire : public CConnectedFixture {};

TEST_F(CDataTransferWire, ServerReceivesWhatAPeerSends) {
    serve();
    EXPECT_TRUE(m_transfer.isConnect());
    m_peer.send(frameOf("abc", 0) + xmlFrameOf("<root><page_cmd ope_handle=\"5\" page_name=\"start\"/></root>"));
    EXPECT_TRUE(drainUntil([&] { return heard("data abc") && heard("page 5 start"); }));
    awaitDisconnect([&] { m_peer.close(); });
    EXPECT_FALSE(m_transfer.isConnect());
    EXPECT_EQ(m_listener.m_vecCall.size(), 4u);
}

TEST_F(CDataTransferWire, ServerSendsNoByte) {
    serve();
    CXMLParser parser;
    parser.parseFromString(L"<a/>");
    for (const bool bRaw : {false, true}) {
        m_transfer.setRawConnection(bRaw);
        sendText("abc");
        m_transfer.sendLogicData(&parser, false);
        m_transfer.sendTouchInput(CCursor());
        m_transfer.sendPageCMD(IDataTransferListener::EOperationHandle(1), L"page");
    }
    EXPECT_FALSE(isReadable(m_peer.getSocket(), 200));
}

TEST_F(CDataTransferWire, ClientSendsFramesOfTheseBytes) {
    connect();
    sendText("abc");
    EXPECT_EQ(m_peer.receive(13), std::string("\x49\x56\x45\x4E\x00\x03\x00\x00\x00\x00"
                                              "abc",
                                              13));
    m_transfer.sendPageCMD(IDataTransferListener::EOperationHandle(7), L"\xE9");
    const std::string strPage("\x49\x56\x45\x4E\x00\x5E\x00\x00\x00\x01"
                              "<?xml version=\"1.0\" encoding=\"UTF-16\"?>"
                              "<root><page_cmd ope_handle=\"7\" page_name=\"\xC3\xA9\"/></root>\x00",
                              104);
    EXPECT_EQ(m_peer.receive(strPage.size()), strPage);
    m_transfer.setRawConnection(true);
    sendText("raw");
    EXPECT_EQ(m_peer.receive(3), "raw");
}

TEST_F(CDataTransferWire, ClientReceivesToo) {
    connect();
    m_peer.send(xmlFrameOf("<root><touch_input id=\"1\" x=\"2\" y=\"3\"/></root>"));
    EXPECT_TRUE(drainUntil([&] { return heard("touch 1 at 2,3 delta 0,0 speed 0,0 status 0 time 0 distance 0"); }));
}

TEST_F(CDataTransferWire, BothSidesUnderstandEachOther) {
    COpenTransfer client;
    m_transfer.openAsServer(m_port.getPort());
    client.openAsClient(L"127.0.0.1", m_port.getPort());
    ASSERT_TRUE(drainUntil([&] { return heard("connect") && client.isConnect(); }));
    CCursor cursor;
    cursor.setID(9);
    cursor.setX(-7);
    cursor.setTouchStatus(CCursor::TOUCH_MOVE);
    client.sendTouchInput(cursor);
    client.sendPopupCMD(IDataTransferListener::EOperationHandle(1), L"dropped");
    client.sendPageCMD(IDataTransferListener::EOperationHandle(2), L"\x4E2D");
    CXMLParser parser;
    parser.parseFromString(L"<a b=\"1\"/>");
    client.sendLogicData(&parser, true);
    client.sendLogicData(bytesOf("end"), 3);
    EXPECT_TRUE(drainUntil([&] { return m_listener.m_vecCall.size() >= 5 && heard("data end"); }));
    EXPECT_TRUE(heard("touch 9 at -7,-1 delta 0,0 speed 0,0 status 2 time 0 distance 0"));
    EXPECT_TRUE(heard("page 2 \x2D")); // the low byte is all that narrow keeps
    EXPECT_TRUE(heard("document <?xml version=\"1.0\" encoding=\"UTF-8\"?><a b=\"1\"/>"));
    client.close(); // first: a server waits for its client before it closes
}

TEST_F(CDataTransferWire, SingleBytesMakeFrames) {
    serve();
    for (const char chByte : frameOf("abc", 0) + xmlFrameOf("<a/>"))
        m_peer.send(std::string(1, chByte));
    EXPECT_TRUE(drainUntil([&] { return m_listener.m_vecCall.size() == 3; }));
    EXPECT_EQ(m_listener.m_vecCall[1], "data abc");
}

TEST_F(CDataTransferWire, WithoutAListenerTheConnectionIsStillFollowed) {
    m_transfer.setListener(nullptr);
    m_transfer.openAsServer(m_port.getPort());
    m_peer = CRawPeer::connectTo(m_port.getPort());
    EXPECT_TRUE(drainUntil([&] { return m_transfer.isConnect(); }));
    m_peer.send(frameOf("abc", 0));
    m_peer.close();
    EXPECT_TRUE(drainUntil([&] { return !m_transfer.isConnect(); }));
    m_transfer.close();
    EXPECT_EQ(m_pCenter->getMessageCount(), 0u);
}

TEST_F(CDataTransferWire, CloseTellsTheLastDisconnect) {
    connect();
    m_transfer.close();
    EXPECT_FALSE(m_transfer.isConnect());
    EXPECT_TRUE(m_peer.awaitClose());
    drain();
    EXPECT_EQ(m_listener.m_vecCall, (VecCall{"connect", "disconnect", "disconnect"})) << "a client tells a stop twice";
}

TEST_F(CDataTransferWire, CloseWithoutAListenerTellsNothing) {
    connect();
    m_transfer.setListener(nullptr);
    m_transfer.close();
    EXPECT_TRUE(m_peer.awaitClose());
    EXPECT_EQ(m_pCenter->getMessageCount(), 0u);
}

TEST_F(CDataTransferWire, MayBeOpenedAgainTheOtherWayRound) {
    connect();
    sendText("abc");
    EXPECT_EQ(m_peer.receive(13), frameOf("abc", 0));
    m_transfer.close();
    const CRawListener port;
    m_transfer.openAsServer(port.getPort());
    CRawPeer peer = CRawPeer::connectTo(port.getPort());
    peer.send(frameOf("again", 0));
    EXPECT_TRUE(drainUntil([&] { return heard("data again"); }));
    peer.close();
}

TEST_F(CDataTransferWire, ThreadHasTheNameAndPriorityOfItsRecord) {
    CTempFolder temp;
    writeWhole(temp / "engine.xml", "<engine><log_output terminal=\"false\"/><thread_set>"
                                    "<thread id=\"sm\" name=\"other\" priority=\"1\"/>"
                                    "<thread id=\"dt\" name=\"transfer\" priority=\"33\"/></thread_set></engine>");
    ASSERT_TRUE(CConfigParser::getInstance()->load(toText(temp / "engine.xml")));
    m_transfer.openAsServer(m_port.getPort());
    EXPECT_EQ(narrow(m_transfer.m_pServer->getThreadName()), "transfer");
    EXPECT_EQ(m_transfer.m_pServer->getThreadPriority(), 33);
    m_transfer.close();
    m_transfer.openAsClient(L"127.0.0.1", m_port.getPort());
    EXPECT_EQ(narrow(m_transfer.m_pClient->getThreadName()), "transfer");
    EXPECT_EQ(m_transfer.m_pClient->getThreadPriority(), 33);
}

TEST_F(CDataTransferWire, SocketsReceiveUpToAMiBAtOnce) {
    struct tagServer : CSocketServer {
        using CSocketServer::m_uiBufferSize;
    };
    struct tagClient : CSocketClient {
        using CSocketClient::m_uiBufferSize;
    };
    m_transfer.openAsServer(m_port.getPort());
    EXPECT_EQ(m_transfer.m_pServer->*&tagServer::m_uiBufferSize, 1048576u);
    m_transfer.close();
    m_transfer.openAsClient(L"127.0.0.1", m_port.getPort());
    EXPECT_EQ(m_transfer.m_pClient->*&tagClient::m_uiBufferSize, 1048576u);
}

/** Knows the socket of its client, so that a test can tell when a chunk has been taken. */
class CWatchedTransfer : public COpenTransfer {
public:
    ~CWatchedTransfer() override { close(); } // here, while the socket's thread can still call it
    using COpenTransfer::onConnect;
    void onConnect(CSocketServer* pServer, unsigned int uiClientID) override {
        m_iSocket = static_cast<int>(uiClientID);
        COpenTransfer::onConnect(pServer, uiClientID);
    }
    bool hasTakenAll() const {
        int iBytes = -1;
        ioctl(m_iSocket, FIONREAD, &iBytes);
        return iBytes == 0;
    }

private:
    std::atomic<int> m_iSocket{-1};
};

TEST_F(CDataTransferWire, ChunkLikeAHeartBeatNeverArrives) {
    CWatchedTransfer transfer;
    transfer.setListener(&m_listener);
    transfer.setRawConnection(true);
    transfer.openAsServer(m_port.getPort());
    connectPeer();
    m_peer.send(HEART_BEAT);
    EXPECT_TRUE(drainUntil([&] { return transfer.hasTakenAll(); }));
    m_peer.send(HEART_BEAT + "x");
    EXPECT_TRUE(drainUntil([&] { return heard("data " + HEART_BEAT + "x"); }));
    EXPECT_EQ(m_listener.m_vecCall.size(), 2u);
    m_peer.close();
}

TEST_F(CDataTransferWire, HeartBeatJoinedToAFrameSpoilsIt) {
    CWatchedTransfer transfer;
    transfer.setListener(&m_listener);
    transfer.openAsServer(m_port.getPort());
    connectPeer();
    m_peer.send(HEART_BEAT + frameOf("lost", 0));
    EXPECT_TRUE(drainUntil([&] { return transfer.hasTakenAll(); }));
    m_peer.send(frameOf("abc", 0));
    EXPECT_TRUE(drainUntil([&] { return heard("data abc"); }));
    EXPECT_FALSE(heard("data lost"));
    m_peer.close();
}

TEST_F(CDataTransferWire, HeartBeatsComeWhenNothingIsSentForFiveSeconds) {
    CTimerManager::getInstance()->start();
    connect();
    sendText("a");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(m_peer.receive(11), frameOf("a", 0));
    ASSERT_TRUE(drainUntil([&] { return isReadable(m_peer.getSocket(), 0); }));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(4900));
    EXPECT_EQ(m_peer.receive(2), HEART_BEAT);
    m_transfer.close();
    CTimerManager::getInstance()->stop();
}
} // namespace
