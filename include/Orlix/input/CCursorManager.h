#pragma once

#include <Orlix/foundation/CObjectList.h>
#include <Orlix/foundation/CObjectMap.h>
#include <Orlix/foundation/CSyncObject.h>
#include <Orlix/input/CCursor.h>
#include <Orlix/threading/CTimer.h>
#include <Orlix/threading/ITimerListener.h>

namespace Orlix {

class ITouchListener;

/** Makes touch messages of the raw samples of one surface: a track per finger, its offset from the press, its speed,
 *  and the repeats of a finger that is held.
 *
 *  Tracks know nothing of each other, and no gesture is recognised here. What does not fit is dropped in silence:
 *  samples of a finger that is not down, a second press of one that is, and all while disabled, as it is at first.
 *  Without memory a press is dropped whole, and of any other sample what found none.
 *
 *  Threads: samples from any thread; construction, destruction, onTimer and the settings on the host thread. No
 *  listener is called here, for what results is a message. The lock comes before those of the timers and of the
 *  message center. */
class ORLIX_API CCursorManager : public CObject, public ITimerListener {
    ORLIX_HEAP_CLASS(L"CCursorManager")

public:
    /** One sample of a finger. */
    struct tagCursorPoint {
        ORLIX_HEAP_CLASS(L"CCursorManager::tagCursorPoint")
        int iX;
        int iY;
        unsigned int uiTimestamp; // milliseconds on the clock of CTime::getTickCount
    };

    /** One finger that is down. */
    struct ORLIX_API tagCursorTrack {
        ORLIX_HEAP_CLASS(L"CCursorManager::tagCursorTrack")
        int iStartX = 0; // where it touched down
        int iStartY = 0;
        int iXSpeed = 0; // pixels per 200 milliseconds over the whole history, -1000 to 1000
        int iYSpeed = 0;
        CObjectList<tagCursorPoint> lstPoint; // the newest 100 samples, the oldest first
        CTimer timer;                         // runs until the finger has left the surroundings of its press

        /** Appends a sample and works out the speed anew. With less than two samples, or when the newest is not younger
         *  than the oldest, the speed is 0. */
        void addPoint(int iX, int iY, unsigned int uiTimestamp);
    };

    CCursorManager();
    CCursorManager(const CCursorManager&) = delete;
    CCursorManager& operator=(const CCursorManager&) = delete;
    ~CCursorManager() override;

    /** Does nothing; the surface calls it when it is initialised. */
    void initialize() noexcept {}
    /** Forgets all fingers that are down, without a message. */
    void unInitialize();

    /** @param pTouchListener goes with each message from now on, not owned; null for nobody: then messages are made all
     *  the same. Written and read without a lock. */
    void setTouchListener(ITouchListener* pTouchListener) noexcept { m_pTouchListener = pTouchListener; }
    /** Opens or closes the manager to samples; fingers that are held go on repeating. Written and read without a lock.
     */
    void setEnable(bool bEnable) noexcept { m_bEnable = bEnable; }

    // A time of 0 stands for now in all of these.

    /** A finger touched down. */
    void addCursor(unsigned int uiCursorID, int iX, int iY, unsigned int uiTimestamp);
    /** A finger moved, or reports the same place again: either makes a message. */
    void updateCursor(unsigned int uiCursorID, int iX, int iY, unsigned int uiTimestamp);
    /** A finger lifted at a place, which counts as its last sample. */
    void removeCursor(unsigned int uiCursorID, int iX, int iY, unsigned int uiTimestamp);
    /** A finger lifted where its last sample was. */
    void removeCursor(unsigned int uiCursorID, unsigned int uiTimestamp);
    /** The wheel turned by one step; takes no lock. */
    void wheelCursor(int iX, int iY, int iDistance);

    /** Posts one touch event to the current listener, whatever the manager's state. */
    void dispatchMessage(unsigned int uiCursorID, int iX, int iXDelta, int iXSpeed, int iY, int iYDelta, int iYSpeed,
                         unsigned int uiTimestamp, CCursor::ETouchStatus eStatus);

    /** Repeats the last move of the finger whose timer this is, also while disabled. @param pTimer compared and not
     *  read, so it may be gone. @param uiCount plays no part. */
    void onTimer(const CTimer* pTimer, unsigned int uiCount) override;
    /** Does nothing: the timers of held fingers repeat without end. */
    void onTimerComplete(const CTimer* pTimer) override;

protected:
    ITouchListener* m_pTouchListener; // not owned
    bool m_bEnable;
    CObjectMap<unsigned int, tagCursorTrack, tagNumCompare<unsigned int>> m_mapTrack; // the fingers that are down
    CSyncObject m_syncObject; // guards m_mapTrack and all tracks in it, for walks too

private:
    bool addTrack(unsigned int uiCursorID, int iX, int iY, unsigned int uiTimestamp);
    void dispatchLast(unsigned int uiCursorID, const tagCursorTrack& track, int iXSpeed, int iYSpeed,
                      unsigned int uiTimestamp, CCursor::ETouchStatus eStatus);
    void post(const CCursor& cursor) const;
};
} // namespace Orlix
