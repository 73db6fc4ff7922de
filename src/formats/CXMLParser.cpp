#include <Orlix/formats/CXMLParser.h>

#include <Orlix/formats/CXMLHelper.h>
#include <Orlix/formats/IXMLParserListener.h>
#include <Orlix/foundation/CArrayPtr.h>
#include <Orlix/foundation/CStringConverter.h>
#include <Orlix/system/CFile.h>

#include "formats/CXMLReader.h"
#include "formats/CXMLWriter.h"
#include "formats/XMLChars.h"

#include <climits>
#include <cstdint>
#include <cstring>
#include <functional>

namespace Orlix {
namespace {

// By whether it is UTF-16 and whether a line feed follows.
constexpr const wchar_t* HEADER[2][2] = {
    {L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>", L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"},
    {L"<?xml version=\"1.0\" encoding=\"UTF-16\"?>", L"<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n"}};

constexpr unsigned int SMALLEST_FILE = 4;
constexpr unsigned int FILE_TERMINATOR = 2;        // zero bytes behind what was read
constexpr std::size_t LONGEST_EXPECTED = 1u << 28; // characters for which room is made beforehand
constexpr unsigned int LONGEST_HEADER = 256;       // that is read from bytes; a longer one is widened with the rest
constexpr unsigned int UTF8_MARK_SIZE = 3;
constexpr unsigned int UTF16_MARK_SIZE = 2;
constexpr unsigned char UTF8_MARK[UTF8_MARK_SIZE] = {0xEF, 0xBB, 0xBF};
constexpr unsigned char UTF16_MARK[UTF16_MARK_SIZE] = {0xFF, 0xFE};
constexpr unsigned char UTF16_BIG_ENDIAN_MARK[UTF16_MARK_SIZE] = {0xFE, 0xFF};

template <unsigned int SIZE> bool startsWith(const unsigned char* pBytes, const unsigned char (&aryMark)[SIZE]) {
    for (unsigned int i = 0; i < SIZE; ++i) { // one by one: bytes may end in the middle of a mark
        if (pBytes[i] != aryMark[i])
            return false;
    }
    return true;
}

CArrayPtr<unsigned char> allocBytes(unsigned int uiSize) {
    return CArrayPtr<unsigned char>(static_cast<unsigned char*>(CMemory::malloc(uiSize, 0)), uiSize);
}

/** The bytes of a file with zeros behind them; an empty pointer if it cannot be read. */
CArrayPtr<unsigned char> readFile(const CString& strPath, unsigned int& uiSize) {
    CFile file;
    if (!file.open(strPath, true))
        return {};
    uiSize = file.getFileSize();
    if (uiSize < SMALLEST_FILE || uiSize > UINT_MAX - FILE_TERMINATOR)
        return {};
    CArrayPtr<unsigned char> aryBytes = allocBytes(uiSize + FILE_TERMINATOR);
    unsigned char ucBeyond = 0; // there is a byte beyond a size that did not fit 32 bits
    if (aryBytes.isEmpty() || !file.readData(aryBytes.getArray(), uiSize) || file.readData(&ucBeyond, 1))
        return {};
    std::memset(aryBytes.getArray() + uiSize, 0, FILE_TERMINATOR);
    return aryBytes;
}

bool writeUTF8(CFile& file, const CString& strText) {
    file.writeData(UTF8_MARK, UTF8_MARK_SIZE); // if this fails, so does the text
    const CArrayPtr<unsigned char> aryBytes = allocBytes(strText.length() * 3 + 1);
    if (aryBytes.isEmpty())
        return false;
    unsigned int uiWritten = 0;
    CStringConverter::convertToUTF8(strText, aryBytes.getArray(), aryBytes.getSize(), &uiWritten);
    return file.writeData(aryBytes.getArray(), uiWritten);
}

bool writeUTF16(CFile& file, const CString& strText) {
    file.writeData(UTF16_MARK, UTF16_MARK_SIZE);
    const CArrayPtr<unsigned char> aryBytes = allocBytes(strText.length() * 2);
    if (aryBytes.isEmpty())
        return false;
    CStringConverter::convertToUTF16(strText, aryBytes.getArray(), aryBytes.getSize());
    return file.writeData(aryBytes.getArray(), aryBytes.getSize());
}

CXMLParser::EXMLEncoding toEncoding(const CString& strName) {
    if (strName.compareIC(L"UTF-8") == 0)
        return CXMLParser::XML_ENCODING_UTF8;
    return strName.compareIC(L"UTF-16") == 0 ? CXMLParser::XML_ENCODING_UTF16 : CXMLParser::XML_ENCODING_NONE;
}

bool isContinuation(unsigned char ucByte) { return (ucByte & 0xC0) == 0x80; }

/** @return the bytes of one well-formed character beyond ASCII; 0 if there is none, or if it has four. */
unsigned int getSequenceSize(const unsigned char* pBytes) {
    if (pBytes[0] >= 0xC2 && pBytes[0] <= 0xDF)
        return isContinuation(pBytes[1]) ? 2 : 0;
    const bool bThree = pBytes[0] >= 0xE0 && pBytes[0] <= 0xEF && isContinuation(pBytes[1]);
    const bool bOverlong = pBytes[0] == 0xE0 && pBytes[1] < 0xA0;
    return bThree && !bOverlong && isContinuation(pBytes[2]) ? 3 : 0;
}

/** @return whether each byte below 128, and no other, is a character of ASCII. */
bool isWellFormedUTF8(const unsigned char* pBytes) {
    const unsigned char* const pEnd = pBytes + std::strlen(reinterpret_cast<const char*>(pBytes));
    while (pBytes != pEnd) {
        std::uint64_t uiWord = 0;
        if (pEnd - pBytes >= 8)
            std::memcpy(&uiWord, pBytes, sizeof(uiWord));
        if (pEnd - pBytes >= 8 && (uiWord & 0x8080808080808080u) == 0) {
            pBytes += 8;
            continue;
        }
        const unsigned int uiSize = *pBytes < 0x80 ? 1 : getSequenceSize(pBytes);
        if (uiSize == 0)
            return false;
        pBytes += uiSize;
    }
    return true;
}

/** @return behind the mark of a file that is not UTF-16; null for one that is. */
const unsigned char* findUTF8Text(const unsigned char* pBytes) {
    if (startsWith(pBytes, UTF16_MARK) || startsWith(pBytes, UTF16_BIG_ENDIAN_MARK))
        return nullptr;
    return startsWith(pBytes, UTF8_MARK) ? pBytes + UTF8_MARK_SIZE : pBytes;
}

/** UTF-16 big-endian leaves the text as it is and is no failure, on purpose. */
void widenFile(const unsigned char* pBytes, unsigned int uiSize, CString& strText) {
    if (startsWith(pBytes, UTF16_MARK))
        CStringConverter::convertFromUTF16(pBytes + UTF16_MARK_SIZE, uiSize - UTF16_MARK_SIZE, strText);
    else if (const unsigned char* const pUTF8 = findUTF8Text(pBytes))
        CStringConverter::convertFromUTF8(pUTF8, strText);
}

const unsigned char* readRootUTF8(CXMLElement& element, const unsigned char* pBytes) {
    return CXMLReader<unsigned char>::readElement(element, pBytes, CXMLReader<unsigned char>::ROOT_LEVEL);
}

const wchar_t* findLineEnd(const wchar_t* pLine, const wchar_t* pTextEnd) {
    while (pLine != pTextEnd && !CStringCore::isReturn(*pLine))
        ++pLine;
    return pLine;
}

/** @return behind the line end, of which a carriage return and the line feed behind it make one. */
const wchar_t* skipLineEnd(const wchar_t* pLineEnd, const wchar_t* pTextEnd) {
    const bool bPair = *pLineEnd == L'\r' && pLineEnd + 1 != pTextEnd && pLineEnd[1] == L'\n';
    return pLineEnd + (bPair ? 2 : 1);
}
} // namespace

CXMLParser::CXMLParser()
    : m_pListener(nullptr), m_eEncoding(XML_ENCODING_NONE), m_pRoot(nullptr), m_pTextStart(nullptr),
      m_pTextEnd(nullptr), m_uiErrorLine(0), m_uiErrorColumn(0), m_uiExpected(0) {}

CXMLParser::~CXMLParser() { empty(); }

void CXMLParser::getErrorPos(unsigned int& uiLine, unsigned int& uiColumn, CString& strText) const {
    uiLine = m_uiErrorLine;
    uiColumn = m_uiErrorColumn;
    strText = m_strErrorText;
}

void CXMLParser::empty() {
    m_eEncoding = XML_ENCODING_NONE;
    delete m_pRoot;
    m_pRoot = nullptr;
    m_pTextStart = nullptr;
    m_pTextEnd = nullptr;
    m_uiErrorLine = 0;
    m_uiErrorColumn = 0;
    m_strErrorText.empty();
    m_uiExpected = 0;
}

bool CXMLParser::create(EXMLEncoding eEncoding) {
    if (eEncoding == XML_ENCODING_NONE)
        return false;
    empty();
    m_eEncoding = eEncoding;
    notifyDataChange();
    return true;
}

CXMLElement* CXMLParser::addRootElement(const CString& strName) {
    if (strName.length() == 0)
        return nullptr;
    if (m_pRoot) {
        m_pRoot->setName(strName);
        return m_pRoot;
    }
    m_pRoot = new CXMLElement(this, nullptr, strName);
    if (m_pRoot)
        notifyDataChange();
    return m_pRoot;
}

void CXMLParser::deleteRootElement() {
    if (!m_pRoot)
        return;
    delete m_pRoot;
    m_pRoot = nullptr;
    notifyDataChange();
}

void CXMLParser::notifyDataChange() {
    if (m_pListener)
        m_pListener->onXMLDataChange();
}

bool CXMLParser::saveHeader(CString& strResult, bool bFormat) const {
    if (m_eEncoding != XML_ENCODING_UTF8 && m_eEncoding != XML_ENCODING_UTF16)
        return false;
    strResult = HEADER[m_eEncoding == XML_ENCODING_UTF16][bFormat];
    return true;
}

bool CXMLParser::saveToString(CString& strResult, bool bFormat) {
    if (!saveHeader(strResult, bFormat))
        return false;
    if (!m_pRoot)
        return true;
    CXMLWriter writer(bFormat, m_uiExpected);
    writer.put(strResult);
    if (!writer.writeRoot(*m_pRoot) || !writer.moveTo(strResult, false))
        return false;
    expectLength(strResult.length());
    return true;
}

/** Remembers how long the next save is likely to be, with some room for changes. */
void CXMLParser::expectLength(std::size_t uiLength) {
    const std::size_t uiExpected = uiLength + uiLength / 16;
    m_uiExpected = uiExpected < LONGEST_EXPECTED ? static_cast<unsigned int>(uiExpected) : 0;
}

bool CXMLParser::saveToFile(const CString& strText, const CString& strPath) const {
    CFile file;
    if (!file.open(strPath, false))
        return false;
    if (m_eEncoding == XML_ENCODING_UTF8)
        return writeUTF8(file, strText);
    // Without an encoding the file has been emptied by now, which is as far as such a document gets.
    return m_eEncoding == XML_ENCODING_UTF16 && writeUTF16(file, strText);
}

bool CXMLParser::saveToFile(const CString& strPath, bool bFormat) {
    CString strText;
    return saveToString(strText, bFormat) && saveToFile(strText, strPath);
}

const wchar_t* CXMLParser::parseHeader(const wchar_t* pText) {
    if (!pText)
        return nullptr;
    if (!CStringCore::strstart(pText, L"<?xml")) {
        m_eEncoding = XML_ENCODING_UTF8;
        return skipXMLBlank(pText);
    }
    CString strVersion;
    const wchar_t* pTag = skipXMLBlank(pText + 5);
    pText = CXMLHelper::readTag(pTag, L"version", strVersion);
    if (!pText || strVersion != L"1.0")
        return failAt(pTag);

    CString strEncoding;
    pTag = skipXMLBlank(pText);
    pText = CXMLHelper::readTag(pTag, L"encoding", strEncoding);
    if (!pText)
        return failAt(pTag);
    m_eEncoding = toEncoding(strEncoding);
    if (m_eEncoding == XML_ENCODING_NONE)
        return failAt(pTag);

    pText = skipXMLBlank(pText);
    return CStringCore::strstart(pText, L"?>") ? skipXMLBlank(pText + 2) : failAt(pText);
}

const wchar_t* CXMLParser::failAt(const wchar_t* pPosition) {
    notifyErrorPos(pPosition);
    return nullptr;
}

bool CXMLParser::parseFromString(const CString& strText) {
    empty();
    if (strText.isEmpty()) {
        m_uiErrorLine = 1; // with column 0: not a syntax error but nothing to read
        return false;
    }
    m_pTextStart = strText.getBuffer();
    m_pTextEnd = m_pTextStart + strText.length();
    const bool bParsed = parseRoot(m_pTextStart);
    m_pTextStart = nullptr;
    m_pTextEnd = nullptr;
    return bParsed;
}

bool CXMLParser::parseRoot(const wchar_t* pText) {
    pText = parseHeader(pText);
    if (!pText)
        return false;
    m_pRoot = new CXMLElement(this, nullptr);
    if (m_pRoot && m_pRoot->parseFrom(pText)) {
        expectLength(static_cast<std::size_t>(m_pTextEnd - m_pTextStart));
        return true;
    }
    delete m_pRoot;
    m_pRoot = nullptr;
    return false;
}

bool CXMLParser::parseFromStream(const unsigned char* pBytes) {
    if (!pBytes)
        return parseFromString(STRING_NULL);
    return parseUTF8(startsWith(pBytes, UTF8_MARK) ? pBytes + UTF8_MARK_SIZE : pBytes);
}

/** Reads bytes as they stand if that can be done, since widening them first takes a seventh of the time and more memory
 *  than the bytes. Malformed ones may hide markup, and an error has to be found in the wide text: those are widened. */
bool CXMLParser::parseUTF8(const unsigned char* pBytes) {
    empty();
    if (isWellFormedUTF8(pBytes)) {
        const unsigned char* const pElement = parseHeaderUTF8(pBytes);
        m_pRoot = pElement ? new CXMLElement(this, nullptr) : nullptr;
        const unsigned char* const pEnd = m_pRoot ? readRootUTF8(*m_pRoot, pElement) : nullptr;
        if (pEnd) {
            expectLength(static_cast<std::size_t>(pEnd - pBytes));
            return true;
        }
    }
    CString strText;
    CStringConverter::convertFromUTF8(pBytes, strText);
    return parseFromString(strText);
}

/** @return the first character behind header and blanks; null if the header is not whole. */
const unsigned char* CXMLParser::parseHeaderUTF8(const unsigned char* pBytes) {
    if (!startsWithXML(pBytes, "<?xml")) {
        m_eEncoding = XML_ENCODING_UTF8;
        return skipXMLBlank(pBytes);
    }
    const void* const pEnd = std::memchr(pBytes, '>', strnlen(reinterpret_cast<const char*>(pBytes), LONGEST_HEADER));
    if (!pEnd)
        return nullptr;
    wchar_t aryHeader[LONGEST_HEADER + 1] = {};
    const std::size_t uiLength = static_cast<const unsigned char*>(pEnd) + 1 - pBytes;
    for (std::size_t i = 0; i < uiLength; ++i)
        aryHeader[i] = pBytes[i]; // a byte beyond ASCII is refused as it would be as a character
    return parseHeader(aryHeader) == aryHeader + uiLength ? skipXMLBlank(pBytes + uiLength) : nullptr;
}

bool CXMLParser::parseFromFile(const CString& strPath) {
    unsigned int uiSize = 0;
    const CArrayPtr<unsigned char> aryBytes = readFile(strPath, uiSize);
    if (aryBytes.isEmpty())
        return parseFromString(STRING_NULL);
    if (const unsigned char* const pText = findUTF8Text(aryBytes.getArray()))
        return parseUTF8(pText);
    CString strText;
    widenFile(aryBytes.getArray(), uiSize, strText);
    return parseFromString(strText);
}

bool CXMLParser::loadToString(const CString& strPath, CString& strResult) {
    unsigned int uiSize = 0;
    const CArrayPtr<unsigned char> aryBytes = readFile(strPath, uiSize);
    if (aryBytes.isEmpty())
        return false;
    widenFile(aryBytes.getArray(), uiSize, strResult);
    return true;
}

bool CXMLParser::updateFile(const CString& strPath, CDataArray<CString>& aryFrom, CDataArray<CString>& aryTo) {
    if (aryFrom.getSize() != aryTo.getSize())
        return false;
    if (aryFrom.getSize() == 0)
        return true;
    CString strText;
    if (!loadToString(strPath, strText))
        return false;
    if (!parseHeader(strText.getBuffer())) {
        empty();
        return false;
    }
    for (unsigned int i = 0; i < aryFrom.getSize(); ++i)
        strText.replaceAll(aryFrom[i].getBuffer(), aryTo[i].getBuffer());
    const bool bSaved = saveToFile(strText, strPath);
    empty();
    return bSaved;
}

void CXMLParser::notifyErrorPos(const wchar_t* pPosition) {
    m_uiErrorLine = 1;
    m_uiErrorColumn = 0;
    const wchar_t* pLine = m_pTextStart;
    if (!std::less<const wchar_t*>()(pPosition, m_pTextStart))
        pLine = countTo(pPosition);
    m_strErrorText.fromBuffer(pLine, static_cast<unsigned int>(findLineEnd(pLine, m_pTextEnd) - pLine));
}

/** Counts lines and columns up to a position or the end of the text. @return the start of the last line met. */
const wchar_t* CXMLParser::countTo(const wchar_t* pPosition) {
    const wchar_t* pLine = m_pTextStart;
    const wchar_t* pText = pLine;
    while (pText != m_pTextEnd && pText != pPosition) {
        if (!CStringCore::isReturn(*pText)) {
            ++pText;
            continue;
        }
        pLine = pText = skipLineEnd(pText, m_pTextEnd);
        ++m_uiErrorLine;
    }
    m_uiErrorColumn = static_cast<unsigned int>(pText - pLine);
    // Not at the end: an error there has the column of the last character, and that is meant.
    if (pText != m_pTextEnd)
        ++m_uiErrorColumn;
    return pLine;
}
} // namespace Orlix
