// The client's socket on its own, where the system refuses or interrupts.
#include <Orlix/ipc/CImpSocketClient.h>

#include "ipc/SocketFixture.h"
#include "support/ChildProcess.h"
#include "support/SocketStandIn.h"

#include <csignal>
#include <netinet/tcp.h>
#include <thread>

using namespace Orlix;
using namespace OrlixTest;

namespace {

class COpenImp : public CImpSocketClient {
public:
    using CImpSocketClient::CImpSocketClient;
    using CImpSocketClient::m_iSocket;
};

class CImpSocketClientTest : public ::testing::Test {
protected:
    CImpSocketClientTest() : m_client(L"127.0.0.1", m_listener.getPort(), true, 16), m_imp(&m_client) {
        m_listener.listen();
    }
    ~CImpSocketClientTest() override { m_imp.closeSocket(); }

    CRawPeer connect() {
        int iError = 5;
        EXPECT_TRUE(m_imp.initSocket());
        EXPECT_TRUE(m_imp.connect(iError)) << iError;
        return m_listener.accept();
    }
    int send() { return m_imp.sendData(reinterpret_cast<const unsigned char*>("x"), 1); }

    CRawListener m_listener;
    COpenClient m_client;
    COpenImp m_imp;
};

TEST_F(CImpSocketClientTest, AsksForALimitOfTwentySecondsAsAnInteger) {
    CSocketStandIn standIn;
    ASSERT_TRUE(m_imp.initSocket());
    EXPECT_EQ(standIn.getCalls(), (entries(CSocketStandIn::option(SOL_SOCKET, SO_RCVTIMEO, 20000),
                                           CSocketStandIn::option(IPPROTO_TCP, TCP_NODELAY, 1))));
}

TEST_F(CImpSocketClientTest, WithoutASocketToGiveItCountsAsMadeAndReceivesNothing) {
    CSocketStandIn standIn;
    standIn.m_bNoSocket = true;
    EXPECT_TRUE(m_imp.initSocket()) << "settled";
    EXPECT_EQ(m_imp.m_iSocket, -1);
    int iLength = 5;
    EXPECT_FALSE(m_imp.receive(iLength)) << "at once: nothing could end a wait";
    EXPECT_EQ(iLength, -1);
    EXPECT_EQ(send(), -1);
}

TEST_F(CImpSocketClientTest, ASendToAPeerThatBrokeOffFailsAndRaisesNoSignal) {
    const tagChildResult result = runInChild([this] {
        CRawPeer peer = connect();
        peer.reset();
        const bool bFirst = send() == -1; // takes the news
        return bFirst && send() == -1 ? 7 : 1;
    });
    EXPECT_EQ(result.iExitCode, 7);
}

/** Addresses of just what the buffer holds, with leading zeros, and longer. */
TEST_F(CImpSocketClientTest, Of32BytesOfAnAddressTheLastPlaysNoPart) {
    const std::wstring strLongest = std::wstring(20, L'0') + L"177.0.0.001";
    ASSERT_EQ(strLongest.size(), 31u);
    const std::wstring aryAddress[] = {strLongest, strLongest + L"7", strLongest + L".1.example"};
    for (const std::wstring& strAddress : aryAddress) {
        COpenClient client(strAddress.c_str(), m_listener.getPort(), true, 16);
        COpenImp imp(&client);
        ASSERT_TRUE(imp.initSocket());
        int iError = 5;
        EXPECT_TRUE(imp.connect(iError)) << iError;
        EXPECT_TRUE(m_listener.accept().isOpen());
        imp.closeSocket();
    }
}

TEST_F(CImpSocketClientTest, ASignalEndsAReceiveLikeALoss) {
    struct sigaction action {
    }, before{};
    action.sa_handler = [](int) {};
    sigaction(SIGUSR1, &action, &before);
    CRawPeer peer = connect();
    std::atomic<bool> bReturned{false};
    std::thread receiver([&] {
        int iLength = 5;
        EXPECT_FALSE(m_imp.receive(iLength));
        EXPECT_EQ(iLength, -1);
        bReturned = true;
    });
    while (!bReturned) { // one that comes before the wait has no effect
        pthread_kill(receiver.native_handle(), SIGUSR1);
        std::this_thread::yield();
    }
    receiver.join();
    sigaction(SIGUSR1, &before, nullptr);
}
} // namespace
