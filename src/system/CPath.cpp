#include <Orlix/system/CPath.h>

#include "foundation/StaticOrder.h"

#include <Orlix/system/CImpPath.h>

namespace Orlix {
namespace {

constexpr bool isDelimiter(wchar_t ch) noexcept { return ch == L'/' || ch == L'\\'; }

/** A name that ends in a dot has an extension, an empty one. A dot of a folder counts for nothing. */
bool hasExtension(unsigned int uiNameStart, unsigned int uiExternStart) noexcept { return uiExternStart > uiNameStart; }
} // namespace

ORLIX_STATIC_PATH CString CPath::s_strApplicationFolder;
ORLIX_STATIC_PATH CString CPath::s_strProjectFolder;

void CPath::clearData() {
    s_strApplicationFolder.empty();
    s_strProjectFolder.empty();
}

void CPath::setApplicationFolder(const CString& strFolder) { s_strApplicationFolder = strFolder; }

CString CPath::getApplicationFolder() {
    if (s_strApplicationFolder.length() == 0 || s_strApplicationFolder.charAt(0) == L'.') {
        CImpPath imp;
        s_strApplicationFolder = imp.getApplicationFolder();
    }
    return s_strApplicationFolder;
}

void CPath::setProjectFolder(const CString& strFolder) { s_strProjectFolder = strFolder; }

bool CPath::hasTrailingPathDelimiter(const CString& strPath) noexcept {
    return strPath.length() != 0 && isDelimiter(strPath.charAt(strPath.length() - 1));
}

CString CPath::addTrailingPathDelimiter(const CString& strPath) {
    return strPath.length() == 0 || hasTrailingPathDelimiter(strPath) ? strPath : strPath + L"/";
}

CString CPath::deleteTrailingPathDelimiter(const CString& strPath) {
    return hasTrailingPathDelimiter(strPath) ? strPath.subString(0, strPath.length() - 1) : strPath;
}

unsigned int CPath::getFileNameStartIndex(const CString& strPath) noexcept {
    unsigned int uiIndex = strPath.length();
    while (uiIndex != 0 && !isDelimiter(strPath.charAt(uiIndex - 1)))
        --uiIndex;
    return uiIndex;
}

CString CPath::getFileFolder(const CString& strPath) {
    const unsigned int uiNameStart = getFileNameStartIndex(strPath);
    return uiNameStart == 0 ? CString() : strPath.subString(0, uiNameStart);
}

CString CPath::getFileFolderNoLastSeparator(const CString& strPath) {
    const unsigned int uiNameStart = getFileNameStartIndex(strPath);
    return uiNameStart == 0 ? CString() : strPath.subString(0, uiNameStart - 1);
}

CString CPath::getFileName(const CString& strPath) { return strPath.subString(getFileNameStartIndex(strPath), 0); }

unsigned int CPath::getFileExternStartIndex(const CString& strPath) noexcept {
    return static_cast<unsigned int>(strPath.lastIndexOf(L'.') + 1);
}

CString CPath::getFileTitle(const CString& strPath) {
    const unsigned int uiNameStart = getFileNameStartIndex(strPath);
    const unsigned int uiExternStart = getFileExternStartIndex(strPath);
    if (!hasExtension(uiNameStart, uiExternStart))
        return strPath.subString(uiNameStart, 0);
    return strPath.subString(uiNameStart, uiExternStart - 1 - uiNameStart);
}

CString CPath::getFileExtern(const CString& strPath) {
    const unsigned int uiExternStart = getFileExternStartIndex(strPath);
    return hasExtension(getFileNameStartIndex(strPath), uiExternStart) ? strPath.subString(uiExternStart, 0)
                                                                       : CString();
}

CString CPath::changeFileExtern(const CString& strPath, const CString& strExtension) {
    if (strPath.length() == 0)
        return strPath;
    const unsigned int uiExternStart = getFileExternStartIndex(strPath);
    const bool bHad = hasExtension(getFileNameStartIndex(strPath), uiExternStart);
    if (strExtension.length() == 0)
        return bHad ? strPath.subString(0, uiExternStart - 1) : strPath;
    return (bHad ? strPath.subString(0, uiExternStart) : strPath + L".") + strExtension;
}

CString CPath::changeFileTitle(const CString& strPath, const CString& strTitle) {
    if (strPath.length() == 0)
        return strPath;
    const unsigned int uiNameStart = getFileNameStartIndex(strPath);
    // Without a folder the length is 0, which is the whole path: the old name stays in front, and that is meant.
    const CString strNew = strPath.subString(0, uiNameStart) + strTitle;
    return hasExtension(uiNameStart, getFileExternStartIndex(strPath)) ? strNew + L"." + getFileExtern(strPath)
                                                                       : strNew;
}

CString CPath::generateRelativePath(const CString& strFrom, bool bFolder, const CString& strTo) {
    if (strFrom.length() == 0 || strTo.length() == 0)
        return CString();
    CImpPath imp;
    return imp.generateRelativePath(strFrom, bFolder, strTo);
}

CString CPath::generateAbsolutePath(const CString& strBase, const CString& strPath) {
    if (strBase.length() == 0 || strPath.length() == 0)
        return CString();
    CImpPath imp;
    return imp.generateAbsolutePath(strBase, strPath);
}
} // namespace Orlix
