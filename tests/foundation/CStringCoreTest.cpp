#include <Orlix/foundation/CStringCore.h>

#include <gtest/gtest.h>

#include <climits>
#include <ctime>
#include <cwchar>
#include <random>
#include <string>

using namespace Orlix;

namespace {

TEST(CStringCore, LetterIsAnASCIILetterOnly) {
    for (int i = -40; i < 2000; ++i) {
        const bool bLetter = (i >= 65 && i <= 90) || (i >= 97 && i <= 122);
        EXPECT_EQ(CStringCore::isLetter(i), bLetter) << i;
    }
}

TEST(CStringCore, CharacterClassesHoldExactlyTheirCodes) {
    for (int i = -40; i < 2000; ++i) {
        EXPECT_EQ(CStringCore::isNumber(i), i >= 48 && i <= 57) << i;
        EXPECT_EQ(CStringCore::isTAB(i), i == 9) << i;
        EXPECT_EQ(CStringCore::isReturn(i), i == 13 || i == 10) << i;
        EXPECT_EQ(CStringCore::isUnderline(i), i == 95) << i;
        EXPECT_EQ(CStringCore::isConnectLine(i), i == 45) << i;
        EXPECT_EQ(CStringCore::isBlank(i), i == 32 || i == 9 || i == 13 || i == 10) << i;
    }
}

TEST(CStringCore, NumberStartNeedsADigitInANonEmptyBuffer) {
    wchar_t aryDigit[] = L"7a";
    wchar_t aryLetter[] = L"a7";
    EXPECT_TRUE(CStringCore::isNumberStart(aryDigit, 2));
    EXPECT_TRUE(CStringCore::isNumberStart(aryDigit, 1));
    EXPECT_FALSE(CStringCore::isNumberStart(aryDigit, 0));
    EXPECT_FALSE(CStringCore::isNumberStart(aryLetter, 2));
    EXPECT_FALSE(CStringCore::isNumberStart(nullptr, 2));
}

TEST(CStringCore, LengthOfNullIsZero) {
    EXPECT_EQ(CStringCore::strlen(nullptr), 0u);
    EXPECT_EQ(CStringCore::strlen(L""), 0u);
    EXPECT_EQ(CStringCore::strlen(L"abc"), 3u);
}

TEST(CStringCore, CopyAndAppendAcceptNull) {
    wchar_t aryTarget[8] = L"xyz";
    CStringCore::strcat(nullptr, L"a");
    CStringCore::strcpy(nullptr, L"a");
    CStringCore::strncpy(nullptr, L"a", 1);
    CStringCore::strcat(aryTarget, nullptr);
    EXPECT_STREQ(aryTarget, L"xyz");
    CStringCore::strcat(aryTarget, L"ab");
    EXPECT_STREQ(aryTarget, L"xyzab");
    CStringCore::strcpy(aryTarget, L"q");
    EXPECT_STREQ(aryTarget, L"q");
    EXPECT_EQ(aryTarget[2], L'z') << "nothing behind the terminator is written";
    CStringCore::strcpy(aryTarget, nullptr);
    EXPECT_STREQ(aryTarget, L"");
}

TEST(CStringCore, CountedCopyAlwaysTerminates) {
    wchar_t aryTarget[6] = L"vwxyz";
    CStringCore::strncpy(aryTarget, L"abc", 2);
    EXPECT_EQ(std::wmemcmp(aryTarget, L"ab\0yz", 6), 0);
    CStringCore::strncpy(aryTarget, L"c", 4);
    EXPECT_EQ(std::wmemcmp(aryTarget, L"c\0\0yz", 6), 0) << "stops at the end of the source";
    CStringCore::strncpy(aryTarget, L"abc", 0);
    EXPECT_EQ(aryTarget[0], 0);
    aryTarget[0] = L'v';
    CStringCore::strncpy(aryTarget, nullptr, 4);
    EXPECT_EQ(aryTarget[0], 0);
}

TEST(CStringCore, CompareOrdersByTheFirstDifference) {
    const wchar_t aryNegative[] = {-1, 0};
    const wchar_t aryHigh[] = {L'a', -5, 0};
    const struct {
        const wchar_t* pFirst;
        const wchar_t* pSecond;
        int iCase, iNoCase;
    } aryRow[] = {{nullptr, nullptr, 0, 0},   {nullptr, L"", 0, 0},           {L"", nullptr, 0, 0},
                  {nullptr, L"a", -1, -1},    {L"a", nullptr, 1, 1},          {L"abc", L"abc", 0, 0},
                  {L"abc", L"abd", -1, -1},   {L"abd", L"abc", 1, 1},         {L"ab", L"abc", -1, -1},
                  {L"abc", L"ab", 1, 1},      {L"ABC", L"abc", -1, 0},        {L"a", L"B", 1, -1},
                  {L"Z", L"_", -1, 1},        {L"\u00C4", L"\u00E4", -1, -1}, {aryNegative, L"a", -1, -1},
                  {aryNegative, L"", -1, -1}, {L"ab", aryHigh, 1, 1},         {aryHigh, L"ab", -1, -1}};
    for (const auto& row : aryRow) {
        EXPECT_EQ(CStringCore::strcmp(row.pFirst, row.pSecond), row.iCase) << &row - aryRow;
        EXPECT_EQ(CStringCore::strcmpIC(row.pFirst, row.pSecond), row.iNoCase) << &row - aryRow;
    }
}

TEST(CStringCore, CompareIgnoringCaseFoldsTheASCIILettersOnly) {
    for (wchar_t ch = 1; ch < 1300; ++ch) {
        const wchar_t aryUpper[] = {ch, 0};
        const wchar_t aryLower[] = {ch + 32, 0};
        const bool bLetter = ch >= 65 && ch <= 90;
        EXPECT_EQ(CStringCore::strcmpIC(aryUpper, aryLower), bLetter ? 0 : -1) << static_cast<int>(ch);
        EXPECT_EQ(CStringCore::strncmpIC(aryUpper, aryLower, 1), bLetter) << static_cast<int>(ch);
        EXPECT_EQ(CStringCore::strstartIC(aryUpper, aryLower), bLetter) << static_cast<int>(ch);
        EXPECT_EQ(CStringCore::strendIC(aryUpper, aryLower), bLetter) << static_cast<int>(ch);
    }
}

TEST(CStringCore, CountedCompareTellsEqualityAndNoOrder) {
    EXPECT_EQ(CStringCore::strncmp(L"abc", L"abd", 2), 1);
    EXPECT_EQ(CStringCore::strncmp(L"abc", L"abd", 3), 0);
    EXPECT_EQ(CStringCore::strncmp(L"abd", L"abc", 3), 0);
    EXPECT_EQ(CStringCore::strncmp(L"abc", L"xyz", 0), 1);
    EXPECT_EQ(CStringCore::strncmp(L"ab", L"AB", 2), 0);
    EXPECT_EQ(CStringCore::strncmpIC(L"ab", L"AB", 2), 1);
    EXPECT_EQ(CStringCore::strncmpIC(L"ab", L"AC", 2), 0);
    EXPECT_EQ(CStringCore::strncmpIC(L"abc", L"xyz", 0), 1);
    EXPECT_EQ(CStringCore::strncmp(nullptr, nullptr, 0), 1);
    EXPECT_EQ(CStringCore::strncmp(nullptr, L"a", 0), 1);
    EXPECT_EQ(CStringCore::strncmpIC(L"a", nullptr, 0), 1);
    EXPECT_EQ(CStringCore::strncmp(nullptr, L"a", 1), 0);
    EXPECT_EQ(CStringCore::strncmpIC(L"a", nullptr, 1), 0);
}

TEST(CStringCore, CountedCompareGoesOnBehindATerminator) {
    EXPECT_EQ(CStringCore::strncmp(L"a\0b", L"a\0c", 3), 0);
    EXPECT_EQ(CStringCore::strncmp(L"a\0b", L"a\0b", 3), 1);
    EXPECT_EQ(CStringCore::strncmpIC(L"a\0b", L"A\0c", 3), 0);
    EXPECT_EQ(CStringCore::strncmpIC(L"a\0b", L"A\0B", 3), 1);
}

TEST(CStringCore, ReverseCompareStartsAtTheLastCharacter) {
    const struct {
        const wchar_t* pFirst;
        const wchar_t* pSecond;
        int iCase, iNoCase;
    } aryRow[] = {{L"", L"", 0, 0},        {L"", L"a", -1, -1},      {L"a", L"", 1, 1},
                  {nullptr, L"a", -1, -1}, {L"a", nullptr, 1, 1},    {nullptr, nullptr, 0, 0},
                  {L"abc", L"abc", 0, 0},  {L"zbc", L"abd", -1, -1}, {L"abd", L"zbc", 1, 1},
                  {L"bc", L"abc", -1, -1}, {L"abc", L"bc", 1, 1},    {L"xA", L"xa", -1, 0},
                  {L"BA", L"xba", -1, -1}, {L"bX", L"aX", 1, 1},     {L"a\u00C4", L"a\u00E4", -1, -1}};
    for (const auto& row : aryRow) {
        const unsigned int uiFirst = CStringCore::strlen(row.pFirst);
        const unsigned int uiSecond = CStringCore::strlen(row.pSecond);
        EXPECT_EQ(CStringCore::strrcmp(row.pFirst, uiFirst, row.pSecond, uiSecond), row.iCase) << &row - aryRow;
        EXPECT_EQ(CStringCore::strrcmpIC(row.pFirst, uiFirst, row.pSecond, uiSecond), row.iNoCase) << &row - aryRow;
    }
}

TEST(CStringCore, SearchFindsTheFirstAndTheLastOccurrence) {
    const struct {
        const wchar_t* pText;
        const wchar_t* pPattern;
        int iFirst, iLast;
    } aryRow[] = {{nullptr, L"a", -1, -1}, {L"a", nullptr, -1, -1},     {L"", L"a", -1, -1},
                  {L"a", L"", -1, -1},     {L"", L"", -1, -1},          {L"abc", L"abc", 0, 0},
                  {L"ab", L"abc", -1, -1}, {L"abcabc", L"bc", 1, 4},    {L"aaaa", L"aa", 0, 2},
                  {L"abcabc", L"c", 2, 5}, {L"abcabc", L"acb", -1, -1}, {L"axxb axyb", L"axyb", 5, 5}};
    for (const auto& row : aryRow) {
        EXPECT_EQ(CStringCore::strstr(row.pText, row.pPattern), row.iFirst) << &row - aryRow;
        EXPECT_EQ(CStringCore::strstr_last(row.pText, row.pPattern), row.iLast) << &row - aryRow;
    }
}

TEST(CStringCore, SearchFindsEveryPlaceInEveryLength) {
    for (unsigned int uiText = 1; uiText < 70; ++uiText)
        for (unsigned int uiPattern = 1; uiPattern <= uiText && uiPattern < 9; ++uiPattern)
            for (unsigned int uiPlace = 0; uiPlace + uiPattern <= uiText; ++uiPlace) {
                std::wstring strText(uiText, L'.');
                const std::wstring strPattern = std::wstring(L"abcdefghi").substr(0, uiPattern);
                strText.replace(uiPlace, uiPattern, strPattern);
                ASSERT_EQ(CStringCore::strstr(strText.c_str(), strPattern.c_str()), static_cast<int>(uiPlace));
                ASSERT_EQ(CStringCore::strstr_last(strText.c_str(), strPattern.c_str()), static_cast<int>(uiPlace));
            }
}

TEST(CStringCore, SearchPassesPlacesThatOnlyLookAlikeAtTheirEnds) {
    std::wstring strText;
    for (int i = 0; i < 50; ++i)
        strText += L"abxd";
    strText += L"abcd";
    EXPECT_EQ(CStringCore::strstr(strText.c_str(), L"abcd"), 200);
    EXPECT_EQ(CStringCore::strstr(strText.c_str(), L"abyd"), -1);
}

// A text of a few letters that repeats itself and then does not: what the searches have most work with.
std::wstring makeRepetitiveText(std::mt19937& random, std::size_t uiLength) {
    std::wstring strPeriod;
    const std::size_t uiPeriod = 1 + random() % 12;
    while (strPeriod.size() < uiPeriod)
        strPeriod += static_cast<wchar_t>(L'a' + random() % 2);
    std::wstring strText;
    while (strText.size() < uiLength)
        strText += strPeriod;
    strText.resize(uiLength);
    for (unsigned int i = random() % 4; i > 0; --i)
        strText[random() % uiLength] = static_cast<wchar_t>(L'a' + random() % 3);
    return strText;
}

TEST(CStringCore, SearchAgreesWithTheStandardOneOnRepetitiveTexts) {
    std::mt19937 random(20240611);
    int iFoundLate = 0;
    for (int i = 0; i < 20000; ++i) {
        const std::wstring strText = makeRepetitiveText(random, 1 + random() % 3000);
        std::wstring strPattern = random() % 2 == 0 ? strText.substr(random() % strText.size(), 1 + random() % 400)
                                                    : makeRepetitiveText(random, 1 + random() % 400);
        if (random() % 4 == 0)
            strPattern[random() % strPattern.size()] = L'a';
        const std::size_t uiFound = strText.find(strPattern);
        const int iExpected = uiFound == std::wstring::npos ? -1 : static_cast<int>(uiFound);
        iFoundLate += iExpected > 1000;
        ASSERT_EQ(CStringCore::strstr(strText.c_str(), strPattern.c_str()), iExpected) << "round " << i;
    }
    EXPECT_GT(iFoundLate, 100) << "the texts are too easy";
}

TEST(CStringCore, SearchTakesTimeInProportionOnAnyText) {
    constexpr std::size_t TEXT = 400000;
    constexpr std::size_t HALF = 40000;
    std::wstring strGaps; // the pattern's first character stands as far apart as that of a usual text
    while (strGaps.size() < TEXT)
        strGaps += L"x" + std::wstring(39, L'y');
    const struct {
        std::wstring strText, strPattern;
    } aryRow[] = {{std::wstring(TEXT, L'a'), std::wstring(HALF, L'a') + L'b' + std::wstring(HALF, L'a')},
                  {std::wstring(TEXT, L'a'), std::wstring(HALF, L'a') + L'b'},
                  {strGaps, strGaps.substr(0, HALF) + L'z' + strGaps.substr(0, 41)}};
    const std::clock_t clockStart = std::clock();
    for (const auto& row : aryRow) {
        for (int i = 0; i < 10; ++i)
            ASSERT_EQ(CStringCore::strstr(row.strText.c_str(), row.strPattern.c_str()), -1);
    }
    EXPECT_LT(static_cast<double>(std::clock() - clockStart) / CLOCKS_PER_SEC, 3.0);
}

TEST(CStringCore, PrefixAndSuffixAreNeverEmpty) {
    const struct {
        const wchar_t* pText;
        const wchar_t* pPart;
        bool bStart, bStartIC, bEnd, bEndIC;
    } aryRow[] = {{L"abcab", L"ab", true, true, true, true},   {L"abc", L"ab", true, true, false, false},
                  {L"cab", L"ab", false, false, true, true},   {L"abc", L"AB", false, true, false, false},
                  {L"cab", L"AB", false, false, false, true},  {L"ab", L"abc", false, false, false, false},
                  {L"ab", L"xab", false, false, false, false}, {L"ab", L"ab", true, true, true, true},
                  {L"ab", L"", false, false, false, false},    {L"", L"", false, false, false, false},
                  {L"", L"a", false, false, false, false},     {nullptr, L"a", false, false, false, false},
                  {L"a", nullptr, false, false, false, false}, {nullptr, nullptr, false, false, false, false}};
    for (const auto& row : aryRow) {
        EXPECT_EQ(CStringCore::strstart(row.pText, row.pPart), row.bStart) << &row - aryRow;
        EXPECT_EQ(CStringCore::strstartIC(row.pText, row.pPart), row.bStartIC) << &row - aryRow;
        EXPECT_EQ(CStringCore::strend(row.pText, row.pPart), row.bEnd) << &row - aryRow;
        EXPECT_EQ(CStringCore::strendIC(row.pText, row.pPart), row.bEndIC) << &row - aryRow;
    }
}

TEST(CStringCore, CharactersAreCountedWithinTheLength) {
    std::wstring strText;
    for (unsigned int i = 0; i < 100; ++i) {
        EXPECT_EQ(CStringCore::charCount(strText.c_str(), i, L'x'), (i + 2) / 3) << i;
        strText += i % 3 == 0 ? L'x' : L'y';
    }
    EXPECT_EQ(CStringCore::charCount(L"xxx", 2, L'x'), 2u);
    EXPECT_EQ(CStringCore::charCount(nullptr, 5, L'x'), 0u);
}

TEST(CStringCore, CharactersAreFoundFromBothEnds) {
    EXPECT_EQ(CStringCore::findChar(L"abcb", 4, L'b'), 1);
    EXPECT_EQ(CStringCore::findLastChar(L"abcb", 4, L'b'), 3);
    EXPECT_EQ(CStringCore::findLastChar(L"abcb", 3, L'b'), 1);
    EXPECT_EQ(CStringCore::findChar(L"abcd", 3, L'd'), -1);
    EXPECT_EQ(CStringCore::findLastChar(L"abcd", 3, L'd'), -1);
    EXPECT_EQ(CStringCore::findChar(L"a", 0, L'a'), -1);
    EXPECT_EQ(CStringCore::findLastChar(L"a", 0, L'a'), -1);
    EXPECT_EQ(CStringCore::findChar(nullptr, 3, L'a'), -1);
    EXPECT_EQ(CStringCore::findLastChar(nullptr, 3, L'a'), -1);
    for (unsigned int i = 0; i < 40; ++i) {
        std::wstring strText(40, L'.');
        strText[i] = L'x';
        EXPECT_EQ(CStringCore::findChar(strText.c_str(), 40, L'x'), static_cast<int>(i));
        EXPECT_EQ(CStringCore::findLastChar(strText.c_str(), 40, L'x'), static_cast<int>(i));
    }
}

TEST(CStringCore, TextIsFoundWithEveryChoice) {
    const struct {
        const wchar_t* pText;
        int iTextLength;
        const wchar_t* pPattern;
        int iPatternLength;
        bool bCase, bWord;
        int iFound;
    } aryRow[] = {{nullptr, -1, L"a", -1, true, false, -1},
                  {L"a", -1, nullptr, -1, true, false, -1},
                  {L"a", 0, L"a", -1, true, false, -1},
                  {L"a", -1, L"a", 0, true, false, -1},
                  {L"ab", -1, L"abc", -1, true, false, -1},
                  {L"xabc", -1, L"abc", -1, true, false, 1},
                  {L"xabc", 3, L"abc", -1, true, false, -1},
                  {L"xabc", 3, L"abc", 2, true, false, 1},
                  {L"xABC", -1, L"abc", -1, true, false, -1},
                  {L"xABC", -1, L"abc", -1, false, false, 1},
                  {L"\u00C4", -1, L"\u00E4", -1, false, false, -1},
                  {L"word", -1, L"word", -1, true, true, 0},
                  {L"a word b", -1, L"word", -1, true, true, 2},
                  {L"sword word", -1, L"word", -1, true, true, 6},
                  {L"SWORD Word", -1, L"word", -1, false, true, 6},
                  {L"words word", -1, L"word", -1, true, true, 6},
                  {L"word-", -1, L"word", -1, true, true, -1},
                  {L"-word", -1, L"word", -1, true, true, -1},
                  {L"word_", -1, L"word", -1, true, true, -1},
                  {L"9word", -1, L"word", -1, true, true, -1},
                  {L".word.", -1, L"word", -1, true, true, 1},
                  {L"\u00E4word\u00E4", -1, L"word", -1, true, true, 1},
                  {L"a.word", -1, L".word", -1, true, true, 1},
                  {L"a.words", -1, L".word", -1, true, true, -1},
                  {L"word.a", -1, L"word.", -1, true, true, 0},
                  {L"xword.a", -1, L"word.", -1, true, true, -1},
                  {L"words", 4, L"word", -1, true, true, 0},
                  {L"aaa a", -1, L"a", -1, true, true, 4}};
    for (const auto& row : aryRow)
        EXPECT_EQ(
            CStringCore::findText(row.pText, row.iTextLength, row.pPattern, row.iPatternLength, row.bCase, row.bWord),
            row.iFound)
            << &row - aryRow;
}

TEST(CStringCore, ClearingZeroesTheCountOnly) {
    wchar_t aryText[] = L"abc";
    CStringCore::setZero(aryText, 2);
    EXPECT_EQ(std::wmemcmp(aryText, L"\0\0c", 4), 0);
    CStringCore::setZero(nullptr, 2);
}

TEST(CStringCore, ReplacingCharactersKeepsToTheLength) {
    wchar_t aryText[] = L"abababababa";
    CStringCore::replace(aryText, 10, L'a', L'x');
    EXPECT_STREQ(aryText, L"xbxbxbxbxba");
    CStringCore::replace(nullptr, 3, L'a', L'x');
}

// Written out pair by pair, so that a wrong bound or parity in the library shows.
struct tagExpected {
    int m_aryUpper[2100];
    int m_aryLower[2100];

