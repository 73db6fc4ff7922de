#pragma once

#include <Orlix/formats/CConfigParser.h>
#include <Orlix/ipc/CImpShareMemory.h>
#include <Orlix/ipc/CShareMemory.h>
#include <Orlix/ipc/IShareMemoryListener.h>
#include <Orlix/messaging/CMessageCenter.h>

#include "support/LogSettings.h"
#include "support/ShareJanitor.h"
#include "support/SingleThread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <semaphore.h>
#include <string>
#include <sys/prctl.h>
#include <sys/shm.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace OrlixTest {

using VecByte = std::vector<unsigned char>;

inline VecByte toBytes(const std::string& strText) { return VecByte(strText.begin(), strText.end()); }

/** Bytes that differ with the seed, and from place to place. */
inline VecByte makeBlock(std::size_t uiSize, unsigned int uiSeed) {
    VecByte vecBlock(uiSize);
    for (std::size_t i = 0; i < uiSize; ++i)
        vecBlock[i] = static_cast<unsigned char>((i * 2654435761u + uiSeed * 40503u) >> 13);
    return vecBlock;
}

/** Waits for a condition, at most so long that a test that fails still ends. @return whether it came true. */
template <class F> bool waitUntil(const F& isTrue) {
    const auto timeEnd = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!isTrue()) {
        if (std::chrono::steady_clock::now() > timeEnd)
            return false;
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    return true;
}

inline bool handleNext() {
    const Orlix::CObjectPtr<Orlix::CBaseMessage> ptrMessage = Orlix::CMessageCenter::getInstance()->popMessage();
    if (!ptrMessage.isEmpty())
        ptrMessage->handleMessage();
    return !ptrMessage.isEmpty();
}

/** The host's loop, until a condition comes true. */
template <class F> bool runUntil(const F& isTrue) {
    return waitUntil([&] { return isTrue() || (handleNext() && isTrue()); });
}

/** What the tests want to see of a channel. */
class COpenChannel : public Orlix::CShareMemory {
public:
    using CShareMemory::canWrite;
    using CShareMemory::m_bCanWrite;
    using CShareMemory::m_bRunning;
    using CShareMemory::m_eMode;
    using CShareMemory::m_pImp;
    using CShareMemory::m_pListener;
    using CShareMemory::m_pSegment;
    using CShareMemory::m_uiSegmentSize;
    using CShareMemory::m_waitRead;
    using CShareMemory::m_waitWrite;
    using CShareMemory::setCanWrite;

    COpenChannel() = default;
    ~COpenChannel() override { close(); } // as every subclass: its thread calls what a subclass may override

    /** As writeData, when the channel takes it. */
    bool writeSoon(const VecByte& vecBlock) {
        return waitUntil([&] { return writeData(vecBlock.data(), static_cast<unsigned int>(vecBlock.size())); });
    }
};

/** Takes each block as a host does. */
class CBlockListener : public Orlix::IShareMemoryListener {
public:
    explicit CBlockListener(Orlix::CShareMemory& channel) : m_channel(channel) { channel.setListener(this); }

    void onDataAvailable() override {
        VecByte vecBlock(m_channel.getSize());
        if (!vecBlock.empty())
            m_channel.readData(vecBlock.data(), static_cast<unsigned int>(vecBlock.size()));
        m_vecBlock.push_back(vecBlock);
        if (m_fnData)
            m_fnData();
    }
    void onWritterClose() override { ++m_iClosed; }

    std::vector<VecByte> m_vecBlock;
    int m_iClosed = 0;
    std::function<void()> m_fnData;

private:
    Orlix::CShareMemory& m_channel;
};

/** Writes a block until the listener has seen it: on a busy machine a reader may come up too late for it, and then has
 *  to wait for the next one, which is the same again. So it may be seen twice. */
inline bool passOn(COpenChannel& writer, CBlockListener& listener, const VecByte& vecBlock) {
    const std::size_t uiBefore = listener.m_vecBlock.size();
    auto timeAgain = std::chrono::steady_clock::now();
    return runUntil([&] {
        if (listener.m_vecBlock.size() > uiBefore && listener.m_vecBlock.back() == vecBlock)
            return true;
        if (std::chrono::steady_clock::now() >= timeAgain &&
            writer.writeData(vecBlock.data(), static_cast<unsigned int>(vecBlock.size())))
            timeAgain = std::chrono::steady_clock::now() + std::chrono::milliseconds(100);
        return false;
    });
}

