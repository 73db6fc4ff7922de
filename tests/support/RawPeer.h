#pragma once

#include <arpa/inet.h>
#include <cstddef>
#include <netinet/in.h>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace OrlixTest {

/** The longest that a test waits for the other side. */
constexpr int PEER_MS = 20000;

inline sockaddr_in loopback(unsigned int uiPort) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<unsigned short>(uiPort));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

inline unsigned int portOf(int iSocket) {
    sockaddr_in address{};
    socklen_t uiSize = sizeof(address);
    getsockname(iSocket, reinterpret_cast<sockaddr*>(&address), &uiSize);
    return ntohs(address.sin_port);
}

inline bool isReadable(int iSocket, int iMilliseconds) {
    pollfd entry{iSocket, POLLIN, 0};
    return poll(&entry, 1, iMilliseconds) > 0;
}

/** One end of a TCP connection over loopback, on the system's calls alone. */
class CRawPeer {
public:
    explicit CRawPeer(int iSocket = -1) : m_iSocket(iSocket) {}
    CRawPeer(CRawPeer&& other) noexcept : m_iSocket(other.m_iSocket) { other.m_iSocket = -1; }
    CRawPeer& operator=(CRawPeer&& other) noexcept {
        close();
        std::swap(m_iSocket, other.m_iSocket);
        return *this;
    }
    ~CRawPeer() { close(); }

    /** Connects; tried until PEER_MS have passed, since the server may only just have been started. */
    static CRawPeer connectTo(unsigned int uiPort) {
        for (int i = 0; i < PEER_MS; ++i) {
            CRawPeer peer(socket(AF_INET, SOCK_STREAM, 0));
            const sockaddr_in address = loopback(uiPort);
            if (::connect(peer.m_iSocket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0)
                return peer;
            usleep(1000);
        }
        return CRawPeer();
    }

    bool isOpen() const { return m_iSocket >= 0; }
    int getSocket() const { return m_iSocket; }

    bool send(const std::string& strBytes) {
        for (std::size_t uiSent = 0; uiSent < strBytes.size();) {
            const ssize_t iSent = ::send(m_iSocket, strBytes.data() + uiSent, strBytes.size() - uiSent, MSG_NOSIGNAL);
            if (iSent <= 0)
                return false;
            uiSent += static_cast<std::size_t>(iSent);
        }
        return true;
    }

    /** @return what came until there were uiCount bytes, the other side closed or the time ran out. */
    std::string receive(std::size_t uiCount, int iMilliseconds = PEER_MS) {
        std::string strBytes(uiCount, '\0');
        std::size_t uiGot = 0;
        while (uiGot < uiCount && isReadable(m_iSocket, iMilliseconds)) {
            const ssize_t iGot = recv(m_iSocket, &strBytes[uiGot], uiCount - uiGot, 0);
            if (iGot <= 0)
                break;
            uiGot += static_cast<std::size_t>(iGot);
        }
        strBytes.resize(uiGot);
        return strBytes;
    }

    /** Waits until the other side has closed. @return false if bytes came instead, or nothing. */
    bool awaitClose(int iMilliseconds = PEER_MS) {
        char chByte;
        return isReadable(m_iSocket, iMilliseconds) && recv(m_iSocket, &chByte, 1, 0) <= 0;
    }

    void close() {
        if (m_iSocket >= 0)
            ::close(m_iSocket);
        m_iSocket = -1;
    }

    /** Breaks the connection off: the other side's next call fails. */
    void reset() {
        const linger option{1, 0};
        setsockopt(m_iSocket, SOL_SOCKET, SO_LINGER, &option, sizeof(option));
        close();
    }

private:
    int m_iSocket;
};

/** A port of loopback that is the test's own for as long as this lives. At first connections to it are refused, and
 *  another socket that reuses addresses can listen on it. */
class CRawListener {
public:
    CRawListener() : m_iSocket(socket(AF_INET, SOCK_STREAM, 0)) {
        const int iOn = 1;
        setsockopt(m_iSocket, SOL_SOCKET, SO_REUSEADDR, &iOn, sizeof(iOn));
        const sockaddr_in address = loopback(0);
        bind(m_iSocket, reinterpret_cast<const sockaddr*>(&address), sizeof(address));
        m_uiPort = portOf(m_iSocket);
    }
    CRawListener(const CRawListener&) = delete;
    CRawListener& operator=(const CRawListener&) = delete;
    ~CRawListener() { ::close(m_iSocket); }

    unsigned int getPort() const { return m_uiPort; }
    int getSocket() const { return m_iSocket; }
    /** From here on connections are taken, and nobody else can listen. */
    void listen() { ::listen(m_iSocket, 16); }
    /** @return the next connection, not open if none came in time. */
    CRawPeer accept(int iMilliseconds = PEER_MS) {
        return CRawPeer(isReadable(m_iSocket, iMilliseconds) ? ::accept(m_iSocket, nullptr, nullptr) : -1);
    }

private:
    int m_iSocket;
    unsigned int m_uiPort;
};
} // namespace OrlixTest
