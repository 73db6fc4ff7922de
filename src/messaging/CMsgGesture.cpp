#include <Orlix/messaging/CMsgGesture.h>

#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/messaging/IMessageCenterListener.h>

namespace Orlix {

CMsgGesture::CMsgGesture() : m_uiParam(0) { m_eType = MESSAGE_GESTURE; }

CMsgGesture::CMsgGesture(unsigned int uiParam, unsigned int uiID, CObject* pData) : m_uiParam(uiParam) {
    m_eType = MESSAGE_GESTURE;
    m_uiID = uiID;
    m_ptrData = pData;
}

CMsgGesture::~CMsgGesture() = default;

void CMsgGesture::handleMessage() {
    if (IMessageCenterListener* const pListener = CMessageCenter::getInstance()->getListener())
        pListener->onHandleGestureMessage(m_uiParam, m_uiID, m_ptrData.getPtr());
}
} // namespace Orlix
