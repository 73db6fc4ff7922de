#include <Orlix/messaging/CMsgGesture.h>

#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/messaging/IMessageCenterListener.h>

namespace Orlix {

CMsgGesture::CMsgGesture() : CBaseMessage(MESSAGE_GESTURE), m_uiParam(0) {}

CMsgGesture::CMsgGesture(unsigned int uiParam, unsigned int uiID, CObject* pData)
    : CBaseMessage(MESSAGE_GESTURE, uiID, pData), m_uiParam(uiParam) {}

CMsgGesture::~CMsgGesture() = default;

void CMsgGesture::handleMessage() {
    if (IMessageCenterListener* const pListener = CMessageCenter::getInstance()->getListener())
        pListener->onHandleGestureMessage(m_uiParam, m_uiID, m_ptrData.getPtr());
}
} // namespace Orlix
