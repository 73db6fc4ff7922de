#include <Orlix/system/CImpFolder.h>

#include "system/CPathBuffer.h"

#include <Orlix/foundation/CObjectArray.h>
#include <Orlix/system/CPath.h>

#include <cstring>
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Orlix {
namespace {

constexpr unsigned int FOLDER_BYTES = 512; // of a folder's path and an entry's, terminator included

/** A folder's path for the system, to which the names of its entries are joined one after the other. */
class CJoinedPath {
public:
    /** Empty for a path that does not fit or is no valid text: what the conversion leaves of it is another's. */
    explicit CJoinedPath(const CString& strFolder) {
        CString strBack;
        CStringConverter::convertToMBCS(strFolder, m_aryBytes, sizeof(m_aryBytes));
        CStringConverter::convertFromMBCS(m_aryBytes, strBack);
        if (strBack != strFolder)
            m_aryBytes[0] = 0;
        m_uiFolder = std::strlen(m_aryBytes);
    }

    /** @return false, and nothing changes, if there is no room for the name. */
    bool join(const char* pName) noexcept {
        const std::size_t uiName = std::strlen(pName);
        if (m_uiFolder + uiName >= FOLDER_BYTES)
            return false;
        std::memcpy(m_aryBytes + m_uiFolder, pName, uiName + 1);
        return true;
    }
    const char* get() const noexcept { return m_aryBytes; }

private:
    char m_aryBytes[FOLDER_BYTES];
    std::size_t m_uiFolder; // bytes of the folder's path
};

/** Whether a name is the same again after it has been a text. */
bool isText(const char* pName, const CString& strName) {
    char aryName[FOLDER_BYTES];
    CStringConverter::convertToMBCS(strName, aryName, sizeof(aryName));
    return std::strcmp(pName, aryName) == 0;
}

/** Whether an entry is a folder that its text leads to. One that it does not lead to must not be walked into: the path
 *  would be another's, even that of a folder above. */
bool isFolder(const dirent& item, const CString& strName, CJoinedPath& path) {
    if (item.d_type != DT_DIR && item.d_type != DT_UNKNOWN) // the system has looked already
        return false;
    struct stat state;
    return path.join(item.d_name) && lstat(path.get(), &state) == 0 && S_ISDIR(state.st_mode) &&
           isText(item.d_name, strName);
}

/** @return false without memory. */
bool appendEntry(const CString& strFolder, const CString& strName, bool bFolder,
                 CObjectArray<IFolder::tagEntry>& aryEntry) {
    auto* const pEntry = new IFolder::tagEntry;
    if (!pEntry)
        return false;
    pEntry->strPath = strFolder + strName;
    pEntry->strName = strName;
    pEntry->bFolder = bFolder;
    const unsigned int uiBefore = aryEntry.getSize();
    if (!pEntry->strPath.isEmpty() && !pEntry->strName.isEmpty()) // null only without memory
        aryEntry.add(pEntry);
    if (aryEntry.getSize() != uiBefore)
        return true;
    delete pEntry;
    return false;
}

bool readEntries(DIR* pFolder, const CString& strFolder, CJoinedPath& path, CObjectArray<IFolder::tagEntry>& aryEntry) {
    while (const dirent* const pItem = readdir(pFolder)) {
        CString strName;
        CStringConverter::convertFromMBCS(pItem->d_name, strName);
        // The text decides: a name may also become one of these two where it is no valid text.
        if (strName == L"." || strName == L"..")
            continue;
        if (!appendEntry(strFolder, strName, isFolder(*pItem, strName, path), aryEntry))
            return false;
    }
    return true;
}
} // namespace

bool CImpFolder::createFolder(const CString& strPath) {
    constexpr mode_t ALL_PERMISSIONS = 0xFFFFFFFF; // the system takes what there is and what the umask leaves
    const CPathBuffer path(strPath);
    struct stat state;
    if (stat(path.get(), &state) == 0)
        return S_ISDIR(state.st_mode);
    return mkdir(path.get(), ALL_PERMISSIONS) == 0;
}

bool CImpFolder::deleteFolder(const CString& strPath) { return rmdir(CPathBuffer(strPath).get()) == 0; }

bool CImpFolder::openFolder(const CString& strPath, CObjectArray<tagEntry>& aryEntry) {
    const CString strFolder = CPath::addTrailingPathDelimiter(strPath);
    CJoinedPath path(strFolder);
    DIR* const pFolder = opendir(path.get());
    if (!pFolder)
        return false;
    const bool bRead = readEntries(pFolder, strFolder, path, aryEntry);
    closedir(pFolder);
    return bRead;
}
} // namespace Orlix
