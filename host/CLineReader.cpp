#include "CLineReader.h"

#include "CEventFlag.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

CLineReader::~CLineReader() {
    if (m_iFile > STDIN_FILENO)
        close(m_iFile);
}

bool CLineReader::open(const char* pPath) {
    m_iFile = std::strcmp(pPath, "-") == 0 ? STDIN_FILENO : ::open(pPath, O_RDONLY | O_CLOEXEC);
    if (m_iFile < 0)
        return false;
    struct stat info;
    if (fstat(m_iFile, &info) != 0)
        return false;
    if (S_ISDIR(info.st_mode)) {
        errno = EISDIR;
        return false;
    }
    return true;
}

bool CLineReader::readLine(std::string& strLine) {
    strLine.clear();
    while (m_uiStart < m_uiEnd || fill()) {
        const char* const pStart = m_aryChunk + m_uiStart;
        const std::size_t uiLeft = m_uiEnd - m_uiStart;
        const char* const pBreak = static_cast<const char*>(std::memchr(pStart, '\n', uiLeft));
        const std::size_t uiTaken = pBreak ? static_cast<std::size_t>(pBreak - pStart) : uiLeft;
        strLine.append(pStart, uiTaken);
        m_uiStart += uiTaken + (pBreak ? 1 : 0);
        if (pBreak)
            return true;
        if (strLine.size() > LINE_BYTES_MOST) {
            m_iError = EMSGSIZE;
            return false;
        }
    }
    return m_iError == 0 && !strLine.empty();
}

/** @return false at the end of the input and when it cannot be read any further. */
bool CLineReader::fill() {
    while (m_iError == 0 && m_stop.waitForInput(m_iFile)) { // which also waits for a descriptor that never blocks
        const ssize_t iRead = read(m_iFile, m_aryChunk, sizeof(m_aryChunk));
        if (iRead >= 0) {
            m_uiStart = 0;
            m_uiEnd = static_cast<std::size_t>(iRead);
            return iRead > 0;
        }
        if (errno != EAGAIN && errno != EINTR)
            m_iError = errno;
    }
    return false;
}
