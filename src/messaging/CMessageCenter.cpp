#include <Orlix/messaging/CMessageCenter.h>

#include <Orlix/foundation/CAutoSync.h>
#include <Orlix/input/CSurface.h>
#include <Orlix/messaging/CMsgDataContext.h>
#include <Orlix/messaging/CMsgGesture.h>
#include <Orlix/messaging/CMsgHardkey.h>
#include <Orlix/messaging/CMsgIME.h>
#include <Orlix/messaging/CMsgLogicEvent.h>
#include <Orlix/messaging/CMsgQuit.h>
#include <Orlix/messaging/CMsgRender.h>
#include <Orlix/messaging/CMsgSystem.h>
#include <Orlix/messaging/CMsgUser.h>
#include <Orlix/messaging/CMsgVoiceContent.h>
#include <Orlix/messaging/IMessageCenterListener.h>
#include <Orlix/threading/CMsgTimer.h>
#include <Orlix/threading/CTime.h>

#include <utility>

namespace Orlix {
namespace {

constexpr unsigned int LIST_INPUT = 1;
constexpr unsigned int LIST_DATA = 2;
constexpr unsigned int LIST_TIMER = 3;
constexpr unsigned int LIST_USER = 4;

constexpr unsigned int KEY_SHIFT = 16;
constexpr unsigned int KEY_CTRL = 17;
constexpr unsigned int KEY_ALT = 18;

// The platform's states of a finger; not those of CCursor, which start with none.
constexpr unsigned int TOUCH_PRESS = 0;
constexpr unsigned int TOUCH_MOVE = 1;
constexpr unsigned int TOUCH_RELEASE = 2;

using CMessageList = CObjectList<CBaseMessage>;

bool isRenderOf(const CBaseMessage* pMessage, unsigned int uiID) {
    return pMessage && pMessage->getType() == CBaseMessage::MESSAGE_RENDER && pMessage->getID() == uiID;
}

bool isTimer(const CBaseMessage* pMessage) { return pMessage && pMessage->getType() == CBaseMessage::MESSAGE_TIMER; }

/** @return the message itself if there is no memory for its place, otherwise null. */
CBaseMessage* append(CMessageList& lstMessage, CBaseMessage* pMessage) {
    const unsigned int uiSize = lstMessage.getSize();
    lstMessage.add(pMessage);
    return lstMessage.getSize() == uiSize ? pMessage : nullptr;
}

template <class TMatch> void moveMatching(CMessageList& lstMessage, const TMatch& match, CMessageList& lstTarget) {
    lstMessage.toHead();
    while (const CBaseMessage* const pMessage = lstMessage.next()) {
        if (match(pMessage))
            lstMessage.moveVisitedTo(lstTarget);
    }
}

auto hasID(unsigned int uiID) {
    return [=](const CBaseMessage* pMessage) { return pMessage->getID() == uiID; };
}

auto hasType(CBaseMessage::EMessageType eType) {
    return [=](const CBaseMessage* pMessage) { return pMessage->getType() == eType; };
}

auto hasTypeAndID(CBaseMessage::EMessageType eType, unsigned int uiID) {
    return [=](const CBaseMessage* pMessage) { return pMessage->getType() == eType && pMessage->getID() == uiID; };
}
} // namespace

CMessageCenter* CMessageCenter::s_pInstance = nullptr;

CMessageCenter::CMessageCenter()
    : m_pListener(nullptr), m_eLastList(LIST_USER), m_arrListInfo(4), m_bLocked(false), m_bCtrlKeyPress(false),
      m_bShiftKeyPress(false), m_bAltKeyPress(false), m_bInputUnpurged(false) {
    m_arrListInfo.add({LIST_INPUT, 0, 0, 10});
    m_arrListInfo.add({LIST_DATA, 0, 0, 5});
    m_arrListInfo.add({LIST_TIMER, 0, 0, 2});
    m_arrListInfo.add({LIST_USER, 0, 0, 1});
}

CMessageCenter::~CMessageCenter() {
    // Here and not with the members: a message's destructor may still call the center and so needs its lock.
    m_lstUser.clear();
    m_lstTimer.clear();
    m_lstData.clear();
    m_lstInput.clear();
    m_lstSystem.clear();
}

CMessageCenter* CMessageCenter::getInstance() {
    if (!s_pInstance)
        s_pInstance = new CMessageCenter;
    return s_pInstance;
}

void CMessageCenter::deleteInstance() {
    delete s_pInstance;
    s_pInstance = nullptr;
}

void CMessageCenter::pushMessage(CBaseMessage* pMessage) {
    if (!pMessage)
        return;
    if (m_bLocked) {
        delete pMessage;
        return;
    }
    {
        // Emptied after the lock is released: a message's destructor may take other locks or call back.
        CMessageList lstDropped;
        CBaseMessage* pRejected;
        {
            const CAutoSync sync(m_syncObject);
            pRejected = route(pMessage, lstDropped);
        }
        delete pRejected;
    }
    if (IMessageCenterListener* const pListener = m_pListener) // read once: another thread may be taking it away
        pListener->onMessageAvailable();
}

/** @return the message itself if no list takes it, otherwise null; the single steps below do the same and delete it. */
CBaseMessage* CMessageCenter::route(CBaseMessage* pMessage, CMessageList& lstDropped) {
    switch (pMessage->getType()) {
    case CBaseMessage::MESSAGE_RENDER:
        return joinRender(getList(m_eLastList), pMessage, m_eLastList == LIST_INPUT, lstDropped);
    case CBaseMessage::MESSAGE_SYSTEM:
    case CBaseMessage::MESSAGE_QUIT:
        return append(m_lstSystem, pMessage);
    case CBaseMessage::MESSAGE_TOUCH:
    case CBaseMessage::MESSAGE_GESTURE:
    case CBaseMessage::MESSAGE_HARDKEY:
    case CBaseMessage::MESSAGE_IME:
    case CBaseMessage::MESSAGE_LOGIC_EVENT:
    case CBaseMessage::MESSAGE_VOICE_CONTENT:
        return join(m_lstInput, LIST_INPUT, pMessage);
    case CBaseMessage::MESSAGE_DATA_CONTEXT:
    case CBaseMessage::MESSAGE_SHARE_MEMORY:
    case CBaseMessage::MESSAGE_DATA_TRANSFER:
    case CBaseMessage::MESSAGE_HTTP_CONNECTOR:
    case CBaseMessage::MESSAGE_WEB_BROWSER:
        return join(m_lstData, LIST_DATA, pMessage);
    case CBaseMessage::MESSAGE_TIMER:
        return joinTimer(pMessage);
    case CBaseMessage::MESSAGE_USER:
        return join(m_lstSystem, LIST_USER, pMessage); // not the user list, on purpose: see the header
    default:
        return pMessage;
    }
}

/** @return as route. */
CBaseMessage* CMessageCenter::join(CMessageList& lstMessage, unsigned int uiListType, CBaseMessage* pMessage) {
    m_eLastList = uiListType;
    return append(lstMessage, pMessage);
}

/** Folds a timer message into the one that ends the list, so that a slow host finds one message and no backlog.
 *  @return as route: the message itself also if its pulses have moved. */
CBaseMessage* CMessageCenter::joinTimer(CBaseMessage* pMessage) {
    m_lstTimer.toTail();
    CBaseMessage* const pTail = m_lstTimer.previous();
    if (!isTimer(pTail) || !isTimer(pMessage))
        return join(m_lstTimer, LIST_TIMER, pMessage);
    m_eLastList = LIST_TIMER;
    static_cast<CMsgTimer*>(pTail)->margeDataFrom(static_cast<CMsgTimer*>(pMessage));
    return pMessage;
}

void CMessageCenter::pushSystemMessage(CBaseMessage* pMessage) {
    if (pMessage)
        delete append(m_lstSystem, pMessage);
}

void CMessageCenter::pushInputMessage(CBaseMessage* pMessage) {
    if (!pMessage)
        return;
    m_bInputUnpurged |= pMessage->getType() == CBaseMessage::MESSAGE_RENDER;
    delete join(m_lstInput, LIST_INPUT, pMessage);
}

void CMessageCenter::pushDataMessage(CBaseMessage* pMessage) {
    if (pMessage)
        delete join(m_lstData, LIST_DATA, pMessage);
}

void CMessageCenter::pushTimerMessage(CBaseMessage* pMessage) {
    if (pMessage)
        delete joinTimer(pMessage);
}

void CMessageCenter::pushUserMessage(CBaseMessage* pMessage) {
    if (pMessage)
        delete join(m_lstSystem, LIST_USER, pMessage);
}

void CMessageCenter::pushRenderMessage(CMessageList& lstMessage, CBaseMessage* pMessage, bool bPurge) {
    if (!pMessage)
        return;
    m_bInputUnpurged |= !bPurge && &lstMessage == &m_lstInput;
    CMessageList lstDropped;
    delete joinRender(lstMessage, pMessage, bPurge, lstDropped);
}

/** @return as route: the message itself also if the tail already asks for the same. */
CBaseMessage* CMessageCenter::joinRender(CMessageList& lstMessage, CBaseMessage* pMessage, bool bPurge,
                                         CMessageList& lstDropped) {
    const unsigned int uiID = pMessage->getID();
    if (bPurge)
        takeEarlierRenders(lstMessage, uiID, lstDropped);
    lstMessage.toTail();
    if (isRenderOf(lstMessage.previous(), uiID))
        return pMessage;
    return append(lstMessage, pMessage);
}

void CMessageCenter::takeEarlierRenders(CMessageList& lstMessage, unsigned int uiID, CMessageList& lstDropped) {
    lstMessage.toTail();
    lstMessage.previous(); // the tail is left alone
    while (const CBaseMessage* const pMessage = lstMessage.previous()) {
        if (!isRenderOf(pMessage, uiID))
            continue;
        lstMessage.moveVisitedTo(lstDropped);
        if (&lstMessage == &m_lstInput && !m_bInputUnpurged)
            return; // each repaint that came before purged too, so there is no second one: spare the walk to the head
    }
}

bool CMessageCenter::hasRenderMessageAtLast(CMessageList& lstMessage, unsigned int uiID) {
    lstMessage.toTail();
    while (const CBaseMessage* const pMessage = lstMessage.previous()) {
        if (pMessage->getType() != CBaseMessage::MESSAGE_RENDER)
            return false;
        if (pMessage->getID() == uiID)
            return true;
    }
    return false;
}

void CMessageCenter::pushQuitMessage() { pushMessage(new CMsgQuit); }

void CMessageCenter::pushSystemMessage(unsigned int uiID, CObject* pData, IMsgSystemListener* pListener) {
    pushMessage(new CMsgSystem(uiID, pData, pListener));
}

void CMessageCenter::pushGestureMessage(unsigned int uiParam, unsigned int uiID, CObject* pData) {
    pushMessage(new CMsgGesture(uiParam, uiID, pData));
}

void CMessageCenter::pushHardkeyMessage(unsigned int uiKey, unsigned int uiState) {
    updateModifier(uiKey, uiState);
    pushMessage(new CMsgHardkey(uiKey, uiState));
}

void CMessageCenter::updateModifier(unsigned int uiKey, unsigned int uiState) noexcept {
    if (uiState < 1 || uiState > 5)
        return;
    const bool bPress = uiState <= 3;
    switch (uiKey) {
    case KEY_CTRL:
        m_bCtrlKeyPress = bPress;
        break;
    case KEY_SHIFT:
        m_bShiftKeyPress = bPress;
        break;
    case KEY_ALT:
        m_bAltKeyPress = bPress;
        break;
    default:
        break;
    }
}

void CMessageCenter::pushIMEMessage(const CString& strText) { pushMessage(new CMsgIME(strText)); }

void CMessageCenter::pushTouchMessage(unsigned int uiSurfaceID, unsigned int uiCursorID, int iX, int iY,
                                      unsigned int uiState) {
    CSurface* const pSurface = CSurface::getInstance(uiSurfaceID, true);
    if (!pSurface)
        return;
    CCursorManager* const pManager = pSurface->getCursorManager();
    switch (uiState) {
    case TOUCH_PRESS:
        pManager->addCursor(uiCursorID, iX, iY, 0);
        break;
    case TOUCH_MOVE:
        pManager->updateCursor(uiCursorID, iX, iY, 0);
        break;
    case TOUCH_RELEASE:
        pManager->removeCursor(uiCursorID, iX, iY, 0);
        break;
    default:
        break;
    }
}

void CMessageCenter::pushLogicEventMessage(unsigned int uiID) { pushMessage(new CMsgLogicEvent(uiID)); }

void CMessageCenter::pushVoiceContentMessage(const CString& strContent) {
    pushMessage(new CMsgVoiceContent(strContent));
}

void CMessageCenter::pushDataContextMessage(unsigned int uiID, CObject* pData) {
    pushMessage(new CMsgDataContext(uiID, pData));
}

void CMessageCenter::pushUserMessage(unsigned int uiID, CObject* pData, IMsgUserListener* pListener) {
    pushMessage(new CMsgUser(uiID, pData, pListener));
}

void CMessageCenter::pushRenderMessage(unsigned int uiID) {
    {
        const CAutoSync sync(m_syncObject);
        if (hasRenderMessageAtLast(getList(m_eLastList), uiID))
            return;
    }
    pushMessage(new CMsgRender(uiID));
}

CObjectPtr<CBaseMessage> CMessageCenter::popMessage() {
    {
        const CAutoSync sync(m_syncObject);
        if (m_lstSystem.getSize() != 0)
            return m_lstSystem.removeHead();
    }
    const unsigned int uiNow = CTime::getTickCount();
    weighLists(uiNow);
    const CAutoSync sync(m_syncObject);
    for (unsigned int i = m_arrListInfo.getSize(); i-- > 0;) {
        tagMessageListInfo& info = m_arrListInfo[i];
        if (CBaseMessage* const pMessage = getList(info.uiListType).removeHead()) {
            info.uiLastTime = uiNow;
            return pMessage;
        }
    }
    return nullptr;
}

void CMessageCenter::weighLists(unsigned int uiNow) {
    for (unsigned int i = 0; i < m_arrListInfo.getSize(); ++i) {
        tagMessageListInfo& info = m_arrListInfo[i];
        info.uiTimeSpan = (uiNow - info.uiLastTime) * info.uiWeight; // wraps, as the tick does
    }
    sortListInfo();
}

/** Bubble sort on the order that the last call left: stable, so that equal spans keep their places. */
void CMessageCenter::sortListInfo() {
    const tagCompareByTimeSpan compare;
    const unsigned int uiSize = m_arrListInfo.getSize();
    for (unsigned int i = 0; i + 1 < uiSize; ++i) {
        for (unsigned int j = 0; j + 1 < uiSize - i; ++j) {
            if (compare(m_arrListInfo[j], m_arrListInfo[j + 1]) > 0)
                std::swap(m_arrListInfo[j], m_arrListInfo[j + 1]);
        }
    }
}

CObjectList<CBaseMessage>& CMessageCenter::getList(unsigned int uiListType) noexcept {
    switch (uiListType) {
    case LIST_INPUT:
        return m_lstInput;
    case LIST_DATA:
        return m_lstData;
    case LIST_TIMER:
        return m_lstTimer;
    default:
        return m_lstUser;
    }
}

unsigned int CMessageCenter::getMessageCount() {
    const CAutoSync sync(m_syncObject);
    return m_lstSystem.getSize() + m_lstInput.getSize() + m_lstData.getSize() + m_lstTimer.getSize() +
           m_lstUser.getSize();
}

unsigned int CMessageCenter::getMessageCountByType(CBaseMessage::EMessageType eType) {
    const CAutoSync sync(m_syncObject);
    unsigned int uiCount = 0;
    for (CMessageList* const pList : {&m_lstSystem, &m_lstInput, &m_lstData, &m_lstTimer, &m_lstUser})
        uiCount += getMessageCountByType(*pList, eType);
    return uiCount;
}

unsigned int CMessageCenter::getMessageCountByType(CMessageList& lstMessage, CBaseMessage::EMessageType eType) {
    unsigned int uiCount = 0;
    lstMessage.toHead();
    while (const CBaseMessage* const pMessage = lstMessage.next())
        uiCount += pMessage->getType() == eType;
    return uiCount;
}

template <class TMatch> void CMessageCenter::deleteMatching(const TMatch& match) {
    CMessageList lstDropped; // emptied after the lock is released, in the order of the lists
    const CAutoSync sync(m_syncObject);
    for (CMessageList* const pList : {&m_lstSystem, &m_lstInput, &m_lstData, &m_lstTimer, &m_lstUser})
        moveMatching(*pList, match, lstDropped);
}

void CMessageCenter::deleteMessageByID(unsigned int uiID) { deleteMatching(hasID(uiID)); }

void CMessageCenter::deleteMessageByType(CBaseMessage::EMessageType eType) { deleteMatching(hasType(eType)); }

void CMessageCenter::deleteMessageByTypeAndID(CBaseMessage::EMessageType eType, unsigned int uiID) {
    deleteMatching(hasTypeAndID(eType, uiID));
}

void CMessageCenter::deleteTimerMessage(unsigned int uiTimerID) {
    CMessageList lstDropped; // emptied after the lock is released
    const CAutoSync sync(m_syncObject);
    m_lstTimer.toHead();
    while (CBaseMessage* const pMessage = m_lstTimer.next()) {
        if (!isTimer(pMessage))
            continue;
        CMsgTimer* const pTimer = static_cast<CMsgTimer*>(pMessage);
        pTimer->deleteDataByID(uiTimerID);
        if (pTimer->getDataCount() == 0)
            m_lstTimer.moveVisitedTo(lstDropped);
    }
}

void CMessageCenter::clearMessageList() {
    deleteMatching([](const CBaseMessage*) { return true; });
}

void CMessageCenter::deleteMessageByID(CMessageList& lstMessage, unsigned int uiID) {
    CMessageList lstDropped;
    moveMatching(lstMessage, hasID(uiID), lstDropped);
}

void CMessageCenter::deleteMessageByType(CMessageList& lstMessage, CBaseMessage::EMessageType eType) {
    CMessageList lstDropped;
    moveMatching(lstMessage, hasType(eType), lstDropped);
}

void CMessageCenter::deleteMessageByTypeAndID(CMessageList& lstMessage, CBaseMessage::EMessageType eType,
                                              unsigned int uiID) {
    CMessageList lstDropped;
    moveMatching(lstMessage, hasTypeAndID(eType, uiID), lstDropped);
}
} // namespace Orlix
