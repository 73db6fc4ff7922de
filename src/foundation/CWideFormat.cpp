#include "foundation/CWideFormat.h"

#include <Orlix/foundation/CStringConverter.h>

#include "foundation/CTextBuffer.h"

#include <cwchar>

namespace Orlix {

namespace {

constexpr std::size_t FORMAT_CHARS = 1024;        // the first try of a formatted text, on the stack
constexpr std::size_t FORMAT_CHARS_MOST = 524288; // the last of ten tries, each twice the one before

/** Formats without using up the arguments. @return as vswprintf: negative if the text does not fit. */
int tryFormat(wchar_t* pBuffer, std::size_t uiSize, const wchar_t* pFormat, va_list listArgs) {
    va_list listCopy;
    va_copy(listCopy, listArgs);
    const int iCount = std::vswprintf(pBuffer, uiSize, pFormat, listCopy);
    va_end(listCopy);
    return iCount;
}

/** What is left of the measuring when the first try was too small. */
int measureLongFormat(const wchar_t* pFormat, va_list listArgs) {
    for (std::size_t uiSize = FORMAT_CHARS * 2; uiSize <= FORMAT_CHARS_MOST; uiSize *= 2) {
        wchar_t* const pBuffer = CTextBuffer::alloc(uiSize - 1);
        if (!pBuffer)
            return -1;
        const int iCount = tryFormat(pBuffer, uiSize, pFormat, listArgs);
        CMemory::free(pBuffer);
        if (iCount >= 0)
            return iCount;
    }
    return -1;
}

/** @return the next "%s", the terminator if there is none. */
const wchar_t* findPercentS(const wchar_t* pText) {
    while (*pText != L'\0' && (pText[0] != L'%' || pText[1] != L's'))
        ++pText;
    return pText;
}
} // namespace

int vscwprintf(const wchar_t* pFormat, va_list listArgs) {
    if (!pFormat)
        return -1;
    wchar_t aryText[FORMAT_CHARS];
    const int iCount = tryFormat(aryText, FORMAT_CHARS, pFormat, listArgs);
    return iCount >= 0 ? iCount : measureLongFormat(pFormat, listArgs);
}

CWideFormat::CWideFormat(const wchar_t* pFormat) : m_pFormat(pFormat) {
    const wchar_t* const pFirst = findPercentS(pFormat);
    if (*pFirst == L'\0')
        return;
    if (std::wcslen(pFormat) > SHORT_FORMAT) {
        m_strLong = pFormat;
        m_strLong.replaceAll(L"%s", L"%ls");
        m_pFormat = m_strLong.getBuffer();
        return;
    }
    rewriteShort(pFirst);
    m_pFormat = m_aryShort;
}

CString CWideFormat::render(va_list listArgs) const {
    wchar_t aryText[FORMAT_CHARS];
    CString strResult;
    int iCount = tryFormat(aryText, FORMAT_CHARS, m_pFormat, listArgs);
    const bool bFits = iCount >= 0;
    if (!bFits)
        iCount = measureLongFormat(m_pFormat, listArgs);
    const std::size_t uiLength = static_cast<std::size_t>(iCount);
    wchar_t* const pText = iCount < 0 ? nullptr : CTextBuffer::alloc(uiLength);
    if (!pText)
        return CString(L"");
    if (bFits)
        CTextBuffer::put(pText, aryText, uiLength);
    else
        tryFormat(pText, uiLength + 1, m_pFormat, listArgs);
    pText[uiLength] = L'\0';
    strResult.attach(pText, iCount);
    return strResult;
}

void CWideFormat::rewriteShort(const wchar_t* pFound) {
    const wchar_t* pRead = m_pFormat;
    wchar_t* pWrite = m_aryShort;
    for (; *pFound != L'\0'; pFound = findPercentS(pRead)) {
        pWrite = CTextBuffer::put(pWrite, pRead, static_cast<std::size_t>(pFound + 1 - pRead));
        *pWrite++ = L'l';
        pRead = pFound + 1;
    }
    CTextBuffer::put(pWrite, pRead, static_cast<std::size_t>(pFound + 1 - pRead)); // with the terminator
}
} // namespace Orlix
