#pragma once

#include <Orlix/formats/CConfigParser.h>
#include <Orlix/input/CCursorManager.h>
#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/threading/CTime.h>
#include <Orlix/threading/CTimerManager.h>

#include "input/TouchRecorder.h"
#include "support/ClockStandIn.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace OrlixTest {

/** Opens the fields to the tests. */
class COpenCursorManager : public Orlix::CCursorManager {
public:
    using CCursorManager::m_bEnable;
    using CCursorManager::m_mapTrack;
    using CCursorManager::m_pTouchListener;
    using CCursorManager::m_syncObject;

    /** Null for a finger that is not down. */
    tagCursorTrack* getTrack(unsigned int uiID) const { return m_mapTrack.getItem(uiID); }
};

/** The clock of this thread, which stands still unless it is told a tick. */
class CTickStandIn {
public:
    CTickStandIn() {
        m_clock.monotonic.tv_sec = 1000;
        Orlix::CTime::getTickCount(); // the first one ever sets the origin
        m_uiOrigin = 1000u * 1000u - Orlix::CTime::getTickCount();
    }
    void set(unsigned int uiTick) {
        const unsigned int uiRaw = m_uiOrigin + uiTick;
        m_clock.monotonic.tv_sec = uiRaw / 1000;
        m_clock.monotonic.tv_nsec = static_cast<long>(uiRaw % 1000) * 1000000;
        m_clock.strCalls.clear();
    }

private:
    tagClockStandIn m_clock;
    unsigned int m_uiOrigin;
};

/** One enabled manager with a recorder at the other end of the center. */
class CTouchFixture : public ::testing::Test {
protected:
    CTouchFixture() : m_ptrManager(new COpenCursorManager), m_manager(*m_ptrManager) {
        m_manager.setTouchListener(&m_recorder);
        m_manager.setEnable(true);
        m_tick.set(5000);
    }
    ~CTouchFixture() override {
        m_ptrManager.reset();
        Orlix::CMessageCenter::deleteInstance();
        Orlix::CTimerManager::deleteInstance();
        Orlix::CConfigParser::deleteInstance();
    }

    /** All that waits in the center, handled, and what the listener heard of it. */
    VecTouch take() {
        while (const auto ptrMessage = Orlix::CMessageCenter::getInstance()->popMessage())
            ptrMessage->handleMessage();
        return m_recorder.take();
    }

    /** Loads a file with these attributes of touch_param. */
    static void configure(const std::string& strAttributes) {
        const CTempFolder folder;
        writeWhole(folder / "engine.xml", "<engine><touch_param " + strAttributes + "/></engine>");
        ASSERT_TRUE(Orlix::CConfigParser::getInstance()->load(toText(folder / "engine.xml")));
    }

    CTickStandIn m_tick;
    CTouchRecorder m_recorder;
    std::unique_ptr<COpenCursorManager> m_ptrManager;
    COpenCursorManager& m_manager;
};
} // namespace OrlixTest
