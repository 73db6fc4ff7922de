#pragma once

#include <Orlix/messaging/CBaseMessage.h>

namespace Orlix {

/** A key of a keyboard or device; its ID is the key code. */
class ORLIX_API CMsgHardkey : public CBaseMessage {
    ORLIX_HEAP_CLASS(L"CMsgHardkey")

public:
    CMsgHardkey();
    /** @param uiState 1 to 3 for a key that is down, 4 and 5 for one that is up. */
    CMsgHardkey(unsigned int uiKey, unsigned int uiState);
    ~CMsgHardkey() override;

    void handleMessage() override;

protected:
    unsigned int m_uiState; // 1 to 3 down, 4 and 5 up
};
} // namespace Orlix
