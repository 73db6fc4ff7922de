#pragma once

#include <Orlix/foundation/OrlixApi.h>

namespace Orlix {

/** The routines on raw wide text that CString stands on and that other classes call directly.
 *
 *  Characters compare as signed 32-bit values. An ending IC ignores the case of the ASCII letters and of no others,
 *  unlike toUppercase and toLowercase. An index is that of an element, -1 says that there is none.
 *  Threads: nothing is kept, so any routine from any thread. */
class ORLIX_API CStringCore {
public:
    /** ASCII letters only. */
    static bool isLetter(wchar_t ch) noexcept { return isWithin(ch & ~32, L'A', L'Z'); }
    /** The digits 0 to 9 only. */
    static bool isNumber(wchar_t ch) noexcept { return isWithin(ch, L'0', L'9'); }
    static bool isTAB(wchar_t ch) noexcept { return ch == L'\t'; }
    /** Carriage return or line feed. */
    static bool isReturn(wchar_t ch) noexcept { return ch == L'\r' || ch == L'\n'; }
    static bool isUnderline(wchar_t ch) noexcept { return ch == L'_'; }
    static bool isConnectLine(wchar_t ch) noexcept { return ch == L'-'; }
    /** Space, tabulator, carriage return or line feed. */
    static bool isBlank(wchar_t ch) noexcept { return ch == L' ' || isTAB(ch) || isReturn(ch); }
    /** @return true if the first of uiLength characters is a digit; false for null or none. */
    static bool isNumberStart(const wchar_t* pText, unsigned int uiLength) noexcept {
        return pText && uiLength != 0 && isNumber(*pText);
    }

    /** Characters before the terminator, 0 for null. */
    static unsigned int strlen(const wchar_t* pText) noexcept;
    /** Appends at the terminator of the target, which must have the room. With a null on either side nothing happens.
     */
    static void strcat(wchar_t* pTarget, const wchar_t* pSource) noexcept;
    /** Copies with the terminator. A null source empties the target, a null target does nothing. */
    static void strcpy(wchar_t* pTarget, const wchar_t* pSource) noexcept;
    /** Copies at most uiCount characters, up to the end of the source, and always terminates.
     *  @param pTarget has room for uiCount + 1; null does nothing. @param pSource null empties the target. */
    static void strncpy(wchar_t* pTarget, const wchar_t* pSource, unsigned int uiCount) noexcept;

    /** @return -1, 0 or 1. Null counts as empty; of two texts where one begins the other the shorter is lower. */
    static int strcmp(const wchar_t* pFirst, const wchar_t* pSecond) noexcept;
    static int strcmpIC(const wchar_t* pFirst, const wchar_t* pSecond) noexcept;
    /** Tells equality and no order: @return 1 if the first uiCount characters are equal, also for a count of 0, else 0.
     *  Does not stop at a terminator, so both sides must have uiCount elements; null equals null only. */
    static int strncmp(const wchar_t* pFirst, const wchar_t* pSecond, unsigned int uiCount) noexcept;
    static int strncmpIC(const wchar_t* pFirst, const wchar_t* pSecond, unsigned int uiCount) noexcept;
    /** Compares from the last character backwards. @return -1, 0 or 1; of two texts where one ends the other the
     *  shorter is lower. Null counts as length 0. */
    static int strrcmp(const wchar_t* pFirst, unsigned int uiFirstLength, const wchar_t* pSecond,
                       unsigned int uiSecondLength) noexcept;
    static int strrcmpIC(const wchar_t* pFirst, unsigned int uiFirstLength, const wchar_t* pSecond,
                         unsigned int uiSecondLength) noexcept;

    /** First occurrence; -1 also if either side is null or empty. */
    static int strstr(const wchar_t* pText, const wchar_t* pPattern) noexcept;
    /** Last occurrence; -1 also if either side is null or empty. */
    static int strstr_last(const wchar_t* pText, const wchar_t* pPattern) noexcept;
    /** First occurrence in a text whose length is known; a terminator within it ends nothing. */
    static int strstr(const wchar_t* pText, unsigned int uiTextLength, const wchar_t* pPattern,
                      unsigned int uiPatternLength) noexcept;
    /** Last occurrence in a text whose length is known; a terminator within it ends nothing. */
    static int strstr_last(const wchar_t* pText, unsigned int uiTextLength, const wchar_t* pPattern,
                           unsigned int uiPatternLength) noexcept;

    /** Whether the text begins with the prefix. An empty or null side gives false: an empty prefix is none. */
    static bool strstart(const wchar_t* pText, const wchar_t* pPrefix) noexcept;
    static bool strstartIC(const wchar_t* pText, const wchar_t* pPrefix) noexcept;
    /** Whether the text ends with the suffix. An empty or null side gives false: an empty suffix is none. */
    static bool strend(const wchar_t* pText, const wchar_t* pSuffix) noexcept;
    static bool strendIC(const wchar_t* pText, const wchar_t* pSuffix) noexcept;

    /** Occurrences within uiLength characters, 0 for null. */
    static unsigned int charCount(const wchar_t* pText, unsigned int uiLength, wchar_t ch) noexcept;
    static int findChar(const wchar_t* pText, unsigned int uiLength, wchar_t ch) noexcept;
    static int findLastChar(const wchar_t* pText, unsigned int uiLength, wchar_t ch) noexcept;
    /** First occurrence, with the choices of a search dialogue. A negative length means up to the terminator.
     *  @param bWholeWord refuses a match whose word characters go on outside it; word characters are ASCII letters,
     *  digits, '_' and '-'. @return -1 also if either side is null or empty. */
    static int findText(const wchar_t* pText, int iTextLength, const wchar_t* pPattern, int iPatternLength,
                        bool bCaseSensitive, bool bWholeWord) noexcept;

    /** Clears uiLength characters; null does nothing. */
    static void setZero(wchar_t* pText, unsigned int uiLength) noexcept;
    /** Folds ASCII, Latin-1, Latin Extended-A and Cyrillic in place, with the gaps listed in the source; null does
     *  nothing. */
    static void toUppercase(wchar_t* pText, unsigned int uiLength) noexcept;
    static void toLowercase(wchar_t* pText, unsigned int uiLength) noexcept;
    /** Replaces every occurrence within uiLength characters; null does nothing. */
    static void replace(wchar_t* pText, unsigned int uiLength, wchar_t chFrom, wchar_t chTo) noexcept;

private:
    static bool isWithin(wchar_t ch, wchar_t chFirst, wchar_t chLast) noexcept { return ch >= chFirst && ch <= chLast; }
};
} // namespace Orlix
