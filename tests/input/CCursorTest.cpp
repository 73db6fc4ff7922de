#include <Orlix/input/CCursor.h>

#include <gtest/gtest.h>

#include <climits>

using namespace Orlix;

namespace {

CCursor makeCursor() {
    CCursor cursor;
    cursor.setID(1);
    cursor.setTouchStatus(CCursor::TOUCH_WHEEL);
    cursor.setX(2);
    cursor.setXDelta(-3);
    cursor.setXSpeed(INT_MIN);
    cursor.setY(5);
    cursor.setYDelta(-6);
    cursor.setYSpeed(INT_MAX);
    cursor.setDistance(-8);
    cursor.setTimestamp(UINT_MAX);
    return cursor;
}

void expectAllSet(const CCursor& cursor) {
    EXPECT_EQ(cursor.getID(), 1u);
    EXPECT_EQ(cursor.getTouchStatus(), CCursor::TOUCH_WHEEL);
    EXPECT_EQ(cursor.getX(), 2);
    EXPECT_EQ(cursor.getXDelta(), -3);
    EXPECT_EQ(cursor.getXSpeed(), INT_MIN) << "the accessors keep what they get";
    EXPECT_EQ(cursor.getY(), 5);
    EXPECT_EQ(cursor.getYDelta(), -6);
    EXPECT_EQ(cursor.getYSpeed(), INT_MAX);
    EXPECT_EQ(cursor.getDistance(), -8);
    EXPECT_EQ(cursor.getTimestamp(), UINT_MAX);
}

TEST(CCursor, StartsUnplacedAndElseWithZeros) {
    const CCursor cursor;
    EXPECT_EQ(cursor.getID(), 0u);
    EXPECT_EQ(cursor.getTouchStatus(), CCursor::TOUCH_NONE);
    EXPECT_EQ(cursor.getX(), -1) << "unlike the other fields, on purpose";
    EXPECT_EQ(cursor.getXDelta(), 0);
    EXPECT_EQ(cursor.getXSpeed(), 0);
    EXPECT_EQ(cursor.getY(), -1) << "unlike the other fields, on purpose";
    EXPECT_EQ(cursor.getYDelta(), 0);
    EXPECT_EQ(cursor.getYSpeed(), 0);
    EXPECT_EQ(cursor.getDistance(), 0);
    EXPECT_EQ(cursor.getTimestamp(), 0u);
}

TEST(CCursor, TheStatesHaveTheirNumbers) {
    EXPECT_EQ(CCursor::TOUCH_NONE, 0u);
    EXPECT_EQ(CCursor::TOUCH_PRESS, 1u);
    EXPECT_EQ(CCursor::TOUCH_MOVE, 2u);
    EXPECT_EQ(CCursor::TOUCH_RELEASE, 3u);
    EXPECT_EQ(CCursor::TOUCH_WHEEL, 4u);
}

TEST(CCursor, EachAccessorPairHasItsOwnField) { expectAllSet(makeCursor()); }

TEST(CCursor, CopyAndAssignmentTakeAllFieldsButNoReferences) {
    CCursor cursor = makeCursor();
    cursor.addRef();
    const CCursor copy(cursor);
    expectAllSet(copy);
    EXPECT_EQ(copy.getRef(), 0);
    CCursor assigned;
    assigned = cursor;
    expectAllSet(assigned);
    EXPECT_EQ(assigned.getRef(), 0);
}
} // namespace
