#pragma once

#include <Orlix/foundation/OrlixApi.h>

namespace Orlix {

/** The links of CDataList and CObjectList: a doubly linked chain of nodes with one walking cursor.
 *
 *  @tparam TBase what the list derives from. @tparam TNode a heap class with pPrev and pNext; this class links nodes
 *  and never makes or frees one. A walk changes the cursor, so also a walk that only looks needs the owner's lock. */
template <class TBase, class TNode> class ORLIX_API CLinkedList : public TBase {
public:
    CLinkedList(const CLinkedList&) = delete;
    CLinkedList& operator=(const CLinkedList&) = delete;

    unsigned int getSize() const noexcept { return m_uiSize; }

    /** Starts a walk with next at the first element. */
    void toHead() noexcept { m_pCursor = m_pHead; }
    /** Starts a walk with previous at the last element. */
    void toTail() noexcept { m_pCursor = m_pTail; }

protected:
    TNode* m_pHead;
    TNode* m_pTail;
    TNode* m_pCursor; // the node of the next step of the walk; null at its end
    unsigned int m_uiSize;
    TNode* m_pVisited; // the node of the last step; null when there is none or it has been removed

    CLinkedList() noexcept : m_pHead(nullptr), m_pTail(nullptr), m_pCursor(nullptr), m_uiSize(0), m_pVisited(nullptr) {}

    /** The cursor moves on before the element is looked at, so that the element may be removed. */
    TNode* stepForward() noexcept {
        m_pVisited = m_pCursor;
        if (m_pCursor)
            m_pCursor = m_pCursor->pNext;
        return m_pVisited;
    }
    TNode* stepBackward() noexcept {
        m_pVisited = m_pCursor;
        if (m_pCursor)
            m_pCursor = m_pCursor->pPrev;
        return m_pVisited;
    }

    /** Null past the end; walks from the nearer end. */
    TNode* getNodeAt(unsigned int uiIndex) const noexcept {
        if (uiIndex >= m_uiSize)
            return nullptr;
        if (uiIndex < m_uiSize >> 1) {
            TNode* pNode = m_pHead;
            for (unsigned int i = 0; i < uiIndex; ++i)
                pNode = pNode->pNext;
            return pNode;
        }
        TNode* pNode = m_pTail;
        for (unsigned int i = m_uiSize - 1; i > uiIndex; --i)
            pNode = pNode->pPrev;
        return pNode;
    }

    /** The node that a removal by value takes: the head, else the tail, else the first one in between. */
    template <class TMatch> TNode* findNode(const TMatch& match) const {
        if (!m_pHead || match(m_pHead))
            return m_pHead;
        if (match(m_pTail))
            return m_pTail;
        TNode* pNode = m_pHead->pNext;
        while (pNode && !match(pNode))
            pNode = pNode->pNext;
        return pNode;
    }

    void linkAtTail(TNode* pNode) noexcept {
        pNode->pPrev = m_pTail;
        pNode->pNext = nullptr;
        if (m_pTail) {
            m_pTail->pNext = pNode;
        } else {
            m_pHead = pNode;
            m_pCursor = pNode;
        }
        m_pTail = pNode;
        ++m_uiSize;
    }

    /** Takes the node out of the chain but leaves the size, which falls only when the node is gone for good. */
    void detach(TNode* pNode) noexcept {
        if (m_pCursor == pNode)
            m_pCursor = pNode->pNext;
        if (m_pVisited == pNode)
            m_pVisited = nullptr;
        if (pNode->pPrev)
            pNode->pPrev->pNext = pNode->pNext;
        else
            m_pHead = pNode->pNext;
        if (pNode->pNext)
            pNode->pNext->pPrev = pNode->pPrev;
        else
            m_pTail = pNode->pPrev;
    }

    void resetLinks() noexcept {
        m_pHead = nullptr;
        m_pTail = nullptr;
        m_pCursor = nullptr;
        m_uiSize = 0;
        m_pVisited = nullptr;
    }
};
} // namespace Orlix
