#pragma once

#include "CEventFlag.h"

#include <Orlix/ipc/CDataTransfer.h>

#include <mutex>

/** The host's data transfer. It mends from outside what a server of the library leaves to its host: the socket of a
 *  client that has gone is closed when the next one comes, and a silent client does not hold up the end.
 *
 *  Threads: as a data transfer; end and the destructor on the host thread. */
class CPeerChannel : public Orlix::CDataTransfer {
public:
    ~CPeerChannel() override;

    /** Closes at once, whatever a peer is doing. What was sent still leaves. */
    void end();

    /** Set by the first connection. */
    const CEventFlag& getConnected() const noexcept { return m_flagConnected; }
    /** Whether the port could not be listened on, or no more clients could be taken; a quit message has told it. */
    bool hasFailed() const noexcept { return m_flagFailed.isSet(); }

    // On the socket thread.

    void onConnect(Orlix::CSocketServer* pServer, unsigned int uiClientID) override;
    void onDisconnect(Orlix::CSocketServer* pServer, unsigned int uiClientID) override;
    void onConnect(Orlix::CSocketClient* pClient) override;
    using Orlix::CDataTransfer::onDisconnect;

private:
    CEventFlag m_flagConnected;
    CEventFlag m_flagFailed;
    std::mutex m_mutex;  // guards what follows
    int m_iClient = -1;  // the client's socket, also once the client has gone; -1 before the first one
    bool m_bEnd = false; // whoever comes now is sent away
};
