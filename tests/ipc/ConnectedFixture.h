#pragma once

#include "ipc/DataTransferFixture.h"

#include <Orlix/ipc/CSocketClient.h>

#include "support/RawPeer.h"

#include <algorithm>

namespace OrlixTest {

/** A data transfer whose other side is a raw socket. */
class CConnectedFixture : public CDataTransferFixture {
protected:
    CConnectedFixture() { m_transfer.setListener(&m_listener); }
    ~CConnectedFixture() override {
        m_peer.close(); // first: a server waits for its client before it closes
        m_transfer.close();
    }

    /** Opens as server and connects to it. */
    void serve() {
        m_transfer.openAsServer(m_port.getPort());
        connectPeer();
    }
    void connectPeer() {
        const std::size_t uiBefore = countCalls("connect");
        m_peer = CRawPeer::connectTo(m_port.getPort());
        EXPECT_TRUE(drainUntil([&] { return countCalls("connect") > uiBefore; }));
    }
    /** Opens as client and accepts it. */
    void connect() {
        m_port.listen();
        m_transfer.openAsClient(L"127.0.0.1", m_port.getPort());
        acceptPeer();
    }
    void acceptPeer() {
        const std::size_t uiBefore = countCalls("connect");
        m_peer = m_port.accept();
        EXPECT_TRUE(drainUntil([&] { return countCalls("connect") > uiBefore; }));
    }
    /** Waits for one more disconnect than there were. */
    template <class F> void awaitDisconnect(F fnCause) {
        const std::size_t uiBefore = countCalls("disconnect");
        fnCause();
        EXPECT_TRUE(drainUntil([&] { return countCalls("disconnect") > uiBefore; }));
    }

    std::size_t countCalls(const std::string& strCall) const {
        return static_cast<std::size_t>(std::count(m_listener.m_vecCall.begin(), m_listener.m_vecCall.end(), strCall));
    }
    bool heard(const std::string& strCall) const { return countCalls(strCall) != 0; }
    void sendText(const std::string& strText) {
        m_transfer.sendLogicData(bytesOf(strText), static_cast<unsigned int>(strText.size()));
    }

    CRawListener m_port;
    CRawPeer m_peer;
    COpenTransfer m_transfer;
};
} // namespace OrlixTest
