#include <Orlix/foundation/CString.h>

#include <Orlix/foundation/CStringConverter.h>

#include "foundation/CTextBuffer.h"
#include "foundation/StaticOrder.h"

#include <cwchar>

namespace Orlix {
namespace {

constexpr unsigned int NUMBER_CHARS = 32; // a rendered number with its terminator
constexpr unsigned int FLOAT_DECIMALS = 4;

// A terminated buffer, null without memory or for a size that 32 bits cannot hold.
wchar_t* allocBuffer(std::size_t uiLength) noexcept {
    wchar_t* const pBuffer = CTextBuffer::alloc(uiLength);
    if (pBuffer)
        pBuffer[uiLength] = 0;
    return pBuffer;
}

// The lesser of the text's length and uiCount.
unsigned int getBoundedLength(const wchar_t* pText, unsigned int uiCount) noexcept {
    return pText ? static_cast<unsigned int>(wcsnlen(pText, uiCount)) : 0;
}

const wchar_t* getText(const wchar_t* pBuffer) noexcept { return pBuffer ? pBuffer : L""; }

/** The matches of one pattern in one text, from left to right and without overlap, to be walked twice. The first ones
 *  are remembered, so that a usual text is searched only once and a long one needs no memory for its matches. */
class CMatches {
public:
    CMatches(const wchar_t* pText, unsigned int uiLength, const wchar_t* pPattern,
             unsigned int uiPatternLength) noexcept
        : m_pText(pText), m_uiLength(uiLength), m_pPattern(pPattern), m_uiPatternLength(uiPatternLength), m_uiCount(0) {
        for (int iPos = find(0); iPos >= 0; iPos = find(static_cast<unsigned int>(iPos) + m_uiPatternLength)) {
            if (m_uiCount < REMEMBERED)
                m_aryPos[m_uiCount] = iPos;
            ++m_uiCount;
        }
    }

    unsigned int getCount() const noexcept { return m_uiCount; }
    /** @param uiFrom where the search begins if the match is not remembered: behind the match before. */
    unsigned int getPos(unsigned int uiMatch, unsigned int uiFrom) const noexcept {
        return static_cast<unsigned int>(uiMatch < REMEMBERED ? m_aryPos[uiMatch] : find(uiFrom));
    }

private:
    static constexpr unsigned int REMEMBERED = 256;

    int find(unsigned int uiFrom) const noexcept {
        const int iFound = CStringCore::strstr(m_pText + uiFrom, m_uiLength - uiFrom, m_pPattern, m_uiPatternLength);
        return iFound < 0 ? -1 : iFound + static_cast<int>(uiFrom);
    }

