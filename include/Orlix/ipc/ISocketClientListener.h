#pragma once

#include <Orlix/foundation/OrlixApi.h>

namespace Orlix {

class CSocketClient;

/** Hears of a socket client's connection and of what comes over it, on the client's thread and without a lock. */
class ORLIX_API ISocketClientListener {
public:
    virtual ~ISocketClientListener() = default;
    /** The connection has been made. */
    virtual void onConnect(CSocketClient* pClient) = 0;
    /** The connection is gone. A stop tells it once or twice, depending on what it meets, also when there was no
     *  connection any more or yet. */
    virtual void onDisconnect(CSocketClient* pClient) = 0;
    /** A chunk of the stream, cut wherever the network cut it; a heartbeat that came as a chunk of its own is left out.
     *  @param pData the receive buffer itself, valid during the call only. @param iLength bytes, at least 1. */
    virtual void onDataAvailable(CSocketClient* pClient, unsigned char* pData, int iLength) = 0;
};
} // namespace Orlix
