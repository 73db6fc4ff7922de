#include "ipc/DataTransferFixture.h"

#include "support/ChildProcess.h"
#include "support/MemoryLimit.h"
#include "support/Sanitizer.h"

#include <algorithm>
#include <ctime>
#include <fstream>

using namespace Orlix;
using namespace OrlixTest;

// Frames that are far larger than what arrives at once. A sanitizer's heap copies a block that grows, and keeps freed
// ones: figures say nothing there, so only the content is compared.

namespace {

constexpr unsigned int MIB = 1 << 20;
constexpr unsigned int CHUNK = 65536;

class CDataTransferLarge : public CDataTransferFixture {
protected:
    COpenTransfer m_transfer{&m_listener};
    const std::string m_strChunk = std::string(CHUNK, 'c');

    /** Sends the first chunks of a payload that has begun. */
    void feedChunks(unsigned int uiBytes) {
        for (; uiBytes != 0; uiBytes -= CHUNK)
            m_transfer.feed(m_strChunk);
    }
};

TEST_F(CDataTransferLarge, BlockOfALargeFrameIsGivenBackAndASmallerOneKept) {
    const struct {
        unsigned int uiBytes;
        bool bKept;
    } aryRow[] = {{MIB, true}, {2 * MIB, false}, {3 * MIB, false}};
    for (const auto& row : aryRow) {
        m_transfer.m_bufReceive.clear();
        m_transfer.feed(headerOf(row.uiBytes, 0));
        feedChunks(row.uiBytes);
        EXPECT_EQ(m_transfer.m_bufReceive.getSize(), 0u);
        EXPECT_EQ(m_transfer.m_bufReceive.getCapacity() != 0, row.bKept) << row.uiBytes;
    }
    drain();
    ASSERT_EQ(m_listener.m_vecCall.size(), 3u);
    EXPECT_TRUE(m_listener.m_vecCall[2] == "data " + std::string(3 * MIB, 'c'));
}

TEST_F(CDataTransferLarge, WhatIsHeldBehindALargeFrameStays) {
    m_transfer.feed(headerOf(3 * MIB, 0));
    feedChunks(3 * MIB - CHUNK);
    m_transfer.feed(m_strChunk + "IVEN");
    EXPECT_EQ(m_transfer.getHeld(), "IVEN");
}

// A buffer grows no further than its sizes reach; that it holds that much is only claimed here.
TEST_F(CDataTransferLarge, ChunkThatPassesTheLargestSizeDiscardsWhatIsHeld) {
    std::string strBlock = headerOf(UINT_MAX, 0);
    CByteBuffer& buffer = m_transfer.m_bufReceive;
    buffer.attachBuffer(reinterpret_cast<unsigned char*>(strBlock.data()), UINT_MAX, UINT_MAX - 5, false);
    buffer.setPosition(UINT_MAX - 5);
    m_transfer.feed("123456");
    EXPECT_EQ(buffer.getSize(), 0u);
    EXPECT_EQ(m_recorder.getLines().size(), 1u) << "the buffer reports it";
}

#if defined(ORLIX_TEST_ASAN) || defined(ORLIX_TEST_TSAN)
TEST_F(CDataTransferLarge, FrameOfManyChunksArrivesWhole) {
    m_transfer.feed(headerOf(MIB, 0));
    feedChunks(MIB);
    drain();
    ASSERT_EQ(m_listener.m_vecCall.size(), 1u);
    EXPECT_TRUE(m_listener.m_vecCall[0] == "data " + std::string(MIB, 'c'));
}
#else
double getThreadSeconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/** Takes the block and looks no further. */
class CCountingListener : public IDataTransferListener {
public:
    using IDataTransferListener::onLogicDataAvailable;
    void onLogicDataAvailable(CArrayPtr<unsigned char> aryData) override { m_uiBytes += aryData.getSize(); }
    unsigned int m_uiBytes = 0;
};

TEST_F(CDataTransferLarge, TimeGrowsAsTheSizeDoes) {
    constexpr int ROUNDS = 7;
    CCountingListener counter;
    m_transfer.setListener(&counter);
    const auto measure = [&](unsigned int uiBytes) {
        double dBest = 1e9;
        for (int i = 0; i < ROUNDS; ++i) { // the least of them is the one that was disturbed least
            const double dStart = getThreadSeconds();
            m_transfer.feed(headerOf(uiBytes, 0));
            feedChunks(uiBytes);
            dBest = std::min(dBest, getThreadSeconds() - dStart);
            drain();
        }
        return dBest;
    };
    const double dSmall = measure(10 * MIB), dLarge = measure(100 * MIB);
    EXPECT_EQ(counter.m_uiBytes, ROUNDS * 110 * MIB);

    // Ten times the bytes. The larger frame leaves the caches, which made it up to 13 times on a busy machine.
    EXPECT_LT(dLarge, 16 * dSmall) << "copied at each growth it would be a hundred";
}

/** A line of the process's state, in bytes. */
unsigned long readMemory(const std::string& strName) {
    std::ifstream file("/proc/self/status");
    std::string strLine;
    while (std::getline(file, strLine) && strLine.compare(0, strName.size(), strName) != 0) {}
    return std::stoul(strLine.substr(strName.size())) * 1024;
}

TEST_F(CDataTransferLarge, MemoryStaysBelowWhatHasArrivedAndTwoMiB) {
    for (const unsigned int uiFreed : {0u, 2u, 30u}) { // a heap may learn from large blocks to keep them itself
        const int iCode = runInChild([&] {
                              void* volatile pFreed = std::malloc(uiFreed * MIB); // or a compiler leaves both out
                              std::free(pFreed);
                              constexpr unsigned int ARRIVES = 96 * MIB;
                              const unsigned long ulBefore = readMemory("VmHWM:");
                              m_transfer.feed(headerOf(UINT_MAX, 0)); // it never comes to its end
                              for (unsigned int uiArrived = 0; uiArrived < ARRIVES; uiArrived += CHUNK) {
                                  m_transfer.feed(m_strChunk);
                                  if (readMemory("VmHWM:") - ulBefore > uiArrived + 2 * MIB)
                                      return 1;
                              }
                              return m_transfer.m_bufReceive.getSize() == 10 + ARRIVES ? 0 : 2;
                          }).iExitCode;
        EXPECT_EQ(iCode, 0) << uiFreed;
    }
}

TEST_F(CDataTransferLarge, WithoutMemoryNoFrameHasAHole) {
    const int iCode = runInChild([&] {
                          const std::string strLarge(64 * MIB, 'l');
                          m_transfer.feed(headerOf(64 * MIB + 5, 0) + "begin");
                          if (!limitMemory(8 * MIB))
                              return 1;
                          m_transfer.feed(strLarge);
                          if (m_transfer.m_bufReceive.getCapacity() != 0)
                              return 2;
                          m_transfer.feed(frameOf("next", 0));
                          drain();
                          return m_listener.m_vecCall == VecCall{"data next"} ? 0 : 3;
                      }).iExitCode;
    EXPECT_EQ(iCode, 0);
}
#endif
} // namespace
