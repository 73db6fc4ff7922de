#pragma once

#include <Orlix/messaging/CBaseMessage.h>

namespace Orlix {

/** A request to repaint one render target. */
class ORLIX_API CMsgRender : public CBaseMessage {
    ORLIX_HEAP_CLASS(L"CMsgRender")

public:
    CMsgRender();
    /** @param uiID the render target. */
    explicit CMsgRender(unsigned int uiID);
    ~CMsgRender() override;

    void handleMessage() override;
};
} // namespace Orlix
