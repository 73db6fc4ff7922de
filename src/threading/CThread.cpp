#include <Orlix/threading/CThread.h>

#include <Orlix/threading/CImpThread.h>

namespace Orlix {
namespace {

constexpr int DEFAULT_PRIORITY = 51;
} // namespace

CThread::CThread()
    : m_iPriority(DEFAULT_PRIORITY), m_strName(L"Unknown"), m_uiThreadID(0), m_bRunning(false), m_bPrepareStop(false),
      m_waitWake(STRING_NULL), m_waitStart(STRING_NULL), m_waitStop(STRING_NULL), m_pImp(new CImpThread(this)) {}

CThread::~CThread() { delete m_pImp; }

void CThread::startThread() {
    if (m_bRunning)
        return;
    m_bRunning = true;
    m_bPrepareStop = false;
    m_uiThreadID = 0;
    // The end of an earlier run that nobody waited for must not count as the end of this one: the second line takes
    // that announcement, or the one of the first line.
    m_waitStop.notify();
    m_waitStop.wait(0);
    if (m_pImp)
        m_pImp->start();
}

void CThread::stopThread() {
    if (!m_bRunning)
        return;
    prepareStopThread();
    waitForEnd();
}

void CThread::prepareStopThread() {
    m_bPrepareStop = true;
    m_waitWake.notify();
}

void CThread::waitForThreadStop() {
    if (m_bRunning)
        waitForEnd();
}

/** Waits at least once: between the clearing of the flag and the announcement the thread still touches the object. */
void CThread::waitForEnd() {
    do
        m_waitStop.wait(0);
    while (m_bRunning);
}

void CThread::notifyThreadStarted(unsigned int uiThreadID) { m_uiThreadID = uiThreadID; }

void CThread::notifyThreadStopped() {
    m_uiThreadID = 0;
    m_bRunning = false;
    m_waitStop.notify();
}
} // namespace Orlix
