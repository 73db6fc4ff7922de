#include "foundation/CTwoWaySearch.h"

#include <algorithm>
#include <cwchar>
#include <functional>

namespace Orlix {

namespace {

struct tagSuffix {
    std::size_t uiStart;
    std::size_t uiPeriod;
};

/** The suffix that comes last in an order of the characters, and its period. */
template <class TLess> tagSuffix findMaximalSuffix(const wchar_t* pPattern, std::size_t uiLength, TLess isLess) {
    std::size_t uiStart = 0;
    std::size_t uiOther = 1; // the suffix that is compared with it
    std::size_t uiEqual = 0; // characters in which the two agree
    std::size_t uiPeriod = 1;
    while (uiOther + uiEqual < uiLength) {
        const wchar_t chOther = pPattern[uiOther + uiEqual];
        const wchar_t chBest = pPattern[uiStart + uiEqual];
        if (chOther == chBest) {
            if (++uiEqual == uiPeriod) {
                uiOther += uiPeriod;
                uiEqual = 0;
            }
        } else if (isLess(chOther, chBest)) {
            uiOther += uiEqual + 1;
            uiEqual = 0;
            uiPeriod = uiOther - uiStart;
        } else {
            uiStart = uiOther++;
            uiEqual = 0;
            uiPeriod = 1;
        }
    }
    return {uiStart, uiPeriod};
}

/** Cuts the pattern where its period shows within any repetition around the cut. */
tagSuffix factorize(const wchar_t* pPattern, std::size_t uiLength) {
    const tagSuffix up = findMaximalSuffix(pPattern, uiLength, std::less<wchar_t>());
    const tagSuffix down = findMaximalSuffix(pPattern, uiLength, std::greater<wchar_t>());
    return up.uiStart > down.uiStart ? up : down;
}
} // namespace

int CTwoWaySearch::find(const wchar_t* pText, std::size_t uiLength, const wchar_t* pPattern,
                        std::size_t uiPatternLength) noexcept {
    const auto [uiCut, uiSuffixPeriod] = factorize(pPattern, uiPatternLength);
    const bool bPeriodic = std::wmemcmp(pPattern, pPattern + uiSuffixPeriod, uiCut) == 0;
    const std::size_t uiShift = bPeriodic ? uiSuffixPeriod : std::max(uiCut, uiPatternLength - uiCut) + 1;
    std::size_t uiKnown = 0; // how much of the pattern's beginning is known to stand here already
    for (std::size_t uiPlace = 0; uiPlace <= uiLength - uiPatternLength;) {
        const wchar_t* const pHere = pText + uiPlace;
        std::size_t i = std::max(uiCut, uiKnown);
        while (i < uiPatternLength && pPattern[i] == pHere[i])
            ++i;
        if (i < uiPatternLength) {
            uiPlace += i - uiCut + 1;
            uiKnown = 0;
            continue;
        }
        for (i = uiCut; i > uiKnown && pPattern[i - 1] == pHere[i - 1];)
            --i;
        if (i <= uiKnown)
            return static_cast<int>(uiPlace);
        uiPlace += uiShift;
        uiKnown = bPeriodic ? uiPatternLength - uiShift : 0;
    }
    return -1;
}
} // namespace Orlix
