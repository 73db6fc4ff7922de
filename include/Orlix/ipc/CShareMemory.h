#pragma once

#include <Orlix/foundation/CObject.h>
#include <Orlix/threading/CThread.h>

namespace Orlix {

class IShareMemory;
class IShareMemoryListener;

/** A mailbox between processes that holds the latest block of bytes: each write replaces the block, and nothing queues.
 *
 *  An instance is opened as writer or as reader and runs one thread. A reader's thread keeps writers off the block and
 *  posts a CMsgShareMemory; the listener takes the block on the host thread, which lets the next write happen. Of
 *  several readers one gets each block, and a reader that was not yet waiting may miss it. A reader needs a listener:
 *  without one it keeps writers off from the first block on until it is closed.
 *
 *  The segment is the reader count and the length of the block, 32 bits each, and the block. Other processes can write
 *  anything into it, so nothing in it is believed: a length is cut to what the segment holds.
 *
 *  Killed processes: one that dies inside its cycle leaves the channel blocked for those that are attached. The next
 *  open that finds nobody else attached puts it right; what the dead one was writing or reading is lost.
 *
 *  Threads: all operations on the host thread, but run and readerCountChange. The block is ordered by the semaphores
 *  between processes, and inside this one by the wait objects and by the can-write flag: that one is a plain field,
 *  stored and loaded as a release and an acquire. getSize reads the length without any lock, in one load, so that
 *  outside of the listener's call it tells no more than what the length was at some moment.
 *  Ownership: the destructor closes the channel and takes back the messages of it that wait; a subclass closes it in
 * its own destructor. */
class ORLIX_API CShareMemory : public CObject, public CThread {
    ORLIX_HEAP_CLASS(L"CShareMemory")

public:
    enum EModeType : unsigned int { MODE_READER = 0, MODE_WRITER = 1 };

    /** Closed, without a listener. */
    CShareMemory();
    CShareMemory(const CShareMemory&) = delete;
    CShareMemory& operator=(const CShareMemory&) = delete;
    ~CShareMemory() override;

    /** @param pListener not owned; null for nobody, which leaves a reader blocked at its next block. */
    void setListener(IShareMemoryListener* pListener) noexcept { m_pListener = pListener; }

    /** The low 32 bits of the instance's address, which is the ID of its messages. */
    unsigned int getID() const noexcept { return static_cast<unsigned int>(reinterpret_cast<std::size_t>(this)); }

    /** Attaches the segment of a key, made if there is none, and starts the thread. Call it on a closed channel only,
     *  which is not checked: what was open before is then lost, and stays in the system until the process ends. A block
     *  that waits unseen in the segment is told to nobody any more.
     *  @param uiKey 0 is the system's private key: a segment that no other open finds.
     *  @param uiSize bytes of the largest block; an existing segment must be as large at least.
     *  @return false, with the reason in the log and everything as it was, on failure. */
    bool open(unsigned int uiKey, EModeType eMode, unsigned int uiSize);

    /** A writer tells the readers, if it may write at this moment: otherwise they hear nothing. Then the thread ends,
     * and who is the last to detach removes the segment. A closed channel stays closed. The semaphores' names stay in
     * the system on purpose; an open deals with what they hold. */
    void close();

    /** Replaces the block; never blocks. @param pData null makes a block of zeros.
     *  @param uiSize 0 is an empty block. At most the size given to open: it is NOT compared, on purpose, and more
     * writes over what lies behind the segment.
     *  @return false, and nothing happens, while the channel cannot take it: try again later. It can take nothing
     * before its thread has come up, while a reader has the block, and without being open as writer. */
    bool writeData(const unsigned char* pData, unsigned int uiSize);

    /** Copies the first bytes of the block. Call it in the listener's calls: elsewhere a writer may be at work.
     *  @return false if the channel is closed or uiSize is 0. True means no more than that, on purpose: nothing is
     * copied for a size that the segment cannot hold. */
    bool readData(unsigned char* pBuffer, unsigned int uiSize);

    /** Bytes of the block, at most the size given to open; 0 while nothing is attached. */
    unsigned int getSize() const noexcept;
    bool isEmpty() const noexcept { return getSize() == 0; }

    /** Calls the listener and then lets the writers in. Called by CMsgShareMemory on the host thread. */
    void handleShareMemoryMessage();

    /** Counts a reader in or out. Called by the thread of a reader under the read semaphore.
     *  @return the new count, which wraps; 0 while nothing is attached. */
    unsigned int readerCountChange(bool bAdd);

    /** Also wakes the thread from where it waits as reader or writer. */
    void prepareStopThread() override;
    void run() override;

protected:
    friend class CImpShareMemory; // the other half of this class: what its thread does

    static constexpr unsigned int HEAD_SIZE = 8; // bytes in front of the block

    IShareMemoryListener* m_pListener; // not owned
    EModeType m_eMode;
    unsigned char* m_pSegment;    // null while nothing is attached; set and cleared only while the thread does not run
    unsigned int m_uiSegmentSize; // the size given to open and the head; wrapped if that has no room
    bool m_bCanWrite;             // the writer's thread holds the write semaphore and waits for data
    CWaitObject m_waitWrite;      // wakes the writer's thread: a block is in the segment
    CWaitObject m_waitRead;       // wakes the reader's thread: the host has handled the message
    IShareMemory* m_pImp;         // owned; null only if it could not be allocated
    bool m_bPosted;               // by the thread: messages of this instance may wait
    bool m_bLeaving;              // set before the block of leave: behind it the writer's thread only awaits its stop
    unsigned int m_uiRun;         // counts the runs of the thread

    /** Whether writeData would be taken now. */
    bool canWrite() const noexcept { return m_bRunning && __atomic_load_n(&m_bCanWrite, __ATOMIC_ACQUIRE); }
    void setCanWrite(bool bCanWrite) noexcept { __atomic_store_n(&m_bCanWrite, bCanWrite, __ATOMIC_RELEASE); }

    /** Only while something is attached. */
    unsigned int getReaderCount() const noexcept;
    void clearReaderCount() noexcept;

private:
    unsigned int getCapacity() const noexcept;
    bool isExitBlock() const noexcept;
    void storeBlock(const unsigned char* pData, unsigned int uiSize) noexcept;
    void writeExitBlock();
    void forgetOldRun();
    void forgetMessages();
};
} // namespace Orlix
