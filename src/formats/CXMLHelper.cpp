#include <Orlix/formats/CXMLHelper.h>

#include <Orlix/foundation/CString.h>
#include <Orlix/foundation/CStringConverter.h>

#include "formats/XMLChars.h"

namespace Orlix {

// The ampersand stands first, so that "&amp;lt;" is read as an ampersand before anything else is tried.
const wchar_t XML_CHAR_ENC_CHAR_TABLE[XML_CHAR_ENC_COUNT] = {L'&', L'<', L'>', L'"', L'\'', L'\r', L'\n'};
const wchar_t* XML_CHAR_ENC_DEST_TABLE[XML_CHAR_ENC_COUNT] = {L"&amp;",  L"&lt;", L"&gt;", L"&quot;",
                                                              L"&apos;", L"&cr;", L"&lf;"};
const unsigned int XML_CHAR_ENC_DEST_STR_LEN[XML_CHAR_ENC_COUNT] = {5, 4, 4, 6, 6, 4, 4};

const wchar_t* CXMLHelper::skipBlank(const wchar_t* pText) noexcept { return pText ? skipXMLBlank(pText) : nullptr; }

const wchar_t* CXMLHelper::readTag(const wchar_t* pText, const wchar_t* pTag, CString& strValue) {
    pText = skipBlank(pText);
    if (!CStringCore::strstart(pText, pTag))
        return nullptr;
    pText = skipXMLBlank(pText + CStringCore::strlen(pTag));
    if (*pText != L'=')
        return nullptr;
    pText = skipXMLBlank(pText + 1);
    if (!isXMLQuote(*pText))
        return nullptr;
    const wchar_t* const pValue = pText + 1;
    const wchar_t* const pEnd = findXMLChar(pValue, XML_CHAR_VALUE_END);
    if (*pEnd == 0)
        return nullptr;
    if (pEnd != pValue)
        strValue.fromBuffer(pValue, static_cast<unsigned int>(pEnd - pValue));
    return pEnd + 1;
}

void CXMLHelper::encodeSpecialChar(const CString& strText, CString& strResult) {
    encodeSpecialChar(strText.getBuffer(), strText.length(), strResult);
}

void CXMLHelper::encodeSpecialChar(const wchar_t* pText, unsigned int uiLength, CString& strResult) {
    CStringConverter::encodeChars(pText, uiLength, XML_CHAR_ENC_COUNT, XML_CHAR_ENC_CHAR_TABLE, XML_CHAR_ENC_DEST_TABLE,
                                  XML_CHAR_ENC_DEST_STR_LEN, strResult);
}

void CXMLHelper::decodeSpecialChar(const CString& strText, CString& strResult) {
    decodeSpecialChar(strText.getBuffer(), strText.length(), strResult);
}

void CXMLHelper::decodeSpecialChar(const wchar_t* pText, unsigned int uiLength, CString& strResult) {
    CStringConverter::decodeChars(pText, uiLength, XML_CHAR_ENC_COUNT, XML_CHAR_ENC_CHAR_TABLE, XML_CHAR_ENC_DEST_TABLE,
                                  XML_CHAR_ENC_DEST_STR_LEN, strResult);
}
} // namespace Orlix
