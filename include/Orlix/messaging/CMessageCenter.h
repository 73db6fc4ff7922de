#pragma once

#include <Orlix/foundation/CDataArray.h>
#include <Orlix/foundation/CObjectList.h>
#include <Orlix/foundation/CObjectPtr.h>
#include <Orlix/foundation/CSyncObject.h>
#include <Orlix/messaging/CBaseMessage.h>

namespace Orlix {

class IMessageCenterListener;
class IMsgSystemListener;
class IMsgUserListener;

/** The queue through which all asynchronous work reaches the host thread.
 *
 *  System, quit and user messages come first, in order. The others wait in lists that are served by weighted waiting
 *  time; repaints join the list of the work that caused them. It never blocks: an empty queue gives an empty pointer,
 *  and onMessageAvailable of the listener is the only signal to a host that sleeps.
 *
 *  Threads: push, count and delete from any thread, pop from one. Create it before the worker threads start and delete
 *  it after they have ended. Ownership: who pushes a message gives it up, whatever becomes of it. */
class ORLIX_API CMessageCenter {
    ORLIX_HEAP_CLASS(L"CMessageCenter")

public:
    /** How one of the weighed lists stands. */
    struct tagMessageListInfo {
        ORLIX_HEAP_CLASS(L"CMessageCenter::tagMessageListInfo")
        unsigned int uiListType; // 1 input, 2 data, 3 timer, 4 user
        unsigned int uiLastTime; // tick at which it last delivered
        unsigned int uiTimeSpan; // weighted waiting time at the last pop
        unsigned int uiWeight;
    };

    /** Orders list infos by their time span. */
    struct tagCompareByTimeSpan {
        /** @return -1, 0 or 1. */
        int operator()(const tagMessageListInfo& first, const tagMessageListInfo& second) const noexcept {
            return first.uiTimeSpan < second.uiTimeSpan ? -1 : first.uiTimeSpan > second.uiTimeSpan;
        }
    };

    CMessageCenter();
    CMessageCenter(const CMessageCenter&) = delete;
    CMessageCenter& operator=(const CMessageCenter&) = delete;
    /** Deletes what still waits; nothing of it is handled. */
    virtual ~CMessageCenter();

    /** The center, made by the first call. Not synchronised. */
    static CMessageCenter* getInstance();
    /** Deletes the center, if there is one. Not synchronised. */
    static void deleteInstance();

    /** @param pListener receives the messages, not owned; null for nobody. Written and read without a lock. */
    void setListener(IMessageCenterListener* pListener) noexcept { m_pListener = pListener; }
    IMessageCenterListener* getListener() const noexcept { return m_pListener; }

    /** Routes a message by its type and tells the listener, on this thread and without a lock; also when the message
     *  was deleted: as a repeated repaint, as a timer message whose pulses were folded into the tail, for its unknown
     * type, or without memory for its place. While the center is closed the message is deleted and nobody is told.
     * @param pMessage taken over; null is ignored. */
    void pushMessage(CBaseMessage* pMessage);

    void pushQuitMessage();
    /** @param pData gets a reference; may be null. @param pListener told after the center's; may be null. */
    void pushSystemMessage(unsigned int uiID, CObject* pData, IMsgSystemListener* pListener);
    /** @param pData gets a reference; may be null. */
    void pushGestureMessage(unsigned int uiParam, unsigned int uiID, CObject* pData);
    /** Keeps the state of the modifier keys (17 control, 16 shift, 18 alternative) even while the center is closed.
     *  @param uiState 1 to 3 for a key that is down, 4 and 5 for one that is up; others change no modifier. */
    void pushHardkeyMessage(unsigned int uiKey, unsigned int uiState);
    void pushIMEMessage(const CString& strText);
    /** A finger's sample, as the platform reports it: hands it with the present time to the tracking of its surface,
     *  which posts what results. A surface that nobody has opened is made, and ignores touches until it is enabled.
     *  @param iX pixels on the surface. @param uiState 0 press, 1 move, 2 release; others are ignored, but make the
     *  surface too. */
    void pushTouchMessage(unsigned int uiSurfaceID, unsigned int uiCursorID, int iX, int iY, unsigned int uiState);
    void pushLogicEventMessage(unsigned int uiID);
    void pushVoiceContentMessage(const CString& strContent);
    /** @param pData gets a reference; may be null. */
    void pushDataContextMessage(unsigned int uiID, CObject* pData);
    /** @param pData gets a reference; may be null. @param pListener told after the center's; may be null. */
    void pushUserMessage(unsigned int uiID, CObject* pData, IMsgUserListener* pListener);
    /** Asks for a repaint, unless one of this target already ends the list it would join: then nobody is told. */
    void pushRenderMessage(unsigned int uiID);

    /** Takes the next message out; call its handleMessage. One thread only. @return empty if nothing waits. */
    CObjectPtr<CBaseMessage> popMessage();

