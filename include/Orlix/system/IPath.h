#pragma once

#include <Orlix/foundation/CString.h>

namespace Orlix {

/** What depends on the system's own path separator. */
class ORLIX_API IPath {
public:
    virtual ~IPath() = default;
    /** The current directory, empty if the system cannot name it. */
    virtual CString getApplicationFolder() = 0;
    /** The way from one place to another. @param bFolder whether strFrom is a folder, also without a "/" at its end. */
    virtual CString generateRelativePath(const CString& strFrom, bool bFolder, const CString& strTo) = 0;
    /** The place that a path means, seen from a base folder. */
    virtual CString generateAbsolutePath(const CString& strBase, const CString& strPath) = 0;
};
} // namespace Orlix
