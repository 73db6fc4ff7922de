#include "CPeerChannel.h"

#include <Orlix/messaging/CMessageCenter.h>

#include <sys/socket.h>
#include <unistd.h>

using namespace Orlix;

CPeerChannel::~CPeerChannel() { end(); } // here, while the callbacks of this class can still be called

void CPeerChannel::end() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_bEnd = true;
        if (m_iClient >= 0)
            shutdown(m_iClient, SHUT_RDWR); // or close would wait until the client sends something or goes
    }
    close();
}

void CPeerChannel::onConnect(CSocketServer* pServer, unsigned int uiClientID) {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_iClient >= 0)
            ::close(m_iClient);                   // the server has just forgotten it, so nobody else closes it
        m_iClient = static_cast<int>(uiClientID); // a client's ID is the number of its socket
        if (m_bEnd)
            shutdown(m_iClient, SHUT_RDWR);
    }
    CDataTransfer::onConnect(pServer, uiClientID);
}

void CPeerChannel::onDisconnect(CSocketServer* pServer, unsigned int uiClientID) {
    if (uiClientID == 0) { // no client: the server itself has failed, and closes what it still holds
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_iClient = -1;
        m_flagFailed.set();
        CMessageCenter::getInstance()->pushQuitMessage();
    } else {
        shutdown(static_cast<int>(uiClientID), SHUT_RDWR); // the peer sees the end now, not when the next one comes
    }
    CDataTransfer::onDisconnect(pServer, uiClientID);
}

void CPeerChannel::onConnect(CSocketClient* pClient) {
    CDataTransfer::onConnect(pClient);
    m_flagConnected.set(); // behind it, so that whoever has waited for this finds the channel connected
}
