#include <Orlix/threading/CThread.h>

#include <Orlix/foundation/CStringConverter.h>
#include <Orlix/system/CLogUtility.h>
#include <Orlix/threading/CImpThread.h>

#include "foundation/TextOf.h"

#include <thread>

namespace Orlix {
namespace {

constexpr int DEFAULT_PRIORITY = 51;

/** @param pFormat takes the id as a long and the name. */
void logThread(const wchar_t* pFormat, unsigned int uiThreadID, const CString& strName) {
    CLogEngine::info(CStringConverter::format(pFormat, static_cast<long>(uiThreadID), textOf(strName)));
}
} // namespace

CThread::CThread()
    : m_iPriority(DEFAULT_PRIORITY), m_strName(L"Unknown"), m_uiThreadID(0), m_bRunning(false), m_bPrepareStop(false),
      m_waitWake(STRING_NULL), m_waitStart(STRING_NULL), m_waitStop(STRING_NULL), m_pImp(new CImpThread(this)),
      m_bLeaving(false) {}

CThread::~CThread() {
    awaitDeparture();
    delete m_pImp;
}

void CThread::startThread() {
    if (m_bRunning)
        return;
    awaitDeparture();
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
    if (m_bRunning) {
        prepareStopThread();
        waitForEnd();
    }
    awaitDeparture();
}

void CThread::prepareStopThread() {
    m_bPrepareStop = true;
    m_waitWake.notify();
}

void CThread::waitForThreadStop() {
    if (m_bRunning)
        waitForEnd();
    awaitDeparture();
}

/** An announcement alone may be that of an earlier run. */
void CThread::waitForEnd() {
    do
        m_waitStop.wait(0);
    while (m_bRunning);
}

void CThread::awaitDeparture() const noexcept {
    while (m_bLeaving)
        std::this_thread::yield();
}

void CThread::notifyThreadStarted(unsigned int uiThreadID) {
    m_uiThreadID = uiThreadID;
    logThread(L"Thread (ID: %ld, Name: %ls) starts.", m_uiThreadID, m_strName);
}

void CThread::notifyThreadStopped() {
    logThread(L"Thread (ID: %ld, Name: %ls) exits.", m_uiThreadID, m_strName);
    m_uiThreadID = 0;
    m_bLeaving.exchange(true); // a stop that finds the thread not running any more has this to wait for
    m_bRunning = false;
    m_waitStop.notify();
    m_bLeaving = false; // the last access: whoever waited may destroy the object now
}
} // namespace Orlix
