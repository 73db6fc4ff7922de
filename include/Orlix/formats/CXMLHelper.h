#pragma once

#include <Orlix/foundation/OrlixApi.h>

namespace Orlix {

class CString;

/** The entities of the XML dialect, in the order in which they are tried: of each its character, its text and the
 *  length of that. Carriage return and line feed have one too, so that values and texts stay on one line in a file. */
constexpr unsigned int XML_CHAR_ENC_COUNT = 7;
/** Has no terminator. */
extern ORLIX_API const wchar_t XML_CHAR_ENC_CHAR_TABLE[XML_CHAR_ENC_COUNT];
/** For reading only; it is not const because CStringConverter's tables are not. */
extern ORLIX_API const wchar_t* XML_CHAR_ENC_DEST_TABLE[XML_CHAR_ENC_COUNT];
extern ORLIX_API const unsigned int XML_CHAR_ENC_DEST_STR_LEN[XML_CHAR_ENC_COUNT];

/** The small lexical routines that elements and documents of the XML dialect share.
 *
 *  Threads: nothing is kept, so any routine from any thread. */
class ORLIX_API CXMLHelper {
public:
    /** @return the first character that is no tabulator, line feed, carriage return or space; null for null. */
    static const wchar_t* skipBlank(const wchar_t* pText) noexcept;

    /** Reads one pair of the header: blanks, the tag, "=" and a value in quotes of either kind, with blanks allowed
     *  around the "=". Either quote closes the value, whichever opened it; entities in it stay as they stand.
     *  @param pTag null or empty is found nowhere. @param strValue untouched by an empty value and by a failure.
     *  @return behind the closing quote; null if anything is missing, also for a null text. */
    static const wchar_t* readTag(const wchar_t* pText, const wchar_t* pTag, CString& strValue);

    /** Replaces the seven characters by their entities. @param strResult blank for a text of length 0; may be the
     *  source. */
    static void encodeSpecialChar(const CString& strText, CString& strResult);
    static void encodeSpecialChar(const wchar_t* pText, unsigned int uiLength, CString& strResult);

    /** Replaces entities by their characters, in one pass: "&amp;lt;" becomes "&lt;" and no less. Whatever else begins
     *  with an ampersand stays. @param strResult null for a text of length 0; may be the source. */
    static void decodeSpecialChar(const CString& strText, CString& strResult);
    static void decodeSpecialChar(const wchar_t* pText, unsigned int uiLength, CString& strResult);
};
} // namespace Orlix
