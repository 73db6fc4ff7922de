#pragma once

#include <Orlix/foundation/CObject.h>

namespace Orlix {

/** One touch event of one finger, or one wheel step.
 *
 *  A press carries its place. A move and a release also carry the offset from the press, and a release the speed of the
 *  stroke. A wheel step carries its place and its distance, and neither ID nor time.
 *  Threads: a plain value. */
class ORLIX_API CCursor : public CObject {
    ORLIX_HEAP_CLASS(L"CCursor")

public:
    /** The numbers are a contract: other processes see them. */
    enum ETouchStatus : unsigned int {
        TOUCH_NONE = 0, // of a cursor that nobody has filled
        TOUCH_PRESS = 1,
        TOUCH_MOVE = 2, // also the repeat of a finger that is held still
        TOUCH_RELEASE = 3,
        TOUCH_WHEEL = 4
    };

    /** All is 0 except the place, which is -1 on both axes: so a cursor that nobody has placed can be told. */
    CCursor() noexcept
        : m_uiID(0), m_eTouchStatus(TOUCH_NONE), m_iX(-1), m_iXDelta(0), m_iXSpeed(0), m_iY(-1), m_iYDelta(0),
          m_iYSpeed(0), m_iDistance(0), m_uiTimestamp(0) {}

    /** The platform's number of the finger. */
    void setID(unsigned int uiID) noexcept { m_uiID = uiID; }
    unsigned int getID() const noexcept { return m_uiID; }

    void setTouchStatus(ETouchStatus eTouchStatus) noexcept { m_eTouchStatus = eTouchStatus; }
    ETouchStatus getTouchStatus() const noexcept { return m_eTouchStatus; }

    /** Pixels on the surface. */
    void setX(int iX) noexcept { m_iX = iX; }
    int getX() const noexcept { return m_iX; }
    /** Pixels from the press. */
    void setXDelta(int iXDelta) noexcept { m_iXDelta = iXDelta; }
    int getXDelta() const noexcept { return m_iXDelta; }
    /** Pixels per 200 milliseconds, as the tracking fills it in -1000 to 1000. */
    void setXSpeed(int iXSpeed) noexcept { m_iXSpeed = iXSpeed; }
    int getXSpeed() const noexcept { return m_iXSpeed; }

    void setY(int iY) noexcept { m_iY = iY; }
    int getY() const noexcept { return m_iY; }
    void setYDelta(int iYDelta) noexcept { m_iYDelta = iYDelta; }
    int getYDelta() const noexcept { return m_iYDelta; }
    void setYSpeed(int iYSpeed) noexcept { m_iYSpeed = iYSpeed; }
    int getYSpeed() const noexcept { return m_iYSpeed; }

    /** How far the wheel turned, in the platform's unit. */
    void setDistance(int iDistance) noexcept { m_iDistance = iDistance; }
    int getDistance() const noexcept { return m_iDistance; }

    /** Milliseconds on the clock of CTime::getTickCount. */
    void setTimestamp(unsigned int uiTimestamp) noexcept { m_uiTimestamp = uiTimestamp; }
    unsigned int getTimestamp() const noexcept { return m_uiTimestamp; }

protected:
    unsigned int m_uiID;
    ETouchStatus m_eTouchStatus;
    int m_iX;
    int m_iXDelta;
    int m_iXSpeed;
    int m_iY;
    int m_iYDelta;
    int m_iYSpeed;
    int m_iDistance;
    unsigned int m_uiTimestamp;
};
} // namespace Orlix
