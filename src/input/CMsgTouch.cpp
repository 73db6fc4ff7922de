#include <Orlix/input/CMsgTouch.h>

#include <Orlix/input/ITouchListener.h>

namespace Orlix {

CMsgTouch::CMsgTouch(ITouchListener* pListener, const CCursor& cursor)
    : CBaseMessage(MESSAGE_TOUCH), m_pListener(pListener), m_cursor(cursor) {}

CMsgTouch::~CMsgTouch() = default;

void CMsgTouch::handleMessage() {
    if (!m_pListener)
        return;
    switch (m_cursor.getTouchStatus()) {
    case CCursor::TOUCH_PRESS:
        m_pListener->onTouchPress(m_cursor);
        break;
    case CCursor::TOUCH_MOVE:
        m_pListener->onTouchMove(m_cursor);
        break;
    case CCursor::TOUCH_RELEASE:
        m_pListener->onTouchRelease(m_cursor);
        break;
    case CCursor::TOUCH_WHEEL:
        m_pListener->onTouchWheel(m_cursor);
        break;
    case CCursor::TOUCH_NONE:
    default: // a status may come from outside the process
        break;
    }
}
} // namespace Orlix
