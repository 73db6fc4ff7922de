#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/messaging/IMessageCenterListener.h>
#include <Orlix/threading/CTimer.h>
#include <Orlix/threading/CTimerManager.h>
#include <Orlix/threading/ITimerListener.h>

#include <benchmark/benchmark.h>

#include <Poco/Util/Timer.h>
#include <Poco/Util/TimerTask.h>
#include <QCoreApplication>
#include <QTimer>
#include <glib.h>
#include <semaphore.h>
#include <uv.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <memory>
#include <string>
#include <sys/select.h>
#include <thread>
#include <vector>

// Timers of 10 ms whose receivers count their pulses. Each peer runs them as its manual says: in its event loop, except
// for Poco, which has a thread of its own. Ours has a thread of its own and a host that sleeps until a message waits.

using namespace Orlix;

namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned int DELAY_MS = 10;
constexpr unsigned int RUN_MS = 3000;

std::atomic<std::uint64_t> g_uiPulses{0};

void count() { g_uiPulses.store(g_uiPulses.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed); }

double getProcessorSeconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

class OrlixTimers : public IMessageCenterListener, public ITimerListener {
public:
    explicit OrlixTimers(unsigned int uiTimers) : m_end(RUN_MS, 1), m_extra(DELAY_MS, 0) {
        sem_init(&m_semMessage, 0, 0);
        CMessageCenter::getInstance()->setListener(this);
        m_extra.setListener(this);
        m_end.setListener(this);
        CTimerManager::getInstance()->start();
        for (unsigned int i = 0; i < uiTimers; ++i) {
            m_vecTimer.push_back(std::make_unique<CTimer>(DELAY_MS, 0u));
            m_vecTimer.back()->setListener(this);
            m_vecTimer.back()->start();
        }
    }
    ~OrlixTimers() override {
        CTimerManager::getInstance()->stop();
        for (const auto& ptrTimer : m_vecTimer)
            ptrTimer->stop();
        CTimerManager::deleteInstance();
        CMessageCenter::deleteInstance();
        sem_destroy(&m_semMessage);
    }
    void run() {
        m_end.start();
        while (!m_bEnd) {
            if (!handleNext())
                sem_wait(&m_semMessage);
        }
    }
    /** What the host does before the next turn. */
    void settle() {
        while (handleNext()) {}
    }
    std::uint64_t getMade() const {
        std::uint64_t uiMade = 0;
        for (const auto& ptrTimer : m_vecTimer)
            uiMade += ptrTimer->getCurrentCount();
        return uiMade;
    }
    void startStop() {
        m_extra.start();
        m_extra.stop();
    }
    void restart(std::size_t uiTimer) {
        m_vecTimer[uiTimer]->stop();
        m_vecTimer[uiTimer]->start();
    }
    void onMessageAvailable() override { sem_post(&m_semMessage); }
    void onTimer(const CTimer*, unsigned int) override { count(); }
    void onTimerComplete(const CTimer*) override { m_bEnd = true; }

private:
    sem_t m_semMessage; // posting takes no lock that the host would wait for as soon as it is awake
    CTimer m_end;
    CTimer m_extra;
    std::vector<std::unique_ptr<CTimer>> m_vecTimer;
    bool m_bEnd = false;

    static bool handleNext() {
        const CObjectPtr<CBaseMessage> ptrMessage = CMessageCenter::getInstance()->popMessage();
        if (!ptrMessage.isEmpty())
            ptrMessage->handleMessage();
        return !ptrMessage.isEmpty();
    }
};

/** Without timers and messages: what two threads cost of which one sleeps 10 ms and wakes the other. */
class FloorTimers {
public:
    explicit FloorTimers(unsigned int uiTimers) : m_uiTimers(uiTimers) { sem_init(&m_semMessage, 0, 0); }
    ~FloorTimers() { sem_destroy(&m_semMessage); }
    FloorTimers(const FloorTimers&) = delete;
    FloorTimers& operator=(const FloorTimers&) = delete;
    void run() {
        const Clock::time_point timeEnd = Clock::now() + std::chrono::milliseconds(RUN_MS);
        std::atomic<bool> bEnd{false};
        std::thread thread([&] {
            while (!bEnd) {
                timeval left{0, DELAY_MS * 1000};
                select(0, nullptr, nullptr, nullptr, &left);
                bEnd = Clock::now() >= timeEnd;
                sem_post(&m_semMessage);
            }
        });
        while (!bEnd) {
            sem_wait(&m_semMessage);
            for (unsigned int i = 0; i < m_uiTimers; ++i)
                count();
        }
        thread.join();
    }
    void settle() {}
    std::uint64_t getMade() const { return g_uiPulses; }

private:
    unsigned int m_uiTimers;
    sem_t m_semMessage;
};

