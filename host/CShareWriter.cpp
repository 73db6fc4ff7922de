#include "CShareWriter.h"

#include "CEventFlag.h"
#include "ExitCode.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <new>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

using namespace Orlix;

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::microseconds LOOK_AGAIN(50);
constexpr std::chrono::seconds LEAVE_MOST(5); // for a reader that sits on the last block
} // namespace

CShareWriter::CShareWriter(unsigned int uiKey, unsigned int uiSize, const CEventFlag& stop)
    : m_uiKey(uiKey), m_uiSize(uiSize), m_stop(stop), m_ptrBlock(new (std::nothrow) unsigned char[uiSize]) {}

CShareWriter::~CShareWriter() {
    if (m_iFile > STDIN_FILENO)
        ::close(m_iFile);
}

bool CShareWriter::open(const char* pPath) {
    m_pPath = pPath;
    m_iFile = std::strcmp(pPath, "-") == 0 ? STDIN_FILENO : ::open(pPath, O_RDONLY | O_CLOEXEC);
    return m_iFile >= 0 && read(m_iFile, nullptr, 0) == 0; // a folder can be opened, but not read
}

int CShareWriter::run() {
    if (!m_ptrBlock || !m_channel.open(m_uiKey, CShareMemory::MODE_WRITER, m_uiSize)) {
        std::fprintf(stderr, "orlix-host: cannot share %u bytes under the key 0x%x\n", m_uiSize, m_uiKey);
        return EXIT_USAGE;
    }
    const int iExitCode = writeFile();
    close();
    return iExitCode;
}

int CShareWriter::writeFile() {
    unsigned int uiFilled = 0;
    do {
        if (!readBlock(uiFilled)) {
            std::fprintf(stderr, "orlix-host: cannot read %s: %s\n", m_pPath, std::strerror(errno));
            return EXIT_USAGE;
        }
        if (uiFilled != 0 && waitUntilReady())
            m_channel.writeData(m_ptrBlock.get(), uiFilled);
    } while (uiFilled == m_uiSize && !m_stop.isSet());
    return EXIT_DONE;
}

/** Fills the block as far as the file goes, or until the stop. @return false with the reason in errno. */
bool CShareWriter::readBlock(unsigned int& uiFilled) {
    uiFilled = 0;
    while (uiFilled < m_uiSize && m_stop.waitForInput(m_iFile)) {
        const ssize_t iRead = read(m_iFile, m_ptrBlock.get() + uiFilled, m_uiSize - uiFilled);
        if (iRead == 0)
            return true;
        if (iRead > 0)
            uiFilled += static_cast<unsigned int>(iRead);
        else if (errno != EINTR && errno != EAGAIN)
            return false;
    }
    return true;
}

/** @return false once the writing is to stop. */
bool CShareWriter::waitUntilReady() {
    while (!m_channel.canWrite()) {
        if (!m_stop.sleepUntil(Clock::now() + LOOK_AGAIN))
            return false;
    }
    return true;
}

/** The channel tells its readers only if it can take a block at that moment. */
void CShareWriter::close() {
    const Clock::time_point timeEnd = Clock::now() + LEAVE_MOST;
    while (!m_channel.canWrite() && Clock::now() < timeEnd)
        std::this_thread::sleep_for(LOOK_AGAIN);
    m_channel.close();
}
