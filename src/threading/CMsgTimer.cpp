#include <Orlix/threading/CMsgTimer.h>

#include <Orlix/threading/CTimerManager.h>
#include <Orlix/threading/ITimerListener.h>

namespace Orlix {
namespace {

constexpr unsigned int SHORT_MESSAGE = 32; // pulses that are looked through faster than hashed
} // namespace

CMsgTimer::CTimerData::~CTimerData() = default;

void CMsgTimer::CTimerData::handleMessage() {
    ITimerListener* const pListener = m_pTimer ? m_pTimer->getListener() : nullptr;
    if (!pListener)
        return;
    if (m_eStatus == CTimer::TIMER_PULSE) {
        pListener->onTimer(m_pTimer, m_uiCount);
    } else if (m_eStatus == CTimer::TIMER_COMPLETE) {
        pListener->onTimerComplete(m_pTimer);
        m_pTimer->terminate();
    }
}

CMsgTimer::CMsgTimer() : CBaseMessage(MESSAGE_TIMER), m_uiEntered(0) {}

CMsgTimer::~CMsgTimer() = default;

void CMsgTimer::addData(CTimerData* pData) {
    if (!pData)
        return;
    const unsigned int uiSize = m_aryData.getSize();
    m_aryData.add(pData);
    if (m_aryData.getSize() == uiSize)
        delete pData;
}

void CMsgTimer::deleteDataByID(unsigned int uiID) {
    if (!mayHold(uiID))
        return;
    const bool bEntered = m_uiEntered == m_aryData.getSize();
    m_aryData.removeMatching([=](const CTimerData* pData) { return pData->getID() == uiID; });
    if (bEntered) {
        m_tableID.remove(uiID);
        m_uiEntered = m_aryData.getSize();
    } else {
        forgetEntered();
    }
}

void CMsgTimer::forgetEntered() {
    m_tableID.clear();
    m_uiEntered = 0;
}

/** @return false only if no pulse here is of the timer. */
bool CMsgTimer::mayHold(unsigned int uiID) {
    const unsigned int uiSize = m_aryData.getSize();
    if (uiSize <= SHORT_MESSAGE)
        return true;
    for (; m_uiEntered < uiSize; ++m_uiEntered) {
        if (!m_tableID.set(m_aryData[m_uiEntered]->getID(), 0))
            return true;
    }
    return m_tableID.find(uiID) != nullptr;
}

void CMsgTimer::margeDataFrom(CMsgTimer* pOther) {
    if (!pOther || pOther == this || pOther->getDataCount() == 0)
        return;
    if (m_aryData.takeAll(pOther->m_aryData))
        pOther->forgetEntered();
}

void CMsgTimer::handleMessage() {
    CTimerManager* const pManager = CTimerManager::getInstance();
    for (unsigned int i = 0; i < m_aryData.getSize(); ++i) {
        CTimerData* const pData = m_aryData[i];
        if (!pManager->checkIsDeletedTimer(pData->getID()))
            pData->handleMessage();
    }
    pManager->clearDeletedTimer();
}
} // namespace Orlix
