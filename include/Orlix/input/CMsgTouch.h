#pragma once

#include <Orlix/input/CCursor.h>
#include <Orlix/messaging/CBaseMessage.h>

namespace Orlix {

class ITouchListener;

/** Brings one touch event to its listener on the host thread. */
class ORLIX_API CMsgTouch : public CBaseMessage {
    ORLIX_HEAP_CLASS(L"CMsgTouch")

public:
    /** @param pListener not owned, and not asked again whether it still lives; null for nobody. */
    CMsgTouch(ITouchListener* pListener, const CCursor& cursor);
    ~CMsgTouch() override;

    /** Calls the one operation of the listener that the status names; a status that is none calls nothing. */
    void handleMessage() override;

protected:
    ITouchListener* m_pListener; // not owned; must outlive the message
    CCursor m_cursor;
};
} // namespace Orlix
