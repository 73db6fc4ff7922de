#pragma once

namespace Orlix {

/** What a character means in the XML dialect, one flag for each question that a scan asks. */
enum EXMLChar : unsigned char {
    XML_CHAR_BLANK = 1,
    XML_CHAR_NAME = 2,        // may stand in a name
    XML_CHAR_NAME_START = 4,  // may begin an element's name
    XML_CHAR_VALUE_END = 8,   // a quote of either kind, or the terminator
    XML_CHAR_ENCODE_END = 16, // is written as an entity, or is the terminator
    XML_CHAR_TEXT_END = 32,   // "<" or the terminator
};

struct tagXMLChars {
    unsigned char aryFlags[128];
};

constexpr void addXMLChars(tagXMLChars& chars, const char* pChars, unsigned int uiFlags) {
    for (; *pChars != 0; ++pChars)
        chars.aryFlags[static_cast<unsigned char>(*pChars)] |= static_cast<unsigned char>(uiFlags);
}

constexpr tagXMLChars makeXMLChars() {
    tagXMLChars chars{};
    addXMLChars(chars, "\t\n\r ", XML_CHAR_BLANK);
    addXMLChars(chars, "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_", XML_CHAR_NAME | XML_CHAR_NAME_START);
    addXMLChars(chars, "0123456789-.:", XML_CHAR_NAME);
    addXMLChars(chars, "\"'", XML_CHAR_VALUE_END);
    addXMLChars(chars, "&<>\"'\r\n", XML_CHAR_ENCODE_END);
    addXMLChars(chars, "<", XML_CHAR_TEXT_END);
    chars.aryFlags[0] = XML_CHAR_VALUE_END | XML_CHAR_ENCODE_END | XML_CHAR_TEXT_END;
    return chars;
}

constexpr tagXMLChars XML_CHARS = makeXMLChars();

// The scans below take wide text, or the bytes of UTF-8, in which nothing beyond ASCII means anything either.

/** @return whether any of the flags holds; no flag holds beyond ASCII. */
template <class TChar> inline bool isXMLChar(TChar ch, unsigned int uiFlags) noexcept {
    const unsigned int uiCode = static_cast<unsigned int>(ch); // a negative code becomes a large one
    return uiCode < sizeof(XML_CHARS.aryFlags) && (XML_CHARS.aryFlags[uiCode] & uiFlags) != 0;
}

template <class TChar> inline bool isXMLQuote(TChar ch) noexcept { return ch == TChar('"') || ch == TChar('\''); }

/** @return the first character that is no blank; the terminator is none. */
template <class TChar> inline const TChar* skipXMLBlank(const TChar* pText) noexcept {
    while (isXMLChar(*pText, XML_CHAR_BLANK))
        ++pText;
    return pText;
}

/** @return the first character with any of the flags, one of which must hold for the terminator. */
template <class TChar> inline const TChar* findXMLChar(const TChar* pText, unsigned int uiFlags) noexcept {
    while (!isXMLChar(*pText, uiFlags))
        ++pText;
    return pText;
}

/** @return whether an ASCII text stands at a position, which may be shorter. */
template <class TChar> inline bool startsWithXML(const TChar* pText, const char* pStart) noexcept {
    while (*pStart != 0 && *pText == static_cast<TChar>(*pStart)) {
        ++pText;
        ++pStart;
    }
    return *pStart == 0;
}
} // namespace Orlix
