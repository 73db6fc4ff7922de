#pragma once

#include <Orlix/messaging/CBaseMessage.h>

namespace Orlix {

/** A gesture that a layer above has recognised. */
class ORLIX_API CMsgGesture : public CBaseMessage {
    ORLIX_HEAP_CLASS(L"CMsgGesture")

public:
    CMsgGesture();
    /** @param pData gets a reference; may be null. */
    CMsgGesture(unsigned int uiParam, unsigned int uiID, CObject* pData);
    ~CMsgGesture() override;

    void handleMessage() override;

protected:
    unsigned int m_uiParam; // what the layers above agree on
};
} // namespace Orlix
