#include <Orlix/ipc/CDataTransfer.h>

#include <Orlix/formats/CConfigParser.h>
#include <Orlix/formats/CXMLElement.h>
#include <Orlix/formats/CXMLParser.h>
#include <Orlix/foundation/CStringConverter.h>
#include <Orlix/input/CCursor.h>
#include <Orlix/ipc/CMsgDataTransfer.h>
#include <Orlix/ipc/CSocketClient.h>
#include <Orlix/ipc/CSocketServer.h>
#include <Orlix/messaging/CMessageCenter.h>

#include "foundation/StaticOrder.h"
#include "ipc/BuiltInDocument.h"

#include <climits>
#include <cstddef>
#include <cstdint>

namespace Orlix {
namespace {

constexpr unsigned int SOCKET_BUFFER_SIZE = 1048576;
constexpr unsigned int RECEIVE_INCREMENT = 1024;
constexpr unsigned int RECEIVE_KEPT = 2 * SOCKET_BUFFER_SIZE; // the largest block that is kept for the next frames

// A frame: the magic, a reserved byte of 0, the length of the payload, its type, the payload.
constexpr unsigned int FRAME_MAGIC = 0x4E455649;
constexpr unsigned int MAGIC_SIZE = 5; // with the reserved byte
constexpr unsigned int HEADER_SIZE = 10;
constexpr unsigned char TYPE_BINARY = 0;
constexpr unsigned char TYPE_XML = 1;

constexpr unsigned int NO_CLIENT = 0; // what a server passes for the client when it sends

CDataTransfer* s_pFirstAlive = nullptr; // of the host thread

/** A thread of the sockets takes the name and the priority that the configuration has for data transfer. */
void configure(CThread& thread) {
    const CConfigParser::tagThread& record = CConfigParser::getInstance()->getThread();
    thread.setThreadName(record.name[CConfigParser::THREAD_DT]);
    thread.setThreadPriority(record.priority[CConfigParser::THREAD_DT]);
}

/** Begins one of the built-in documents. Its header says UTF-16 although its bytes go out as UTF-8: peers know it so.
 *  @return the child; null without memory. */
CXMLElement* beginDocument(CXMLParser& parser, const wchar_t* szChild) {
    parser.create(CXMLParser::XML_ENCODING_UTF16);
    CXMLElement* const pRoot = parser.addRootElement(ROOT_NAME);
    return pRoot ? pRoot->addChild(szChild) : nullptr;
}

CCursor readCursor(const CXMLElement& xmlTouch) {
    CCursor cursor;
    cursor.setID(xmlTouch.getAttributeUInt(L"id", 0));
    cursor.setX(xmlTouch.getAttributeInt(L"x", 0));
    cursor.setXDelta(xmlTouch.getAttributeInt(L"x_delta", 0));
    cursor.setXSpeed(xmlTouch.getAttributeInt(L"x_speed", 0));
    cursor.setY(xmlTouch.getAttributeInt(L"y", 0));
    cursor.setYDelta(xmlTouch.getAttributeInt(L"y_delta", 0));
    cursor.setYSpeed(xmlTouch.getAttributeInt(L"y_speed", 0));
    cursor.setTouchStatus(static_cast<CCursor::ETouchStatus>(xmlTouch.getAttributeInt(L"touch_status", 0)));
    cursor.setTimestamp(xmlTouch.getAttributeUInt(L"time_stamp", 0));
    return cursor;
}
} // namespace

ORLIX_STATIC_DATA_TRANSFER CDataArray<CDataTransfer*> g_aryDeletedInstance;

CDataTransfer::CDataTransfer()
    : m_pListener(nullptr), m_pServer(nullptr), m_pClient(nullptr), m_bRawConnection(false), m_bConnected(false),
      m_bufReceive(0, RECEIVE_INCREMENT), m_pNextAlive(s_pFirstAlive) {
    s_pFirstAlive = this;
}

CDataTransfer::~CDataTransfer() {
    g_aryDeletedInstance.add(this);
    m_pListener = nullptr;
    if (m_pServer)
        m_pServer->setListener(nullptr);
    if (m_pClient)
        m_pClient->setListener(nullptr);
    close();
    CMessageCenter::getInstance()->deleteMessageByTypeAndID(
        CBaseMessage::MESSAGE_DATA_TRANSFER, static_cast<unsigned int>(reinterpret_cast<std::size_t>(this)));
    CDataTransfer** ppLink = &s_pFirstAlive;
    while (*ppLink != this)
        ppLink = &(*ppLink)->m_pNextAlive;
    *ppLink = m_pNextAlive;
}

bool CDataTransfer::isAlive(const CDataTransfer* pInstance) noexcept {
    const CDataTransfer* pAlive = s_pFirstAlive;
    while (pAlive && pAlive != pInstance)
        pAlive = pAlive->m_pNextAlive;
    return pAlive != nullptr;
}

bool CDataTransfer::removeDeleted(const CDataTransfer* pInstance) {
    const int iIndex = g_aryDeletedInstance.find(const_cast<CDataTransfer*>(pInstance));
    if (iIndex < 0)
        return false;
    g_aryDeletedInstance.removeAt(static_cast<unsigned int>(iIndex));
    return true;
}

void CDataTransfer::deleteAllInstance() { g_aryDeletedInstance.clear(); }

void CDataTransfer::openAsServer(unsigned int uiPort) {
    if (m_pServer || m_pClient || uiPort == 0)
        return;
    m_pServer = new CSocketServer(uiPort, SOCKET_BUFFER_SIZE);
    if (!m_pServer)
        return;
    m_pServer->setListener(this);
    configure(*m_pServer);
    m_pServer->start();
}

void CDataTransfer::openAsClient(const CString& strAddress, unsigned int uiPort) {
    if (m_pServer || m_pClient || strAddress.length() == 0 || uiPort == 0)
        return;
    m_pClient = new CSocketClient(strAddress, uiPort, true, SOCKET_BUFFER_SIZE);
    if (!m_pClient)
        return;
    m_pClient->setListener(this);
    configure(*m_pClient);
    m_pClient->start(false);
}

void CDataTransfer::close() {
    if (m_pServer) {
        if (!m_pListener)
            m_pServer->setListener(nullptr);
        m_pServer->stop();
    }
    if (m_pClient) {
        if (!m_pListener)
            m_pClient->setListener(nullptr);
        m_pClient->stop();
    }
    delete m_pServer;
    delete m_pClient;
    m_pServer = nullptr;
    m_pClient = nullptr;
    m_bConnected = false;
    m_bufReceive.clear();
}

void CDataTransfer::onConnect(CSocketServer*, unsigned int) { changeConnection(true); }

void CDataTransfer::onDisconnect(CSocketServer*, unsigned int) { changeConnection(false); }

void CDataTransfer::onDataAvailable(CSocketServer*, unsigned int, unsigned char* pData, int iLength) {
    receive(pData, iLength);
}

void CDataTransfer::onConnect(CSocketClient*) { changeConnection(true); }

void CDataTransfer::onDisconnect(CSocketClient*) { changeConnection(false); }

void CDataTransfer::onDataAvailable(CSocketClient*, unsigned char* pData, int iLength) { receive(pData, iLength); }

void CDataTransfer::changeConnection(bool bConnected) {
    m_bConnected = bConnected;
    m_bufReceive.clear(); // a frame does not go on in another connection
    if (canNotifyListener())
        CMessageCenter::getInstance()->pushMessage(new CMsgDataTransfer(this, bConnected));
}

void CDataTransfer::receive(const unsigned char* pData, int iLength) {
    if (iLength > 0)
        parseData(pData, static_cast<unsigned int>(iLength));
}

void CDataTransfer::parseData(const unsigned char* pData, unsigned int uiLength) {
    if ((!m_pServer && !m_pClient) || !pData)
        return;
    if (m_bRawConnection) {
        postPayload(pData, uiLength, false);
        return;
    }
    if (m_bufReceive.getSize() == 0)
        parseChunk(pData, uiLength);
    else if (hold(pData, uiLength))
        parseHeld();
}

/** Nothing is held: the frames are taken from where they lie, and only what is left over is copied. */
void CDataTransfer::parseChunk(const unsigned char* pData, unsigned int uiLength) {
    CByteBuffer bufChunk;
    bufChunk.attachBuffer(const_cast<unsigned char*>(pData), uiLength, uiLength, false); // only read
    const unsigned int uiConsumed = parseFrames(bufChunk);
    if (uiConsumed < uiLength)
        hold(pData + uiConsumed, uiLength - uiConsumed);
}

void CDataTransfer::parseHeld() {
    m_bufReceive.setPosition(0);
    const unsigned int uiConsumed = parseFrames(m_bufReceive);
    m_bufReceive.setPosition(uiConsumed);
    m_bufReceive.moveToHead(uiConsumed);
    if (m_bufReceive.getSize() == 0 && m_bufReceive.getCapacity() > RECEIVE_KEPT)
        m_bufReceive.clear(); // a large frame that has been handed on would stay in memory twice
}

/** @return false, with nothing held any more, if there was no room: a frame with a hole in it is none. */
bool CDataTransfer::hold(const unsigned char* pData, unsigned int uiLength) {
    const unsigned int uiHeld = m_bufReceive.getSize();
    m_bufReceive.writeBuffer(pData, uiLength);
    if (m_bufReceive.getSize() - uiHeld == uiLength)
        return true;
    m_bufReceive.clear();
    return false;
}

/** Posts the whole frames. @return the bytes that are used up, which with a bad frame are all. */
unsigned int CDataTransfer::parseFrames(CByteBuffer& buffer) {
    unsigned int uiConsumed = 0;
    // On purpose not reduced by what readMagic passes over: then more is expected than there is, and a part of a frame
    // that has arrived behind such a frame is taken for a bad one.
    unsigned int uiRemaining = buffer.bytesAvailable();
    while (uiRemaining >= MAGIC_SIZE) {
        if (!readMagic(buffer))
            return buffer.getSize();
        if (uiRemaining < HEADER_SIZE)
            return buffer.getPosition() - MAGIC_SIZE;
        const unsigned int uiLength = buffer.readUINT(); // 0 if it is not all there
        if (uiLength == 0 || buffer.bytesAvailable() == 0)
            return buffer.getSize();
        const bool bXML = buffer.readBYTE() == TYPE_XML;
        const unsigned int uiPayload = buffer.getPosition();
        if (uiLength > buffer.bytesAvailable())
            return uiPayload - HEADER_SIZE;
        postPayload(buffer.buffer() + uiPayload, uiLength, bXML);
        uiConsumed = uiPayload + uiLength;
        buffer.setPosition(uiConsumed);
        uiRemaining -= HEADER_SIZE + uiLength;
    }
    return uiConsumed;
}

/** Reads the magic and its reserved byte, and as long as that is not 0 both once more.
 *  @return false where the bytes differ or end. */
bool CDataTransfer::readMagic(CByteBuffer& buffer) {
    do {
        if (buffer.readUINT() != FRAME_MAGIC || buffer.bytesAvailable() == 0)
            return false;
    } while (buffer.readBYTE() != 0);
    return true;
}

void CDataTransfer::postPayload(const unsigned char* pData, unsigned int uiLength, bool bXML) {
    if (canNotifyListener())
        CMessageCenter::getInstance()->pushMessage(new CMsgDataTransfer(this, pData, uiLength, bXML));
}

void CDataTransfer::sendLogicData(const unsigned char* pData, unsigned int uiLength) {
    sendData(pData, uiLength, false);
}

void CDataTransfer::sendLogicData(CXMLParser* pParser, bool bFormat) {
    if (!pParser)
        return;
    CString strText;
    pParser->saveToString(strText, bFormat);
    const std::uint64_t uiRoom = std::uint64_t(strText.length()) * 3 + 2; // no character takes more than three bytes
    if (uiRoom > UINT_MAX)
        return;
    void* const pBlock = CMemory::malloc(static_cast<unsigned int>(uiRoom), 0);
    if (!pBlock)
        return;
    unsigned char* const pText = static_cast<unsigned char*>(pBlock);
    pText[0] = 0; // what stays of a document that cannot be saved
    unsigned int uiCount = 0;
    CStringConverter::convertToUTF8(strText, pText, static_cast<unsigned int>(uiRoom), &uiCount);
    sendData(pText, uiCount + 1, true);
    CMemory::free(pBlock);
}

void CDataTransfer::sendTouchInput(const CCursor& cursor) {
    CXMLParser parser;
    if (CXMLElement* const pTouch = beginDocument(parser, CHILD_TOUCH_INPUT)) {
        pTouch->setAttribute(L"id", cursor.getID());
        pTouch->setAttribute(L"x", cursor.getX());
        pTouch->setAttribute(L"x_delta", cursor.getXDelta());
        pTouch->setAttribute(L"x_speed", cursor.getXSpeed());
        pTouch->setAttribute(L"y", cursor.getY());
        pTouch->setAttribute(L"y_delta", cursor.getYDelta());
        pTouch->setAttribute(L"y_speed", cursor.getYSpeed());
        pTouch->setAttribute(L"touch_status", static_cast<int>(cursor.getTouchStatus()));
        pTouch->setAttribute(L"time_stamp", cursor.getTimestamp());
    }
    sendLogicData(&parser, false);
}

void CDataTransfer::sendPageCMD(IDataTransferListener::EOperationHandle eHandle, CString strPageName) {
    sendCommand(CHILD_PAGE_CMD, eHandle, strPageName);
}

void CDataTransfer::sendPopupCMD(IDataTransferListener::EOperationHandle eHandle, CString strPopupName) {
    sendCommand(CHILD_POPUP_CMD, eHandle, strPopupName); // under "page_name" too, as the header says
}

void CDataTransfer::sendCommand(const wchar_t* szChild, IDataTransferListener::EOperationHandle eHandle,
                                const CString& strName) {
    CXMLParser parser;
    if (CXMLElement* const pCommand = beginDocument(parser, szChild)) {
        pCommand->setAttribute(ATTRIBUTE_OPE_HANDLE, static_cast<int>(eHandle));
        pCommand->setAttribute(ATTRIBUTE_PAGE_NAME, strName);
    }
    sendLogicData(&parser, false);
}

void CDataTransfer::sendData(const unsigned char* pData, unsigned int uiLength, bool bXML) {
    unsigned char aryHeader[HEADER_SIZE];
    CByteBuffer bufHeader;
    bufHeader.attachBuffer(aryHeader, HEADER_SIZE, 0, false);
    bufHeader.writeUINT(FRAME_MAGIC);
    bufHeader.writeBYTE(0);
    bufHeader.writeUINT(uiLength);
    bufHeader.writeBYTE(bXML ? TYPE_XML : TYPE_BINARY);

    if (m_pServer) {
        // No client has this number, so the server refuses both: on purpose a channel that is open as server only
        // receives.
        if (!m_bRawConnection)
            m_pServer->sendData(aryHeader, HEADER_SIZE, NO_CLIENT);
        m_pServer->sendData(pData, uiLength, NO_CLIENT);
    }
    if (m_pClient) {
        const bool bFramed = !m_bRawConnection;
        if (bFramed) {
            m_pClient->stopHeartBeat();
            m_pClient->sendData(aryHeader, HEADER_SIZE);
        }
        m_pClient->sendData(pData, uiLength);
        if (bFramed)
            m_pClient->startHeartBeat(); // so a heartbeat comes only when nothing was sent for its whole delay
    }
}

void CDataTransfer::handleDataTransferMessage(bool bConnected) {
    if (!m_pListener)
        return;
    if (bConnected)
        m_pListener->onConnect();
    else
        m_pListener->onDisconnect();
}

void CDataTransfer::handleDataTransferMessage(CArrayPtr<unsigned char> aryData) {
    if (!removeDeleted(this) && m_pListener)
        m_pListener->onLogicDataAvailable(aryData);
}

void CDataTransfer::handleDataTransferMessage(CXMLParser* pParser) {
    if (removeDeleted(this) || !pParser || !pParser->hasRootElement() || !m_pListener)
        return;
    const CXMLElement& xmlRoot = *pParser->getRootElement();
    if (const CXMLElement* const pTouch = xmlRoot.getSingleChild(CHILD_TOUCH_INPUT))
        m_pListener->onTouchInputAvailable(readCursor(*pTouch));
    else if (const CXMLElement* const pPage = xmlRoot.getSingleChild(CHILD_PAGE_CMD))
        m_pListener->onPageCMDAvailable(
            static_cast<IDataTransferListener::EOperationHandle>(pPage->getAttributeInt(ATTRIBUTE_OPE_HANDLE, 0)),
            pPage->getAttributeString(ATTRIBUTE_PAGE_NAME, L""));
    else if (!xmlRoot.hasChild(CHILD_POPUP_CMD)) // no receiver has ever been told of a popup command, on purpose
        m_pListener->onLogicDataAvailable(pParser);
}
} // namespace Orlix
