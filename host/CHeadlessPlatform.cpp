#include "CHeadlessPlatform.h"

#include <Orlix/foundation/CObject.h>
#include <Orlix/input/ISurface.h>

using namespace Orlix;

namespace {

/** Nothing to bring up and nothing to show. */
class CHeadlessSurface : public ISurface {
    ORLIX_HEAP_CLASS(L"CHeadlessSurface")

public:
    bool initialize() override { return true; }
    void unInitialize() override {}
    void refreshSurfacePos() override {}
    void setTransparency(bool, EReceiveTouch) override {}
    void setSurfaceName(const CString&) override {}
};
} // namespace

ISurface* CHeadlessPlatform::createSurface(CSurface*) { return new CHeadlessSurface; }
