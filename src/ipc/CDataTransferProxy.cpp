#include <Orlix/ipc/CDataTransferProxy.h>

namespace Orlix {

CDataTransferProxy::CDataTransferProxy() = default;

CDataTransferProxy::~CDataTransferProxy() { m_dataTransfer.close(); }

void CDataTransferProxy::setListener(IDataTransferListener* pListener) { m_dataTransfer.setListener(pListener); }

// These two are empty on purpose, see the header.
void CDataTransferProxy::openAsServer(unsigned int) {}
void CDataTransferProxy::openAsClient(const CString&, unsigned int) {}

void CDataTransferProxy::close() { m_dataTransfer.close(); }

bool CDataTransferProxy::isConnect() const { return m_dataTransfer.isConnect(); }

void CDataTransferProxy::setRawConnection(bool bRaw) { m_dataTransfer.setRawConnection(bRaw); }

void CDataTransferProxy::sendLogicData(const unsigned char* pData, unsigned int uiLength) {
    m_dataTransfer.sendLogicData(pData, uiLength);
}

void CDataTransferProxy::sendLogicData(CXMLParser* pParser, bool bFormat) {
    m_dataTransfer.sendLogicData(pParser, bFormat);
}

void CDataTransferProxy::sendTouchInput(const CCursor& cursor) { m_dataTransfer.sendTouchInput(cursor); }

void CDataTransferProxy::sendPageCMD(IDataTransferListener::EOperationHandle eHandle, CString strPageName) {
    m_dataTransfer.sendPageCMD(eHandle, strPageName);
}

void CDataTransferProxy::sendPopupCMD(IDataTransferListener::EOperationHandle eHandle, CString strPopupName) {
    m_dataTransfer.sendPopupCMD(eHandle, strPopupName);
}
} // namespace Orlix
