#pragma once

#include <Orlix/formats/CXMLElement.h>

namespace Orlix {

/** The recursive-descent reader behind the parse operations of CXMLElement.
 *
 *  Each operation takes a terminated text and gives the position behind what it read. Null means that it failed and
 *  that the element's document, if there is one, knows where, apart from the three failures that are silent.
 *
 *  @tparam TChar wchar_t, or unsigned char for UTF-8. The latter must be well-formed and then gives the same tree, but
 *  its failures are all silent: who wants the position reads the wide text again. */
template <class TChar> class CXMLReader {
public:
    static constexpr unsigned int ROOT_LEVEL = 1;

    static const TChar* readElement(CXMLElement& element, const TChar* pText, unsigned int uiLevel);
    static const TChar* readName(CXMLElement& element, const TChar* pText);
    static const TChar* readText(CXMLElement& element, const TChar* pText);
    static const TChar* readAttributes(CXMLElement& element, const TChar* pText);

private:
    static const TChar* readStartTag(CXMLElement& element, const TChar* pText);
    static const TChar* readAttribute(CXMLElement& element, const TChar* pText);
    static const TChar* readContent(CXMLElement& element, const TChar* pText, unsigned int uiLevel);
    static const TChar* readChildren(CXMLElement& element, const TChar* pText, unsigned int uiLevel);
    static const TChar* readChild(CXMLElement& element, const TChar* pText, unsigned int uiLevel);
    static const TChar* skipEndTag(const CXMLElement& element, const TChar* pText);
    static void addAttribute(CXMLElement& element, const TChar* pName, const TChar* pNameEnd, CString* pValue);
    static const TChar* fail(const CXMLElement& element, const TChar* pPosition);
};
} // namespace Orlix
