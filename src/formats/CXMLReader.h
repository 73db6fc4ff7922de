#pragma once

namespace Orlix {

class CXMLElement;

/** The recursive-descent reader behind the parse operations of CXMLElement.
 *
 *  Each operation takes a terminated text and gives the position behind what it read. Null means that it failed and
 *  that the element's document, if there is one, knows where, apart from the three failures that are silent. */
class CXMLReader {
public:
    static constexpr unsigned int ROOT_LEVEL = 1;

    static const wchar_t* readElement(CXMLElement& element, const wchar_t* pText, unsigned int uiLevel);
    static const wchar_t* readName(CXMLElement& element, const wchar_t* pText);
    static const wchar_t* readText(CXMLElement& element, const wchar_t* pText);
    static const wchar_t* readAttributes(CXMLElement& element, const wchar_t* pText);

private:
    static const wchar_t* readStartTag(CXMLElement& element, const wchar_t* pText);
    static const wchar_t* readAttribute(CXMLElement& element, const wchar_t* pText);
    static const wchar_t* readContent(CXMLElement& element, const wchar_t* pText, unsigned int uiLevel);
    static const wchar_t* readChildren(CXMLElement& element, const wchar_t* pText, unsigned int uiLevel);
    static const wchar_t* readChild(CXMLElement& element, const wchar_t* pText, unsigned int uiLevel);
    static const wchar_t* skipEndTag(const CXMLElement& element, const wchar_t* pText);
    static const wchar_t* fail(const CXMLElement& element, const wchar_t* pPosition);
};
} // namespace Orlix
