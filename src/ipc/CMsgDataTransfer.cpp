#include <Orlix/ipc/CMsgDataTransfer.h>

#include <Orlix/formats/CXMLElement.h>
#include <Orlix/foundation/CByteBuffer.h>
#include <Orlix/ipc/CDataTransfer.h>

#include "ipc/BuiltInDocument.h"

#include <cstddef>
#include <cstring>

namespace Orlix {
namespace {

unsigned int toMessageID(const CDataTransfer* pOwner) {
    return static_cast<unsigned int>(reinterpret_cast<std::size_t>(pOwner));
}

/** A mark belongs in front of files. In a text that never was one it is a character, with which no document begins. */
void parseTerminated(CXMLParser& parser, const unsigned char* pText) {
    if (std::strncmp(reinterpret_cast<const char*>(pText), "\xEF\xBB\xBF", 3) != 0)
        parser.parseFromStream(pText);
}

bool isBuiltIn(const CXMLParser& parser) {
    const CXMLElement* const pRoot = parser.getRootElement();
    return pRoot &&
           (pRoot->hasChild(CHILD_TOUCH_INPUT) || pRoot->hasChild(CHILD_PAGE_CMD) || pRoot->hasChild(CHILD_POPUP_CMD));
}
} // namespace

CMsgDataTransfer::CMsgDataTransfer(CDataTransfer* pOwner, bool bConnected)
    : CBaseMessage(MESSAGE_DATA_TRANSFER, toMessageID(pOwner)), m_pOwner(pOwner), m_bState(true),
      m_bConnected(bConnected) {}

CMsgDataTransfer::CMsgDataTransfer(CDataTransfer* pOwner, const unsigned char* pData, unsigned int uiLength, bool bXML)
    : CBaseMessage(MESSAGE_DATA_TRANSFER, toMessageID(pOwner)), m_pOwner(pOwner), m_bState(false), m_bConnected(false) {
    if (uiLength == 0)
        return;
    if (!bXML) {
        copyData(pData, uiLength);
        return;
    }
    parseText(pData, uiLength);
    if (isBuiltIn(m_parser))
        m_eType = MESSAGE_TOUCH;
}

CMsgDataTransfer::~CMsgDataTransfer() = default;

void CMsgDataTransfer::copyData(const unsigned char* pData, unsigned int uiLength) {
    void* const pBlock = CMemory::malloc(uiLength, 0);
    if (!pBlock)
        return;
    std::memcpy(pBlock, pData, uiLength);
    m_aryData = CArrayPtr<unsigned char>(static_cast<unsigned char*>(pBlock), uiLength);
}

void CMsgDataTransfer::parseText(const unsigned char* pData, unsigned int uiLength) {
    if (std::memchr(pData, 0, uiLength)) {
        parseTerminated(m_parser, pData);
        return;
    }
    // A peer that forgot the zero byte: behind the payload lies whatever came next, so a copy has to end it.
    CByteBuffer bufText(0, 1);
    bufText.writeBuffer(pData, uiLength);
    bufText.writeBYTE(0);
    if (bufText.getSize() > uiLength)
        parseTerminated(m_parser, bufText.buffer());
}

void CMsgDataTransfer::handleMessage() {
    if (!m_pOwner)
        return;
    if (!CDataTransfer::isAlive(m_pOwner)) {
        if (!m_bState && hasPayload())
            CDataTransfer::removeDeleted(m_pOwner);
        return;
    }
    // The owner may be gone when a call comes back; only one of them is made.
    if (m_bState)
        m_pOwner->handleDataTransferMessage(m_bConnected);
    else if (m_parser.hasRootElement())
        m_pOwner->handleDataTransferMessage(&m_parser);
    else if (!m_aryData.isEmpty())
        m_pOwner->handleDataTransferMessage(CArrayPtr<unsigned char>(m_aryData));
}
} // namespace Orlix
