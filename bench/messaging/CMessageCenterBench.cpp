// Posting messages and taking them out: in one thread, from one and four producers to one consumer, as the wake-up of a
// sleeping host, and with a million messages waiting.
//
// Every post allocates one message and every take hands it to its receiver and frees it, each in the way that its
// queue is really used. The floor takes the locks, the blocks of the floor heap and the clock readings that the
// center's order asks for, and nothing else. Left out: the folding of repaints and timers, which saves messages.
#include <Orlix/messaging/CMessageCenter.h>

#include "messaging/CenterChannel.h"

#include <Poco/Notification.h>
#include <Poco/NotificationQueue.h>
#include <QEvent>
#include <glib.h>

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

using Clock = CReceiver::Clock;

/** The center with messages of the list that is served first. */
class OrlixCenter : public CCenterChannel<> {
public:
    void post() { CMessageCenter::getInstance()->pushUserMessage(1, nullptr, nullptr); }
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
    registerPostTake<TChannel>(strName);
    for (const int iProducers : {1, 4})
        benchmark::RegisterBenchmark((strName + "_produce").c_str(), produce<TChannel>)
            ->Arg(iProducers)
            ->UseManualTime();
    registerWakeUp<TChannel>(strName);
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
