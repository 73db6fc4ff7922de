#include "formats/CXMLWriter.h"

#include <Orlix/formats/CXMLElement.h>
#include <Orlix/formats/CXMLHelper.h>

#include "formats/AttributeWalk.h"
#include "formats/TextBlock.h"
#include "formats/XMLChars.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cwchar>

namespace Orlix {
namespace {

// A large tree lies scattered over memory, and waiting for one piece after the other takes most of the time of a save.
// These have several on their way at once.

constexpr std::size_t CACHE_LINE = 64;
constexpr std::ptrdiff_t PIECE_CHARS = 1024;
constexpr unsigned int FETCHED_LEVELS = 3; // up to seven attributes

// In numbers, because there may be no object at all, or a smaller one than what is fetched.
void fetch(const void* pStart, std::size_t uiSize) noexcept {
    const std::uintptr_t uiStart = reinterpret_cast<std::uintptr_t>(pStart);
    for (std::size_t i = 0; i < uiSize; i += CACHE_LINE)
        __builtin_prefetch(reinterpret_cast<const void*>(uiStart + i));
}

void fetchElement(const CXMLElement* pElement) noexcept {
    if (pElement)
        fetch(pElement, sizeof(CXMLElement));
}

void fetchAttributes(const CXMLElement::CAttributeMap::tagNode* pNode, unsigned int uiLevels) noexcept {
    if (!pNode || uiLevels == 0)
        return;
    fetch(pNode->pLeft, sizeof(*pNode));
    fetch(pNode->pRight, sizeof(*pNode));
    __builtin_prefetch(pNode->key.getBuffer());
    fetch(pNode->pValue, sizeof(CString) + CACHE_LINE);
    fetchAttributes(pNode->pLeft, uiLevels - 1);
    fetchAttributes(pNode->pRight, uiLevels - 1);
}

unsigned int findEntity(wchar_t ch) noexcept {
    unsigned int uiEntity = 0;
    while (XML_CHAR_ENC_CHAR_TABLE[uiEntity] != ch)
        ++uiEntity;
    return uiEntity;
}
} // namespace

CXMLWriter::CXMLWriter(bool bFormat, unsigned int uiExpected)
    : m_bFormat(bFormat), m_bFailed(false), m_pStart(m_aryStart), m_uiStartSize(FIRST_CHARS), m_uiStartUsed(0),
      m_uiNextSize(FIRST_CHARS * 4), m_pFirst(nullptr), m_pLast(nullptr) {
    if (wchar_t* const pStart = uiExpected > FIRST_CHARS ? allocText(uiExpected) : nullptr) {
        m_pStart = pStart;
        m_uiStartSize = uiExpected;
    }
    m_pWrite = m_pStart;
    m_pEnd = m_pStart + m_uiStartSize;
}

CXMLWriter::~CXMLWriter() {
    if (m_pStart != m_aryStart)
        CMemory::free(m_pStart);
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
    if (m_bFailed)
        return false;
    const unsigned int uiKept = bAppend ? strResult.length() : 0;
    std::size_t uiLength = std::size_t(uiKept) + m_uiStartUsed;
    for (const tagBlock* pBlock = m_pFirst; pBlock; pBlock = pBlock->pNext)
        uiLength += pBlock->uiUsed;
    wchar_t* pResult = nullptr;
    if (uiKept == 0 && isWholeInOneBlock()) {
        pResult = m_pStart;
        m_pStart = m_aryStart;
    } else {
        pResult = allocText(uiLength);
        if (!pResult)
            return false;
        copyTo(uiKept != 0 ? std::wmemcpy(pResult, strResult.getBuffer(), uiKept) + uiKept : pResult);
    }
    pResult[uiLength] = 0;
    strResult.attach(pResult, static_cast<int>(uiLength));
    return true;
}

/** Whether the first block can become the string: it has all, and not much more room than that. */
bool CXMLWriter::isWholeInOneBlock() const {
    return m_pStart != m_aryStart && !m_pFirst && m_uiStartUsed >= m_uiStartSize - m_uiStartSize / 4;
}

wchar_t* CXMLWriter::copyTo(wchar_t* pTarget) const {
    pTarget = std::wmemcpy(pTarget, m_pStart, m_uiStartUsed) + m_uiStartUsed;
    for (tagBlock* pBlock = m_pFirst; pBlock; pBlock = pBlock->pNext)
        pTarget = std::wmemcpy(pTarget, getChars(pBlock), pBlock->uiUsed) + pBlock->uiUsed;
    return pTarget;
}

void CXMLWriter::writeElement(const CXMLElement& element, unsigned int uiLevel) {
    if (element.m_strName.length() == 0)
        return;
    fetchElement(element.m_aryChildren[0]);
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
    fetchAttributes(element.m_mapAttributes.getRoot(), FETCHED_LEVELS);
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
        if (const CXMLElement* const pNext = element.m_aryChildren[i + 1]) {
            fetch(pNext->m_mapAttributes.getRoot(), sizeof(CXMLElement::CAttributeMap::tagNode));
            fetchElement(element.m_aryChildren[i + 2]);
        }
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

// A text with a zero inside ends there, as every text of the dialect does.
void CXMLWriter::put(const CString& strText) {
    const wchar_t* pText = strText.getBuffer();
    if (!pText || !reserve(strText.length()))
        return;
    wchar_t* pWrite = m_pWrite;
    while (*pText != 0)
        *pWrite++ = *pText++;
    m_pWrite = pWrite;
}

void CXMLWriter::putEncoded(const CString& strText) {
    const wchar_t* pText = strText.getBuffer();
    const wchar_t* const pEnd = pText + strText.length();
    while (pText != pEnd) {
        // In pieces: an entity takes more room than its character, and then the rest would never fit.
        const wchar_t* const pPieceEnd = pText + std::min<std::ptrdiff_t>(pEnd - pText, PIECE_CHARS);
        if (!reserve(static_cast<unsigned int>(pPieceEnd - pText)))
            return;
        wchar_t* pWrite = m_pWrite;
        while (pText != pPieceEnd && !isXMLChar(*pText, XML_CHAR_ENCODE_END))
            *pWrite++ = *pText++;
        m_pWrite = pWrite;
        if (pText == pPieceEnd)
            continue;
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
    uiChars = std::max(uiChars, m_uiNextSize);
    const std::size_t uiSize = sizeof(tagBlock) + std::size_t(uiChars) * sizeof(wchar_t);
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
    m_pWrite = getChars(pBlock);
    m_pEnd = m_pWrite + uiChars;
    m_uiNextSize = std::min(m_uiNextSize * 2, LARGEST_CHARS);
    return true;
}

/** Counts what the last block holds. */
void CXMLWriter::closeBlock() {
    if (m_pLast)
        m_pLast->uiUsed = static_cast<unsigned int>(m_pWrite - getChars(m_pLast));
    else
        m_uiStartUsed = static_cast<unsigned int>(m_pWrite - m_pStart);
}
} // namespace Orlix
