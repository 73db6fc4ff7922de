// orlix-host: a complete host application. It loads the settings, owns the loop and feeds the library.

#include "CConfigLoader.h"
#include "CConfigPrinter.h"
#include "CHostApplication.h"
#include "CHostOptions.h"
#include "CTextSource.h"

#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstring>

namespace {

constexpr int EXIT_OUTPUT = 1;
constexpr int EXIT_USAGE = 2;

int refuse(const char* pPath, int iError) {
    std::fprintf(stderr, "orlix-host: cannot read %s: %s\n", pPath, std::strerror(iError));
    return EXIT_USAGE;
}

int finishOutput() {
    if (std::fflush(stdout) == 0 && !std::ferror(stdout))
        return 0;
    std::fprintf(stderr, "orlix-host: the output could not be written\n");
    return EXIT_OUTPUT;
}

int playText(const char* pPath) {
    CTextSource source;
    if (!source.open(pPath))
        return refuse(pPath, errno);
    CHostApplication application;
    source.start();
    application.runLoop();
    if (source.getError() != 0)
        return refuse(pPath, source.getError());
    application.printSummary();
    return finishOutput();
}
} // namespace

int main(int iCount, char** ppArgument) {
    std::setlocale(LC_ALL, "C.UTF-8"); // wide output loses a line with a character that the locale does not know
    CHostOptions options;
    if (!options.parse(iCount, ppArgument))
        return EXIT_USAGE;
    if (options.getConfigPath() && !CConfigLoader::load(options.getConfigPath()))
        return EXIT_USAGE;
    if (!options.isPrintConfig())
        return playText(options.getTextPath());
    CConfigPrinter().print();
    return finishOutput();
}
