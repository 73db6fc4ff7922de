#include <Orlix/messaging/CMsgDataContext.h>

#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/messaging/IMessageCenterListener.h>

namespace Orlix {

CMsgDataContext::CMsgDataContext() : CBaseMessage(MESSAGE_DATA_CONTEXT) {}

CMsgDataContext::CMsgDataContext(unsigned int uiID, CObject* pData) : CBaseMessage(MESSAGE_DATA_CONTEXT, uiID, pData) {}

CMsgDataContext::~CMsgDataContext() = default;

void CMsgDataContext::handleMessage() {
    if (IMessageCenterListener* const pListener = CMessageCenter::getInstance()->getListener())
        pListener->onHandleDataContextMessage(m_uiID, m_ptrData.getPtr());
}
} // namespace Orlix
