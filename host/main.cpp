// orlix-host: a complete host application. It loads the settings, brings the library up, owns the loop, and plays one
// source of work: a text, or recorded touches.

#include "CConfigLoader.h"
#include "CConfigPrinter.h"
#include "CEventFlag.h"
#include "CHostApplication.h"
#include "CHostOptions.h"
#include "CShareReader.h"
#include "CShareWriter.h"
#include "CSignalWatch.h"
#include "CSourceThread.h"
#include "CTextSource.h"
#include "CTouchSource.h"
#include "ExitCode.h"

#include <Orlix/formats/CConfigParser.h>

#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstring>

namespace {

/** @return EXIT_DONE unless the output was lost. */
int finishOutput() {
    if (std::fflush(stdout) == 0 && !std::ferror(stdout))
        return EXIT_DONE;
    std::fprintf(stderr, "orlix-host: the output could not be written\n");
    return EXIT_OUTPUT;
}

bool open(ISource& source, const char* pPath) {
    if (source.open(pPath))
        return true;
    std::fprintf(stderr, "orlix-host: cannot read %s: %s\n", pPath, std::strerror(errno));
    return false;
}

/** Plays a source to its end. @return its exit code. */
int play(CHostApplication& application, ISource& source) {
    CSourceThread thread(source);
    application.runLoop();
    return thread.join();
}

int playText(const char* pPath) {
    CTextSource source;
    if (!open(source, pPath))
        return EXIT_USAGE;
    CHostApplication application; // a text needs neither surfaces nor timers
    const int iExitCode = play(application, source);
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
    CHostApplication application;
    CTouchSource source(options.getSurface(), options.isFast(), application.getTouchStatistics());
    if (!open(source, options.getPlayPath()) || !application.start())
        return EXIT_USAGE;
    const int iExitCode = play(application, source);
    if (iExitCode != EXIT_DONE)
        return iExitCode;
    const int iOutput = finishOutput();
    application.getTouchStatistics().print();
    return iOutput;
}

int readShare(const CHostOptions& options) {
    CHostApplication application;
    const CSignalWatch signals;
    CShareReader reader;
    if (!reader.open(options.getShareKey(), options.getShareSize()))
        return EXIT_USAGE;
    application.runLoop();
    return finishOutput();
}

int writeShare(const CHostOptions& options) {
    CEventFlag flagStop;
    CShareWriter writer(options.getShareKey(), options.getShareSize(), flagStop);
    if (!open(writer, options.getSharePath()))
        return EXIT_USAGE;
    CHostApplication application;
    const CSignalWatch signals;
    CSourceThread thread(writer);
    application.runLoop();
    flagStop.set(); // a signal has ended the loop if the file is still being written
    return thread.join();
}
} // namespace

int main(int iCount, char** ppArgument) {
    std::setlocale(LC_ALL, "C.UTF-8"); // wide output loses a line with a character that the locale does not know
    CHostOptions options;
    if (!options.parse(iCount, ppArgument))
        return EXIT_USAGE;
    if (options.getConfigPath() && !CConfigLoader::load(options.getConfigPath()))
        return EXIT_USAGE;
    if (!options.getConfigPath() && options.getPlayPath() && !CConfigLoader::loadShipped()) // it says what surfaces are
        return EXIT_USAGE;
    if (options.isShareRead())
        return readShare(options);
    if (options.getSharePath())
        return writeShare(options);
    if (options.getTextPath())
        return playText(options.getTextPath());
    if (options.getPlayPath())
        return playTouches(options);
    CConfigPrinter().print();
    return finishOutput();
}
