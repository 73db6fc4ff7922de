// The client against peers on the system's calls alone.
#include <Orlix/ipc/CSocketClient.h>

#include <Orlix/ipc/CImpSocketClient.h>

#include "ipc/SocketFixture.h"
#include "support/Descriptors.h"

#include <fcntl.h>
#include <functional>
#include <netinet/tcp.h>
#include <sys/resource.h>
#include <thread>
#include <type_traits>

using namespace Orlix;
using namespace OrlixTest;

namespace {

static_assert(std::is_base_of<CObject, CSocketClient>::value && std::is_base_of<CThread, CSocketClient>::value &&
                  std::is_base_of<ITimerListener, CSocketClient>::value,
              "an object that is a thread and hears a timer");
static_assert(std::is_base_of<ISocketClient, CImpSocketClient>::value && std::is_abstract<ISocketClient>::value, "");

class COpenImp : public CImpSocketClient {
public:
    using CImpSocketClient::CImpSocketClient;
    using CImpSocketClient::m_iSocket;
    /** Whether it has called and waits for an answer. */
    static bool isConnecting(COpenClient& client) {
        tcp_info info{};
        socklen_t uiSize = sizeof(info);
        const int iSocket = static_cast<CImpSocketClient*>(client.m_pSocket)->*(&COpenImp::m_iSocket);
        return getsockopt(iSocket, IPPROTO_TCP, TCP_INFO, &info, &uiSize) == 0 && info.tcpi_state == TCP_SYN_SENT;
    }
};

/** Tells when it is being received from for the first time. */
class CTracedImp : public CImpSocketClient {
    ORLIX_HEAP_CLASS(L"CTracedImp")

public:
    CTracedImp(CSocketClient* pOwner, CSocketTrace& trace) : CImpSocketClient(pOwner), m_trace(trace) {}
    bool receive(int& iLength) override {
        if (!m_bTold.exchange(true))
            m_trace.add("receiving");
        return CImpSocketClient::receive(iLength);
    }

private:
    CSocketTrace& m_trace;
    std::atomic<bool> m_bTold{false};
};

class CSocketClientTest : public ::testing::Test {
protected:
    CSocketClientTest() : m_client(L"127.0.0.1", m_listener.getPort(), true, 0) {
        m_client.setListener(&m_trace);
        m_client.setThreadName(L"C");
    }
    ~CSocketClientTest() override {
        m_client.stop();
        m_client.setListener(nullptr);
    }

    std::string made() const {
        return fill("Info: Socket client (%s) has connected with the socket server (%d).", "C", m_listener.getPort());
    }
    std::string lost() const {
        return fill("Info: Socket client (%s) has dis-connected with the socket server (%d).", "C",
                    m_listener.getPort());
    }
    std::string failed(int iError) const {
        return fill("Warning: Fail to set connection between the socket client (%s) and socket (%d) server, error "
                    "code=",
                    "C", m_listener.getPort()) +
               std::to_string(iError) + ".";
    }
    /** Starts the client and waits until it has begun to receive, from when on a stop is told twice. */
    CRawPeer connect(bool bBlocking = false) {
        const std::size_t uiBefore = m_trace.count("receiving");
        delete m_client.m_pSocket;
        m_client.m_pSocket = new CTracedImp(&m_client, m_trace);
        m_listener.listen();
        while (m_listener.accept(0).isOpen()) {} // of a client that came back while a stop was slow to set its flag
        m_client.start(bBlocking);
        CRawPeer peer = m_listener.accept();
        EXPECT_TRUE(peer.isOpen());
        EXPECT_TRUE(m_trace.await("receiving", uiBefore + 1));
        return peer;
    }
    int send(const std::string& strBytes) {
        return m_client.sendData(reinterpret_cast<const unsigned char*>(strBytes.data()),
                                 static_cast<unsigned int>(strBytes.size()));
    }

