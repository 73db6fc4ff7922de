#include "CHostOptions.h"

#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

/** @param pText decimal, or hexadecimal behind "0x". @return false, after one line on stderr, for anything else. */
bool readNumber(const char* pOption, const char* pText, unsigned int uiLeast, unsigned int uiMost,
                unsigned int& uiResult) {
    const bool bHex = pText[0] == '0' && (pText[1] == 'x' || pText[1] == 'X');
    char* pEnd = nullptr;
    errno = 0;
    const unsigned long ulNumber = std::strtoul(pText, &pEnd, bHex ? 16 : 10);
    uiResult = static_cast<unsigned int>(ulNumber);
    if (std::isdigit(static_cast<unsigned char>(pText[0])) && *pEnd == '\0' && errno == 0 && ulNumber >= uiLeast &&
        ulNumber <= uiMost)
        return true;
    std::fprintf(stderr, "orlix-host: %s takes a number from %u to %u, not %s\n", pOption, uiLeast, uiMost, pText);
    return false;
}
} // namespace

bool CHostOptions::parse(int iCount, char** ppArgument) {
    for (int i = 1; i < iCount; ++i) {
        const char* const pOption = ppArgument[i];
        if (bool* const pFlag = findFlag(pOption)) {
            *pFlag = true;
            continue;
        }
        if (isSharePath(pOption)) {
            m_pSharePath = pOption;
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
    if (std::strcmp(pOption, "--share-read") == 0)
        return &m_pShareRead;
    if (std::strcmp(pOption, "--share-write") == 0)
        return &m_pShareWrite;
    if (std::strcmp(pOption, "--size") == 0)
        return &m_pShareSize;
    return nullptr;
}

/** The one argument without an option: the file of --share-write. */
bool CHostOptions::isSharePath(const char* pArgument) const noexcept {
    return m_pShareWrite && !m_pSharePath && (pArgument[0] != '-' || pArgument[1] == '\0');
}

bool CHostOptions::checkShare() {
    const bool bOther = m_pTextPath || m_pPlayPath || m_bPrintConfig || m_bFast || m_pSurface;
    if (bOther || !m_pShareRead == !m_pShareWrite || !m_pShareSize || !m_pShareWrite != !m_pSharePath) {
        std::fprintf(stderr, "orlix-host: usage: orlix-host [--config FILE] followed by --share-read KEY --size N or "
                             "--share-write KEY --size N FILE\n");
        return false;
    }
    // The key 0 would make a segment that no other process finds.
    return readNumber(m_pShareRead ? "--share-read" : "--share-write", m_pShareRead ? m_pShareRead : m_pShareWrite, 1,
                      UINT_MAX, m_uiShareKey) &&
           readNumber("--size", m_pShareSize, 1, INT_MAX, m_uiShareSize);
}

bool CHostOptions::check() {
    if (m_pShareRead || m_pShareWrite || m_pShareSize)
        return checkShare();
    const int iTasks = (m_pTextPath ? 1 : 0) + (m_pPlayPath ? 1 : 0) + (m_bPrintConfig ? 1 : 0);
    if (iTasks == 1 && (m_pPlayPath || (!m_bFast && !m_pSurface)))
        return !m_pSurface || readSurface();
    std::fprintf(stderr,
                 "orlix-host: usage: orlix-host [--config FILE] followed by --play RECORDING [--surface N] "
                 "[--fast], --text FILE, --print-config, --share-read KEY --size N or --share-write KEY --size N "
                 "FILE; - is standard input\n");
    return false;
}

bool CHostOptions::readSurface() { return readNumber("--surface", m_pSurface, 0, UINT_MAX, m_uiSurface); }
