#include <Orlix/foundation/CTreeCore.h>

namespace Orlix {
namespace {

constexpr unsigned int LEFT = 0;
constexpr unsigned int RIGHT = 1;
} // namespace

// The links of a node seen without its type. Left and right are numbered, so that one routine serves both sides.
struct __attribute__((may_alias)) CTreeCore::tagLinks {
    void* aryChild[2];
    void* pParent;
    int aryHeight[2];
    int iBalance;

    int getHeight() const noexcept {
        return (aryHeight[LEFT] > aryHeight[RIGHT] ? aryHeight[LEFT] : aryHeight[RIGHT]) + 1;
    }
    unsigned int getSideOf(const void* pChild) const noexcept { return aryChild[LEFT] == pChild ? LEFT : RIGHT; }
    void setHeight(unsigned int uiSide, int iHeight) noexcept {
        aryHeight[uiSide] = iHeight;
        iBalance = aryHeight[LEFT] - aryHeight[RIGHT];
    }
};

CTreeCore::tagLinks& CTreeCore::at(void* pNode) const noexcept {
    return *reinterpret_cast<tagLinks*>(static_cast<unsigned char*>(pNode) + m_uiLinks);
}

int CTreeCore::getHeight(void* pNode) const noexcept { return pNode ? at(pNode).getHeight() : 0; }

void CTreeCore::refresh(void* pNode) const noexcept {
    tagLinks& links = at(pNode);
    links.aryHeight[LEFT] = getHeight(links.aryChild[LEFT]);
    links.setHeight(RIGHT, getHeight(links.aryChild[RIGHT]));
}

void CTreeCore::setChild(void* pParent, unsigned int uiSide, void* pChild) const noexcept {
    at(pParent).aryChild[uiSide] = pChild;
    if (pChild)
        at(pChild).pParent = pParent;
}

// pNew may be null; what hung on pNew before is the caller's business.
void CTreeCore::replaceInParent(void* pOld, void* pNew) noexcept {
    void* const pParent = at(pOld).pParent;
    if (pParent) {
        setChild(pParent, at(pParent).getSideOf(pOld), pNew);
        return;
    }
    m_pRoot = pNew;
    if (pNew)
        at(pNew).pParent = nullptr;
}

// Lets a node sink to a side; its child of the other side rises to its place and is returned.
void* CTreeCore::rotate(void* pNode, unsigned int uiSide) noexcept {
    const unsigned int uiOther = 1 - uiSide;
    void* const pRising = at(pNode).aryChild[uiOther];
    replaceInParent(pNode, pRising);
    setChild(pNode, uiOther, at(pRising).aryChild[uiSide]);
    at(pNode).setHeight(uiOther, at(pRising).aryHeight[uiSide]);
    setChild(pRising, uiSide, pNode);
    at(pRising).setHeight(uiSide, at(pNode).getHeight());
    return pRising;
}

// Gives the node that stands in the place afterwards. A child that leans by more than one is left as it is: no tree
// that was kept balanced has one.
void* CTreeCore::balance(void* pNode) noexcept {
    const int iBalance = at(pNode).iBalance;
    if (iBalance != 2 && iBalance != -2)
        return pNode;
    const unsigned int uiHigh = iBalance > 0 ? LEFT : RIGHT;
    void* const pChild = at(pNode).aryChild[uiHigh];
    const int iLean = uiHigh == LEFT ? at(pChild).iBalance : -at(pChild).iBalance; // above 0: the same way as the node
    if (iLean < -1 || iLean > 1)
        return pNode;
    if (iLean == -1)
        rotate(pChild, uiHigh);
    return rotate(pNode, 1 - uiHigh);
}

void* CTreeCore::updateToRoot(void* pNode) noexcept {
    while (pNode) {
        refresh(pNode);
        pNode = at(balance(pNode)).pParent;
    }
    return m_pRoot;
}

void* CTreeCore::updateChanged(void* pNode) noexcept {
    if (!pNode)
        return m_pRoot;
    refresh(pNode);
    for (;;) {
        void* const pTop = balance(pNode);
        pNode = at(pTop).pParent;
        if (!pNode)
            return m_pRoot;
        // Only the side that was come from can have changed: the brother's memory is not touched.
        const int iHeight = at(pTop).getHeight();
        const unsigned int uiSide = at(pNode).getSideOf(pTop);
        if (at(pNode).aryHeight[uiSide] == iHeight)
            return m_pRoot;
        at(pNode).setHeight(uiSide, iHeight);
    }
}

// Puts the nearest key of the higher side into the place of a node with two children.
// Gives the lowest node whose children have changed.
void* CTreeCore::replaceByNearest(void* pNode) noexcept {
    const tagLinks& links = at(pNode);
    const unsigned int uiHigh = links.iBalance >= 0 ? LEFT : RIGHT;
    const unsigned int uiLow = 1 - uiHigh;
    void* pNearest = links.aryChild[uiHigh];
    while (void* const pFurther = at(pNearest).aryChild[uiLow])
        pNearest = pFurther;
    void* pChanged = pNearest;
    if (pNearest != links.aryChild[uiHigh]) {
        pChanged = at(pNearest).pParent;
        setChild(pChanged, uiLow, at(pNearest).aryChild[uiHigh]);
        setChild(pNearest, uiHigh, links.aryChild[uiHigh]);
        at(pNearest).aryHeight[uiHigh] = links.aryHeight[uiHigh];
    }
    setChild(pNearest, uiLow, links.aryChild[uiLow]);
    at(pNearest).setHeight(uiLow, links.aryHeight[uiLow]);
    replaceInParent(pNode, pNearest);
    return pChanged;
}

void* CTreeCore::remove(void* pNode, bool bUpdate) noexcept {
    const tagLinks& links = at(pNode);
    void* pChanged = links.pParent;
    if (links.aryChild[LEFT] && links.aryChild[RIGHT])
        pChanged = replaceByNearest(pNode);
    else
        replaceInParent(pNode, links.aryChild[LEFT] ? links.aryChild[LEFT] : links.aryChild[RIGHT]);
    return bUpdate ? updateChanged(pChanged) : m_pRoot;
}
} // namespace Orlix
