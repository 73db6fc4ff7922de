#pragma once

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace OrlixTest {

/** What a child process left behind. */
struct tagChildResult {
    std::string strOutput; // bytes of its standard output
    int iExitCode;         // -1 if a signal ended it, or if it could not be made
};

/** A fork whose child does not outlive the thread that made it, as when a time limit ends the test. @return as fork. */
inline pid_t forkBound() {
    const pid_t pid = fork();
    if (pid == 0)
        prctl(PR_SET_PDEATHSIG, SIGKILL);
    return pid;
}

/** Runs fnBody in a child whose standard output is fresh, without orientation, so that the library's wide lines can be
 *  read. The child ends with the value that fnBody returns, without running destructors of static objects. */
template <class F> tagChildResult runInChild(F fnBody) {
    int aryPipe[2];
    if (pipe(aryPipe) != 0)
        return {"no pipe", -1};
    std::fflush(stdout);
    const pid_t pid = forkBound();
    if (pid == 0) {
        dup2(aryPipe[1], STDOUT_FILENO);
        close(aryPipe[0]);
        close(aryPipe[1]);
        if (!std::freopen("/dev/stdout", "w", stdout))
            _exit(125);
        const int iCode = fnBody();
        std::fflush(stdout);
        _exit(iCode);
    }
    close(aryPipe[1]);
    tagChildResult result{pid > 0 ? "" : "no process", -1};
    char aryChunk[4096];
    for (ssize_t iRead; (iRead = read(aryPipe[0], aryChunk, sizeof(aryChunk))) > 0;)
        result.strOutput.append(aryChunk, static_cast<std::size_t>(iRead));
    close(aryPipe[0]);
    int iStatus = 0;
    if (pid > 0 && waitpid(pid, &iStatus, 0) == pid && WIFEXITED(iStatus))
        result.iExitCode = WEXITSTATUS(iStatus);
    return result;
}
} // namespace OrlixTest