    CRawListener m_listener;
    CSocketTrace m_trace;
    COpenClient m_client;
};

TEST_F(CSocketClientTest, BeginsUnconnected) {
    EXPECT_FALSE(m_client.isConnect());
    EXPECT_FALSE(m_client.getNeedSendHB());
    EXPECT_FALSE(m_client.m_bBlocking);
    EXPECT_EQ(m_client.m_iAutoReconnect, 1);
    EXPECT_EQ(m_client.m_uiBufferSize, 1048576u) << "0 means the default";
    EXPECT_EQ(COpenClient(L"", 1, false, 7).m_uiBufferSize, 7u);
    EXPECT_EQ(send("x"), -1);
    m_client.notifyConnect();
    m_client.notifyDisconnect();
    m_client.setListener(nullptr);
    m_client.notifyConnect();
    m_client.notifyDisconnect();
    m_client.notifyDataAvailable(nullptr, 0);
    EXPECT_EQ(m_trace.getEntries(), (entries("connect", "disconnect")));
}

TEST_F(CSocketClientTest, CarriesBytesBothWays) {
    for (const bool bBlocking : {false, true}) {
        CRawPeer peer = connect(bBlocking);
        EXPECT_TRUE(m_client.isConnect());
        EXPECT_EQ(send("to the peer"), 11);
        EXPECT_EQ(peer.receive(11), "to the peer");
        peer.send("from the peer");
        EXPECT_EQ(m_trace.awaitData(bBlocking ? 26 : 13), bBlocking ? "from the peerfrom the peer" : "from the peer");
        m_client.stop();
        EXPECT_FALSE(m_client.isConnect());
        EXPECT_TRUE(peer.awaitClose());
        m_client.waitForThreadStop();
    }
    EXPECT_GE(m_trace.count(made()), 2u);
}

TEST_F(CSocketClientTest, AChunkIsNoLongerThanTheBuffer) {
    COpenClient client(L"127.0.0.1", m_listener.getPort(), true, 4);
    client.setListener(&m_trace);
    m_listener.listen();
    client.start(false);
    CRawPeer peer = m_listener.accept();
    peer.send("0123456789");
    EXPECT_EQ(m_trace.awaitData(10), "0123456789");
    EXPECT_EQ(m_trace.count("data 0123"), 1u);
    EXPECT_EQ(m_trace.count("data 4567"), 1u);
    client.stop();
}

TEST_F(CSocketClientTest, AStartWhileItRunsChangesNothing) {
    CRawPeer peer = connect(true);
    m_client.start(false);
    EXPECT_TRUE(m_client.m_bBlocking);
    EXPECT_EQ(m_trace.count("connect"), 1u);
}

TEST_F(CSocketClientTest, TheSocketIsSetUpAsAskedFor) {
    for (const bool bBlocking : {false, true}) {
        m_client.m_bBlocking = bBlocking;
        COpenImp imp(&m_client);
        ASSERT_TRUE(imp.initSocket());
        EXPECT_EQ((fcntl(imp.m_iSocket, F_GETFL) & O_NONBLOCK) == 0, bBlocking);
        timeval limit{1, 1};
        int iNoDelay = 0;
        socklen_t uiSize = sizeof(limit), uiInt = sizeof(iNoDelay);
        getsockopt(imp.m_iSocket, SOL_SOCKET, SO_RCVTIMEO, &limit, &uiSize);
        getsockopt(imp.m_iSocket, IPPROTO_TCP, TCP_NODELAY, &iNoDelay, &uiInt);
        EXPECT_EQ(limit.tv_sec + limit.tv_usec, 0) << "the limit is refused, and receives wait for ever";
        EXPECT_NE(iNoDelay, 0);
        const std::ptrdiff_t iOpen = countDescriptors();
        imp.closeSocket();
        imp.closeSocket();
        EXPECT_EQ(countDescriptors(), iOpen - 1);
    }
}

TEST_F(CSocketClientTest, WithoutASocketNothingWorks) {
    COpenImp imp(&m_client);
    int iError = 5, iLength = 5;
    EXPECT_FALSE(imp.connect(iError));
    EXPECT_EQ(iError, -1);
    EXPECT_FALSE(imp.receive(iLength));
    EXPECT_EQ(iLength, -1);
    EXPECT_EQ(imp.sendData(nullptr, 0), -1);
}

TEST_F(CSocketClientTest, ASocketThatTheSystemRefusedFailsAfterTheWholeWait) {
    COpenImp imp(&m_client);
    imp.m_iSocket = -1;
    int iError = 5;
    const unsigned int uiStart = CTime::getTickCount();
    EXPECT_FALSE(imp.connect(iError));
    EXPECT_GE(CTime::getTickCount() - uiStart, 2990u);
    EXPECT_EQ(iError, -1);
    imp.closeSocket();
}

TEST_F(CSocketClientTest, ARefusalIsLoggedWithTheErrorWhereThereIsOne) {
    m_client.start(false);
    EXPECT_TRUE(m_trace.await(failed(ECONNREFUSED)));
    m_client.stop();
    m_client.waitForThreadStop();
    m_client.start(true);
    EXPECT_TRUE(m_trace.await(failed(-1))) << "a connect that waits has taken the error away already";
    m_client.stop();
    EXPECT_EQ(m_trace.count("connect"), 0u);
    EXPECT_EQ(m_trace.count("disconnect"), 2u) << "one for each stop";
}

TEST_F(CSocketClientTest, OnlyANumericAddressConnects) {
    m_listener.listen();
    for (const bool bBlocking : {false, true}) {
        for (const wchar_t* const pAddress :
             {L"localhost", L"", static_cast<const wchar_t*>(nullptr), L"127.0.0.1.1", L"\x4E2D"}) {
            COpenClient client(pAddress, m_listener.getPort(), true, 16);
            client.m_bBlocking = bBlocking;
            COpenImp imp(&client);
            imp.initSocket();
            int iError = 0;
            EXPECT_FALSE(imp.connect(iError));
            EXPECT_NE(iError, 0);
            imp.closeSocket();
        }
    }
    EXPECT_FALSE(m_listener.accept(0).isOpen());
}

TEST_F(CSocketClientTest, TheLow16BitsOfThePortCount) {
    m_listener.listen();
    COpenClient client(L"127.0.0.1", m_listener.getPort() + 0x30000u, true, 16);
    client.start(false);
    EXPECT_TRUE(m_listener.accept().isOpen());
}

TEST_F(CSocketClientTest, RetriesWaitOneSecondUnlessTheyAreCutShort) {
    m_client.start(false);
    EXPECT_TRUE(m_trace.await(failed(ECONNREFUSED)));
    const unsigned int uiStart = CTime::getTickCount();
    m_listener.listen();
    EXPECT_TRUE(m_listener.accept().isOpen());
    EXPECT_GE(CTime::getTickCount() - uiStart, 900u);

    m_client.stop();
    m_client.waitForThreadStop();
    CRawListener refusing;
    COpenClient client(L"127.0.0.1", refusing.getPort(), true, 16);
    client.setListener(&m_trace);
    client.start(false);
    EXPECT_TRUE(m_trace.await("exits"));
    const unsigned int uiSecond = CTime::getTickCount();
    refusing.listen();
    CRawPeer peer;
    while (!peer.isOpen() && CTime::getTickCount() - uiSecond < 900) {
        client.tryToConnect();
        peer = refusing.accept(10);
    }
    EXPECT_TRUE(peer.isOpen());
    client.stop();
    client.setListener(nullptr);
}

TEST_F(CSocketClientTest, FiftyRefusalsCutShortAreLoggedThreeTimes) {
    m_client.start(false);
    const auto fnWarnings = [&] { return m_trace.count(failed(ECONNREFUSED)); };
    const unsigned int uiStart = CTime::getTickCount();
    while (fnWarnings() < 3 && CTime::getTickCount() - uiStart < PEER_MS) {
        m_client.tryToConnect();
        std::this_thread::yield();
    }
    EXPECT_EQ(fnWarnings(), 3u);
}

TEST_F(CSocketClientTest, APeerThatLeavesIsToldOnceAndTriedAgainAfterASecond) {
    const std::function<void(CRawPeer&)> aryLeave[] = {[](CRawPeer& peer) { peer.close(); },
                                                       [](CRawPeer& peer) { peer.reset(); }};
    std::size_t uiRound = 0;
    CRawPeer peer = connect();
    for (const auto& fnLeave : aryLeave) {
        fnLeave(peer);
        EXPECT_TRUE(m_trace.await("disconnect", ++uiRound));
        const unsigned int uiStart = CTime::getTickCount();
        EXPECT_FALSE(m_client.isConnect());
        EXPECT_EQ(send("x"), -1);
        peer = m_listener.accept();
        EXPECT_GE(CTime::getTickCount() - uiStart, 900u);
        EXPECT_TRUE(m_trace.await("connect", uiRound + 1));
    }
    EXPECT_EQ(m_trace.getEntries(), (entries(made(), "connect", "receiving", lost(), "disconnect", made(), "connect",
                                             lost(), "disconnect", made(), "connect")));
}

TEST_F(CSocketClientTest, WithoutReconnectionTheThreadEndsWithTheConnection) {
    COpenClient client(L"127.0.0.1", m_listener.getPort(), false, 16);
    client.setListener(&m_trace);
    client.setThreadName(L"C");
    m_listener.listen();
    client.start(false);
    m_listener.accept().close();
    EXPECT_TRUE(m_trace.await("exits"));
    EXPECT_EQ(m_trace.getEntries(), (entries(made(), "connect", lost(), "disconnect", "exits")));
    client.waitForThreadStop();
    EXPECT_FALSE(client.m_bRunning);
    EXPECT_FALSE(m_listener.accept(0).isOpen());
}

TEST_F(CSocketClientTest, AStopIsToldTwiceAndClosesTheConnection) {
    CRawPeer peer = connect();
    m_client.stop();
    EXPECT_TRUE(peer.awaitClose());
    EXPECT_EQ(m_trace.count("connect"), 1u);
    EXPECT_EQ(m_trace.count("disconnect"), 2u);
    EXPECT_FALSE(m_client.isConnect());
    m_client.stop();
    EXPECT_EQ(m_trace.count("disconnect"), 2u) << "an idle one is left alone";
}

TEST_F(CSocketClientTest, APreparedStopEndsTheThreadWithoutWaiting) {
    CRawPeer peer = connect();
    m_client.prepareStop();
    EXPECT_FALSE(m_client.isConnect());
    EXPECT_TRUE(m_client.isPrepareStopThread());
    EXPECT_TRUE(m_trace.await("exits"));
    EXPECT_TRUE(peer.awaitClose());
    EXPECT_EQ(m_trace.count("disconnect"), 2u);
    m_client.waitForThreadStop();
}

TEST_F(CSocketClientTest, TheDestructorStopsIt) {
    m_listener.listen();
    CSocketClient* const pClient = new CSocketClient(L"127.0.0.1", m_listener.getPort(), true, 16);
    pClient->setListener(&m_trace);
    pClient->start(true);
    CRawPeer peer = m_listener.accept();
    EXPECT_TRUE(m_trace.await("connect"));
    delete pClient;
    EXPECT_EQ(m_trace.count("exits"), 1u);
    EXPECT_TRUE(peer.awaitClose());
}

TEST_F(CSocketClientTest, CanBeStartedAgain) {
    const std::ptrdiff_t iOpen = countDescriptors();
    for (std::size_t i = 1; i <= 5; ++i) {
        CRawPeer peer = connect();
        m_client.stop();
        m_client.waitForThreadStop();
    }
    EXPECT_EQ(countDescriptors(), iOpen);
}

// ---- A peer that keeps the client waiting

/** A port of loopback whose queue is full: what connects there gets no answer. */
class CSilentPort {
public:
    CSilentPort() {
        m_listener.listen();
        ::listen(m_listener.getSocket(), 0);
        for (CRawPeer& peer : m_aryPeer) {
            peer = CRawPeer(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0));
            const sockaddr_in address = loopback(m_listener.getPort());
            (void)!::connect(peer.getSocket(), reinterpret_cast<const sockaddr*>(&address), sizeof(address));
        }
    }
    unsigned int getPort() const { return m_listener.getPort(); }

private:
    CRawListener m_listener;
    CRawPeer m_aryPeer[4];
};

