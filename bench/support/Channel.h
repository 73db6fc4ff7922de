#pragma once

#include <QCoreApplication>
#include <QObject>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <utility>
#include <vector>

// What the benchmarks of queues share: one receiver, and the ways in which a message gets to it.
//
// A channel has: post, from any thread; take, which delivers one message that is known to wait; receive, which delivers
// g_receiver.uiLeft messages and sleeps whenever none waits.

/** The receiver of every message, whatever its queue. The host thread alone touches it, apart from what is marked. */
class CReceiver {
public:
    using Clock = std::chrono::steady_clock;

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
inline CReceiver g_receiver;

/** What Qt's event loop needs, made once. @return no parent, for the receiver of the events. */
inline QObject* startQt() {
    static int s_iArguments = 1;
    static char s_szProgram[] = "orlix-bench";
    static char* s_aryArgument[] = {s_szProgram, nullptr};
    static QCoreApplication s_application(s_iArguments, s_aryArgument);
    return nullptr;
}

template <class TChannel> void postTake(benchmark::State& state) {
    TChannel channel;
    for (auto _ : state) {
        channel.post();
        channel.take();
    }
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
                g_receiver.timePosted = CReceiver::Clock::now();
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

template <class TChannel> void registerPostTake(const std::string& strName) {
    benchmark::RegisterBenchmark((strName + "_postTake").c_str(), postTake<TChannel>);
}

template <class TChannel> void registerWakeUp(const std::string& strName) {
    const std::pair<const char*, std::size_t> aryPercentile[] = {{"_wakeUpMedian", 50}, {"_wakeUpP99", 99}};
    for (const auto& percentile : aryPercentile)
        benchmark::RegisterBenchmark((strName + percentile.first).c_str(), wakeUp<TChannel>, percentile.second)
            ->UseManualTime()
            ->Iterations(1);
}
