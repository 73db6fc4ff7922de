#pragma once

#include <Orlix/input/CSurface.h>
#include <Orlix/input/IPlatformFactory.h>
#include <Orlix/input/ISurface.h>

#include "messaging/RecordingListener.h"

#include <string>
#include <vector>

namespace OrlixTest {

/** A platform's half that writes down its calls. */
class CSurfaceStandIn : public Orlix::ISurface {
    ORLIX_HEAP_CLASS(L"CSurfaceStandIn")

public:
    CSurfaceStandIn(Orlix::CSurface* pSurface, VecCall& vecCall) : m_pSurface(pSurface), m_vecCall(vecCall) {}
    ~CSurfaceStandIn() override { m_vecCall.push_back(L"gone"); }

    bool initialize() override {
        m_vecCall.push_back(L"initialize");
        return m_bSucceed;
    }
    void unInitialize() override { m_vecCall.push_back(L"unInitialize"); }
    void refreshSurfacePos() override {
        m_vecCall.push_back(L"refresh");
        m_pSurface->notifySurfacePosChange(m_iX, m_iY);
    }
    void setTransparency(bool bTransparent, EReceiveTouch eReceiveTouch) override {
        m_vecCall.push_back((bTransparent ? L"transparent " : L"opaque ") + std::to_wstring(eReceiveTouch));
    }
    void setSurfaceName(const Orlix::CString& strName) override { m_vecCall.push_back(L"name " + toText(strName)); }

    bool m_bSucceed = true;
    int m_iX = 0;
    int m_iY = 0;

private:
    Orlix::CSurface* m_pSurface;
    VecCall& m_vecCall;
};

class CFactoryStandIn : public Orlix::IPlatformFactory {
public:
    explicit CFactoryStandIn(VecCall& vecCall) : m_vecCall(vecCall) {}
    Orlix::ISurface* createSurface(Orlix::CSurface* pSurface) override {
        m_vecFor.push_back(pSurface);
        return m_pLast = new CSurfaceStandIn(pSurface, m_vecCall);
    }

    std::vector<Orlix::CSurface*> m_vecFor; // the surfaces that asked
    CSurfaceStandIn* m_pLast = nullptr;     // owned by its surface

private:
    VecCall& m_vecCall;
};
} // namespace OrlixTest
