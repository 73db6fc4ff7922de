#pragma once

#include <Orlix/foundation/CByteBuffer.h>
#include <Orlix/foundation/CDataArray.h>
#include <Orlix/ipc/IDataTransferListener.h>
#include <Orlix/ipc/ISocketClientListener.h>
#include <Orlix/ipc/ISocketServerListener.h>

namespace Orlix {

/** A channel of framed messages over one TCP connection: touch input, page and popup commands, documents and blocks of
 *  bytes. Open it as a server or as a client; what arrives reaches the listener through the message center.
 *
 *  The bytes on the wire are described in docs/wire.md. A server only receives: what it sends is dropped, on purpose.
 *  Nothing here reports an error. A send is not repeated: where the socket takes only a part, the rest of the frame is
 *  lost, and the peer takes what follows for it.
 *
 *  Threads: make, close and destroy it on the host thread, where the listener is called too. Sends may come from any
 *  thread, one at a time. Flags and listener are plain fields without a lock. A derived class closes in its own
 *  destructor: later the socket thread may call into what is gone. */
class ORLIX_API CDataTransfer : public CObject, public ISocketServerListener, public ISocketClientListener {
    ORLIX_HEAP_CLASS(L"CDataTransfer")

public:
    CDataTransfer();
    CDataTransfer(const CDataTransfer&) = delete;
    CDataTransfer& operator=(const CDataTransfer&) = delete;
    /** Closes, and takes back its messages that still wait, all but the built-in documents. While no instance lives at
     *  this address those are dropped when they are handled. Instances are known by their address alone: a later one
     *  at the same address is taken for their owner and hears them. One entry that is left behind costs it the first
     *  document or block that is handled for it, be that one of those or its own, unless it has been used up before. */
    ~CDataTransfer() override;

    // On the socket thread.

    void onConnect(CSocketServer* pServer, unsigned int uiClientID) override;
    void onDisconnect(CSocketServer* pServer, unsigned int uiClientID) override;
    void onDataAvailable(CSocketServer* pServer, unsigned int uiClientID, unsigned char* pData, int iLength) override;
    void onConnect(CSocketClient* pClient) override;
    void onDisconnect(CSocketClient* pClient) override;
    void onDataAvailable(CSocketClient* pClient, unsigned char* pData, int iLength) override;

    /** @param pListener told on the host thread, not owned; null for nobody: then what arrives is dropped. */
    void setListener(IDataTransferListener* pListener) noexcept { m_pListener = pListener; }

    /** Begins to listen on all interfaces. Nothing happens if it is open already, and for the port 0. */
    void openAsServer(unsigned int uiPort);
    /** Begins to connect, and to connect again whenever the connection is lost.
     *  @param strAddress an IPv4 address in digits. Nothing happens if the channel is open already, for an empty
     *  address, and for the port 0. */
    void openAsClient(const CString& strAddress, unsigned int uiPort);
    /** Ends the connection and waits for the end of its thread; nothing happens if the channel is not open. With a
     *  listener a client still posts its last onDisconnect, twice; a server posts none for its own end. What has been
     *  posted is still delivered. A server whose client is connected and silent blocks here until that sends something
     *  or leaves. */
    void close();
    /** Whether a peer is connected, also without a listener. */
    bool isConnect() const noexcept { return m_bConnected; }
    /** @param bRaw no frames: from the next send and the next received chunk on all bytes pass as they come. */
    void setRawConnection(bool bRaw) noexcept { m_bRawConnection = bRaw; }

    /** Sends a block of bytes. Peers discard an empty one with all that they hold. */
    void sendLogicData(const unsigned char* pData, unsigned int uiLength);
    /** Sends a document. @param pParser null is ignored; one without an encoding goes out as an empty text.
     *  @param bFormat one line for each tag. */
    void sendLogicData(CXMLParser* pParser, bool bFormat);
    void sendTouchInput(const CCursor& cursor);
    void sendPageCMD(IDataTransferListener::EOperationHandle eHandle, CString strPageName);
    /** On purpose the name goes out as "page_name", as in the page command, and receivers drop the document. */
    void sendPopupCMD(IDataTransferListener::EOperationHandle eHandle, CString strPopupName);

    /** Forgets all instances that are gone, and frees the record of them. For the end of the host. */
    static void deleteAllInstance();

    // The steps of the above.

    /** Takes bytes from the connection, on the socket thread; nothing happens if the channel is not open.
     *  Bytes that begin with no frame are discarded together with all that is held, and so is all without memory. */
    void parseData(const unsigned char* pData, unsigned int uiLength);
    /** Sends a payload, unless the channel is raw behind the header of a frame. */
    void sendData(const unsigned char* pData, unsigned int uiLength, bool bXML);
    bool canNotifyListener() const noexcept { return m_pListener != nullptr; }
    // From the messages, on the host thread. All but the first use up the entry of an instance that was at the same
    // address, if there is one, instead of telling the listener.
    void handleDataTransferMessage(bool bConnected);
    void handleDataTransferMessage(CArrayPtr<unsigned char> aryData);
    void handleDataTransferMessage(CXMLParser* pParser);
    /** @param pInstance may be gone. */
    static bool isAlive(const CDataTransfer* pInstance) noexcept;
    /** Uses up one entry of an instance that is gone. @return whether there was one. */
    static bool removeDeleted(const CDataTransfer* pInstance);

protected:
    IDataTransferListener* m_pListener; // not owned
    CSocketServer* m_pServer;           // owned; only while open as server
    CSocketClient* m_pClient;           // owned; only while open as client
    bool m_bRawConnection;
    bool m_bConnected;        // written on the socket thread
    CByteBuffer m_bufReceive; // the frame that is not yet whole; of the socket thread, and of close after its end

private:
    CDataTransfer* m_pNextAlive; // of the host thread

    void sendCommand(const wchar_t* szChild, IDataTransferListener::EOperationHandle eHandle, const CString& strName);
    void changeConnection(bool bConnected);
    void receive(const unsigned char* pData, int iLength);
    void parseChunk(const unsigned char* pData, unsigned int uiLength);
    void parseHeld();
    bool hold(const unsigned char* pData, unsigned int uiLength);
    unsigned int parseFrames(CByteBuffer& buffer);
    static bool readMagic(CByteBuffer& buffer);
    void postPayload(const unsigned char* pData, unsigned int uiLength, bool bXML);
};

/** The instances that are gone while messages for them may still wait; an instance may be there more than once.
 *  Of the host thread. */
extern ORLIX_API CDataArray<CDataTransfer*> g_aryDeletedInstance;
} // namespace Orlix
