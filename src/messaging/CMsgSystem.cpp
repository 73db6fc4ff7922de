#include <Orlix/messaging/CMsgSystem.h>

#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/messaging/IMessageCenterListener.h>
#include <Orlix/messaging/IMsgSystemListener.h>

namespace Orlix {

CMsgSystem::CMsgSystem() : CBaseMessage(MESSAGE_SYSTEM), m_pListener(nullptr) {}

CMsgSystem::CMsgSystem(unsigned int uiID, CObject* pData, IMsgSystemListener* pListener)
    : CBaseMessage(MESSAGE_SYSTEM, uiID, pData), m_pListener(pListener) {}

CMsgSystem::~CMsgSystem() = default;

void CMsgSystem::handleMessage() {
    if (IMessageCenterListener* const pListener = CMessageCenter::getInstance()->getListener())
        pListener->onHandleSystemMessage(m_uiID, m_ptrData.getPtr());
    if (m_pListener)
        m_pListener->onHandleSystemMessage(m_uiID, m_ptrData.getPtr());
}
} // namespace Orlix
