#pragma once

#include <Orlix/foundation/CObject.h>
#include <Orlix/ipc/IShareMemory.h>

#include <semaphore.h>

namespace Orlix {

class CShareMemory;
class CString;

/** A System V segment and three named POSIX semaphores, whose names end in the segment's identifier. The read semaphore
 *  guards the reader count; the write semaphore is held by the writer while it may write and by the first reader of a
 *  cycle; the event semaphore tells one reader that a block was written.
 *
 *  Every wait of a reader and of a writer looks at the stop flag ten times a second: another process may have taken the
 *  wake-up that a stop posts, so a stop never hangs, whoever holds a semaphore.
 *  Threads: open, close and the stops on the host thread, run on the channel's. */
class ORLIX_API CImpShareMemory : public IShareMemory {
    ORLIX_HEAP_CLASS(L"CImpShareMemory")

public:
    /** @param pOwner not owned. */
    explicit CImpShareMemory(CShareMemory* pOwner);
    CImpShareMemory(const CImpShareMemory&) = delete;
    CImpShareMemory& operator=(const CImpShareMemory&) = delete;
    /** Does not close. */
    ~CImpShareMemory() override;

    bool open(unsigned int uiKey) override;
    void close() override;
    /** Does nothing on purpose. @return 0xFFFFFFFF. */
    unsigned int openFile(const CString& strPath);
    void prepareStopForRead() override;
    void prepareStopForWrite() override;
    void run() override;

protected:
    CShareMemory* m_pOwner; // not owned
    int m_iSegmentID;       // 0 while there is none, but 0 is an identifier like any other
    sem_t* m_pSemRead;
    sem_t* m_pSemWrite;
    sem_t* m_pSemEvent;
    bool m_bSegment; // m_iSegmentID is one

private:
    bool attach(unsigned int uiKey, unsigned char*& pSegment);
    bool openSemaphores();
    void release(unsigned char*& pSegment);
    bool isAlone() const;
    bool isLeftBlocked() const;
    void recover();
    bool waitFor(sem_t* pSemaphore) const;
    void runWriter();
    bool isReaderComing() const;
    void letReaderIn() const;
    void runReader();
    void runReaderCycle();
    void leaveCycle();
    void postMessage();
};
} // namespace Orlix
