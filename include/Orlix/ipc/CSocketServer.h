#pragma once

#include <Orlix/foundation/CObject.h>
#include <Orlix/threading/CThread.h>

namespace Orlix {

class ISocketServer;
class ISocketServerListener;

/** A thread that listens on a TCP port and serves one client at a time; the next one waits until the first has gone.
 *
 *  A port that cannot be listened on, and a failure to take a client, end the thread. The socket of a client that has
 *  gone stays open until the process ends: that is settled, and each reconnection costs one descriptor.
 *
 *  Threads: all listener calls come on the server's own thread; sendData, stop and prepareStop go from any other. The
 *  connected flag and the listener are plain fields: a send or a call that meets a change halfway may see either state.
 *  Name and priority of the thread are set before start.
 *  Ownership: the destructor stops the server and waits until its thread is gone. */
class ORLIX_API CSocketServer : public CObject, public CThread {
    ORLIX_HEAP_CLASS(L"CSocketServer")

    friend class CImpSocketServer; // fills the buffer

public:
    /** @param uiPort of which the low 16 bits count. @param uiBufferSize bytes of the longest chunk handed on; 0 means
     *  1048576. */
    CSocketServer(unsigned int uiPort, unsigned int uiBufferSize);
    CSocketServer(const CSocketServer&) = delete;
    CSocketServer& operator=(const CSocketServer&) = delete;
    ~CSocketServer() override;

    /** Begins to listen; nothing changes if the thread runs. */
    virtual void start();
    /** Ends the thread and waits for that. While a client is being served it waits until that one sends something or
     *  goes: its socket is not shut down. */
    virtual void stop();
    /** As stop, but does not wait. */
    virtual void prepareStop();
    /** Sends once. @param uiClientID as the listener got it.
     *  @return the bytes taken, which may be fewer; -1 on failure, without a client and for any other ID, 0 too. */
    virtual int sendData(const unsigned char* pData, unsigned int uiLength, unsigned int uiClientID);
    void run() override;

    /** @param pListener not owned; null for nobody. No lock: a call that is under way still reaches the old one. */
    void setListener(ISocketServerListener* pListener) noexcept { m_pListener = pListener; }
    /** Whether a client is being served. */
    bool isConnect() const noexcept { return m_bConnected; }

    // What the thread calls; each does nothing without a listener.

    void notifyConnect(unsigned int uiClientID);
    void notifyDisconnect(unsigned int uiClientID);
    void notifyDataAvailable(unsigned int uiClientID, unsigned char* pData, int iLength);

protected:
    ISocketServerListener* m_pListener; // not owned
    unsigned int m_uiPort;
    bool m_bConnected;
    unsigned char* m_pBuffer; // owned; null only if it could not be allocated
    unsigned int m_uiBufferSize;
    ISocketServer* m_pSocket; // owned; null only if it could not be allocated

private:
    void disconnect();
    bool serveNextClient();
    bool serveClient(unsigned int uiClientID);
    void handleChunk(unsigned int uiClientID, int iLength);
};
} // namespace Orlix