/** The segment of a key and its semaphores, seen and changed past the library, as any other process can. */
class CRawChannel {
public:
    /** Makes what does not exist. @param uiSize of the segment, its head included. */
    CRawChannel(unsigned int uiKey, unsigned int uiSize)
        : m_iSegmentID(shmget(static_cast<key_t>(uiKey), uiSize, IPC_CREAT | 0666)),
          m_pSegment(static_cast<unsigned char*>(shmat(m_iSegmentID, nullptr, 0))), m_pRead(open("read", 1)),
          m_pWrite(open("write", 1)), m_pEvent(open("event", 0)) {}
    CRawChannel(const CRawChannel&) = delete;
    CRawChannel& operator=(const CRawChannel&) = delete;
    ~CRawChannel() {
        detach();
        for (sem_t* const pSemaphore : {m_pRead, m_pWrite, m_pEvent})
            sem_close(pSemaphore);
    }

    /** The rest stays in hand: the semaphores, and the number. */
    void detach() {
        if (m_pSegment)
            shmdt(m_pSegment);
        m_pSegment = nullptr;
    }
    unsigned int getNumber(unsigned int uiOffset) const {
        unsigned int uiValue;
        std::memcpy(&uiValue, m_pSegment + uiOffset, sizeof(uiValue));
        return uiValue;
    }
    void setNumber(unsigned int uiOffset, unsigned int uiValue) {
        std::memcpy(m_pSegment + uiOffset, &uiValue, sizeof(uiValue));
    }
    /** Values of the read, write and event semaphore. */
    std::vector<int> getValues() const { return {getValue(m_pRead), getValue(m_pWrite), getValue(m_pEvent)}; }
    void setValues(const std::vector<int>& vecValue) {
        set(m_pRead, vecValue[0]);
        set(m_pWrite, vecValue[1]);
        set(m_pEvent, vecValue[2]);
    }
    static int getValue(sem_t* pSemaphore) {
        int iValue = -1;
        sem_getvalue(pSemaphore, &iValue);
        return iValue;
    }
    /** @return whether the segment is there, and not about to go. */
    static bool isThere(int iSegmentID) {
        shmid_ds state;
        return shmctl(iSegmentID, IPC_STAT, &state) == 0 && !(state.shm_perm.mode & SHM_DEST);
    }

    int m_iSegmentID;
    unsigned char* m_pSegment;
    sem_t* m_pRead;
    sem_t* m_pWrite;
    sem_t* m_pEvent;

private:
    sem_t* open(const std::string& strName, unsigned int uiValue) const {
        const std::string strWhole = "/super_" + strName + "_" + std::to_string(m_iSegmentID);
        return sem_open(strWhole.c_str(), O_CREAT | O_RDWR, 0666, uiValue);
    }
    static void set(sem_t* pSemaphore, int iValue) {
        while (getValue(pSemaphore) < iValue)
            sem_post(pSemaphore);
        while (getValue(pSemaphore) > iValue)
            sem_trywait(pSemaphore);
    }
};

/** A process of the test's own, forked while this one has a single thread. */
class CPeer {
public:
    /** @param fnBody gives the exit code. */
    template <class F> explicit CPeer(const F& fnBody) {
        awaitSingleThread();
        m_pid = fork();
        if (m_pid != 0)
            return;
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        _exit(fnBody());
    }
    CPeer(const CPeer&) = delete;
    CPeer& operator=(const CPeer&) = delete;
    ~CPeer() { kill(); }

    void kill() {
        if (m_pid <= 0)
            return;
        ::kill(m_pid, SIGKILL);
        waitForEnd();
    }
    /** @return the exit code, or 128 and the signal. */
    int waitForEnd() {
        int iStatus = 0;
        waitpid(m_pid, &iStatus, 0);
        m_pid = 0;
        return toCode(iStatus);
    }
    /** Looks. @param iCode gets what waitForEnd gives. */
    bool hasEnded(int& iCode) {
        int iStatus = 0;
        if (waitpid(m_pid, &iStatus, WNOHANG) != m_pid)
            return false;
        m_pid = 0;
        iCode = toCode(iStatus);
        return true;
    }

private:
    pid_t m_pid;

    static int toCode(int iStatus) { return WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : 128 + WTERMSIG(iStatus); }
};

class ShareMemoryTest : public testing::Test {
protected:
    ShareMemoryTest() { Orlix::CMessageCenter::getInstance(); }
    ~ShareMemoryTest() override { Orlix::CMessageCenter::deleteInstance(); }

    /** A key of this process and test alone. */
    static unsigned int makeKey() {
        static unsigned int s_uiCount = 0;
        return 0x40000000u | static_cast<unsigned int>(getpid()) << 8 | (s_uiCount++ & 0xFF);
    }

    CShareJanitor m_janitor; // first: the process has one thread yet
    CLogRecorder m_log;
    const unsigned int m_uiKey = makeKey();
};
} // namespace OrlixTest
