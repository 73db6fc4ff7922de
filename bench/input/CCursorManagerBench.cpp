// One touch of a finger that moves, from the platform's report to the listener's return: in one thread, and as the
// wake-up of a host that sleeps in another.
//
// The finger is down already and its history is full. Every implementation allocates one event per report and hands it,
// with a place, to a receiver. The floor reads the clock and takes the tracking's lock in front of the floor of the
// center, and nothing else. Center is the message center's own wake-up, by a message of the same list without tracking.
// Left out: press and release, and the peers' ways from a window system to their queue.
#include <Orlix/input/CCursor.h>
#include <Orlix/input/CSurface.h>
#include <Orlix/input/ITouchListener.h>
#include <Orlix/messaging/CMessageCenter.h>

#include "messaging/CenterChannel.h"

#include <QPointingDevice>
#include <QTouchEvent>
#include <SDL.h>

using Orlix::CMessageCenter;
using Orlix::CSurface;

namespace {

/** Reads the place, as any receiver would. */
template <class T> void receiveAt(T tX, T tY) {
    benchmark::DoNotOptimize(tX);
    benchmark::DoNotOptimize(tY);
    g_receiver.onMessage();
}

class CTouchHostListener : public CHostListener, public Orlix::ITouchListener {
public:
    void onTouchPress(const Orlix::CCursor&) override {}
    void onTouchMove(const Orlix::CCursor& cursor) override { receiveAt(cursor.getX(), cursor.getY()); }
    void onTouchRelease(const Orlix::CCursor&) override {}
    void onTouchWheel(const Orlix::CCursor&) override {}
};

class Touches : public CCenterChannel<CTouchHostListener> {
public:
    Touches() {
        CSurface* const pSurface = CSurface::getInstance(0, true);
        pSurface->setTouchListener(&m_listener);
        pSurface->setEnable(true);
        CMessageCenter::getInstance()->pushTouchMessage(0, 1, 0, 0, 0);
        for (int i = 0; i < 100; ++i)
            post();
        CMessageCenter::getInstance()->clearMessageList();
    }
    ~Touches() { CSurface::deleteInstance(); }

    void post() {
        m_iX = (m_iX + 3) & 1023;
        CMessageCenter::getInstance()->pushTouchMessage(0, 1, m_iX, 700, 1);
    }

private:
    int m_iX = 0;
};

class Floor : public FloorCenter<true> {
public:
    void post() {
        timespec now;
        clock_gettime(CLOCK_MONOTONIC, &now);
        benchmark::DoNotOptimize(now);
        pthread_mutex_lock(&m_mutex);
        pthread_mutex_unlock(&m_mutex);
        FloorCenter<true>::post();
    }

private:
    pthread_mutex_t m_mutex = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
};

/** Finger events pushed to the queue of the process. Without a window system its wait looks every millisecond. */
class SdlFinger {
public:
    SdlFinger() { SDL_Init(SDL_INIT_EVENTS); }
    ~SdlFinger() { SDL_Quit(); }
    SdlFinger(const SdlFinger&) = delete;
    SdlFinger& operator=(const SdlFinger&) = delete;

    void post() {
        m_fX = m_fX < 1.0f ? m_fX + 0.001f : 0.0f;
        SDL_Event event{};
        event.type = SDL_FINGERMOTION;
        event.tfinger.fingerId = 1;
        event.tfinger.x = m_fX;
        event.tfinger.y = 0.5f;
        SDL_PushEvent(&event);
    }
    void take() {
        SDL_Event event;
        while (SDL_PollEvent(&event) && !handle(event)) {}
    }
    void receive() {
        SDL_Event event;
        while (g_receiver.uiLeft != 0 && SDL_WaitEvent(&event))
            handle(event);
    }

private:
    static bool handle(const SDL_Event& event) {
        if (event.type != SDL_FINGERMOTION)
            return false;
        receiveAt(event.tfinger.x, event.tfinger.y);
        return true;
    }
    float m_fX = 0.0f;
};

/** Touch events posted to an object of the main thread. */
class QtTouch : public QObject {
public:
    QtTouch() : QObject(startQt()) {}
    void post() {
        m_fX = m_fX < 1024.0 ? m_fX + 3.0 : 0.0;
        const QPointF point(m_fX, 700.0);
        QCoreApplication::postEvent(this, new QTouchEvent(QEvent::TouchUpdate, &m_device, Qt::NoModifier,
                                                          {QEventPoint(1, QEventPoint::Updated, point, point)}));
    }
    void take() { QCoreApplication::sendPostedEvents(); }
    void receive() {
        if (g_receiver.uiLeft != 0)
            QCoreApplication::exec();
    }
    bool event(QEvent* pEvent) override {
        if (pEvent->type() != QEvent::TouchUpdate)
            return QObject::event(pEvent);
        const QPointF point = static_cast<QTouchEvent*>(pEvent)->point(0).position();
        receiveAt(point.x(), point.y());
        if (g_receiver.uiLeft == 0)
            QCoreApplication::quit();
        return true;
    }

private:
    QPointingDevice m_device{QStringLiteral("touch"),
                             1,
                             QInputDevice::DeviceType::TouchScreen,
                             QPointingDevice::PointerType::Finger,
                             QInputDevice::Capability::Position,
                             10,
                             0};
    double m_fX = 0.0;
};

template <class TChannel> void registerChannel(const std::string& strName) {
    registerPostTake<TChannel>(strName);
    registerWakeUp<TChannel>(strName);
}

const bool g_bRegistered = [] {
    registerChannel<Touches>("CCursorManager");
    registerChannel<Floor>("Floor");
    registerChannel<SdlFinger>("SdlFinger");
    registerChannel<QtTouch>("QtTouch");
    registerWakeUp<OrlixWeighedCenter>("Center");
    return true;
}();
} // namespace
