#include <Orlix/input/CMsgTouch.h>

#include <Orlix/messaging/CMessageCenter.h>

#include "input/TouchRecorder.h"

#include <gtest/gtest.h>

#include <climits>

using namespace Orlix;
using namespace OrlixTest;

namespace {

CCursor makeCursor(unsigned int uiStatus) {
    CCursor cursor;
    cursor.setID(7);
    cursor.setTouchStatus(static_cast<CCursor::ETouchStatus>(uiStatus));
    cursor.setX(1);
    cursor.setY(2);
    cursor.setXDelta(3);
    cursor.setYDelta(4);
    cursor.setXSpeed(5);
    cursor.setYSpeed(6);
    cursor.setDistance(8);
    cursor.setTimestamp(9);
    return cursor;
}

TEST(CMsgTouch, EachStatusReachesItsOwnOperation) {
    CTouchRecorder recorder;
    for (unsigned int uiStatus = 1; uiStatus <= 4; ++uiStatus) {
        CMsgTouch(&recorder, makeCursor(uiStatus)).handleMessage();
        EXPECT_EQ(recorder.take(), (VecTouch{{uiStatus, 7, 1, 2, 3, 4, 5, 6, 8, 9}}));
    }
}

TEST(CMsgTouch, AStatusThatIsNoneCallsNothing) {
    CTouchRecorder recorder;
    for (const unsigned int uiStatus : {0u, 5u, 6u, UINT_MAX})
        CMsgTouch(&recorder, makeCursor(uiStatus)).handleMessage();
    EXPECT_EQ(recorder.take(), VecTouch{});
}

TEST(CMsgTouch, WithoutAListenerNothingHappens) {
    CMsgTouch message(nullptr, makeCursor(1));
    message.handleMessage();
    EXPECT_EQ(message.getRef(), 0);
}

TEST(CMsgTouch, HoldsACursorOfItsOwn) {
    CTouchRecorder recorder;
    CCursor cursor = makeCursor(CCursor::TOUCH_PRESS);
    CMsgTouch message(&recorder, cursor);
    cursor = CCursor();
    message.handleMessage();
    EXPECT_EQ(recorder.take(), (VecTouch{{tagTouch::PRESS, 7, 1, 2, 3, 4, 5, 6, 8, 9}}));
}

TEST(CMsgTouch, HandsItsCursorOutWithoutACopy) {
    class CHere : public CMsgTouch {
    public:
        using CMsgTouch::CMsgTouch;
        const CCursor* getCursor() const { return &m_cursor; }
    };
    class CAddressListener : public CTouchRecorder {
    public:
        void onTouchPress(const CCursor& cursor) override { m_pCursor = &cursor; }
        const CCursor* m_pCursor = nullptr;
    };
    CAddressListener listener;
    CHere message(&listener, makeCursor(CCursor::TOUCH_PRESS));
    message.handleMessage();
    EXPECT_EQ(listener.m_pCursor, message.getCursor());
}

TEST(CMsgTouch, IsAnInputMessageWithoutIDAndData) {
    CMsgTouch message(nullptr, makeCursor(1));
    EXPECT_EQ(message.getType(), 20u);
    EXPECT_EQ(message.getID(), 0u);
    EXPECT_TRUE(message.getData().isEmpty());
}

TEST(CMsgTouch, OneThatStillWaitsIsDeletedWithItsCenter) {
    CTouchRecorder recorder;
    {
        CMessageCenter center;
        center.pushMessage(new CMsgTouch(&recorder, makeCursor(1)));
        EXPECT_EQ(center.getMessageCountByType(CBaseMessage::MESSAGE_TOUCH), 1u);
    }
    EXPECT_EQ(recorder.take(), VecTouch{});
}
} // namespace
