#include <Orlix/foundation/CStringCore.h>

#include "foundation/CTwoWaySearch.h"

#include <cstddef>
#include <cstring>
#include <cwchar>

namespace Orlix {
namespace {

// Four characters at once. Compared lanes are -1 where true and 0 where false.
typedef wchar_t tagLanes __attribute__((vector_size(16)));
typedef long long tagHalves __attribute__((vector_size(16)));
constexpr unsigned int LANES = 4;

tagLanes loadLanes(const wchar_t* pText) noexcept {
    tagLanes lanes;
    __builtin_memcpy(&lanes, pText, sizeof(lanes));
    return lanes;
}

tagLanes fillLanes(wchar_t ch) noexcept { return tagLanes{ch, ch, ch, ch}; }

bool isAnySet(tagLanes lanes) noexcept {
    const tagHalves halves = reinterpret_cast<tagHalves>(lanes);
    return (halves[0] | halves[1]) != 0;
}

constexpr bool isWithin(int iCode, int iFirst, int iLast) noexcept { return iCode >= iFirst && iCode <= iLast; }

// An even code and the odd one above it are the two cases of one letter.
constexpr bool isPaired(int iCode) noexcept {
    return isWithin(iCode, 256, 311) || isWithin(iCode, 330, 371) || isWithin(iCode, 536, 539) ||
           isWithin(iCode, 1168, 1215) || isWithin(iCode, 1232, 1247);
}

// Here it is an odd code and the even one above it.
constexpr bool isPairedFromOdd(int iCode) noexcept { return isWithin(iCode, 377, 382); }

// The bounds are meant as they stand, though they differ from Unicode: 247 folds, 248, 254 and 1072 to 1074 do not.
// Callers rely on exactly these ranges, so the gaps stay and no other range joins.
constexpr int getUppercase(int iCode) noexcept {
    if (isWithin(iCode, 97, 122) || isWithin(iCode, 224, 247) || isWithin(iCode, 249, 253) ||
        isWithin(iCode, 1075, 1103))
        return iCode - 32;
    if (isWithin(iCode, 1104, 1119))
        return iCode - 80;
    if (iCode == 255)
        return 376;
    if (isPaired(iCode))
        return iCode & ~1;
    if (isPairedFromOdd(iCode))
        return (iCode - 1) | 1;
    return iCode;
}

constexpr int getLowercase(int iCode) noexcept {
    if (isWithin(iCode, 65, 90) || isWithin(iCode, 192, 215) || isWithin(iCode, 217, 221) ||
        isWithin(iCode, 1043, 1071))
        return iCode + 32;
    if (isWithin(iCode, 1024, 1039))
        return iCode + 80;
    if (iCode == 376)
        return 255;
    if (isPaired(iCode))
        return iCode | 1;
    if (isPairedFromOdd(iCode))
        return iCode + (iCode & 1);
    return iCode;
}

constexpr unsigned int FOLDED_CODES = 1248; // behind the last code that has another case

struct tagFolding {
    unsigned short m_aryCode[FOLDED_CODES];
};

template <class F> constexpr tagFolding buildFolding(F fnRule) noexcept {
    tagFolding folding{};
    for (unsigned int i = 0; i < FOLDED_CODES; ++i)
        folding.m_aryCode[i] = static_cast<unsigned short>(fnRule(static_cast<int>(i)));
    return folding;
}

constexpr tagFolding UPPERCASE = buildFolding(getUppercase);
constexpr tagFolding LOWERCASE = buildFolding(getLowercase);

void fold(wchar_t* pText, unsigned int uiLength, const tagFolding& folding) noexcept {
    if (!pText)
        return;
    for (wchar_t* const pEnd = pText + uiLength; pText != pEnd; ++pText) {
        const unsigned int uiCode = static_cast<unsigned int>(*pText); // a negative one is beyond the table
        if (uiCode < FOLDED_CODES)
            *pText = static_cast<wchar_t>(folding.m_aryCode[uiCode]);
    }
}

// The comparisons that ignore the case know the ASCII letters only.
wchar_t toLowerASCII(wchar_t ch) noexcept { return ch >= L'A' && ch <= L'Z' ? ch + 32 : ch; }

wchar_t keepCase(wchar_t ch) noexcept { return ch; }

int getSign(int iValue) noexcept { return (iValue > 0) - (iValue < 0); }

int getOrder(wchar_t chFirst, wchar_t chSecond) noexcept { return (chFirst > chSecond) - (chFirst < chSecond); }

template <wchar_t (*FOLD)(wchar_t)>
int compareReverse(const wchar_t* pFirst, unsigned int uiFirstLength, const wchar_t* pSecond,
                   unsigned int uiSecondLength) noexcept {
    if (!pFirst)
        uiFirstLength = 0;
    if (!pSecond)
        uiSecondLength = 0;
    while (uiFirstLength != 0 && uiSecondLength != 0) {
        const int iOrder = getOrder(FOLD(pFirst[--uiFirstLength]), FOLD(pSecond[--uiSecondLength]));
        if (iOrder != 0)
            return iOrder;
    }
    return (uiFirstLength != 0) - (uiSecondLength != 0);
}

template <wchar_t (*FOLD)(wchar_t)> bool isPrefix(const wchar_t* pText, const wchar_t* pPrefix) noexcept {
    if (!pText || !pPrefix || *pPrefix == 0)
        return false;
    // The terminator of a shorter text differs from the prefix and ends the loop.
    for (; *pPrefix != 0; ++pText, ++pPrefix)
        if (FOLD(*pText) != FOLD(*pPrefix))
            return false;
    return true;
}

using FN_EQUAL = int (*)(const wchar_t*, const wchar_t*, unsigned int) noexcept;

bool isSuffix(const wchar_t* pText, const wchar_t* pSuffix, FN_EQUAL fnEqual) noexcept {
    const unsigned int uiTextLength = CStringCore::strlen(pText);
    const unsigned int uiSuffixLength = CStringCore::strlen(pSuffix);
    if (uiSuffixLength == 0 || uiSuffixLength > uiTextLength)
        return false;
    return fnEqual(pText + (uiTextLength - uiSuffixLength), pSuffix, uiSuffixLength) != 0;
}

bool isEqual(const wchar_t* pFirst, const wchar_t* pSecond, std::size_t uiCount) noexcept {
    return std::memcmp(pFirst, pSecond, uiCount * sizeof(wchar_t)) == 0;
}

/** One search for a pattern of at least two characters. It begins in the way that suits a first character that is
 *  rare, goes on in the one that suits usual text, and ends in the one that no text can slow down. */
class CPatternSearch {
public:
    /** @param uiPlaces the number of places where the pattern has room. */
    CPatternSearch(const wchar_t* pText, unsigned int uiPlaces, const wchar_t* pPattern,
                   unsigned int uiPatternLength) noexcept
        : m_pText(pText), m_pTextLast(pText + (uiPatternLength - 1)), m_uiPlaces(uiPlaces), m_pPattern(pPattern),
          m_uiPatternLength(uiPatternLength) {}

