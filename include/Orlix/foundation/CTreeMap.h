#pragma once

#include <Orlix/foundation/COwningContainer.h>
#include <Orlix/foundation/CTreeCore.h>

#include <cstdint>
#include <type_traits>
#include <utility>

namespace Orlix {

/** The tree of CObjectMap and CDataMap: a height-balanced search tree with parent links, and the array of pairs that a
 *  walk reads.
 *
 *  A walk is buildPairs and then getKeyAt and getValueAt by index, in ascending order. Every insertion, replacement and
 *  removal drops the array, so a walk must not change the map. Without memory nothing is inserted.
 *  A value's destructor may look at the map and change it: what is being deleted is out of the tree already.
 *  Threads: none of its own; the owner locks, for walks too, since they change the map.
 *
 *  @tparam TBase what the map derives from; as a COwningContainer it deletes the values it owns.
 *  @tparam TNode a heap class with a key, getValue(), and the links that CTreeCore knows.
 *  @tparam TPair a heap class of a node and its value. @tparam C the order: an operator() over two keys. */
template <class TBase, class TNode, class TPair, class C> class ORLIX_API CTreeMap : public TBase {
    static_assert(alignof(TNode) <= 8, "blocks of CMemory are aligned to 8 bytes");

public:
    using tagNode = TNode;
    using tagPair = TPair;
    using TKey = decltype(TNode::key);
    using TValue = std::remove_pointer_t<decltype(TPair::pValue)>;

    CTreeMap(const CTreeMap&) = delete;
    CTreeMap& operator=(const CTreeMap&) = delete;

    unsigned int getCount() const noexcept { return m_uiCount; }

    /** Null for an empty map. The nodes are for looking at. */
    tagNode* getRoot() const noexcept { return m_pRoot; }

    /** Removes a key, deleting its value if owned. @return false, and nothing changes, if it is absent. */
    bool deleteItem(const TKey& key) { return removeNode(findNode(m_pRoot, key)); }

    /** Removes a key from below a node. @param pNode not removed itself; null has nothing below it.
     *  @return false, and nothing changes, if the key is not there. */
    bool deleteItemByDLR(tagNode* pNode, const TKey& key) {
        tagNode* const pFound = findNode(pNode, key);
        return pFound != pNode && removeNode(pFound);
    }

    /** Restores heights and balance from a node up to the root. Does nothing for null and while clear runs. */
    void updateNode(tagNode* pNode) noexcept {
        if (m_bUpdateNode && pNode)
            setRoot(getCore(pNode).updateToRoot(pNode));
    }

    /** Deletes a node and all below it: left side, right side, the node itself. The tree above stays ordered but may
     *  lean by more than it otherwise does. Null is nothing. */
    void deleteTree(tagNode* pNode) {
        if (!pNode)
            return;
        tagNode* const pParent = pNode->pParent;
        if (!pParent)
            m_pRoot = nullptr;
        else
            (pParent->pLeft == pNode ? pParent->pLeft : pParent->pRight) = nullptr;
        m_uiCount -= countNodes(pNode);
        freePairs();
        updateNode(pParent);
        deleteNodes(pNode);
    }

    /** Writes the pairs of a node and all below it into the array, in order, from the current position on. Without an
     *  array, and beyond its end, nothing is written. */
    void createIterator(tagNode* pNode) noexcept {
        for (; pNode; pNode = pNode->pRight) {
            createIterator(pNode->pLeft);
            if (!m_pPairs || m_uiPairIndex >= m_uiCount)
                return;
            m_pPairs[m_uiPairIndex].pNode = pNode;
            m_pPairs[m_uiPairIndex++].pValue = pNode->getValue();
        }
    }

    /** Starts a walk. @return the pairs to read; 0 if the map is empty or there is no memory. */
    unsigned int buildPairs() {
        freePairs();
        if (m_uiCount == 0)
            return 0;
        m_pPairs = new tagPair[m_uiCount]();
        createIterator(m_pRoot);
        m_uiPairIndex = 0;
        return m_pPairs ? m_uiCount : 0;
    }
    /** Whether the array of the last walk still stands. */
    bool hasPairs() const noexcept { return m_pPairs != nullptr; }
    /** The key at a place of the walk; a default one past the end and without pairs. */
    const TKey& getKeyAt(unsigned int uiIndex) const noexcept {
        return m_pPairs && uiIndex < m_uiCount ? m_pPairs[uiIndex].pNode->key : m_kDefault;
    }
    /** The value at a place of the walk; null past the end and without pairs. */
    TValue* getValueAt(unsigned int uiIndex) const noexcept {
        return m_pPairs && uiIndex < m_uiCount ? m_pPairs[uiIndex].pValue : nullptr;
    }

    /** Removes all, deleting the owned values: each node after the ones below it, left side first. */
    void clear() {
        m_bUpdateNode = false;
        do {
            freePairs();
            m_uiCount = 0;
            deleteNodes(std::exchange(m_pRoot, nullptr));
        } while (m_pRoot); // only if a value's destructor has inserted
        m_bUpdateNode = true;
    }

protected:
    bool m_bUpdateNode; // false while clear runs: nothing is balanced that goes anyway
    tagNode* m_pRoot;   // owned with all below it; null for an empty map
    tagPair* m_pPairs;  // owned; m_uiCount pairs in order, or null
    unsigned int m_uiCount;
    unsigned int m_uiPairIndex; // where createIterator writes next
    TKey m_kDefault;
    C m_compare;

    CTreeMap()
        : m_bUpdateNode(true), m_pRoot(nullptr), m_pPairs(nullptr), m_uiCount(0), m_uiPairIndex(0), m_kDefault(),
          m_compare() {}
    // The derived class clears: here it is no longer known how a value is deleted.
    ~CTreeMap() override = default;

    tagNode* findNode(const TKey& key) const { return findNode(m_pRoot, key); }

    /** Inserts a key, copied or moved, unless it is there. @return the new node, null if none was made. */
    template <class K, class V> tagNode* insert(K&& key, V&& value) {
        tagNode* pParent = nullptr;
        int iOrder = 0;
        for (tagNode* pNode = m_pRoot; pNode; pNode = iOrder > 0 ? pNode->pLeft : pNode->pRight) {
            pParent = pNode;
            iOrder = compare(pNode, key);
            if (iOrder == 0)
                return nullptr;
        }
        tagNode* const pNode = makeNode(std::forward<K>(key), std::forward<V>(value));
        if (pNode)
            link(pNode, pParent, iOrder);
        return pNode;
    }

    void freePairs() noexcept {
        delete[] m_pPairs;
        m_pPairs = nullptr;
        m_uiPairIndex = 0;
    }

private:
    // What a class compares lies mostly elsewhere, as a text does: the way down goes on being fetched meanwhile.
    int compare(const tagNode* pNode, const TKey& key) const {
        if constexpr (std::is_class_v<TKey>) {
            prefetch(pNode->pLeft);
            prefetch(pNode->pRight);
        }
        return m_compare(pNode->key, key);
    }
    // The middle of what a step reads, from inside the key to the right link. Null is harmless.
    static void prefetch(const tagNode* pNode) noexcept {
        __builtin_prefetch(reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(pNode) + sizeof(TKey)));
    }

