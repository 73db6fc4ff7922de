#pragma once

#include <Orlix/foundation/CString.h>

namespace Orlix {

/** What a system can tell about a path and do to the file there. */
class ORLIX_API IFile {
public:
    virtual ~IFile() = default;
    /** Whether there is anything but a folder. */
    virtual bool isFile(const CString& strPath) = 0;
    /** Whether there is anything. */
    virtual bool isExist(const CString& strPath) = 0;
    /** Whether the owner may only read. */
    virtual bool isReadOnly(const CString& strPath) = 0;
    /** Lets the owner write. */
    virtual bool setWritable(const CString& strPath) = 0;
    /** Seconds since 1970, 0 on failure. */
    virtual long getLastModifyTime(const CString& strPath) = 0;
    virtual bool renameFile(const CString& strFrom, const CString& strTo) = 0;
    /** Removes a regular file and nothing else. */
    virtual bool deleteFile(const CString& strPath) = 0;
    /** Copies the content; what strTo held is gone. */
    virtual bool copyFile(const CString& strFrom, const CString& strTo) = 0;
};
} // namespace Orlix
