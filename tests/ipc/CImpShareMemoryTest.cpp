#include <Orlix/ipc/CImpShareMemory.h>

#include <Orlix/foundation/CStringConverter.h>

#include "ipc/ShareFixture.h"
#include "support/ShareStandIn.h"

#include <cerrno>
#include <climits>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <type_traits>

using namespace Orlix;
using namespace OrlixTest;

namespace {

using CImpShareMemoryTest = ShareMemoryTest;
using VecCall = std::vector<std::string>;

static_assert(std::is_base_of<IShareMemory, CImpShareMemory>::value, "the channel holds it as that");

constexpr CShareMemory::EModeType READER = CShareMemory::MODE_READER;
constexpr CShareMemory::EModeType WRITER = CShareMemory::MODE_WRITER;

/** The platform object with what it holds. */
class COpenImp : public CImpShareMemory {
public:
    using CImpShareMemory::CImpShareMemory;
    using CImpShareMemory::m_bSegment;
    using CImpShareMemory::m_iSegmentID;
    using CImpShareMemory::m_pSemEvent;
    using CImpShareMemory::m_pSemRead;
    using CImpShareMemory::m_pSemWrite;

    bool holdsNothing() const {
        return !m_bSegment && m_iSegmentID == 0 && !m_pSemRead && !m_pSemWrite && !m_pSemEvent;
    }
};

/** A channel whose platform object a test drives by itself, without a thread. */
class CDrivenChannel : public COpenChannel {
public:
    explicit CDrivenChannel(unsigned int uiSize) : m_imp(this) { m_uiSegmentSize = uiSize + HEAD_SIZE; }
    ~CDrivenChannel() override { m_imp.close(); }

    COpenImp m_imp;
};

int findSegment(unsigned int uiKey) { return shmget(static_cast<key_t>(uiKey), 0, 0); }

/** In the language of the locale, which the library has set. */
std::wstring getReason(int iError) {
    CString strReason;
    CStringConverter::convertFromMBCS(std::strerror(iError), strReason);
    return strReason.getBuffer();
}

/** As writeSoon, without sleeping. */
bool writeEagerly(COpenChannel& writer, const VecByte& vecBlock) {
    const auto timeEnd = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!writer.writeData(vecBlock.data(), static_cast<unsigned int>(vecBlock.size()))) {
        if (std::chrono::steady_clock::now() > timeEnd)
            return false;
        std::this_thread::yield();
    }
    return true;
}

/** Waits until the calls are these. */
void expectCalls(CShareStandIn& standIn, const VecCall& vecExpected) {
    waitUntil([&] { return standIn.getCalls().size() >= vecExpected.size(); });
    EXPECT_EQ(standIn.getCalls(), vecExpected);
    standIn.clear();
}

// ---- Opening and closing

TEST_F(CImpShareMemoryTest, OpenAndCloseMakeTheirCallsInOrder) {
    CShareStandIn standIn;
    CDrivenChannel channel(24);
    ASSERT_TRUE(channel.m_imp.open(m_uiKey));
    const std::string strID = std::to_string(channel.m_imp.m_iSegmentID);
    expectCalls(standIn, {"shmget " + std::to_string(m_uiKey) + " 32 1666", "shmat 0",
                          "open /super_read_" + strID + " 102 666 1", "open /super_write_" + strID + " 102 666 1",
                          "open /super_event_" + strID + " 102 666 0"});
    EXPECT_NE(channel.m_pSegment, nullptr);
    channel.m_imp.close();
    expectCalls(standIn, {"shmdt", "remove", "close read", "close write", "close event"});
    EXPECT_EQ(channel.m_pSegment, nullptr);
    EXPECT_TRUE(channel.m_imp.holdsNothing());
    channel.m_imp.close();
    EXPECT_TRUE(standIn.getCalls().empty());
}

