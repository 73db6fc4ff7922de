#pragma once

#include <Orlix/messaging/CBaseMessage.h>

namespace Orlix {

/** Text that was spoken. */
class ORLIX_API CMsgVoiceContent : public CBaseMessage {
    ORLIX_HEAP_CLASS(L"CMsgVoiceContent")

public:
    CMsgVoiceContent();
    /** @param strContent copied. */
    explicit CMsgVoiceContent(const CString& strContent);
    ~CMsgVoiceContent() override;

    void handleMessage() override;

protected:
    CString m_strContent;
};
} // namespace Orlix
