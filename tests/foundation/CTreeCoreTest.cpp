#include <Orlix/foundation/CTreeCore.h>

#include "support/TreeCheck.h"

#include <gtest/gtest.h>

using namespace Orlix;
using namespace OrlixTest;

namespace {

struct tagPlainNode {
    char aryBefore[24]; // the links need not be at the start
    tagPlainNode* pLeft = nullptr;
    tagPlainNode* pRight = nullptr;
    tagPlainNode* pParent = nullptr;
    int iLeftHeight = 0;
    int iRightHeight = 0;
    int iBalance = 0;
};

class CTreeCoreTest : public ::testing::Test {
protected:
    static constexpr unsigned int LINKS = 24;

    void setLeft(int iParent, int iChild) {
        m_aryNode[iParent].pLeft = &m_aryNode[iChild];
        m_aryNode[iChild].pParent = &m_aryNode[iParent];
    }
    void setRight(int iParent, int iChild) {
        m_aryNode[iParent].pRight = &m_aryNode[iChild];
        m_aryNode[iChild].pParent = &m_aryNode[iParent];
    }
    /** The number of the root after the update. */
    long updateToRoot(int iRoot, int iNode) {
        void* const pRoot = CTreeCore(&m_aryNode[iRoot], LINKS).updateToRoot(&m_aryNode[iNode]);
        return static_cast<tagPlainNode*>(pRoot) - m_aryNode;
    }
    std::string check(long lRoot) {
        int iHeight = 0;
        return checkTree<tagPlainNode>(&m_aryNode[lRoot], nullptr, iHeight);
    }
    tagPlainNode m_aryNode[8];
};

TEST_F(CTreeCoreTest, AnEmptyTreeHasNothingToUpdate) {
    EXPECT_EQ(CTreeCore(nullptr, LINKS).updateToRoot(nullptr), nullptr);
    EXPECT_EQ(CTreeCore(nullptr, LINKS).updateChanged(nullptr), nullptr);
}

TEST_F(CTreeCoreTest, UpdatingToTheRootMendsEveryHeightOnTheWay) {
    setLeft(0, 1);
    setLeft(1, 2);
    setRight(1, 3);
    setRight(0, 4);
    for (const int iWrong : {0, 1}) {
        m_aryNode[iWrong].iLeftHeight = 9;
        m_aryNode[iWrong].iRightHeight = 9;
        m_aryNode[iWrong].iBalance = 9;
    }
    EXPECT_EQ(updateToRoot(0, 2), 0);
    EXPECT_EQ(check(0), "");
}

TEST_F(CTreeCoreTest, EachOfTheFourLeansTurnsTheMiddleKeyUp) {
    const struct {
        bool bOuterLeft, bInnerLeft;
        int iTop;
    } aryRow[] = {{true, true, 1}, {true, false, 2}, {false, false, 1}, {false, true, 2}};
    for (const auto& row : aryRow) {
        for (tagPlainNode& node : m_aryNode)
            node = tagPlainNode();
        row.bOuterLeft ? setLeft(0, 1) : setRight(0, 1);
        row.bInnerLeft ? setLeft(1, 2) : setRight(1, 2);
        EXPECT_EQ(updateToRoot(0, 2), row.iTop);
        EXPECT_EQ(check(row.iTop), "");
    }
}

TEST_F(CTreeCoreTest, AChildOfEqualSidesTurnsOnce) {
    setLeft(0, 1);
    setLeft(1, 2);
    setRight(1, 3);
    EXPECT_EQ(updateToRoot(0, 1), 1);
    EXPECT_EQ(m_aryNode[1].pRight, &m_aryNode[0]);
    EXPECT_EQ(m_aryNode[0].pLeft, &m_aryNode[3]);
    EXPECT_EQ(check(1), "");
}

TEST_F(CTreeCoreTest, AChildThatLeansByMoreThanOneStaysAndTheWalkGoesOn) {
    for (const bool bLeft : {true, false}) {
        for (const int iLean : {2, -2}) {
            for (tagPlainNode& node : m_aryNode)
                node = tagPlainNode();
            bLeft ? setLeft(0, 1) : setRight(0, 1);
            setLeft(7, 0);
            m_aryNode[1].iLeftHeight = 1; // one level that is only said to be there
            m_aryNode[1].iBalance = iLean;
            EXPECT_EQ(updateToRoot(7, 0), 7);
            EXPECT_EQ(m_aryNode[0].iBalance, bLeft ? 2 : -2);
            EXPECT_EQ(m_aryNode[7].iLeftHeight, 3);
        }
    }
}

TEST_F(CTreeCoreTest, ALeanOfThreeIsRecordedAndLeft) {
    setLeft(0, 1);
    m_aryNode[1].iLeftHeight = 2;
    EXPECT_EQ(updateToRoot(0, 0), 0);
    EXPECT_EQ(m_aryNode[0].iBalance, 3);
    EXPECT_EQ(m_aryNode[0].pLeft, &m_aryNode[1]);
}

TEST_F(CTreeCoreTest, ARemovedNodeKeepsItsOwnLinks) {
    setLeft(0, 1);
    setRight(0, 2);
    updateToRoot(0, 1);
    EXPECT_EQ(CTreeCore(&m_aryNode[0], LINKS).remove(&m_aryNode[0], true), &m_aryNode[1]);
    EXPECT_EQ(m_aryNode[0].pLeft, &m_aryNode[1]);
    EXPECT_EQ(m_aryNode[0].pRight, &m_aryNode[2]);
    EXPECT_EQ(check(1), "");
}
} // namespace