    unsigned int getMessageCount();
    unsigned int getMessageCountByType(CBaseMessage::EMessageType eType);

    /** Deletes every waiting message with this ID, whatever its type. */
    void deleteMessageByID(unsigned int uiID);
    void deleteMessageByType(CBaseMessage::EMessageType eType);
    void deleteMessageByTypeAndID(CBaseMessage::EMessageType eType, unsigned int uiID);
    /** Deletes the waiting pulses of a timer, and the timer messages that are empty then. @param uiTimerID from
     *  CTimer::getID. */
    void deleteTimerMessage(unsigned int uiTimerID);
    /** Deletes every waiting message. */
    void clearMessageList();

    /** Closes the center to new messages: from now on they are deleted. Taking out goes on. No lock is held. */
    void lock() noexcept { m_bLocked = true; }
    /** Opens the center again. */
    void unlock() noexcept { m_bLocked = false; }
    bool isLocked() const noexcept { return m_bLocked; }

    bool isCtrlKeyPress() const noexcept { return m_bCtrlKeyPress; }
    bool isShiftKeyPress() const noexcept { return m_bShiftKeyPress; }
    bool isAltKeyPress() const noexcept { return m_bAltKeyPress; }

    // The steps of the above on single lists. They walk with the list's own cursor, so the caller holds the lock. They
    // take a message over whatever its type, tell nobody, and ignore null.

    void pushSystemMessage(CBaseMessage* pMessage);
    void pushInputMessage(CBaseMessage* pMessage);
    void pushDataMessage(CBaseMessage* pMessage);
    /** Folds a timer message into the list's tail if that is one too. */
    void pushTimerMessage(CBaseMessage* pMessage);
    /** Appends to the system list, on purpose: a message between parts of the application outranks all input. */
    void pushUserMessage(CBaseMessage* pMessage);
    /** Appends a repaint, or deletes it if the tail is one of the same target.
     *  @param bPurge first deletes earlier repaints of the target, the tail left out. */
    void pushRenderMessage(CObjectList<CBaseMessage>& lstMessage, CBaseMessage* pMessage, bool bPurge);
    /** @return whether the repaints that end the list include one of this target. */
    bool hasRenderMessageAtLast(CObjectList<CBaseMessage>& lstMessage, unsigned int uiID);
    unsigned int getMessageCountByType(CObjectList<CBaseMessage>& lstMessage, CBaseMessage::EMessageType eType);
    void deleteMessageByID(CObjectList<CBaseMessage>& lstMessage, unsigned int uiID);
    void deleteMessageByType(CObjectList<CBaseMessage>& lstMessage, CBaseMessage::EMessageType eType);
    void deleteMessageByTypeAndID(CObjectList<CBaseMessage>& lstMessage, CBaseMessage::EMessageType eType,
                                  unsigned int uiID);

protected:
    IMessageCenterListener* m_pListener; // not owned
    // The five lists own their messages and are guarded by m_syncObject.
    CObjectList<CBaseMessage> m_lstSystem; // system, quit and user messages: served first
    CObjectList<CBaseMessage> m_lstInput;
    CObjectList<CBaseMessage> m_lstData;
    CObjectList<CBaseMessage> m_lstTimer;
    CObjectList<CBaseMessage> m_lstUser; // repaints only
    unsigned int m_eLastList;            // the list that the next repaint joins, numbered as in tagMessageListInfo
    CDataArray<tagMessageListInfo> m_arrListInfo; // of the popping thread, ascending by time span after each weighing
    CSyncObject m_syncObject;
    bool m_bLocked; // closed to new messages; this and the keys are plain fields without a lock
    bool m_bCtrlKeyPress;
    bool m_bShiftKeyPress;
    bool m_bAltKeyPress;

    static CMessageCenter* s_pInstance;

private:
    bool m_bInputUnpurged; // a single step has put a repaint among the input that may repeat one

    CBaseMessage* route(CBaseMessage* pMessage, CObjectList<CBaseMessage>& lstDropped);
    CBaseMessage* join(CObjectList<CBaseMessage>& lstMessage, unsigned int uiListType, CBaseMessage* pMessage);
    CBaseMessage* joinTimer(CBaseMessage* pMessage);
    CBaseMessage* joinRender(CObjectList<CBaseMessage>& lstMessage, CBaseMessage* pMessage, bool bPurge,
                             CObjectList<CBaseMessage>& lstDropped);
    void takeEarlierRenders(CObjectList<CBaseMessage>& lstMessage, unsigned int uiID,
                            CObjectList<CBaseMessage>& lstDropped);
    template <class TMatch> void deleteMatching(const TMatch& match);
    CObjectList<CBaseMessage>& getList(unsigned int uiListType) noexcept;
    void updateModifier(unsigned int uiKey, unsigned int uiState) noexcept;
    void weighLists(unsigned int uiNow);
    void sortListInfo();
};
} // namespace Orlix
