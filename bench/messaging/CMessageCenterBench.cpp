// Posting messages and taking them out: in one thread, from one and four producers to one consumer, as the wake-up of a
// sleeping host, and with a million messages waiting.
//
// Every post allocates one message and every take hands it to its receiver and frees it, each in the way that its
// queue is really used. The floor takes the locks, the blocks of the floor heap and the clock readings that the
// center's order asks for, and nothing else. Left out: the folding of repaints and timers, which saves messages.
#include <Orlix/foundation/CString.h>
#include <Orlix/foundation/CWaitObject.h>
#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/messaging/IMessageCenterListener.h>

#include "messaging/CFloorCenter.h"

#include <Poco/Notification.h>
#include <Poco/NotificationQueue.h>
#include <QCoreApplication>
#include <QEvent>
#include <benchmark/benchmark.h>
#include <glib.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using Orlix::CMessageCenter;

namespace {

using Clock = std::chrono::steady_clock;

/** The receiver of every message, whatever its queue. The host thread alone touches it, apart from what is marked. */
class CReceiver {
public:
    unsigned int uiLeft = 0;                   // messages that receive still waits for
    std::vector<double>* pLatencies = nullptr; // seconds from post to receipt, kept while wake-ups are measured
    Clock::time_point timePosted;              // written by the poster before it posts, ordered by the queue
    std::atomic<unsigned int> uiReceived{0};   // read by the poster, only while wake-ups are measured

    void onMessage() {
        --uiLeft;
        if (pLatencies) {
            pLatencies->push_back(std::chrono::duration<double>(Clock::now() - timePosted).count());
            uiReceived.fetch_add(1);
        }
    }
};
CReceiver g_receiver;

// Each channel has: post, from any thread; take, which delivers one message that is known to wait; receive, which
// delivers g_receiver.uiLeft messages and sleeps whenever none waits.

class CHostListener : public Orlix::IMessageCenterListener {
public:
    void onHandleUserMessage(unsigned int, Orlix::CObject*) override { g_receiver.onMessage(); }
    void onHandleLogicEventMessage(unsigned int) override { g_receiver.onMessage(); }
    void onMessageAvailable() override { m_waitMessage.notify(); }
    void wait() { m_waitMessage.wait(0); }

private:
    Orlix::CWaitObject m_waitMessage{Orlix::STRING_NULL};
};

/** The center as a host uses it. */
class OrlixCenter {
public:
    OrlixCenter() { CMessageCenter::getInstance()->setListener(&m_listener); }
    ~OrlixCenter() { CMessageCenter::deleteInstance(); }

    void post() { CMessageCenter::getInstance()->pushUserMessage(1, nullptr, nullptr); }
    void take() { CMessageCenter::getInstance()->popMessage()->handleMessage(); }
    void receive() {
        while (g_receiver.uiLeft != 0) {
            if (const auto ptrMessage = CMessageCenter::getInstance()->popMessage())
                ptrMessage->handleMessage();
            else
                m_listener.wait();
        }
    }

private:
    CHostListener m_listener;
};

/** The same with messages of the weighed lists. */
class OrlixWeighedCenter : public OrlixCenter {
public:
    void post() { CMessageCenter::getInstance()->pushLogicEventMessage(1); }
};

template <bool TWeighed> class FloorCenter {
public:
    void post() { m_center.push(); }
    void take() { m_center.pop(); }
    void receive() {
        while (g_receiver.uiLeft != 0) {
            if (!m_center.pop())
                m_center.wait();
        }
    }

private:
    CFloorCenter<TWeighed> m_center{[] { g_receiver.onMessage(); }};
};

class StdDeque {
public:
    void post() {
        std::unique_ptr<tagMessage> ptrMessage = std::make_unique<tagUserMessage>();
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_queue.push_back(std::move(ptrMessage));
        }
        m_condMessage.notify_one();
    }
    void take() {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_condMessage.wait(lock, [this] { return !m_queue.empty(); });
        const std::unique_ptr<tagMessage> ptrMessage = std::move(m_queue.front());
        m_queue.pop_front();
        lock.unlock();
        ptrMessage->handle();
    }
    void receive() {
        while (g_receiver.uiLeft != 0)
            take();
    }

private:
    struct tagMessage {
        unsigned int uiID = 1;
        void* pData = nullptr;
        virtual ~tagMessage() = default;
        virtual void handle() = 0;
    };
    struct tagUserMessage final : tagMessage {
        void handle() override { g_receiver.onMessage(); }
    };
    std::mutex m_mutex;
    std::condition_variable m_condMessage;
    std::deque<std::unique_ptr<tagMessage>> m_queue;
};

