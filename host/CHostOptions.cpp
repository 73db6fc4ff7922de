#include "CHostOptions.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <arpa/inet.h>

namespace {

bool readNumber(const char* pText, unsigned long ulMost, unsigned int& uiNumber) {
    char* pEnd = nullptr;
    errno = 0;
    const unsigned long ulNumber = std::strtoul(pText, &pEnd, 10);
    if (pText[0] < '0' || pText[0] > '9' || *pEnd != '\0' || errno != 0 || ulNumber > ulMost)
        return false;
    uiNumber = static_cast<unsigned int>(ulNumber);
    return true;
}

bool readPort(const char* pText, unsigned int& uiPort) { return readNumber(pText, 65535, uiPort) && uiPort != 0; }
} // namespace

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
    if (std::strcmp(pOption, "--listen") == 0)
        return &m_pListen;
    if (std::strcmp(pOption, "--connect") == 0)
        return &m_pConnect;
    return nullptr;
}

bool CHostOptions::check() {
    if (checkCombination())
        return (!m_pSurface || readSurface()) && (!m_pListen || readListenPort()) &&
               (!m_pConnect || readConnectAddress());
    std::fprintf(stderr,
                 "orlix-host: usage: orlix-host [--config FILE] [--listen PORT | --connect ADDRESS:PORT] followed "
                 "by --play RECORDING [--surface N] [--fast], --text FILE or nothing; or [--config FILE] "
                 "--print-config; - is standard input\n");
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

bool CHostOptions::readSurface() {
    if (readNumber(m_pSurface, UINT_MAX, m_uiSurface))
        return true;
    std::fprintf(stderr, "orlix-host: --surface takes a number, not %s\n", m_pSurface);
    return false;
}

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
