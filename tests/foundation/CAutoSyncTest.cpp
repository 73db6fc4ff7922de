#include <Orlix/foundation/CAutoSync.h>

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

TEST(CAutoSync, LocksForTheBlock) {
    std::string strCalls;
    CRecordedSync syncObject(strCalls);
    {
        const CAutoSync sync(syncObject);
        strCalls += "inside ";
    }
    EXPECT_EQ(strCalls, "lock inside unlock ");
}

TEST(CAutoSync, SameThreadTakesItTwice) {
    CSyncObject syncObject;
    std::atomic<bool> bReleased{false};
    bool bTakenAfterRelease = false;
    std::thread other;
    {
        const CAutoSync syncOuter(syncObject);
        { const CAutoSync syncInner(syncObject); }
        other = std::thread([&] {
            const CAutoSync sync(syncObject);
            bTakenAfterRelease = bReleased.load();
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(20)); // time for the other thread to come in wrongly
        bReleased = true;
    }
    other.join();
    EXPECT_TRUE(bTakenAfterRelease) << "the inner block gave the outer lock away";
}
} // namespace
