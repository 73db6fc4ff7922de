#include "ipc/ShareFixture.h"
#include "support/ShareStandIn.h"

#include <climits>
#include <functional>
#include <sys/stat.h>
#include <type_traits>
#include <utility>

using namespace Orlix;
using namespace OrlixTest;

namespace {

using CShareMemoryTest = ShareMemoryTest;

static_assert(std::is_base_of<CObject, CShareMemory>::value && std::is_base_of<CThread, CShareMemory>::value, "bases");
static_assert(CShareMemory::MODE_READER == 0 && CShareMemory::MODE_WRITER == 1, "other layers pass numbers");

constexpr CShareMemory::EModeType READER = CShareMemory::MODE_READER;
constexpr CShareMemory::EModeType WRITER = CShareMemory::MODE_WRITER;

bool write(CShareMemory& channel, const VecByte& vecBlock) {
    return channel.writeData(vecBlock.data(), static_cast<unsigned int>(vecBlock.size()));
}

void passBlock(COpenChannel& writer, CBlockListener& listener, const VecByte& vecBlock) {
    ASSERT_TRUE(passOn(writer, listener, vecBlock));
}

TEST_F(CShareMemoryTest, IsAClosedReaderAtFirst) {
    COpenChannel channel;
    unsigned char ucByte = 7;
    EXPECT_EQ(channel.m_pListener, nullptr);
    EXPECT_EQ(channel.m_eMode, READER);
    EXPECT_EQ(channel.m_pSegment, nullptr);
    EXPECT_EQ(channel.m_uiSegmentSize, 0u);
    EXPECT_FALSE(channel.m_bCanWrite);
    EXPECT_NE(channel.m_pImp, nullptr);
    EXPECT_EQ(channel.getSize(), 0u);
    EXPECT_TRUE(channel.isEmpty());
    EXPECT_FALSE(channel.writeData(&ucByte, 1));
    EXPECT_FALSE(channel.readData(&ucByte, 1));
    EXPECT_EQ(ucByte, 7);
    EXPECT_EQ(channel.readerCountChange(true), 0u);
    EXPECT_EQ(channel.readerCountChange(false), 0u);
    channel.prepareStopThread();
    channel.handleShareMemoryMessage();
    channel.close();
}

TEST_F(CShareMemoryTest, BlocksOfEverySizePassWhole) {
    const unsigned int SIZE = 4096;
    COpenChannel writer, reader;
    CBlockListener listener(reader);
    ASSERT_TRUE(writer.open(m_uiKey, WRITER, SIZE));
    ASSERT_TRUE(reader.open(m_uiKey, READER, SIZE));
    EXPECT_EQ(reader.m_uiSegmentSize, SIZE + 8);
    for (const unsigned int uiSize : {1u, 5u, 6u, 7u, 0u, 4095u, SIZE})
        passBlock(writer, listener, makeBlock(uiSize, uiSize));
    EXPECT_EQ(listener.m_iClosed, 0);
}

TEST_F(CShareMemoryTest, OnlyTheExactExitBlockTellsOfTheEnd) {
    COpenChannel writer, reader;
    CBlockListener listener(reader);
    ASSERT_TRUE(writer.open(m_uiKey, WRITER, 16));
    ASSERT_TRUE(reader.open(m_uiKey, READER, 16));
    for (const char* const pData : {"#exit#x", "#exit", "#Exit#", "#exit\n", "exit##"})
        passBlock(writer, listener, toBytes(pData));
    EXPECT_EQ(listener.m_iClosed, 0);
    ASSERT_TRUE(writer.writeSoon(toBytes("#exit#"))); // written as a block it counts the same
    EXPECT_TRUE(runUntil([&] { return listener.m_iClosed == 1; }));
    EXPECT_EQ(listener.m_vecBlock.back(), toBytes("exit##"));
}

TEST_F(CShareMemoryTest, CloseTellsAReaderOnce) {
    COpenChannel writer, reader;
    CBlockListener listener(reader);
    ASSERT_TRUE(writer.open(m_uiKey, WRITER, 6));
    ASSERT_TRUE(reader.open(m_uiKey, READER, 6));
    passBlock(writer, listener, toBytes("abc"));
    ASSERT_TRUE(waitUntil([&] { return writer.canWrite(); }));
    writer.close();
    EXPECT_TRUE(runUntil([&] { return listener.m_iClosed == 1; }));
    reader.close();
    EXPECT_EQ(CMessageCenter::getInstance()->getMessageCount(), 0u);
    EXPECT_EQ(listener.m_iClosed, 1);
    EXPECT_EQ(listener.m_vecBlock.back(), toBytes("abc"));
}

TEST_F(CShareMemoryTest, EachCloseTellsAReaderOnce) {
    constexpr int WRITERS = 200;
    COpenChannel reader;
    CBlockListener listener(reader);
    ASSERT_TRUE(reader.open(m_uiKey, READER, 6));
    for (int i = 1; i <= WRITERS; ++i) {
        COpenChannel writer;
        ASSERT_TRUE(writer.open(m_uiKey, WRITER, 6));
        ASSERT_TRUE(waitUntil([&] { return writer.canWrite(); }));
        std::thread host([&] { writer.close(); }); // so that the reader answers meanwhile, as another process does
        EXPECT_TRUE(runUntil([&] { return listener.m_iClosed >= i; }));
        host.join();
        ASSERT_EQ(listener.m_iClosed, i);
    }
    EXPECT_TRUE(listener.m_vecBlock.empty());
}

// Without its block of leave a writer that ends still wakes a reader, as the end of each round does: on purpose.
TEST_F(CShareMemoryTest, AWriterThatCannotTakeItsLeaveShowsTheLastBlockAgain) {
    COpenChannel writer, reader;
    CBlockListener listener(reader);
    ASSERT_TRUE(writer.open(m_uiKey, WRITER, 5));
    ASSERT_TRUE(reader.open(m_uiKey, READER, 5));
    passBlock(writer, listener, toBytes("12345"));
    ASSERT_TRUE(waitUntil([&] { return writer.canWrite(); }));
    listener.m_vecBlock.clear();
    writer.close();
    ASSERT_TRUE(runUntil([&] { return !listener.m_vecBlock.empty(); }));
    EXPECT_EQ(listener.m_vecBlock[0], toBytes("12345"));
    EXPECT_EQ(listener.m_iClosed, 0);
}

TEST_F(CShareMemoryTest, ASentinelThatCannotGoOutIsLost) {
    const struct {
        const char* pWhy;
        unsigned int uiSize;
        bool bBusy;
        bool bWritten;
    } aryRow[] = {{"fits", 6, false, true}, {"too large", 5, false, false}, {"busy", 6, true, false}};
    for (const auto& row : aryRow) {
        const unsigned int uiKey = makeKey();
        COpenChannel writer;
        ASSERT_TRUE(writer.open(uiKey, WRITER, row.uiSize)) << row.pWhy;
        ASSERT_TRUE(waitUntil([&] { return writer.canWrite(); }));
        CRawChannel raw(uiKey, row.uiSize + 8);
        if (row.bBusy)
            writer.m_bCanWrite = false;
        writer.close();
        EXPECT_EQ(raw.getNumber(4), row.bWritten ? 6u : 0u) << row.pWhy;
    }
}

TEST_F(CShareMemoryTest, AWriteReplacesTheWholeBlock) {
    COpenChannel writer;
    ASSERT_TRUE(writer.open(m_uiKey, WRITER, 8));
    CRawChannel raw(m_uiKey, 16);
    raw.setNumber(0, 0x01020304);
    const struct {
        const char* pBlock; // null for no data
        unsigned int uiSize;
        std::string strSegment;
    } aryRow[] = {{"12345678", 8,
                   std::string("\4\3\2\1\x8\0\0\0"
                               "12345678",
                               16)},
                  {"abc", 3, std::string("\4\3\2\1\3\0\0\0abc\0\0\0\0\0", 16)},
                  {"1234567", 7,
                   std::string("\4\3\2\1\7\0\0\0"
                               "1234567\0",
                               16)},
                  {"", 0, std::string("\4\3\2\1\0\0\0\0\0\0\0\0\0\0\0\0", 16)},
                  {"12345678", 8,
                   std::string("\4\3\2\1\x8\0\0\0"
                               "12345678",
                               16)},
                  {nullptr, 8, std::string("\4\3\2\1\x8\0\0\0\0\0\0\0\0\0\0\0", 16)}};
    for (const auto& row : aryRow) {
        const unsigned char* const pBlock = reinterpret_cast<const unsigned char*>(row.pBlock);
        ASSERT_TRUE(waitUntil([&] { return writer.writeData(pBlock, row.uiSize); }));
        EXPECT_EQ(VecByte(raw.m_pSegment, raw.m_pSegment + 16), toBytes(row.strSegment));
        EXPECT_EQ(writer.getSize(), row.uiSize);
        EXPECT_EQ(writer.isEmpty(), row.uiSize == 0);
    }
}

// Deliberate: whether a block fits is the caller's to see to. The rest of the page takes what is too much here.
TEST_F(CShareMemoryTest, AWriteDoesNotCompareItsSize) {
    COpenChannel writer;
    ASSERT_TRUE(writer.open(m_uiKey, WRITER, 4));
    CRawChannel raw(m_uiKey, 12);
    const VecByte vecBlock = makeBlock(100, 1);
    ASSERT_TRUE(writer.writeSoon(vecBlock));
    EXPECT_EQ(raw.getNumber(4), 100u);
    EXPECT_EQ(VecByte(raw.m_pSegment + 8, raw.m_pSegment + 108), vecBlock);
    EXPECT_EQ(writer.getSize(), 4u) << "what the segment holds";
}

TEST_F(CShareMemoryTest, ReadDataIsTrueWheneverItRuns) {
    COpenChannel writer;
    ASSERT_TRUE(writer.open(m_uiKey, WRITER, 8));
    ASSERT_TRUE(writer.writeSoon(toBytes("12345678")));
    const struct {
        unsigned int uiSize;
        bool bResult;
        const char* pRead;
    } aryRow[] = {{0, false, "........."},     {1, true, "1........"}, {7, true, "1234567.."},
                  {8, true, "12345678."},      {9, true, "........."}, {UINT_MAX, true, "........."},
                  {INT_MAX, true, "........."}};
    for (const auto& row : aryRow) {
        VecByte vecRead = toBytes(".........");
        EXPECT_EQ(writer.readData(vecRead.data(), row.uiSize), row.bResult) << row.uiSize;
        EXPECT_EQ(vecRead, toBytes(row.pRead)) << row.uiSize;
    }
    EXPECT_TRUE(writer.readData(nullptr, 8));
    writer.close();
    unsigned char ucByte = 0;
    EXPECT_FALSE(writer.readData(&ucByte, 1));
}

TEST_F(CShareMemoryTest, TheBlockStaysAsItIsUntilTheListenerReturns) {
    COpenChannel writer, reader;
    CBlockListener listener(reader);
    ASSERT_TRUE(writer.open(m_uiKey, WRITER, 8));
    ASSERT_TRUE(reader.open(m_uiKey, READER, 8));
    bool bTaken = true;
    listener.m_fnData = [&] { bTaken = write(writer, toBytes("later")); };
    passBlock(writer, listener, toBytes("first"));
    EXPECT_FALSE(bTaken);
    listener.m_fnData = nullptr;
    EXPECT_TRUE(writer.writeSoon(toBytes("later")));
}

TEST_F(CShareMemoryTest, AReaderWithoutAListenerBlocksTheWriterUntilItCloses) {
    COpenChannel writer, reader;
    ASSERT_TRUE(writer.open(m_uiKey, WRITER, 8));
    ASSERT_TRUE(reader.open(m_uiKey, READER, 8));
    ASSERT_TRUE(writer.writeSoon(toBytes("first")));
    CMessageCenter* const pCenter = CMessageCenter::getInstance();
    ASSERT_TRUE(waitUntil([&] { return pCenter->getMessageCount() == 1; }));
    EXPECT_TRUE(handleNext());
    CRawChannel raw(m_uiKey, 16);
    EXPECT_EQ(raw.getNumber(0), 1u);
    EXPECT_EQ(CRawChannel::getValue(raw.m_pWrite), 0);
    EXPECT_FALSE(writer.canWrite());
    reader.close();
    EXPECT_EQ(raw.getNumber(0), 0u);
    EXPECT_TRUE(writer.writeSoon(toBytes("second")));
}

TEST_F(CShareMemoryTest, AMessageReachesNobodyOnceTheStopIsAskedForOrTheModeIsNotReader) {
    COpenChannel writer;
    CBlockListener listener(writer);
    ASSERT_TRUE(writer.open(m_uiKey, WRITER, 8));
    writer.handleShareMemoryMessage();
    EXPECT_TRUE(listener.m_vecBlock.empty());
    writer.close();
    COpenChannel reader;
    CBlockListener second(reader);
    ASSERT_TRUE(reader.open(m_uiKey, READER, 8));
    reader.handleShareMemoryMessage();
    EXPECT_EQ(second.m_vecBlock.size(), 1u);
    reader.stopThread(); // as in a stop: the flag is set
    reader.handleShareMemoryMessage();
    EXPECT_EQ(second.m_vecBlock.size(), 1u);
    reader.m_pImp->close();
}

TEST_F(CShareMemoryTest, TheListenerMayCloseTheChannel) {
    COpenChannel writer, reader;
    CBlockListener listener(reader);
    ASSERT_TRUE(writer.open(m_uiKey, WRITER, 8));
    ASSERT_TRUE(reader.open(m_uiKey, READER, 8));
    listener.m_fnData = [&] { reader.close(); };
    passBlock(writer, listener, toBytes("only"));
    EXPECT_EQ(reader.getSize(), 0u);
    EXPECT_TRUE(writer.writeSoon(toBytes("next")));
}

/** A reader that holds its first block until the host has handled it. */
void expectHeld(COpenChannel& writer, COpenChannel& reader, unsigned int uiKey) {
    CRawChannel raw(uiKey, 16);
    ASSERT_TRUE(writer.writeSoon(toBytes("block")));
    ASSERT_TRUE(waitUntil([&] { return CMessageCenter::getInstance()->getMessageCount() == 1; }));
    std::this_thread::sleep_for(std::chrono::milliseconds(20)); // in which a reader that does not wait has gone on
    EXPECT_EQ(raw.getNumber(0), 1u);
    EXPECT_FALSE(writer.canWrite());
    EXPECT_TRUE(runUntil([&] { return raw.getNumber(0) == 0; }));
    EXPECT_TRUE(reader.m_bRunning);
}

TEST_F(CShareMemoryTest, AReopenedReaderForgetsTheMessageThatWaited) {
    COpenChannel writer, reader;
    CBlockListener listener(reader);
    ASSERT_TRUE(writer.open(m_uiKey, WRITER, 8));
    ASSERT_TRUE(reader.open(m_uiKey, READER, 8));
    CMessageCenter* const pCenter = CMessageCenter::getInstance();
    ASSERT_TRUE(writer.writeSoon(toBytes("lost")));
    ASSERT_TRUE(waitUntil([&] { return pCenter->getMessageCount() == 1; }));
    reader.close();
    EXPECT_EQ(pCenter->getMessageCount(), 1u);
    ASSERT_TRUE(reader.open(m_uiKey, READER, 8));
    EXPECT_EQ(pCenter->getMessageCount(), 0u);
    for (int i = 0; i < 2; ++i)
        expectHeld(writer, reader, m_uiKey);
}

// The answer of the call that goes on belongs to the run before. It must not end the cycle of a new message.
TEST_F(CShareMemoryTest, AListenerMayCloseAndOpenTheChannel) {
    COpenChannel writer, reader;
    CBlockListener listener(reader);
    ASSERT_TRUE(writer.open(m_uiKey, WRITER, 8));
    ASSERT_TRUE(reader.open(m_uiKey, READER, 8));
    CRawChannel raw(m_uiKey, 16);
    bool bDone = false;
    listener.m_fnData = [&] {
        if (std::exchange(bDone, true))
            return;
        reader.close();
        reader.open(m_uiKey, READER, 8);
        EXPECT_TRUE(writer.writeSoon(toBytes("during")));
        EXPECT_TRUE(waitUntil([] { return CMessageCenter::getInstance()->getMessageCount() == 1; }));
    };
    passBlock(writer, listener, toBytes("first"));
    std::this_thread::sleep_for(std::chrono::milliseconds(20)); // in which a reader that does not wait has gone on
    EXPECT_EQ(raw.getNumber(0), 1u);
    EXPECT_TRUE(runUntil([&] { return raw.getNumber(0) == 0; }));
    EXPECT_EQ(listener.m_vecBlock.back(), toBytes("during"));
    expectHeld(writer, reader, m_uiKey);
}

/** A channel that is not at work yet. */
class CLazyChannel : public COpenChannel {
public:
    ~CLazyChannel() override { close(); }
    void run() override {
        waitUntil([this] { return isPrepareStopThread(); });
    }
};

TEST_F(CShareMemoryTest, NothingCanBeWrittenBeforeTheThreadHasComeUp) {
    CLazyChannel writer;
    writer.m_bCanWrite = true; // of an earlier run
    ASSERT_TRUE(writer.open(m_uiKey, WRITER, 8));
    EXPECT_FALSE(write(writer, toBytes("x")));
}

TEST_F(CShareMemoryTest, AWriteLeavesNoRoomForTheNextUntilTheThreadMakesSome) {
    CLazyChannel writer;
    ASSERT_TRUE(writer.open(m_uiKey, WRITER, 8));
    writer.m_bCanWrite = true;
    EXPECT_TRUE(write(writer, toBytes("x")));
    EXPECT_FALSE(writer.canWrite());
    EXPECT_FALSE(write(writer, toBytes("y")));
    EXPECT_EQ(writer.getSize(), 1u);
    EXPECT_EQ(writer.m_pSegment[8], 'x');
}

TEST_F(CShareMemoryTest, AThreadThatIsToStopBeginsNoRound) {
    for (const CShareMemory::EModeType eMode : {WRITER, READER}) {
        COpenChannel channel;
        ASSERT_TRUE(channel.open(m_uiKey, eMode, 8));
        channel.close();
        ASSERT_TRUE(channel.isPrepareStopThread()) << "the flag of a run stays after it";
        channel.m_pImp->run(); // a round would look at semaphores that are closed
        EXPECT_FALSE(channel.m_bCanWrite);
    }
}

// An open that fails on an open channel leaves it at work with what it has.
TEST_F(CShareMemoryTest, AnOpenThatFailsLeavesARunningChannelAsItWas) {
    const char* const aryFailure[] = {"shmget", "shmat", "sem_open"};
    for (const std::string strFailure : aryFailure) {
        SCOPED_TRACE(strFailure);
        CShareStandIn standIn;
        const unsigned int uiKey = makeKey();
        const unsigned int uiOtherKey = makeKey();
        const CRawChannel other(uiOtherKey, 4096);
        const std::string strFolder = "/dev/shm/sem.super_event_" + std::to_string(other.m_iSegmentID);
        COpenChannel writer, reader;
        CBlockListener listener(reader);
        ASSERT_TRUE(writer.open(uiKey, WRITER, 8));
        ASSERT_TRUE(reader.open(uiKey, READER, 8));
        passBlock(writer, listener, toBytes("before"));
        ASSERT_TRUE(waitUntil([&] { return writer.canWrite(); }));
        standIn.m_bNoAttach = strFailure == "shmat";
        if (strFailure == "sem_open") {
            unlink(strFolder.c_str());
            ASSERT_EQ(mkdir(strFolder.c_str(), 0700), 0);
        }
        EXPECT_FALSE(writer.open(strFailure == "shmget" ? uiKey : uiOtherKey, READER, 64));
        EXPECT_FALSE(reader.open(strFailure == "shmget" ? uiKey : uiOtherKey, WRITER, 64));
        rmdir(strFolder.c_str());
        standIn.m_bNoAttach = false;
        EXPECT_TRUE(CRawChannel::isThere(other.m_iSegmentID));
        EXPECT_EQ(writer.m_uiSegmentSize, 16u);
        EXPECT_EQ(writer.m_eMode, WRITER);
        EXPECT_EQ(reader.m_eMode, READER);
        passBlock(writer, listener, toBytes("after"));
    }
}

TEST_F(CShareMemoryTest, ASecondOpenKeepsWhatTheRunningThreadIsToldOf) {
    COpenChannel writer;
    ASSERT_TRUE(writer.open(m_uiKey, WRITER, 8));
    ASSERT_TRUE(waitUntil([&] { return writer.canWrite(); }));
    const unsigned char* const pFirst = writer.m_pSegment;
    ASSERT_TRUE(writer.open(m_uiKey, WRITER, 8));
    EXPECT_TRUE(writer.canWrite());
    EXPECT_TRUE(write(writer, toBytes("x")));
    shmdt(pFirst);
}

TEST_F(CShareMemoryTest, AChannelOfNoBytesTakesEmptyBlocks) {
    COpenChannel writer, reader;
    CBlockListener listener(reader);
    ASSERT_TRUE(writer.open(m_uiKey, WRITER, 0));
    ASSERT_TRUE(reader.open(m_uiKey, READER, 0));
    passBlock(writer, listener, {});
    EXPECT_TRUE(reader.isEmpty());
}

TEST_F(CShareMemoryTest, WithoutAPlatformObjectItStaysClosed) {
    COpenChannel channel;
    delete channel.m_pImp;
    channel.m_pImp = nullptr;
    EXPECT_FALSE(channel.open(m_uiKey, READER, 8));
    channel.prepareStopThread();
    channel.close();
    EXPECT_EQ(channel.getSize(), 0u);
}

// What an earlier run left announced must not end the first cycle of the next: its block would be free to be replaced.
TEST_F(CShareMemoryTest, AReaderThatIsOpenedAgainKeepsItsFirstBlockToo) {
    COpenChannel writer, reader;
    CBlockListener listener(reader);
    ASSERT_TRUE(reader.open(m_uiKey, READER, 8));
    reader.close();
    reader.m_waitRead.notify();
    ASSERT_TRUE(writer.open(m_uiKey, WRITER, 8));
    ASSERT_TRUE(reader.open(m_uiKey, READER, 8));
    expectHeld(writer, reader, m_uiKey);
}

TEST_F(CShareMemoryTest, AWriterThatIsOpenedAgainTellsOfNothing) {
    COpenChannel writer;
    writer.m_waitWrite.notify(); // of an earlier run
    ASSERT_TRUE(writer.open(m_uiKey, WRITER, 8));
    CRawChannel raw(m_uiKey, 16);
    ASSERT_TRUE(waitUntil([&] { return writer.canWrite(); }));
    std::this_thread::sleep_for(std::chrono::milliseconds(20)); // in which a writer that does not wait has gone on
    EXPECT_EQ(raw.getValues(), (std::vector<int>{1, 0, 0}));
}

TEST_F(CShareMemoryTest, AWriterThatIsOpenedAgainStartsUnready) {
    COpenChannel writer;
    ASSERT_TRUE(writer.open(m_uiKey, WRITER, 8));
    ASSERT_TRUE(waitUntil([&] { return writer.canWrite(); }));
    writer.close();
    EXPECT_FALSE(write(writer, toBytes("x"))) << "closed";
    CRawChannel raw(m_uiKey, 16); // with this one attached, the semaphore is left as it is
    raw.setValues({1, 0, 0});
    ASSERT_TRUE(writer.open(m_uiKey, WRITER, 8));
    EXPECT_FALSE(write(writer, toBytes("x")));
    sem_post(raw.m_pWrite);
    EXPECT_TRUE(writer.writeSoon(toBytes("x")));
}

TEST_F(CShareMemoryTest, WaitingMessagesGoWithTheirChannel) {
    COpenChannel writer;
    ASSERT_TRUE(writer.open(m_uiKey, WRITER, 8));
    CMessageCenter* const pCenter = CMessageCenter::getInstance();
    {
        COpenChannel reader;
        CBlockListener listener(reader);
        ASSERT_TRUE(reader.open(m_uiKey, READER, 8));
        ASSERT_TRUE(writer.writeSoon(toBytes("first")));
        ASSERT_TRUE(waitUntil([&] { return pCenter->getMessageCount() == 1; }));
        pCenter->pushDataContextMessage(reader.getID(), nullptr); // another type with the same ID
        EXPECT_EQ(reader.getID(), static_cast<unsigned int>(reinterpret_cast<std::size_t>(&reader)));
    }
    EXPECT_EQ(pCenter->getMessageCountByType(CBaseMessage::MESSAGE_SHARE_MEMORY), 0u);
    EXPECT_EQ(pCenter->getMessageCount(), 1u);
}

TEST_F(CShareMemoryTest, TheThreadIsNamedAndPrioritisedByTheConfiguration) {
    const CTempFolder temp;
    writeWhole(temp / "engine.xml",
               "<engine><thread_set><thread id=\"sm\" name=\"share\" priority=\"7\"/></thread_set></engine>");
    ASSERT_TRUE(CConfigParser::getInstance()->load(toText(temp / "engine.xml")));
    COpenChannel channel;
    EXPECT_STREQ(channel.getThreadName().getBuffer(), L"Unknown");
    ASSERT_TRUE(channel.open(m_uiKey, READER, 8));
    EXPECT_STREQ(channel.getThreadName().getBuffer(), L"share");
    EXPECT_EQ(channel.getThreadPriority(), 7);
}

TEST_F(CShareMemoryTest, TheCountChangesByOneAndWraps) {
    COpenChannel channel;
    ASSERT_TRUE(channel.open(m_uiKey, READER, 8));
    EXPECT_EQ(channel.readerCountChange(true), 1u);
    EXPECT_EQ(channel.readerCountChange(true), 2u);
    EXPECT_EQ(channel.readerCountChange(false), 1u);
    EXPECT_EQ(channel.readerCountChange(false), 0u);
    EXPECT_EQ(channel.readerCountChange(false), UINT_MAX);
    EXPECT_EQ(channel.readerCountChange(true), 0u);
}

// Deliberate: open does not look whether the channel is open. It goes on with the segment it is given.
TEST_F(CShareMemoryTest, OpenDoesNotLookWhetherItIsOpen) {
    COpenChannel writer;
    ASSERT_TRUE(writer.open(m_uiKey, WRITER, 8));
    ASSERT_TRUE(waitUntil([&] { return writer.canWrite(); }));
    const unsigned char* const pFirst = writer.m_pSegment;
    EXPECT_TRUE(writer.open(m_uiKey, WRITER, 8));
    EXPECT_NE(writer.m_pSegment, pFirst);
    shmdt(pFirst);
}

/** A segment that others have written to, and what a reader of eight bytes makes of it. */
TEST_F(CShareMemoryTest, AHostileHeadIsNotBelieved) {
    const struct {
        unsigned int uiCount, uiLength, uiSize;
        unsigned int uiSeen;
    } aryRow[] = {{0, 0xFFFFFFFF, 8, 8}, {0, 9, 8, 8},  {0, 8, 8, 8},          {0xFFFFFFFF, 3, 8, 3},
                  {0x80000000, 6, 8, 6}, {77, 7, 8, 7}, {0, 0x80000000, 8, 8}, {0, 6, 5, 5}};
    for (const auto& row : aryRow) {
        const unsigned int uiKey = makeKey();
        CRawChannel raw(uiKey, row.uiSize + 8);
        COpenChannel reader;
        CBlockListener listener(reader);
        ASSERT_TRUE(reader.open(uiKey, READER, row.uiSize));
        raw.setNumber(0, row.uiCount);
        raw.setNumber(4, row.uiLength);
        std::memcpy(raw.m_pSegment + 8, "#exit?#!", row.uiSize);
        EXPECT_EQ(reader.getSize(), row.uiSeen);
        sem_post(raw.m_pEvent);
        ASSERT_TRUE(runUntil([&] { return listener.m_vecBlock.size() == 1; })) << row.uiLength;
        EXPECT_EQ(listener.m_vecBlock[0], toBytes(std::string("#exit?#!").substr(0, row.uiSeen)));
        EXPECT_EQ(listener.m_iClosed, 0);
        reader.close();
        EXPECT_EQ(raw.getNumber(0), row.uiCount) << "counted in and out again";
    }
}

TEST_F(CShareMemoryTest, AnExitBlockThatTheSegmentCannotHoldIsData) {
    CRawChannel raw(m_uiKey, 14); // five bytes are given to open, though six are there
    COpenChannel reader;
    CBlockListener listener(reader);
    ASSERT_TRUE(reader.open(m_uiKey, READER, 5));
    raw.setNumber(4, 6);
    std::memcpy(raw.m_pSegment + 8, "#exit#", 6);
    sem_post(raw.m_pEvent);
    ASSERT_TRUE(runUntil([&] { return listener.m_vecBlock.size() == 1; }));
    EXPECT_EQ(listener.m_vecBlock[0], toBytes("#exit"));
}
} // namespace
