#pragma once

#include <Orlix/foundation/CString.h>
#include <Orlix/foundation/CStringConverter.h>

#include "support/FuzzCheck.h"

#include <cstddef>
#include <cstdint>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

namespace OrlixFuzz {

/** A file in memory, by a path that any reader can open. */
class CMemoryFile {
public:
    CMemoryFile() : m_iFile(memfd_create("fuzz", 0)) {
        Orlix::CStringConverter::convertFromMBCS(("/proc/self/fd/" + std::to_string(m_iFile)).c_str(), m_strPath);
    }
    ~CMemoryFile() { ::close(m_iFile); }

    const Orlix::CString& getPath() const { return m_strPath; }
    void setContent(const std::uint8_t* pData, std::size_t uiSize) {
        FUZZ_CHECK(ftruncate(m_iFile, 0) == 0);
        FUZZ_CHECK(pwrite(m_iFile, pData, uiSize, 0) == static_cast<ssize_t>(uiSize));
    }

private:
    int m_iFile;
    Orlix::CString m_strPath;
};
} // namespace OrlixFuzz
