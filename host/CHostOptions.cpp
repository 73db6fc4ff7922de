#include "CHostOptions.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

bool CHostOptions::parse(int iCount, char** ppArgument) {
    for (int i = 1; i < iCount; ++i) {
        const char* const pOption = ppArgument[i];
        if (bool* const pFlag = findFlag(pOption)) {
            *pFlag = true;
            continue;
        }
        const char** const ppValue = findValue(pOption);
        if (!ppValue) {
            std::fprintf(stderr, "orlix-host: unknown option %s\n", pOption);
            return false;
        }
        if (i + 1 == iCount || *ppValue) {
            std::fprintf(stderr, "orlix-host: %s takes one value\n", pOption);
            return false;
        }
        *ppValue = ppArgument[++i];
    }
    return check();
}

bool* CHostOptions::findFlag(const char* pOption) noexcept {
    if (std::strcmp(pOption, "--fast") == 0)
        return &m_bFast;
    if (std::strcmp(pOption, "--print-config") == 0)
        return &m_bPrintConfig;
    return nullptr;
}

/** @return where the value of an option goes; null for an unknown option. */
const char** CHostOptions::findValue(const char* pOption) noexcept {
    if (std::strcmp(pOption, "--text") == 0)
        return &m_pTextPath;
    if (std::strcmp(pOption, "--play") == 0)
        return &m_pPlayPath;
    if (std::strcmp(pOption, "--config") == 0)
        return &m_pConfigPath;
    if (std::strcmp(pOption, "--surface") == 0)
        return &m_pSurface;
    return nullptr;
}

bool CHostOptions::check() {
    const int iTasks = (m_pTextPath ? 1 : 0) + (m_pPlayPath ? 1 : 0) + (m_bPrintConfig ? 1 : 0);
    if (iTasks == 1 && (m_pPlayPath || (!m_bFast && !m_pSurface)))
        return !m_pSurface || readSurface();
    std::fprintf(stderr, "orlix-host: usage: orlix-host [--config FILE] followed by --play RECORDING [--surface N] "
                         "[--fast], --text FILE or --print-config; - is standard input\n");
    return false;
}

bool CHostOptions::readSurface() {
    char* pEnd = nullptr;
    errno = 0;
    const unsigned long ulSurface = std::strtoul(m_pSurface, &pEnd, 10);
    if (m_pSurface[0] < '0' || m_pSurface[0] > '9' || *pEnd != '\0' || errno != 0 || ulSurface > UINT_MAX) {
        std::fprintf(stderr, "orlix-host: --surface takes a number, not %s\n", m_pSurface);
        return false;
    }
    m_uiSurface = static_cast<unsigned int>(ulSurface);
    return true;
}
