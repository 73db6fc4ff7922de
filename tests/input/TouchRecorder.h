#pragma once

#include <Orlix/input/CCursor.h>
#include <Orlix/input/ITouchListener.h>

#include <ostream>
#include <tuple>
#include <vector>

namespace OrlixTest {

/** All that one touch event says, in an order to write by hand: which operation got it, the ten fields. */
struct tagTouch {
    enum EOperation { PRESS = 1, MOVE, RELEASE, WHEEL };

    unsigned int uiOperation = 0;
    unsigned int uiID = 0;
    int iX = 0;
    int iY = 0;
    int iXDelta = 0;
    int iYDelta = 0;
    int iXSpeed = 0;
    int iYSpeed = 0;
    int iDistance = 0;
    unsigned int uiTimestamp = 0;

    auto tie() const {
        return std::tie(uiOperation, uiID, iX, iY, iXDelta, iYDelta, iXSpeed, iYSpeed, iDistance, uiTimestamp);
    }
    bool operator==(const tagTouch& other) const { return tie() == other.tie(); }
};

inline std::ostream& operator<<(std::ostream& stream, const tagTouch& touch) {
    return stream << "{operation " << touch.uiOperation << ", id " << touch.uiID << ", at " << touch.iX << ' '
                  << touch.iY << ", delta " << touch.iXDelta << ' ' << touch.iYDelta << ", speed " << touch.iXSpeed
                  << ' ' << touch.iYSpeed << ", distance " << touch.iDistance << ", time " << touch.uiTimestamp << "}";
}

using VecTouch = std::vector<tagTouch>;

/** Writes down every touch it gets; a status that does not fit its operation becomes an operation above 100. */
class CTouchRecorder : public Orlix::ITouchListener {
public:
    void onTouchPress(const Orlix::CCursor& cursor) override { note(tagTouch::PRESS, cursor); }
    void onTouchMove(const Orlix::CCursor& cursor) override { note(tagTouch::MOVE, cursor); }
    void onTouchRelease(const Orlix::CCursor& cursor) override { note(tagTouch::RELEASE, cursor); }
    void onTouchWheel(const Orlix::CCursor& cursor) override { note(tagTouch::WHEEL, cursor); }

    /** What came since the last call. */
    VecTouch take() {
        VecTouch vecTaken;
        vecTaken.swap(m_vecTouch);
        return vecTaken;
    }

private:
    VecTouch m_vecTouch;

    void note(unsigned int uiOperation, const Orlix::CCursor& cursor) {
        const bool bFits = cursor.getTouchStatus() == uiOperation;
        m_vecTouch.push_back({bFits ? uiOperation : uiOperation + 100, cursor.getID(), cursor.getX(), cursor.getY(),
                              cursor.getXDelta(), cursor.getYDelta(), cursor.getXSpeed(), cursor.getYSpeed(),
                              cursor.getDistance(), cursor.getTimestamp()});
    }
};
} // namespace OrlixTest
