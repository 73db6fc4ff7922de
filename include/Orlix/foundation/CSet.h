#pragma once

#include <Orlix/foundation/CObjectMap.h>

namespace Orlix {

/** Keys in the order of a comparator, each once: a map whose values nobody sees.
 *
 *  @tparam C the order, see MapCompare.h. Threads: none of its own; the owner locks. */
template <class K, class C> class ORLIX_API CSet : private CObjectMap<K, K, C> {
    ORLIX_HEAP_CLASS(L"CSet")

    using TMap = CObjectMap<K, K, C>;

public:
    using TMap::clear;
    using TMap::getCount;

    /** @return false, and nothing changes, if the key is there already or there is no memory. */
    bool add(const K& key) { return this->addItem(key, nullptr); }
    bool contains(const K& key) const { return this->findNode(key) != nullptr; }
    /** @return false, and nothing changes, if the key is absent. */
    bool remove(const K& key) { return this->deleteItem(key); }
};
} // namespace Orlix
