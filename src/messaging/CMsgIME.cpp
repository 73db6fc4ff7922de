#include <Orlix/messaging/CMsgIME.h>

#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/messaging/IMessageCenterListener.h>

namespace Orlix {

CMsgIME::CMsgIME() : CBaseMessage(MESSAGE_IME) {}

CMsgIME::CMsgIME(const CString& strText) : CBaseMessage(MESSAGE_IME), m_strText(strText) {}

CMsgIME::~CMsgIME() = default;

void CMsgIME::handleMessage() {
    if (IMessageCenterListener* const pListener = CMessageCenter::getInstance()->getListener())
        pListener->onHandleIMEMessage(m_strText);
}
} // namespace Orlix