TEST_F(CSocketClientTest, AConnectWithoutAnAnswerFailsAfterThreeSeconds) {
    const CSilentPort silent;
    COpenClient client(L"127.0.0.1", silent.getPort(), true, 16);
    COpenImp imp(&client);
    imp.initSocket();
    int iError = 0;
    const unsigned int uiStart = CTime::getTickCount();
    EXPECT_FALSE(imp.connect(iError));
    EXPECT_EQ(iError, -1);
    EXPECT_GE(CTime::getTickCount() - uiStart, 2990u);
    imp.closeSocket();
}

TEST_F(CSocketClientTest, AStopEndsAConnectWithoutAnAnswer) {
    const CSilentPort silent;
    for (const bool bBlocking : {false, true}) {
        COpenClient client(L"127.0.0.1", silent.getPort(), true, 16);
        client.start(bBlocking);
        while (!COpenImp::isConnecting(client))
            std::this_thread::yield();
        const unsigned int uiStart = CTime::getTickCount();
        client.stop();
        EXPECT_LT(CTime::getTickCount() - uiStart, 2500u);
    }
}

TEST_F(CSocketClientTest, APeerThatNeverReadsMakesSendsShort) {
    CRawPeer peer = connect();
    const std::string strBlock(1 << 20, 'x');
    int iSent = 0;
    unsigned int uiShort = 0;
    for (int i = 0; i < 1000 && iSent != -1; ++i) {
        iSent = send(strBlock);
        uiShort += iSent >= 0 && iSent < 1 << 20;
    }
    EXPECT_EQ(iSent, -1) << "there is no room at all any more";
    EXPECT_GE(uiShort, 1u);
    EXPECT_TRUE(m_client.isConnect()) << "which is the caller's concern";
}

