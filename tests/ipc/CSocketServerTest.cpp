// The server against peers on the system's calls alone, and under a client of the library.
#include <Orlix/ipc/CSocketServer.h>

#include <Orlix/ipc/CImpSocketServer.h>

#include "ipc/SocketFixture.h"
#include "support/Descriptors.h"

#include <cerrno>
#include <clocale>
#include <cstring>
#include <netinet/tcp.h>
#include <sys/resource.h>
#include <thread>
#include <type_traits>

using namespace Orlix;
using namespace OrlixTest;

namespace {

static_assert(std::is_base_of<CObject, CSocketServer>::value && std::is_base_of<CThread, CSocketServer>::value, "");
static_assert(std::is_base_of<ISocketServer, CImpSocketServer>::value && std::is_abstract<ISocketServer>::value, "");

class COpenImp : public CImpSocketServer {
public:
    using CImpSocketServer::CImpSocketServer;
    using CImpSocketServer::m_address;
    using CImpSocketServer::m_iClient;
    using CImpSocketServer::m_iSocket;
    static int listenerOf(COpenServer& server) {
        return static_cast<CImpSocketServer*>(server.m_pSocket)->*(&COpenImp::m_iSocket);
    }
};

/** Tells whether it is being received from. */
class CCountedImp : public CImpSocketServer {
    ORLIX_HEAP_CLASS(L"CCountedImp")

public:
    using CImpSocketServer::CImpSocketServer;
    int receive(unsigned int uiClientID) override {
        ++m_uiCalls;
        const int iLength = CImpSocketServer::receive(uiClientID);
        ++m_uiReturns;
        return iLength;
    }
    bool isReceiving() const { return m_uiCalls > m_uiReturns; }

private:
    std::atomic<unsigned int> m_uiCalls{0};
    std::atomic<unsigned int> m_uiReturns{0};
};

/** Keeps a stop inside its closing until the server's thread is over. */
class CMeetingImp : public CImpSocketServer {
    ORLIX_HEAP_CLASS(L"CMeetingImp")

public:
    CMeetingImp(CSocketServer* pOwner, unsigned int uiPort, CSocketTrace& trace)
        : CImpSocketServer(pOwner, uiPort), m_trace(trace) {}
    void closeSocket() override {
        CImpSocketServer::closeSocket();
        if (std::this_thread::get_id() != m_idOwn) // the server's own, which closes at its end and may be first
            return;
        EXPECT_TRUE(m_trace.await("exits"));
    }

private:
    CSocketTrace& m_trace;
    const std::thread::id m_idOwn = std::this_thread::get_id();
};

class CSocketServerTest : public ::testing::Test {
protected:
    CSocketServerTest() : m_server(m_port.getPort(), 0), m_pImp(new CCountedImp(&m_server, m_port.getPort())) {
        delete m_server.m_pSocket;
        m_server.m_pSocket = m_pImp;
        m_server.setListener(&m_trace);
        m_server.setThreadName(L"S");
    }
    ~CSocketServerTest() override {
        m_server.stop();
        m_server.setListener(nullptr);
    }

    std::string text(const char* pFormat) const { return fill(pFormat, "S", m_port.getPort()); }
    std::string started() const { return text("Info: Socket server (%s : %d) has started."); }
    std::string waiting() const { return text("Info: Socket server (%s : %d) is waiting for client..."); }
    std::string terminated() const { return text("Info: Socket server (%s : %d) terminated."); }
    std::string accepted(unsigned int uiClientID) const {
        char szID[16];
        std::snprintf(szID, sizeof(szID), "0x%08X.", uiClientID);
        return text("Info: Socket server (%s : %d) accepted client ") + szID;
    }
    std::string left(unsigned int uiClientID) const {
        char szID[32];
        std::snprintf(szID, sizeof(szID), "Info: Client 0x%08X", uiClientID);
        return szID + text(" disconnected from the socket server (%s : %d) ");
    }
    static std::string named(const char* pEvent, unsigned int uiClientID) {
        return pEvent + (" " + std::to_string(uiClientID));
    }
    /** Starts the server and connects. */
    CRawPeer connect() {
        m_server.start();
        CRawPeer peer = CRawPeer::connectTo(m_port.getPort());
        EXPECT_TRUE(greet(peer));
        return peer;
    }
    /** Whether the server hears the peer, so that the peer is the client being served; the server goes on to receive.
     */
    bool greet(CRawPeer& peer) {
        const std::size_t uiBefore = m_trace.awaitData(0).size();
        if (!peer.send("!") || m_trace.awaitData(uiBefore + 1).size() != uiBefore + 1)
            return false;
        while (!m_pImp->isReceiving())
            std::this_thread::yield();
        return true;
    }
    int send(const std::string& strBytes, unsigned int uiClientID) {
        return m_server.sendData(reinterpret_cast<const unsigned char*>(strBytes.data()),
                                 static_cast<unsigned int>(strBytes.size()), uiClientID);
    }

