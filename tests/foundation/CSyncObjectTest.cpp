#include <Orlix/foundation/CSyncObject.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

using namespace Orlix;

namespace {

class CRecorder final : public ISyncObject {
    ORLIX_HEAP_CLASS(L"CRecorder")

public:
    explicit CRecorder(std::string& strCalls) : m_strCalls(strCalls) {}
    ~CRecorder() override { m_strCalls += "gone "; }
    void lock() override { m_strCalls += "lock "; }
    void unlock() override { m_strCalls += "unlock "; }

private:
    std::string& m_strCalls;
};

class CRecordedSync : public CSyncObject {
public:
    explicit CRecordedSync(std::string& strCalls) {
        delete m_pImp;
        m_pImp = new CRecorder(strCalls);
    }
};

TEST(CSyncObject, ForwardsToItsImplementationAndDeletesIt) {
    std::string strCalls;
    {
        CRecordedSync sync(strCalls);
        sync.lock();
        sync.unlock();
        EXPECT_EQ(strCalls, "lock unlock ");
    }
    EXPECT_EQ(strCalls, "lock unlock gone ");
}

TEST(CSyncObject, ThreadThatHoldsItCanLockItAgain) {
    CSyncObject sync;
    sync.lock();
    sync.lock();
    sync.unlock();
    sync.unlock();
    std::thread([&] { // hangs if one unlock were missing
        sync.lock();
        sync.unlock();
    })
        .join();
}

TEST(CSyncObject, OneUnlockOfTwoKeepsOthersOut) {
    CSyncObject sync;
    std::atomic<bool> bReleased{false};
    bool bTakenAfterRelease = false;
    sync.lock();
    sync.lock();
    std::thread other([&] {
        sync.lock();
        bTakenAfterRelease = bReleased.load();
        sync.unlock();
    });
    sync.unlock();
    std::this_thread::sleep_for(std::chrono::milliseconds(20)); // time for the other thread to come in wrongly
    bReleased = true;
    sync.unlock();
    other.join();
    EXPECT_TRUE(bTakenAfterRelease);
}

TEST(CSyncObject, LetsOneThreadInAtATime) {
    CSyncObject sync;
    unsigned int uiCount = 0;
    std::thread aryThread[4];
    for (std::thread& thread : aryThread)
        thread = std::thread([&] {
            for (int i = 0; i < 20000; ++i) {
                sync.lock();
                ++uiCount;
                sync.unlock();
            }
        });
    for (std::thread& thread : aryThread)
        thread.join();
    EXPECT_EQ(uiCount, 80000u);
}
} // namespace
