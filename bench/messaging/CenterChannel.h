#pragma once

#include <Orlix/foundation/CString.h>
#include <Orlix/foundation/CWaitObject.h>
#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/messaging/IMessageCenterListener.h>

#include "messaging/CFloorCenter.h"
#include "support/Channel.h"

// The center and its floor as channels: see support/Channel.h.

/** What a host waits on between messages. */
class CHostListener : public Orlix::IMessageCenterListener {
public:
    void onHandleUserMessage(unsigned int, Orlix::CObject*) override { g_receiver.onMessage(); }
    void onHandleLogicEventMessage(unsigned int) override { g_receiver.onMessage(); }
    void onMessageAvailable() override { m_waitMessage.notify(); }
    void wait() { m_waitMessage.wait(0); }

private:
    Orlix::CWaitObject m_waitMessage{Orlix::STRING_NULL};
};

/** Takes the messages of any center, that of the library or its floor. @tparam TSource has pop, which handles one
 *  message or gives false, and wait. */
template <class TSource> void receiveFrom(TSource& source) {
    while (g_receiver.uiLeft != 0) {
        if (!source.pop())
            source.wait();
    }
}

/** The center as a host uses it. */
template <class TListener = CHostListener> class CCenterChannel {
public:
    CCenterChannel() { Orlix::CMessageCenter::getInstance()->setListener(&m_listener); }
    ~CCenterChannel() { Orlix::CMessageCenter::deleteInstance(); }
    CCenterChannel(const CCenterChannel&) = delete;
    CCenterChannel& operator=(const CCenterChannel&) = delete;

    bool pop() {
        const auto ptrMessage = Orlix::CMessageCenter::getInstance()->popMessage();
        if (ptrMessage)
            ptrMessage->handleMessage();
        return !ptrMessage.isEmpty();
    }
    void wait() { m_listener.wait(); }
    void take() { pop(); }
    void receive() { receiveFrom(*this); }

protected:
    TListener m_listener;
};

/** Messages of the weighed lists. */
class OrlixWeighedCenter : public CCenterChannel<> {
public:
    void post() { Orlix::CMessageCenter::getInstance()->pushLogicEventMessage(1); }
};

template <bool TWeighed> class FloorCenter {
public:
    void post() { m_center.push(); }
    void take() { m_center.pop(); }
    void receive() { receiveFrom(m_center); }

private:
    CFloorCenter<TWeighed> m_center{[] { g_receiver.onMessage(); }};
};
