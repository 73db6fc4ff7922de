// orlix-host: a complete host application. It loads the settings, brings the library up, owns the loop, and plays one
// source of work: a text, or recorded touches.

#include "CConfigLoader.h"
#include "CConfigPrinter.h"
#include "CEventFlag.h"
#include "CHostApplication.h"
#include "CHostOptions.h"
#include "CSourceThread.h"
#include "CTextSource.h"
#include "CTouchSource.h"
#include "ExitCode.h"

#include <Orlix/formats/CConfigParser.h>

#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace {

/** Takes the place of each standard file that is closed with one that refuses, or the next descriptor that is opened
 *  would be read as the input or written over with the output. */
void holdStandardFiles() {
    for (const int iFile : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(iFile, F_GETFD) < 0)
            open("/dev/null", iFile == STDIN_FILENO ? O_WRONLY : O_RDONLY); // the lowest one that is free: this one
}

/** @return EXIT_DONE unless the output was lost. */
int finishOutput() {
    if (std::fflush(stdout) == 0 && !std::ferror(stdout))
        return EXIT_DONE;
    std::fprintf(stderr, "orlix-host: the output could not be written\n");
    return EXIT_OUTPUT;
}

bool openSource(ISource& source, const char* pPath) {
    if (source.open(pPath))
        return true;
    std::fprintf(stderr, "orlix-host: cannot read %s: %s\n", pPath, std::strerror(errno));
    return false;
}

/** Plays a source to its end. @return its exit code. */
int play(CHostApplication& application, ISource& source, CEventFlag& flagStop) {
    CSourceThread thread(source);
    application.runLoop();
    flagStop.set(); // the source still waits for its input if something else has ended the loop
    return thread.join();
}

int playText(const char* pPath) {
    CEventFlag flagStop;
    CTextSource source(flagStop);
    if (!openSource(source, pPath))
        return EXIT_USAGE;
    CHostApplication application; // a text needs neither surfaces nor timers
    const int iExitCode = play(application, source, flagStop);
    if (iExitCode != EXIT_DONE)
        return iExitCode;
    application.printTextSummary();
    return finishOutput();
}

int playTouches(const CHostOptions& options) {
    if (options.getSurface() >= Orlix::CConfigParser::getInstance()->getSurfaceCount()) {
        std::fprintf(stderr, "orlix-host: the configuration has no surface %u\n", options.getSurface());
        return EXIT_USAGE;
    }
    CEventFlag flagStop;
    CHostApplication application;
    CTouchSource source(options.getSurface(), options.isFast(), application.getTouchStatistics(), flagStop);
    if (!openSource(source, options.getPlayPath()) || !application.start())
        return EXIT_USAGE;
    const int iExitCode = play(application, source, flagStop);
    if (iExitCode != EXIT_DONE)
        return iExitCode;
    const int iOutput = finishOutput();
    application.getTouchStatistics().print();
    return iOutput;
}
} // namespace

int main(int iCount, char** ppArgument) {
    holdStandardFiles();
    std::setlocale(LC_ALL, "C.UTF-8"); // wide output loses a line with a character that the locale does not know
    CHostOptions options;
    if (!options.parse(iCount, ppArgument))
        return EXIT_USAGE;
    if (options.getConfigPath() && !CConfigLoader::load(options.getConfigPath()))
        return EXIT_USAGE;
    if (!options.getConfigPath() && options.getPlayPath() && !CConfigLoader::loadShipped()) // it says what surfaces are
        return EXIT_USAGE;
    if (options.getTextPath())
        return playText(options.getTextPath());
    if (options.getPlayPath())
        return playTouches(options);
    CConfigPrinter().print();
    return finishOutput();
}
