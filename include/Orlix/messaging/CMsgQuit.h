#pragma once

#include <Orlix/messaging/CBaseMessage.h>

namespace Orlix {

/** The end of the host's loop. */
class ORLIX_API CMsgQuit : public CBaseMessage {
    ORLIX_HEAP_CLASS(L"CMsgQuit")

public:
    CMsgQuit();
    ~CMsgQuit() override;

    void handleMessage() override;
};
} // namespace Orlix
