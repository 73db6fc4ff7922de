#pragma once

#include <Orlix/messaging/CBaseMessage.h>

namespace Orlix {

class CShareMemory;

/** A block that waits in a shared-memory channel. While this message is neither handled nor the channel closed, no
 *  writer gets at the block, so one that is deleted unhandled leaves the channel blocked until it is closed. */
class ORLIX_API CMsgShareMemory : public CBaseMessage {
    ORLIX_HEAP_CLASS(L"CMsgShareMemory")

public:
    /** The message's ID is the one of the channel. @param pShareMemory not owned; null makes a message of nobody. */
    explicit CMsgShareMemory(CShareMemory* pShareMemory);
    ~CMsgShareMemory() override;

    void handleMessage() override;

protected:
    CShareMemory* m_pShareMemory; // not owned; it takes its waiting messages back before it goes
};
} // namespace Orlix