TEST_F(CImpShareMemoryTest, TheLastOneRemovesTheSegmentAndTheNamesRemain) {
    CDrivenChannel first(8), second(8);
    ASSERT_TRUE(first.m_imp.open(m_uiKey));
    ASSERT_TRUE(second.m_imp.open(m_uiKey));
    const int iSegmentID = first.m_imp.m_iSegmentID;
    first.m_imp.close();
    EXPECT_TRUE(CRawChannel::isThere(iSegmentID));
    second.m_imp.close();
    EXPECT_FALSE(CRawChannel::isThere(iSegmentID));
    for (const char* const pPrefix : {"/super_read_", "/super_write_", "/super_event_"}) {
        sem_t* const pSemaphore = sem_open((pPrefix + std::to_string(iSegmentID)).c_str(), O_RDWR);
        ASSERT_NE(pSemaphore, SEM_FAILED) << pPrefix;
        sem_close(pSemaphore);
    }
}

TEST_F(CImpShareMemoryTest, TheIdentifierZeroIsOneLikeAnyOther) {
    CShareStandIn standIn;
    standIn.m_bZeroID = true;
    CDrivenChannel channel(8);
    ASSERT_TRUE(channel.m_imp.open(m_uiKey));
    EXPECT_EQ(channel.m_imp.m_iSegmentID, 0);
    EXPECT_EQ(standIn.getCalls()[2], "open /super_read_0 102 666 1");
    const int iRealID = findSegment(m_uiKey);
    channel.m_imp.close();
    standIn.m_bZeroID = false;
    EXPECT_FALSE(CRawChannel::isThere(iRealID));
}

TEST_F(CImpShareMemoryTest, ASizeThatWrapsOrDoesNotFitIsAFailedSegment) {
    CRawChannel raw(m_uiKey, 16);
    for (const unsigned int uiSize : {UINT_MAX, UINT_MAX - 7, 4096u}) {
        COpenChannel channel;
        EXPECT_FALSE(channel.open(m_uiKey, WRITER, uiSize)) << uiSize;
        EXPECT_FALSE(channel.m_bRunning);
        EXPECT_EQ(channel.m_pSegment, nullptr);
        EXPECT_EQ(channel.getSize(), 0u);
    }
    EXPECT_EQ(m_log.getLines(), std::vector<std::wstring>(3, L"[Error][OrlixEngine] CShareMemory: shmget error."));
    COpenChannel smaller;
    EXPECT_TRUE(smaller.open(m_uiKey, WRITER, 4)) << "the segment has room for eight";
}

TEST_F(CImpShareMemoryTest, ASegmentThatCannotBeAttachedIsNotKept) {
    CShareStandIn standIn;
    standIn.m_bNoAttach = true;
    COpenChannel channel;
    EXPECT_FALSE(channel.open(m_uiKey, READER, 8));
    EXPECT_FALSE(channel.m_bRunning);
    EXPECT_EQ(channel.m_pSegment, nullptr);
    EXPECT_EQ(findSegment(m_uiKey), -1);
    EXPECT_EQ(m_log.getLines(), std::vector<std::wstring>{L"[Error][OrlixEngine] CShareMemory: shmat error."});
}

