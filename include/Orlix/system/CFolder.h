#pragma once

#include <Orlix/foundation/CObjectArray.h>
#include <Orlix/system/IFolder.h>

namespace Orlix {

template <class T> class CDataArray;
template <class T> class CDataList;

/** The entries of one folder, as they were when it was opened, and what can be done with whole folders.
 *
 *  Nothing here logs: a folder that cannot be read gives false, or nothing found. No operation follows a symbolic link
 *  that it meets inside a folder. Threads: one at a time per object; the static operations from any. */
class ORLIX_API CFolder : public CObject {
    ORLIX_HEAP_CLASS(L"CFolder")

public:
    CFolder() = default;

    /** Reads another folder in place of the one before; see CImpFolder::openFolder for the entries.
     *  @return false, and there are no entries, for an empty path and a folder that cannot be read. */
    bool open(const CString& strPath);
    /** Gives the entries up. */
    void close() { m_aryEntry.clear(); }
    unsigned int getEntryCount() const noexcept { return m_aryEntry.getSize(); }
    /** The entry, owned here and valid until open or close; null past the end. */
    IFolder::tagEntry* getEntry(unsigned int uiIndex) const noexcept { return m_aryEntry.getAt(uiIndex); }

    /** Makes one level; a missing parent is a failure. @return true also if the folder is there already. */
    static bool createFolder(const CString& strPath);

    /** Deletes the files, the folders and then the folder itself, and stops at the first failure.
     *  @return false, and nothing changes, for a symbolic link; false also if there is anything in the folder that is
     *  neither a folder nor a regular file, or whose name is no valid text. */
    static bool deleteFolder(const CString& strPath);

    /** Copies the files into another folder, which is made if only that one level is missing.
     *  @param bRecursive whether folders are copied too, with all that is in them.
     *  @param bOverwrite whether files that are there already are replaced; false counts each as a failure.
     *  @return false if anything could not be copied; the rest is copied all the same. Nothing is copied if the paths
     *  differ only by one delimiter at their end and the case of ASCII letters. */
    static bool copyFilesTo(const CString& strFrom, const CString& strTo, bool bRecursive, bool bOverwrite);

    /** Appends the paths of the files with any of the extensions, in the order of the entries and depth first.
     *  @param aryExtension without dots; the case of ASCII letters does not count, and exactly "*" is any file. An
     *  empty one is that of files without an extension. */
    static void findFilesByExt(const CString& strFolder, const CDataArray<CString>& aryExtension,
                               CDataList<CString>& lstFile, bool bRecursive);
    static void findFilesByExt(const CString& strFolder, const CString& strExtension, CDataList<CString>& lstFile,
                               bool bRecursive);

    /** Appends the paths of the files with a title, in the order of the entries and depth first. The extension counts
     *  for nothing, the case does.
     *  @param bExact whether the whole title must be strTitle; otherwise that may stand anywhere in it. An empty one
     *  stands nowhere. */
    static void findFilesByFileTile(const CString& strFolder, const CString& strTitle, CDataList<CString>& lstFile,
                                    bool bExact, bool bRecursive);

protected:
    CObjectArray<IFolder::tagEntry> m_aryEntry; // owns them
};
} // namespace Orlix
