#include "CTextSource.h"

#include <Orlix/foundation/CString.h>
#include <Orlix/foundation/CStringConverter.h>
#include <Orlix/messaging/CMessageCenter.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Orlix;

namespace {

constexpr std::size_t LINE_BYTES_MOST = 64u << 20; // an input without line ends must not take all memory
constexpr unsigned int MESSAGES_MOST = 1000;
} // namespace

CTextSource::CTextSource() : m_waitRoom(L"room") {}

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
    char aryChunk[65536];
    for (std::size_t uiRead; (uiRead = readChunk(aryChunk, sizeof(aryChunk))) != 0 && m_iError == 0;) {
        postLines(aryChunk, aryChunk + uiRead);
        waitForRoom();
    }
    if (!m_strLine.empty() && m_iError == 0)
        postLine(m_strLine);
    CMessageCenter::getInstance()->pushLogicEventMessage(END_OF_TEXT);
}

/** @return the bytes read; 0 at the end of the input and when it cannot be read any further. */
std::size_t CTextSource::readChunk(char* pChunk, std::size_t uiSize) {
    for (;;) {
        const ssize_t iRead = read(m_iFile, pChunk, uiSize);
        if (iRead >= 0)
            return static_cast<std::size_t>(iRead);
        if (errno == EAGAIN) { // a descriptor that another program has made non-blocking
            pollfd wait{m_iFile, POLLIN, 0};
            poll(&wait, 1, -1);
        } else if (errno != EINTR) {
            m_iError = errno;
            return 0;
        }
    }
}

void CTextSource::postLines(const char* pStart, const char* pEnd) {
    while (const void* const pFound = std::memchr(pStart, '\n', static_cast<std::size_t>(pEnd - pStart))) {
        const char* const pBreak = static_cast<const char*>(pFound);
        m_strLine.append(pStart, pBreak);
        postLine(m_strLine);
        m_strLine.clear();
        pStart = pBreak + 1;
    }
    m_strLine.append(pStart, pEnd);
    if (m_strLine.size() > LINE_BYTES_MOST)
        m_iError = EMSGSIZE;
}

/** Keeps an input that is faster than the output from piling up in memory. */
void CTextSource::waitForRoom() {
    while (CMessageCenter::getInstance()->getMessageCount() > MESSAGES_MOST)
        m_waitRoom.forceWait(1);
}

void CTextSource::postLine(const std::string& strLine) {
    CString strText;
    CStringConverter::convertFromUTF8(reinterpret_cast<const unsigned char*>(strLine.c_str()), strText);
    CMessageCenter* const pCenter = CMessageCenter::getInstance();
    pCenter->pushIMEMessage(strText);
    pCenter->pushRenderMessage(0);
}
