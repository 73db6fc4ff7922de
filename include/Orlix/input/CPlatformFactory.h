#pragma once

#include <Orlix/foundation/CObject.h>

namespace Orlix {

class CSurface;
class IPlatformFactory;
class ISurface;

/** Where the platform library registers what makes its surfaces. Threads: the host thread, before input starts. */
class ORLIX_API CPlatformFactory {
    ORLIX_HEAP_CLASS(L"CPlatformFactory")

public:
    CPlatformFactory() noexcept : m_pFactory(nullptr) {}
    CPlatformFactory(const CPlatformFactory&) = delete;
    CPlatformFactory& operator=(const CPlatformFactory&) = delete;
    /** Leaves the registered factory alone. */
    virtual ~CPlatformFactory();

    /** The one registry, made by the first call. Not synchronised. */
    static CPlatformFactory* getInstance();
    /** Deletes the registry, if there is one. Not synchronised. */
    static void deleteInstance();

    /** @param pFactory not owned, and replaces an earlier one; null for none. */
    void registerFactory(IPlatformFactory* pFactory) noexcept { m_pFactory = pFactory; }
    /** @return what the factory makes, for the caller to delete; null without a factory. */
    ISurface* createSurface(CSurface* pSurface);

protected:
    IPlatformFactory* m_pFactory; // not owned

    static CPlatformFactory* s_pInstance;
};
} // namespace Orlix
