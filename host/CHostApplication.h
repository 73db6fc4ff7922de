#pragma once

#include <Orlix/foundation/CWaitObject.h>
#include <Orlix/messaging/IMessageCenterListener.h>

/** The host's side of the library: owns the loop, receives every message and prints it.
 *
 *  Threads: everything on the host thread, but onMessageAvailable. */
class CHostApplication : public Orlix::IMessageCenterListener {
public:
    /** Creates the center and becomes its listener. */
    CHostApplication();
    /** Deletes the center; every thread that posts must have ended. */
    ~CHostApplication() override;

    /** Handles messages until a quit message, asleep while there are none. */
    void runLoop();

    /** The last line: what was handled, and in how many milliseconds since the construction. */
    void printSummary() const;

    void onHandleQuitMessage() override;
    void onHandleRenderMessage(unsigned int uiID) override;
    void onHandleIMEMessage(const Orlix::CString& strText) override;
    void onHandleLogicEventMessage(unsigned int uiID) override;
    void onMessageAvailable() override;

private:
    void sleepUntilMessage();

    Orlix::CWaitObject m_waitMessage; // notified by every push
    unsigned int m_uiStartTick;
    unsigned int m_uiLines = 0;
    unsigned int m_uiRenders = 0;
    bool m_bQuit = false;
};
