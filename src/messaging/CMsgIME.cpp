#include <Orlix/messaging/CMsgIME.h>

#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/messaging/IMessageCenterListener.h>

namespace Orlix {

CMsgIME::CMsgIME() { m_eType = MESSAGE_IME; }

CMsgIME::CMsgIME(const CString& strText) : m_strText(strText) { m_eType = MESSAGE_IME; }

CMsgIME::~CMsgIME() = default;

void CMsgIME::handleMessage() {
    if (IMessageCenterListener* const pListener = CMessageCenter::getInstance()->getListener())
        pListener->onHandleIMEMessage(m_strText);
}
} // namespace Orlix
