#include "ipc/DataTransferFixture.h"

#include "support/ChildProcess.h"
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

std::string headerOf(unsigned int uiLength) {
    std::string strHeader("IVEN\0", 5);
    for (int iShift = 0; iShift < 32; iShift += 8)
        strHeader += static_cast<char>(uiLength >> iShift & 0xFF);
    return strHeader + '\0';
}

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

#if defined(ORLIX_TEST_ASAN) || defined(ORLIX_TEST_TSAN)
TEST_F(CDataTransferLarge, FrameOfManyChunksArrivesWhole) {
    m_transfer.feed(headerOf(MIB));
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
    CCountingListener counter;
    m_transfer.setListener(&counter);
    const auto measure = [&](unsigned int uiBytes) {
        double dBest = 1e9;
        for (int i = 0; i < 5; ++i) {
            m_transfer.m_bufReceive.clear();
            const double dStart = getThreadSeconds();
            m_transfer.feed(headerOf(uiBytes));
            feedChunks(uiBytes);
            dBest = std::min(dBest, getThreadSeconds() - dStart);
            drain();
        }
        return dBest;
    };
    const double dSmall = measure(10 * MIB), dLarge = measure(100 * MIB);
    EXPECT_EQ(counter.m_uiBytes, 5 * 110 * MIB);

    EXPECT_LT(dLarge, 20 * dSmall) << "copied at each growth it would be a hundred";
}

/** A line of the process's state, in bytes. */
unsigned long readMemory(const std::string& strName) {
    std::ifstream file("/proc/self/status");
    std::string strLine;
    while (std::getline(file, strLine) && strLine.compare(0, strName.size(), strName) != 0) {}
    return std::stoul(strLine.substr(strName.size())) * 1024;
}

TEST_F(CDataTransferLarge, MemoryStaysBelowWhatHasArrivedAndTwoMiB) {
    for (const unsigned int uiFreed : {0u, 30u}) { // a heap that has seen large blocks keeps them itself
        const int iCode = runInChild([&] {
                              std::free(std::malloc(uiFreed * MIB));
                              constexpr unsigned int ARRIVES = 96 * MIB;
                              const unsigned long ulBefore = readMemory("VmHWM:");
                              m_transfer.feed(headerOf(UINT_MAX)); // it never comes to its end
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
#endif
} // namespace
