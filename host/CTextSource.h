#pragma once

#include "CLineReader.h"
#include "ISource.h"

#include <string>

/** Posts the lines of a UTF-8 text to the message center as they arrive: each as an IME message with a request to
 *  repaint target 0 behind it. A line ends for the library at its first zero byte, like every text. */
class CTextSource : public ISource {
public:
    /** @param stop ends the text early, without an error. Outlives this. */
    explicit CTextSource(const CEventFlag& stop) noexcept : m_stop(stop), m_reader(stop) {}

    bool open(const char* pPath) override;
    int run() override;

private:
    const CEventFlag& m_stop;
    const char* m_pPath = nullptr;
    CLineReader m_reader;

    static void postLine(const std::string& strLine);
};
