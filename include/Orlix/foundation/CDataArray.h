#pragma once

#include <Orlix/foundation/CObject.h>

#include <algorithm>
#include <climits>
#include <new>
#include <type_traits>
#include <utility>

namespace Orlix {

/** Finds out whether a class brings its own array form of operator new. */
template <class T, class = void> struct tagHasArrayNew : std::false_type {};
template <class T>
struct tagHasArrayNew<T, std::void_t<decltype(T::operator new[](std::size_t(0)))>> : std::true_type{};

/** The next step of the growth series of the arrays: 0, 1, 2, 4, 7, 11, 17, 26 and so on.
 *  @return the first step from uiCapacity on that holds uiNeeded; 0 if 32 bits cannot reach it. */
constexpr unsigned int growCapacity(unsigned int uiCapacity, unsigned int uiNeeded) noexcept {
    while (uiCapacity < uiNeeded) {
        const unsigned int uiNext = (uiCapacity * 3 >> 1) + 1;
        if (uiNext <= uiCapacity)
            return 0;
        uiCapacity = uiNext;
    }
    return uiCapacity;
}

/** A growing row of values.
 *
 *  An empty array holds no memory; capacity shrinks only by clear. All slots of a class are constructed when the
 *  buffer is made, and elements enter by assignment. Without memory an added element is dropped.
 *  Threads: none of its own; the owner locks. */
template <class T> class ORLIX_API CDataArray : public CObject {
    ORLIX_HEAP_CLASS(L"CDataArray")
    static_assert(alignof(T) <= 8, "blocks of CMemory are aligned to 8 bytes");

public:
    /** @param uiCapacity slots to allocate at once, taken exactly; 0 allocates nothing. */
    explicit CDataArray(unsigned int uiCapacity = 0)
        : m_pData(nullptr), m_uiCapacity(uiCapacity), m_uiSize(0), m_uiCursor(0), m_tDefault(), m_uiAllocated(0) {
        if (uiCapacity != 0)
            reallocate();
    }
    CDataArray(const CDataArray&) = delete;
    CDataArray& operator=(const CDataArray&) = delete;
    ~CDataArray() override { freeBuffer(m_pData, m_uiAllocated); }

    unsigned int getSize() const noexcept { return m_uiSize; }
    /** Slots; after a failed growth more than there really are. */
    unsigned int getCapacity() const noexcept { return m_uiCapacity; }

    /** Appends a copy; tElement may be an element of this array. Dropped when there is no memory. */
    void add(const T& tElement) {
        if constexpr (std::is_scalar_v<T>)
            addScalar(tElement);
        else if (m_uiSize < m_uiAllocated)
            m_pData[m_uiSize++] = tElement;
        else
            growAndAdd(tElement);
    }

    /** The element, or past the end a default one; what is written to that one is gone with the next read of it. */
    T& operator[](unsigned int uiIndex) {
        if (uiIndex < m_uiSize)
            return m_pData[uiIndex];
        m_tDefault = T();
        return m_tDefault;
    }
    const T& operator[](unsigned int uiIndex) const {
        // A branch that is foretold costs less than choosing between two addresses.
        if (__builtin_expect_with_probability(uiIndex < m_uiSize, 1, 1.0))
            return m_pData[uiIndex];
        return m_tDefault;
    }
    T& getAt(unsigned int uiIndex) { return (*this)[uiIndex]; }
    const T& getAt(unsigned int uiIndex) const { return (*this)[uiIndex]; }

    /** @return the first index whose element equals tElement, -1 if there is none. */
    int find(const T& tElement) const {
        const T* const pEnd = m_pData + m_uiSize;
        const T* const pFound = std::find<const T*>(m_pData, pEnd, tElement);
        return pFound == pEnd ? -1 : static_cast<int>(pFound - m_pData);
    }

    /** Removes one element and keeps the order of the others; past the end nothing happens. */
    void removeAt(unsigned int uiIndex) {
        if (uiIndex >= m_uiSize)
            return;
        std::move(m_pData + uiIndex + 1, m_pData + m_uiSize, m_pData + uiIndex);
        m_pData[--m_uiSize] = T();
    }

    /** Removes the first element that equals tElement, if there is one. */
    void remove(const T& tElement) {
        const int iIndex = find(tElement);
        if (iIndex >= 0)
            removeAt(static_cast<unsigned int>(iIndex));
    }

    /** Removes all elements and frees the buffer. */
    void clear() {
        freeBuffer(m_pData, m_uiAllocated);
        m_pData = nullptr;
        m_uiCapacity = 0;
        m_uiSize = 0;
        m_uiCursor = 0;
        m_uiAllocated = 0;
    }

    /** One growth step for many elements to come. @param uiNeeded slots in all. */
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
    T* m_pData; // owned
    unsigned int m_uiCapacity;
    unsigned int m_uiSize;
    unsigned int m_uiCursor;
    T m_tDefault;
    unsigned int m_uiAllocated; // slots that m_pData really has; below m_uiCapacity only after a failed growth

private:
    // By value, as the element may live in the buffer that is about to go. The size is written last: for all that the
    // compiler knows, storing an int may change it, and then it would be read back for each element of a row.
    void addScalar(T tElement) {
        const unsigned int uiSize = m_uiSize;
        if (uiSize >= m_uiAllocated && !growByOne())
            return;
        m_pData[uiSize] = tElement;
        m_uiSize = uiSize + 1;
    }

    void growAndAdd(const T& tElement) {
        T tCopy(tElement); // the element may live in the buffer that is about to go
        if (growByOne())
            m_pData[m_uiSize++] = std::move(tCopy);
    }

    [[gnu::noinline]] bool growByOne() {
        if (m_uiSize == UINT_MAX)
            return false;
        ensureCapacity(m_uiSize + 1);
        return m_uiSize < m_uiAllocated;
    }

    void reallocate() {
        T* const pData = allocBuffer(m_uiCapacity);
        if (!pData)
            return;
        std::move(m_pData, m_pData + m_uiSize, pData);
        freeBuffer(m_pData, m_uiAllocated);
        m_pData = pData;
        m_uiAllocated = m_uiCapacity;
    }

    static T* allocBuffer(unsigned int uiCount) {
        if (uiCount > UINT_MAX / sizeof(T))
            return nullptr;
        if constexpr (tagHasArrayNew<T>::value) {
            return new T[uiCount];
        } else {
            T* const pData = static_cast<T*>(CMemory::malloc(static_cast<unsigned int>(uiCount * sizeof(T)), 0));
            if constexpr (!std::is_scalar_v<T>) { // numbers and pointers stay as the block comes
                for (unsigned int i = 0; pData && i < uiCount; ++i)
                    ::new (pData + i) T;
            }
            return pData;
        }
    }

    static void freeBuffer(T* pData, [[maybe_unused]] unsigned int uiCount) {
        if (!pData)
            return;
        if constexpr (tagHasArrayNew<T>::value) {
            delete[] pData;
        } else {
            if constexpr (!std::is_trivially_destructible_v<T>) {
                while (uiCount != 0)
                    pData[--uiCount].~T();
            }
            CMemory::free(pData);
        }
    }
};
} // namespace Orlix
