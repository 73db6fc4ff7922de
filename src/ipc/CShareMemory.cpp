#include <Orlix/ipc/CShareMemory.h>

#include <Orlix/formats/CConfigParser.h>
#include <Orlix/ipc/CImpShareMemory.h>
#include <Orlix/ipc/IShareMemoryListener.h>
#include <Orlix/messaging/CMessageCenter.h>

#include <algorithm>
#include <cstring>

namespace Orlix {
namespace {

// The segment: the reader count and the length, 32 bits each, and the block.
constexpr unsigned int LENGTH_OFFSET = 4;

// The block with which a writer takes its leave.
constexpr unsigned char EXIT_BLOCK[] = {'#', 'e', 'x', 'i', 't', '#'};
constexpr unsigned int EXIT_SIZE = sizeof(EXIT_BLOCK);

// Other processes store here at any time, so each number is read and written whole, and read once. In the machine's
// order of bytes, which is little-endian on all that this library is built for.
unsigned int loadNumber(const unsigned char* pPlace) noexcept {
    return __atomic_load_n(reinterpret_cast<const unsigned int*>(pPlace), __ATOMIC_RELAXED);
}

void storeNumber(unsigned char* pPlace, unsigned int uiValue) noexcept {
    __atomic_store_n(reinterpret_cast<unsigned int*>(pPlace), uiValue, __ATOMIC_RELAXED);
}
} // namespace

CShareMemory::CShareMemory()
    : m_pListener(nullptr), m_eMode(MODE_READER), m_pSegment(nullptr), m_uiSegmentSize(0), m_bCanWrite(false),
      m_waitWrite(CString(L"")), m_waitRead(CString(L"")), m_pImp(new CImpShareMemory(this)), m_bPosted(false),
      m_bLeaving(false), m_uiRun(0) {}

CShareMemory::~CShareMemory() {
    close();
    delete m_pImp;
    forgetMessages();
}

bool CShareMemory::open(unsigned int uiKey, EModeType eMode, unsigned int uiSize) {
    const EModeType eOldMode = m_eMode;
    const unsigned int uiOldSize = m_uiSegmentSize;
    m_eMode = eMode;
    m_uiSegmentSize = uiSize + HEAD_SIZE; // may wrap: then there is no such segment
    if (!m_pImp || !m_pImp->open(uiKey)) {
        m_eMode = eOldMode; // for a channel that goes on with what it has
        m_uiSegmentSize = uiOldSize;
        return false;
    }
    const CConfigParser::tagThread& thread = CConfigParser::getInstance()->getThread();
    setThreadName(thread.name[CConfigParser::THREAD_SM]);
    setThreadPriority(thread.priority[CConfigParser::THREAD_SM]);
    if (!m_bRunning)
        forgetOldRun();
    startThread();
    return true;
}

/** Nothing of an earlier run may count as something of the next. */
void CShareMemory::forgetOldRun() {
    ++m_uiRun;
    setCanWrite(false);
    m_bLeaving = false;
    m_waitWrite.notify(); // so that the next line does not wait: it takes this one, or the one that was left
    m_waitWrite.wait(0);
    forgetMessages();
}

void CShareMemory::forgetMessages() {
    if (m_bPosted)
        CMessageCenter::getInstance()->deleteMessageByTypeAndID(CBaseMessage::MESSAGE_SHARE_MEMORY, getID());
}

void CShareMemory::close() {
    if (!m_bRunning)
        return;
    if (m_eMode == MODE_WRITER)
        writeExitBlock();
    stopThread();
    m_pImp->close();
}

void CShareMemory::writeExitBlock() {
    if (getCapacity() < EXIT_SIZE || !canWrite())
        return;
    m_bLeaving = true;
    writeData(EXIT_BLOCK, EXIT_SIZE);
}

bool CShareMemory::writeData(const unsigned char* pData, unsigned int uiSize) {
    if (!canWrite())
        return false;
    setCanWrite(false);
    if (m_pSegment)
        storeBlock(pData, uiSize);
    m_waitWrite.notify();
    return true;
}

/** Leaves zero what the block does not fill. The size is compared for that only: see the header. */
void CShareMemory::storeBlock(const unsigned char* pData, unsigned int uiSize) noexcept {
    unsigned char* const pBlock = m_pSegment + HEAD_SIZE;
    const unsigned int uiCopied = pData ? std::min(uiSize, getCapacity()) : 0;
    std::memset(pBlock + uiCopied, 0, getCapacity() - uiCopied);
    storeNumber(m_pSegment + LENGTH_OFFSET, uiSize);
    if (pData)
        std::memcpy(pBlock, pData, uiSize);
}

bool CShareMemory::readData(unsigned char* pBuffer, unsigned int uiSize) {
    if (!m_bRunning || uiSize == 0)
        return false;
    if (uiSize <= getCapacity() && m_pSegment && pBuffer)
        std::memcpy(pBuffer, m_pSegment + HEAD_SIZE, uiSize);
    return true;
}

/** The size that was given to open. */
unsigned int CShareMemory::getCapacity() const noexcept {
    return m_uiSegmentSize < HEAD_SIZE ? 0 : m_uiSegmentSize - HEAD_SIZE;
}

unsigned int CShareMemory::getSize() const noexcept {
    return m_pSegment ? std::min(loadNumber(m_pSegment + LENGTH_OFFSET), getCapacity()) : 0;
}

bool CShareMemory::isExitBlock() const noexcept {
    return m_pSegment && getCapacity() >= EXIT_SIZE && loadNumber(m_pSegment + LENGTH_OFFSET) == EXIT_SIZE &&
           std::memcmp(m_pSegment + HEAD_SIZE, EXIT_BLOCK, EXIT_SIZE) == 0;
}

void CShareMemory::handleShareMemoryMessage() {
    if (isPrepareStopThread())
        return;
    // Without a listener nobody would take the block, so the writers are kept off it: on purpose.
    if (m_eMode != MODE_READER || !m_pListener)
        return;
    const unsigned int uiRun = m_uiRun;
    if (isExitBlock())
        m_pListener->onWritterClose();
    else
        m_pListener->onDataAvailable();
    if (m_uiRun == uiRun) // or the listener has closed and opened the channel: the answer is not for a new message
        m_waitRead.notify();
}

unsigned int CShareMemory::readerCountChange(bool bAdd) {
    if (!m_pSegment)
        return 0;
    const unsigned int uiCount = getReaderCount() + (bAdd ? 1u : ~0u); // unsigned: an odd count wraps
    storeNumber(m_pSegment, uiCount);
    return uiCount;
}

unsigned int CShareMemory::getReaderCount() const noexcept { return loadNumber(m_pSegment); }

void CShareMemory::clearReaderCount() noexcept { storeNumber(m_pSegment, 0); }

void CShareMemory::prepareStopThread() {
    CThread::prepareStopThread();
    if (!m_pImp)
        return;
    if (m_eMode == MODE_WRITER) {
        m_pImp->prepareStopForWrite();
        m_waitWrite.notify();
    } else {
        m_pImp->prepareStopForRead();
        m_waitRead.notify();
    }
}

void CShareMemory::run() { m_pImp->run(); }
} // namespace Orlix
