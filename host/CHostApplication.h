#pragma once

#include "CHeadlessPlatform.h"
#include "CTouchPrinter.h"
#include "CTouchStatistics.h"

#include <Orlix/foundation/CWaitObject.h>
#include <Orlix/input/ISurfaceListener.h>
#include <Orlix/messaging/IMessageCenterListener.h>

/** The host's side of the library: brings its parts up and down in their order, owns the loop, receives every message
 *  and prints it. Load the configuration before.
 *
 *  Threads: everything on the host thread, but onMessageAvailable. */
class CHostApplication : public Orlix::IMessageCenterListener, public Orlix::ISurfaceListener {
public:
    /** Takes the center, becomes its listener and registers the platform. */
    CHostApplication();
    /** Takes everything down again; every thread of the host's own that posts must have ended. */
    ~CHostApplication() override;

    /** Brings up every surface of the configuration, with touch where it says so, and starts the timers.
     *  @return false, after one line on stderr, if a surface cannot be brought up. */
    bool start();

    /** Gives the touches to another listener than the one that prints them. Before start.
     *  @param listener outlives the loop. */
    void setTouchListener(Orlix::ITouchListener& listener) noexcept { m_pTouchListener = &listener; }

    /** Handles messages until a quit message, asleep while there are none. */
    void runLoop();

    /** The last line of a text: what was handled, and in how many milliseconds since the construction. */
    void printTextSummary() const;

    CTouchStatistics& getTouchStatistics() noexcept { return m_statistics; }

    void onHandleQuitMessage() override;
    void onHandleRenderMessage(unsigned int uiID) override;
    void onHandleIMEMessage(const Orlix::CString& strText) override;
    void onHandleLogicEventMessage(unsigned int uiID) override;
    void onMessageAvailable() override;

    // Never called: the headless platform has no window that could change.
    void onAppStateChange(EAppState) override {}
    void onRenderStateChange(unsigned int, ERenderState) override {}

private:
    bool startSurface(unsigned int uiIndex);
    void sleepUntilMessage();

    Orlix::CWaitObject m_waitMessage; // notified by every push
    CHeadlessPlatform m_platform;
    CTouchStatistics m_statistics;
    CTouchPrinter m_touchPrinter;
    Orlix::ITouchListener* m_pTouchListener = &m_touchPrinter; // of every surface
    unsigned int m_uiSurfaces = 0;                             // brought up, from the first on
    unsigned int m_uiStartTick;
    unsigned int m_uiLines = 0;
    unsigned int m_uiRenders = 0;
    bool m_bQuit = false;
};
