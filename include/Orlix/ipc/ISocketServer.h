#pragma once

#include <Orlix/foundation/OrlixApi.h>

namespace Orlix {

/** The system's side of a socket server: a listening socket, and the one of the client that is being served.
 *
 *  Threads: closeSocket and sendData come from any thread, also while the server's thread is in another operation. */
class ORLIX_API ISocketServer {
public:
    virtual ~ISocketServer() = default;
    /** Makes the listening socket on the server's port. @return false if the system refuses. */
    virtual bool initSocket() = 0;
    /** Closes both sockets, whichever there are. It wakes a wait for a client, but not a wait for that one's data. */
    virtual void closeSocket() = 0;
    /** Waits without limit for a client. @return its ID; 0 if none can come. */
    virtual unsigned int connect() = 0;
    /** Waits without limit for a chunk and puts it into the server's buffer. @return its bytes; 0 when the client has
     *  closed, -1 on failure and for any ID but the one of the client being served. */
    virtual int receive(unsigned int uiClientID) = 0;
    /** Sends once. @return the bytes taken, which may be fewer; -1 on failure and for any ID but the one of the client
     *  being served. */
    virtual int sendData(const unsigned char* pData, unsigned int uiLength, unsigned int uiClientID) = 0;
};
} // namespace Orlix
