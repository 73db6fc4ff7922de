#include <Orlix/memory/CMemManager.h>

#include <Orlix/foundation/CAutoSync.h>
#include <Orlix/foundation/CString.h>
#include <Orlix/memory/CMemAllocator.h>
#include <Orlix/memory/CMemory.h>
#include <Orlix/memory/IMemManagerListener.h>

#include "support/ChildProcess.h"
#include "support/MemoryLimit.h"
#include "support/Sanitizer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <climits>
#include <cstring>
#include <thread>

using namespace Orlix;
using namespace OrlixTest;

namespace {

// Opens the fields of the one manager to the tests.
class CAccess : public CMemManager {
public:
    static CMemAllocator& getAllocator() { return *(getInstance()->*(&CAccess::m_pAllocator)); }
    static bool isInRetry() { return getInstance()->*(&CAccess::m_bInRetry); }
    static CSyncObject& getRetryLock() { return getInstance()->*(&CAccess::m_syncRetry); }
    static IMemManagerListener* getListener() { return getInstance()->*(&CAccess::m_pListener); }
};

class CAllocatorAccess : public CMemAllocator {
public:
    static unsigned int getMask(const CMemAllocator& allocator) {
        return allocator.*(&CAllocatorAccess::m_uiAlignmentMask);
    }
};

// A size that wraps with its header: it fails at once, whatever memory there is.
constexpr unsigned int IMPOSSIBLE_SIZE = UINT_MAX;

class CCountingListener : public IMemManagerListener {
public:
    void onMemoryShortage() override {
        ++m_iCalls;
        m_bSawFlag = CAccess::isInRetry();
    }
    int m_iCalls = 0;
    bool m_bSawFlag = false;
};

class CAllocatingListener : public IMemManagerListener {
public:
    void onMemoryShortage() override {
        ++m_iCalls;
        m_bInnerFailed = !CMemory::malloc(IMPOSSIBLE_SIZE, 0);
        void* const pSmall = CMemory::malloc(8, 0);
        m_bSmallWorked = pSmall != nullptr;
        CMemory::free(pSmall);
    }
    int m_iCalls = 0;
    bool m_bInnerFailed = false;
    bool m_bSmallWorked = false;
};

class CMemManagerTest : public testing::Test {
protected:
    ~CMemManagerTest() override { CMemManager::getInstance()->setListener(nullptr); }
};

TEST_F(CMemManagerTest, LivesWhileTheProgramRuns) {
    ASSERT_NE(CMemManager::getInstance(), nullptr);
    EXPECT_EQ(CMemManager::getInstance(), CMemManager::getInstance());
    EXPECT_EQ(CAccess::getListener(), nullptr);
    EXPECT_FALSE(CAccess::isInRetry());
    EXPECT_EQ(CMemManager::getInstance()->getChecker(), nullptr);
}

TEST_F(CMemManagerTest, PoolTableRunsTo512InStepsOf8) {
    const struct {
        unsigned int uiFirstSize, uiLastSize, uiInitial, uiGrow;
    } aryRange[] = {{8, 48, 10000, 100},  {56, 96, 5000, 100}, {104, 144, 2000, 50},
                    {152, 192, 1000, 50}, {200, 248, 500, 20}, {256, 296, 200, 20},
                    {304, 392, 100, 10},  {400, 448, 50, 5},   {456, 512, 20, 5}};
    CMemAllocator& allocator = CAccess::getAllocator();
    const CMemAllocator::tagMemPool* pExpected = allocator.findFitPool(0);
    for (const auto& range : aryRange)
        for (unsigned int uiSize = range.uiFirstSize; uiSize <= range.uiLastSize; uiSize += 8, ++pExpected) {
            const CMemAllocator::tagMemPool* const pPool = allocator.findFitPool(uiSize);
            ASSERT_EQ(pPool, pExpected) << uiSize;
            EXPECT_EQ(allocator.findFitPool(uiSize - 7), pPool) << uiSize;
            EXPECT_EQ(pPool->uiDataSize, uiSize);
            EXPECT_EQ(pPool->uiUnitSize, uiSize + 16);
            EXPECT_EQ(pPool->uiInitialCount, range.uiInitial) << uiSize;
            EXPECT_EQ(pPool->uiGrowCount, range.uiGrow) << uiSize;
        }
    EXPECT_EQ(pExpected - allocator.findFitPool(0), 64);
    EXPECT_EQ(allocator.findFitPool(513), nullptr);
    EXPECT_EQ(CAllocatorAccess::getMask(allocator), 3u) << "aligned to 4, which the steps of 8 hide";
}

TEST_F(CMemManagerTest, ServesFromItsPools) {
    CMemManager& manager = *CMemManager::getInstance();
    void* const pBlock = manager.malloc(512, 0);
    CMemAllocator::tagMemPool* pOwner = nullptr;
    std::memcpy(&pOwner, static_cast<unsigned char*>(pBlock) - 16, sizeof(pOwner));
    EXPECT_EQ(pOwner, CAccess::getAllocator().findFitPool(512));
    manager.free(pBlock);
    EXPECT_EQ(pOwner->pFreeUnits, static_cast<unsigned char*>(pBlock) - 16);
    void* const pBig = manager.malloc(513, 7); // the class number makes no difference
    std::memcpy(&pOwner, static_cast<unsigned char*>(pBig) - 16, sizeof(pOwner));
    EXPECT_EQ(pOwner, nullptr);
    manager.free(pBig);
}

TEST_F(CMemManagerTest, NumbersNoClassWithoutAChecker) {
    EXPECT_EQ(CMemManager::getInstance()->registClassName(L"CAnything"), 0u);
    EXPECT_EQ(CMemManager::getInstance()->registClassName(L"CAnother"), 0u);
}

TEST_F(CMemManagerTest, ReportWithoutACheckerWritesNothing) {
    const tagChildResult result = runInChild([] {
        CMemManager::getInstance()->setMemReportFile(STRING_NULL);
        CMemManager::getInstance()->setMemReportFile(CString(L"/nowhere/report"));
        CMemManager::getInstance()->generateMemReportFile();
        return 0;
    });
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_EQ(result.strOutput, "");
}

TEST_F(CMemManagerTest, ShortageWithoutListenerGivesNull) {
    EXPECT_EQ(CMemManager::getInstance()->malloc(IMPOSSIBLE_SIZE, 0), nullptr);
}

TEST_F(CMemManagerTest, ShortageCallsTheListenerOnceAndGivesNullIfTheRetryFails) {
    CCountingListener listener;
    CMemManager::getInstance()->setListener(&listener);
    EXPECT_EQ(CMemManager::getInstance()->malloc(IMPOSSIBLE_SIZE, 0), nullptr);
    EXPECT_EQ(listener.m_iCalls, 1);
    EXPECT_TRUE(listener.m_bSawFlag);
    EXPECT_FALSE(CAccess::isInRetry());
    EXPECT_EQ(CMemory::malloc(IMPOSSIBLE_SIZE, 0), nullptr);
    EXPECT_EQ(listener.m_iCalls, 2) << "the next shortage has a call of its own";
}

TEST_F(CMemManagerTest, SuccessNeverCallsTheListener) {
    CCountingListener listener;
    CMemManager::getInstance()->setListener(&listener);
    CMemManager::getInstance()->free(CMemManager::getInstance()->malloc(8, 0));
    EXPECT_EQ(listener.m_iCalls, 0);
}

TEST_F(CMemManagerTest, ListenerThatWasTakenAwayIsNotCalled) {
    CCountingListener listener;
    CMemManager::getInstance()->setListener(&listener);
    CMemManager::getInstance()->setListener(nullptr);
    EXPECT_EQ(CMemManager::getInstance()->malloc(IMPOSSIBLE_SIZE, 0), nullptr);
    EXPECT_EQ(listener.m_iCalls, 0);
}

TEST_F(CMemManagerTest, ShortageInsideTheListenerGivesNullAtOnce) {
    CAllocatingListener listener;
    CMemManager::getInstance()->setListener(&listener);
    EXPECT_EQ(CMemManager::getInstance()->malloc(IMPOSSIBLE_SIZE, 0), nullptr);
    EXPECT_EQ(listener.m_iCalls, 1);
    EXPECT_TRUE(listener.m_bInnerFailed);
    EXPECT_TRUE(listener.m_bSmallWorked);
    EXPECT_FALSE(CAccess::isInRetry());
}

#ifndef ORLIX_TEST_TSAN // flag and listener are read without the lock by design; only here two threads meet there
TEST_F(CMemManagerTest, OtherThreadThatFailsMeanwhileDoesNotWait) {
    class CThreadListener : public IMemManagerListener {
    public:
        void onMemoryShortage() override {
            ++m_iCalls;
            std::thread([this] { m_bOtherFailed = !CMemory::malloc(IMPOSSIBLE_SIZE, 0); }).join();
        }
        int m_iCalls = 0;
        bool m_bOtherFailed = false;
    } listener;
    CMemManager::getInstance()->setListener(&listener);
    EXPECT_EQ(CMemory::malloc(IMPOSSIBLE_SIZE, 0), nullptr);
    EXPECT_TRUE(listener.m_bOtherFailed);
    EXPECT_EQ(listener.m_iCalls, 1);
}

// Fails on a thread of its own while the retry lock is held elsewhere; fnMeanwhile runs when it waits there.
template <class F> void failWhileTheLockIsHeld(F fnMeanwhile) {
    std::thread other;
    {
        const CAutoSync sync(CAccess::getRetryLock());
        other = std::thread([] { EXPECT_EQ(CMemory::malloc(IMPOSSIBLE_SIZE, 0), nullptr); });
        std::this_thread::sleep_for(std::chrono::milliseconds(20)); // lets the thread come to the lock in most runs
        fnMeanwhile();
    }
    other.join();
}

TEST_F(CMemManagerTest, ThreadThatWaitedForTheLockMakesItsOwnRetry) {
    CCountingListener listener;
    CMemManager::getInstance()->setListener(&listener);
    failWhileTheLockIsHeld([&] { EXPECT_EQ(listener.m_iCalls, 0) << "called outside the lock"; });
    EXPECT_EQ(listener.m_iCalls, 1);
}

TEST_F(CMemManagerTest, ListenerTakenAwayWhileAThreadWaitsIsNotCalled) {
    CCountingListener listener;
    CMemManager::getInstance()->setListener(&listener);
    failWhileTheLockIsHeld([] { CMemManager::getInstance()->setListener(nullptr); });
    EXPECT_EQ(listener.m_iCalls, 0);
}
#endif

TEST_F(CMemManagerTest, NeitherSuccessNorAFailureWithoutListenerTakesTheLock) {
    const CAutoSync sync(CAccess::getRetryLock());
    std::thread([] { // hangs if it did
        void* const pBlock = CMemory::malloc(8, 0);
        EXPECT_NE(pBlock, nullptr);
        CMemory::free(pBlock);
        EXPECT_EQ(CMemory::malloc(IMPOSSIBLE_SIZE, 0), nullptr);
    })
        .join();
}

#if !defined(ORLIX_TEST_ASAN) && !defined(ORLIX_TEST_TSAN) // both end the process when memory runs out
TEST_F(CMemManagerTest, RetrySucceedsWhenTheListenerReleasesMemory) {
    class CReleasingListener : public IMemManagerListener {
    public:
        void onMemoryShortage() override {
            ++m_iCalls;
            CMemory::free(m_pReserve);
        }
        void* m_pReserve = nullptr;
        int m_iCalls = 0;
    };
    const tagChildResult result = runInChild([] {
        CReleasingListener listener;
        listener.m_pReserve = CMemory::malloc(400000000, 0);
        CMemManager::getInstance()->setListener(&listener);
        if (!listener.m_pReserve || !limitMemory(100000000))
            return 1;
        void* const pBlock = CMemory::malloc(300000000, 0);
        if (!pBlock || listener.m_iCalls != 1)
            return 2;
        return CAccess::isInRetry() ? 3 : 0;
    });
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_EQ(result.strOutput, "");
}

TEST_F(CMemManagerTest, RetryIsMadeOnceWhenNothingWasReleased) {
    const tagChildResult result = runInChild([] {
        CCountingListener listener;
        CMemManager::getInstance()->setListener(&listener);
        if (!limitMemory(100000000))
            return 1;
        return !CMemory::malloc(300000000, 0) && listener.m_iCalls == 1 ? 0 : 2;
    });
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_EQ(result.strOutput, "");
}
#endif
} // namespace
