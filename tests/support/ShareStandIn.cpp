#include "support/ShareStandIn.h"

#include "support/ShareJanitor.h"

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <semaphore.h>
#include <sstream>
#include <sys/shm.h>
#include <unistd.h>

// These replace the system's functions in the whole test program and hand on to them.

using OrlixTest::CShareJanitor;

namespace {
OrlixTest::CShareStandIn* g_pStandIn = nullptr; // set while only the test's own thread runs
int g_iRealID = 0;                              // of the segment that poses as number 0

template <class F> F getReal(const char* pName) { return reinterpret_cast<F>(dlsym(RTLD_NEXT, pName)); }

bool isZeroID(int iSegmentID) { return g_pStandIn && g_pStandIn->m_bZeroID && iSegmentID == 0; }

void note(const std::string& strCall) {
    if (g_pStandIn)
        g_pStandIn->note(strCall);
}

void noteSemaphore(const char* pCall, const void* pSemaphore) {
    if (g_pStandIn)
        g_pStandIn->note(pCall + g_pStandIn->getName(pSemaphore));
}

std::string toOctal(int iValue) {
    std::ostringstream stream;
    stream << std::oct << iValue;
    return stream.str();
}
} // namespace

OrlixTest::CShareStandIn::CShareStandIn() { g_pStandIn = this; }

OrlixTest::CShareStandIn::~CShareStandIn() { g_pStandIn = nullptr; }

void OrlixTest::CShareStandIn::note(const std::string& strCall) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (++m_iCalls == m_iKillAt)
        raise(SIGKILL);
    m_vecCall.push_back(strCall);
}

std::string OrlixTest::CShareStandIn::getName(const void* pSemaphore) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_mapName[pSemaphore];
}

void OrlixTest::CShareStandIn::setName(const void* pSemaphore, const std::string& strName) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const std::size_t uiFront = std::strlen("/super_");
    m_mapName[pSemaphore] = strName.substr(uiFront, strName.find_last_of('_') - uiFront);
}

std::vector<std::string> OrlixTest::CShareStandIn::getCalls() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_vecCall;
}

void OrlixTest::CShareStandIn::clear() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_vecCall.clear();
}

extern "C" {
int shmget(key_t key, std::size_t uiSize, int iFlags) noexcept {
    note("shmget " + std::to_string(key) + " " + std::to_string(uiSize) + " " + toOctal(iFlags));
    CShareJanitor::noteKey(static_cast<unsigned int>(key));
    const int iSegmentID = getReal<decltype(&shmget)>("shmget")(key, uiSize, iFlags);
    if (iSegmentID == -1)
        return -1;
    CShareJanitor::noteSegment(iSegmentID);
    if (!g_pStandIn || !g_pStandIn->m_bZeroID)
        return iSegmentID;
    g_iRealID = iSegmentID;
    return 0;
}

void* shmat(int iSegmentID, const void* pAddress, int iFlags) noexcept {
    note("shmat " + std::to_string(iFlags));
    if (g_pStandIn && g_pStandIn->m_bNoAttach) {
        errno = ENOMEM;
        return reinterpret_cast<void*>(-1);
    }
    return getReal<decltype(&shmat)>("shmat")(isZeroID(iSegmentID) ? g_iRealID : iSegmentID, pAddress, iFlags);
}

int shmdt(const void* pAddress) noexcept {
    note("shmdt");
    return getReal<decltype(&shmdt)>("shmdt")(pAddress);
}

int shmctl(int iSegmentID, int iCommand, shmid_ds* pState) noexcept {
    if (iCommand == IPC_RMID)
        note("remove");
    if (iCommand == IPC_STAT && g_pStandIn && g_pStandIn->m_fnLook)
        g_pStandIn->m_fnLook();
    return getReal<decltype(&shmctl)>("shmctl")(isZeroID(iSegmentID) ? g_iRealID : iSegmentID, iCommand, pState);
}

sem_t* sem_open(const char* pName, int iFlags, ...) noexcept {
    va_list listArgs;
    va_start(listArgs, iFlags);
    const unsigned int uiMode = iFlags & O_CREAT ? va_arg(listArgs, unsigned int) : 0;
    const unsigned int uiValue = iFlags & O_CREAT ? va_arg(listArgs, unsigned int) : 0;
    va_end(listArgs);
    note("open " + std::string(pName) + " " + toOctal(iFlags) + " " + toOctal(static_cast<int>(uiMode)) + " " +
         std::to_string(uiValue));
    const bool bZeroID = g_pStandIn && g_pStandIn->m_bZeroID;
    // A segment of another test may really have the number 0, so the name is made one of this process alone.
    const std::string strName = bZeroID ? pName + ("_" + std::to_string(getpid())) : pName;
    sem_t* const pSemaphore = getReal<decltype(&sem_open)>("sem_open")(strName.c_str(), iFlags, uiMode, uiValue);
    if (bZeroID)
        sem_unlink(strName.c_str());
    if (g_pStandIn)
        g_pStandIn->setName(pSemaphore, pName);
    return pSemaphore;
}

int sem_close(sem_t* pSemaphore) noexcept {
    noteSemaphore("close ", pSemaphore);
    return getReal<decltype(&sem_close)>("sem_close")(pSemaphore);
}

int sem_clockwait(sem_t* pSemaphore, clockid_t clock, const timespec* pDeadline) {
    const int iResult = getReal<decltype(&sem_clockwait)>("sem_clockwait")(pSemaphore, clock, pDeadline);
    if (iResult == 0)
        noteSemaphore("wait ", pSemaphore);
    return iResult;
}

int sem_trywait(sem_t* pSemaphore) noexcept {
    const int iResult = getReal<decltype(&sem_trywait)>("sem_trywait")(pSemaphore);
    if (iResult == 0)
        noteSemaphore("wait ", pSemaphore);
    return iResult;
}

int sem_post(sem_t* pSemaphore) noexcept {
    noteSemaphore("post ", pSemaphore);
    if (g_pStandIn && g_pStandIn->m_bNoPost)
        return 0;
    return getReal<decltype(&sem_post)>("sem_post")(pSemaphore);
}

char* strerror(int iError) noexcept {
    static char s_szLong[1025];
    if (!g_pStandIn || g_pStandIn->m_uiReason == 0)
        return getReal<decltype(&strerror)>("strerror")(iError);
    std::memset(s_szLong, 'x', g_pStandIn->m_uiReason);
    s_szLong[g_pStandIn->m_uiReason] = '\0';
    return s_szLong;
}
}
