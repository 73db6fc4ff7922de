#pragma once

#include <Orlix/foundation/OrlixApi.h>

namespace Orlix {

/** The system's side of a socket client: one socket at a time, made, connected, read from and closed by CSocketClient.
 *
 *  Threads: closeSocket and sendData come from any thread, also while the client's thread is inside another operation:
 *  closing is what ends its waits. */
class ORLIX_API ISocketClient {
public:
    virtual ~ISocketClient() = default;
    /** Makes the socket. @return false if the system has none. */
    virtual bool initSocket() = 0;
    /** Closes the socket and wakes who waits for it; does nothing without one. */
    virtual void closeSocket() = 0;
    /** Connects to the client's address and port. @param iError receives 0, the system's error, or -1 for any other
     *  failure. @return whether there is a connection. */
    virtual bool connect(int& iError) = 0;
    /** Waits without limit for a chunk and puts it into the client's buffer. @param iLength receives its bytes; -1 or 0
     *  when there is none. @return false once the connection is gone. */
    virtual bool receive(int& iLength) = 0;
    /** Sends once. @return the bytes taken, which may be fewer; -1 on failure and without a socket. */
    virtual int sendData(const unsigned char* pData, unsigned int uiLength) = 0;
};
} // namespace Orlix
