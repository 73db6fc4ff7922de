#include <Orlix/messaging/CMsgVoiceContent.h>

#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/messaging/IMessageCenterListener.h>

namespace Orlix {

CMsgVoiceContent::CMsgVoiceContent() : CBaseMessage(MESSAGE_VOICE_CONTENT) {}

CMsgVoiceContent::CMsgVoiceContent(const CString& strContent)
    : CBaseMessage(MESSAGE_VOICE_CONTENT), m_strContent(strContent) {}

CMsgVoiceContent::~CMsgVoiceContent() = default;

void CMsgVoiceContent::handleMessage() {
    if (IMessageCenterListener* const pListener = CMessageCenter::getInstance()->getListener())
        pListener->onHandleVoiceContentMessage(m_strContent);
}
} // namespace Orlix
