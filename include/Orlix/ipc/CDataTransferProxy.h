#pragma once

#include <Orlix/ipc/CDataTransfer.h>

namespace Orlix {

/** A narrow front that owns a data transfer, for layers that may hold one but not open it.
 *
 *  The open operations are inert on purpose, so the channel stays closed; who needs a connection uses CDataTransfer.
 *  The rest does what it does there. */
class ORLIX_API CDataTransferProxy {
    ORLIX_HEAP_CLASS(L"CDataTransferProxy")

public:
    CDataTransferProxy();
    CDataTransferProxy(const CDataTransferProxy&) = delete;
    CDataTransferProxy& operator=(const CDataTransferProxy&) = delete;
    virtual ~CDataTransferProxy();

    void setListener(IDataTransferListener* pListener);
    void openAsServer(unsigned int uiPort);
    void openAsClient(const CString& strAddress, unsigned int uiPort);
    void close();
    bool isConnect() const;
    void setRawConnection(bool bRaw);
    void sendLogicData(const unsigned char* pData, unsigned int uiLength);
    void sendLogicData(CXMLParser* pParser, bool bFormat);
    void sendTouchInput(const CCursor& cursor);
    void sendPageCMD(IDataTransferListener::EOperationHandle eHandle, CString strPageName);
    void sendPopupCMD(IDataTransferListener::EOperationHandle eHandle, CString strPopupName);

protected:
    CDataTransfer m_dataTransfer;
};
} // namespace Orlix