class GAsync {
public:
    GAsync() : m_pQueue(g_async_queue_new_full(g_free)) {}
    ~GAsync() { g_async_queue_unref(m_pQueue); }
    GAsync(const GAsync&) = delete;
    GAsync& operator=(const GAsync&) = delete;

    void post() {
        tagMessage* const pMessage = g_new0(tagMessage, 1);
        pMessage->pHandle = [] { g_receiver.onMessage(); };
        g_async_queue_push(m_pQueue, pMessage);
    }
    void take() {
        tagMessage* const pMessage = static_cast<tagMessage*>(g_async_queue_pop(m_pQueue));
        pMessage->pHandle();
        g_free(pMessage);
    }
    void receive() {
        while (g_receiver.uiLeft != 0)
            take();
    }

private:
    struct tagMessage {
        void (*pHandle)();
        unsigned int uiID;
        void* pData;
    };
    GAsyncQueue* m_pQueue;
};

class PocoQueue {
public:
    void post() { m_queue.enqueueNotification(new CUserNotification); }
    void take() { static_cast<CUserNotification*>(m_queue.waitDequeueNotification())->handleAndRelease(); }
    void receive() {
        while (g_receiver.uiLeft != 0)
            take();
    }

private:
    class CUserNotification : public Poco::Notification {
    public:
        void handleAndRelease() {
            g_receiver.onMessage();
            release();
        }
    };
    Poco::NotificationQueue m_queue;
};

QObject* startQt() {
    static int s_iArguments = 1;
    static char s_szProgram[] = "orlix-bench-messagecenter";
    static char* s_aryArgument[] = {s_szProgram, nullptr};
    static QCoreApplication s_application(s_iArguments, s_aryArgument);
    return nullptr;
}

/** Events posted to an object of the main thread. */
class QtPostEvent : public QObject {
public:
    QtPostEvent() : QObject(startQt()) {}
    void post() { QCoreApplication::postEvent(this, new QEvent(QEvent::User)); }
    void take() { QCoreApplication::sendPostedEvents(); }
    void receive() {
        if (g_receiver.uiLeft != 0)
            QCoreApplication::exec();
    }
    bool event(QEvent* pEvent) override {
        if (pEvent->type() != QEvent::User)
            return QObject::event(pEvent);
        g_receiver.onMessage();
        if (g_receiver.uiLeft == 0)
            QCoreApplication::quit();
        return true;
    }
};

template <class TChannel> void postTake(benchmark::State& state) {
    TChannel channel;
    for (auto _ : state) {
        channel.post();
        channel.take();
    }
}

/** Several producers against one consumer that sleeps whenever nothing waits: from the opening of the gate to the
 *  receipt of the last message. */
template <class TChannel> void produce(benchmark::State& state) {
    constexpr unsigned int MESSAGES = 40000;
    const unsigned int uiProducers = static_cast<unsigned int>(state.range(0));
    TChannel channel;
    for (auto _ : state) {
        std::atomic<bool> bOpen{false};
        std::atomic<unsigned int> uiReady{0};
        std::vector<std::thread> arrProducer;
        for (unsigned int i = 0; i < uiProducers; ++i) {
            arrProducer.emplace_back([&] {
                uiReady.fetch_add(1);
                while (!bOpen.load())
                    std::this_thread::yield();
                for (unsigned int j = 0; j < MESSAGES / uiProducers; ++j)
                    channel.post();
            });
        }
        while (uiReady.load() != uiProducers)
            std::this_thread::yield();
        g_receiver.uiLeft = MESSAGES;
        const Clock::time_point timeStart = Clock::now();
        bOpen.store(true);
        channel.receive();
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - timeStart).count());
        for (std::thread& producer : arrProducer)
            producer.join();
    }
    state.SetItemsProcessed(state.iterations() * MESSAGES);
}

