#include "CTouchStatistics.h"

#include <Orlix/messaging/CMessageCenter.h>

#include <algorithm>
#include <cstdio>

using namespace Orlix;

namespace {

thread_local std::chrono::steady_clock::time_point
    t_timeSample; // start of the push that is under way; the epoch if none
} // namespace

CTouchStatistics::CTouchStatistics() : m_idHost(std::this_thread::get_id()) {}

void CTouchStatistics::beginSample() { t_timeSample = CClock::now(); }

void CTouchStatistics::endSample() {
    t_timeSample = CClock::time_point();
    m_uiDeepest = std::max(m_uiDeepest, CMessageCenter::getInstance()->getMessageCount());
}

void CTouchStatistics::onPosted() {
    const bool bSample = t_timeSample != CClock::time_point();
    if (!bSample && std::this_thread::get_id() != m_idHost)
        return; // a pulse of the timer thread
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_qHandled.empty()) {
        m_qPosted.push_back(t_timeSample);
        return;
    }
    record(t_timeSample, m_qHandled.front());
    m_qHandled.pop_front();
}

void CTouchStatistics::onHandled(CCursor::ETouchStatus eStatus) {
    const CClock::time_point timeNow = CClock::now();
    ++m_aryCount[eStatus];
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_qPosted.empty()) {
        m_qHandled.push_back(timeNow);
        return;
    }
    record(m_qPosted.front(), timeNow);
    m_qPosted.pop_front();
}

void CTouchStatistics::record(CClock::time_point timePosted, CClock::time_point timeHandled) {
    if (timePosted != CClock::time_point())
        m_aryLatency.push_back(timeHandled - timePosted);
}

/** In microseconds; 0 without samples. */
double CTouchStatistics::getPercentile(unsigned int uiPercent) {
    if (m_aryLatency.empty())
        return 0;
    const auto itPlace = m_aryLatency.begin() + std::ptrdiff_t((m_aryLatency.size() - 1) * uiPercent / 100);
    std::nth_element(m_aryLatency.begin(), itPlace, m_aryLatency.end());
    return std::chrono::duration<double, std::micro>(*itPlace).count();
}

void CTouchStatistics::print() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const double dMedian = getPercentile(50);
    std::fprintf(stderr,
                 "orlix-host: %u presses, %u moves, %u releases, deepest queue %u, push to listener median %.1f us, "
                 "99th percentile %.1f us\n",
                 m_aryCount[CCursor::TOUCH_PRESS], m_aryCount[CCursor::TOUCH_MOVE], m_aryCount[CCursor::TOUCH_RELEASE],
                 m_uiDeepest, dMedian, getPercentile(99));
}
