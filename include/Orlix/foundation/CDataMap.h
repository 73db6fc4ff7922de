#pragma once

#include <Orlix/foundation/CTreeMap.h>
#include <Orlix/foundation/MapCompare.h>

#include <utility>

namespace Orlix {

/** A node of CDataMap. */
template <class K, class V> struct tagDataMapNode {
    ORLIX_HEAP_CLASS(L"CDataMap::tagNode")
    V* getValue() noexcept { return &tValue; }

    K key;
    V tValue;
    tagDataMapNode* pLeft;
    tagDataMapNode* pRight;
    tagDataMapNode* pParent;
    int iLeftHeight; // levels below on this side, 0 without a child
    int iRightHeight;
    int iBalance; // left height minus right height
};

/** One step of a walk through a CDataMap. */
template <class K, class V> struct tagDataMapPair {
    ORLIX_HEAP_CLASS(L"CDataMap::tagPair")
    tagDataMapNode<K, V>* pNode;
    V* pValue;
};

/** Values by key, in the order of a comparator; keys and values are copied in.
 *
 *  @tparam C the order, see MapCompare.h. Threads: none of its own; the owner locks, for walks too. */
template <class K, class V, class C>
class ORLIX_API CDataMap : public CTreeMap<CObject, tagDataMapNode<K, V>, tagDataMapPair<K, V>, C> {
    ORLIX_HEAP_CLASS(L"CDataMap")

public:
    CDataMap() = default;
    ~CDataMap() override { this->clear(); }

    /** Inserts a new key. @return false, and nothing changes, if the key is there already or there is no memory. */
    bool addItem(const K& key, const V& tValue) { return this->insert(key, tValue) != nullptr; }
    /** The same without a copy of the key, which is left alone if it is not inserted. */
    bool addItem(K&& key, const V& tValue) { return this->insert(std::move(key), tValue) != nullptr; }

    /** Inserts a key or replaces its value. Without memory a new key is dropped. */
    void setItem(const K& key, const V& tValue) {
        if (tagDataMapNode<K, V>* const pNode = this->findNode(key)) {
            pNode->tValue = tValue;
            this->freePairs();
        } else {
            this->insert(key, tValue);
        }
    }

    /** The stored value, valid until its key is removed; null if the key is absent. */
    V* getItem(const K& key) const {
        tagDataMapNode<K, V>* const pNode = this->findNode(key);
        return pNode ? &pNode->tValue : nullptr;
    }
};
} // namespace Orlix
