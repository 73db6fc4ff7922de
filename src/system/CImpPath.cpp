#include <Orlix/system/CImpPath.h>

#include <Orlix/foundation/CStringConverter.h>
#include <Orlix/system/CPath.h>

#include <cstdlib>
#include <unistd.h>

namespace Orlix {
namespace {

constexpr wchar_t DELIMITER = L'/';

bool endsInDelimiter(const CString& strPath) noexcept {
    return strPath.length() != 0 && strPath.charAt(strPath.length() - 1) == DELIMITER;
}

CString withoutStartDelimiter(const CString& strPath) {
    return strPath.charAt(0) == DELIMITER ? strPath.subString(1, 0) : strPath;
}

/** The folders that a way begins in, each with its "/". */
CString getStartFolders(const CString& strFrom, bool bFolder) {
    const CString strFolders = withoutStartDelimiter(strFrom);
    if (endsInDelimiter(strFolders))
        return strFolders;
    return bFolder ? strFolders + L"/" : CPath::getFileFolder(strFolders);
}
} // namespace

CString CImpPath::getApplicationFolder() {
    CString strFolder;
    if (char* const pFolder = get_current_dir_name()) {
        CStringConverter::convertFromMBCS(pFolder, strFolder);
        std::free(pFolder);
    }
    return strFolder;
}

CString CImpPath::generateRelativePath(const CString& strFrom, bool bFolder, const CString& strTo) {
    CString strFolders = getStartFolders(strFrom, bFolder);
    CString strRest = withoutStartDelimiter(strTo);
    CString strUp;
    for (bool bFirst = true;; bFirst = false) {
        const int iDelimiter = strFolders.indexOf(DELIMITER);
        if (iDelimiter < 0)
            break;
        const unsigned int uiSegment = static_cast<unsigned int>(iDelimiter) + 1;
        // What has differed is not remembered, on purpose: a later segment may match again and is then no level up.
        if (strRest.startWith(strFolders.subString(0, uiSegment)))
            strRest = strRest.subString(uiSegment, 0);
        else if (bFirst)
            break; // nothing goes up from a place that shares nothing, on purpose
        else
            strUp.append(L"../");
        strFolders = strFolders.subString(uiSegment, 0);
    }
    return (strUp.length() == 0 ? CString(L"./") : strUp) + strRest;
}

CString CImpPath::generateAbsolutePath(const CString& strBase, const CString& strPath) {
    if (strPath.charAt(0) == DELIMITER)
        return strPath;
    CString strFolder = endsInDelimiter(strBase) ? strBase.subString(0, strBase.length() - 1) : strBase;
    if (strPath.startWith(L"./"))
        return strFolder + L"/" + strPath.subString(2, 0);
    CString strRest = strPath;
    while (strRest.startWith(L"../")) {
        // Without a "/", and with one in front only, the length is none or 0 and the folder stays whole.
        strFolder = strFolder.subString(0, static_cast<unsigned int>(strFolder.lastIndexOf(DELIMITER)));
        strRest = strRest.subString(3, 0);
    }
    return strFolder + L"/" + strRest;
}
} // namespace Orlix
