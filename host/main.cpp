// orlix-host: a complete host application. It owns the loop and feeds the library from one source of work.

#include "CHostApplication.h"
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
    if (std::fflush(stdout) == 0 && !std::ferror(stdout))
        return 0;
    std::fprintf(stderr, "orlix-host: the output could not be written\n");
    return EXIT_OUTPUT;
}
} // namespace

int main(int iCount, char** ppArgument) {
    std::setlocale(LC_ALL, "C.UTF-8"); // wide output loses a line with a character that the locale does not know
    if (iCount == 3 && std::strcmp(ppArgument[1], "--text") == 0)
        return playText(ppArgument[2]);
    if (iCount < 2)
        std::fprintf(stderr, "orlix-host: usage: orlix-host --text FILE (- for standard input)\n");
    else if (std::strcmp(ppArgument[1], "--text") == 0)
        std::fprintf(stderr, "orlix-host: --text takes one file, or - for standard input\n");
    else
        std::fprintf(stderr, "orlix-host: unknown option %s\n", ppArgument[1]);
    return EXIT_USAGE;
}
