#pragma once

#include <Orlix/foundation/OrlixApi.h>

namespace Orlix {

class CSurface;
class ISurface;

/** Makes the platform's halves of surfaces. A platform library implements it and registers it at CPlatformFactory. */
class ORLIX_API IPlatformFactory {
public:
    virtual ~IPlatformFactory() = default;
    /** @param pSurface under construction yet; keep the pointer, and call it later.
     *  @return a new object, which the surface deletes; null for a surface without a platform's half. */
    virtual ISurface* createSurface(CSurface* pSurface) = 0;
};
} // namespace Orlix
