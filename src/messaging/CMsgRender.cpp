#include <Orlix/messaging/CMsgRender.h>

#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/messaging/IMessageCenterListener.h>

namespace Orlix {

CMsgRender::CMsgRender() { m_eType = MESSAGE_RENDER; }

CMsgRender::CMsgRender(unsigned int uiID) {
    m_eType = MESSAGE_RENDER;
    m_uiID = uiID;
}

CMsgRender::~CMsgRender() = default;

void CMsgRender::handleMessage() {
    if (IMessageCenterListener* const pListener = CMessageCenter::getInstance()->getListener())
        pListener->onHandleRenderMessage(m_uiID);
}
} // namespace Orlix
