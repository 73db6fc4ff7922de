// orlix-host: a complete host application. It loads the settings, brings the library up, owns the loop, plays one
// source of work, a text or recorded touches, and talks to a peer, over a network or through shared memory.

#include "CConfigLoader.h"
#include "CConfigPrinter.h"
#include "CEventFlag.h"
#include "CHostApplication.h"
#include "CHostOptions.h"
#include "CPeerSession.h"
#include "CPeerSource.h"
#include "CPeerTouchSender.h"
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
#include <memory>

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

/** Plays a source to its end, or until a signal ends the host. @return its exit code. */
int play(CHostApplication& application, ISource& source, CEventFlag& flagStop) {
    CSourceThread thread(source);
    application.runLoop();
    flagStop.set(); // the source still waits for its input if something else has ended the loop
    return thread.join();
}

/** The peer, if the command line names one. */
std::unique_ptr<CPeerSession> makeSession(const CHostOptions& options) {
    return options.hasPeer() ? std::make_unique<CPeerSession>(options) : nullptr;
}

/** @return the exit code of a host whose loop has ended. */
int finish(int iExitCode, CPeerSession* pSession) {
    if (iExitCode != EXIT_DONE)
        return iExitCode;
    if (!pSession || !pSession->getChannel().hasFailed())
        return finishOutput();
    std::fprintf(stderr, "orlix-host: the port cannot be listened on\n");
    return EXIT_USAGE;
}

int playText(const CHostOptions& options) {
    CEventFlag flagStop;
    CTextSource source(flagStop);
    if (!openSource(source, options.getTextPath()))
        return EXIT_USAGE;
    CHostApplication application; // a text needs neither surfaces nor timers
    const std::unique_ptr<CPeerSession> pSession = makeSession(options);
    const int iExitCode = play(application, source, flagStop);
    if (iExitCode == EXIT_DONE)
        application.printTextSummary();
    return finish(iExitCode, pSession.get());
}

/** Plays touches to the own listener. */
int playTouches(CHostApplication& application, CTouchSource& source, CEventFlag& flagStop) {
    return application.start() ? play(application, source, flagStop) : EXIT_USAGE;
}

/** Plays touches to the peer, from when it is there. */
int playTouchesTo(CPeerChannel& channel, CHostApplication& application, CTouchSource& source, CEventFlag& flagStop) {
    CPeerTouchSender sender(channel, application.getTouchStatistics());
    CPeerSource awaitingSource(source, channel.getConnected(), flagStop);
    application.setTouchListener(sender);
    const int iExitCode = application.start() ? play(application, awaitingSource, flagStop) : EXIT_USAGE;
    if (iExitCode != EXIT_DONE || sender.getLostCount() == 0)
        return iExitCode;
    std::fprintf(stderr, "orlix-host: %u touches found no peer\n", sender.getLostCount());
    return EXIT_OUTPUT;
}

int playTouches(const CHostOptions& options) {
    if (options.getSurface() >= Orlix::CConfigParser::getInstance()->getSurfaceCount()) {
        std::fprintf(stderr, "orlix-host: the configuration has no surface %u\n", options.getSurface());
        return EXIT_USAGE;
    }
    CEventFlag flagStop;
    CHostApplication application;
    CTouchSource source(options.getSurface(), options.isFast(), application.getTouchStatistics(), flagStop);
    if (!openSource(source, options.getPlayPath()))
        return EXIT_USAGE;
    const std::unique_ptr<CPeerSession> pSession = makeSession(options);
    const int iExitCode = options.getConnectPort() != 0
                              ? playTouchesTo(pSession->getChannel(), application, source, flagStop)
                              : playTouches(application, source, flagStop);
    const int iFinished = finish(iExitCode, pSession.get());
    if (iExitCode == EXIT_DONE)
        application.getTouchStatistics().print();
    return iFinished;
}

int runPeer(const CHostOptions& options) {
    CHostApplication application;
    const std::unique_ptr<CPeerSession> pSession = makeSession(options);
    application.runLoop();
    return finish(EXIT_DONE, pSession.get());
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
    if (!openSource(writer, options.getSharePath()))
        return EXIT_USAGE;
    CHostApplication application;
    const CSignalWatch signals;
    return play(application, writer, flagStop);
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
    const bool bNeedsConfig = options.getPlayPath() || options.hasPeer(); // it says what surfaces and threads are
    if (!options.getConfigPath() && bNeedsConfig && !CConfigLoader::loadShipped())
        return EXIT_USAGE;
    if (options.isShareRead())
        return readShare(options);
    if (options.getSharePath())
        return writeShare(options);
    if (options.getTextPath())
        return playText(options);
    if (options.getPlayPath())
        return playTouches(options);
    if (options.hasPeer())
        return runPeer(options);
    CConfigPrinter().print();
    return finishOutput();
}
