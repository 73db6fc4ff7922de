#pragma once

#include <Orlix/foundation/CObject.h>
#include <Orlix/ipc/ISocketServer.h>

#include <atomic>
#include <netinet/in.h>

namespace Orlix {

class CSocketServer;

/** A listening TCP socket on all IPv4 interfaces, and one client's.
 *
 *  A socket number of 0 means that there is none, and one of -1, from a system without sockets to give, counts as a
 *  socket that fails at everything; both are meant.
 *  Threads: as ISocketServer. However many threads close at once, each socket is closed once. */
class ORLIX_API CImpSocketServer : public ISocketServer {
    ORLIX_HEAP_CLASS(L"CImpSocketServer")

public:
    /** @param pOwner whose buffer is filled; not owned. @param uiPort of which the low 16 bits count; 0 lets the system
     *  choose. */
    CImpSocketServer(CSocketServer* pOwner, unsigned int uiPort) noexcept;
    CImpSocketServer(const CImpSocketServer&) = delete;
    CImpSocketServer& operator=(const CImpSocketServer&) = delete;
    /** Does not close. */
    ~CImpSocketServer() override = default;

    /** A port that is in use is logged with the system's text. */
    bool initSocket() override;
    void closeSocket() override;
    /** Takes the next client in the place of the one before, whose socket stays open until the process ends: that is
     *  settled, and each reconnection costs one descriptor. */
    unsigned int connect() override;
    int receive(unsigned int uiClientID) override;
    int sendData(const unsigned char* pData, unsigned int uiLength, unsigned int uiClientID) override;

protected:
    std::atomic<int> m_iSocket; // listening; 0 when there is none
    std::atomic<int> m_iClient; // 0 when there is none
    sockaddr_in m_address;      // to listen on
    CSocketServer* m_pOwner;    // not owned

private:
    bool isClient(unsigned int uiClientID) const noexcept;
};
} // namespace Orlix
