#pragma once

#include <Orlix/foundation/CDataArray.h>
#include <Orlix/foundation/CObjectArray.h>
#include <Orlix/foundation/CObjectMap.h>
#include <Orlix/foundation/CString.h>

namespace Orlix {

class CXMLParser;

/** A node of the tree of the XML dialect: a name, attributes in the order of their names, and children or a text.
 *
 *  The dialect is described in docs/formats.md. A changing operation tells the document, if the element has one; an
 *  element made by the default constructor or by clone has none. Names are not checked: only what has the form of a
 *  name is read back. References and pointers that are handed out live until the next change of what they belong to.
 *  Ownership: an element owns its children and its attribute values; the document and the parent own it.
 *  Threads: a tree and its document belong to one thread at a time, for reading too. */
class ORLIX_API CXMLElement : public CObject {
    ORLIX_HEAP_CLASS(L"CXMLElement")

public:
    typedef CObjectMap<CString, CString, tagStringCompare> CAttributeMap;

    CXMLElement();
    /** @param pDocument told of changes and syntax errors, null for none. @param pParent null for a root. Neither is
     *  owned, and the parent's children are not touched. */
    CXMLElement(CXMLParser* pDocument, CXMLElement* pParent);
    CXMLElement(CXMLParser* pDocument, CXMLElement* pParent, const CString& strName);
    CXMLElement(const CXMLElement&) = delete;
    CXMLElement& operator=(const CXMLElement&) = delete;
    ~CXMLElement() override;

    /** The number of ancestors: 0 for a root, and for every element that clone made. */
    unsigned int getLevel() const noexcept;
    const CString& getName() const noexcept { return m_strName; }
    const CString& getText() const noexcept { return m_strText; }

    bool hasAttributes() const noexcept { return m_mapAttributes.getCount() != 0; }
    unsigned int getAttributeCount() const noexcept { return m_mapAttributes.getCount(); }
    /** @param strName compared with case. */
    bool hasAttribute(const CString& strName) const;
    /** @param uiIndex place in the ascending order of the names; past the end a null string. */
    const CString& getAttributeNameByIndex(unsigned int uiIndex);
    /** @return the value, or strDefault itself, so keep that alive. */
    const CString& getAttributeString(const CString& strName, const CString& strDefault) const;
    /** The default is for an absent attribute only. A value that is no number gives what CString::toInt gives, which
     *  is 0; so do the four below with their own conversions. */
    int getAttributeInt(const CString& strName, int iDefault) const;
    unsigned int getAttributeUInt(const CString& strName, unsigned int uiDefault) const;
    long getAttributeLLong(const CString& strName, long lDefault) const;
    float getAttributeFloat(const CString& strName, float fDefault) const;
    /** Only the value "true" is true. */
    bool getAttributeBool(const CString& strName, bool bDefault) const;
    /** Replaces all of the given map by copies. */
    void getAllAttributes(CAttributeMap& mapAttributes) const;

    bool hasChild(const CString& strName) const;
    /** @return the first child of that name, still owned here; null if there is none. */
    CXMLElement* getSingleChild(const CString& strName) const;
    /** A child in document order, still owned here; null past the end. */
    CXMLElement* getChildAt(unsigned int uiIndex) const noexcept { return m_aryChildren[uiIndex]; }
    /** Appends all children of that name, still owned here, to what the array holds. */
    void getChildren(const CString& strName, CDataArray<CXMLElement*>& aryChildren) const;

    /** Ignored if the name is empty or the present one. */
    void setName(const CString& strName);
    /** Ignored if it is the present one. */
    void setText(const CString& strText);

