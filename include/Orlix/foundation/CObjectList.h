#pragma once

#include <Orlix/foundation/CLinkedList.h>
#include <Orlix/foundation/COwningContainer.h>

namespace Orlix {

/** A node of CObjectList. */
template <class T> struct tagObjectListNode {
    ORLIX_HEAP_CLASS(L"CObjectList::tagNode")
    T* pObject;
    tagObjectListNode* pPrev;
    tagObjectListNode* pNext;
};

/** A doubly linked list of pointers to objects, which it deletes while it owns them.
 *
 *  A walk is toHead and next, or toTail and previous, until null; the list has one cursor, so one walk at a time.
 *  Removing the element under the cursor moves the cursor to the next one. Without memory an added object is dropped,
 *  not deleted. Threads: none of its own; the owner locks, for walks too. */
template <class T> class ORLIX_API CObjectList : public CLinkedList<COwningContainer, tagObjectListNode<T>> {
    ORLIX_HEAP_CLASS(L"CObjectList")

public:
    using tagNode = tagObjectListNode<T>;

    CObjectList() = default;
    ~CObjectList() override { clear(); }

    /** Appends. */
    void add(T* pObject) {
        if (tagNode* const pNode = new tagNode{pObject, nullptr, nullptr})
            this->linkAtTail(pNode);
    }

    /** The object, still owned here; null past the end. Walks from the nearer end. */
    T* getAt(unsigned int uiIndex) const noexcept { return getObject(this->getNodeAt(uiIndex)); }

    /** The object under the cursor, which then moves on; null at the end of the walk. */
    T* next() noexcept { return getObject(this->stepForward()); }
    T* previous() noexcept { return getObject(this->stepBackward()); }

    /** Takes the first object out without deleting it. @return null if the list is empty. */
    T* removeHead() {
        tagNode* const pNode = this->m_pHead;
        if (!pNode)
            return nullptr;
        T* const pObject = pNode->pObject;
        this->detach(pNode);
        --this->m_uiSize;
        // In a long queue the next object has not been touched for a while: fetch it while this one is worked on.
        if (const tagNode* const pNext = this->m_pHead) {
            __builtin_prefetch(pNext->pNext);
            __builtin_prefetch(pNext->pObject);
        }
        delete pNode;
        return pObject;
    }

    /** Removes one place and deletes its object if owned; past the end nothing happens. */
    void removeAt(unsigned int uiIndex) {
        if (tagNode* const pNode = this->getNodeAt(uiIndex))
            removeNode(pNode);
    }

    /** Removes one place that holds pObject and deletes it if owned: the head, else the tail, else the first one in
     *  between. An object that is not in the list is left alone. */
    void remove(const T* pObject) {
        if (tagNode* const pNode = this->findNode([=](const tagNode* pTried) { return pTried->pObject == pObject; }))
            removeNode(pNode);
    }

    /** Moves the element of the last next or previous to the tail of a list, also of this one. It allocates nothing and
     *  deletes nothing; the walk goes on. Nothing happens when that element has been removed already. */
    void moveVisitedTo(CObjectList& lstTarget) {
        tagNode* const pNode = this->m_pVisited;
        if (!pNode)
            return;
        this->detach(pNode);
        --this->m_uiSize;
        lstTarget.linkAtTail(pNode);
    }

    /** Removes all, deleting the owned objects from the head on. */
    void clear() {
        while (tagNode* const pNode = this->m_pHead) {
            this->detach(pNode); // before the deletion: a destructor may look at the list
            this->deleteIfOwned(pNode->pObject);
            delete pNode;
        }
        this->resetLinks();
    }

private:
    static T* getObject(tagNode* pNode) noexcept { return pNode ? pNode->pObject : nullptr; }

    void removeNode(tagNode* pNode) {
        this->detach(pNode);
        this->deleteIfOwned(pNode->pObject);
        delete pNode;
        --this->m_uiSize;
    }
};
} // namespace Orlix
