#include <Orlix/foundation/CImpWaitObject.h>

#include <cerrno>
#include <ctime>
#include <sys/select.h>

namespace Orlix {
namespace {

constexpr long NANOSECONDS_PER_SECOND = 1000000000;
constexpr long NANOSECONDS_PER_MS = 1000000;

timespec getDeadline(unsigned int uiMilliseconds) {
    timespec deadline;
    clock_gettime(CLOCK_MONOTONIC, &deadline);
    deadline.tv_sec += uiMilliseconds / 1000;
    deadline.tv_nsec += uiMilliseconds % 1000 * NANOSECONDS_PER_MS;
    if (deadline.tv_nsec >= NANOSECONDS_PER_SECOND) {
        deadline.tv_nsec -= NANOSECONDS_PER_SECOND;
        ++deadline.tv_sec;
    }
    return deadline;
}
} // namespace

CImpWaitObject::CImpWaitObject() : m_attribute(), m_bSignaled(false), m_uiWaiters(0) {
    pthread_mutex_init(&m_mutex, nullptr);
    // The value-initialised attribute is a valid one here, so only the clock is set on it.
    pthread_condattr_setclock(&m_attribute, CLOCK_MONOTONIC);
    pthread_cond_init(&m_condition, &m_attribute);
}

CImpWaitObject::~CImpWaitObject() {
    pthread_mutex_destroy(&m_mutex);
    pthread_cond_destroy(&m_condition);
    pthread_condattr_destroy(&m_attribute);
}

// Empty on purpose: who notifies before a reset still wakes the wait behind it.
void CImpWaitObject::reset() {}

void CImpWaitObject::wait(unsigned int uiMilliseconds) {
    if (uiMilliseconds == 0)
        waitUntilSignaled();
    else
        waitOnceUntilDeadline(uiMilliseconds);
}

void CImpWaitObject::waitUntilSignaled() {
    pthread_mutex_lock(&m_mutex);
    ++m_uiWaiters;
    while (!m_bSignaled)
        pthread_cond_wait(&m_condition, &m_mutex);
    --m_uiWaiters;
    m_bSignaled.exchange(false);
    pthread_mutex_unlock(&m_mutex);
}

void CImpWaitObject::waitOnceUntilDeadline(unsigned int uiMilliseconds) {
    const timespec deadline = getDeadline(uiMilliseconds);
    pthread_mutex_lock(&m_mutex);
    // One wait and no loop: a wake-up for no reason ends the wait early, and callers count on their own condition.
    ++m_uiWaiters;
    if (!m_bSignaled)
        pthread_cond_timedwait(&m_condition, &m_mutex, &deadline);
    --m_uiWaiters;
    m_bSignaled.exchange(false);
    pthread_mutex_unlock(&m_mutex);
}

void CImpWaitObject::forceWait(unsigned int uiMilliseconds) {
    timeval left;
    left.tv_sec = uiMilliseconds / 1000;
    left.tv_usec = uiMilliseconds % 1000 * 1000;
    // A signal handler interrupts select; Linux leaves the time that remains in the argument.
    while (select(0, nullptr, nullptr, nullptr, &left) == -1 && errno == EINTR) {}
}

/** Whether an earlier announcement still stands and nobody sleeps: then one more changes nothing and needs no lock. A
 *  thread that takes the earlier one after this sees all that the caller wrote before, since the exchange that found
 *  the flag set is what its clearing follows. */
bool CImpWaitObject::isRemembered() noexcept {
    bool bExpected = true;
    return m_bSignaled.compare_exchange_strong(bExpected, true) && m_uiWaiters == 0;
}

void CImpWaitObject::notify() {
    if (isRemembered())
        return;
    pthread_mutex_lock(&m_mutex);
    m_bSignaled = true;
    pthread_cond_signal(&m_condition);
    pthread_mutex_unlock(&m_mutex);
}
} // namespace Orlix
