#include <Orlix/foundation/CPlaceTable.h>

#include <climits>

namespace Orlix {
namespace {

constexpr unsigned int FIRST_SLOTS = 64;
constexpr unsigned int FREE = UINT_MAX;
constexpr unsigned long GOLDEN =
    0x9E3779B97F4A7C15; // 2^64 by the golden ratio: spreads numbers that lie close together
} // namespace

unsigned int CPlaceTable::getHome(unsigned long ulNumber) const noexcept {
    return static_cast<unsigned int>(ulNumber * GOLDEN >> 32) & (m_uiSlots - 1);
}

/** The slot of the number, or the free one where it would stand. Not on a table without slots. */
unsigned int CPlaceTable::findSlot(unsigned long ulNumber) const noexcept {
    unsigned int uiSlot = getHome(ulNumber);
    while (m_pSlots[uiSlot].uiPlace != FREE && m_pSlots[uiSlot].ulNumber != ulNumber)
        uiSlot = (uiSlot + 1) & (m_uiSlots - 1);
    return uiSlot;
}

const unsigned int* CPlaceTable::find(unsigned long ulNumber) const noexcept {
    if (m_uiCount == 0)
        return nullptr;
    const tagSlot& slot = m_pSlots[findSlot(ulNumber)];
    return slot.uiPlace == FREE ? nullptr : &slot.uiPlace;
}

bool CPlaceTable::set(unsigned long ulNumber, unsigned int uiPlace) {
    if (m_uiCount >= m_uiSlots / 2 && !find(ulNumber) && !grow())
        return false;
    tagSlot& slot = m_pSlots[findSlot(ulNumber)];
    m_uiCount += slot.uiPlace == FREE;
    slot = {ulNumber, uiPlace};
    return true;
}

bool CPlaceTable::grow() {
    const unsigned int uiSlots = m_uiSlots == 0 ? FIRST_SLOTS : m_uiSlots * 2;
    if (uiSlots > UINT_MAX / sizeof(tagSlot))
        return false;
    tagSlot* const pSlots =
        static_cast<tagSlot*>(CMemory::malloc(static_cast<unsigned int>(uiSlots * sizeof(tagSlot)), 0));
    if (!pSlots)
        return false;
    for (unsigned int i = 0; i < uiSlots; ++i)
        pSlots[i] = {0, FREE};
    tagSlot* const pOld = m_pSlots;
    const unsigned int uiOld = m_uiSlots;
    m_pSlots = pSlots;
    m_uiSlots = uiSlots;
    for (unsigned int i = 0; i < uiOld; ++i) {
        if (pOld[i].uiPlace != FREE)
            m_pSlots[findSlot(pOld[i].ulNumber)] = pOld[i];
    }
    if (pOld)
        CMemory::free(pOld);
    return true;
}

bool CPlaceTable::remove(unsigned long ulNumber) noexcept {
    if (!find(ulNumber))
        return false;
    unsigned int uiGap = findSlot(ulNumber);
    for (unsigned int i = (uiGap + 1) & (m_uiSlots - 1); m_pSlots[i].uiPlace != FREE; i = (i + 1) & (m_uiSlots - 1)) {
        // An entry moves into the gap unless its home lies behind the gap, where a search for it would begin.
        const unsigned int uiFromHome = (i - getHome(m_pSlots[i].ulNumber)) & (m_uiSlots - 1);
        if (uiFromHome < ((i - uiGap) & (m_uiSlots - 1)))
            continue;
        m_pSlots[uiGap] = m_pSlots[i];
        uiGap = i;
    }
    m_pSlots[uiGap].uiPlace = FREE;
    --m_uiCount;
    return true;
}

void CPlaceTable::clear() noexcept {
    if (m_pSlots)
        CMemory::free(m_pSlots);
    m_pSlots = nullptr;
    m_uiSlots = 0;
    m_uiCount = 0;
}
} // namespace Orlix