TEST_F(CImpShareMemoryTest, ASemaphoreThatCannotBeOpenedUndoesTheOpen) {
    const struct {
        const char* pName;
        unsigned int uiReason; // bytes of the reason; 0 for the system's own
    } aryRow[] = {{"read", 0}, {"write", 0}, {"event", 0}, {"event", 1023}, {"event", 1024}};
    for (const auto& row : aryRow) {
        CShareStandIn standIn;
        standIn.m_uiReason = row.uiReason;
        CRawChannel raw(m_uiKey, 16);
        const std::string strName = std::string(row.pName) + "_" + std::to_string(raw.m_iSegmentID);
        sem_unlink(("/super_" + strName).c_str());
        const std::string strFolder = "/dev/shm/sem.super_" + strName;
        ASSERT_EQ(mkdir(strFolder.c_str(), 0700), 0);
        const std::size_t uiLines = m_log.getLines().size();
        CDrivenChannel channel(8);
        EXPECT_FALSE(channel.m_imp.open(m_uiKey));
        rmdir(strFolder.c_str());
        EXPECT_EQ(channel.m_pSegment, nullptr);
        EXPECT_TRUE(channel.m_imp.holdsNothing());
        ASSERT_EQ(m_log.getLines().size(), uiLines + 1);
        const std::wstring strReason = row.uiReason == 0 ? getReason(EISDIR) : std::wstring(row.uiReason, L'x');
        EXPECT_EQ(m_log.getLines().back(), L"[Error][OrlixEngine] CShareMemory: sem_open error" +
                                               (row.uiReason == 1024 ? L"." : L": " + strReason + L"."));
    }
}

TEST_F(CImpShareMemoryTest, OpenFileOpensNothing) {
    CShareStandIn standIn;
    CDrivenChannel channel(8);
    EXPECT_EQ(channel.m_imp.openFile(L"/tmp/file"), 0xFFFFFFFF);
    EXPECT_TRUE(standIn.getCalls().empty());
}

// ---- What an earlier run left behind

TEST_F(CImpShareMemoryTest, OpenLowersWhatIsTooHigh) {
    const struct {
        std::vector<int> vecBefore, vecAfter;
    } aryRow[] = {
        {{1, 1, 0}, {1, 1, 0}}, {{2, 1, 0}, {1, 1, 0}}, {{1, 2, 0}, {1, 1, 0}}, {{1, 1, 1}, {1, 1, 0}},
        {{5, 6, 7}, {1, 1, 0}}, {{0, 3, 2}, {0, 1, 0}}, {{9, 0, 0}, {1, 0, 0}},
    };
    for (const auto& row : aryRow) {
        for (const CShareMemory::EModeType eMode : {READER, WRITER}) {
            const unsigned int uiKey = makeKey();
            CRawChannel raw(uiKey, 16); // stays attached, so that nothing is raised
            raw.setValues(row.vecBefore);
            CDrivenChannel channel(8);
            channel.m_eMode = eMode;
            ASSERT_TRUE(channel.m_imp.open(uiKey));
            EXPECT_EQ(raw.getValues(), row.vecAfter);
        }
    }
}

TEST_F(CImpShareMemoryTest, OpenFreesWhatIsBlockedWhenItIsAlone) {
    const struct {
        unsigned int uiCount;
        std::vector<int> vecValues;
        bool bBlocked;
    } aryRow[] = {{0, {1, 1, 0}, false}, {1, {1, 1, 0}, true},          {0, {0, 1, 0}, true},
                  {0, {1, 0, 0}, true},  {0xFFFFFFFF, {0, 0, 1}, true}, {0, {2, 2, 2}, false}};
    for (const auto& row : aryRow) {
        for (const bool bAlone : {true, false}) {
            const unsigned int uiKey = makeKey();
            CRawChannel raw(uiKey, 16);
            raw.setNumber(0, row.uiCount);
            raw.setNumber(4, 3);
            raw.setValues(row.vecValues);
            if (bAlone)
                raw.detach();
            CDrivenChannel channel(8);
            ASSERT_TRUE(channel.m_imp.open(uiKey));
            const bool bKept = row.bBlocked && !bAlone;
            const std::vector<int> vecKept = {row.vecValues[0], row.vecValues[1], 0};
            EXPECT_EQ(raw.getValues(), bKept ? vecKept : (std::vector<int>{1, 1, 0})) << row.uiCount << bAlone;
            EXPECT_EQ(channel.readerCountChange(true), bKept ? row.uiCount + 1 : 1) << row.uiCount << bAlone;
            EXPECT_EQ(channel.getSize(), 3u) << "the block stays";
        }
    }
}

