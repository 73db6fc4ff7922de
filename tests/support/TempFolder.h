#pragma once

#include <Orlix/foundation/CString.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/stat.h>

namespace OrlixTest {

/** Characters of an ASCII path. */
inline Orlix::CString toText(const std::string& strPath) {
    return Orlix::CString(std::wstring(strPath.begin(), strPath.end()).c_str());
}

/** A folder of the test's own, gone with all that is in it at the end. Others may enter it. */
class CTempFolder {
public:
    CTempFolder() : m_strPath(std::filesystem::temp_directory_path().string() + "/orlix-XXXXXX") {
        if (!mkdtemp(m_strPath.data()) || chmod(m_strPath.c_str(), 0755) != 0)
            std::abort();
    }
    CTempFolder(const CTempFolder&) = delete;
    CTempFolder& operator=(const CTempFolder&) = delete;
    ~CTempFolder() {
        std::error_code error;
        std::filesystem::remove_all(m_strPath, error);
    }

    std::string operator/(const std::string& strName) const { return m_strPath + "/" + strName; }
    const std::string& getPath() const { return m_strPath; }

private:
    std::string m_strPath;
};

inline void writeWhole(const std::string& strPath, const std::string& strContent) {
    std::ofstream(strPath, std::ios::binary) << strContent;
}

/** The content, empty also for what cannot be read. */
inline std::string readWhole(const std::string& strPath) {
    std::ifstream file(strPath, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}
} // namespace OrlixTest
