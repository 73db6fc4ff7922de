// The steps of the client's thread, made on the test's own thread with a socket that follows a script and delays that
// are written down instead of waited for.
#include <Orlix/ipc/CSocketClient.h>

#include <Orlix/foundation/IWaitObject.h>
#include <Orlix/ipc/ISocketClient.h>
#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/threading/CTimerManager.h>

#include "ipc/SocketFixture.h"

#include <cstring>

using namespace Orlix;
using namespace OrlixTest;

namespace {

/** Follows a script with one letter for each call that can fail:
 *  i and c are a socket and a connection that are made, f a failure, d data "D", h a heartbeat, H one with an AF before
 *  it; s sets the stop flag and succeeds, x sets it and fails. The end of the script is x. */
class CScriptedSocket : public ISocketClient {
    ORLIX_HEAP_CLASS(L"CScriptedSocket")

public:
    CScriptedSocket(COpenClient& client, CSocketTrace& trace, const std::string& strScript)
        : m_client(client), m_trace(trace), m_script(trace, strScript, client.m_bPrepareStop) {}
    bool initSocket() override { return m_script.take("init") != 'f'; }
    void closeSocket() override { m_trace.add(m_client.isConnect() ? "close" : "close unconnected"); }
    bool connect(int& iError) override {
        m_trace.add(iError == 0 ? "error is 0" : "error is set");
        iError = 111;
        const char ch = m_script.take("connect");
        return ch == 'c' || ch == 's';
    }
    bool receive(int& iLength) override {
        const char ch = m_script.take("receive");
        const std::string strChunk = ch == 'd'   ? "D"
                                     : ch == 'h' ? std::string("\xAF\0", 2)
                                                 : std::string("\xAF\xAF\0", 3);
        std::memcpy(m_client.m_pBuffer, strChunk.data(), strChunk.size());
        iLength = static_cast<int>(strChunk.size());
        return ch != 'f' && ch != 'x';
    }
    int sendData(const unsigned char* pData, unsigned int uiLength) override {
        m_trace.add("send " + std::string(pData, pData + uiLength));
        return static_cast<int>(uiLength);
    }

private:
    COpenClient& m_client;
    CSocketTrace& m_trace;
    CSocketScript m_script;
};

/** Writes delays down. After the last of those it is to let pass, it sets the stop flag. */
class CWrittenWait : public IWaitObject {
    ORLIX_HEAP_CLASS(L"CWrittenWait")

public:
    CWrittenWait(COpenClient& client, CSocketTrace& trace, unsigned int uiWaits)
        : m_client(client), m_trace(trace), m_uiWaits(uiWaits) {}
    void reset() override {}
    void wait(unsigned int uiMilliseconds) override {
        m_trace.add("wait " + std::to_string(uiMilliseconds));
        if (--m_uiWaits == 0)
            m_client.m_bPrepareStop = true;
    }
    void forceWait(unsigned int) override {}
    void notify() override { m_trace.add("wake"); }

private:
    COpenClient& m_client;
    CSocketTrace& m_trace;
    unsigned int m_uiWaits;
};

class COpenWait : public CWaitObject {
public:
    static IWaitObject*& impOf(CWaitObject& wait) { return wait.*(&COpenWait::m_pImp); }
};

class CSocketClientRun : public ::testing::Test {
protected:
    ~CSocketClientRun() override {
        CTimerManager::deleteInstance(); // what the stop of a timer has made
        CMessageCenter::deleteInstance();
    }

    /** @param uiWaits after how many delays the stop flag is set; 0 for never. */
    VecEntry run(const std::string& strScript, unsigned int uiWaits = 0, bool bReconnect = true) {
        const std::size_t uiBefore = m_trace.getEntries().size();
        COpenClient client(L"127.0.0.1", 4711, bReconnect, 16);
        client.setListener(&m_trace);
        client.setThreadName(L"C");
        client.m_bPrepareStop = m_bStopAtEntry;
        delete client.m_pSocket;
        client.m_pSocket = new CScriptedSocket(client, m_trace, strScript);
        IWaitObject*& pWait = COpenWait::impOf(client.m_waitWake);
        delete pWait;
        pWait = new CWrittenWait(client, m_trace, uiWaits);
        client.run();
        EXPECT_FALSE(client.isConnect());
        VecEntry vecEntry = m_trace.getEntries();
        vecEntry.erase(vecEntry.begin(), vecEntry.begin() + static_cast<std::ptrdiff_t>(uiBefore));
        client.setListener(nullptr);
        return vecEntry;
    }

