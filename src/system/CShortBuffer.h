#pragma once

#include <Orlix/memory/CMemory.h>

namespace Orlix {

/** Room for some elements without constructors: in the object itself up to uiShort, a block of the heap above. */
template <class T, unsigned int uiShort> class CShortBuffer {
public:
    /** @param uiCount times the size of T within 32 bits. */
    explicit CShortBuffer(unsigned int uiCount)
        : m_pBuffer(uiCount <= uiShort
                        ? m_aryShort
                        : static_cast<T*>(CMemory::malloc(uiCount * static_cast<unsigned int>(sizeof(T)), 0))) {}
    CShortBuffer(const CShortBuffer&) = delete;
    CShortBuffer& operator=(const CShortBuffer&) = delete;
    ~CShortBuffer() {
        if (m_pBuffer && m_pBuffer != m_aryShort)
            CMemory::free(m_pBuffer);
    }

    /** Not initialised; null without memory. */
    T* get() noexcept { return m_pBuffer; }
    const T* get() const noexcept { return m_pBuffer; }

private:
    T* m_pBuffer;
    T m_aryShort[uiShort];
};
} // namespace Orlix