// Somebody who comes while it looks may be at work already: what is taken is theirs.
TEST_F(CImpShareMemoryTest, OpenFreesNothingOnceSomebodyHasCome) {
    CShareStandIn standIn;
    CRawChannel raw(m_uiKey, 16);
    raw.setNumber(0, 1);
    raw.setValues({0, 0, 0});
    raw.detach();
    int iLooks = 0;
    void* pOther = nullptr;
    standIn.m_fnLook = [&] {
        if (++iLooks == 2)
            pOther = shmat(raw.m_iSegmentID, nullptr, 0);
    };
    CDrivenChannel channel(8);
    EXPECT_TRUE(channel.m_imp.open(m_uiKey));
    standIn.m_fnLook = nullptr;
    EXPECT_EQ(iLooks, 2);
    EXPECT_EQ(raw.getValues(), (std::vector<int>{0, 0, 0}));
    EXPECT_EQ(channel.readerCountChange(true), 2u);
    shmdt(pOther);
}

// ---- The steps of both threads

TEST_F(CImpShareMemoryTest, TheWriterGoesThroughItsSteps) {
    CShareStandIn standIn;
    COpenChannel writer;
    ASSERT_TRUE(writer.open(m_uiKey, WRITER, 8));
    ASSERT_TRUE(waitUntil([&] { return writer.canWrite(); }));
    VecCall vecCall = standIn.getCalls();
    ASSERT_EQ(vecCall.size(), 6u);
    EXPECT_EQ(vecCall.back(), "wait write");
    standIn.clear();
    ASSERT_TRUE(writer.writeSoon(toBytes("one")));
    expectCalls(standIn, {"post write", "post event", "wait write"});
    ASSERT_TRUE(writer.writeSoon(toBytes("two"))); // nobody has taken the event, which stays 1
    expectCalls(standIn, {"post write", "wait write"});
    ASSERT_TRUE(waitUntil([&] { return writer.canWrite(); }));
    CRawChannel raw(m_uiKey, 16);
    standIn.clear();
    writer.m_bCanWrite = false; // no block of leave
    writer.close();             // posts although its thread has the semaphore: on purpose, opens put it right
    expectCalls(standIn, {"post write", "post write", "shmdt", "close read", "close write", "close event"});
    EXPECT_EQ(raw.getValues(), (std::vector<int>{1, 2, 1}));
}

TEST_F(CImpShareMemoryTest, TheReaderGoesThroughItsSteps) {
    CShareStandIn standIn;
    CRawChannel raw(m_uiKey, 16);
    COpenChannel reader;
    CBlockListener listener(reader);
    standIn.clear();
    ASSERT_TRUE(reader.open(m_uiKey, READER, 8));
    ASSERT_EQ(standIn.getCalls().size(), 5u);
    standIn.clear();
    sem_post(raw.m_pEvent);
    ASSERT_TRUE(waitUntil([] { return CMessageCenter::getInstance()->getMessageCount() == 1; }));
    expectCalls(standIn, {"post event", "wait event", "wait read", "wait write", "post read"});
    EXPECT_EQ(raw.getNumber(0), 1u);
    EXPECT_EQ(raw.getValues(), (std::vector<int>{1, 0, 0}));
    EXPECT_TRUE(handleNext());
    expectCalls(standIn, {"wait read", "post read", "post write"});
    EXPECT_EQ(raw.getNumber(0), 0u);
    EXPECT_EQ(raw.getValues(), (std::vector<int>{1, 1, 0}));
}

