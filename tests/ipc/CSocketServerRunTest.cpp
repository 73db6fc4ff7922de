// The steps of the server's thread, made on the test's own thread with sockets that follow a script.
#include <Orlix/ipc/CSocketServer.h>

#include <Orlix/ipc/ISocketServer.h>

#include "ipc/SocketFixture.h"

#include <cstring>
#include <random>

using namespace Orlix;
using namespace OrlixTest;

namespace {

constexpr unsigned int CLIENT = 0x2A;

/** Takes and serves client 42 by a script with one letter for each call that can fail: c is a client or a socket that
 *  comes, f a failure, d data "D", h a heartbeat, e the end of the stream; s sets the stop flag and succeeds, x sets it
 *  and fails. The end of the script is x. */
class CScriptedSocket : public ISocketServer {
    ORLIX_HEAP_CLASS(L"CScriptedSocket")

public:
    CScriptedSocket(COpenServer& server, CSocketTrace& trace, const std::string& strScript)
        : m_server(server), m_trace(trace), m_script(trace, strScript, server.m_bPrepareStop) {}
    bool initSocket() override { return m_script.take("init") != 'f'; }
    void closeSocket() override { m_trace.add("close"); }
    unsigned int connect() override {
        const char ch = m_script.take(m_server.isConnect() ? "wait while connected" : "wait");
        return ch == 'c' || ch == 's' ? CLIENT : 0;
    }
    int receive(unsigned int uiClientID) override {
        const char ch = m_script.take("receive " + std::to_string(uiClientID));
        const std::string strChunk = ch == 'h' ? std::string("\xAF\0", 2) : "D";
        std::memcpy(m_server.m_pBuffer, strChunk.data(), strChunk.size());
        return ch == 'f' || ch == 'x' ? -1 : ch == 'e' ? 0 : static_cast<int>(strChunk.size());
    }
    int sendData(const unsigned char* pData, unsigned int uiLength, unsigned int uiClientID) override {
        m_trace.add("send " + std::string(pData, pData + uiLength) + " to " + std::to_string(uiClientID));
        return -1;
    }

private:
    COpenServer& m_server;
    CSocketTrace& m_trace;
    CSocketScript m_script;
};

VecEntry run(const std::string& strScript, const CString& strName = L"S") {
    CSocketTrace trace;
    COpenServer server(4711, 16);
    server.setListener(&trace);
    server.setThreadName(strName);
    delete server.m_pSocket;
    server.m_pSocket = new CScriptedSocket(server, trace, strScript);
    server.run();
    EXPECT_FALSE(server.isConnect());
    const VecEntry vecEntry = trace.getEntries();
    server.setListener(nullptr);
    return vecEntry;
}

const VecEntry STARTED{"init", "Info: Socket server (S : 4711) has started."};
const VecEntry WAITING{"Info: Socket server (S : 4711) is waiting for client...", "wait"};
const VecEntry ACCEPTED{"Info: Socket server (S : 4711) accepted client 0x0000002A.", "connect 42", "receive 42"};
const VecEntry LEFT{"Info: Client 0x0000002A disconnected from the socket server (S : 4711) ", "disconnect 42"};
const VecEntry ENDED{"close", "Info: Socket server (S : 4711) terminated."};

TEST(CSocketServerRun, WithoutASocketItEndsWithAnError) {
    EXPECT_EQ(run("f"), (entries("init", "disconnect 0", "Error: Fail to create socket server (S : 4711).")));
}

TEST(CSocketServerRun, AStopWhileTheSocketIsMadeEndsItAndClosesTheSocket) { EXPECT_EQ(run("s"), STARTED + ENDED); }

TEST(CSocketServerRun, AStopWhileItWaitsIsNoFailure) { EXPECT_EQ(run("cx"), STARTED + WAITING + ENDED); }

TEST(CSocketServerRun, AFailureToTakeAClientEndsIt) {
    EXPECT_EQ(run("cf"),
              STARTED + WAITING + entries("Error: Socket server (S : 4711) can't get client.", "disconnect 0") + ENDED);
}

TEST(CSocketServerRun, AStopThatComesWithAClientIsNotTold) {
    VecEntry vecAccepted = ACCEPTED;
    vecAccepted.pop_back();
    EXPECT_EQ(run("cs"), STARTED + WAITING + vecAccepted + ENDED) << "the client is";
}

TEST(CSocketServerRun, TellsOfDataUntilTheClientLeaves) {
    for (const char* const pScript : {"ccdde", "ccddf"})
        EXPECT_EQ(run(pScript), STARTED + WAITING + ACCEPTED + entries("data D", "receive 42", "data D", "receive 42") +
                                    LEFT + WAITING + ENDED);
}

TEST(CSocketServerRun, WhatComesWithTheStopIsLostAndTheEndIsNotTold) {
    EXPECT_EQ(run("ccs"), STARTED + WAITING + ACCEPTED + ENDED);
    EXPECT_EQ(run("ccx"), STARTED + WAITING + ACCEPTED + ENDED);
}

TEST(CSocketServerRun, AHeartbeatIsAnsweredToNobody) {
    EXPECT_EQ(run("cchdx"), STARTED + WAITING + ACCEPTED +
                                entries(std::string("send \xAF\0 to 0", 12), "receive 42", "data D", "receive 42") +
                                ENDED);
}

TEST(CSocketServerRun, TheAnswerGoesThroughTheSubclass) {
    struct CSending : COpenServer {
        using COpenServer::COpenServer;
        int sendData(const unsigned char* pData, unsigned int uiLength, unsigned int uiClientID) override {
            m_strSent.append(pData, pData + uiLength).append(std::to_string(uiClientID));
            return -1;
        }
        std::string m_strSent;
    };
    CSocketTrace trace;
    CSending server(4711, 16);
    delete server.m_pSocket;
    server.m_pSocket = new CScriptedSocket(server, trace, "cchx");
    server.run();
    EXPECT_EQ(server.m_strSent, std::string("\xAF\0"
                                            "0",
                                            3));
}

TEST(CSocketServerRun, WithoutANameTheTextIsEmpty) {
    EXPECT_EQ(run("f", STRING_NULL).back(), "Error: Fail to create socket server ( : 4711).");
    EXPECT_EQ(run("f", L"").back(), "Error: Fail to create socket server ( : 4711).");
}

TEST(CSocketServerRun, AListenerMayChangeTheName) {
    struct CRenaming : CSocketTrace {
        void onConnect(CSocketServer* pServer, unsigned int) override {
            pServer->setThreadName(L"a name that needs another block");
        }
    } trace;
    COpenServer server(4711, 16);
    server.setListener(&trace);
    server.setThreadName(L"S");
    delete server.m_pSocket;
    server.m_pSocket = new CScriptedSocket(server, trace, "cce");
    server.run();
    EXPECT_EQ(trace.count("Info: Client 0x0000002A disconnected from the socket server (a name that needs another "
                          "block : 4711) "),
              1u);
    server.setListener(nullptr);
}

// ---- Which chunks are heartbeats

/** Hands out one chunk, then the stop. */
class COneChunk : public CScriptedSocket {
    ORLIX_HEAP_CLASS(L"COneChunk")

public:
    COneChunk(COpenServer& server, CSocketTrace& trace, const std::string& strBuffer, std::size_t uiChunk)
        : CScriptedSocket(server, trace, "cc"), m_open(server), m_strBuffer(strBuffer), m_uiChunk(uiChunk) {}
    int receive(unsigned int uiClientID) override {
        if (m_strBuffer.empty())
            return CScriptedSocket::receive(uiClientID);
        std::memcpy(m_open.m_pBuffer, m_strBuffer.data(), m_strBuffer.size());
        m_strBuffer.clear();
        return static_cast<int>(m_uiChunk);
    }

private:
    COpenServer& m_open;
    std::string m_strBuffer;
    std::size_t m_uiChunk;
};

class CHeartBeatTest : public ::testing::Test {
protected:
    /** @param strBuffer all of the receive buffer, of which the first bytes are the chunk.
     *  @return whether the chunk is dropped as a heartbeat. */
    bool isDropped(const std::string& strBuffer, std::size_t uiChunk) {
        const std::size_t uiBefore = m_trace.awaitData(0).size();
        COpenServer server(4711, static_cast<unsigned int>(strBuffer.size())); // a read behind it is out of bounds
        server.setListener(&m_trace);
        delete server.m_pSocket;
        server.m_pSocket = new COneChunk(server, m_trace, strBuffer, uiChunk);
        server.run();
        server.setListener(nullptr);
        const std::string strData = m_trace.awaitData(0).substr(uiBefore);
        EXPECT_TRUE(strData.empty() || strData == strBuffer.substr(0, uiChunk));
        return strData.empty();
    }

    CSocketTrace m_trace;
};

/** The rule as a count of bytes looked at, over a buffer that keeps what earlier chunks left. */
bool isHeartBeatByCount(const std::string& strBuffer, std::size_t uiChunk) {
    if (strBuffer[0] != '\xAF')
        return false;
    std::size_t uiCount = 1;
    while (uiCount < strBuffer.size()) {
        ++uiCount;
        if (strBuffer[uiCount - 1] != '\xAF')
            return uiCount == uiChunk;
    }
    return false;
}

TEST_F(CHeartBeatTest, IsWhatTheCountOfBytesSays) {
    std::mt19937 random(8);
    for (int i = 0; i < 2000; ++i) {
        std::string strBuffer(1 + random() % 6, '\xAF');
        for (char& ch : strBuffer)
            if (random() % 3 == 0)
                ch = static_cast<char>(random());
        const std::size_t uiChunk = 1 + random() % strBuffer.size();
        ASSERT_EQ(isDropped(strBuffer, uiChunk), isHeartBeatByCount(strBuffer, uiChunk))
            << ::testing::PrintToString(strBuffer) << " " << uiChunk;
    }
}
} // namespace
