#pragma once

#include "support/TempFolder.h"

#include <cstddef>
#include <random>
#include <string>
#include <sys/stat.h>

namespace OrlixTest {

inline std::string randomBytes(std::size_t uiCount) {
    std::mt19937 random(static_cast<unsigned int>(uiCount));
    std::string strBytes(uiCount, '\0');
    for (char& ch : strBytes)
        ch = static_cast<char>(random());
    return strBytes;
}

inline bool exists(const std::string& strPath) {
    struct stat state;
    return lstat(strPath.c_str(), &state) == 0;
}

inline unsigned int modeOf(const std::string& strPath) {
    struct stat state;
    return stat(strPath.c_str(), &state) == 0 ? state.st_mode & 07777 : ~0u;
}

/** A path of uiBytes bytes over folders that exist, to a name that may be missing. */
inline std::string makeLongPath(const CTempFolder& temp, std::size_t uiBytes) {
    std::string strPath = temp.getPath();
    while (uiBytes - strPath.size() > 251) {
        strPath += "/" + std::string(200, 'd');
        mkdir(strPath.c_str(), 0755);
    }
    return strPath + "/" + std::string(uiBytes - strPath.size() - 1, 'n');
}
} // namespace OrlixTest