// Deliberate: who took the write semaphore gives it back, though another reader is still at the block.
TEST_F(CImpShareMemoryTest, TheReaderThatTookTheWriteSemaphoreGivesItBack) {
    COpenChannel first, second;
    CBlockListener firstListener(first), secondListener(second);
    CRawChannel raw(m_uiKey, 16);
    ASSERT_TRUE(first.open(m_uiKey, READER, 8));
    sem_post(raw.m_pEvent);
    CMessageCenter* const pCenter = CMessageCenter::getInstance();
    ASSERT_TRUE(waitUntil([&] { return pCenter->getMessageCount() == 1; }));
    ASSERT_TRUE(second.open(m_uiKey, READER, 8));
    sem_post(raw.m_pEvent);
    ASSERT_TRUE(waitUntil([&] { return pCenter->getMessageCount() == 2; }));
    EXPECT_EQ(raw.getNumber(0), 2u);
    EXPECT_EQ(raw.getValues(), (std::vector<int>{1, 0, 0}));
    EXPECT_TRUE(handleNext());
    EXPECT_EQ(firstListener.m_vecBlock.size(), 1u);
    EXPECT_TRUE(waitUntil([&] { return raw.getNumber(0) == 1 && CRawChannel::getValue(raw.m_pWrite) == 1; }));
    EXPECT_TRUE(handleNext());
    EXPECT_EQ(secondListener.m_vecBlock.size(), 1u);
    EXPECT_TRUE(waitUntil([&] { return raw.getNumber(0) == 0; }));
    EXPECT_EQ(raw.getValues(), (std::vector<int>{1, 1, 0}));
}

TEST_F(CImpShareMemoryTest, AWakeUpIsPostedOnlyAtZero) {
    CDrivenChannel channel(8);
    channel.m_imp.prepareStopForRead(); // without semaphores
    channel.m_imp.prepareStopForWrite();
    CRawChannel raw(m_uiKey, 16);
    ASSERT_TRUE(channel.m_imp.open(m_uiKey));
    raw.setValues({0, 0, 0});
    channel.m_imp.prepareStopForRead();
    EXPECT_EQ(raw.getValues(), (std::vector<int>{0, 0, 1}));
    channel.m_imp.prepareStopForRead();
    channel.m_imp.prepareStopForWrite();
    EXPECT_EQ(raw.getValues(), (std::vector<int>{0, 1, 1}));
    channel.m_imp.prepareStopForWrite();
    EXPECT_EQ(raw.getValues(), (std::vector<int>{0, 1, 1}));
}

TEST_F(CImpShareMemoryTest, AReaderGetsInThoughTheWriterWantsTheSemaphoreBack) {
    COpenChannel writer, reader;
    CBlockListener listener(reader);
    ASSERT_TRUE(writer.open(m_uiKey, WRITER, 8));
    ASSERT_TRUE(reader.open(m_uiKey, READER, 8));
    unsigned int uiInTime = 0;
    for (unsigned int i = 1; i <= 200; ++i) {
        const std::size_t uiBefore = listener.m_vecBlock.size();
        ASSERT_TRUE(passOn(writer, listener, makeBlock(8, i)));
        uiInTime += listener.m_vecBlock.size() == uiBefore + 1 ? 1 : 0;
    }
    EXPECT_GT(uiInTime, 100u) << "without the courtesy next to none gets in";
}

// Deliberate: nothing makes the writer wait longer for a reader than its courtesy. The test keeps the reader in its
// step in front of the write semaphore meanwhile.
TEST_F(CImpShareMemoryTest, AReaderThatTheWriterHasOvertakenSeesTheNewerBlock) {
    COpenChannel writer, reader;
    CBlockListener listener(reader);
    CRawChannel raw(m_uiKey, 16);
    ASSERT_TRUE(writer.open(m_uiKey, WRITER, 8));
    ASSERT_TRUE(reader.open(m_uiKey, READER, 8));
    raw.setValues({0, CRawChannel::getValue(raw.m_pWrite), 0});
    ASSERT_TRUE(writer.writeSoon(toBytes("older")));
    ASSERT_TRUE(waitUntil([&] { return CRawChannel::getValue(raw.m_pEvent) == 0 && writer.canWrite(); }));
    sem_post(raw.m_pRead);
    ASSERT_TRUE(waitUntil([&] { return raw.getNumber(0) == 1; }));
    EXPECT_EQ(raw.getValues(), (std::vector<int>{0, 0, 0}));
    EXPECT_EQ(CMessageCenter::getInstance()->getMessageCount(), 0u);
    ASSERT_TRUE(runUntil([&] { // again, should it be overtaken again
        writer.writeData(reinterpret_cast<const unsigned char*>("newer"), 5);
        return !listener.m_vecBlock.empty();
    }));
    EXPECT_EQ(listener.m_vecBlock.front(), toBytes("newer"));
}

