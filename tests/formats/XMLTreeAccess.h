#pragma once

#include "formats/XMLReference.h"

#include <Orlix/formats/CXMLElement.h>

namespace OrlixTest {

/** Reaches the children in order, which the public operations only give by name. */
struct tagXMLTreeAccess : Orlix::CXMLElement {
    static const Orlix::CObjectArray<Orlix::CXMLElement>& getChildren(const Orlix::CXMLElement& element) {
        return element.*&tagXMLTreeAccess::m_aryChildren;
    }
};

inline std::wstring toText(const Orlix::CString& strText) {
    return std::wstring(strText.length() == 0 ? L"" : strText.getBuffer(), strText.length());
}

/** The tree as the reference has it. */
inline tagXMLNode toNode(Orlix::CXMLElement& element) {
    tagXMLNode node;
    node.strName = toText(element.getName());
    node.strText = toText(element.getText());
    for (unsigned int i = 0; i < element.getAttributeCount(); ++i) {
        const Orlix::CString& strName = element.getAttributeNameByIndex(i);
        node.mapAttributes[toText(strName)] = toText(element.getAttributeString(strName, nullptr));
    }
    const auto& aryChildren = tagXMLTreeAccess::getChildren(element);
    for (unsigned int i = 0; i < aryChildren.getSize(); ++i)
        node.aryChildren.push_back(toNode(*aryChildren[i]));
    return node;
}
} // namespace OrlixTest