    tagNode* findNode(tagNode* pNode, const TKey& key) const {
        while (pNode) {
            const int iOrder = compare(pNode, key);
            if (iOrder == 0)
                break;
            pNode = iOrder > 0 ? pNode->pLeft : pNode->pRight;
        }
        return pNode;
    }

    template <class V> tagNode* makeNode(TKey&& key, V&& value) {
        return new tagNode{std::move(key), std::forward<V>(value), nullptr, nullptr, nullptr, 0, 0, 0};
    }
    template <class V> tagNode* makeNode(const TKey& key, V&& value) {
        tagNode* const pNode = new tagNode{key, std::forward<V>(value), nullptr, nullptr, nullptr, 0, 0, 0};
        // A text whose copy found no memory is another key: in the tree it would break the order.
        if (!std::is_trivially_copyable_v<TKey> && pNode && m_compare(pNode->key, key) != 0) {
            delete pNode;
            return nullptr;
        }
        return pNode;
    }

    void link(tagNode* pNode, tagNode* pParent, int iOrder) noexcept {
        pNode->pParent = pParent;
        if (!pParent)
            m_pRoot = pNode;
        else
            (iOrder > 0 ? pParent->pLeft : pParent->pRight) = pNode;
        if (m_bUpdateNode)
            setRoot(getCore(pNode).updateChanged(pParent));
        ++m_uiCount;
        freePairs();
    }

    bool removeNode(tagNode* pNode) {
        if (!pNode)
            return false;
        setRoot(getCore(pNode).remove(pNode, m_bUpdateNode));
        --m_uiCount;
        freePairs();
        deleteNode(pNode);
        return true;
    }

    void deleteNode(tagNode* pNode) {
        if constexpr (std::is_base_of_v<COwningContainer, TBase>)
            this->deleteIfOwned(pNode->getValue());
        delete pNode;
    }

    void deleteNodes(tagNode* pNode) {
        if (!pNode)
            return;
        deleteNodes(pNode->pLeft);
        deleteNodes(pNode->pRight);
        deleteNode(pNode);
    }

    static unsigned int countNodes(const tagNode* pNode) noexcept {
        return pNode ? countNodes(pNode->pLeft) + countNodes(pNode->pRight) + 1 : 0;
    }

    CTreeCore getCore(const tagNode* pNode) const noexcept {
        const auto* const pStart = reinterpret_cast<const unsigned char*>(pNode);
        const auto* const pLinks = reinterpret_cast<const unsigned char*>(&pNode->pLeft);
        return CTreeCore(m_pRoot, static_cast<unsigned int>(pLinks - pStart));
    }
    void setRoot(void* pRoot) noexcept { m_pRoot = static_cast<tagNode*>(pRoot); }
};
} // namespace Orlix