    CRawListener m_port;
    CSocketTrace m_trace;
    COpenServer m_server;
    CCountedImp* const m_pImp; // the server's
};

TEST_F(CSocketServerTest, BeginsUnconnected) {
    EXPECT_FALSE(m_server.isConnect());
    EXPECT_EQ(m_server.m_uiBufferSize, 1048576u) << "0 means the default";
    EXPECT_EQ(COpenServer(1, 7).m_uiBufferSize, 7u);
    EXPECT_EQ(send("x", 0), -1);
    EXPECT_EQ(send("x", 5), -1);
    m_server.notifyConnect(3);
    m_server.notifyDisconnect(4);
    m_server.setListener(nullptr);
    m_server.notifyConnect(3);
    m_server.notifyDisconnect(4);
    m_server.notifyDataAvailable(3, nullptr, 0);
    EXPECT_EQ(m_trace.getEntries(), (entries("connect 3", "disconnect 4")));
}

TEST_F(CSocketServerTest, CarriesBytesBothWays) {
    CRawPeer peer = connect();
    const unsigned int uiClientID = m_trace.getClientID();
    EXPECT_TRUE(m_server.isConnect());
    EXPECT_EQ(send("to the peer", uiClientID), 11);
    EXPECT_EQ(peer.receive(11), "to the peer");
    peer.send("from the peer");
    EXPECT_EQ(m_trace.awaitData(14), "!from the peer");
    peer.close();
    EXPECT_TRUE(m_trace.await(waiting(), 2));
    m_server.stop();
    EXPECT_EQ(m_trace.getEntries(), (entries(started(), waiting(), accepted(uiClientID), named("connect", uiClientID),
                                             "data !", "data from the peer", left(uiClientID),
                                             named("disconnect", uiClientID), waiting(), terminated(), "exits")))
        << "a stop is not told";
}

TEST_F(CSocketServerTest, SendsToTheClientBeingServedOnly) {
    CRawPeer peer = connect();
    const unsigned int uiClientID = m_trace.getClientID();
    EXPECT_EQ(send("x", 0), -1) << "0 is no client";
    EXPECT_EQ(send("x", uiClientID + 1), -1);
    EXPECT_EQ(send("y", uiClientID), 1);
    EXPECT_EQ(peer.receive(1), "y");
    peer.close();
    EXPECT_TRUE(m_trace.await(named("disconnect", uiClientID)));
    EXPECT_FALSE(m_server.isConnect());
    EXPECT_EQ(send("x", uiClientID), -1);
}

TEST_F(CSocketServerTest, AHeartbeatGetsNoReply) {
    CRawPeer peer = connect();
    peer.send(std::string("\xAF\0", 2));
    EXPECT_EQ(peer.receive(1, 50), "");
    EXPECT_TRUE(greet(peer)) << "the heartbeat was no data";
}

TEST_F(CSocketServerTest, AStartWhileItRunsChangesNothing) {
    CRawPeer peer = connect();
    m_server.start();
    EXPECT_TRUE(greet(peer));
    EXPECT_EQ(m_trace.count(started()), 1u);
}

TEST_F(CSocketServerTest, TheSocketsAreSetUpAsAskedFor) {
    COpenServer server(m_port.getPort() + 0x10000u, 16);
    COpenImp imp(&server, m_port.getPort() + 0x10000u);
    EXPECT_EQ(imp.m_address.sin_family, AF_INET);
    EXPECT_EQ(imp.m_address.sin_port, htons(static_cast<unsigned short>(m_port.getPort()))) << "the low 16 bits";
    EXPECT_EQ(imp.m_address.sin_addr.s_addr, htonl(INADDR_ANY));
    ASSERT_TRUE(imp.initSocket());
    int iValue = 0;
    socklen_t uiSize = sizeof(iValue);
    getsockopt(imp.m_iSocket, SOL_SOCKET, SO_REUSEADDR, &iValue, &uiSize);
    EXPECT_EQ(iValue, 1);
    CRawPeer peer = CRawPeer::connectTo(m_port.getPort());
    const unsigned int uiClientID = imp.connect();
    EXPECT_EQ(uiClientID, static_cast<unsigned int>(imp.m_iClient));
    iValue = 0;
    getsockopt(imp.m_iClient, IPPROTO_TCP, TCP_NODELAY, &iValue, &uiSize);
    EXPECT_NE(iValue, 0);
    timeval limit{1, 1};
    socklen_t uiLimit = sizeof(limit);
    getsockopt(imp.m_iClient, SOL_SOCKET, SO_RCVTIMEO, &limit, &uiLimit);
    EXPECT_EQ(limit.tv_sec + limit.tv_usec, 0) << "the limit is refused, and receives wait for ever";
    EXPECT_EQ(imp.receive(0), -1);
    EXPECT_EQ(imp.receive(uiClientID + 1), -1);
    const std::ptrdiff_t iOpen = countDescriptors();
    imp.closeSocket();
    imp.closeSocket();
    EXPECT_EQ(countDescriptors(), iOpen - 2);
    EXPECT_TRUE(peer.awaitClose());
    EXPECT_EQ(imp.connect(), 0u);
    EXPECT_EQ(imp.receive(uiClientID), -1);
    EXPECT_EQ(imp.sendData(nullptr, 0, uiClientID), -1);
}

TEST_F(CSocketServerTest, APortInUseIsLoggedWithTheSystemsText) {
    std::setlocale(LC_ALL, "zh_CN.utf8"); // the library's own, which it would set with the first conversion of a text
    m_port.listen();
    const std::ptrdiff_t iOpen = countDescriptors();
    m_server.start();
    EXPECT_TRUE(m_trace.await("exits"));
    m_server.waitForThreadStop();
    EXPECT_EQ(m_trace.getEntries(),
              (entries(std::string("Error: Socket server bind error: ") + std::strerror(EADDRINUSE) + ".",
                       "disconnect 0", text("Error: Fail to create socket server (%s : %d)."), "exits")));
    EXPECT_EQ(countDescriptors(), iOpen);
}

TEST_F(CSocketServerTest, AFailedAcceptEndsIt) {
    m_server.start();
    EXPECT_TRUE(m_trace.await(waiting()));
    shutdown(COpenImp::listenerOf(m_server), SHUT_RDWR);
    EXPECT_TRUE(m_trace.await("exits"));
    m_server.waitForThreadStop();
    EXPECT_EQ(m_trace.getEntries(),
              (entries(started(), waiting(), text("Error: Socket server (%s : %d) can't get client."), "disconnect 0",
                       terminated(), "exits")));
    EXPECT_EQ(COpenImp::listenerOf(m_server), 0) << "closed with the end of the thread";
}

TEST_F(CSocketServerTest, ASecondClientWaitsForTheFirstToLeave) {
    CRawPeer first = connect();
    CRawPeer second = CRawPeer::connectTo(m_port.getPort());
    second.send("second");
    EXPECT_TRUE(greet(first)) << "the first is still the one";
    first.close();
    EXPECT_EQ(m_trace.awaitData(8), "!!second");
}

TEST_F(CSocketServerTest, EachClientThatHasGoneLeavesOneDescriptorOpen) {
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, 4096);
    setrlimit(RLIMIT_NOFILE, &limit);
    m_server.start();
    EXPECT_TRUE(m_trace.await(waiting()));
    const std::ptrdiff_t iOpen = countDescriptors();
    for (std::size_t i = 1; i <= 500; ++i) {
        CRawPeer peer = CRawPeer::connectTo(m_port.getPort());
        ASSERT_TRUE(peer.send("x"));
        ASSERT_EQ(m_trace.awaitData(i).size(), i);
        if (i % 2 == 0)
            peer.reset();
        peer.close();
        ASSERT_TRUE(m_trace.await(waiting(), i + 1));
    }
    EXPECT_EQ(countDescriptors(), iOpen + 500) << "settled: nobody closes them";
    m_server.stop();
    EXPECT_EQ(countDescriptors(), iOpen + 500 - 2) << "but the last client's and the listening one";
}