/** One percentile of the time from a post to its receipt by a host that sleeps. */
template <class TChannel> void wakeUp(benchmark::State& state, std::size_t uiPercent) {
    constexpr unsigned int WAKE_UPS = 2000;
    constexpr std::chrono::microseconds TIME_TO_FALL_ASLEEP(100);
    TChannel channel;
    for (auto _ : state) {
        std::vector<double> arrLatency;
        arrLatency.reserve(WAKE_UPS);
        g_receiver.pLatencies = &arrLatency;
        g_receiver.uiReceived = 0;
        g_receiver.uiLeft = WAKE_UPS;
        std::thread poster([&] {
            for (unsigned int i = 0; i < WAKE_UPS; ++i) {
                while (g_receiver.uiReceived.load() != i)
                    std::this_thread::yield();
                std::this_thread::sleep_for(TIME_TO_FALL_ASLEEP);
                g_receiver.timePosted = Clock::now();
                channel.post();
            }
        });
        channel.receive();
        poster.join();
        g_receiver.pLatencies = nullptr;
        std::sort(arrLatency.begin(), arrLatency.end());
        state.SetIterationTime(arrLatency[WAKE_UPS * uiPercent / 100]);
    }
}

// Batches small enough that a center which was empty stays nearly so.
constexpr unsigned int BATCH = 100;

void pushBatch(CMessageCenter& center) {
    for (unsigned int i = 0; i < BATCH; ++i)
        center.pushUserMessage(i, nullptr, nullptr);
}

void popBatch(CMessageCenter& center) {
    for (unsigned int i = 0; i < BATCH; ++i)
        benchmark::DoNotOptimize(center.popMessage());
}

/** The next push, or with bPop the next pop, while so many messages wait already. */
void pushOrPop(benchmark::State& state, unsigned int uiWaiting, bool bPop) {
    CMessageCenter center;
    for (unsigned int i = 0; i < uiWaiting; ++i)
        center.pushUserMessage(i, nullptr, nullptr);
    for (auto _ : state) {
        const Clock::time_point timePush = Clock::now();
        pushBatch(center);
        const Clock::time_point timePop = Clock::now();
        popBatch(center);
        const Clock::duration duration = bPop ? Clock::now() - timePop : timePop - timePush;
        state.SetIterationTime(std::chrono::duration<double>(duration).count());
    }
    state.SetItemsProcessed(state.iterations() * BATCH);
}

template <class TChannel> void registerChannel(const std::string& strName) {
    benchmark::RegisterBenchmark((strName + "_postTake").c_str(), postTake<TChannel>);
    for (const int iProducers : {1, 4})
        benchmark::RegisterBenchmark((strName + "_produce").c_str(), produce<TChannel>)
            ->Arg(iProducers)
            ->UseManualTime();
    const std::pair<const char*, std::size_t> aryPercentile[] = {{"_wakeUpMedian", 50}, {"_wakeUpP99", 99}};
    for (const auto& percentile : aryPercentile)
        benchmark::RegisterBenchmark((strName + percentile.first).c_str(), wakeUp<TChannel>, percentile.second)
            ->UseManualTime()
            ->Iterations(1);
}

void registerWaiting(const char* pName, unsigned int uiWaiting) {
    const std::string strName(pName);
    benchmark::RegisterBenchmark((strName + "_pushBehindMillion").c_str(), pushOrPop, uiWaiting, false)
        ->UseManualTime();
    benchmark::RegisterBenchmark((strName + "_popBeforeMillion").c_str(), pushOrPop, uiWaiting, true)->UseManualTime();
}

const bool g_bRegistered = [] {
    registerChannel<OrlixCenter>("CMessageCenter");
    registerChannel<FloorCenter<false>>("Floor");
    registerChannel<StdDeque>("StdDeque");
    registerChannel<GAsync>("GAsyncQueue");
    registerChannel<PocoQueue>("PocoQueue");
    registerChannel<QtPostEvent>("QtPostEvent");
    benchmark::RegisterBenchmark("CMessageCenter_postTakeWeighed", postTake<OrlixWeighedCenter>);
    benchmark::RegisterBenchmark("Floor_postTakeWeighed", postTake<FloorCenter<true>>);
    // Itself without anything waiting is the measure for the cost of a million.
    registerWaiting("Empty", 0);
    registerWaiting("CMessageCenter", 1000000);
    return true;
}();
} // namespace
