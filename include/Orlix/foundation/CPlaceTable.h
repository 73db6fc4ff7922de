#pragma once

#include <Orlix/foundation/CObject.h>

#include <cstddef>

namespace Orlix {

/** A table from numbers to places: finding, entering and removing take constant time.
 *
 *  Open addressing with linear probing; a removal closes the gap, so nothing is left behind by entries that come and
 *  go (Knuth, The Art of Computer Programming, volume 3, section 6.4, algorithm R). An empty table holds no memory.
 *  Threads: none of its own; the owner locks. */
class ORLIX_API CPlaceTable {
public:
    CPlaceTable() noexcept : m_pSlots(nullptr), m_uiSlots(0), m_uiCount(0) {}
    CPlaceTable(const CPlaceTable&) = delete;
    CPlaceTable& operator=(const CPlaceTable&) = delete;
    ~CPlaceTable() { clear(); }

    unsigned int getCount() const noexcept { return m_uiCount; }

    /** Enters a number or changes its place. @param ulNumber any value. @param uiPlace any but UINT_MAX.
     *  @return false, and nothing changes, if there is no memory. */
    bool set(unsigned long ulNumber, unsigned int uiPlace);
    /** @return where the place stands, valid until the next change; null if the number is not there. */
    const unsigned int* find(unsigned long ulNumber) const noexcept;
    /** @return false if the number was not there. */
    bool remove(unsigned long ulNumber) noexcept;
    /** Removes all and frees the memory. */
    void clear() noexcept;

private:
    struct tagSlot {
        unsigned long ulNumber;
        unsigned int uiPlace; // UINT_MAX in a free slot
    };
    tagSlot* m_pSlots;      // owned
    unsigned int m_uiSlots; // 0 or a power of two, at least twice the count
    unsigned int m_uiCount;

    unsigned int getHome(unsigned long ulNumber) const noexcept;
    unsigned int findSlot(unsigned long ulNumber) const noexcept;
    bool grow();
};
} // namespace Orlix
