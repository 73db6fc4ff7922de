#pragma once

#include <algorithm>
#include <memory>
#include <string>

namespace OrlixTest {

/** A balanced tree of ints written the plain recursive way, to compare shapes with: heights are counted anew from the
 *  children on the way back from every change, and nothing stops early. */
class CTreeModel {
public:
    bool insert(int iKey) { return insert(m_pRoot, iKey); }
    bool remove(int iKey) { return remove(m_pRoot, iKey); }
    void clear() { m_pRoot.reset(); }

    /** Whether another tree has the same keys in the same places. */
    template <class TNode> bool hasShapeOf(const TNode* pRoot) const { return isSame(m_pRoot.get(), pRoot); }

private:
    struct tagModelNode {
        int iKey;
        int iHeight;
        std::unique_ptr<tagModelNode> pLeft, pRight;
    };
    using TLink = std::unique_ptr<tagModelNode>;

    static int height(const TLink& pNode) { return pNode ? pNode->iHeight : 0; }
    static int balance(const TLink& pNode) { return height(pNode->pLeft) - height(pNode->pRight); }
    static void count(const TLink& pNode) {
        pNode->iHeight = std::max(height(pNode->pLeft), height(pNode->pRight)) + 1;
    }

    static void rotateRight(TLink& pNode) {
        TLink pTop = std::move(pNode->pLeft);
        pNode->pLeft = std::move(pTop->pRight);
        count(pNode);
        pTop->pRight = std::move(pNode);
        count(pTop);
        pNode = std::move(pTop);
    }
    static void rotateLeft(TLink& pNode) {
        TLink pTop = std::move(pNode->pRight);
        pNode->pRight = std::move(pTop->pLeft);
        count(pNode);
        pTop->pLeft = std::move(pNode);
        count(pTop);
        pNode = std::move(pTop);
    }

    static void settle(TLink& pNode) {
        if (!pNode)
            return;
        count(pNode);
        if (balance(pNode) == 2) {
            if (balance(pNode->pLeft) == -1)
                rotateLeft(pNode->pLeft);
            rotateRight(pNode);
        } else if (balance(pNode) == -2) {
            if (balance(pNode->pRight) == 1)
                rotateRight(pNode->pRight);
            rotateLeft(pNode);
        }
    }

    static bool insert(TLink& pNode, int iKey) {
        if (!pNode) {
            pNode.reset(new tagModelNode{iKey, 1, nullptr, nullptr});
            return true;
        }
        if (pNode->iKey == iKey)
            return false;
        const bool bDone = insert(iKey < pNode->iKey ? pNode->pLeft : pNode->pRight, iKey);
        settle(pNode);
        return bDone;
    }

    static bool remove(TLink& pNode, int iKey) {
        if (!pNode)
            return false;
        bool bDone = true;
        if (pNode->iKey == iKey)
            dropTop(pNode);
        else
            bDone = remove(iKey < pNode->iKey ? pNode->pLeft : pNode->pRight, iKey);
        settle(pNode);
        return bDone;
    }

    static void dropTop(TLink& pNode) {
        if (!pNode->pLeft || !pNode->pRight) {
            pNode = std::move(pNode->pLeft ? pNode->pLeft : pNode->pRight);
            return;
        }
        if (height(pNode->pLeft) >= height(pNode->pRight))
            pNode->iKey = takeGreatest(pNode->pLeft);
        else
            pNode->iKey = takeLeast(pNode->pRight);
    }
    static int takeGreatest(TLink& pNode) {
        if (!pNode->pRight) {
            const int iKey = pNode->iKey;
            pNode = std::move(pNode->pLeft);
            return iKey;
        }
        const int iKey = takeGreatest(pNode->pRight);
        settle(pNode);
        return iKey;
    }
    static int takeLeast(TLink& pNode) {
        if (!pNode->pLeft) {
            const int iKey = pNode->iKey;
            pNode = std::move(pNode->pRight);
            return iKey;
        }
        const int iKey = takeLeast(pNode->pLeft);
        settle(pNode);
        return iKey;
    }

    template <class TNode> static bool isSame(const tagModelNode* pModel, const TNode* pNode) {
        if (!pModel || !pNode)
            return !pModel && !pNode;
        return pModel->iKey == pNode->key && isSame(pModel->pLeft.get(), pNode->pLeft) &&
               isSame(pModel->pRight.get(), pNode->pRight);
    }

    TLink m_pRoot;
};
} // namespace OrlixTest
