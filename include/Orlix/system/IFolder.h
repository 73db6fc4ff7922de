#pragma once

#include <Orlix/foundation/CObject.h>
#include <Orlix/foundation/CString.h>

namespace Orlix {

template <class T> class CObjectArray;

/** What a system can tell about a folder and do to it. */
class ORLIX_API IFolder {
public:
    /** One thing that lies in a folder. */
    struct ORLIX_API tagEntry : public CObject {
        ORLIX_HEAP_CLASS(L"IFolder::tagEntry")
        CString strPath; // the folder as it was named, with a "/" if it had no delimiter at its end, and the name
        CString strName;
        bool bFolder = false;
    };

    virtual ~IFolder() = default;
    /** Makes one level. @return true also if the folder is there already. */
    virtual bool createFolder(const CString& strPath) = 0;
    /** Removes an empty folder. */
    virtual bool deleteFolder(const CString& strPath) = 0;
    /** Appends an entry per item. @param aryEntry owns them. */
    virtual bool openFolder(const CString& strPath, CObjectArray<tagEntry>& aryEntry) = 0;
};
} // namespace Orlix