TEST_F(CImpShareMemoryTest, AnEventThatNobodyTakesDelaysTheWriterOnce) {
    CRawChannel raw(m_uiKey, 16); // attached, but does not read
    COpenChannel writer;
    ASSERT_TRUE(writer.open(m_uiKey, WRITER, 8));
    const auto timeStart = std::chrono::steady_clock::now();
    for (unsigned int i = 0; i < 200; ++i)
        ASSERT_TRUE(writeEagerly(writer, makeBlock(8, i)));
    EXPECT_LT(std::chrono::steady_clock::now() - timeStart, std::chrono::seconds(1));
}

TEST_F(CImpShareMemoryTest, TwoWritersInTurnDoNotDelayEachOther) {
    COpenChannel first, second;
    ASSERT_TRUE(first.open(m_uiKey, WRITER, 8));
    ASSERT_TRUE(second.open(m_uiKey, WRITER, 8));
    CRawChannel raw(m_uiKey, 16);
    const auto timeStart = std::chrono::steady_clock::now();
    for (unsigned int i = 0; i < 100; ++i) {
        ASSERT_TRUE(waitUntil([&] { return first.canWrite() || second.canWrite(); }));
        sem_trywait(raw.m_pEvent); // as a reader would
        ASSERT_TRUE(writeEagerly(first.canWrite() ? first : second, makeBlock(8, i)));
    }
    EXPECT_LT(std::chrono::steady_clock::now() - timeStart, std::chrono::seconds(5));
}

// ---- Stopping

/** Where a thread waits when the stop comes. */
struct tagStopRow {
    const char* pWhere;
    CShareMemory::EModeType eMode;
    std::vector<int> vecValues; // of the semaphores: 0 for the one that it waits for
    bool bUnhandled;            // a message waits for the host
    std::vector<int> vecAfter;
    std::vector<int> vecLost;     // the same with every post lost
    unsigned int uiLostCount = 0; // readers that are still counted then
};

const tagStopRow STOP_ROWS[] = {
    {"reader at the event semaphore", READER, {1, 1, 0}, false, {1, 1, 0}, {1, 1, 0}},
    {"reader at the read semaphore", READER, {0, 1, 1}, false, {0, 1, 1}, {0, 1, 0}},
    {"reader at the write semaphore", READER, {1, 0, 1}, false, {1, 0, 1}, {0, 0, 0}, 1},
    {"reader at the host", READER, {1, 1, 1}, true, {1, 1, 1}, {0, 0, 0}},
    {"writer at the write semaphore", WRITER, {1, 0, 0}, false, {1, 1, 1}, {1, 0, 0}},
    {"writer at the host", WRITER, {1, 1, 0}, false, {1, 2, 1}, {1, 0, 0}},
};

/** A thread that stops goes no step further than it must. */
TEST_F(CImpShareMemoryTest, AReaderThatIsWokenToStopBeginsNoCycle) {
    CShareStandIn standIn;
    CRawChannel raw(m_uiKey, 16);
    COpenChannel reader;
    ASSERT_TRUE(reader.open(m_uiKey, READER, 8));
    std::this_thread::sleep_for(std::chrono::milliseconds(5)); // the step to its wait cannot be seen
    standIn.clear();
    reader.close();
    for (const std::string& strCall : standIn.getCalls())
        EXPECT_NE(strCall, "wait read");
    EXPECT_EQ(raw.getValues()[1], 1);
}

