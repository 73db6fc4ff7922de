#include <Orlix/messaging/CMsgSystem.h>

#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/messaging/IMessageCenterListener.h>
#include <Orlix/messaging/IMsgSystemListener.h>

namespace Orlix {

CMsgSystem::CMsgSystem() : m_pListener(nullptr) { m_eType = MESSAGE_SYSTEM; }

CMsgSystem::CMsgSystem(unsigned int uiID, CObject* pData, IMsgSystemListener* pListener) : m_pListener(pListener) {
    m_eType = MESSAGE_SYSTEM;
    m_uiID = uiID;
    m_ptrData = pData;
}

CMsgSystem::~CMsgSystem() = default;

void CMsgSystem::handleMessage() {
    if (IMessageCenterListener* const pListener = CMessageCenter::getInstance()->getListener())
        pListener->onHandleSystemMessage(m_uiID, m_ptrData.getPtr());
    if (m_pListener)
        m_pListener->onHandleSystemMessage(m_uiID, m_ptrData.getPtr());
}
} // namespace Orlix
