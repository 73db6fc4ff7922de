#pragma once

#include <Orlix/messaging/CBaseMessage.h>

namespace Orlix {

class IMsgUserListener;

/** A message between parts of the application, which may name a receiver of its own. */
class ORLIX_API CMsgUser : public CBaseMessage {
    ORLIX_HEAP_CLASS(L"CMsgUser")

public:
    CMsgUser();
    /** @param pData gets a reference; may be null. @param pListener told after the center's listener; null for nobody.
     */
    CMsgUser(unsigned int uiID, CObject* pData, IMsgUserListener* pListener);
    ~CMsgUser() override;

    void handleMessage() override;

protected:
    IMsgUserListener* m_pListener; // not owned; must outlive the message
};
} // namespace Orlix
