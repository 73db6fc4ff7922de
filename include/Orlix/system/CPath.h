#pragma once

#include <Orlix/foundation/CString.h>

namespace Orlix {

/** Takes paths apart and puts them together, and keeps the folders of the application and of the project.
 *
 *  Both "/" and the backslash delimit where a path is taken apart; only "/" does where one is built. Nothing asks the
 *  file system whether a path exists. An empty path gives an empty result.
 *
 *  Parts are cut by CString::subString, to which a length of 0 is all the rest. Where nothing would be left in front,
 *  the whole text therefore stays; the operations say so where it shows.
 *  Threads: any for the texts. The two folders have no lock: set them before the threads begin. */
class ORLIX_API CPath {
public:
    /** Empties both folders. */
    static void clearData();

    static void setApplicationFolder(const CString& strFolder);
    /** The stored folder. One that is empty or begins with "." is first replaced by the current directory, for good;
     *  that writes the stored text, so make the first call before the threads begin. */
    static CString getApplicationFolder();

    static void setProjectFolder(const CString& strFolder);
    static const CString& getProjectFolder() noexcept { return s_strProjectFolder; }

    static bool hasTrailingPathDelimiter(const CString& strPath) noexcept;
    /** With a "/" at the end, unless it has a delimiter there. */
    static CString addTrailingPathDelimiter(const CString& strPath);
    /** Without one trailing delimiter; a lone delimiter stays. */
    static CString deleteTrailingPathDelimiter(const CString& strPath);

    /** Where the name begins: behind the last delimiter, so the length if the path ends in one. 0 without any. */
    static unsigned int getFileNameStartIndex(const CString& strPath) noexcept;
    /** Up to and with the last delimiter; empty without any. */
    static CString getFileFolder(const CString& strPath);
    /** Up to the last delimiter, without it; empty without any. If the only delimiter is the first character the whole
     *  path stays. */
    static CString getFileFolderNoLastSeparator(const CString& strPath);
    /** Behind the last delimiter; the whole path without any. */
    static CString getFileName(const CString& strPath);

    /** The index behind the last "." of the whole path, which may be one of a folder; 0 without any. */
    static unsigned int getFileExternStartIndex(const CString& strPath) noexcept;
    /** The name without its extension and the dot. A name whose only dot comes first, such as .profile, is all title
     *  and all but the dot extension. */
    static CString getFileTitle(const CString& strPath);
    /** The extension of the name without its dot; empty if there is none. */
    static CString getFileExtern(const CString& strPath);
    /** Replaces or adds the extension. @param strExtension without a dot; empty takes the extension and its dot away,
     *  except from a path that begins with its last dot, which stays whole. */
    static CString changeFileExtern(const CString& strPath, const CString& strExtension);
    /** Replaces the name and keeps the extension. A path without a folder keeps its old name in front of the new title:
     *  a.txt with the title b is a.txtb.txt. */
    static CString changeFileTitle(const CString& strPath, const CString& strTitle);

    /** The way from strFrom to strTo, as CImpPath finds it. @param bFolder whether strFrom is a folder: without a "/"
     *  at its end it otherwise counts as a file, whose folder is where the way begins. */
    static CString generateRelativePath(const CString& strFrom, bool bFolder, const CString& strTo);
    /** The place of strPath seen from the folder strBase, as CImpPath finds it. */
    static CString generateAbsolutePath(const CString& strBase, const CString& strPath);

protected:
    static CString s_strApplicationFolder; // set during start-up; no lock
    static CString s_strProjectFolder;     // set during start-up; no lock
};
} // namespace Orlix
