#include "formats/CXMLReader.h"

#include <Orlix/formats/CXMLHelper.h>
#include <Orlix/formats/CXMLParser.h>

#include "formats/CXMLValue.h"
#include "formats/TextBlock.h"
#include "formats/XMLChars.h"
#include "foundation/CUTF8Codec.h"

#include <type_traits>
#include <utility>

namespace Orlix {
namespace {

constexpr unsigned int MAX_LEVEL = 4096; // bounds the stack that hostile nesting can take
constexpr unsigned int MAX_ELEMENT_NAME = 254;
constexpr unsigned int MAX_ATTRIBUTE_NAME = 255;

/** @return the first character that belongs to no name, or the first that is one too many. */
template <class TChar> const TChar* findNameEnd(const TChar* pName, unsigned int uiMax) noexcept {
    unsigned int uiLength = 0;
    while (isXMLChar(pName[uiLength], XML_CHAR_NAME) && uiLength != uiMax)
        ++uiLength;
    return pName + uiLength;
}

/** Passes over blanks, one comment and blanks. A comment without an end stays, to be refused as a child. */
template <class TChar> const TChar* skipComment(const TChar* pText) noexcept {
    pText = skipXMLBlank(pText);
    if (!startsWithXML(pText, "<!--"))
        return pText;
    for (const TChar* pEnd = pText + 4; *pEnd != 0; ++pEnd) {
        if (startsWithXML(pEnd, "-->"))
            return skipXMLBlank(pEnd + 3);
    }
    return pText;
}

/** @return whether all characters stand for themselves: no entity, and of bytes none that is part of a character. */
template <class TChar> bool isPlain(const TChar* pStart, const TChar* pEnd) noexcept {
    constexpr unsigned int uiBeyond = std::is_same_v<TChar, wchar_t> ? 0u : 0x80u;
    unsigned int uiFound = 0;
    for (; pStart != pEnd; ++pStart)
        uiFound |= (static_cast<unsigned int>(*pStart) & uiBeyond) | (*pStart == TChar('&'));
    return uiFound == 0;
}

template <class TChar> void widen(const TChar* pStart, const TChar* pEnd, wchar_t* pTarget) noexcept {
    for (; pStart != pEnd; ++pStart, ++pTarget)
        *pTarget = static_cast<wchar_t>(*pStart);
}

template <class TChar> void assignPlain(CString& strTarget, const TChar* pStart, const TChar* pEnd) {
    const std::size_t uiLength = static_cast<std::size_t>(pEnd - pStart);
    wchar_t* const pText = allocText(uiLength);
    if (!pText)
        return;
    widen(pStart, pEnd, pText);
    pText[uiLength] = 0;
    strTarget.attach(pText, static_cast<int>(uiLength));
}

void decode(CString& strTarget, const wchar_t* pStart, const wchar_t* pEnd) {
    CXMLHelper::decodeSpecialChar(pStart, static_cast<unsigned int>(pEnd - pStart), strTarget);
}

void decode(CString& strTarget, const unsigned char* pStart, const unsigned char* pEnd) {
    const std::size_t uiBytes = static_cast<std::size_t>(pEnd - pStart);
    wchar_t* const pText = allocText(CUTF8Codec::countCharacters(pStart, uiBytes));
    if (!pText)
        return;
    const std::size_t uiLength = CUTF8Codec::decode(pStart, uiBytes, pText);
    pText[uiLength] = 0;
    strTarget.attach(pText, static_cast<int>(uiLength));
    if (strTarget.indexOf(L'&') >= 0)
        CXMLHelper::decodeSpecialChar(strTarget, strTarget);
}

template <class TChar> void assignDecoded(CString& strTarget, const TChar* pStart, const TChar* pEnd) {
    if (isPlain(pStart, pEnd))
        assignPlain(strTarget, pStart, pEnd);
    else
        decode(strTarget, pStart, pEnd);
}

/** Builds a value where it stays. @return null without memory. */
template <class TChar> CString* makeValue(const TChar* pStart, const TChar* pEnd) {
    if (pStart != pEnd && isPlain(pStart, pEnd)) {
        wchar_t* pChars = nullptr;
        CString* const pPlain = CXMLValue::create(static_cast<std::size_t>(pEnd - pStart), pChars);
        if (pPlain)
            widen(pStart, pEnd, pChars);
        return pPlain;
    }
    CString* const pValue = new CString;
    if (pValue && pStart != pEnd)
        decode(*pValue, pStart, pEnd);
    return pValue;
}
} // namespace

template <class TChar>
const TChar* CXMLReader<TChar>::readElement(CXMLElement& element, const TChar* pText, unsigned int uiLevel) {
    pText = skipXMLBlank(pText);
    if (*pText != TChar('<') || uiLevel > MAX_LEVEL)
        return fail(element, pText);
    pText = readStartTag(element, pText + 1);
    if (!pText)
        return nullptr;
    return *pText == TChar('/') ? pText + 2 : readContent(element, pText + 1, uiLevel);
}

/** @return at the "/>" or the ">" that ends the tag. */
template <class TChar> const TChar* CXMLReader<TChar>::readStartTag(CXMLElement& element, const TChar* pText) {
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
    const bool bEnds = pText[0] == TChar('>') || (pText[0] == TChar('/') && pText[1] == TChar('>'));
    return bEnds ? pText : fail(element, pText);
}

template <class TChar> const TChar* CXMLReader<TChar>::readName(CXMLElement& element, const TChar* pText) {
    if (*pText == 0)
        return nullptr; // a "<" at the very end of the text fails in silence
    if (!isXMLChar(*pText, XML_CHAR_NAME_START))
        return fail(element, pText);
    const TChar* const pEnd = findNameEnd(pText, MAX_ELEMENT_NAME);
    if (isXMLChar(*pEnd, XML_CHAR_NAME))
        return fail(element, pEnd);
    assignPlain(element.m_strName, pText, pEnd);
    return pEnd;
}

template <class TChar> const TChar* CXMLReader<TChar>::readText(CXMLElement& element, const TChar* pText) {
    const TChar* const pStart = skipXMLBlank(pText);
    const TChar* const pEnd = findXMLChar(pStart, XML_CHAR_TEXT_END);
    if (pEnd != pStart)
        assignDecoded(element.m_strText, pStart, pEnd);
    return pEnd;
}

template <class TChar> const TChar* CXMLReader<TChar>::readAttributes(CXMLElement& element, const TChar* pText) {
    while (pText && *pText != 0) {
        pText = skipXMLBlank(pText);
        if (*pText == TChar('/') || *pText == TChar('>'))
            return pText;
        pText = readAttribute(element, pText);
    }
    return pText;
}

template <class TChar> const TChar* CXMLReader<TChar>::readAttribute(CXMLElement& element, const TChar* pText) {
    const TChar* const pName = pText;
    const TChar* const pNameEnd = findNameEnd(pName, MAX_ATTRIBUTE_NAME);
    // Of what may follow a name, "=", "/" and ">" are all taken for the equals sign, and no blank may stand before it.
    if (pNameEnd == pName || (*pNameEnd != TChar('=') && *pNameEnd != TChar('/') && *pNameEnd != TChar('>')))
        return fail(element, pNameEnd);
    pText = skipXMLBlank(pNameEnd + 1);
    if (!isXMLQuote(*pText))
        return fail(element, pText);
    const TChar* const pValue = pText + 1;
    const TChar* const pValueEnd = findXMLChar(pValue, XML_CHAR_VALUE_END);
    if (*pValueEnd == 0)
        return fail(element, pValueEnd);
    addAttribute(element, pName, pNameEnd, makeValue(pValue, pValueEnd));
    return pValueEnd + 1;
}

template <class TChar>
void CXMLReader<TChar>::addAttribute(CXMLElement& element, const TChar* pName, const TChar* pNameEnd, CString* pValue) {
    CString strName;
    assignPlain(strName, pName, pNameEnd);
    // Of several attributes of one name the first one counts, and none is an error.
    if (!pValue || strName.length() == 0 || !element.m_mapAttributes.addItem(std::move(strName), pValue))
        delete pValue;
}

/** Reads from behind the ">" of the start tag to behind the end tag. */
template <class TChar>
const TChar* CXMLReader<TChar>::readContent(CXMLElement& element, const TChar* pText, unsigned int uiLevel) {
    pText = skipComment(pText);
    if (*pText == 0)
        return fail(element, pText);
    if (*pText != TChar('<'))
        pText = readText(element, pText);
    return readChildren(element, pText, uiLevel);
}

template <class TChar>
const TChar* CXMLReader<TChar>::readChildren(CXMLElement& element, const TChar* pText, unsigned int uiLevel) {
    while (*pText != 0) {
        pText = skipComment(pText);
        if (const TChar* const pEnd = skipEndTag(element, pText))
            return pEnd;
        pText = readChild(element, pText, uiLevel + 1);
        if (!pText)
            return nullptr;
        pText = skipXMLBlank(pText);
        if (*pText == 0)
            return fail(element, pText);
        if (const TChar* const pEnd = skipEndTag(element, pText))
            return pEnd;
    }
    return nullptr; // a text that ends the document is not reported
}

template <class TChar>
const TChar* CXMLReader<TChar>::readChild(CXMLElement& element, const TChar* pText, unsigned int uiLevel) {
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
template <class TChar> const TChar* CXMLReader<TChar>::skipEndTag(const CXMLElement& element, const TChar* pText) {
    if (pText[0] != TChar('<') || pText[1] != TChar('/'))
        return nullptr;
    pText += 2;
    for (const wchar_t* pName = element.m_strName.getBuffer(); *pName != 0; ++pName, ++pText) {
        if (static_cast<wchar_t>(*pText) != *pName)
            return nullptr;
    }
    return *pText == TChar('>') ? pText + 1 : nullptr;
}

template <> const wchar_t* CXMLReader<wchar_t>::fail(const CXMLElement& element, const wchar_t* pPosition) {
    if (element.m_pDocument)
        element.m_pDocument->notifyErrorPos(pPosition);
    return nullptr;
}

template <> const unsigned char* CXMLReader<unsigned char>::fail(const CXMLElement&, const unsigned char*) {
    return nullptr;
}

template class CXMLReader<wchar_t>;
template class CXMLReader<unsigned char>;
} // namespace Orlix
