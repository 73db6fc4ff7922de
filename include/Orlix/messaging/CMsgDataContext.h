#pragma once

#include <Orlix/messaging/CBaseMessage.h>

namespace Orlix {

/** Data for one context. */
class ORLIX_API CMsgDataContext : public CBaseMessage {
    ORLIX_HEAP_CLASS(L"CMsgDataContext")

public:
    CMsgDataContext();
    /** @param uiID the context. @param pData gets a reference; may be null. */
    CMsgDataContext(unsigned int uiID, CObject* pData);
    ~CMsgDataContext() override;

    void handleMessage() override;
};
} // namespace Orlix
