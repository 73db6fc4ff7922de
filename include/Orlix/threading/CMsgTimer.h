#pragma once

#include <Orlix/foundation/CObjectArray.h>
#include <Orlix/foundation/CPlaceTable.h>
#include <Orlix/messaging/CBaseMessage.h>
#include <Orlix/threading/CTimer.h>

namespace Orlix {

/** The pulses of one cycle of the timer thread, or of several if the host thread fell behind.
 *
 *  Only this class may carry MESSAGE_TIMER: the center folds one message of that type into another. */
class ORLIX_API CMsgTimer : public CBaseMessage {
    ORLIX_HEAP_CLASS(L"CMsgTimer")

public:
    /** One pulse of one timer. */
    class ORLIX_API CTimerData : public CObject {
        ORLIX_HEAP_CLASS(L"CMsgTimer::CTimerData")

    public:
        /** @param pTimer not owned; null makes a pulse of nobody, with the ID 0. @param uiCount number of the pulse. */
        CTimerData(CTimer* pTimer, CTimer::ETimerStatus eStatus, unsigned int uiCount) noexcept
            : m_pTimer(pTimer), m_eStatus(eStatus), m_uiCount(uiCount), m_uiID(pTimer ? pTimer->getID() : 0) {}
        ~CTimerData() override;

        /** The timer's ID, also when the timer is gone. */
        unsigned int getID() const noexcept { return m_uiID; }

        /** Calls the timer's listener; does nothing without one. The timer must live. Behind the last pulse of a
         *  counted timer the timer is terminated. */
        virtual void handleMessage();

    protected:
        CTimer* m_pTimer; // not owned; dangles once the timer is gone
        CTimer::ETimerStatus m_eStatus;
        unsigned int m_uiCount;
        unsigned int m_uiID; // copied, so that it outlives the timer
    };

    CMsgTimer();
    ~CMsgTimer() override;

    unsigned int getDataCount() const noexcept { return m_aryData.getSize(); }

    /** Appends a pulse. @param pData taken over, and deleted if there is no memory for its place; null is ignored. */
    void addData(CTimerData* pData);

    /** Room for so many pulses in one growth step. */
    void ensureCapacity(unsigned int uiCount) { m_aryData.ensureCapacity(uiCount); }

    /** Deletes all pulses of a timer and keeps the order of the others. */
    void deleteDataByID(unsigned int uiID);

    /** Appends the pulses of another message, which is then empty. Without memory both stay as they are.
     *  @param pOther not taken over; null, an empty one and this one itself are ignored. */
    void margeDataFrom(CMsgTimer* pOther);

    /** Delivers the pulses in order, those of timers that were stopped or destroyed since left out. */
    void handleMessage() override;

protected:
    CObjectArray<CTimerData> m_aryData; // owned, in order of arrival
    // The IDs among the first pulses, so that a timer without a pulse here is not looked for one by one. Made by the
    // first deletion from a long message; pulses that come later are entered by the next one.
    CPlaceTable m_tableID;
    unsigned int m_uiEntered; // pulses whose IDs are in m_tableID

private:
    bool mayHold(unsigned int uiID);
    void forgetEntered();
};
} // namespace Orlix
