#include <Orlix/ipc/CImpSocketClient.h>

#include <Orlix/foundation/CStringConverter.h>
#include <Orlix/ipc/CSocketClient.h>

#include "ipc/SocketOption.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace Orlix {
namespace {

constexpr int RECEIVE_TIMEOUT = 20000;
constexpr int CONNECT_MS = 3000;
constexpr int NO_LIMIT = -1;

/** Waits until the socket is ready in one of the ways asked for, or has failed. It takes sockets of any number, which
 *  select does not. @return false if the time ran out, the wait failed or there is no such socket. */
bool awaitSocket(int iSocket, short sEvents, int iMilliseconds) {
    pollfd entry{iSocket, sEvents, 0};
    return poll(&entry, 1, iMilliseconds) > 0 && !(entry.revents & POLLNVAL);
}

bool hasPeer(int iSocket) {
    sockaddr_in address{};
    socklen_t uiSize = sizeof(address);
    return getpeername(iSocket, reinterpret_cast<sockaddr*>(&address), &uiSize) == 0;
}

/** @return an address without a port; one that is not numeric becomes the broadcast address, to which nothing
 *  connects. */
sockaddr_in parseAddress(const CString& strAddress) {
    char szAddress[32];
    CStringConverter::convertToMBCS(strAddress, szAddress, sizeof(szAddress));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = inet_addr(szAddress);
    return address;
}

/** How an attempt that the system did not end at once has ended, with no look at why it did not: a refusal that was
 *  told already leaves the socket ready and without an error, and so does an address that cannot be reached. So the
 *  peer has the last word. @return 0, the system's error, or -1. */
int awaitConnection(int iSocket) {
    if (!awaitSocket(iSocket, POLLIN | POLLOUT, CONNECT_MS))
        return -1;
    int iError = -1;
    socklen_t uiSize = sizeof(iError);
    getsockopt(iSocket, SOL_SOCKET, SO_ERROR, &iError, &uiSize);
    return iError == 0 && !hasPeer(iSocket) ? -1 : iError;
}
} // namespace

bool CImpSocketClient::initSocket() {
    const int iSocket = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    if (iSocket == 0)
        return false;
    const int iFlags = fcntl(iSocket, F_GETFL, 0);
    fcntl(iSocket, F_SETFL, m_pOwner->m_bBlocking ? iFlags & ~O_NONBLOCK : iFlags | O_NONBLOCK);
    m_iSocket = iSocket;
    refuseReceiveTimeout(iSocket, RECEIVE_TIMEOUT);
    sendAtOnce(iSocket);
    return true;
}

void CImpSocketClient::closeSocket() {
    const int iSocket = m_iSocket.exchange(0); // so that only one thread closes it
    if (iSocket == 0)
        return;
    shutdown(iSocket, SHUT_RDWR); // wakes who waits for it
    close(iSocket);
}

bool CImpSocketClient::connect(int& iError) {
    const int iSocket = m_iSocket;
    iError = -1;
    // After the stop flag is set the socket may have been closed for the last time before it was made.
    if (iSocket == 0 || m_pOwner->isPrepareStopThread())
        return false;
    sockaddr_in address = parseAddress(m_pOwner->m_strAddress);
    address.sin_port = htons(static_cast<unsigned short>(m_pOwner->m_uiPort));
    const bool bMade = ::connect(iSocket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    iError = bMade ? 0 : awaitConnection(iSocket);
    return iError == 0;
}

bool CImpSocketClient::receive(int& iLength) {
    iLength = -1;
    const int iSocket = m_iSocket;
    if (iSocket == 0 || !awaitSocket(iSocket, POLLIN, NO_LIMIT))
        return false;
    iLength = static_cast<int>(recv(iSocket, m_pOwner->m_pBuffer, m_pOwner->m_uiBufferSize, 0));
    return iLength > 0;
}

int CImpSocketClient::sendData(const unsigned char* pData, unsigned int uiLength) {
    const int iSocket = m_iSocket;
    return iSocket != 0 ? static_cast<int>(send(iSocket, pData, uiLength, MSG_NOSIGNAL)) : -1;
}
} // namespace Orlix
