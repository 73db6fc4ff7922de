#include <Orlix/ipc/CSocketClient.h>

#include <Orlix/foundation/CStringConverter.h>
#include <Orlix/ipc/CImpSocketClient.h>
#include <Orlix/ipc/ISocketClientListener.h>
#include <Orlix/system/CLogUtility.h>

#include "foundation/TextOf.h"
#include "ipc/CHeartBeat.h"
#include "ipc/SocketBuffer.h"

namespace Orlix {
namespace {

constexpr unsigned int HEART_BEAT_MS = 5000;
constexpr unsigned int RECONNECT_MS = 1000;
constexpr unsigned int FAILURES_PER_WARNING = 20;

/** The delay behind a number of failures in a row. */
unsigned int getRetryDelay(unsigned int uiFailures) {
    if (uiFailures <= 5)
        return 1000;
    return uiFailures <= 50 ? 2000 : 5000;
}
} // namespace

CSocketClient::CSocketClient(const CString& strAddress, unsigned int uiPort, bool bAutoReconnect,
                             unsigned int uiBufferSize)
    : m_pListener(nullptr), m_strAddress(strAddress), m_uiPort(uiPort), m_iAutoReconnect(bAutoReconnect),
      m_bBlocking(false), m_bConnected(false), m_pBuffer(nullptr), m_uiBufferSize(getReceiveBufferSize(uiBufferSize)),
      m_timerHeartBeat(HEART_BEAT_MS, 0), m_bNeedSendHB(false), m_pSocket(new CImpSocketClient(this)) {
    m_pBuffer = static_cast<unsigned char*>(CMemory::malloc(m_uiBufferSize, 0));
}

CSocketClient::~CSocketClient() {
    CSocketClient::stop();
    if (m_pBuffer)
        CMemory::free(m_pBuffer);
    delete m_pSocket;
}

void CSocketClient::start(bool bBlocking) {
    if (m_bRunning)
        return;
    m_bBlocking = bBlocking;
    startThread();
}

void CSocketClient::stop() {
    closeSocket();
    m_bConnected = false;
    stopThread();
}

void CSocketClient::prepareStop() {
    closeSocket();
    m_bConnected = false;
    prepareStopThread();
}

void CSocketClient::prepareStopThread() {
    CThread::prepareStopThread();
    // The thread may have made a socket since stop closed the one before. From here on it sees the flag before it
    // connects, so this is the last one that it can wait for.
    closeSocket();
}

int CSocketClient::sendData(const unsigned char* pData, unsigned int uiLength) {
    return m_bConnected ? m_pSocket->sendData(pData, uiLength) : -1;
}

void CSocketClient::run() {
    unsigned int uiFailures = 0;
    if (isPrepareStopThread())
        finish();
    else
        while (tryConnection(uiFailures)) {}
}

void CSocketClient::closeSocket() {
    if (m_pSocket)
        m_pSocket->closeSocket();
}

void CSocketClient::dropConnection() {
    closeSocket();
    m_bConnected = false;
    notifyDisconnect();
}

/** What the thread does last when it was asked to stop. The listener may have heard of the disconnect just before and
 *  hears of it here again, which is accepted. */
void CSocketClient::finish() {
    dropConnection();
    if (m_bNeedSendHB)
        stopHeartBeat();
}

/** One attempt, and all that follows from it. @param uiFailures in a row so far.
 *  @return whether another attempt is to be made. */
bool CSocketClient::tryConnection(unsigned int& uiFailures) {
    if (!m_pSocket || !m_pSocket->initSocket()) {
        CLogEngine::error2(CStringConverter::format(L"Fail to create socket client (%ls : %d).", textOf(m_strName),
                                                    static_cast<int>(m_uiPort)));
        prepareStopThread();
        finish();
        return false;
    }
    int iError = 0;
    const bool bMade = m_pSocket->connect(iError);
    if (isPrepareStopThread()) {
        dropConnection();
        finish();
        return false;
    }
    if (!bMade)
        return awaitRetry(uiFailures, iError);
    uiFailures = 0;
    return serveConnection();
}

/** @return false if the thread was asked to stop meanwhile. */
bool CSocketClient::awaitRetry(unsigned int& uiFailures, int iError) {
    closeSocket();
    m_bConnected = false; // nobody is told: there was no connection
    if (uiFailures++ % FAILURES_PER_WARNING == 0)
        CLogEngine::warning2(CStringConverter::format(
            L"Fail to set connection between the socket client (%ls) and socket (%d) server, error code=%d.",
            textOf(m_strName), static_cast<int>(m_uiPort), iError));
    m_waitWake.wait(getRetryDelay(uiFailures));
    if (!isPrepareStopThread())
        return true;
    finish();
    return false;
}

/** @return whether another attempt is to be made once the connection has gone. */
bool CSocketClient::serveConnection() {
    CLogEngine::info(CStringConverter::format(L"Socket client (%ls) has connected with the socket server (%d).",
                                              textOf(m_strName), static_cast<int>(m_uiPort)));
    m_bConnected = true;
    notifyConnect();
    if (m_bNeedSendHB)
        startHeartBeat();
    while (!isPrepareStopThread()) {
        int iLength = 0;
        const bool bReceived = m_pSocket->receive(iLength);
        if (isPrepareStopThread())
            dropConnection();
        else if (!bReceived)
            return awaitReconnection();
        else if (!CHeartBeat::isHeartBeat(m_pBuffer, iLength))
            notifyDataAvailable(m_pBuffer, iLength);
    }
    finish();
    return false;
}

/** What follows when the peer has gone. @return whether another attempt is to be made. */
bool CSocketClient::awaitReconnection() {
    CLogEngine::info(CStringConverter::format(L"Socket client (%ls) has dis-connected with the socket server (%d).",
                                              textOf(m_strName), static_cast<int>(m_uiPort)));
    dropConnection();
    m_waitWake.wait(RECONNECT_MS);
    if (isPrepareStopThread()) {
        finish();
        return false;
    }
    if (m_bNeedSendHB)
        stopHeartBeat();
    return !isPrepareStopThread() && m_iAutoReconnect != 0;
}

void CSocketClient::onTimer(const CTimer* pTimer, unsigned int) {
    if (pTimer != &m_timerHeartBeat)
        return;
    const CHeartBeat heartBeat;
    sendData(heartBeat.getBytes(), CHeartBeat::BYTES);
}

void CSocketClient::onTimerComplete(const CTimer*) {}

void CSocketClient::startHeartBeat() {
    m_timerHeartBeat.setListener(this);
    m_timerHeartBeat.start();
}

void CSocketClient::stopHeartBeat() {
    m_timerHeartBeat.setListener(nullptr);
    m_timerHeartBeat.stop();
}

// The pointer is read once: it may be taken away between a test and a call.

void CSocketClient::notifyConnect() {
    if (ISocketClientListener* const pListener = m_pListener)
        pListener->onConnect(this);
}

void CSocketClient::notifyDisconnect() {
    if (ISocketClientListener* const pListener = m_pListener)
        pListener->onDisconnect(this);
}

void CSocketClient::notifyDataAvailable(unsigned char* pData, int iLength) {
    if (ISocketClientListener* const pListener = m_pListener)
        pListener->onDataAvailable(this, pData, iLength);
}
} // namespace Orlix
