#pragma once

#include <Orlix/foundation/OrlixApi.h>

namespace Orlix {

class CString;

/** The platform's half of a surface: all that touches a display. A platform library implements it.
 *
 *  The surface owns it. It tells what happens on the display by the notify operations of its CSurface. */
class ORLIX_API ISurface {
public:
    /** Whether and how a transparent surface takes touches; the platform library names the values. */
    enum EReceiveTouch : unsigned int {};

    virtual ~ISurface() = default;
    /** Brings the surface up on the display. @return whether it is up. */
    virtual bool initialize() = 0;
    virtual void unInitialize() = 0;
    /** Called before each read of the position; a change goes to CSurface::notifySurfacePosChange. */
    virtual void refreshSurfacePos() = 0;
    virtual void setTransparency(bool bTransparent, EReceiveTouch eReceiveTouch) = 0;
    /** Gives the surface its title. */
    virtual void setSurfaceName(const CString& strName) = 0;
};
} // namespace Orlix
