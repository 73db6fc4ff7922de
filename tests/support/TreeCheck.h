#pragma once

#include <algorithm>
#include <string>

namespace OrlixTest {

/** Says what is wrong with the links, heights and balance of a node and all below it; empty if nothing is.
 *  Checked against the children as they are, not against what the tree's own code makes of them. */
template <class TNode> std::string checkTree(const TNode* pNode, const TNode* pParent, int& iHeight) {
    iHeight = 0;
    if (!pNode)
        return "";
    int iLeft = 0, iRight = 0;
    const std::string strBelow =
        checkTree<TNode>(pNode->pLeft, pNode, iLeft) + checkTree<TNode>(pNode->pRight, pNode, iRight);
    iHeight = std::max(iLeft, iRight) + 1;
    if (!strBelow.empty())
        return strBelow;
    if (pNode->pParent != pParent)
        return "parent link";
    if (pNode->iLeftHeight != iLeft || pNode->iRightHeight != iRight)
        return "height";
    if (pNode->iBalance != iLeft - iRight)
        return "balance field";
    return iLeft - iRight > 1 || iRight - iLeft > 1 ? "out of balance" : "";
}

template <class TMap> std::string checkTree(const TMap& map) {
    int iHeight = 0;
    return checkTree<typename TMap::tagNode>(map.getRoot(), nullptr, iHeight);
}
} // namespace OrlixTest
