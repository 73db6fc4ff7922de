#include <Orlix/messaging/CMsgLogicEvent.h>

#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/messaging/IMessageCenterListener.h>

namespace Orlix {

CMsgLogicEvent::CMsgLogicEvent() : CBaseMessage(MESSAGE_LOGIC_EVENT) {}

CMsgLogicEvent::CMsgLogicEvent(unsigned int uiID) : CBaseMessage(MESSAGE_LOGIC_EVENT, uiID) {}

CMsgLogicEvent::~CMsgLogicEvent() = default;

void CMsgLogicEvent::handleMessage() {
    if (IMessageCenterListener* const pListener = CMessageCenter::getInstance()->getListener())
        pListener->onHandleLogicEventMessage(m_uiID);
}
} // namespace Orlix
