#include "formats/XMLReference.h"

#include <cwchar>
#include <utility>

namespace OrlixTest {
namespace {

const std::pair<const wchar_t*, wchar_t> ENTITIES[] = {{L"&amp;", L'&'},  {L"&lt;", L'<'},    {L"&gt;", L'>'},
                                                       {L"&quot;", L'"'}, {L"&apos;", L'\''}, {L"&cr;", L'\r'},
                                                       {L"&lf;", L'\n'}};

struct tagFailure {
    std::size_t uiPosition;
    bool bReported;
};

bool isOneOf(wchar_t ch, const wchar_t* pSet) { return ch != 0 && std::wcschr(pSet, ch) != nullptr; }

bool isLetter(wchar_t ch) { return (ch >= L'a' && ch <= L'z') || (ch >= L'A' && ch <= L'Z'); }

bool isNameChar(wchar_t ch) { return isLetter(ch) || (ch >= L'0' && ch <= L'9') || isOneOf(ch, L"-.:_"); }

std::wstring decode(const std::wstring& strRaw) {
    std::wstring strDecoded;
    for (std::size_t i = 0; i < strRaw.size();) {
        std::size_t uiTaken = 1;
        wchar_t ch = strRaw[i];
        for (const auto& entity : ENTITIES) {
            if (strRaw.compare(i, std::wcslen(entity.first), entity.first) == 0) {
                uiTaken = std::wcslen(entity.first);
                ch = entity.second;
                break;
            }
        }
        strDecoded += ch;
        i += uiTaken;
    }
    return strDecoded;
}

std::wstring encode(const std::wstring& strPlain) {
    std::wstring strEncoded;
    for (const wchar_t ch : strPlain) {
        std::wstring strCode(1, ch);
        for (const auto& entity : ENTITIES) {
            if (entity.second == ch)
                strCode = entity.first;
        }
        strEncoded += strCode;
    }
    return strEncoded;
}

class CReader {
public:
    explicit CReader(const std::wstring& strText) : m_strText(strText), m_uiPos(0) {}

    int readHeader() {
        if (!accept(L"<?xml")) {
            skipBlanks();
            return 1;
        }
        skipBlanks();
        if (readPair(L"version") != L"1.0")
            fail(m_uiPair);
        skipBlanks();
        std::wstring strEncoding = readPair(L"encoding");
        for (wchar_t& ch : strEncoding)
            ch = ch >= L'A' && ch <= L'Z' ? ch + 32 : ch;
        m_iEncoding = strEncoding == L"utf-8" ? 1 : strEncoding == L"utf-16" ? 2 : 0;
        if (m_iEncoding == 0)
            fail(m_uiPair);
        skipBlanks();
        if (!accept(L"?>"))
            fail(m_uiPos);
        skipBlanks();
        return m_iEncoding;
    }

    tagXMLNode readElement(int iLevel) {
        skipBlanks();
        if (at() != L'<' || iLevel > 4096)
            fail(m_uiPos);
        ++m_uiPos;
        tagXMLNode node;
        node.strName = readName();
        skipBlanks();
        failAtEnd();
        readAttributes(node);
        skipBlanks();
        failAtEnd();
        if (accept(L"/>"))
            return node;
        if (!accept(L">"))
            fail(m_uiPos);
        readContent(node, iLevel);
        return node;
    }

    int getEncoding() const { return m_iEncoding; }

private:
    std::wstring m_strText;
    std::size_t m_uiPos;
    std::size_t m_uiPair = 0;
    int m_iEncoding = 0;

    [[noreturn]] void fail(std::size_t uiPosition) const { throw tagFailure{uiPosition, true}; }
    [[noreturn]] void failSilently() const { throw tagFailure{0, false}; }
    bool isAtEnd() const { return m_uiPos == m_strText.size(); }
    void failAtEnd() const {
        if (isAtEnd())
            fail(m_uiPos);
    }
    wchar_t at() const { return isAtEnd() ? L'\0' : m_strText[m_uiPos]; }
    void skipBlanks() {
        while (isOneOf(at(), L"\t\n\r "))
            ++m_uiPos;
    }
    bool accept(const std::wstring& strToken) {
        const bool bThere = m_strText.compare(m_uiPos, strToken.size(), strToken) == 0;
        m_uiPos += bThere ? strToken.size() : 0;
        return bThere;
    }

    // A header pair; no value, which no header accepts, if it is malformed.
    std::wstring readPair(const std::wstring& strTag) {
        m_uiPair = m_uiPos;
        if (!accept(strTag))
            return L"";
        skipBlanks();
        if (!accept(L"="))
            return L"";
        skipBlanks();
        if (!isOneOf(at(), L"\"'"))
            return L"";
        const std::size_t uiStart = ++m_uiPos;
        const std::size_t uiEnd = m_strText.find_first_of(L"\"'", uiStart);
        if (uiEnd == std::wstring::npos)
            return L"";
        m_uiPos = uiEnd + 1;
        return m_strText.substr(uiStart, uiEnd - uiStart);
    }

