#include <Orlix/input/CPlatformFactory.h>

#include <Orlix/input/IPlatformFactory.h>

namespace Orlix {

CPlatformFactory* CPlatformFactory::s_pInstance = nullptr;

CPlatformFactory::~CPlatformFactory() = default;

CPlatformFactory* CPlatformFactory::getInstance() {
    if (!s_pInstance)
        s_pInstance = new CPlatformFactory;
    return s_pInstance;
}

void CPlatformFactory::deleteInstance() {
    delete s_pInstance;
    s_pInstance = nullptr;
}

ISurface* CPlatformFactory::createSurface(CSurface* pSurface) {
    return m_pFactory ? m_pFactory->createSurface(pSurface) : nullptr;
}
} // namespace Orlix
