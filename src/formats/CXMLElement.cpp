#include <Orlix/formats/CXMLElement.h>

#include <Orlix/formats/CXMLParser.h>

#include "formats/AttributeWalk.h"
#include "formats/CXMLReader.h"
#include "formats/CXMLWriter.h"

#include <utility>

namespace Orlix {
namespace {

void copyAttribute(CXMLElement::CAttributeMap& mapTarget, const CString& strName, const CString* pValue) {
    CString* const pCopy = pValue ? new CString(*pValue) : new CString();
    if (!mapTarget.addItem(strName, pCopy))
        delete pCopy;
}

void copyAttributes(const CXMLElement::CAttributeMap& mapSource, CXMLElement::CAttributeMap& mapTarget) {
    mapTarget.clear();
    visitAttributes(mapSource.getRoot(),
                    [&mapTarget](const auto& node) { copyAttribute(mapTarget, node.key, node.pValue); });
}
} // namespace

CXMLElement::CXMLElement() : CXMLElement(nullptr, nullptr) {}

CXMLElement::CXMLElement(CXMLParser* pDocument, CXMLElement* pParent) : m_pDocument(pDocument), m_pParent(pParent) {}

CXMLElement::CXMLElement(CXMLParser* pDocument, CXMLElement* pParent, const CString& strName)
    : m_pDocument(pDocument), m_pParent(pParent), m_strName(strName) {}

CXMLElement::~CXMLElement() = default;

unsigned int CXMLElement::getLevel() const noexcept {
    unsigned int uiLevel = 0;
    for (const CXMLElement* pElement = m_pParent; pElement; pElement = pElement->m_pParent)
        ++uiLevel;
    return uiLevel;
}

bool CXMLElement::hasAttribute(const CString& strName) const { return m_mapAttributes.getItem(strName) != nullptr; }

const CString& CXMLElement::getAttributeNameByIndex(unsigned int uiIndex) {
    if (!m_mapAttributes.hasPairs())
        m_mapAttributes.buildPairs();
    return m_mapAttributes.getKeyAt(uiIndex);
}

const CString& CXMLElement::getAttributeString(const CString& strName, const CString& strDefault) const {
    const CString* const pValue = m_mapAttributes.getItem(strName);
    return pValue ? *pValue : strDefault;
}

int CXMLElement::getAttributeInt(const CString& strName, int iDefault) const {
    const CString* const pValue = m_mapAttributes.getItem(strName);
    return pValue ? pValue->toInt() : iDefault;
}

unsigned int CXMLElement::getAttributeUInt(const CString& strName, unsigned int uiDefault) const {
    const CString* const pValue = m_mapAttributes.getItem(strName);
    return pValue ? pValue->toUInt() : uiDefault;
}

long CXMLElement::getAttributeLLong(const CString& strName, long lDefault) const {
    const CString* const pValue = m_mapAttributes.getItem(strName);
    return pValue ? pValue->toLLong() : lDefault;
}

float CXMLElement::getAttributeFloat(const CString& strName, float fDefault) const {
    const CString* const pValue = m_mapAttributes.getItem(strName);
    return pValue ? pValue->toFloat() : fDefault;
}

bool CXMLElement::getAttributeBool(const CString& strName, bool bDefault) const {
    const CString* const pValue = m_mapAttributes.getItem(strName);
    return pValue ? pValue->toBool() : bDefault;
}

void CXMLElement::getAllAttributes(CAttributeMap& mapAttributes) const {
    copyAttributes(m_mapAttributes, mapAttributes);
}

int CXMLElement::findChild(const CString& strName, unsigned int uiFrom) const {
    for (unsigned int i = uiFrom; i < m_aryChildren.getSize(); ++i) {
        if (m_aryChildren[i]->m_strName == strName)
            return static_cast<int>(i);
    }
    return -1;
}

bool CXMLElement::hasChild(const CString& strName) const { return findChild(strName, 0) >= 0; }

CXMLElement* CXMLElement::getSingleChild(const CString& strName) const {
    const int iChild = findChild(strName, 0);
    return iChild < 0 ? nullptr : m_aryChildren[static_cast<unsigned int>(iChild)];
}

void CXMLElement::getChildren(const CString& strName, CDataArray<CXMLElement*>& aryChildren) const {
    for (int i = findChild(strName, 0); i >= 0; i = findChild(strName, static_cast<unsigned int>(i) + 1))
        aryChildren.add(m_aryChildren[static_cast<unsigned int>(i)]);
}

void CXMLElement::setName(const CString& strName) {
    if (strName.length() == 0 || strName == m_strName)
        return;
    m_strName = strName;
    notifyDataChange();
}

void CXMLElement::setText(const CString& strText) {
    if (strText == m_strText)
        return;
    m_strText = strText;
    notifyDataChange();
}

void CXMLElement::setAttribute(const CString& strName, const CString& strValue) {
    const CString* const pValue = m_mapAttributes.getItem(strName);
    if (!pValue || *pValue != strValue)
        storeAttribute(strName, CString(strValue));
}

void CXMLElement::setAttribute(const CString& strName, const wchar_t* pValue) {
    setAttribute(strName, CString(pValue));
}

void CXMLElement::setAttribute(const CString& strName, int iValue) {
    if (!hasAttribute(strName) || getAttributeInt(strName, 0) != iValue)
        storeAttribute(strName, iValue);
}

void CXMLElement::setAttribute(const CString& strName, long lValue) {
    if (!hasAttribute(strName) || getAttributeLLong(strName, 0) != lValue)
        storeAttribute(strName, lValue);
}

void CXMLElement::setAttribute(const CString& strName, unsigned int uiValue) {
    if (!hasAttribute(strName) || getAttributeUInt(strName, 0) != uiValue)
        storeAttribute(strName, uiValue);
}

void CXMLElement::setAttribute(const CString& strName, float fValue) {
    if (!hasAttribute(strName) || getAttributeFloat(strName, 0) != fValue)
        storeAttribute(strName, fValue);
}

void CXMLElement::setAttribute(const CString& strName, bool bValue) {
    if (!hasAttribute(strName) || getAttributeBool(strName, false) != bValue)
        storeAttribute(strName, bValue);
}

void CXMLElement::storeAttribute(const CString& strName, CString&& strValue) {
    if (strName.length() == 0)
        return;
    CString* const pValue = new CString(std::move(strValue));
    if (!pValue)
        return;
    m_mapAttributes.setItem(strName, pValue);
    if (m_mapAttributes.getItem(strName) == pValue)
        notifyDataChange();
    else
        delete pValue; // no memory for the name
}

void CXMLElement::deleteAttribute(const CString& strName) {
    if (m_mapAttributes.deleteItem(strName))
        notifyDataChange();
}

void CXMLElement::clearAllAttributes() {
    if (!hasAttributes())
        return;
    m_mapAttributes.clear();
    notifyDataChange();
}

void CXMLElement::setAllAttributes(const CAttributeMap& mapAttributes) {
    copyAttributes(mapAttributes, m_mapAttributes);
    notifyDataChange();
}

CXMLElement* CXMLElement::addChild(const CString& strName) {
    if (strName.length() == 0)
        return nullptr;
    CXMLElement* const pChild = new CXMLElement(m_pDocument, this, strName);
    if (!pChild)
        return nullptr;
    // Without memory for a larger array the child is handed out and noticed all the same, but is no child.
    m_aryChildren.add(pChild);
    notifyDataChange();
    return pChild;
}

bool CXMLElement::deleteChild(unsigned int uiIndex) {
    if (uiIndex >= m_aryChildren.getSize())
        return false;
    m_aryChildren.removeAt(uiIndex);
    notifyDataChange();
    return true;
}

bool CXMLElement::deleteChild(CXMLElement* pChild) {
    m_aryChildren.remove(pChild);
    // True and a notice even for a stranger: what was asked for, that it be no child of this one, holds.
    notifyDataChange();
    return true;
}

bool CXMLElement::deleteChildren(const CString& strName) {
    const CString strWanted(strName); // the name may be that of a child that is about to go
    const unsigned int uiBefore = m_aryChildren.getSize();
    for (unsigned int i = uiBefore; i-- > 0;) { // from the end, where removing moves the fewest
        if (m_aryChildren[i]->m_strName == strWanted)
            m_aryChildren.removeAt(i);
    }
    if (m_aryChildren.getSize() == uiBefore)
        return false;
    notifyDataChange();
    return true;
}

void CXMLElement::clearChildren() {
    if (m_aryChildren.getSize() == 0)
        return;
    m_aryChildren.clear();
    notifyDataChange();
}

void CXMLElement::notifyDataChange() {
    if (m_pDocument)
        m_pDocument->notifyDataChange();
}

bool CXMLElement::parseFrom(const wchar_t* pText) {
    m_mapAttributes.clear();
    m_aryChildren.clear();
    return parseData(pText) != nullptr;
}

const wchar_t* CXMLElement::parseData(const wchar_t* pText) {
    return pText ? CXMLReader<wchar_t>::readElement(*this, pText, CXMLReader<wchar_t>::ROOT_LEVEL) : nullptr;
}

const wchar_t* CXMLElement::parseName(const wchar_t* pText) {
    return pText ? CXMLReader<wchar_t>::readName(*this, pText) : nullptr;
}

const wchar_t* CXMLElement::parseText(const wchar_t* pText) {
    return pText ? CXMLReader<wchar_t>::readText(*this, pText) : nullptr;
}

const wchar_t* CXMLElement::parseAttribute(const wchar_t* pText) {
    return pText ? CXMLReader<wchar_t>::readAttributes(*this, pText) : nullptr;
}

bool CXMLElement::saveTo(CString& strResult, bool bFormat, bool bAppend) {
    CXMLWriter writer(bFormat);
    return writer.writeRoot(*this) && writer.moveTo(strResult, bAppend);
}

CXMLElement* CXMLElement::clone() const {
    CXMLElement* const pClone = new CXMLElement();
    if (pClone)
        copyContentTo(*pClone);
    return pClone;
}

void CXMLElement::cloneTo(CXMLElement* pTarget) const {
    if (!pTarget || pTarget == this)
        return;
    // The copy is whole before the target loses anything, for this element may be among what it loses.
    CXMLElement copy;
    copyContentTo(copy);
    pTarget->m_strName = std::move(copy.m_strName);
    pTarget->m_strText = std::move(copy.m_strText);
    copyAttributes(copy.m_mapAttributes, pTarget->m_mapAttributes);
    pTarget->m_aryChildren.clear();
    for (unsigned int i = 0; i < copy.m_aryChildren.getSize(); ++i)
        pTarget->adoptChild(copy.m_aryChildren[i]);
    copy.m_aryChildren.setOwn(false);
}

// Into an element that has nothing yet.
void CXMLElement::copyContentTo(CXMLElement& target) const {
    target.m_strName = m_strName;
    target.m_strText = m_strText;
    copyAttributes(m_mapAttributes, target.m_mapAttributes);
    for (unsigned int i = 0; i < m_aryChildren.getSize(); ++i) {
        if (CXMLElement* const pChild = m_aryChildren[i]->clone())
            target.adoptChild(pChild);
    }
}

// The array drops what it has no memory for; then nobody would own the child.
void CXMLElement::adoptChild(CXMLElement* pChild) {
    const unsigned int uiBefore = m_aryChildren.getSize();
    m_aryChildren.add(pChild);
    if (m_aryChildren.getSize() == uiBefore)
        delete pChild;
}
} // namespace Orlix
