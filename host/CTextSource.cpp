#include "CTextSource.h"

#include <Orlix/foundation/CString.h>
#include <Orlix/foundation/CStringConverter.h>
#include <Orlix/messaging/CMessageCenter.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Orlix;

CTextSource::~CTextSource() {
    if (m_thread.joinable())
        m_thread.join();
    if (m_iFile > STDIN_FILENO)
        close(m_iFile);
}

bool CTextSource::open(const char* pPath) {
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

void CTextSource::start() {
    m_thread = std::thread([this] { run(); });
}

void CTextSource::run() {
    std::string strLine;
    char aryChunk[65536];
    for (;;) {
        const ssize_t iRead = read(m_iFile, aryChunk, sizeof(aryChunk));
        if (iRead < 0 && errno == EINTR)
            continue;
        if (iRead <= 0)
            break;
        const char* pStart = aryChunk;
        const char* const pEnd = aryChunk + iRead;
        while (const void* const pFound = std::memchr(pStart, '\n', static_cast<std::size_t>(pEnd - pStart))) {
            const char* const pBreak = static_cast<const char*>(pFound);
            strLine.append(pStart, pBreak);
            postLine(strLine);
            strLine.clear();
            pStart = pBreak + 1;
        }
        strLine.append(pStart, pEnd);
    }
    if (!strLine.empty())
        postLine(strLine);
    CMessageCenter::getInstance()->pushLogicEventMessage(END_OF_TEXT);
}

void CTextSource::postLine(const std::string& strLine) {
    CString strText;
    CStringConverter::convertFromUTF8(reinterpret_cast<const unsigned char*>(strLine.c_str()), strText);
    CMessageCenter* const pCenter = CMessageCenter::getInstance();
    pCenter->pushIMEMessage(strText);
    pCenter->pushRenderMessage(0);
}
