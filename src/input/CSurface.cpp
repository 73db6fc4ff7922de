#include <Orlix/input/CSurface.h>

#include <Orlix/formats/CConfigParser.h>
#include <Orlix/input/CPlatformFactory.h>
#include <Orlix/messaging/CMessageCenter.h>

#include "foundation/StaticOrder.h"

namespace Orlix {
namespace {

// A touch on a number that nobody has opened makes its surface, so a number from outside must not cost memory without
// bound.
constexpr unsigned int NUMBER_END = 65536;

/** Appends nulls until there is a place of this number. @return false without memory. */
bool ensurePlace(CObjectArray<CSurface>& arySurface, unsigned int uiIndex) {
    arySurface.ensureCapacity(uiIndex + 1);
    for (unsigned int uiSize = arySurface.getSize(); uiSize <= uiIndex; ++uiSize) {
        arySurface.add(nullptr);
        if (arySurface.getSize() == uiSize)
            return false;
    }
    return true;
}
} // namespace

ORLIX_STATIC_SURFACE CObjectArray<CSurface> CSurface::s_aryInstance;

CSurface* CSurface::getInstance(unsigned int uiIndex, bool bCreatePlatform) {
    CSurface* const pSurface = s_aryInstance[uiIndex];
    return pSurface ? pSurface : create(uiIndex, bCreatePlatform);
}

CSurface* CSurface::create(unsigned int uiIndex, bool bCreatePlatform) {
    if (uiIndex >= NUMBER_END || !ensurePlace(s_aryInstance, uiIndex))
        return nullptr;
    CSurface* const pSurface = new CSurface(uiIndex, bCreatePlatform);
    s_aryInstance.setAt(uiIndex, pSurface);
    return pSurface;
}

void CSurface::deleteInstance() { s_aryInstance.clear(); }

CSurface::CSurface(unsigned int uiIndex, bool bCreatePlatform)
    : m_pListener(nullptr), m_uiSurfaceIndex(uiIndex), m_iX(0), m_iY(0), m_uiWidth(0), m_uiHeight(0), m_pImp(nullptr) {
    if (bCreatePlatform)
        m_pImp = CPlatformFactory::getInstance()->createSurface(this);
}

CSurface::~CSurface() { delete m_pImp; }

bool CSurface::initialize() {
    if (!m_pImp)
        return false;
    const CConfigParser::tagSurface* const pRecord = CConfigParser::getInstance()->getSurfaceByIndex(m_uiSurfaceIndex);
    if (!pRecord)
        return false;
    m_iX = pRecord->offset_x;
    m_iY = pRecord->offset_y;
    m_uiWidth = pRecord->width;
    m_uiHeight = pRecord->height;
    m_cursorManager.initialize();
    return m_pImp->initialize();
}

void CSurface::unInitialize() {
    if (m_pImp)
        m_pImp->unInitialize();
    m_cursorManager.unInitialize();
}

void CSurface::setTransparency(bool bTransparent, ISurface::EReceiveTouch eReceiveTouch) {
    if (m_pImp)
        m_pImp->setTransparency(bTransparent, eReceiveTouch);
}

void CSurface::setSurfaceName(const CString& strName) {
    if (m_pImp)
        m_pImp->setSurfaceName(strName);
}

int CSurface::getSurfaceX() {
    refreshPosition();
    return m_iX;
}

int CSurface::getSurfaceY() {
    refreshPosition();
    return m_iY;
}

void CSurface::refreshPosition() {
    if (m_pImp)
        m_pImp->refreshSurfacePos();
}

void CSurface::notifyQuitSurface() { CMessageCenter::getInstance()->pushQuitMessage(); }

void CSurface::notifyPaintSurface() { CMessageCenter::getInstance()->pushRenderMessage(m_uiSurfaceIndex); }

void CSurface::notifyAppStateChange(ISurfaceListener::EAppState eState) {
    if (ISurfaceListener* const pListener = m_pListener) // read once: another thread may be taking it away
        pListener->onAppStateChange(eState);
}

void CSurface::notifyRenderStateChange(ISurfaceListener::ERenderState eState) {
    if (ISurfaceListener* const pListener = m_pListener)
        pListener->onRenderStateChange(m_uiSurfaceIndex, eState);
}

void CSurface::notifySurfacePosChange(int iX, int iY) noexcept {
    m_iX = iX;
    m_iY = iY;
}

void CSurface::notifySurfaceSizeChange(unsigned int uiWidth, unsigned int uiHeight) noexcept {
    m_uiWidth = uiWidth;
    m_uiHeight = uiHeight;
}
} // namespace Orlix
