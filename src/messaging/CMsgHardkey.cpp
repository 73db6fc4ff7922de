#include <Orlix/messaging/CMsgHardkey.h>

#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/messaging/IMessageCenterListener.h>

namespace Orlix {

CMsgHardkey::CMsgHardkey() : m_uiState(1) { m_eType = MESSAGE_HARDKEY; }

CMsgHardkey::CMsgHardkey(unsigned int uiKey, unsigned int uiState) : m_uiState(uiState) {
    m_eType = MESSAGE_HARDKEY;
    m_uiID = uiKey;
}

CMsgHardkey::~CMsgHardkey() = default;

void CMsgHardkey::handleMessage() {
    if (IMessageCenterListener* const pListener = CMessageCenter::getInstance()->getListener())
        pListener->onHandleHardkeyMessage(m_uiID, m_uiState);
}
} // namespace Orlix