TEST_F(CSocketClientTest, APeerThatSendsByteByByteIsHeardByteByByte) {
    CRawPeer peer = connect();
    for (std::size_t i = 1; i <= 20; ++i) {
        peer.send("x");
        EXPECT_EQ(m_trace.awaitData(i).size(), i);
    }
    EXPECT_EQ(m_trace.count("data x"), 20u);
}

// ---- Descriptors of any number

TEST_F(CSocketClientTest, WorksWithSocketNumbersBeyondWhatSelectCanHold) {
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit raised{std::min<rlim_t>(limit.rlim_max, 4096), limit.rlim_max};
    if (raised.rlim_cur < 1200 || setrlimit(RLIMIT_NOFILE, &raised) != 0)
        GTEST_SKIP() << "the system gives no more descriptors";
    std::vector<int> vecFilled;
    while (vecFilled.empty() || vecFilled.back() < FD_SETSIZE) {
        vecFilled.push_back(open("/dev/null", O_RDONLY));
        ASSERT_NE(vecFilled.back(), -1);
    }
    CRawPeer peer = connect();
    EXPECT_EQ(send("out"), 3);
    EXPECT_EQ(peer.receive(3), "out");
    peer.send("in");
    EXPECT_EQ(m_trace.awaitData(2), "in");
    m_client.stop();
    for (const int iFilled : vecFilled)
        close(iFilled);
    setrlimit(RLIMIT_NOFILE, &limit);
}