TEST_F(CImpShareMemoryTest, AReaderThatStopsTakesItselfOutOfTheCountOfASlowPeer) {
    COpenChannel reader;
    CBlockListener listener(reader);
    CRawChannel raw(m_uiKey, 16);
    ASSERT_TRUE(reader.open(m_uiKey, READER, 8));
    sem_post(raw.m_pEvent);
    ASSERT_TRUE(waitUntil([] { return CMessageCenter::getInstance()->getMessageCount() == 1; }));
    sem_wait(raw.m_pRead);
    std::thread slow([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(350)); // several looks at the stop flag
        sem_post(raw.m_pRead);
    });
    reader.close();
    slow.join();
    EXPECT_EQ(raw.getNumber(0), 0u);
    EXPECT_EQ(raw.getValues()[0], 1);
}

// Deliberate: what is interrupted waits again.
TEST_F(CImpShareMemoryTest, AWaitThatASignalInterruptsGoesOn) {
    COpenChannel reader;
    CBlockListener listener(reader);
    CRawChannel raw(m_uiKey, 16);
    struct sigaction action {};
    struct sigaction old {};
    action.sa_handler = [](int) {};
    sigaction(SIGUSR1, &action, &old);
    ASSERT_TRUE(reader.open(m_uiKey, READER, 8));
    ASSERT_TRUE(waitUntil([&] { return reader.getThreadID() != 0; }));
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    for (int i = 0; i < 20; ++i) {
        syscall(SYS_tgkill, getpid(), reader.getThreadID(), SIGUSR1);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    sem_post(raw.m_pEvent);
    EXPECT_TRUE(runUntil([&] { return listener.m_vecBlock.size() == 1; }));
    EXPECT_EQ(raw.getNumber(4), 0u);
    reader.close();
    sigaction(SIGUSR1, &old, nullptr);
}

TEST_F(CImpShareMemoryTest, StoppingNeverHangs) {
    for (const tagStopRow& row : STOP_ROWS) {
        for (const bool bLost : {false, true}) {
            SCOPED_TRACE(std::string(row.pWhere) + (bLost ? ", posts lost" : ""));
            CShareStandIn standIn;
            const unsigned int uiKey = makeKey();
            COpenChannel channel;
            CBlockListener listener(channel);
            CRawChannel raw(uiKey, 16);
            raw.setValues({row.vecValues[0], row.vecValues[1], 0});
            ASSERT_TRUE(channel.open(uiKey, row.eMode, 8));
            if (row.vecValues[2])
                sem_post(raw.m_pEvent);
            ASSERT_TRUE(waitUntil([&] { return raw.getValues()[2] == 0; }));
            CMessageCenter* const pCenter = CMessageCenter::getInstance();
            ASSERT_TRUE(waitUntil([&] { return pCenter->getMessageCount() == (row.bUnhandled ? 1u : 0u); }));
            const bool bReady = row.eMode == WRITER && row.vecValues[1];
            ASSERT_TRUE(waitUntil([&] { return channel.canWrite() == bReady; }));
            std::this_thread::sleep_for(std::chrono::milliseconds(5)); // the step to its wait cannot be seen
            channel.setCanWrite(false);                                // no block of leave
            standIn.m_bNoPost = bLost;
            channel.close();
            EXPECT_EQ(pCenter->getMessageCount(), row.bUnhandled ? 1u : 0u) << "a stop posts none";
            EXPECT_EQ(raw.getValues(), bLost ? row.vecLost : row.vecAfter);
            EXPECT_EQ(raw.getNumber(0), bLost ? row.uiLostCount : 0u);
            EXPECT_FALSE(channel.m_bRunning);
            pCenter->clearMessageList();
        }
    }
}
} // namespace
