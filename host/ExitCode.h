#pragma once

/** What orlix-host ends with. */
enum EExitCode {
    EXIT_DONE = 0,
    EXIT_OUTPUT = 1, ///< the output could not be written
    EXIT_USAGE = 2   ///< a wrong call, or a file that cannot be read or used
};
