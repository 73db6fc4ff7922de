// The server's sockets on their own, where the system refuses.
#include <Orlix/ipc/CImpSocketServer.h>

#include "ipc/SocketFixture.h"
#include "support/ChildProcess.h"
#include "support/Descriptors.h"
#include "support/SocketStandIn.h"

#include <cerrno>
#include <clocale>
#include <cstring>
#include <netinet/tcp.h>

using namespace Orlix;
using namespace OrlixTest;

namespace {

class CImpSocketServerTest : public ::testing::Test {
protected:
    CImpSocketServerTest() : m_server(m_port.getPort(), 16), m_imp(&m_server, m_port.getPort()) {}
    ~CImpSocketServerTest() override { m_imp.closeSocket(); }

    CRawListener m_port;
    CSocketTrace m_trace;
    COpenServer m_server;
    CImpSocketServer m_imp;
};

TEST_F(CImpSocketServerTest, OneClientWaitsInTheQueueAndTheLimitIsAnInteger) {
    CSocketStandIn standIn;
    ASSERT_TRUE(m_imp.initSocket());
    const CRawPeer peer = CRawPeer::connectTo(m_port.getPort());
    ASSERT_NE(m_imp.connect(), 0u);
    EXPECT_EQ(standIn.getCalls(), (entries(CSocketStandIn::option(SOL_SOCKET, SO_REUSEADDR, 1), "listen 1",
                                           CSocketStandIn::option(SOL_SOCKET, SO_RCVTIMEO, 60000),
                                           CSocketStandIn::option(IPPROTO_TCP, TCP_NODELAY, 1))));
}

TEST_F(CImpSocketServerTest, WhereNobodyCanListenItFailsInSilence) {
    CSocketStandIn standIn;
    standIn.m_bNoListen = true;
    const std::ptrdiff_t iOpen = countDescriptors();
    EXPECT_FALSE(m_imp.initSocket());
    EXPECT_EQ(countDescriptors(), iOpen);
    EXPECT_EQ(m_trace.getEntries(), VecEntry());
    EXPECT_EQ(m_imp.connect(), 0u);
}

TEST_F(CImpSocketServerTest, WithoutASocketToGiveTheBindingFails) {
    std::setlocale(LC_ALL, "zh_CN.utf8"); // the library's own, which it would set with the first conversion of a text
    CSocketStandIn standIn;
    standIn.m_bNoSocket = true;
    EXPECT_FALSE(m_imp.initSocket());
    EXPECT_EQ(m_trace.getEntries(),
              (entries(std::string("Error: Socket server bind error: ") + std::strerror(EBADF) + ".")));
}

TEST_F(CImpSocketServerTest, ASendToAPeerThatBrokeOffFailsAndRaisesNoSignal) {
    const tagChildResult result = runInChild([this] {
        m_imp.initSocket();
        CRawPeer peer = CRawPeer::connectTo(m_port.getPort());
        const unsigned int uiClientID = m_imp.connect();
        const auto fnSend = [&] { return m_imp.sendData(reinterpret_cast<const unsigned char*>("x"), 1, uiClientID); };
        const bool bGood = fnSend() == 1;
        peer.reset();
        const bool bFirst = fnSend() == -1; // takes the news
        return bGood && bFirst && fnSend() == -1 ? 7 : 1;
    });
    EXPECT_EQ(result.iExitCode, 7);
}
} // namespace