TEST_F(CSocketServerTest, AStopWithoutAClientEndsAtOnce) {
    m_server.start();
    EXPECT_TRUE(m_trace.await(waiting()));
    m_server.stop();
    EXPECT_EQ(m_trace.getEntries(), (entries(started(), waiting(), terminated(), "exits")));
}

TEST_F(CSocketServerTest, TheClosingOfAStopIsNoFailure) {
    const VecEntry vecExpected = entries(started(), waiting(), terminated(), "exits");
    for (const auto fnStop : {&CSocketServer::stop, &CSocketServer::prepareStop}) {
        CSocketTrace trace;
        COpenServer server(m_port.getPort(), 16);
        server.setListener(&trace);
        server.setThreadName(L"S");
        delete server.m_pSocket;
        server.m_pSocket = new CMeetingImp(&server, m_port.getPort(), trace);
        server.start();
        EXPECT_TRUE(trace.await(waiting()));
        (server.*fnStop)();
        EXPECT_EQ(trace.getEntries(), vecExpected);
        server.waitForThreadStop();
        server.setListener(nullptr);
    }
}

TEST_F(CSocketServerTest, TheDestructorStopsIt) {
    CSocketServer* const pServer = new CSocketServer(m_port.getPort(), 16);
    pServer->setListener(&m_trace);
    pServer->setThreadName(L"S");
    pServer->start();
    EXPECT_TRUE(m_trace.await(waiting()));
    delete pServer;
    EXPECT_EQ(m_trace.getEntries(), (entries(started(), waiting(), terminated(), "exits")));
}

