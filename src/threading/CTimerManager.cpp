#include <Orlix/threading/CTimerManager.h>

#include <Orlix/formats/CConfigParser.h>
#include <Orlix/foundation/CAutoSync.h>
#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/threading/CTime.h>

namespace Orlix {
namespace {

constexpr unsigned int INTERVAL_MS = 10;
} // namespace

CTimerManager* CTimerManager::s_pInstance = nullptr;

CTimerManager::CTimerManager()
    : m_uiInterval(INTERVAL_MS), m_waitSleep(STRING_NULL), m_indexTimer(m_aryTimer), m_indexDeleted(m_aryDeletedID),
      m_uiDeletedSize(0), m_uiLastPulses(0) {}

CTimerManager::~CTimerManager() = default;

CTimerManager* CTimerManager::getInstance() {
    if (!s_pInstance)
        s_pInstance = new CTimerManager;
    return s_pInstance;
}

void CTimerManager::deleteInstance() {
    delete s_pInstance;
    s_pInstance = nullptr;
}

void CTimerManager::start() {
    if (m_bRunning)
        return;
    const CConfigParser::tagThread& thread = CConfigParser::getInstance()->getThread();
    setThreadName(thread.name[CConfigParser::THREAD_TM]);
    setThreadPriority(thread.priority[CConfigParser::THREAD_TM]);
    {
        // The wake-up for timers of an earlier run went with that run.
        const CAutoSync sync(m_syncObject);
        if (m_aryTimer.getSize() != 0)
            m_waitWake.notify();
    }
    startThread();
    m_waitStart.wait(0);
}

void CTimerManager::stop() {
    if (!m_bRunning)
        return;
    prepareStopThread();
    m_waitSleep.notify(); // shortens nothing: the sleep of a cycle is one that cannot be cut
    waitForEnd();
}

void CTimerManager::run() {
    m_waitStart.notify();
    while (true) {
        m_waitWake.wait(0);
        if (isPrepareStopThread())
            return;
        m_waitSleep.forceWait(m_uiInterval);
        if (isPrepareStopThread())
            return;
        pulseTimers();
    }
}

void CTimerManager::pulseTimers() {
    const CAutoSync sync(m_syncObject);
    pulseDue(CTime::getTickCount());
    postPulses();
    if (m_aryTimer.getSize() != 0)
        m_waitWake.notify();
}

void CTimerManager::pulseDue(unsigned int uiNow) {
    m_aryPulse.clear();
    m_aryPulse.ensureCapacity(m_uiLastPulses); // as many as in the last cycle, most likely
    unsigned int i = 0;
    while (i < m_aryTimer.getSize()) {
        if (m_aryTimer[i]->pulse(uiNow))
            ++i;
        else
            m_indexTimer.removeAt(i);
    }
}

void CTimerManager::postPulses() {
    const unsigned int uiCount = m_aryPulse.getSize();
    m_uiLastPulses = uiCount;
    if (uiCount == 0)
        return;
    CMsgTimer* const pMessage = new CMsgTimer;
    if (pMessage)
        pMessage->ensureCapacity(uiCount);
    for (unsigned int i = 0; i < uiCount; ++i) {
        if (pMessage)
            pMessage->addData(m_aryPulse[i]);
        else
            delete m_aryPulse[i];
    }
    m_aryPulse.clear();
    CMessageCenter::getInstance()->pushMessage(pMessage);
}

void CTimerManager::timerPulse(CMsgTimer::CTimerData* pData) {
    if (!pData)
        return;
    const unsigned int uiSize = m_aryPulse.getSize();
    m_aryPulse.add(pData);
    if (m_aryPulse.getSize() == uiSize)
        delete pData;
}

bool CTimerManager::isListed(CTimer* pTimer) {
    const CAutoSync sync(m_syncObject);
    return m_indexTimer.find(pTimer) >= 0;
}

void CTimerManager::addTimer(CTimer* pTimer) {
    if (!pTimer || isListed(pTimer))
        return;
    {
        // Before the timer is listed: its first pulse may be handled right after that.
        const CAutoSync sync(m_syncDeleted);
        m_indexDeleted.remove(pTimer->getID());
        m_uiDeletedSize = m_aryDeletedID.getSize();
    }
    {
        const CAutoSync sync(m_syncObject);
        m_indexTimer.add(pTimer);
    }
    m_waitWake.notify();
}

void CTimerManager::removeTimer(CTimer* pTimer) {
    if (!pTimer)
        return;
    const unsigned int uiID = pTimer->getID();
    {
        const CAutoSync sync(m_syncObject);
        m_indexTimer.remove(pTimer);
    }
    // The waiting pulses go before the ID is noted. The other way round the host could finish a message and forget the
    // ID, and take the next one with a pulse of this timer out, between the two.
    CMessageCenter::getInstance()->deleteTimerMessage(uiID);
    const CAutoSync sync(m_syncDeleted);
    m_indexDeleted.add(uiID);
    m_uiDeletedSize = m_aryDeletedID.getSize();
}

bool CTimerManager::checkIsDeletedTimer(unsigned int uiID) {
    if (m_uiDeletedSize == 0)
        return false;
    const CAutoSync sync(m_syncDeleted);
    return m_indexDeleted.find(uiID) >= 0;
}

void CTimerManager::clearDeletedTimer() {
    const CAutoSync sync(m_syncDeleted);
    m_indexDeleted.clear();
    m_uiDeletedSize = 0;
}
} // namespace Orlix
