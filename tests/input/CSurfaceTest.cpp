#include <Orlix/input/CSurface.h>

#include <Orlix/formats/CConfigParser.h>
#include <Orlix/input/CPlatformFactory.h>
#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/messaging/CMessageCenterProxy.h>
#include <Orlix/threading/CTime.h>
#include <Orlix/threading/CTimerManager.h>

#include "input/SurfaceStandIn.h"
#include "input/TouchRecorder.h"
#include "support/ChildProcess.h"
#include "support/MemoryLimit.h"
#include "support/Sanitizer.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <climits>
#include <thread>

using namespace Orlix;
using namespace OrlixTest;

namespace {

/** Opens the fields to the tests. */
class COpenSurface : public CSurface {
public:
    using CSurface::CSurface;
    static CObjectArray<CSurface>& getInstances() { return s_aryInstance; }
    CSurfaceStandIn* getStandIn() const { return static_cast<CSurfaceStandIn*>(m_pImp); }
};

class CStateListener : public ISurfaceListener {
public:
    explicit CStateListener(VecCall& vecCall) : m_vecCall(vecCall) {}
    void onAppStateChange(EAppState eState) override {
        m_thread = std::this_thread::get_id();
        m_vecCall.push_back(L"app " + std::to_wstring(eState));
    }
    void onRenderStateChange(unsigned int uiSurfaceIndex, ERenderState eState) override {
        m_thread = std::this_thread::get_id();
        m_vecCall.push_back(L"render " + std::to_wstring(uiSurfaceIndex) + L" " + std::to_wstring(eState));
    }
    std::thread::id m_thread;

private:
    VecCall& m_vecCall;
};

class CSurfaceTest : public ::testing::Test {
protected:
    ~CSurfaceTest() override {
        CSurface::deleteInstance();
        CPlatformFactory::deleteInstance();
        CMessageCenter::deleteInstance();
        CTimerManager::deleteInstance();
        CConfigParser::deleteInstance();
    }

    void registerFactory() { CPlatformFactory::getInstance()->registerFactory(&m_factory); }

    static void configure() {
        const CTempFolder folder;
        writeWhole(folder / "engine.xml",
                   "<engine><surface_set>"
                   "<surface offset_x='-5' offset_y='7' width='800' height='480'/>"
                   "<surface offset_x='1' offset_y='2' width='3' height='4' enable_touch='true'/>"
                   "</surface_set></engine>");
        ASSERT_TRUE(CConfigParser::getInstance()->load(toText(folder / "engine.xml")));
    }

    VecCall take() {
        VecCall vecTaken;
        vecTaken.swap(m_vecCall);
        return vecTaken;
    }

    /** All that waits in the center, handled. */
    static void handleAll() {
        while (const auto ptrMessage = CMessageCenter::getInstance()->popMessage())
            ptrMessage->handleMessage();
    }

