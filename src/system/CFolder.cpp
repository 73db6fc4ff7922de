#include <Orlix/system/CFolder.h>

#include <Orlix/foundation/CDataArray.h>
#include <Orlix/foundation/CDataList.h>
#include <Orlix/system/CFile.h>
#include <Orlix/system/CImpFolder.h>
#include <Orlix/system/CPath.h>

namespace Orlix {
namespace {

/** Whether the path names a link, not what it leads to. The system would follow a link with a "/" behind it. */
bool isLink(CString strPath) {
    while (strPath.length() > 1 && strPath.charAt(strPath.length() - 1) == L'/')
        strPath = strPath.subString(0, strPath.length() - 1);
    // A file in its place is no folder either, and a path where nothing is cannot be deleted.
    return CFile::isFile(strPath);
}

bool hasExtension(const CString& strPath, const CDataArray<CString>& aryExtension) {
    const CString strExtern = CPath::getFileExtern(strPath);
    for (unsigned int i = 0; i < aryExtension.getSize(); ++i) {
        if (aryExtension[i] == L"*" || aryExtension[i].compareIC(strExtern) == 0)
            return true;
    }
    return false;
}

/** Appends the paths of the files that fnMatch takes, in the order of the entries and depth first. */
template <class F>
void findFiles(const CString& strFolder, CDataList<CString>& lstFile, bool bRecursive, const F& fnMatch) {
    CFolder folder;
    folder.open(strFolder); // a folder that cannot be read has no entries
    for (unsigned int i = 0; i < folder.getEntryCount(); ++i) {
        const IFolder::tagEntry& entry = *folder.getEntry(i);
        if (!entry.bFolder && fnMatch(entry.strPath))
            lstFile.add(entry.strPath);
        else if (entry.bFolder && bRecursive)
            findFiles(entry.strPath, lstFile, bRecursive, fnMatch);
    }
}
} // namespace

bool CFolder::open(const CString& strPath) {
    close();
    if (strPath.length() == 0)
        return false;
    CImpFolder imp;
    if (imp.openFolder(strPath, m_aryEntry))
        return true;
    close();
    return false;
}

bool CFolder::createFolder(const CString& strPath) {
    CImpFolder imp;
    return strPath.length() != 0 && imp.createFolder(strPath);
}

bool CFolder::deleteFolder(const CString& strPath) {
    if (isLink(strPath))
        return false;
    CFolder folder;
    folder.open(strPath); // the system has the last word also on a folder that cannot be read
    for (unsigned int i = 0; i < folder.getEntryCount(); ++i) {
        const IFolder::tagEntry& entry = *folder.getEntry(i);
        if (!(entry.bFolder ? deleteFolder(entry.strPath) : CFile::deleteFile(entry.strPath)))
            return false;
    }
    CImpFolder imp;
    return imp.deleteFolder(strPath);
}

bool CFolder::copyFilesTo(const CString& strFrom, const CString& strTo, bool bRecursive, bool bOverwrite) {
    const CString strSource = CPath::deleteTrailingPathDelimiter(strFrom);
    const CString strTarget = CPath::deleteTrailingPathDelimiter(strTo);
    CFolder folder;
    if (strSource.compareIC(strTarget) == 0 || !folder.open(strSource) || !createFolder(strTarget))
        return false;
    bool bAll = true;
    for (unsigned int i = 0; i < folder.getEntryCount(); ++i) {
        const IFolder::tagEntry& entry = *folder.getEntry(i);
        const CString strOne = strSource + L"/" + entry.strName;
        const CString strCopy = strTarget + L"/" + entry.strName;
        if (!entry.bFolder)
            bAll = CFile::copyFile(strOne, strCopy, bOverwrite) && bAll;
        else if (bRecursive)
            bAll = copyFilesTo(strOne, strCopy, bRecursive, bOverwrite) && bAll;
    }
    return bAll;
}

void CFolder::findFilesByExt(const CString& strFolder, const CDataArray<CString>& aryExtension,
                             CDataList<CString>& lstFile, bool bRecursive) {
    findFiles(strFolder, lstFile, bRecursive,
              [&](const CString& strPath) { return hasExtension(strPath, aryExtension); });
}

void CFolder::findFilesByExt(const CString& strFolder, const CString& strExtension, CDataList<CString>& lstFile,
                             bool bRecursive) {
    CDataArray<CString> aryExtension;
    aryExtension.add(strExtension);
    findFilesByExt(strFolder, aryExtension, lstFile, bRecursive);
}

void CFolder::findFilesByFileTile(const CString& strFolder, const CString& strTitle, CDataList<CString>& lstFile,
                                  bool bExact, bool bRecursive) {
    findFiles(strFolder, lstFile, bRecursive, [&](const CString& strPath) {
        const CString strFound = CPath::getFileTitle(strPath);
        return bExact ? strFound == strTitle : strFound.indexOf(strTitle, 0) >= 0;
    });
}
} // namespace Orlix
