#pragma once

#include <Orlix/foundation/OrlixApi.h>

namespace Orlix {

/** Balance and removal for the trees of the maps, whatever their keys and values are.
 *
 *  A node is known by its address and by where in it the links begin: pLeft, pRight, pParent, iLeftHeight,
 *  iRightHeight, iBalance, one right behind the other. A height counts levels: 0 for a missing child, 1 for a leaf; the
 *  balance is the left height minus the right one, and a tree is kept within -1 and 1 (Adelson-Velsky and Landis 1962).
 *  Every operation gives the root as it is afterwards. Threads: none of its own. */
class ORLIX_API CTreeCore {
public:
    /** @param uiLinks bytes from the start of a node to its pLeft. */
    CTreeCore(void* pRoot, unsigned int uiLinks) noexcept : m_pRoot(pRoot), m_uiLinks(uiLinks) {}

    /** Restores heights and balance from a node up to the root, trusting no height above or beside the way. */
    void* updateToRoot(void* pNode) noexcept;

    /** As updateToRoot for one changed node in a tree whose heights are right: it ends where the change does. */
    void* updateChanged(void* pNode) noexcept;

    /** Takes a node out of the tree. With two children the nearest key of the higher side takes its place, of the left
     *  side if both are as high, so that the place itself needs no rotation. The node's own links stay as they are.
     *  @param bUpdate false leaves heights and balance above alone. */
    void* remove(void* pNode, bool bUpdate) noexcept;

private:
    struct tagLinks;

    tagLinks& at(void* pNode) const noexcept;
    int getHeight(void* pNode) const noexcept;
    void refresh(void* pNode) const noexcept;
    void setChild(void* pParent, unsigned int uiSide, void* pChild) const noexcept;
    void replaceInParent(void* pOld, void* pNew) noexcept;
    void* rotate(void* pNode, unsigned int uiSide) noexcept;
    void* balance(void* pNode) noexcept;
    void* replaceByNearest(void* pNode) noexcept;

    void* m_pRoot;
    unsigned int m_uiLinks;
};
} // namespace Orlix
