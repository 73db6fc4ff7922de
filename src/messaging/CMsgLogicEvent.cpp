#include <Orlix/messaging/CMsgLogicEvent.h>

#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/messaging/IMessageCenterListener.h>

namespace Orlix {

CMsgLogicEvent::CMsgLogicEvent() { m_eType = MESSAGE_LOGIC_EVENT; }

CMsgLogicEvent::CMsgLogicEvent(unsigned int uiID) {
    m_eType = MESSAGE_LOGIC_EVENT;
    m_uiID = uiID;
}

CMsgLogicEvent::~CMsgLogicEvent() = default;

void CMsgLogicEvent::handleMessage() {
    if (IMessageCenterListener* const pListener = CMessageCenter::getInstance()->getListener())
        pListener->onHandleLogicEventMessage(m_uiID);
}
} // namespace Orlix
