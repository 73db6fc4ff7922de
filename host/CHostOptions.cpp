#include "CHostOptions.h"

#include <cstdio>
#include <cstring>

bool CHostOptions::parse(int iCount, char** ppArgument) {
    for (int i = 1; i < iCount; ++i) {
        const char* const pOption = ppArgument[i];
        if (std::strcmp(pOption, "--print-config") == 0) {
            m_bPrintConfig = true;
            continue;
        }
        const char** const ppValue = findValueOption(pOption);
        if (!ppValue) {
            std::fprintf(stderr, "orlix-host: unknown option %s\n", pOption);
            return false;
        }
        if (i + 1 == iCount || *ppValue) {
            std::fprintf(stderr, "orlix-host: %s takes one file\n", pOption);
            return false;
        }
        *ppValue = ppArgument[++i];
    }
    return check();
}

/** @return where the value of an option goes; null for an unknown option. */
const char** CHostOptions::findValueOption(const char* pOption) noexcept {
    if (std::strcmp(pOption, "--text") == 0)
        return &m_pTextPath;
    if (std::strcmp(pOption, "--config") == 0)
        return &m_pConfigPath;
    return nullptr;
}

bool CHostOptions::check() const {
    if (m_bPrintConfig == (m_pTextPath != nullptr)) {
        std::fprintf(stderr, "orlix-host: usage: orlix-host [--config FILE] --text FILE (- for standard input), or "
                             "orlix-host [--config FILE] --print-config\n");
        return false;
    }
    return true;
}