TEST_F(CSocketServerTest, AStopWaitsForASilentClientToSendOrGo) {
    for (const bool bSend : {true, false}) {
        CRawPeer peer = connect();
        const unsigned int uiClientID = m_trace.getClientID();
        std::thread stopper([&] {
            m_server.stop();
            m_trace.add("stopped");
        });
        while (m_server.isConnect())
            std::this_thread::yield();
        EXPECT_EQ(m_trace.getEntries().back(), "data !") << "the client is silent";
        if (bSend)
            peer.send("lost");
        else
            peer.close();
        stopper.join();
        m_server.waitForThreadStop();
        const VecEntry vecEntry = m_trace.getEntries();
        EXPECT_EQ(VecEntry(vecEntry.end() - 3, vecEntry.end()), (entries(terminated(), "exits", "stopped")));
        EXPECT_EQ(m_trace.count(named("disconnect", uiClientID)), 0u);
    }
    EXPECT_EQ(m_trace.awaitData(0), "!!") << "what came with the stop is lost";
    EXPECT_EQ(m_trace.count(terminated()), 2u);
}

TEST_F(CSocketServerTest, APreparedStopEndsTheThreadWithoutWaiting) {
    CRawPeer peer = connect();
    m_server.prepareStop();
    EXPECT_TRUE(m_server.isPrepareStopThread());
    EXPECT_FALSE(m_server.isConnect());
    EXPECT_EQ(m_trace.count("exits"), 0u) << "the client is silent";
    peer.close();
    EXPECT_TRUE(m_trace.await("exits"));
    m_server.waitForThreadStop();
}

TEST_F(CSocketServerTest, StopsAtAnyMomentEndTheThread) {
    const std::ptrdiff_t iOpen = countDescriptors();
    for (int i = 0; i < 200; ++i) {
        m_server.start();
        for (int j = 0; j < i; ++j)
            std::this_thread::yield();
        m_server.stop();
        m_server.waitForThreadStop();
    }
    EXPECT_EQ(countDescriptors(), iOpen);
    EXPECT_EQ(m_trace.count("disconnect 0"), 0u);
}

TEST_F(CSocketServerTest, APeerThatNeverReadsFillsTheSocketOfItsOwn) {
    CRawPeer peer = connect();
    std::thread sender([&] {
        const std::string strBlock(1 << 20, 'x');
        while (send(strBlock, m_trace.getClientID()) == 1 << 20) {}
    });
    peer.send("x");
    EXPECT_EQ(m_trace.awaitData(2), "!x") << "it is served all the same";
    peer.reset();
    sender.join();
}

// ---- Under a client that reconnects

TEST_F(CSocketServerTest, AClientComesBackToAServerThatIsStartedAgain) {
    constexpr std::size_t ROUNDS = 50;
    constexpr std::size_t UNHURRIED = 3; // whose delay of a second is waited out
    CSocketTrace trace;
    COpenClient client(L"127.0.0.1", m_port.getPort(), true, 0);
    client.setListener(&trace);
    client.start(false);
    for (std::size_t i = 1; i <= ROUNDS; ++i) {
        m_server.start();
        const unsigned int uiStart = CTime::getTickCount();
        while (trace.count("connect") < i && CTime::getTickCount() - uiStart < PEER_MS) {
            if (i > UNHURRIED)
                client.tryToConnect();
            usleep(1000);
        }
        ASSERT_EQ(trace.count("connect"), i);
        ASSERT_LT(CTime::getTickCount() - uiStart, 2500u) << "the delay behind the loss, or one more attempt's";
        while (!m_server.isConnect())
            std::this_thread::yield();
        std::thread stopper([&] { m_server.stop(); });
        while (trace.count("disconnect") < i) { // the stop waits for the client's next word
            client.sendData(reinterpret_cast<const unsigned char*>("x"), 1);
            usleep(1000);
        }
        stopper.join();
        m_server.waitForThreadStop();
        EXPECT_EQ(trace.count("connect"), trace.count("disconnect"));
    }
    client.stop();
    EXPECT_EQ(trace.count("connect"), ROUNDS);
    client.setListener(nullptr);
}
} // namespace
