#include "CConfigLoader.h"

#include <Orlix/formats/CConfigParser.h>
#include <Orlix/foundation/CStringConverter.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cwctype>
#include <string>

#include <unistd.h>

using namespace Orlix;

namespace {

constexpr std::size_t SHOWN_BEFORE = 60; // characters of a long line that are shown on either side of the caret
constexpr std::size_t SHOWN_AFTER = 20;

/** What a terminal can show of a piece of text: control characters but tabs become question marks. */
std::string toPrintable(const std::wstring& strText) {
    std::string strResult;
    for (const wchar_t ch : strText) {
        char aryBytes[MB_LEN_MAX];
        const int iBytes = ch == L'\t' || std::iswprint(static_cast<std::wint_t>(ch)) ? std::wctomb(aryBytes, ch) : -1;
        strResult += iBytes > 0 ? std::string(aryBytes, static_cast<std::size_t>(iBytes)) : "?";
    }
    return strResult;
}

/** The line, and below it a caret under the column; tabs stay tabs, so that it stands in the same place. */
void printLine(const CString& strLine, unsigned int uiColumn) {
    const std::wstring strText(strLine.getBuffer() ? strLine.getBuffer() : L"", strLine.length());
    const std::size_t uiCaret = uiColumn > 0 ? uiColumn - 1 : 0;
    const std::size_t uiFirst = uiCaret > SHOWN_BEFORE ? uiCaret - SHOWN_BEFORE : 0;
    const std::wstring strShown = strText.substr(uiFirst, uiCaret - uiFirst + SHOWN_AFTER);
    std::string strIndent;
    for (std::size_t i = 0; i < uiCaret - uiFirst && i < strShown.size(); ++i)
        strIndent += strShown[i] == L'\t' ? '\t' : ' ';
    std::fprintf(stderr, "%s\n%s^\n", toPrintable(strShown).c_str(), strIndent.c_str());
}

/** The folder of the running program with a slash behind it; empty if the system does not tell. */
std::string getExecutableFolder() {
    char aryPath[PATH_MAX];
    const ssize_t iLength = readlink("/proc/self/exe", aryPath, sizeof(aryPath));
    const std::string strPath(aryPath, iLength > 0 ? static_cast<std::size_t>(iLength) : 0);
    return strPath.substr(0, strPath.rfind('/') + 1);
}

/** The settings do not keep the place of an error, so the file is read once more for it. */
void reportError(const char* pPath, const CString& strPath) {
    CXMLParser xmlDocument;
    xmlDocument.parseFromFile(strPath);
    unsigned int uiLine = 0;
    unsigned int uiColumn = 0;
    CString strLine;
    xmlDocument.getErrorPos(uiLine, uiColumn, strLine);
    if (uiLine == 1 && uiColumn == 0) {
        std::fprintf(stderr, "orlix-host: cannot read %s\n", pPath);
        return;
    }
    if (uiLine == 0) {
        std::fprintf(stderr, "orlix-host: %s: the text ends within an element\n", pPath);
        return;
    }
    std::fprintf(stderr, "orlix-host: %s:%u:%u: syntax error\n", pPath, uiLine, uiColumn);
    printLine(strLine, uiColumn);
}
} // namespace

bool CConfigLoader::load(const char* pPath) {
    CString strPath;
    CStringConverter::convertFromMBCS(pPath, strPath);
    if (CConfigParser::getInstance()->load(strPath))
        return true;
    reportError(pPath, strPath);
    return false;
}

bool CConfigLoader::loadShipped() {
    const std::string strFolder = getExecutableFolder();
    const std::string strBeside = strFolder + "engine.xml";
    return load(access(strBeside.c_str(), F_OK) == 0 ? strBeside.c_str()
                                                     : (strFolder + "../share/orlix/engine.xml").c_str());
}
