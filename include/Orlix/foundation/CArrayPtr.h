#pragma once

#include <Orlix/foundation/CObject.h>

namespace Orlix {

/** Owns one plain block of CMemory and knows how many elements it holds. Copying moves the ownership, so that a block
 *  passes by value through a call and is freed exactly once.
 *
 *  Elements are bytes and characters: none is constructed or destroyed. Threads: none of its own. */
template <class T> class ORLIX_API CArrayPtr : public CObject {
    ORLIX_HEAP_CLASS(L"CArrayPtr")

public:
    CArrayPtr() noexcept : m_pArray(nullptr), m_uiSize(0) {}
    /** @param pArray a block of CMemory, taken over; may be null. @param uiSize its elements. */
    CArrayPtr(T* pArray, unsigned int uiSize) noexcept : m_pArray(pArray), m_uiSize(uiSize) {}
    /** Takes the block from the source, which is empty afterwards. */
    CArrayPtr(const CArrayPtr& aryOther) noexcept : CObject(), m_pArray(nullptr), m_uiSize(0) { takeFrom(aryOther); }
    ~CArrayPtr() override { freeArray(); }

    /** Frees its own block and takes that of the source, which is empty afterwards; from itself nothing changes. */
    CArrayPtr& operator=(const CArrayPtr& aryOther) noexcept {
        if (this != &aryOther) {
            freeArray();
            takeFrom(aryOther);
        }
        return *this;
    }

    /** The block, still owned here; null when empty. */
    T* getArray() const noexcept { return m_pArray; }
    /** The number of elements. */
    unsigned int getSize() const noexcept { return m_uiSize; }
    /** @param uiIndex must be below the size. */
    T& operator[](unsigned int uiIndex) const noexcept { return m_pArray[uiIndex]; }
    bool isEmpty() const noexcept { return m_pArray == nullptr; }

protected:
    T* m_pArray; // owned
    unsigned int m_uiSize;

private:
    // The source is const so that a temporary can be one too; only its ownership moves.
    void takeFrom(const CArrayPtr& aryOther) noexcept {
        CArrayPtr& arySource = const_cast<CArrayPtr&>(aryOther);
        m_pArray = arySource.m_pArray;
        m_uiSize = arySource.m_uiSize;
        arySource.m_pArray = nullptr;
        arySource.m_uiSize = 0;
    }
    void freeArray() noexcept {
        if (m_pArray)
            CMemory::free(m_pArray);
        m_pArray = nullptr;
        m_uiSize = 0;
    }
};
} // namespace Orlix
