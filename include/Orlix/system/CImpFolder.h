#pragma once

#include <Orlix/system/IFolder.h>

namespace Orlix {

/** Folders of a POSIX system. It holds nothing, so each caller makes its own on the stack.
 *
 *  A path goes to the system as CStringConverter::convertToMBCS gives it. Threads: any. */
class ORLIX_API CImpFolder final : public IFolder {
    ORLIX_HEAP_CLASS(L"CImpFolder")

public:
    /** Everyone gets every permission that the umask of the process leaves. The path is cut at 1023 bytes. A symbolic
     *  link to a folder is one. */
    bool createFolder(const CString& strPath) override;
    /** The path is cut at 1023 bytes. */
    bool deleteFolder(const CString& strPath) override;
    /** Entries come in the system's order, hidden ones too, "." and ".." never.
     *
     *  A folder counts as a file if it cannot be reached by its entry: if its path, with the "/" and the terminator, is
     *  longer than 512 bytes, if it cannot be looked at, and if its name is no valid text, for strName then ends where
     *  that begins. So does a symbolic link to a folder.
     *  @return false, and nothing is appended, if the folder cannot be opened, or if its path is no valid text or
     * longer than 512 bytes with its "/" and the terminator; false with some entries appended without memory for all.
     */
    bool openFolder(const CString& strPath, CObjectArray<tagEntry>& aryEntry) override;
};
} // namespace Orlix
