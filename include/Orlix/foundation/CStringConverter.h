#pragma once

#include <Orlix/foundation/OrlixApi.h>

#include <cstdarg>

namespace Orlix {

class CString;
template <class T> class CDataArray;
template <class T> class CDataList;

/** Measures a formatted text without its terminator. The format is taken as it stands, so a wide text is "%ls" here.
 *  @param listArgs stays as it was and can be used again by the caller.
 *  @return the number of characters; -1 for a null format, a text of more than 524,287 characters, an argument that
 *  cannot be converted, or when there is no memory. */
ORLIX_API int vscwprintf(const wchar_t* pFormat, va_list listArgs);

/** Carries text to and from numbers, encodings and formatted output, and cuts and joins strings.
 *
 *  The parsers read what they can and stop: nothing here reports an error, any text gives a value. No parser skips
 *  blanks or takes a plus sign. When there is no memory for a result, the result string stays as it was.
 *  Threads: no state of its own, but see the MBCS pair, which sets the locale of the process. */
class ORLIX_API CStringConverter {
public:
    /** Reads an optional minus and the decimal digits behind it, up to the first other character.
     *  @return 0 for null or text without digits; a number too large wraps silently. */
    static int toInt(const wchar_t* pText);
    static int toInt(const unsigned char* pText);

    /** Reads decimal digits, or hexadecimal ones behind 0x or 0X. A minus gives 0; a leading zero is not octal.
     *  In the hexadecimal form characters that are no digits are skipped, not taken as the end: "0x1G2" is 18.
     *  @return 0 for null or text without digits; a number too large wraps silently. */
    static unsigned int toUInt(const wchar_t* pText);
    static unsigned int toUInt(const unsigned char* pText);

    /** As toInt, 64 bits wide. */
    static long toLLong(const wchar_t* pText);
    static long toLLong(const unsigned char* pText);

    /** Reads an optional minus, digits, and a fraction if a point stands with a digit behind it; knows no exponent.
     *  The last bit may differ from the nearest float: fraction digits are divided in single precision.
     *  @return 0 for null or text without digits, -0 if such a text begins with a minus. */
    static float toFloat(const wchar_t* pText);
    static float toFloat(const unsigned char* pText);

    /** @return true for exactly "true", in lower case and with nothing behind it. */
    static bool toBool(const wchar_t* pText);
    static bool toBool(const unsigned char* pText);

    /** Writes the decimal digits WITHOUT a terminator: pass a zeroed buffer.
     *  @param pBuffer room for 11 characters, or 20 for the long form; not null. */
    static void toString(int iValue, wchar_t* pBuffer);
    static void toString(unsigned int uiValue, wchar_t* pBuffer);
    static void toString(long lValue, wchar_t* pBuffer);

    /** Writes a fixed-point number and its terminator, with the decimal point of the current locale.
     *  @param pBuffer room for 32 characters; a longer number is cut after 31.
     *  @param uiDecimals digits behind the point; with 0 there is no point. */
    static void toString(float fValue, wchar_t* pBuffer, unsigned int uiDecimals);

    /** Writes "true" or "false" WITHOUT a terminator: pass a zeroed buffer. */
    static void toString(bool bValue, wchar_t* pBuffer);

    /** Stores the low 16 bits of each character in the byte order of the machine. There are no surrogate pairs.
     *  @param pTarget zeroed first; null does nothing. A text that fills it has no terminator.
     *  @param uiSize bytes; of an odd size the last byte is 0. */
    static void convertToUTF16(const wchar_t* pSource, unsigned char* pTarget, unsigned int uiSize);
    static void convertToUTF16(const CString& strSource, unsigned char* pTarget, unsigned int uiSize);

    /** Makes one character of each 16-bit unit in the byte order of the machine, zero units included.
     *  @param pSource null leaves the result as it is. @param uiSize bytes; 0 leaves the result as it is. */
    static void convertFromUTF16(const unsigned char* pSource, unsigned int uiSize, CString& strResult);

    /** Writes UTF-8 of at most three bytes a character; codes above 65535 lose their upper bits. Stops before the first
     *  character that would leave no room for the terminator, which is always written.
     *  @param uiSize bytes of pTarget, terminator included.
     *  @param pWritten receives the bytes written without the terminator, 0 if there is no source or no target; may be
     *  null. */
    static void convertToUTF8(const wchar_t* pSource, unsigned char* pTarget, unsigned int uiSize,
                              unsigned int* pWritten);
    static void convertToUTF8(const CString& strSource, unsigned char* pTarget, unsigned int uiSize,
                              unsigned int* pWritten);

