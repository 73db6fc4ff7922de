#include <Orlix/threading/CImpThread.h>

#include <Orlix/foundation/CStringConverter.h>
#include <Orlix/threading/CThread.h>

namespace Orlix {
namespace {

constexpr unsigned int BYTES_PER_CHAR = 3;

/** Keeps the policy. Under the usual one the system refuses every priority but 0. */
void applyPriority(pthread_t thread, int iPriority) {
    int iPolicy = 0;
    sched_param param{};
    if (pthread_getschedparam(thread, &iPolicy, &param) != 0)
        return;
    param.sched_priority = iPriority;
    pthread_setschedparam(thread, iPolicy, &param);
}

void applyName(pthread_t thread, const CString& strName) {
    const unsigned int uiSize = strName.length() * BYTES_PER_CHAR + 1;
    char* const pName = static_cast<char*>(CMemory::malloc(uiSize, 0));
    if (!pName)
        return;
    CStringConverter::convertToMBCS(strName, pName, uiSize);
    pthread_setname_np(thread, pName);
    CMemory::free(pName);
}
} // namespace

CImpThread::CImpThread(CThread* pThread) : m_pThread(pThread) { pthread_attr_init(&m_attr); }

CImpThread::~CImpThread() { pthread_attr_destroy(&m_attr); }

void CImpThread::start() {
    pthread_t thread; // dropped: nobody joins it
    pthread_create(&thread, &m_attr, threadProc, m_pThread);
}

void* CImpThread::threadProc(void* pThread) {
    CThread* const pOwner = static_cast<CThread*>(pThread);
    const pthread_t thread = pthread_self();
    applyPriority(thread, pOwner->getThreadPriority());
    applyName(thread, pOwner->getThreadName());
    pOwner->notifyThreadStarted(static_cast<unsigned int>(thread));
    pOwner->run();
    pOwner->notifyThreadStopped();
    return pThread;
}
} // namespace Orlix
