#pragma once

#include <Orlix/input/IPlatformFactory.h>

/** A platform without a display: its surfaces come up at once and stay where the configuration puts them. */
class CHeadlessPlatform : public Orlix::IPlatformFactory {
public:
    /** @return a new surface, owned by the caller. */
    Orlix::ISurface* createSurface(Orlix::CSurface* pSurface) override;
};
