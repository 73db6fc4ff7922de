#pragma once

#include <thread>

class CEventFlag;
class ISource;

/** The thread on which a source posts its work, and END_OF_SOURCE as a logic event behind the last of it. */
class CSourceThread {
public:
    /** Follows the last work through the same list, so that it overtakes none. */
    static constexpr unsigned int END_OF_SOURCE = 1;

    /** Starts the thread; the center must have its listener. @param source must be open, and outlive this. */
    explicit CSourceThread(ISource& source);
    CSourceThread(const CSourceThread&) = delete;
    CSourceThread& operator=(const CSourceThread&) = delete;
    /** Waits for the end of the input. */
    ~CSourceThread();

    /** The source's exit code. Waits for the end of the input. */
    int join();

    /** Keeps an input that is faster than the output from piling up in memory: call it between two posts.
     *  @param stop once set, there is no waiting: nobody takes messages any more. */
    static void waitForRoom(const CEventFlag& stop);

private:
    int m_iExitCode; // written by the thread before it ends
    std::thread m_thread;
};
