#include <Orlix/messaging/CMsgUser.h>

#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/messaging/IMessageCenterListener.h>
#include <Orlix/messaging/IMsgUserListener.h>

namespace Orlix {

CMsgUser::CMsgUser() : CBaseMessage(MESSAGE_USER), m_pListener(nullptr) {}

CMsgUser::CMsgUser(unsigned int uiID, CObject* pData, IMsgUserListener* pListener)
    : CBaseMessage(MESSAGE_USER, uiID, pData), m_pListener(pListener) {}

CMsgUser::~CMsgUser() = default;

void CMsgUser::handleMessage() {
    if (IMessageCenterListener* const pListener = CMessageCenter::getInstance()->getListener())
        pListener->onHandleUserMessage(m_uiID, m_ptrData.getPtr());
    if (m_pListener)
        m_pListener->onHandleUserMessage(m_uiID, m_ptrData.getPtr());
}
} // namespace Orlix
