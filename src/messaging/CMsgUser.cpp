#include <Orlix/messaging/CMsgUser.h>

#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/messaging/IMessageCenterListener.h>
#include <Orlix/messaging/IMsgUserListener.h>

namespace Orlix {

CMsgUser::CMsgUser() : m_pListener(nullptr) { m_eType = MESSAGE_USER; }

CMsgUser::CMsgUser(unsigned int uiID, CObject* pData, IMsgUserListener* pListener) : m_pListener(pListener) {
    m_eType = MESSAGE_USER;
    m_uiID = uiID;
    m_ptrData = pData;
}

CMsgUser::~CMsgUser() = default;

void CMsgUser::handleMessage() {
    if (IMessageCenterListener* const pListener = CMessageCenter::getInstance()->getListener())
        pListener->onHandleUserMessage(m_uiID, m_ptrData.getPtr());
    if (m_pListener)
        m_pListener->onHandleUserMessage(m_uiID, m_ptrData.getPtr());
}
} // namespace Orlix