// ---- Stops that meet the making of a connection

/** Lets a test act where stop and the thread meet. */
class CMeetingImp : public CTracedImp {
    ORLIX_HEAP_CLASS(L"CMeetingImp")

public:
    using CTracedImp::CTracedImp;
    bool initSocket() override {
        if (m_fnBeforeInit)
            m_fnBeforeInit();
        return CImpSocketClient::initSocket();
    }
    void closeSocket() override {
        CImpSocketClient::closeSocket();
        if (const auto fnOnce = std::move(m_fnAfterClose)) {
            m_fnAfterClose = nullptr;
            fnOnce();
        }
    }
    std::function<void()> m_fnBeforeInit;
    std::function<void()> m_fnAfterClose;
};

TEST_F(CSocketClientTest, AStopThatClosesBeforeTheConnectionIsMadeIsNotLost) {
    CMeetingImp* const pImp = new CMeetingImp(&m_client, m_trace);
    delete m_client.m_pSocket;
    m_client.m_pSocket = pImp;
    m_listener.listen();
    std::atomic<bool> bClosed{false};
    pImp->m_fnBeforeInit = [&] {
        while (!bClosed)
            std::this_thread::yield();
    };
    pImp->m_fnAfterClose = [&] {
        bClosed = true;
        m_trace.await("receiving"); // the flag is not yet set, so only another closing ends that
    };
    m_client.start(false);
    m_client.stop();
    EXPECT_EQ(m_trace.count("connect"), 1u);
    EXPECT_TRUE(m_listener.accept().awaitClose());
}

TEST_F(CSocketClientTest, ASocketThatIsMadeAfterTheStopDoesNotConnect) {
    m_listener.listen();
    COpenImp imp(&m_client);
    m_client.m_bPrepareStop = true;
    imp.initSocket();
    int iError = 0;
    EXPECT_FALSE(imp.connect(iError));
    EXPECT_EQ(iError, -1);
    imp.closeSocket();
    EXPECT_FALSE(m_listener.accept(0).isOpen());
}

TEST_F(CSocketClientTest, StopsAtAnyMomentEndTheThread) {
    m_listener.listen();
    const std::ptrdiff_t iOpen = countDescriptors();
    for (int i = 0; i < 200; ++i) {
        m_client.start(i % 2 == 0);
        for (int j = 0; j < i; ++j)
            std::this_thread::yield();
        m_client.stop();
        m_client.waitForThreadStop();
        while (m_listener.accept(0).isOpen()) {}
    }
    EXPECT_EQ(countDescriptors(), iOpen);
}
} // namespace
