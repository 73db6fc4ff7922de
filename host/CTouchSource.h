#pragma once

#include "CTouchRecording.h"
#include "ISource.h"

#include <chrono>
#include <cstdint>

class CEventFlag;
class CTouchStatistics;

/** Plays recorded touches to a surface, as the input thread of a platform would deliver them. The slot is the cursor's
 *  id, and positions are scaled from the device's range to the surface's size, if it has one. */
class CTouchSource : public ISource {
public:
    /** @param uiSurface must exist. @param bFast waits for nothing and hands the samples to the surface with the times
     *  of the recording; otherwise they go through the message center at the recording's own pace.
     *  @param stop ends the recording early, without an error; it and the statistics outlive this. */
    CTouchSource(unsigned int uiSurface, bool bFast, CTouchStatistics& statistics, const CEventFlag& stop);

    bool open(const char* pPath) override { return m_recording.open(pPath); }
    int run() override;

private:
    void play(const CTouchRecording::tagFrame& frame);
    void send(const CTouchRecording::tagChange& change, std::uint64_t uiPassed);
    void sendFast(const CTouchRecording::tagChange& change, int iX, int iY, std::uint64_t uiPassed);

    const unsigned int m_uiSurface;
    const bool m_bFast;
    CTouchStatistics& m_statistics;
    const CEventFlag& m_stop;
    CTouchRecording m_recording;
    std::chrono::steady_clock::time_point m_timeStart; // when the first event was read
};
