#include <Orlix/foundation/CVariant.h>

#include <Orlix/memory/CMemory.h>

#include <climits>
#include <cstddef>

namespace Orlix {
namespace {

/** The bytes of a number, or of an array's element; 0 for empty and for free tags. */
unsigned int getWidth(CVariant::EType eType) {
    static constexpr unsigned char WIDTH[CVariant::TYPE_WCHAR_ARRAY] = {
        0, sizeof(wchar_t), 1, 1, 2, 2, 4, 4, 0, 0, 8, 8, sizeof(float), sizeof(double), sizeof(bool)};
    if (eType > CVariant::TYPE_BOOL_ARRAY)
        return 0;
    return WIDTH[eType < CVariant::TYPE_WCHAR_ARRAY ? eType : eType - CVariant::TYPE_BOOL];
}

bool isArray(CVariant::EType eType) { return eType >= CVariant::TYPE_WCHAR_ARRAY && getWidth(eType) != 0; }

/** @return null without memory, and for more than 32 bits can count. */
void* allocElements(unsigned int uiCount, unsigned int uiWidth) {
    if (uiCount > UINT_MAX / uiWidth)
        return nullptr;
    return CMemory::malloc(uiCount * uiWidth, 0);
}
} // namespace

CVariant& CVariant::operator=(const CVariant& other) {
    if (this == &other)
        return *this;
    clear();
    copyFrom(other);
    return *this;
}

void CVariant::copyFrom(const CVariant& other) {
    if (isArray(other.m_eType)) {
        copyArray(other.m_pArray, other.getCount(), other.m_eType);
        return;
    }
    // An array of its own stays behind unfreed, on purpose: to clear first is for operator=.
    std::memmove(m_aryValue, other.m_aryValue, getWidth(other.m_eType));
    m_eType = other.m_eType;
}

void CVariant::clear() noexcept {
    if (isArray(m_eType) && m_pArray)
        CMemory::free(m_pArray);
    m_pArray = nullptr;
    m_eType = TYPE_EMPTY;
}

unsigned int CVariant::getCount() const noexcept {
    unsigned int uiCount = 0;
    if (isArray(m_eType))
        std::memcpy(&uiCount, m_aryValue, sizeof(uiCount));
    return uiCount;
}

void CVariant::copyArray(const void* pSource, unsigned int uiCount, EType eType) {
    const unsigned int uiWidth = getWidth(eType);
    if (!pSource)
        uiCount = 0;
    // One element more than there are; only characters get anything there. A count that wraps is as good as no memory.
    unsigned char* const pArray =
        uiCount == UINT_MAX ? nullptr : static_cast<unsigned char*>(allocElements(uiCount + 1, uiWidth));
    if (pArray && uiCount != 0)
        std::memcpy(pArray, pSource, std::size_t{uiCount} * uiWidth);
    if (pArray && eType == TYPE_WCHAR_ARRAY)
        std::memset(pArray + std::size_t{uiCount} * uiWidth, 0, uiWidth);
    clear(); // only now, for the source may be its own array
    if (!pArray)
        return;
    std::memcpy(m_aryValue, &uiCount, sizeof(uiCount));
    m_pArray = pArray;
    m_eType = eType;
}
} // namespace Orlix
