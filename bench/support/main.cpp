#include <benchmark/benchmark.h>

#include <condition_variable>
#include <cstdio>
#include <cwchar>
#include <mutex>
#include <thread>

namespace {

/** A second thread that sleeps as long as it lives. While a process has only one thread the C library skips the locked
 *  instructions of its mutexes and of its heap, which no process that uses a message loop ever sees. */
class CSleepingThread {
public:
    CSleepingThread() : m_thread([this] { sleep(); }) {}
    ~CSleepingThread() {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_bEnd = true;
        }
        m_condEnd.notify_one();
        m_thread.join();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_condEnd;
    bool m_bEnd = false;
    std::thread m_thread; // last, so that what it waits on exists before it

    void sleep() {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_condEnd.wait(lock, [this] { return m_bEnd; });
    }
};
} // namespace

int main(int argc, char** argv) {
    std::fwide(stdout, -1); // narrow for the report, so that the library's wide lines do not take it over
    const CSleepingThread sleeping;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
