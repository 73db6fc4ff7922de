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
#include <sys/ipc.h>
#include <sys/shm.h>

namespace Orlix {
namespace {

constexpr unsigned int NO_FILE = 0xFFFFFFFF;
constexpr int EVERYBODY = 0666; // may read and write, as far as the process's mask lets them

constexpr unsigned int NAME_SIZE = 32; // bytes
constexpr unsigned int REASON_SIZE = 1024;

constexpr long NANOSECONDS_PER_SECOND = 1000000000;
constexpr long STOP_LOOK_NS = 100000000;   // a wait looks at the stop flag after this long
constexpr long READER_TIME_NS = 100000000; // in which a woken reader is expected to be in its cycle
constexpr long SHORT_WAIT_NS = 50000;      // so long it is not worth to sleep
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
    CStringConverter::convertToMBCS(CStringConverter::format(L"%s%d", pPrefix, iSegmentID), szName, NAME_SIZE);
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

void postIfZero(sem_t* pSemaphore) {
    if (pSemaphore && getValue(pSemaphore) == 0)
        sem_post(pSemaphore);
}

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

/** A time in which another process is expected to do its part. */
class CImpShareMemory::CPatience {
public:
    explicit CPatience(long lNanoseconds) : m_timeShort(getTimeIn(SHORT_WAIT_NS)), m_timeEnd(getTimeIn(lNanoseconds)) {}
    bool isOver() const { return isPast(m_timeEnd); }
    /** Does not sleep at first. It does not yield either: on a busy machine that is a long time. */
    void pause() const {
        const timespec pause{0, PAUSE_NS};
        if (isPast(m_timeShort))
            nanosleep(&pause, nullptr);
    }

private:
    timespec m_timeShort;
    timespec m_timeEnd;
};

CImpShareMemory::CImpShareMemory(CShareMemory* pOwner)
    : m_pOwner(pOwner), m_iSegmentID(0), m_pSemRead(nullptr), m_pSemWrite(nullptr), m_pSemEvent(nullptr),
      m_bSegment(false) {}

CImpShareMemory::~CImpShareMemory() = default;

bool CImpShareMemory::open(unsigned int uiKey) {
    if (attach(uiKey) && openSemaphores()) {
        // Who was here before may have left more than the locks may hold, or the wake-up for a block that is gone.
        lowerTo(m_pSemRead, 1);
        lowerTo(m_pSemWrite, 1);
        lowerTo(m_pSemEvent, 0);
        recover();
        return true;
    }
    close();
    return false;
}

bool CImpShareMemory::attach(unsigned int uiKey) {
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
    void* const pSegment = shmat(iSegmentID, nullptr, 0);
    if (pSegment == reinterpret_cast<void*>(-1)) {
        CLogEngine::error2(L"CShareMemory: shmat error.");
        return false;
    }
    m_pOwner->m_pSegment = static_cast<unsigned char*>(pSegment);
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

void CImpShareMemory::close() {
    if (m_pOwner->m_pSegment)
        shmdt(m_pOwner->m_pSegment);
    m_pOwner->m_pSegment = nullptr;
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
        if (!takeWriteSemaphore())
            return;
        m_pOwner->setCanWrite(true);
        m_pOwner->m_waitWrite.wait(0);
        postIfZero(m_pSemEvent);
        awaitReader();
        sem_post(m_pSemWrite);
        while (m_pOwner->m_bLeaving && !m_pOwner->isPrepareStopThread())
            m_pOwner->m_waitWrite.wait(0); // one more round would tell a reader of the same end again
    }
}

/** Gives a reader that was woken the time to be counted in. It cannot get past this thread before the write semaphore
 * is posted, so the count tells for certain; who is not there in time has to wait for the next block. */
void CImpShareMemory::awaitReader() const {
    if (isAlone())
        return;
    const CPatience patience(READER_TIME_NS);
    while (m_pOwner->getReaderCount() == 0 && !patience.isOver() && !m_pOwner->isPrepareStopThread())
        patience.pause();
}

/** Lets go first who has been counted in: nothing hands a semaphore over, so without that this thread would have it
 * back before a reader comes up, each time. A count that stays for other reasons does not keep it for long.
 *  @return false as waitFor. */
bool CImpShareMemory::takeWriteSemaphore() const {
    const CPatience patience(READER_TIME_NS);
    while (true) {
        while (isReaderUnderWay(patience) && getValue(m_pSemWrite) != 0)
            patience.pause();
        if (!waitFor(m_pSemWrite))
            return false;
        if (!isReaderUnderWay(patience))
            return true;
        sem_post(m_pSemWrite);
    }
}

bool CImpShareMemory::isReaderUnderWay(const CPatience& patience) const {
    return m_pOwner->getReaderCount() != 0 && !patience.isOver() && !m_pOwner->isPrepareStopThread();
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
    CMsgShareMemory* const pMessage = new CMsgShareMemory(m_pOwner);
    if (!pMessage)
        return; // nobody would ever answer
    m_pOwner->m_bPosted = true;
    CMessageCenter::getInstance()->pushMessage(pMessage);
    m_pOwner->m_waitRead.wait(0);
}

void CImpShareMemory::leaveCycle() {
    if (!waitFor(m_pSemRead))
        return; // its holder was killed: the next open that is alone clears the count
    m_pOwner->readerCountChange(false);
    sem_post(m_pSemRead);
}
} // namespace Orlix
