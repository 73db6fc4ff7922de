#pragma once

#include "input/TouchRecorder.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <vector>

namespace OrlixTest {

/** What the tracking of touches should do, told as plainly as can be: every sample of a finger is kept, and all that
 *  depends on them is worked out when it is asked for, in numbers that do not overflow. */
class CTouchModel {
public:
    struct tagSample {
        std::int64_t lX, lY;
        std::uint32_t uiTime;
    };
    struct tagFinger {
        std::vector<tagSample> vecSample;
        bool bHolding = true;
        bool bRepeated = false;

        static std::int64_t wrap(std::int64_t lValue) { return static_cast<std::int32_t>(lValue); }
        const tagSample& getOldest() const { return vecSample[vecSample.size() > 100 ? vecSample.size() - 100 : 0]; }
        std::int64_t getSpeed(std::int64_t tagSample::*pAxis) const {
            const std::int64_t lTime = wrap(std::int64_t{vecSample.back().uiTime} - getOldest().uiTime);
            if (vecSample.size() < 2 || lTime <= 0)
                return 0;
            const std::int64_t lSpeed = wrap(wrap(vecSample.back().*pAxis - getOldest().*pAxis) * 200) / lTime;
            return std::min<std::int64_t>(1000, std::max<std::int64_t>(-1000, lSpeed));
        }
        std::int64_t getOffset(std::int64_t tagSample::*pAxis) const {
            return wrap(vecSample.back().*pAxis - vecSample.front().*pAxis);
        }
    };

    bool m_bEnable = true;
    std::int64_t m_lWaver = 25;
    std::map<unsigned int, tagFinger> m_mapFinger;

    /** What was told since the last call. */
    VecTouch take() {
        VecTouch vecTaken;
        vecTaken.swap(m_vecTouch);
        return vecTaken;
    }

    void press(unsigned int uiID, int iX, int iY, unsigned int uiTime) {
        if (!m_bEnable || m_mapFinger.count(uiID))
            return;
        m_mapFinger[uiID].vecSample.push_back({iX, iY, uiTime});
        tell(tagTouch::PRESS, uiID, uiTime);
    }

    void move(unsigned int uiID, int iX, int iY, unsigned int uiTime) {
        if (!m_bEnable || !m_mapFinger.count(uiID))
            return;
        tagFinger& finger = m_mapFinger[uiID];
        finger.vecSample.push_back({iX, iY, uiTime});
        if (std::max(std::abs(finger.getOffset(&tagSample::lX)), std::abs(finger.getOffset(&tagSample::lY))) > m_lWaver)
            finger.bHolding = false;
        tell(tagTouch::MOVE, uiID, uiTime);
    }

    void lift(unsigned int uiID, unsigned int uiTime) {
        if (!m_bEnable || !m_mapFinger.count(uiID))
            return;
        tell(tagTouch::RELEASE, uiID, uiTime);
        m_mapFinger.erase(uiID);
    }

    void liftAt(unsigned int uiID, int iX, int iY, unsigned int uiTime) {
        if (m_bEnable && m_mapFinger.count(uiID))
            m_mapFinger[uiID].vecSample.push_back({iX, iY, uiTime});
        lift(uiID, uiTime);
    }

    void wheel(int iX, int iY, int iDistance) {
        if (m_bEnable)
            m_vecTouch.push_back({tagTouch::WHEEL, 0, iX, iY, 0, 0, 0, 0, iDistance, 0});
    }

    void repeat(unsigned int uiID) {
        m_mapFinger[uiID].bRepeated = true;
        tell(tagTouch::MOVE, uiID, m_mapFinger[uiID].vecSample.back().uiTime);
    }

private:
    VecTouch m_vecTouch;

    void tell(unsigned int uiOperation, unsigned int uiID, unsigned int uiTime) {
        const tagFinger& finger = m_mapFinger[uiID];
        const bool bPress = uiOperation == tagTouch::PRESS, bRelease = uiOperation == tagTouch::RELEASE;
        tagTouch touch;
        touch.uiOperation = uiOperation;
        touch.uiID = uiID;
        touch.iX = static_cast<int>(finger.vecSample.back().lX);
        touch.iY = static_cast<int>(finger.vecSample.back().lY);
        touch.iXDelta = bPress ? 0 : static_cast<int>(finger.getOffset(&tagSample::lX));
        touch.iYDelta = bPress ? 0 : static_cast<int>(finger.getOffset(&tagSample::lY));
        touch.iXSpeed = bRelease ? static_cast<int>(finger.getSpeed(&tagSample::lX)) : 0;
        touch.iYSpeed = bRelease ? static_cast<int>(finger.getSpeed(&tagSample::lY)) : 0;
        touch.uiTimestamp = uiTime;
        m_vecTouch.push_back(touch);
    }
};
} // namespace OrlixTest
