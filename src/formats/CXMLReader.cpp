#include "formats/CXMLReader.h"

#include <Orlix/formats/CXMLElement.h>
#include <Orlix/formats/CXMLHelper.h>
#include <Orlix/formats/CXMLParser.h>

#include "formats/XMLChars.h"

#include <cwchar>
#include <utility>

namespace Orlix {
namespace {

constexpr unsigned int MAX_LEVEL = 4096; // bounds the stack that hostile nesting can take
constexpr unsigned int MAX_ELEMENT_NAME = 254;
constexpr unsigned int MAX_ATTRIBUTE_NAME = 255;

/** @return the first character that belongs to no name, or the first that is one too many. */
const wchar_t* findNameEnd(const wchar_t* pName, unsigned int uiMax) noexcept {
    const wchar_t* const pLimit = pName + uiMax; // never reached behind a terminator
    while (isXMLChar(*pName, XML_CHAR_NAME) && pName != pLimit)
        ++pName;
    return pName;
}

bool startsComment(const wchar_t* pText) noexcept {
    return pText[0] == L'<' && pText[1] == L'!' && pText[2] == L'-' && pText[3] == L'-';
}

/** Passes over blanks, one comment and blanks. A comment without an end stays, to be refused as a child. */
const wchar_t* skipComment(const wchar_t* pText) noexcept {
    pText = skipXMLBlank(pText);
    if (!startsComment(pText))
        return pText;
    const wchar_t* const pEnd = std::wcsstr(pText + 4, L"-->");
    return pEnd ? skipXMLBlank(pEnd + 3) : pText;
}

void decode(CString& strTarget, const wchar_t* pStart, const wchar_t* pEnd) {
    const unsigned int uiLength = static_cast<unsigned int>(pEnd - pStart);
    if (std::wmemchr(pStart, L'&', uiLength))
        CXMLHelper::decodeSpecialChar(pStart, uiLength, strTarget);
    else
        strTarget.fromBuffer(pStart, uiLength);
}
} // namespace

const wchar_t* CXMLReader::readElement(CXMLElement& element, const wchar_t* pText, unsigned int uiLevel) {
    pText = skipXMLBlank(pText);
    if (*pText != L'<' || uiLevel > MAX_LEVEL)
        return fail(element, pText);
    pText = readStartTag(element, pText + 1);
    if (!pText)
        return nullptr;
    return *pText == L'/' ? pText + 2 : readContent(element, pText + 1, uiLevel);
}

/** @return at the "/>" or the ">" that ends the tag. */
const wchar_t* CXMLReader::readStartTag(CXMLElement& element, const wchar_t* pText) {
    pText = readName(element, pText);
    if (!pText)
        return nullptr;
    pText = skipXMLBlank(pText);
    if (*pText == 0 || element.m_strName.length() == 0) // without memory there is no name
        return fail(element, pText);
    pText = readAttributes(element, pText);
    if (!pText)
        return nullptr;
    pText = skipXMLBlank(pText);
    const bool bEnds = *pText == L'>' || (pText[0] == L'/' && pText[1] == L'>');
    return bEnds ? pText : fail(element, pText);
}

const wchar_t* CXMLReader::readName(CXMLElement& element, const wchar_t* pText) {
    if (*pText == 0)
        return nullptr; // a "<" at the very end of the text fails in silence
    if (!isXMLChar(*pText, XML_CHAR_NAME_START))
        return fail(element, pText);
    const wchar_t* const pEnd = findNameEnd(pText, MAX_ELEMENT_NAME);
    if (isXMLChar(*pEnd, XML_CHAR_NAME))
        return fail(element, pEnd);
    element.m_strName.fromBuffer(pText, static_cast<unsigned int>(pEnd - pText));
    return pEnd;
}

const wchar_t* CXMLReader::readText(CXMLElement& element, const wchar_t* pText) {
    pText = skipXMLBlank(pText);
    const wchar_t* const pStart = pText;
    while (!isXMLChar(*pText, XML_CHAR_TEXT_END))
        ++pText;
    if (pText != pStart)
        decode(element.m_strText, pStart, pText);
    return pText;
}

const wchar_t* CXMLReader::readAttributes(CXMLElement& element, const wchar_t* pText) {
    while (pText && *pText != 0) {
        pText = skipXMLBlank(pText);
        if (*pText == L'/' || *pText == L'>')
            return pText;
        pText = readAttribute(element, pText);
    }
    return pText;
}

const wchar_t* CXMLReader::readAttribute(CXMLElement& element, const wchar_t* pText) {
    const wchar_t* const pName = pText;
    const wchar_t* const pNameEnd = findNameEnd(pName, MAX_ATTRIBUTE_NAME);
    // Of what may follow a name, "=", "/" and ">" are all taken for the equals sign, and no blank may stand before it.
    if (pNameEnd == pName || (*pNameEnd != L'=' && *pNameEnd != L'/' && *pNameEnd != L'>'))
        return fail(element, pNameEnd);
    pText = skipXMLBlank(pNameEnd + 1);
    if (!isXMLQuote(*pText))
        return fail(element, pText);
    const wchar_t* const pValue = pText + 1;
    const wchar_t* const pValueEnd = findXMLQuote(pValue);
    if (*pValueEnd == 0)
        return fail(element, pValueEnd);

    CString* const pNew = new CString;
    if (pNew && pValueEnd != pValue)
        decode(*pNew, pValue, pValueEnd);
    // Of several attributes of one name the first one counts, and none is an error.
    if (!element.m_mapAttributes.addItem(CString(pName, static_cast<unsigned int>(pNameEnd - pName)), pNew))
        delete pNew;
    return pValueEnd + 1;
}

/** Reads from behind the ">" of the start tag to behind the end tag. */
const wchar_t* CXMLReader::readContent(CXMLElement& element, const wchar_t* pText, unsigned int uiLevel) {
    pText = skipComment(pText);
    if (*pText == 0)
        return fail(element, pText);
    if (*pText != L'<')
        pText = readText(element, pText);
    return readChildren(element, pText, uiLevel);
}

const wchar_t* CXMLReader::readChildren(CXMLElement& element, const wchar_t* pText, unsigned int uiLevel) {
    while (*pText != 0) {
        pText = skipComment(pText);
        if (const wchar_t* const pEnd = skipEndTag(element, pText))
            return pEnd;
        pText = readChild(element, pText, uiLevel + 1);
        if (!pText)
            return nullptr;
        pText = skipXMLBlank(pText);
        if (*pText == 0)
            return fail(element, pText);
        if (const wchar_t* const pEnd = skipEndTag(element, pText))
            return pEnd;
    }
    return nullptr; // a text that ends the document is not reported
}

const wchar_t* CXMLReader::readChild(CXMLElement& element, const wchar_t* pText, unsigned int uiLevel) {
    CXMLElement* const pChild = new CXMLElement(element.m_pDocument, &element);
    if (!pChild)
        return nullptr;
    pText = readElement(*pChild, pText, uiLevel);
    if (pText)
        element.adoptChild(pChild);
    else
        delete pChild;
    return pText;
}

/** @return behind the element's end tag; null, and that is no failure, if something else stands here. */
const wchar_t* CXMLReader::skipEndTag(const CXMLElement& element, const wchar_t* pText) {
    if (pText[0] != L'<' || pText[1] != L'/')
        return nullptr;
    const unsigned int uiLength = element.m_strName.length();
    pText += 2;
    if (std::wcsncmp(pText, element.m_strName.getBuffer(), uiLength) != 0)
        return nullptr;
    return pText[uiLength] == L'>' ? pText + uiLength + 1 : nullptr;
}

const wchar_t* CXMLReader::fail(const CXMLElement& element, const wchar_t* pPosition) {
    if (element.m_pDocument)
        element.m_pDocument->notifyErrorPos(pPosition);
    return nullptr;
}
} // namespace Orlix
