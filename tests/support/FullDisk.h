#pragma once

#include "support/ChildProcess.h"

#include <csignal>
#include <sys/resource.h>

namespace OrlixTest {

/** Runs fnBody where no file can grow beyond uiBytes, as on a disk that is full then. */
template <class F> int runWithFullDisk(unsigned int uiBytes, F fnBody) {
    return runInChild([&] {
               std::signal(SIGXFSZ, SIG_IGN);
               const rlimit limit{uiBytes, uiBytes};
               return setrlimit(RLIMIT_FSIZE, &limit) == 0 ? fnBody() : 123;
           })
        .iExitCode;
}
} // namespace OrlixTest
