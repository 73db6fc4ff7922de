#pragma once

#include <Orlix/foundation/OrlixApi.h>

namespace Orlix {

class CString;

/** The host's own place for log lines, beside the terminal and the file. */
class ORLIX_API ILogOuter {
public:
    virtual ~ILogOuter() = default;
    /** Takes one line in its parts, without brackets and line end; what was null when it was logged is a null string.
     *  Called on the thread that logs, on several at once too, without a lock: it may log itself. */
    virtual void writeLog(const CString& strLevel, const CString& strSource, const CString& strText) = 0;
};
} // namespace Orlix
