#include <Orlix/input/CPlatformFactory.h>

#include "input/SurfaceStandIn.h"

#include <gtest/gtest.h>

#include <memory>

using namespace Orlix;
using namespace OrlixTest;

namespace {

class CPlatformFactoryTest : public ::testing::Test {
protected:
    ~CPlatformFactoryTest() override { CPlatformFactory::deleteInstance(); }
    VecCall m_vecCall;
    CFactoryStandIn m_first{m_vecCall};
    CFactoryStandIn m_second{m_vecCall};
};

TEST_F(CPlatformFactoryTest, WithoutAFactoryThereIsNoPlatform) {
    CSurface surface(0, false);
    EXPECT_EQ(CPlatformFactory::getInstance()->createSurface(&surface), nullptr);
}

TEST_F(CPlatformFactoryTest, TheLastFactoryRegisteredMakesTheSurfaces) {
    CSurface surface(0, false);
    CPlatformFactory::getInstance()->registerFactory(&m_first);
    CPlatformFactory::getInstance()->registerFactory(&m_second);
    const std::unique_ptr<ISurface> ptrMade(CPlatformFactory::getInstance()->createSurface(&surface));
    EXPECT_EQ(m_first.m_vecFor, std::vector<CSurface*>{});
    EXPECT_EQ(m_second.m_vecFor, std::vector<CSurface*>{&surface});
    EXPECT_EQ(ptrMade.get(), m_second.m_pLast);
    CPlatformFactory::getInstance()->registerFactory(nullptr);
    EXPECT_EQ(CPlatformFactory::getInstance()->createSurface(&surface), nullptr);
}

TEST_F(CPlatformFactoryTest, TheRegistryIsOneAndForgetsItsFactoryWithItself) {
    CPlatformFactory* const pFactory = CPlatformFactory::getInstance();
    EXPECT_EQ(CPlatformFactory::getInstance(), pFactory);
    pFactory->registerFactory(&m_first);
    CPlatformFactory::deleteInstance();
    CPlatformFactory::deleteInstance();
    CSurface surface(0, false);
    EXPECT_EQ(CPlatformFactory::getInstance()->createSurface(&surface), nullptr);
    EXPECT_EQ(m_vecCall, VecCall{}) << "the factory itself is not deleted";
}
} // namespace