    /** Adds an attribute or gives it another value. Nothing happens for an empty name, and none of what follows from a
     *  change if the present value equals the new one. */
    void setAttribute(const CString& strName, const CString& strValue);
    void setAttribute(const CString& strName, const wchar_t* pValue);
    /** Numbers and truth values compare as the getters read them: a present "010" is 10 already and keeps its
     *  spelling. */
    void setAttribute(const CString& strName, int iValue);
    void setAttribute(const CString& strName, long lValue);
    void setAttribute(const CString& strName, unsigned int uiValue);
    /** Written with four decimals, compared exactly: a number that four decimals do not hold is a change each time. */
    void setAttribute(const CString& strName, float fValue);
    void setAttribute(const CString& strName, bool bValue);
    /** Keeps narrow literals and foreign pointers from becoming a bool. */
    void setAttribute(const CString& strName, const void* pValue) = delete;
    /** No notice if there is no such attribute. */
    void deleteAttribute(const CString& strName);
    /** No notice if there are none. */
    void clearAllAttributes();
    /** Replaces all attributes by copies of the given ones, of which a null value counts as an empty one. */
    void setAllAttributes(const CAttributeMap& mapAttributes);

    /** Appends a new child with this document. @return the child, owned here; null for an empty name. */
    CXMLElement* addChild(const CString& strName);
    /** @return false without a notice if the index is out of range. */
    bool deleteChild(unsigned int uiIndex);
    /** Deletes the child if it is one of this element's. @return true, and a notice is given, also if it is not: unlike
     *  the form with an index, this one promises only that the element is no child afterwards. */
    bool deleteChild(CXMLElement* pChild);
    /** @return whether any child had that name; only then a notice is given, one for all. */
    bool deleteChildren(const CString& strName);
    /** No notice if there are none. */
    void clearChildren();
    /** Tells the document, if there is one, that something has changed. */
    void notifyDataChange();

    /** Replaces this element and all below it by what the text holds. Attributes and children go first, also when the
     *  parse then fails; the name and the text stay where the source has none to put in their place. Nobody is
     *  notified. What follows the end of the element is not looked at.
     *  @return false after a syntax error, which the document is told, and for null. */
    bool parseFrom(const wchar_t* pText);
    /** The steps of parseFrom. Each returns the position behind what it read, null after an error and for null.
     *  parseData reads one element, with no more than 4096 levels. */
    const wchar_t* parseData(const wchar_t* pText);
    /** Reads a name of at most 254 characters; no report is made of an empty text. */
    const wchar_t* parseName(const wchar_t* pText);
    /** Reads text up to the next "<" or the end, without the blanks before it. If that is nothing the text stays. */
    const wchar_t* parseText(const wchar_t* pText);
    /** Reads attributes up to "/", ">" or the end behind a value. Names have at most 255 characters, and of several
     *  attributes of one name the first one stays. */
    const wchar_t* parseAttribute(const wchar_t* pText);

    /** Writes the element and all below it. A text is written only where there are no children.
     *  @param bFormat one line for each tag, indented by tabulators according to getLevel.
     *  @param bAppend adds to the result instead of replacing it.
     *  @return false, and the result stays, without a name or memory. Children without a name are passed over. */
    bool saveTo(CString& strResult, bool bFormat, bool bAppend);

    /** @return a copy of the whole tree without document and parent, all the way down, owned by the caller. */
    CXMLElement* clone() const;
    /** Makes another element a copy of this one; its document and parent stay, and nobody is notified. The two may be
     *  related. Null and this element itself are ignored. */
    void cloneTo(CXMLElement* pTarget) const;

protected:
    CXMLParser* m_pDocument; // not owned; null on clones
    CXMLElement* m_pParent;  // not owned; null on roots and clones
    CString m_strName;
    CString m_strText;

private:
    template <class TChar> friend class CXMLReader;
    friend class CXMLWriter;

    CAttributeMap m_mapAttributes; // a value is replaced and never changed: it may share a block with its characters

protected:
    CObjectArray<CXMLElement> m_aryChildren;

private:
    int findChild(const CString& strName, unsigned int uiFrom) const;
    void storeAttribute(const CString& strName, CString&& strValue);
    void copyContentTo(CXMLElement& target) const;
    void adoptChild(CXMLElement* pChild);
};
} // namespace Orlix
