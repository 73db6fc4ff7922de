#include <Orlix/ipc/CImpSocketServer.h>

#include <Orlix/foundation/CStringConverter.h>
#include <Orlix/ipc/CSocketServer.h>
#include <Orlix/system/CLogUtility.h>

#include "ipc/SocketOption.h"

#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace Orlix {
namespace {

constexpr int RECEIVE_TIMEOUT = 60000;
constexpr int BACKLOG = 1;

void logBindError(int iError) {
    char szBuffer[1024];
    CString strError;
    CStringConverter::convertFromMBCS(strerror_r(iError, szBuffer, sizeof(szBuffer)), strError);
    CLogEngine::error2(CStringConverter::format(L"Socket server bind error: %ls.", strError.getBuffer()));
}

bool bindSocket(int iSocket, const sockaddr_in& address) {
    if (bind(iSocket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0)
        return true;
    logBindError(errno);
    return false;
}
} // namespace

CImpSocketServer::CImpSocketServer(CSocketServer* pOwner, unsigned int uiPort) noexcept
    : m_iSocket(0), m_iClient(0), m_address(), m_pOwner(pOwner) {
    m_address.sin_family = AF_INET;
    m_address.sin_port = htons(static_cast<unsigned short>(uiPort));
    m_address.sin_addr.s_addr = htonl(INADDR_ANY);
}

bool CImpSocketServer::initSocket() {
    const int iSocket = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    if (iSocket == 0)
        return false;
    const int iOn = 1;
    setsockopt(iSocket, SOL_SOCKET, SO_REUSEADDR, &iOn, sizeof(iOn));
    if (!bindSocket(iSocket, m_address) || listen(iSocket, BACKLOG) != 0) {
        close(iSocket);
        return false;
    }
    m_iSocket = iSocket;
    return true;
}

void CImpSocketServer::closeSocket() {
    const int iClient = m_iClient.exchange(0); // exchanged, so that only one thread closes each
    const int iSocket = m_iSocket.exchange(0);
    if (iSocket != 0)
        shutdown(iSocket, SHUT_RDWR); // wakes who waits for a client
    if (iClient != 0)
        close(iClient); // without a shutdown, on purpose: who waits for its data goes on waiting
    if (iSocket != 0)
        close(iSocket);
}

unsigned int CImpSocketServer::connect() {
    const int iSocket = m_iSocket;
    const int iClient = iSocket != 0 ? accept(iSocket, nullptr, nullptr) : -1;
    if (iClient == -1)
        return 0;
    m_iClient = iClient; // the one before stays open, as settled
    requestReceiveTimeout(iClient, RECEIVE_TIMEOUT);
    sendAtOnce(iClient);
    return static_cast<unsigned int>(iClient);
}

bool CImpSocketServer::isClient(unsigned int uiClientID) const noexcept {
    return uiClientID != 0 && uiClientID == static_cast<unsigned int>(m_iClient.load());
}

int CImpSocketServer::receive(unsigned int uiClientID) {
    if (!isClient(uiClientID))
        return -1;
    return static_cast<int>(recv(static_cast<int>(uiClientID), m_pOwner->m_pBuffer, m_pOwner->m_uiBufferSize, 0));
}

int CImpSocketServer::sendData(const unsigned char* pData, unsigned int uiLength, unsigned int uiClientID) {
    return isClient(uiClientID) ? static_cast<int>(send(static_cast<int>(uiClientID), pData, uiLength, MSG_NOSIGNAL))
                                : -1;
}
} // namespace Orlix
