#include <Orlix/messaging/CMsgHardkey.h>

#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/messaging/IMessageCenterListener.h>

namespace Orlix {

CMsgHardkey::CMsgHardkey() : CBaseMessage(MESSAGE_HARDKEY), m_uiState(1) {}

CMsgHardkey::CMsgHardkey(unsigned int uiKey, unsigned int uiState)
    : CBaseMessage(MESSAGE_HARDKEY, uiKey), m_uiState(uiState) {}

CMsgHardkey::~CMsgHardkey() = default;

void CMsgHardkey::handleMessage() {
    if (IMessageCenterListener* const pListener = CMessageCenter::getInstance()->getListener())
        pListener->onHandleHardkeyMessage(m_uiID, m_uiState);
}
} // namespace Orlix
