#pragma once

#include <Orlix/foundation/OrlixApi.h>

namespace Orlix {

/** Told of a surface's states directly, on the platform's thread that reports them and without a lock. */
class ORLIX_API ISurfaceListener {
public:
    // Handed through; the layer above this library names the values.
    enum EAppState : unsigned int {};
    enum ERenderState : unsigned int {};

    virtual ~ISurfaceListener() = default;
    /** Names no surface, on purpose: it is the application's state. */
    virtual void onAppStateChange(EAppState eState) = 0;
    virtual void onRenderStateChange(unsigned int uiSurfaceIndex, ERenderState eState) = 0;
};
} // namespace Orlix
