#include <Orlix/foundation/CStringConverter.h>

#include <Orlix/foundation/CDataArray.h>
#include <Orlix/foundation/CDataList.h>
#include <Orlix/foundation/CString.h>
#include <Orlix/foundation/CStringCore.h>

#include "foundation/CCharFilter.h"
#include "foundation/CTextBuffer.h"
#include "foundation/CUTF8Codec.h"
#include "foundation/CWideFormat.h"

#include <algorithm>
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>

namespace Orlix {

namespace {

/** Terminates a text that CTextBuffer gave and hands it over. */
void adoptText(CString& strResult, wchar_t* pText, std::size_t uiLength) {
    pText[uiLength] = L'\0';
    strResult.attach(pText, static_cast<int>(uiLength));
}

// Numbers from text. The parsers work on a wide or a narrow text and end at a terminator or at pEnd, null for none.

template <class TChar> bool isDigit(TChar ch) { return ch >= '0' && ch <= '9'; }

template <class TNumber, class TChar> TNumber parseDecimal(const TChar* pText, const TChar* pEnd) {
    TNumber uiValue = 0; // unsigned: a number too large wraps
    for (; pText != pEnd && isDigit(*pText); ++pText)
        uiValue = uiValue * 10 + static_cast<TNumber>(*pText - TChar('0'));
    return uiValue;
}

template <class TNumber, class TChar> TNumber parseSigned(const TChar* pText) {
    if (!pText)
        return 0;
    if (*pText == TChar('-'))
        return TNumber(0) - parseDecimal<TNumber, TChar>(pText + 1, nullptr);
    return parseDecimal<TNumber, TChar>(pText, nullptr);
}

template <class TChar> unsigned int parseHexadecimal(const TChar* pText, const TChar* pEnd) {
    unsigned int uiValue = 0;
    for (; pText != pEnd && *pText != 0; ++pText) {
        const TChar ch = *pText;
        if (isDigit(ch))
            uiValue = uiValue << 4 | static_cast<unsigned int>(ch - TChar('0'));
        else if (ch >= TChar('a') && ch <= TChar('f'))
            uiValue = uiValue << 4 | static_cast<unsigned int>(ch - TChar('a') + 10);
        else if (ch >= TChar('A') && ch <= TChar('F'))
            uiValue = uiValue << 4 | static_cast<unsigned int>(ch - TChar('A') + 10);
        // Any other character is skipped, not taken as the end as in the decimal form: that is meant.
    }
    return uiValue;
}

template <class TChar> unsigned int parseUnsigned(const TChar* pText, const TChar* pEnd) {
    if (!pText || pText == pEnd)
        return 0;
    const TChar* const pSecond = pText + 1;
    if (*pText == TChar('0') && pSecond != pEnd && (*pSecond == TChar('x') || *pSecond == TChar('X')))
        return parseHexadecimal(pText + 2, pEnd);
    return parseDecimal<unsigned int>(pText, pEnd);
}

template <class TChar> float parseFloat(const TChar* pText) {
    if (!pText)
        return 0.0f;
    const bool bNegative = *pText == TChar('-');
    if (bNegative)
        ++pText;
    double dValue = 0.0;
    for (; isDigit(*pText); ++pText)
        dValue = dValue * 10.0 + static_cast<double>(*pText - TChar('0'));
    if (*pText == TChar('.')) {
        // Single precision on purpose: the same text has to give the same bits as ever.
        float fDivisor = 10.0f;
        for (++pText; isDigit(*pText); ++pText, fDivisor *= 10.0f)
            dValue += static_cast<double>(static_cast<float>(*pText - TChar('0')) / fDivisor);
    }
    const float fValue = static_cast<float>(dValue);
    return bNegative ? -fValue : fValue;
}

template <class TChar> bool parseBool(const TChar* pText) {
    return pText && pText[0] == TChar('t') && pText[1] == TChar('r') && pText[2] == TChar('u') &&
           pText[3] == TChar('e') && pText[4] == 0;
}

// Text from numbers, two digits at a time.

struct tagDigitPairs {
    wchar_t aryPair[100][2];
};

constexpr tagDigitPairs makeDigitPairs() {
    tagDigitPairs pairs{};
    for (int i = 0; i < 100; ++i) {
        pairs.aryPair[i][0] = static_cast<wchar_t>(L'0' + i / 10);
        pairs.aryPair[i][1] = static_cast<wchar_t>(L'0' + i % 10);
    }
    return pairs;
}

constexpr tagDigitPairs DIGIT_PAIRS = makeDigitPairs();

struct tagDigitLimits {
    std::uint64_t aryLeast[20]; // the least number with one digit more than the index
};

constexpr tagDigitLimits makeDigitLimits() {
    tagDigitLimits limits{};
    std::uint64_t uiPower = 1;
    for (int i = 1; i < 20; ++i)
        limits.aryLeast[i] = uiPower *= 10;
    return limits;
}

constexpr tagDigitLimits DIGIT_LIMITS = makeDigitLimits();

// The logarithm to base 2, times that of 2 to base 10, is the number of digits or one less; the table tells which.
// H. S. Warren, "Hacker's Delight", 2nd edition 2012, section 11-4.
unsigned int countDigits(std::uint64_t uiValue) {
    const unsigned int uiBits = 64u - static_cast<unsigned int>(__builtin_clzl(uiValue | 1));
    const unsigned int uiGuess = uiBits * 1233u >> 12;
    return uiGuess + (uiValue >= DIGIT_LIMITS.aryLeast[uiGuess]);
}

template <class TNumber> void writePair(TNumber uiPair, wchar_t* pTarget) {
    std::memcpy(pTarget, DIGIT_PAIRS.aryPair[uiPair], sizeof(DIGIT_PAIRS.aryPair[0]));
}

/** Writes the digits without a terminator. @return behind the last one. */
template <class TNumber> wchar_t* writeDigits(TNumber uiValue, wchar_t* pBuffer) {
    wchar_t* const pEnd = pBuffer + countDigits(uiValue);
    wchar_t* pWrite = pEnd;
    // Four at a time, because each division waits for the one before; the two pairs do not wait for each other.
    while (uiValue >= 10000) {
        const std::uint32_t uiFour = static_cast<std::uint32_t>(uiValue % 10000);
        uiValue /= 10000;
        pWrite -= 4;
        writePair(uiFour / 100, pWrite);
        writePair(uiFour % 100, pWrite + 2);
    }
    std::uint32_t uiRest = static_cast<std::uint32_t>(uiValue);
    if (uiRest >= 100) {
        writePair(uiRest % 100, pWrite - 2);
        uiRest /= 100;
    }
    if (uiRest >= 10)
        writePair(uiRest, pBuffer);
    else
        *pBuffer = static_cast<wchar_t>(L'0' + static_cast<int>(uiRest));
    return pEnd;
}

template <class TUnsigned, class TSigned> void writeSigned(TSigned iValue, wchar_t* pBuffer) {
    TUnsigned uiValue = static_cast<TUnsigned>(iValue);
    if (iValue < 0) {
        *pBuffer++ = L'-';
        uiValue = 0 - uiValue; // unsigned: right for the most negative value too
    }
    writeDigits(uiValue, pBuffer);
}

/** Writes the low 16 bits of each character; no surrogates, so the rest is lost. */
void narrowToUTF16(const wchar_t* pSource, std::size_t uiCount, unsigned char* pTarget) {
    constexpr std::size_t BLOCK = 16; // a fixed number, so that the compiler narrows them all at once
    std::uint16_t aryUnit[BLOCK];
    for (; uiCount >= BLOCK; uiCount -= BLOCK, pSource += BLOCK, pTarget += sizeof(aryUnit)) {
        for (std::size_t i = 0; i < BLOCK; ++i)
            aryUnit[i] = static_cast<std::uint16_t>(pSource[i]);
        std::memcpy(pTarget, aryUnit, sizeof(aryUnit));
    }
    for (; uiCount != 0; --uiCount, ++pSource, pTarget += sizeof(aryUnit[0])) {
        aryUnit[0] = static_cast<std::uint16_t>(*pSource);
        std::memcpy(pTarget, aryUnit, sizeof(aryUnit[0]));
    }
}

constexpr const char* MBCS_LOCALE = "zh_CN.utf8";

// The character tables.

/** @return the first index, uiCount if there is none. */
unsigned int findEntry(const wchar_t* pChars, unsigned int uiCount, wchar_t ch) {
    unsigned int k = 0;
    while (k < uiCount && pChars[k] != ch)
        ++k;
    return k;
}

// Cutting and joining.

template <class T> struct tagListEnds : CDataList<T> {
    // The list's own fields, so that reading a list leaves its cursor where it is.
    static const tagDataListNode<T>* getHead(const CDataList<T>& list) { return list.*(&tagListEnds::m_pHead); }
    static tagDataListNode<T>* getTail(CDataList<T>& list) { return list.*(&tagListEnds::m_pTail); }
};

// Each target takes a token from pToken up to pEnd. Strings are added null and filled in place, so that a token is
// copied once; a target without memory for one more has not grown.

void addToken(CDataArray<unsigned int>& aryTarget, const wchar_t* pToken, const wchar_t* pEnd) {
    aryTarget.add(parseUnsigned(pToken, pEnd));
}

void addToken(CDataArray<CString>& aryTarget, const wchar_t* pToken, const wchar_t* pEnd) {
    const unsigned int uiSize = aryTarget.getSize();
    aryTarget.add(STRING_NULL);
    if (aryTarget.getSize() != uiSize)
        aryTarget[uiSize].fromBuffer(pToken, static_cast<unsigned int>(pEnd - pToken));
}

void addToken(CDataList<CString>& listTarget, const wchar_t* pToken, const wchar_t* pEnd) {
    const unsigned int uiSize = listTarget.getSize();
    listTarget.add(STRING_NULL);
    if (listTarget.getSize() != uiSize)
        tagListEnds<CString>::getTail(listTarget)->tValue.fromBuffer(pToken, static_cast<unsigned int>(pEnd - pToken));
}

template <class TTarget>
void separateText(const wchar_t* pText, unsigned int uiLength, wchar_t chSeparator, TTarget& target, bool bStart,
                  bool bEnd) {
    if (!pText || uiLength == 0)
        return;
    const wchar_t* const pEnd = pText + uiLength;
    const wchar_t* pToken = pText;
    if (*pText == chSeparator) {
        if (bStart)
            addToken(target, pText, pText);
        ++pToken;
    }
    while (const wchar_t* const pFound = std::wmemchr(pToken, chSeparator, static_cast<std::size_t>(pEnd - pToken))) {
        addToken(target, pToken, pFound);
        pToken = pFound + 1;
    }
    if (pToken != pEnd)
        addToken(target, pToken, pEnd);
    if (pEnd[-1] == chSeparator && bEnd)
        addToken(target, pEnd, pEnd);
}

/** Joins texts in two passes, so that there is one allocation.
 *  @param visitAll calls its argument with each element. @param getLength, append take an element. */
template <class TVisitAll, class TGetLength, class TAppend>
void mergeElements(unsigned int uiCount, wchar_t chSeparator, CString& strResult, const TVisitAll& visitAll,
                   const TGetLength& getLength, const TAppend& append) {
    if (uiCount == 0) {
        strResult = L"";
        return;
    }
    std::size_t uiLength = uiCount - 1;
    visitAll([&](const auto& element) { uiLength += getLength(element); });
    wchar_t* const pText = CTextBuffer::alloc(uiLength);
    if (!pText)
        return;
    wchar_t* pWrite = pText;
    visitAll([&](const auto& element) {
        pWrite = append(pWrite, element);
        *pWrite++ = chSeparator; // behind the last element the terminator takes its place
    });
    adoptText(strResult, pText, uiLength);
}

std::size_t getTextLength(const CString& strText) { return strText.length(); }

wchar_t* appendString(wchar_t* pTarget, const CString& strText) {
    return CTextBuffer::put(pTarget, strText.getBuffer(), strText.length());
}

/** A caller of visitAll for an array. */
template <class T> auto visitArray(const CDataArray<T>& arySource) {
    return [&arySource](const auto& visit) {
        for (unsigned int i = 0; i < arySource.getSize(); ++i)
            visit(arySource[i]);
    };
}
} // namespace

int CStringConverter::toInt(const wchar_t* pText) { return static_cast<int>(parseSigned<unsigned int>(pText)); }

int CStringConverter::toInt(const unsigned char* pText) { return static_cast<int>(parseSigned<unsigned int>(pText)); }

unsigned int CStringConverter::toUInt(const wchar_t* pText) { return parseUnsigned<wchar_t>(pText, nullptr); }

unsigned int CStringConverter::toUInt(const unsigned char* pText) {
    return parseUnsigned<unsigned char>(pText, nullptr);
}

long CStringConverter::toLLong(const wchar_t* pText) { return static_cast<long>(parseSigned<unsigned long>(pText)); }

long CStringConverter::toLLong(const unsigned char* pText) {
    return static_cast<long>(parseSigned<unsigned long>(pText));
}

float CStringConverter::toFloat(const wchar_t* pText) { return parseFloat(pText); }

float CStringConverter::toFloat(const unsigned char* pText) { return parseFloat(pText); }

bool CStringConverter::toBool(const wchar_t* pText) { return parseBool(pText); }

bool CStringConverter::toBool(const unsigned char* pText) { return parseBool(pText); }

void CStringConverter::toString(int iValue, wchar_t* pBuffer) { writeSigned<unsigned int>(iValue, pBuffer); }

void CStringConverter::toString(unsigned int uiValue, wchar_t* pBuffer) { writeDigits(uiValue, pBuffer); }

void CStringConverter::toString(long lValue, wchar_t* pBuffer) { writeSigned<unsigned long>(lValue, pBuffer); }

void CStringConverter::toString(float fValue, wchar_t* pBuffer, unsigned int uiDecimals) {
    constexpr std::size_t BUFFER_CHARS = 32;
    // No float has more digits behind the point, so asking for more changes nothing before the cut.
    constexpr unsigned int MOST_DECIMALS = 160;
    wchar_t aryText[256];
    const int iDecimals = static_cast<int>(std::min(uiDecimals, MOST_DECIMALS));
    std::swprintf(aryText, sizeof(aryText) / sizeof(aryText[0]), L"%.*f", iDecimals, static_cast<double>(fValue));
    const std::size_t uiLength = std::min(std::wcslen(aryText), BUFFER_CHARS - 1);
    *CTextBuffer::put(pBuffer, aryText, uiLength) = L'\0';
}

void CStringConverter::toString(bool bValue, wchar_t* pBuffer) {
    CTextBuffer::put(pBuffer, bValue ? L"true" : L"false", bValue ? 4 : 5);
}

void CStringConverter::convertToUTF16(const wchar_t* pSource, unsigned char* pTarget, unsigned int uiSize) {
    if (!pTarget || uiSize == 0)
        return;
    const std::size_t uiUnits = pSource ? wcsnlen(pSource, uiSize / 2) : 0;
    narrowToUTF16(pSource, uiUnits, pTarget);
    std::memset(pTarget + uiUnits * 2, 0, uiSize - uiUnits * 2);
}

void CStringConverter::convertToUTF16(const CString& strSource, unsigned char* pTarget, unsigned int uiSize) {
    convertToUTF16(strSource.getBuffer(), pTarget, uiSize);
}

void CStringConverter::convertFromUTF16(const unsigned char* pSource, unsigned int uiSize, CString& strResult) {
    if (!pSource || uiSize == 0)
        return;
    const std::size_t uiUnits = uiSize / 2;
    wchar_t* const pText = CTextBuffer::alloc(uiUnits);
    if (!pText)
        return;
    for (std::size_t i = 0; i < uiUnits; ++i) {
        std::uint16_t uiUnit;
        std::memcpy(&uiUnit, pSource + i * 2, sizeof(uiUnit));
        pText[i] = static_cast<wchar_t>(uiUnit); // no byte order mark, no surrogates; a zero unit does not end it
    }
    adoptText(strResult, pText, uiUnits);
}

void CStringConverter::convertToUTF8(const wchar_t* pSource, unsigned char* pTarget, unsigned int uiSize,
                                     unsigned int* pWritten) {
    std::size_t uiWritten = 0;
    if (pTarget && uiSize != 0 && pSource) {
        const std::size_t uiRoom = uiSize - 1;
        uiWritten = CUTF8Codec::encode(pSource, wcsnlen(pSource, uiRoom), pTarget, uiRoom);
        pTarget[uiWritten] = 0;
    }
    if (pWritten)
        *pWritten = static_cast<unsigned int>(uiWritten);
}

void CStringConverter::convertToUTF8(const CString& strSource, unsigned char* pTarget, unsigned int uiSize,
                                     unsigned int* pWritten) {
    convertToUTF8(strSource.getBuffer(), pTarget, uiSize, pWritten);
}

void CStringConverter::convertFromUTF8(const unsigned char* pSource, CString& strResult) {
    if (!pSource) {
        strResult = STRING_NULL;
        return;
    }
    const std::size_t uiBytes = std::strlen(reinterpret_cast<const char*>(pSource));
    wchar_t* const pText = CTextBuffer::alloc(CUTF8Codec::countCharacters(pSource, uiBytes));
    if (pText)
        adoptText(strResult, pText, CUTF8Codec::decode(pSource, uiBytes, pText));
}

void CStringConverter::convertToMBCS(const wchar_t* pSource, char* pTarget, unsigned int uiSize) {
    if (!pTarget || uiSize == 0)
        return;
    std::memset(pTarget, 0, uiSize);
    if (!pSource)
        return;
    // Set for the whole process and never set back, on purpose: hosts rely on the locale from here on.
    std::setlocale(LC_ALL, MBCS_LOCALE);
    std::wcstombs(pTarget, pSource, uiSize - 1);
}

void CStringConverter::convertToMBCS(const CString& strSource, char* pTarget, unsigned int uiSize) {
    convertToMBCS(strSource.getBuffer(), pTarget, uiSize);
}

void CStringConverter::convertFromMBCS(const char* pSource, CString& strResult) {
    if (!pSource) {
        strResult = STRING_NULL;
        return;
    }
    const std::size_t uiBytes = std::strlen(pSource);
    wchar_t* const pText = CTextBuffer::alloc(uiBytes);
    if (!pText)
        return;
    std::memset(pText, 0, (uiBytes + 1) * sizeof(wchar_t)); // of malformed text what came out first stays, terminated
    std::setlocale(LC_ALL, MBCS_LOCALE);
    std::mbstowcs(pText, pSource, uiBytes);
    strResult.attach(pText, -1);
}

void CStringConverter::printf(const wchar_t* pFormat, ...) {
    if (!pFormat)
        return;
    const CWideFormat format(pFormat);
    if (!format.get())
        return;
    va_list listArgs;
    va_start(listArgs, pFormat);
    std::vwprintf(format.get(), listArgs);
    va_end(listArgs);
}

CString CStringConverter::format(const wchar_t* pFormat, ...) {
    if (!pFormat)
        return CString(L"");
    const CWideFormat format(pFormat);
    if (!format.get())
        return CString(L"");
    va_list listArgs;
    va_start(listArgs, pFormat);
    CString strResult = format.render(listArgs);
    va_end(listArgs);
    return strResult;
}

void CStringConverter::encodeChars(const wchar_t* pText, unsigned int uiLength, unsigned int uiCount,
                                   const wchar_t* pChars, const wchar_t** ppCodes, const unsigned int* pCodeLengths,
                                   CString& strResult) {
    if (!pText || uiLength == 0) {
        strResult = L"";
        return;
    }
    CCharFilter filter;
    for (unsigned int k = 0; k < uiCount; ++k)
        filter.add(pChars[k]);
    const auto find = [&](wchar_t ch) { return filter.mayHave(ch) ? findEntry(pChars, uiCount, ch) : uiCount; };

    std::size_t uiResult = 0;
    for (unsigned int i = 0; i < uiLength; ++i) {
        const unsigned int k = find(pText[i]);
        uiResult += k < uiCount ? pCodeLengths[k] : 1;
    }
    wchar_t* const pResult = CTextBuffer::alloc(uiResult);
    if (!pResult)
        return;
    wchar_t* pWrite = pResult;
    for (unsigned int i = 0; i < uiLength; ++i) {
        const unsigned int k = find(pText[i]);
        if (k < uiCount)
            pWrite = CTextBuffer::put(pWrite, ppCodes[k], pCodeLengths[k]);
        else
            *pWrite++ = pText[i];
    }
    adoptText(strResult, pResult, uiResult);
}

void CStringConverter::encodeChars(const CString& strText, unsigned int uiCount, const wchar_t* pChars,
                                   const wchar_t** ppCodes, const unsigned int* pCodeLengths, CString& strResult) {
    encodeChars(strText.getBuffer(), strText.length(), uiCount, pChars, ppCodes, pCodeLengths, strResult);
}

void CStringConverter::decodeChars(const wchar_t* pText, unsigned int uiLength, unsigned int uiCount,
                                   const wchar_t* pChars, const wchar_t** ppCodes, const unsigned int* pCodeLengths,
                                   CString& strResult) {
    if (!pText || uiLength == 0) {
        strResult = STRING_NULL;
        return;
    }
    CCharFilter filter;
    for (unsigned int k = 0; k < uiCount; ++k) {
        if (pCodeLengths[k] != 0)
            filter.add(ppCodes[k][0]);
    }
    // The first code that stands at a position; table order decides between codes that begin alike.
    const auto find = [&](unsigned int uiPos) {
        unsigned int k = 0;
        while (k < uiCount && (pCodeLengths[k] == 0 || pCodeLengths[k] > uiLength - uiPos ||
                               CStringCore::strncmp(pText + uiPos, ppCodes[k], pCodeLengths[k]) == 0))
            ++k;
        return k;
    };

    wchar_t* const pResult = CTextBuffer::alloc(uiLength); // a code has at least one character, so nothing grows
    if (!pResult)
        return;
    wchar_t* pWrite = pResult;
    for (unsigned int i = 0; i < uiLength;) {
        const unsigned int k = filter.mayHave(pText[i]) ? find(i) : uiCount;
        *pWrite++ = k < uiCount ? pChars[k] : pText[i];
        i += k < uiCount ? pCodeLengths[k] : 1;
    }
    adoptText(strResult, pResult, static_cast<std::size_t>(pWrite - pResult));
}

void CStringConverter::decodeChars(const CString& strText, unsigned int uiCount, const wchar_t* pChars,
                                   const wchar_t** ppCodes, const unsigned int* pCodeLengths, CString& strResult) {
    decodeChars(strText.getBuffer(), strText.length(), uiCount, pChars, ppCodes, pCodeLengths, strResult);
}

void CStringConverter::separateString(const CString& strText, wchar_t chSeparator, CDataArray<unsigned int>& aryTarget,
                                      bool bStart, bool bEnd) {
    separateText(strText.getBuffer(), strText.length(), chSeparator, aryTarget, bStart, bEnd);
}

void CStringConverter::separateString(const CString& strText, wchar_t chSeparator, CDataArray<CString>& aryTarget,
                                      bool bStart, bool bEnd) {
    // An element of the target moves when the target grows; its buffer moves along and stays where it is.
    separateText(strText.getBuffer(), strText.length(), chSeparator, aryTarget, bStart, bEnd);
}

void CStringConverter::separateString(const CString& strText, wchar_t chSeparator, CDataList<CString>& listTarget,
                                      bool bStart, bool bEnd) {
    separateText(strText.getBuffer(), strText.length(), chSeparator, listTarget, bStart, bEnd);
}

void CStringConverter::split(const CString& strText, const CDataArray<wchar_t>& arySeparators,
                             CDataArray<CString>& aryTarget, bool bStart, bool bEnd) {
    const unsigned int uiCount = arySeparators.getSize();
    if (uiCount == 0)
        return;
    if (uiCount == 1) {
        separateString(strText, arySeparators[0], aryTarget, bStart, bEnd);
        return;
    }
    CDataArray<CString> aryWork[2]; // the pieces of the last pass and of this one, in turn
    aryWork[0].add(strText);
    for (unsigned int i = 0; i < uiCount; ++i) {
        const CDataArray<CString>& aryPieces = aryWork[i % 2];
        CDataArray<CString>& aryNext = i + 1 < uiCount ? aryWork[(i + 1) % 2] : aryTarget;
        if (&aryNext != &aryTarget)
            aryNext.clear();
        for (unsigned int k = 0; k < aryPieces.getSize(); ++k)
            separateString(aryPieces[k], arySeparators[i], aryNext, bStart, bEnd);
    }
}

void CStringConverter::mergeString(const CDataArray<CString>& arySource, wchar_t chSeparator, CString& strResult) {
    mergeElements(arySource.getSize(), chSeparator, strResult, visitArray(arySource), getTextLength, appendString);
}

void CStringConverter::mergeString(const CDataList<CString>& listSource, wchar_t chSeparator, CString& strResult) {
    const auto visitList = [&listSource](const auto& visit) {
        for (auto pNode = tagListEnds<CString>::getHead(listSource); pNode; pNode = pNode->pNext)
            visit(pNode->tValue);
    };
    mergeElements(listSource.getSize(), chSeparator, strResult, visitList, getTextLength, appendString);
}

void CStringConverter::mergeString(const CDataArray<unsigned int>& arySource, wchar_t chSeparator, CString& strResult) {
    mergeElements(
        arySource.getSize(), chSeparator, strResult, visitArray(arySource),
        [](unsigned int uiValue) { return countDigits(uiValue); },
        [](wchar_t* pTarget, unsigned int uiValue) { return writeDigits(uiValue, pTarget); });
}
} // namespace Orlix
