#pragma once

#include <Orlix/foundation/CStringConverter.h>

namespace Orlix {

/** A path as the system takes it. A text that does not fit is cut, and so is one at a character that is none. */
class CPathBuffer {
public:
    explicit CPathBuffer(const CString& strPath) {
        CStringConverter::convertToMBCS(strPath, m_aryBytes, sizeof(m_aryBytes));
    }
    const char* get() const noexcept { return m_aryBytes; }

private:
    static constexpr unsigned int PATH_BYTES = 1024; // terminator included
    char m_aryBytes[PATH_BYTES];
};
} // namespace Orlix
