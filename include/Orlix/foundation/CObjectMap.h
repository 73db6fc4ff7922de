#pragma once

#include <Orlix/foundation/CTreeMap.h>
#include <Orlix/foundation/MapCompare.h>

#include <utility>

namespace Orlix {

/** A node of CObjectMap. */
template <class K, class V> struct tagObjectMapNode {
    ORLIX_HEAP_CLASS(L"CObjectMap::tagNode")
    V* getValue() noexcept { return pValue; }

    K key;
    V* pValue;
    tagObjectMapNode* pLeft;
    tagObjectMapNode* pRight;
    tagObjectMapNode* pParent;
    int iLeftHeight; // levels below on this side, 0 without a child
    int iRightHeight;
    int iBalance; // left height minus right height
};

/** One step of a walk through a CObjectMap. */
template <class K, class V> struct tagObjectMapPair {
    ORLIX_HEAP_CLASS(L"CObjectMap::tagPair")
    tagObjectMapNode<K, V>* pNode;
    V* pValue;
};

/** Objects by key, in the order of a comparator; it deletes its objects while it owns them.
 *
 *  Keys are copied in, values are pointers and may be null. Without memory an object is not taken, and not deleted.
 *  @tparam C the order, see MapCompare.h. Threads: none of its own; the owner locks, for walks too. */
template <class K, class V, class C>
class ORLIX_API CObjectMap : public CTreeMap<COwningContainer, tagObjectMapNode<K, V>, tagObjectMapPair<K, V>, C> {
    ORLIX_HEAP_CLASS(L"CObjectMap")

public:
    CObjectMap() = default;
    ~CObjectMap() override { this->clear(); }

    /** Inserts a new key. @return false, and nothing changes, if the key is there already or there is no memory; then
     *  pValue stays the caller's. */
    bool addItem(const K& key, V* pValue) { return this->insert(key, pValue) != nullptr; }
    /** The same without a copy: the key is moved in, and left alone if it is not inserted. */
    bool addItem(K&& key, V* pValue) { return this->insert(std::move(key), pValue) != nullptr; }

    /** Inserts a key or replaces its value; the old value is deleted if owned, unless it is the new one. Without memory
     *  for a new key pValue stays the caller's, which getItem tells. */
    void setItem(const K& key, V* pValue) {
        tagObjectMapNode<K, V>* const pNode = this->findNode(key);
        if (!pNode) {
            this->insert(key, pValue);
            return;
        }
        V* const pOld = std::exchange(pNode->pValue, pValue);
        this->freePairs();
        if (pOld != pValue)
            this->deleteIfOwned(pOld);
    }

    /** The value, still owned here; null if the key is absent. */
    V* getItem(const K& key) const {
        tagObjectMapNode<K, V>* const pNode = this->findNode(key);
        return pNode ? pNode->pValue : nullptr;
    }
};
} // namespace Orlix
