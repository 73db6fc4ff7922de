#pragma once

#include <Orlix/system/IFile.h>

namespace Orlix {

/** Files of a POSIX system. It holds nothing, so each caller makes its own on the stack.
 *
 *  A path goes to the system as CStringConverter::convertToMBCS gives it, cut at 1023 bytes. Threads: any. */
class ORLIX_API CImpFile final : public IFile {
    ORLIX_HEAP_CLASS(L"CImpFile")

public:
    /** A symbolic link counts as a file, wherever it leads. */
    bool isFile(const CString& strPath) override;
    /** A symbolic link exists also when what it leads to does not. */
    bool isExist(const CString& strPath) override;
    /** Looks at the owner's three permissions: reading alone. @return false also for what cannot be opened. */
    bool isReadOnly(const CString& strPath) override;
    /** @return false, and nothing changes, for what cannot be opened for reading. */
    bool setWritable(const CString& strPath) override;
    /** @return 0 for what cannot be opened for reading. */
    long getLastModifyTime(const CString& strPath) override;
    /** Replaces what strTo names, as the system does. */
    bool renameFile(const CString& strFrom, const CString& strTo) override;
    /** @return true also when the system refuses to remove the regular file; false for anything else, links included.
     */
    bool deleteFile(const CString& strPath) override;
    /** Copies neither permissions nor times, and waits for the other end of a pipe like any reader. The folder of strTo
     * is made if only that one is missing. After a failure strTo holds what had been copied.
     *
     *  Copies the size that CFile tells, so a size beyond 32 bits loses its upper part. What the system refuses only as
     *  the target is closed goes unnoticed.
     *  @return false, and nothing changes, if strFrom cannot be opened or both are the same file. */
    bool copyFile(const CString& strFrom, const CString& strTo) override;
};
} // namespace Orlix