    tagExpected() {
        for (int i = 0; i < 2100; ++i)
            m_aryUpper[i] = m_aryLower[i] = i;
        addShifted(97, 122, 65);
        addShifted(224, 247, 192);
        addShifted(249, 253, 217);
        addShifted(1075, 1103, 1043);
        addShifted(1104, 1119, 1024);
        addShifted(255, 255, 376);
        addPairs(256, 311);
        addPairs(330, 371);
        addPairs(377, 382);
        addPairs(536, 539);
        addPairs(1168, 1215);
        addPairs(1232, 1247);
    }
    void addShifted(int iFirstLower, int iLastLower, int iFirstUpper) {
        for (int i = iFirstLower; i <= iLastLower; ++i)
            addPair(i, iFirstUpper + i - iFirstLower);
    }
    void addPairs(int iFirstUpper, int iLastLower) {
        for (int i = iFirstUpper; i < iLastLower; i += 2)
            addPair(i + 1, i);
    }
    void addPair(int iLower, int iUpper) {
        m_aryUpper[iLower] = iUpper;
        m_aryLower[iUpper] = iLower;
    }
};

TEST(CStringCore, FoldingChangesExactlyTheListedRanges) {
    const tagExpected expected;
    for (int i = 0; i < 2100; ++i) {
        wchar_t aryText[] = {i, i};
        CStringCore::toUppercase(aryText, 1);
        EXPECT_EQ(static_cast<int>(aryText[0]), expected.m_aryUpper[i]) << i;
        EXPECT_EQ(static_cast<int>(aryText[1]), i) << "beyond the length";
        aryText[0] = i;
        CStringCore::toLowercase(aryText, 1);
        EXPECT_EQ(static_cast<int>(aryText[0]), expected.m_aryLower[i]) << i;
    }
}

TEST(CStringCore, FoldingKeepsItsGaps) {
    wchar_t aryText[] = {247, 248, 254, 1072, 1074, 1075, 0x10428, -1, INT_MIN, L'z', 0};
    CStringCore::toUppercase(aryText, 10);
    const wchar_t aryUpper[] = {215, 248, 254, 1072, 1074, 1043, 0x10428, -1, INT_MIN, L'Z', 0};
    EXPECT_EQ(std::wmemcmp(aryText, aryUpper, 11), 0);
    wchar_t aryOther[] = {215, 216, 222, 1040, 1042, 1043, 0x10400, -1, INT_MIN, L'Z', 0};
    CStringCore::toLowercase(aryOther, 10);
    const wchar_t aryLower[] = {247, 216, 222, 1040, 1042, 1075, 0x10400, -1, INT_MIN, L'z', 0};
    EXPECT_EQ(std::wmemcmp(aryOther, aryLower, 11), 0);
    CStringCore::toUppercase(nullptr, 3);
    CStringCore::toLowercase(nullptr, 3);
}
} // namespace
