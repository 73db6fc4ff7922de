#pragma once

#include <Orlix/messaging/CBaseMessage.h>

namespace Orlix {

/** An event of the application's logic. */
class ORLIX_API CMsgLogicEvent : public CBaseMessage {
    ORLIX_HEAP_CLASS(L"CMsgLogicEvent")

public:
    CMsgLogicEvent();
    /** @param uiID the event. */
    explicit CMsgLogicEvent(unsigned int uiID);
    ~CMsgLogicEvent() override;

    void handleMessage() override;
};
} // namespace Orlix
