#include "CHostOptions.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <arpa/inet.h>

namespace {

/** @param pText decimal, or hexadecimal behind "0x". */
bool readNumber(const char* pText, unsigned int uiLeast, unsigned int uiMost, unsigned int& uiNumber) {
    const bool bHex = pText[0] == '0' && (pText[1] == 'x' || pText[1] == 'X');
    char* pEnd = nullptr;
    errno = 0;
    const unsigned long ulNumber = std::strtoul(pText, &pEnd, bHex ? 16 : 10);
    if (pText[0] < '0' || pText[0] > '9' || *pEnd != '\0' || errno != 0 || ulNumber < uiLeast || ulNumber > uiMost)
        return false;
    uiNumber = static_cast<unsigned int>(ulNumber);
    return true;
}

/** As readNumber, with one line on stderr for anything else. */
bool readOption(const char* pOption, const char* pText, unsigned int uiLeast, unsigned int uiMost,
                unsigned int& uiNumber) {
    if (readNumber(pText, uiLeast, uiMost, uiNumber))
        return true;
    std::fprintf(stderr, "orlix-host: %s takes a number from %u to %u, not %s\n", pOption, uiLeast, uiMost, pText);
    return false;
}

bool readPort(const char* pText, unsigned int& uiPort) { return readNumber(pText, 1, 65535, uiPort); }
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
    if (std::strcmp(pOption, "--listen") == 0)
        return &m_pListen;
    if (std::strcmp(pOption, "--connect") == 0)
        return &m_pConnect;
    return nullptr;
}

/** The one argument without an option: the file of --share-write. */
bool CHostOptions::isSharePath(const char* pArgument) const noexcept {
    return m_pShareWrite && !m_pSharePath && (pArgument[0] != '-' || pArgument[1] == '\0');
}

bool CHostOptions::checkShare() {
    const bool bOther = m_pTextPath || m_pPlayPath || m_bPrintConfig || m_bFast || m_pSurface || hasPeer();
    if (bOther || !m_pShareRead == !m_pShareWrite || !m_pShareSize || !m_pShareWrite != !m_pSharePath) {
        std::fprintf(stderr, "orlix-host: usage: orlix-host [--config FILE] followed by --share-read KEY --size N or "
                             "--share-write KEY --size N FILE\n");
        return false;
    }
    // The key 0 would make a segment that no other process finds.
    return readOption(m_pShareRead ? "--share-read" : "--share-write", m_pShareRead ? m_pShareRead : m_pShareWrite, 1,
                      UINT_MAX, m_uiShareKey) &&
           readOption("--size", m_pShareSize, 1, INT_MAX, m_uiShareSize);
}

bool CHostOptions::check() {
    if (m_pShareRead || m_pShareWrite || m_pShareSize)
        return checkShare();
    if (checkCombination())
        return (!m_pSurface || readSurface()) && (!m_pListen || readListenPort()) &&
               (!m_pConnect || readConnectAddress());
    std::fprintf(stderr,
                 "orlix-host: usage: orlix-host [--config FILE] [--listen PORT | --connect ADDRESS:PORT] followed "
                 "by --play RECORDING [--surface N] [--fast], --text FILE or nothing; or [--config FILE] followed by "
                 "--print-config, --share-read KEY --size N or --share-write KEY --size N FILE; - is standard "
                 "input\n");
    return false;
}

bool CHostOptions::checkCombination() const noexcept {
    const int iSources = (m_pTextPath ? 1 : 0) + (m_pPlayPath ? 1 : 0);
    if (!m_pPlayPath && (m_bFast || m_pSurface))
        return false;
    if (m_bPrintConfig)
        return iSources == 0 && !hasPeer();
    return (iSources == 1 || (iSources == 0 && hasPeer())) && !(m_pListen && m_pConnect);
}

bool CHostOptions::readSurface() { return readOption("--surface", m_pSurface, 0, UINT_MAX, m_uiSurface); }

bool CHostOptions::readListenPort() {
    if (readPort(m_pListen, m_uiListenPort))
        return true;
    std::fprintf(stderr, "orlix-host: --listen takes a port from 1 to 65535, not %s\n", m_pListen);
    return false;
}

bool CHostOptions::readConnectAddress() {
    const char* const pColon = std::strrchr(m_pConnect, ':');
    in_addr address;
    if (pColon) {
        m_strConnectAddress.assign(m_pConnect, pColon);
        if (inet_pton(AF_INET, m_strConnectAddress.c_str(), &address) == 1 && readPort(pColon + 1, m_uiConnectPort))
            return true;
    }
    std::fprintf(stderr,
                 "orlix-host: --connect takes an IPv4 address in digits and a port, as in 127.0.0.1:7000, not %s\n",
                 m_pConnect);
    return false;
}
