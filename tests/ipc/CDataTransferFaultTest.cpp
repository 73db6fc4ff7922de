#include "ipc/ConnectedFixture.h"

#include "support/ChildProcess.h"
#include "support/Descriptors.h"

#include <csignal>
#include <memory>

using namespace Orlix;
using namespace OrlixTest;

// Peers that break off, come back, say too much or never listen.

namespace {

const std::string FRAME = frameOf("abc", 0);
const std::string WHOLE = frameOf("whole", 0);

class CDataTransferFault : public CConnectedFixture {
protected:
    void expectWholeFrameArrives() {
        m_peer.send(WHOLE);
        EXPECT_TRUE(drainUntil([&] { return heard("data whole"); }));
        EXPECT_EQ(m_listener.m_vecCall.back(), "data whole");
    }
};

TEST_F(CDataTransferFault, PeerMayGoAtEveryByteOfAFrame) {
    m_transfer.openAsServer(m_port.getPort());
    for (std::size_t uiCut = 0; uiCut < FRAME.size(); ++uiCut) {
        for (const bool bReset : {false, true}) {
            m_listener.m_vecCall.clear();
            connectPeer();
            m_peer.send(FRAME.substr(0, uiCut));
            awaitDisconnect([&] { bReset ? m_peer.reset() : m_peer.close(); });
            connectPeer();
            expectWholeFrameArrives();
            awaitDisconnect([&] { m_peer.close(); });
            EXPECT_EQ(m_listener.m_vecCall, (VecCall{"connect", "disconnect", "connect", "data whole", "disconnect"}))
                << uiCut;
        }
    }
}

TEST_F(CDataTransferFault, PeerMayBeKilledAtEveryByteOfAFrame) {
    m_transfer.openAsServer(m_port.getPort());
    for (std::size_t uiCut = 0; uiCut < FRAME.size(); ++uiCut) {
        m_listener.m_vecCall.clear();
        const pid_t pid = forkBound();
        if (pid == 0) { // on the system's calls alone, for there are other threads
            CRawPeer peer = CRawPeer::connectTo(m_port.getPort());
            peer.send(FRAME.substr(0, uiCut));
            while (true)
                pause();
        }
        ASSERT_GT(pid, 0); // a kill of -1 would reach every process there is
        EXPECT_TRUE(drainUntil([&] { return heard("connect"); }));
        awaitDisconnect([&] { kill(pid, SIGKILL); });
        waitpid(pid, nullptr, 0);
        connectPeer();
        expectWholeFrameArrives();
        awaitDisconnect([&] { m_peer.close(); });
    }
}

TEST_F(CDataTransferFault, ServerMayGoAtEveryByteOfAFrame) {
    connect();
    for (std::size_t uiCut = 0; uiCut < FRAME.size(); ++uiCut) {
        m_listener.m_vecCall.clear();
        m_peer.send(FRAME.substr(0, uiCut));
        awaitDisconnect([&] { m_peer.reset(); });
        m_transfer.m_pClient->tryToConnect(); // spares the pause of a second
        acceptPeer();
        expectWholeFrameArrives();
        EXPECT_EQ(m_listener.m_vecCall, (VecCall{"disconnect", "connect", "data whole"})) << uiCut;
    }
}

/** A listening socket on a given port, which may have been used just before. */
CRawPeer listenOn(unsigned int uiPort) {
    CRawPeer server(socket(AF_INET, SOCK_STREAM, 0));
    const int iOn = 1;
    setsockopt(server.getSocket(), SOL_SOCKET, SO_REUSEADDR, &iOn, sizeof(iOn));
    const sockaddr_in address = loopback(uiPort);
    EXPECT_EQ(bind(server.getSocket(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    EXPECT_EQ(listen(server.getSocket(), 1), 0);
    return server;
}

TEST_F(CDataTransferFault, RestartsOfTheServerGiveEventsInPairs) {
    m_transfer.openAsClient(L"127.0.0.1", m_port.getPort());
    VecCall vecExpected;
    for (int i = 0; i < 5; ++i) {
        CRawPeer server = listenOn(m_port.getPort());
        const std::size_t uiBefore = countCalls("connect");
        m_transfer.m_pClient->tryToConnect();
        EXPECT_TRUE(isReadable(server.getSocket(), PEER_MS));
        m_peer = CRawPeer(accept(server.getSocket(), nullptr, nullptr));
        EXPECT_TRUE(drainUntil([&] { return countCalls("connect") > uiBefore; }));
        sendText("to " + std::to_string(i));
        EXPECT_EQ(m_peer.receive(14), frameOf("to " + std::to_string(i), 0));
        const std::string strText = "from " + std::to_string(i);
        m_peer.send(frameOf(strText, 0) + FRAME.substr(0, 12));
        EXPECT_TRUE(drainUntil([&] { return heard("data " + strText); }));
        server.close();
        awaitDisconnect([&] { m_peer.reset(); });
        for (const std::string& strCall : {std::string("connect"), "data " + strText, std::string("disconnect")})
            vecExpected.push_back(strCall);
    }
    EXPECT_EQ(m_listener.m_vecCall, vecExpected);
}

TEST_F(CDataTransferFault, ListenerMayCloseOrDestroyALiveClientInEveryCall) {
    const struct {
        const char* szCall;
        std::string strSent;
    } aryRow[] = {{"connect", ""},
                  {"disconnect", ""},
                  {"touch", xmlFrameOf("<root><touch_input/></root>")},
                  {"page", xmlFrameOf("<root><page_cmd/></root>")},
                  {"document", xmlFrameOf("<a/>")},
                  {"data", FRAME}};
    m_port.listen();
    for (const auto& row : aryRow) {
        for (const bool bDestroy : {false, true}) {
            SCOPED_TRACE(row.szCall);
            m_listener.m_vecCall.clear();
            auto pTransfer = std::make_unique<CDataTransfer>();
            pTransfer->setListener(&m_listener);
            bool bCalled = false;
            m_listener.m_fnInCall = [&] {
                if (bCalled || m_listener.m_vecCall.back().rfind(row.szCall, 0) != 0)
                    return;
                bCalled = true;
                bDestroy ? pTransfer.reset() : pTransfer->close();
            };
            pTransfer->openAsClient(L"127.0.0.1", m_port.getPort());
            CRawPeer peer = m_port.accept();
            peer.send(row.strSent);
            if (row.szCall == std::string("disconnect"))
                peer.close();
            EXPECT_TRUE(drainUntil([&] { return bCalled; }));
            m_listener.m_fnInCall = nullptr;
            drain();
            EXPECT_EQ(m_listener.m_vecCall.back() == "disconnect",
                      !bDestroy || row.szCall == std::string("disconnect"));
            pTransfer.reset();
            CDataTransfer::deleteAllInstance();
        }
    }
}

TEST_F(CDataTransferFault, ListenerMayCloseOrDestroyALiveServerWhosePeerGoesMeanwhile) {
    const struct {
        const char* szCall;
        std::string strSent;
    } aryRow[] = {
        {"connect", ""}, {"touch", xmlFrameOf("<root><touch_input/></root>")}, {"data", FRAME}, {"disconnect", ""}};
    for (const auto& row : aryRow) {
        for (const bool bDestroy : {false, true}) {
            SCOPED_TRACE(row.szCall);
            m_listener.m_vecCall.clear();
            const CRawListener port;
            auto pTransfer = std::make_unique<CDataTransfer>();
            pTransfer->setListener(&m_listener);
            pTransfer->openAsServer(port.getPort());
            CRawPeer peer = CRawPeer::connectTo(port.getPort());
            std::thread leaver;
            m_listener.m_fnInCall = [&] {
                if (leaver.joinable() || m_listener.m_vecCall.back().rfind(row.szCall, 0) != 0)
                    return;
                leaver = std::thread([&] { peer.close(); }); // the server waits for it
                bDestroy ? pTransfer.reset() : pTransfer->close();
            };
            peer.send(row.strSent);
            if (row.szCall == std::string("disconnect"))
                peer.close();
            EXPECT_TRUE(drainUntil([&] { return leaver.joinable(); }));
            m_listener.m_fnInCall = nullptr;
            leaver.join();
            const std::size_t uiCalls = m_listener.m_vecCall.size();
            drain();
            EXPECT_TRUE(!bDestroy || m_listener.m_vecCall.size() == uiCalls);
            EXPECT_TRUE(bDestroy || !pTransfer->isConnect());
            pTransfer.reset();
            CDataTransfer::deleteAllInstance();
        }
    }
}

TEST_F(CDataTransferFault, ListenerMayOpenAgain) {
    m_port.listen();
    m_listener.m_fnInCall = [&] {
        if (m_listener.m_vecCall.size() != 1)
            return;
        m_transfer.close();
        m_transfer.openAsClient(L"127.0.0.1", m_port.getPort());
    };
    m_transfer.openAsClient(L"127.0.0.1", m_port.getPort());
    CRawPeer first = m_port.accept();
    EXPECT_TRUE(drainUntil([&] { return heard("connect"); }));
    EXPECT_TRUE(first.awaitClose());
    m_peer = m_port.accept();
    expectWholeFrameArrives();
}

TEST_F(CDataTransferFault, DestructionUnderFireTouchesNothing) {
    m_port.listen();
    for (int i = 0; i < 10; ++i) {
        auto pTransfer = std::make_unique<CDataTransfer>();
        pTransfer->setListener(&m_listener);
        pTransfer->openAsClient(L"127.0.0.1", m_port.getPort());
        CRawPeer peer = m_port.accept();
        std::thread sender([&] {
            while (peer.send(xmlFrameOf("<root><touch_input/></root>") + frameOf("abc", 0) + xmlFrameOf("<a/>"))) {}
        });
        EXPECT_TRUE(await([&] { return m_pCenter->getMessageCountByType(CBaseMessage::MESSAGE_TOUCH) >= 100; }));
        pTransfer.reset();
        sender.join();
        EXPECT_EQ(m_pCenter->getMessageCountByType(CBaseMessage::MESSAGE_DATA_TRANSFER), 0u);
        drain();
        EXPECT_EQ(m_listener.m_vecCall, VecCall{});
        CDataTransfer::deleteAllInstance();
    }
}

TEST_F(CDataTransferFault, PortInUseIsToldAsADisconnect) {
    m_port.listen();
    m_transfer.openAsServer(m_port.getPort());
    EXPECT_TRUE(drainUntil([&] { return heard("disconnect"); }));
    EXPECT_FALSE(m_transfer.isConnect());
    m_transfer.close();
    drain();
    EXPECT_EQ(m_listener.m_vecCall, VecCall{"disconnect"});
}

TEST_F(CDataTransferFault, PeerThatNeverStopsSendingOddHeadersLeavesNothing) {
    serve();
    std::string strOdd;
    for (int i = 0; i < 10000; ++i)
        strOdd += std::string("IVEN", 4) + static_cast<char>(1 + i % 255);
    EXPECT_TRUE(m_peer.send(strOdd + "!!!!!")); // what does not end with a right pair is cleared
    awaitDisconnect([&] { m_peer.close(); });
    connectPeer();
    expectWholeFrameArrives();
}

TEST_F(CDataTransferFault, FiveHundredConnectionsCostADescriptorEachAndNoMore) {
    const int iCode = runInChild([&] {
                          m_transfer.openAsServer(m_port.getPort());
                          connectPeer();
                          const std::ptrdiff_t iBefore = countDescriptors();
                          for (std::size_t i = 0; i < 500; ++i) {
                              m_peer.send(FRAME.substr(0, i % FRAME.size()));
                              awaitDisconnect([&] { m_peer.close(); });
                              connectPeer();
                          }
                          if (countDescriptors() - iBefore != 500)
                              return 1;
                          expectWholeFrameArrives();
                          m_peer.close();
                          m_transfer.close();
                          return HasFailure() ? 2 : 0;
                      }).iExitCode;
    EXPECT_EQ(iCode, 0);
}

// The socket does not block: a send takes what the buffers of both ends have room for, and what it leaves is lost.

TEST_F(CDataTransferFault, PayloadOf64KiBGoesOutWholeThoughNobodyReads) {
    connect();
    const std::string strPayload(65536, 'p');
    sendText(strPayload);
    EXPECT_TRUE(m_peer.receive(65546) == frameOf(strPayload, 0));
}

TEST_F(CDataTransferFault, PayloadLargerThanTheBuffersIsCutAndNotSentAgain) {
    constexpr std::size_t SIZE = 64 << 20; // the buffers of both ends grow to less than this
    const std::string strNext = frameOf("next", 0);
    connect();
    sendText(std::string(SIZE, 'p'));
    std::string strGot;
    // Nothing tells when there is room again: what is sent too early is cut, too.
    EXPECT_TRUE(drainUntil([&] {
        sendText("next");
        while (isReadable(m_peer.getSocket(), 0))
            strGot += m_peer.receive(65536, 0);
        return strGot.size() > strNext.size() && strGot.substr(strGot.size() - strNext.size()) == strNext;
    })) << "the peer takes the next frame for payload";
    m_transfer.close();
    const std::string strEnd = m_peer.receive(SIZE);
    EXPECT_TRUE(m_peer.awaitClose());
    const std::size_t uiTaken = strGot.find_first_not_of('p', 10);
    RecordProperty("taken", static_cast<int>(uiTaken));
    EXPECT_GT(uiTaken, 65536u);
    EXPECT_LT(uiTaken + strEnd.size(), SIZE);
    EXPECT_EQ(strGot.substr(0, 10), headerOf(SIZE, 0));
    EXPECT_EQ((strGot + strEnd).find('p', uiTaken), std::string::npos) << "nothing of the rest follows";
}
} // namespace
