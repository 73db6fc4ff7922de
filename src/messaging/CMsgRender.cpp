#include <Orlix/messaging/CMsgRender.h>

#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/messaging/IMessageCenterListener.h>

namespace Orlix {

CMsgRender::CMsgRender() : CBaseMessage(MESSAGE_RENDER) {}

CMsgRender::CMsgRender(unsigned int uiID) : CBaseMessage(MESSAGE_RENDER, uiID) {}

CMsgRender::~CMsgRender() = default;

void CMsgRender::handleMessage() {
    if (IMessageCenterListener* const pListener = CMessageCenter::getInstance()->getListener())
        pListener->onHandleRenderMessage(m_uiID);
}
} // namespace Orlix
