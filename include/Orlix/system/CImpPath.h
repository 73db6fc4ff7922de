#pragma once

#include <Orlix/system/IPath.h>

namespace Orlix {

/** Paths of a POSIX system, whose separator is "/". It holds nothing, so each caller makes its own on the stack.
 *
 *  The two generate operations look at nothing but the texts: nothing need exist. Threads: any. */
class ORLIX_API CImpPath final : public IPath {
    ORLIX_HEAP_CLASS(L"CImpPath")

public:
    /** Where PWD in the environment names the current directory by another way, over a link, it gives that way.
     *  @return empty if the directory is gone or out of reach. */
    CString getApplicationFolder() override;

    /** Gives one "../" per segment of strFrom that strTo does not share, then the rest of strTo; "./" in front where
     *  nothing goes up. A "/" at the start of either counts for nothing.
     *
     *  Each segment is compared with what is left of strTo at its turn. A match behind a difference is therefore taken
     *  as shared too, and when the very first segments differ the result is "./" and strTo. */
    CString generateRelativePath(const CString& strFrom, bool bFolder, const CString& strTo) override;

    /** Resolves "./" or any number of "../" at the start of strPath; inside a path they stay. An absolute strPath comes
     *  back as it is. A base that has no level left to go up to stays whole: "/a" and "../c" give "/a/c". */
    CString generateAbsolutePath(const CString& strBase, const CString& strPath) override;
};
} // namespace Orlix