    CSocketTrace m_trace;
    bool m_bStopAtEntry = false;
};

const char MADE[] = "Info: Socket client (C) has connected with the socket server (4711).";
const char LOST[] = "Info: Socket client (C) has dis-connected with the socket server (4711).";
const char FAILED[] =
    "Warning: Fail to set connection between the socket client (C) and socket (4711) server, error code=111.";

const VecEntry ATTEMPT{"init", "error is 0", "connect"};
const VecEntry CLOSING{"close unconnected", "disconnect"};

TEST_F(CSocketClientRun, AStopBeforeItEndsItWithOneDisconnect) {
    m_bStopAtEntry = true;
    EXPECT_EQ(run("ic"), CLOSING);
}

TEST_F(CSocketClientRun, WithoutASocketItEndsWithAnError) {
    EXPECT_EQ(
        run("f"),
        (entries("init", "Error: Fail to create socket client (C : 4711).", "wake", "close unconnected") + CLOSING))
        << "asking itself to stop closes once, the end once more";
}

TEST_F(CSocketClientRun, AStopWhileItConnectsIsToldTwice) {
    EXPECT_EQ(run("is"), ATTEMPT + CLOSING + CLOSING) << "whether the connection was made";
    EXPECT_EQ(run("ix"), ATTEMPT + CLOSING + CLOSING) << "or not";
}

TEST_F(CSocketClientRun, AFailedAttemptIsNotToldAndTriedAgain) {
    EXPECT_EQ(run("ififix"), ATTEMPT + entries("close unconnected", FAILED, "wait 1000") + ATTEMPT +
                                 entries("close unconnected", "wait 1000") + ATTEMPT + CLOSING + CLOSING);
}

TEST_F(CSocketClientRun, AFailedAttemptIsTriedAgainAlsoWithoutReconnection) {
    EXPECT_EQ(run("ififix", 0, false), ATTEMPT + entries("close unconnected", FAILED, "wait 1000") + ATTEMPT +
                                           entries("close unconnected", "wait 1000") + ATTEMPT + CLOSING + CLOSING);
}

TEST_F(CSocketClientRun, AStopInTheDelayIsToldOnce) {
    EXPECT_EQ(run("if", 1), ATTEMPT + entries("close unconnected", FAILED, "wait 1000") + CLOSING);
}

TEST_F(CSocketClientRun, DelaysGrowAndEveryTwentiethFailureIsLogged) {
    std::string strScript;
    for (int i = 0; i < 60; ++i)
        strScript += "if";
    VecEntry vecExpected;
    for (int i = 1; i <= 60; ++i) {
        if (i == 1 || i == 21 || i == 41)
            vecExpected.push_back(FAILED);
        vecExpected.push_back(i <= 5 ? "wait 1000" : i <= 50 ? "wait 2000" : "wait 5000");
    }
    VecEntry vecSeen;
    for (const std::string& strEntry : run(strScript))
        if (strEntry == FAILED || strEntry.compare(0, 4, "wait") == 0)
            vecSeen.push_back(strEntry);
    EXPECT_EQ(vecSeen, vecExpected);
}

TEST_F(CSocketClientRun, AConnectionStartsTheCountOfFailuresAnew) {
    run("ifififififificfif");
    EXPECT_EQ(m_trace.count(FAILED), 2u) << "the first failure and the first behind the connection";
    EXPECT_EQ(m_trace.count("wait 2000"), 1u) << "the sixth";
    EXPECT_EQ(m_trace.count("wait 1000"), 5u + 1u + 1u);
}

TEST_F(CSocketClientRun, TellsOfDataAndDropsHeartbeats) {
    EXPECT_EQ(run("ichdHdx"), ATTEMPT +
                                  entries(MADE, "connect", "receive", "receive", "data D", "receive", "receive",
                                          "data D", "receive", "close", "disconnect") +
                                  CLOSING)
        << "the stop while it receives is told twice";
}

TEST_F(CSocketClientRun, DataThatComesWithTheStopIsLost) {
    EXPECT_EQ(run("ics"), ATTEMPT + entries(MADE, "connect", "receive", "close", "disconnect") + CLOSING);
}

TEST_F(CSocketClientRun, ALossIsToldOnceAndFollowedByADelay) {
    EXPECT_EQ(run("icfix"), ATTEMPT + entries(MADE, "connect", "receive", LOST, "close", "disconnect", "wait 1000") +
                                ATTEMPT + CLOSING + CLOSING);
}

TEST_F(CSocketClientRun, WithoutReconnectionALossEndsIt) {
    EXPECT_EQ(run("icf", 0, false),
              ATTEMPT + entries(MADE, "connect", "receive", LOST, "close", "disconnect", "wait 1000"));
}

TEST_F(CSocketClientRun, AStopInTheDelayBehindALossIsToldAgain) {
    EXPECT_EQ(run("icf", 1),
              ATTEMPT + entries(MADE, "connect", "receive", LOST, "close", "disconnect", "wait 1000") + CLOSING);
}

/** Sets the stop flag of its client when that has connected. */
class CStoppingListener : public CSocketTrace {
public:
    void onConnect(CSocketClient* pClient) override {
        CSocketTrace::onConnect(pClient);
        static_cast<COpenClient*>(pClient)->m_bPrepareStop = true;
    }
};

TEST(CSocketClientStop, BetweenConnectionAndFirstReceiveIsToldOnce) {
    CStoppingListener trace;
    COpenClient client(L"", 4711, true, 16);
    client.setListener(&trace);
    client.setThreadName(STRING_NULL);
    delete client.m_pSocket;
    client.m_pSocket = new CScriptedSocket(client, trace, "ic");
    client.run();
    EXPECT_EQ(trace.getEntries(),
              ATTEMPT + entries("Info: Socket client () has connected with the socket server (4711).", "connect",
                                "close", "disconnect"))
        << "without a name the text is empty";
    client.setListener(nullptr);
}

TEST_F(CSocketClientRun, HeartbeatsRunWithTheConnectionWhereTheyAreNeeded) {
    struct CHearing : CSocketTrace {
        void onConnect(CSocketClient*) override {}
        void onDataAvailable(CSocketClient* pClient, unsigned char*, int) override {
            const CTimer& timer = static_cast<COpenClient*>(pClient)->m_timerHeartBeat;
            add(timer.isRunning() && timer.getListener() == pClient ? "beats" : "silent");
        }
        void onDisconnect(CSocketClient* pClient) override { onDataAvailable(pClient, nullptr, 0); }
    };
    const struct {
        bool bNeed;
        const char* pScript;
        VecEntry vecExpected;
    } aryRow[] = {
        {false, "icdfix", {"silent", "silent", "silent", "silent"}},
        {true, "icdfix", {"beats", "beats", "silent", "silent"}}, // a loss stops them behind its delay
        {true, "icdx", {"beats", "beats", "beats"}},              // so does the end
    };
    for (const auto& row : aryRow) {
        CHearing hearing;
        CSocketTrace calls; // and the log
        COpenClient client(L"", 4711, true, 16);
        client.setListener(&hearing);
        client.setNeedSendHB(row.bNeed);
        EXPECT_EQ(client.getNeedSendHB(), row.bNeed);
        delete client.m_pSocket;
        client.m_pSocket = new CScriptedSocket(client, calls, row.pScript);
        client.tryToConnect(); // remembered, so that there is no delay
        client.run();
        EXPECT_EQ(hearing.getEntries(), row.vecExpected) << row.pScript;
        EXPECT_FALSE(client.m_timerHeartBeat.isRunning());
        client.setListener(nullptr);
    }
}

TEST_F(CSocketClientRun, OnlyItsOwnTimerSendsAHeartbeat) {
    struct CSending : COpenClient {
        using COpenClient::COpenClient;
        int sendData(const unsigned char* pData, unsigned int uiLength) override {
            m_strSent.append(pData, pData + uiLength).append("|");
            return 2;
        }
        std::string m_strSent;
    } client(L"", 1, true, 16);
    CTimer other;
    client.onTimer(&other, 1);
    client.onTimer(nullptr, 1);
    client.onTimerComplete(&client.m_timerHeartBeat);
    EXPECT_EQ(client.m_strSent, "");
    client.onTimer(&client.m_timerHeartBeat, 7);
    EXPECT_EQ(client.m_strSent, std::string("\xAF\0|", 3));
}

TEST_F(CSocketClientRun, TheHeartbeatIsATimerOfFiveSecondsWithoutEnd) {
    COpenClient client(L"", 1, true, 16);
    EXPECT_EQ(client.m_timerHeartBeat.getDelay(), 5000u);
    EXPECT_EQ(client.m_timerHeartBeat.getRepeatCount(), 0u);
    EXPECT_EQ(client.m_timerHeartBeat.getListener(), nullptr);
    client.startHeartBeat();
    EXPECT_TRUE(client.m_timerHeartBeat.isRunning());
    EXPECT_EQ(client.m_timerHeartBeat.getListener(), &client);
    client.stopHeartBeat();
    EXPECT_FALSE(client.m_timerHeartBeat.isRunning());
    EXPECT_EQ(client.m_timerHeartBeat.getListener(), nullptr);
}
} // namespace
