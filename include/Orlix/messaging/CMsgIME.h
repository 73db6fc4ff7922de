#pragma once

#include <Orlix/messaging/CBaseMessage.h>

namespace Orlix {

/** Text from an input method. */
class ORLIX_API CMsgIME : public CBaseMessage {
    ORLIX_HEAP_CLASS(L"CMsgIME")

public:
    CMsgIME();
    /** @param strText copied. */
    explicit CMsgIME(const CString& strText);
    ~CMsgIME() override;

    void handleMessage() override;

protected:
    CString m_strText;
};
} // namespace Orlix
