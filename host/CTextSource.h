#pragma once

#include <string>
#include <thread>

/** Posts the lines of a UTF-8 text to the message center as they arrive, from a thread of its own: each as an IME
 *  message with a request to repaint target 0 behind it, and END_OF_TEXT as a logic event behind the last one. */
class CTextSource {
public:
    /** The logic event that follows the last line through the same list, so that it overtakes none. */
    static constexpr unsigned int END_OF_TEXT = 1;

    CTextSource() = default;
    CTextSource(const CTextSource&) = delete;
    CTextSource& operator=(const CTextSource&) = delete;
    /** Waits for the end of the input. */
    ~CTextSource();

    /** @param pPath the file; "-" for standard input. @return false with the reason in errno if it cannot be read. */
    bool open(const char* pPath);

    /** Starts the thread; only after open, and once the center has its listener. */
    void start();

private:
    void run();
    void postLine(const std::string& strLine);

    int m_iFile = -1;
    std::thread m_thread;
};
