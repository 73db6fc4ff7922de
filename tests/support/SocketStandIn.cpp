#include "support/SocketStandIn.h"

#include <cerrno>
#include <cstring>
#include <dlfcn.h>
#include <sys/socket.h>

// These replace the system's functions in the whole test program and hand on to them.

namespace {
OrlixTest::CSocketStandIn* g_pStandIn = nullptr; // set while only the test's own thread runs

template <class F> F getReal(const char* pName) { return reinterpret_cast<F>(dlsym(RTLD_NEXT, pName)); }

int fail(int iError) {
    errno = iError;
    return -1;
}
} // namespace

OrlixTest::CSocketStandIn::CSocketStandIn() { g_pStandIn = this; }

OrlixTest::CSocketStandIn::~CSocketStandIn() { g_pStandIn = nullptr; }

std::string OrlixTest::CSocketStandIn::option(int iLevel, int iName, int iValue) {
    return "option " + std::to_string(iLevel) + " " + std::to_string(iName) + " " + std::to_string(iValue);
}

void OrlixTest::CSocketStandIn::note(const std::string& strCall) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_vecCall.push_back(strCall);
}

std::vector<std::string> OrlixTest::CSocketStandIn::getCalls() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_vecCall;
}

extern "C" {
int socket(int iDomain, int iType, int iProtocol) noexcept {
    if (g_pStandIn && g_pStandIn->m_bNoSocket)
        return fail(EMFILE);
    return getReal<decltype(&socket)>("socket")(iDomain, iType, iProtocol);
}

int setsockopt(int iSocket, int iLevel, int iName, const void* pValue, socklen_t uiSize) noexcept {
    int iValue = 0;
    if (g_pStandIn && uiSize == sizeof(iValue)) {
        std::memcpy(&iValue, pValue, sizeof(iValue));
        g_pStandIn->note(OrlixTest::CSocketStandIn::option(iLevel, iName, iValue));
    }
    return getReal<decltype(&setsockopt)>("setsockopt")(iSocket, iLevel, iName, pValue, uiSize);
}

int listen(int iSocket, int iBacklog) noexcept {
    if (g_pStandIn) {
        g_pStandIn->note("listen " + std::to_string(iBacklog));
        if (g_pStandIn->m_bNoListen)
            return fail(EADDRINUSE);
    }
    return getReal<decltype(&listen)>("listen")(iSocket, iBacklog);
}
}
