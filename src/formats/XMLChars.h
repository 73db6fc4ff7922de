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

constexpr void addXMLChars(tagXMLChars& chars, const char* pChars, unsigned char ucFlags) {
    for (; *pChars != 0; ++pChars)
        chars.aryFlags[static_cast<unsigned char>(*pChars)] |= ucFlags;
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

/** @return whether any of the flags holds; no flag holds beyond ASCII. */
inline bool isXMLChar(wchar_t ch, unsigned int uiFlags) noexcept {
    const unsigned int uiCode = static_cast<unsigned int>(ch); // a negative code becomes a large one
    return uiCode < sizeof(XML_CHARS.aryFlags) && (XML_CHARS.aryFlags[uiCode] & uiFlags) != 0;
}

inline bool isXMLQuote(wchar_t ch) noexcept { return ch == L'"' || ch == L'\''; }

/** @return the first character without the flags. The terminator is neither a blank nor a name character. */
inline const wchar_t* skipXMLChars(const wchar_t* pText, unsigned int uiFlags) noexcept {
    while (isXMLChar(*pText, uiFlags))
        ++pText;
    return pText;
}

inline const wchar_t* skipXMLBlank(const wchar_t* pText) noexcept { return skipXMLChars(pText, XML_CHAR_BLANK); }

/** @return the first quote of either kind, or else the terminator. */
inline const wchar_t* findXMLQuote(const wchar_t* pText) noexcept {
    while (!isXMLChar(*pText, XML_CHAR_VALUE_END))
        ++pText;
    return pText;
}
} // namespace Orlix
