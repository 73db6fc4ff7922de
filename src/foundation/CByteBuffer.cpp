#include <Orlix/foundation/CByteBuffer.h>

#include <Orlix/system/CLogUtility.h>

#include <algorithm>
#include <climits>
#include <functional>

namespace Orlix {
namespace {

bool reportNoMemory() {
    CLogEngine::error2(L"Out of memory.");
    return false;
}
} // namespace

CByteBuffer::CByteBuffer(unsigned int uiSize, unsigned int uiIncrement)
    : m_pBuffer(nullptr), m_bOwn(true), m_uiCapacity(0), m_uiSize(0), m_uiIncrement(uiIncrement), m_uiPosition(0),
      m_bDetached(false) {
    setSize(uiSize);
}

CByteBuffer::~CByteBuffer() {
    if (!m_bDetached)
        clear();
}

void CByteBuffer::setSize(unsigned int uiSize) {
    if (uiSize == 0)
        clear();
    else
        requstSize(uiSize);
}

void CByteBuffer::clear() noexcept {
    if (m_pBuffer && m_bOwn) {
        CMemory::free(m_pBuffer);
        m_pBuffer = nullptr;
        m_bDetached = false;
    }
    m_uiCapacity = 0;
    m_uiSize = 0;
    m_uiPosition = 0;
}

void CByteBuffer::attachBuffer(unsigned char* pBuffer, unsigned int uiCapacity, unsigned int uiSize,
                               bool bOwn) noexcept {
    if (pBuffer != m_pBuffer)
        clear();
    m_pBuffer = pBuffer;
    m_bOwn = bOwn;
    m_uiCapacity = pBuffer ? uiCapacity : 0;
    m_uiSize = pBuffer ? uiSize : 0;
    m_uiPosition = 0;
    m_bDetached = false;
}

void CByteBuffer::detachBuffer() noexcept {
    clear();
    m_bOwn = true;
    m_bDetached = m_pBuffer != nullptr;
}

void CByteBuffer::requstSize(unsigned int uiSize) {
    unsigned char* pReplaced = nullptr;
    changeSize(uiSize, nullptr, pReplaced);
    if (pReplaced)
        CMemory::free(pReplaced);
}

/** @param pInUse bytes that the caller still needs where they are, also if they lie in the block; may be null.
 *  @param pReplaced becomes the block to be freed, if the content moves to another one.
 *  @return false, and nothing changes, without memory. */
bool CByteBuffer::changeSize(unsigned int uiSize, const unsigned char* pInUse, unsigned char*& pReplaced) {
    if (uiSize > m_uiCapacity)
        return !m_bOwn || grow(uiSize, pInUse, pReplaced);
    m_uiSize = uiSize;
    return true;
}

bool CByteBuffer::grow(unsigned int uiSize, const unsigned char* pInUse, unsigned char*& pReplaced) {
    const unsigned int uiCapacity = m_uiIncrement + uiSize; // linear on purpose: the caller chose the increment
    if (uiCapacity < uiSize)
        return reportNoMemory();
    const unsigned int uiKept = std::min(m_uiSize, uiCapacity); // less only if it was attached with a wrong size
    unsigned char* pBlock = extendBlock(uiCapacity, pInUse);
    if (!pBlock) {
        pBlock = static_cast<unsigned char*>(CMemory::malloc(uiCapacity, 0));
        if (!pBlock)
            return reportNoMemory();
        if (uiKept != 0)
            std::memcpy(pBlock, m_pBuffer, uiKept);
        pReplaced = m_pBuffer; // a detached one too, as the header warns
    }
    std::memset(pBlock + uiKept, 0, uiCapacity - uiKept);
    m_pBuffer = pBlock;
    m_bDetached = false;
    m_uiCapacity = uiCapacity;
    m_uiSize = uiSize;
    return true;
}

/** With steps of a fixed size a content that is copied at each of them costs time by the square of its size.
 *  @return the block with its content, which may have moved; null if another one has to be taken. */
unsigned char* CByteBuffer::extendBlock(unsigned int uiCapacity, const unsigned char* pInUse) {
    const std::less<const unsigned char*> isBefore; // a test for pointers to different objects, too
    const bool bInBlock = pInUse && !isBefore(pInUse, m_pBuffer) && isBefore(pInUse, m_pBuffer + m_uiCapacity);
    if (!m_pBuffer || m_bDetached || bInBlock)
        return nullptr;
    return static_cast<unsigned char*>(CMemory::extend(m_pBuffer, uiCapacity));
}

void CByteBuffer::writeBuffer(const unsigned char* pData, unsigned int uiCount) {
    if (!pData && uiCount != 0)
        return;
    unsigned char* pReplaced = nullptr;
    if (uiCount > UINT_MAX - m_uiPosition)
        reportNoMemory();
    else if (changeSize(m_uiPosition + uiCount, pData, pReplaced) && m_pBuffer && pData) {
        // Beyond the capacity of a block that is not owned, too: its size stays, but the caller knows its room.
        std::memmove(m_pBuffer + m_uiPosition, pData, uiCount);
        m_uiPosition += uiCount;
    }
    if (pReplaced) // only now, for the data may lie in it
        CMemory::free(pReplaced);
}

unsigned int CByteBuffer::readBuffer(unsigned char* pTarget, unsigned int uiCount) noexcept {
    if (!pTarget || m_uiPosition >= m_uiSize)
        return 0;
    uiCount = std::min(uiCount, m_uiSize - m_uiPosition);
    memcopy(pTarget, m_pBuffer + m_uiPosition, uiCount);
    m_uiPosition += uiCount;
    return uiCount;
}

void CByteBuffer::moveToHead(unsigned int uiCount) noexcept {
    const unsigned int uiRest = uiCount < m_uiSize ? m_uiSize - uiCount : 0;
    if (uiRest != 0 && uiCount != 0) // a content that only waits for more stays where it is
        std::memmove(m_pBuffer, m_pBuffer + uiCount, uiRest);
    m_uiSize = uiRest;
    m_uiPosition = uiRest;
}

void CByteBuffer::memcopy(unsigned char* pTarget, const unsigned char* pSource, unsigned int uiCount) noexcept {
    if (!pTarget || !pSource)
        return;
    const std::less_equal<const unsigned char*> isNotBehind; // a test for pointers to different objects, too
    if (isNotBehind(pTarget, pSource) || isNotBehind(pSource + uiCount, pTarget)) {
        std::memmove(pTarget, pSource, uiCount);
        return;
    }
    // The target begins within the source: what a copy from the front has written is what it reads next.
    for (const unsigned int uiStep = static_cast<unsigned int>(pTarget - pSource); uiCount != 0;) {
        const unsigned int uiBytes = std::min(uiStep, uiCount);
        std::memcpy(pTarget, pSource, uiBytes);
        pTarget += uiBytes;
        pSource += uiBytes;
        uiCount -= uiBytes;
    }
}

void CByteBuffer::memclear(unsigned char* pTarget, int iValue, unsigned int uiCount) noexcept {
    if (pTarget)
        std::memset(pTarget, iValue, uiCount);
}
} // namespace Orlix
