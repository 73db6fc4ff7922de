#pragma once

#include <Orlix/foundation/CObject.h>
#include <Orlix/ipc/ISocketClient.h>

#include <atomic>

namespace Orlix {

class CSocketClient;

/** A TCP socket over IPv4, which connects to the numeric address of its CSocketClient.
 *
 *  A socket number of 0 means that there is none, and one of -1, from a system without sockets to give, counts as a
 *  socket that fails at everything; both are meant.
 *  Threads: as ISocketClient. However many threads close at once, the socket is closed once. */
class ORLIX_API CImpSocketClient : public ISocketClient {
    ORLIX_HEAP_CLASS(L"CImpSocketClient")

public:
    /** @param pOwner whose address, port, buffer and blocking flag are read as they are needed; not owned. */
    explicit CImpSocketClient(CSocketClient* pOwner) noexcept : m_iSocket(0), m_pOwner(pOwner) {}
    CImpSocketClient(const CImpSocketClient&) = delete;
    CImpSocketClient& operator=(const CImpSocketClient&) = delete;
    /** Does not close. */
    ~CImpSocketClient() override = default;

    /** The socket waits in connect and sendData if the client is a blocking one, and not otherwise. It sends at once
     *  what it is given, however little. */
    bool initSocket() override;
    void closeSocket() override;
    /** Gives a socket that does not wait 3 seconds. A host name, or no text, as address never connects; of more than 31
     *  bytes the rest plays no part. Once the owner's thread is asked to stop nothing connects any more. */
    bool connect(int& iError) override;
    bool receive(int& iLength) override;
    int sendData(const unsigned char* pData, unsigned int uiLength) override;

protected:
    std::atomic<int> m_iSocket; // 0 when there is none
    CSocketClient* m_pOwner;    // not owned
};
} // namespace Orlix