    int find() noexcept {
        if (findByFirst() || findByEnds())
            return m_iFound;
        // Too much was compared in vain, as in a text of one letter over and over.
        const int iFound = CTwoWaySearch::find(m_pText + m_uiNext, m_uiPlaces - m_uiNext + m_uiPatternLength - 1,
                                               m_pPattern, m_uiPatternLength);
        return iFound < 0 ? -1 : iFound + static_cast<int>(m_uiNext);
    }

private:
    static constexpr unsigned int RARE_GAP = 32;   // places between two of the first character that make it rare
    static constexpr unsigned int RARE_START = 64; // places granted at the start, where there is no average yet
    static constexpr unsigned int BLOCK = 4 * LANES;
    static constexpr std::size_t EFFORT_START = 1024; // characters compared in vain before the text counts as slow
    static constexpr std::size_t EFFORT_PLACE = 4;    // and what each place adds to them

    const wchar_t* m_pText;
    const wchar_t* m_pTextLast; // where the last character of the pattern is at place 0
    unsigned int m_uiPlaces;
    const wchar_t* m_pPattern;
    unsigned int m_uiPatternLength;
    unsigned int m_uiNext = 0; // the first place not looked at
    std::size_t m_uiEffort = 0;
    int m_iFound = -1;

    bool isMatch(unsigned int uiPlace) noexcept {
        if (m_pText[uiPlace] != m_pPattern[0] || m_pTextLast[uiPlace] != m_pPattern[m_uiPatternLength - 1])
            return false;
        m_uiEffort += m_uiPatternLength;
        return isEqual(m_pText + uiPlace + 1, m_pPattern + 1, m_uiPatternLength - 2);
    }

