// orlix-host: a complete host application. It owns the loop and feeds the library from one source of work.

#include "CHostApplication.h"
#include "CTextSource.h"

#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstring>

namespace {

constexpr int EXIT_USAGE = 2;

int playText(const char* pPath) {
    CTextSource source;
    if (!source.open(pPath)) {
        std::fprintf(stderr, "orlix-host: cannot read %s: %s\n", pPath, std::strerror(errno));
        return EXIT_USAGE;
    }
    CHostApplication application;
    source.start();
    application.runLoop();
    application.printSummary();
    return 0;
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
