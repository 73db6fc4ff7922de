#pragma once

#include <Orlix/foundation/CWaitObject.h>

#include <cstddef>
#include <string>
#include <thread>

/** Posts the lines of a UTF-8 text to the message center as they arrive, from a thread of its own: each as an IME
 *  message with a request to repaint target 0 behind it, and END_OF_TEXT as a logic event behind the last one.
 *
 *  A line ends for the library at its first zero byte, like every text. One of more than 64 MiB is an error. */
class CTextSource {
public:
    /** The logic event that follows the last line through the same list, so that it overtakes none. */
    static constexpr unsigned int END_OF_TEXT = 1;

    CTextSource();
    CTextSource(const CTextSource&) = delete;
    CTextSource& operator=(const CTextSource&) = delete;
    /** Waits for the end of the input. */
    ~CTextSource();

    /** @param pPath the file; "-" for standard input. @return false with the reason in errno if it cannot be read. */
    bool open(const char* pPath);

    /** Starts the thread; only after open, and once the center has its listener. */
    void start();

    /** Why the input could not be read to its end, as an errno; 0 if it was. Only after END_OF_TEXT has come out. */
    int getError() const noexcept { return m_iError; }

private:
    void run();
    std::size_t readChunk(char* pChunk, std::size_t uiSize);
    void postLines(const char* pStart, const char* pEnd);
    void waitForRoom();
    void postLine(const std::string& strLine);

    int m_iFile = -1;
    int m_iError = 0;      // of the thread, until it has posted END_OF_TEXT
    std::string m_strLine; // of the thread: what has come since the last line end
    Orlix::CWaitObject m_waitRoom;
    std::thread m_thread;
};
