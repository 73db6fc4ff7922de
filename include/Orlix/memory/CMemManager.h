#pragma once

#include <Orlix/foundation/CSyncObject.h>

namespace Orlix {

class CMemAllocator;
class CMemChecker;
class CString;
class IMemManagerListener;

/** The one object behind CMemory: it owns the pools, and gives the host one chance to release memory when an
 *  allocation fails.
 *
 *  It is a static object of the library. Threads: malloc, free and registClassName from any thread; a request that
 *  does not fail takes no lock of the manager's. The listener may be set at any time. */
class ORLIX_API CMemManager {
public:
    /** Built once, by the library itself. */
    CMemManager();
    CMemManager(const CMemManager&) = delete;
    CMemManager& operator=(const CMemManager&) = delete;
    virtual ~CMemManager();

    /** @return the manager; null before its static construction and after its destruction. */
    static CMemManager* getInstance();

    /** @param pListener told of shortages, not owned; null for nobody. */
    void setListener(IMemManagerListener* pListener);

    /** Takes a block. If there is no memory, the listener is called and the request repeated exactly once.
     *  @param uiClassID the class the block is accounted to. @return null if that fails too. */
    void* malloc(unsigned int uiSize, unsigned int uiClassID);

    /** @param pBlock a block of malloc, never null. */
    void free(void* pBlock);

    /** As CMemory::extend; a shortage is not told to the listener. */
    void* extend(void* pBlock, unsigned int uiSize);

    /** @return the number of a class, 0 without a checker. */
    unsigned int registClassName(const wchar_t* pName);

    /** Names the file of the memory report; nothing without a checker. */
    void setMemReportFile(const CString& strPath);

    /** Writes the memory report; nothing without a checker. */
    void generateMemReportFile();

    /** @return null in a build without the memory checker. */
    CMemChecker* getChecker() const noexcept { return m_pChecker; }

protected:
    IMemManagerListener* m_pListener; // not owned; read without the lock
    CMemAllocator* m_pAllocator;      // owned, a block of the system heap
    CMemChecker* m_pChecker;          // owned; null unless the build attaches one
    CSyncObject m_syncRetry;          // one retry at a time
    bool m_bInRetry;                  // the listener is being called; read without the lock

private:
    void* allocate(unsigned int uiSize);
    void* retry(unsigned int uiSize);
};
} // namespace Orlix
