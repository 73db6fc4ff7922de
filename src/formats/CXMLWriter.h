#pragma once

namespace Orlix {

class CString;
class CXMLElement;

/** Writes a tree into a list of blocks, in one walk, and then into one string that fits exactly. */
class CXMLWriter {
public:
    explicit CXMLWriter(bool bFormat) noexcept;
    CXMLWriter(const CXMLWriter&) = delete;
    CXMLWriter& operator=(const CXMLWriter&) = delete;
    ~CXMLWriter();

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
    bool m_bFailed; // memory ran out: nothing more is written
    wchar_t* m_pWrite;
    wchar_t* m_pEnd;
    unsigned int m_uiFirstUsed; // as uiUsed, for the block that is part of the writer
    unsigned int m_uiNextChars; // size of the block that comes next, doubled each time
    tagBlock* m_pFirst;         // owned; the list behind the block that is part of the writer
    tagBlock* m_pLast;
    wchar_t m_aryFirst[FIRST_CHARS];

    void writeElement(const CXMLElement& element, unsigned int uiLevel);
    void writeAttributes(const CXMLElement& element);
    void writeChildren(const CXMLElement& element, unsigned int uiLevel);
    void writeEndTag(const CXMLElement& element);

    void put(wchar_t ch);
    void put(const wchar_t* pText, unsigned int uiLength);
    void put(const CString& strText);
    void putEncoded(const CString& strText);
    void putIndent(unsigned int uiLevel);
    void putLineEnd();

    bool reserve(unsigned int uiChars);
    bool addBlock(unsigned int uiChars);
    void closeBlock();
};
} // namespace Orlix
