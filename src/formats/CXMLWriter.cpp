#include "formats/CXMLWriter.h"

#include <Orlix/formats/CXMLElement.h>
#include <Orlix/formats/CXMLHelper.h>
#include <Orlix/memory/CMemory.h>

#include "formats/AttributeWalk.h"
#include "formats/XMLChars.h"

#include <algorithm>
#include <climits>
#include <cwchar>

namespace Orlix {
namespace {

wchar_t* getChars(void* pBlock, std::size_t uiHeader) {
    return reinterpret_cast<wchar_t*>(static_cast<unsigned char*>(pBlock) + uiHeader);
}

unsigned int findEntity(wchar_t ch) noexcept {
    unsigned int uiEntity = 0;
    while (XML_CHAR_ENC_CHAR_TABLE[uiEntity] != ch)
        ++uiEntity;
    return uiEntity;
}
} // namespace

CXMLWriter::CXMLWriter(bool bFormat) noexcept
    : m_bFormat(bFormat), m_bFailed(false), m_pWrite(m_aryFirst), m_pEnd(m_aryFirst + FIRST_CHARS), m_uiFirstUsed(0),
      m_uiNextChars(FIRST_CHARS * 4), m_pFirst(nullptr), m_pLast(nullptr) {}

CXMLWriter::~CXMLWriter() {
    while (tagBlock* const pBlock = m_pFirst) {
        m_pFirst = pBlock->pNext;
        CMemory::free(pBlock);
    }
}

bool CXMLWriter::writeRoot(const CXMLElement& element) {
    writeElement(element, element.getLevel());
    return element.m_strName.length() != 0;
}

bool CXMLWriter::moveTo(CString& strResult, bool bAppend) {
    closeBlock();
    const unsigned int uiKept = bAppend ? strResult.length() : 0;
    std::size_t uiLength = std::size_t(uiKept) + m_uiFirstUsed;
    for (const tagBlock* pBlock = m_pFirst; pBlock; pBlock = pBlock->pNext)
        uiLength += pBlock->uiUsed;
    if (m_bFailed || uiLength >= UINT_MAX / sizeof(wchar_t))
        return false;
    auto* const pResult =
        static_cast<wchar_t*>(CMemory::malloc(static_cast<unsigned int>((uiLength + 1) * sizeof(wchar_t)), 0));
    if (!pResult)
        return false;
    wchar_t* pWrite = pResult;
    if (uiKept != 0)
        pWrite = std::wmemcpy(pWrite, strResult.getBuffer(), uiKept) + uiKept;
    pWrite = std::wmemcpy(pWrite, m_aryFirst, m_uiFirstUsed) + m_uiFirstUsed;
    for (tagBlock* pBlock = m_pFirst; pBlock; pBlock = pBlock->pNext)
        pWrite = std::wmemcpy(pWrite, getChars(pBlock, sizeof(tagBlock)), pBlock->uiUsed) + pBlock->uiUsed;
    *pWrite = 0;
    strResult.attach(pResult, static_cast<int>(uiLength));
    return true;
}

void CXMLWriter::writeElement(const CXMLElement& element, unsigned int uiLevel) {
    if (element.m_strName.length() == 0)
        return;
    putIndent(uiLevel);
    put(L'<');
    put(element.m_strName);
    writeAttributes(element);
    if (element.m_aryChildren.getSize() != 0) {
        writeChildren(element, uiLevel); // and not the text: next to children it is lost, by design
    } else if (element.m_strText.length() != 0) {
        put(L'>');
        putEncoded(element.m_strText);
        writeEndTag(element);
    } else {
        put(L"/>", 2);
    }
    putLineEnd();
}

void CXMLWriter::writeAttributes(const CXMLElement& element) {
    visitAttributes(element.m_mapAttributes.getRoot(), [this](const auto& node) {
        if (node.key.length() == 0)
            return;
        put(L' ');
        put(node.key);
        put(L"=\"", 2);
        if (node.pValue)
            putEncoded(*node.pValue);
        put(L'"');
    });
}

void CXMLWriter::writeChildren(const CXMLElement& element, unsigned int uiLevel) {
    put(L'>');
    putLineEnd();
    for (unsigned int i = 0; i < element.m_aryChildren.getSize(); ++i) {
        const CXMLElement& child = *element.m_aryChildren[i];
        // The children of a clone have no parent and so no indent.
        writeElement(child, child.m_pParent == &element ? uiLevel + 1 : child.getLevel());
    }
    putIndent(uiLevel);
    writeEndTag(element);
}

void CXMLWriter::writeEndTag(const CXMLElement& element) {
    put(L"</", 2);
    put(element.m_strName);
    put(L'>');
}

inline void CXMLWriter::put(wchar_t ch) {
    if (reserve(1))
        *m_pWrite++ = ch;
}

inline void CXMLWriter::put(const wchar_t* pText, unsigned int uiLength) {
    if (reserve(uiLength))
        m_pWrite = std::wmemcpy(m_pWrite, pText, uiLength) + uiLength;
}

// A name with a zero inside ends there, as every text of the dialect does.
void CXMLWriter::put(const CString& strText) {
    put(strText.getBuffer(), static_cast<unsigned int>(wcsnlen(strText.getBuffer(), strText.length())));
}

void CXMLWriter::putEncoded(const CString& strText) {
    const wchar_t* pText = strText.getBuffer();
    while (pText) {
        const wchar_t* const pPlain = pText;
        pText = findXMLChar(pText, XML_CHAR_ENCODE_END);
        put(pPlain, static_cast<unsigned int>(pText - pPlain));
        if (*pText == 0)
            return;
        const unsigned int uiEntity = findEntity(*pText++);
        put(XML_CHAR_ENC_DEST_TABLE[uiEntity], XML_CHAR_ENC_DEST_STR_LEN[uiEntity]);
    }
}

void CXMLWriter::putIndent(unsigned int uiLevel) {
    if (!m_bFormat || !reserve(uiLevel))
        return;
    std::wmemset(m_pWrite, L'\t', uiLevel);
    m_pWrite += uiLevel;
}

void CXMLWriter::putLineEnd() {
    if (m_bFormat)
        put(L'\n');
}

/** Makes room in one piece. @return false if memory has run out. */
inline bool CXMLWriter::reserve(unsigned int uiChars) {
    return static_cast<std::size_t>(m_pEnd - m_pWrite) >= uiChars || addBlock(uiChars);
}

bool CXMLWriter::addBlock(unsigned int uiChars) {
    closeBlock();
    const std::size_t uiSize = sizeof(tagBlock) + std::size_t(std::max(uiChars, m_uiNextChars)) * sizeof(wchar_t);
    void* const pMemory =
        m_bFailed || uiSize > UINT_MAX ? nullptr : CMemory::malloc(static_cast<unsigned int>(uiSize), 0);
    m_bFailed = !pMemory;
    if (m_bFailed) {
        m_pWrite = m_pEnd; // so that all that follows comes here and fails too
        return false;
    }
    auto* const pBlock = static_cast<tagBlock*>(pMemory);
    pBlock->pNext = nullptr;
    pBlock->uiUsed = 0;
    (m_pLast ? m_pLast->pNext : m_pFirst) = pBlock;
    m_pLast = pBlock;
    m_pWrite = getChars(pBlock, sizeof(tagBlock));
    m_pEnd = getChars(pBlock, uiSize);
    m_uiNextChars = std::min(m_uiNextChars * 2, LARGEST_CHARS);
    return true;
}

/** Counts what the last block holds. */
void CXMLWriter::closeBlock() {
    if (m_pLast)
        m_pLast->uiUsed = static_cast<unsigned int>(m_pWrite - getChars(m_pLast, sizeof(tagBlock)));
    else
        m_uiFirstUsed = static_cast<unsigned int>(m_pWrite - m_aryFirst);
}
} // namespace Orlix