    /** Reads UTF-8 of at most three bytes a character. Continuation bytes are not checked: a lead byte takes what
     *  follows; stray ones are dropped; a form cut short by the end ends the text.
     *  @param pSource terminated; null makes the result a null string, "" a blank one. */
    static void convertFromUTF8(const unsigned char* pSource, CString& strResult);

    /** Writes UTF-8 by the rules of the C library, always terminated. Sets the locale of the whole process to
     *  "zh_CN.utf8" for good, so do not run it beside code that depends on another one; without that locale the result
     *  is what wcstombs then gives.
     *  @param pTarget zeroed first, also for a null source; null does nothing. @param uiSize bytes. */
    static void convertToMBCS(const wchar_t* pSource, char* pTarget, unsigned int uiSize);
    static void convertToMBCS(const CString& strSource, char* pTarget, unsigned int uiSize);

    /** Reads UTF-8 by the rules of the C library, up to the first malformed byte. Sets the locale as convertToMBCS
     * does.
     *  @param pSource null makes the result a null string. */
    static void convertFromMBCS(const char* pSource, CString& strResult);

    /** Prints to standard output, which becomes a wide stream. "%s" is a wide text here; every "%s" counts as one, even
     *  the one in "%%s", which prints "%ls". @param pFormat null does nothing. */
    static void printf(const wchar_t* pFormat, ...);

    /** Formats a text; "%s" is a wide text, as in printf.
     *  @return a blank string for a null format or when vscwprintf gives -1. */
    static CString format(const wchar_t* pFormat, ...);

    /** Replaces each character that stands in a table by its code; the others stay.
     *  @param uiCount entries of the three tables. @param pChars the first entry that fits counts.
     *  @param pCodeLengths characters of each code, which needs no terminator.
     *  @param strResult a blank string for a length of 0; may be the source. */
    static void encodeChars(const wchar_t* pText, unsigned int uiLength, unsigned int uiCount, const wchar_t* pChars,
                            const wchar_t** ppCodes, const unsigned int* pCodeLengths, CString& strResult);
    static void encodeChars(const CString& strText, unsigned int uiCount, const wchar_t* pChars,
                            const wchar_t** ppCodes, const unsigned int* pCodeLengths, CString& strResult);

    /** Replaces each code by its character. The first code of the table that fits counts, so the longer one of two
     *  that begin alike has to stand first; codes of length 0 never fit.
     *  @param strResult a null string for a length of 0; may be the source. */
    static void decodeChars(const wchar_t* pText, unsigned int uiLength, unsigned int uiCount, const wchar_t* pChars,
                            const wchar_t** ppCodes, const unsigned int* pCodeLengths, CString& strResult);
    static void decodeChars(const CString& strText, unsigned int uiCount, const wchar_t* pChars,
                            const wchar_t** ppCodes, const unsigned int* pCodeLengths, CString& strResult);

    /** Cuts a text at each separator and appends the tokens to the target; a text of length 0 has none. Empty tokens
     *  inside the text always count, as blank strings or, in the numeric form, as 0.
     *  @param bStart whether a separator at the very start has an empty token before it.
     *  @param bEnd whether a separator at the very end has an empty token behind it. */
    static void separateString(const CString& strText, wchar_t chSeparator, CDataArray<unsigned int>& aryTarget,
                               bool bStart, bool bEnd);
    static void separateString(const CString& strText, wchar_t chSeparator, CDataArray<CString>& aryTarget, bool bStart,
                               bool bEnd);
    static void separateString(const CString& strText, wchar_t chSeparator, CDataList<CString>& listTarget, bool bStart,
                               bool bEnd);

    /** Cuts by the first separator, each piece by the second and so on, and appends the last pieces to the target.
     *  With several separators an empty piece is gone after the next one, for there is nothing in it to cut; without
     *  any, nothing happens. */
    static void split(const CString& strText, const CDataArray<wchar_t>& arySeparators, CDataArray<CString>& aryTarget,
                      bool bStart, bool bEnd);

    /** Joins all elements with the separator between them, numbers in decimal; no element gives a blank string.
     *  @param strResult may be one of the elements. */
    static void mergeString(const CDataArray<CString>& arySource, wchar_t chSeparator, CString& strResult);
    static void mergeString(const CDataList<CString>& listSource, wchar_t chSeparator, CString& strResult);
    static void mergeString(const CDataArray<unsigned int>& arySource, wchar_t chSeparator, CString& strResult);
};
} // namespace Orlix
