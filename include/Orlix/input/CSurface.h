#pragma once

#include <Orlix/foundation/CObjectArray.h>
#include <Orlix/input/CCursorManager.h>
#include <Orlix/input/ISurface.h>
#include <Orlix/input/ISurfaceListener.h>

namespace Orlix {

/** One display area, numbered from 0 in the order of the configuration: it tracks the touches on it, and hands what the
 *  platform reports on to the engine.
 *
 *  Without a platform's half, that is without a factory, it still tracks touches and answers; what needs the platform
 *  quietly does nothing.
 *  Threads: create and initialise surfaces on the host thread before their input starts. The notify operations are for
 *  the platform's thread; position and size are plain fields that it writes and the engine reads without a lock. */
class ORLIX_API CSurface {
    ORLIX_HEAP_CLASS(L"CSurface")

public:
    /** The surface of a number, made by the first call. Not synchronised.
     *  @param bCreatePlatform plays no part for a surface that exists.
     *  @return null without memory and for numbers of 65536 and above. */
    static CSurface* getInstance(unsigned int uiIndex, bool bCreatePlatform);
    /** Deletes all surfaces. Not synchronised. */
    static void deleteInstance();

    /** @param bCreatePlatform asks the registered factory for the platform's half. */
    CSurface(unsigned int uiIndex, bool bCreatePlatform);
    CSurface(const CSurface&) = delete;
    CSurface& operator=(const CSurface&) = delete;
    virtual ~CSurface();

    /** Takes position and size from the configuration, which must be loaded, and brings the platform's half up.
     *  Whether touches are taken is not read there: see setEnable.
     *  @return false without a platform's half, without a record of this number, or if the platform fails. */
    bool initialize();
    /** Takes the platform's half down and forgets all fingers that are down. */
    void unInitialize();

    void setTransparency(bool bTransparent, ISurface::EReceiveTouch eReceiveTouch);
    /** Gives the surface its title. */
    void setSurfaceName(const CString& strName);

    /** @param pListener told of state changes, not owned; null for nobody. */
    void setSurfaceListener(ISurfaceListener* pListener) noexcept { m_pListener = pListener; }
    /** Still owned here; never null. */
    CCursorManager* getCursorManager() noexcept { return &m_cursorManager; }
    /** @param pListener gets the touches, not owned; null for nobody. */
    void setTouchListener(ITouchListener* pListener) noexcept { m_cursorManager.setTouchListener(pListener); }
    /** Takes touches or ignores them, as at first. */
    void setEnable(bool bEnable) noexcept { m_cursorManager.setEnable(bEnable); }

    unsigned int getSurfaceIndex() const noexcept { return m_uiSurfaceIndex; }
    /** Pixels; 0 before initialize. */
    unsigned int getSurfaceWidth() const noexcept { return m_uiWidth; }
    unsigned int getSurfaceHeight() const noexcept { return m_uiHeight; }
    /** Pixels on the display, brought up to date by the platform first; 0 before initialize. */
    int getSurfaceX();
    int getSurfaceY();
    /** The platform's half as it is, for code that knows the platform; still owned here, may be null. */
    void* getSurfaceParam() const noexcept { return m_pImp; }

    /** Asks the host to quit by a message, which names no surface. */
    void notifyQuitSurface();
    /** Asks for a repaint of this surface by a message. */
    void notifyPaintSurface();
    /** Calls the listener at once, on this thread. */
    void notifyAppStateChange(ISurfaceListener::EAppState eState);
    /** Calls the listener at once, on this thread. */
    void notifyRenderStateChange(ISurfaceListener::ERenderState eState);
    void notifySurfacePosChange(int iX, int iY) noexcept;
    void notifySurfaceSizeChange(unsigned int uiWidth, unsigned int uiHeight) noexcept;

protected:
    ISurfaceListener* m_pListener; // not owned
    CCursorManager m_cursorManager;
    unsigned int m_uiSurfaceIndex;
    int m_iX;
    int m_iY;
    unsigned int m_uiWidth;
    unsigned int m_uiHeight;
    ISurface* m_pImp; // owned; may be null

    static CObjectArray<CSurface> s_aryInstance; // by number; null where no surface is yet

private:
    static CSurface* create(unsigned int uiIndex, bool bCreatePlatform);
    void refreshPosition();
};
} // namespace Orlix
