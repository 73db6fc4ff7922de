#pragma once

#include <Orlix/foundation/CLinkedList.h>
#include <Orlix/foundation/CObject.h>

#include <utility>

namespace Orlix {

/** A node of CDataList. */
template <class T> struct tagDataListNode {
    ORLIX_HEAP_CLASS(L"CDataList::tagNode")
    T tValue;
    tagDataListNode* pPrev;
    tagDataListNode* pNext;
};

/** A doubly linked list of values.
 *
 *  A walk is toHead and next, or toTail and previous, until null; the list has one cursor, so one walk at a time.
 *  Removing the element under the cursor moves the cursor to the next one. Without memory an added value is dropped.
 *  Threads: none of its own; the owner locks, for walks too. */
template <class T> class ORLIX_API CDataList : public CLinkedList<CObject, tagDataListNode<T>> {
    ORLIX_HEAP_CLASS(L"CDataList")

public:
    using tagNode = tagDataListNode<T>;

    CDataList() = default;
    ~CDataList() override { clear(); }

    /** Appends a copy. */
    void add(const T& tValue) {
        if (tagNode* const pNode = new tagNode{tValue, nullptr, nullptr})
            this->linkAtTail(pNode);
    }

    /** The stored value, null past the end. Walks from the nearer end. */
    T* getAt(unsigned int uiIndex) const noexcept { return getValue(this->getNodeAt(uiIndex)); }

    /** The value under the cursor, which then moves on; null at the end of the walk. */
    T* next() noexcept { return getValue(this->stepForward()); }
    T* previous() noexcept { return getValue(this->stepBackward()); }

    /** Takes the first value out. @return a default one if the list is empty. */
    T removeHead() {
        tagNode* const pNode = this->m_pHead;
        if (!pNode)
            return T();
        T tValue(std::move(pNode->tValue));
        removeNode(pNode);
        return tValue;
    }

    /** Past the end nothing happens. */
    void removeAt(unsigned int uiIndex) {
        if (tagNode* const pNode = this->getNodeAt(uiIndex))
            removeNode(pNode);
    }

    /** Removes one element that equals tValue: the head if it does, else the tail, else the first one in between. */
    void remove(const T& tValue) {
        if (tagNode* const pNode = this->findNode([&](const tagNode* pTried) { return pTried->tValue == tValue; }))
            removeNode(pNode);
    }

    void clear() {
        while (tagNode* const pNode = this->m_pHead) {
            this->detach(pNode); // before the deletion: a destructor may look at the list
            delete pNode;
        }
        this->resetLinks();
    }

private:
    static T* getValue(tagNode* pNode) noexcept { return pNode ? &pNode->tValue : nullptr; }

    void removeNode(tagNode* pNode) {
        this->detach(pNode);
        --this->m_uiSize;
        delete pNode;
    }
};
} // namespace Orlix