void startQt() {
    static int s_iArguments = 1;
    static char s_szProgram[] = "orlix-bench-timer";
    static char* s_aryArgument[] = {s_szProgram, nullptr};
    static QCoreApplication s_application(s_iArguments, s_aryArgument);
}

class QtTimers {
public:
    explicit QtTimers(unsigned int uiTimers) {
        startQt();
        for (unsigned int i = 0; i < uiTimers; ++i) {
            m_vecTimer.push_back(std::make_unique<QTimer>());
            QObject::connect(m_vecTimer.back().get(), &QTimer::timeout, count);
            m_vecTimer.back()->start(DELAY_MS);
        }
    }
    void run() {
        QTimer::singleShot(RUN_MS, [] { QCoreApplication::quit(); });
        QCoreApplication::exec();
    }
    void settle() {}
    std::uint64_t getMade() const { return g_uiPulses; }
    void startStop() {
        m_extra.start(DELAY_MS);
        m_extra.stop();
    }
    void restart(std::size_t uiTimer) {
        m_vecTimer[uiTimer]->stop();
        m_vecTimer[uiTimer]->start(DELAY_MS);
    }

private:
    QTimer m_extra;
    std::vector<std::unique_ptr<QTimer>> m_vecTimer;
};

class GTimeouts {
public:
    explicit GTimeouts(unsigned int uiTimers) : m_pLoop(g_main_loop_new(nullptr, FALSE)) {
        for (unsigned int i = 0; i < uiTimers; ++i)
            m_vecID.push_back(add());
    }
    ~GTimeouts() {
        for (const guint uiID : m_vecID)
            g_source_remove(uiID);
        g_main_loop_unref(m_pLoop);
    }
    GTimeouts(const GTimeouts&) = delete;
    GTimeouts& operator=(const GTimeouts&) = delete;
    void run() {
        g_timeout_add(
            RUN_MS,
            [](gpointer pLoop) -> gboolean {
                g_main_loop_quit(static_cast<GMainLoop*>(pLoop));
                return G_SOURCE_REMOVE;
            },
            m_pLoop);
        g_main_loop_run(m_pLoop);
    }
    void settle() {}
    std::uint64_t getMade() const { return g_uiPulses; }
    void startStop() { g_source_remove(add()); }
    void restart(std::size_t uiTimer) {
        g_source_remove(m_vecID[uiTimer]);
        m_vecID[uiTimer] = add();
    }

private:
    GMainLoop* m_pLoop;
    std::vector<guint> m_vecID;

    static guint add() {
        return g_timeout_add(
            DELAY_MS,
            [](gpointer) -> gboolean {
                count();
                return G_SOURCE_CONTINUE;
            },
            nullptr);
    }
};

class UvTimers {
public:
    explicit UvTimers(unsigned int uiTimers) : m_vecTimer(uiTimers) {
        uv_loop_init(&m_loop);
        uv_timer_init(&m_loop, &m_end);
        uv_timer_init(&m_loop, &m_extra);
        for (uv_timer_t& timer : m_vecTimer) {
            uv_timer_init(&m_loop, &timer);
            start(timer);
        }
    }
    ~UvTimers() {
        uv_walk(
            &m_loop, [](uv_handle_t* pHandle, void*) { uv_close(pHandle, nullptr); }, nullptr);
        uv_run(&m_loop, UV_RUN_DEFAULT);
        uv_loop_close(&m_loop);
    }
    UvTimers(const UvTimers&) = delete;
    UvTimers& operator=(const UvTimers&) = delete;
    void run() {
        uv_timer_start(
            &m_end, [](uv_timer_t* pTimer) { uv_stop(pTimer->loop); }, RUN_MS, 0);
        uv_run(&m_loop, UV_RUN_DEFAULT);
    }
    void settle() {}
    std::uint64_t getMade() const { return g_uiPulses; }
    void startStop() {
        start(m_extra);
        uv_timer_stop(&m_extra);
    }
    void restart(std::size_t uiTimer) {
        uv_timer_stop(&m_vecTimer[uiTimer]);
        start(m_vecTimer[uiTimer]);
    }

private:
    uv_loop_t m_loop;
    uv_timer_t m_end, m_extra;
    std::vector<uv_timer_t> m_vecTimer;

