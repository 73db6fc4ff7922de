#pragma once

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace Orlix {

/** Asks for a time limit of receives, in vain: the system wants a time structure and refuses an integer. So receives
 *  wait without limit, and what is built on these sockets counts on that; the call and its value stay as they have
 *  always been. */
inline void requestReceiveTimeout(int iSocket, int iTimeout) {
    setsockopt(iSocket, SOL_SOCKET, SO_RCVTIMEO, &iTimeout, sizeof(iTimeout));
}

/** Keeps the system from holding back a short piece until the peer has confirmed the one before: a message is often a
 *  header and its content, sent one after the other. */
inline void sendAtOnce(int iSocket) {
    const int iOn = 1;
    setsockopt(iSocket, IPPROTO_TCP, TCP_NODELAY, &iOn, sizeof(iOn));
}
} // namespace Orlix
