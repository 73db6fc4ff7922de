#include <Orlix/ipc/CSocketServer.h>

#include <Orlix/foundation/CStringConverter.h>
#include <Orlix/ipc/CImpSocketServer.h>
#include <Orlix/ipc/ISocketServerListener.h>
#include <Orlix/system/CLogUtility.h>

#include "foundation/TextOf.h"
#include "ipc/CHeartBeat.h"
#include "ipc/SocketBuffer.h"

namespace Orlix {
namespace {

/** @param pFormat takes the name and the port. */
CString describe(const wchar_t* pFormat, const CString& strName, unsigned int uiPort) {
    return CStringConverter::format(pFormat, textOf(strName), static_cast<int>(uiPort));
}
} // namespace

CSocketServer::CSocketServer(unsigned int uiPort, unsigned int uiBufferSize)
    : m_pListener(nullptr), m_uiPort(uiPort), m_bConnected(false), m_pBuffer(nullptr),
      m_uiBufferSize(getReceiveBufferSize(uiBufferSize)), m_pSocket(new CImpSocketServer(this, uiPort)) {
    m_pBuffer = static_cast<unsigned char*>(CMemory::malloc(m_uiBufferSize, 0));
}

CSocketServer::~CSocketServer() {
    CSocketServer::stop();
    if (m_pBuffer)
        CMemory::free(m_pBuffer);
    delete m_pSocket;
}

void CSocketServer::start() {
    if (!m_bRunning)
        startThread();
}

void CSocketServer::stop() {
    m_bPrepareStop = true; // first, so that the thread takes the closing below for no failure
    disconnect();
    stopThread();
}

void CSocketServer::prepareStop() {
    m_bPrepareStop = true; // first, as in stop
    disconnect();
    prepareStopThread();
}

int CSocketServer::sendData(const unsigned char* pData, unsigned int uiLength, unsigned int uiClientID) {
    return m_bConnected ? m_pSocket->sendData(pData, uiLength, uiClientID) : -1;
}

void CSocketServer::disconnect() {
    if (m_pSocket)
        m_pSocket->closeSocket();
    m_bConnected = false;
}

void CSocketServer::run() {
    if (!m_pSocket || !m_pSocket->initSocket()) {
        m_bConnected = false;
        notifyDisconnect(0);
        CLogEngine::error2(describe(L"Fail to create socket server (%ls : %d).", m_strName, m_uiPort));
        return;
    }
    CLogEngine::info(describe(L"Socket server (%ls : %d) has started.", m_strName, m_uiPort));
    while (!isPrepareStopThread() && serveNextClient()) {}
    disconnect(); // what a stop has not closed: it may have come while a socket was being made
    CLogEngine::info(describe(L"Socket server (%ls : %d) terminated.", m_strName, m_uiPort));
}

/** @return whether another client may come. */
bool CSocketServer::serveNextClient() {
    CLogEngine::info(describe(L"Socket server (%ls : %d) is waiting for client...", m_strName, m_uiPort));
    const unsigned int uiClientID = m_pSocket->connect();
    if (uiClientID != 0)
        return serveClient(uiClientID);
    if (!isPrepareStopThread()) {
        CLogEngine::error2(describe(L"Socket server (%ls : %d) can't get client.", m_strName, m_uiPort));
        m_bConnected = false;
        notifyDisconnect(0);
    }
    return false;
}

/** @return whether another client may come. */
bool CSocketServer::serveClient(unsigned int uiClientID) {
    // The name is asked for anew for each line: the listener may have changed it.
    const int iPort = static_cast<int>(m_uiPort);
    CLogEngine::info(CStringConverter::format(L"Socket server (%ls : %d) accepted client 0x%08X.", textOf(m_strName),
                                              iPort, uiClientID));
    m_bConnected = true;
    notifyConnect(uiClientID);
    while (!isPrepareStopThread()) {
        const int iLength = m_pSocket->receive(uiClientID);
        if (isPrepareStopThread())
            return false; // the listener is not told
        if (iLength < 1) {
            // The blank at the end of the line belongs to it.
            CLogEngine::info(CStringConverter::format(L"Client 0x%08X disconnected from the socket server (%ls : %d) ",
                                                      uiClientID, textOf(m_strName), iPort));
            m_bConnected = false;
            notifyDisconnect(uiClientID);
            return true;
        }
        handleChunk(uiClientID, iLength);
    }
    return false;
}

void CSocketServer::handleChunk(unsigned int uiClientID, int iLength) {
    if (!CHeartBeat::isHeartBeat(m_pBuffer, iLength)) {
        notifyDataAvailable(uiClientID, m_pBuffer, iLength);
        return;
    }
    // The reply goes to client 0, whom there never is, so none leaves the server: heartbeats go one way. It is meant.
    const CHeartBeat heartBeat;
    sendData(heartBeat.getBytes(), CHeartBeat::BYTES, 0);
}

// The pointer is read once: it may be taken away between a test and a call.

void CSocketServer::notifyConnect(unsigned int uiClientID) {
    if (ISocketServerListener* const pListener = m_pListener)
        pListener->onConnect(this, uiClientID);
}

void CSocketServer::notifyDisconnect(unsigned int uiClientID) {
    if (ISocketServerListener* const pListener = m_pListener)
        pListener->onDisconnect(this, uiClientID);
}

void CSocketServer::notifyDataAvailable(unsigned int uiClientID, unsigned char* pData, int iLength) {
    if (ISocketServerListener* const pListener = m_pListener)
        pListener->onDataAvailable(this, uiClientID, pData, iLength);
}
} // namespace Orlix