    VecCall m_vecCall;
    CFactoryStandIn m_factory{m_vecCall};
};

TEST_F(CSurfaceTest, StartsEmptyAndWithoutAPlatform) {
    COpenSurface surface(3, false);
    EXPECT_EQ(surface.getSurfaceIndex(), 3u);
    EXPECT_EQ(surface.getSurfaceWidth(), 0u);
    EXPECT_EQ(surface.getSurfaceHeight(), 0u);
    EXPECT_EQ(surface.getSurfaceX(), 0);
    EXPECT_EQ(surface.getSurfaceY(), 0);
    EXPECT_EQ(surface.getSurfaceParam(), nullptr);
    EXPECT_NE(surface.getCursorManager(), nullptr);
}

TEST_F(CSurfaceTest, TheConstructorAsksForAPlatformOnlyWhenTold) {
    registerFactory();
    const COpenSurface bare(1, false);
    EXPECT_EQ(m_factory.m_vecFor.size(), 0u);
    COpenSurface surface(1, true);
    EXPECT_EQ(m_factory.m_vecFor, std::vector<CSurface*>{&surface});
    EXPECT_EQ(surface.getSurfaceParam(), m_factory.m_pLast);
}

TEST_F(CSurfaceTest, TakesItsPlatformAlong) {
    registerFactory();
    { const COpenSurface surface(1, true); }
    EXPECT_EQ(m_vecCall, VecCall{L"gone"});
}

TEST_F(CSurfaceTest, GetInstanceFillsUpToTheNumberWithNulls) {
    const CSurface* const pThird = CSurface::getInstance(3, false);
    CObjectArray<CSurface>& aryInstance = COpenSurface::getInstances();
    EXPECT_EQ(aryInstance.getSize(), 4u);
    EXPECT_EQ(aryInstance.getCapacity(), 4u) << "by the series of the arrays";
    EXPECT_EQ(aryInstance.getAt(0), nullptr);
    EXPECT_EQ(aryInstance.getAt(1), nullptr);
    EXPECT_EQ(aryInstance.getAt(2), nullptr);
    EXPECT_EQ(aryInstance.getAt(3), pThird);
    EXPECT_EQ(pThird->getSurfaceIndex(), 3u);
    const CSurface* const pFirst = CSurface::getInstance(1, true);
    EXPECT_EQ(aryInstance.getSize(), 4u);
    EXPECT_EQ(aryInstance.getAt(1), pFirst);
    EXPECT_EQ(pFirst->getSurfaceIndex(), 1u);
    EXPECT_EQ(CSurface::getInstance(3, false), pThird);
}

TEST_F(CSurfaceTest, AnExistingSurfaceStaysAsItIs) {
    CSurface* const pSurface = CSurface::getInstance(0, false);
    registerFactory();
    EXPECT_EQ(CSurface::getInstance(0, true), pSurface);
    EXPECT_EQ(pSurface->getSurfaceParam(), nullptr) << "still without a platform, on purpose";
    EXPECT_EQ(CSurface::getInstance(1, true)->getSurfaceParam(), m_factory.m_pLast);
}

TEST_F(CSurfaceTest, NumbersEndAt65535) {
    EXPECT_NE(CSurface::getInstance(65535, false), nullptr);
    EXPECT_EQ(CSurface::getInstance(65536, true), nullptr);
    EXPECT_EQ(CSurface::getInstance(UINT_MAX, true), nullptr);
    EXPECT_EQ(COpenSurface::getInstances().getSize(), 65536u);
}

TEST_F(CSurfaceTest, DeleteInstanceDeletesAllAndMayComeTwice) {
    CSurface::deleteInstance();
    registerFactory();
    CSurface::getInstance(2, true);
    CSurface::getInstance(0, true);
    CSurface::deleteInstance();
    EXPECT_EQ(m_vecCall, (VecCall{L"gone", L"gone"}));
    EXPECT_EQ(COpenSurface::getInstances().getSize(), 0u);
    EXPECT_EQ(COpenSurface::getInstances().getCapacity(), 0u);
    CSurface::deleteInstance();
    EXPECT_EQ(CSurface::getInstance(0, false)->getSurfaceParam(), nullptr) << "a new one";
}

TEST_F(CSurfaceTest, InitializeNeedsAPlatform) {
    configure();
    CSurface* const pSurface = CSurface::getInstance(0, true); // no factory is registered
    EXPECT_FALSE(pSurface->initialize());
    EXPECT_EQ(pSurface->getSurfaceWidth(), 0u);
}

TEST_F(CSurfaceTest, InitializeNeedsARecord) {
    configure();
    registerFactory();
    EXPECT_FALSE(CSurface::getInstance(2, true)->initialize());
    EXPECT_EQ(m_vecCall, VecCall{});
}

TEST_F(CSurfaceTest, InitializeTakesTheRecordOfItsNumberAndThePlatformsResult) {
    configure();
    registerFactory();
    COpenSurface surface(0, true);
    surface.getStandIn()->m_iX = 100;
    surface.getStandIn()->m_iY = 200;
    EXPECT_TRUE(surface.initialize());
    EXPECT_EQ(take(), VecCall{L"initialize"});
    EXPECT_EQ(surface.getSurfaceWidth(), 800u);
    EXPECT_EQ(surface.getSurfaceHeight(), 480u);
    EXPECT_EQ(surface.getSurfaceX(), 100) << "the platform was asked first";
    EXPECT_EQ(take(), VecCall{L"refresh"});
    EXPECT_EQ(surface.getSurfaceY(), 200);
    EXPECT_EQ(take(), VecCall{L"refresh"});

    COpenSurface other(1, true);
    other.getStandIn()->m_bSucceed = false;
    EXPECT_FALSE(other.initialize());
    EXPECT_EQ(other.getSurfaceWidth(), 3u);
    EXPECT_EQ(other.getSurfaceHeight(), 4u);
}

TEST_F(CSurfaceTest, InitializeTakesThePositionToo) {
    class CQuietStandIn : public CSurfaceStandIn {
    public:
        using CSurfaceStandIn::CSurfaceStandIn;
        void refreshSurfacePos() override {}
    };
    class CQuietFactory : public CFactoryStandIn {
    public:
        explicit CQuietFactory(VecCall& vecCall) : CFactoryStandIn(vecCall), m_vecOwnCall(vecCall) {}
        ISurface* createSurface(CSurface* pSurface) override { return new CQuietStandIn(pSurface, m_vecOwnCall); }
        VecCall& m_vecOwnCall;
    } factory(m_vecCall);
    configure();
    CPlatformFactory::getInstance()->registerFactory(&factory);
    CSurface surface(0, true);
    EXPECT_TRUE(surface.initialize());
    EXPECT_EQ(surface.getSurfaceX(), -5);
    EXPECT_EQ(surface.getSurfaceY(), 7);
}

TEST_F(CSurfaceTest, InitializeDoesNotEnableTouches) {
    configure();
    registerFactory();
    CTouchRecorder recorder;
    CSurface* const pSurface = CSurface::getInstance(1, true); // its record says enable_touch
    pSurface->setTouchListener(&recorder);
    EXPECT_TRUE(pSurface->initialize());
    CMessageCenter::getInstance()->pushTouchMessage(1, 0, 10, 20, 0);
    EXPECT_EQ(CMessageCenter::getInstance()->getMessageCount(), 0u) << "that is the owner's business, on purpose";
}

TEST_F(CSurfaceTest, UnInitializeTakesThePlatformDownAndForgetsTheFingers) {
    registerFactory();
    CSurface* const pSurface = CSurface::getInstance(0, true);
    CTouchRecorder recorder;
    pSurface->setTouchListener(&recorder);
    pSurface->setEnable(true);
    CMessageCenter::getInstance()->pushTouchMessage(0, 5, 10, 20, 0);
    handleAll();
    EXPECT_EQ(recorder.take().size(), 1u);
    pSurface->unInitialize();
    EXPECT_EQ(m_vecCall, VecCall{L"unInitialize"});
    CMessageCenter::getInstance()->pushTouchMessage(0, 5, 10, 20, 2);
    handleAll();
    EXPECT_EQ(recorder.take(), VecTouch{});
}

TEST_F(CSurfaceTest, HandsTransparencyAndNameToThePlatform) {
    registerFactory();
    COpenSurface surface(0, true);
    surface.setTransparency(true, static_cast<ISurface::EReceiveTouch>(3));
    surface.setTransparency(false, static_cast<ISurface::EReceiveTouch>(UINT_MAX));
    surface.setSurfaceName(L"main");
    EXPECT_EQ(m_vecCall, (VecCall{L"transparent 3", L"opaque 4294967295", L"name main"}));
}

TEST_F(CSurfaceTest, WithoutAPlatformWhatNeedsItDoesNothing) {
    COpenSurface surface(0, true);
    surface.setTransparency(true, static_cast<ISurface::EReceiveTouch>(3));
    surface.setSurfaceName(L"main");
    surface.unInitialize();
    surface.notifySurfacePosChange(4, 5);
    EXPECT_EQ(surface.getSurfaceX(), 4);
    EXPECT_EQ(surface.getSurfaceY(), 5);
}

TEST_F(CSurfaceTest, NotificationsSetPositionAndSize) {
    COpenSurface surface(0, false);
    surface.notifySurfacePosChange(INT_MIN, INT_MAX);
    surface.notifySurfaceSizeChange(UINT_MAX, 1);
    EXPECT_EQ(surface.getSurfaceX(), INT_MIN);
    EXPECT_EQ(surface.getSurfaceY(), INT_MAX);
    EXPECT_EQ(surface.getSurfaceWidth(), UINT_MAX);
    EXPECT_EQ(surface.getSurfaceHeight(), 1u);
}

TEST_F(CSurfaceTest, StatesReachTheListenerAtOnceOnTheCallingThread) {
    COpenSurface surface(6, false);
    CStateListener listener(m_vecCall);
    surface.notifyAppStateChange(static_cast<ISurfaceListener::EAppState>(1));
    surface.notifyRenderStateChange(static_cast<ISurfaceListener::ERenderState>(2));
    EXPECT_EQ(m_vecCall, VecCall{}) << "nobody listens";
    surface.setSurfaceListener(&listener);
    std::thread platform([&surface] { surface.notifyAppStateChange(static_cast<ISurfaceListener::EAppState>(3)); });
    const std::thread::id idPlatform = platform.get_id();
    platform.join();
    EXPECT_EQ(take(), VecCall{L"app 3"}) << "it names no surface, on purpose";
    EXPECT_EQ(listener.m_thread, idPlatform);
    surface.notifyRenderStateChange(static_cast<ISurfaceListener::ERenderState>(4));
    EXPECT_EQ(take(), VecCall{L"render 6 4"});
    EXPECT_EQ(listener.m_thread, std::this_thread::get_id());
    surface.setSurfaceListener(nullptr);
    surface.notifyAppStateChange(static_cast<ISurfaceListener::EAppState>(5));
    EXPECT_EQ(take(), VecCall{});
}

TEST_F(CSurfaceTest, QuitAndPaintGoThroughTheCenter) {
    CRecordingListener listener(m_vecCall);
    CMessageCenter::getInstance()->setListener(&listener);
    COpenSurface surface(6, false);
    surface.notifyPaintSurface();
    surface.notifyQuitSurface();
    EXPECT_EQ(take(), VecCall{}) << "not before the host pops";
    handleAll();
    EXPECT_EQ(take(), (VecCall{L"quit", L"render 6"}));
}

/** The path of a touch from the platform to its listener. */
class CPushTouchTest : public CSurfaceTest {
protected:
    /** What the listener hears of the pushed touches, without their times. */
    VecTouch hear() {
        handleAll();
        VecTouch vecTouch = m_recorder.take();
        for (tagTouch& touch : vecTouch) {
            m_vecTime.push_back(touch.uiTimestamp);
            touch.uiTimestamp = 0;
        }
        return vecTouch;
    }
    CSurface* open(unsigned int uiIndex) {
        CSurface* const pSurface = CSurface::getInstance(uiIndex, true);
        pSurface->setTouchListener(&m_recorder);
        pSurface->setEnable(true);
        return pSurface;
    }
    CTouchRecorder m_recorder;
    std::vector<unsigned int> m_vecTime;
};

TEST_F(CPushTouchTest, StatesZeroToTwoArePressMoveAndRelease) {
    CMessageCenter* const pCenter = CMessageCenter::getInstance();
    open(2);
    CTime::getTickCount();
    const unsigned int uiBefore = CTime::getTickCount();
    pCenter->pushTouchMessage(2, 9, 10, 20, 0);
    pCenter->pushTouchMessage(2, 9, 11, 22, 1);
    pCenter->pushTouchMessage(2, 9, 12, 24, 2);
    const VecTouch vecTouch = hear();
    ASSERT_EQ(vecTouch.size(), 3u);
    EXPECT_EQ(vecTouch[0], (tagTouch{tagTouch::PRESS, 9, 10, 20, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(vecTouch[1], (tagTouch{tagTouch::MOVE, 9, 11, 22, 1, 2, 0, 0, 0, 0}));
    EXPECT_EQ(vecTouch[2].uiOperation, unsigned{tagTouch::RELEASE});
    EXPECT_EQ(vecTouch[2].iX, 12);
    EXPECT_EQ(vecTouch[2].iYDelta, 4);
    const unsigned int uiSpan = CTime::getTickCount() - uiBefore;
    for (const unsigned int uiTime : m_vecTime)
        EXPECT_LE(uiTime - uiBefore, uiSpan) << "the present time";
}

TEST_F(CPushTouchTest, OtherStatesAreIgnored) {
    open(0);
    CMessageCenter::getInstance()->pushTouchMessage(0, 9, 10, 20, 0);
    for (const unsigned int uiState : {3u, 4u, UINT_MAX})
        CMessageCenter::getInstance()->pushTouchMessage(0, 9, 10, 20, uiState);
    EXPECT_EQ(hear(), (VecTouch{{tagTouch::PRESS, 9, 10, 20, 0, 0, 0, 0, 0, 0}}));
}

TEST_F(CPushTouchTest, ATouchMakesTheSurfaceWithItsPlatformAndIsIgnored) {
    registerFactory();
    CMessageCenter::getInstance()->pushTouchMessage(4, 9, 10, 20, 0);
    ASSERT_EQ(COpenSurface::getInstances().getSize(), 5u);
    ASSERT_NE(COpenSurface::getInstances().getAt(4), nullptr);
    EXPECT_EQ(COpenSurface::getInstances().getAt(4)->getSurfaceParam(), m_factory.m_pLast);
    EXPECT_EQ(CMessageCenter::getInstance()->getMessageCount(), 0u);
    CMessageCenter::getInstance()->pushTouchMessage(7, 9, 10, 20, 99);
    EXPECT_NE(COpenSurface::getInstances().getAt(7), nullptr) << "whatever the state";
}

TEST_F(CPushTouchTest, ASurfaceThatCannotBeIsIgnored) {
    for (const unsigned int uiState : {0u, 1u, 2u, 3u})
        CMessageCenter::getInstance()->pushTouchMessage(65536, 9, 10, 20, uiState);
    EXPECT_EQ(CMessageCenter::getInstance()->getMessageCount(), 0u);
    EXPECT_EQ(COpenSurface::getInstances().getSize(), 0u);
}

TEST_F(CPushTouchTest, SurfacesTrackApart) {
    CTouchRecorder other;
    open(0);
    open(1)->setTouchListener(&other);
    CMessageCenter::getInstance()->pushTouchMessage(0, 9, 10, 20, 0);
    CMessageCenter::getInstance()->pushTouchMessage(1, 9, 30, 40, 0);
    CMessageCenter::getInstance()->pushTouchMessage(1, 9, 31, 41, 1);
    EXPECT_EQ(hear(), (VecTouch{{tagTouch::PRESS, 9, 10, 20, 0, 0, 0, 0, 0, 0}}));
    EXPECT_EQ(other.take().size(), 2u);
}

TEST_F(CPushTouchTest, TouchesWaitInTheInputList) {
    class COpenCenter : public CMessageCenter {
    public:
        static unsigned int countInput() { return (getInstance()->*(&COpenCenter::m_lstInput)).getSize(); }
    };
    open(0);
    CMessageCenter::getInstance()->pushTouchMessage(0, 9, 10, 20, 0);
    EXPECT_EQ(COpenCenter::countInput(), 1u);
}

TEST_F(CPushTouchTest, TheProxyPostsNothing) {
    open(0);
    CMessageCenterProxy::pushTouchMessage(0, 9, 10, 20, 0);
    EXPECT_EQ(hear(), VecTouch{}) << "inert on purpose";
    CMessageCenterProxy::pushTouchMessage(3, 9, 10, 20, 0);
    EXPECT_EQ(COpenSurface::getInstances().getSize(), 1u);
}

#if !defined(ORLIX_TEST_ASAN) && !defined(ORLIX_TEST_TSAN) // both end the process when memory runs out
TEST_F(CPushTouchTest, WithoutMemoryForASurfaceItsTouchIsIgnored) {
    open(0);
    const tagChildResult result = runInChild([] {
        if (!limitMemory(4000000))
            return 1;
        useUpMemory();
        CMessageCenter::getInstance()->pushTouchMessage(60000, 9, 10, 20, 0);
        if (COpenSurface::getInstances().getSize() > 60000)
            return 2;
        return unlimitMemory() && CSurface::getInstance(60000, false) ? 0 : 3;
    });
    EXPECT_EQ(result.iExitCode, 0) << result.strOutput;
}
#endif
} // namespace
