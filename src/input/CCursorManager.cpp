#include <Orlix/input/CCursorManager.h>

#include <Orlix/formats/CConfigParser.h>
#include <Orlix/foundation/CAutoSync.h>
#include <Orlix/input/CMsgTouch.h>
#include <Orlix/math/CMath.h>
#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/threading/CTime.h>

namespace Orlix {
namespace {

constexpr unsigned int HISTORY_LENGTH = 100;
constexpr unsigned int SPEED_SPAN_MS = 200; // a speed is told in pixels per so much time
constexpr int SPEED_LIMIT = 1000;

using CPointList = CObjectList<CCursorManager::tagCursorPoint>;
using tagTrack = CCursorManager::tagCursorTrack;

unsigned int orNow(unsigned int uiTimestamp) { return uiTimestamp != 0 ? uiTimestamp : CTime::getTickCount(); }

/** Wraps, for a platform may report any place. */
int subtract(int iLeft, int iRight) {
    return static_cast<int>(static_cast<unsigned int>(iLeft) - static_cast<unsigned int>(iRight));
}

int toSpeed(int iFirst, int iLast, int iSpan) {
    const unsigned int uiProduct = static_cast<unsigned int>(subtract(iLast, iFirst)) * SPEED_SPAN_MS;
    return CMath::clamp(static_cast<int>(uiProduct) / iSpan, -SPEED_LIMIT, SPEED_LIMIT);
}

/** Unsigned, so that also the smallest int has a magnitude. */
unsigned int getMagnitude(int iDelta) {
    const unsigned int uiDelta = static_cast<unsigned int>(iDelta);
    return iDelta < 0 ? 0u - uiDelta : uiDelta;
}

bool hasLeftPress(int iXDelta, int iYDelta) {
    const unsigned int uiWaver = CConfigParser::getInstance()->getTouchParam().waver_distance;
    return getMagnitude(iXDelta) > uiWaver || getMagnitude(iYDelta) > uiWaver;
}

/** Ends the repeats for good. Only the first time: a stopped timer has no pulse left anywhere, and stopping takes the
 *  locks of the timers and of the message center, which each sample of a stroke would pay for. */
void stopHolding(CTimer& timer) {
    if (!timer.isRunning())
        return;
    timer.stop();
    timer.setListener(nullptr);
}

void appendNew(CPointList& lstPoint, const CCursorManager::tagCursorPoint& point) {
    CCursorManager::tagCursorPoint* const pPoint = new CCursorManager::tagCursorPoint(point);
    if (!pPoint)
        return;
    const unsigned int uiSize = lstPoint.getSize();
    lstPoint.add(pPoint);
    if (lstPoint.getSize() == uiSize) // without memory for its place
        delete pPoint;
}

/** In a full history the oldest sample becomes the newest, so that a long stroke allocates nothing. */
void appendPoint(CPointList& lstPoint, const CCursorManager::tagCursorPoint& point) {
    while (lstPoint.getSize() > HISTORY_LENGTH)
        lstPoint.removeAt(0);
    if (lstPoint.getSize() < HISTORY_LENGTH) {
        appendNew(lstPoint, point);
        return;
    }
    lstPoint.toHead();
    *lstPoint.next() = point;
    lstPoint.moveVisitedTo(lstPoint);
}

const CCursorManager::tagCursorPoint& getLast(const tagTrack& track) {
    return *track.lstPoint.getAt(track.lstPoint.getSize() - 1); // a track has one sample at least
}
} // namespace

void CCursorManager::tagCursorTrack::addPoint(int iX, int iY, unsigned int uiTimestamp) {
    appendPoint(lstPoint, {iX, iY, uiTimestamp});
    iXSpeed = 0;
    iYSpeed = 0;
    if (lstPoint.getSize() < 2)
        return;
    const tagCursorPoint& first = *lstPoint.getAt(0);
    const tagCursorPoint& last = getLast(*this);
    const int iSpan = static_cast<int>(last.uiTimestamp - first.uiTimestamp);
    if (iSpan <= 0)
        return;
    // Over the whole history and not the last step, on purpose: a finger that stops dead right before it lifts still
    // tells the speed of its stroke.
    iXSpeed = toSpeed(first.iX, last.iX, iSpan);
    iYSpeed = toSpeed(first.iY, last.iY, iSpan);
}

CCursorManager::CCursorManager() : m_pTouchListener(nullptr), m_bEnable(false) {}

CCursorManager::~CCursorManager() = default;

void CCursorManager::unInitialize() {
    const CAutoSync sync(m_syncObject);
    m_mapTrack.clear();
}

void CCursorManager::addCursor(unsigned int uiCursorID, int iX, int iY, unsigned int uiTimestamp) {
    if (!m_bEnable)
        return;
    uiTimestamp = orNow(uiTimestamp);
    if (addTrack(uiCursorID, iX, iY, uiTimestamp))
        dispatchMessage(uiCursorID, iX, 0, 0, iY, 0, 0, uiTimestamp, CCursor::TOUCH_PRESS);
}

bool CCursorManager::addTrack(unsigned int uiCursorID, int iX, int iY, unsigned int uiTimestamp) {
    const CAutoSync sync(m_syncObject);
    if (m_mapTrack.getItem(uiCursorID))
        return false;
    tagCursorTrack* const pTrack = new tagCursorTrack;
    if (!pTrack)
        return false;
    pTrack->iStartX = iX;
    pTrack->iStartY = iY;
    pTrack->addPoint(iX, iY, uiTimestamp);
    if (pTrack->lstPoint.getSize() == 0 || !m_mapTrack.addItem(uiCursorID, pTrack)) {
        delete pTrack;
        return false;
    }
    pTrack->timer.setListener(this);
    pTrack->timer.setRepeatCount(0);
    pTrack->timer.setDelay(CConfigParser::getInstance()->getTouchParam().long_press_delay);
    pTrack->timer.start();
    return true;
}

void CCursorManager::updateCursor(unsigned int uiCursorID, int iX, int iY, unsigned int uiTimestamp) {
    if (!m_bEnable)
        return;
    uiTimestamp = orNow(uiTimestamp);
    int iXDelta, iYDelta;
    {
        const CAutoSync sync(m_syncObject);
        tagCursorTrack* const pTrack = m_mapTrack.getItem(uiCursorID);
        if (!pTrack)
            return;
        pTrack->addPoint(iX, iY, uiTimestamp);
        iXDelta = subtract(iX, pTrack->iStartX);
        iYDelta = subtract(iY, pTrack->iStartY);
        if (hasLeftPress(iXDelta, iYDelta))
            stopHolding(pTrack->timer);
    }
    // Without the speed, on purpose: only a release tells it.
    dispatchMessage(uiCursorID, iX, iXDelta, 0, iY, iYDelta, 0, uiTimestamp, CCursor::TOUCH_MOVE);
}

void CCursorManager::removeCursor(unsigned int uiCursorID, int iX, int iY, unsigned int uiTimestamp) {
    if (!m_bEnable)
        return;
    uiTimestamp = orNow(uiTimestamp);
    {
        const CAutoSync sync(m_syncObject);
        tagCursorTrack* const pTrack = m_mapTrack.getItem(uiCursorID);
        if (!pTrack)
            return;
        pTrack->addPoint(iX, iY, uiTimestamp);
        stopHolding(pTrack->timer);
    }
    removeCursor(uiCursorID, uiTimestamp);
}

void CCursorManager::removeCursor(unsigned int uiCursorID, unsigned int uiTimestamp) {
    if (!m_bEnable)
        return;
    uiTimestamp = orNow(uiTimestamp);
    const CAutoSync sync(m_syncObject);
    tagCursorTrack* const pTrack = m_mapTrack.getItem(uiCursorID);
    if (!pTrack)
        return;
    stopHolding(pTrack->timer);
    // Under the lock, unlike a press and a move: a new press of this finger cannot get ahead of its release.
    dispatchLast(uiCursorID, *pTrack, pTrack->iXSpeed, pTrack->iYSpeed, uiTimestamp, CCursor::TOUCH_RELEASE);
    m_mapTrack.deleteItem(uiCursorID);
}

void CCursorManager::wheelCursor(int iX, int iY, int iDistance) {
    if (!m_bEnable)
        return;
    CCursor cursor;
    cursor.setX(iX);
    cursor.setY(iY);
    cursor.setDistance(iDistance);
    cursor.setTouchStatus(CCursor::TOUCH_WHEEL);
    post(cursor);
}

void CCursorManager::onTimer(const CTimer* pTimer, unsigned int) {
    const unsigned int uiInterval = CConfigParser::getInstance()->getTouchParam().continuous_press_interval;
    const CAutoSync sync(m_syncObject);
    const unsigned int uiCount = m_mapTrack.buildPairs();
    for (unsigned int i = 0; i < uiCount; ++i) {
        tagCursorTrack& track = *m_mapTrack.getValueAt(i);
        if (&track.timer != pTimer)
            continue;
        // The count stays, on purpose: the timer's grid moves as a whole, and the repeats that it holds to be late
        // follow each other at once before the pace settles.
        track.timer.setDelay(uiInterval);
        dispatchLast(m_mapTrack.getKeyAt(i), track, 0, 0, getLast(track).uiTimestamp, CCursor::TOUCH_MOVE);
    }
}

void CCursorManager::onTimerComplete(const CTimer*) {}

void CCursorManager::dispatchLast(unsigned int uiCursorID, const tagCursorTrack& track, int iXSpeed, int iYSpeed,
                                  unsigned int uiTimestamp, CCursor::ETouchStatus eStatus) {
    const tagCursorPoint& last = getLast(track);
    dispatchMessage(uiCursorID, last.iX, subtract(last.iX, track.iStartX), iXSpeed, last.iY,
                    subtract(last.iY, track.iStartY), iYSpeed, uiTimestamp, eStatus);
}

void CCursorManager::dispatchMessage(unsigned int uiCursorID, int iX, int iXDelta, int iXSpeed, int iY, int iYDelta,
                                     int iYSpeed, unsigned int uiTimestamp, CCursor::ETouchStatus eStatus) {
    CCursor cursor;
    cursor.setID(uiCursorID);
    cursor.setTouchStatus(eStatus);
    cursor.setX(iX);
    cursor.setXDelta(iXDelta);
    cursor.setXSpeed(iXSpeed);
    cursor.setY(iY);
    cursor.setYDelta(iYDelta);
    cursor.setYSpeed(iYSpeed);
    cursor.setTimestamp(uiTimestamp);
    post(cursor);
}

void CCursorManager::post(const CCursor& cursor) const {
    CMessageCenter::getInstance()->pushMessage(new CMsgTouch(m_pTouchListener, cursor));
}
} // namespace Orlix
