#pragma once

#include <map>
#include <string>
#include <vector>

namespace OrlixTest {

/** An element as the reference sees it. */
struct tagXMLNode {
    std::wstring strName;
    std::wstring strText;
    std::map<std::wstring, std::wstring> mapAttributes;
    std::vector<tagXMLNode> aryChildren;

    bool operator==(const tagXMLNode& other) const {
        return strName == other.strName && strText == other.strText && mapAttributes == other.mapAttributes &&
               aryChildren == other.aryChildren;
    }
};

/** What comes of parsing a document: its tree, or where it went wrong. */
struct tagXMLOutcome {
    bool bParsed = false;
    int iEncoding = 0; // 0 none, 1 UTF-8, 2 UTF-16
    tagXMLNode root;
    unsigned int uiLine = 0; // the three stay like this after a failure that is not reported
    unsigned int uiColumn = 0;
    std::wstring strErrorText;
};

/** Reads a document of the XML dialect as plainly as its rules can be put, to compare the parser with. */
tagXMLOutcome readXML(const std::wstring& strDocument);

/** Writes an element and all below it by the same rules. */
std::wstring writeXML(const tagXMLNode& node, bool bFormat, unsigned int uiLevel = 0);
} // namespace OrlixTest