    std::wstring readName() {
        if (isAtEnd())
            failSilently();
        if (!isLetter(at()) && at() != L'_')
            fail(m_uiPos);
        const std::size_t uiStart = m_uiPos;
        while (isNameChar(at())) {
            if (m_uiPos - uiStart == 254)
                fail(m_uiPos);
            ++m_uiPos;
        }
        return m_strText.substr(uiStart, m_uiPos - uiStart);
    }

    void readAttributes(tagXMLNode& node) {
        while (!isAtEnd()) {
            skipBlanks();
            if (isOneOf(at(), L"/>"))
                return;
            readAttribute(node);
        }
    }

    void readAttribute(tagXMLNode& node) {
        const std::size_t uiStart = m_uiPos;
        while (isNameChar(at()) && m_uiPos - uiStart < 255)
            ++m_uiPos;
        const std::wstring strName = m_strText.substr(uiStart, m_uiPos - uiStart);
        if (strName.empty() || !isOneOf(at(), L"/=>"))
            fail(m_uiPos);
        ++m_uiPos;
        skipBlanks();
        if (!isOneOf(at(), L"\"'"))
            fail(m_uiPos);
        const std::size_t uiValue = m_uiPos + 1;
        m_uiPos = m_strText.find_first_of(L"\"'", uiValue);
        if (m_uiPos == std::wstring::npos)
            fail(m_strText.size());
        node.mapAttributes.emplace(strName, decode(m_strText.substr(uiValue, m_uiPos - uiValue)));
        ++m_uiPos;
    }

    void skipComment() {
        skipBlanks();
        if (m_strText.compare(m_uiPos, 4, L"<!--") != 0)
            return;
        const std::size_t uiEnd = m_strText.find(L"-->", m_uiPos + 4);
        if (uiEnd != std::wstring::npos)
            m_uiPos = uiEnd + 3;
        skipBlanks();
    }

    void readContent(tagXMLNode& node, int iLevel) {
        const std::wstring strEndTag = L"</" + node.strName + L">";
        skipComment();
        failAtEnd();
        const std::size_t uiText = m_uiPos;
        while (!isAtEnd() && at() != L'<')
            ++m_uiPos;
        node.strText = decode(m_strText.substr(uiText, m_uiPos - uiText));
        for (;;) {
            if (isAtEnd())
                failSilently();
            skipComment();
            if (accept(strEndTag))
                return;
            node.aryChildren.push_back(readElement(iLevel + 1));
            skipBlanks();
            failAtEnd();
            if (accept(strEndTag))
                return;
        }
    }
};

/** Cuts the document into lines to tell where a position lies. */
void locate(const std::wstring& strDocument, std::size_t uiPosition, tagXMLOutcome& outcome) {
    std::size_t uiStart = 0;
    for (outcome.uiLine = 1;; ++outcome.uiLine) {
        const std::size_t uiEnd = std::min(strDocument.find_first_of(L"\r\n", uiStart), strDocument.size());
        if (uiPosition <= uiEnd || uiEnd == strDocument.size()) {
            const bool bAtEnd = uiPosition == strDocument.size();
            outcome.uiColumn = static_cast<unsigned int>(uiPosition - uiStart + (bAtEnd ? 0 : 1));
            outcome.strErrorText = strDocument.substr(uiStart, uiEnd - uiStart).c_str();
            return;
        }
        uiStart = uiEnd + (strDocument.compare(uiEnd, 2, L"\r\n") == 0 ? 2 : 1);
    }
}
} // namespace

tagXMLOutcome readXML(const std::wstring& strDocument) {
    tagXMLOutcome outcome;
    CReader reader(strDocument.substr(0, strDocument.find(L'\0')));
    try {
        outcome.iEncoding = reader.readHeader();
        outcome.root = reader.readElement(1);
        outcome.bParsed = true;
    } catch (const tagFailure& failure) {
        outcome.iEncoding = outcome.iEncoding != 0 ? outcome.iEncoding : reader.getEncoding();
        if (failure.bReported)
            locate(strDocument, failure.uiPosition, outcome);
    }
    return outcome;
}

std::wstring writeXML(const tagXMLNode& node, bool bFormat, unsigned int uiLevel) {
    const std::wstring strIndent(bFormat ? uiLevel : 0, L'\t');
    const std::wstring strLineEnd = bFormat ? L"\n" : L"";
    std::wstring strXML = strIndent + L"<" + node.strName;
    for (const auto& attribute : node.mapAttributes)
        strXML += L" " + attribute.first + L"=\"" + encode(attribute.second) + L"\"";
    if (!node.aryChildren.empty()) {
        strXML += L">" + strLineEnd;
        for (const tagXMLNode& child : node.aryChildren)
            strXML += writeXML(child, bFormat, uiLevel + 1);
        return strXML + strIndent + L"</" + node.strName + L">" + strLineEnd;
    }
    if (!node.strText.empty())
        return strXML + L">" + encode(node.strText) + L"</" + node.strName + L">" + strLineEnd;
    return strXML + L"/>" + strLineEnd;
}
} // namespace OrlixTest
