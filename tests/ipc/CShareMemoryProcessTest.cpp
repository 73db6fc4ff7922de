#include "ipc/ShareFixture.h"
#include "support/ShareStandIn.h"

#include <initializer_list>
#include <poll.h>

using namespace Orlix;
using namespace OrlixTest;

namespace {

using CShareMemoryProcessTest = ShareMemoryTest;

constexpr CShareMemory::EModeType READER = CShareMemory::MODE_READER;
constexpr CShareMemory::EModeType WRITER = CShareMemory::MODE_WRITER;

constexpr int KILLED = 128 + SIGKILL;
constexpr int FAILED = 99;

/** A process that writes the blocks 1 to uiCount and closes. @return its exit code, 0 if all were taken. */
int writeBlocks(unsigned int uiKey, unsigned int uiSize, unsigned int uiCount) {
    COpenChannel writer;
    if (!writer.open(uiKey, WRITER, uiSize))
        return FAILED;
    for (unsigned int i = 1; i <= uiCount; ++i) {
        if (!writer.writeSoon(makeBlock(uiSize, i)))
            return FAILED;
    }
    if (!waitUntil([&] { return writer.canWrite(); }))
        return FAILED;
    writer.close();
    return 0;
}

/** Passes a block through a channel that this process opens at both ends. */
void expectItWorks(unsigned int uiKey, unsigned int uiSize) {
    COpenChannel writer, reader;
    CBlockListener listener(reader);
    ASSERT_TRUE(writer.open(uiKey, WRITER, uiSize));
    ASSERT_TRUE(reader.open(uiKey, READER, uiSize));
    const VecByte vecBlock = makeBlock(uiSize, 999);
    ASSERT_TRUE(passOn(writer, listener, vecBlock)) << "the writer or the reader is blocked";
}

/** Whether these are some of the blocks 1 to uiCount, each whole, in order: one that comes too soon behind another may
 *  replace it, and is then seen in both their places. */
bool areInOrder(const std::vector<VecByte>& vecSeen, unsigned int uiSize, unsigned int uiCount) {
    unsigned int uiNumber = 1;
    for (const VecByte& vecBlock : vecSeen) {
        while (uiNumber <= uiCount && vecBlock != makeBlock(uiSize, uiNumber))
            ++uiNumber;
    }
    return uiNumber <= uiCount;
}

TEST_F(CShareMemoryProcessTest, BlocksPassFromOneProcessToAnother) {
    const struct {
        unsigned int uiSize, uiCount;
        int iClosed; // the block of leave needs six bytes
    } aryRow[] = {{1, 20, 0}, {6, 50, 1}, {4096, 50, 1}, {64u << 20, 2, 1}};
    for (const auto& row : aryRow) {
        const unsigned int uiKey = makeKey();
        int aryReady[2]; // a block that is written before the reader is there goes to nobody
        ASSERT_EQ(pipe(aryReady), 0);
        CPeer peer([&] {
            char chReady;
            return read(aryReady[0], &chReady, 1) == 1 ? writeBlocks(uiKey, row.uiSize, row.uiCount) : FAILED;
        });
        COpenChannel reader;
        CBlockListener listener(reader);
        ASSERT_TRUE(reader.open(uiKey, READER, row.uiSize));
        const int iSegmentID = shmget(static_cast<key_t>(uiKey), 0, 0);
        ASSERT_EQ(::write(aryReady[1], "r", 1), 1);
        int iCode = -1;
        ASSERT_TRUE(runUntil([&] { return peer.hasEnded(iCode); }));
        EXPECT_EQ(iCode, 0);
        ASSERT_TRUE(runUntil([&] { return listener.m_iClosed == row.iClosed && !listener.m_vecBlock.empty(); }));
        EXPECT_TRUE(areInOrder(listener.m_vecBlock, row.uiSize, row.uiCount)) << row.uiSize;
        EXPECT_TRUE(CRawChannel::isThere(iSegmentID));
        reader.close();
        EXPECT_FALSE(CRawChannel::isThere(iSegmentID));
        close(aryReady[0]);
        close(aryReady[1]);
    }
}

/** What a reading process tells of each block. */
struct tagSeen {
    int iReader;
    unsigned int uiNumber;
};

/** A process that tells of each block through a pipe, until it is killed. */
int readAndTell(unsigned int uiKey, int iReader, int iPipe) {
    COpenChannel reader;
    CBlockListener listener(reader);
    listener.m_fnData = [&] {
        tagSeen seen{iReader, 0};
        std::memcpy(&seen.uiNumber, listener.m_vecBlock.back().data(), sizeof(seen.uiNumber));
        if (::write(iPipe, &seen, sizeof(seen)) != sizeof(seen))
            _exit(FAILED);
    };
    if (!reader.open(uiKey, READER, 8))
        return FAILED;
    const tagSeen ready{iReader, 0};
    if (::write(iPipe, &ready, sizeof(ready)) != sizeof(ready))
        return FAILED;
    while (true)
        runUntil([] { return false; });
}

TEST_F(CShareMemoryProcessTest, OfTwoReadersEachBlockReachesOne) {
    constexpr unsigned int BLOCKS = 100;
    int aryPipe[2];
    ASSERT_EQ(pipe(aryPipe), 0);
    CPeer first([&] { return readAndTell(m_uiKey, 0, aryPipe[1]); });
    CPeer second([&] { return readAndTell(m_uiKey, 1, aryPipe[1]); });
    tagSeen seen{};
    for (int i = 0; i < 2; ++i)
        ASSERT_EQ(read(aryPipe[0], &seen, sizeof(seen)), static_cast<ssize_t>(sizeof(seen)));
    COpenChannel writer;
    ASSERT_TRUE(writer.open(m_uiKey, WRITER, 8));
    unsigned int aryCount[2] = {0, 0};
    for (unsigned int i = 1; i <= BLOCKS; ++i) {
        VecByte vecBlock(8);
        std::memcpy(vecBlock.data(), &i, sizeof(i));
        do { // a reader that comes up too late for a block waits for the next, which is the same again
            ASSERT_TRUE(writer.writeSoon(vecBlock));
            pollfd wait{aryPipe[0], POLLIN, 0};
            if (poll(&wait, 1, 100) == 1) {
                ASSERT_EQ(read(aryPipe[0], &seen, sizeof(seen)), static_cast<ssize_t>(sizeof(seen)));
            }
        } while (seen.uiNumber < i);
        EXPECT_EQ(seen.uiNumber, i);
        ++aryCount[seen.iReader];
    }
    EXPECT_EQ(aryCount[0] + aryCount[1], BLOCKS);
    first.kill();
    second.kill();
    close(aryPipe[0]);
    close(aryPipe[1]);
}

// ---- Killed processes. Each call of the cycle is one at which the process kills itself: a wait when it has got the
// semaphore, a post before it gives it. What it was writing or reading is lost, and so may be the word of it: a block
// whose event was taken or not yet posted is told to nobody. The channel itself works after the next open.

/** Reads until it is killed, or has seen three blocks. */
int readUntilKilled(unsigned int uiKey, unsigned int uiSize, int iKillAt) {
    CShareStandIn standIn;
    standIn.m_iKillAt = iKillAt;
    COpenChannel reader;
    CBlockListener listener(reader);
    if (!reader.open(uiKey, READER, uiSize) || !runUntil([&] { return listener.m_vecBlock.size() == 3; }))
        return FAILED;
    reader.close();
    return 0;
}

/** Writes until it is killed, or has written three blocks. */
int writeUntilKilled(unsigned int uiKey, unsigned int uiSize, int iKillAt) {
    CShareStandIn standIn;
    standIn.m_iKillAt = iKillAt;
    return writeBlocks(uiKey, uiSize, 3);
}

/** Kills a reader at one of its calls while this process writes. @return its exit code. */
int killReader(unsigned int uiKey, unsigned int uiSize, int iKillAt) {
    CPeer peer([&] { return readUntilKilled(uiKey, uiSize, iKillAt); });
    COpenChannel writer;
    EXPECT_TRUE(writer.open(uiKey, WRITER, uiSize));
    int iCode = -1;
    const VecByte vecBlock = makeBlock(uiSize, 1);
    EXPECT_TRUE(waitUntil([&] {
        writer.writeData(vecBlock.data(), uiSize);
        return peer.hasEnded(iCode);
    }));
    return iCode;
}

/** Kills a writer at one of its calls while this process reads. @return its exit code. */
int killWriter(unsigned int uiKey, unsigned int uiSize, int iKillAt) {
    CPeer peer([&] { return writeUntilKilled(uiKey, uiSize, iKillAt); });
    COpenChannel reader;
    CBlockListener listener(reader);
    EXPECT_TRUE(reader.open(uiKey, READER, uiSize));
    int iCode = -1;
    EXPECT_TRUE(runUntil([&] { return peer.hasEnded(iCode); }));
    return iCode;
}

/** Kills at the first call, the second and so on, until the process does not live to see the call.
 *  @return how many calls there are. */
template <class F> int killAtEachCall(unsigned int uiSize, unsigned int (*fnMakeKey)(), const F& fnKill) {
    for (int i = 1; i < 100; ++i) {
        SCOPED_TRACE("killed at call " + std::to_string(i));
        const unsigned int uiKey = fnMakeKey();
        const int iCode = fnKill(uiKey, uiSize, i);
        expectItWorks(uiKey, uiSize);
        if (testing::Test::HasFailure())
            return -1;
        if (iCode == 0)
            return i;
        EXPECT_EQ(iCode, KILLED);
    }
    return -1;
}

TEST_F(CShareMemoryProcessTest, AReaderKilledAtAnyStepLeavesAChannelThatCanBeOpened) {
    EXPECT_GE(killAtEachCall(4096, makeKey, killReader), 5 + 7 * 3 + 1) << "the calls of an open and of three cycles";
}

TEST_F(CShareMemoryProcessTest, AWriterKilledAtAnyStepLeavesAChannelThatCanBeOpened) {
    EXPECT_GE(killAtEachCall(4096, makeKey, killWriter), 5 + 3 * 3 + 1) << "the calls of an open and of three cycles";
}

TEST_F(CShareMemoryProcessTest, ProcessesKilledWithAByteOrWithALotLeaveAChannelThatCanBeOpened) {
    for (const unsigned int uiSize : {1u, 64u << 20}) {
        const unsigned int uiKey = makeKey();
        const int CALL_HOLDING_WRITE = 8; // of a reader; with a call more, the read semaphore is free again
        EXPECT_EQ(killReader(uiKey, uiSize, CALL_HOLDING_WRITE), KILLED);
        expectItWorks(uiKey, uiSize);
        EXPECT_EQ(killWriter(uiKey, uiSize, 6), KILLED);
        expectItWorks(uiKey, uiSize);
    }
}

// ---- The janitor

bool existsSemaphore(int iSegmentID) {
    return access(("/dev/shm/sem.super_read_" + std::to_string(iSegmentID)).c_str(), F_OK) == 0;
}

TEST_F(CShareMemoryProcessTest, ATestThatIsKilledLeavesNothing) {
    int aryPipe[2];
    ASSERT_EQ(pipe(aryPipe), 0);
    CPeer test([&] {
        const CShareJanitor janitor;
        COpenChannel reader, writer;
        reader.open(m_uiKey, READER, 8);
        writer.open(m_uiKey, WRITER, 8);
        const int iSegmentID = shmget(static_cast<key_t>(m_uiKey), 0, 0);
        if (::write(aryPipe[1], &iSegmentID, sizeof(iSegmentID)) != sizeof(iSegmentID))
            return FAILED;
        raise(SIGKILL);
        return 0;
    });
    int iSegmentID = -1;
    ASSERT_EQ(read(aryPipe[0], &iSegmentID, sizeof(iSegmentID)), static_cast<ssize_t>(sizeof(iSegmentID)));
    EXPECT_EQ(test.waitForEnd(), KILLED);
    EXPECT_TRUE(waitUntil([&] { return !CRawChannel::isThere(iSegmentID) && !existsSemaphore(iSegmentID); }));
    close(aryPipe[0]);
    close(aryPipe[1]);
}
} // namespace
