#pragma once

#include <Orlix/messaging/CBaseMessage.h>

namespace Orlix {

class IMsgSystemListener;

/** A message to the host as a whole, which may name a receiver of its own. */
class ORLIX_API CMsgSystem : public CBaseMessage {
    ORLIX_HEAP_CLASS(L"CMsgSystem")

public:
    CMsgSystem();
    /** @param pData gets a reference; may be null. @param pListener told after the center's listener; null for nobody.
     */
    CMsgSystem(unsigned int uiID, CObject* pData, IMsgSystemListener* pListener);
    ~CMsgSystem() override;

    void handleMessage() override;

protected:
    IMsgSystemListener* m_pListener; // not owned; must outlive the message
};
} // namespace Orlix