    bool isSlow() const noexcept { return m_uiEffort > EFFORT_START + EFFORT_PLACE * m_uiNext; }

    // Each returns whether the answer is known.

    bool findByFirst() noexcept {
        for (unsigned int uiTries = 0; m_uiNext + RARE_START >= uiTries * RARE_GAP && !isSlow(); ++uiTries) {
            const int iPlace = CStringCore::findChar(m_pText + m_uiNext, m_uiPlaces - m_uiNext, m_pPattern[0]);
            if (iPlace < 0)
                return true;
            m_uiNext += static_cast<unsigned int>(iPlace) + 1;
            if (isMatch(m_uiNext - 1))
                return setFound(m_uiNext - 1);
        }
        return false;
    }

    // The first and the last character of the pattern at many places at a time: few places pass both.
    bool findByEnds() noexcept {
        for (; m_uiPlaces - m_uiNext >= BLOCK && !isSlow(); m_uiNext += BLOCK) {
            if (mayHaveMatch() && findOneByOne(m_uiNext + BLOCK))
                return true;
        }
        if (m_uiPlaces - m_uiNext >= BLOCK)
            return false;
        findOneByOne(m_uiPlaces); // so few that it does not matter what they cost
        return true;
    }

    bool mayHaveMatch() const noexcept {
        const tagLanes first = fillLanes(m_pPattern[0]);
        const tagLanes last = fillLanes(m_pPattern[m_uiPatternLength - 1]);
        tagLanes hits{};
        for (unsigned int i = m_uiNext; i < m_uiNext + BLOCK; i += LANES)
            hits |= (loadLanes(m_pText + i) == first) & (loadLanes(m_pTextLast + i) == last);
        return isAnySet(hits);
    }

    bool findOneByOne(unsigned int uiEnd) noexcept {
        for (unsigned int i = m_uiNext; i < uiEnd; ++i)
            if (isMatch(i))
                return setFound(i);
        return false;
    }

