#pragma once

#include <Orlix/foundation/CObject.h>
#include <Orlix/foundation/CString.h>
#include <Orlix/threading/CThread.h>
#include <Orlix/threading/CTimer.h>
#include <Orlix/threading/ITimerListener.h>

namespace Orlix {

class ISocketClient;
class ISocketClientListener;

/** A thread that connects to a TCP peer, keeps trying until it succeeds, and hands on what the peer sends.
 *
 *  A failed attempt is followed by a delay of 1 second five times, then of 2 seconds up to the fiftieth failure, then
 *  of 5 seconds, without end; the first failure and every twentieth behind it are logged. A lost connection is
 *  followed by a delay of 1 second and, with automatic reconnection, by the next attempt. Heartbeats, every 5 seconds
 *  while they are on, are the two bytes AF 00 and travel from the client to the server only; what comes in is dropped.
 *
 *  Threads: all listener calls come on the client's own thread, onTimer on the host's; sendData, stop and prepareStop
 *  go from any other. The connected flag and the listener are plain fields: a send or a call that meets a change
 *  halfway may see either state. Two sends at once may mix. Name and priority of the thread are set before start.
 *  Ownership: the destructor stops the client and waits until its thread is gone. */
class ORLIX_API CSocketClient : public CObject, public CThread, public ITimerListener {
    ORLIX_HEAP_CLASS(L"CSocketClient")

    friend class CImpSocketClient; // reads address, port, buffer and blocking flag

public:
    /** @param strAddress numeric IPv4, as inet_addr takes it; a name never connects.
     *  @param uiPort of which the low 16 bits count.
     *  @param bAutoReconnect false ends the thread once the first connection has gone; failed attempts go on even so.
     *  @param uiBufferSize bytes of the longest chunk handed on; 0 means 1048576. */
    CSocketClient(const CString& strAddress, unsigned int uiPort, bool bAutoReconnect, unsigned int uiBufferSize);
    CSocketClient(const CSocketClient&) = delete;
    CSocketClient& operator=(const CSocketClient&) = delete;
    ~CSocketClient() override;

    /** Begins to connect; nothing changes if the thread runs.
     *  @param bBlocking whether a send waits until there is room for all of its bytes; otherwise it takes what fits. */
    virtual void start(bool bBlocking);
    /** Closes the connection, ends the thread and waits for that. */
    virtual void stop();
    /** As stop, but does not wait. */
    virtual void prepareStop();
    /** Sends once. @return the bytes taken, which may be fewer; -1 on failure and while not connected. */
    virtual int sendData(const unsigned char* pData, unsigned int uiLength);
    void run() override;
    /** Sends a heartbeat, for the pulse of this object's own timer; other timers are ignored. */
    void onTimer(const CTimer* pTimer, unsigned int uiCount) override;
    void onTimerComplete(const CTimer* pTimer) override;
    /** Also closes the socket: one that was made while the stop was on its way would keep the thread waiting. */
    void prepareStopThread() override;

    /** @param pListener not owned; null for nobody. No lock: a call that is under way still reaches the old one. */
    void setListener(ISocketClientListener* pListener) noexcept { m_pListener = pListener; }
    bool isConnect() const noexcept { return m_bConnected; }
    /** Cuts a delay between two attempts short; without one, the next delay. */
    void tryToConnect() { m_waitWake.notify(); }
    /** Whether the thread starts the heartbeats with a connection and stops them behind it. Nobody but the host sets
     *  this; off at first. */
    void setNeedSendHB(bool bNeedSendHB) noexcept { m_bNeedSendHB = bNeedSendHB; }
    bool getNeedSendHB() const noexcept { return m_bNeedSendHB; }
    /** Sends a heartbeat in 5 seconds and every 5 seconds from then on; running ones go on as they are. Needs the timer
     *  thread and the host's loop. */
    void startHeartBeat();
    void stopHeartBeat();

    // What the thread calls; each does nothing without a listener.

    void notifyConnect();
    void notifyDisconnect();
    void notifyDataAvailable(unsigned char* pData, int iLength);

protected:
    ISocketClientListener* m_pListener; // not owned
    CString m_strAddress;
    unsigned int m_uiPort;
    int m_iAutoReconnect; // 0 or 1
    bool m_bBlocking;
    bool m_bConnected;
    unsigned char* m_pBuffer; // owned; null only if it could not be allocated
    unsigned int m_uiBufferSize;
    CTimer m_timerHeartBeat;
    bool m_bNeedSendHB;
    ISocketClient* m_pSocket; // owned; null only if it could not be allocated

private:
    void closeSocket();
    void dropConnection();
    void finish();
    bool tryConnection(unsigned int& uiFailures);
    bool awaitRetry(unsigned int& uiFailures, int iError);
    bool serveConnection();
    bool awaitReconnection();
};
} // namespace Orlix
