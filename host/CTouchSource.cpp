#include "CTouchSource.h"

#include "CEventFlag.h"
#include "CSourceThread.h"
#include "CTouchStatistics.h"
#include "ExitCode.h"

#include <Orlix/input/CCursorManager.h>
#include <Orlix/input/CSurface.h>
#include <Orlix/messaging/CMessageCenter.h>

#include <algorithm>

using namespace Orlix;

namespace {

constexpr std::uint64_t PAUSE_MOST = 3600000000000; // microseconds, some 40 days: the clock cannot count to any time

/** Scales a position to a size in pixels; a surface without one has the device's own range. */
int scale(std::int64_t iValue, const CTouchRecording::tagRange& range, unsigned int uiSize) {
    const std::int64_t iSize = uiSize != 0 ? uiSize : range.getSize();
    return static_cast<int>((iValue - range.iMin) * iSize / range.getSize());
}
} // namespace

CTouchSource::CTouchSource(unsigned int uiSurface, bool bFast, CTouchStatistics& statistics, const CEventFlag& stop)
    : m_uiSurface(uiSurface), m_bFast(bFast), m_statistics(statistics), m_stop(stop), m_recording(stop) {}

int CTouchSource::run() {
    m_timeStart = std::chrono::steady_clock::now();
    CTouchRecording::tagFrame frame;
    while (!m_stop.isSet() && m_recording.readFrame(frame))
        play(frame);
    return m_stop.isSet() || m_recording.checkEnd() ? EXIT_DONE : EXIT_USAGE;
}

void CTouchSource::play(const CTouchRecording::tagFrame& frame) {
    // A clock that was set back while recording gives times before the first event: those follow at once.
    const std::uint64_t uiFirst = m_recording.getFirstTime();
    const std::uint64_t uiPassed = frame.uiTime > uiFirst ? frame.uiTime - uiFirst : 0;
    if (!m_bFast && !m_stop.sleepUntil(m_timeStart + std::chrono::microseconds(std::min(uiPassed, PAUSE_MOST))))
        return;
    for (const CTouchRecording::tagChange& change : frame.aryChanges) {
        CSourceThread::waitForRoom(m_stop);
        m_statistics.beginSample();
        send(change, uiPassed);
        m_statistics.endSample();
    }
}

void CTouchSource::send(const CTouchRecording::tagChange& change, std::uint64_t uiPassed) {
    CSurface* const pSurface = CSurface::getInstance(m_uiSurface, true);
    const int iX = scale(change.iX, m_recording.getRangeX(), pSurface->getSurfaceWidth());
    const int iY = scale(change.iY, m_recording.getRangeY(), pSurface->getSurfaceHeight());
    if (m_bFast)
        sendFast(change, iX, iY, uiPassed);
    else
        CMessageCenter::getInstance()->pushTouchMessage(m_uiSurface, change.uiSlot, iX, iY, change.eChange);
}

void CTouchSource::sendFast(const CTouchRecording::tagChange& change, int iX, int iY, std::uint64_t uiPassed) {
    CCursorManager& manager = *CSurface::getInstance(m_uiSurface, true)->getCursorManager();
    const unsigned int uiTimestamp = static_cast<unsigned int>(1 + uiPassed / 1000); // 0 would mean the present time
    switch (change.eChange) {
    case CTouchRecording::CHANGE_PRESS:
        return manager.addCursor(change.uiSlot, iX, iY, uiTimestamp);
    case CTouchRecording::CHANGE_MOVE:
        return manager.updateCursor(change.uiSlot, iX, iY, uiTimestamp);
    case CTouchRecording::CHANGE_RELEASE:
        return manager.removeCursor(change.uiSlot, iX, iY, uiTimestamp);
    }
}
