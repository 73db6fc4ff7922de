#pragma once

#include <Orlix/foundation/CObject.h>
#include <Orlix/foundation/CObjectPtr.h>
#include <Orlix/foundation/CString.h>

namespace Orlix {

/** Root of the messages: one event on its way from the thread that produced it to the host thread.
 *
 *  A message belongs to one thread at a time: to the posting thread until CMessageCenter::pushMessage, to the center
 *  while it waits, to the host thread after popMessage. It holds one reference on its attached object. */
class ORLIX_API CBaseMessage : public CObject {
    ORLIX_HEAP_CLASS(L"CBaseMessage")

public:
    /** The decades are the center's routing classes, so the numbers are a contract. */
    enum EMessageType : unsigned int {
        MESSAGE_UNKNOWN = 0,
        MESSAGE_RENDER = 1,
        MESSAGE_SYSTEM = 10,
        MESSAGE_QUIT = 11,
        MESSAGE_TOUCH = 20,
        MESSAGE_GESTURE = 21,
        MESSAGE_HARDKEY = 22,
        MESSAGE_IME = 23,
        MESSAGE_LOGIC_EVENT = 24,
        MESSAGE_VOICE_CONTENT = 25,
        MESSAGE_DATA_CONTEXT = 31,
        MESSAGE_SHARE_MEMORY = 32,
        MESSAGE_DATA_TRANSFER = 33,
        MESSAGE_HTTP_CONNECTOR = 34,
        MESSAGE_WEB_BROWSER = 35,
        MESSAGE_TIMER = 40,
        MESSAGE_USER = 50
    };

    CBaseMessage(const CBaseMessage&) = delete;
    CBaseMessage& operator=(const CBaseMessage&) = delete;
    ~CBaseMessage() override;

    /** Delivers the message to its receivers. Called by the host after popMessage, on the host thread, without a lock.
     */
    virtual void handleMessage() = 0;

    EMessageType getType() const noexcept { return m_eType; }

    /** @return the type in words, such as "Logic Event"; blank for a number that is no type. */
    CString getTypeName() const;

    /** What the number identifies depends on the class; 0 at first. */
    void setID(unsigned int uiID) noexcept { m_uiID = uiID; }
    unsigned int getID() const noexcept { return m_uiID; }

    /** Replaces the attached object; the one that is attached already stays as it is.
     *  @param pData gets a reference; null detaches. */
    void setData(CObject* pData) { m_ptrData = pData; }

    /** The attached object with one more reference; empty if there is none. */
    CObjectPtr<CObject> getData() const { return m_ptrData; }

protected:
    /** @param pData gets a reference; may be null. */
    explicit CBaseMessage(EMessageType eType = MESSAGE_UNKNOWN, unsigned int uiID = 0,
                          CObject* pData = nullptr) noexcept
        : m_eType(eType), m_uiID(uiID), m_ptrData(pData) {}

    EMessageType m_eType;
    unsigned int m_uiID;
    CObjectPtr<CObject> m_ptrData;
};
} // namespace Orlix
