#include <Orlix/ipc/CImpShareMemory.h>

#include <Orlix/foundation/CStringConverter.h>
#include <Orlix/ipc/CMsgShareMemory.h>
#include <Orlix/ipc/CShareMemory.h>
#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/system/CLogUtility.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sched.h>
#include <sys/ipc.h>
#include <sys/shm.h>

namespace Orlix {
namespace {

constexpr unsigned int NO_FILE = 0xFFFFFFFF;
constexpr int EVERYBODY = 0666; // may read and write, as far as the process's mask lets them

constexpr unsigned int NAME_SIZE = 32; // bytes
constexpr unsigned int REASON_SIZE = 1024;

constexpr long NANOSECONDS_PER_SECOND = 1000000000;
constexpr long STOP_LOOK_NS = 100000000; // a wait looks at the stop flag after this long
constexpr int LEAVE_TRIES = 10;          // of a reader that stops: a second for a peer that is slow
constexpr long COURTESY_NS = 100000000;  // in which a woken reader is expected to come up
constexpr long STEP_NS = 500000;         // between two of its steps that can be seen, which are a few instructions
constexpr long SHORT_WAIT_NS = 200000;   // so long it is not worth to sleep
constexpr long PAUSE_NS = 50000;

timespec getTimeIn(long lNanoseconds) {
    timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    time.tv_nsec += lNanoseconds;
    if (time.tv_nsec >= NANOSECONDS_PER_SECOND) {
        time.tv_nsec -= NANOSECONDS_PER_SECOND;
        ++time.tv_sec;
    }
    return time;
}

bool isPast(const timespec& deadline) {
    const timespec now = getTimeIn(0);
    return now.tv_sec != deadline.tv_sec ? now.tv_sec > deadline.tv_sec : now.tv_nsec >= deadline.tv_nsec;
}

/** @param iError gets the reason of a failure. @return null on failure. */
sem_t* openSemaphore(const wchar_t* pPrefix, int iSegmentID, unsigned int uiValue, int& iError) {
    char szName[NAME_SIZE];
    CStringConverter::convertToMBCS(CStringConverter::format(L"%ls%d", pPrefix, iSegmentID), szName, NAME_SIZE);
    sem_t* const pSemaphore = sem_open(szName, O_CREAT | O_RDWR, EVERYBODY, uiValue);
    if (pSemaphore == SEM_FAILED)
        iError = errno;
    return pSemaphore;
}

void closeSemaphore(sem_t*& pSemaphore) {
    if (pSemaphore)
        sem_close(pSemaphore);
    pSemaphore = nullptr;
}

int getValue(sem_t* pSemaphore) {
    int iValue = 0;
    sem_getvalue(pSemaphore, &iValue);
    return iValue;
}

/** @return whether it posted. */
bool postIfZero(sem_t* pSemaphore) { return pSemaphore && getValue(pSemaphore) == 0 && sem_post(pSemaphore) == 0; }

/** Never sleeps: another process may be lowering the semaphore too. */
void lowerTo(sem_t* pSemaphore, int iValue) {
    while (getValue(pSemaphore) > iValue)
        sem_trywait(pSemaphore);
}

void logSemaphoreError(int iError) {
    const char* const pReason = std::strerror(iError);
    if (std::strlen(pReason) >= REASON_SIZE) {
        CLogEngine::error2(L"CShareMemory: sem_open error.");
        return;
    }
    CString strReason;
    CStringConverter::convertFromMBCS(pReason, strReason);
    CLogEngine::error2(CStringConverter::format(L"CShareMemory: sem_open error: %ls.",
                                                strReason.getBuffer() ? strReason.getBuffer() : L""));
}
} // namespace

CImpShareMemory::CImpShareMemory(CShareMemory* pOwner)
    : m_pOwner(pOwner), m_iSegmentID(0), m_pSemRead(nullptr), m_pSemWrite(nullptr), m_pSemEvent(nullptr),
      m_bSegment(false) {}

CImpShareMemory::~CImpShareMemory() = default;

bool CImpShareMemory::open(unsigned int uiKey) {
    CImpShareMemory fresh(m_pOwner); // what a running channel works with stays as it is if this fails
    unsigned char* pSegment = nullptr;
    if (!fresh.attach(uiKey, pSegment) || !fresh.openSemaphores()) {
        fresh.release(pSegment);
        return false;
    }
    m_iSegmentID = fresh.m_iSegmentID;
    m_bSegment = true;
    m_pSemRead = fresh.m_pSemRead;
    m_pSemWrite = fresh.m_pSemWrite;
    m_pSemEvent = fresh.m_pSemEvent;
    m_pOwner->m_pSegment = pSegment;
    // Who was here before may have left more than the locks may hold, or the wake-up for a block that is gone.
    lowerTo(m_pSemRead, 1);
    lowerTo(m_pSemWrite, 1);
    lowerTo(m_pSemEvent, 0);
    recover();
    return true;
}

bool CImpShareMemory::attach(unsigned int uiKey, unsigned char*& pSegment) {
    const unsigned int uiSize = m_pOwner->m_uiSegmentSize;
    // A size that has wrapped is refused here: the system would take it for any segment that exists.
    const int iSegmentID =
        uiSize < CShareMemory::HEAD_SIZE ? -1 : shmget(static_cast<key_t>(uiKey), uiSize, IPC_CREAT | EVERYBODY);
    if (iSegmentID == -1) {
        CLogEngine::error2(L"CShareMemory: shmget error.");
        return false;
    }
    m_iSegmentID = iSegmentID;
    m_bSegment = true;
    void* const pAttached = shmat(iSegmentID, nullptr, 0);
    if (pAttached == reinterpret_cast<void*>(-1)) {
        CLogEngine::error2(L"CShareMemory: shmat error.");
        return false;
    }
    pSegment = static_cast<unsigned char*>(pAttached);
    return true;
}

bool CImpShareMemory::openSemaphores() {
    int iError = 0;
    m_pSemRead = openSemaphore(L"/super_read_", m_iSegmentID, 1, iError);
    m_pSemWrite = openSemaphore(L"/super_write_", m_iSegmentID, 1, iError);
    m_pSemEvent = openSemaphore(L"/super_event_", m_iSegmentID, 0, iError);
    if (m_pSemRead && m_pSemWrite && m_pSemEvent)
        return true;
    logSemaphoreError(iError);
    return false;
}

/** Whether nobody else is attached to the segment at this moment. */
bool CImpShareMemory::isAlone() const {
    shmid_ds state;
    return shmctl(m_iSegmentID, IPC_STAT, &state) == 0 && state.shm_nattch == 1;
}

bool CImpShareMemory::isLeftBlocked() const {
    return m_pOwner->getReaderCount() != 0 || getValue(m_pSemRead) == 0 || getValue(m_pSemWrite) == 0;
}

/** Frees what a process that was killed inside its cycle has kept. With somebody else attached it may be in use. */
void CImpShareMemory::recover() {
    if (!isAlone() || !isLeftBlocked() || !isAlone()) // again, since somebody may have come meanwhile
        return;
    m_pOwner->clearReaderCount();
    postIfZero(m_pSemRead);
    postIfZero(m_pSemWrite);
}

void CImpShareMemory::close() { release(m_pOwner->m_pSegment); }

void CImpShareMemory::release(unsigned char*& pSegment) {
    if (pSegment)
        shmdt(pSegment);
    pSegment = nullptr;
    if (m_bSegment) {
        shmid_ds state;
        if (shmctl(m_iSegmentID, IPC_STAT, &state) == 0 && state.shm_nattch == 0)
            shmctl(m_iSegmentID, IPC_RMID, nullptr);
    }
    m_iSegmentID = 0;
    m_bSegment = false;
    closeSemaphore(m_pSemRead);
    closeSemaphore(m_pSemWrite);
    closeSemaphore(m_pSemEvent);
}

unsigned int CImpShareMemory::openFile(const CString&) { return NO_FILE; }

void CImpShareMemory::prepareStopForRead() { postIfZero(m_pSemEvent); }

// Also posts while the thread itself holds the semaphore, which is then 2 behind its run: opens put that right.
void CImpShareMemory::prepareStopForWrite() { postIfZero(m_pSemWrite); }

void CImpShareMemory::run() {
    if (m_pOwner->m_eMode == CShareMemory::MODE_WRITER)
        runWriter();
    else
        runReader();
}

/** @return false, with nothing taken, once the stop flag is set and the semaphore could not be had. */
bool CImpShareMemory::waitFor(sem_t* pSemaphore) const {
    do {
        const timespec deadline = getTimeIn(STOP_LOOK_NS);
        if (sem_clockwait(pSemaphore, CLOCK_MONOTONIC, &deadline) == 0)
            return true;
    } while (!m_pOwner->isPrepareStopThread());
    return false;
}

void CImpShareMemory::runWriter() {
    while (!m_pOwner->isPrepareStopThread()) {
        m_pOwner->setCanWrite(false);
        if (!waitFor(m_pSemWrite))
            return;
        m_pOwner->setCanWrite(true);
        m_pOwner->m_waitWrite.wait(0);
        sem_post(m_pSemWrite);
        if (postIfZero(m_pSemEvent) && !isAlone())
            letReaderIn();
        while (m_pOwner->m_bLeaving && !m_pOwner->isPrepareStopThread())
            m_pOwner->m_waitWrite.wait(0); // one more round would tell a reader of the same end again
    }
}

/** Whether a woken reader has not taken the event yet, or stands before the write semaphore with the other one taken.
 */
bool CImpShareMemory::isReaderComing() const { return getValue(m_pSemEvent) != 0 || getValue(m_pSemRead) == 0; }

/** A courtesy before the next round: nothing hands a semaphore over, so this thread would have it back before the
 *  reader that it woke comes up, each time. Ends once somebody holds it, or when no reader is on its way any more: then
 *  it is not the first of its cycle, or already through. An event that nobody takes costs it all, but only once, since
 *  it is not raised again. Who comes later waits for the next block. */
void CImpShareMemory::letReaderIn() const {
    const timespec pause{0, PAUSE_NS};
    const timespec timeShort = getTimeIn(SHORT_WAIT_NS);
    const timespec timeEnd = getTimeIn(COURTESY_NS);
    timespec timeStep = getTimeIn(STEP_NS);
    while (getValue(m_pSemWrite) != 0 && !isPast(timeEnd) && !m_pOwner->isPrepareStopThread()) {
        if (isReaderComing())
            timeStep = getTimeIn(STEP_NS);
        else if (isPast(timeStep))
            return;
        if (isPast(timeShort))
            nanosleep(&pause, nullptr);
        else
            sched_yield(); // the reader may need this very processor
    }
}

void CImpShareMemory::runReader() {
    while (!m_pOwner->isPrepareStopThread()) {
        if (!waitFor(m_pSemEvent) || m_pOwner->isPrepareStopThread())
            return;
        runReaderCycle();
    }
}

void CImpShareMemory::runReaderCycle() {
    if (!waitFor(m_pSemRead))
        return;
    const bool bFirst = m_pOwner->readerCountChange(true) == 1;
    const bool bHoldsWrite = bFirst && waitFor(m_pSemWrite);
    sem_post(m_pSemRead);
    if (!m_pOwner->isPrepareStopThread())
        postMessage();
    leaveCycle();
    // The reader that took it gives it back, on purpose, even if others that came later are still reading.
    if (bHoldsWrite)
        sem_post(m_pSemWrite);
}

/** Hands the block to the host thread and waits until that is done with it. */
void CImpShareMemory::postMessage() {
    // An answer that came for an earlier message would count for this one, and let a writer in before its time. What
    // is dropped here may be the word of the stop as well.
    m_pOwner->m_waitRead.notify();
    m_pOwner->m_waitRead.wait(0);
    if (m_pOwner->isPrepareStopThread())
        return;
    CMsgShareMemory* const pMessage = new CMsgShareMemory(m_pOwner);
    if (!pMessage)
        return; // nobody would ever answer
    m_pOwner->m_bPosted = true;
    CMessageCenter::getInstance()->pushMessage(pMessage);
    m_pOwner->m_waitRead.wait(0);
}

void CImpShareMemory::leaveCycle() {
    for (int i = 0; i < LEAVE_TRIES; ++i) { // each one ends in vain only once the stop is asked for
        if (!waitFor(m_pSemRead))
            continue;
        m_pOwner->readerCountChange(false);
        sem_post(m_pSemRead);
        return;
    }
    // Its holder was killed: the next open that is alone clears the count.
}
} // namespace Orlix