    const wchar_t* m_pText;
    unsigned int m_uiLength;
    const wchar_t* m_pPattern;
    unsigned int m_uiPatternLength;
    unsigned int m_uiCount;
    int m_aryPos[REMEMBERED];
};

template <class T> CString render(T value) {
    wchar_t aryText[NUMBER_CHARS] = {};
    CStringConverter::toString(value, aryText);
    return CString(aryText);
}

CString render(float fValue) {
    wchar_t aryText[NUMBER_CHARS] = {};
    CStringConverter::toString(fValue, aryText, FLOAT_DECIMALS);
    return CString(aryText);
}
} // namespace

ORLIX_STATIC_STRING const CString STRING_NULL;

CString::CString(const wchar_t* pText) : CString() {
    if (pText)
        setCopy(pText, CStringCore::strlen(pText));
}

CString::CString(const wchar_t* pText, unsigned int uiCount) : CString() {
    setCopy(pText, getBoundedLength(pText, uiCount));
}

CString::CString(const CString& strOther) : CObject(strOther), m_pBuffer(nullptr), m_uiLength(0) {
    if (strOther.m_pBuffer)
        setCopy(strOther.m_pBuffer, strOther.m_uiLength);
}

CString::CString(int iValue) : CString(render(iValue)) {}

CString::CString(unsigned int uiValue) : CString(render(uiValue)) {}

CString::CString(long lValue) : CString(render(lValue)) {}

CString::CString(float fValue) : CString(render(fValue)) {}

CString::CString(bool bValue) : CString(render(bValue)) {}

CString& CString::operator=(const wchar_t* pText) {
    if (!pText)
        free();
    else if (pText != m_pBuffer)
        setCopy(pText, CStringCore::strlen(pText));
    return *this;
}

CString& CString::operator=(const CString& strOther) {
    if (!strOther.m_pBuffer)
        free();
    else if (strOther.m_pBuffer != m_pBuffer)
        setCopy(strOther.m_pBuffer, strOther.m_uiLength);
    return *this;
}

CString& CString::operator=(CString&& strOther) noexcept {
    if (this != &strOther) {
        const unsigned int uiLength = strOther.m_uiLength;
        setBuffer(strOther.detach(), uiLength);
    }
    return *this;
}

CString& CString::operator=(int iValue) { return *this = render(iValue); }

CString& CString::operator=(unsigned int uiValue) { return *this = render(uiValue); }

CString& CString::operator=(long lValue) { return *this = render(lValue); }

CString& CString::operator=(float fValue) { return *this = render(fValue); }

CString& CString::operator=(bool bValue) { return *this = render(bValue); }

void CString::attach(wchar_t* pBuffer, int iLength) {
    unsigned int uiLength = 0;
    if (pBuffer)
        uiLength = iLength < 0 ? CStringCore::strlen(pBuffer) : static_cast<unsigned int>(iLength);
    if (pBuffer == m_pBuffer)
        m_uiLength = uiLength;
    else
        setBuffer(pBuffer, uiLength);
}

void CString::fromBuffer(const wchar_t* pText, unsigned int uiCount) {
    setCopy(pText, getBoundedLength(pText, uiCount));
}

unsigned int CString::toBuffer(wchar_t* pTarget, unsigned int uiSize) const noexcept {
    if (m_uiLength == 0 || uiSize == 0 || !pTarget)
        return 0;
    const unsigned int uiCount = m_uiLength < uiSize - 1 ? m_uiLength : uiSize - 1;
    *CTextBuffer::put(pTarget, m_pBuffer, uiCount) = 0;
    return uiCount;
}

int CString::indexOf(const wchar_t* pPattern, unsigned int uiStart) const noexcept {
    if (uiStart >= m_uiLength)
        return -1;
    const int iFound =
        CStringCore::strstr(m_pBuffer + uiStart, m_uiLength - uiStart, pPattern, CStringCore::strlen(pPattern));
    return iFound < 0 ? -1 : iFound + static_cast<int>(uiStart);
}

int CString::indexOf(const CString& strPattern, unsigned int uiStart) const noexcept {
    return indexOf(strPattern.m_pBuffer, uiStart);
}

int CString::lastIndexOf(const wchar_t* pPattern) const noexcept {
    return CStringCore::strstr_last(m_pBuffer, m_uiLength, pPattern, CStringCore::strlen(pPattern));
}

int CString::lastIndexOf(const CString& strPattern) const noexcept { return lastIndexOf(strPattern.m_pBuffer); }

int CString::toInt() const { return CStringConverter::toInt(getText(m_pBuffer)); }

unsigned int CString::toUInt() const { return CStringConverter::toUInt(getText(m_pBuffer)); }

long CString::toLLong() const { return CStringConverter::toLLong(getText(m_pBuffer)); }

float CString::toFloat() const { return CStringConverter::toFloat(getText(m_pBuffer)); }

bool CString::toBool() const { return CStringConverter::toBool(getText(m_pBuffer)); }

CString CString::subString(unsigned int uiStart, unsigned int uiCount) const {
    CString strPart;
    if (uiStart >= m_uiLength)
        return strPart;
    const unsigned int uiRest = m_uiLength - uiStart;
    strPart.setCopy(m_pBuffer + uiStart, uiCount == 0 || uiCount > uiRest ? uiRest : uiCount);
    return strPart;
}

CString CString::getStartBlank() const {
    const unsigned int uiCount = getStarkBlankCount();
    // Asked for 0 characters, subString would give all.
    return uiCount == 0 ? CString() : subString(0, uiCount);
}

unsigned int CString::getStarkBlankCount() const noexcept {
    unsigned int uiCount = 0;
    while (uiCount < m_uiLength && CStringCore::isBlank(m_pBuffer[uiCount]))
        ++uiCount;
    return uiCount;
}

CString CString::operator+(const wchar_t* pText) const { return concat(pText, CStringCore::strlen(pText)); }

CString CString::operator+(const CString& strOther) const { return concat(strOther.m_pBuffer, strOther.m_uiLength); }

CString& CString::append(const wchar_t* pText) {
    insertText(m_uiLength, 0, pText, CStringCore::strlen(pText));
    return *this;
}

CString& CString::append(const wchar_t* pText, unsigned int uiCount) {
    if (uiCount == 0)
        return *this;
    const unsigned int uiTextLength = getBoundedLength(pText, uiCount);
    if (uiTextLength == uiCount) {
        insertText(m_uiLength, 0, pText, uiCount);
        return *this;
    }
    // The count is believed on purpose: the length grows by all of it, and what the text lacks is zeros.
    const unsigned long ulLength = static_cast<unsigned long>(m_uiLength) + uiCount;
    wchar_t* const pBuffer = allocBuffer(ulLength);
    if (!pBuffer)
        return *this;
    wchar_t* const pRest = CTextBuffer::put(CTextBuffer::put(pBuffer, m_pBuffer, m_uiLength), pText, uiTextLength);
    CStringCore::setZero(pRest, uiCount - uiTextLength);
    setBuffer(pBuffer, static_cast<unsigned int>(ulLength));
    return *this;
}

void CString::insertString(unsigned int uiPos, const wchar_t* pText, unsigned int uiCount) {
    if (uiPos >= m_uiLength)
        append(pText);
    else
        insertText(uiPos, 0, pText, getBoundedLength(pText, uiCount));
}

void CString::insertString(unsigned int uiPos, const wchar_t* pText) {
    insertText(uiPos < m_uiLength ? uiPos : m_uiLength, 0, pText, CStringCore::strlen(pText));
}

void CString::insertString(unsigned int uiPos, const CString& strText) { insertString(uiPos, strText.m_pBuffer); }

void CString::deleteString(unsigned int uiPos, unsigned int uiCount) noexcept {
    if (uiPos >= m_uiLength || uiCount == 0)
        return;
    const unsigned int uiRest = m_uiLength - uiPos;
    if (uiCount > uiRest)
        uiCount = uiRest;
    std::wmemmove(m_pBuffer + uiPos, m_pBuffer + uiPos + uiCount, uiRest - uiCount + 1);
    m_uiLength -= uiCount;
}

void CString::replaceAt(unsigned int uiIndex, wchar_t ch) noexcept {
    // An index equal to the length passes on purpose and overwrites the terminator; callers stay below it.
    if (m_pBuffer && uiIndex <= m_uiLength)
        m_pBuffer[uiIndex] = ch;
}

void CString::replaceFirst(const wchar_t* pFrom, const wchar_t* pTo) {
    const int iFound = indexOf(pFrom, 0);
    if (iFound < 0)
        return;
    const unsigned int uiFromLength = CStringCore::strlen(pFrom);
    if (insertText(static_cast<unsigned int>(iFound), uiFromLength, pTo, CStringCore::strlen(pTo)))
        m_uiLength = CStringCore::strlen(m_pBuffer);
}

void CString::replaceAll(const wchar_t* pFrom, const wchar_t* pTo) {
    const unsigned int uiFromLength = CStringCore::strlen(pFrom);
    const unsigned int uiToLength = CStringCore::strlen(pTo);
    const CMatches matches(m_pBuffer, m_uiLength, pFrom, uiFromLength);
    const unsigned int uiCount = matches.getCount();
    if (uiCount == 0)
        return;
    const unsigned long ulKept = m_uiLength - static_cast<unsigned long>(uiFromLength) * uiCount;
    wchar_t* const pBuffer = allocBuffer(ulKept + static_cast<unsigned long>(uiToLength) * uiCount);
    if (!pBuffer)
        return;
    wchar_t* pEnd = pBuffer;
    unsigned int uiDone = 0;
    for (unsigned int i = 0; i < uiCount; ++i) {
        const unsigned int uiPos = matches.getPos(i, uiDone);
        pEnd = CTextBuffer::put(CTextBuffer::put(pEnd, m_pBuffer + uiDone, uiPos - uiDone), pTo, uiToLength);
        uiDone = uiPos + uiFromLength;
    }
    CTextBuffer::put(pEnd, m_pBuffer + uiDone, m_uiLength - uiDone);
    setBuffer(pBuffer, CStringCore::strlen(pBuffer));
}

void CString::trimBlank(bool bStart, bool bEnd) {
    unsigned int uiStart = bStart ? getStarkBlankCount() : 0;
    unsigned int uiEnd = m_uiLength;
    while (bEnd && uiEnd > uiStart && CStringCore::isBlank(m_pBuffer[uiEnd - 1]))
        --uiEnd;
    if (uiEnd - uiStart != m_uiLength)
        setCopy(m_pBuffer + uiStart, uiEnd - uiStart);
}

void CString::innerTrim(wchar_t ch, bool bStart, bool bEnd) {
    unsigned int uiStart = 0;
    while (bStart && uiStart < m_uiLength && m_pBuffer[uiStart] == ch)
        ++uiStart;
    unsigned int uiEnd = m_uiLength;
    while (bEnd && uiEnd > uiStart && m_pBuffer[uiEnd - 1] == ch)
        --uiEnd;
    // A new buffer even when nothing was cut, on purpose: a null string becomes a blank one here.
    setCopy(uiEnd == uiStart ? L"" : m_pBuffer + uiStart, uiEnd - uiStart);
}

// The new buffer is filled before the old one goes, so that the text may lie in the old one.
void CString::setCopy(const wchar_t* pText, unsigned int uiLength) {
    wchar_t* const pBuffer = allocBuffer(uiLength);
    if (!pBuffer)
        return;
    CTextBuffer::put(pBuffer, pText, uiLength);
    setBuffer(pBuffer, uiLength);
}

void CString::setBuffer(wchar_t* pBuffer, unsigned int uiLength) noexcept {
    if (m_pBuffer)
        CMemory::free(m_pBuffer);
    m_pBuffer = pBuffer;
    m_uiLength = uiLength;
}

CString CString::concat(const wchar_t* pText, unsigned int uiLength) const {
    CString strBoth;
    const unsigned long ulLength = static_cast<unsigned long>(m_uiLength) + uiLength;
    if (ulLength == 0)
        return strBoth;
    if (wchar_t* const pBuffer = allocBuffer(ulLength)) {
        CTextBuffer::put(CTextBuffer::put(pBuffer, m_pBuffer, m_uiLength), pText, uiLength);
        strBoth.setBuffer(pBuffer, static_cast<unsigned int>(ulLength));
    }
    return strBoth;
}

// Puts a text in the place of uiRemoved characters, in a new buffer. False if there is nothing to do or no memory.
bool CString::insertText(unsigned int uiPos, unsigned int uiRemoved, const wchar_t* pText, unsigned int uiLength) {
    if (uiRemoved == 0 && uiLength == 0)
        return false;
    const unsigned int uiBehind = uiPos + uiRemoved;
    const unsigned long ulLength = static_cast<unsigned long>(m_uiLength) - uiRemoved + uiLength;
    wchar_t* const pBuffer = allocBuffer(ulLength);
    if (!pBuffer)
        return false;
    wchar_t* const pTail = CTextBuffer::put(CTextBuffer::put(pBuffer, m_pBuffer, uiPos), pText, uiLength);
    if (uiBehind < m_uiLength)
        CTextBuffer::put(pTail, m_pBuffer + uiBehind, m_uiLength - uiBehind);
    setBuffer(pBuffer, static_cast<unsigned int>(ulLength));
    return true;
}
} // namespace Orlix
