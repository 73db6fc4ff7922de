#pragma once

#include <Orlix/foundation/CDataArray.h>
#include <Orlix/foundation/COwningContainer.h>

#include <algorithm>
#include <climits>

namespace Orlix {

/** A growing row of pointers to objects, which it deletes while it owns them.
 *
 *  Grows like CDataArray; without memory an added object is dropped, not deleted. Threads: none of its own. */
template <class T> class ORLIX_API CObjectArray : public COwningContainer {
    ORLIX_HEAP_CLASS(L"CObjectArray")

public:
    /** @param uiCapacity slots to allocate at once, taken exactly; 0 allocates nothing. */
    explicit CObjectArray(unsigned int uiCapacity = 0)
        : m_ppData(nullptr), m_uiCapacity(uiCapacity), m_uiSize(0), m_uiCursor(0), m_uiAllocated(0) {
        if (uiCapacity != 0)
            reallocate();
    }
    CObjectArray(const CObjectArray&) = delete;
    CObjectArray& operator=(const CObjectArray&) = delete;
    ~CObjectArray() override { clear(); }

    unsigned int getSize() const noexcept { return m_uiSize; }
    /** Slots; after a failed growth more than there really are. */
    unsigned int getCapacity() const noexcept { return m_uiCapacity; }

    /** Appends; null is an element like any other. */
    void add(T* pObject) {
        const unsigned int uiSize = m_uiSize;
        if (uiSize >= m_uiAllocated && !growByOne())
            return;
        m_ppData[uiSize] = pObject;
        m_uiSize = uiSize + 1;
    }

    /** The object, still owned here; null past the end. */
    T* operator[](unsigned int uiIndex) const noexcept { return uiIndex < m_uiSize ? m_ppData[uiIndex] : nullptr; }
    T* getAt(unsigned int uiIndex) const noexcept { return (*this)[uiIndex]; }

    /** Puts an object in the place of another, which is deleted if owned; past the end nothing happens, and pObject
     * stays the caller's. */
    void setAt(unsigned int uiIndex, T* pObject) {
        if (uiIndex >= m_uiSize)
            return;
        T* const pOld = m_ppData[uiIndex];
        m_ppData[uiIndex] = pObject; // before the deletion: a destructor may look at the array
        if (pOld != pObject)
            deleteIfOwned(pOld);
    }

    /** @return the first index that holds pObject, -1 if there is none. */
    int find(const T* pObject) const noexcept {
        for (unsigned int i = 0; i < m_uiSize; ++i) {
            if (m_ppData[i] == pObject)
                return static_cast<int>(i);
        }
        return -1;
    }

    /** Removes one element, deletes it if owned, and keeps the order of the others; past the end nothing happens. */
    void removeAt(unsigned int uiIndex) {
        if (uiIndex >= m_uiSize)
            return;
        deleteIfOwned(m_ppData[uiIndex]);
        std::copy(m_ppData + uiIndex + 1, m_ppData + m_uiSize, m_ppData + uiIndex);
        m_ppData[--m_uiSize] = nullptr;
    }

    /** Removes the first place that holds pObject, if there is one. */
    void remove(const T* pObject) {
        const int iIndex = find(pObject);
        if (iIndex >= 0)
            removeAt(static_cast<unsigned int>(iIndex));
    }

    /** Removes all elements that match, deletes the owned ones, and keeps the order of the others.
     *  @param match called with each element; neither it nor a destructor may touch the array. */
    template <class TMatch> void removeMatching(const TMatch& match) {
        unsigned int uiKept = 0;
        for (unsigned int i = 0; i < m_uiSize; ++i) {
            if (match(static_cast<const T*>(m_ppData[i])))
                deleteIfOwned(m_ppData[i]);
            else
                m_ppData[uiKept++] = m_ppData[i];
        }
        std::fill(m_ppData + uiKept, m_ppData + m_uiSize, nullptr);
        m_uiSize = uiKept;
    }

    /** Appends the elements of another array. If both own theirs, the other is empty afterwards, otherwise it keeps
     *  them too. @return false, and nothing changes, without memory or if the other array is this one. */
    bool takeAll(CObjectArray& aryOther) {
        if (&aryOther == this || aryOther.m_uiSize > UINT_MAX - m_uiSize)
            return false;
        ensureCapacity(m_uiSize + aryOther.m_uiSize);
        if (m_uiSize + aryOther.m_uiSize > m_uiAllocated)
            return false;
        std::copy(aryOther.m_ppData, aryOther.m_ppData + aryOther.m_uiSize, m_ppData + m_uiSize);
        m_uiSize += aryOther.m_uiSize;
        if (m_bOwn && aryOther.m_bOwn) {
            aryOther.m_uiSize = 0; // so that the elements stay
            aryOther.clear();
        }
        return true;
    }

    /** Removes all elements, deletes the owned ones from the first on, and frees the buffer. */
    void clear() {
        for (unsigned int i = 0; m_bOwn && i < m_uiSize; ++i) // the size is read anew: a destructor may remove others
            deleteIfOwned(m_ppData[i]);
        if (m_ppData)
            CMemory::free(m_ppData);
        m_ppData = nullptr;
        m_uiCapacity = 0;
        m_uiSize = 0;
        m_uiCursor = 0;
        m_uiAllocated = 0;
    }

    /** One growth step for many objects to come. @param uiNeeded slots in all. */
    void ensureCapacity(unsigned int uiNeeded) {
        if (uiNeeded <= m_uiAllocated)
            return;
        const unsigned int uiCapacity = growCapacity(m_uiCapacity, uiNeeded);
        if (uiCapacity == 0)
            return;
        // Written before the allocation, on purpose: after a failure the array believes in slots that it lacks.
        m_uiCapacity = uiCapacity;
        reallocate();
    }

protected:
    T** m_ppData; // owned; unused slots are null
    unsigned int m_uiCapacity;
    unsigned int m_uiSize;
    unsigned int m_uiCursor;
    unsigned int m_uiAllocated; // slots that m_ppData really has; below m_uiCapacity only after a failed growth

private:
    [[gnu::noinline]] bool growByOne() {
        if (m_uiSize == UINT_MAX)
            return false;
        ensureCapacity(m_uiSize + 1);
        return m_uiSize < m_uiAllocated;
    }

    void reallocate() {
        if (m_uiCapacity > UINT_MAX / sizeof(T*))
            return;
        T** const ppData = static_cast<T**>(CMemory::malloc(static_cast<unsigned int>(m_uiCapacity * sizeof(T*)), 0));
        if (!ppData)
            return;
        std::fill(std::copy(m_ppData, m_ppData + m_uiSize, ppData), ppData + m_uiCapacity, nullptr);
        if (m_ppData)
            CMemory::free(m_ppData);
        m_ppData = ppData;
        m_uiAllocated = m_uiCapacity;
    }
};
} // namespace Orlix
