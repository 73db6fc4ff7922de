#pragma once

#include <Orlix/foundation/CDataArray.h>
#include <Orlix/foundation/CString.h>

namespace Orlix {

class CXMLElement;
class IXMLParserListener;

/** A document of the XML dialect: header, encoding, root element, and where the last syntax error was.
 *
 *  It reads and writes files in UTF-8 and in UTF-16 little-endian, and it can patch a file as plain text, so that its
 *  layout and comments survive. The dialect is described in docs/formats.md. Every parse begins with empty().
 *  A text that is parsed must not belong to the document or its tree, which go first.
 *  Threads: a document and its tree belong to one thread at a time; the listener is called on that thread. */
class ORLIX_API CXMLParser : public CObject {
    ORLIX_HEAP_CLASS(L"CXMLParser")

public:
    enum EXMLEncoding : unsigned int {
        XML_ENCODING_NONE = 0, ///< nothing created or read yet; such a document cannot be saved
        XML_ENCODING_UTF8 = 1,
        XML_ENCODING_UTF16 = 2
    };

    CXMLParser();
    CXMLParser(const CXMLParser&) = delete;
    CXMLParser& operator=(const CXMLParser&) = delete;
    ~CXMLParser() override;

    /** @param pListener told of every change, not owned; null for nobody. */
    void setListener(IXMLParserListener* pListener) noexcept { m_pListener = pListener; }
    /** The encoding that the header names, whatever mark the file began with; UTF-8 without a header. */
    EXMLEncoding getEncoding() const noexcept { return m_eEncoding; }
    /** Where the last error was. Line 1, column 0 and no text: the file could not be read or held nothing. Line 0: no
     *  error, or one of the few that are not reported.
     *  @param uiLine from 1. @param uiColumn from 1; of an error at the end of the text the column of the last
     *  character. @param strText the whole line, without its end. */
    void getErrorPos(unsigned int& uiLine, unsigned int& uiColumn, CString& strText) const;

    /** Back to the state after construction, without a notice. The listener stays. */
    void empty();
    /** Begins a document without root. @return false, and nothing changes, for XML_ENCODING_NONE. */
    bool create(EXMLEncoding eEncoding);
    bool hasRootElement() const noexcept { return m_pRoot != nullptr; }
    /** The root, still owned here; null if there is none. */
    CXMLElement* getRootElement() const noexcept { return m_pRoot; }
    /** Makes the root, or gives the present one another name. @return the root; null for an empty name. */
    CXMLElement* addRootElement(const CString& strName);
    /** No notice if there is none. */
    void deleteRootElement();
    /** Calls the listener. */
    void notifyDataChange();

    /** Writes the header line. @param bFormat with a line feed behind it.
     *  @return false, and the result stays, without an encoding. */
    bool saveHeader(CString& strResult, bool bFormat) const;
    /** Writes header and root; a document without root is its header.
     *  @return false without an encoding; false with the header in the result if the root has no name. */
    bool saveToString(CString& strResult, bool bFormat);
    /** Writes a prepared text with the mark of the encoding. The file is created or replaced, also when false comes
     *  back because there is no encoding. */
    bool saveToFile(const CString& strText, const CString& strPath) const;
    /** @return false, and the file is left alone, if the document cannot be saved to a string. */
    bool saveToFile(const CString& strPath, bool bFormat);

    /** Reads the header and takes its encoding; a text without one is UTF-8.
     *  @return the first character behind header and blanks; null after an error and for null. */
    const wchar_t* parseHeader(const wchar_t* pText);
    /** @return false after an error, see getErrorPos; then there is no root. */
    bool parseFromString(const CString& strText);
    /** @param pBytes terminated UTF-8 with or without mark; null reads like an unreadable file. */
    bool parseFromStream(const unsigned char* pBytes);
    /** @return false after an error, and for a file that cannot be read or has less than four bytes. */
    bool parseFromFile(const CString& strPath);
    /** Reads a whole file: UTF-16 little-endian behind its mark, otherwise UTF-8 with or without mark. One unit is one
     *  character, so surrogates stay apart. UTF-16 big-endian is true on purpose, and leaves the result as it was.
     *  @return false for a file that cannot be read or has less than four bytes. */
    static bool loadToString(const CString& strPath, CString& strResult);

    /** Replaces texts within a file, one pair after the other, and writes it in the encoding that its header names.
     *  What was in the document is lost. Entities are matched as they stand in the file.
     *  @return true without opening the file if there are no pairs; false if the arrays differ in length, the file
     *  cannot be read, is UTF-16 big-endian, has a broken header, or cannot be written. */
    bool updateFile(const CString& strPath, CDataArray<CString>& aryFrom, CDataArray<CString>& aryTo);

    /** Sets the error position; the parsers call this. @param pPosition within the text that is being parsed; outside a
     *  parse the position is line 1, column 0. */
    void notifyErrorPos(const wchar_t* pPosition);

protected:
    IXMLParserListener* m_pListener; // not owned
    EXMLEncoding m_eEncoding;
    CXMLElement* m_pRoot;        // owned
    const wchar_t* m_pTextStart; // bounds of the text being parsed; both null outside a parse
    const wchar_t* m_pTextEnd;
    unsigned int m_uiErrorLine;
    unsigned int m_uiErrorColumn;
    CString m_strErrorText;
    unsigned int m_uiExpected; // characters that the next save is likely to have; 0 if nothing is known

private:
    void expectLength(std::size_t uiLength);
    const wchar_t* failAt(const wchar_t* pPosition);
    bool parseRoot(const wchar_t* pText);
    bool parseUTF8(const unsigned char* pBytes);
    const unsigned char* parseHeaderUTF8(const unsigned char* pBytes);
    const wchar_t* countTo(const wchar_t* pPosition);
};
} // namespace Orlix
