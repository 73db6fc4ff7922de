#pragma once

#include <Orlix/formats/CXMLParser.h>
#include <Orlix/foundation/CArrayPtr.h>
#include <Orlix/messaging/CBaseMessage.h>

namespace Orlix {

class CDataTransfer;

/** Brings what a data transfer received, or how its connection stands, from the socket thread to the host thread.
 *
 *  A document is parsed where the message is made, so that the host gets a finished tree. The message ID is the low 32
 *  bits of the owner's address. The built-in documents are of the type MESSAGE_TOUCH, all else is
 * MESSAGE_DATA_TRANSFER: so they travel in different lists of the center, and order is kept within each list only. */
class ORLIX_API CMsgDataTransfer : public CBaseMessage {
    ORLIX_HEAP_CLASS(L"CMsgDataTransfer")

public:
    /** Tells of the connection. @param pOwner not owned; it may be gone when the message is handled. */
    CMsgDataTransfer(CDataTransfer* pOwner, bool bConnected);
    /** Carries a payload.
     *  @param pOwner as above. @param pData copied or parsed before this returns; null only with a length of 0.
     *  @param bXML UTF-8 text up to its first zero byte, at the latest up to its end; otherwise a block of bytes. */
    CMsgDataTransfer(CDataTransfer* pOwner, const unsigned char* pData, unsigned int uiLength, bool bXML);
    ~CMsgDataTransfer() override;

    /** Hands what it carries to its owner, which tells its listener. A text that is no document, and a message whose
     *  owner is gone, end here in silence. */
    void handleMessage() override;

protected:
    CDataTransfer* m_pOwner; // not owned; looked up among the living before it is touched
    bool m_bState;           // tells of the connection
    bool m_bConnected;       // how that stands
    CXMLParser m_parser;
    CArrayPtr<unsigned char> m_aryData;

private:
    void parseText(const unsigned char* pData, unsigned int uiLength);
    void copyData(const unsigned char* pData, unsigned int uiLength);
    bool hasPayload() const noexcept { return m_parser.hasRootElement() || !m_aryData.isEmpty(); }
};
} // namespace Orlix
