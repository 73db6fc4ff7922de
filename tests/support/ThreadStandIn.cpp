#include "support/ThreadStandIn.h"

#include <cerrno>
#include <dlfcn.h>
#include <pthread.h>
#include <thread>

// These replace the system's functions in the whole test program and hand on to them.

namespace {
OrlixTest::CThreadStandIn* g_pStandIn = nullptr; // set while only the test's own thread runs

template <class F> F getReal(const char* pName) { return reinterpret_cast<F>(dlsym(RTLD_NEXT, pName)); }
} // namespace

OrlixTest::CThreadStandIn::CThreadStandIn() { g_pStandIn = this; }

OrlixTest::CThreadStandIn::~CThreadStandIn() { g_pStandIn = nullptr; }

void OrlixTest::CThreadStandIn::note(const std::string& strCall) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_vecCall.push_back(strCall);
}

std::vector<std::string> OrlixTest::CThreadStandIn::getCalls() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_vecCall;
}

void OrlixTest::CThreadStandIn::holdSignal() {
    if (pthread_equal(pthread_self(), m_threadOwn))
        return;
    while (m_bHoldSignals) {
        m_bSignalIsHeld = true;
        std::this_thread::yield();
    }
}

extern "C" {
int pthread_cond_signal(pthread_cond_t* pCondition) noexcept {
    static const auto fnReal = getReal<decltype(&pthread_cond_signal)>("pthread_cond_signal");
    if (g_pStandIn)
        g_pStandIn->holdSignal();
    return fnReal(pCondition);
}

int pthread_getschedparam(pthread_t thread, int* pPolicy, sched_param* pParam) noexcept {
    if (g_pStandIn) {
        g_pStandIn->note("get");
        if (g_pStandIn->m_bNoSchedule)
            return ESRCH;
    }
    return getReal<decltype(&pthread_getschedparam)>("pthread_getschedparam")(thread, pPolicy, pParam);
}

int pthread_setschedparam(pthread_t thread, int iPolicy, const sched_param* pParam) noexcept {
    if (g_pStandIn)
        g_pStandIn->note("set " + std::to_string(iPolicy) + " " + std::to_string(pParam->sched_priority));
    return getReal<decltype(&pthread_setschedparam)>("pthread_setschedparam")(thread, iPolicy, pParam);
}
}
