#include <Orlix/threading/CThread.h>

#include <Orlix/foundation/CStringConverter.h>
#include <Orlix/system/CLogUtility.h>
#include <Orlix/threading/CImpThread.h>

namespace Orlix {
namespace {

constexpr int DEFAULT_PRIORITY = 51;

/** @param pFormat takes the id as a long and the name. */
void logThread(const wchar_t* pFormat, unsigned int uiThreadID, const CString& strName) {
    const wchar_t* const pName = strName.getBuffer();
    CLogEngine::info(CStringConverter::format(pFormat, static_cast<long>(uiThreadID), pName ? pName : L""));
}
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

void CThread::notifyThreadStarted(unsigned int uiThreadID) {
    m_uiThreadID = uiThreadID;
    logThread(L"Thread (ID: %ld, Name: %ls) starts.", m_uiThreadID, m_strName);
}

void CThread::notifyThreadStopped() {
    logThread(L"Thread (ID: %ld, Name: %ls) exits.", m_uiThreadID, m_strName);
    m_uiThreadID = 0;
    m_bRunning = false;
    m_waitStop.notify();
}
} // namespace Orlix