    static void start(uv_timer_t& timer) {
        uv_timer_start(
            &timer, [](uv_timer_t*) { count(); }, DELAY_MS, DELAY_MS);
    }
};

class PocoTimers {
public:
    explicit PocoTimers(unsigned int uiTimers) {
        for (unsigned int i = 0; i < uiTimers; ++i)
            m_vecTask.push_back(add());
    }
    ~PocoTimers() { m_timer.cancel(true); }
    PocoTimers(const PocoTimers&) = delete;
    PocoTimers& operator=(const PocoTimers&) = delete;
    void run() {
        const timespec duration{RUN_MS / 1000, RUN_MS % 1000 * 1000000};
        nanosleep(&duration, nullptr);
    }
    void settle() {}
    std::uint64_t getMade() const { return g_uiPulses; }
    void startStop() { add()->cancel(); }
    void restart(std::size_t uiTimer) {
        m_vecTask[uiTimer]->cancel();
        m_vecTask[uiTimer] = add();
    }

private:
    class CTask : public Poco::Util::TimerTask {
    public:
        void run() override { count(); }
    };
    using PtrTask = Poco::AutoPtr<Poco::Util::TimerTask>;
    Poco::Util::Timer m_timer;
    std::vector<PtrTask> m_vecTask;

    PtrTask add() {
        PtrTask ptrTask = new CTask;
        m_timer.scheduleAtFixedRate(ptrTask, DELAY_MS, DELAY_MS);
        return ptrTask;
    }
};

/** The processor time of three seconds. Beside it, how many pulses were heard, of how many that were made. */
template <class TTimers> void runTimers(benchmark::State& state) {
    for (auto _ : state) {
        g_uiPulses = 0;
        TTimers timers(static_cast<unsigned int>(state.range(0)));
        const double dStart = getProcessorSeconds();
        timers.run();
        state.SetIterationTime(getProcessorSeconds() - dStart);
        timers.settle();
        state.counters["heard"] = static_cast<double>(g_uiPulses);
        state.counters["made"] = static_cast<double>(timers.getMade());
    }
}

/** One turn of the host thread, between whose turns the pulses of the others are handled. */
constexpr unsigned int CHANGES_PER_TURN = 100;

template <class TTimers> void startStop(benchmark::State& state) {
    TTimers timers(static_cast<unsigned int>(state.range(0)));
    for (auto _ : state) {
        const Clock::time_point timeStart = Clock::now();
        for (unsigned int i = 0; i < CHANGES_PER_TURN; ++i)
            timers.startStop();
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - timeStart).count());
        timers.settle();
    }
    state.SetItemsProcessed(state.iterations() * CHANGES_PER_TURN);
}

template <class TTimers> void restart(benchmark::State& state) {
    constexpr std::size_t STRIDE = 7919; // prime, so that all are met in an order that is no order
    const std::size_t uiTimers = static_cast<std::size_t>(state.range(0));
    TTimers timers(static_cast<unsigned int>(uiTimers));
    std::size_t uiTimer = 0;
    for (auto _ : state) {
        const Clock::time_point timeStart = Clock::now();
        for (unsigned int i = 0; i < CHANGES_PER_TURN; ++i)
            timers.restart(uiTimer = (uiTimer + STRIDE) % uiTimers);
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - timeStart).count());
        timers.settle();
    }
    state.SetItemsProcessed(state.iterations() * CHANGES_PER_TURN);
}

template <class TTimers> void registerRun(const std::string& strName, int iTimers) {
    benchmark::RegisterBenchmark((strName + "_processorTime").c_str(), runTimers<TTimers>)
        ->Arg(iTimers)
        ->UseManualTime()
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
}

template <class TTimers> void registerTimers(const std::string& strName) {
    for (const int iTimers : {1, 100, 10000}) {
        registerRun<TTimers>(strName, iTimers);
        benchmark::RegisterBenchmark((strName + "_startStop").c_str(), startStop<TTimers>)
            ->Arg(iTimers)
            ->UseManualTime();
        benchmark::RegisterBenchmark((strName + "_restart").c_str(), restart<TTimers>)->Arg(iTimers)->UseManualTime();
    }
}

[[maybe_unused]] const bool s_bRegistered = [] {
    registerTimers<OrlixTimers>("CTimer");
    for (const int iTimers : {1, 100, 10000})
        registerRun<FloorTimers>("Floor", iTimers);
    registerTimers<QtTimers>("QTimer");
    registerTimers<GTimeouts>("GTimeout");
    registerTimers<UvTimers>("UvTimer");
    registerTimers<PocoTimers>("PocoTimer");
    return true;
}();
} // namespace
