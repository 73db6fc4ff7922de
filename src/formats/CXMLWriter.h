#pragma once

namespace Orlix {

class CString;
class CXMLElement;

/** Writes a tree in one walk, into blocks that become one string at the end; when the length was foreseen there is one
 *  block only, and it becomes the string itself. */
class CXMLWriter {
public:
    /** @param uiExpected the length foreseen, for which room is made at once; 0 if nothing is known. */
    explicit CXMLWriter(bool bFormat, unsigned int uiExpected = 0);
    CXMLWriter(const CXMLWriter&) = delete;
    CXMLWriter& operator=(const CXMLWriter&) = delete;
    ~CXMLWriter();

    /** Writes a text as it stands. */
    void put(const CString& strText);
    /** Once for each writer. @return false, and nothing is written, for an element without a name. */
    bool writeRoot(const CXMLElement& element);
    /** @param bAppend adds what was written to the result instead of replacing it.
     *  @return false, and the result stays, if memory ran out. */
    bool moveTo(CString& strResult, bool bAppend);

private:
    struct tagBlock {
        tagBlock* pNext;
        unsigned int uiUsed; // characters, which stand right behind; of the last block not yet counted
    };
    static constexpr unsigned int FIRST_CHARS = 1024; // enough for most of what is written at once
    static constexpr unsigned int LARGEST_CHARS = 256 * 1024;

    const bool m_bFormat;
    bool m_bFailed;    // memory ran out: nothing more is written
    wchar_t* m_pStart; // of the first block: m_aryStart, or owned
    wchar_t* m_pWrite;
    wchar_t* m_pEnd;            // of the last block
    unsigned int m_uiStartSize; // of the first block
    unsigned int m_uiStartUsed; // as uiUsed, for the first block
    unsigned int m_uiNextSize;  // of the block that comes next, doubled each time
    tagBlock* m_pFirst;         // owned; the blocks behind the first one
    tagBlock* m_pLast;
    wchar_t m_aryStart[FIRST_CHARS];

    void writeElement(const CXMLElement& element, unsigned int uiLevel);
    void writeAttributes(const CXMLElement& element);
    void writeChildren(const CXMLElement& element, unsigned int uiLevel);
    static void prefetch(const CXMLElement* pElement);
    void writeEndTag(const CXMLElement& element);

    void put(wchar_t ch);
    void put(const wchar_t* pText, unsigned int uiLength);
    void putEncoded(const CString& strText);
    void putIndent(unsigned int uiLevel);
    void putLineEnd();

    bool reserve(unsigned int uiChars);
    bool addBlock(unsigned int uiChars);
    void closeBlock();
    static wchar_t* getChars(tagBlock* pBlock) { return reinterpret_cast<wchar_t*>(pBlock + 1); }
    bool isWholeInOneBlock() const;
    wchar_t* copyTo(wchar_t* pTarget) const;
};
} // namespace Orlix
