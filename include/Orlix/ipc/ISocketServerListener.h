#pragma once

#include <Orlix/foundation/OrlixApi.h>

namespace Orlix {

class CSocketServer;

/** Hears of a socket server's clients and of what they send, on the server's thread and without a lock.
 *
 *  A client's ID is the number of its socket, so that a later client has another one. */
class ORLIX_API ISocketServerListener {
public:
    virtual ~ISocketServerListener() = default;
    /** A client has come. */
    virtual void onConnect(CSocketServer* pServer, unsigned int uiClientID) = 0;
    /** A client has gone, or with the ID 0 the server itself has failed and ends. A stop is not told. */
    virtual void onDisconnect(CSocketServer* pServer, unsigned int uiClientID) = 0;
    /** A chunk of the stream, cut wherever the network cut it; a heartbeat that came as a chunk of its own is left out.
     *  @param pData the receive buffer itself, valid during the call only. @param iLength bytes, at least 1. */
    virtual void onDataAvailable(CSocketServer* pServer, unsigned int uiClientID, unsigned char* pData,
                                 int iLength) = 0;
};
} // namespace Orlix