    bool setFound(unsigned int uiPlace) noexcept {
        m_iFound = static_cast<int>(uiPlace);
        return true;
    }
};

bool isWordChar(wchar_t ch) noexcept {
    return CStringCore::isLetter(ch) || CStringCore::isNumber(ch) || CStringCore::isUnderline(ch) ||
           CStringCore::isConnectLine(ch);
}

bool isWholeWord(const wchar_t* pText, unsigned int uiTextLength, unsigned int uiStart, unsigned int uiEnd) noexcept {
    if (uiStart != 0 && isWordChar(pText[uiStart]) && isWordChar(pText[uiStart - 1]))
        return false;
    return uiEnd == uiTextLength || !isWordChar(pText[uiEnd - 1]) || !isWordChar(pText[uiEnd]);
}

// The next place from uiFrom on, -1 if there is none. uiPlaces is the number of places where the pattern has room.
int findPlace(const wchar_t* pText, unsigned int uiPlaces, unsigned int uiFrom, const wchar_t* pPattern,
              unsigned int uiPatternLength, bool bCaseSensitive) noexcept {
    if (bCaseSensitive) {
        const int iFound =
            CStringCore::strstr(pText + uiFrom, uiPlaces - uiFrom + uiPatternLength - 1, pPattern, uiPatternLength);
        return iFound < 0 ? -1 : iFound + static_cast<int>(uiFrom);
    }
    const wchar_t chFirst = toLowerASCII(pPattern[0]);
    for (unsigned int i = uiFrom; i < uiPlaces; ++i)
        if (toLowerASCII(pText[i]) == chFirst && CStringCore::strncmpIC(pText + i, pPattern, uiPatternLength) != 0)
            return static_cast<int>(i);
    return -1;
}
} // namespace

unsigned int CStringCore::strlen(const wchar_t* pText) noexcept {
    return pText ? static_cast<unsigned int>(std::wcslen(pText)) : 0;
}

void CStringCore::strcat(wchar_t* pTarget, const wchar_t* pSource) noexcept {
    if (pTarget && pSource)
        std::wcscat(pTarget, pSource);
}

void CStringCore::strcpy(wchar_t* pTarget, const wchar_t* pSource) noexcept {
    if (!pTarget)
        return;
    if (pSource)
        std::wmemmove(pTarget, pSource, std::wcslen(pSource) + 1);
    else
        *pTarget = 0;
}

void CStringCore::strncpy(wchar_t* pTarget, const wchar_t* pSource, unsigned int uiCount) noexcept {
    if (!pTarget)
        return;
    const std::size_t uiLength = pSource ? wcsnlen(pSource, uiCount) : 0;
    if (uiLength != 0)
        std::wmemmove(pTarget, pSource, uiLength);
    pTarget[uiLength] = 0;
}

int CStringCore::strcmp(const wchar_t* pFirst, const wchar_t* pSecond) noexcept {
    if (!pFirst)
        pFirst = L"";
    if (!pSecond)
        pSecond = L"";
    // Most comparisons of a search end here.
    if (*pFirst != *pSecond)
        return getOrder(*pFirst, *pSecond);
    return getSign(std::wcscmp(pFirst, pSecond));
}

int CStringCore::strcmpIC(const wchar_t* pFirst, const wchar_t* pSecond) noexcept {
    if (!pFirst)
        pFirst = L"";
    if (!pSecond)
        pSecond = L"";
    for (;; ++pFirst, ++pSecond) {
        const wchar_t chFirst = toLowerASCII(*pFirst);
        const wchar_t chSecond = toLowerASCII(*pSecond);
        if (chFirst != chSecond || chFirst == 0)
            return getOrder(chFirst, chSecond);
    }
}

int CStringCore::strncmp(const wchar_t* pFirst, const wchar_t* pSecond, unsigned int uiCount) noexcept {
    if (uiCount == 0)
        return 1;
    if (!pFirst || !pSecond)
        return pFirst == pSecond;
    return isEqual(pFirst, pSecond, uiCount);
}

int CStringCore::strncmpIC(const wchar_t* pFirst, const wchar_t* pSecond, unsigned int uiCount) noexcept {
    if (uiCount == 0)
        return 1;
    if (!pFirst || !pSecond)
        return pFirst == pSecond;
    for (unsigned int i = 0; i < uiCount; ++i)
        if (toLowerASCII(pFirst[i]) != toLowerASCII(pSecond[i]))
            return 0;
    return 1;
}

int CStringCore::strrcmp(const wchar_t* pFirst, unsigned int uiFirstLength, const wchar_t* pSecond,
                         unsigned int uiSecondLength) noexcept {
    return compareReverse<keepCase>(pFirst, uiFirstLength, pSecond, uiSecondLength);
}

int CStringCore::strrcmpIC(const wchar_t* pFirst, unsigned int uiFirstLength, const wchar_t* pSecond,
                           unsigned int uiSecondLength) noexcept {
    return compareReverse<toLowerASCII>(pFirst, uiFirstLength, pSecond, uiSecondLength);
}

int CStringCore::strstr(const wchar_t* pText, const wchar_t* pPattern) noexcept {
    return strstr(pText, strlen(pText), pPattern, strlen(pPattern));
}

int CStringCore::strstr_last(const wchar_t* pText, const wchar_t* pPattern) noexcept {
    return strstr_last(pText, strlen(pText), pPattern, strlen(pPattern));
}

int CStringCore::strstr(const wchar_t* pText, unsigned int uiTextLength, const wchar_t* pPattern,
                        unsigned int uiPatternLength) noexcept {
    if (!pText || !pPattern || uiPatternLength == 0 || uiPatternLength > uiTextLength)
        return -1;
    if (uiPatternLength == 1)
        return findChar(pText, uiTextLength, *pPattern);
    return CPatternSearch(pText, uiTextLength - uiPatternLength + 1, pPattern, uiPatternLength).find();
}

int CStringCore::strstr_last(const wchar_t* pText, unsigned int uiTextLength, const wchar_t* pPattern,
                             unsigned int uiPatternLength) noexcept {
    if (!pText || !pPattern || uiPatternLength == 0 || uiPatternLength > uiTextLength)
        return -1;
    const wchar_t chFirst = pPattern[0];
    for (unsigned int i = uiTextLength - uiPatternLength + 1; i-- > 0;)
        if (pText[i] == chFirst && isEqual(pText + i, pPattern, uiPatternLength))
            return static_cast<int>(i);
    return -1;
}

bool CStringCore::strstart(const wchar_t* pText, const wchar_t* pPrefix) noexcept {
    return isPrefix<keepCase>(pText, pPrefix);
}

bool CStringCore::strstartIC(const wchar_t* pText, const wchar_t* pPrefix) noexcept {
    return isPrefix<toLowerASCII>(pText, pPrefix);
}

bool CStringCore::strend(const wchar_t* pText, const wchar_t* pSuffix) noexcept {
    return isSuffix(pText, pSuffix, strncmp);
}

bool CStringCore::strendIC(const wchar_t* pText, const wchar_t* pSuffix) noexcept {
    return isSuffix(pText, pSuffix, strncmpIC);
}

unsigned int CStringCore::charCount(const wchar_t* pText, unsigned int uiLength, wchar_t ch) noexcept {
    if (!pText)
        return 0;
    const tagLanes wanted = fillLanes(ch);
    tagLanes minusEven{};
    tagLanes minusOdd{};
    unsigned int i = 0;
    for (; uiLength - i >= 2 * LANES; i += 2 * LANES) {
        minusEven += loadLanes(pText + i) == wanted;
        minusOdd += loadLanes(pText + i + LANES) == wanted;
    }
    const tagLanes minusCount = minusEven + minusOdd;
    unsigned int uiCount = 0;
    for (unsigned int j = 0; j < LANES; ++j)
        uiCount -= static_cast<unsigned int>(minusCount[j]);
    for (; i < uiLength; ++i)
        uiCount += pText[i] == ch;
    return uiCount;
}

int CStringCore::findChar(const wchar_t* pText, unsigned int uiLength, wchar_t ch) noexcept {
    if (!pText)
        return -1;
    const wchar_t* const pFound = std::wmemchr(pText, ch, uiLength);
    return pFound ? static_cast<int>(pFound - pText) : -1;
}

int CStringCore::findLastChar(const wchar_t* pText, unsigned int uiLength, wchar_t ch) noexcept {
    if (!pText)
        return -1;
    const tagLanes wanted = fillLanes(ch);
    for (; uiLength >= 2 * LANES; uiLength -= 2 * LANES) {
        const wchar_t* const pBlock = pText + (uiLength - 2 * LANES);
        if (isAnySet((loadLanes(pBlock) == wanted) | (loadLanes(pBlock + LANES) == wanted)))
            break;
    }
    while (uiLength-- > 0)
        if (pText[uiLength] == ch)
            return static_cast<int>(uiLength);
    return -1;
}

int CStringCore::findText(const wchar_t* pText, int iTextLength, const wchar_t* pPattern, int iPatternLength,
                          bool bCaseSensitive, bool bWholeWord) noexcept {
    if (!pText || !pPattern)
        return -1;
    const unsigned int uiTextLength = iTextLength < 0 ? strlen(pText) : static_cast<unsigned int>(iTextLength);
    const unsigned int uiLength = iPatternLength < 0 ? strlen(pPattern) : static_cast<unsigned int>(iPatternLength);
    if (uiLength == 0 || uiLength > uiTextLength)
        return -1;
    const unsigned int uiPlaces = uiTextLength - uiLength + 1;
    for (unsigned int i = 0; i < uiPlaces; ++i) {
        const int iFound = findPlace(pText, uiPlaces, i, pPattern, uiLength, bCaseSensitive);
        if (iFound < 0)
            return -1;
        i = static_cast<unsigned int>(iFound);
        if (!bWholeWord || isWholeWord(pText, uiTextLength, i, i + uiLength))
            return iFound;
    }
    return -1;
}

void CStringCore::setZero(wchar_t* pText, unsigned int uiLength) noexcept {
    if (pText)
        std::wmemset(pText, 0, uiLength);
}

void CStringCore::toUppercase(wchar_t* pText, unsigned int uiLength) noexcept { fold(pText, uiLength, UPPERCASE); }

void CStringCore::toLowercase(wchar_t* pText, unsigned int uiLength) noexcept { fold(pText, uiLength, LOWERCASE); }

void CStringCore::replace(wchar_t* pText, unsigned int uiLength, wchar_t chFrom, wchar_t chTo) noexcept {
    if (!pText)
        return;
    for (unsigned int i = 0; i < uiLength; ++i)
        pText[i] = pText[i] == chFrom ? chTo : pText[i];
}
} // namespace Orlix
