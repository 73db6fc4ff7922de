#include "CEventFlag.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace {

bool isReady(const pollfd& file) { return file.revents != 0; }
} // namespace

CEventFlag::CEventFlag() : m_iEvent(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (m_iEvent >= 0)
        return;
    std::perror("orlix-host: eventfd"); // only a program that begins without free descriptors gets here
    std::abort();
}

CEventFlag::~CEventFlag() { close(m_iEvent); }

void CEventFlag::set() noexcept { eventfd_write(m_iEvent, 1); }

bool CEventFlag::isSet() const noexcept {
    pollfd file{m_iEvent, POLLIN, 0};
    return poll(&file, 1, 0) == 1;
}

bool CEventFlag::waitForInput(int iFile) const noexcept {
    pollfd aryFile[] = {{m_iEvent, POLLIN, 0}, {iFile, POLLIN, 0}};
    while (poll(aryFile, 2, -1) < 0 && errno == EINTR) {}
    return !isReady(aryFile[0]);
}

bool CEventFlag::sleepUntil(std::chrono::steady_clock::time_point time) const noexcept {
    using namespace std::chrono;
    pollfd file{m_iEvent, POLLIN, 0};
    nanoseconds left = time - steady_clock::now();
    while (left.count() > 0) {
        const timespec span{static_cast<time_t>(left.count() / 1000000000), left.count() % 1000000000};
        if (ppoll(&file, 1, &span, nullptr) == 1)
            return false;
        left = time - steady_clock::now();
    }
    return !isSet();
}
