#pragma once

#include <Orlix/foundation/CDataArray.h>
#include <Orlix/foundation/CPlaceTable.h>

#include <cstdint>
#include <type_traits>

namespace Orlix {

/** Finds the elements of a long array at once, where the array alone is searched from its start.
 *
 *  The elements are different from each other. The array decides: an index that is not as long as it, for lack of
 *  memory or since the array was changed directly, is made anew or left out. Short arrays have none.
 *  @tparam T a pointer or an unsigned number. Threads: none of its own; who locks the array locks the index. */
template <class T> class ORLIX_API CArrayIndex {
public:
    /** @param ary outlives the index. */
    explicit CArrayIndex(CDataArray<T>& ary) noexcept : m_pArray(&ary), m_uiMoves(0) {}

    /** @return the first index that holds tElement, -1 if there is none. */
    int find(T tElement) {
        const unsigned int uiSize = m_pArray->getSize();
        if (uiSize <= SHORT_ARRAY || (!isInStep() && !renew()))
            return m_pArray->find(tElement);
        const unsigned int* const pPlace = m_table.find(numberOf(tElement));
        if (!pPlace)
            return -1;
        // Removals have only ever moved it towards the start.
        unsigned int i = *pPlace < uiSize ? *pPlace : uiSize - 1;
        while (i != 0 && (*m_pArray)[i] != tElement)
            --i;
        return (*m_pArray)[i] == tElement ? static_cast<int>(i) : m_pArray->find(tElement);
    }

    /** Appends to the array. @return false, and nothing changes, if it is there already or there is no memory. */
    bool add(T tElement) {
        if (find(tElement) >= 0)
            return false;
        const unsigned int uiSize = m_pArray->getSize();
        const bool bKept = isKept();
        m_pArray->add(tElement);
        if (m_pArray->getSize() == uiSize)
            return false;
        if (bKept)
            m_table.set(numberOf(tElement), uiSize); // without memory it falls out of step
        return true;
    }

    /** Removes from the array. @return false if it was not there. */
    bool remove(T tElement) {
        const int iIndex = find(tElement);
        if (iIndex >= 0)
            removeAt(static_cast<unsigned int>(iIndex));
        return iIndex >= 0;
    }

    /** Removes an element of the array, which lies inside it. */
    void removeAt(unsigned int uiIndex) {
        const bool bKept = isKept();
        const T tElement = (*m_pArray)[uiIndex];
        m_pArray->removeAt(uiIndex);
        if (!bKept)
            return;
        m_table.remove(numberOf(tElement));
        const unsigned int uiSize = m_pArray->getSize();
        if (uiSize <= SHORT_ARRAY / 2)
            m_table.clear();
        else if (uiIndex != uiSize && ++m_uiMoves > SHORT_ARRAY + uiSize / MOVES_DIVISOR)
            renew();
    }

    /** Clears the array. */
    void clear() {
        m_pArray->clear();
        m_table.clear();
    }

private:
    static constexpr unsigned int SHORT_ARRAY = 32; // searched faster than hashed
    static constexpr unsigned int MOVES_DIVISOR =
        16; // bounds how far a place may lie behind, against the cost of renew

    CDataArray<T>* m_pArray;
    CPlaceTable m_table;    // empty while the array is short
    unsigned int m_uiMoves; // removals that moved elements since the places were entered

    static unsigned long numberOf(T tElement) noexcept {
        if constexpr (std::is_pointer_v<T>)
            return reinterpret_cast<std::uintptr_t>(tElement);
        else
            return tElement;
    }

    bool isInStep() const noexcept { return m_table.getCount() == m_pArray->getSize(); }
    bool isKept() const noexcept { return m_table.getCount() != 0 && isInStep(); }

    [[gnu::noinline]] bool renew() {
        if (!isInStep())
            m_table.clear();
        m_uiMoves = 0;
        for (unsigned int i = 0; i < m_pArray->getSize(); ++i)
            m_table.set(numberOf((*m_pArray)[i]), i);
        return isInStep();
    }
};
} // namespace Orlix
